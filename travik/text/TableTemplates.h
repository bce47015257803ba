#pragma once

#include <travik/text/TableBlock.h>

namespace Travik {

/// The typed image of a table.
#pragma pack(push, 1)
template <class StoreT, unsigned int N, unsigned int M>
struct MiscData : HwSDatablockHeader {
    unsigned int rows;
    unsigned int columns;
    StoreT values[N][M];

    friend bool operator==(const MiscData&, const MiscData&) = default;
};

template <class StoreT, unsigned int N, unsigned int M>
struct HwSDatablockIndexTable : MiscData<StoreT, N, M> {
    int index[N];

    friend bool operator==(const HwSDatablockIndexTable&, const HwSDatablockIndexTable&) = default;
};

template <class StoreT, unsigned int D, unsigned int N, unsigned int M>
struct HwSDatablockExtendedTable : HwSDatablockHeader {
    char descriptors[D][TableShape::descriptorLength];
    unsigned int rows;
    unsigned int columns;
    StoreT values[N][M];

    friend bool operator==(const HwSDatablockExtendedTable&, const HwSDatablockExtendedTable&) = default;
};
#pragma pack(pop)

namespace detail {

constexpr TableShape indexedShape(TableShape shape) {
    shape.indexed = true;
    return shape;
}

constexpr TableShape extendedShape(TableShape shape, unsigned int descriptors) {
    shape.descriptors = descriptors;
    return shape;
}

constexpr TableShape limitedShape(TableShape shape, unsigned int decimals, bool checked) {
    shape.printsUserType = false;
    shape.decimals = decimals;
    shape.checked = checked;
    return shape;
}

/// Typed access to a table of one shape.
template <const TableShape& Shape, class RecordT, class UserT>
class TypedTable : public TableBlock {
public:
    using Record = RecordT;
    static constexpr const TableShape& shape = Shape;
    static_assert(sizeof(Record) == Shape.size() && Shape.size() <= 0xFFFF);

    /// The buffer as the typed image.
    Record* getBlock() { return reinterpret_cast<Record*>(getData()); }
    /// Takes a typed image over: 0, or 1 and error 1040001 (with the image's identifier as text) when its checksum is
    /// wrong; a `HwDatablockTemplateWithoutChecksum` takes any.
    int setBlock(const Record* record) { return takeOver(record); }

    /// In user units: stored value × scale factor, integers truncated toward zero.
    UserT getValue(unsigned int row, unsigned int column) const { return static_cast<UserT>(userValue(row, column)); }
    /// Stores the nearest value that the image can hold.
    void setValue(UserT value, unsigned int row, unsigned int column) {
        storeProduct(static_cast<double>(value), row, column);
    }

    int getIndexValue(unsigned int row) const requires(Shape.indexed) { return indexValue(row); }
    void setIndexValue(int value, unsigned int row) requires(Shape.indexed) { storeIndexValue(value, row); }

    /// At most 16 characters.
    QString getDescriptor(unsigned int index) const requires(Shape.descriptors > 0) { return descriptor(index); }
    void setDescriptor(const QString& text, unsigned int index) requires(Shape.descriptors > 0) {
        storeDescriptor(text, index);
    }

protected:
    TypedTable(const char* keyName, unsigned int idBase, unsigned int idOffset, double scaleFactor,
               unsigned int maxRows, unsigned int maxColumns, bool stopConversionOnError)
        : TableBlock(Shape, keyName, idBase, idOffset, scaleFactor, maxRows, maxColumns, stopConversionOnError) {}
};

template <class StoreT, class UserT, unsigned int N, unsigned int M>
inline constexpr TableShape baseShape = TableShape::of<StoreT, UserT>(N, M);
template <class StoreT, class UserT, unsigned int N, unsigned int M>
inline constexpr TableShape indexShape = indexedShape(baseShape<StoreT, UserT, N, M>);
template <class StoreT, class UserT, unsigned int D, unsigned int N, unsigned int M>
inline constexpr TableShape descriptorShape = extendedShape(baseShape<StoreT, UserT, N, M>, D);
template <class StoreT, class UserT, unsigned int N, unsigned int M, unsigned int Decimals, bool Checked>
inline constexpr TableShape miscShape = limitedShape(baseShape<StoreT, UserT, N, M>, Decimals, Checked);

} // namespace detail

/// N rows by M columns of StoreT; printed as UserT with three decimals.
template <class StoreT, class UserT, unsigned int N, unsigned int M>
class TRAVIK_DATABLOCK_EXPORT HwDatablockBaseTemplate
    : public detail::TypedTable<detail::baseShape<StoreT, UserT, N, M>, MiscData<StoreT, N, M>, UserT> {
public:
    HwDatablockBaseTemplate(const char* keyName, unsigned int idBase, unsigned int idOffset, double scaleFactor,
                            bool stopConversionOnError)
        : HwDatablockBaseTemplate::TypedTable(keyName, idBase, idOffset, scaleFactor, N, M, stopConversionOnError) {}
    /// Key name, identifier and scale factor as the description says.
    HwDatablockBaseTemplate(const TableSpec& spec, bool stopConversionOnError)
        : HwDatablockBaseTemplate(spec.key, static_cast<unsigned int>(spec.id), 0, spec.scale, stopConversionOnError) {}
};

/// As the base template, plus one signed 32-bit index value per row, which labels the row in the text.
template <class StoreT, class UserT, unsigned int N, unsigned int M>
class TRAVIK_DATABLOCK_EXPORT HwDatablockBaseTemplateIndex
    : public detail::TypedTable<detail::indexShape<StoreT, UserT, N, M>, HwSDatablockIndexTable<StoreT, N, M>, UserT> {
public:
    HwDatablockBaseTemplateIndex(const char* keyName, unsigned int idBase, unsigned int idOffset, double scaleFactor,
                                 bool stopConversionOnError)
        : HwDatablockBaseTemplateIndex::TypedTable(keyName, idBase, idOffset, scaleFactor, N, M,
                                                   stopConversionOnError) {}
    /// Key name, identifier and scale factor as the description says.
    HwDatablockBaseTemplateIndex(const TableSpec& spec, bool stopConversionOnError)
        : HwDatablockBaseTemplateIndex(spec.key, static_cast<unsigned int>(spec.id), 0, spec.scale,
                                       stopConversionOnError) {}
};

/// D descriptors of 16 characters, then a table as of the base template.
template <class StoreT, class UserT, unsigned int D, unsigned int N, unsigned int M>
class TRAVIK_DATABLOCK_EXPORT HwDatablockBaseTemplateExtended
    : public detail::TypedTable<detail::descriptorShape<StoreT, UserT, D, N, M>,
                                HwSDatablockExtendedTable<StoreT, D, N, M>, UserT> {
public:
    HwDatablockBaseTemplateExtended(const char* keyName, unsigned int idBase, unsigned int idOffset, double scaleFactor,
                                    bool stopConversionOnError)
        : HwDatablockBaseTemplateExtended::TypedTable(keyName, idBase, idOffset, scaleFactor, N, M,
                                                      stopConversionOnError) {}
    /// Key name, identifier and scale factor as the description says.
    HwDatablockBaseTemplateExtended(const TableSpec& spec, bool stopConversionOnError)
        : HwDatablockBaseTemplateExtended(spec.key, static_cast<unsigned int>(spec.id), 0, spec.scale,
                                          stopConversionOnError) {}
};

/// As the base template, with row and column limits given at run time; printed unconverted with five decimals. RecordT
/// is `MiscData` of StoreT, N and M.
template <class RecordT, class StoreT, class UserT, unsigned int N, unsigned int M>
class TRAVIK_DATABLOCK_EXPORT HwDatablockTemplate
    : public detail::TypedTable<detail::miscShape<StoreT, UserT, N, M, 5, true>, RecordT, UserT> {
public:
    HwDatablockTemplate(const char* keyName, unsigned int idBase, unsigned int idOffset, double scaleFactor,
                        unsigned int maxRows, unsigned int maxColumns, bool stopConversionOnError)
        : HwDatablockTemplate::TypedTable(keyName, idBase, idOffset, scaleFactor, maxRows, maxColumns,
                                          stopConversionOnError) {}
};

/// As `HwDatablockTemplate`; takes records over whatever their checksum, and prints three decimals.
template <class RecordT, class StoreT, class UserT, unsigned int N, unsigned int M>
class TRAVIK_DATABLOCK_EXPORT HwDatablockTemplateWithoutChecksum
    : public detail::TypedTable<detail::miscShape<StoreT, UserT, N, M, 3, false>, RecordT, UserT> {
public:
    HwDatablockTemplateWithoutChecksum(const char* keyName, unsigned int idBase, unsigned int idOffset,
                                       double scaleFactor, unsigned int maxRows, unsigned int maxColumns,
                                       bool stopConversionOnError)
        : HwDatablockTemplateWithoutChecksum::TypedTable(keyName, idBase, idOffset, scaleFactor, maxRows, maxColumns,
                                                         stopConversionOnError) {}
};

} // namespace Travik
