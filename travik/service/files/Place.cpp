#include "Place.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

namespace Travik::files {

std::string Place::find(const std::string& path) {
    constexpr int linksLimit = 40; // as the kernel has it
    path_ = path;
    std::string rest = path;
    for (int links = 0; links <= linksLimit; ++links) {
        const std::size_t slash = rest.rfind('/') + 1; // 0 where there is none
        name_ = rest.substr(slash);
        if (name_.empty() || name_ == "." || name_ == "..")
            return errorText(rest.empty() ? ENOENT : EISDIR);
        const std::string parent = slash == 0 ? "." : rest.substr(0, slash);
        Descriptor next(::openat(folder_ >= 0 ? folder_ : AT_FDCWD, parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (next < 0)
            return errorText();
        folder_ = std::move(next);
        std::array<char, PATH_MAX> target;
        const ssize_t length = ::readlinkat(folder_, name_.c_str(), target.data(), target.size());
        if (length < 0)
            return errno == EINVAL || errno == ENOENT ? "" : errorText(); // no link; nothing
        rest.assign(target.data(), static_cast<std::size_t>(length));
        path_ = rest.starts_with('/') ? rest : path_.substr(0, path_.rfind('/') + 1) + rest;
    }
    return errorText(ELOOP);
}

Place Place::beside(const std::string& name) const {
    Place other;
    other.folder_ = Descriptor(::fcntl(folder_, F_DUPFD_CLOEXEC, 0));
    other.name_ = name;
    other.path_ = path_.substr(0, path_.rfind('/') + 1) + name;
    return other;
}

bool Place::status(struct stat& status) const {
    return ::fstatat(folder_, name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool Place::holds(const struct stat& file) const {
    struct stat there {};
    return status(there) && there.st_dev == file.st_dev && there.st_ino == file.st_ino;
}

void Place::sync() const {
    const Descriptor readable(::openat(folder_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (readable >= 0)
        ::fsync(readable);
}

} // namespace Travik::files
