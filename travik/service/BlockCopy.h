#pragma once

#include <travik/service/BlockAddress.h>
#include <travik/service/Export.h>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Whole blocks moved between images: those of a backup put in the place of an image's own, added, or taken out.
/// Whoever changes a file does it between the reading and the writing of an `ImageEdit`.
///
/// An image stands for a memory of its size, so that it keeps its size where it can. Bytes that a change frees are
/// added behind the end block, erased (FF, or 00 where that follows it). Bytes that it needs are taken from the erased
/// ones that follow the end block; only what these lack makes the image grow. What else follows the end block keeps its
/// bytes, and its place unless the image grows. An image without an end block grows and shrinks.
///
/// Where std::bad_alloc is thrown, the image is what it was.
///
/// Names may be globs, which pass over the end block: no name moves or removes that one.
namespace Travik {

struct CopyOptions {
    /// Take blocks of another size, too, and move what follows them.
    bool resizes = false;
    /// Add what the image lacks ahead of its end block, in the order of the source. The end of the data stands for an
    /// end block that is missing.
    bool appends = false;
    /// Take a source's block whose sums do not hold, too; and put a block over one of the image of which it is not
    /// known where it ends, as where its size word is destroyed.
    bool forces = false;
};

/// What became of a block.
struct BlockEdit {
    enum class Kind : unsigned char { Replaced, Added, Removed };

    Kind kind;
    std::string block; ///< its key in UTF-8; its identifier where it has none
    unsigned short id;
    std::size_t offset;   ///< in the image as it is now; of a removed block as it was
    std::size_t before;   ///< bytes that were there; 0 for one that was added
    std::size_t after;    ///< bytes that are there; 0 for one that was removed
    bool isChange = true; ///< whether any byte differs
};

/// Why a name was refused.
struct BlockRefusal {
    std::string text;        ///< the name
    std::string why;         ///< in one line
    bool isOfSource = false; ///< whether it is the source that this is said of, not the image
};

struct TRAVIK_SERVICE_EXPORT BlockReport {
    std::vector<BlockRefusal> refusals;
    std::vector<BlockEdit> edits; ///< in image order; empty where anything was refused
    /// By how many bytes the image is longer than before, or shorter where this is below 0.
    std::ptrdiff_t growth = 0;
    /// Which options would lift one of the refusals.
    CopyOptions remedies;

    bool succeeded() const { return refusals.empty(); }
};

/// Puts blocks of a source into an image, byte for byte, all of them or, where anything is refused, none.
///
/// A name means every block of the source that is called so. It takes the place of the image's block of the same
/// identifier and the same occurrence, first for first and second for second, if both have as many; the image may have
/// fewer where blocks are added. With KEY@OFFSET one block is meant: the source's at this offset, in the place of the
/// same occurrence, of the only one, or of the one at the same offset; or the source's only one in the place of the
/// image's at this offset.
///
/// Refused is a name that the source has no block of, or the image (see `appends`); one that leaves open which block is
/// meant; a place that two blocks would take; another size (see `resizes`); a source's block whose sums do not hold
/// (see `forces`) or of which it is doubtful where it ends; a block of the image of which that is doubtful, unless the
/// source's has just its size; the end block.
TRAVIK_SERVICE_EXPORT BlockReport copyBlocks(std::vector<char>& image, std::span<const char> source,
                                             std::span<const BlockAddress> names, const CopyOptions& options = {});

/// Takes blocks out of an image, all of them or, where anything is refused, none. What follows moves up.
///
/// Refused is a name that the image has no block of; one without OFFSET, which is no glob, that several are called by;
/// a block of which it is doubtful where it ends; the end block.
TRAVIK_SERVICE_EXPORT BlockReport removeBlocks(std::vector<char>& image, std::span<const BlockAddress> names);

} // namespace Travik
