#include "Support.h"

#include <travik/datablock/TextWriter.h>

#include <cmath>
#include <limits>

namespace TextWriterTest {

using namespace Travik;

std::string fixedText(double value, unsigned int decimals) {
    std::ostringstream os;
    TextWriter(os).fixed(value, decimals).endLine();
    const std::string text = os.str();
    return text.substr(0, text.size() - 1);
}

std::string printfText(double value, unsigned int decimals) {
    char text[512];
    std::snprintf(text, sizeof text, "%.*f", static_cast<int>(decimals), value);
    return text;
}

// Plain arithmetic where it is exact, the library elsewhere: both must round as printf does.
TEST(TextWriter, FixedAgreesWithPrintf) {
    std::vector<double> values{0.0,
                               -0.0,
                               0.5,
                               1.5,
                               2.5,
                               0.0005,
                               0.0015,
                               0.00049999999999999999,
                               1e22,
                               9.0e18,
                               9223372036854775807.0,
                               4503599627370496.5,
                               8.0e9,
                               0.125,
                               0.0625,
                               2.0005,
                               1e-300,
                               1e308,
                               -1e308,
                               std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::denorm_min()};
    std::mt19937_64 random(1);
    for (int i = 0; i < 8000; ++i) {
        values.push_back(std::bit_cast<double>(random()));
        values.push_back(static_cast<double>(static_cast<int>(random())) * 0.01);
        values.push_back(static_cast<double>(static_cast<int>(random())) * 0.00001);
        values.push_back(static_cast<double>(random() % 100000) / 2000.0); // often half way
        values.push_back(std::ldexp(static_cast<double>(random() >> 11U), -static_cast<int>(random() % 64)));
    }
    for (const double value : values) {
        for (const unsigned int decimals : {0U, 1U, 2U, 3U, 5U, 7U, 10U, 15U})
            ASSERT_EQ(fixedText(value, decimals), printfText(value, decimals)) << std::hexfloat << value;
    }
}

TEST(TextWriter, GeneralIsAFreshStreamsFormat) {
    std::vector<double> values{0.0,
                               -0.0,
                               1e-5,
                               123456,
                               999999.5,
                               1e6,
                               -std::numeric_limits<double>::infinity(),
                               -std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::denorm_min()};
    std::mt19937_64 random(2);
    for (int i = 0; i < 5000; ++i) {
        values.push_back(std::bit_cast<double>(random()));
        values.push_back(static_cast<double>(static_cast<int>(random())) * 0.001);
    }
    for (const double value : values) {
        std::ostringstream os;
        std::ostringstream fresh;
        os << std::scientific << std::showpos;
        TextWriter(os).general(value);
        fresh << value;
        ASSERT_EQ(os.str(), fresh.str());
    }
}

TEST(TextWriter, CurrentIsTheStreamsFormat) {
    struct Grouped : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };
    using Base = std::ios_base;
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<double> values{0.0,  -0.0,   1.0,      1e-5,      123456, 999999.5, 0.0005,
                               1e22, -1e308, infinity, -infinity, nan,    -nan};
    std::mt19937_64 random(3);
    for (int i = 0; i < 30; ++i) {
        values.push_back(std::bit_cast<double>(random()));
        values.push_back(static_cast<double>(static_cast<int>(random())) * 0.001);
    }
    for (const std::locale& locale : {std::locale::classic(), std::locale(std::locale::classic(), new Grouped)})
        for (const Base::fmtflags notation : {Base::fmtflags{}, Base::fixed, Base::scientific, Base::floatfield})
            for (const Base::fmtflags flag : {Base::fmtflags{}, Base::showpoint, Base::showpos, Base::uppercase})
                for (const std::streamsize precision : {-1, 0, 1, 3, 6, 17, 64, 65}) {
                    std::ostringstream written;
                    std::ostringstream streamed;
                    for (std::ostringstream* const os : {&written, &streamed}) {
                        os->imbue(locale);
                        os->setf(notation | flag);
                        os->precision(precision);
                    }
                    TextWriter out(written);
                    for (const double value : values) {
                        out.current(value).endLine();
                        streamed << value << '\n';
                    }
                    ASSERT_EQ(written.str(), streamed.str()) << notation << ' ' << flag << ' ' << precision;
                }
}

TEST(TextWriter, LeavesTheStreamsStateOutOfIt) {
    std::ostringstream os;
    os << std::hex << std::showbase << std::showpos << std::scientific;
    os.width(30);
    os.fill('#');
    TextWriter out(os);
    out << 255 << ' ' << -1 << ' ' << std::numeric_limits<long long>::min() << ' ' << 4294967295U << ' ';
    out.zeroFilled(7, 3) << ' ';
    out.zeroFilled(12345, 3) << ' ';
    out.rightAligned(7, 3).endLine();
    EXPECT_EQ(os.str(), "255 -1 -9223372036854775808 4294967295 007 12345   7\n");
    os.str("");
    os.width(30);
    out.current(2.5).endLine();
    EXPECT_EQ(os.str(), "+2.500000e+00\n") << "the stream's format, but not its width";
}

TEST(TextWriter, WritesALineAtOnceAndFlushes) {
    class Buffer : public std::stringbuf {
    public:
        int writes = 0;
        int flushes = 0;

    protected:
        std::streamsize xsputn(const char* text, std::streamsize count) override {
            ++writes;
            return std::stringbuf::xsputn(text, count);
        }
        int sync() override { return ++flushes, 0; }
    } buffer;
    std::ostream os(&buffer);
    TextWriter out(os);
    for (int i = 0; i < 5000; ++i)
        out << "0123456789" << i;
    EXPECT_EQ(buffer.writes, 0);
    out.endLine();
    EXPECT_EQ(buffer.writes, 1);
    EXPECT_EQ(buffer.flushes, 1);
    EXPECT_EQ(buffer.str().size(), 50000U + 18890U + 1U);
}

} // namespace TextWriterTest
