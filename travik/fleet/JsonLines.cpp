#include <travik/fleet/JsonLines.h>
#include <travik/service/JsonText.h>

namespace Travik {

namespace {

std::string withNan(std::string json) {
    constexpr std::string_view null = "null";
    for (std::size_t at = 0; (at = json.find(null, at)) != std::string::npos; at += 3)
        json.replace(at, null.size(), "nan");
    return json;
}

void appendCell(JsonText& json, const FleetColumn& column, const FleetCell& cell, NotFinite notFinite) {
    if (const auto* const whole = std::get_if<std::int64_t>(&cell))
        json.whole(*whole);
    else if (const auto* const number = std::get_if<double>(&cell))
        json.number(*number);
    else if (const auto* const text = std::get_if<std::string>(&cell))
        json.string(*text);
    else if (const auto* const array = std::get_if<ArrayText>(&cell))
        json.raw(notFinite == NotFinite::Nan && column.kind == ColumnKind::Numbers ? withNan(array->json)
                                                                                   : array->json);
    else
        json.raw("null");
}

} // namespace

void appendJsonLines(std::string& text, Relation relation, const ImageRows& rows, NotFinite notFinite) {
    JsonText json;
    JsonText ahead;
    ahead.raw("{\"image\":");
    ahead.string(rows.key());
    ahead.raw(",\"module\":");
    ahead.string(rows.module);
    const std::string start = ahead.take();
    const std::span<const FleetColumn> columns = fleetRelations()[static_cast<std::size_t>(relation)].columns;
    for (const FleetRow& row : rows.of(relation)) {
        json.raw(start);
        for (std::size_t i = 0; i < columns.size(); ++i) {
            json.raw(",\"");
            json.raw(columns[i].name);
            json.raw("\":");
            appendCell(json, columns[i], row[i], notFinite);
        }
        json.raw("}\n");
    }
    if (text.empty()) // the lines of a large image are not held twice
        text = json.take();
    else
        text += json.take();
}

FleetSink::Stored JsonLines::store(const ImageRows& rows) {
    std::string text;
    appendJsonLines(text, relation_, rows, NotFinite::Null);
    write_(text);
    return Stored::Added;
}

} // namespace Travik
