// Arbitrary bytes as a module image: walked, checked, printed block by block, its values visited; and each of its
// blocks as one of a foreign byte order.
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
    NullBuffer buffer;
    // A conversion makes dictionaries of its own, which takes a thousand times as long as the rest: one an input.
    if (!module.blocks().empty())
        convert(module.blocks().front());
    for (const Travik::ImageBlock& block : module.blocks()) {
        std::ostream os(&buffer);
        const auto made = Travik::makeBlock(block);
        if (!interpreter().printHwDatablockOldStyleInfo(made.get(), os))
            made->printToStream(os);
        if (block.entry) {
            Travik::visitFields(block.bytes, block.entry->fields(*block.entry, block.id), Travik::Extent::Used,
                                [](const Travik::FieldValue&) {});
        }
    }
    return 0;
}
