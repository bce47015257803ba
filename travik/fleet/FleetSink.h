#pragma once

#include <travik/fleet/FolderWalk.h>

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace Travik {

/// Where the rows of images go: a database, a server, a stream. Used from one thread. What cannot be used any further
/// throws FleetError.
class TRAVIK_FLEET_EXPORT FleetSink {
public:
    FleetSink() = default;
    FleetSink(const FleetSink&) = delete;
    FleetSink& operator=(const FleetSink&) = delete;
    virtual ~FleetSink() = default;

    /// What it holds of a file.
    struct Known {
        FileStamp stamp;
        std::string contentHash;
        std::int64_t problems = 0;
        bool hasVanished = false;
    };
    enum class Stored : unsigned char { Added, Changed, Same };

    /// Whether the file is one of its own, which may lie among the images.
    virtual bool isOwn(const std::string& /*path*/) const { return false; }
    /// What it holds of each of the files.
    virtual std::vector<std::optional<Known>> known(std::span<const FoundFile> files) = 0;

    /// Begins a batch: all of it is kept, or nothing.
    virtual void begin() {}
    /// Takes an image, in place of what was held of its path.
    virtual Stored store(const ImageRows& rows) = 0;
    /// The file is there, of another stamp, yet of the same content.
    virtual void renew(const FoundFile& /*file*/) {}
    /// The file holds no image any more.
    virtual void drop(const std::string& /*path*/) {}
    /// Ends the batch.
    virtual void commit() {}

    /// Marks what it holds of files that lay below the roots and are no longer there. How many those are.
    virtual std::size_t markVanished(std::span<const std::string> /*roots*/) { return 0; }
};

} // namespace Travik
