// Built without instrumentation: what is compared here byte by byte says nothing about the library.
#include "ImageBefore.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

namespace Fuzz {

namespace {

std::vector<char>& copied() {
    static std::vector<char> buffer(65536);
    return buffer;
}

} // namespace

ImageBefore::ImageBefore(Travik::HwDatablock& block) {
    const QMemArray<char> data = block.getByteArrayData();
    length_ = data.size();
    if (copied().size() < length_)
        copied().resize(length_);
    if (length_ > 0)
        std::memcpy(copied().data(), data.data(), length_);
}

bool ImageBefore::isUnchanged(Travik::HwDatablock& block) const {
    const QMemArray<char> data = block.getByteArrayData();
    return data.size() == length_ && (length_ == 0 || std::memcmp(data.data(), copied().data(), length_) == 0);
}

std::size_t ImageBefore::changedExtent(Travik::HwDatablock& block) const {
    if (isUnchanged(block))
        return 0;
    const QMemArray<char> data = block.getByteArrayData();
    if (data.size() != length_)
        return std::numeric_limits<std::size_t>::max();
    constexpr std::size_t sumAt = 4;
    constexpr std::size_t sumEnd = 6;
    char* const before = copied().data();
    if (length_ >= sumEnd) // the sum does not count: the copy takes that of now
        std::copy(data.data() + sumAt, data.data() + sumEnd, before + sumAt);
    if (isUnchanged(block))
        return 0;
    const auto first = std::mismatch(before, before + length_, data.data()).first - before;
    auto last = static_cast<std::ptrdiff_t>(length_);
    while (before[last - 1] == data.data()[last - 1])
        --last;
    return static_cast<std::size_t>(last - first);
}

} // namespace Fuzz
