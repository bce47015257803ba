#include <travik/service/ImageFile.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace Travik {

namespace {

// No module's memory comes near; a node that never ends does.
constexpr std::size_t largestImage = std::size_t{256} << 20U;

class FileDescriptor {
public:
    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (descriptor_ > STDIN_FILENO)
            ::close(descriptor_);
    }
    operator int() const { return descriptor_; } // NOLINT(google-explicit-constructor): it stands for the number

private:
    int descriptor_;
};

bool writeAll(int file, std::span<const char> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

// What a new file may be used for, as the umask, which can only be read by setting it, leaves it.
mode_t modeOfNewFiles() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

// Gives the file what belongs to the one that it replaces, then puts it in its place.
bool replace(const std::string& target, const std::string& beside, int file, const struct stat* replaced,
             std::span<const char> bytes) {
    // Only the superuser gives a file away; whoever else may replace it gets it.
    if (replaced && ::fchown(file, replaced->st_uid, replaced->st_gid) != 0 && errno != EPERM)
        return false;
    return ::fchmod(file, replaced ? replaced->st_mode & 07777 : modeOfNewFiles()) == 0 && writeAll(file, bytes) &&
           ::fsync(file) == 0 && ::rename(beside.c_str(), target.c_str()) == 0;
}

} // namespace

std::string writeImageFile(const std::string& path, std::span<const char> bytes) {
    if (path == "-")
        return writeAll(STDOUT_FILENO, bytes) ? "" : std::strerror(errno);
    struct stat status {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode))
        return "not a plain file, not replaced";
    std::error_code error;
    const std::filesystem::path target = exists ? std::filesystem::canonical(path, error) : std::filesystem::path(path);
    if (error)
        return error.message();
    std::string beside = target.string() + ".XXXXXX";
    const FileDescriptor file(::mkostemp(beside.data(), O_CLOEXEC));
    if (file < 0)
        return std::strerror(errno);
    if (!replace(target.string(), beside, file, exists ? &status : nullptr, bytes)) {
        const int reason = errno;
        ::unlink(beside.c_str());
        return std::strerror(reason);
    }
    // That the new name is on the disk as well is as much as can be done; where that fails, the file is whole all the
    // same, the new or the old one.
    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
    const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory >= 0)
        ::fsync(directory);
    return {};
}

std::string readImageFile(const std::string& path, std::vector<char>& bytes) {
    const FileDescriptor file(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file < 0)
        return std::strerror(errno);
    std::array<char, 65536> chunk;
    for (;;) {
        const ssize_t count = ::read(file, chunk.data(), chunk.size());
        if (count == 0)
            return {};
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return std::strerror(errno);
        bytes.insert(bytes.end(), chunk.data(), chunk.data() + count);
        if (bytes.size() > largestImage)
            return "larger than 256 MiB, not a module image";
    }
}

} // namespace Travik
