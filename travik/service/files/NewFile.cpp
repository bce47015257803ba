#include "NewFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace Travik::files {

namespace {

/// The same for every process that writes the place, so that the next one finds what the last one left; short, so that
/// it stands beside the longest of names.
std::string nameBeside(const Place& place) {
    std::uint64_t hash = 0xCBF29CE484222325; // FNV-1a
    for (const char character : place.name())
        hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3;
    std::array<char, 40> name;
    std::snprintf(name.data(), name.size(), ".datablock-%016llx.tmp", static_cast<unsigned long long>(hash));
    return name.data();
}

/// Where somebody else's file bars that name and cannot be removed.
std::string nameOfProcess(const Place& place) { return nameBeside(place) + "-" + std::to_string(::getpid()); }

std::string pathOf(int file) { return "/proc/self/fd/" + std::to_string(file); }

} // namespace

NewFile::~NewFile() { letGo(); }

void NewFile::letGo() {
    const int error = errno;
    if (!name_.empty())
        ::unlinkat(place_.folder(), name_.c_str(), 0);
    name_.clear();
    held_.reset();
    errno = error;
}

bool NewFile::create(mode_t mode) {
    file_ = Descriptor(::openat(place_.folder(), ".", O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
    if (file_ >= 0 && ::access(pathOf(file_).c_str(), F_OK) == 0)
        return lock(file_, 0);
    // Without files that have no name, or without the way to give them one.
    const bool canTryNamed = file_ >= 0 || errno == EOPNOTSUPP || errno == EISDIR || errno == ENOENT || errno == EINVAL;
    return canTryNamed && createNamed(mode);
}

bool NewFile::createNamed(mode_t mode) {
    held_.emplace();
    removeLeftOver(place_);
    for (std::string name : {nameBeside(place_), nameOfProcess(place_)}) {
        const Place there = place_.beside(name);
        file_ = Descriptor(::openat(place_.folder(), name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, mode));
        if (file_ < 0 && errno == EEXIST)
            continue;
        if (file_ < 0)
            break;
        name_ = std::move(name); // from here on it is removed, whatever comes
        // Another process may have taken it for a left-over before it was locked.
        struct stat status {};
        if (lock(file_, 0) && ::fstat(file_, &status) == 0 && there.holds(status))
            return true;
        name_.clear();
        errno = EAGAIN;
    }
    letGo();
    return false;
}

bool NewFile::link(const std::string& name) const {
    return ::linkat(AT_FDCWD, pathOf(file_).c_str(), place_.folder(), name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

bool NewFile::linkBeside() {
    held_.emplace();
    removeLeftOver(place_);
    for (std::string name : {nameBeside(place_), nameOfProcess(place_)}) {
        if (link(name)) {
            name_ = std::move(name);
            return true;
        }
        if (errno != EEXIST)
            break;
    }
    return false;
}

bool NewFile::replace() {
    const bool done = (!name_.empty() || linkBeside()) &&
                      ::renameat(place_.folder(), name_.c_str(), place_.folder(), place_.name().c_str()) == 0;
    if (done)
        name_.clear();
    letGo();
    return done;
}

bool NewFile::add() {
    bool done = false;
    if (name_.empty()) {
        done = link(place_.name());
    } else {
        const char* const target = place_.name().c_str();
        done = ::renameat2(place_.folder(), name_.c_str(), place_.folder(), target, RENAME_NOREPLACE) == 0;
        if (done)
            name_.clear();
        else if (errno == EINVAL || errno == ENOSYS)
            done = ::linkat(place_.folder(), name_.c_str(), place_.folder(), target, 0) == 0;
    }
    letGo();
    return done;
}

void removeLeftOver(const Place& place) {
    const Place other = place.beside(nameBeside(place));
    struct stat status {};
    if (!other.status(status) || !S_ISREG(status.st_mode))
        return;
    const Descriptor file(
        ::openat(other.folder(), other.name().c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    // A writer at work holds the lock of what it writes.
    if (file >= 0 && lock(file, 0) && other.holds(status))
        ::unlinkat(other.folder(), other.name().c_str(), 0);
}

} // namespace Travik::files
