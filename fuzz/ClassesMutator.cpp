// Most changes of an image make its checksum wrong, and what is refused for its sum never comes further. So the image
// that an input gives is sealed again after three of four mutations, as large as a block of its class says it is.
#include "classes/ClassesInput.h"

#include <travik/datablock/Bytes.h>

#include <cstdint>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

void seal(std::span<char> bytes) {
    using Start = Fuzz::ClassesInput;
    Fuzz::Input input(bytes);
    const Start start(input);
    if ((start.kind & Start::Given) == 0 || start.bytes.size() < sizeof(Travik::HwSDatablockHeader))
        return;
    const auto block = start.makeBlock();
    block->setBlockSize(static_cast<unsigned short>(block->getByteArrayData().size())); // and with it, the checksum
    const auto image = bytes.subspan(Start::headLength, start.bytes.size());
    std::copy_n(block->getData(), image.size(), image.begin());
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
    const std::size_t length = LLVMFuzzerMutate(data, size, maxSize);
    if (seed % 4 != 0)
        seal({reinterpret_cast<char*>(data), length});
    return length;
}
