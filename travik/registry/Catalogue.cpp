#include <travik/datablock/AnalogOutputCalibration.h>
#include <travik/datablock/End.h>
#include <travik/datablock/Ident.h>
#include <travik/modules/IqModulatorTables.h>
#include <travik/modules/IqModulatorTablesV20.h>
#include <travik/modules/IqOp6Tables.h>
#include <travik/modules/MicrowaveTables.h>
#include <travik/modules/OutputUnit.h>
#include <travik/modules/ReferenceOscillators.h>
#include <travik/modules/StepAttenuators.h>
#include <travik/registry/CatalogueRows.h>

#include <algorithm>

namespace Travik {

namespace {

using namespace detail;

template <class StoreT, unsigned int N, unsigned int M>
constexpr CatalogueEntry table(const TableSpec& spec) {
    return bareTable<HwDatablockTemplate, StoreT, N, M>(spec);
}

constexpr auto axis = Role::Axis;
constexpr auto value = Role::Value;

constexpr CatalogueEntry rowsOfAllClasses[] = {
    row<HwDatablockIdent>(2).convertible(),
    row<HwDatablockIdent>(10),
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
    row<HwDatablockSAtt3CalibDataFreq>(10601),
    row<HwDatablockSAtt3CalibDataAtt>(10602),
    row<HwDatablockSAtt3CalibDataTemp>(10603),
    row<HwDatablockIqOp6PmaxBz>(10900),
    row<HwDatablockIqOp6CalibDataFreq>(10901),
    row<HwDatablockIqOp6CalibData>(10902),
    row<HwDatablockSAtt6CalibDataAtt>(11001),
    row<HwDatablockSAtt6CalibDataFreq>(11200),
    row<HwDatablockSAtt6CalibDataTemp>(11202),
    bareTable<HwDatablockTemplateWithoutChecksum, unsigned char, 1, 2048>({11304, "POK_MWIF_SATT_COUNTER", 1.0}),
    flagged<HwDatablockPokMwIfExtLevCalDataFreq>(12040),
    flagged<HwDatablockPokMwIfExtLevCalData>(12041),
    flagged<HwDatablockPokMwIfExtLevCalDataAbsCorr>(12042),
    flagged<HwDatablockPokMwIfExtLevCalDataRelCorr>(12043),
    flagged<HwDatablockPokAttCalDatFreq>(12044),
    flagged<HwDatablockPokAttCalDat>(12045),
    flagged<HwDatablockPokAttCalDatFreqSe>(12046),
    flagged<HwDatablockPokAttCalDatSe>(12047),
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
    row<HwDatablockSynexOcxoRefCalValue>(15000),
    row<HwDatablockFsynTcxoRefCalValue>(15001),
    row<HwDatablockPokOcxoRefCalValue>(15002),
    table<int, 10, 1>({15022, "POK_TEMPERATURE", 100.0, "", axis}),
    table<int, 10, 1>({15023, "POK_TEMPCORR_LEVEL", 0.01, "", value, -1, 0}),
    table<int, 1, 1>({15024, "DET_DIFF_TEMPERATURE", 100.0}),
    table<int, 1, 1>({15025, "DET_TEMPCORR_LOW_FREQ", 100.0}),
    table<int, 1, 1>({15026, "DET_TEMPCORR_HIGH_FREQ", 100.0}),
    table<int, 10, 10>({15027, "DET_TEMPCORR_MIN_FREQ_VALUES", 100.0}),
    table<int, 10, 10>({15028, "DET_TEMPCORR_MAX_FREQ_VALUES", 100.0}),
    instances<HwWenDatablockAnalogOutputCalibration, false>(15500, 15501).unregistered(),
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
