#pragma once

#include <travik/text/TableTemplates.h>

/// Temperature compensation of the SATTC step attenuator.
///
/// All are table blocks: layout, accessors in user units (stored value × scale factor), take-over, errors and text are
/// the template's. A constructor makes an empty table; `stop` is the base block's stop-conversion flag. Frequencies are
/// handed out in Hz; a data table has a column per frequency point.
namespace Travik {

/// Temperature compensation: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAttCTempFreq : public HwDatablockBaseTemplate<unsigned int, double, 50, 1> {
public:
    static constexpr TableSpec table{
        .id = 11305, .key = "SATT_TEMP_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockSAttCTempFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockSAttCTempFreq = HwDatablockSAttCTempFreq::Record;

/// Temperature compensation: four rows of gradients at the points of 11305.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAttCTempGradient : public HwDatablockBaseTemplate<int, double, 4, 50> {
public:
    static constexpr TableSpec table{.id = 11306, .key = "SATT_TEMP_GRADIENT", .columnAxis = 11305};
    explicit HwDatablockSAttCTempGradient(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockSAttCTempGradient = HwDatablockSAttCTempGradient::Record;

/// Temperature compensation: four rows of offsets at the points of 11305.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAttCTempOffset : public HwDatablockBaseTemplate<int, double, 4, 50> {
public:
    static constexpr TableSpec table{.id = 11307, .key = "SATT_TEMP_OFFSET", .columnAxis = 11305};
    explicit HwDatablockSAttCTempOffset(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockSAttCTempOffset = HwDatablockSAttCTempOffset::Record;

} // namespace Travik
