#pragma once

#include <travik/text/TableTemplates.h>
#include <travik/text/TextExchange.h>

/// Calibration and setting tables of the Kel RF board.
///
/// All are table blocks: layout, accessors in user units (stored value × scale factor), take-over, errors and text are
/// the template's. A constructor makes an empty table; `stop` is the base block's stop-conversion flag. Frequencies are
/// handed out in Hz; a data table has a column per frequency point.
namespace Travik {

/// External input: gain.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboExtInGain : public HwDatablockBaseTemplate<int, int, 10, 1> {
public:
    static constexpr TableSpec table{.id = 15700, .key = "RFBO_EXTIN_GAIN"};
    explicit HwDatablockKelRfboExtInGain(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboExtInGain = HwDatablockKelRfboExtInGain::Record;

/// External input: offset.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboExtInOffset : public HwDatablockBaseTemplate<int, int, 10, 1> {
public:
    static constexpr TableSpec table{.id = 15701, .key = "RFBO_EXTIN_OFFSET"};
    explicit HwDatablockKelRfboExtInOffset(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboExtInOffset = HwDatablockKelRfboExtInOffset::Record;

/// Detector tuning: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboDetTuneFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 128, 1> {
public:
    static constexpr TableSpec table{
        .id = 15705, .key = "RFBO_DET_TUNE_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockKelRfboDetTuneFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboDetTuneFreq = HwDatablockKelRfboDetTuneFreq::Record;

/// Detector tuning: two rows of values at the points of 15705.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboDetTuneData : public HwDatablockBaseTemplate<int, int, 2, 128> {
public:
    static constexpr TableSpec table{.id = 15706, .key = "RFBO_DET_TUNE_DATA", .columnAxis = 15705};
    explicit HwDatablockKelRfboDetTuneData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboDetTuneData = HwDatablockKelRfboDetTuneData::Record;

/// Calibration of the temperature-compensated reference oscillator.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboTcxoCal : public HwDatablockBaseTemplate<int, int, 8, 1> {
public:
    static constexpr TableSpec table{.id = 15710, .key = "RFBO_TCXO_CAL"};
    explicit HwDatablockKelRfboTcxoCal(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboTcxoCal = HwDatablockKelRfboTcxoCal::Record;

/// Maximum RF level: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboRfLevelMaxFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 128, 1> {
public:
    static constexpr TableSpec table{
        .id = 15715, .key = "RFBO_RFLEVEL_MAX_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockKelRfboRfLevelMaxFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboRfLevelMaxFreq = HwDatablockKelRfboRfLevelMaxFreq::Record;

/// Maximum RF level: two rows at the points of 15715, stored in hundredths.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboRfLevelMaxData : public HwDatablockBaseTemplate<int, double, 2, 128> {
public:
    static constexpr TableSpec table{.id = 15716, .key = "RFBO_RFLEVEL_MAX_DATA", .scale = 0.01, .columnAxis = 15715};
    explicit HwDatablockKelRfboRfLevelMaxData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboRfLevelMaxData = HwDatablockKelRfboRfLevelMaxData::Record;

/// Attenuator calibration: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboAttCalFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 200, 1> {
public:
    static constexpr TableSpec table{
        .id = 15720, .key = "RFBO_ATT_CAL_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockKelRfboAttCalFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboAttCalFreq = HwDatablockKelRfboAttCalFreq::Record;

/// Attenuator calibration: a row per attenuator setting (its index value), at the points of 15720.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboAttCalData : public HwDatablockBaseTemplateIndex<int, int, 27, 200> {
public:
    static constexpr TableSpec table{.id = 15721, .key = "RFBO_ATT_CAL_DATA", .columnAxis = 15720};
    explicit HwDatablockKelRfboAttCalData(bool stop = false) : HwDatablockBaseTemplateIndex(table, stop) {}
};
using HwSDatablockKelRfboAttCalData = HwDatablockKelRfboAttCalData::Record;

/// External calibration: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboExtCalFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 350, 1> {
public:
    static constexpr TableSpec table{
        .id = 15725, .key = "RFBO_EXT_CAL_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockKelRfboExtCalFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboExtCalFreq = HwDatablockKelRfboExtCalFreq::Record;

/// External calibration: five rows at the points of 15725.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboExtCalData : public HwDatablockBaseTemplate<int, int, 5, 350> {
public:
    static constexpr TableSpec table{.id = 15726, .key = "RFBO_EXT_CAL_DATA", .columnAxis = 15725};
    explicit HwDatablockKelRfboExtCalData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboExtCalData = HwDatablockKelRfboExtCalData::Record;

/// Automatic level control: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboAlcFreq : public HwDatablockBaseTemplate<unsigned int, double, 10, 1> {
public:
    static constexpr TableSpec table{
        .id = 15730, .key = "RFBO_ALC_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockKelRfboAlcFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboAlcFreq = HwDatablockKelRfboAlcFreq::Record;

/// Automatic level control: four rows at the points of 15730.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboAlcData : public HwDatablockBaseTemplate<int, int, 4, 10> {
public:
    static constexpr TableSpec table{.id = 15731, .key = "RFBO_ALC_DATA", .columnAxis = 15730};
    explicit HwDatablockKelRfboAlcData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboAlcData = HwDatablockKelRfboAlcData::Record;

/// Temperature compensation: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboTempFreq : public HwDatablockBaseTemplate<unsigned int, double, 50, 1> {
public:
    static constexpr TableSpec table{
        .id = 15735, .key = "RFBO_TEMP_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockKelRfboTempFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboTempFreq = HwDatablockKelRfboTempFreq::Record;

/// Temperature compensation: gradients at the points of 15735.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboTempGradient : public HwDatablockBaseTemplate<int, int, 6, 50> {
public:
    static constexpr TableSpec table{.id = 15740, .key = "RFBO_TEMP_GRADIENT", .columnAxis = 15735};
    explicit HwDatablockKelRfboTempGradient(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboTempGradient = HwDatablockKelRfboTempGradient::Record;

/// Temperature compensation: offsets at the points of 15735.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboTempOffset : public HwDatablockBaseTemplate<int, int, 6, 50> {
public:
    static constexpr TableSpec table{.id = 15745, .key = "RFBO_TEMP_OFFSET", .columnAxis = 15735};
    explicit HwDatablockKelRfboTempOffset(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboTempOffset = HwDatablockKelRfboTempOffset::Record;

/// Attenuator register words. Can be exchanged as text.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboAttRegData
    : public HwDatablockBaseTemplate<unsigned int, unsigned int, 50, 1>,
      public TextExchange<HwDatablockKelRfboAttRegData> {
public:
    static constexpr TableSpec table{.id = 15750, .key = "RFBO_ATTREG_DATA"};
    static const ExchangeFormat exchange;
    explicit HwDatablockKelRfboAttRegData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboAttRegData = HwDatablockKelRfboAttRegData::Record;

/// S/H: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboSHFreq : public HwDatablockBaseTemplate<unsigned int, double, 150, 1> {
public:
    static constexpr TableSpec table{
        .id = 15755, .key = "RFBO_S_H_FREQ", .scale = 10.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockKelRfboSHFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboSHFreq = HwDatablockKelRfboSHFreq::Record;

/// S/H: rows labelled by an index value, at the points of 15755.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboSHData : public HwDatablockBaseTemplateIndex<int, int, 35, 150> {
public:
    static constexpr TableSpec table{.id = 15756, .key = "RFBO_S_H_DATA", .columnAxis = 15755};
    explicit HwDatablockKelRfboSHData(bool stop = false) : HwDatablockBaseTemplateIndex(table, stop) {}
};
using HwSDatablockKelRfboSHData = HwDatablockKelRfboSHData::Record;

/// The user's external calibration: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboExtCalUserFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 750, 1> {
public:
    static constexpr TableSpec table{
        .id = 16000, .key = "RFBO_EXT_CAL_USER_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockKelRfboExtCalUserFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockKelRfboExtCalUserFreq = HwDatablockKelRfboExtCalUserFreq::Record;

/// The user's external calibration: ten descriptors and five rows at the points of 16000.
class TRAVIK_DATABLOCK_EXPORT HwDatablockKelRfboExtCalUserData
    : public HwDatablockBaseTemplateExtended<int, int, 10, 5, 750> {
public:
    static constexpr TableSpec table{.id = 16001, .key = "RFBO_EXT_CAL_USER_DATA", .columnAxis = 16000};
    explicit HwDatablockKelRfboExtCalUserData(bool stop = false) : HwDatablockBaseTemplateExtended(table, stop) {}
};
using HwSDatablockKelRfboExtCalUserData = HwDatablockKelRfboExtCalUserData::Record;

} // namespace Travik
