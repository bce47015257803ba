#pragma once

#include <travik/registry/Catalogue.h>

#include <memory>
#include <optional>
#include <ranges>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Travik {

/// What can be wrong with a block of an image, or with where it lies.
enum class ImageFault : unsigned char {
    TruncatedHeader, ///< the data ends within the header words
    ZeroSize,        ///< size word 0
    SizeBelowHeader, ///< size word 1 to 7
    SizePastEnd,     ///< the block would end behind the data
    OddSize,         ///< the size word is no whole number of words
    WrongChecksum    ///< the 16-bit checksum does not hold
};

/// One block as it lies in an image.
struct ImageBlock {
    std::size_t offset = 0;
    unsigned short id = 0;
    unsigned short sizeWord = 0;           ///< as stored; 4 for the end block
    std::span<const char> bytes;           ///< the block's bytes, as far as the data goes
    const CatalogueEntry* entry = nullptr; ///< its class; null for an identifier without one
    bool checksumHolds = false;            ///< the 16-bit checksum, as the block itself verifies it
    bool crcHolds = false;                 ///< whether the block carries a CRC-32 that matches
    /// Whether it is a second-edition table, which describes itself: an identifier without a class, a CRC-32 that
    /// holds, and a table header whose areas lie inside the block.
    bool isSecondEdition = false;
    std::vector<ImageFault> faults; ///< in the order they were found
};

/// A problem of an image, ready to be shown.
struct ImageProblem {
    std::size_t offset;
    unsigned short id;
    ImageFault fault;
    std::string text; ///< what is wrong, in one line, without offset and identifier
};

/// An image as a sequence of blocks, each at the end of the one before by its size word; the end block or the end of
/// the data closes it. Nothing is read beyond the data or beyond a block whose size word cannot be true, unless the
/// record size of the block's class leads to a block behind it that is sound: then the walk goes on there.
///
/// Refers to the bytes; they must outlive it. Made from bytes that would not, it does not compile.
class TRAVIK_DATABLOCK_EXPORT ModuleImage {
public:
    explicit ModuleImage(std::span<const char> bytes);
    template <class Bytes>
    requires(!std::is_lvalue_reference_v<Bytes> && std::ranges::contiguous_range<Bytes> &&
             !std::ranges::borrowed_range<Bytes>) explicit ModuleImage(Bytes&& bytes) = delete;

    const std::vector<ImageBlock>& blocks() const& { return blocks_; }
    std::vector<ImageBlock> blocks() && { return std::move(blocks_); }
    /// Every fault of every block, in image order.
    std::vector<ImageProblem> problems() const;
    /// The faults of one block, which may be another image's.
    std::vector<ImageProblem> problems(const ImageBlock& block) const;
    /// Where the walk ended: behind the last block. Whatever follows an end block belongs to no block.
    std::size_t end() const { return end_; }

private:
    std::span<const char> bytes_;
    std::vector<ImageBlock> blocks_;
    std::size_t end_ = 0;

    ImageBlock blockAt(std::size_t offset) const;
    std::optional<std::size_t> soundBlockBehind(const ImageBlock& block) const;
};

/// The gate: everything that is wrong with an image. Empty for one that holds together.
TRAVIK_DATABLOCK_EXPORT std::vector<ImageProblem> checkImage(std::span<const char> bytes);

/// The block as an object of its class, registered or not, with a copy of its bytes and its offset as EEPROM address.
/// Where its identifier has no class: `HwDatablock2Edition` for a second-edition table, otherwise a plain
/// `HwDatablock`.
TRAVIK_DATABLOCK_EXPORT std::unique_ptr<HwDatablock> makeBlock(const ImageBlock& block);

/// A new, empty block of an identifier, or null where the identifier has no class.
TRAVIK_DATABLOCK_EXPORT std::unique_ptr<HwDatablock> makeBlock(int id);

/// The images of the blocks one after the other; null stands for none. No end block is added.
TRAVIK_DATABLOCK_EXPORT std::vector<char> composeImage(std::span<HwDatablock* const> blocks);

/// What a fault is called: "size word 0", "wrong checksum" and so on.
TRAVIK_DATABLOCK_EXPORT std::string_view faultName(ImageFault fault);

} // namespace Travik
