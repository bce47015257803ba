#include <travik/datablock/Checksum.h>
#include <travik/service/BlockComparison.h>
#include <travik/service/DiffElements.h>
#include <travik/service/DocumentForm.h>
#include <travik/service/UntoldBytes.h>
#include <travik/tables/SecondEdition.h>

#include <limits>
#include <unordered_map>

namespace Travik::diff {

namespace {

constexpr std::size_t crcAt = sizeof(HwSDatablockHeader);
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

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

} // namespace

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
struct ComparisonShare {
    ImageValues before;
    ImageValues after;
    Tolerance tolerance;
    Layouts layouts;
    std::vector<Index> taken; // what differs of the field that is being compared
};

namespace {

/// Compares two blocks whose bytes are not the same.
class PairDiff {
public:
    PairDiff(ComparisonShare& context, BlockDiff& result)
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
    ComparisonShare& context_;
    BlockDiff& result_;
    const ImageBlock& before_;
    const ImageBlock& after_;
    UntoldBytes untold_;
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
        const std::uint32_t mask = bitsOf(field);
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
        // The type of a table's elements is their stored form and their scale.
        if (before.stored == after.stored && before.scale == after.scale)
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
        const UntoldBytes differing = untold_;
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

} // namespace

struct BlockComparison::Context : ComparisonShare {};

BlockComparison::BlockComparison(const ModuleImage& before, const ModuleImage& after, const DiffOptions& options)
    : context_(
          std::make_unique<Context>(Context{{ImageValues(before), ImageValues(after), Tolerance(options), {}, {}}})) {}

BlockComparison::~BlockComparison() = default;

void BlockComparison::compare(BlockDiff& pair) { PairDiff(*context_, pair).compare(); }

} // namespace Travik::diff
