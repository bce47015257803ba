#pragma once

#include <travik/service/Values.h>

#include <cstddef>
#include <span>
#include <string>
#include <vector>

/// The arrays of a block as tables that can be looked at: rows along one dimension, columns side by side.
namespace Travik {

/// One column: the elements of one field, every `step` elements from `first` on.
struct TableColumn {
    const FieldValues* values = nullptr;
    std::size_t first = 0;
    std::size_t step = 1;
    unsigned int index = 0; ///< in the column dimension; 0 where there is none

    std::size_t element(unsigned int row) const { return first + row * step; }
};

/// Columns over the same rows. Refers to the BlockValues that it was made of.
struct TRAVIK_SERVICE_EXPORT BlockTable {
    /// An index of a further dimension: the table holds what is stored there.
    struct Place {
        std::string_view dimension;
        std::size_t number; ///< of the dimension, from 0 on
        unsigned int index;
    };

    std::vector<std::string_view> fields; ///< names of those in it, each once
    std::vector<Place> places;            ///< in the dimensions that are neither rows nor columns
    unsigned int rows = 0;                ///< in use, or the whole capacity
    const ValueDimension* rowDimension = nullptr;
    /// Along which the columns of a field stand; null where each column is a field.
    const ValueDimension* columnDimension = nullptr;
    std::vector<TableColumn> columns; ///< none where the column dimension has no entry in use

    bool hasRowAxis() const { return rowDimension->axis != nullptr; }
    bool hasColumnAxis() const { return columnDimension && columnDimension->axis; }
    /// " (filter 2)"; empty where there is no further dimension.
    std::string place() const;
    /// What labels a row, with its unit: "3 GHz", else its number.
    std::string rowLabel(unsigned int row) const { return label(*rowDimension, row); }
    /// The same of a column of a field that has several.
    std::string columnLabel(const TableColumn& column) const { return label(*columnDimension, column.index); }
    /// What labels a row, without unit and with every digit, for a machine.
    std::string exactRowLabel(unsigned int row) const;
    /// The numbers that label the rows; empty where there are none.
    std::span<const double> rowNumbers() const {
        return hasRowAxis() ? labelsOf(*rowDimension->axis) : std::span<const double>();
    }

private:
    std::span<const double> labelsOf(const Axis& axis) const;
    std::string label(const ValueDimension& dimension, unsigned int entry) const;
};

/// The tables of some fields of a block, in the order of the image. Fields of one dimension that run along the same one
/// make one table. Of several dimensions the rows go along the one whose axis is known, else along the longest; the
/// columns along the last of the others; for each index of what is left there is a table of its own.
TRAVIK_SERVICE_EXPORT std::vector<BlockTable> tablesOf(std::span<const FieldValues* const> fields, bool isWhole);

/// Whether nothing is stored in an array but bytes without a meaning that is known.
TRAVIK_SERVICE_EXPORT bool isPlainBytes(const FieldValues& values);

/// What the entries of a dimension of a block are: "RFBO_ATT_CAL_FREQ (15720)", "filter", "row, not fitting
/// RFBO_ATT_CAL_FREQ (15720)".
TRAVIK_SERVICE_EXPORT std::string dimensionTitle(const ValueDimension& dimension, int block);

/// What the labels of a dimension of a block are called: the key of the block that holds them; where that is the block
/// itself, or has no key, the field.
TRAVIK_SERVICE_EXPORT std::string axisName(const ValueDimension& dimension, int block);

} // namespace Travik
