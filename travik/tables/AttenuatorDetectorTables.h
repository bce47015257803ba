#pragma once

#include <travik/tables/PathTables.h>

/// User calibration of the attenuator and of the CW output board's detector: correction per attenuation step, tuning
/// DAC values and linearity correction, each a block of frequency points and a block of data per path.
namespace Travik {

/// What the blocks of frequency points share.
template <class R>
class UserFrequencies : public PathBlock<ListBlock<R>> {
public:
    using typename UserFrequencies::ListBlock::Value;
    using UserFrequencies::PathBlock::PathBlock;

    int getNumberOfFreqValues() const { return this->count(); }
    void setNumberOfFreqValues(int count) { this->storeCount(count); }
    Value getFrequencyValue(int k) const { return this->value(k); }
    void setFrequencyValue(Value value, int k) { this->storeValue(value, k); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockAttCalDataFreq2Edition : CountedRecord<int[150], 612, int> {
    static const ListTable table;
};
/// 12170 to 12173: frequency points of the attenuator correction, in units of 10 Hz.
class TRAVIK_DATABLOCK_EXPORT HwDatablockAttCalDataFreq2Edition
    : public UserFrequencies<HwSDatablockAttCalDataFreq2Edition> {
    using UserFrequencies::UserFrequencies;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockAttCalData2Edition : CountedRecord<short[27][150], 8112, int> {
    static const StepTable table;
};
/// 12180 to 12183: attenuator correction in 1/100 dB, a row for each 5 dB.
class TRAVIK_DATABLOCK_EXPORT HwDatablockAttCalData2Edition
    : public PathBlock<StepBlock<HwSDatablockAttCalData2Edition>> {
public:
    using PathBlock::PathBlock;

    /// The whole stored count; its low 16 bits count.
    int getNumberOfAttSteps() const { return count(); }
    void setNumberOfAttSteps(unsigned short steps) { storeSteps(steps); }
    short getAttenuationValue(int step, int k) const { return value(step, k); }
    void setAttenuationValue(short value, int step, int k) { storeValue(value, step, k); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockCwop3DetTuneFreq : CountedRecord<double[100], 812, int> {
    static const ListTable table;
};
/// 12190 to 12193: frequency points of the detector tuning. Printing leaves precision 2 on the stream.
class TRAVIK_DATABLOCK_EXPORT HwDatablockCwop3DetTuneFreq : public UserFrequencies<HwSDatablockCwop3DetTuneFreq> {
    using UserFrequencies::UserFrequencies;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockCwop3DetTuneDac : CountedRecord<int[1][100], 412, int> {
    static const StepTable table;
};
/// 12200 to 12203: tuning DAC values of the detector. There is one row; a count above 1 prints rows of zeros.
class TRAVIK_DATABLOCK_EXPORT HwDatablockCwop3DetTuneDac : public PathBlock<StepBlock<HwSDatablockCwop3DetTuneDac>> {
public:
    using PathBlock::PathBlock;

    /// The whole stored count; its low 16 bits count.
    int getNumberOfDacSteps() const { return count(); }
    void setNumberOfDacSteps(unsigned short steps) { storeSteps(steps); }
    // Getter and setter order their indices differently.
    int getDetTuneDacValue(int k, int row) const { return value(row, k); }
    void setDetTuneDacValue(short value, int row, int k) { storeValue(value, row, k); }

    /// Takes the low 16 bits of each value, sign-extended, as the setter does.
    int setBlock(const Record* record);
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockCwopDetLinCorrFreq : CountedRecord<double[50], 412, int> {
    static const ListTable table;
};
/// 12290 and 12291: frequency points of the detector linearity correction. Printing leaves precision 2 on the stream.
class TRAVIK_DATABLOCK_EXPORT HwDatablockCwopDetLinCorrFreq : public UserFrequencies<HwSDatablockCwopDetLinCorrFreq> {
    using UserFrequencies::UserFrequencies;
};

#pragma pack(push, 1)
/// One step of the linearity correction: at this level, this correction.
struct HwSLevCorrValues {
    int level;
    float correction;

    friend bool operator==(const HwSLevCorrValues&, const HwSLevCorrValues&) = default;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockCwopDetLinCorrData : HwSDatablockHeader {
    unsigned short steps;
    unsigned short frequencies; ///< valid ones
    HwSLevCorrValues values[10][50];

    static const PlainTable table;
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockCwopDetLinCorrData) == 4012);

template <>
inline constexpr auto recordFields<HwSDatablockCwopDetLinCorrData> = describe<HwSDatablockCwopDetLinCorrData>(
    field<&HwSDatablockCwopDetLinCorrData::steps>("steps").as(Role::Count),
    field<&HwSDatablockCwopDetLinCorrData::frequencies>("frequencies").as(Role::Count),
    entries<&HwSDatablockCwopDetLinCorrData::values>(field<&HwSLevCorrValues::level>("level"),
                                                     field<&HwSLevCorrValues::correction>("correction"))
        .along(0, "step", "steps")
        .along(1, "point", "frequencies", 12290));

/// 12292 and 12293: linearity correction of the detector, up to 10 levels at up to 50 frequencies. Printing leaves
/// precision 3 on the stream.
class TRAVIK_DATABLOCK_EXPORT HwDatablockCwopDetLinCorrData
    : public PathBlock<DescribedBlock<HwSDatablockCwopDetLinCorrData>> {
public:
    using PathBlock::PathBlock;

    /// The number of steps in the low 16 bits, the number of valid frequencies above them.
    int getNumberOfDetLinCorrSteps() const;
    void setNumberOfDetLinCorrSteps(unsigned short steps) { set<&Record::steps>(steps); }
    unsigned short getNumberOfValidFreqs() const { return get<&Record::frequencies>(); }
    void setNumberOfValidFreqs(unsigned short frequencies) { set<&Record::frequencies>(frequencies); }
    HwSLevCorrValues getDetLinCorrData(int step, int frequency) const { return get<&Record::values>(step, frequency); }
    void setDetLinCorrData(const HwSLevCorrValues& values, int step, int frequency) {
        set<&Record::values>(values, step, frequency);
    }

    std::ostream& printToStream(std::ostream& os) override;
};

} // namespace Travik
