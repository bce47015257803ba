#include <travik/service/Describe.h>
#include <travik/service/KaitaiFormat.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <set>

namespace Travik {

namespace {

constexpr std::size_t headerSize = sizeof(HwSDatablockHeader);

// All that precedes the types of the block classes, and what lies outside them. The types of blocks follow.
constexpr std::string_view frame = R"(meta:
  id: travik_datablocks
  title: Data blocks of the non-volatile memory of signal-generator modules
  file-extension: bin
  ks-version: 0.9
  endian: le
  encoding: ISO-8859-1
doc: |
  An image is a sequence of blocks, each at the end of the one before by its size word. The end block, or the end of
  the data, closes it. All numbers are little-endian, texts are Latin-1. Numbers are given as they are stored; what
  they mean stands beside them: value = stored * -scale + -zero, in -unit.
seq:
  - id: blocks
    type: block
    repeat: until
    repeat-until: _.is_last or _io.size - _io.pos < 4
    if: _io.size >= 4
  - id: rest
    size-eos: true
    doc: What follows the end block, or a size word that cannot be true, belongs to no block.
)";

constexpr std::string_view frameTypes = R"(types:
  block:
    seq:
      - id: id
        type: u2
        doc: Identifier; 65535 is the end block.
      - id: end_data
        type: u2
        if: is_end
        doc: The data word of the end block, which has no further words.
      - id: size
        type: u2
        if: not is_end
        doc: Bytes of the block, the header included.
      - id: checksum
        type: u2
        if: not is_end and _io.size - _io.pos >= 2
        doc: Makes the sum of all words of the block 0.
      - id: alignment
        type: u2
        if: not is_end and _io.size - _io.pos >= 2
        doc: 0; in a table that describes itself, 0 is the padded layout and any other number the packed one.
      - id: content
        type: block_content
        size: "len_content < _io.size - _io.pos ? len_content : _io.size - _io.pos"
        doc: The bytes behind the header, as far as the data goes.
    instances:
      is_end:
        value: id == 0xffff
      is_last:
        value: is_end or size < 8
      len_content:
        value: "is_last ? 0 : size - 8"
      table:
        io: content._io
        pos: 0
        type: self_describing_table(alignment != 0)
        doc: |
          A block of an identifier without a class, as a table that describes itself. It is one where the CRC-32 in its
          first four bytes holds, over the bytes 0-3 and from 12 on of the block.
      body:
        io: content._io
        pos: 0
        size-eos: true
        doc: By identifier; plain bytes where the identifier has no class.
        type:
          switch-on: id
          cases:
)";

constexpr std::string_view tableTypes = R"(  block_content:
    seq: []
  f80:
    doc: The ten bytes of the extended format with 64 bits of significand, its integer bit included.
    seq:
      - id: significand
        type: u8
      - id: sign_and_exponent
        type: u2
        doc: Bit 15 the sign, bits 0-14 the exponent plus 16383.
  self_describing_table:
    doc: |
      A table of the second edition. In the padded layout each of the areas behind the header begins at a multiple of
      4 bytes; in the packed layout they follow each other, and the update index is the upper half of the CRC-32.
    params:
      - id: is_packed
        type: bool
    seq:
      - id: checksum32_low
        type: u2
      - id: checksum32_high
        type: u2
        if: not is_packed
      - id: update_index
        type: u2
        -scale: 0.01
      - id: rows
        type: u2
      - id: columns
        type: u2
      - id: row_id_type
        type: u1
        enum: element_type
        doc: none (0) where the rows have no identifiers.
      - id: column_id_type
        type: u1
        enum: element_type
        doc: none (0) where the columns have no identifiers.
      - id: column_types
        type: u1
        enum: element_type
        repeat: expr
        repeat-expr: columns
      - id: padding_before_row_ids
        size: "is_packed ? 0 : (4 - _io.pos % 4) % 4"
      - id: row_ids
        type: element(row_id_type)
        repeat: expr
        repeat-expr: rows
        if: row_id_type != element_type::none
      - id: padding_before_column_ids
        size: "is_packed ? 0 : (4 - _io.pos % 4) % 4"
      - id: column_ids
        type: element(column_id_type)
        repeat: expr
        repeat-expr: columns
        if: column_id_type != element_type::none
      - id: padding_before_values
        size: "is_packed ? 0 : (4 - _io.pos % 4) % 4"
      - id: values
        type: table_row
        repeat: expr
        repeat-expr: rows
    instances:
      checksum32:
        value: "(is_packed ? update_index : checksum32_high) * 65536 + checksum32_low"
  table_row:
    seq:
      - id: values
        type: element(_parent.column_types[_index])
        repeat: expr
        repeat-expr: _parent.columns
  element:
    doc: One number or text of a table; nothing for the type none and for unknown types.
    params:
      - id: type
        type: u1
        enum: element_type
    seq:
      - id: value
        type:
          switch-on: type
          cases:
)";

/// How the language calls a stored type.
std::string_view kaitaiType(Stored stored) {
    static constexpr std::array<std::string_view, 12> names{"u1", "s1", "u2",  "s2", "u4", "s4",
                                                            "f4", "f8", "str", "u8", "s8", "f80"};
    return names.at(static_cast<std::size_t>(stored));
}

std::string quoted(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\')
            out += '\\';
        out += c;
    }
    return out + '"';
}

/// "HwDatablockIqOp3RfmHarmonic" to "hw_datablock_iq_op3_rfm_harmonic".
std::string snakeCase(std::string_view name) {
    const auto isUpper = [](char c) { return c >= 'A' && c <= 'Z'; };
    std::string out;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool begins = isUpper(name[i]) && i > 0 && name[i - 1] != '_' &&
                            (!isUpper(name[i - 1]) || (i + 1 < name.size() && !isUpper(name[i + 1]) &&
                                                       std::isalpha(static_cast<unsigned char>(name[i + 1])) != 0));
        out += begins ? "_" : "";
        out += isUpper(name[i]) ? static_cast<char>(name[i] - 'A' + 'a') : name[i];
    }
    return out;
}

/// A field, or what is left of it inside entries of its outer dimensions.
struct Part {
    const Field* field;
    std::size_t offset;    ///< from the start of the type
    unsigned int done = 0; ///< outer dimensions that types around this one go through

    unsigned int rank() const { return field->rank - done; }
    const Dimension& outer() const { return field->dimensions[done]; }
    Part entry() const { return {field, offset, done + 1}; }
};

/// "; stored × 0.01 in dB": for viewers that show the text only.
std::string measure(const Field& field) {
    std::string text = field.scale == 1.0 ? "" : " × " + shortestText(field.scale);
    if (field.zero != 0.0)
        text += " + " + shortestText(field.zero);
    text = text.empty() ? "" : "; stored" + text;
    if (*field.unit)
        text += (text.empty() ? "; in " : " in ") + std::string(field.unit);
    return text;
}

/// A type that is being written: its lines, and the types that it needs.
class TypeWriter {
public:
    TypeWriter(const BlockForms& forms, const BlockForm& form, std::string indent)
        : forms_(forms), form_(form), indent_(std::move(indent)) {}

    /// The parts in ascending order of their offsets, which leave no byte between them. The last array of a whole
    /// record ends with the block where that is shorter.
    void write(const std::vector<Part>& parts, bool isRecord);
    /// "seq:", "instances:" and "types:", as far as there are any.
    std::string text() const;

private:
    const BlockForms& forms_;
    const BlockForm& form_;
    std::string indent_;
    std::string sequence_;
    std::string instances_;
    std::string types_;
    std::set<std::string> ids_;
    // While the last array of a record is written: where it ends in the body; the block may end before it.
    std::size_t lastArrayEnds_ = 0;

    void attribute(std::string_view id, std::string_view type, unsigned int repeat);
    void explain(const Field& field);
    void word(const std::vector<Part>& values);
    void bits(const Part& part, const std::string& wordName);
    void array(const Part& part);
    void entries(const std::vector<Part>& parts);
    std::string unique(std::string id);
};

void TypeWriter::attribute(std::string_view id, std::string_view type, unsigned int repeat) {
    sequence_ += indent_ + "  - id: " + std::string(id) + '\n' + indent_ + "    type: " + std::string(type) + '\n';
    if (repeat > 0 && lastArrayEnds_ > 0) // by position, since runtimes count `_index` differently here
        sequence_ += indent_ + "    repeat: until\n" + indent_ +
                     "    repeat-until: _io.pos >= " + std::to_string(lastArrayEnds_) + " or _io.eof\n";
    else if (repeat > 0)
        sequence_ += indent_ + "    repeat: expr\n" + indent_ + "    repeat-expr: " + std::to_string(repeat) + '\n';
}

void TypeWriter::explain(const Field& field) {
    std::string text = indent_ + "    doc: " + quoted(forms_.purpose(form_, field) + measure(field)) + '\n';
    text += indent_ + "    -role: " + std::string(roleName(field.role)) + '\n';
    if (*field.unit)
        text += indent_ + "    -unit: " + quoted(field.unit) + '\n';
    if (field.scale != 1.0)
        text += indent_ + "    -scale: " + shortestText(field.scale) + '\n';
    if (field.zero != 0.0)
        text += indent_ + "    -zero: " + shortestText(field.zero) + '\n';
    (field.bits > 0 ? instances_ : sequence_) += text;
}

void TypeWriter::bits(const Part& part, const std::string& wordName) {
    const Field& field = *part.field;
    const auto number = [](unsigned long long value) { return std::to_string(value); };
    std::string value = wordName;
    if (field.shift > 0)
        value = '(' + value + " >> " + number(field.shift) + ')';
    value += " & " + number((1ULL << field.bits) - 1);
    if (field.isSigned) { // flips the sign bit, and takes what it then counts off again
        const std::string sign = number(1ULL << (field.bits - 1U));
        value = "((" + value + ") ^ " + sign + ") - " + sign;
    }
    instances_ += indent_ + "  " + field.name + ":\n" + indent_ + "    value: " + quoted(value) + '\n';
    explain(field);
}

/// Values in one word.
void TypeWriter::word(const std::vector<Part>& values) {
    const Field& field = *values.front().field;
    if (field.bits > 0) {
        const std::string name = std::string(field.name) + "_word";
        attribute(name, kaitaiType(field.width == 1 ? Stored::U8 : field.width == 2 ? Stored::U16 : Stored::U32), 0);
        for (const Part& value : values)
            bits(value, name);
    } else {
        array(values.front());
    }
}

/// Elements of one field, at most one dimension of them.
void TypeWriter::array(const Part& part) {
    const Field& field = *part.field;
    attribute(field.name, kaitaiType(field.stored), part.rank() == 0 ? 0 : part.outer().extent);
    if (field.stored == Stored::Text)
        sequence_ += indent_ + "    size: " + std::to_string(field.width) + '\n' + indent_ + "    terminator: 0\n";
    explain(field);
}

/// An identifier that no attribute of the type has yet.
std::string TypeWriter::unique(std::string id) {
    const std::string wanted = id;
    for (unsigned int n = 2; !ids_.insert(id).second; ++n)
        id = wanted + '_' + std::to_string(n);
    return id;
}

/// Fields that alternate, or the rows of one field.
void TypeWriter::entries(const std::vector<Part>& parts) {
    const Part& first = parts.front();
    const Dimension& dimension = first.outer();
    const std::string dimensionName = *dimension.name ? dimension.name : "entry";
    std::vector<Part> inner;
    inner.reserve(parts.size());
    for (const Part& part : parts)
        inner.push_back(part.entry());
    const bool isOneField = parts.size() == 1 && first.field->bits == 0;
    const std::string id = isOneField ? first.field->name : unique("per_" + dimensionName);
    const std::string type = isOneField ? id + "_row" : id.substr(4) + "_entry";
    TypeWriter entry(forms_, form_, indent_ + "    ");
    entry.write(inner, false);
    types_ += indent_ + "  " + type + ":\n" + entry.text();
    attribute(id, type, dimension.extent);
}

void TypeWriter::write(const std::vector<Part>& parts, bool isRecord) {
    for (const Part& part : parts)
        ids_.insert(part.field->name);
    std::vector<Part> left = parts;
    std::ranges::stable_sort(left, {}, &Part::offset);
    while (!left.empty()) {
        const Part first = left.front();
        const auto isTogether = [&](const Part& part) {
            if (first.rank() == 0 || part.rank() == 0)
                return part.rank() == first.rank() && part.offset == first.offset;
            return part.outer().extent == first.outer().extent && part.outer().stride == first.outer().stride &&
                   part.offset < first.offset + first.outer().stride;
        };
        std::vector<Part> together;
        std::ranges::copy_if(left, std::back_inserter(together), isTogether);
        std::erase_if(left, isTogether);
        if (isRecord && left.empty() && first.rank() > 0)
            lastArrayEnds_ = first.offset - headerSize + std::size_t{first.outer().extent} * first.outer().stride;
        const bool isPlain = together.size() == 1 && first.field->bits == 0 && first.rank() == 1 &&
                             first.outer().stride == first.field->width;
        if (first.rank() == 0)
            word(together);
        else if (isPlain)
            array(first);
        else
            entries(together);
    }
}

std::string TypeWriter::text() const {
    std::string all = indent_ + "seq:" + (sequence_.empty() ? " []\n" : '\n' + sequence_);
    if (!instances_.empty())
        all += indent_ + "instances:\n" + instances_;
    if (!types_.empty())
        all += indent_ + "types:\n" + types_;
    return all;
}

std::string typeOfForm(const BlockForms& forms, const BlockForm& form, const std::string& name) {
    std::vector<Part> parts;
    for (const Field& field : form.layout.fields())
        parts.push_back({&field, field.offset});
    TypeWriter writer(forms, form, "    ");
    writer.write(parts, true);
    const std::string keys = form.keys();
    return "  " + name + ":\n    doc: " +
           quoted(form.ids() + (keys.empty() ? "" : ' ' + keys) + ", " + std::to_string(form.size) + " bytes in all") +
           '\n' + writer.text();
}

/// An element type of a self-describing table.
struct Element {
    std::string_view name;
    Stored stored = Stored::U8;
    double scale = 1.0;
    unsigned int characters = 0;
};

constexpr std::array<Element, 25> elements{{
    {"none"},
    {"uint8", Stored::U8},
    {"int8", Stored::I8},
    {"uint16", Stored::U16},
    {"int16", Stored::I16},
    {"uint32", Stored::U32},
    {"int32", Stored::I32},
    {"uint64", Stored::U64},
    {"int64", Stored::I64},
    {"float", Stored::F32},
    {"double", Stored::F64},
    {"long_double", Stored::F80},
    {"fix16d1", Stored::I16, 0.1},
    {"fix16d2", Stored::I16, 0.01},
    {"fix16d3", Stored::I16, 0.001},
    {"fix16d4", Stored::I16, 0.0001},
    {"fix32d1", Stored::I32, 0.1},
    {"fix32d2", Stored::I32, 0.01},
    {"fix32d3", Stored::I32, 0.001},
    {"fix32d4", Stored::I32, 0.0001},
    {"char", Stored::Text, 1.0, 1},
    {"char5", Stored::Text, 1.0, 5},
    {"char10", Stored::Text, 1.0, 10},
    {"char15", Stored::Text, 1.0, 15},
    {"char20", Stored::Text, 1.0, 20},
}};

/// The cases of `element`, a type for each of them, and the codes. Numbers have types of their own, since not every
/// language that parsers are generated in has a type for "a number or a text".
std::string elementTypes() {
    std::string cases;
    std::string types;
    std::string codes = "enums:\n  element_type:\n";
    for (std::size_t code = 0; code < elements.size(); ++code) {
        const Element& element = elements.at(code);
        const std::string name(element.name);
        codes.append("    ").append(std::to_string(code)).append(": ").append(name).append("\n");
        if (code == 0)
            continue;
        cases.append("            element_type::").append(name).append(": ").append(name).append("_value\n");
        types.append("  ").append(name).append("_value:\n    seq:\n      - id: value\n        type: ");
        types.append(kaitaiType(element.stored)).append("\n");
        if (element.characters > 0)
            types += "        size: " + std::to_string(element.characters) + "\n        terminator: 0\n";
        if (element.scale != 1.0)
            types += "        -scale: " + shortestText(element.scale) + '\n';
    }
    return cases + types + codes;
}

} // namespace

std::vector<std::string> kaitaiTypeNames(const BlockForms& forms) {
    std::map<std::string_view, unsigned int> uses;
    for (const BlockForm& form : forms.all())
        ++uses[form.entry->className];
    std::vector<std::string> names;
    for (const BlockForm& form : forms.all()) {
        const std::string name = snakeCase(form.entry->className);
        names.push_back(uses[form.entry->className] == 1 ? name : name + '_' + std::to_string(form.first));
    }
    return names;
}

std::string describeAsKaitai(const BlockForms& forms) {
    const std::vector<std::string> names = kaitaiTypeNames(forms);
    std::string cases;
    std::string types;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const BlockForm& form = forms.all()[i];
        for (int id = form.first; id <= form.last; ++id)
            cases += "            " + std::to_string(id) + ": " + names[i] + '\n';
        types += typeOfForm(forms, form, names[i]);
    }
    std::string text(frame);
    text += frameTypes;
    text += cases;
    text += types;
    text += tableTypes;
    return text + elementTypes();
}

} // namespace Travik
