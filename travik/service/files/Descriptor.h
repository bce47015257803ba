#pragma once

#include <csignal>
#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

/// What the image files are read and written with. Not installed.
namespace Travik::files {

/// A file descriptor that is closed with its object. Standard input, output and error are left open.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor();
    operator int() const { return number_; } // NOLINT(google-explicit-constructor): it stands for the number

private:
    int number_ = -1;
};

/// What the error number means; errno by default. Unlike strerror's, the text is the caller's own.
std::string errorText(int error);
std::string errorText();

/// Appends what comes from the descriptor until its end. Empty, or why that failed.
std::string readAll(int file, std::vector<char>& bytes);
/// Whether just these bytes come from the descriptor.
bool holds(int file, std::span<const char> bytes);

/// False, and errno, where not all could be written. A file that would grow beyond the process's limit is EFBIG, not
/// the end of the process.
bool writeAll(int file, std::span<const char> bytes);
bool writeAllAt(int file, std::size_t offset, std::span<const char> bytes);

/// Waits until nobody else works with the file, at most so many milliseconds; false, and errno, if that does not come.
/// True, too, where the file system has no locks.
bool lock(int file, unsigned int milliseconds);

/// Keeps the signals that would end the process waiting for as long as it lives, on the calling thread.
class HeldSignals {
public:
    HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
    ~HeldSignals();

private:
    sigset_t before_;
};

} // namespace Travik::files
