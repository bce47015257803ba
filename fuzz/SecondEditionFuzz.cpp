// Arbitrary bytes as a second-edition block: every lookup and all three pages.
#include <travik/registry/ModuleImage.h>
#include <travik/tables/SecondEdition.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <ostream>

namespace {

/// Counts what is written and keeps nothing.
class Sink : public std::streambuf {
public:
    std::size_t written() const { return written_; }

protected:
    int_type overflow(int_type character) override {
        ++written_;
        return traits_type::not_eof(character);
    }
    std::streamsize xsputn(const char* /*text*/, std::streamsize length) override {
        written_ += static_cast<std::size_t>(length);
        return length;
    }

private:
    std::size_t written_ = 0;
};

void lookUp(Travik::HwDatablock2Edition& table) {
    const int columns = table.getNumberOfColumns();
    for (int column = -1; column <= columns; ++column)
        table.size_in_byte(table.getColumnType(column));
    table.getColumnType(0x7FFFFFFF);
    table.getNumberOfRows();
    table.getUpdateIndex();
    table.getTypeString(table.getRowIdType());
    table.getTypeString(table.getColumnIdType());
    table.getSizeOfRowIdType();
    table.getSizeOfColumnIdType();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Travik::HwDatablock2Edition table;
    table.setData(data, static_cast<unsigned int>(size));
    lookUp(table);

    Sink sink;
    std::ostream os(&sink);
    Travik::HwSDataBlockCfg cfg;
    cfg.blockName = QStringLiteral("TABLE");
    table.printDebugPageHeading(os, true);
    table.printDebugPageSummary(os, cfg);
    table.printToStream2Edition(os, cfg);
    // The most that 64 KB can print: long doubles in fixed notation, 4933 digits for ten bytes.
    if (sink.written() > 40'000'000)
        std::abort();

    const Travik::ModuleImage image({reinterpret_cast<const char*>(data), size});
    for (const Travik::ImageBlock& block : image.blocks()) {
        if (block.isSecondEdition && !static_cast<Travik::HwDatablock2Edition&>(*Travik::makeBlock(block)).fits())
            std::abort();
    }
    return 0;
}
