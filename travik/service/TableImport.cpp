#include <travik/registry/ModuleImage.h>
#include <travik/service/Seal.h>
#include <travik/service/TableImport.h>

#include <algorithm>

namespace Travik {

namespace {

std::vector<const ExchangeFormat*> exchangeFormats() {
    std::vector<const ExchangeFormat*> formats;
    for (const CatalogueEntry& entry : catalogue()) {
        if (entry.exchange)
            formats.push_back(entry.exchange);
    }
    return formats;
}

/// The block that takes the table; null, and the refusal, where none does.
const ImageBlock* findBlock(const ModuleImage& module, const ExchangeFormat& format, bool force, TableImport& result) {
    const auto& blocks = module.blocks();
    const auto isWanted = [&](const ImageBlock& block) { return block.id == format.table.id; };
    const auto block = std::ranges::find_if(blocks, isWanted);
    const auto refuse = [&](const ImageBlock* about, std::string why) {
        result.refusal = std::move(why);
        result.concernsBlock = about != nullptr;
        result.offset = about ? about->offset : 0;
        return nullptr;
    };
    if (block == blocks.end())
        return refuse(nullptr, "no block " + std::to_string(format.table.id) + " (" + format.table.key + ")");
    if (const auto second = std::find_if(block + 1, blocks.end(), isWanted); second != blocks.end())
        return refuse(&*second, "one more of this block, neither is replaced");
    const std::size_t size = std::min<std::size_t>(block->sizeWord, block->bytes.size());
    if (block->sizeWord != format.shape.size() || size != format.shape.size())
        return refuse(&*block, "has " + std::to_string(size) + " bytes, not the " +
                                   std::to_string(format.shape.size()) + " of its class, not replaced");
    result.wasDamaged = !block->checksumHolds;
    if (result.wasDamaged && !force)
        return refuse(&*block, "its checksum does not hold, and an import would make the damage look sound");
    result.offset = block->offset;
    return &*block;
}

} // namespace

TableChoice chooseTable(std::string_view text, std::string_view block) {
    const std::vector<const ExchangeFormat*> formats = exchangeFormats();
    if (!block.empty()) {
        const auto found = std::ranges::find_if(formats, [&](const ExchangeFormat* format) {
            return block == format->table.key || block == std::to_string(format->table.id);
        });
        if (found == formats.end())
            return {.error = "no block that is exchanged as text"};
        return {.format = *found, .error = {}};
    }
    const std::vector<ExchangeTableName> tables = exchangeTablesIn(text, formats);
    const auto wrong = [](std::string why) { return TableChoice{.error = std::move(why), .isTextWrong = true}; };
    if (tables.empty())
        return wrong("holds no \"ID:\" line of a block that is exchanged as text");
    if (tables.size() > 1)
        return wrong("holds " + std::to_string(tables.size()) + " tables, the block has to be named");
    if (!tables.front().format)
        return wrong("line " + std::to_string(tables.front().line) + ", \"" + tables.front().key +
                     "\": no block that is exchanged as text");
    return {.format = tables.front().format, .error = {}};
}

TableImport importTable(std::vector<char>& image, std::string_view text, const ExchangeFormat& format, bool force) {
    TableImport result;
    const ModuleImage module(image);
    const ImageBlock* const block = findBlock(module, format, force, result);
    if (!block)
        return result;
    result.reading = readExchangeStrictly(text, format, block->bytes);
    if (result.reading.findingCount == 0) {
        std::vector<char> table = result.reading.image;
        sealBlock(table, Crc32::None);
        std::ranges::copy(table, image.begin() + static_cast<std::ptrdiff_t>(result.offset));
    }
    return result;
}

} // namespace Travik
