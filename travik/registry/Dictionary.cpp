#include <travik/datablock/ShortImages.h>
#include <travik/modules/IqModulatorTables.h>
#include <travik/registry/Catalogue.h>
#include <travik/registry/Dictionary.h>

#include <atomic>

namespace Travik {

void IdHwDatablockOldStyleClassDict::fill() {
    const detail::ShortImages headers(sizeof(HwSDatablockHeader));
    for (const CatalogueEntry& entry : catalogue()) {
        if (!entry.registered)
            continue;
        for (int id = entry.first; id <= entry.last; ++id) {
            std::unique_ptr<HwDatablock> prototype = entry.create(entry, id);
            // Ascending keys: each goes behind the last.
            const auto place = emplace_hint(end(), id, nullptr);
            if (!place->second)
                place->second = prototype.release();
        }
    }
}

void IdHwDatablockOldStyleClassDict::countAsFilled() {
    using Counted = HwDatablockIqOp3RfmCalibData;
    static const CatalogueEntry& row = *findEntry(Counted::firstId);
    std::atomic_ref(Counted::instanceCounter)
        .fetch_add(static_cast<unsigned int>(row.last - row.first + 1), std::memory_order_relaxed);
}

} // namespace Travik
