#include <travik/fleet/Relations.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace Travik {

namespace {

using enum ColumnKind;

constexpr FleetColumn imageColumns[] = {
    {"path", Text, false, "where the file lies: absolute, every symbolic link followed"},
    {"content_hash", Text, false, "BLAKE2b-256 of the bytes, as `b2sum -l 256` prints it"},
    {"size", Whole, false, "bytes"},
    {"modified_ns", Whole, false, "when the file was last written, in ns since 1970"},
    {"inode", Whole, false, "the file's number in its file system"},
    {"read_at", Text, false, "when it was read, ISO 8601 in UTC"},
    {"name", Text, true, "of the module, from its ident block"},
    {"part_number", Text, true, "\"1141.3000.02\", the last group being the variant"},
    {"variant", Whole, true, ""},
    {"serial_number", Whole, true, ""},
    {"production_date", Text, true, "ISO 8601"},
    {"hardware_code", Whole, true, ""},
    {"product_index", Text, true, "\"02.04\""},
    {"identity_ok", Whole, true, "1 where the ident block's checksum holds, else 0"},
    {"instrument_model", Text, true, "of a main board"},
    {"instrument_serial_number", Whole, true, "of a main board"},
    {"mac_address", Text, true, "of a main board"},
    {"operating_hours", Whole, true, ""},
    {"services", Whole, false, "how many services are recorded"},
    {"last_service", Text, true, "its date, ISO 8601"},
    {"last_service_hours", Whole, true, "operating hours at the last service"},
    {"repairs", Whole, true, "the repair number of the last service"},
    {"wear_names", Texts, false, "the wear counters, one entry a number: \"sattc_high_power[1]\""},
    {"wear_values", Numbers, false, "what they counted, in the same order; null where never set"},
    {"wear_differs", Whole, false, "how many counters differ from their backup"},
    {"blocks", Whole, false, "the end block apart"},
    {"unchecked_blocks", Whole, false, "of them those whose checksum passes unread"},
    {"problems", Whole, false, "how much damage was found; 0: it verifies"},
    {"notes", Whole, false, "what is no damage but worth a look"},
    {"problem_texts", Texts, false, "the damage, a line each: \"offset 44, block 2: wrong checksum\""},
};

constexpr FleetColumn blockColumns[] = {
    {"block", Whole, false, "number of the block in its image, from 0"},
    {"offset", Whole, false, "bytes from the start of the image"},
    {"identifier", Whole, false, ""},
    {"key", Text, false, "its key name; empty for an unknown identifier"},
    {"class", Text, false, "of the library; empty for an unknown identifier"},
    {"size", Whole, false, "the size word"},
    {"checksum", Text, false, "ok, wrong, not checked, cut off, or - for the end block"},
    {"crc", Text, false, "ok, wrong, or - where there is no CRC-32"},
    {"problems", Whole, false, "how much damage was found in it"},
};

constexpr FleetColumn scalarColumns[] = {
    {"block", Whole, false, "as in `blocks`"},
    {"key", Text, false, "the block's"},
    {"field", Text, false, "its name; of an entry of an array of texts with its index: \"descriptor[0]\""},
    {"number", Number, true, "in the unit; null for a text and for what is not finite"},
    {"text", Text, true, "of a text or a date (ISO 8601); null for a number"},
    {"unit", Text, false, "empty where there is none"},
};

constexpr FleetColumn curveColumns[] = {
    {"block", Whole, false, "as in `blocks`"},
    {"key", Text, false, "the block's"},
    {"field", Text, false, "its name"},
    {"row", Whole, false, "number of the curve among those of its field, from 0"},
    {"row_label", Text, false, "what labels the row: \"5 dB\", else its number; empty where there is one row"},
    {"unit", Text, false, "of the values; empty where there is none"},
    {"step", Number, false, "what one step of the stored number makes in the unit; 0: stored as a floating number"},
    {"points", Whole, false, "entries in use: the length of point_values"},
    {"axis", Text, false, "key of the block, or name of the field, that labels the points; empty: numbered"},
    {"axis_unit", Text, false, ""},
    {"axis_values", Numbers, false, "what labels the points; empty where they are numbered or have texts"},
    {"point_values", Numbers, false, "the values in use"},
};

constexpr FleetRelation relations[] = {
    {Relation::Images, "images", imageColumns, ""},
    {Relation::Blocks, "blocks", blockColumns, "block"},
    {Relation::Scalars, "scalars", scalarColumns, "block, field"},
    {Relation::Curves, "curves", curveColumns, "block, field, row"},
};
static_assert(std::size(relations) == relationCount);

} // namespace

std::span<const FleetRelation> fleetRelations() { return relations; }

const FleetRelation* findRelation(std::string_view name) {
    const auto* const found = std::ranges::find(relations, name, &FleetRelation::name);
    return found == std::end(relations) ? nullptr : found;
}

std::size_t columnOf(Relation relation, std::string_view name) {
    const std::span<const FleetColumn> columns = relations[static_cast<std::size_t>(relation)].columns;
    return static_cast<std::size_t>(std::ranges::find(columns, name, &FleetColumn::name) - columns.begin());
}

std::vector<double> numbersOf(std::string_view json) {
    std::vector<double> numbers;
    const auto damaged = [] { return FleetError("an array in the database is damaged"); };
    if (json == "[]")
        return numbers;
    if (json.size() < 2 || json.front() != '[' || json.back() != ']')
        throw damaged();
    const char* at = json.data() + 1;
    const char* const end = json.data() + json.size() - 1;
    for (;;) {
        double number = std::numeric_limits<double>::quiet_NaN();
        if (std::string_view(at, end).starts_with("null")) {
            at += 4;
        } else {
            const auto [next, error] = std::from_chars(at, end, number);
            if (error != std::errc())
                throw damaged();
            at = next;
        }
        numbers.push_back(number);
        if (at == end)
            return numbers;
        if (*at++ != ',')
            throw damaged();
    }
}

} // namespace Travik
