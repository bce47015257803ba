#include <travik/datablock/Bytes.h>
#include <travik/service/DocumentForm.h>
#include <travik/service/StoreValue.h>

#include <cmath>
#include <cstddef>

namespace Travik {

namespace {

void cover(std::vector<unsigned char>& covered, std::size_t offset, std::size_t width, std::uint32_t bits) {
    for (std::size_t i = 0; i < width; ++i)
        covered[offset + i] |= static_cast<unsigned char>(i < sizeof bits ? bits >> (8 * i) : bits);
}

} // namespace

bool isPlainInteger(const Field& field) {
    return field.stored != Stored::Text && !field.isFloating() && field.scale == 1 && field.zero == 0;
}

bool isWideInteger(const Field& field) {
    return (field.stored == Stored::U64 || field.stored == Stored::I64) && isPlainInteger(field);
}

bool alwaysComesBack(const Field& field) {
    if (field.stored == Stored::Text || field.isFloating())
        return false;
    if (isPlainInteger(field))
        return true;
    // Then the rounding of the scale's arithmetic is far below half a stored step.
    constexpr double manySteps = 1 << 20;
    const double step = std::abs(field.scale);
    return field.width <= 4 && step > 1e-100 && step < 1e100 && std::abs(field.zero) <= step * manySteps;
}

bool takesNull(const Field& field) { return field.stored != Stored::Text && !alwaysComesBack(field); }

bool bringBack(std::span<const char> element, const Field& field, std::span<char> back) {
    if (field.stored == Stored::Text) {
        bytes::storeText(back, 0, back.size(), bytes::text(element, 0, element.size()));
        return true;
    }
    const double value = fieldValue(element, field);
    if (std::isfinite(value) && isStored(storeValue(back, field, 0, value)))
        return true;
    std::ranges::fill(back, '\xFF');
    return false;
}

std::vector<unsigned char> coveredBits(std::span<const Field> fields, unsigned short id, std::size_t size) {
    std::vector<unsigned char> covered(size);
    const auto coverWord = [&](std::size_t offset) {
        if (bytes::inside(size, offset, sizeof(unsigned short)))
            cover(covered, offset, sizeof(unsigned short), 0xFFFF);
    };
    coverWord(offsetof(HwSDatablockHeader, id));
    if (id == endBlockId)
        return covered;
    coverWord(offsetof(HwSDatablockHeader, blockSize));
    if (size >= sizeof(HwSDatablockHeader)) {
        coverWord(offsetof(HwSDatablockHeader, checksum));
        coverWord(offsetof(HwSDatablockHeader, alignment));
    }
    for (const Field& field : fields) {
        const std::uint32_t bits = bitsOf(field);
        forEachElementInside(field, size, [&](std::size_t offset) { cover(covered, offset, field.width, bits); });
    }
    return covered;
}

const ClassLayouts::Layout& ClassLayouts::of(int id) {
    const auto [known, isNew] = layouts_.try_emplace(id, Layout{BlockLayout(id), 0, {}});
    Layout& layout = known->second;
    if (isNew) {
        layout.size = makeBlock(id)->getBlockSize();
        layout.covered = coveredBits(layout.fields.fields(), static_cast<unsigned short>(id), layout.size);
    }
    return layout;
}

} // namespace Travik
