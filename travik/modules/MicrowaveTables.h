#pragma once

#include <travik/datablock/Latin1.h>
#include <travik/datablock/RecordBlock.h>

/// The calibration of the microwave module's attenuator and of its external level: correction matrices, the frequency
/// points that belong to them, and a list of absolute corrections.
namespace Travik {

#pragma pack(push, 1)
template <unsigned int Points>
struct LevelMatrix : HwSDatablockHeader {
    unsigned int numberOfLevelSteps;
    unsigned int numberOfPoints;
    short correction[20][Points]; ///< 1/100 dB or dBm, by level step and frequency point
};

template <unsigned int Points>
struct MicrowaveFrequencies : HwSDatablockHeader {
    unsigned int count;
    unsigned int frequency[Points]; ///< 100 Hz
};

struct HwSDatablockPokAttCalDat : LevelMatrix<200> {};
struct HwSDatablockPokAttCalDatSe : LevelMatrix<500> {};
struct HwSDatablockPokMwIfExtLevCalData : LevelMatrix<1500> {};
struct HwSDatablockPokMwIfExtLevCalDataRelCorr : LevelMatrix<1500> {};
struct HwSDatablockPokAttCalDatFreq : MicrowaveFrequencies<200> {};
struct HwSDatablockPokAttCalDatFreqSe : MicrowaveFrequencies<500> {};
struct HwSDatablockPokMwIfExtLevCalDataFreq : MicrowaveFrequencies<1500> {};
struct HwSDatablockPokMwIfExtLevCalDataAbsCorr : HwSDatablockHeader {
    unsigned int count;
    short correction[1500]; ///< 1/100 dBm
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockPokAttCalDat) == 8016 && sizeof(HwSDatablockPokAttCalDatSe) == 20016);
static_assert(sizeof(HwSDatablockPokMwIfExtLevCalData) == 60016);
static_assert(sizeof(HwSDatablockPokMwIfExtLevCalDataRelCorr) == 60016);
static_assert(sizeof(HwSDatablockPokAttCalDatFreq) == 812 && sizeof(HwSDatablockPokAttCalDatFreqSe) == 2012);
static_assert(sizeof(HwSDatablockPokMwIfExtLevCalDataFreq) == 6012);
static_assert(sizeof(HwSDatablockPokMwIfExtLevCalDataAbsCorr) == 3012);

/// How the matrices of the attenuator and those of the external level are printed, and their unit.
struct LevelMatrixStyle {
    std::string_view times;  ///< between the two counts
    unsigned int firstLabel; ///< label of the first level step, and how far it is to the next
    unsigned int labelDistance;
    const char* unit;
};
inline constexpr LevelMatrixStyle attenuatorMatrix{"*", 0, 10, "dB"};
inline constexpr LevelMatrixStyle externalLevelMatrix{" * ", 1, 1, "dBm"};

/// What tells the matrices apart.
struct LevelMatrixKind {
    unsigned short id;
    unsigned short frequencyId; ///< the block with the frequency points
    LevelMatrixStyle style;
    std::string_view keyName;
    std::string_view comment;
    const char* pointCount; ///< what the number of points is called
    const char* errorName;  ///< named when a record is refused
};

template <class Record>
inline constexpr LevelMatrixKind levelMatrixKind{};
// clang-format off
template <> inline constexpr LevelMatrixKind levelMatrixKind<HwSDatablockPokAttCalDat>{
    12045, 12044, attenuatorMatrix, "ATT_CAL_DAT_CORR", "# Korrekturdaten [1/100dB] ",
    "number_of_freqs", "HwSDatablockPokAttCalDat   "};
template <> inline constexpr LevelMatrixKind levelMatrixKind<HwSDatablockPokAttCalDatSe>{
    12047, 12046, attenuatorMatrix, "ATT_CAL_DAT_CORR_SE", "# Korrekturdaten [1/100dB] ",
    "number_of_freqs", "HwSDatablockPokAttCalDatSe   "};
template <> inline constexpr LevelMatrixKind levelMatrixKind<HwSDatablockPokMwIfExtLevCalData>{
    12041, 12040, externalLevelMatrix, "LEV_CAL_DAT_LEVEL", "# Pegelstützstellen [dBm] "_latin1,
    "number_of_freqs", "HwSDatablockPokMwIfExtLevCalData   "};
template <> inline constexpr LevelMatrixKind levelMatrixKind<HwSDatablockPokMwIfExtLevCalDataRelCorr>{
    12043, 12040, externalLevelMatrix, "LEV_CAL_DAT_REL_CORR", "# Externe Kalibrierdaten [1/100dBm] ",
    "number_of_rel_corr_values", "HwSDatablockPokMwIfExtLevCalDataRelCorr   "};
// clang-format on

/// What tells the frequency blocks apart.
struct MicrowaveFrequencyKind {
    unsigned short id;
    std::string_view keyName;
    bool keepsRecordChecksum; ///< whether a take-over stores the record's checksum or a new one
    const char* errorName;    ///< named when a record is refused
};

template <class Record>
inline constexpr MicrowaveFrequencyKind microwaveFrequencyKind{};
// clang-format off
template <> inline constexpr MicrowaveFrequencyKind microwaveFrequencyKind<HwSDatablockPokAttCalDatFreq>{
    12044, "ATT_CAL_DAT_FREQ", true, "HwDatablockPokAttCalDatFreq"};
template <> inline constexpr MicrowaveFrequencyKind microwaveFrequencyKind<HwSDatablockPokAttCalDatFreqSe>{
    12046, "ATT_CAL_DAT_FREQ_SE", true, "HwDatablockPokAttCalDatFreqSe"};
template <> inline constexpr MicrowaveFrequencyKind microwaveFrequencyKind<HwSDatablockPokMwIfExtLevCalDataFreq>{
    12040, "LEV_CAL_DAT_FREQ", false, "HwDatablockPokMwIfExtLevCalDataFreq"};
// clang-format on

namespace detail {

template <class R>
consteval auto describeLevelMatrix() {
    constexpr LevelMatrixKind kind = levelMatrixKind<R>;
    return describe<R>(field<&R::numberOfLevelSteps>("number_of_level_steps").as(Role::Count),
                       field<&R::numberOfPoints>(kind.pointCount).as(Role::Count),
                       field<&R::correction>("correction")
                           .in(kind.style.unit, 0.01)
                           .along(0, "level_step", "number_of_level_steps")
                           .along(1, "point", kind.pointCount, kind.frequencyId));
}

template <class R>
concept IsLevelMatrix = (levelMatrixKind<R>.id != 0);
template <class R>
concept IsMicrowaveFrequencies = (microwaveFrequencyKind<R>.id != 0);

} // namespace detail

template <detail::IsLevelMatrix R>
inline constexpr auto recordFields<R> = detail::describeLevelMatrix<R>();

template <detail::IsMicrowaveFrequencies R>
inline constexpr auto recordFields<R> =
    describe<R>(field<&R::count>("count").as(Role::Count),
                field<&R::frequency>("frequency").in("Hz", 100).as(Role::Axis).along(0, "point", "count"));

template <>
inline constexpr auto recordFields<HwSDatablockPokMwIfExtLevCalDataAbsCorr> =
    describe<HwSDatablockPokMwIfExtLevCalDataAbsCorr>(
        field<&HwSDatablockPokMwIfExtLevCalDataAbsCorr::count>("count").as(Role::Count),
        field<&HwSDatablockPokMwIfExtLevCalDataAbsCorr::correction>("correction")
            .in("dBm", 0.01)
            .along(0, "point", "count", 12040));

/// A correction matrix: level step 0..19 by frequency point.
template <class R>
class LevelMatrixBlock : public RecordBlock<R> {
public:
    static constexpr LevelMatrixKind kind = levelMatrixKind<R>;
    static constexpr std::string_view keyName = kind.keyName;

    explicit LevelMatrixBlock(bool stopConversionOnError = false) : RecordBlock<R>(kind.id, stopConversionOnError) {}

    /// As stored; may exceed 20 in an image that was not written by this library.
    unsigned int getNumberOfLevelSteps() const { return this->template get<&R::numberOfLevelSteps>(); }
    /// Refreshes the checksum.
    void setNumberOfLevelSteps(unsigned short number) { this->template set<&R::numberOfLevelSteps>(number); }

    /// 1/100 dB (attenuator) or 1/100 dBm (external level); 0 out of range.
    short getCorLevelValue(unsigned char step, unsigned int point) const {
        return this->template get<&R::correction>(step, point);
    }
    /// Does nothing out of range. Refreshes the checksum on demand only: whoever fills a whole table asks for it once.
    void setCorLevelValue(short value, unsigned char step, unsigned int point, bool updateChecksum) {
        if (this->template put<&R::correction>(value, step, point) && updateChecksum)
            this->refreshChecksum();
    }

    /// Takes a record over, of its counts the low 16 bits, and stores a new checksum: 0, or 1 and error 1040001 when
    /// the record's checksum is wrong. The checksum of a block of 60016 bytes is 0.
    int setBlock(const R* record);
    std::ostream& printToStream(std::ostream& os) override;

protected:
    unsigned int pointCount() const { return this->template get<&R::numberOfPoints>(); }
    void storePointCount(unsigned short number) { this->template set<&R::numberOfPoints>(number); }
};

/// The frequency points of a matrix.
template <class R>
class MicrowaveFrequencyBlock : public RecordBlock<R> {
public:
    static constexpr MicrowaveFrequencyKind kind = microwaveFrequencyKind<R>;
    static constexpr std::string_view keyName = kind.keyName;

    explicit MicrowaveFrequencyBlock(bool stopConversionOnError = false)
        : RecordBlock<R>(kind.id, stopConversionOnError) {}

    /// As stored; may exceed the capacity in an image that was not written by this library.
    unsigned int getNumberOfFrequency() const { return this->template get<&R::count>(); }
    /// Refreshes the checksum.
    void setNumberOfFrequency(unsigned int number) { this->template set<&R::count>(number); }
    /// Hz; 0 out of range. Points are strictly ascending: one that repeats the point before is 0.001 Hz above it.
    double getFrequencyValue(unsigned int point) const;
    /// In units of 100 Hz. Does nothing out of range; refreshes the checksum on demand only.
    void setFrequencyValue(unsigned int value, unsigned int point, bool updateChecksum) {
        if (this->template put<&R::frequency>(value, point) && updateChecksum)
            this->refreshChecksum();
    }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const R* record);
    std::ostream& printToStream(std::ostream& os) override;
};

extern template class TRAVIK_DATABLOCK_EXPORT LevelMatrixBlock<HwSDatablockPokAttCalDat>;
extern template class TRAVIK_DATABLOCK_EXPORT LevelMatrixBlock<HwSDatablockPokAttCalDatSe>;
extern template class TRAVIK_DATABLOCK_EXPORT LevelMatrixBlock<HwSDatablockPokMwIfExtLevCalData>;
extern template class TRAVIK_DATABLOCK_EXPORT LevelMatrixBlock<HwSDatablockPokMwIfExtLevCalDataRelCorr>;
extern template class TRAVIK_DATABLOCK_EXPORT MicrowaveFrequencyBlock<HwSDatablockPokAttCalDatFreq>;
extern template class TRAVIK_DATABLOCK_EXPORT MicrowaveFrequencyBlock<HwSDatablockPokAttCalDatFreqSe>;
extern template class TRAVIK_DATABLOCK_EXPORT MicrowaveFrequencyBlock<HwSDatablockPokMwIfExtLevCalDataFreq>;

/// A correction matrix that calls its points frequencies.
template <class R>
class FrequencyLevelMatrixBlock : public LevelMatrixBlock<R> {
public:
    using LevelMatrixBlock<R>::LevelMatrixBlock;

    /// As stored; may exceed the capacity in an image that was not written by this library.
    unsigned int getNumberOfFreqs() const { return this->pointCount(); }
    /// Refreshes the checksum.
    void setNumberOfFreqs(unsigned short number) { this->storePointCount(number); }
};

/// Correction of the attenuator: 200 points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockPokAttCalDat : public FrequencyLevelMatrixBlock<HwSDatablockPokAttCalDat> {
    using FrequencyLevelMatrixBlock::FrequencyLevelMatrixBlock;
};

/// Correction of the attenuator, second edition: 500 points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockPokAttCalDatSe : public FrequencyLevelMatrixBlock<HwSDatablockPokAttCalDatSe> {
    using FrequencyLevelMatrixBlock::FrequencyLevelMatrixBlock;
};

/// Levels of the external level calibration: 1500 points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockPokMwIfExtLevCalData
    : public FrequencyLevelMatrixBlock<HwSDatablockPokMwIfExtLevCalData> {
    using FrequencyLevelMatrixBlock::FrequencyLevelMatrixBlock;
};

/// Relative corrections of the external level calibration: 1500 points.
class TRAVIK_DATABLOCK_EXPORT HwDatablockPokMwIfExtLevCalDataRelCorr
    : public LevelMatrixBlock<HwSDatablockPokMwIfExtLevCalDataRelCorr> {
public:
    using LevelMatrixBlock::LevelMatrixBlock;

    /// As stored; may exceed 1500 in an image that was not written by this library.
    unsigned int getNumberOfRelCorrValues() const { return pointCount(); }
    /// Refreshes the checksum.
    void setNumberOfRelCorrValues(unsigned short number) { storePointCount(number); }
};

/// The frequency points of the attenuator's correction: 200.
class TRAVIK_DATABLOCK_EXPORT HwDatablockPokAttCalDatFreq
    : public MicrowaveFrequencyBlock<HwSDatablockPokAttCalDatFreq> {
    using MicrowaveFrequencyBlock::MicrowaveFrequencyBlock;
};

/// The frequency points of the attenuator's correction, second edition: 500.
class TRAVIK_DATABLOCK_EXPORT HwDatablockPokAttCalDatFreqSe
    : public MicrowaveFrequencyBlock<HwSDatablockPokAttCalDatFreqSe> {
    using MicrowaveFrequencyBlock::MicrowaveFrequencyBlock;
};

/// The frequency points of the external level calibration: 1500.
class TRAVIK_DATABLOCK_EXPORT HwDatablockPokMwIfExtLevCalDataFreq
    : public MicrowaveFrequencyBlock<HwSDatablockPokMwIfExtLevCalDataFreq> {
    using MicrowaveFrequencyBlock::MicrowaveFrequencyBlock;
};

/// Absolute corrections of the external level calibration, 0..1499.
class TRAVIK_DATABLOCK_EXPORT HwDatablockPokMwIfExtLevCalDataAbsCorr
    : public RecordBlock<HwSDatablockPokMwIfExtLevCalDataAbsCorr> {
public:
    static constexpr std::string_view keyName = "LEV_CAL_DAT_ABS_CORR";

    explicit HwDatablockPokMwIfExtLevCalDataAbsCorr(bool stopConversionOnError = false)
        : RecordBlock(12042, stopConversionOnError) {}

    /// As stored; may exceed 1500 in an image that was not written by this library.
    unsigned int getNumberOfAbsCorr() const { return get<&Record::count>(); }
    /// Refreshes the checksum.
    void setNumberOfAbsCorr(unsigned int number) { set<&Record::count>(number); }
    /// 1/100 dBm; 0 out of range.
    short getAbsCorrValue(unsigned int index) const { return get<&Record::correction>(index); }
    /// Does nothing out of range; refreshes the checksum on demand only.
    void setAbsCorrValue(short value, unsigned int index, bool updateChecksum) {
        if (put<&Record::correction>(value, index) && updateChecksum)
            refreshChecksum();
    }

    /// Takes a record over and stores a new checksum: 0, or 1 and error 1040001 when the record's checksum is wrong.
    int setBlock(const HwSDatablockPokMwIfExtLevCalDataAbsCorr* record);
    std::ostream& printToStream(std::ostream& os) override;
};

} // namespace Travik
