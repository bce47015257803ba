#include "Block.h"

namespace Python {

Block::Block(std::shared_ptr<Image> image, const Travik::ImageBlock& block)
    : image_(std::move(image)), offset_(block.offset), id_(block.id), key_(Travik::toUtf8(Travik::keyOf(block))),
      layout_(block) {}

Block::Now Block::now() const {
    StatePtr state = image_->state();
    const Travik::ImageBlock* const block = state->find(offset_, id_);
    if (!block)
        throw GoneError();
    return {std::move(state), block};
}

} // namespace Python
