#include <travik/datablock/Bytes.h>
#include <travik/tables/SecondEdition.h>
#include <travik/tables/SecondEditionFields.h>

#include <array>

namespace Travik {

namespace {

/// How a field holds a value of an element type.
struct Form {
    Stored stored;
    unsigned int width;
    double scale = 1.0;
};

constexpr std::array<Form, 25> forms{{
    {Stored::U8, 0},       {Stored::U8, 1},        {Stored::I8, 1},         {Stored::U16, 2},
    {Stored::I16, 2},      {Stored::U32, 4},       {Stored::I32, 4},        {Stored::U64, 8},
    {Stored::I64, 8},      {Stored::F32, 4},       {Stored::F64, 8},        {Stored::F80, 10},
    {Stored::I16, 2, 0.1}, {Stored::I16, 2, 0.01}, {Stored::I16, 2, 0.001}, {Stored::I16, 2, 0.0001},
    {Stored::I32, 4, 0.1}, {Stored::I32, 4, 0.01}, {Stored::I32, 4, 0.001}, {Stored::I32, 4, 0.0001},
    {Stored::Text, 1},     {Stored::Text, 5},      {Stored::Text, 10},      {Stored::Text, 15},
    {Stored::Text, 20},
}};

const Form& formOf(unsigned int code) { return forms[code < forms.size() ? code : 0]; }

Field make(const char* name, std::uint64_t offset, const Form& form, Role role = Role::Value) {
    Field field;
    field.name = name;
    field.role = form.stored == Stored::Text && role == Role::Value ? Role::Text : role;
    field.stored = form.stored;
    field.width = form.width;
    field.offset = static_cast<unsigned int>(offset);
    field.scale = form.scale;
    return field;
}

Field along(Field field, const char* name, unsigned int extent, std::uint64_t stride, int axisBlock = 0) {
    field.dimensions.at(field.rank++) = {
        .name = name, .extent = extent, .stride = static_cast<unsigned int>(stride), .axisBlock = axisBlock};
    return field;
}

} // namespace

SecondEditionFields::SecondEditionFields(std::span<const char> block) {
    const SecondEditionLayout layout(block);
    if (layout.end > block.size())
        return;
    constexpr Form byte{Stored::U8, 1};
    constexpr Form word{Stored::U16, 2};
    const unsigned int start = SecondEditionHeader::startsAt(layout.packed);
    fields_.push_back(make("checksum32", sizeof(HwSDatablockHeader), {Stored::U32, 4}, Role::Reserved));
    fields_.push_back(make("update_index", start, {Stored::U16, 2, 0.01}));
    fields_.push_back(make("rows", start + 2, word, Role::Count));
    fields_.push_back(make("columns", start + 4, word, Role::Count));
    fields_.push_back(make("row_id_type", start + 6, byte));
    fields_.push_back(make("column_id_type", start + 7, byte));
    if (layout.columns > 0)
        fields_.push_back(along(make("column_types", layout.columnTypesAt, byte), "column", layout.columns, 1));

    const int id = bytes::load<unsigned short>(block, 0);
    const auto addIds = [&](const char* name, const char* dimension, std::uint64_t at, ETypeId type,
                            unsigned int extent) {
        const Form& form = formOf(static_cast<unsigned int>(type));
        if (form.width > 0 && extent > 0)
            fields_.push_back(along(make(name, at, form, Role::Axis), dimension, extent, form.width));
        return form.width > 0 ? id : 0;
    };
    const int rowAxis = addIds("row_ids", "row", layout.rowIdsAt, layout.rowIdType, layout.rows);
    const int columnAxis = addIds("column_ids", "column", layout.columnIdsAt, layout.columnIdType, layout.columns);
    if (layout.rows == 0 || layout.rowSize == 0)
        return;

    const auto types = bytes::part(block, layout.columnTypesAt, layout.columns);
    const auto code = [](char type) { return static_cast<unsigned char>(type); };
    if (std::ranges::all_of(types, [&](char type) { return type == types.front(); })) {
        const Form& form = formOf(code(types.front()));
        const Field rows = along(make("values", layout.valuesAt, form), "row", layout.rows, layout.rowSize, rowAxis);
        fields_.push_back(along(rows, "column", layout.columns, form.width, columnAxis));
        return;
    }
    std::uint64_t at = layout.valuesAt;
    for (std::size_t column = 0; column < types.size(); ++column) {
        const Form& form = formOf(code(types[column]));
        if (form.width == 0)
            continue;
        names_.push_back("column_" + std::to_string(column));
        fields_.push_back(along(make(names_.back().c_str(), at, form), "row", layout.rows, layout.rowSize, rowAxis));
        at += form.width;
    }
}

} // namespace Travik
