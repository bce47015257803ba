#pragma once

#include <travik/datablock/Export.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// What can be found out about an image, and how much it weighs. The one place that decides: whoever shows an image
/// says of it what stands here. docs/findings.md shows the same as a table.
namespace Travik {

/// How much a finding weighs.
enum class Grade : unsigned char {
    Damage, ///< data are wrong or cannot be found
    Note    ///< worth a look, but no damage
};

enum class Finding : unsigned char {
    // Of the image as a whole: damage.
    NoBlocks, ///< the data are empty, or begin erased (FF FF FF FF)
    // Of where a block lies: damage. A block has at most one of them.
    TruncatedHeader, ///< the data end within the header words
    ZeroSize,        ///< size word 0
    SizeBelowHeader, ///< size word 1 to 7
    SizePastEnd,     ///< the block would end behind the data
    OddSize,         ///< the size word is no whole number of words
    WrongSize,       ///< the size word is none that the block's class comes in
    // Of its sums: damage.
    WrongChecksum, ///< the 16-bit checksum does not hold
    WrongCrc,      ///< a second-edition table whose CRC-32 does not match
    // Notes of a block.
    StrayChecksum,       ///< not checked, and its checksum word is neither 0 nor the right one
    UnknownIdentifier,   ///< no class, and no second-edition table
    CountBeyondCapacity, ///< a count says more than the record holds
    RepeatedIdentifier,  ///< more than one block of an identifier
    // Notes of the image as a whole.
    NoEndBlock,      ///< the data end without one
    OnlyEndBlock,    ///< no block ahead of the end block
    BlocksBehindEnd, ///< a sound block behind the end block
    BytesBehindEnd   ///< bytes other than FF and 00 behind the end block
};

/// A kind of finding: its grade, and what it is called: "size word 0", "wrong checksum" and so on.
struct FindingKind {
    Finding finding;
    Grade grade;
    std::string_view name;
};

/// Every kind, in the order of their numbers.
TRAVIK_DATABLOCK_EXPORT std::span<const FindingKind> findingKinds();
TRAVIK_DATABLOCK_EXPORT Grade gradeOf(Finding finding);
TRAVIK_DATABLOCK_EXPORT std::string_view nameOf(Finding finding);

/// Some findings, each once.
class FindingSet {
public:
    constexpr void add(Finding finding) { bits_ |= bit(finding); }
    constexpr void remove(Finding finding) { bits_ &= ~bit(finding); }
    constexpr bool has(Finding finding) const { return (bits_ & bit(finding)) != 0; }
    constexpr bool hasAnyOf(FindingSet others) const { return (bits_ & others.bits_) != 0; }
    constexpr bool empty() const { return bits_ == 0; }

private:
    unsigned int bits_ = 0;

    static constexpr unsigned int bit(Finding finding) { return 1U << static_cast<unsigned int>(finding); }
};

/// A finding at its place, ready to be shown.
struct ImageFinding {
    Finding finding;
    std::size_t offset;
    std::optional<unsigned short> id; ///< the block's identifier; none where it is of the image as a whole
    std::string text;                 ///< what is found, in one line, without offset and identifier

    Grade grade() const { return gradeOf(finding); }
    friend bool operator==(const ImageFinding&, const ImageFinding&) = default;
};

} // namespace Travik
