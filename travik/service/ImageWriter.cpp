#include "files/NewFile.h"
#include "files/Rights.h"

#include <travik/service/ImageWriter.h>

#include <fcntl.h>
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

std::string folderError() {
    const bool denied = errno == EACCES || errno == EPERM || errno == EROFS;
    return denied ? "nothing can be written beside it: " + errorText() : errorText();
}

/// Brings the bytes to the disk.
bool fill(const NewFile& file, std::span<const char> bytes) {
    return files::writeAll(file.descriptor(), bytes) && ::fsync(file.descriptor()) == 0;
}

/// Writes those bytes that differ, in ascending order, and reads all of them back. The file is `from` before.
bool overwrite(int file, std::span<const char> from, std::span<const char> to) {
    const auto differs = [&](std::size_t at) { return at >= from.size() || from[at] != to[at]; };
    for (std::size_t begin = 0; begin < to.size();) {
        std::size_t end = begin;
        while (end < to.size() && differs(end))
            ++end;
        if (end > begin && !files::writeAllAt(file, begin, to.subspan(begin, end - begin)))
            return false;
        begin = end + 1; // which does not differ, or is behind the last
    }
    if (::ftruncate(file, static_cast<off_t>(to.size())) != 0 || ::fsync(file) != 0 || ::lseek(file, 0, SEEK_SET) != 0)
        return false;
    std::vector<char> back;
    errno = EIO;
    return files::readAll(file, back).empty() && std::ranges::equal(back, to);
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
    std::string openFile(const std::string& path);
    WriteReport commit(const WriteOptions& options);

private:
    bool isWhatWasRead() const;
    std::string keepOld(const std::string& wanted, WriteReport& report, Place& backup) const;
    std::string put(WriteReport& report) const;
    std::string putInPlace(WriteReport& report) const;
};

std::string ImageEdit::State::openFile(const std::string& path) {
    // What a link of the process's own leads to ("/dev/stdout") may have no place that it could be renamed to.
    if (::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode))
        return "not a plain file, not replaced";
    place = Place();
    if (std::string why = place.find(path); !why.empty())
        return why;
    if (!place.status(status))
        return errorText();
    if (!S_ISREG(status.st_mode))
        return "not a plain file, not replaced";
    // Open for writing, which nobody will do: who may not, may not replace it either.
    file = Descriptor(::openat(place.folder(), place.name().c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
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
    std::vector<char> now;
    return place.holds(status) && ::lseek(file, 0, SEEK_SET) == 0 && files::readAll(file, now).empty() &&
           now == original;
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
        if (!copy.create(ownerOnly))
            return failed(folderError());
        if (const std::string why = files::copyRights(file, status, copy.descriptor(), report.warnings); !why.empty())
            return failed(why);
        if (fill(copy, original) && copy.add()) {
            backup.sync();
            report.backup = backup.path();
            return {};
        }
        if (errno != EEXIST || !wanted.empty())
            return failed(errorText());
    }
    return failed(errorText(EEXIST));
}

std::string ImageEdit::State::putInPlace(WriteReport& report) const {
    if (report.backup.empty())
        return "cannot be replaced, only written in place, which asks for a backup: " + errorText();
    const files::HeldSignals held;
    if (!overwrite(file, original, bytes)) {
        std::string why = errorText();
        if (isWhatWasRead())
            return why;
        files::writeAllAt(file, 0, original);
        overwrite(file, original, original); // whose length is right then, too
        return why + (isWhatWasRead() ? "; the old bytes were written back"
                                      : "; the old bytes could not be written back, they are in " + report.backup);
    }
    report.warnings.emplace_back("cannot be replaced, was written in place");
    return {};
}

std::string ImageEdit::State::put(WriteReport& report) const {
    NewFile made(place);
    if (!made.create(ownerOnly))
        return folderError();
    if (std::string why = files::copyRights(file, status, made.descriptor(), report.warnings); !why.empty())
        return why;
    if (!fill(made, bytes))
        return errorText();
    if (!isWhatWasRead())
        return "was changed by another program, which did not ask whether it may";
    if (!made.replace())
        return errno == EBUSY || errno == EXDEV ? putInPlace(report) : folderError();
    place.sync();
    if (status.st_nlink > 1)
        report.warnings.push_back("has " + std::to_string(status.st_nlink - 1) +
                                  (status.st_nlink == 2 ? " other hard link, which keeps the old contents"
                                                        : " other hard links, which keep the old contents"));
    return {};
}

WriteReport ImageEdit::State::commit(const WriteOptions& options) {
    WriteReport report;
    report.error = error;
    if (!error.empty() || bytes == original)
        return report;
    Place backup;
    if (options.backup)
        report.error = keepOld(*options.backup, report, backup);
    // The same warnings would come of the file itself.
    if (report.error.empty()) {
        report.warnings.clear();
        report.error = put(report);
    }
    if (!report.error.empty() && !report.backup.empty() && isWhatWasRead()) {
        ::unlinkat(backup.folder(), backup.name().c_str(), 0);
        report.backup.clear();
    }
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
        return {.error = files::writeAll(STDOUT_FILENO, bytes) ? "" : errorText(), .warnings = {}, .backup = {}};
    for (int attempt = 0; attempt < attemptsLimit; ++attempt) {
        struct stat status {};
        if (::stat(path.c_str(), &status) == 0) {
            ImageEdit edit(path);
            edit.bytes().assign(bytes.begin(), bytes.end());
            return edit.commit(options);
        }
        Place place;
        if (std::string why = place.find(path); !why.empty())
            return {.error = std::move(why), .warnings = {}, .backup = {}};
        NewFile made(place);
        if (!made.create(newFileMode))
            return {.error = errorText(), .warnings = {}, .backup = {}};
        if (fill(made, bytes) && made.add()) {
            place.sync();
            return {};
        }
        if (errno != EEXIST) // another came first: it is replaced
            return {.error = errorText(), .warnings = {}, .backup = {}};
    }
    return {.error = "comes and goes", .warnings = {}, .backup = {}};
}

bool isSameFile(const std::string& path, const std::string& other) {
    struct stat first {};
    struct stat second {};
    return path != "-" && other != "-" && ::stat(path.c_str(), &first) == 0 && ::stat(other.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

} // namespace Travik
