#include "Descriptor.h"

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <system_error>
#include <utility>

namespace Travik::files {

namespace {

// No module's memory comes near; a node that never ends does.
constexpr std::size_t largestImage = std::size_t{256} << 20U;

/// Turns the signal of the limit on the size of files into the error that the call gives besides.
class SizeLimitAsError {
public:
    SizeLimitAsError() {
        ::sigemptyset(&limit_);
        ::sigaddset(&limit_, SIGXFSZ);
        ::pthread_sigmask(SIG_BLOCK, &limit_, &before_);
    }
    SizeLimitAsError(const SizeLimitAsError&) = delete;
    SizeLimitAsError& operator=(const SizeLimitAsError&) = delete;
    ~SizeLimitAsError() {
        const int error = errno;
        constexpr timespec now{};
        if (error == EFBIG)
            ::sigtimedwait(&limit_, nullptr, &now);
        ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
        errno = error;
    }

private:
    sigset_t limit_;
    sigset_t before_;
};

template <class Write>
bool writeInPieces(std::span<const char> bytes, Write write) {
    const SizeLimitAsError limit;
    errno = 0;
    while (!bytes.empty()) {
        const ssize_t count = write(bytes);
        if (count == 0)
            errno = EIO; // nothing was written, and nothing would be
        if (count <= 0 && errno != EINTR)
            return false;
        bytes = bytes.subspan(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return true;
}

constexpr std::size_t longestChunk = 65536;

/// For what the file has by now; one that grows meanwhile is read all the same.
void makeRoom(int file, std::vector<char>& bytes) {
    struct stat status {};
    if (::fstat(file, &status) == 0 && status.st_size > 0)
        bytes.reserve(bytes.size() + std::min(static_cast<std::size_t>(status.st_size), largestImage + 1));
}

/// Hands over what comes from the descriptor until its end, or until no more is wanted. Empty, or why that failed.
template <class Take>
std::string readChunks(int file, const Take& take) {
    std::array<char, longestChunk> chunk;
    for (;;) {
        const ssize_t count = ::read(file, chunk.data(), chunk.size());
        if (count == 0)
            return {};
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return errorText();
        if (!take(std::span<const char>(chunk).first(static_cast<std::size_t>(count))))
            return {};
    }
}

} // namespace

Descriptor::~Descriptor() {
    if (number_ > STDERR_FILENO)
        ::close(number_);
}

std::string errorText(int error) { return std::generic_category().message(error); }
std::string errorText() { return errorText(errno); }

std::string readAll(int file, std::vector<char>& bytes) {
    bool isFirst = true;
    std::string error = readChunks(file, [&](std::span<const char> chunk) {
        // Most images are shorter than a chunk: of them, asking for the length takes an eighth of a whole check.
        if (std::exchange(isFirst, false) && chunk.size() == longestChunk)
            makeRoom(file, bytes);
        bytes.insert(bytes.end(), chunk.begin(), chunk.end());
        return bytes.size() <= largestImage;
    });
    return error.empty() && bytes.size() > largestImage ? "larger than 256 MiB, not a module image" : error;
}

bool holds(int file, std::span<const char> bytes) {
    bool isSame = true;
    const std::string error = readChunks(file, [&](std::span<const char> chunk) {
        isSame = chunk.size() <= bytes.size() && std::ranges::equal(chunk, bytes.first(chunk.size()));
        bytes = bytes.subspan(isSame ? chunk.size() : 0);
        return isSame;
    });
    return error.empty() && isSame && bytes.empty();
}

bool writeAll(int file, std::span<const char> bytes) {
    return writeInPieces(bytes, [&](std::span<const char> rest) { return ::write(file, rest.data(), rest.size()); });
}

bool writeAllAt(int file, std::size_t offset, std::span<const char> bytes) {
    const std::size_t end = offset + bytes.size();
    return writeInPieces(bytes, [&](std::span<const char> rest) {
        return ::pwrite(file, rest.data(), rest.size(), static_cast<off_t>(end - rest.size()));
    });
}

bool lock(int file, unsigned int milliseconds) {
    constexpr unsigned int step = 5;
    for (unsigned int waited = 0;; waited += step) {
        if (::flock(file, LOCK_EX | LOCK_NB) == 0)
            return true;
        if (errno != EWOULDBLOCK && errno != EINTR)
            return true;
        if (waited >= milliseconds)
            return false;
        const timespec pause{.tv_sec = 0, .tv_nsec = step * 1000000L};
        ::nanosleep(&pause, nullptr);
    }
}

HeldSignals::HeldSignals() {
    sigset_t held;
    ::sigfillset(&held);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS})
        ::sigdelset(&held, fault);
    ::pthread_sigmask(SIG_BLOCK, &held, &before_);
}

HeldSignals::~HeldSignals() { ::pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

} // namespace Travik::files
