#pragma once

#include <travik/fleet/FleetRows.h>

#include <dirent.h>
#include <sys/stat.h>

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Travik {

/// A file to be looked at.
struct FoundFile {
    std::string path; ///< absolute, every symbolic link followed
    FileStamp stamp;
    bool isNamed = false; ///< it was asked for by name, not found in a folder
};

/// Files and folders, these recursively, one file after the other; holds no more than the folders that it stands in and
/// the numbers of those that it was in. Symbolic links are followed; a folder is entered once, however many lead to it.
class TRAVIK_FLEET_EXPORT FolderWalk {
public:
    /// What is told of a path that gives no file, and why.
    enum class Miss : unsigned char {
        Unreadable,
        NoFile,    ///< a device, a pipe, a socket; or too large to be an image
        SeenFolder ///< a link to a folder that it was in
    };
    using Tell = std::function<void(Miss, const std::string& path, const std::string& why)>;

    FolderWalk(std::vector<std::string> paths, Tell tell);

    /// The next file; nothing at the end.
    std::optional<FoundFile> next();
    /// The folders and files that were walked from: those that were named, and those that links led to.
    const std::vector<std::string>& roots() const { return roots_; }

    /// No module has a memory of more bytes.
    static constexpr std::int64_t largestFile = std::int64_t{64} << 20;

private:
    struct Close {
        void operator()(DIR* folder) const { ::closedir(folder); }
    };
    struct Folder {
        std::string path;
        std::unique_ptr<DIR, Close> entries;
    };

    std::vector<std::string> named_; // those still to come, the next last
    Tell tell_;
    std::vector<Folder> stack_;
    std::set<std::pair<dev_t, ino_t>> seen_;
    std::vector<std::string> roots_;

    std::optional<FoundFile> named(const std::string& path);
    std::optional<FoundFile> entry(const std::string& path, bool mayBeLink);
    std::optional<FoundFile> file(std::string path, const struct stat& status, bool isNamed);
    void enter(const std::string& path, const struct stat& status);
};

} // namespace Travik
