#pragma once

#include <travik/registry/Catalogue.h>
#include <travik/registry/ImageFindings.h>

#include <functional>
#include <memory>
#include <optional>
#include <ranges>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Travik {

/// One block as it lies in an image.
struct ImageBlock {
    std::size_t offset = 0;
    std::span<const char> bytes;           ///< the block's bytes, as far as the data goes
    const CatalogueEntry* entry = nullptr; ///< its class; null for an identifier without one
    unsigned short id = 0;
    unsigned short sizeWord = 0; ///< as stored; 4 for the end block

    /// Whether it is known where the block ends. If not it is cut off, or its size word cannot be true and nothing else
    /// tells; then it is the last of its image.
    bool endsKnown = true;
    /// The 16-bit checksum, as the block itself verifies it: of a size word of 32768 and more it holds unread. False
    /// for a block that is cut off or has another size than it says.
    bool checksumHolds = false;
    /// Whether the sum over all words was held against the checksum. False where nothing can be said: for the end
    /// block, which has none; for a block that is cut off; and from 32768 bytes on unless the sum is right.
    bool checksumChecked = false;
    bool crcHolds = false; ///< whether the block carries a CRC-32 that matches
    /// Whether it is a second-edition table, which describes itself: an identifier without a class, and a table header
    /// whose areas lie inside the block. Where the CRC-32 does not match they fill it, and every type is known.
    bool isSecondEdition = false;
    FindingSet findings; ///< what its own header and sums say; its counts are not looked at

    bool isEnd() const { return id == 0xFFFF && bytes.size() >= sizeof id; }
};

/// An image as a sequence of blocks, each at the end of the one before by its size word; the end block or the end of
/// the data closes it. Data that begin erased (FF FF FF FF) have no block.
///
/// A size word that is none of its class's is not followed where the class's size is the right one: where the checksum
/// holds with it, or a block stands behind it that makes sense. A second-edition table's own size counts as its class's
/// where the CRC-32 matches with it. Nothing is read beyond the data, or beyond a block whose end is not known.
///
/// Refers to the bytes; they must outlive it. Made from bytes that would not, it does not compile.
class TRAVIK_DATABLOCK_EXPORT ModuleImage {
public:
    explicit ModuleImage(std::span<const char> bytes);
    template <class Bytes>
    requires(!std::is_lvalue_reference_v<Bytes> && std::ranges::contiguous_range<Bytes> &&
             !std::ranges::borrowed_range<Bytes>) explicit ModuleImage(Bytes&& bytes) = delete;

    const std::vector<ImageBlock>& blocks() const& { return blocks_; }
    void blocks() && = delete; // the blocks would be gone before they are looked at
    /// Where the walk ended: behind the last block. Whatever follows an end block belongs to no block.
    std::size_t end() const { return end_; }

    /// Hands out everything that can be said of the image, in image order, what is wrong with a block before the notes.
    void visitFindings(const std::function<void(const ImageFinding&)>& visitor) const;
    /// The same as a list.
    std::vector<ImageFinding> findings() const;
    /// What can be said of one block by itself: all but whether its identifier is repeated.
    std::vector<ImageFinding> findings(const ImageBlock& block) const;
    /// What can be said of no single block.
    std::vector<ImageFinding> imageFindings() const;

    /// The damage among the findings, handed out or as a list.
    void visitProblems(const std::function<void(const ImageFinding&)>& visitor) const;
    std::vector<ImageFinding> problems() const;
    /// The damage of one of the blocks.
    std::vector<ImageFinding> problems(const ImageBlock& block) const;

private:
    using Visitor = std::function<void(const ImageFinding&)>;

    std::span<const char> bytes_;
    std::vector<ImageBlock> blocks_;
    std::size_t end_ = 0;

    ImageBlock blockAt(std::size_t offset) const;
    ImageBlock asWritten(std::size_t offset) const;
    bool makesSense(std::size_t offset) const;
    void believeClass(ImageBlock& block) const;
    void believeTable(ImageBlock& block) const;
    void resize(ImageBlock& block, std::size_t size) const;

    void visitDamage(const ImageBlock& block, const Visitor& visitor) const;
    void visitNotes(const ImageBlock& block, const Visitor& visitor) const;
    void visitBegin(const Visitor& visitor) const;
    void visitEnd(const Visitor& visitor) const;
};

/// The gate: the damage of an image. Empty for one that holds together.
TRAVIK_DATABLOCK_EXPORT std::vector<ImageFinding> checkImage(std::span<const char> bytes);

/// The block as an object of its class, registered or not, with a copy of its bytes and its offset as EEPROM address.
/// Where its identifier has no class: `HwDatablock2Edition` for a second-edition table, otherwise a plain
/// `HwDatablock`.
TRAVIK_DATABLOCK_EXPORT std::unique_ptr<HwDatablock> makeBlock(const ImageBlock& block);

/// A new, empty block of an identifier, or null where the identifier has no class.
TRAVIK_DATABLOCK_EXPORT std::unique_ptr<HwDatablock> makeBlock(int id);

/// The images of the blocks one after the other; null stands for none. No end block is added.
TRAVIK_DATABLOCK_EXPORT std::vector<char> composeImage(std::span<HwDatablock* const> blocks);

} // namespace Travik
