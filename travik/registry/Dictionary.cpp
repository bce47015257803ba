#include <travik/registry/Catalogue.h>
#include <travik/registry/Dictionary.h>

namespace Travik {

namespace {

constexpr int endBlockId = 0xFFFF;

} // namespace

void IdHwDatablockOldStyleClassDict::fill() {
    for (const CatalogueEntry& entry : catalogue()) {
        if (!entry.registered)
            continue;
        for (int id = entry.first; id <= entry.last; ++id) {
            std::unique_ptr<HwDatablock> prototype = entry.create(entry, id);
            if (id != endBlockId)
                prototype->resizeData(sizeof(HwSDatablockHeader));
            // Ascending keys: each goes behind the last.
            const auto place = emplace_hint(end(), id, nullptr);
            if (!place->second)
                place->second = prototype.release();
        }
    }
}

} // namespace Travik
