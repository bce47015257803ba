#pragma once

#include <travik/datablock/Fields.h>
#include <travik/datablock/HwDatablock.h>
#include <travik/text/TableBlock.h>

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace Travik {

struct ExchangeFormat;

/// One class of blocks with the identifiers that it serves: what the dictionary, the interpreter, the image walker and
/// the tools know of it.
struct CatalogueEntry {
    int first; ///< identifiers first .. last
    int last;
    std::string_view className;
    bool registered; ///< whether the dictionary has it; users create blocks of the others through their class

    /// A new block of an identifier of this entry, with the constructor arguments of its prototype.
    std::unique_ptr<HwDatablock> (*create)(const CatalogueEntry& entry, int id);
    /// The key name that the block prints for an identifier; empty where it prints none.
    std::string (*key)(const CatalogueEntry& entry, int id);
    /// The fields that follow the header, with the blocks that label the tables of this very identifier.
    FieldList (*fields)(const CatalogueEntry& entry, int id);
    /// Re-stores the image of a block in place, as the class does, every field through the byte-order conversion; null
    /// where blocks of this entry are not converted.
    void (*restore)(HwDatablock& block);

    /// What a table that has no class of its own is made with.
    TableSpec table{};
    /// How blocks of the class are exchanged as text; null where they are not.
    const ExchangeFormat* exchange = nullptr;
    /// The sizes in bytes that blocks of the class come in, that of a new block first; 0: no further one.
    std::array<unsigned short, 2> sizes{};

    bool comesIn(unsigned int size) const { return size != 0 && std::ranges::find(sizes, size) != sizes.end(); }
};

/// Every class of the library, in ascending order of identifiers.
TRAVIK_DATABLOCK_EXPORT std::span<const CatalogueEntry> catalogue();

/// The entry of an identifier, or null.
TRAVIK_DATABLOCK_EXPORT const CatalogueEntry* findEntry(int id);

} // namespace Travik
