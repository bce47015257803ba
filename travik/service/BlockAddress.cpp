#include <travik/service/BlockAddress.h>
#include <travik/service/Values.h>

#include <algorithm>
#include <charconv>

namespace Travik {

namespace {

std::optional<std::size_t> offsetText(std::string_view text) {
    const bool isHex = text.starts_with("0x") || text.starts_with("0X");
    if (isHex)
        text.remove_prefix(2);
    std::size_t offset = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), offset, isHex ? 16 : 10);
    return end.ec == std::errc() && end.ptr == text.data() + text.size() ? std::optional(offset) : std::nullopt;
}

} // namespace

BlockAddress parseBlockAddress(std::string_view text) {
    BlockAddress name;
    name.text = text;
    const std::size_t at = text.find('@');
    name.key = text.substr(0, at);
    if (name.key.empty())
        name.error = "takes KEY or KEY@OFFSET";
    if (at == std::string_view::npos)
        return name;
    name.offset = offsetText(text.substr(at + 1));
    if (!name.offset && name.error.empty())
        name.error = "takes a number of bytes behind the \"@\"";
    return name;
}

std::string nameOf(const ImageBlock& block) {
    std::string key = toUtf8(keyOf(block));
    return key.empty() ? std::to_string(block.id) : key;
}

std::string placesOf(std::span<const ImageBlock* const> blocks) {
    constexpr std::size_t most = 8;
    std::string text;
    for (const ImageBlock* const block : blocks.first(std::min(most, blocks.size())))
        text += (text.empty() ? "block " : ", block ") + std::to_string(block->id) + " at offset " +
                std::to_string(block->offset);
    return blocks.size() > most ? text + " and " + std::to_string(blocks.size() - most) + " more" : text;
}

bool isPlaced(const ImageBlock& block) {
    const bool isVouchedFor = block.checksumHolds && block.checksumChecked;
    const bool isDoubtful = block.findings.has(Finding::WrongSize) || block.findings.has(Finding::OddSize);
    return block.isEnd() ? block.endsKnown
                         : block.endsKnown && block.sizeWord == block.bytes.size() && (isVouchedFor || !isDoubtful);
}

bool isSealed(const ImageBlock& block) { return block.checksumHolds && !block.findings.has(Finding::WrongCrc); }

} // namespace Travik
