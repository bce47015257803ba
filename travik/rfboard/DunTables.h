#pragma once

#include <travik/text/TableTemplates.h>
#include <travik/text/TextExchange.h>

/// Calibration and setting tables of the Dun RF board.
///
/// All are table blocks: layout, accessors in user units (stored value × scale factor), take-over, errors and text are
/// the template's. A constructor makes an empty table; `stop` is the base block's stop-conversion flag. Frequencies are
/// handed out in Hz; a data table has a column per frequency point.
namespace Travik {

/// Attenuator calibration: frequency points. Can be exchanged as text.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDunRfboAttCalFreq : public HwDatablockBaseTemplate<double, double, 200, 1>,
                                                             public TextExchange<HwDatablockDunRfboAttCalFreq> {
public:
    static constexpr TableSpec table{
        .id = 15760, .key = "BLOCK_DUN_RFBO_ATT_CAL_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    static const ExchangeFormat exchange;
    explicit HwDatablockDunRfboAttCalFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockDunRfboAttCalFreq = HwDatablockDunRfboAttCalFreq::Record;

/// Attenuator calibration: a row per attenuator setting (its index value), at the points of 15760.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDunRfboAttCalData : public HwDatablockBaseTemplateIndex<int, int, 40, 200> {
public:
    static constexpr TableSpec table{.id = 15761, .key = "BLOCK_DUN_RFBO_ATT_CAL_DATA", .columnAxis = 15760};
    explicit HwDatablockDunRfboAttCalData(bool stop = false) : HwDatablockBaseTemplateIndex(table, stop) {}
};
using HwSDatablockDunRfboAttCalData = HwDatablockDunRfboAttCalData::Record;

/// Temperature compensation: frequency points. Can be exchanged as text.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDunRfboTempCompFreq : public HwDatablockBaseTemplate<double, double, 50, 1>,
                                                               public TextExchange<HwDatablockDunRfboTempCompFreq> {
public:
    static constexpr TableSpec table{
        .id = 15770, .key = "BLOCK_DUN_RFBO_TEMP_COMP_FREQ", .unit = "Hz", .role = Role::Axis};
    static const ExchangeFormat exchange;
    explicit HwDatablockDunRfboTempCompFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockDunRfboTempCompFreq = HwDatablockDunRfboTempCompFreq::Record;

/// Temperature compensation: rows labelled by an index value, at the points of 15770. Can be exchanged as text,
/// without its index values.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDunRfboTempCompData : public HwDatablockBaseTemplateIndex<int, int, 80, 50>,
                                                               public TextExchange<HwDatablockDunRfboTempCompData> {
public:
    static constexpr TableSpec table{.id = 15771, .key = "BLOCK_DUN_RFBO_TEMP_COMP_DATA", .columnAxis = 15770};
    static const ExchangeFormat exchange;
    explicit HwDatablockDunRfboTempCompData(bool stop = false) : HwDatablockBaseTemplateIndex(table, stop) {}
};
using HwSDatablockDunRfboTempCompData = HwDatablockDunRfboTempCompData::Record;

/// Attenuations that belong to the register words of 15799. Can be exchanged as text, with two decimals.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDunRfboAttRegAttenuation
    : public HwDatablockBaseTemplate<float, float, 50, 4>,
      public TextExchange<HwDatablockDunRfboAttRegAttenuation> {
public:
    static constexpr TableSpec table{.id = 15798, .key = "DUN_RFBO_ATTREG_ATTENUATION"};
    static const ExchangeFormat exchange;
    explicit HwDatablockDunRfboAttRegAttenuation(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockDunRfboAttRegAttenuation = HwDatablockDunRfboAttRegAttenuation::Record;

/// Attenuator register words. Can be exchanged as text.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDunRfboAttRegData
    : public HwDatablockBaseTemplate<unsigned int, unsigned int, 50, 4>,
      public TextExchange<HwDatablockDunRfboAttRegData> {
public:
    static constexpr TableSpec table{.id = 15799, .key = "DUN_RFBO_ATTREG_DATA"};
    static const ExchangeFormat exchange;
    explicit HwDatablockDunRfboAttRegData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockDunRfboAttRegData = HwDatablockDunRfboAttRegData::Record;

} // namespace Travik
