#pragma once

#include <travik/service/Values.h>

#include <memory>
#include <mutex>
#include <vector>

namespace Python {

/// One state of an image: its bytes and the blocks in them. It never changes; an edit makes the next one. Arrays that
/// are views refer to it, and keep it.
class ImageState {
public:
    explicit ImageState(std::vector<char> bytes) : bytes_(std::move(bytes)), module_(bytes_), values_(module_) {}
    ImageState(const ImageState&) = delete;
    ImageState& operator=(const ImageState&) = delete;
    ImageState(ImageState&&) = delete;
    ImageState& operator=(ImageState&&) = delete;
    ~ImageState() = default;

    const std::vector<char>& bytes() const { return bytes_; }
    const Travik::ModuleImage& module() const { return module_; }
    const std::vector<Travik::ImageBlock>& blocks() const { return module_.blocks(); }

    /// Null where no block of the identifier begins there.
    const Travik::ImageBlock* find(std::size_t offset, unsigned short id) const;
    /// A field of one of its blocks; from any thread.
    Travik::FieldValues shape(const Travik::ImageBlock& block, const Travik::BlockLayout& layout,
                              const Travik::Field& field) const;

private:
    const std::vector<char> bytes_;
    const Travik::ModuleImage module_;
    mutable std::mutex mutex_; // of the axes that the values keep
    const Travik::ImageValues values_;
};

using StatePtr = std::shared_ptr<const ImageState>;

} // namespace Python
