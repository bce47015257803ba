#pragma once

#include "BlockClasses.h"

namespace Fuzz {

/// The beginning of an input: which kind of block (2 bytes), how its image is made (1 byte), the number of bytes that
/// the input gives of it (2 bytes), and those bytes.
struct ClassesInput {
    enum : unsigned char {
        Given = 1,    ///< the image is the bytes given; otherwise the block is as new
        Whole = 2,    ///< filled up with zeros to the size of a new block
        SizeWord = 4, ///< what is stored as the size is the image's
    };
    static constexpr std::size_t headLength = 5;

    explicit ClassesInput(Input& input)
        : subject(&subjects()[input.word() % subjects().size()]), kind(input.byte()), bytes(input.take(input.word())) {}

    std::unique_ptr<Travik::HwDatablock> makeBlock() const {
        auto block = subject->make();
        if ((kind & Given) == 0)
            return block;
        const unsigned int whole = block->getByteArrayData().size();
        block->setData(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size()));
        if ((kind & Whole) != 0)
            block->resizeData(std::max(whole, static_cast<unsigned int>(bytes.size())));
        return block;
    }

    const Subject* subject;
    unsigned int kind;
    std::span<const char> bytes;
};

} // namespace Fuzz
