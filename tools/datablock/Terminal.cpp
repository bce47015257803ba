#include "Terminal.h"

#include "Tool.h"

#include <fcntl.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace Tool {

namespace {

enum class Colour : unsigned char { Automatic, Always, Never };

Colour colour = Colour::Automatic;
bool isPagerWanted = true;

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : std::string_view();
}

/// The command of a pager that runs, and the thread that hands it what is written. That thread goes on reading when the
/// pager is gone, so that whoever writes notices nothing and the command ends with the status that it would have had.
class Pager {
public:
    bool start(const std::string& command);
    void end();
    /// The pager keeps the terminal: it is waited for whatever ends the tool. Safe in a signal handler.
    void endAtSignal();

private:
    pid_t process_ = -1;
    int toPager_ = -1;
    int out_ = -1; // what standard output and standard error were
    int err_ = -1;
    std::thread relay_;

    static pid_t spawn(const std::string& command, int input);
    static void relay(int from, int to);
    void wait() const;
};

std::optional<Pager> pager;

extern "C" void endPagerAtSignal(int signal) {
    if (pager)
        pager->endAtSignal();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

pid_t Pager::spawn(const std::string& command, int input) {
    std::vector<std::string> words;
    if (command.find_first_of("|&;<>()$`\\\"'\t\n*?[#~=%") != std::string::npos) {
        words = {"sh", "-c", command};
    } else {
        std::istringstream stream(command);
        for (std::string word; stream >> word;)
            words.push_back(word);
    }
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    // What fits on a screen is left there; colours are shown; the screen stays as it is afterwards.
    ::setenv("LESS", "FRX", 0);
    ::setenv("LV", "-c", 0);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    pid_t process = -1;
    const int error = ::posix_spawnp(&process, arguments.front(), &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? process : -1;
}

void Pager::relay(int from, int to) {
    sigset_t brokenPipe;
    ::sigemptyset(&brokenPipe);
    ::sigaddset(&brokenPipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
    std::array<char, 65536> chunk;
    for (;;) {
        const ssize_t count = ::read(from, chunk.data(), chunk.size());
        if (count == 0 || (count < 0 && errno != EINTR))
            break;
        writeAll(to, {chunk.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))});
    }
    ::close(from);
    ::close(to);
}

bool Pager::start(const std::string& command) {
    std::array<int, 2> written{-1, -1};
    std::array<int, 2> shown{-1, -1};
    if (::pipe2(written.data(), O_CLOEXEC) != 0)
        return false;
    if (::pipe2(shown.data(), O_CLOEXEC) == 0) {
        process_ = spawn(command, shown[0]);
        ::close(shown[0]);
    }
    if (process_ < 0) {
        for (const int file : {written[0], written[1], shown[1]})
            ::close(file);
        return false;
    }
    toPager_ = shown[1];
    try {
        relay_ = std::thread(relay, written[0], toPager_);
    } catch (const std::system_error&) { // no thread to be had
        for (const int file : {written[0], written[1], shown[1]})
            ::close(file);
        wait();
        return false;
    }
    std::cout.flush();
    out_ = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    ::dup2(written[1], STDOUT_FILENO);
    if (::isatty(STDERR_FILENO) == 1) {
        err_ = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
        ::dup2(written[1], STDERR_FILENO);
    }
    ::close(written[1]);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        std::signal(signal, endPagerAtSignal);
    return true;
}

void Pager::wait() const {
    while (::waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

void Pager::end() {
    std::cout.flush();
    std::cerr.flush();
    ::dup2(out_, STDOUT_FILENO);
    if (err_ >= 0)
        ::dup2(err_, STDERR_FILENO);
    relay_.join();
    wait();
}

void Pager::endAtSignal() {
    ::close(toPager_);
    wait();
}

} // namespace

void addTerminalOptions(CLI::App& app) {
    addWordOption<Colour>(
        app, "--color", colour, "Whether the output is coloured; auto: on a terminal, unless NO_COLOR is set",
        {{"auto", Colour::Automatic}, {"always", Colour::Always}, {"never", Colour::Never}}, "auto, always and never")
        ->type_name("auto|always|never");
    app.add_flag("!--no-pager", isPagerWanted, "Write to the terminal at once, not through a pager");
}

bool isTerminal() {
    static const bool is = ::isatty(STDOUT_FILENO) == 1;
    return is;
}

namespace {

std::size_t readWidth() {
    constexpr std::size_t most = 10000;
    const std::string_view columns = environment("COLUMNS");
    std::size_t width = 0;
    const auto [end, error] = std::from_chars(columns.data(), columns.data() + columns.size(), width);
    if (error == std::errc() && end == columns.data() + columns.size() && width > 0)
        return std::min(width, most);
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
        return size.ws_col;
    constexpr std::size_t usual = 80;
    return usual;
}

} // namespace

std::size_t terminalWidth() {
    static const std::size_t width = readWidth();
    return width;
}

bool isColoured() {
    if (colour != Colour::Automatic)
        return colour == Colour::Always;
    return isTerminal() && environment("NO_COLOR").empty() && environment("TERM") != "dumb";
}

void startPager() {
    if (!isTerminal() || !isPagerWanted || pager)
        return;
    std::string_view command = "less";
    for (const char* const name : {"PAGER", "DATABLOCK_PAGER"}) {
        if (const char* const value = std::getenv(name))
            command = value;
    }
    if (command.find_first_not_of(' ') == std::string_view::npos || command == "cat")
        return;
    terminalWidth(); // that of the terminal, which standard output is about not to be
    pager.emplace();
    if (!pager->start(std::string(command)))
        pager.reset();
}

void endPager() {
    if (pager)
        pager->end();
    pager.reset();
}

Progress::Progress(std::size_t total)
    : total_(total), isWanted_(!pager && ::isatty(STDERR_FILENO) == 1),
      next_(Clock::now() + std::chrono::milliseconds(500)) {}

void Progress::show(std::size_t done) {
    if (!isWanted_ || Clock::now() < next_)
        return;
    next_ = Clock::now() + std::chrono::milliseconds(100);
    isShown_ = true;
    const std::string of = total_ > 0 ? " of " + std::to_string(total_) : std::string();
    writeAll(STDERR_FILENO, "\r" + std::to_string(done) + of + " images");
}

void Progress::hide() {
    if (isShown_)
        writeAll(STDERR_FILENO, "\r\x1b[K");
    isShown_ = false;
}

} // namespace Tool
