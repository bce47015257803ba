#pragma once

#include <travik/text/TableTemplates.h>

/// Tables of the main board that the user fills: IQ inputs and external calibration of the paths A and B.
///
/// All are table blocks: layout, accessors in user units (stored value × scale factor), take-over, errors and text are
/// the template's. A constructor makes an empty table; `stop` is the base block's stop-conversion flag. Frequencies are
/// handed out in Hz; a data table has a column per frequency point.
namespace Travik {

/// IQ input of path A.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdIqInputA : public HwDatablockBaseTemplate<int, int, 10, 1> {
public:
    static constexpr TableSpec table{14801, "IQ_INPUT_A", 1.0};
    explicit HwDatablockMbrdIqInputA(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockMbrdIqInputA = HwDatablockMbrdIqInputA::Record;

/// IQ input of path B.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdIqInputB : public HwDatablockBaseTemplate<int, int, 10, 1> {
public:
    static constexpr TableSpec table{14802, "IQ_INPUT_B", 1.0};
    explicit HwDatablockMbrdIqInputB(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockMbrdIqInputB = HwDatablockMbrdIqInputB::Record;

/// The user's external calibration of path A: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtCalUserFreqA
    : public HwDatablockBaseTemplate<unsigned int, double, 600, 1> {
public:
    static constexpr TableSpec table{14803, "EXT_CAL_USER_FREQ_A", 100.0, "Hz", Role::Axis};
    explicit HwDatablockMbrdExtCalUserFreqA(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockMbrdExtCalUserFreqA = HwDatablockMbrdExtCalUserFreqA::Record;

/// The user's external calibration of path B: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtCalUserFreqB
    : public HwDatablockBaseTemplate<unsigned int, double, 600, 1> {
public:
    static constexpr TableSpec table{14804, "EXT_CAL_USER_FREQ_B", 100.0, "Hz", Role::Axis};
    explicit HwDatablockMbrdExtCalUserFreqB(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockMbrdExtCalUserFreqB = HwDatablockMbrdExtCalUserFreqB::Record;

/// The user's external calibration of path A: ten descriptors and up to 13 rows at the points of 14803.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtCalUserDataA
    : public HwDatablockBaseTemplateExtended<short, int, 10, 13, 600> {
public:
    static constexpr TableSpec table{14805, "EXT_CAL_USER_DATA_A", 1.0, "", Role::Value, 0, -2};
    explicit HwDatablockMbrdExtCalUserDataA(bool stop = false) : HwDatablockBaseTemplateExtended(table, stop) {}
};
using HwSDatablockMbrdExtCalUserDataA = HwDatablockMbrdExtCalUserDataA::Record;

/// The user's external calibration of path B: ten descriptors and up to 13 rows at the points of 14804.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtCalUserDataB
    : public HwDatablockBaseTemplateExtended<short, int, 10, 13, 600> {
public:
    static constexpr TableSpec table{14806, "EXT_CAL_USER_DATA_B", 1.0, "", Role::Value, 0, -2};
    explicit HwDatablockMbrdExtCalUserDataB(bool stop = false) : HwDatablockBaseTemplateExtended(table, stop) {}
};
using HwSDatablockMbrdExtCalUserDataB = HwDatablockMbrdExtCalUserDataB::Record;

} // namespace Travik
