#pragma once

#include <travik/registry/ModuleImage.h>
#include <travik/service/BlockSelector.h>
#include <travik/service/Values.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What differs between two images of a module, as data. Nothing here shows anything: `DiffText.h` does, as text and as
/// a document.
///
/// Two images that differ in any byte never compare as the same, unless a tolerance says so: what no field tells is
/// among the header words or the bytes. Damaged images are compared like any other.
namespace Travik {

/// What counts as a difference. Without a tolerance, every bit does: also those of a NaN, and the sign of a zero.
struct DiffOptions {
    /// Numbers whose physical values differ by no more, in the unit of their field, count as the same; 0: none.
    double tolerance = 0;
    /// The same by their difference over the larger of their two magnitudes, however small these are. Of two
    /// tolerances one suffices.
    double relative = 0;
    /// Only these blocks are compared, and not what lies behind the last block.
    BlockSelector blocks;

    /// Whether both are numbers, and not negative. Others forgive nothing.
    bool isValid() const { return tolerance >= 0 && relative >= 0; }
    bool isTolerant() const { return tolerance > 0 || relative > 0; }
};

/// One element of a field that differs.
struct ElementDiff {
    std::array<unsigned int, Field::maxRank> index{}; ///< one a dimension, outermost first, from 0
    /// Whether the block has the element: a block that is cut off, or a table of another size, may end before it.
    bool isInBefore = false;
    bool isInAfter = false;
    /// Whether the counts say, in one of the images at least, that it is in use.
    bool isUsed = true;
    /// Physical values; a date's is its packed number. 0 for a text, and where there is no such element.
    double before = 0;
    double after = 0;
    /// What was added. Exact for integers; not finite where one of them is no finite number, or there is only one.
    double difference = 0;
};

/// The elements of one field that differ, in the order of the image.
struct TRAVIK_SERVICE_EXPORT FieldDiff {
    /// Each as its block lays it out; null where the block has no field of that name. They are the same unless a table
    /// describes itself, and differently in the two images.
    const Field* before = nullptr;
    const Field* after = nullptr;
    /// Dimensions with their axes as the first image has them, as the second has them where the first has no such axis.
    std::vector<ValueDimension> dimensions;
    std::vector<ElementDiff> elements;

    /// Of those differences that are finite numbers: how many there are, and their size.
    std::size_t numbers = 0;
    double largest = 0;
    double mean = 0;

    const Field& field() const { return before ? *before : *after; }
    std::string_view name() const { return field().name; }
    /// What labels the element along a dimension: a number in the unit of the axis; nothing where there is no axis, or
    /// where it labels with texts.
    std::optional<double> axisValue(const ElementDiff& element, std::size_t dimension) const;
    /// The same for a person: "3 GHz"; empty where nothing labels it.
    std::string axisText(const ElementDiff& element, std::size_t dimension) const;
};

/// Words of a block that are not among its values.
enum class HeaderWord : unsigned char {
    Size,
    Checksum,
    Alignment,
    Crc32, ///< in the first data word of a block that carries one; with the update index of a packed table
    Filler ///< the last 16 bits of a packed table, made so that the CRC-32 keeps the update index
};
/// "size", "checksum", "alignment", "CRC-32" and "filler".
TRAVIK_SERVICE_EXPORT std::string_view nameOf(HeaderWord word);

struct WordDiff {
    HeaderWord word;
    std::uint32_t before;
    std::uint32_t after;
};

/// Bytes that differ and that no field covers: what lies behind the NUL of a text, padding, the bits of a word that no
/// field has, fields that a block ends within, blocks without a class.
struct BytesDiff {
    std::size_t offset; ///< from the start of the block, or of what follows the last block
    /// As long as each other, unless one of them ends there.
    std::span<const char> before;
    std::span<const char> after;
};

/// Two blocks that belong together, those of the same identifier and the same occurrence of it, and that differ; or a
/// block that has no counterpart.
struct TRAVIK_SERVICE_EXPORT BlockDiff {
    const ImageBlock* before = nullptr; ///< null where only the second image has it
    const ImageBlock* after = nullptr;  ///< null where only the first image has it
    std::size_t occurrence = 0;         ///< which of its identifier in the image, from 0

    std::vector<WordDiff> words;
    std::vector<FieldDiff> fields;
    std::vector<BytesDiff> bytes;
    /// Whether the two say of their sums the same: that they hold, do not, or are not checked. If not, the blocks
    /// differ whatever the tolerance.
    bool sumsAgree = true;
    /// How many elements differ and are within the tolerance. They are not among the fields, and the sums that follow
    /// from them alone are not among the words.
    std::size_t forgiven = 0;

    /// Of the first image, unless only the second has it.
    const ImageBlock& block() const { return before ? *before : *after; }
    bool isOnlyBefore() const { return !after; }
    bool isOnlyAfter() const { return !before; }
    /// Whether it lies elsewhere in the image. A block that is moved may be changed as well.
    bool isMoved() const { return before && after && before->offset != after->offset; }
    bool isChanged() const {
        return before && after && !(words.empty() && fields.empty() && bytes.empty() && sumsAgree);
    }

    /// What the field pointers point into; null where the block has no fields, or is not compared by them.
    std::shared_ptr<const BlockLayout> beforeLayout;
    std::shared_ptr<const BlockLayout> afterLayout;
};

/// How many blocks there are of each kind. A block may be both moved and changed.
struct DiffCounts {
    std::size_t same = 0;     ///< at the same place, and the same or within the tolerance
    std::size_t forgiven = 0; ///< of these, those that are not the same byte for byte
    std::size_t moved = 0;
    std::size_t changed = 0;
    std::size_t onlyBefore = 0;
    std::size_t onlyAfter = 0;
};

/// The comparison. Time and memory grow with the bytes of both images, whatever is in them.
class TRAVIK_SERVICE_EXPORT ImageDiff {
public:
    /// Any bytes may be given; they must outlive the comparison.
    ImageDiff(std::span<const char> before, std::span<const char> after, const DiffOptions& options = {});
    template <class Before, class After>
    requires(!(std::is_lvalue_reference_v<Before> || std::ranges::borrowed_range<Before>) ||
             !(std::is_lvalue_reference_v<After> || std::ranges::borrowed_range<After>))
        ImageDiff(Before&& before, After&& after, const DiffOptions& options = {})
    = delete;

    ImageDiff(ImageDiff&&) = default;
    ImageDiff& operator=(ImageDiff&&) = default;
    ImageDiff(const ImageDiff&) = delete; // what differs points into the images
    ImageDiff& operator=(const ImageDiff&) = delete;
    ~ImageDiff() = default;

    /// Whether nothing differs.
    bool isSame() const { return blocks_.empty() && rest_.empty(); }

    const ModuleImage& before() const { return before_; }
    const ModuleImage& after() const { return after_; }
    const DiffOptions& options() const { return options_; }

    /// The blocks that differ, in the order of the first image; what only the second has stands behind the block that
    /// it follows there.
    const std::vector<BlockDiff>& blocks() const& { return blocks_; }
    void blocks() && = delete; // they refer to what would be gone
    /// What differs behind the last blocks, counted from where each image's blocks end. Of images without a block that
    /// is all there is.
    const std::vector<BytesDiff>& rest() const& { return rest_; }
    void rest() && = delete;
    const DiffCounts& counts() const { return counts_; }

private:
    DiffOptions options_;
    ModuleImage before_;
    ModuleImage after_;
    std::vector<BlockDiff> blocks_;
    std::vector<BytesDiff> rest_;
    DiffCounts counts_;
};

/// The text of an element, for a person and without its unit: a number by its format, a date, a text as it is. Empty
/// where the block has no such element.
TRAVIK_SERVICE_EXPORT std::string elementText(const ImageBlock& block, const Field* field,
                                              std::span<const unsigned int> index);
/// Its bytes as they are stored; none where the block has no such element.
TRAVIK_SERVICE_EXPORT std::span<const char> elementBytes(const ImageBlock& block, const Field* field,
                                                         std::span<const unsigned int> index);

} // namespace Travik
