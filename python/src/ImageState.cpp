#include "ImageState.h"

#include <algorithm>

namespace Python {

const Travik::ImageBlock* ImageState::find(std::size_t offset, unsigned short id) const {
    const auto found = std::ranges::lower_bound(blocks(), offset, {}, &Travik::ImageBlock::offset);
    return found != blocks().end() && found->offset == offset && found->id == id ? &*found : nullptr;
}

Travik::FieldValues ImageState::shape(const Travik::ImageBlock& block, const Travik::BlockLayout& layout,
                                      const Travik::Field& field) const {
    const std::lock_guard lock(mutex_);
    return values_.shape(block, layout, field);
}

} // namespace Python
