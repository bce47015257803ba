#pragma once

#include <travik/datablock/End.h>
#include <travik/datablock/RecordFields.h>
#include <travik/datablock/ShortImages.h>
#include <travik/registry/Catalogue.h>
#include <travik/text/TableTemplates.h>

#include <algorithm>
#include <concepts>

/// How the rows of the catalogue are written: everything that a class already says of itself is taken from the class.
namespace Travik::detail {

/// The class's name as it stands in the source, without namespace and template arguments.
template <class Block>
consteval std::string_view className() {
    const std::string_view function = __PRETTY_FUNCTION__;
    std::string_view name = function.substr(function.find("Block = ") + 8);
    name = name.substr(0, name.find_first_of("<;]"));
    return name.substr(name.rfind(':') + 1);
}

template <class Block>
std::string keyOf(const CatalogueEntry& /*entry*/, [[maybe_unused]] int id) {
    if constexpr (requires { Block::keyOf(id); }) // several names, by identifier
        return std::string(Block::keyOf(id));
    else if constexpr (requires { Block::table; })
        return Block::table.key;
    else if constexpr (requires { Block::keyName; })
        return std::string(Block::keyName);
    else
        return {};
}

template <class Block>
FieldList fieldsOf(const CatalogueEntry& /*entry*/, [[maybe_unused]] int id) {
    if constexpr (requires { Block::fieldsOf(id); }) { // a list that depends on the identifier
        return Block::fieldsOf(id);
    } else if constexpr (requires { Block::table; }) {
        return tableFields(Block::shape, Block::table);
    } else if constexpr (requires { typename Block::Record; }) {
        constexpr const auto& fields = recordFields<typename Block::Record>;
        return {fields.begin(), fields.end()};
    } else {
        return {};
    }
}

/// Bytes of a new block's image.
template <class Block>
consteval unsigned short sizeOf() {
    if constexpr (requires { Block::shape; })
        return static_cast<unsigned short>(Block::shape.size());
    else if constexpr (requires { typename Block::Record; })
        return sizeof(typename Block::Record);
    else
        return sizeof(HwSDatablockEnd);
}

/// Sends every field of the image through the conversion routine of the class: a temporary block of the class, made
/// without an image of its own, shares that of the block.
template <class Block>
void restoreAs(HwDatablock& block) {
    const ShortImages none(0);
    auto temporary = [] {
        if constexpr (std::default_initializable<Block>)
            return Block();
        else
            return Block(0); // takes an identifier, which the image has
    }();
    temporary.setDataWithoutChecksumCheck(&block);
    // In the firmware order while its fields are re-stored: their setters may compute checksums, which would ask for a
    // conversion of a foreign block again, and so on without end.
    temporary.setDataFormatTyp(HwDataFormatFirmware);
    using Record = typename Block::Record;
    const QMemArray<char> image = temporary.getByteArrayData();
    if (image.size() >= sizeof(Record)) {
        temporary.swapBlock(temporary.getBlock());
    } else { // a damaged block ends before its record does: what is missing reads as zero
        const auto record = std::make_unique<Record>();
        std::copy_n(image.data(), image.size(), reinterpret_cast<char*>(record.get()));
        temporary.swapBlock(record.get());
    }
}

/// A row that still knows its class.
template <class Block>
struct Row : CatalogueEntry {
    /// Blocks of this row are converted to another byte order: tables by taking themselves over, others through the
    /// `swapBlock` of their class.
    constexpr Row convertible() const {
        Row row = *this;
        if constexpr (std::derived_from<Block, TableBlock>)
            row.restore = [](HwDatablock& block) { TableBlock::takeOverItself(Block::shape, block); };
        else
            row.restore = restoreAs<Block>;
        return row;
    }

    /// The dictionary leaves this row out.
    constexpr Row unregistered() const {
        Row row = *this;
        row.registered = false;
        return row;
    }

    /// Blocks of this row come in another size as well.
    constexpr Row alsoOfSize(unsigned short size) const {
        Row row = *this;
        row.sizes[1] = size;
        return row;
    }
};

using Create = std::unique_ptr<HwDatablock> (*)(const CatalogueEntry& entry, int id);
using Key = std::string (*)(const CatalogueEntry& entry, int id);
using Fields = FieldList (*)(const CatalogueEntry& entry, int id);

/// A block as its base class: a pointer that knew the class, and its conversion, would be compiled once a class for
/// nothing.
template <class Block, class... Arguments>
std::unique_ptr<HwDatablock> made(Arguments... arguments) {
    return std::unique_ptr<HwDatablock>(new Block(arguments...));
}

/// Blocks that are made by a function of the row's own.
template <class Block>
constexpr Row<Block> rowsMadeBy(int first, int last, Create create, Key key = keyOf<Block>,
                                Fields fields = fieldsOf<Block>) {
    Row<Block> row{{.first = first,
                    .last = last,
                    .className = className<Block>(),
                    .registered = true,
                    .create = create,
                    .key = key,
                    .fields = fields,
                    .restore = nullptr}};
    if constexpr (requires { Block::exchange; })
        row.exchange = &Block::exchange;
    row.sizes[0] = sizeOf<Block>();
    return row;
}

/// A class that is made without arguments, its stop flag false or fixed.
template <class Block>
constexpr Row<Block> row(int first, int last) {
    return rowsMadeBy<Block>(first, last, [](const CatalogueEntry&, int) { return made<Block>(); });
}
template <class Block>
constexpr Row<Block> row(int id) {
    return row<Block>(id, id);
}

/// A class that is made with the stop flag, which is true.
template <class Block>
constexpr Row<Block> rowWithStopFlag(int id) {
    return rowsMadeBy<Block>(id, id, [](const CatalogueEntry&, int) { return made<Block>(true); });
}

/// The fields of an instance, by those of the first.
inline FieldList withAxesOf(int instance, FieldList list) {
    for (Field& field : list) {
        for (Dimension& dimension : field.dimensions) {
            if (dimension.axisBlock != 0)
                dimension.axisBlock += instance;
        }
    }
    return list;
}

/// A class that is made with its instance, counted from the first identifier, and further arguments. What labels its
/// tables exists once an instance, too, in the same order.
template <class Block, auto... Further>
constexpr Row<Block> rowsByInstance(int first, int last) {
    return rowsMadeBy<Block>(
        first, last, [](const CatalogueEntry& entry, int id) { return made<Block>(id - entry.first, Further...); },
        keyOf<Block>,
        [](const CatalogueEntry& entry, int id) { return withAxesOf(id - entry.first, fieldsOf<Block>(entry, id)); });
}

/// A class that is made with its identifier.
template <class Block>
constexpr Row<Block> rowsByIdentifier(int first, int last) {
    return rowsMadeBy<Block>(first, last, [](const CatalogueEntry&, int id) { return made<Block>(id); });
}

/// A table that is an instance of a template without a class of its own; its user type is double, its flag true.
template <template <class, class, class, unsigned int, unsigned int> class Template, class StoreT, unsigned int N,
          unsigned int M>
constexpr CatalogueEntry bareTable(const TableSpec& spec) {
    using Block = Template<MiscData<StoreT, N, M>, StoreT, double, N, M>;
    CatalogueEntry entry = rowsMadeBy<Block>(
        spec.id, spec.id,
        [](const CatalogueEntry& e, int id) {
            return made<Block>(e.table.key, static_cast<unsigned int>(id), 0U, e.table.scale, N, M, true);
        },
        [](const CatalogueEntry& e, int) -> std::string { return e.table.key; },
        [](const CatalogueEntry& e, int) { return tableFields(Block::shape, e.table); });
    entry.table = spec;
    return entry;
}

} // namespace Travik::detail
