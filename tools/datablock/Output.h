#pragma once

#include <travik/service/TerminalText.h>

#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>

/// How the tool writes: what is shown on a terminal is made safe for it, files and pipes get the bytes as they are, a
/// failure is told once and ends the tool, and nothing is held back in memory.
namespace Tool {

/// To be called before anything is opened: a descriptor of 0, 1 and 2 that the caller closed would be given to the next
/// file, which what is meant for standard output or standard error would then be written to. Each is occupied such
/// that using it fails as it did.
void occupyStandardDescriptors();

/// Straight to a descriptor, on when a signal interrupts. 0, or an error number. Needs no memory.
int writeAll(int descriptor, std::string_view bytes);

/// Says so on standard error and ends the tool with status 2. Needs no memory: for std::set_new_handler.
[[noreturn]] void endOutOfMemory();

/// Takes std::cout and std::cerr over as long as it lives.
class StandardStreams {
public:
    StandardStreams();
    StandardStreams(const StandardStreams&) = delete;
    StandardStreams& operator=(const StandardStreams&) = delete;
    ~StandardStreams();

private:
    std::streambuf* out_;
    std::streambuf* err_;
};

/// From here on what is written to standard output is safe for a terminal already, colours included, and passes as it
/// is.
void passSafeText();

/// A stream that collects for later what goes to standard output, or to standard error: `InLine` makes names as safe in
/// it as there.
class CollectingStream : public std::ostringstream {
public:
    explicit CollectingStream(int descriptor);

    /// What was collected. The stream is as if it were new.
    std::string take();
};

/// A name or a selector inside a line: a terminal is shown line feeds and tabs by their numbers, too.
struct InLine {
    std::string_view text;
};
std::ostream& operator<<(std::ostream& os, InLine name);

/// How texts in the blocks' own form, which are Latin-1, are written.
enum class Encoding : unsigned char { Automatic, Latin1, Utf8 };

/// A stream in its default state for a text in the blocks' own form, on its way to standard output: as it is, or as
/// UTF-8 where that was asked for or a terminal shows it. Flushing it, as block texts do at each line end, lets the
/// lines go on being collected.
class BlockStream : public std::ostream {
public:
    explicit BlockStream(Encoding encoding);
    BlockStream(const BlockStream&) = delete;
    BlockStream& operator=(const BlockStream&) = delete;
    ~BlockStream() override;

private:
    class Buffer : public std::streambuf {
    public:
        explicit Buffer(bool toUtf8) : toUtf8_(toUtf8) {}

    private:
        bool toUtf8_;

        int_type overflow(int_type character) override;
        std::streamsize xsputn(const char* text, std::streamsize length) override;
    };

    Buffer buffer_;
};

} // namespace Tool
