#pragma once

#include <travik/text/TableTemplates.h>

#include <array>

/// Calibration and setting tables of the Tovi vector (IQ) section, and of the stereo coder.
///
/// All are table blocks: layout, accessors in user units (stored value × scale factor), take-over, errors and text are
/// the template's. A constructor makes an empty table; `stop` is the base block's stop-conversion flag. Frequencies are
/// handed out in Hz; a data table has a column per frequency point.
namespace Travik {

/// Coefficients of the stereo coder.
class TRAVIK_DATABLOCK_EXPORT HwDatablockStereocoderCo : public HwDatablockBaseTemplate<short, short, 6, 1> {
public:
    static constexpr TableSpec table{.id = 15690, .key = "STEREOCODER_CO"};
    explicit HwDatablockStereocoderCo(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockStereocoderCo = HwDatablockStereocoderCo::Record;

/// Maximum RF level: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorRfLevelMaxFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 128, 1> {
public:
    static constexpr TableSpec table{
        .id = 15800, .key = "VECTOR_RFLEVEL_MAX_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockToviVectorRfLevelMaxFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviVectorRfLevelMaxFreq = HwDatablockToviVectorRfLevelMaxFreq::Record;

/// Maximum RF level at the points of 15800, stored in hundredths.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorRfLevelMaxData
    : public HwDatablockBaseTemplate<int, double, 1, 128> {
public:
    static constexpr TableSpec table{.id = 15801, .key = "VECTOR_RFLEVEL_MAX_DATA", .scale = 0.01, .columnAxis = 15800};
    explicit HwDatablockToviVectorRfLevelMaxData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviVectorRfLevelMaxData = HwDatablockToviVectorRfLevelMaxData::Record;

/// Automatic level control: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorAlcFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 32, 1> {
public:
    static constexpr TableSpec table{
        .id = 15810, .key = "VECTOR_ALC_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockToviVectorAlcFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviVectorAlcFreq = HwDatablockToviVectorAlcFreq::Record;

/// Automatic level control: four rows at the points of 15810.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorAlcData
    : public HwDatablockBaseTemplate<unsigned int, double, 4, 32> {
public:
    static constexpr TableSpec table{.id = 15811, .key = "VECTOR_ALC_DATA", .scale = 100.0, .columnAxis = 15810};
    explicit HwDatablockToviVectorAlcData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviVectorAlcData = HwDatablockToviVectorAlcData::Record;

/// Automatic level control, IQ normal: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorAlcIqNormFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 32, 1> {
public:
    static constexpr TableSpec table{
        .id = 15820, .key = "VECTOR_ALC_IQNORM_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockToviVectorAlcIqNormFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviVectorAlcIqNormFreq = HwDatablockToviVectorAlcIqNormFreq::Record;

/// Automatic level control, IQ normal: four rows at the points of 15820.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorAlcIqNormData
    : public HwDatablockBaseTemplate<unsigned int, double, 4, 32> {
public:
    static constexpr TableSpec table{.id = 15821, .key = "VECTOR_ALC_IQNORM_DATA", .columnAxis = 15820};
    explicit HwDatablockToviVectorAlcIqNormData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviVectorAlcIqNormData = HwDatablockToviVectorAlcIqNormData::Record;

/// Automatic level control, IQ wide: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorAlcIqWideFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 32, 1> {
public:
    static constexpr TableSpec table{
        .id = 15830, .key = "VECTOR_ALC_IQWIDE_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockToviVectorAlcIqWideFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviVectorAlcIqWideFreq = HwDatablockToviVectorAlcIqWideFreq::Record;

/// Automatic level control, IQ wide: four rows at the points of 15830.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorAlcIqWideData
    : public HwDatablockBaseTemplate<unsigned int, double, 4, 32> {
public:
    static constexpr TableSpec table{.id = 15831, .key = "VECTOR_ALC_IQWIDE_DATA", .columnAxis = 15830};
    explicit HwDatablockToviVectorAlcIqWideData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviVectorAlcIqWideData = HwDatablockToviVectorAlcIqWideData::Record;

/// External calibration, vector: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviRfBoExtCalVecFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 292, 1> {
public:
    static constexpr TableSpec table{
        .id = 15840, .key = "RFBO_EXT_CAL_VEC_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockToviRfBoExtCalVecFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviRfBoExtCalVecFreq = HwDatablockToviRfBoExtCalVecFreq::Record;

/// External calibration, vector: four rows at the points of 15840.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviRfBoExtCalVecData : public HwDatablockBaseTemplate<int, int, 4, 292> {
public:
    static constexpr TableSpec table{.id = 15841, .key = "RFBO_EXT_CAL_VEC_DATA", .columnAxis = 15840};
    explicit HwDatablockToviRfBoExtCalVecData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviRfBoExtCalVecData = HwDatablockToviRfBoExtCalVecData::Record;

/// Attenuator calibration, vector: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviRfboAttCalVecFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 20, 1> {
public:
    static constexpr TableSpec table{.id = 15842, .key = "RFBO_ATT_CAL_VEC_FREQ", .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockToviRfboAttCalVecFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviRfboAttCalVecFreq = HwDatablockToviRfboAttCalVecFreq::Record;

/// Attenuator calibration, vector: a row per attenuator setting (its index value), at the points of 15842.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviRfboAttCalVecData : public HwDatablockBaseTemplateIndex<int, int, 27, 20> {
public:
    static constexpr TableSpec table{.id = 15843, .key = "RFBO_ATT_CAL_VEC_DATA", .columnAxis = 15842};
    explicit HwDatablockToviRfboAttCalVecData(bool stop = false) : HwDatablockBaseTemplateIndex(table, stop) {}
};
using HwSDatablockToviRfboAttCalVecData = HwDatablockToviRfboAttCalVecData::Record;

/// Maximum RF level, vector: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviRfboRfLevelMaxVecFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 128, 1> {
public:
    static constexpr TableSpec table{
        .id = 15844, .key = "RFBO_RFLEVEL_MAX_VEC_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockToviRfboRfLevelMaxVecFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviRfboRfLevelMaxVecFreq = HwDatablockToviRfboRfLevelMaxVecFreq::Record;

/// Maximum RF level, vector, at the points of 15844, stored in hundredths.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviRfboRfLevelMaxVecData
    : public HwDatablockBaseTemplate<int, double, 1, 128> {
public:
    static constexpr TableSpec table{
        .id = 15845, .key = "RFBO_RFLEVEL_MAX_VEC_DATA", .scale = 0.01, .columnAxis = 15844};
    explicit HwDatablockToviRfboRfLevelMaxVecData(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviRfboRfLevelMaxVecData = HwDatablockToviRfboRfLevelMaxVecData::Record;

/// Level control: temperatures, one signed byte each.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorLevconTemp : public HwDatablockBaseTemplate<char, double, 12, 1> {
public:
    static constexpr TableSpec table{.id = 15850, .key = "VECTOR_LEVCON_TEMP"};
    explicit HwDatablockToviVectorLevconTemp(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviVectorLevconTemp = HwDatablockToviVectorLevconTemp::Record;

/// Level control: frequency points of the temperature data.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorLevconTempFreq
    : public HwDatablockBaseTemplate<unsigned short, double, 64, 1> {
public:
    static constexpr TableSpec table{.id = 15851, .key = "VECTOR_LEVCON_TEMP_FREQ", .role = Role::Axis};
    explicit HwDatablockToviVectorLevconTempFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviVectorLevconTempFreq = HwDatablockToviVectorLevconTempFreq::Record;

/// Level control: control points of the temperature data.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorLevconTempLevcon
    : public HwDatablockBaseTemplate<unsigned short, double, 50, 1> {
public:
    static constexpr TableSpec table{.id = 15852, .key = "VECTOR_LEVCON_TEMP_LEVCON", .role = Role::Axis};
    explicit HwDatablockToviVectorLevconTempLevcon(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviVectorLevconTempLevcon = HwDatablockToviVectorLevconTempLevcon::Record;

/// Level control: the data of one of ten temperatures, identifiers 15853 to 15862; a row per frequency point of 15851,
/// a column per control point of 15852.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviVectorLevconTempData
    : public HwDatablockBaseTemplate<unsigned short, double, 64, 50> {
public:
    static constexpr TableSpec table{.id = 15853, .rowAxis = 15851, .columnAxis = 15852};
    /// Of the identifiers one after the other.
    static constexpr std::array keyNames{
        "_DatablockId_Tovi_Vector_Levcon_Temp_Data00_", "_DatablockId_Tovi_Vector_Levcon_Temp_Data01_",
        "_DatablockId_Tovi_Vector_Levcon_Temp_Data02_", "_DatablockId_Tovi_Vector_Levcon_Temp_Data03_",
        "_DatablockId_Tovi_Vector_Levcon_Temp_Data04_", "_DatablockId_Tovi_Vector_Levcon_Temp_Data05_",
        "_DatablockId_Tovi_Vector_Levcon_Temp_Data06_", "_DatablockId_Tovi_Vector_Levcon_Temp_Data07_",
        "_DatablockId_Tovi_Vector_Levcon_Temp_Data08_", "_DatablockId_Tovi_Vector_Levcon_Temp_Data09_",
    };
    static constexpr const char* keyOf(int id) {
        return id >= table.id && id < table.id + static_cast<int>(keyNames.size())
                   ? keyNames[static_cast<std::size_t>(id - table.id)]
                   : "";
    }

    /// Identifier 15853 + `idOffset`; the key name is what the text shows.
    HwDatablockToviVectorLevconTempData(const char* keyName, int idOffset, bool stop = false)
        : HwDatablockBaseTemplate(keyName, table.id, static_cast<unsigned int>(idOffset), table.scale, stop) {}
};
using HwSDatablockToviVectorLevconTempData = HwDatablockToviVectorLevconTempData::Record;

/// The user's external calibration, vector: frequency points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviRfboExtCalVecUserFreq
    : public HwDatablockBaseTemplate<unsigned int, double, 350, 1> {
public:
    static constexpr TableSpec table{
        .id = 16002, .key = "RFBO_EXT_CAL_VEC_USER_FREQ", .scale = 100.0, .unit = "Hz", .role = Role::Axis};
    explicit HwDatablockToviRfboExtCalVecUserFreq(bool stop = false) : HwDatablockBaseTemplate(table, stop) {}
};
using HwSDatablockToviRfboExtCalVecUserFreq = HwDatablockToviRfboExtCalVecUserFreq::Record;

/// The user's external calibration, vector: ten descriptors and four rows at the points of 16002.
class TRAVIK_DATABLOCK_EXPORT HwDatablockToviRfboExtCalVecUserData
    : public HwDatablockBaseTemplateExtended<int, int, 10, 4, 350> {
public:
    static constexpr TableSpec table{.id = 16003, .key = "RFBO_EXT_CAL_VEC_USER_DATA", .columnAxis = 16002};
    explicit HwDatablockToviRfboExtCalVecUserData(bool stop = false) : HwDatablockBaseTemplateExtended(table, stop) {}
};
using HwSDatablockToviRfboExtCalVecUserData = HwDatablockToviRfboExtCalVecUserData::Record;

} // namespace Travik
