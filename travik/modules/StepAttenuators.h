#pragma once

#include <travik/datablock/RecordBlock.h>

#include <concepts>

/// The calibration of the step attenuators SATT3 and SATT6. Both have the same three blocks: frequency points,
/// attenuation corrections, and temperature gradients; they differ in identifiers and texts.
namespace Travik {

#pragma pack(push, 1)
struct StepAttenuatorFrequencies : HwSDatablockHeader {
    unsigned int numberOfFreqValues;
    unsigned int frequency[150]; ///< 10 Hz
};

struct StepAttenuatorCorrections : HwSDatablockHeader {
    short attenuation[27][150]; ///< 1/100 dB, by attenuation (5 dB a row) and frequency point
};

struct StepAttenuatorGradients : HwSDatablockHeader {
    short calibTemp;                 ///< temperature at the calibration
    unsigned char gradient[27][150]; ///< (TK + 1) * 50, by attenuation (5 dB a row) and frequency point
};

struct HwSDatablockSAtt3CalibDataFreq : StepAttenuatorFrequencies {};
struct HwSDatablockSAtt6CalibDataFreq : StepAttenuatorFrequencies {};
struct HwSDatablockSAtt3CalibDataAtt : StepAttenuatorCorrections {};
struct HwSDatablockSAtt6CalibDataAtt : StepAttenuatorCorrections {};
struct HwSDatablockSAtt3CalibDataTemp : StepAttenuatorGradients {};
struct HwSDatablockSAtt6CalibDataTemp : StepAttenuatorGradients {};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockSAtt3CalibDataFreq) == 612 && sizeof(HwSDatablockSAtt6CalibDataFreq) == 612);
static_assert(sizeof(HwSDatablockSAtt3CalibDataAtt) == 8108 && sizeof(HwSDatablockSAtt6CalibDataAtt) == 8108);
static_assert(sizeof(HwSDatablockSAtt3CalibDataTemp) == 4060 && sizeof(HwSDatablockSAtt6CalibDataTemp) == 4060);

/// What tells the blocks apart.
struct StepAttenuatorKind {
    unsigned short id;
    unsigned short frequencyId; ///< the block with the frequency points
    std::string_view keyName;
    std::string_view count; ///< the size of the table, as it is printed
    const char* errorName;  ///< named when a record is refused
};

template <class Record>
inline constexpr StepAttenuatorKind stepAttenuatorKind{};
// clang-format off
template <> inline constexpr StepAttenuatorKind stepAttenuatorKind<HwSDatablockSAtt3CalibDataFreq>{
    10601, 0, "SATT3_CALIB_FREQ", "", "HwSDatablockSAtt3CalibDataFreq"};
template <> inline constexpr StepAttenuatorKind stepAttenuatorKind<HwSDatablockSAtt6CalibDataFreq>{
    11200, 0, "SATT6_CALIB_FREQ", "", "HwSDatablockSAtt6CalibDataFreq"};
template <> inline constexpr StepAttenuatorKind stepAttenuatorKind<HwSDatablockSAtt3CalibDataAtt>{
    10602, 10601, "SATT3_CALIB_DATA_ATT", "26 * SATT3_CALIB_FREQ", "HwDatablockSAtt3CalibDataAtt"};
template <> inline constexpr StepAttenuatorKind stepAttenuatorKind<HwSDatablockSAtt6CalibDataAtt>{
    11001, 11200, "SATT6_CALIB_DATA_ATT", "26 * COUNT_OF_SATT6_CALIB_FREQ", "HwDatablockSAtt6CalibDataAtt"};
template <> inline constexpr StepAttenuatorKind stepAttenuatorKind<HwSDatablockSAtt3CalibDataTemp>{
    10603, 10601, "SATT3_CALIB_DATA_TEMP", "26 *SAT3_CALIB_FREQ", "HwDatablockSAtt3CalibDataTemp"};
template <> inline constexpr StepAttenuatorKind stepAttenuatorKind<HwSDatablockSAtt6CalibDataTemp>{
    11202, 11200, "SATT6_CALIB_DATA_TEMP", "26 *COUNT_OF_SATT6_CALIB_FREQ", "HwDatablockSAtt6CalibDataTemp"};
// clang-format on

template <std::derived_from<StepAttenuatorFrequencies> R>
inline constexpr auto recordFields<R> = describe<R>(
    field<&R::numberOfFreqValues>("number_of_freq_values").as(Role::Count),
    field<&R::frequency>("frequency").in("Hz", 10).as(Role::Axis).along(0, "point", "number_of_freq_values"));

namespace detail {

/// A table over attenuation and frequency.
template <class R, auto Member>
consteval FieldSet<1> byAttenuationAndFrequency(const char* name) {
    constexpr StepAttenuatorKind kind = stepAttenuatorKind<R>;
    return field<Member>(name).along(0, "attenuation").along(1, "point", nullptr, kind.frequencyId);
}

} // namespace detail

template <std::derived_from<StepAttenuatorCorrections> R>
inline constexpr auto recordFields<R> =
    describe<R>(detail::byAttenuationAndFrequency<R, &R::attenuation>("attenuation").in("dB", 0.01));

template <std::derived_from<StepAttenuatorGradients> R>
inline constexpr auto recordFields<R> =
    describe<R>(field<&R::calibTemp>("calib_temp"),
                detail::byAttenuationAndFrequency<R, &R::gradient>("temp_gradient").in("", 0.02, -1));

/// The frequency points of a step attenuator, 0..149. Setters refresh the checksum.
template <class R>
class StepAttenuatorFreqBlock : public RecordBlock<R> {
public:
    static constexpr StepAttenuatorKind kind = stepAttenuatorKind<R>;
    static constexpr std::string_view keyName = kind.keyName;

    explicit StepAttenuatorFreqBlock(bool stopConversionOnError = false)
        : RecordBlock<R>(kind.id, stopConversionOnError) {}

    /// As stored; may exceed 150 in an image that was not written by this library.
    unsigned int getNumberOfFreqValues() const { return this->template get<&R::numberOfFreqValues>(); }
    void setNumberOfFreqValues(int number) {
        this->template set<&R::numberOfFreqValues>(static_cast<unsigned int>(number));
    }
    /// In units of 10 Hz; 0 out of range.
    unsigned int getFrequencyValue(int point) const { return this->template get<&R::frequency>(point); }
    /// In units of 10 Hz; does nothing out of range.
    void setFrequencyValue(int value, int point) {
        this->template set<&R::frequency>(static_cast<unsigned int>(value), point);
    }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const R* record) { return this->takeOver(record, kind.errorName); }
    std::ostream& printToStream(std::ostream& os) override;
};

/// The attenuation corrections of a step attenuator in 1/100 dB: row 0..26 (5 dB each) by frequency point 0..149.
/// Setters refresh the checksum and do nothing out of range, where getters answer 0. Prints all rows but the last.
template <class R>
class StepAttenuatorAttBlock : public RecordBlock<R> {
public:
    static constexpr StepAttenuatorKind kind = stepAttenuatorKind<R>;
    static constexpr std::string_view keyName = kind.keyName;

    explicit StepAttenuatorAttBlock(bool stopConversionOnError = false)
        : RecordBlock<R>(kind.id, stopConversionOnError) {}

    short getAttenuationValue(int row, int column) const { return this->template get<&R::attenuation>(row, column); }
    void setAttenuationValue(short value, int row, int column) {
        this->template set<&R::attenuation>(value, row, column);
    }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const R* record) { return this->takeOver(record, kind.errorName); }
    std::ostream& printToStream(std::ostream& os) override;
};

/// The temperature gradients of a step attenuator, coded as (TK + 1) * 50: row 0..26 (5 dB each) by frequency point
/// 0..149. Setters refresh the checksum and do nothing out of range, where getters answer 0. Prints all rows but the
/// last.
template <class R>
class StepAttenuatorTempBlock : public RecordBlock<R> {
public:
    static constexpr StepAttenuatorKind kind = stepAttenuatorKind<R>;
    static constexpr std::string_view keyName = kind.keyName;

    explicit StepAttenuatorTempBlock(bool stopConversionOnError = false)
        : RecordBlock<R>(kind.id, stopConversionOnError) {}

    /// The temperature at the calibration.
    short getCalibTemp() const { return this->template get<&R::calibTemp>(); }
    void setCalibTemp(short temperature) { this->template set<&R::calibTemp>(temperature); }
    unsigned char getTempGradient(int row, int column) const { return this->template get<&R::gradient>(row, column); }
    void setTempGradient(unsigned char code, int row, int column) {
        this->template set<&R::gradient>(code, row, column);
    }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const R* record) { return this->takeOver(record, kind.errorName); }
    std::ostream& printToStream(std::ostream& os) override;
};

extern template class TRAVIK_DATABLOCK_EXPORT StepAttenuatorFreqBlock<HwSDatablockSAtt3CalibDataFreq>;
extern template class TRAVIK_DATABLOCK_EXPORT StepAttenuatorFreqBlock<HwSDatablockSAtt6CalibDataFreq>;
extern template class TRAVIK_DATABLOCK_EXPORT StepAttenuatorAttBlock<HwSDatablockSAtt3CalibDataAtt>;
extern template class TRAVIK_DATABLOCK_EXPORT StepAttenuatorAttBlock<HwSDatablockSAtt6CalibDataAtt>;
extern template class TRAVIK_DATABLOCK_EXPORT StepAttenuatorTempBlock<HwSDatablockSAtt3CalibDataTemp>;
extern template class TRAVIK_DATABLOCK_EXPORT StepAttenuatorTempBlock<HwSDatablockSAtt6CalibDataTemp>;

/// Frequency points of the SATT3.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAtt3CalibDataFreq
    : public StepAttenuatorFreqBlock<HwSDatablockSAtt3CalibDataFreq> {
    using StepAttenuatorFreqBlock::StepAttenuatorFreqBlock;
};

/// Attenuation corrections of the SATT3.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAtt3CalibDataAtt
    : public StepAttenuatorAttBlock<HwSDatablockSAtt3CalibDataAtt> {
    using StepAttenuatorAttBlock::StepAttenuatorAttBlock;
};

/// Temperature gradients of the SATT3.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAtt3CalibDataTemp
    : public StepAttenuatorTempBlock<HwSDatablockSAtt3CalibDataTemp> {
    using StepAttenuatorTempBlock::StepAttenuatorTempBlock;
};

/// Attenuation corrections of the SATT6.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAtt6CalibDataAtt
    : public StepAttenuatorAttBlock<HwSDatablockSAtt6CalibDataAtt> {
    using StepAttenuatorAttBlock::StepAttenuatorAttBlock;
};

/// Frequency points of the SATT6.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAtt6CalibDataFreq
    : public StepAttenuatorFreqBlock<HwSDatablockSAtt6CalibDataFreq> {
    using StepAttenuatorFreqBlock::StepAttenuatorFreqBlock;
};

/// Temperature gradients of the SATT6.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAtt6CalibDataTemp
    : public StepAttenuatorTempBlock<HwSDatablockSAtt6CalibDataTemp> {
    using StepAttenuatorTempBlock::StepAttenuatorTempBlock;
};

} // namespace Travik
