// Records compare all that they hold, and nothing else compiles.
#include "Support.h"

#include <travik/registry/CatalogueRows.h>

#include <tuple>

namespace RecordEqualityTest {

using namespace Travik;
using namespace Support;

/// Every class of the catalogue; of those that share a record, too.
using AllClasses = std::tuple<
    HwDatablockIdent, HwDatablockModification, HwDatablockServiceData, HwDatablockStatistic,
    HwDatablockSsynOcxoRefCalValue, HwDatablockSsynOpuDblCoefficient, HwDatablockSsynOpuLevelFreq,
    HwDatablockSsynOpuLevel, HwDatablockIqOp3RfmHarmonic, HwDatablockIqOp3RfmCalibDataMisc,
    HwDatablockIqOp3RfmCalibDataFreq, HwDatablockIqOp3RfmCalibData, HwDatablockIqOp3RfmCalibDataMiscV20,
    HwDatablockIqOp3RfmCalibDataV20, HwDatablockCwOp3AmGainFreq, HwDatablockCwOp3AmGainData, HwDatablockCwop6VcoIdent,
    HwDatablockMiscIdent, HwDatablockSAtt3CalibDataFreq, HwDatablockSAtt3CalibDataAtt, HwDatablockSAtt3CalibDataTemp,
    HwDatablockSAtt3OWLDCounter, HwDatablockIqOp6PmaxBz, HwDatablockIqOp6CalibDataFreq, HwDatablockIqOp6CalibData,
    HwDatablockSAtt6CalibDataAtt, HwDatablockSAtt6CalibDataFreq, HwDatablockSAtt6CalibDataTemp,
    HwDatablockSAtt6OWLDCounter, HwDatablockSAttCCounter, HwDatablockSAttCTempFreq, HwDatablockSAttCTempGradient,
    HwDatablockSAttCTempOffset, HwDatablockCommonStatisticData, HwDatablockMbrdSerialNumber, HwDatablockMbrdModel,
    HwDatablockMbrdMac, HwDatablockMbrdTimeMonitoringData, HwDatablockPokMwIfExtLevCalDataFreq,
    HwDatablockPokMwIfExtLevCalData, HwDatablockPokMwIfExtLevCalDataAbsCorr, HwDatablockPokMwIfExtLevCalDataRelCorr,
    HwDatablockPokAttCalDatFreq, HwDatablockPokAttCalDat, HwDatablockPokAttCalDatFreqSe, HwDatablockPokAttCalDatSe,
    HwDatablockMbrdExtLevCalDataFreq, HwDatablockMbrdExtLevCalData, HwDatablockMbrdExtLevCalDataFreq_Enh,
    HwDatablockMbrdExtLevCalData_Enh, HwDatablockMbrdExtLevCalDataFreq2Edition_Enh,
    HwDatablockMbrdExtLevCalData2Edition_Enh, HwDatablockMbrdIqImbalanceRfFreq, HwDatablockMbrdIqImbalanceRfEvenAmp,
    HwDatablockMbrdIqImbalanceRfEvenPh, HwDatablockMbrdIqImbalanceRfOddAmp, HwDatablockMbrdIqImbalanceRfOddPh,
    HwDatablockMbrdExtLevCalDataFreq2Edition, HwDatablockMbrdExtLevCalData2Edition, HwDatablockAttCalDataFreq2Edition,
    HwDatablockAttCalData2Edition, HwDatablockCwop3DetTuneFreq, HwDatablockCwop3DetTuneDac,
    HwDatablockMbrdRfResponseLpFreq, HwDatablockMbrdRfResponseIoPepInfo, HwDatablockMbrdRfResponseLpAmp,
    HwDatablockMbrdRfResponseLpPh, HwDatablockMbrdRfResponseBbFreq, HwDatablockMbrdRfResponseAttFreq,
    HwDatablockMbrdRfResponseAttAmpl, HwDatablockOrbMbrdPllDacCalibValue, HwDatablockCwopDetLinCorrFreq,
    HwDatablockCwopDetLinCorrData, HwDatablockDacIfFullScale, HwDatablockBbinsCompFilterTabsI,
    HwDatablockBbinsCompFilterTabsQ, HwDatablockBbinsUncalibratedFirAmplitudeI, HwDatablockBbinsUncalibratedFirPhiI,
    HwDatablockBbinsUncalibratedFirAmplitudeQ, HwDatablockBbinsUncalibratedFirPhiQ, HwDatablockDacbFrequencyCompFreq,
    HwDatablockDacbFrequencyCompAmp, HwDatablockDacbFrequencyCompPh, HwDatablockDacbFrequencyCompDt,
    HwDatablockDacbIqImbalanceFreq, HwDatablockDacbIqImbalanceAmp, HwDatablockDacbIqImbalancePh,
    HwDatablockDacbIqImbalanceSwapAmp, HwDatablockDacbIqImbalanceSwapPh, HwDatablockDacbFrequencyCompAmpRear,
    HwDatablockDacbFrequencyCompPhRear, HwDatablockDacbFrequencyCompDtRear, HwDatablockDacbIqImbalanceRearAmp,
    HwDatablockDacbIqImbalanceRearPh, HwDatablockMbrdIqInputA, HwDatablockMbrdIqInputB, HwDatablockMbrdExtCalUserFreqA,
    HwDatablockMbrdExtCalUserFreqB, HwDatablockMbrdExtCalUserDataA, HwDatablockMbrdExtCalUserDataB,
    HwDatablockSynexOcxoRefCalValue, HwDatablockFsynTcxoRefCalValue, HwDatablockPokOcxoRefCalValue,
    HwDatablockDetLimiterMaxVoltFreq, HwDatablockDetLimiterMaxVoltData, HwWenDatablockAnalogOutputCalibration,
    HwDatablockWENDelay, HwDatablockWenAnalogImbalanceFreq, HwDatablockWenAnalogImbalanceGainI,
    HwDatablockWenAnalogImbalanceGainQ, HwDatablockWenAnalogImbalancePhI, HwDatablockWenAnalogImbalancePhQ,
    HwDatablockWenBaseboardCalibValue, HwDatablockWenWiqRfImbalanceData, HwDatablockWenWiqSensorData,
    HwDatablockWenWIQQuadDac, HwDatablockAduLevCoarseCalibData, HwDatablockAduGainOffsetCalData,
    HwDatablockStereocoderCo, HwDatablockKelRfboExtInGain, HwDatablockKelRfboExtInOffset, HwDatablockKelRfboDetTuneFreq,
    HwDatablockKelRfboDetTuneData, HwDatablockKelRfboTcxoCal, HwDatablockKelRfboRfLevelMaxFreq,
    HwDatablockKelRfboRfLevelMaxData, HwDatablockKelRfboAttCalFreq, HwDatablockKelRfboAttCalData,
    HwDatablockKelRfboExtCalFreq, HwDatablockKelRfboExtCalData, HwDatablockKelRfboAlcFreq, HwDatablockKelRfboAlcData,
    HwDatablockKelRfboTempFreq, HwDatablockKelRfboTempGradient, HwDatablockKelRfboTempOffset,
    HwDatablockKelRfboAttRegData, HwDatablockKelRfboSHFreq, HwDatablockKelRfboSHData, HwDatablockDunRfboAttCalFreq,
    HwDatablockDunRfboAttCalData, HwDatablockDunRfboTempCompFreq, HwDatablockDunRfboTempCompData,
    HwDatablockDunRfboAttRegAttenuation, HwDatablockDunRfboAttRegData, HwDatablockToviVectorRfLevelMaxFreq,
    HwDatablockToviVectorRfLevelMaxData, HwDatablockToviVectorAlcFreq, HwDatablockToviVectorAlcData,
    HwDatablockToviVectorAlcIqNormFreq, HwDatablockToviVectorAlcIqNormData, HwDatablockToviVectorAlcIqWideFreq,
    HwDatablockToviVectorAlcIqWideData, HwDatablockToviRfBoExtCalVecFreq, HwDatablockToviRfBoExtCalVecData,
    HwDatablockToviRfboAttCalVecFreq, HwDatablockToviRfboAttCalVecData, HwDatablockToviRfboRfLevelMaxVecFreq,
    HwDatablockToviRfboRfLevelMaxVecData, HwDatablockToviVectorLevconTemp, HwDatablockToviVectorLevconTempFreq,
    HwDatablockToviVectorLevconTempLevcon, HwDatablockToviVectorLevconTempData, HwDatablockKelRfboExtCalUserFreq,
    HwDatablockKelRfboExtCalUserData, HwDatablockToviRfboExtCalVecUserFreq, HwDatablockToviRfboExtCalVecUserData,
    HwDatablockEnd>;

template <class Block>
using RecordOf = std::remove_pointer_t<decltype(std::declval<Block&>().getBlock())>;

template <class Left, class Right>
concept Comparable = requires(const Left& left, const Right& right) {
    left == right;
};

#pragma pack(push, 1)
struct Undescribed : HwSDatablockHeader {
    int value;
};
struct DerivedFromATable : MiscData<int, 1, 1> {
    int more;
};
#pragma pack(pop)

static_assert(Comparable<HwSDatablockHeader, HwSDatablockHeader>);
static_assert(!Comparable<Undescribed, Undescribed>, "a record without a list");
static_assert(!Comparable<DerivedFromATable, DerivedFromATable>, "a record that adds to one that compares itself");
static_assert(!Comparable<HwSDatablockHeader, HwSDatablockStatistic>, "a record and a header");
static_assert(!Comparable<HwSDatablockSAtt3OWLDCounter, HwSDatablockSAtt6OWLDCounter>, "records of different types");
static_assert(!Comparable<HwSDatablockIdent, HwSDatablockMiscIdent>, "a record and the one that it derives from");
static_assert(!Comparable<HwSDatablockIndexTable<int, 1, 1>, MiscData<int, 1, 1>>);

/// Changes each byte of a record of zeros, and changes it back.
template <class Record>
void comparesEveryByte(std::string_view name) {
    SCOPED_TRACE(name);
    const auto zeros = std::make_unique<Record>();
    const auto record = std::make_unique<Record>();
    ASSERT_TRUE(*record == *zeros);
    auto* const bytes = reinterpret_cast<unsigned char*>(record.get());
    for (std::size_t byte = 0; byte < sizeof(Record); ++byte) {
        bytes[byte] = 1;
        ASSERT_FALSE(*record == *zeros) << "byte " << byte;
        bytes[byte] = 0;
    }
    ASSERT_TRUE(*record == *zeros);
}

TEST(RecordEquality, EveryByteOfEveryRecord) {
    std::set<std::string_view> names;
    const auto compare = [&]<class Block>(std::type_identity<Block>) {
        constexpr std::string_view name = detail::className<Block>();
        names.insert(name);
        comparesEveryByte<RecordOf<Block>>(name);
    };
    [&]<class... Block>(std::type_identity<std::tuple<Block...>>) {
        (compare(std::type_identity<Block>()), ...);
    }(std::type_identity<AllClasses>());
    for (const CatalogueEntry& entry : catalogue())
        EXPECT_TRUE(names.contains(entry.className) || entry.table.id != 0) << entry.className << " is not in the list";

    comparesEveryByte<MiscData<unsigned char, 1, 2048>>("a bare table");
    comparesEveryByte<MiscData<int, 10, 10>>("a bare table");
    comparesEveryByte<HwSDatablockIndexTable<double, 4, 5>>("a table with an index");
    comparesEveryByte<HwSDatablockExtendedTable<float, 2, 3, 4>>("a table with descriptors");
    comparesEveryByte<HwSAttPolynomValues>("a polynomial of an attenuator");
    comparesEveryByte<HwSPolynomValues>("a polynomial of a filter");
    comparesEveryByte<HwSAduGainOffsetCalData>("offsets at a gain");
    comparesEveryByte<HwSCwOp3AmGainDataBlock>("gains at a frequency");
    comparesEveryByte<HwSLevCorrValues>("a correction at a level");
}

TEST(RecordEquality, FloatingFieldsCompareByValue) {
    MiscData<float, 1, 2> left{};
    MiscData<float, 1, 2> right{};
    right.values[0][1] = -0.0F;
    EXPECT_TRUE(left == right);
    HwSDatablockSsynOpuLevelFreq first{};
    HwSDatablockSsynOpuLevelFreq second{};
    second.values[49] = -0.0;
    EXPECT_TRUE(first == second);
    first.values[7] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(first == first);
}

} // namespace RecordEqualityTest
