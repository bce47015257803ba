#include <travik/datablock/Bytes.h>
#include <travik/datablock/Checksum.h>
#include <travik/service/DocumentForm.h>
#include <travik/service/ImageDiff.h>
#include <travik/service/StoreValue.h>
#include <travik/tables/SecondEdition.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_map>

namespace Travik {

namespace {

using Index = std::array<unsigned int, Field::maxRank>;

constexpr std::size_t crcAt = sizeof(HwSDatablockHeader);
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

std::size_t offsetOf(const Field& field, std::span<const unsigned int> index) {
    std::size_t offset = field.offset;
    for (unsigned int d = 0; d < field.rank; ++d)
        offset += std::size_t{index[d]} * field.dimensions[d].stride;
    return offset;
}

bool hasElement(const Field& field, std::span<const unsigned int> index, std::size_t size) {
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

bool isSameField(const Field& left, const Field& right) {
    const auto isSameDimension = [](const Dimension& a, const Dimension& b) {
        return a.extent == b.extent && a.stride == b.stride;
    };
    return std::string_view(left.name) == right.name && left.role == right.role && left.stored == right.stored &&
           left.width == right.width && left.offset == right.offset && left.scale == right.scale &&
           left.zero == right.zero && left.bits == right.bits && left.shift == right.shift &&
           left.isSigned == right.isSigned && left.rank == right.rank &&
           std::ranges::equal(std::span(left.dimensions).first(left.rank),
                              std::span(right.dimensions).first(right.rank), isSameDimension);
}

bool isNumber(const Field& field) {
    return field.stored != Stored::Text && !(field.role == Role::Date && isPlainInteger(field));
}

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
        : element_(elementOf(field)), plain_(element_), divisor_(std::nearbyint(1.0 / field.scale)),
          divides_(std::abs(divisor_) > 1 && std::abs(divisor_) <= 1000 && 1.0 / divisor_ == field.scale),
          isRecovered_(field.width <= 4 && alwaysComesBack(field)) {
        plain_.scale = 1;
        plain_.zero = 0;
    }

    double difference(const ElementDiff& element, const ElementReader& before, const ElementReader& after) const {
        // Of up to 32 bits the values tell the steps.
        const double change = element.after - element.before;
        const double steps = !isRecovered_ ? stepsBetween(before.bytes(element.index), after.bytes(element.index))
                             : divides_    ? std::nearbyint(change * divisor_)
                                           : std::nearbyint(change / element_.scale);
        return divides_ ? steps / divisor_ : steps * element_.scale;
    }

private:
    Field element_;
    Field plain_;
    double divisor_;
    bool divides_;
    bool isRecovered_;

    double stepsBetween(std::span<const char> before, std::span<const char> after) const {
        if (element_.bits > 0 || (element_.stored != Stored::U64 && element_.stored != Stored::I64))
            return fieldValue(after, plain_) - fieldValue(before, plain_);
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
        const double rounding = field.stored == Stored::F32 && field.bits == 0 ? 0x1p-23 : 0x1p-52;
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

/// What nobody has told yet of two runs of bytes, as a mask of bits.
class Untold {
public:
    Untold(std::span<const char> before, std::span<const char> after)
        : before_(before), after_(after), bits_(std::max(before.size(), after.size()), 0xFF) {
        const std::size_t common = std::min(before.size(), after.size());
        for (std::size_t i = 0; i < common; ++i)
            bits_[i] = static_cast<unsigned char>(before[i] ^ after[i]);
    }

    bool isTold(std::size_t offset, std::size_t length) const {
        const std::span<const unsigned char> bits = part(offset, length);
        if (bits.size() == 1)
            return bits.front() == 0;
        if (bits.size() == sizeof(std::uint16_t) || bits.size() == sizeof(std::uint32_t)) { // nearly all
            std::uint32_t word = 0;
            std::memcpy(&word, bits.data(), bits.size() == sizeof word ? sizeof word : sizeof(std::uint16_t));
            return word == 0;
        }
        return std::ranges::all_of(bits, [](unsigned char byte) { return byte == 0; });
    }
    bool has(std::size_t offset, std::size_t length, std::uint32_t bits) const {
        const auto bytes = part(offset, length);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            if ((bytes[i] & (bits >> (8 * i))) != 0)
                return true;
        }
        return false;
    }
    void tell(std::size_t offset, std::size_t length) { std::ranges::fill(part(offset, length), 0); }
    void tell(std::size_t offset, std::size_t length, std::uint32_t bits) {
        const auto bytes = part(offset, length);
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] &= static_cast<unsigned char>(~(bits >> (8 * i)));
    }

    /// Not told after all: as it was.
    void untell(std::size_t offset, std::size_t length) {
        std::ranges::transform(bytes::part(before_, offset, length), bytes::part(after_, offset, length),
                               part(offset, length).begin(),
                               [](char one, char other) { return static_cast<unsigned char>(one ^ other); });
    }

    /// Bytes that are left, each run as one.
    void appendTo(std::vector<BytesDiff>& list) const {
        for (std::size_t i = 0; i < bits_.size();) {
            const auto begin = std::find_if(at(i), bits_.end(), [](unsigned char bits) { return bits != 0; });
            const auto end = std::find(begin, bits_.end(), 0);
            const auto offset = static_cast<std::size_t>(begin - bits_.begin());
            const auto length = static_cast<std::size_t>(end - begin);
            i = offset + length;
            if (length > 0)
                list.push_back({offset, bytes::part(before_, offset, length), bytes::part(after_, offset, length)});
        }
    }

private:
    std::span<const char> before_;
    std::span<const char> after_;
    std::vector<unsigned char> bits_;

    std::vector<unsigned char>::const_iterator at(std::size_t i) const {
        return bits_.begin() + static_cast<std::ptrdiff_t>(i);
    }
    std::span<const unsigned char> part(std::size_t offset, std::size_t length) const {
        const std::size_t begin = std::min(offset, bits_.size());
        return std::span(bits_).subspan(begin, std::min(length, bits_.size() - begin));
    }
    std::span<unsigned char> part(std::size_t offset, std::size_t length) {
        const std::size_t begin = std::min(offset, bits_.size());
        return std::span(bits_).subspan(begin, std::min(length, bits_.size() - begin));
    }
};

/// The words of a block that the others decide.
struct SumWords {
    bool hasCrc;
    std::size_t fillerAt = 0; ///< 0: none

    explicit SumWords(const ImageBlock& block)
        : hasCrc((block.crcHolds || block.isSecondEdition) && block.bytes.size() >= crcAt + sizeof(std::uint32_t)) {
        if (!block.isSecondEdition)
            return;
        const SecondEditionLayout layout(block.bytes);
        if (layout.packed && layout.end + sizeof(std::uint16_t) <= block.bytes.size())
            fillerAt = block.bytes.size() - sizeof(std::uint16_t);
    }
};

using SharedLayout = std::shared_ptr<const BlockLayout>;

/// The layouts of an image's blocks, that of a class made once.
class Layouts {
public:
    /// Null for a block without fields.
    SharedLayout of(const ImageBlock& block) {
        if (block.isSecondEdition)
            return std::make_shared<const BlockLayout>(block);
        if (!block.entry)
            return nullptr;
        SharedLayout& layout = ofClass_[block.id];
        if (!layout)
            layout = std::make_shared<const BlockLayout>(block);
        return layout;
    }

private:
    std::unordered_map<int, SharedLayout> ofClass_;
};

/// What all comparisons of two images share.
struct Context {
    ImageValues before;
    ImageValues after;
    Tolerance tolerance;
    Layouts layouts;
    std::vector<Index> taken; // what differs of the field that is being compared
};

/// Compares two blocks whose bytes are not the same.
class PairDiff {
public:
    PairDiff(Context& context, BlockDiff& result)
        : context_(context), result_(result), before_(*result.before), after_(*result.after),
          untold_(before_.bytes, after_.bytes) {}

    void compare() {
        const auto state = [](const ImageBlock& block) {
            return std::array{block.checksumHolds, block.checksumChecked, block.crcHolds};
        };
        result_.sumsAgree = state(before_) == state(after_);
        findLayouts();
        compareWords();
        if (result_.beforeLayout == nullptr) {
            untold_.appendTo(result_.bytes);
        } else if (isSameLayout_) {
            for (const Field& field : result_.beforeLayout->fields())
                compareField(field);
            untold_.appendTo(result_.bytes);
        } else {
            compareByName();
            compareUncovered();
        }
        if (sumsFollow())
            result_.words.clear();
    }

private:
    Context& context_;
    BlockDiff& result_;
    const ImageBlock& before_;
    const ImageBlock& after_;
    Untold untold_;
    bool isSameLayout_ = true;
    bool hasCrc_ = false;
    bool hasFiller_ = false;
    std::size_t crcEnd_ = 0; // behind what the CRC-32 decides; 0: there is none

    void findLayouts() {
        SharedLayout before = context_.layouts.of(before_);
        SharedLayout after = context_.layouts.of(after_);
        if (!before || !after)
            return; // bytes say it all, and nothing twice
        isSameLayout_ = before == after || std::ranges::equal(before->fields(), after->fields(), isSameField);
        result_.beforeLayout = std::move(before);
        result_.afterLayout = std::move(after);
    }

    template <class Word>
    void compareWord(HeaderWord word, std::size_t offset) {
        if (!bytes::inside(std::min(before_.bytes.size(), after_.bytes.size()), offset, sizeof(Word)))
            return;
        const auto before = bytes::load<Word>(before_.bytes, offset);
        const auto after = bytes::load<Word>(after_.bytes, offset);
        if (before != after)
            result_.words.push_back({word, before, after});
        untold_.tell(offset, sizeof(Word));
    }

    void compareWords() {
        if (before_.isEnd())
            return;
        compareWord<std::uint16_t>(HeaderWord::Size, offsetof(HwSDatablockHeader, blockSize));
        compareWord<std::uint16_t>(HeaderWord::Checksum, offsetof(HwSDatablockHeader, checksum));
        compareWord<std::uint16_t>(HeaderWord::Alignment, offsetof(HwSDatablockHeader, alignment));
        const SumWords before(before_);
        const SumWords after(after_);
        hasCrc_ = before.hasCrc && after.hasCrc;
        hasFiller_ = hasCrc_ && before.fillerAt != 0 && before.fillerAt == after.fillerAt;
        if (!hasCrc_)
            return;
        crcEnd_ = crcAt + sizeof(std::uint32_t);
        compareWord<std::uint32_t>(HeaderWord::Crc32, crcAt);
        if (!hasFiller_)
            return;
        compareWord<std::uint16_t>(HeaderWord::Filler, before.fillerAt);
        // Then the upper half is the update index, which the filler keeps: a value like others.
        crcEnd_ -= sizeof(std::uint16_t);
        untold_.untell(crcEnd_, sizeof(std::uint16_t));
    }

    bool isSum(std::size_t offset, std::size_t width) const { return offset < crcEnd_ && offset + width > crcAt; }

    // Fields at the same place in both blocks.
    void compareField(const Field& field) {
        FieldDiff diff{.before = &field, .after = &field, .dimensions = {}, .elements = {}};
        const std::size_t common = std::min(before_.bytes.size(), after_.bytes.size());
        const std::uint32_t mask =
            field.bits == 0 || field.bits >= 32 ? 0xFFFFFFFFU : ((1U << field.bits) - 1) << field.shift;
        const auto skips = [&](std::size_t offset, std::size_t length) { return untold_.isTold(offset, length); };
        forEachElement(field, std::max(before_.bytes.size(), after_.bytes.size()), skips,
                       [&](const Index& index, std::size_t offset) {
                           const bool differs = field.bits > 0 ? untold_.has(offset, field.width, mask)
                                                               : !untold_.isTold(offset, field.width);
                           if (!differs || isSum(offset, field.width))
                               return;
                           if (field.stored == Stored::Text && bytes::inside(common, offset, field.width))
                               return compareText(field, index, offset);
                           take(index);
                           if (field.bits > 0) // others may have other bits of the word
                               untold_.tell(offset, field.width, mask);
                           else
                               untold_.tell(offset, field.width);
                       });
        finish(diff);
    }

    // What stands behind the NUL is no part of the text.
    void compareText(const Field& field, const Index& index, std::size_t offset) {
        const std::size_t width = field.width;
        const std::string_view before = bytes::text(before_.bytes, offset, width);
        const std::string_view after = bytes::text(after_.bytes, offset, width);
        if (before == after)
            return;
        take(index);
        untold_.tell(offset, std::min(std::max(before.size(), after.size()) + 1, width));
    }

    void compareByName() {
        std::unordered_map<std::string_view, const Field*> later;
        for (const Field& field : result_.afterLayout->fields())
            later.emplace(field.name, &field);
        for (const Field& field : result_.beforeLayout->fields()) {
            const auto found = later.find(field.name);
            const Field* const after = found == later.end() ? nullptr : found->second;
            compareLaidOut(&field, after);
            if (after)
                later.erase(found);
        }
        for (const Field& field : result_.afterLayout->fields()) {
            if (later.contains(field.name))
                compareLaidOut(nullptr, &field);
        }
    }

    // Fields of one name, of which each block has one at a place of its own.
    void compareLaidOut(const Field* before, const Field* after) {
        FieldDiff diff{.before = before, .after = after, .dimensions = {}, .elements = {}};
        const auto all = [](std::size_t, std::size_t) { return false; };
        const auto hasOther = [](const Field* field, const ImageBlock& block, const Index& index, unsigned int rank) {
            return field && field->rank == rank && hasElement(*field, index, block.bytes.size());
        };
        if (before) {
            forEachElement(*before, before_.bytes.size(), all, [&](const Index& index, std::size_t offset) {
                const bool isThere = hasOther(after, after_, index, before->rank);
                if (!isSum(offset, before->width) && !(isThere && isSameElement(*before, *after, index)))
                    take(index);
            });
        }
        if (after) {
            forEachElement(*after, after_.bytes.size(), all, [&](const Index& index, std::size_t offset) {
                if (!isSum(offset, after->width) && !hasOther(before, before_, index, after->rank))
                    take(index);
            });
        }
        finish(diff);
    }

    bool isSameElement(const Field& before, const Field& after, const Index& index) const {
        const std::size_t from = offsetOf(before, index);
        const std::size_t to = offsetOf(after, index);
        if (before.stored == Stored::Text && after.stored == Stored::Text)
            return bytes::text(before_.bytes, from, before.width) == bytes::text(after_.bytes, to, after.width);
        if (before.stored == after.stored && before.width == after.width && before.bits == after.bits &&
            before.scale == after.scale && before.zero == after.zero)
            return std::ranges::equal(before_.bytes.subspan(from, before.width), after_.bytes.subspan(to, after.width));
        return before.stored != Stored::Text && after.stored != Stored::Text &&
               fieldValue(before_.bytes, elementOf(before, from)) == fieldValue(after_.bytes, elementOf(after, to));
    }

    // Bytes that neither layout has anything at.
    void compareUncovered() {
        const auto covered = [&](const BlockLayout& layout, const ImageBlock& block) {
            std::vector<unsigned char> bits = coveredBits(layout.fields(), block.id, block.bytes.size());
            if (hasFiller_)
                std::fill(bits.end() - sizeof(std::uint16_t), bits.end(), 0xFF);
            return bits;
        };
        const std::vector<unsigned char> before = covered(*result_.beforeLayout, before_);
        const std::vector<unsigned char> after = covered(*result_.afterLayout, after_);
        const Untold differing = untold_;
        const std::size_t size = std::max(before.size(), after.size());
        for (std::size_t i = 0; i < size; ++i) {
            const unsigned char one = i < before.size() ? before[i] : 0xFF;
            const unsigned char other = i < after.size() ? after[i] : 0xFF;
            untold_.tell(i, 1, static_cast<std::uint32_t>(one | other));
        }
        untold_.appendTo(result_.bytes);
        // Whatever the names said, the two are not the same.
        if (result_.fields.empty() && result_.bytes.empty())
            differing.appendTo(result_.bytes);
    }

    void take(const Index& index) { context_.taken.push_back(index); }

    /// Reads what was taken, and leaves out what the tolerance forgives.
    void read(FieldDiff& diff, const UsedPart& usedBefore, const UsedPart& usedAfter) {
        const std::vector<Index>& taken = context_.taken;
        const ElementReader before(diff.before, before_, taken.size());
        const ElementReader after(diff.after, after_, taken.size());
        const Steps steps(diff.field());
        const bool areNumbers = diff.before && diff.after && isNumber(*diff.before) && isNumber(*diff.after);
        const bool areSteps = areNumbers && !diff.before->isFloating() && !diff.before->keepsLowest() &&
                              diff.before->stored == diff.after->stored && diff.before->scale == diff.after->scale;
        const bool isTolerant = areNumbers && context_.tolerance.isTolerant();
        diff.elements.reserve(isTolerant ? 0 : taken.size());
        for (const Index& index : taken) {
            ElementDiff element;
            element.index = index;
            element.isInBefore = before.has(index);
            element.isInAfter = after.has(index);
            element.before = element.isInBefore ? before.value(index) : 0;
            element.after = element.isInAfter ? after.value(index) : 0;
            const bool areTwo = areNumbers && element.isInBefore && element.isInAfter;
            element.difference = !areTwo || !std::isfinite(element.before) || !std::isfinite(element.after) ? notANumber
                                 : areSteps ? steps.difference(element, before, after)
                                            : element.after - element.before;
            if (isTolerant && areTwo && context_.tolerance.forgives(*diff.before, element)) {
                ++result_.forgiven;
                continue;
            }
            element.isUsed =
                (element.isInBefore && usedBefore.has(index)) || (element.isInAfter && usedAfter.has(index));
            diff.elements.push_back(element);
        }
    }

    static void summarize(FieldDiff& diff) {
        double sum = 0;
        for (const ElementDiff& element : diff.elements) {
            if (!std::isfinite(element.difference))
                continue;
            const double size = std::abs(element.difference);
            ++diff.numbers;
            diff.largest = std::max(diff.largest, size);
            sum += size;
        }
        const auto count = static_cast<double>(std::max<std::size_t>(diff.numbers, 1));
        diff.mean = sum / count;
        if (std::isfinite(sum))
            return;
        diff.mean = 0; // of numbers that are near the largest
        for (const ElementDiff& element : diff.elements)
            diff.mean += std::isfinite(element.difference) ? std::abs(element.difference) / count : 0;
    }

    void finish(FieldDiff& diff) {
        if (context_.taken.empty())
            return;
        FieldValues before;
        FieldValues after;
        if (diff.before)
            before = context_.before.shape(before_, *result_.beforeLayout, *diff.before);
        if (diff.after)
            after = context_.after.shape(after_, *result_.afterLayout, *diff.after);
        read(diff, UsedPart(before), UsedPart(after));
        context_.taken.clear();
        if (diff.elements.empty())
            return;
        summarize(diff);
        diff.dimensions = diff.before ? std::move(before.dimensions) : after.dimensions;
        for (std::size_t d = 0; d < std::min(diff.dimensions.size(), after.dimensions.size()); ++d) {
            if (!diff.dimensions[d].axis)
                diff.dimensions[d].axis = after.dimensions[d].axis;
        }
        result_.fields.push_back(std::move(diff));
    }

    /// Whether the sums are other words only because of what the tolerance forgives.
    bool sumsFollow() const {
        if (result_.forgiven == 0 || !result_.fields.empty() || !result_.bytes.empty() || !result_.sumsAgree ||
            !isSameLayout_ || before_.bytes.size() != after_.bytes.size())
            return false;
        const auto sumOf = [](const ImageBlock& block) { return sum16(block.bytes.data(), block.bytes.size()); };
        const bool holdCrcs = before_.crcHolds && after_.crcHolds;
        return std::ranges::all_of(result_.words, [&](const WordDiff& word) {
            switch (word.word) {
            case HeaderWord::Checksum:
                return sumOf(before_) == sumOf(after_);
            case HeaderWord::Crc32:
            case HeaderWord::Filler:
                return holdCrcs;
            case HeaderWord::Size:
            case HeaderWord::Alignment:
                break;
            }
            return false;
        });
    }
};

bool isSameBytes(std::span<const char> before, std::span<const char> after) {
    return before.size() == after.size() &&
           (before.empty() || std::memcmp(before.data(), after.data(), before.size()) == 0);
}

/// Which block of the one image belongs to which of the other: the first of an identifier to the first, and so on.
class Pairs {
public:
    Pairs(const ModuleImage& before, const ModuleImage& after)
        : before_(before.blocks()), after_(after.blocks()), partners_(before_.size()), isPaired_(after_.size()),
          occurrences_(after_.size()) {
        std::unordered_map<unsigned short, std::vector<std::size_t>> later;
        for (std::size_t i = 0; i < after_.size(); ++i) {
            std::vector<std::size_t>& alike = later[after_[i].id];
            occurrences_[i] = alike.size();
            alike.push_back(i);
        }
        std::unordered_map<unsigned short, std::size_t> seen;
        for (std::size_t i = 0; i < before_.size(); ++i) {
            const std::vector<std::size_t>& alike = later[before_[i].id];
            partners_[i].occurrence = seen[before_[i].id]++;
            partners_[i].place =
                partners_[i].occurrence < alike.size() ? alike[partners_[i].occurrence] : after_.size();
            if (partners_[i].place < after_.size())
                isPaired_[partners_[i].place] = true;
        }
    }

    /// Calls the function with each pair or single block: null for what is not there, and the occurrence. What only the
    /// second image has follows the pair that it follows there.
    template <class Function>
    void forEach(Function function) const {
        const auto onlyAfter = [&](std::size_t i) {
            for (; i < after_.size() && !isPaired_[i]; ++i)
                function(nullptr, &after_[i], occurrences_[i]);
        };
        onlyAfter(0);
        for (std::size_t i = 0; i < before_.size(); ++i) {
            const std::size_t place = partners_[i].place;
            function(&before_[i], place < after_.size() ? &after_[place] : nullptr, partners_[i].occurrence);
            onlyAfter(place + 1);
        }
    }

private:
    struct Partner {
        std::size_t place; // in the second image, or its end
        std::size_t occurrence;
    };
    const std::vector<ImageBlock>& before_;
    const std::vector<ImageBlock>& after_;
    std::vector<Partner> partners_;
    std::vector<bool> isPaired_;
    std::vector<std::size_t> occurrences_; // of the second image's blocks
};

} // namespace

std::optional<double> FieldDiff::axisValue(const ElementDiff& element, std::size_t dimension) const {
    const Axis* const axis = dimension < dimensions.size() ? dimensions[dimension].axis.get() : nullptr;
    if (!axis)
        return std::nullopt;
    const std::span<const double> labels = axis->at(element.index.front());
    const unsigned int entry = element.index.at(dimension);
    return entry < labels.size() ? std::optional(labels[entry]) : std::nullopt;
}

std::string FieldDiff::axisText(const ElementDiff& element, std::size_t dimension) const {
    const Axis* const axis = dimension < dimensions.size() ? dimensions[dimension].axis.get() : nullptr;
    if (axis && element.index.at(dimension) < axis->texts.size())
        return axis->texts[element.index.at(dimension)];
    const std::optional<double> value = axisValue(element, dimension);
    return value ? withReadableUnit(axis->format.text(*value), axis->unit) : std::string();
}

std::string_view nameOf(HeaderWord word) {
    static constexpr std::array<std::string_view, 5> names{"size", "checksum", "alignment", "CRC-32", "filler"};
    return names.at(static_cast<std::size_t>(word));
}

ImageDiff::ImageDiff(std::span<const char> before, std::span<const char> after, const DiffOptions& options)
    : options_(options), before_(before), after_(after) {
    Context context{ImageValues(before_), ImageValues(after_), Tolerance(options_), {}, {}};
    const BlockSelector& selector = options_.blocks;
    Pairs(before_, after_).forEach([&](const ImageBlock* first, const ImageBlock* second, std::size_t occurrence) {
        if (!(first && selector.selects(*first)) && !(second && selector.selects(*second)))
            return;
        BlockDiff diff;
        diff.before = first;
        diff.after = second;
        diff.occurrence = occurrence;
        if (first && second && !isSameBytes(first->bytes, second->bytes))
            PairDiff(context, diff).compare();
        counts_.onlyBefore += diff.isOnlyBefore() ? 1 : 0;
        counts_.onlyAfter += diff.isOnlyAfter() ? 1 : 0;
        counts_.moved += diff.isMoved() ? 1 : 0;
        counts_.changed += diff.isChanged() ? 1 : 0;
        if (!first || !second || diff.isMoved() || diff.isChanged()) {
            blocks_.push_back(std::move(diff));
        } else {
            ++counts_.same;
            counts_.forgiven += diff.forgiven > 0 ? 1 : 0;
        }
    });
    if (options_.blocks.selectsAll())
        Untold(before.subspan(before_.end()), after.subspan(after_.end())).appendTo(rest_);
}

std::span<const char> elementBytes(const ImageBlock& block, const Field* field, std::span<const unsigned int> index) {
    if (!field || !hasElement(*field, index, block.bytes.size()))
        return {};
    return block.bytes.subspan(offsetOf(*field, index), field->width);
}

std::string elementText(const ImageBlock& block, const Field* field, std::span<const unsigned int> index) {
    const std::span<const char> stored = elementBytes(block, field, index);
    if (stored.empty())
        return {};
    const Field element = elementOf(*field);
    if (element.stored == Stored::Text)
        return toUtf8(bytes::text(stored, 0, stored.size()));
    const double number = fieldValue(stored, element);
    if (element.role == Role::Date && number >= 0 && number <= 0xFFFF) {
        if (std::string date = dateText(static_cast<unsigned int>(number)); !date.empty())
            return date;
    }
    const bool isWide = element.bits == 0 && (element.stored == Stored::U64 || element.stored == Stored::I64);
    return isWide && isPlainInteger(element) ? storedText(stored, element, 0) : NumberFormat(element).text(number);
}

} // namespace Travik
