#include <travik/platform/StandardError.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>

namespace Travik {

void writeToStandardError(std::string_view line) noexcept {
    const int error = errno;
    // A pipe without a reader and a limit on the size of files would end the process.
    sigset_t lost;
    sigset_t before;
    sigset_t pending;
    ::sigemptyset(&lost);
    ::sigaddset(&lost, SIGPIPE);
    ::sigaddset(&lost, SIGXFSZ);
    ::pthread_sigmask(SIG_BLOCK, &lost, &before);
    ::sigpending(&pending);
    errno = 0;
    std::fwrite(line.data(), 1, line.size(), stderr);
    const int raised = errno == EPIPE ? SIGPIPE : errno == EFBIG ? SIGXFSZ : 0;
    // What others raised before is theirs.
    if (raised != 0 && ::sigismember(&pending, raised) == 0) {
        ::sigemptyset(&lost);
        ::sigaddset(&lost, raised);
        constexpr timespec now{};
        ::sigtimedwait(&lost, nullptr, &now);
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
}

} // namespace Travik
