#include <travik/service/Describe.h>
#include <travik/service/JsonText.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <optional>
#include <span>

namespace Travik {

namespace {

using Row = std::vector<std::string>;

// Of a UTF-8 text: what of it is no continuation byte.
std::size_t columnsOf(std::string_view utf8) {
    return static_cast<std::size_t>(
        std::ranges::count_if(utf8, [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

/// The rows under each other, two blanks between the columns; those whose heading is given as a number stand right.
std::string aligned(const std::vector<Row>& rows, std::string_view numberColumns) {
    std::vector<std::size_t> widths(rows.front().size());
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], columnsOf(row[i]));
    }
    std::string text;
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string blanks(widths[i] - columnsOf(row[i]), ' ');
            const bool isNumber = numberColumns[i] == '>';
            line += (i == 0 ? "" : "  ") + (isNumber ? blanks + row[i] : row[i] + blanks);
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + '\n';
    }
    return text;
}

std::string orDash(std::string text) { return text.empty() ? "-" : std::move(text); }

std::string extents(const Field& field) {
    std::string text;
    for (unsigned int d = 0; d < field.rank; ++d)
        text += (d == 0 ? "" : " × ") + std::to_string(field.dimensions[d].extent);
    return text;
}

// A text's type says how many characters it has.
std::string typeOf(const Field& field) {
    const std::string name(storedName(field.stored));
    return field.stored == Stored::Text ? name + ' ' + std::to_string(field.width) : name;
}

std::string scaleOf(const Field& field) {
    std::string text = field.scale == 1.0 ? "" : "× " + shortestText(field.scale);
    if (field.zero != 0.0)
        text +=
            (text.empty() ? "" : " ") + std::string(field.zero < 0 ? "− " : "+ ") + shortestText(std::abs(field.zero));
    return text;
}

/// The words that a block begins with.
std::vector<Row> headerRows(const BlockForm& form) {
    const auto word = [](const char* offset, const char* name, std::string purpose) {
        return Row{offset, "u16", "", name, "", "", std::move(purpose)};
    };
    Row id = word("0", "id", "identifier, " + form.ids());
    if (!form.hasHeader())
        return {std::move(id), word("2", "data", "one data word; no size, checksum and alignment words")};
    return {std::move(id), word("2", "size", "bytes of the block, " + std::to_string(form.size)),
            word("4", "checksum", "makes the sum of all words 0"), word("6", "alignment", "0")};
}

void appendFields(std::vector<Row>& rows, const BlockForms& forms, const BlockForm& form) {
    for (const Field& field : form.layout.fields())
        rows.push_back({std::to_string(field.offset), typeOf(field), extents(field), field.name, field.unit,
                        scaleOf(field), forms.purpose(form, field)});
}

std::string bytesText(std::size_t size) { return std::to_string(size) + " bytes"; }

std::string markdownRow(const Row& row) {
    std::string text = "|";
    for (const std::string& cell : row)
        text += (cell.empty() ? " |" : " " + cell + " |");
    return text + '\n';
}

/// JSON with a line for each member and entry, two blanks deeper than what they are of.
class Json {
public:
    template <class Value>
    void member(std::string_view name, const Value& value) {
        key(name);
        put(value);
    }
    /// `write` writes the members or entries.
    template <class Write>
    void object(Write write) {
        enclosed('{', '}', write);
    }
    template <class Write>
    void array(std::string_view name, Write write) {
        key(name);
        enclosed('[', ']', write);
    }
    template <class Range, class Write>
    void objects(const Range& range, Write write) {
        enclosed('[', ']', [&] { entries(range, write); });
    }
    /// The entries of an array.
    template <class Range, class Write>
    void entries(const Range& range, Write write) {
        for (const auto& entry : range) {
            line();
            object([&] { write(entry); });
        }
    }
    void key(std::string_view name) {
        line();
        text_.string(name);
        text_.raw(": ");
    }
    std::string take() {
        text_.raw('\n');
        return text_.take();
    }

private:
    JsonText text_;
    std::size_t depth_ = 0;
    bool isFirst_ = true; // of its object or array

    template <class Write>
    void enclosed(char begin, char end, Write write) {
        text_.raw(begin);
        isFirst_ = true;
        ++depth_;
        write();
        --depth_;
        if (!isFirst_)
            indent();
        isFirst_ = false;
        text_.raw(end);
    }
    void line() {
        if (!isFirst_)
            text_.raw(',');
        isFirst_ = false;
        indent();
    }
    void indent() {
        text_.raw('\n');
        for (std::size_t i = 0; i < depth_; ++i)
            text_.raw("  ");
    }
    void put(std::string_view value) { text_.string(value); }
    void put(const char* value) { text_.string(value); }
    void put(double value) { text_.number(value); }
    void put(bool value) { text_.raw(value ? "true" : "false"); }
    template <std::integral Number>
    void put(Number value) {
        text_.whole(value);
    }
    void put(std::nullopt_t) { text_.raw("null"); }
    template <class Value>
    void put(const std::optional<Value>& value) {
        value ? put(*value) : put(std::nullopt);
    }
};

std::optional<std::string_view> orNull(std::string_view text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

void write(Json& json, const Dimension& dimension) {
    json.member("name", dimension.name);
    json.member("extent", dimension.extent);
    json.member("stride", dimension.stride);
    json.member("count", orNull(dimension.count ? dimension.count : ""));
    json.member("axis_block", dimension.axisBlock != 0 ? std::optional(dimension.axisBlock) : std::nullopt);
}

void write(Json& json, const BlockForms& forms, const BlockForm& form, const Field& field) {
    json.member("name", field.name);
    json.member("role", roleName(field.role));
    json.member("purpose", forms.purpose(form, field));
    json.member("offset", field.offset);
    json.member("type", storedName(field.stored));
    json.member("width", field.width);
    if (field.bits > 0) {
        json.key("bits");
        json.object([&] {
            json.member("first", field.shift);
            json.member("count", field.bits);
            json.member("signed", field.isSigned);
        });
    } else {
        json.member("bits", std::nullopt);
    }
    json.member("unit", orNull(field.unit));
    json.member("scale", field.scale);
    json.member("zero", field.zero);
    json.array("dimensions", [&] {
        json.entries(std::span(field.dimensions).first(field.rank),
                     [&](const Dimension& dimension) { write(json, dimension); });
    });
}

void write(Json& json, const BlockForms& forms, const BlockForm& form) {
    json.member("id", form.first);
    json.member("key", orNull(form.key(form.first)));
    json.member("class", form.entry->className);
    json.member("size", form.size);
    json.array("fields", [&] {
        json.entries(form.layout.fields(), [&](const Field& field) { write(json, forms, form, field); });
    });
}

} // namespace

std::string_view roleName(Role role) {
    static constexpr std::array<std::string_view, 6> names{"value", "count", "axis", "text", "date", "reserved"};
    return names.at(static_cast<std::size_t>(role));
}

std::string shortestText(double number) {
    std::array<char, 40> text;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::string listAsText(const BlockForms& forms) {
    std::vector<Row> rows{{"ID", "KEY", "CLASS", "SIZE", "FIELDS"}};
    for (const BlockForm& form : forms.all()) {
        for (int id = form.first; id <= form.last; ++id)
            rows.push_back({std::to_string(id), orDash(form.key(id)), std::string(form.entry->className),
                            std::to_string(form.size), std::to_string(form.layout.fields().size())});
    }
    return aligned(rows, "><<>>");
}

std::string describeAsText(const BlockForms& forms, const BlockForm& form) {
    std::vector<Row> rows = headerRows(form);
    rows.insert(rows.begin(), {"OFFSET", "TYPE", "ENTRIES", "NAME", "UNIT", "SCALE", "WHAT IT IS FOR"});
    appendFields(rows, forms, form);
    const std::string key = form.key(form.first);
    return std::to_string(form.first) + (key.empty() ? "" : "  " + key) + "  " + std::string(form.entry->className) +
           "  " + bytesText(form.size) + "\n\n" + aligned(rows, "><><<<<");
}

std::string describeAsMarkdown(const BlockForms& forms) {
    std::string text;
    for (const BlockForm& form : forms.all()) {
        const std::string keys = form.keys();
        text += "\n### " + form.ids();
        text += (keys.empty() ? "" : ' ' + keys) + "\n\n`" + std::string(form.entry->className) + "`, " +
                bytesText(form.size) + "\n\n| offset | type | entries | name | unit | scale | what it is for |\n" +
                "| ---: | --- | ---: | --- | --- | --- | --- |\n";
        // The header words are the same in all blocks but one.
        std::vector<Row> rows = form.hasHeader() ? std::vector<Row>() : headerRows(form);
        appendFields(rows, forms, form);
        for (Row& row : rows) {
            row[3] = '`' + row[3] + '`';
            text += markdownRow(row);
        }
    }
    return text;
}

std::string describeAsJson(const BlockForms& forms, std::span<const BlockForm> asked) {
    Json json;
    json.objects(asked, [&](const BlockForm& form) { write(json, forms, form); });
    return json.take();
}

} // namespace Travik
