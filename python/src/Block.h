#pragma once

#include "Image.h"

#include <memory>
#include <string>

namespace Python {

/// A block of an image, found again in whatever the image's state is. An edit moves no block and changes no layout.
class Block {
public:
    Block(std::shared_ptr<Image> image, const Travik::ImageBlock& block);

    /// The block in the state that the image has now. The state keeps it.
    struct Now {
        StatePtr state;
        const Travik::ImageBlock* block;
    };
    /// Throws ClosedError, GoneError.
    Now now() const;

    const std::shared_ptr<Image>& image() const { return image_; }
    std::size_t offset() const { return offset_; }
    unsigned short id() const { return id_; }
    const std::string& key() const { return key_; } ///< UTF-8; empty where it has none
    const Travik::BlockLayout& layout() const { return layout_; }
    /// The key, or the identifier where there is none.
    std::string name() const { return key_.empty() ? std::to_string(id_) : key_; }

private:
    std::shared_ptr<Image> image_;
    std::size_t offset_;
    unsigned short id_;
    std::string key_;
    Travik::BlockLayout layout_;
};

struct GoneError {};

} // namespace Python
