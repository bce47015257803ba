#include <travik/service/JsonText.h>
#include <travik/service/Report.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

/// The documents of docs/report.md.
namespace Travik {

namespace {

/// JSON that may stand inside an HTML element: "<" and what ends a line of a script are escaped in texts.
class PageJson {
public:
    void raw(std::string_view text) { json_.raw(text); }

    /// `"name":`, with a comma unless it is the first of its object.
    void key(std::string_view name, bool isFirst = false) {
        json_.raw(isFirst ? "\"" : ",\"");
        json_.raw(name);
        json_.raw("\":");
    }
    void whole(std::size_t number) { json_.whole(number); }
    void flag(bool value) { json_.raw(value ? "true" : "false"); }

    void text(std::string_view utf8) {
        JsonText one;
        one.string(utf8);
        const std::string quoted = one.take();
        std::size_t from = 0;
        for (std::size_t i = 0; i < quoted.size(); ++i) {
            const std::string_view rest = std::string_view(quoted).substr(i);
            const std::string_view escaped = rest[0] == '<'                     ? "\\u003c"
                                             : rest[0] == '>'                   ? "\\u003e"
                                             : rest[0] == '&'                   ? "\\u0026"
                                             : rest.starts_with("\xe2\x80\xa8") ? "\\u2028"
                                             : rest.starts_with("\xe2\x80\xa9") ? "\\u2029"
                                                                                : "";
            if (escaped.empty())
                continue;
            json_.raw(std::string_view(quoted).substr(from, i - from));
            json_.raw(escaped);
            i += rest[0] == '\xe2' ? 2 : 0;
            from = i + 1;
        }
        json_.raw(std::string_view(quoted).substr(from));
    }

    void field(std::string_view name, std::string_view utf8) {
        key(name);
        text(utf8);
    }
    /// Left out where it is empty or 0.
    void known(std::string_view name, std::string_view utf8) {
        if (!utf8.empty())
            field(name, utf8);
    }
    void known(std::string_view name, std::size_t number) {
        if (number == 0)
            return;
        key(name);
        whole(number);
    }

    template <class Items, class Function>
    void array(const Items& items, Function write) {
        raw("[");
        bool isFirst = true;
        for (const auto& item : items) {
            raw(isFirst ? "" : ",");
            isFirst = false;
            write(item);
        }
        raw("]");
    }

    /// Every digit that makes a difference, no further zeros.
    void number(double value, const NumberFormat& format) {
        if (!std::isfinite(value))
            return raw("null");
        trimmed(value, format.exact(value));
    }
    /// What lies between two values, such as a quartile: to a hundredth of their step.
    void between(double value, const NumberFormat& format) {
        if (!std::isfinite(value) || format.decimals() < 0)
            return number(value, format);
        std::array<char, 400> text;
        char* const end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed,
                                        format.decimals() + 2)
                              .ptr;
        trimmed(value, std::string(text.data(), end));
    }
    void numbers(const std::vector<double>& values, const NumberFormat& format) {
        array(values, [&](double value) { number(value, format); });
    }

    void base64(std::span<const char> bytes) {
        static constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string made;
        made.reserve(bytes.size() / 3 * 4 + 6);
        made += '"';
        for (std::size_t i = 0; i < bytes.size(); i += 3) {
            unsigned int bits = 0;
            for (std::size_t j = 0; j < 3; ++j)
                bits = bits << 8U | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0U);
            for (std::size_t j = 0; j < 4; ++j)
                made += i + j <= bytes.size() ? digits[bits >> (18 - 6 * j) & 63U] : '=';
        }
        raw(made += '"');
    }

    std::string take() { return json_.take(); }

private:
    void trimmed(double value, std::string digits) {
        if (digits.find_first_not_of("-0123456789.") != std::string::npos || digits.size() > 20)
            return json_.number(value);
        if (digits.find('.') != std::string::npos) {
            digits.erase(digits.find_last_not_of('0') + 1);
            if (digits.back() == '.')
                digits.pop_back();
        }
        raw(digits);
    }

    JsonText json_;
};

void writeValues(PageJson& json, const ReportValues& values, const NumberFormat& format) {
    auto text = values.asText.begin();
    std::size_t place = 0;
    json.array(values.values, [&](double value) {
        if (text != values.asText.end() && text->first == place)
            json.text((text++)->second);
        else
            json.number(value, format);
        ++place;
    });
}

void writeSpread(PageJson& json, const ReportSpread& spread, const NumberFormat& format) {
    const std::array<std::pair<std::string_view, const std::vector<double>*>, 5> parts{
        {{"lowest", &spread.lowest},
         {"lowerQuartile", &spread.lowerQuartile},
         {"median", &spread.median},
         {"upperQuartile", &spread.upperQuartile},
         {"highest", &spread.highest}}};
    json.raw("{");
    for (const auto& [name, values] : parts) {
        json.key(name, name == parts.front().first);
        json.array(*values, [&](double value) { json.between(value, format); });
    }
    json.raw("}");
}

void writeDecimals(PageJson& json, const NumberFormat& format) {
    if (format.decimals() >= 0) {
        json.key("decimals");
        json.whole(static_cast<std::size_t>(format.decimals()));
    }
}

void writeAxis(PageJson& json, const ReportAxis& axis) {
    json.raw("{");
    json.key("name", true);
    json.text(axis.name);
    json.known("unit", axis.unit);
    writeDecimals(json, axis.format);
    if (!axis.values.empty()) {
        json.key("values");
        json.numbers(axis.values, axis.format);
    }
    if (!axis.texts.empty()) {
        json.key("texts");
        json.array(axis.texts, [&](const std::string& text) { json.text(text); });
    }
    if (axis.isLogarithmic)
        json.raw(",\"logarithmic\":true");
    json.raw("}");
}

void writeCurve(PageJson& json, const ReportCurve& curve) {
    json.raw("{");
    json.key("name", true);
    json.text(curve.name);
    json.known("unit", curve.unit);
    writeDecimals(json, curve.format);
    if (curve.isText)
        json.raw(",\"text\":true");
    json.key("values");
    json.array(curve.values, [&](const ReportValues& values) { writeValues(json, values, curve.format); });
    if (curve.spread) {
        json.key("spread");
        writeSpread(json, *curve.spread, curve.format);
    }
    json.raw("}");
}

void writeTable(PageJson& json, const ReportTable& table) {
    const auto places = [&](std::string_view name, const std::vector<std::size_t>& list) {
        json.key(name);
        json.array(list, [&](std::size_t place) { json.whole(place); });
    };
    json.raw("{");
    json.key("name", true);
    json.text(table.name);
    json.key("rows");
    json.whole(table.rows);
    json.key("plotted");
    json.flag(table.isPlotted);
    json.key("matrix");
    json.flag(table.isMatrix);
    json.known("changedValues", table.changedValues);
    json.key("axis");
    writeAxis(json, table.axis);
    json.known("curvesName", table.curvesName);
    places("drawn", table.drawn);
    if (!table.ownAxes.empty()) {
        json.key("ownAxes");
        json.array(table.ownAxes, [&](const std::vector<double>& own) {
            if (own.empty())
                json.raw("null");
            else
                json.numbers(own, table.axis.format);
        });
    }
    if (!table.deviations.empty()) {
        json.key("deviations");
        json.array(table.deviations,
                   [&](double deviation) { json.number(std::round(deviation * 100) / 100, NumberFormat()); });
        places("odd", table.odd);
    }
    json.key("curves");
    json.array(table.curves, [&](const ReportCurve& curve) { writeCurve(json, curve); });
    json.raw("}");
}

void writeLayoutField(PageJson& json, const ReportLayoutField& field) {
    json.raw("{");
    json.key("name", true);
    json.text(field.name);
    json.field("type", field.type);
    json.field("purpose", field.purpose);
    json.known("unit", field.unit);
    json.key("offset");
    json.whole(field.offset);
    json.key("width");
    json.whole(field.width);
    if (!field.dimensions.empty()) {
        json.key("dimensions");
        json.array(field.dimensions, [&](const auto& dimension) {
            json.raw("[");
            json.whole(dimension.first);
            json.raw(",");
            json.whole(dimension.second);
            json.raw("]");
        });
    }
    json.raw("}");
}

void writePlace(PageJson& json, const ReportPlace& place) {
    json.raw("{");
    json.key("source", true);
    json.whole(place.source);
    json.key("offset");
    json.whole(place.offset);
    json.key("size");
    json.whole(place.size);
    json.known("checksum", place.checksum);
    json.known("crc", place.crc);
    if (!place.bytes.empty()) {
        json.key("bytes");
        json.base64(place.bytes);
    }
    json.raw("}");
}

std::string_view changeName(ReportBlock::Change change) {
    switch (change) {
    case ReportBlock::Change::Equal:
        return "equal";
    case ReportBlock::Change::Changed:
        return "changed";
    case ReportBlock::Change::Added:
        return "added";
    case ReportBlock::Change::Removed:
        return "removed";
    case ReportBlock::Change::None:
        break;
    }
    return {};
}

/// How far off the odd ones of a block lie at most, by source.
std::vector<std::pair<std::size_t, double>> oddSources(const ReportBlock& block) {
    std::vector<std::pair<std::size_t, double>> sources;
    for (const ReportTable& table : block.tables) {
        for (const std::size_t place : table.odd) {
            const std::size_t source = block.places[place].source;
            const double distance = table.deviations[place];
            const auto found = std::ranges::find(sources, source, &std::pair<std::size_t, double>::first);
            if (found == sources.end())
                sources.emplace_back(source, distance);
            else
                found->second = std::max(found->second, distance);
        }
    }
    return sources;
}

void writeEntry(PageJson& json, const ReportBlock& block) {
    json.raw("{");
    json.key("id", true);
    json.whole(static_cast<std::size_t>(block.id));
    json.known("key", block.key);
    json.known("class", block.className);
    json.known("occurrence", block.occurrence);
    json.key("kind");
    json.whole(block.kind);
    json.key("places");
    json.whole(block.places.size());
    json.key("fields");
    json.whole(block.fields.size());
    json.key("tables");
    json.array(block.tables, [&](const ReportTable& table) { json.raw(table.isPlotted ? "1" : "0"); });
    std::size_t changed = 0;
    for (const ReportTable& table : block.tables)
        changed += table.changedValues;
    json.known("change", changeName(block.change));
    json.known("changedValues", changed);
    json.known("changedBytes", block.changedBytes);
    const std::size_t wrong =
        static_cast<std::size_t>(std::ranges::count_if(block.places, [](const ReportPlace& place) {
            return place.checksum == "wrong" || place.checksum == "cut off" || place.crc == "wrong";
        }));
    json.known("wrong", wrong);
    if (const auto odd = oddSources(block); !odd.empty()) {
        json.key("odd");
        json.array(odd, [&](const auto& source) {
            json.raw("[");
            json.whole(source.first);
            json.raw(",");
            json.number(std::round(source.second * 100) / 100, NumberFormat());
            json.raw("]");
        });
    }
    json.raw("}");
}

void writeSource(PageJson& json, const ReportSource& source) {
    json.raw("{");
    json.key("name", true);
    json.text(source.name);
    json.field("title", source.title);
    json.key("kind");
    json.whole(source.kind);
    json.key("size");
    json.whole(source.size);
    json.key("blocks");
    json.whole(source.blocks);
    json.key("facts");
    json.array(source.facts, [&](const ReportFact& fact) {
        json.raw("{");
        json.key("group", true);
        json.text(fact.group);
        json.field("label", fact.label);
        json.field("value", fact.value);
        json.known("mark", fact.mark);
        json.raw("}");
    });
    json.key("findings");
    json.array(source.findings, [&](const ImageFinding& finding) {
        json.raw("{");
        json.key("grade", true);
        json.text(finding.grade() == Grade::Damage ? "damage" : "note");
        json.key("offset");
        json.whole(finding.offset);
        if (finding.id) {
            json.key("id");
            json.whole(*finding.id);
        }
        json.field("text", finding.text);
        json.raw("}");
    });
    json.raw("}");
}

std::string_view formName(ReportForm form) {
    return form == ReportForm::Module ? "module" : form == ReportForm::Comparison ? "comparison" : "family";
}

} // namespace

std::string reportBlockJson(const ReportBlock& block) {
    PageJson json;
    json.raw("{");
    json.key("places", true);
    json.array(block.places, [&](const ReportPlace& place) { writePlace(json, place); });
    json.key("fields");
    json.array(block.fields, [&](const ReportField& field) {
        json.raw("{");
        json.key("name", true);
        json.text(field.name);
        json.key("texts");
        json.array(field.texts, [&](const std::string& text) { json.text(text); });
        json.raw("}");
    });
    json.key("tables");
    json.array(block.tables, [&](const ReportTable& table) { writeTable(json, table); });
    json.key("layout");
    json.array(block.layout, [&](const ReportLayoutField& field) { writeLayoutField(json, field); });
    json.raw("}");
    return json.take();
}

std::string reportHeadJson(const ReportHead& head, std::span<const ReportBlock> blocks) {
    PageJson json;
    json.raw("{");
    json.key("version", true);
    json.whole(1);
    json.field("form", formName(head.form));
    json.field("title", head.title);
    json.field("generator", head.generator);
    json.key("kinds");
    json.array(head.kinds, [&](const std::string& kind) { json.text(kind); });
    json.key("remarks");
    json.array(head.remarks, [&](const std::string& remark) { json.text(remark); });
    json.key("sources");
    json.array(head.sources, [&](const ReportSource& source) { writeSource(json, source); });
    json.key("blocks");
    json.array(blocks, [&](const ReportBlock& block) { writeEntry(json, block); });
    json.raw("}");
    return json.take();
}

} // namespace Travik
