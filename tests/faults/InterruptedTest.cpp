#include <travik/service/ImageFile.h>
#include <travik/service/ImageWriter.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>
#include <vector>

/// Signals that interrupt reading and writing again and again, while the other end of a pipe takes and gives little at
/// a time.
namespace {

using namespace Travik;

std::atomic<int> interruptions;

class Interruptions {
public:
    Interruptions() {
        struct sigaction action {};
        action.sa_handler = [](int) { ++interruptions; }; // and no SA_RESTART
        ::sigaction(SIGALRM, &action, &before_);
        set(300);
    }
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;
    ~Interruptions() {
        set(0);
        ::sigaction(SIGALRM, &before_, nullptr);
    }

private:
    struct sigaction before_ {};

    static void set(int microseconds) {
        const itimerval every{{0, microseconds}, {0, microseconds}};
        ::setitimer(ITIMER_REAL, &every, nullptr);
    }
};

/// One of the standard streams as one end of a small pipe, whose other end another thread has.
class Piped {
public:
    template <class Other>
    Piped(int stream, Other other) : stream_(stream), kept_(::fcntl(stream, F_DUPFD_CLOEXEC, 3)) {
        const std::size_t own = stream == STDIN_FILENO ? 0 : 1;
        std::array<int, 2> ends{};
        static_cast<void>(::pipe2(ends.data(), O_CLOEXEC));
        ::fcntl(ends[0], F_SETPIPE_SZ, 4096);
        ::dup2(ends[own], stream);
        ::close(ends[own]);
        thread_ = std::thread([file = ends[1 - own], other] {
            sigset_t alarm;
            ::sigemptyset(&alarm);
            ::sigaddset(&alarm, SIGALRM);
            ::pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
            other(file);
            ::close(file);
        });
    }
    Piped(const Piped&) = delete;
    Piped& operator=(const Piped&) = delete;
    ~Piped() {
        ::dup2(kept_, stream_);
        ::close(kept_);
        thread_.join();
    }

private:
    int stream_;
    int kept_;
    std::thread thread_;
};

void pause() { std::this_thread::sleep_for(std::chrono::microseconds(500)); }

TEST(Interrupted, ReadingAndWriting) {
    std::vector<char> image(200000);
    for (std::size_t i = 0; i < image.size(); ++i)
        image[i] = static_cast<char>(i * i >> 3U);
    interruptions = 0;
    const Interruptions begin;

    std::vector<char> written;
    WriteReport report;
    {
        const Piped output(STDOUT_FILENO, [&](int file) {
            std::array<char, 999> part;
            for (ssize_t count = 1; count > 0; pause()) {
                count = ::read(file, part.data(), part.size());
                written.insert(written.end(), part.data(), part.data() + std::max<ssize_t>(count, 0));
            }
        });
        report = writeImageFile("-", image);
    }
    EXPECT_EQ(report.error, "");
    EXPECT_TRUE(written == image);
    EXPECT_GT(interruptions.exchange(0), 5);

    std::vector<char> read;
    std::string why;
    {
        const Piped input(STDIN_FILENO, [&](int file) {
            for (std::size_t at = 0; at < image.size(); at += 1000, pause())
                ASSERT_EQ(::write(file, image.data() + at, 1000), 1000);
        });
        why = readImageFile("-", read);
    }
    EXPECT_EQ(why, "");
    EXPECT_TRUE(read == image);
    EXPECT_GT(interruptions, 5);
}

} // namespace
