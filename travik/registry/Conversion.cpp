#include <travik/registry/Catalogue.h>
#include <travik/registry/Conversion.h>

namespace Travik {

bool convertBlock(HwEDataFormatTyp format, int id, HwDatablock& block) {
    const CatalogueEntry* const entry = findEntry(id);
    if (!entry || !entry->restore)
        return false;
    entry->restore(block);
    block.setDataFormatTyp(format);
    return true;
}

} // namespace Travik
