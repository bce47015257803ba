#pragma once

#include <travik/datablock/Fields.h>

#include <deque>
#include <span>
#include <string>

namespace Travik {

/// The field list of one second-edition table, as its own header and column types make it.
///
/// In image order: `checksum32`, `update_index`, `rows`, `columns`, `row_id_type`, `column_id_type`, `column_types`,
/// then `row_ids` and `column_ids` where the table has them, then the values: `values` (rows × columns) where all
/// columns have one type, otherwise `column_0`, `column_1` and so on, each with a value a row. The type `NONE` has no
/// field. In the packed layout `update_index` is the upper half of `checksum32`.
///
/// Dimensions are named "row" and "column"; the table labels them itself (`Dimension::axisBlock` is its own
/// identifier).
class TRAVIK_DATABLOCK_EXPORT SecondEditionFields {
public:
    /// Of a block that `HwDatablock2Edition::fits`; empty for one that does not.
    explicit SecondEditionFields(std::span<const char> block);
    SecondEditionFields(const SecondEditionFields&) = delete;
    SecondEditionFields& operator=(const SecondEditionFields&) = delete;
    SecondEditionFields(SecondEditionFields&&) = default;
    SecondEditionFields& operator=(SecondEditionFields&&) = default;
    ~SecondEditionFields() = default;

    /// Valid as long as this object, from which the names come.
    const FieldList& fields() const { return fields_; }

private:
    FieldList fields_;
    std::deque<std::string> names_; // a deque, since the fields point into its strings
};

} // namespace Travik
