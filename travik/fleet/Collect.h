#pragma once

#include <travik/fleet/FleetSink.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Travik {

/// What became of the files of a run.
struct CollectCounts {
    std::size_t images = 0; ///< files that hold one: the sum of the next three
    std::size_t added = 0;
    std::size_t changed = 0;
    std::size_t unchanged = 0;
    std::size_t returned = 0; ///< of them those that had vanished
    std::size_t vanished = 0;
    std::size_t damaged = 0; ///< of the images those that do not verify
    std::size_t aliens = 0;  ///< files that are no image
    std::size_t unreadable = 0;
    std::size_t seenFolders = 0; ///< symbolic links to folders that were walked
    std::size_t namedAliens = 0; ///< of the aliens those that were asked for by name
};

/// What is told while it goes on.
struct CollectNews {
    enum class Kind : unsigned char { Damaged, Alien, Unreadable, SeenFolder };
    Kind kind;
    const std::string& path;
    const std::string& text;
    std::size_t problems = 0; ///< of a damaged image
};

struct CollectOptions {
    unsigned int jobs = 1; ///< images that are worked on at once
    std::function<void(const CollectNews&)> tell = [](const CollectNews&) {};
    std::function<void(const CollectCounts&)> progress = [](const CollectCounts&) {};
};

/// Brings the images among the files, and below the folders, into a sink, by batches. What the sink knows by its stamp
/// is not read again. Needs memory for a batch, however many files there are. Throws FleetError where the sink does;
/// the batches before are kept.
TRAVIK_FLEET_EXPORT CollectCounts collect(std::vector<std::string> paths, FleetSink& sink,
                                          const CollectOptions& options);

} // namespace Travik
