#pragma once

#include <CLI/CLI.hpp>

#include <chrono>
#include <cstddef>

/// What is different where a person looks on.
namespace Tool {

/// Declares "--color" and "--no-pager" of all commands.
void addTerminalOptions(CLI::App& app);

/// Whether standard output is a terminal, though a pager may stand before it.
bool isTerminal();
/// Columns of the terminal: COLUMNS where that is a number, else what the terminal says, else 80.
std::size_t terminalWidth();
/// Whether standard output is to be coloured: as "--color" says, else on a terminal, unless NO_COLOR is set.
bool isColoured();

/// From here on standard output, and standard error where that is the terminal, too, is what a person pages through: by
/// the command of DATABLOCK_PAGER, else PAGER, else less. Does nothing where standard output is no terminal, or there
/// is no such command, or it is empty or "cat". A pager that is left early takes the rest without showing it.
void startPager();
/// Waits until the pager was left. To be called when all is written.
void endPager();

/// A line on a terminal's standard error: how many are done. It comes when it has lasted half a second.
class Progress {
public:
    /// 0: nobody knows how many there are.
    explicit Progress(std::size_t total = 0);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress() { hide(); }

    void show(std::size_t done);
    /// Before something else is written.
    void hide();

private:
    using Clock = std::chrono::steady_clock;

    std::size_t total_;
    bool isWanted_;
    bool isShown_ = false;
    Clock::time_point next_;
};

} // namespace Tool
