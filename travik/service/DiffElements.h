#pragma once

#include <travik/datablock/Bytes.h>
#include <travik/service/DocumentForm.h>
#include <travik/service/ImageDiff.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

/// Elements of two blocks' fields, side by side: for the comparison only.
namespace Travik::diff {

using Index = std::array<unsigned int, Field::maxRank>;

inline std::size_t offsetOf(const Field& field, std::span<const unsigned int> index) {
    std::size_t offset = field.offset;
    for (unsigned int d = 0; d < field.rank; ++d)
        offset += std::size_t{index[d]} * field.dimensions[d].stride;
    return offset;
}

inline bool hasElement(const Field& field, std::span<const unsigned int> index, std::size_t size) {
    for (unsigned int d = 0; d < field.rank; ++d) {
        if (index[d] >= field.dimensions[d].extent)
            return false;
    }
    return bytes::inside(size, offsetOf(field, index), field.width);
}

/// Calls the function with the index and the offset of every element that lies wholly inside `size` bytes. What the
/// bytes do not reach costs nothing, and of rows that lie together those are left out that `skips`, which is given
/// offset and length of one.
template <class Skips, class Function>
void forEachElement(const Field& field, std::size_t size, Skips skips, Function function) {
    Index index{};
    const auto visit = [&](const auto& self, unsigned int d, std::size_t offset) -> void {
        if (d == field.rank) {
            if (bytes::inside(size, offset, field.width))
                function(index, offset);
            return;
        }
        const Dimension& along = field.dimensions[d];
        const unsigned int count = entriesInside(field, along, offset, size);
        if (d + 1U == field.rank && along.stride == field.width && skips(offset, std::size_t{count} * field.width))
            return;
        for (index[d] = 0; index[d] < count; ++index[d])
            self(self, d + 1, offset + std::size_t{index[d]} * along.stride);
    };
    visit(visit, 0, field.offset);
}

inline bool isSameField(const Field& left, const Field& right) {
    const auto form = [](const Field& field) {
        return std::tuple(std::string_view(field.name), field.role, field.stored, field.width, field.offset,
                          field.scale, field.zero, field.bits, field.shift, field.isSigned, field.rank);
    };
    const auto steps = [](const Dimension& along) { return std::pair(along.extent, along.stride); };
    return form(left) == form(right) && std::ranges::equal(left.dimensions, right.dimensions, {}, steps, steps);
}

inline bool isNumber(const Field& field) { return field.stored != Stored::Text && field.role != Role::Date; }

/// Reads the elements of a field of one block.
class ElementReader {
public:
    /// `count`: how many elements will be read. All there are in one go is faster for many.
    ElementReader(const Field* field, const ImageBlock& block, std::size_t count) : field_(field), block_(block) {
        if (!field_ || field_->stored == Stored::Text)
            return;
        element_ = elementOf(*field_);
        constexpr std::size_t few = 8;
        const unsigned int all = field_->elements();
        if (all > 0 && all / few < count &&
            bytes::inside(block.bytes.size(), field_->elementOffset(all - 1), field_->width)) {
            values_.resize(all);
            fieldValues(block.bytes, *field_, values_);
        }
    }

    bool has(const Index& index) const {
        if (values_.empty())
            return !bytes(index).empty();
        for (unsigned int d = 0; d < field_->rank; ++d) { // those of the other block's field may be more
            if (index[d] >= field_->dimensions[d].extent)
                return false;
        }
        return true;
    }
    std::span<const char> bytes(const Index& index) const { return elementBytes(block_, field_, index); }
    /// Of an element that is there; 0 for a text.
    double value(const Index& index) const {
        if (field_->stored == Stored::Text)
            return 0;
        if (values_.empty())
            return fieldValue(bytes(index), element_);
        std::size_t number = 0;
        for (unsigned int d = 0; d < field_->rank; ++d)
            number = number * field_->dimensions[d].extent + index[d];
        return values_[number];
    }

private:
    const Field* field_;
    const ImageBlock& block_;
    Field element_;
    std::vector<double> values_;
};

/// Integers of one field as numbers in its unit, whose difference is exact: 0.01 for one hundredth.
class Steps {
public:
    explicit Steps(const Field& field)
        : element_(elementOf(field)), divisor_(std::nearbyint(1.0 / field.scale)),
          divides_(std::abs(divisor_) > 1 && std::abs(divisor_) <= 1000 && 1.0 / divisor_ == field.scale),
          isWide_(isWideInteger(field)) {}

    double difference(const ElementDiff& element, const ElementReader& before, const ElementReader& after) const {
        if (isWide_)
            return wideDifference(before.bytes(element.index), after.bytes(element.index));
        // Of up to 32 bits the values tell the steps.
        const double change = element.after - element.before;
        const double steps = std::nearbyint(divides_ ? change * divisor_ : change / element_.scale);
        return divides_ ? steps / divisor_ : steps * element_.scale;
    }

private:
    Field element_;
    double divisor_;
    bool divides_;
    bool isWide_;

    double wideDifference(std::span<const char> before, std::span<const char> after) const {
        const auto from = bytes::load<std::uint64_t>(before, 0);
        const auto to = bytes::load<std::uint64_t>(after, 0);
        const bool isMore = element_.stored == Stored::U64
                                ? to > from
                                : static_cast<std::int64_t>(to) > static_cast<std::int64_t>(from);
        return isMore ? static_cast<double>(to - from) : -static_cast<double>(from - to);
    }
};

/// Which elements of a field are in use.
class UsedPart {
public:
    explicit UsedPart(const FieldValues& shape)
        : shape_(shape),
          isAll_(shape.usedByRow.empty() && std::ranges::all_of(shape.dimensions, [](const ValueDimension& dimension) {
                     return dimension.used == dimension.extent;
                 })) {}

    bool has(const Index& index) const {
        if (isAll_)
            return true;
        for (std::size_t d = 0; d < shape_.dimensions.size(); ++d) {
            const bool differs = !shape_.usedByRow.empty() && d == shape_.variesIn;
            if (index[d] >= (differs ? shape_.usedByRow[index[0]] : shape_.dimensions[d].used))
                return false;
        }
        return true;
    }

private:
    const FieldValues& shape_;
    bool isAll_;
};

/// Decides what a tolerance forgives.
class Tolerance {
public:
    explicit Tolerance(const DiffOptions& options)
        : absolute_(options.isValid() ? options.tolerance : 0), relative_(options.isValid() ? options.relative : 0) {}

    bool isTolerant() const { return absolute_ > 0 || relative_ > 0; }

    /// Whether it forgives a difference of two numbers.
    bool forgives(const Field& field, const ElementDiff& element) const {
        // Counts, dates, texts and what nobody knows the meaning of are no measured numbers.
        if ((field.role != Role::Value && field.role != Role::Axis) || !std::isfinite(element.before) ||
            !std::isfinite(element.after))
            return false;
        const double larger = std::max(std::abs(element.before), std::abs(element.after));
        const double rounding = field.stored == Stored::F32 ? 0x1p-23 : 0x1p-52;
        const double difference = std::abs(element.difference);
        if (absolute_ > 0 && isWithin(difference, absolute_, rounding * larger))
            return true;
        if (relative_ == 0)
            return false;
        // Not by a product, which would be 0 of small numbers, and infinite of large ones.
        const double share = larger == 0                 ? 0
                             : std::isfinite(difference) ? difference / larger
                                                         : std::abs(element.before / larger - element.after / larger);
        return isWithin(share, relative_, rounding);
    }

private:
    double absolute_;
    double relative_;

    /// From 1.25 to 1.26 it is 0.01, also where these are stored as binary numbers: their rounding makes no difference,
    /// as long as it is small beside the tolerance.
    static bool isWithin(double difference, double limit, double rounding) {
        constexpr double small = 1e-3;
        return difference <= limit || difference - limit <= std::min(rounding, limit * small);
    }
};

} // namespace Travik::diff
