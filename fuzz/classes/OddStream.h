#pragma once

#include "Input.h"

#include <locale>
#include <ostream>
#include <streambuf>

namespace Fuzz {

/// Takes a number of characters, then fails or throws.
class OddBuffer : public std::streambuf {
public:
    void setUp(std::size_t capacity, bool throws) {
        left_ = capacity;
        throws_ = throws;
    }

protected:
    int_type overflow(int_type character) override {
        const char one = traits_type::to_char_type(character);
        return xsputn(&one, 1) == 1 ? traits_type::not_eof(character) : traits_type::eof();
    }
    std::streamsize xsputn(const char* /*text*/, std::streamsize length) override {
        if (static_cast<std::size_t>(length) > left_) {
            if (throws_)
                throw 1; // nothing that anybody would catch by its type
            return 0;
        }
        left_ -= static_cast<std::size_t>(length);
        return length;
    }

private:
    std::size_t left_ = 0;
    bool throws_ = false;
};

/// One stream for all inputs, left in any state: making one takes longer than printing a small block.
inline std::ostream& oddStream(Input& input) {
    static OddBuffer buffer;
    static std::ostream stream(&buffer);
    static const std::locale classic = std::locale::classic();
    struct Grouped : std::numpunct<char> {
        char do_thousands_sep() const override { return '\''; }
        char do_decimal_point() const override { return ','; }
        std::string do_grouping() const override { return "\1\2"; }
    };
    static const std::locale grouped(classic, new Grouped);
    static bool isGrouped = false;

    const unsigned int kind = input.byte();
    stream.exceptions(std::ios_base::goodbit);
    stream.clear();
    stream.flags(std::ios_base::dec | std::ios_base::skipws);
    stream.precision(6);
    stream.width(0);
    stream.fill(' ');
    if (isGrouped != ((kind & 1U) != 0)) {
        isGrouped = !isGrouped;
        stream.imbue(isGrouped ? grouped : classic);
    }
    if ((kind & 2U) != 0)
        stream.flags(static_cast<std::ios_base::fmtflags>(input.word()));
    if ((kind & 4U) != 0) {
        stream.precision(static_cast<std::streamsize>(input.byte()) - 20);
        stream.width(static_cast<std::streamsize>(input.byte()));
        stream.fill(static_cast<char>(input.byte()));
    }
    constexpr std::size_t endless = 40'000'000;
    buffer.setUp((kind & 8U) != 0 ? input.word() : endless, (kind & 16U) != 0);
    if ((kind & 32U) != 0)
        stream.setstate(static_cast<std::ios_base::iostate>(input.byte() % 8));
    if ((kind & 64U) != 0 && stream.good())
        stream.exceptions(static_cast<std::ios_base::iostate>(input.byte() % 8));
    return stream;
}

} // namespace Fuzz
