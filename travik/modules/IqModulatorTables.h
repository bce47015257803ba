#pragma once

#include <travik/datablock/RecordBlock.h>

/// The calibration of the IQ modulator board's RF module: the blocks of the first generation, and those that both
/// generations have. The second generation's own blocks are in IqModulatorTablesV20.h.
namespace Travik {

namespace detail {

/// Some bits of a 32-bit word, read and written by value: images do not depend on how a compiler lays out bit-fields.
struct BitField {
    unsigned char shift;
    unsigned char count; ///< at most 31
    bool isSigned = false;

    constexpr int read(unsigned int word) const {
        // Left-aligned first, so that one shift back brings the sign along.
        const unsigned int aligned = word << (32U - shift - count);
        const unsigned int back = 32U - count;
        return isSigned ? static_cast<int>(aligned) >> back : static_cast<int>(aligned >> back);
    }

    /// The word with the low bits of the value in place of these.
    constexpr unsigned int write(unsigned int word, int value) const {
        const unsigned int mask = ((1U << count) - 1U) << shift;
        return (word & ~mask) | ((static_cast<unsigned int>(value) << shift) & mask);
    }
};

} // namespace detail

#pragma pack(push, 1)
/// The cut-off frequencies of the harmonic filters: 32 bytes.
struct HwSDatablockIqOp3RfmHarmonic : HwSDatablockHeader {
    int cutOffFrequency[6]; ///< Hz
};

/// The values of up to twelve operating states, and the tolerances of the calibration: 168 bytes.
struct HwSDatablockIqOp3RfmCalibDataMisc : HwSDatablockHeader {
    unsigned short toleranceLevPre;       ///< of the level preset step attenuator, 1/128 dB
    unsigned short toleranceLevAtt_15;    ///< of the 15 dB level attenuator, 1/128 dB
    unsigned short toleranceLevAtt_30_45; ///< of the 30 and 45 dB level attenuators, 1/128 dB
    unsigned short toleranceDetAtt;       ///< of the detector step attenuator, 1/128 dB
    float detFullScale;                   ///< full scale of the detector's converter
    unsigned int numberOfOperatingStates; ///< how many entries of the arrays are in use
    float pmaxBz[12];                     ///< maximum output power: an integer code, dBm = (code - 0.5) / 128
    float uiqBz[12];                      ///< baseband voltage, V
    unsigned short lconReserveBz[12];     ///< reserve of the level control, 1/128 dB
    unsigned short detReserveBz[12];      ///< reserve of the detector, dB
};

/// The calibration frequencies, one a row of the tables: 1212 bytes.
struct HwSDatablockIqOp3RfmCalibDataFreq : HwSDatablockHeader {
    unsigned int count;
    unsigned int frequency[300];
};

/// A row of the first generation's table, packed into two words. Setters cut their value to the bits of the field.
struct HwSIqOp3RfmCalibDataBlock {
    using Bits = detail::BitField;
    static constexpr Bits levPre{0, 4};
    static constexpr Bits detAtt{4, 5};
    static constexpr Bits detConvDeflection{9, 16};
    static constexpr Bits reserve{25, 7};
    static constexpr Bits levAtt15{0, 10, true};
    static constexpr Bits levAtt30{10, 11, true};
    static constexpr Bits levAtt45{21, 11, true};
    /// dB a step of the level attenuators.
    static constexpr double levAttStep = 0.0078125;

    unsigned int word0;
    unsigned int word1;

    /// Step of the level preset attenuator, 0..15.
    constexpr int getLevPre() const { return levPre.read(word0); }
    /// Step of the detector attenuator, 0..31.
    constexpr int getDetAtt() const { return detAtt.read(word0); }
    /// Reading of the detector's converter, 0..65535.
    constexpr int getDetConvDeflection() const { return detConvDeflection.read(word0); }
    constexpr int getReserve() const { return reserve.read(word0); }
    /// -512..511; dB = value / 128 + 15.
    constexpr int getLevAtt15() const { return levAtt15.read(word1); }
    /// -1024..1023; dB = value / 128 + 30.
    constexpr int getLevAtt30() const { return levAtt30.read(word1); }
    /// -1024..1023; dB = value / 128 + 45.
    constexpr int getLevAtt45() const { return levAtt45.read(word1); }

    constexpr void setLevPre(int step) { word0 = levPre.write(word0, step); }
    constexpr void setDetAtt(int step) { word0 = detAtt.write(word0, step); }
    constexpr void setDetConvDeflection(int reading) { word0 = detConvDeflection.write(word0, reading); }
    constexpr void setReserve(int bits) { word0 = reserve.write(word0, bits); }
    constexpr void setLevAtt15(int steps) { word1 = levAtt15.write(word1, steps); }
    constexpr void setLevAtt30(int steps) { word1 = levAtt30.write(word1, steps); }
    constexpr void setLevAtt45(int steps) { word1 = levAtt45.write(word1, steps); }
};

/// The level calibration of one operating state: 2412 bytes.
struct HwSDatablockIqOp3RfmCalibData : HwSDatablockHeader {
    unsigned int operatingState;
    HwSIqOp3RfmCalibDataBlock rows[300];
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockIqOp3RfmHarmonic) == 32);
static_assert(sizeof(HwSDatablockIqOp3RfmCalibDataMisc) == 168);
static_assert(sizeof(HwSDatablockIqOp3RfmCalibDataFreq) == 1212);
static_assert(sizeof(HwSIqOp3RfmCalibDataBlock) == 8);
static_assert(sizeof(HwSDatablockIqOp3RfmCalibData) == 2412);

/// All seven fields, the reserve included: together they are the whole row.
constexpr bool operator==(const HwSIqOp3RfmCalibDataBlock& left, const HwSIqOp3RfmCalibDataBlock& right) {
    return left.word0 == right.word0 && left.word1 == right.word1;
}

template <>
inline constexpr auto recordFields<HwSDatablockIqOp3RfmHarmonic> = describe<HwSDatablockIqOp3RfmHarmonic>(
    field<&HwSDatablockIqOp3RfmHarmonic::cutOffFrequency>("cut_off_frequency").in("Hz").along(0, "filter"));

namespace detail {

template <auto Member>
consteval FieldSet<1> perOperatingState(const char* name) {
    return field<Member>(name).along(0, "operating_state", "number_of_operating_states");
}

template <auto Member>
consteval FieldSet<1> packed(const char* name, BitField bits) {
    return field<Member>(name).bits(bits.shift, bits.count, bits.isSigned);
}

consteval auto describeIqModulatorMisc() {
    using R = HwSDatablockIqOp3RfmCalibDataMisc;
    constexpr double step = 0.0078125;
    return describe<R>(field<&R::toleranceLevPre>("tolerance_lev_pre").in("dB", step),
                       field<&R::toleranceLevAtt_15>("tolerance_lev_att_15").in("dB", step),
                       field<&R::toleranceLevAtt_30_45>("tolerance_lev_att_30_45").in("dB", step),
                       field<&R::toleranceDetAtt>("tolerance_det_att").in("dB", step),
                       field<&R::detFullScale>("det_full_scale").in("V"),
                       field<&R::numberOfOperatingStates>("number_of_operating_states").as(Role::Count),
                       perOperatingState<&R::pmaxBz>("pmax_bz").in("dBm", step, -0.5 * step),
                       perOperatingState<&R::uiqBz>("uiq_bz").in("V"),
                       perOperatingState<&R::lconReserveBz>("lcon_reserve_bz").in("dB", step),
                       perOperatingState<&R::detReserveBz>("det_reserve_bz").in("dB"));
}

consteval auto describeIqModulatorRows() {
    using R = HwSDatablockIqOp3RfmCalibData;
    using Row = HwSIqOp3RfmCalibDataBlock;
    return describe<R>(
        field<&R::operatingState>("operating_state"),
        entries<&R::rows>(packed<&Row::word0>("lev_pre", Row::levPre),
                          packed<&Row::word0>("det_att", Row::detAtt).sameWord(),
                          packed<&Row::word0>("det_conv_deflection", Row::detConvDeflection).sameWord(),
                          packed<&Row::word0>("reserve", Row::reserve).sameWord().as(Role::Reserved),
                          packed<&Row::word1>("lev_att_15", Row::levAtt15).in("dB", Row::levAttStep, 15),
                          packed<&Row::word1>("lev_att_30", Row::levAtt30).sameWord().in("dB", Row::levAttStep, 30),
                          packed<&Row::word1>("lev_att_45", Row::levAtt45).sameWord().in("dB", Row::levAttStep, 45))
            .along(0, "point", nullptr, 10302));
}

} // namespace detail

template <>
inline constexpr auto recordFields<HwSDatablockIqOp3RfmCalibDataMisc> = detail::describeIqModulatorMisc();

template <>
inline constexpr auto recordFields<HwSDatablockIqOp3RfmCalibDataFreq> = describe<HwSDatablockIqOp3RfmCalibDataFreq>(
    field<&HwSDatablockIqOp3RfmCalibDataFreq::count>("count").as(Role::Count),
    field<&HwSDatablockIqOp3RfmCalibDataFreq::frequency>("frequency").as(Role::Axis).along(0, "point", "count"));

template <>
inline constexpr auto recordFields<HwSDatablockIqOp3RfmCalibData> = detail::describeIqModulatorRows();

/// What the row tables of both generations do the same way.
template <class R>
class IqModulatorRowTable : public RecordBlock<R> {
public:
    using Row = std::remove_extent_t<decltype(R::rows)>;

    /// A copy of row 0..299; all zero out of range.
    Row getCalibDataBlock(int row) const { return this->template get<&R::rows>(row); }
    /// Stores row 0..299 and refreshes the checksum; does nothing out of range.
    void setCalibDatablock(const Row& values, int row) { this->template set<&R::rows>(values, row); }

protected:
    using RecordBlock<R>::RecordBlock;

    /// As `takeOver`, but a record that is zero all over behind its identifier, its size word included, is taken over
    /// although its checksum is wrong.
    int takeTableOver(const R* record, unsigned short id, const char* errorName) {
        R reference{};
        reference.id = id;
        if (!this->verifyRecord(record) && !(record && *record == reference)) {
            this->signalError(DownloadDenied, errorName);
            return 1;
        }
        return this->accept(record, 0, [] {});
    }
};

/// The cut-off frequencies of the harmonic filters. Its text also says how the text file is written that the RF
/// module's calibration is read from.
class TRAVIK_DATABLOCK_EXPORT HwDatablockIqOp3RfmHarmonic : public RecordBlock<HwSDatablockIqOp3RfmHarmonic> {
public:
    static constexpr std::string_view keyName = "IQOP3_RFM_HARMONIC";

    explicit HwDatablockIqOp3RfmHarmonic(bool stopConversionOnError = false)
        : RecordBlock(10300, stopConversionOnError) {}

    /// Hz, of filter 0..5; 0 out of range.
    int getCutOffFrequency(unsigned char filter) const { return get<&Record::cutOffFrequency>(filter); }
    /// Refreshes the checksum; does nothing out of range.
    void setCutOffFrequency(int hertz, unsigned char filter) { set<&Record::cutOffFrequency>(hertz, filter); }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockIqOp3RfmHarmonic* record) { return takeOver(record, "HwDatablockIqOp3RfmHarmonic"); }
    std::ostream& printToStream(std::ostream& os) override;
};

/// The values of the operating states ("Betriebszustand", BZ), numbered 0..11, and the tolerances of the calibration.
/// Setters refresh the checksum; a state out of range reads as 0, and its setters do nothing.
class TRAVIK_DATABLOCK_EXPORT HwDatablockIqOp3RfmCalibDataMisc : public RecordBlock<HwSDatablockIqOp3RfmCalibDataMisc> {
public:
    static constexpr std::string_view keyName = "IQOP3_RFM_CALIB_DATA_MISC";

    explicit HwDatablockIqOp3RfmCalibDataMisc(bool stopConversionOnError = false)
        : RecordBlock(10301, stopConversionOnError) {}

    // Tolerances in 1/128 dB.
    unsigned short getToleranceLevPre() const { return get<&Record::toleranceLevPre>(); }
    unsigned short getToleranceLevAtt_15() const { return get<&Record::toleranceLevAtt_15>(); }
    unsigned short getToleranceLevAtt_30_45() const { return get<&Record::toleranceLevAtt_30_45>(); }
    unsigned short getToleranceDetAtt() const { return get<&Record::toleranceDetAtt>(); }
    float getDetFullScale() const { return get<&Record::detFullScale>(); }
    /// As stored; may exceed 12 in an image that was not written by this library.
    unsigned int getNumberOfOperatingStates() const { return get<&Record::numberOfOperatingStates>(); }
    /// Code of the maximum output power, dBm = (code - 0.5) / 128; of a stored value that is no such code the low 16
    /// bits of its whole part, 0 where it has none.
    unsigned short getPmaxBz(unsigned char bz) const { return pmaxOf(bz); }
    /// V.
    float getUiqBz(unsigned char bz) const { return get<&Record::uiqBz>(bz); }
    /// 1/128 dB.
    unsigned short getLconReserveBz(unsigned char bz) const { return get<&Record::lconReserveBz>(bz); }
    /// dB.
    unsigned short getDetReserveBz(unsigned char bz) const { return get<&Record::detReserveBz>(bz); }

    void setToleranceLevPre(unsigned short steps) { set<&Record::toleranceLevPre>(steps); }
    void setToleranceLevAtt_15(unsigned short steps) { set<&Record::toleranceLevAtt_15>(steps); }
    void setToleranceLevAtt_30_45(unsigned short steps) { set<&Record::toleranceLevAtt_30_45>(steps); }
    void setToleranceDetAtt(unsigned short steps) { set<&Record::toleranceDetAtt>(steps); }
    void setDetFullScale(float value) { set<&Record::detFullScale>(value); }
    void setNumberOfOperatingStates(unsigned int number) { set<&Record::numberOfOperatingStates>(number); }
    void setPmaxBz(unsigned short code, unsigned char bz) { set<&Record::pmaxBz>(static_cast<float>(code), bz); }
    void setUiqBz(float volts, unsigned char bz) { set<&Record::uiqBz>(volts, bz); }
    void setLconReserveBz(unsigned short steps, unsigned char bz) { set<&Record::lconReserveBz>(steps, bz); }
    void setDetReserveBz(unsigned short decibels, unsigned char bz) { set<&Record::detReserveBz>(decibels, bz); }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong. Stores of each maximum output power
    /// its code, and the record's checksum all the same.
    int setBlock(const HwSDatablockIqOp3RfmCalibDataMisc* record);
    std::ostream& printToStream(std::ostream& os) override;

private:
    unsigned short pmaxOf(unsigned int bz) const;
};

/// The calibration frequencies that belong to the rows of the tables of both generations.
class TRAVIK_DATABLOCK_EXPORT HwDatablockIqOp3RfmCalibDataFreq : public RecordBlock<HwSDatablockIqOp3RfmCalibDataFreq> {
public:
    static constexpr std::string_view keyName = "IQOP3_RFM_CALIB_DATA_FREQ";

    explicit HwDatablockIqOp3RfmCalibDataFreq(bool stopConversionOnError = false)
        : RecordBlock(10302, stopConversionOnError) {}

    /// As stored; may exceed 300 in an image that was not written by this library.
    unsigned int getCount() const { return get<&Record::count>(); }
    void setCount(unsigned int count) { set<&Record::count>(count); }
    /// Of point 0..299; 0 out of range.
    unsigned int getFrequencyValue(unsigned short point) const { return get<&Record::frequency>(point); }
    /// Refreshes the checksum; does nothing out of range.
    void setFrequencyValue(unsigned int frequency, unsigned short point) { set<&Record::frequency>(frequency, point); }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockIqOp3RfmCalibDataFreq* record) {
        return takeOver(record, "HwDatablockIqOp3RfmCalibDataFreq");
    }
    std::ostream& printToStream(std::ostream& os) override;
};

/// The level calibration of one operating state, a row a calibration frequency. A module has up to twelve of these
/// blocks, identifiers 10303 to 10314; a new one has identifier 10303, which `setBlockId` changes.
class TRAVIK_DATABLOCK_EXPORT HwDatablockIqOp3RfmCalibData : public IqModulatorRowTable<HwSDatablockIqOp3RfmCalibData> {
public:
    static constexpr std::string_view keyName = "IQOP3_RFM_CALIB_DATA";

    explicit HwDatablockIqOp3RfmCalibData(bool stopConversionOnError = false);
    HwDatablockIqOp3RfmCalibData(const HwDatablockIqOp3RfmCalibData& other);
    HwDatablockIqOp3RfmCalibData& operator=(const HwDatablockIqOp3RfmCalibData&) = default;

    unsigned int getOperatingState() const { return get<&Record::operatingState>(); }
    void setOperatingState(unsigned int state) { set<&Record::operatingState>(state); }

    /// How many objects of the class were ever made in the process, copies and the dictionary's prototypes included;
    /// printed as the number of the operating state. A conversion of any block's byte order counts as a dictionary. May
    /// be read and counted up from several threads.
    unsigned int getInstanceCounter() const;
    static unsigned int instanceCounter;
    static constexpr unsigned short firstId = 10303;

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong and it is not the record of identifier
    /// 10303 that is zero elsewhere.
    int setBlock(const HwSDatablockIqOp3RfmCalibData* record) {
        return takeTableOver(record, firstId, "HwSDatablockIqOp3RfmCalibData");
    }
    std::ostream& printToStream(std::ostream& os) override;
};

} // namespace Travik
