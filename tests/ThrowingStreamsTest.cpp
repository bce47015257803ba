#include "Support.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

namespace ThrowingStreamsTest {

using namespace Travik;
using namespace Support;

constexpr auto bad = std::ios_base::badbit;
constexpr auto all = std::ios_base::badbit | std::ios_base::failbit | std::ios_base::eofbit;

/// What a stream's buffer does once it holds, or has handed out, so many characters.
enum class Trouble { Throws, Fails, ThrowsInSync };

class Sink : public std::streambuf {
public:
    Sink(Trouble trouble, std::size_t room) : trouble_(trouble), room_(room) {}
    std::string text;

protected:
    int_type overflow(int_type character) override {
        if (text.size() == room_ && trouble_ != Trouble::ThrowsInSync)
            return trouble_ == Trouble::Throws ? throw std::runtime_error("full") : traits_type::eof();
        text += traits_type::to_char_type(character);
        return character;
    }
    int sync() override {
        if (text.size() >= room_ && trouble_ != Trouble::Fails)
            throw std::runtime_error("not written");
        return text.size() < room_ ? 0 : -1;
    }

private:
    Trouble trouble_;
    std::size_t room_;
};

class Source : public std::streambuf {
public:
    Source(std::string text, std::size_t length) : text_(std::move(text)), length_(length) {}

protected:
    int_type underflow() override {
        if (at_ == length_)
            throw std::runtime_error("unreadable");
        return traits_type::to_int_type(text_[at_]);
    }
    int_type uflow() override {
        const int_type character = underflow();
        ++at_;
        return character;
    }
    pos_type seekpos(pos_type position, std::ios_base::openmode /*which*/) override {
        at_ = static_cast<std::size_t>(std::streamoff{position});
        return position;
    }

private:
    std::string text_;
    std::size_t length_;
    std::size_t at_ = 0;
};

using Print = std::function<void(std::ostream& os)>;

/// Prints on streams that fail in every way at some places of the text: the stream knows, throws once where it is to,
/// and holds what was written until then.
void printsThroughTrouble(const std::string& who, const Print& print) {
    std::ostringstream plain;
    print(plain);
    const std::string text = plain.str();
    if (text.empty())
        return;
    for (const Trouble trouble : {Trouble::Throws, Trouble::Fails, Trouble::ThrowsInSync}) {
        for (const std::size_t room : {std::size_t{0}, text.size() / 2, text.size() - 1}) {
            for (const auto mask : {std::ios_base::goodbit, bad, all}) {
                Sink sink(trouble, room);
                std::ostream os(&sink);
                os.exceptions(mask);
                if (room % 2 == 0)
                    os.setf(std::ios_base::unitbuf);
                int thrown = 0;
                try {
                    print(os);
                } catch (const std::ios_base::failure&) {
                    ++thrown;
                }
                ASSERT_EQ(thrown, mask == std::ios_base::goodbit ? 0 : 1) << who;
                ASSERT_TRUE(os.bad()) << who;
                ASSERT_EQ(os.exceptions(), mask) << who;
                ASSERT_EQ(sink.text, text.substr(0, sink.text.size())) << who;
                ASSERT_GE(sink.text.size(), room) << who;
            }
        }
    }
}

std::string named(const CatalogueEntry& entry, int id) {
    return std::string(entry.className) + " " + std::to_string(id);
}

/// A block with three rows of two columns, or three entries, whatever its kind counts.
std::unique_ptr<HwDatablock> filled(int id) {
    std::unique_ptr<HwDatablock> block = makeBlock(id);
    for (const std::size_t offset : {8U, 12U, 168U, 172U}) // behind the descriptors where there are any
        bytes::store<unsigned char>(std::span(block->getData(), block->getByteArrayData().size()), offset, 3);
    return block;
}

TEST(ThrowingStreams, EveryPrinter) {
    for (const CatalogueEntry& entry : catalogue()) {
        for (int id = entry.first; id <= entry.last; ++id) {
            const std::unique_ptr<HwDatablock> block = filled(id);
            printsThroughTrouble(named(entry, id), [&](std::ostream& os) { block->printToStream(os); });
        }
    }
}

TEST(ThrowingStreams, EveryPageOfASecondEditionTable) {
    const SecondEditionImage built =
        buildSecondEdition({.id = 1,
                            .rowIdType = ETypeUint16,
                            .columns = {{ETypeFix16D1}, {ETypeDouble}, {ETypeLongDouble}, {ETypeChar5}},
                            .rows = {{{1.5, 2.5, 3.5, "A"}, 1}, {{1.5, 2.5, 3.5, "B"}, 2}}});
    HwDatablock2Edition table;
    setBytes(table, {built.bytes.begin(), built.bytes.end()});
    printsThroughTrouble("detail", [&](std::ostream& os) { table.printToStream2Edition(os, {}); });
    printsThroughTrouble("summary", [&](std::ostream& os) { table.printDebugPageSummary(os, {}); });
    printsThroughTrouble("heading", [&](std::ostream& os) { table.printDebugPageHeading(os, true); });
    printsThroughTrouble("info", [&](std::ostream& os) { printModuleInfo(moduleInfo(ModuleImage(built.bytes)), os); });
}

TEST(ThrowingStreams, NothingIsThrownWhileUnwinding) {
    Sink sink(Trouble::Throws, 0);
    std::ostream os(&sink);
    os.exceptions(all);
    try {
        TextWriter out(os);
        out << "begun";
        throw 5;
    } catch (const int thrown) {
        EXPECT_EQ(thrown, 5);
    }
    EXPECT_TRUE(os.bad());
    EXPECT_EQ(os.exceptions(), all);
}

// The stream that is flushed ahead of this one keeps its troubles to itself.
TEST(ThrowingStreams, ATiedStream) {
    Sink sink(Trouble::ThrowsInSync, 0);
    std::ostream tied(&sink);
    tied.exceptions(all);
    std::ostringstream os;
    os.tie(&tied);
    HwDatablockEnd end;
    end.printToStream(os);
    EXPECT_EQ(os.str(), textOf(end));
    EXPECT_TRUE(tied.bad());
}

TEST(ThrowingStreams, AWidthIsUsedUp) {
    for (const CatalogueEntry& entry : catalogue()) {
        for (int id = entry.first; id <= entry.last; ++id) {
            const std::unique_ptr<HwDatablock> block = filled(id);
            const std::string text = textOf(*block);
            std::ostringstream os;
            os.width(30);
            block->printToStream(os);
            EXPECT_EQ(os.str(), text) << named(entry, id);
            EXPECT_EQ(os.width(), text.empty() ? 30 : 0) << named(entry, id);
        }
    }
}

/// Standard output into a string while it lives.
class CapturedOutput {
public:
    explicit CapturedOutput(std::streambuf* into) : previous_(std::cout.rdbuf(into)) {}
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;
    ~CapturedOutput() {
        std::cout.rdbuf(previous_); // which clears the state
        std::cout.exceptions(std::ios_base::goodbit);
    }

private:
    std::streambuf* previous_;
};

/// The messages of a reader and the bytes of the block that it made.
template <class Block>
std::pair<std::string, std::string> readFrom(std::istream& is, int& thrown) {
    std::ostringstream messages;
    const CapturedOutput output(messages.rdbuf());
    Block block;
    try {
        Block().searchascii(is, block);
    } catch (const std::ios_base::failure&) {
        ++thrown;
    }
    return {messages.str(), bytesOf(block)};
}

template <class Block>
void exchangesThroughTrouble() {
    Block block;
    block.setNumberOfRows(3);
    block.setNumberOfColumns(Block::shape.columns);
    for (unsigned int row = 0; row < 3; ++row)
        block.setValue(static_cast<decltype(block.getValue(0, 0))>(row * 10 + 1), row, 0);
    const std::string key = Block::table.key;
    printsThroughTrouble(key, [&](std::ostream& os) { block.conv2ascii(os, std::as_const(block)); });

    std::ostringstream os;
    block.conv2ascii(os, block);
    const std::string text = os.str();
    for (const std::size_t length : {std::size_t{0}, text.size() / 4, text.size() / 2, text.size() - 3, text.size()}) {
        for (const auto mask : {std::ios_base::goodbit, bad, all}) {
            Source source(text, length);
            std::istream broken(&source);
            broken.exceptions(mask);
            std::istringstream cut(text.substr(0, length));
            int thrown = 0;
            EXPECT_EQ(readFrom<Block>(broken, thrown), readFrom<Block>(cut, thrown)) << key << ' ' << length;
            EXPECT_EQ(thrown, mask == std::ios_base::goodbit ? 0 : 1) << key << ' ' << length;
            EXPECT_TRUE(broken.bad() && broken.eof()) << key << ' ' << length;
            EXPECT_EQ(broken.exceptions(), mask);
        }
    }
}

TEST(ThrowingStreams, EveryExchange) {
    exchangesThroughTrouble<HwDatablockKelRfboAttRegData>();
    exchangesThroughTrouble<HwDatablockDunRfboAttCalFreq>();
    exchangesThroughTrouble<HwDatablockDunRfboAttRegAttenuation>();
    exchangesThroughTrouble<HwDatablockDunRfboAttRegData>();
    exchangesThroughTrouble<HwDatablockDunRfboTempCompData>();
    exchangesThroughTrouble<HwDatablockDunRfboTempCompFreq>();
}

TEST(ThrowingStreams, AFolderIsAnEmptyText) {
    std::ifstream folder(std::filesystem::temp_directory_path());
    int thrown = 0;
    const auto [messages, bytes] = readFrom<HwDatablockDunRfboAttRegData>(folder, thrown);
    EXPECT_EQ(messages, "ERROR: FOUND NO ID !\n");
    EXPECT_EQ(bytes.substr(0, 2), std::string(2, '\0'));
    EXPECT_EQ(thrown, 0);
    std::istream none(nullptr);
    none.exceptions(std::ios_base::goodbit);
    EXPECT_EQ(readFrom<HwDatablockDunRfboAttRegData>(none, thrown).first, "ERROR: FOUND NO ID !\n");
}

TEST(ThrowingStreams, ComplaintsThatNobodyTakes) {
    Sink sink(Trouble::Throws, 0);
    const CapturedOutput output(&sink);
    std::cout.exceptions(all);
    std::istringstream is("no table");
    HwDatablockDunRfboAttRegData block;
    EXPECT_NO_THROW(block.searchascii(is, block));
    EXPECT_NO_THROW(readExchangeText(is, HwDatablockDunRfboAttRegData::exchange, {}));
    EXPECT_TRUE(std::cout.bad());
}

} // namespace ThrowingStreamsTest
