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
#include <array>

namespace Travik {

namespace {

using namespace detail;

template <class StoreT, unsigned int N, unsigned int M>
constexpr CatalogueEntry table(const TableSpec& spec) {
    return bareTable<HwDatablockTemplate, StoreT, N, M>(spec);
}

std::unique_ptr<HwDatablock> levconTempData(const CatalogueEntry& entry, int id) {
    return made<HwDatablockToviVectorLevconTempData>(HwDatablockToviVectorLevconTempData::keyOf(id), id - entry.first);
}

/// Its key is its creator's choice; a block that is found in an image gets the usual one.
std::unique_ptr<HwDatablock> rfImbalance(const CatalogueEntry& /*entry*/, int /*id*/) {
    return made<HwDatablockWenWiqRfImbalanceData>(HwDatablockWenWiqRfImbalanceData::table.key, 0, false);
}

std::unique_ptr<HwDatablock> analogOutput(const CatalogueEntry& entry, int id) {
    return made<HwWenDatablockAnalogOutputCalibration>(static_cast<unsigned int>(id - entry.first), false);
}

constexpr CatalogueEntry rowsOfAllClasses[] = {
    row<HwDatablockIdent>(2).convertible(),
    row<HwDatablockIdent>(10),
    row<HwDatablockModification>(100).convertible(),
    rowsByIdentifier<HwDatablockServiceData>(200, 209).convertible(),
    rowsByIdentifier<HwDatablockServiceData>(299, 299),
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
    rowsByIdentifier<HwDatablockMiscIdent>(10503, 10504),
    row<HwDatablockSAtt3CalibDataFreq>(10601),
    row<HwDatablockSAtt3CalibDataAtt>(10602),
    row<HwDatablockSAtt3CalibDataTemp>(10603),
    rowsByInstance<HwDatablockSAtt3OWLDCounter>(10604, 10605),
    row<HwDatablockIqOp6PmaxBz>(10900),
    row<HwDatablockIqOp6CalibDataFreq>(10901),
    row<HwDatablockIqOp6CalibData>(10902),
    row<HwDatablockSAtt6CalibDataAtt>(11001),
    row<HwDatablockSAtt6CalibDataFreq>(11200),
    row<HwDatablockSAtt6CalibDataTemp>(11202),
    rowsByInstance<HwDatablockSAtt6OWLDCounter>(11203, 11204),
    rowsByIdentifier<HwDatablockSAttCCounter>(11300, 11303),
    bareTable<HwDatablockTemplateWithoutChecksum, unsigned char, 1, 2048>(
        {.id = 11304, .key = "POK_MWIF_SATT_COUNTER"}),
    rowWithStopFlag<HwDatablockSAttCTempFreq>(11305),
    rowWithStopFlag<HwDatablockSAttCTempGradient>(11306),
    rowWithStopFlag<HwDatablockSAttCTempOffset>(11307),
    rowsByIdentifier<HwDatablockCommonStatisticData>(11310, 11313).convertible(),
    row<HwDatablockMbrdSerialNumber>(12000).convertible(),
    row<HwDatablockMbrdModel>(12001).convertible(),
    row<HwDatablockMbrdMac>(12004),
    row<HwDatablockMbrdTimeMonitoringData>(12008),
    rowWithStopFlag<HwDatablockPokMwIfExtLevCalDataFreq>(12040),
    rowWithStopFlag<HwDatablockPokMwIfExtLevCalData>(12041),
    rowWithStopFlag<HwDatablockPokMwIfExtLevCalDataAbsCorr>(12042),
    rowWithStopFlag<HwDatablockPokMwIfExtLevCalDataRelCorr>(12043),
    rowWithStopFlag<HwDatablockPokAttCalDatFreq>(12044),
    rowWithStopFlag<HwDatablockPokAttCalDat>(12045),
    rowWithStopFlag<HwDatablockPokAttCalDatFreqSe>(12046),
    rowWithStopFlag<HwDatablockPokAttCalDatSe>(12047),
    rowsByInstance<HwDatablockMbrdExtLevCalDataFreq, true>(12050, 12053),
    rowsByInstance<HwDatablockMbrdExtLevCalData, true>(12060, 12063),
    rowsByInstance<HwDatablockMbrdExtLevCalDataFreq_Enh, true>(12070, 12071),
    rowsByInstance<HwDatablockMbrdExtLevCalData_Enh, true>(12080, 12081),
    rowsByInstance<HwDatablockMbrdExtLevCalDataFreq2Edition_Enh, true>(12090, 12091),
    rowsByInstance<HwDatablockMbrdExtLevCalData2Edition_Enh, true, 13012>(12095, 12096).alsoOfSize(7012),
    rowsByInstance<HwDatablockMbrdIqImbalanceRfFreq, true>(12100, 12103),
    rowsByInstance<HwDatablockMbrdIqImbalanceRfEvenAmp, true>(12110, 12113),
    rowsByInstance<HwDatablockMbrdIqImbalanceRfEvenPh, true>(12120, 12123),
    rowsByInstance<HwDatablockMbrdIqImbalanceRfOddAmp, true>(12130, 12133),
    rowsByInstance<HwDatablockMbrdIqImbalanceRfOddPh, true>(12140, 12143),
    rowsByInstance<HwDatablockMbrdExtLevCalDataFreq2Edition, true>(12150, 12153),
    rowsByInstance<HwDatablockMbrdExtLevCalData2Edition, true>(12160, 12163),
    rowsByInstance<HwDatablockAttCalDataFreq2Edition, true>(12170, 12173),
    rowsByInstance<HwDatablockAttCalData2Edition, true>(12180, 12183),
    rowsByInstance<HwDatablockCwop3DetTuneFreq, true>(12190, 12193),
    rowsByInstance<HwDatablockCwop3DetTuneDac, true>(12200, 12203),
    rowsByInstance<HwDatablockMbrdRfResponseLpFreq, true>(12210, 12213),
    rowsByInstance<HwDatablockMbrdRfResponseIoPepInfo, true>(12220, 12223),
    rowsByInstance<HwDatablockMbrdRfResponseLpAmp, true>(12230, 12233),
    rowsByInstance<HwDatablockMbrdRfResponseLpPh, true>(12240, 12243),
    rowsByInstance<HwDatablockMbrdRfResponseBbFreq, true>(12250, 12253),
    rowsByInstance<HwDatablockMbrdRfResponseAttFreq, true>(12260, 12263),
    rowsByInstance<HwDatablockMbrdRfResponseAttAmpl, true>(12270, 12273),
    row<HwDatablockOrbMbrdPllDacCalibValue>(12280),
    rowsByInstance<HwDatablockCwopDetLinCorrFreq, true>(12290, 12291),
    rowsByInstance<HwDatablockCwopDetLinCorrData, true>(12292, 12293),
    table<int, 200, 1>({.id = 12300, .key = "LOOPGAIN_FREQ", .scale = 0.01, .role = Role::Axis}),
    table<int, 1, 200>({.id = 12301, .key = "LOOPGAIN_PK", .scale = 1000.0, .columnAxis = 12300}),
    table<int, 1, 200>({.id = 12302, .key = "LOOPGAIN_P_VALUE_BASE_PK", .scale = 1000.0, .columnAxis = 12300}),
    table<int, 1, 200>({.id = 12303, .key = "LOOPGAIN_I_VALUE_BASE_PK", .scale = 1000.0, .columnAxis = 12300}),
    table<int, 1, 200>({.id = 12304, .key = "LOOPGAIN_I_VALUE_OFFSET_PK", .columnAxis = 12300}),
    table<int, 50, 1>({.id = 12305, .key = "LOOPGAIN_PK_LIST", .role = Role::Axis}),
    table<int, 50, 200>(
        {.id = 12306, .key = "LOOPGAIN_P_VALUE_BASE_PK_LIST", .scale = 1000.0, .rowAxis = 12305, .columnAxis = 12300}),
    table<int, 50, 200>(
        {.id = 12307, .key = "LOOPGAIN_I_VALUE_BASE_PK_LIST", .scale = 1000.0, .rowAxis = 12305, .columnAxis = 12300}),
    table<int, 50, 200>({.id = 12308, .key = "LOOPGAIN_I_VALUE_OFFSET_PK_LIST", .rowAxis = 12305, .columnAxis = 12300}),
    table<int, 10, 1>({.id = 12310, .key = "POK_DCON_VTRIM_VALUE"}),
    table<int, 1, 1>({.id = 12311, .key = "POK_DCON_LEVELPRE2"}),
    table<int, 10, 1>({.id = 12312, .key = "LIR_FREQCNTR_TCXO_REF_CAL_VALUE"}),
    table<int, 100, 1>({.id = 12313, .key = "LIMITER_MAX_VOLTAGE", .scale = 0.00001}),
    table<int, 100, 1>({.id = 12314, .key = "LIMITER_MAX_VOLTAGE", .scale = 100000.0}),
    table<int, 100, 1>({.id = 12315, .key = "LIMITER_MAX_VOLTAGE_PUM_ON", .scale = 0.00001}),
    row<HwDatablockDacIfFullScale>(12500),
    rowWithStopFlag<HwDatablockBbinsCompFilterTabsI>(13000),
    rowWithStopFlag<HwDatablockBbinsCompFilterTabsQ>(13050),
    rowWithStopFlag<HwDatablockBbinsUncalibratedFirAmplitudeI>(13100),
    rowWithStopFlag<HwDatablockBbinsUncalibratedFirPhiI>(13101),
    rowWithStopFlag<HwDatablockBbinsUncalibratedFirAmplitudeQ>(13102),
    rowWithStopFlag<HwDatablockBbinsUncalibratedFirPhiQ>(13103),
    rowWithStopFlag<HwDatablockDacbFrequencyCompFreq>(13500),
    rowWithStopFlag<HwDatablockDacbFrequencyCompAmp>(13600),
    rowWithStopFlag<HwDatablockDacbFrequencyCompPh>(13700),
    rowWithStopFlag<HwDatablockDacbFrequencyCompDt>(13800),
    rowWithStopFlag<HwDatablockDacbIqImbalanceFreq>(13900),
    rowWithStopFlag<HwDatablockDacbIqImbalanceAmp>(14000),
    rowWithStopFlag<HwDatablockDacbIqImbalancePh>(14100),
    rowWithStopFlag<HwDatablockDacbIqImbalanceSwapAmp>(14200),
    rowWithStopFlag<HwDatablockDacbIqImbalanceSwapPh>(14300),
    rowWithStopFlag<HwDatablockDacbFrequencyCompAmpRear>(14400),
    rowWithStopFlag<HwDatablockDacbFrequencyCompPhRear>(14500),
    rowWithStopFlag<HwDatablockDacbFrequencyCompDtRear>(14600),
    rowWithStopFlag<HwDatablockDacbIqImbalanceRearAmp>(14700),
    rowWithStopFlag<HwDatablockDacbIqImbalanceRearPh>(14800),
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
    table<int, 10, 1>({.id = 15022, .key = "POK_TEMPERATURE", .scale = 100.0, .role = Role::Axis}),
    table<int, 10, 1>({.id = 15023, .key = "POK_TEMPCORR_LEVEL", .scale = 0.01, .rowAxis = 15022}),
    table<int, 1, 1>({.id = 15024, .key = "DET_DIFF_TEMPERATURE", .scale = 100.0}),
    table<int, 1, 1>({.id = 15025, .key = "DET_TEMPCORR_LOW_FREQ", .scale = 100.0}),
    table<int, 1, 1>({.id = 15026, .key = "DET_TEMPCORR_HIGH_FREQ", .scale = 100.0}),
    table<int, 10, 10>({.id = 15027, .key = "DET_TEMPCORR_MIN_FREQ_VALUES", .scale = 100.0}),
    table<int, 10, 10>({.id = 15028, .key = "DET_TEMPCORR_MAX_FREQ_VALUES", .scale = 100.0}),
    rowsMadeBy<HwWenDatablockAnalogOutputCalibration>(15500, 15501, analogOutput).unregistered(),
    row<HwDatablockWENDelay>(15504).unregistered(),
    row<HwDatablockWenAnalogImbalanceFreq>(15600).unregistered(),
    row<HwDatablockWenAnalogImbalanceGainI>(15601).unregistered(),
    row<HwDatablockWenAnalogImbalanceGainQ>(15602).unregistered(),
    row<HwDatablockWenAnalogImbalancePhI>(15603).unregistered(),
    row<HwDatablockWenAnalogImbalancePhQ>(15604).unregistered(),
    row<HwDatablockWenBaseboardCalibValue>(15605).unregistered(),
    rowsMadeBy<HwDatablockWenWiqRfImbalanceData>(15606, 15606, rfImbalance).unregistered(),
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
    rowsMadeBy<HwDatablockToviVectorLevconTempData>(15853, 15862, levconTempData).convertible(),
    row<HwDatablockKelRfboExtCalUserFreq>(16000).convertible(),
    row<HwDatablockKelRfboExtCalUserData>(16001).convertible(),
    row<HwDatablockToviRfboExtCalVecUserFreq>(16002).convertible(),
    row<HwDatablockToviRfboExtCalVecUserData>(16003).convertible(),
    row<HwDatablockEnd>(65535),
};

static_assert(std::ranges::all_of(rowsOfAllClasses, [](const CatalogueEntry& e) { return e.first <= e.last; }),
              "a row begins with its smaller identifier");
static_assert(std::ranges::adjacent_find(rowsOfAllClasses,
                                         [](const CatalogueEntry& row, const CatalogueEntry& next) {
                                             return row.last >= next.first;
                                         }) == std::ranges::end(rowsOfAllClasses),
              "the rows stand in ascending order of identifiers, and no identifier is in two of them");

/// Rows by identifier without a search: the identifiers in pages of 256, of which few have a row. Numbers count from 1;
/// 0 is none.
constexpr unsigned int pageSize = 256;
using Page = std::array<unsigned char, pageSize>;

constexpr unsigned int usedPages = [] {
    int last = -1;
    unsigned int count = 0;
    for (const CatalogueEntry& row : rowsOfAllClasses) {
        for (int id = row.first; id <= row.last; ++id) {
            count += id / int{pageSize} != last;
            last = id / int{pageSize};
        }
    }
    return count;
}();
static_assert(usedPages < pageSize && std::size(rowsOfAllClasses) < pageSize, "numbers are bytes");
static_assert(std::begin(rowsOfAllClasses)->first >= 0 && std::prev(std::end(rowsOfAllClasses))->last <= 0xFFFF);

struct RowNumbers {
    Page pages{};
    std::array<Page, usedPages + 1> rows{}; // the first is the page without rows
};

constexpr RowNumbers rowNumbers = [] {
    RowNumbers numbers;
    unsigned char pages = 0;
    unsigned char rows = 0;
    for (const CatalogueEntry& row : rowsOfAllClasses) {
        ++rows;
        for (unsigned int id = static_cast<unsigned int>(row.first); id <= static_cast<unsigned int>(row.last); ++id) {
            unsigned char& page = numbers.pages[id / pageSize];
            if (page == 0)
                page = ++pages;
            numbers.rows[page][id % pageSize] = rows;
        }
    }
    return numbers;
}();

} // namespace

std::span<const CatalogueEntry> catalogue() { return rowsOfAllClasses; }

const CatalogueEntry* findEntry(int id) {
    if (id < 0 || id > 0xFFFF)
        return nullptr;
    const auto word = static_cast<unsigned int>(id);
    const unsigned int number = rowNumbers.rows[rowNumbers.pages[word / pageSize]][word % pageSize];
    return number != 0 ? &rowsOfAllClasses[number - 1] : nullptr;
}

} // namespace Travik
