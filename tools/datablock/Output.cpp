#include "Output.h"

#include "Tool.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>

namespace Tool {

namespace {

using Travik::TextCharset;
using Travik::TextLines;

/// The first of several threads has its say.
template <class... Part>
[[noreturn]] void end(Part... parts) {
    static constinit std::atomic_flag isEnding;
    while (isEnding.test_and_set())
        ::pause();
    for (const std::string_view part : {std::string_view(parts)...})
        writeAll(STDERR_FILENO, part);
    std::_Exit(CallFailed);
}

/// A standard stream's way to its descriptor.
class Channel : public std::streambuf {
public:
    /// Standard error goes out line by line, standard output when the buffer is full or flushed. That standard output
    /// cannot be written ends the tool at once: a text of gigabytes would be composed for nobody.
    explicit Channel(int descriptor) : descriptor_(descriptor), isTerminal_(::isatty(descriptor) == 1) {}

    bool isTerminal() const { return isTerminal_; }

    /// What is written from now on is safe for a terminal already.
    void passAll() {
        drain(true);
        passesAll_ = true;
    }

    /// What the bytes stand for that are written from now on.
    void setCharset(TextCharset charset) {
        if (isTerminal_ && charset != charset_)
            drain(true);
        charset_ = charset;
    }

private:
    int descriptor_;
    bool isTerminal_;
    bool passesAll_ = false;
    TextCharset charset_ = TextCharset::Utf8;
    std::size_t used_ = 0;
    std::array<char, 65536> buffer_;

    int_type overflow(int_type character) override {
        if (!traits_type::eq_int_type(character, traits_type::eof())) {
            const char one = traits_type::to_char_type(character);
            xsputn(&one, 1);
        }
        return traits_type::not_eof(character);
    }

    std::streamsize xsputn(const char* text, std::streamsize length) override {
        for (std::string_view rest(text, static_cast<std::size_t>(length)); !rest.empty();) {
            if (used_ == buffer_.size())
                drain(false);
            const std::size_t taken = rest.copy(buffer_.data() + used_, buffer_.size() - used_);
            used_ += taken;
            if (descriptor_ == STDERR_FILENO && rest.substr(0, taken).find('\n') != std::string_view::npos)
                drain(true);
            rest.remove_prefix(taken);
        }
        return length;
    }

    int sync() override {
        // Standard error is flushed after each part of a line, which ends with the line.
        if (descriptor_ == STDOUT_FILENO)
            drain(true);
        return 0;
    }

    /// Writes what was collected; unless it is all that will come, a character that is not whole yet stays.
    void drain(bool isAll) {
        const std::string_view collected(buffer_.data(), used_);
        const bool mayBeCut = isTerminal_ && !passesAll_ && charset_ == TextCharset::Utf8 && !isAll;
        const std::size_t whole = mayBeCut ? Travik::wholeUtf8(collected) : used_;
        write(collected.substr(0, whole));
        std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(whole),
                  buffer_.begin() + static_cast<std::ptrdiff_t>(used_), buffer_.begin());
        used_ -= whole;
    }

    void write(std::string_view bytes) const {
        if (!isTerminal_ || passesAll_) {
            writeOut(bytes);
            return;
        }
        std::array<char, 4096> safe;
        while (!bytes.empty()) {
            std::string_view part = bytes.substr(0, safe.size() / Travik::terminalTextGrowth);
            if (charset_ == TextCharset::Utf8 && part.size() < bytes.size())
                part = part.substr(0, Travik::wholeUtf8(part));
            const char* const last = Travik::writeTerminalText(safe.data(), part, charset_);
            writeOut({safe.data(), last});
            bytes.remove_prefix(part.size());
        }
    }

    void writeOut(std::string_view bytes) const {
        const int error = writeAll(descriptor_, bytes);
        if (error == 0 || descriptor_ == STDERR_FILENO)
            return;
        end("datablock: standard output: ", std::strerror(error), "\n");
    }
};

/// Up to two characters for each.
char* writeUtf8(char* out, std::string_view latin1) {
    for (const char character : latin1) {
        const auto code = static_cast<unsigned char>(character);
        if (code >= 0x80)
            *out++ = static_cast<char>(0xC0U | (code >> 6U));
        *out++ = code < 0x80 ? character : static_cast<char>(0x80U | (code & 0x3FU));
    }
    return out;
}

Channel& standardOutput() {
    static Channel channel(STDOUT_FILENO);
    return channel;
}

Channel& standardError() {
    static Channel channel(STDERR_FILENO);
    return channel;
}

} // namespace

int writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            return errno;
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
    return 0;
}

void occupyStandardDescriptors() {
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) != -1 || errno != EBADF)
            continue;
        // The lowest that is free is this one. Open for what it is not used for.
        if (::open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY) != descriptor)
            end("datablock: /dev/null cannot be opened in place of a closed standard stream\n");
    }
}

void endOutOfMemory() { end("datablock: out of memory\n"); }

StandardStreams::StandardStreams()
    : out_(std::cout.rdbuf(&standardOutput())), err_(std::cerr.rdbuf(&standardError())) {}

StandardStreams::~StandardStreams() {
    std::cout.flush();
    std::cout.rdbuf(out_);
    std::cerr.rdbuf(err_);
}

void passSafeText() { standardOutput().passAll(); }

namespace {

int goesToTerminal() {
    static const int mark = std::ios_base::xalloc();
    return mark;
}

} // namespace

CollectingStream::CollectingStream(int descriptor) {
    iword(goesToTerminal()) = (descriptor == STDOUT_FILENO ? standardOutput() : standardError()).isTerminal() ? 1 : 0;
}

std::string CollectingStream::take() {
    std::string text = std::move(*this).str();
    str({});
    clear();
    flags(std::ios_base::skipws | std::ios_base::dec);
    precision(6);
    width(0);
    fill(' ');
    return text;
}

std::ostream& operator<<(std::ostream& os, InLine name) {
    const auto* const channel = dynamic_cast<const Channel*>(os.rdbuf());
    if ((channel && channel->isTerminal()) || os.iword(goesToTerminal()) != 0)
        return os << Travik::terminalText(name.text, TextCharset::Utf8, TextLines::One);
    return os << name.text;
}

BlockStream::BlockStream(Encoding encoding)
    : std::ostream(nullptr),
      buffer_(encoding == Encoding::Utf8 || (encoding == Encoding::Automatic && standardOutput().isTerminal())) {
    rdbuf(&buffer_);
    const bool asStored = encoding == Encoding::Latin1;
    standardOutput().setCharset(asStored ? TextCharset::Latin1 : TextCharset::Utf8);
}

BlockStream::~BlockStream() { standardOutput().setCharset(TextCharset::Utf8); }

BlockStream::Buffer::int_type BlockStream::Buffer::overflow(int_type character) {
    if (!traits_type::eq_int_type(character, traits_type::eof())) {
        const char one = traits_type::to_char_type(character);
        xsputn(&one, 1);
    }
    return traits_type::not_eof(character);
}

std::streamsize BlockStream::Buffer::xsputn(const char* text, std::streamsize length) {
    Channel& out = standardOutput();
    if (!toUtf8_)
        return out.sputn(text, length);
    std::array<char, 4096> utf8;
    for (std::string_view rest(text, static_cast<std::size_t>(length)); !rest.empty();) {
        const std::string_view part = rest.substr(0, utf8.size() / 2);
        out.sputn(utf8.data(), writeUtf8(utf8.data(), part) - utf8.data());
        rest.remove_prefix(part.size());
    }
    return length;
}

} // namespace Tool
