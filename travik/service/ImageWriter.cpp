#include "files/NewFile.h"
#include "files/Rights.h"

#include <travik/service/ImageWriter.h>
#include <travik/service/InPlaceWriter.h>

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace Travik {

using files::Descriptor;
using files::errorText;
using files::NewFile;
using files::Place;

namespace {

constexpr mode_t ownerOnly = 0600; // until it has the rights of what it replaces
constexpr mode_t newFileMode = 0666;
constexpr int attemptsLimit = 100;
constexpr const char* changedByOthers = "was changed by another program, which did not ask whether it may";

bool isDenied() { return errno == EACCES || errno == EPERM || errno == EROFS; }

std::string folderError() { return isDenied() ? "nothing can be written beside it: " + errorText() : errorText(); }

/// Brings the bytes to the disk.
bool fill(const NewFile& file, std::span<const char> bytes) {
    return files::writeAll(file.descriptor(), bytes) && ::fsync(file.descriptor()) == 0;
}

/// An open file as what it is written to in place.
class FileDevice : public ByteDevice {
public:
    /// The flag is set when something is written.
    FileDevice(int file, bool& isTouched) : file_(file), isTouched_(isTouched) {}

    std::ptrdiff_t readAt(std::size_t offset, std::span<char> bytes) override {
        const ssize_t count = ::pread(file_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
        return count < 0 ? -errno : count;
    }
    std::ptrdiff_t writeAt(std::size_t offset, std::span<const char> bytes) override {
        isTouched_ = true;
        return files::writeAllAt(file_, offset, bytes) ? static_cast<std::ptrdiff_t>(bytes.size()) : -errno;
    }
    int sync() override {
        // A node that has nothing to be synced says EINVAL.
        if (::fsync(file_) != 0 && errno != EINVAL)
            return -errno;
        ::posix_fadvise(file_, 0, 0, POSIX_FADV_DONTNEED); // a block device is read back itself, not its cache
        return 0;
    }

private:
    int file_;
    bool& isTouched_;
};

std::string whyNoPlainFile(const struct stat& status) {
    constexpr unsigned int memoryTechnologyDevice = 90;
    if (S_ISREG(status.st_mode) || S_ISBLK(status.st_mode))
        return {};
    if (S_ISCHR(status.st_mode) && major(status.st_rdev) == memoryTechnologyDevice)
        return "a character device of a flash, which has to be erased before it is written: use its block device "
               "(mtdblock)";
    return "not a plain file, not replaced";
}

} // namespace

struct ImageEdit::State {
    std::string error;
    Place place;
    Descriptor file;
    struct stat status {};
    std::vector<char> original;
    std::vector<char> bytes;

    void open(const std::string& path, unsigned int milliseconds);
    WriteReport commit(const WriteOptions& options);

private:
    bool isTouched = false; // whether anything was written in place

    bool isDevice() const { return S_ISBLK(status.st_mode); }
    bool isSameSize() const { return bytes.size() == original.size(); }
    std::string openFile(const std::string& path);
    bool isWhatWasRead() const;
    std::string whyNot(const WriteOptions& options, WriteReport& report) const;
    std::string keepOld(const std::string& wanted, WriteReport& report, Place& backup) const;
    std::string put(const WriteOptions& options, WriteReport& report);
    std::string replace(WriteReport& report);
    std::string putInPlace(const std::string& backup);
};

std::string ImageEdit::State::openFile(const std::string& path) {
    // What a link of the process's own leads to ("/dev/stdout") may have no place that it could be renamed to.
    if (::stat(path.c_str(), &status) == 0 && !whyNoPlainFile(status).empty())
        return whyNoPlainFile(status);
    place = Place();
    if (std::string why = place.find(path); !why.empty())
        return why;
    if (!place.status(status))
        return errorText();
    if (std::string why = whyNoPlainFile(status); !why.empty())
        return why;
    // Open for writing, which nobody may ever do: who may not, may not replace it either. A device is nobody else's.
    const int ownDevice = isDevice() ? O_EXCL : 0;
    file = Descriptor(
        ::openat(place.folder(), place.name().c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | ownDevice));
    return file < 0 ? "cannot be written: " + errorText() : "";
}

void ImageEdit::State::open(const std::string& path, unsigned int milliseconds) {
    for (int attempt = 0; attempt < attemptsLimit; ++attempt) {
        error = openFile(path);
        if (!error.empty())
            return;
        if (!files::lock(file, milliseconds)) {
            error = "is being changed by another program";
            return;
        }
        // Whoever had the lock may have put another file in the place of the one that was locked.
        if (::fstat(file, &status) == 0 && place.holds(status)) {
            files::removeLeftOver(place);
            error = files::readAll(file, original);
            bytes = original;
            return;
        }
    }
    error = "is replaced by another program all the time";
}

bool ImageEdit::State::isWhatWasRead() const {
    return place.holds(status) && ::lseek(file, 0, SEEK_SET) == 0 && files::holds(file, original);
}

/// The old bytes under a name of their own.
std::string ImageEdit::State::keepOld(const std::string& wanted, WriteReport& report, Place& backup) const {
    const auto failed = [&](const std::string& why) { return "backup " + backup.path() + ": " + why; };
    for (int number = 1; number <= attemptsLimit; ++number) {
        if (wanted.empty())
            backup = place.beside(place.name() + (number == 1 ? "~" : "~" + std::to_string(number)));
        else if (const std::string why = backup.find(wanted); !why.empty())
            return failed(why);
        NewFile copy(backup);
        if (!copy.create(ownerOnly)) {
            report.wouldDoInPlace = wanted.empty() && isDenied() && isSameSize();
            return failed(folderError());
        }
        if (const std::string why = files::copyRights(file, status, copy.descriptor(), report.warnings); !why.empty())
            return failed(why);
        std::string kept = backup.path();
        if (fill(copy, original) && copy.add()) {
            backup.sync();
            report.backup = std::move(kept);
            return {};
        }
        if (errno != EEXIST || !wanted.empty())
            return failed(errorText());
    }
    return failed(errorText(EEXIST));
}

/// What keeps the options from being followed, whatever the bytes are.
std::string ImageEdit::State::whyNot(const WriteOptions& options, WriteReport& report) const {
    if (!options.inPlace) {
        report.wouldDoInPlace = isDevice() && isSameSize();
        return isDevice() ? "a device, which cannot be replaced, only written in place" : "";
    }
    if (!options.backup || options.backup->empty())
        return "is written in place only with a backup that is named";
    return bytes.size() == original.size()
               ? ""
               : "has " + std::to_string(original.size()) + " bytes, is not written in place with an image of " +
                     std::to_string(bytes.size());
}

/// Writes the bytes into the file itself. Only a plain one takes another size.
std::string ImageEdit::State::putInPlace(const std::string& backup) {
    const files::HeldSignals held;
    const auto resize = [&](std::size_t size) { return ::ftruncate(file, static_cast<off_t>(size)) == 0; };
    const bool isResized = !isSameSize();
    // Where the sizes differ, what is compared is as long as the longer, and the end is cut off or left as it is.
    std::vector<char> from = original;
    from.resize(std::max(original.size(), bytes.size()));
    std::vector<char> to = bytes;
    to.insert(to.end(), from.begin() + static_cast<std::ptrdiff_t>(bytes.size()), from.end());
    if (isResized) {
        isTouched = true;
        if (!resize(from.size()))
            return errorText();
    }
    FileDevice device(file, isTouched);
    std::string why = writeInPlace(device, from, to).error;
    if (why.empty() && isResized && (!resize(bytes.size()) || device.sync() != 0))
        why = "cannot be cut off: " + errorText();
    if (why.empty())
        return {};
    if (isResized && !resize(original.size()))
        why += "; its size is not what it was";
    return why + "; the old bytes are in " + backup;
}

std::string ImageEdit::State::replace(WriteReport& report) {
    NewFile made(place);
    if (!made.create(ownerOnly)) {
        report.wouldDoInPlace = isDenied() && isSameSize();
        return folderError();
    }
    if (std::string why = files::copyRights(file, status, made.descriptor(), report.warnings); !why.empty())
        return why;
    if (!fill(made, bytes))
        return errorText();
    if (!isWhatWasRead())
        return changedByOthers;
    // Said before it is so: once the file is replaced nothing may fail.
    if (status.st_nlink > 1)
        report.warnings.push_back("has " + std::to_string(status.st_nlink - 1) +
                                  (status.st_nlink == 2 ? " other hard link, which keeps the old contents"
                                                        : " other hard links, which keep the old contents"));
    if (made.replace()) {
        place.sync();
        return {};
    }
    if (status.st_nlink > 1)
        report.warnings.pop_back();
    if (errno != EBUSY && errno != EXDEV)
        return folderError();
    if (report.backup.empty()) {
        report.wouldDoInPlace = isSameSize();
        return "cannot be replaced, only written in place, which asks for a backup: " + errorText();
    }
    std::string why = putInPlace(report.backup);
    if (why.empty())
        report.warnings.emplace_back("cannot be replaced, was written in place");
    return why;
}

std::string ImageEdit::State::put(const WriteOptions& options, WriteReport& report) {
    if (!options.inPlace)
        return replace(report);
    return isWhatWasRead() ? putInPlace(report.backup) : changedByOthers;
}

WriteReport ImageEdit::State::commit(const WriteOptions& options) {
    WriteReport report;
    report.error = error;
    if (report.error.empty())
        report.error = whyNot(options, report);
    if (!report.error.empty() || bytes == original)
        return report;
    Place backup;
    const auto dropBackup = [&] {
        ::unlinkat(backup.folder(), backup.name().c_str(), 0);
        report.backup.clear();
    };
    if (options.backup)
        report.error = keepOld(*options.backup, report, backup);
    // The same warnings would come of the file itself.
    if (report.error.empty()) {
        report.warnings.clear();
        try {
            report.error = put(options, report);
        } catch (...) {
            if (!report.backup.empty() && !isTouched)
                dropBackup();
            throw;
        }
    }
    if (!report.error.empty() && !report.backup.empty() && !isTouched && isWhatWasRead())
        dropBackup();
    return report;
}

ImageEdit::ImageEdit(const std::string& path, unsigned int milliseconds) : state_(std::make_unique<State>()) {
    state_->open(path, milliseconds);
}

ImageEdit::ImageEdit(ImageEdit&&) noexcept = default;
ImageEdit& ImageEdit::operator=(ImageEdit&&) noexcept = default;
ImageEdit::~ImageEdit() = default;

const std::string& ImageEdit::error() const { return state_->error; }
const std::vector<char>& ImageEdit::original() const { return state_->original; }
std::vector<char>& ImageEdit::bytes() { return state_->bytes; }

WriteReport ImageEdit::commit(const WriteOptions& options) {
    WriteReport report = state_->commit(options);
    state_->file = Descriptor();
    state_->error = "was let go";
    return report;
}

WriteReport writeImageFile(const std::string& path, std::span<const char> bytes, const WriteOptions& options) {
    if (path == "-")
        return {.error = files::writeAll(STDOUT_FILENO, bytes) ? "" : errorText()};
    for (int attempt = 0; attempt < attemptsLimit; ++attempt) {
        struct stat status {};
        if (::stat(path.c_str(), &status) == 0) {
            ImageEdit edit(path);
            edit.bytes().assign(bytes.begin(), bytes.end());
            return edit.commit(options);
        }
        if (options.inPlace)
            return {.error = "nothing is there to be written in place: " + errorText()};
        Place place;
        if (std::string why = place.find(path); !why.empty())
            return {.error = std::move(why)};
        NewFile made(place);
        if (!made.create(newFileMode))
            return {.error = errorText()};
        if (fill(made, bytes) && made.add()) {
            place.sync();
            return {};
        }
        if (errno != EEXIST) // another came first: it is replaced
            return {.error = errorText()};
    }
    return {.error = "comes and goes"};
}

bool isSameFile(const std::string& path, const std::string& other) {
    struct stat first {};
    struct stat second {};
    return path != "-" && other != "-" && ::stat(path.c_str(), &first) == 0 && ::stat(other.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

} // namespace Travik
