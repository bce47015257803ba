#pragma once

#include <travik/datablock/HwDatablock.h>

#include <cstddef>

namespace Fuzz {

/// The image as it is, for a comparison afterwards. One buffer for all, so that there is one of these at a time: a
/// block is copied faster than memory is had.
class ImageBefore {
public:
    explicit ImageBefore(Travik::HwDatablock& block);

    bool isUnchanged(Travik::HwDatablock& block) const;
    /// Bytes from the first that changed to the last, without the checksum word.
    std::size_t changedExtent(Travik::HwDatablock& block) const;

private:
    std::size_t length_;
};

} // namespace Fuzz
