#include <travik/datablock/Fields.h>

#include <cmath>

namespace Travik {

namespace {

std::size_t elementOffset(const Field& field, std::span<const unsigned int> index) {
    std::size_t offset = field.offset;
    for (std::size_t i = 0; i < field.rank && i < index.size(); ++i)
        offset += std::size_t{index[i]} * field.dimensions[i].stride;
    return offset;
}

double storedValue(std::span<const char> image, const Field& field, std::size_t offset) {
    switch (field.stored) {
    case Stored::U8:
        return bytes::load<unsigned char>(image, offset);
    case Stored::I8:
        return bytes::load<signed char>(image, offset);
    case Stored::U16:
        return bytes::load<unsigned short>(image, offset);
    case Stored::I16:
        return bytes::load<short>(image, offset);
    case Stored::U32:
        return bytes::load<unsigned int>(image, offset);
    case Stored::I32:
        return bytes::load<int>(image, offset);
    case Stored::F32:
        return static_cast<double>(bytes::load<float>(image, offset));
    case Stored::F64:
        return bytes::load<double>(image, offset);
    case Stored::Text:
        break;
    }
    return 0.0;
}

double bitsValue(std::span<const char> image, const Field& field, std::size_t offset) {
    std::uint32_t word = 0;
    switch (field.width) {
    case 1:
        word = bytes::load<unsigned char>(image, offset);
        break;
    case 2:
        word = bytes::load<unsigned short>(image, offset);
        break;
    default:
        word = bytes::load<std::uint32_t>(image, offset);
        break;
    }
    // Left-aligned first, so that one shift back brings the sign along.
    word <<= 32U - field.shift - field.bits;
    const unsigned int back = 32U - field.bits;
    return field.isSigned ? static_cast<double>(static_cast<std::int32_t>(word) >> back)
                          : static_cast<double>(word >> back);
}

/// The lowest number of a signed integer has no negative in the bits that it is stored in, and is taken for its own.
bool isOwnNegative(const Field& field, double stored) {
    const unsigned int bits = field.bits > 0 ? field.bits : 8 * field.width;
    return field.stored < Stored::F32 && stored == -std::ldexp(1.0, static_cast<int>(bits) - 1);
}

unsigned int used(std::span<const char> image, std::span<const Field> fields, const Dimension& dimension,
                  unsigned int first) {
    if (!dimension.count)
        return dimension.extent;
    for (const Field& field : fields) {
        if (std::string_view(field.name) != dimension.count)
            continue;
        const double count = fieldValue(image, field, {&first, field.rank > 0 ? 1U : 0U});
        return count < 0 ? 0 : static_cast<unsigned int>(std::min(count, static_cast<double>(dimension.extent)));
    }
    return dimension.extent;
}

} // namespace

bool equalFields(std::span<const char> left, std::span<const char> right, std::span<const Field> fields) {
    return std::ranges::all_of(fields, [&](const Field& field) {
        const bool isFloating = field.stored == Stored::F32 || field.stored == Stored::F64;
        const unsigned int count = field.elements();
        for (unsigned int i = 0; i < count; ++i) {
            const std::size_t offset = field.elementOffset(i);
            const bool equal = isFloating ? storedValue(left, field, offset) == storedValue(right, field, offset)
                                          : std::ranges::equal(bytes::part(left, offset, field.width),
                                                               bytes::part(right, offset, field.width));
            if (!equal)
                return false;
        }
        return true;
    });
}

double fieldValue(std::span<const char> image, const Field& field, std::span<const unsigned int> index) {
    for (std::size_t i = 0; i < field.rank && i < index.size(); ++i) {
        if (index[i] >= field.dimensions[i].extent)
            return 0.0;
    }
    const std::size_t offset = elementOffset(field, index);
    if (!bytes::inside(image.size(), offset, field.width))
        return 0.0;
    const double stored = field.bits > 0 ? bitsValue(image, field, offset) : storedValue(image, field, offset);
    const bool staysNegative = field.scale < 0 && isOwnNegative(field, stored);
    return (staysNegative ? -stored : stored) * field.scale + field.zero;
}

void visitFields(std::span<const char> image, std::span<const Field> fields, Extent extent,
                 const std::function<void(const FieldValue&)>& visitor) {
    if (!visitor)
        return;
    for (const Field& field : fields) {
        std::array<unsigned int, Field::maxRank> index{};
        const auto visit = [&](const auto& self, unsigned int depth) -> void {
            if (depth < field.rank) {
                const Dimension& dimension = field.dimensions[depth];
                const unsigned int end =
                    extent == Extent::Whole ? dimension.extent : used(image, fields, dimension, index[0]);
                for (index[depth] = 0; index[depth] < end; ++index[depth])
                    self(self, depth + 1);
                return;
            }
            const std::span<const unsigned int> indices(index.data(), field.rank);
            if (field.stored == Stored::Text)
                visitor({field, indices, 0.0, bytes::text(image, elementOffset(field, indices), field.width)});
            else
                visitor({field, indices, fieldValue(image, field, indices), {}});
        };
        visit(visit, 0);
    }
}

} // namespace Travik
