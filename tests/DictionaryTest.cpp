#include "Support.h"

#include <map>
#include <string>

namespace DictionaryTest {

using namespace Travik;

struct Range {
    int first;
    int last;
    const char* className;
};

/// The whole dictionary: which class prints the blocks of an identifier.
constexpr Range dictionaryRanges[] = {
    {2, 2, "HwDatablockIdent"},
    {10, 10, "HwDatablockIdent"},
    {100, 100, "HwDatablockModification"},
    {200, 209, "HwDatablockServiceData"},
    {299, 299, "HwDatablockServiceData"},
    {300, 300, "HwDatablockStatistic"},
    {10000, 10000, "HwDatablockSsynOcxoRefCalValue"},
    {10001, 10001, "HwDatablockSsynOpuDblCoefficient"},
    {10002, 10002, "HwDatablockSsynOpuLevelFreq"},
    {10003, 10003, "HwDatablockSsynOpuLevel"},
    {10300, 10300, "HwDatablockIqOp3RfmHarmonic"},
    {10301, 10301, "HwDatablockIqOp3RfmCalibDataMisc"},
    {10302, 10302, "HwDatablockIqOp3RfmCalibDataFreq"},
    {10303, 10314, "HwDatablockIqOp3RfmCalibData"},
    {10315, 10315, "HwDatablockIqOp3RfmCalibDataMiscV20"},
    {10316, 10316, "HwDatablockIqOp3RfmCalibDataV20"},
    {10500, 10500, "HwDatablockCwOp3AmGainFreq"},
    {10501, 10501, "HwDatablockCwOp3AmGainData"},
    {10502, 10502, "HwDatablockCwop6VcoIdent"},
    {10503, 10504, "HwDatablockMiscIdent"},
    {10601, 10601, "HwDatablockSAtt3CalibDataFreq"},
    {10602, 10602, "HwDatablockSAtt3CalibDataAtt"},
    {10603, 10603, "HwDatablockSAtt3CalibDataTemp"},
    {10604, 10605, "HwDatablockSAtt3OWLDCounter"},
    {10900, 10900, "HwDatablockIqOp6PmaxBz"},
    {10901, 10901, "HwDatablockIqOp6CalibDataFreq"},
    {10902, 10902, "HwDatablockIqOp6CalibData"},
    {11001, 11001, "HwDatablockSAtt6CalibDataAtt"},
    {11200, 11200, "HwDatablockSAtt6CalibDataFreq"},
    {11202, 11202, "HwDatablockSAtt6CalibDataTemp"},
    {11203, 11204, "HwDatablockSAtt6OWLDCounter"},
    {11300, 11303, "HwDatablockSAttCCounter"},
    {11304, 11304, "HwDatablockTemplateWithoutChecksum"},
    {11305, 11305, "HwDatablockSAttCTempFreq"},
    {11306, 11306, "HwDatablockSAttCTempGradient"},
    {11307, 11307, "HwDatablockSAttCTempOffset"},
    {11310, 11313, "HwDatablockCommonStatisticData"},
    {12000, 12000, "HwDatablockMbrdSerialNumber"},
    {12001, 12001, "HwDatablockMbrdModel"},
    {12004, 12004, "HwDatablockMbrdMac"},
    {12008, 12008, "HwDatablockMbrdTimeMonitoringData"},
    {12040, 12040, "HwDatablockPokMwIfExtLevCalDataFreq"},
    {12041, 12041, "HwDatablockPokMwIfExtLevCalData"},
    {12042, 12042, "HwDatablockPokMwIfExtLevCalDataAbsCorr"},
    {12043, 12043, "HwDatablockPokMwIfExtLevCalDataRelCorr"},
    {12044, 12044, "HwDatablockPokAttCalDatFreq"},
    {12045, 12045, "HwDatablockPokAttCalDat"},
    {12046, 12046, "HwDatablockPokAttCalDatFreqSe"},
    {12047, 12047, "HwDatablockPokAttCalDatSe"},
    {12050, 12053, "HwDatablockMbrdExtLevCalDataFreq"},
    {12060, 12063, "HwDatablockMbrdExtLevCalData"},
    {12070, 12071, "HwDatablockMbrdExtLevCalDataFreq_Enh"},
    {12080, 12081, "HwDatablockMbrdExtLevCalData_Enh"},
    {12090, 12091, "HwDatablockMbrdExtLevCalDataFreq2Edition_Enh"},
    {12095, 12096, "HwDatablockMbrdExtLevCalData2Edition_Enh"},
    {12100, 12103, "HwDatablockMbrdIqImbalanceRfFreq"},
    {12110, 12113, "HwDatablockMbrdIqImbalanceRfEvenAmp"},
    {12120, 12123, "HwDatablockMbrdIqImbalanceRfEvenPh"},
    {12130, 12133, "HwDatablockMbrdIqImbalanceRfOddAmp"},
    {12140, 12143, "HwDatablockMbrdIqImbalanceRfOddPh"},
    {12150, 12153, "HwDatablockMbrdExtLevCalDataFreq2Edition"},
    {12160, 12163, "HwDatablockMbrdExtLevCalData2Edition"},
    {12170, 12173, "HwDatablockAttCalDataFreq2Edition"},
    {12180, 12183, "HwDatablockAttCalData2Edition"},
    {12190, 12193, "HwDatablockCwop3DetTuneFreq"},
    {12200, 12203, "HwDatablockCwop3DetTuneDac"},
    {12210, 12213, "HwDatablockMbrdRfResponseLpFreq"},
    {12220, 12223, "HwDatablockMbrdRfResponseIoPepInfo"},
    {12230, 12233, "HwDatablockMbrdRfResponseLpAmp"},
    {12240, 12243, "HwDatablockMbrdRfResponseLpPh"},
    {12250, 12253, "HwDatablockMbrdRfResponseBbFreq"},
    {12260, 12263, "HwDatablockMbrdRfResponseAttFreq"},
    {12270, 12273, "HwDatablockMbrdRfResponseAttAmpl"},
    {12280, 12280, "HwDatablockOrbMbrdPllDacCalibValue"},
    {12290, 12291, "HwDatablockCwopDetLinCorrFreq"},
    {12292, 12293, "HwDatablockCwopDetLinCorrData"},
    {12300, 12308, "HwDatablockTemplate"},
    {12310, 12315, "HwDatablockTemplate"},
    {12500, 12500, "HwDatablockDacIfFullScale"},
    {13000, 13000, "HwDatablockBbinsCompFilterTabsI"},
    {13050, 13050, "HwDatablockBbinsCompFilterTabsQ"},
    {13100, 13100, "HwDatablockBbinsUncalibratedFirAmplitudeI"},
    {13101, 13101, "HwDatablockBbinsUncalibratedFirPhiI"},
    {13102, 13102, "HwDatablockBbinsUncalibratedFirAmplitudeQ"},
    {13103, 13103, "HwDatablockBbinsUncalibratedFirPhiQ"},
    {13500, 13500, "HwDatablockDacbFrequencyCompFreq"},
    {13600, 13600, "HwDatablockDacbFrequencyCompAmp"},
    {13700, 13700, "HwDatablockDacbFrequencyCompPh"},
    {13800, 13800, "HwDatablockDacbFrequencyCompDt"},
    {13900, 13900, "HwDatablockDacbIqImbalanceFreq"},
    {14000, 14000, "HwDatablockDacbIqImbalanceAmp"},
    {14100, 14100, "HwDatablockDacbIqImbalancePh"},
    {14200, 14200, "HwDatablockDacbIqImbalanceSwapAmp"},
    {14300, 14300, "HwDatablockDacbIqImbalanceSwapPh"},
    {14400, 14400, "HwDatablockDacbFrequencyCompAmpRear"},
    {14500, 14500, "HwDatablockDacbFrequencyCompPhRear"},
    {14600, 14600, "HwDatablockDacbFrequencyCompDtRear"},
    {14700, 14700, "HwDatablockDacbIqImbalanceRearAmp"},
    {14800, 14800, "HwDatablockDacbIqImbalanceRearPh"},
    {14801, 14801, "HwDatablockMbrdIqInputA"},
    {14802, 14802, "HwDatablockMbrdIqInputB"},
    {14803, 14803, "HwDatablockMbrdExtCalUserFreqA"},
    {14804, 14804, "HwDatablockMbrdExtCalUserFreqB"},
    {14805, 14805, "HwDatablockMbrdExtCalUserDataA"},
    {14806, 14806, "HwDatablockMbrdExtCalUserDataB"},
    {15000, 15000, "HwDatablockSynexOcxoRefCalValue"},
    {15001, 15001, "HwDatablockFsynTcxoRefCalValue"},
    {15002, 15002, "HwDatablockPokOcxoRefCalValue"},
    {15020, 15020, "HwDatablockDetLimiterMaxVoltFreq"},
    {15021, 15021, "HwDatablockDetLimiterMaxVoltData"},
    {15022, 15028, "HwDatablockTemplate"},
    {15650, 15650, "HwDatablockAduLevCoarseCalibData"},
    {15652, 15652, "HwDatablockAduGainOffsetCalData"},
    {15690, 15690, "HwDatablockStereocoderCo"},
    {15700, 15700, "HwDatablockKelRfboExtInGain"},
    {15701, 15701, "HwDatablockKelRfboExtInOffset"},
    {15705, 15705, "HwDatablockKelRfboDetTuneFreq"},
    {15706, 15706, "HwDatablockKelRfboDetTuneData"},
    {15710, 15710, "HwDatablockKelRfboTcxoCal"},
    {15715, 15715, "HwDatablockKelRfboRfLevelMaxFreq"},
    {15716, 15716, "HwDatablockKelRfboRfLevelMaxData"},
    {15720, 15720, "HwDatablockKelRfboAttCalFreq"},
    {15721, 15721, "HwDatablockKelRfboAttCalData"},
    {15725, 15725, "HwDatablockKelRfboExtCalFreq"},
    {15726, 15726, "HwDatablockKelRfboExtCalData"},
    {15730, 15730, "HwDatablockKelRfboAlcFreq"},
    {15731, 15731, "HwDatablockKelRfboAlcData"},
    {15735, 15735, "HwDatablockKelRfboTempFreq"},
    {15740, 15740, "HwDatablockKelRfboTempGradient"},
    {15745, 15745, "HwDatablockKelRfboTempOffset"},
    {15750, 15750, "HwDatablockKelRfboAttRegData"},
    {15755, 15755, "HwDatablockKelRfboSHFreq"},
    {15756, 15756, "HwDatablockKelRfboSHData"},
    {15760, 15760, "HwDatablockDunRfboAttCalFreq"},
    {15761, 15761, "HwDatablockDunRfboAttCalData"},
    {15770, 15770, "HwDatablockDunRfboTempCompFreq"},
    {15771, 15771, "HwDatablockDunRfboTempCompData"},
    {15798, 15798, "HwDatablockDunRfboAttRegAttenuation"},
    {15799, 15799, "HwDatablockDunRfboAttRegData"},
    {15800, 15800, "HwDatablockToviVectorRfLevelMaxFreq"},
    {15801, 15801, "HwDatablockToviVectorRfLevelMaxData"},
    {15810, 15810, "HwDatablockToviVectorAlcFreq"},
    {15811, 15811, "HwDatablockToviVectorAlcData"},
    {15820, 15820, "HwDatablockToviVectorAlcIqNormFreq"},
    {15821, 15821, "HwDatablockToviVectorAlcIqNormData"},
    {15830, 15830, "HwDatablockToviVectorAlcIqWideFreq"},
    {15831, 15831, "HwDatablockToviVectorAlcIqWideData"},
    {15840, 15840, "HwDatablockToviRfBoExtCalVecFreq"},
    {15841, 15841, "HwDatablockToviRfBoExtCalVecData"},
    {15842, 15842, "HwDatablockToviRfboAttCalVecFreq"},
    {15843, 15843, "HwDatablockToviRfboAttCalVecData"},
    {15844, 15844, "HwDatablockToviRfboRfLevelMaxVecFreq"},
    {15845, 15845, "HwDatablockToviRfboRfLevelMaxVecData"},
    {15850, 15850, "HwDatablockToviVectorLevconTemp"},
    {15851, 15851, "HwDatablockToviVectorLevconTempFreq"},
    {15852, 15852, "HwDatablockToviVectorLevconTempLevcon"},
    {15853, 15862, "HwDatablockToviVectorLevconTempData"},
    {16000, 16000, "HwDatablockKelRfboExtCalUserFreq"},
    {16001, 16001, "HwDatablockKelRfboExtCalUserData"},
    {16002, 16002, "HwDatablockToviRfboExtCalVecUserFreq"},
    {16003, 16003, "HwDatablockToviRfboExtCalVecUserData"},
    {65535, 65535, "HwDatablockEnd"},
};

/// Expects two maps to be equal and names each identifier that one of them has otherwise.
template <class Value>
void expectSame(const std::map<int, Value>& actual, const std::map<int, Value>& expected) {
    for (const auto& [id, value] : actual) {
        const auto found = expected.find(id);
        if (found == expected.end())
            ADD_FAILURE() << id << " is not expected: " << value;
        else
            EXPECT_EQ(value, found->second) << id;
    }
    for (const auto& [id, value] : expected)
        EXPECT_TRUE(actual.contains(id)) << id << " is missing: " << value;
}

TEST(Dictionary, HoldsExactlyTheKnownIdentifiers) {
    std::map<int, std::string> expected;
    for (const Range& range : dictionaryRanges) {
        for (int id = range.first; id <= range.last; ++id)
            expected[id] = range.className;
    }
    ASSERT_EQ(expected.size(), 285U);
    std::map<int, std::string> actual;
    const HwDatablockOldStyleInterpreter interpreter;
    for (const auto& [id, prototype] : interpreter.dictionary()) {
        const CatalogueEntry* const entry = findEntry(id);
        actual[id] = entry ? entry->className : "no class of the catalogue";
    }
    expectSame(actual, expected);
}

TEST(Dictionary, ConvertsExactlyTheConvertibleIdentifiers) {
    std::map<int, std::string> expected;
    for (const int id : {2, 100, 300, 12000, 12001, 15690})
        expected[id] = "convertible";
    constexpr Range ranges[] = {{200, 209, ""},     {11310, 11313, ""}, {15700, 15701, ""}, {15705, 15706, ""},
                                {15710, 15710, ""}, {15715, 15716, ""}, {15720, 15721, ""}, {15725, 15726, ""},
                                {15730, 15731, ""}, {15735, 15735, ""}, {15740, 15740, ""}, {15745, 15745, ""},
                                {15750, 15750, ""}, {15755, 15756, ""}, {16000, 16003, ""}, {15800, 15801, ""},
                                {15810, 15811, ""}, {15820, 15821, ""}, {15830, 15831, ""}, {15840, 15845, ""},
                                {15850, 15862, ""}};
    for (const Range& range : ranges) {
        for (int id = range.first; id <= range.last; ++id)
            expected[id] = "convertible";
    }
    std::map<int, std::string> actual;
    for (const CatalogueEntry& entry : catalogue()) {
        for (int id = entry.first; entry.restore && id <= entry.last; ++id)
            actual[id] = "convertible";
    }
    expectSame(actual, expected);
}

} // namespace DictionaryTest
