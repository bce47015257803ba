#pragma once

#include <travik/service/Export.h>

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

/// The one way out: whatever writes an image file, writes it here.
///
/// A file is replaced whole or not at all. The new bytes are written beside the old ones, brought to the disk and put
/// in their place by a rename, so that whoever reads sees the old image or the new one, at any moment and whatever ends
/// the process: a signal, a full disk, a limit, the power. Links keep leading to the file, one that leads to no file
/// yet as well.
///
/// - Who changes an image holds a lock on its file from reading to writing. Two that change it at once do so one after
///   the other, and neither's change is lost. Programs that do not ask for the lock (`flock`) are noticed: a file that
///   is not what was read is left as it is.
/// - The new file gets owner and group, permissions, access control list and other extended attributes of the old one.
///   What could not be kept is a warning; where somebody would get rights that he did not have, nothing is written.
/// - A file that the caller may not write is not replaced, even where he may write its folder.
/// - Nothing half-written stays. A process that is killed in the very moment of the rename may leave a file
///   ".datablock-<16 digits>.tmp"; the next writer of the same image removes it.
/// - What cannot be renamed over, the node of a block device or a file under /sys, is written in place if that is asked
///   for, its old bytes safe in a backup first (see `WriteOptions::inPlace`). A file that is a mount point of its own
///   is without being asked for, if there is a backup. A process that is killed meanwhile leaves the backup.
///
/// Nothing is printed. Nothing is thrown but std::bad_alloc where memory runs out, and then, as after any other
/// failure, the file holds the old bytes and nothing else was made. All functions may be used from several threads, one
/// object from one at a time.
namespace Travik {

struct WriteOptions {
    /// Keeps the old bytes, on the disk before the new ones are: the file to be made, which must not exist, or "" for
    /// the image's own path with a "~", or with "~2", "~3" ... where that exists. It gets the rights of the image.
    std::optional<std::string> backup{};
    /// Writes the bytes that differ into the file or the device itself, as `writeInPlace` does, once the old ones are
    /// in the backup, which has to be named. The size must be the one that is there. Hard links see the new bytes, too.
    /// A backup stays once a byte was written, even if the old bytes were written back.
    bool inPlace = false;
};

/// What came of a writing.
struct WriteReport {
    /// Empty when the file holds the new bytes; else why it does not. Then it holds the old ones, unless it was written
    /// in place and they could not be written back, which is said.
    std::string error{};
    std::vector<std::string> warnings{}; ///< each a line, without the name of the file
    std::string backup{};                ///< the file that holds the old bytes; empty where there is none
    /// After a failure: whether the file cannot be replaced, but might be written in place.
    bool wouldDoInPlace = false;

    bool succeeded() const { return error.empty(); }
};

/// An image file while it is being changed: locked and read by the constructor, let go by the destructor. It may be the
/// node of a block device that nobody else has open, which is written in place only. Character devices are refused:
/// flash would have to be erased first.
///
///     ImageEdit edit(path);
///     if (edit.error().empty()) {
///         change(edit.bytes());
///         report = edit.commit();
///     }
class TRAVIK_SERVICE_EXPORT ImageEdit {
public:
    /// How long to wait for whoever else is changing the file.
    static constexpr unsigned int patience = 30000; // milliseconds

    explicit ImageEdit(const std::string& path, unsigned int milliseconds = patience);
    ImageEdit(ImageEdit&&) noexcept;
    ImageEdit& operator=(ImageEdit&&) noexcept;
    /// Without a commit, the file is what it was.
    ~ImageEdit();

    /// Empty, or why the file cannot be changed. Then there are no bytes, and a commit fails with the same error.
    const std::string& error() const;
    /// As they were read.
    const std::vector<char>& original() const;
    /// As they will be written; at first those that were read.
    std::vector<char>& bytes();

    /// Writes the bytes and lets the file go: a second commit fails. Bytes that are those that were read are not
    /// written again.
    WriteReport commit(const WriteOptions& options = {});

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Writes a whole image to a file, which may exist, or to standard output ("-"). Backup and warnings concern the file
/// that was there before.
TRAVIK_SERVICE_EXPORT WriteReport writeImageFile(const std::string& path, std::span<const char> bytes,
                                                 const WriteOptions& options = {});

/// Whether both paths lead to the same existing file; "-" leads to none.
TRAVIK_SERVICE_EXPORT bool isSameFile(const std::string& path, const std::string& other);

} // namespace Travik
