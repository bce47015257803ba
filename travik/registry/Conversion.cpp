#include <travik/registry/Catalogue.h>
#include <travik/registry/Conversion.h>

namespace Travik {

bool convertBlock(HwEDataFormatTyp format, int id, HwDatablock& block) {
    const CatalogueEntry* const entry = findEntry(id);
    if (!entry || !entry->restore)
        return false;
    const std::unique_ptr<HwDatablock> temporary = entry->create(*entry, id);
    temporary->setDataWithoutChecksumCheck(&block);
    // In the firmware order while its fields are re-stored: their setters compute checksums, which would ask for a
    // conversion of a foreign block again, and so on without end.
    temporary->setDataFormatTyp(HwDataFormatFirmware);
    entry->restore(*temporary);
    temporary->setDataFormatTyp(format);
    block.setDataWithoutChecksumCheck(temporary.get());
    return true;
}

} // namespace Travik
