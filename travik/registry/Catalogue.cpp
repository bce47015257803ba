#include <travik/datablock/AnalogOutputCalibration.h>
#include <travik/datablock/End.h>
#include <travik/datablock/Ident.h>
#include <travik/modules/IqModulatorTables.h>
#include <travik/modules/IqModulatorTablesV20.h>
#include <travik/modules/IqOp6Tables.h>
#include <travik/modules/MicrowaveTables.h>
#include <travik/modules/OutputUnit.h>
#include <travik/modules/ReferenceOscillators.h>
#include <travik/modules/StepAttenuatorTemperature.h>
#include <travik/modules/StepAttenuators.h>
#include <travik/records/IdentityRecords.h>
#include <travik/records/ServiceRecords.h>
#include <travik/records/StatisticsRecords.h>
#include <travik/records/WearCounters.h>
#include <travik/registry/CatalogueRows.h>
#include <travik/rfboard/DunTables.h>
#include <travik/rfboard/KelTables.h>
#include <travik/rfboard/ToviTables.h>
#include <travik/tables/AttenuatorDetectorTables.h>
#include <travik/tables/BasebandInputTables.h>
#include <travik/tables/CalibrationValues.h>
#include <travik/tables/DacBoardTables.h>
#include <travik/tables/ExternalLevelTables.h>
#include <travik/tables/GainTables.h>
#include <travik/tables/LimiterTables.h>
#include <travik/tables/MainBoardUserTables.h>
#include <travik/tables/RfPathTables.h>
#include <travik/tables/WenAnalogTables.h>
#include <travik/tables/WiqTables.h>

#include <algorithm>

namespace Travik {

namespace {

using namespace detail;

template <class StoreT, unsigned int N, unsigned int M>
constexpr CatalogueEntry table(const TableSpec& spec) {
    return bareTable<HwDatablockTemplate, StoreT, N, M>(spec);
}

std::unique_ptr<HwDatablock> levconTempData(const CatalogueEntry& entry, int id) {
    return std::make_unique<HwDatablockToviVectorLevconTempData>(HwDatablockToviVectorLevconTempData::keyOf(id),
                                                                 id - entry.first);
}

constexpr auto axis = Role::Axis;
constexpr auto value = Role::Value;

/// Its key is its creator's choice; a block that is found in an image gets the usual one.
std::unique_ptr<HwDatablock> rfImbalance(const CatalogueEntry& /*entry*/, int /*id*/) {
    return std::make_unique<HwDatablockWenWiqRfImbalanceData>(HwDatablockWenWiqRfImbalanceData::table.key, 0, false);
}

constexpr CatalogueEntry rowsOfAllClasses[] = {
    row<HwDatablockIdent>(2).convertible(),
    row<HwDatablockIdent>(10),
    row<HwDatablockModification>(100).convertible(),
    identified<HwDatablockServiceData>(200, 209).convertible(),
    identified<HwDatablockServiceData>(299, 299),
    row<HwDatablockStatistic>(300).convertible(),
    row<HwDatablockSsynOcxoRefCalValue>(10000),
    row<HwDatablockSsynOpuDblCoefficient>(10001),
    row<HwDatablockSsynOpuLevelFreq>(10002),
    row<HwDatablockSsynOpuLevel>(10003),
    row<HwDatablockIqOp3RfmHarmonic>(10300),
    row<HwDatablockIqOp3RfmCalibDataMisc>(10301),
    row<HwDatablockIqOp3RfmCalibDataFreq>(10302),
    row<HwDatablockIqOp3RfmCalibData>(10303, 10314),
    row<HwDatablockIqOp3RfmCalibDataMiscV20>(10315),
    row<HwDatablockIqOp3RfmCalibDataV20>(10316),
    row<HwDatablockCwOp3AmGainFreq>(10500),
    row<HwDatablockCwOp3AmGainData>(10501),
    row<HwDatablockCwop6VcoIdent>(10502),
    identified<HwDatablockMiscIdent>(10503, 10504),
    row<HwDatablockSAtt3CalibDataFreq>(10601),
    row<HwDatablockSAtt3CalibDataAtt>(10602),
    row<HwDatablockSAtt3CalibDataTemp>(10603),
    instances<HwDatablockSAtt3OWLDCounter>(10604, 10605),
    row<HwDatablockIqOp6PmaxBz>(10900),
    row<HwDatablockIqOp6CalibDataFreq>(10901),
    row<HwDatablockIqOp6CalibData>(10902),
    row<HwDatablockSAtt6CalibDataAtt>(11001),
    row<HwDatablockSAtt6CalibDataFreq>(11200),
    row<HwDatablockSAtt6CalibDataTemp>(11202),
    instances<HwDatablockSAtt6OWLDCounter>(11203, 11204),
    identified<HwDatablockSAttCCounter>(11300, 11303),
    bareTable<HwDatablockTemplateWithoutChecksum, unsigned char, 1, 2048>({11304, "POK_MWIF_SATT_COUNTER", 1.0}),
    flagged<HwDatablockSAttCTempFreq>(11305),
    flagged<HwDatablockSAttCTempGradient>(11306),
    flagged<HwDatablockSAttCTempOffset>(11307),
    identified<HwDatablockCommonStatisticData>(11310, 11313).convertible(),
    row<HwDatablockMbrdSerialNumber>(12000).convertible(),
    row<HwDatablockMbrdModel>(12001).convertible(),
    row<HwDatablockMbrdMac>(12004),
    row<HwDatablockMbrdTimeMonitoringData>(12008),
    flagged<HwDatablockPokMwIfExtLevCalDataFreq>(12040),
    flagged<HwDatablockPokMwIfExtLevCalData>(12041),
    flagged<HwDatablockPokMwIfExtLevCalDataAbsCorr>(12042),
    flagged<HwDatablockPokMwIfExtLevCalDataRelCorr>(12043),
    flagged<HwDatablockPokAttCalDatFreq>(12044),
    flagged<HwDatablockPokAttCalDat>(12045),
    flagged<HwDatablockPokAttCalDatFreqSe>(12046),
    flagged<HwDatablockPokAttCalDatSe>(12047),
    instances<HwDatablockMbrdExtLevCalDataFreq, true>(12050, 12053),
    instances<HwDatablockMbrdExtLevCalData, true>(12060, 12063),
    instances<HwDatablockMbrdExtLevCalDataFreq_Enh, true>(12070, 12071),
    instances<HwDatablockMbrdExtLevCalData_Enh, true>(12080, 12081),
    instances<HwDatablockMbrdExtLevCalDataFreq2Edition_Enh, true>(12090, 12091),
    instances<HwDatablockMbrdExtLevCalData2Edition_Enh, true, 13012>(12095, 12096).alsoOfSize(7012),
    instances<HwDatablockMbrdIqImbalanceRfFreq, true>(12100, 12103),
    instances<HwDatablockMbrdIqImbalanceRfEvenAmp, true>(12110, 12113),
    instances<HwDatablockMbrdIqImbalanceRfEvenPh, true>(12120, 12123),
    instances<HwDatablockMbrdIqImbalanceRfOddAmp, true>(12130, 12133),
    instances<HwDatablockMbrdIqImbalanceRfOddPh, true>(12140, 12143),
    instances<HwDatablockMbrdExtLevCalDataFreq2Edition, true>(12150, 12153),
    instances<HwDatablockMbrdExtLevCalData2Edition, true>(12160, 12163),
    instances<HwDatablockAttCalDataFreq2Edition, true>(12170, 12173),
    instances<HwDatablockAttCalData2Edition, true>(12180, 12183),
    instances<HwDatablockCwop3DetTuneFreq, true>(12190, 12193),
    instances<HwDatablockCwop3DetTuneDac, true>(12200, 12203),
    instances<HwDatablockMbrdRfResponseLpFreq, true>(12210, 12213),
    instances<HwDatablockMbrdRfResponseIoPepInfo, true>(12220, 12223),
    instances<HwDatablockMbrdRfResponseLpAmp, true>(12230, 12233),
    instances<HwDatablockMbrdRfResponseLpPh, true>(12240, 12243),
    instances<HwDatablockMbrdRfResponseBbFreq, true>(12250, 12253),
    instances<HwDatablockMbrdRfResponseAttFreq, true>(12260, 12263),
    instances<HwDatablockMbrdRfResponseAttAmpl, true>(12270, 12273),
    row<HwDatablockOrbMbrdPllDacCalibValue>(12280),
    instances<HwDatablockCwopDetLinCorrFreq, true>(12290, 12291),
    instances<HwDatablockCwopDetLinCorrData, true>(12292, 12293),
    table<int, 200, 1>({12300, "LOOPGAIN_FREQ", 0.01, "", axis}),
    table<int, 1, 200>({12301, "LOOPGAIN_PK", 1000.0, "", value, 0, -1}),
    table<int, 1, 200>({12302, "LOOPGAIN_P_VALUE_BASE_PK", 1000.0, "", value, 0, -2}),
    table<int, 1, 200>({12303, "LOOPGAIN_I_VALUE_BASE_PK", 1000.0, "", value, 0, -3}),
    table<int, 1, 200>({12304, "LOOPGAIN_I_VALUE_OFFSET_PK", 1.0, "", value, 0, -4}),
    table<int, 50, 1>({12305, "LOOPGAIN_PK_LIST", 1.0, "", axis}),
    table<int, 50, 200>({12306, "LOOPGAIN_P_VALUE_BASE_PK_LIST", 1000.0, "", value, -1, -6}),
    table<int, 50, 200>({12307, "LOOPGAIN_I_VALUE_BASE_PK_LIST", 1000.0, "", value, -2, -7}),
    table<int, 50, 200>({12308, "LOOPGAIN_I_VALUE_OFFSET_PK_LIST", 1.0, "", value, -3, -8}),
    table<int, 10, 1>({12310, "POK_DCON_VTRIM_VALUE", 1.0}),
    table<int, 1, 1>({12311, "POK_DCON_LEVELPRE2", 1.0}),
    table<int, 10, 1>({12312, "LIR_FREQCNTR_TCXO_REF_CAL_VALUE", 1.0}),
    table<int, 100, 1>({12313, "LIMITER_MAX_VOLTAGE", 0.00001}),
    table<int, 100, 1>({12314, "LIMITER_MAX_VOLTAGE", 100000.0}),
    table<int, 100, 1>({12315, "LIMITER_MAX_VOLTAGE_PUM_ON", 0.00001}),
    row<HwDatablockDacIfFullScale>(12500),
    flagged<HwDatablockBbinsCompFilterTabsI>(13000),
    flagged<HwDatablockBbinsCompFilterTabsQ>(13050),
    flagged<HwDatablockBbinsUncalibratedFirAmplitudeI>(13100),
    flagged<HwDatablockBbinsUncalibratedFirPhiI>(13101),
    flagged<HwDatablockBbinsUncalibratedFirAmplitudeQ>(13102),
    flagged<HwDatablockBbinsUncalibratedFirPhiQ>(13103),
    flagged<HwDatablockDacbFrequencyCompFreq>(13500),
    flagged<HwDatablockDacbFrequencyCompAmp>(13600),
    flagged<HwDatablockDacbFrequencyCompPh>(13700),
    flagged<HwDatablockDacbFrequencyCompDt>(13800),
    flagged<HwDatablockDacbIqImbalanceFreq>(13900),
    flagged<HwDatablockDacbIqImbalanceAmp>(14000),
    flagged<HwDatablockDacbIqImbalancePh>(14100),
    flagged<HwDatablockDacbIqImbalanceSwapAmp>(14200),
    flagged<HwDatablockDacbIqImbalanceSwapPh>(14300),
    flagged<HwDatablockDacbFrequencyCompAmpRear>(14400),
    flagged<HwDatablockDacbFrequencyCompPhRear>(14500),
    flagged<HwDatablockDacbFrequencyCompDtRear>(14600),
    flagged<HwDatablockDacbIqImbalanceRearAmp>(14700),
    flagged<HwDatablockDacbIqImbalanceRearPh>(14800),
    row<HwDatablockMbrdIqInputA>(14801),
    row<HwDatablockMbrdIqInputB>(14802),
    row<HwDatablockMbrdExtCalUserFreqA>(14803),
    row<HwDatablockMbrdExtCalUserFreqB>(14804),
    row<HwDatablockMbrdExtCalUserDataA>(14805),
    row<HwDatablockMbrdExtCalUserDataB>(14806),
    row<HwDatablockSynexOcxoRefCalValue>(15000),
    row<HwDatablockFsynTcxoRefCalValue>(15001),
    row<HwDatablockPokOcxoRefCalValue>(15002),
    row<HwDatablockDetLimiterMaxVoltFreq>(15020),
    row<HwDatablockDetLimiterMaxVoltData>(15021),
    table<int, 10, 1>({15022, "POK_TEMPERATURE", 100.0, "", axis}),
    table<int, 10, 1>({15023, "POK_TEMPCORR_LEVEL", 0.01, "", value, -1, 0}),
    table<int, 1, 1>({15024, "DET_DIFF_TEMPERATURE", 100.0}),
    table<int, 1, 1>({15025, "DET_TEMPCORR_LOW_FREQ", 100.0}),
    table<int, 1, 1>({15026, "DET_TEMPCORR_HIGH_FREQ", 100.0}),
    table<int, 10, 10>({15027, "DET_TEMPCORR_MIN_FREQ_VALUES", 100.0}),
    table<int, 10, 10>({15028, "DET_TEMPCORR_MAX_FREQ_VALUES", 100.0}),
    instances<HwWenDatablockAnalogOutputCalibration, false>(15500, 15501).unregistered(),
    row<HwDatablockWENDelay>(15504).unregistered(),
    row<HwDatablockWenAnalogImbalanceFreq>(15600).unregistered(),
    row<HwDatablockWenAnalogImbalanceGainI>(15601).unregistered(),
    row<HwDatablockWenAnalogImbalanceGainQ>(15602).unregistered(),
    row<HwDatablockWenAnalogImbalancePhI>(15603).unregistered(),
    row<HwDatablockWenAnalogImbalancePhQ>(15604).unregistered(),
    row<HwDatablockWenBaseboardCalibValue>(15605).unregistered(),
    rows<HwDatablockWenWiqRfImbalanceData>(15606, 15606, rfImbalance).unregistered(),
    row<HwDatablockWenWiqSensorData>(15648).unregistered(),
    row<HwDatablockWenWIQQuadDac>(15649).unregistered(),
    row<HwDatablockAduLevCoarseCalibData>(15650),
    row<HwDatablockAduGainOffsetCalData>(15652),
    row<HwDatablockStereocoderCo>(15690).convertible(),
    row<HwDatablockKelRfboExtInGain>(15700).convertible(),
    row<HwDatablockKelRfboExtInOffset>(15701).convertible(),
    row<HwDatablockKelRfboDetTuneFreq>(15705).convertible(),
    row<HwDatablockKelRfboDetTuneData>(15706).convertible(),
    row<HwDatablockKelRfboTcxoCal>(15710).convertible(),
    row<HwDatablockKelRfboRfLevelMaxFreq>(15715).convertible(),
    row<HwDatablockKelRfboRfLevelMaxData>(15716).convertible(),
    row<HwDatablockKelRfboAttCalFreq>(15720).convertible(),
    row<HwDatablockKelRfboAttCalData>(15721).convertible(),
    row<HwDatablockKelRfboExtCalFreq>(15725).convertible(),
    row<HwDatablockKelRfboExtCalData>(15726).convertible(),
    row<HwDatablockKelRfboAlcFreq>(15730).convertible(),
    row<HwDatablockKelRfboAlcData>(15731).convertible(),
    row<HwDatablockKelRfboTempFreq>(15735).convertible(),
    row<HwDatablockKelRfboTempGradient>(15740).convertible(),
    row<HwDatablockKelRfboTempOffset>(15745).convertible(),
    row<HwDatablockKelRfboAttRegData>(15750).convertible(),
    row<HwDatablockKelRfboSHFreq>(15755).convertible(),
    row<HwDatablockKelRfboSHData>(15756).convertible(),
    row<HwDatablockDunRfboAttCalFreq>(15760),
    row<HwDatablockDunRfboAttCalData>(15761),
    row<HwDatablockDunRfboTempCompFreq>(15770),
    row<HwDatablockDunRfboTempCompData>(15771),
    row<HwDatablockDunRfboAttRegAttenuation>(15798),
    row<HwDatablockDunRfboAttRegData>(15799),
    row<HwDatablockToviVectorRfLevelMaxFreq>(15800).convertible(),
    row<HwDatablockToviVectorRfLevelMaxData>(15801).convertible(),
    row<HwDatablockToviVectorAlcFreq>(15810).convertible(),
    row<HwDatablockToviVectorAlcData>(15811).convertible(),
    row<HwDatablockToviVectorAlcIqNormFreq>(15820).convertible(),
    row<HwDatablockToviVectorAlcIqNormData>(15821).convertible(),
    row<HwDatablockToviVectorAlcIqWideFreq>(15830).convertible(),
    row<HwDatablockToviVectorAlcIqWideData>(15831).convertible(),
    row<HwDatablockToviRfBoExtCalVecFreq>(15840).convertible(),
    row<HwDatablockToviRfBoExtCalVecData>(15841).convertible(),
    row<HwDatablockToviRfboAttCalVecFreq>(15842).convertible(),
    row<HwDatablockToviRfboAttCalVecData>(15843).convertible(),
    row<HwDatablockToviRfboRfLevelMaxVecFreq>(15844).convertible(),
    row<HwDatablockToviRfboRfLevelMaxVecData>(15845).convertible(),
    row<HwDatablockToviVectorLevconTemp>(15850).convertible(),
    row<HwDatablockToviVectorLevconTempFreq>(15851).convertible(),
    row<HwDatablockToviVectorLevconTempLevcon>(15852).convertible(),
    rows<HwDatablockToviVectorLevconTempData>(15853, 15862, levconTempData).convertible(),
    row<HwDatablockKelRfboExtCalUserFreq>(16000).convertible(),
    row<HwDatablockKelRfboExtCalUserData>(16001).convertible(),
    row<HwDatablockToviRfboExtCalVecUserFreq>(16002).convertible(),
    row<HwDatablockToviRfboExtCalVecUserData>(16003).convertible(),
    row<HwDatablockEnd>(65535),
};

static_assert(std::ranges::is_sorted(rowsOfAllClasses, {}, &CatalogueEntry::first));

} // namespace

std::span<const CatalogueEntry> catalogue() { return rowsOfAllClasses; }

const CatalogueEntry* findEntry(int id) {
    const auto* const behind = std::ranges::upper_bound(rowsOfAllClasses, id, {}, &CatalogueEntry::first);
    if (behind == std::begin(rowsOfAllClasses))
        return nullptr;
    const CatalogueEntry& entry = *std::prev(behind);
    return id <= entry.last ? &entry : nullptr;
}

} // namespace Travik
