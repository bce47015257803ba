#include <travik/datablock/Fields.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace Travik {

namespace {

std::size_t elementOffset(const Field& field, std::span<const unsigned int> index) {
    std::size_t offset = field.offset;
    for (std::size_t i = 0; i < field.rank && i < index.size(); ++i)
        offset += std::size_t{index[i]} * field.dimensions[i].stride;
    return offset;
}

#pragma pack(push, 1)
struct Extended {
    std::uint64_t significand; // with its integer bit at the top
    std::uint16_t signAndExponent;
};
#pragma pack(pop)

// What no processor takes for a number (no integer bit, although it is no denormal) is a NaN.
double extendedValue(const Extended& stored) {
    constexpr int bias = 16383;
    constexpr int infinite = 0x7FFF;
    constexpr std::uint64_t integerBit = std::uint64_t{1} << 63U;
    const int exponent = stored.signAndExponent & infinite;
    double value = std::numeric_limits<double>::quiet_NaN();
    if (exponent == infinite && stored.significand == integerBit)
        value = std::numeric_limits<double>::infinity();
    else if (exponent == 0 || (exponent != infinite && (stored.significand & integerBit) != 0))
        value = std::ldexp(static_cast<double>(stored.significand), std::max(exponent, 1) - bias - 63);
    return (stored.signAndExponent & 0x8000U) != 0 ? -value : value;
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
    case Stored::U64:
        return static_cast<double>(bytes::load<std::uint64_t>(image, offset));
    case Stored::I64:
        return static_cast<double>(bytes::load<std::int64_t>(image, offset));
    case Stored::F80:
        return extendedValue(bytes::load<Extended>(image, offset));
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

// From the stored number to the value in its unit. A scale such as 0.01 is no binary number; 1 / 100 is divided by, so
// that 7 hundredths are the double that is nearest to 0.07, and are shown as 0.07. Finer steps than the three decimals
// of the block texts are multiplied as the classes do it, so that both round a value half way between to the same side.
class Conversion {
public:
    explicit Conversion(const Field& field)
        : scale_(field.scale), divisor_(std::nearbyint(1.0 / field.scale)),
          divides_(std::abs(divisor_) > 1 && std::abs(divisor_) <= 1000 && 1.0 / divisor_ == field.scale),
          // A floating zero keeps its sign only when nothing is added to it, and that is what adding -0.0 is.
          zero_(field.isFloating() && field.zero == 0 ? -0.0 : field.zero) {}

    double operator()(double stored) const { return (divides_ ? stored / divisor_ : stored * scale_) + zero_; }

    template <class T>
    void convertAll(const char* from, std::span<double> values) const {
        // One loop each, so that both become vector code.
        if (divides_) {
            for (std::size_t i = 0; i < values.size(); ++i)
                values[i] = load<T>(from, i) / divisor_ + zero_;
        } else {
            for (std::size_t i = 0; i < values.size(); ++i)
                values[i] = load<T>(from, i) * scale_ + zero_;
        }
    }

private:
    double scale_;
    double divisor_;
    bool divides_;
    double zero_;

    template <class T>
    static double load(const char* from, std::size_t i) {
        T stored;
        std::memcpy(&stored, from + i * sizeof(T), sizeof(T));
        return static_cast<double>(stored);
    }
};

double elementValue(std::span<const char> image, const Field& field, const Conversion& conversion, std::size_t offset) {
    if (!bytes::inside(image.size(), offset, field.width))
        return 0.0;
    const double stored = field.bits > 0 ? bitsValue(image, field, offset) : storedValue(image, field, offset);
    const bool staysNegative = field.keepsLowest() && stored == field.lowestStored();
    return conversion(staysNegative ? -stored : stored);
}

bool isContiguous(const Field& field) {
    std::size_t stride = field.width;
    for (std::size_t d = field.rank; d-- > 0; stride *= field.dimensions[d].extent) {
        if (field.dimensions[d].stride != stride)
            return false;
    }
    return true;
}

// Elements of one type, which lie inside the image: they follow each other, or stand between those of other fields.
template <class T>
void loadAll(std::span<const char> image, const Field& field, std::span<double> values) {
    const Conversion conversion(field);
    if (isContiguous(field))
        return conversion.convertAll<T>(image.data() + field.offset, values);
    auto value = values.begin();
    const auto load = [&](const auto& self, unsigned int depth, const char* from) -> void {
        const Dimension& dimension = field.dimensions[depth];
        const bool isRow = depth + 1U == field.rank;
        for (unsigned int i = 0; i < dimension.extent; ++i, from += dimension.stride) {
            if (isRow)
                *value++ = conversion(static_cast<double>(bytes::load<T>({from, sizeof(T)}, 0)));
            else
                self(self, depth + 1, from);
        }
    };
    load(load, 0, image.data() + field.offset);
}

} // namespace

std::string_view storedName(Stored stored) {
    static constexpr std::array<std::string_view, 12> names{"u8",  "i8",  "u16",  "i16", "u32", "i32",
                                                            "f32", "f64", "text", "u64", "i64", "f80"};
    return names.at(static_cast<std::size_t>(stored));
}

unsigned int usedEntries(std::span<const char> image, std::span<const Field> fields, const Dimension& dimension,
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

bool equalFields(std::span<const char> left, std::span<const char> right, std::span<const Field> fields) {
    return std::ranges::all_of(fields, [&](const Field& field) {
        const unsigned int count = field.elements();
        for (unsigned int i = 0; i < count; ++i) {
            const std::size_t offset = field.elementOffset(i);
            const bool equal = field.isFloating() && field.stored != Stored::F80
                                   ? storedValue(left, field, offset) == storedValue(right, field, offset)
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
    return elementValue(image, field, Conversion(field), elementOffset(field, index));
}

void fieldValues(std::span<const char> image, const Field& field, std::span<double> values) {
    const auto count = static_cast<unsigned int>(values.size());
    if (field.bits == 0 && !field.keepsLowest() && count > 0 && count == field.elements() &&
        bytes::inside(image.size(), field.elementOffset(count - 1), field.width)) {
        switch (field.stored) {
        case Stored::U8:
            return loadAll<unsigned char>(image, field, values);
        case Stored::I8:
            return loadAll<signed char>(image, field, values);
        case Stored::U16:
            return loadAll<unsigned short>(image, field, values);
        case Stored::I16:
            return loadAll<short>(image, field, values);
        case Stored::U32:
            return loadAll<unsigned int>(image, field, values);
        case Stored::I32:
            return loadAll<int>(image, field, values);
        case Stored::F32:
            return loadAll<float>(image, field, values);
        case Stored::F64:
            return loadAll<double>(image, field, values);
        default:
            break;
        }
    }
    const Conversion conversion(field);
    for (unsigned int i = 0; i < values.size(); ++i)
        values[i] = elementValue(image, field, conversion, field.elementOffset(i));
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
                    extent == Extent::Whole ? dimension.extent : usedEntries(image, fields, dimension, index[0]);
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
