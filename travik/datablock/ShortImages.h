#pragma once

#include <travik/datablock/Export.h>

namespace Travik::detail {

/// While one lives, the blocks that its thread makes begin with an image of at most so many bytes, though their size
/// word is that of the whole image: for blocks that are to take another block's image, which would free their own
/// unused. A short image is a damaged one: what lies behind its end reads as zero and is not stored.
class TRAVIK_DATABLOCK_EXPORT ShortImages {
public:
    explicit ShortImages(unsigned int longest) noexcept;
    ShortImages(const ShortImages&) = delete;
    ShortImages& operator=(const ShortImages&) = delete;
    ~ShortImages();

    /// Of the image that a block of `size` bytes begins with.
    static unsigned int lengthOf(unsigned int size) noexcept;

private:
    unsigned int outer_;
};

} // namespace Travik::detail
