// Arbitrary bytes as a module image: walked and judged; one of its blocks printed, its values visited, and converted as
// one of a foreign byte order.
#include "LongTexts.h"

#include <travik/datablocks.h>

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <streambuf>

namespace {

class NullBuffer : public std::streambuf {
    int overflow(int character) override { return character; }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

// One for all inputs: a service tool prints image after image through the same prototypes.
Travik::HwDatablockOldStyleInterpreter& interpreter() {
    static Travik::HwDatablockOldStyleInterpreter instance;
    return instance;
}

void convert(const Travik::ImageBlock& block) {
    const auto made = Travik::makeBlock(block);
    made->setDataFormatTyp(Travik::HwDataFormatForeign);
    made->verifyChecksum();
    made->setAlignment(1);
    interpreter().swapHwDatablock(Travik::HwDataFormatFirmware, block.id, made.get());
    Travik::HwDatablock target(false);
    target.setHwDatablockFirmwareConform(made.get());
}

void read(const Travik::ImageBlock& block) {
    // One for all inputs, too: making one takes longer than printing a small block.
    static NullBuffer buffer;
    static std::ostream os(&buffer);
    const auto made = Travik::makeBlock(block);
    if (!interpreter().printHwDatablockOldStyleInfo(made.get(), os))
        made->printToStream(os);
    if (block.entry) {
        Travik::visitFields(block.bytes, block.entry->fields(*block.entry, block.id), Travik::Extent::Used,
                            [](const Travik::FieldValue&) {});
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = [] {
        Travik::CErrorManager::setSignalHandler([](int, const QString&) {});
        Travik::Debug::setMessageBoxHandler([](const QString&, const QString&) {});
        return true;
    }();
    static_cast<void>(quiet);
    const std::span bytes(reinterpret_cast<const char*>(data), size);
    const Travik::ModuleImage module(bytes);
    static_cast<void>(module.findings());
    if (module.blocks().empty())
        return 0;
    // Blocks do not know of each other: one of them, as the length says, and so several times as many inputs a second.
    const Travik::ImageBlock& block = module.blocks()[size % module.blocks().size()];
    convert(block);
    if (Fuzz::isToBeRead(block.id, block.bytes))
        read(block);
    return 0;
}
