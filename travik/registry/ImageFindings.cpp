#include <travik/datablock/Bytes.h>
#include <travik/registry/Capacity.h>
#include <travik/registry/ModuleImage.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

namespace Travik {

namespace {

using enum Finding;

constexpr FindingKind kindTable[] = {
    {NoBlocks, Grade::Damage, "no blocks"},
    {TruncatedHeader, Grade::Damage, "truncated header"},
    {ZeroSize, Grade::Damage, "size word 0"},
    {SizeBelowHeader, Grade::Damage, "size word below the header"},
    {SizePastEnd, Grade::Damage, "size word past the end of the data"},
    {OddSize, Grade::Damage, "odd size word"},
    {WrongSize, Grade::Damage, "wrong size word"},
    {WrongChecksum, Grade::Damage, "wrong checksum"},
    {WrongCrc, Grade::Damage, "wrong CRC-32"},
    {StrayChecksum, Grade::Note, "stray checksum word"},
    {UnknownIdentifier, Grade::Note, "unknown identifier"},
    {CountBeyondCapacity, Grade::Note, "count beyond the capacity"},
    {RepeatedIdentifier, Grade::Note, "repeated identifier"},
    {NoEndBlock, Grade::Note, "no end block"},
    {OnlyEndBlock, Grade::Note, "no block ahead of the end block"},
    {BlocksBehindEnd, Grade::Note, "blocks behind the end"},
    {BytesBehindEnd, Grade::Note, "bytes other than FF and 00 behind the end"},
};

constexpr bool areInOrder() {
    for (std::size_t i = 0; i < std::size(kindTable); ++i) {
        if (static_cast<std::size_t>(kindTable[i].finding) != i)
            return false;
    }
    return true;
}
static_assert(areInOrder());

consteval FindingSet allOf(Grade grade) {
    FindingSet set;
    for (const FindingKind& kind : kindTable) {
        if (kind.grade == grade)
            set.add(kind.finding);
    }
    return set;
}

/// The name, and in parentheses what was found.
std::string named(Finding finding, const std::string& detail) {
    return std::string(nameOf(finding)) + " (" + detail + ")";
}

bool isErased(char byte) { return byte == '\xFF' || byte == '\0'; }

/// "33296, not 528".
std::string sizesOf(const ImageBlock& block) {
    std::string text = std::to_string(block.sizeWord) + ", not ";
    if (!block.entry)
        return text + std::to_string(block.bytes.size());
    for (const unsigned short size : block.entry->sizes) {
        if (size != 0)
            text += (size == block.entry->sizes.front() ? "" : " or ") + std::to_string(size);
    }
    return text;
}

std::string textOf(const ImageBlock& block, Finding finding) {
    switch (finding) {
    case SizeBelowHeader:
    case SizePastEnd:
    case OddSize:
        return named(finding, std::to_string(block.sizeWord));
    case WrongSize:
        return named(finding, sizesOf(block));
    case StrayChecksum:
        return named(finding, "of a block that is not checked");
    default:
        return std::string(nameOf(finding));
    }
}

/// Blocks of one identifier: the offsets of the first two, and how many there are.
struct Repetition {
    std::size_t first;
    std::size_t second;
    std::size_t blocks;
};

/// In image order of the second blocks.
std::vector<Repetition> repetitionsIn(const std::vector<ImageBlock>& blocks) {
    // Identifiers with the numbers of their blocks, as one number each: sorted several times as fast as pairs are.
    constexpr unsigned int idShift = 48;
    constexpr std::uint64_t numberMask = (std::uint64_t{1} << idShift) - 1;
    std::vector<std::uint64_t> order(blocks.size());
    for (std::size_t i = 0; i < blocks.size(); ++i)
        order[i] = std::uint64_t{blocks[i].id} << idShift | i;
    std::ranges::sort(order);
    const auto offsetOf = [&](std::uint64_t entry) { return blocks[entry & numberMask].offset; };
    std::vector<Repetition> repetitions;
    for (auto from = order.begin(); from != order.end();) {
        const auto to =
            std::find_if(from, order.end(), [&](std::uint64_t entry) { return entry >> idShift != *from >> idShift; });
        if (to - from > 1)
            repetitions.push_back({offsetOf(from[0]), offsetOf(from[1]), static_cast<std::size_t>(to - from)});
        from = to;
    }
    std::ranges::sort(repetitions, {}, &Repetition::second);
    return repetitions;
}

} // namespace

std::span<const FindingKind> findingKinds() { return kindTable; }
Grade gradeOf(Finding finding) { return kindTable[static_cast<std::size_t>(finding)].grade; }
std::string_view nameOf(Finding finding) { return kindTable[static_cast<std::size_t>(finding)].name; }

void ModuleImage::visitDamage(const ImageBlock& block, const Visitor& visitor) const {
    if (!block.findings.hasAnyOf(allOf(Grade::Damage)))
        return;
    for (const FindingKind& kind : kindTable) {
        if (kind.grade != Grade::Damage || !block.findings.has(kind.finding))
            continue;
        std::string text = textOf(block, kind.finding);
        const bool isOfPlace = kind.finding < OddSize;
        if (isOfPlace && !block.endsKnown && !block.isEnd())
            text += ", what follows cannot be found";
        visitor({kind.finding, block.offset, block.id, std::move(text)});
    }
}

void ModuleImage::visitNotes(const ImageBlock& block, const Visitor& visitor) const {
    if (block.findings.hasAnyOf(allOf(Grade::Note))) {
        for (const FindingKind& kind : kindTable) {
            if (kind.grade == Grade::Note && block.findings.has(kind.finding))
                visitor({kind.finding, block.offset, block.id, textOf(block, kind.finding)});
        }
    }
    if (!block.entry || !block.endsKnown)
        return;
    const FieldList fields = block.entry->fields(*block.entry, block.id);
    for (const Field& field : fields) {
        const auto capacity = field.role == Role::Count ? capacityOf(block.bytes, fields, field) : std::nullopt;
        const unsigned int counts = capacity ? field.elements() : 0;
        for (unsigned int i = 0; i < counts; ++i) {
            double count = fieldValue(block.bytes, field, {&i, field.rank > 0 ? 1U : 0U});
            // The texts show every count as one without a sign.
            if (count < 0)
                count += std::ldexp(1.0, static_cast<int>(8 * field.width));
            if (count <= *capacity)
                continue;
            const std::string text = std::string(field.name) + ' ' + std::to_string(std::llround(count)) + " of " +
                                     std::to_string(*capacity);
            visitor({CountBeyondCapacity, block.offset, block.id, named(CountBeyondCapacity, text)});
            break;
        }
    }
}

void ModuleImage::visitBegin(const Visitor& visitor) const {
    if (!blocks_.empty())
        return;
    const bool isAllErased = std::ranges::all_of(bytes_, [](char byte) { return byte == '\xFF'; });
    const std::string why = bytes_.empty() ? "the data are empty" : isAllErased ? "erased" : "begins erased";
    visitor({NoBlocks, 0, std::nullopt, named(NoBlocks, why)});
}

void ModuleImage::visitEnd(const Visitor& visitor) const {
    const bool isClosed = !blocks_.empty() && blocks_.back().isEnd() && blocks_.back().endsKnown;
    if (isClosed && blocks_.size() == 1)
        visitor({OnlyEndBlock, 0, std::nullopt, std::string(nameOf(OnlyEndBlock))});
    if (!isClosed && !blocks_.empty()) {
        if (blocks_.back().endsKnown)
            visitor({NoEndBlock, end_, std::nullopt, std::string(nameOf(NoEndBlock))});
        return;
    }
    const std::span<const char> behind = bytes_.subspan(end_);
    const auto first = std::ranges::find_if_not(behind, isErased);
    if (first == behind.end())
        return;
    // A block begins at a whole word.
    const std::size_t start = static_cast<std::size_t>(first - behind.begin()) / 2 * 2;
    const ModuleImage further(behind.subspan(start));
    const auto sound = std::ranges::find_if_not(further.blocks(), [](const ImageBlock& block) {
        return block.findings.empty() && (block.entry || block.isSecondEdition);
    });
    if (const auto count = sound - further.blocks().begin(); count > 0) {
        visitor({BlocksBehindEnd, end_ + start, std::nullopt, named(BlocksBehindEnd, std::to_string(count))});
        return;
    }
    const auto other = std::ranges::count_if(behind, [](char byte) { return !isErased(byte); });
    visitor({BytesBehindEnd, end_ + start, std::nullopt,
             named(BytesBehindEnd, std::to_string(other) + " of " + std::to_string(behind.size()))});
}

void ModuleImage::visitFindings(const Visitor& visitor) const {
    if (!visitor)
        return;
    const std::vector<Repetition> repetitions = repetitionsIn(blocks_);
    auto next = repetitions.begin();

    visitBegin(visitor);
    for (const ImageBlock& block : blocks_) {
        visitDamage(block, visitor);
        visitNotes(block, visitor);
        if (next == repetitions.end() || next->second != block.offset)
            continue;
        const std::string text =
            std::to_string(next->blocks) + " blocks, the first at offset " + std::to_string(next->first);
        visitor({RepeatedIdentifier, block.offset, block.id, named(RepeatedIdentifier, text)});
        ++next;
    }
    visitEnd(visitor);
}

std::vector<ImageFinding> ModuleImage::findings() const {
    std::vector<ImageFinding> all;
    visitFindings([&](const ImageFinding& finding) { all.push_back(finding); });
    return all;
}

std::vector<ImageFinding> ModuleImage::findings(const ImageBlock& block) const {
    std::vector<ImageFinding> all;
    visitDamage(block, [&](const ImageFinding& finding) { all.push_back(finding); });
    visitNotes(block, [&](const ImageFinding& finding) { all.push_back(finding); });
    return all;
}

std::vector<ImageFinding> ModuleImage::imageFindings() const {
    std::vector<ImageFinding> all;
    visitBegin([&](const ImageFinding& finding) { all.push_back(finding); });
    visitEnd([&](const ImageFinding& finding) { all.push_back(finding); });
    return all;
}

void ModuleImage::visitProblems(const Visitor& visitor) const {
    if (!visitor)
        return;
    visitBegin(visitor);
    for (const ImageBlock& block : blocks_)
        visitDamage(block, visitor);
}

std::vector<ImageFinding> ModuleImage::problems() const {
    std::vector<ImageFinding> damage;
    visitProblems([&](const ImageFinding& finding) { damage.push_back(finding); });
    return damage;
}

std::vector<ImageFinding> ModuleImage::problems(const ImageBlock& block) const {
    std::vector<ImageFinding> damage;
    visitDamage(block, [&](const ImageFinding& finding) { damage.push_back(finding); });
    return damage;
}

} // namespace Travik
