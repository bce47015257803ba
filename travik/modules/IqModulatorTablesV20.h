#pragma once

#include <travik/modules/IqModulatorTables.h>

/// The calibration of the IQ modulator board's RF module, second generation.
namespace Travik {

#pragma pack(push, 1)
/// The named values: 116 bytes.
struct HwSDatablockIqOp3RfmCalibDataMiscV20 : HwSDatablockHeader {
    float lmaxLow;
    float lmaxMed;
    float lmaxHigh;
    float lmaxOvr;
    float lcalSensLow;
    float lcalSensMed;
    float lcalSensHigh;
    float lcalSensOvr;
    float vcalSensLow;
    float vcalSensMed;
    float vcalSensHigh;
    float vcalSensOvr;
    float lrangeCwNorm;
    float lrangeCwOvr;
    float lrangeIqNorm;
    float lrangeIqOvr;
    float uiq; ///< baseband voltage, V
    float lconReserveCwNorm;
    float lconReserveCwOvr;
    float lconReserveIqNorm;
    float lconReserveIqOvr;
    float lpreCalLevCwNorm;
    float lpreCalLevCwOvr;
    float lpreCalLevIqNorm;
    float lpreCalLevIqOvr;
    short detattLow;
    short detattMed;
    short detattHigh;
    short detattOvr;
};

/// A row of the table: 48 bytes.
struct HwSIqOp3RfmCalibDataBlockV20 {
    float sensLow; ///< sensitivities in DAC steps per mW
    float sensMed;
    float sensHigh;
    float sensOvr;
    short lpreCwNorm; ///< level presets in dB
    short lpreCwOvr;
    short lpreIqNorm;
    short lpreIqOvr;
    float levAtt15Norm; ///< level attenuations in dB
    float levAtt30Norm;
    float levAtt45Norm;
    float levAtt15Ovr;
    float levAtt30Ovr;
    float levAtt45Ovr;
};

/// The level calibration, a row a calibration frequency: 14408 bytes.
struct HwSDatablockIqOp3RfmCalibDataV20 : HwSDatablockHeader {
    HwSIqOp3RfmCalibDataBlockV20 rows[300];
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockIqOp3RfmCalibDataMiscV20) == 116);
static_assert(sizeof(HwSIqOp3RfmCalibDataBlockV20) == 48);
static_assert(sizeof(HwSDatablockIqOp3RfmCalibDataV20) == 14408);

/// Byte by byte: 0.0 and -0.0 differ, and a NaN equals itself.
inline bool operator==(const HwSIqOp3RfmCalibDataBlockV20& left, const HwSIqOp3RfmCalibDataBlockV20& right) {
    return detail::sameBytes(left, right);
}
/// Header and every row, byte by byte.
inline bool operator==(const HwSDatablockIqOp3RfmCalibDataV20& left, const HwSDatablockIqOp3RfmCalibDataV20& right) {
    return detail::sameBytes(left, right);
}

namespace detail {

/// The names in capitals are the keys that the block prints.
consteval auto describeIqModulatorMiscV20() {
    using R = HwSDatablockIqOp3RfmCalibDataMiscV20;
    return describe<R>(
        field<&R::lmaxLow>("lmax_low"), field<&R::lmaxMed>("lmax_med"), field<&R::lmaxHigh>("lmax_high"),
        field<&R::lmaxOvr>("lmax_ovr"), field<&R::lcalSensLow>("lcal_sens_low"),
        field<&R::lcalSensMed>("lcal_sens_med"), field<&R::lcalSensHigh>("lcal_sens_high"),
        field<&R::lcalSensOvr>("lcal_sens_ovr"), field<&R::vcalSensLow>("vcal_sens_low"),
        field<&R::vcalSensMed>("vcal_sens_med"), field<&R::vcalSensHigh>("vcal_sens_high"),
        field<&R::vcalSensOvr>("vcal_sens_ovr"), field<&R::lrangeCwNorm>("lrange_cw_norm"),
        field<&R::lrangeCwOvr>("lrange_cw_ovr"), field<&R::lrangeIqNorm>("lrange_iq_norm"),
        field<&R::lrangeIqOvr>("lrange_iq_ovr"), field<&R::uiq>("uiq").in("V"),
        field<&R::lconReserveCwNorm>("lcon_reserve_cw_norm"), field<&R::lconReserveCwOvr>("lcon_reserve_cw_ovr"),
        field<&R::lconReserveIqNorm>("lcon_reserve_iq_norm"), field<&R::lconReserveIqOvr>("lcon_reserve_iq_ovr"),
        field<&R::lpreCalLevCwNorm>("lpre_cal_lev_cw_norm"), field<&R::lpreCalLevCwOvr>("lpre_cal_lev_cw_ovr"),
        field<&R::lpreCalLevIqNorm>("lpre_cal_lev_iq_norm"), field<&R::lpreCalLevIqOvr>("lpre_cal_lev_iq_ovr"),
        field<&R::detattLow>("detatt_low"), field<&R::detattMed>("detatt_med"), field<&R::detattHigh>("detatt_high"),
        field<&R::detattOvr>("detatt_ovr"));
}

consteval auto describeIqModulatorRowsV20() {
    using R = HwSDatablockIqOp3RfmCalibDataV20;
    using Row = HwSIqOp3RfmCalibDataBlockV20;
    constexpr const char* sens = "DAC/mW";
    return describe<R>(
        entries<&R::rows>(
            field<&Row::sensLow>("sens_low").in(sens), field<&Row::sensMed>("sens_med").in(sens),
            field<&Row::sensHigh>("sens_high").in(sens), field<&Row::sensOvr>("sens_ovr").in(sens),
            field<&Row::lpreCwNorm>("lpre_cw_norm").in("dB"), field<&Row::lpreCwOvr>("lpre_cw_ovr").in("dB"),
            field<&Row::lpreIqNorm>("lpre_iq_norm").in("dB"), field<&Row::lpreIqOvr>("lpre_iq_ovr").in("dB"),
            field<&Row::levAtt15Norm>("lev_att_15_norm").in("dB"),
            field<&Row::levAtt30Norm>("lev_att_30_norm").in("dB"),
            field<&Row::levAtt45Norm>("lev_att_45_norm").in("dB"), field<&Row::levAtt15Ovr>("lev_att_15_ovr").in("dB"),
            field<&Row::levAtt30Ovr>("lev_att_30_ovr").in("dB"), field<&Row::levAtt45Ovr>("lev_att_45_ovr").in("dB"))
            .along(0, "point", nullptr, 10302));
}

} // namespace detail

template <>
inline constexpr auto recordFields<HwSDatablockIqOp3RfmCalibDataMiscV20> = detail::describeIqModulatorMiscV20();

template <>
inline constexpr auto recordFields<HwSDatablockIqOp3RfmCalibDataV20> = detail::describeIqModulatorRowsV20();

/// The named values, each for the ranges (low, medium, high, overrange) or the operating modes (CW or IQ, normal or
/// overrange) that its name ends with. Setters refresh the checksum.
class TRAVIK_DATABLOCK_EXPORT HwDatablockIqOp3RfmCalibDataMiscV20
    : public RecordBlock<HwSDatablockIqOp3RfmCalibDataMiscV20> {
public:
    static constexpr std::string_view keyName = "IQOP3_RFM_CALIB_DATA_MISC_V20";

    explicit HwDatablockIqOp3RfmCalibDataMiscV20(bool stopConversionOnError = false)
        : RecordBlock(10315, stopConversionOnError) {}

    float getLmaxLow() const { return get<&Record::lmaxLow>(); }
    float getLmaxMed() const { return get<&Record::lmaxMed>(); }
    float getLmaxHigh() const { return get<&Record::lmaxHigh>(); }
    float getLmaxOvr() const { return get<&Record::lmaxOvr>(); }
    float getLcalSensLow() const { return get<&Record::lcalSensLow>(); }
    float getLcalSensMed() const { return get<&Record::lcalSensMed>(); }
    float getLcalSensHigh() const { return get<&Record::lcalSensHigh>(); }
    float getLcalSensOvr() const { return get<&Record::lcalSensOvr>(); }
    float getVcalSensLow() const { return get<&Record::vcalSensLow>(); }
    float getVcalSensMed() const { return get<&Record::vcalSensMed>(); }
    float getVcalSensHigh() const { return get<&Record::vcalSensHigh>(); }
    float getVcalSensOvr() const { return get<&Record::vcalSensOvr>(); }
    float getLrangeCwNorm() const { return get<&Record::lrangeCwNorm>(); }
    float getLrangeCwOvr() const { return get<&Record::lrangeCwOvr>(); }
    float getLrangeIqNorm() const { return get<&Record::lrangeIqNorm>(); }
    float getLrangeIqOvr() const { return get<&Record::lrangeIqOvr>(); }
    float getUiq() const { return get<&Record::uiq>(); }
    float getLconReserveCwNorm() const { return get<&Record::lconReserveCwNorm>(); }
    float getLconReserveCwOvr() const { return get<&Record::lconReserveCwOvr>(); }
    float getLconReserveIqNorm() const { return get<&Record::lconReserveIqNorm>(); }
    float getLconReserveIqOvr() const { return get<&Record::lconReserveIqOvr>(); }
    float getLpreCalLevCwNorm() const { return get<&Record::lpreCalLevCwNorm>(); }
    float getLpreCalLevCwOvr() const { return get<&Record::lpreCalLevCwOvr>(); }
    float getLpreCalLevIqNorm() const { return get<&Record::lpreCalLevIqNorm>(); }
    float getLpreCalLevIqOvr() const { return get<&Record::lpreCalLevIqOvr>(); }
    short getDetattLow() const { return get<&Record::detattLow>(); }
    short getDetattMed() const { return get<&Record::detattMed>(); }
    short getDetattHigh() const { return get<&Record::detattHigh>(); }
    short getDetattOvr() const { return get<&Record::detattOvr>(); }

    void setLmaxLow(float value) { set<&Record::lmaxLow>(value); }
    void setLmaxMed(float value) { set<&Record::lmaxMed>(value); }
    void setLmaxHigh(float value) { set<&Record::lmaxHigh>(value); }
    void setLmaxOvr(float value) { set<&Record::lmaxOvr>(value); }
    void setLcalSensLow(float value) { set<&Record::lcalSensLow>(value); }
    void setLcalSensMed(float value) { set<&Record::lcalSensMed>(value); }
    void setLcalSensHigh(float value) { set<&Record::lcalSensHigh>(value); }
    void setLcalSensOvr(float value) { set<&Record::lcalSensOvr>(value); }
    void setVcalSensLow(float value) { set<&Record::vcalSensLow>(value); }
    void setVcalSensMed(float value) { set<&Record::vcalSensMed>(value); }
    void setVcalSensHigh(float value) { set<&Record::vcalSensHigh>(value); }
    void setVcalSensOvr(float value) { set<&Record::vcalSensOvr>(value); }
    void setLrangeCwNorm(float value) { set<&Record::lrangeCwNorm>(value); }
    void setLrangeCwOvr(float value) { set<&Record::lrangeCwOvr>(value); }
    void setLrangeIqNorm(float value) { set<&Record::lrangeIqNorm>(value); }
    void setLrangeIqOvr(float value) { set<&Record::lrangeIqOvr>(value); }
    void setUiq(float value) { set<&Record::uiq>(value); }
    void setLconReserveCwNorm(float value) { set<&Record::lconReserveCwNorm>(value); }
    void setLconReserveCwOvr(float value) { set<&Record::lconReserveCwOvr>(value); }
    void setLconReserveIqNorm(float value) { set<&Record::lconReserveIqNorm>(value); }
    void setLconReserveIqOvr(float value) { set<&Record::lconReserveIqOvr>(value); }
    void setLpreCalLevCwNorm(float value) { set<&Record::lpreCalLevCwNorm>(value); }
    void setLpreCalLevCwOvr(float value) { set<&Record::lpreCalLevCwOvr>(value); }
    void setLpreCalLevIqNorm(float value) { set<&Record::lpreCalLevIqNorm>(value); }
    void setLpreCalLevIqOvr(float value) { set<&Record::lpreCalLevIqOvr>(value); }
    void setDetattLow(short value) { set<&Record::detattLow>(value); }
    void setDetattMed(short value) { set<&Record::detattMed>(value); }
    void setDetattHigh(short value) { set<&Record::detattHigh>(value); }
    void setDetattOvr(short value) { set<&Record::detattOvr>(value); }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockIqOp3RfmCalibDataMiscV20* record) {
        return takeOver(record, "HwDatablockIqOp3RfmCalibDataMiscV20");
    }
    std::ostream& printToStream(std::ostream& os) override;
};

/// The level calibration, a row a calibration frequency of the frequency block.
class TRAVIK_DATABLOCK_EXPORT HwDatablockIqOp3RfmCalibDataV20
    : public IqModulatorRowTable<HwSDatablockIqOp3RfmCalibDataV20> {
public:
    static constexpr std::string_view keyName = "IQOP3_RFM_CALIB_DATA_V20";

    explicit HwDatablockIqOp3RfmCalibDataV20(bool stopConversionOnError = false)
        : IqModulatorRowTable(ownId, stopConversionOnError) {}

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong and it is not the record of identifier
    /// 10316 that is zero elsewhere.
    int setBlock(const HwSDatablockIqOp3RfmCalibDataV20* record) {
        return takeTableOver(record, ownId, "HwSDatablockIqOp3RfmCalibDataV20");
    }
    /// Prints numbers with the stream's precision, in general notation; the stream's format flags are as before.
    std::ostream& printToStream(std::ostream& os) override;

private:
    static constexpr unsigned short ownId = 10316;
};

} // namespace Travik
