#include "Tool.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <iostream>

namespace Tool {

namespace {

// No module's memory comes near; a node that never ends does.
constexpr std::size_t largestImage = std::size_t{256} << 20U;

std::optional<Image> fail(const std::string& name, const char* what) {
    std::cerr << "datablock: " << name << ": " << what << '\n';
    return std::nullopt;
}

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

bool writeFileAtomically(const std::string& path, std::span<const char> bytes) {
    const auto failed = [&](const char* what) {
        fail(path == "-" ? "standard output" : path, what);
        return false;
    };
    if (path == "-")
        return writeAll(STDOUT_FILENO, bytes) || failed(std::strerror(errno));
    struct stat status {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode))
        return failed("not a plain file, not replaced");
    std::error_code error;
    const std::filesystem::path target = exists ? std::filesystem::canonical(path, error) : std::filesystem::path(path);
    if (error)
        return failed(error.message().c_str());
    std::string beside = target.string() + ".XXXXXX";
    const FileDescriptor file(::mkostemp(beside.data(), O_CLOEXEC));
    if (file < 0)
        return failed(std::strerror(errno));
    if (!replace(target.string(), beside, file, exists ? &status : nullptr, bytes)) {
        const int reason = errno;
        ::unlink(beside.c_str());
        return failed(std::strerror(reason));
    }
    // That the new name is on the disk as well is as much as can be done; where that fails, the file is whole all the
    // same, the new or the old one.
    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
    const FileDescriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory >= 0)
        ::fsync(directory);
    return true;
}

std::optional<Image> readImage(const std::string& path) {
    Image image{path == "-" ? "standard input" : path, {}};
    const FileDescriptor file(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (file < 0)
        return fail(image.name, std::strerror(errno));
    std::array<char, 65536> chunk;
    for (;;) {
        const ssize_t count = ::read(file, chunk.data(), chunk.size());
        if (count == 0)
            return image;
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return fail(image.name, std::strerror(errno));
        image.bytes.insert(image.bytes.end(), chunk.data(), chunk.data() + count);
        if (image.bytes.size() > largestImage)
            return fail(image.name, "larger than 256 MiB, not a module image");
    }
}

void reportProblem(const Image& image, std::size_t offset, unsigned short id, std::string_view text) {
    std::array<char, 16> hex;
    const char* const end = std::to_chars(hex.data(), hex.data() + hex.size(), offset, 16).ptr;
    std::cerr << image.name << ": offset " << offset << " (0x" << std::string_view(hex.data(), end) << "), block " << id
              << ": " << text << '\n';
}

int reportProblems(const Image& image, const std::vector<Travik::ImageProblem>& problems) {
    for (const Travik::ImageProblem& problem : problems)
        reportProblem(image, problem.offset, problem.id, problem.text);
    return problems.empty() ? AllWell : DataWrong;
}

std::string keyOf(const Travik::ImageBlock& block) {
    if (block.isSecondEdition)
        return "USER_" + std::to_string(block.id);
    return block.entry ? block.entry->key(*block.entry, block.id) : std::string();
}

bool isSelected(const Travik::ImageBlock& block, const std::string& selector) {
    return selector == std::to_string(block.id) || selector == keyOf(block);
}

void addEncodingOption(CLI::App& command, Encoding& encoding) {
    static const std::map<std::string, Encoding> names{
        {"auto", Encoding::Automatic}, {"latin1", Encoding::Latin1}, {"utf8", Encoding::Utf8}};
    command
        .add_option("--encoding", encoding,
                    "How umlauts are written: latin1, as they are stored; utf8; auto: utf8 on a terminal only")
        ->transform(CLI::CheckedTransformer(names, CLI::ignore_case).description(""))
        ->type_name("auto|latin1|utf8");
}

std::string toUtf8(std::string_view latin1) {
    std::string utf8;
    utf8.reserve(latin1.size());
    for (const char character : latin1) {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x80) {
            utf8 += character;
        } else {
            utf8 += static_cast<char>(0xC0U | (code >> 6U));
            utf8 += static_cast<char>(0x80U | (code & 0x3FU));
        }
    }
    return utf8;
}

bool writeText(std::string_view latin1, Encoding encoding) {
    const bool utf8 = encoding == Encoding::Utf8 || (encoding == Encoding::Automatic && ::isatty(STDOUT_FILENO) == 1);
    if (utf8)
        std::cout << toUtf8(latin1);
    else
        std::cout << latin1;
    return std::cout.good();
}

} // namespace Tool
