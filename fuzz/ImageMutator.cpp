// Most changes of an image make a checksum wrong. After three of four mutations the sums of its blocks are made right
// again: of all, or, one time in four, of one of them.
#include <travik/registry/ModuleImage.h>
#include <travik/service/Seal.h>

#include <cstdint>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

void seal(std::span<char> bytes, unsigned int which) {
    const Travik::ModuleImage image(bytes);
    const bool onlyOne = which % 4 == 0;
    const std::size_t one = image.blocks().empty() ? 0 : which / 4 % image.blocks().size();
    for (std::size_t i = 0; i < image.blocks().size(); ++i) {
        const Travik::ImageBlock& block = image.blocks()[i];
        if (!onlyOne || i == one)
            Travik::sealAgain(bytes.subspan(block.offset, block.bytes.size()), block);
    }
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
    const std::size_t length = LLVMFuzzerMutate(data, size, maxSize);
    if (seed % 4 != 0)
        seal({reinterpret_cast<char*>(data), length}, seed / 4);
    return length;
}
