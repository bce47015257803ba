#include "Rights.h"

#include "Descriptor.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace Travik::files {

namespace {

constexpr const char* accessList = "system.posix_acl_access";
constexpr auto keepId = static_cast<unsigned int>(-1);

/// The names of the file's extended attributes, each with its NUL; empty where there are none.
std::string attributeNames(int file) {
    std::string names;
    for (;;) {
        const ssize_t size = ::flistxattr(file, nullptr, 0);
        if (size <= 0)
            return {};
        names.resize(static_cast<std::size_t>(size));
        const ssize_t length = ::flistxattr(file, names.data(), names.size());
        if (length < 0 && errno == ERANGE) // one more came in between
            continue;
        names.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
        return names;
    }
}

bool copyAttribute(int from, int to, const char* name) {
    const ssize_t size = ::fgetxattr(from, name, nullptr, 0);
    if (size < 0)
        return false;
    std::string value(static_cast<std::size_t>(size), '\0');
    const ssize_t length = ::fgetxattr(from, name, value.data(), value.size());
    return length >= 0 && ::fsetxattr(to, name, value.data(), static_cast<std::size_t>(length), 0) == 0;
}

/// Signatures of the bytes, which are others now.
bool belongsToBytes(std::string_view attribute) {
    return attribute == "security.ima" || attribute == "security.evm" || attribute == "security.capability";
}

std::string copyAttributes(int old, int file, std::vector<std::string>& warnings) {
    const std::string names = attributeNames(old);
    for (std::size_t begin = 0; begin < names.size(); begin = names.find('\0', begin) + 1) {
        const char* const name = names.data() + begin;
        if (belongsToBytes(name) || copyAttribute(old, file, name))
            continue;
        std::string problem = "extended attribute " + std::string(name) + " cannot be kept: " + errorText();
        if (std::string_view(name).starts_with("system.")) // it says who may do what
            return problem;
        warnings.push_back(std::move(problem));
    }
    return {};
}

} // namespace

std::string copyRights(int old, const struct stat& status, int file, std::vector<std::string>& warnings) {
    // Only the superuser gives a file away, its owner among the groups that he is in.
    if (::fchown(file, status.st_uid, status.st_gid) != 0 && ::fchown(file, keepId, status.st_gid) != 0)
        errno = 0; // what came of it is looked up
    struct stat now {};
    if (::fstat(file, &now) != 0)
        return errorText();
    mode_t mode = status.st_mode & 07777U;
    const auto other = [](const char* what, auto before, auto after) {
        return std::string(what) + " " + std::to_string(before) + " cannot be kept, it is now " + std::to_string(after);
    };
    if (now.st_gid != status.st_gid) {
        const std::string problem = other("group", status.st_gid, now.st_gid);
        // The members of the two groups would change places.
        const bool sameRights = (mode >> 3U & 7U) == (mode & 7U) && ::fgetxattr(old, accessList, nullptr, 0) < 0;
        if (!sameRights)
            return problem + ", whose members would get rights that they did not have";
        warnings.push_back(problem);
        mode &= ~static_cast<mode_t>(S_ISGID);
    }
    if (now.st_uid != status.st_uid) {
        warnings.push_back(other("owner", status.st_uid, now.st_uid));
        mode &= ~static_cast<mode_t>(S_ISUID);
    }
    // One that the folder gives to new files.
    if (::fremovexattr(file, accessList) != 0 && errno != ENODATA && errno != EOPNOTSUPP)
        return "access control list of the folder: " + errorText();
    if (::fchmod(file, mode) != 0) {
        std::string problem = "permissions cannot be kept: " + errorText();
        if (::fstat(file, &now) != 0 || (now.st_mode & 0777U & ~mode) != 0)
            return problem;
        if ((now.st_mode & 07777U) != mode)
            warnings.push_back(problem);
    }
    return copyAttributes(old, file, warnings);
}

} // namespace Travik::files
