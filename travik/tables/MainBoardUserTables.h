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
    static constexpr TableSpec table{.id = 14801, .key = "IQ_INPUT_A"};
    explicit HwDatablockMbrdIqInputA(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockMbrdIqInputA = HwDatablockMbrdIqInputA::Record;

/// IQ input of path B.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdIqInputB : public HwDatablockBaseTemplate<int, int, 10, 1> {
public:
    static constexpr TableSpec table{.id = 14802, .key = "IQ_INPUT_B"};
    explicit HwDatablockMbrdIqInputB(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockMbrdIqInputB = HwDatablockMbrdIqInputB::Record;

/// The user's external calibration of path A: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtCalUserFreqA
    : public HwDatablockBaseTemplate<unsigned int, double, 600, 1> {
public:
    static constexpr TableSpec table{
        .id = 14803, .key = "EXT_CAL_USER_FREQ_A", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockMbrdExtCalUserFreqA(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockMbrdExtCalUserFreqA = HwDatablockMbrdExtCalUserFreqA::Record;

/// The user's external calibration of path B: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtCalUserFreqB
    : public HwDatablockBaseTemplate<unsigned int, double, 600, 1> {
public:
    static constexpr TableSpec table{
        .id = 14804, .key = "EXT_CAL_USER_FREQ_B", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockMbrdExtCalUserFreqB(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockMbrdExtCalUserFreqB = HwDatablockMbrdExtCalUserFreqB::Record;

/// The user's external calibration of path A: ten descriptors and up to 13 rows at the points of 14803.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtCalUserDataA
    : public HwDatablockBaseTemplateExtended<short, int, 10, 13, 600> {
public:
    static constexpr TableSpec table{.id = 14805, .key = "EXT_CAL_USER_DATA_A", .columnAxis = 14803};
    explicit HwDatablockMbrdExtCalUserDataA(bool stop = false) : HwDatablockBaseTemplateExtended(table, stop) {}
};
using HwSDatablockMbrdExtCalUserDataA = HwDatablockMbrdExtCalUserDataA::Record;

/// The user's external calibration of path B: ten descriptors and up to 13 rows at the points of 14804.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtCalUserDataB
    : public HwDatablockBaseTemplateExtended<short, int, 10, 13, 600> {
public:
    static constexpr TableSpec table{.id = 14806, .key = "EXT_CAL_USER_DATA_B", .columnAxis = 14804};
    explicit HwDatablockMbrdExtCalUserDataB(bool stop = false) : HwDatablockBaseTemplateExtended(table, stop) {}
};
using HwSDatablockMbrdExtCalUserDataB = HwDatablockMbrdExtCalUserDataB::Record;

} // namespace Travik
