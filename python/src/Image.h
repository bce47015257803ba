#pragma once

#include "ImageState.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Python {

/// An image as Python holds it: its present state, and where it came from. Every function may be called from several
/// threads at once. None needs the interpreter's lock, and `edit` and `save` must be called without it.
class Image : public std::enable_shared_from_this<Image> {
public:
    /// `path` is empty for an image that comes from memory.
    Image(std::vector<char> bytes, std::string path);

    /// Throws ClosedError.
    StatePtr state() const;
    void close();
    bool isClosed() const;
    const std::string& path() const { return path_; }
    /// Whether it differs from what was read, or written last.
    bool isModified() const;

    /// Hands out a copy of the bytes; they are the next state if it returns true. One edit at a time.
    void edit(const std::function<bool(std::vector<char>&)>& change);

    struct Saved {
        std::string backup; ///< the file that holds the old bytes; empty where there is none
        std::vector<std::string> warnings;
    };
    /// Writes the image to where it came from, which must still hold what was read; or as a whole to another file.
    /// Throws FileError, ChangedError, ClosedError.
    Saved save(const std::optional<std::string>& path, const std::optional<std::string>& backup);

private:
    const std::string path_;
    mutable std::mutex mutex_; // of the pointers; held for a moment
    StatePtr state_;
    StatePtr saved_;
    std::mutex editing_; // held from reading to publishing

    Saved saveInPlace(const std::optional<std::string>& backup);
};

/// What a function throws becomes an exception of Python (Errors.cpp).
struct ClosedError {};
struct ChangedError {
    std::string path;
};
struct NoPathError {};
struct FileError {
    std::string text;
    std::string path;
};

} // namespace Python
