#include <travik/datablock/Bytes.h>
#include <travik/registry/Capacity.h>
#include <travik/service/BlockAddress.h>
#include <travik/service/ElementWriter.h>
#include <travik/service/ImageChange.h>
#include <travik/service/Seal.h>
#include <travik/service/StoreValue.h>
#include <travik/service/ValueText.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <set>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace Travik {

namespace {

constexpr std::size_t checksumAt = offsetof(HwSDatablockHeader, checksum);
constexpr std::size_t crcAt = sizeof(HwSDatablockHeader);

std::optional<double> numberText(std::string_view text) {
    double number = 0;
    return std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc() ? std::optional(number)
                                                                                             : std::nullopt;
}

template <class Value>
std::string valueText(const Value& value) {
    if constexpr (std::is_arithmetic_v<Value>) {
        std::array<char, 40> text;
        return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
    } else {
        return value;
    }
}

/// Takes assignment after assignment.
class Assigner {
public:
    Assigner(const std::vector<char>& image, const AssignOptions& options)
        : options_(options), original_(image), bytes_(image), module_(original_), values_(module_) {}

    void take(const Assignment& assignment) {
        if (std::string why = store(assignment); !why.empty())
            report_.refusals.push_back({assignment.text, std::move(why)});
    }

    ArrayReport takeArray(std::vector<char>& image, const ArrayAssignment& array) {
        ArrayReport report;
        if (std::string why = storeArray(array, report); !why.empty()) {
            if (!report.refusal)
                report.refusal = {array.field, std::move(why)};
            return report;
        }
        sealAll();
        if (!report_.succeeded()) {
            report.refusal = std::move(report_.refusals.front());
            return report;
        }
        report.changes = static_cast<std::size_t>(std::ranges::count(stores_, true, &Stores::isChange));
        report.roundings = static_cast<std::size_t>(std::ranges::count(stores_, true, &Stores::isRounded));
        image = std::move(bytes_);
        return report;
    }

    AssignReport finish(std::vector<char>& image) {
        if (report_.succeeded())
            sealAll();
        if (report_.succeeded()) {
            describeChanges();
            image = std::move(bytes_);
        } else {
            report_.resealed.clear();
        }
        return std::move(report_);
    }

private:
    struct Touched {
        const ImageBlock* block;
        BlockValues before;
    };
    struct Stores {
        const Assignment* assignment; // null: an element of an array
        const Touched* touched;
        const Field* field;
        unsigned int element;
        bool isRounded;
        bool isChange;
    };

    AssignOptions options_;
    const std::vector<char> original_;
    std::vector<char> bytes_;
    ModuleImage module_; // of the original
    ImageValues values_;
    std::map<std::size_t, Touched> touched_; // by offset
    std::set<std::pair<const Field*, unsigned int>> elements_;
    std::vector<Stores> stores_;
    AssignReport report_;

    std::span<char> bytesOf(const ImageBlock& block) {
        return std::span(bytes_).subspan(block.offset, block.bytes.size());
    }

    std::string store(const Assignment& assignment) {
        std::string whyNoBlock;
        const ImageBlock* const block = findBlock(assignment, whyNoBlock);
        if (!block)
            return whyNoBlock;
        const Touched& touched = touch(*block);
        if (std::string why = whyUntouchable(touched); !why.empty())
            return why;
        const FieldValues* const values = touched.before.find(assignment.field);
        if (!values)
            return whyNoField(touched, assignment.field);
        const Field& field = *values->field;
        unsigned int element = 0;
        if (std::string why = findElement(assignment, field, element); !why.empty())
            return why;
        if (!bytes::inside(block->bytes.size(), field.elementOffset(element), field.width))
            return "outside the block, which has " + std::to_string(block->bytes.size()) + " bytes";
        if (!elements_.emplace(&field, element).second)
            return "is set twice";
        const ElementWriter writer(field, options_.areStored);
        const auto write = [&](std::span<char> bytes, bool& isRounded) {
            return writer.writeText(bytes, element, assignment.value, isRounded);
        };
        return storeWith(write, &assignment, touched, field, element);
    }

    /// `write` stores the value, and says what is wrong with it and whether it was rounded.
    template <class Write>
    std::string storeWith(const Write& write, const Assignment* assignment, const Touched& touched, const Field& field,
                          unsigned int element) {
        const std::span<char> block = bytesOf(*touched.block);
        const std::size_t at = field.elementOffset(element);
        bool isRounded = false;
        std::string why = write(block, isRounded);
        if (why.empty() || why.starts_with("out of range"))
            why = whyNoCount(block, touched, field, element, std::move(why));
        const bool isChange =
            !std::ranges::equal(block.subspan(at, field.width), touched.block->bytes.subspan(at, field.width));
        stores_.push_back({assignment, &touched, &field, element, isRounded, isChange});
        return why;
    }

    std::string storeArray(const ArrayAssignment& array, ArrayReport& report) {
        const auto block = std::ranges::find(module_.blocks(), array.offset, &ImageBlock::offset);
        if (block == module_.blocks().end())
            return "no block at offset " + std::to_string(array.offset);
        const Touched& touched = touch(*block);
        if (std::string why = whyUntouchable(touched); !why.empty()) {
            report.isDamaged = true;
            return why;
        }
        const FieldValues* const values = touched.before.find(array.field);
        if (!values)
            return whyNoField(touched, array.field);
        return std::visit([&](const auto& given) { return storeAll(array, given, touched, *values->field, report); },
                          array.values);
    }

    template <class Value>
    std::string storeAll(const ArrayAssignment& array, const std::vector<Value>& given, const Touched& touched,
                         const Field& field, ArrayReport& report) {
        if (given.size() != array.elements.size())
            return "takes a value for each element";
        const ElementWriter writer(field, options_.areStored);
        const ElementValues before(touched.block->bytes, field, options_.areStored);
        std::vector<bool> isSet(field.elements());
        stores_.reserve(given.size());
        for (std::size_t i = 0; i < given.size(); ++i) {
            const unsigned int element = array.elements[i];
            std::string why;
            if (element >= isSet.size() ||
                !bytes::inside(touched.block->bytes.size(), field.elementOffset(element), field.width))
                why = describeOutcome(StoreOutcome::Outside, field);
            else if (isSet[element])
                why = "is set twice";
            else if (isSet[element] = true; !before.has(element, given[i]))
                why = storeWith(
                    [&](auto bytes, bool& isRounded) { return writer.write(bytes, element, given[i], isRounded); },
                    nullptr, touched, field, element);
            if (!why.empty()) {
                report.refusal = {nameOf(touched, field, element) + '=' + valueText(given[i]), std::move(why)};
                return report.refusal->why;
            }
        }
        return {};
    }

    const ImageBlock* findBlock(const Assignment& assignment, std::string& why) const {
        std::vector<const ImageBlock*> called;
        for (const ImageBlock& block : module_.blocks()) {
            if (assignment.block == std::to_string(block.id) || assignment.block == toUtf8(keyOf(block)))
                called.push_back(&block);
        }
        if (called.empty()) {
            const std::vector<std::string> misses = BlockSelector({assignment.block}).misses(module_);
            why = misses.empty() ? "no block " + assignment.block : misses.front();
            return nullptr;
        }
        if (assignment.offset) {
            const auto at = std::ranges::find(called, *assignment.offset, &ImageBlock::offset);
            if (at != called.end())
                return *at;
            why = "not there, but " + placesOf(called);
            return nullptr;
        }
        if (called.size() == 1)
            return called.front();
        why = "more than one block: " + placesOf(called);
        return nullptr;
    }

    const Touched& touch(const ImageBlock& block) {
        const auto known = touched_.find(block.offset);
        return known != touched_.end()
                   ? known->second
                   : touched_.try_emplace(block.offset, Touched{&block, values_.read(block)}).first->second;
    }

    /// "KEY.FIELD[INDEX]..."
    static std::string nameOf(const Touched& touched, const Field& field, unsigned int element) {
        std::string indices;
        for (unsigned int d = field.rank; d-- > 0; element /= field.dimensions[d].extent)
            indices.insert(0, '[' + std::to_string(d == 0 ? element : element % field.dimensions[d].extent) + ']');
        return Travik::nameOf(*touched.block) + '.' + field.name + indices;
    }

    std::string whyUntouchable(const Touched& touched) {
        const ImageBlock& block = *touched.block;
        if (!isPlaced(block))
            return "it is doubtful where the block ends, see verify";
        if (isSealed(block) || options_.reseals)
            return {};
        report_.isDamaged = true;
        return "the sums of the block do not hold, and a change would make the damage look sound";
    }

    static std::string whyNoField(const Touched& touched, const std::string& name) {
        std::vector<std::string> names;
        for (const FieldValues& values : touched.before.fields)
            names.emplace_back(values.field->name);
        return names.empty() ? "the block has no fields" : noSuchName("field", name, names);
    }

    static std::string findElement(const Assignment& assignment, const Field& field, unsigned int& element) {
        const std::size_t given = assignment.indices.size();
        if (given != field.rank) {
            std::string shape;
            for (unsigned int d = 0; d < field.rank; ++d)
                shape += std::string("[") + field.dimensions[d].name + " of " +
                         std::to_string(field.dimensions[d].extent) + "]";
            return field.rank == 0 ? "has no dimensions, takes no index" : "takes an index for each of " + shape;
        }
        for (unsigned int d = 0; d < field.rank; ++d) {
            const Dimension& dimension = field.dimensions[d];
            if (assignment.indices[d] >= dimension.extent)
                return std::string(dimension.name) + " " + std::to_string(assignment.indices[d]) +
                       " is none, takes 0 to " + std::to_string(dimension.extent - 1);
            element = element * dimension.extent + assignment.indices[d];
        }
        return {};
    }

    /// A count takes less than its word; `why` is what the word has to say.
    static std::string whyNoCount(std::span<const char> block, const Touched& touched, const Field& field,
                                  unsigned int element, std::string why) {
        const auto capacity =
            field.role == Role::Count ? capacityOf(block, touched.before.layout.fields(), field) : std::nullopt;
        if (!capacity)
            return why;
        Field one = asStored(field);
        one.offset = static_cast<unsigned int>(field.elementOffset(element));
        one.rank = 0;
        const double count = fieldValue(block, one);
        return why.empty() && count >= 0 && count <= *capacity
                   ? ""
                   : "out of range, takes 0 to " + std::to_string(*capacity);
    }

    static bool isSameField(const Field& left, const Field& right) {
        const auto form = [](const Field& field) {
            return std::tuple(std::string_view(field.name), field.stored, field.width, field.offset, field.elements());
        };
        return form(left) == form(right);
    }

    /// A value may neither turn the block into another table nor be one that the sums decide.
    void sealAll() {
        const std::vector<char> unsealed = bytes_;
        std::set<const Touched*> reshaped;
        for (const auto& [offset, touched] : touched_) {
            const std::span<char> block = bytesOf(*touched.block);
            sealAgain(block, *touched.block);
            if (!keepsLayout(touched))
                reshaped.insert(&touched);
            if (!isSealed(*touched.block))
                report_.resealed.push_back(offset);
        }
        for (const Stores& stored : stores_) {
            const ImageBlock& block = *stored.touched->block;
            const std::size_t at = block.offset + stored.field->elementOffset(stored.element);
            const auto isSum = [&](std::size_t i) { return bytes_[at + i] != unsealed[at + i]; };
            std::string_view why;
            for (std::size_t i = 0; i < stored.field->width && why.empty(); ++i)
                why = isSum(i) ? "is part of the sums of the block, which decide it" : "";
            if (why.empty() && reshaped.contains(stored.touched))
                why = "would change the shape of the table, and with it what its bytes are";
            if (!why.empty())
                report_.refusals.push_back({stored.assignment ? stored.assignment->text
                                                              : nameOf(*stored.touched, *stored.field, stored.element),
                                            std::string(why)});
        }
    }

    bool keepsLayout(const Touched& touched) {
        ImageBlock after = *touched.block;
        if (!after.isSecondEdition)
            return true;
        after.bytes = bytesOf(*touched.block);
        return std::ranges::equal(BlockLayout(after).fields(), touched.before.layout.fields(), isSameField);
    }

    void describeChanges() {
        const ModuleImage changed(bytes_);
        const ImageValues values(changed);
        std::map<std::size_t, BlockValues> read;
        for (const Stores& stored : stores_) {
            const ImageBlock& before = *stored.touched->block;
            ImageBlock after = before;
            after.bytes = bytesOf(before);
            const auto known = read.find(before.offset);
            const BlockValues& now =
                known != read.end() ? known->second : read.try_emplace(before.offset, values.read(after)).first->second;
            std::string text = textOf(after, now, stored);
            // Of a float the shortest decimal is what was given.
            const bool isRounded = stored.isRounded && numberText(text) != numberText(stored.assignment->value);
            report_.changes.push_back({.name = stored.assignment->name,
                                       .offset = before.offset,
                                       .before = textOf(before, stored.touched->before, stored),
                                       .after = std::move(text),
                                       .isRounded = isRounded,
                                       .isChange = stored.isChange});
        }
    }

    std::string textOf(const ImageBlock& block, const BlockValues& values, const Stores& stored) const {
        const Field& field = *stored.field;
        if (options_.areStored && field.stored != Stored::Text)
            return storedText(block.bytes, field, stored.element);
        const std::string text = ElementText(block, *values.find(field.name)).exact(stored.element);
        if (field.stored == Stored::Text)
            return '"' + text + '"';
        return *field.unit ? text + ' ' + field.unit : text;
    }
};

} // namespace

Assignment parseAssignment(std::string_view text) {
    Assignment result;
    result.text = text;
    const auto refuse = [&](std::string why) {
        result.error = std::move(why);
        return result;
    };
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos)
        return refuse("no assignment, takes KEY.FIELD[INDEX]...=VALUE");
    result.name = text.substr(0, equals);
    result.value = text.substr(equals + 1);
    const std::string_view name = result.name;
    const std::size_t dot = name.find('.');
    if (dot == std::string_view::npos || dot == 0 || name.front() == '@')
        return refuse("takes KEY.FIELD before the \"=\"");
    BlockAddress block = parseBlockAddress(name.substr(0, dot));
    if (!block.error.empty())
        return refuse(std::move(block.error));
    result.block = std::move(block.key);
    result.offset = block.offset;
    std::string_view rest = name.substr(dot + 1);
    const std::size_t bracket = std::min(rest.find('['), rest.size());
    result.field = rest.substr(0, bracket);
    if (result.field.empty())
        return refuse("takes KEY.FIELD before the \"=\"");
    for (rest.remove_prefix(bracket); !rest.empty();) {
        const std::size_t end = rest.find(']');
        const auto index = rest.front() == '[' && end != std::string_view::npos
                               ? wholeText<unsigned int>(rest.substr(1, end - 1))
                               : std::nullopt;
        if (!index)
            return refuse("takes whole numbers from 0 on as indices, each in brackets");
        result.indices.push_back(*index);
        rest.remove_prefix(end + 1);
    }
    return result;
}

std::size_t AssignReport::changeCount() const {
    return static_cast<std::size_t>(std::ranges::count(changes, true, &ValueChange::isChange));
}

AssignReport assignValues(std::vector<char>& image, std::span<const Assignment> assignments,
                          const AssignOptions& options) {
    Assigner assigner(image, options);
    for (const Assignment& assignment : assignments)
        assigner.take(assignment);
    return assigner.finish(image);
}

ArrayReport assignArray(std::vector<char>& image, const ArrayAssignment& assignment, const AssignOptions& options) {
    return Assigner(image, options).takeArray(image, assignment);
}

std::string_view nameOf(Sum sum) { return sum == Sum::Checksum ? "checksum" : sum == Sum::Crc32 ? "CRC-32" : "filler"; }

ResealReport resealImage(std::vector<char>& image, const BlockSelector& selector) {
    ResealReport report;
    std::vector<char> made = image;
    const ModuleImage module(image);
    for (const ImageBlock& block : module.blocks()) {
        if (block.isEnd() || !selector.selects(block))
            continue;
        if (!isPlaced(block)) {
            report.left.push_back({block.offset, block.id});
            continue;
        }
        const bool isStray = block.findings.has(Finding::StrayChecksum);
        if (isSealed(block) && !isStray)
            continue;
        const std::span<char> bytes = std::span(made).subspan(block.offset, block.bytes.size());
        sealAgain(bytes, block);
        if (isStray)
            bytes::store(bytes, checksumAt, std::uint16_t{0});
        const auto tell = [&](Sum sum, std::uint32_t before, std::uint32_t after) {
            if (before != after)
                report.changes.push_back({nameOf(block), block.offset, sum, before, after});
        };
        const auto tellWord = [&](Sum sum, std::size_t at) {
            tell(sum, bytes::load<std::uint16_t>(block.bytes, at), bytes::load<std::uint16_t>(bytes, at));
        };
        if (block.isSecondEdition) {
            tell(Sum::Crc32, bytes::load<std::uint32_t>(block.bytes, crcAt), bytes::load<std::uint32_t>(bytes, crcAt));
            tellWord(Sum::Filler, bytes.size() - sizeof(std::uint16_t));
        }
        tellWord(Sum::Checksum, checksumAt);
    }
    image = std::move(made);
    return report;
}

} // namespace Travik
