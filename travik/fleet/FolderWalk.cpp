#include <travik/fleet/FolderWalk.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <new>
#include <system_error>

namespace Travik {

namespace {

/// A lack of memory is nothing that is the matter with one file.
std::string errorText() { return errno == ENOMEM ? throw std::bad_alloc() : std::generic_category().message(errno); }

/// Empty, and errno, where the path leads nowhere.
std::string realPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    return real ? std::string(real.get()) : std::string();
}

FileStamp stampOf(const struct stat& status) {
    constexpr std::int64_t second = 1'000'000'000;
    return {static_cast<std::int64_t>(status.st_size),
            static_cast<std::int64_t>(status.st_mtim.tv_sec) * second + status.st_mtim.tv_nsec,
            static_cast<std::int64_t>(status.st_ino)};
}

} // namespace

FolderWalk::FolderWalk(std::vector<std::string> paths, Tell tell) : named_(std::move(paths)), tell_(std::move(tell)) {
    std::ranges::reverse(named_);
}

std::optional<FoundFile> FolderWalk::next() {
    for (;;) {
        std::optional<FoundFile> found;
        if (!stack_.empty()) {
            Folder& folder = stack_.back();
            errno = 0;
            const dirent* const listed = ::readdir(folder.entries.get());
            if (!listed) {
                if (errno != 0)
                    tell_(Miss::Unreadable, folder.path, errorText());
                stack_.pop_back();
                continue;
            }
            const std::string_view name = listed->d_name;
            if (name == "." || name == "..")
                continue;
            found = entry(folder.path + (folder.path == "/" ? "" : "/") + listed->d_name,
                          listed->d_type == DT_LNK || listed->d_type == DT_UNKNOWN);
        } else if (!named_.empty()) {
            const std::string path = std::move(named_.back());
            named_.pop_back();
            found = named(path);
        } else {
            return std::nullopt;
        }
        if (found)
            return found;
    }
}

std::optional<FoundFile> FolderWalk::named(const std::string& path) {
    struct stat status {};
    std::string real = realPath(path);
    if (real.empty() || ::stat(real.c_str(), &status) != 0) {
        tell_(Miss::Unreadable, path, errorText());
        return std::nullopt;
    }
    roots_.push_back(real);
    if (!S_ISDIR(status.st_mode))
        return file(std::move(real), status, true);
    enter(real, status);
    return std::nullopt;
}

std::optional<FoundFile> FolderWalk::entry(const std::string& path, bool mayBeLink) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        if (errno != ENOENT) // else it went between
            tell_(Miss::Unreadable, path, errorText());
        return std::nullopt;
    }
    if (!mayBeLink || !S_ISLNK(status.st_mode)) {
        if (!S_ISDIR(status.st_mode))
            return file(path, status, false);
        enter(path, status);
        return std::nullopt;
    }
    std::string real = realPath(path);
    if (real.empty() || ::stat(real.c_str(), &status) != 0) {
        tell_(Miss::Unreadable, path, errorText());
        return std::nullopt;
    }
    if (!S_ISDIR(status.st_mode))
        return file(std::move(real), status, false);
    if (seen_.contains({status.st_dev, status.st_ino})) {
        tell_(Miss::SeenFolder, path, "leads to a folder that was walked");
        return std::nullopt;
    }
    roots_.push_back(real);
    enter(real, status);
    return std::nullopt;
}

std::optional<FoundFile> FolderWalk::file(std::string path, const struct stat& status, bool isNamed) {
    if (!S_ISREG(status.st_mode)) {
        tell_(Miss::NoFile, path, "no regular file");
        return std::nullopt;
    }
    if (status.st_size > largestFile) {
        tell_(Miss::NoFile, path, "larger than 64 MiB");
        return std::nullopt;
    }
    return FoundFile{std::move(path), stampOf(status), isNamed};
}

void FolderWalk::enter(const std::string& path, const struct stat& status) {
    if (!seen_.insert({status.st_dev, status.st_ino}).second)
        return;
    DIR* const entries = ::opendir(path.c_str());
    if (!entries) {
        tell_(Miss::Unreadable, path, errorText());
        return;
    }
    stack_.push_back({path, std::unique_ptr<DIR, Close>(entries)});
}

} // namespace Travik
