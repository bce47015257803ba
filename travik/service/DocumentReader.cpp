#include <travik/datablock/Checksum.h>
#include <travik/service/Document.h>
#include <travik/service/DocumentForm.h>
#include <travik/service/JsonTree.h>
#include <travik/service/Seal.h>
#include <travik/service/StoreValue.h>
#include <travik/tables/SecondEdition.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <optional>

namespace Travik {

namespace {

constexpr std::size_t largestBlock = 0xFFFF;
constexpr std::size_t headerSize = sizeof(HwSDatablockHeader);

/// Where in the document something is: a chain on the stack, made a JSON pointer when it is needed.
class Place {
public:
    Place() = default;
    Place(const Place& parent, std::string_view name) : parent_(&parent), name_(name) {}
    Place(const Place& parent, std::size_t index) : parent_(&parent), index_(index) {}

    std::string pointer() const {
        if (!parent_)
            return {};
        std::string text = parent_->pointer() + '/';
        if (name_.data() == nullptr)
            return text + std::to_string(index_);
        for (const char character : name_) {
            if (character == '~')
                text += "~0";
            else if (character == '/')
                text += "~1";
            else
                text += static_cast<unsigned char>(character) < 0x20 ? '?' : character;
        }
        return text;
    }

private:
    const Place* parent_ = nullptr;
    std::string_view name_;
    std::size_t index_ = 0;
};

/// Ends the reading.
struct Refusal {
    std::string text;
};

[[noreturn]] void refuse(const Place& place, const std::string& text) {
    const std::string pointer = place.pointer();
    throw Refusal{pointer.empty() ? text : pointer + ": " + text};
}

/// The members of an object that may have these and no others.
template <std::size_t N>
class Members {
public:
    Members(const Place& place, const JsonValue& object, const std::array<std::string_view, N>& names) : names_(names) {
        if (!object.isObject())
            refuse(place, "takes an object");
        object.forEachMember([&](std::string_view name, const JsonValue& value) {
            const auto known = std::ranges::find(names, name);
            if (known == names.end())
                refuse(Place(place, name), "unknown, takes " + list());
            values_[static_cast<std::size_t>(known - names.begin())] = value;
        });
    }

    /// Nothing for a member that is not there, and for one that is null.
    std::optional<JsonValue> find(std::string_view name) const {
        const auto& value = values_[static_cast<std::size_t>(std::ranges::find(names_, name) - names_.begin())];
        return value && value->isNull() ? std::nullopt : value;
    }

private:
    const std::array<std::string_view, N>& names_;
    std::array<std::optional<JsonValue>, N> values_;

    std::string list() const {
        std::string text;
        for (const std::string_view name : names_)
            text += (text.empty() ? "" : ", ") + std::string(name);
        return text;
    }
};

constexpr std::array<std::string_view, 6> imageMembers{"image", "size", "blocks", "problems", "partial", "rest"};
constexpr std::array<std::string_view, 15> blockMembers{"offset",    "id",       "key",         "class",  "size",
                                                        "alignment", "checksum", "checksum_ok", "crc_ok", "fields",
                                                        "units",     "axes",     "digest",      "length", "raw"};
constexpr std::array<std::string_view, 3> rawMembers{"offset", "hex", "length"};
constexpr std::array<std::string_view, 2> restMembers{"hex", "length"};

std::size_t wholeNumber(const Place& place, const JsonValue& value, std::size_t lowest, std::size_t highest) {
    if (value.kind() != JsonValue::Kind::Natural || value.natural() < lowest || value.natural() > highest)
        refuse(place, "takes a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
    return value.natural();
}

std::string_view text(const Place& place, const JsonValue& value) {
    if (!value.isText())
        refuse(place, "takes a text");
    return value.text();
}

/// A run of bytes: the hexadecimal ones, repeated to the length where there is one.
template <std::size_t N>
std::vector<char> runOf(const Place& place, const Members<N>& members, std::size_t room) {
    const auto hex = members.find("hex");
    if (!hex)
        refuse(place, "takes `hex`");
    const std::string_view digits = text(Place(place, "hex"), *hex);
    std::vector<char> bytes(digits.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char* const from = digits.data() + 2 * i;
        unsigned char byte = 0;
        if (std::from_chars(from, from + 2, byte, 16).ptr != from + 2)
            refuse(Place(place, "hex"), "takes bytes of two hexadecimal digits each");
        bytes[i] = static_cast<char>(byte);
    }
    if (bytes.empty() || digits.size() % 2 != 0)
        refuse(Place(place, "hex"), "takes bytes of two hexadecimal digits each");
    if (bytes.size() > room)
        refuse(Place(place, "hex"), "more bytes than there is room for, which is " + std::to_string(room));
    if (const auto length = members.find("length")) {
        const std::size_t pattern = bytes.size();
        bytes.resize(wholeNumber(Place(place, "length"), *length, 1, room));
        for (std::size_t i = pattern; i < bytes.size(); ++i)
            bytes[i] = bytes[i - pattern];
    }
    return bytes;
}

/// The identifiers of a key name.
const std::vector<int>& idsOf(std::string_view key) {
    static const std::map<std::string, std::vector<int>, std::less<>> ids = [] {
        std::map<std::string, std::vector<int>, std::less<>> all;
        for (const CatalogueEntry& entry : catalogue()) {
            for (int id = entry.first; id <= entry.last; ++id)
                all[toUtf8(entry.key(entry, id))].push_back(id);
        }
        all.erase("");
        return all;
    }();
    static const std::vector<int> none;
    const auto found = ids.find(key);
    return found == ids.end() ? none : found->second;
}

// Of "USER_40100", the key that a second-edition table prints.
std::optional<unsigned short> idOfUserKey(std::string_view key) {
    constexpr std::string_view prefix = "USER_";
    unsigned short id = 0;
    if (!key.starts_with(prefix))
        return std::nullopt;
    const std::from_chars_result end = std::from_chars(key.data() + prefix.size(), key.data() + key.size(), id);
    return end.ec == std::errc() && end.ptr == key.data() + key.size() && !findEntry(id) ? std::optional(id)
                                                                                         : std::nullopt;
}

/// Stores the values that a document has for a field.
class FieldReader {
public:
    FieldReader(std::span<char> block, const Field& field) : block_(block), field_(field), element_(elementOf(field)) {}

    void read(const Place& place, const JsonValue& value) { read(place, value, 0, field_.offset); }

private:
    std::span<char> block_;
    const Field& field_;
    Field element_;

    void read(const Place& place, const JsonValue& value, unsigned int dimension, std::size_t offset) {
        if (dimension == field_.rank)
            return element(place, value, offset);
        const Dimension& along = field_.dimensions[dimension];
        const auto expected = [&] {
            return "takes an array of up to " + std::to_string(along.extent) +
                   (dimension + 1U < field_.rank ? " arrays"
                    : along.extent == 1          ? " entry"
                                                 : " entries");
        };
        if (!value.isArray())
            refuse(place, expected());
        value.forEachEntry([&](std::size_t i, const JsonValue& entry) {
            if (i >= along.extent)
                refuse(Place(place, i), "one too many, " + expected());
            read(Place(place, i), entry, dimension + 1, offset + i * along.stride);
        });
    }

    void element(const Place& place, const JsonValue& value, std::size_t offset) {
        element_.offset = static_cast<unsigned int>(offset);
        const StoreOutcome outcome = store(value, offset);
        if (outcome == StoreOutcome::Outside && isNothing(value))
            return;
        if (outcome == StoreOutcome::Outside)
            refuse(place, "outside the block, which has " + std::to_string(block_.size()) + " bytes");
        if (!isStored(outcome))
            refuse(place, describeOutcome(outcome, field_));
    }

    // What a place that the block does not have may be said to hold.
    static bool isNothing(const JsonValue& value) {
        return value.isNull() || (value.isNumber() && value.number() == 0) || (value.isText() && value.text().empty());
    }

    StoreOutcome store(const JsonValue& value, std::size_t offset) {
        if (!bytes::inside(block_.size(), offset, field_.width))
            return StoreOutcome::Outside;
        if (value.isText())
            return storeText(block_, element_, 0, value.text());
        if (value.isNull() && takesNull(field_)) {
            std::ranges::fill(block_.subspan(offset, field_.width), '\xFF');
            return StoreOutcome::Exact;
        }
        if (!value.isNumber())
            return StoreOutcome::WrongKind;
        if (isWideInteger(field_) && value.kind() != JsonValue::Kind::Real)
            return storeWide(value, offset);
        return storeValue(block_, element_, 0, value.number());
    }

    StoreOutcome storeWide(const JsonValue& value, std::size_t offset) {
        const bool isNatural = value.kind() == JsonValue::Kind::Natural;
        const bool isSigned = field_.stored == Stored::I64;
        if (isNatural ? isSigned && value.natural() >> 63U != 0 : !isSigned)
            return StoreOutcome::OutOfRange;
        bytes::store(block_, offset, isNatural ? value.natural() : static_cast<std::uint64_t>(value.integer()));
        return StoreOutcome::Exact;
    }
};

/// Builds one block after the other.
class BlockReader {
public:
    explicit BlockReader(const BuildOptions& options) : options_(options) {}

    void read(const Place& place, const JsonValue& value, std::vector<char>& image) {
        const Members members(place, value, blockMembers);
        Block block;
        identify(place, members, block);
        const auto fields = members.find("fields");
        const std::optional<BlockLayout> own = layOut(place, members, fields, block);
        const ClassLayouts::Layout* const shared = findEntry(block.id) ? &layouts_.of(block.id) : nullptr;
        const std::span<const Field> layout = own      ? own->fields()
                                              : shared ? shared->fields.fields()
                                                       : std::span<const Field>();
        const std::size_t start = image.size();
        if (block.length > options_.largestSize - start)
            refuse(place, "the image takes more than " + std::to_string(options_.largestSize) + " bytes");
        image.resize(start + block.length);
        const std::span<char> bytes = std::span(image).subspan(start);
        storeHeader(place, members, block, bytes);
        if (const auto units = members.find("units"))
            checkUnits(Place(place, "units"), *units, layout);
        if (fields)
            readFields(Place(place, "fields"), *fields, layout, bytes);
        if (const auto raw = members.find("raw"))
            applyRaw(Place(place, "raw"), *raw, block, layout, bytes);
        const auto digest = members.find("digest");
        const bool isUnchanged =
            digest && wholeNumber(Place(place, "digest"), *digest, 0, 0xFFFFFFFF) == crc32(bytes.data(), bytes.size());
        const auto crc = members.find("crc_ok");
        if (!options_.keepChecksums && !isUnchanged)
            sealBlock(bytes, block.isSecondEdition                         ? Crc32::SecondEdition
                             : crc && crc->kind() == JsonValue::Kind::True ? Crc32::Carried
                                                                           : Crc32::None);
    }

private:
    using BlockMembers = Members<blockMembers.size()>;
    struct Block {
        unsigned short id = 0;
        bool isSecondEdition = false;
        unsigned short size = 0;
        unsigned short alignment = 0;
        std::size_t length = 0;
    };

    ClassLayouts layouts_;
    const BuildOptions& options_;
    std::vector<char> tableHead_;

    static void identify(const Place& place, const BlockMembers& members, Block& block) {
        const auto key = members.find("key");
        const Place keyPlace(place, "key");
        const std::string_view name = key ? text(keyPlace, *key) : std::string_view();
        const std::vector<int>& ids = idsOf(name);
        const auto userId = idOfUserKey(name);
        if (const auto id = members.find("id")) {
            block.id = static_cast<unsigned short>(wholeNumber(Place(place, "id"), *id, 0, 0xFFFF));
            if (key && userId != block.id && !std::ranges::count(ids, block.id))
                refuse(keyPlace, "not the key of block " + std::to_string(block.id));
        } else if (!key) {
            refuse(place, "takes `id` or `key`");
        } else if (ids.empty() && !userId) {
            refuse(keyPlace, "no block has this key");
        } else if (ids.size() > 1) {
            std::string all;
            for (const int one : ids)
                all += (all.empty() ? "" : ", ") + std::to_string(one);
            refuse(keyPlace, "several blocks have this key, takes `id`, one of " + all);
        } else {
            block.id = ids.empty() ? *userId : static_cast<unsigned short>(ids.front());
        }
        const CatalogueEntry* const entry = findEntry(block.id);
        const auto className = members.find("class");
        const Place classPlace(place, "class");
        block.isSecondEdition = !entry && (userId || (className && text(classPlace, *className) == secondEditionClass));
        if (!className)
            return;
        const std::string_view expected = entry ? entry->className : secondEditionClass;
        if (text(classPlace, *className) != expected)
            refuse(classPlace,
                   "block " + std::to_string(block.id) + " takes " + std::string(expected) + (entry ? "" : " or null"));
    }

    /// Size and length; the layout of a table that describes itself, from what the document says of it.
    std::optional<BlockLayout> layOut(const Place& place, const BlockMembers& members,
                                      const std::optional<JsonValue>& fields, Block& block) {
        const auto word = [&](std::string_view name) -> std::optional<unsigned short> {
            const auto value = members.find(name);
            if (!value)
                return std::nullopt;
            return static_cast<unsigned short>(wholeNumber(Place(place, name), *value, 0, 0xFFFF));
        };
        block.alignment = word("alignment").value_or(0);
        std::optional<unsigned short> size = word("size");
        std::size_t tableEnd = 0;
        if (block.isSecondEdition) {
            readTableHead(place, fields, block);
            const SecondEditionLayout table(tableHead_);
            tableEnd = table.end;
            const std::size_t needed = tableEnd + tableEnd % 2 + (table.packed ? 2 : 0);
            if (!size && needed <= largestBlock)
                size = static_cast<unsigned short>(needed);
            if (tableEnd > largestBlock)
                refuse(Place(place, "fields"), "the table takes " + std::to_string(tableEnd) + " bytes, a block has " +
                                                   std::to_string(largestBlock) + " at most");
        } else if (!size && findEntry(block.id)) {
            size = static_cast<unsigned short>(layouts_.of(block.id).size);
        }
        if (!size)
            refuse(place, "block " + std::to_string(block.id) + " has no class, takes `size`");
        block.size = *size;
        const auto length = members.find("length");
        // A block whose size word is wrong may be followed by one that is found all the same.
        block.length = length ? wholeNumber(Place(place, "length"), *length, 0, largestBlock) : block.size;
        if (!block.isSecondEdition)
            return std::nullopt;
        if (tableEnd > block.length)
            refuse(Place(place, length ? "length" : "size"), "the table takes " + std::to_string(tableEnd) + " bytes");
        ImageBlock table;
        table.id = block.id;
        table.isSecondEdition = true;
        table.bytes = std::span(tableHead_).first(block.length);
        return BlockLayout(table);
    }

    /// What the layout of a second-edition table follows from, into bytes as long as the longest block.
    void readTableHead(const Place& place, const std::optional<JsonValue>& fields, const Block& block) {
        tableHead_.assign(largestBlock, '\0');
        bytes::store(std::span(tableHead_), offsetof(HwSDatablockHeader, id), block.id);
        bytes::store(std::span(tableHead_), offsetof(HwSDatablockHeader, alignment), block.alignment);
        if (!fields || !fields->isObject())
            return;
        ImageBlock table;
        table.id = block.id;
        table.isSecondEdition = true;
        table.bytes = tableHead_;
        // First the counts, then the column types, whose field has as many entries as there are columns.
        for (const auto& names : {std::vector<std::string_view>{"rows", "columns", "row_id_type", "column_id_type"},
                                  std::vector<std::string_view>{"column_types"}}) {
            const BlockLayout layout(table);
            fields->forEachMember([&](std::string_view name, const JsonValue& value) {
                const Field* const field = std::ranges::count(names, name) ? layout.find(name) : nullptr;
                if (field)
                    FieldReader(tableHead_, *field).read(Place(Place(place, "fields"), name), value);
            });
        }
    }

    static void storeHeader(const Place& place, const BlockMembers& members, const Block& block,
                            std::span<char> bytes) {
        const auto checksum = members.find("checksum");
        const std::size_t sum = checksum ? wholeNumber(Place(place, "checksum"), *checksum, 0, 0xFFFF) : 0;
        bytes::store(bytes, offsetof(HwSDatablockHeader, id), block.id);
        if (block.id != endBlockId)
            bytes::store(bytes, offsetof(HwSDatablockHeader, blockSize), block.size);
        if (block.id != endBlockId && bytes.size() >= headerSize) {
            bytes::store(bytes, offsetof(HwSDatablockHeader, checksum), static_cast<unsigned short>(sum));
            bytes::store(bytes, offsetof(HwSDatablockHeader, alignment), block.alignment);
        } else if (sum != 0 || block.alignment != 0) {
            refuse(Place(place, sum != 0 ? "checksum" : "alignment"), "takes null, the block has no such word");
        }
    }

    static void checkUnits(const Place& place, const JsonValue& units, std::span<const Field> layout) {
        if (!units.isObject())
            refuse(place, "takes an object");
        units.forEachMember([&, next = std::size_t{0}](std::string_view name, const JsonValue& unit) mutable {
            const Field& field = named(Place(place, name), layout, name, next);
            if (!unit.isText() || unit.text() != field.unit)
                refuse(Place(place, name), *field.unit != '\0' ? std::string("the field is in ") + field.unit
                                                               : std::string("the field has no unit"));
        });
    }

    /// `next` is where the search begins: documents have fields in the order of the layout.
    static const Field& named(const Place& place, std::span<const Field> layout, std::string_view name,
                              std::size_t& next) {
        for (std::size_t i = 0; i < layout.size(); ++i) {
            const Field& field = layout[(next + i) % layout.size()];
            if (field.name == name) {
                next += i + 1;
                return field;
            }
        }
        std::string all;
        for (const Field& field : layout) {
            if (all.size() < 300)
                all += (all.empty() ? "" : ", ") + std::string(field.name);
            else if (!all.ends_with("..."))
                all += ", ...";
        }
        refuse(place, all.empty() ? "the block has no fields" : "no field of the block, takes " + all);
    }

    static void readFields(const Place& place, const JsonValue& fields, std::span<const Field> layout,
                           std::span<char> bytes) {
        if (!fields.isObject())
            refuse(place, "takes an object");
        fields.forEachMember([&, next = std::size_t{0}](std::string_view name, const JsonValue& value) mutable {
            const Place here(place, name);
            FieldReader(bytes, named(here, layout, name, next)).read(here, value);
        });
    }

    void applyRaw(const Place& place, const JsonValue& runs, const Block& block, std::span<const Field> layout,
                  std::span<char> bytes) {
        std::vector<char> raw(bytes.size());
        std::vector<bool> isThere(bytes.size());
        if (!runs.isArray())
            refuse(place, "takes an array");
        runs.forEachEntry([&](std::size_t i, const JsonValue& value) {
            const Place here(place, i);
            const Members members(here, value, rawMembers);
            const auto at = members.find("offset");
            if (!at)
                refuse(here, "takes `offset`");
            const std::size_t offset = wholeNumber(Place(here, "offset"), *at, 0, bytes.size());
            const std::vector<char> run = runOf(here, members, bytes.size() - offset);
            std::ranges::copy(run, raw.begin() + static_cast<std::ptrdiff_t>(offset));
            std::fill_n(isThere.begin() + static_cast<std::ptrdiff_t>(offset), run.size(), true);
        });
        const auto covered = coveredBits(layout, block.id, bytes.size());
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(static_cast<unsigned char>(bytes[i]) |
                                         (static_cast<unsigned char>(raw[i]) & ~unsigned{covered[i]}));
        for (const Field& field : layout) {
            if (!alwaysComesBack(field))
                applyToField(field, raw, isThere, bytes);
        }
    }

    /// An element is what its bytes were as long as the document says of it what it said then.
    static void applyToField(const Field& field, std::span<const char> raw, const std::vector<bool>& isThere,
                             std::span<char> bytes) {
        const Field element = elementOf(field);
        std::vector<char> back(field.width);
        forEachElementInside(field, bytes.size(), [&](std::size_t offset) {
            for (std::size_t i = 0; i < field.width; ++i) {
                if (!isThere[offset + i])
                    return;
            }
            const std::span<const char> was = raw.subspan(offset, field.width);
            const std::span<char> now = bytes.subspan(offset, field.width);
            std::ranges::fill(back, '\0');
            bringBack(was, element, back);
            if (std::ranges::equal(back, now))
                std::ranges::copy(was, now.begin());
        });
    }
};

/// The image that is meant, and where it is.
std::pair<JsonValue, std::size_t> chosenImage(const JsonValue& images, const std::string& wanted) {
    std::optional<std::pair<JsonValue, std::size_t>> chosen;
    std::string names;
    bool isUnique = true;
    images.forEachEntry([&](std::size_t i, const JsonValue& image) {
        std::string name = "?";
        if (image.isObject()) {
            image.forEachMember([&](std::string_view member, const JsonValue& value) {
                if (member == "image" && value.isText())
                    name = value.text();
            });
        }
        if (names.size() < 300)
            names += (names.empty() ? "" : ", ") + name;
        if (!wanted.empty() && name != wanted)
            return;
        isUnique = isUnique && !chosen;
        chosen.emplace(image, i);
    });
    if (names.empty())
        refuse(Place(), "the document holds no image");
    if (!chosen)
        refuse(Place(), "the document holds no image " + wanted + ", it holds " + names);
    if (!isUnique && wanted.empty())
        refuse(Place(), "the document holds several images, choose one: " + names);
    if (!isUnique)
        refuse(Place(), "the document holds several images " + wanted);
    return *chosen;
}

std::vector<char> readImage(const Place& place, const JsonValue& value, const BuildOptions& options) {
    const Members members(place, value, imageMembers);
    if (const auto partial = members.find("partial"); partial && partial->kind() != JsonValue::Kind::False)
        refuse(Place(place, "partial"), "the document holds a part of the image only");
    const auto blocks = members.find("blocks");
    const Place blocksPlace(place, "blocks");
    if (!blocks || !blocks->isArray())
        refuse(blocksPlace, "takes an array");
    std::vector<char> image;
    BlockReader reader(options);
    blocks->forEachEntry(
        [&](std::size_t i, const JsonValue& block) { reader.read(Place(blocksPlace, i), block, image); });
    if (const auto rest = members.find("rest")) {
        const Place restPlace(place, "rest");
        if (!rest->isArray())
            refuse(restPlace, "takes an array");
        rest->forEachEntry([&](std::size_t i, const JsonValue& run) {
            const Place here(restPlace, i);
            const std::vector<char> bytes =
                runOf(here, Members(here, run, restMembers), options.largestSize - image.size());
            image.insert(image.end(), bytes.begin(), bytes.end());
        });
    }
    return image;
}

} // namespace

BuiltImage buildImage(std::string_view document, const BuildOptions& options) {
    JsonTree tree;
    if (std::string error = tree.parse(document); !error.empty())
        return {{}, std::move(error)};
    try {
        const JsonValue root = tree.root();
        const Place top;
        if (root.isObject())
            return {readImage(top, root, options), {}};
        if (!root.isArray())
            refuse(top, "takes an array of images");
        const auto [image, index] = chosenImage(root, options.image);
        return {readImage(Place(top, index), image, options), {}};
    } catch (const Refusal& refusal) {
        return {{}, refusal.text};
    }
}

} // namespace Travik
