#pragma once

#include <travik/datablock/RecordBlock.h>

/// The level calibration of the IQOP6 IQ modulator board.
namespace Travik {

#pragma pack(push, 1)
/// The reference level of each operating state: 44 bytes.
struct HwSDatablockIqOp6PmaxBz : HwSDatablockHeader {
    unsigned int count;
    signed char pmaxBz[32];
};

/// The frequency points: 152 bytes.
struct HwSDatablockIqOp6CalibDataFreq : HwSDatablockHeader {
    unsigned int count;
    unsigned short frequency[70]; ///< MHz
};

/// Attenuator settings and DA values of each frequency point: 4628 bytes.
struct HwSDatablockIqOp6CalibData : HwSDatablockHeader {
    unsigned char levAtt_20[70];
    unsigned char levAtt_40[70];
    unsigned short daValueBz[32][70]; ///< by operating state and frequency point
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockIqOp6PmaxBz) == 44);
static_assert(sizeof(HwSDatablockIqOp6CalibDataFreq) == 152);
static_assert(sizeof(HwSDatablockIqOp6CalibData) == 4628);

template <>
inline constexpr auto recordFields<HwSDatablockIqOp6PmaxBz> = describe<HwSDatablockIqOp6PmaxBz>(
    field<&HwSDatablockIqOp6PmaxBz::count>("count").as(Role::Count),
    field<&HwSDatablockIqOp6PmaxBz::pmaxBz>("pmax_bz").along(0, "operating_state", "count"));

template <>
inline constexpr auto recordFields<HwSDatablockIqOp6CalibDataFreq> =
    describe<HwSDatablockIqOp6CalibDataFreq>(field<&HwSDatablockIqOp6CalibDataFreq::count>("count").as(Role::Count),
                                             field<&HwSDatablockIqOp6CalibDataFreq::frequency>("frequency")
                                                 .in("Hz", 1e6)
                                                 .as(Role::Axis)
                                                 .along(0, "point", "count"));

template <>
inline constexpr auto recordFields<HwSDatablockIqOp6CalibData> = describe<HwSDatablockIqOp6CalibData>(
    field<&HwSDatablockIqOp6CalibData::levAtt_20>("lev_att_20").along(0, "point", nullptr, 10901),
    field<&HwSDatablockIqOp6CalibData::levAtt_40>("lev_att_40").along(0, "point", nullptr, 10901),
    field<&HwSDatablockIqOp6CalibData::daValueBz>("da_value_bz")
        .along(0, "operating_state")
        .along(1, "point", nullptr, 10901));

/// The reference level of each operating state, 0..31. Setters refresh the checksum.
class TRAVIK_DATABLOCK_EXPORT HwDatablockIqOp6PmaxBz : public RecordBlock<HwSDatablockIqOp6PmaxBz> {
public:
    static constexpr std::string_view keyName = "IQOP6_PMAX_BZ";

    explicit HwDatablockIqOp6PmaxBz(bool stopConversionOnError = false) : RecordBlock(10900, stopConversionOnError) {}

    /// As stored; may exceed 32 in an image that was not written by this library.
    unsigned int getNumberOfPmax() const { return get<&Record::count>(); }
    void setCount(unsigned short count) { set<&Record::count>(count); }
    /// -128..127; 0 out of range.
    short getPmaxBz(unsigned char bz) const { return get<&Record::pmaxBz>(bz); }
    /// Stores the low byte of the level; does nothing out of range.
    void setPmaxBz(short level, unsigned char bz) { set<&Record::pmaxBz>(static_cast<signed char>(level), bz); }

    /// Takes a record over, of its count the low 16 bits: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockIqOp6PmaxBz* record);
    std::ostream& printToStream(std::ostream& os) override;
};

/// The frequency points, 0..69. Setters refresh the checksum.
class TRAVIK_DATABLOCK_EXPORT HwDatablockIqOp6CalibDataFreq : public RecordBlock<HwSDatablockIqOp6CalibDataFreq> {
public:
    static constexpr std::string_view keyName = "IQOP6_CALIB_DATA_FREQ";

    explicit HwDatablockIqOp6CalibDataFreq(bool stopConversionOnError = false)
        : RecordBlock(10901, stopConversionOnError) {}

    /// As stored; may exceed 70 in an image that was not written by this library.
    unsigned int getNumberOfFrequency() const { return get<&Record::count>(); }
    void setCount(unsigned short count) { set<&Record::count>(count); }
    /// Hz; 0 out of range. Points are strictly ascending: one that repeats the point before is 0.01 Hz above it.
    double getFrequencyValue(unsigned char point) const { return frequencyOf(point); }
    /// MHz; does nothing out of range.
    void setFrequencyValue(unsigned short megahertz, unsigned char point) { set<&Record::frequency>(megahertz, point); }

    /// Takes a record over, of its count the low 16 bits: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockIqOp6CalibDataFreq* record);
    std::ostream& printToStream(std::ostream& os) override;

private:
    double frequencyOf(unsigned int point) const;
};

/// Two attenuator settings of each frequency point, 0..69, and for each operating state, 0..31, a DA value. Setters
/// refresh the checksum and do nothing out of range, where getters answer 0.
class TRAVIK_DATABLOCK_EXPORT HwDatablockIqOp6CalibData : public RecordBlock<HwSDatablockIqOp6CalibData> {
public:
    static constexpr std::string_view keyName = "IQOP6_CALIB_DATA";

    explicit HwDatablockIqOp6CalibData(bool stopConversionOnError = false)
        : RecordBlock(10902, stopConversionOnError) {}

    unsigned short getLevAtt_20(unsigned char row) const { return get<&Record::levAtt_20>(row); }
    unsigned short getLevAtt_40(unsigned char row) const { return get<&Record::levAtt_40>(row); }
    unsigned short getDaValueBz(unsigned char bz, unsigned char row) const { return get<&Record::daValueBz>(bz, row); }

    /// Stores the low byte of the setting.
    void setLevAtt_20(unsigned short setting, unsigned char row) {
        set<&Record::levAtt_20>(static_cast<unsigned char>(setting), row);
    }
    /// Stores the low byte of the setting.
    void setLevAtt_40(unsigned short setting, unsigned char row) {
        set<&Record::levAtt_40>(static_cast<unsigned char>(setting), row);
    }
    void setDaValueBz(unsigned short value, unsigned char bz, unsigned char row) {
        set<&Record::daValueBz>(value, bz, row);
    }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockIqOp6CalibData* record) { return takeOver(record, "HwDatablockIqOp6CalibData"); }
    std::ostream& printToStream(std::ostream& os) override;
};

} // namespace Travik
