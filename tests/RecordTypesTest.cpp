#include "Support.h"

#include <set>

namespace RecordTypesTest {

using namespace Travik;
using namespace Support;

// Every class of the catalogue that has a name of its own, without "HwDatablock".
// clang-format off
#define CLASSES(X)                                                                                                     \
    X(Ident) X(Modification) X(ServiceData) X(Statistic) X(SsynOcxoRefCalValue) X(SsynOpuDblCoefficient)               \
    X(SsynOpuLevelFreq) X(SsynOpuLevel) X(IqOp3RfmHarmonic) X(IqOp3RfmCalibDataMisc) X(IqOp3RfmCalibDataFreq)          \
    X(IqOp3RfmCalibData) X(IqOp3RfmCalibDataMiscV20) X(IqOp3RfmCalibDataV20) X(CwOp3AmGainFreq) X(CwOp3AmGainData)     \
    X(Cwop6VcoIdent) X(MiscIdent) X(SAtt3CalibDataFreq) X(SAtt3CalibDataAtt) X(SAtt3CalibDataTemp) X(SAtt3OWLDCounter) \
    X(IqOp6PmaxBz) X(IqOp6CalibDataFreq) X(IqOp6CalibData) X(SAtt6CalibDataAtt) X(SAtt6CalibDataFreq)                  \
    X(SAtt6CalibDataTemp) X(SAtt6OWLDCounter) X(SAttCCounter) X(SAttCTempFreq) X(SAttCTempGradient) X(SAttCTempOffset) \
    X(CommonStatisticData) X(MbrdSerialNumber) X(MbrdModel) X(MbrdMac) X(MbrdTimeMonitoringData)                       \
    X(PokMwIfExtLevCalDataFreq) X(PokMwIfExtLevCalData) X(PokMwIfExtLevCalDataAbsCorr) X(PokMwIfExtLevCalDataRelCorr)  \
    X(PokAttCalDatFreq) X(PokAttCalDat) X(PokAttCalDatFreqSe) X(PokAttCalDatSe) X(MbrdExtLevCalDataFreq)               \
    X(MbrdExtLevCalData) X(MbrdExtLevCalDataFreq_Enh) X(MbrdExtLevCalData_Enh) X(MbrdExtLevCalDataFreq2Edition_Enh)    \
    X(MbrdExtLevCalData2Edition_Enh) X(MbrdIqImbalanceRfFreq) X(MbrdIqImbalanceRfEvenAmp) X(MbrdIqImbalanceRfEvenPh)   \
    X(MbrdIqImbalanceRfOddAmp) X(MbrdIqImbalanceRfOddPh) X(MbrdExtLevCalDataFreq2Edition) X(MbrdExtLevCalData2Edition) \
    X(AttCalDataFreq2Edition) X(AttCalData2Edition) X(Cwop3DetTuneFreq) X(Cwop3DetTuneDac) X(MbrdRfResponseLpFreq)     \
    X(MbrdRfResponseIoPepInfo) X(MbrdRfResponseLpAmp) X(MbrdRfResponseLpPh) X(MbrdRfResponseBbFreq)                    \
    X(MbrdRfResponseAttFreq) X(MbrdRfResponseAttAmpl) X(OrbMbrdPllDacCalibValue) X(CwopDetLinCorrFreq)                 \
    X(CwopDetLinCorrData) X(DacIfFullScale) X(BbinsCompFilterTabsI) X(BbinsCompFilterTabsQ)                            \
    X(BbinsUncalibratedFirAmplitudeI) X(BbinsUncalibratedFirPhiI) X(BbinsUncalibratedFirAmplitudeQ)                    \
    X(BbinsUncalibratedFirPhiQ) X(DacbFrequencyCompFreq) X(DacbFrequencyCompAmp) X(DacbFrequencyCompPh)                \
    X(DacbFrequencyCompDt) X(DacbIqImbalanceFreq) X(DacbIqImbalanceAmp) X(DacbIqImbalancePh) X(DacbIqImbalanceSwapAmp) \
    X(DacbIqImbalanceSwapPh) X(DacbFrequencyCompAmpRear) X(DacbFrequencyCompPhRear) X(DacbFrequencyCompDtRear)         \
    X(DacbIqImbalanceRearAmp) X(DacbIqImbalanceRearPh) X(MbrdIqInputA) X(MbrdIqInputB) X(MbrdExtCalUserFreqA)          \
    X(MbrdExtCalUserFreqB) X(MbrdExtCalUserDataA) X(MbrdExtCalUserDataB) X(SynexOcxoRefCalValue)                       \
    X(FsynTcxoRefCalValue) X(PokOcxoRefCalValue) X(DetLimiterMaxVoltFreq) X(DetLimiterMaxVoltData) X(WENDelay)         \
    X(WenAnalogImbalanceFreq) X(WenAnalogImbalanceGainI) X(WenAnalogImbalanceGainQ) X(WenAnalogImbalancePhI)           \
    X(WenAnalogImbalancePhQ) X(WenBaseboardCalibValue) X(WenWiqRfImbalanceData) X(WenWiqSensorData) X(WenWIQQuadDac)   \
    X(AduLevCoarseCalibData) X(AduGainOffsetCalData) X(StereocoderCo) X(KelRfboExtInGain) X(KelRfboExtInOffset)        \
    X(KelRfboDetTuneFreq) X(KelRfboDetTuneData) X(KelRfboTcxoCal) X(KelRfboRfLevelMaxFreq) X(KelRfboRfLevelMaxData)    \
    X(KelRfboAttCalFreq) X(KelRfboAttCalData) X(KelRfboExtCalFreq) X(KelRfboExtCalData) X(KelRfboAlcFreq)              \
    X(KelRfboAlcData) X(KelRfboTempFreq) X(KelRfboTempGradient) X(KelRfboTempOffset) X(KelRfboAttRegData)              \
    X(KelRfboSHFreq) X(KelRfboSHData) X(DunRfboAttCalFreq) X(DunRfboAttCalData) X(DunRfboTempCompFreq)                 \
    X(DunRfboTempCompData) X(DunRfboAttRegAttenuation) X(DunRfboAttRegData) X(ToviVectorRfLevelMaxFreq)                \
    X(ToviVectorRfLevelMaxData) X(ToviVectorAlcFreq) X(ToviVectorAlcData) X(ToviVectorAlcIqNormFreq)                   \
    X(ToviVectorAlcIqNormData) X(ToviVectorAlcIqWideFreq) X(ToviVectorAlcIqWideData) X(ToviRfBoExtCalVecFreq)          \
    X(ToviRfBoExtCalVecData) X(ToviRfboAttCalVecFreq) X(ToviRfboAttCalVecData) X(ToviRfboRfLevelMaxVecFreq)            \
    X(ToviRfboRfLevelMaxVecData) X(ToviVectorLevconTemp) X(ToviVectorLevconTempFreq) X(ToviVectorLevconTempLevcon)     \
    X(ToviVectorLevconTempData) X(KelRfboExtCalUserFreq) X(KelRfboExtCalUserData) X(ToviRfboExtCalVecUserFreq)         \
    X(ToviRfboExtCalVecUserData) X(End)
// clang-format on

struct Kind {
    std::string_view className;
    int (*setNull)(HwDatablock& block);
    void (*swapNull)(HwDatablock& block) = nullptr; // where the class has no such operation
};

template <class Block, class NamedRecord>
constexpr Kind kind(std::string_view className) {
    using Record = std::remove_pointer_t<decltype(std::declval<Block&>().getBlock())>;
    static_assert(std::is_same_v<Record, NamedRecord>, "a record goes by the name of its class");
    static_assert(
        requires(Block & block, const Record* record) { block.setBlock(record); }, "records are only read");
    Kind kind{className, [](HwDatablock& block) {
                  const Record* const none = nullptr;
                  return static_cast<Block&>(block).setBlock(none);
              }};
    if constexpr (requires(Block & block, Record * record) { block.swapBlock(record); })
        kind.swapNull = [](HwDatablock& block) { static_cast<Block&>(block).swapBlock(nullptr); };
    return kind;
}

#define KIND(Name) kind<HwDatablock##Name, HwSDatablock##Name>("HwDatablock" #Name),
constexpr Kind kinds[] = {CLASSES(KIND)
                              kind<HwWenDatablockAnalogOutputCalibration, HwSDatablockAnalogOutputCalibration>(
                                  "HwWenDatablockAnalogOutputCalibration")};

const CatalogueEntry* entryOf(std::string_view className) {
    const auto found = std::ranges::find(catalogue(), className, &CatalogueEntry::className);
    return found == catalogue().end() ? nullptr : &*found;
}

TEST(RecordTypes, EveryClassIsListedHere) {
    std::set<std::string_view> unlisted;
    for (const CatalogueEntry& entry : catalogue()) {
        const bool isTemplate = entry.table.id != 0;
        if (!isTemplate && std::ranges::find(kinds, entry.className, &Kind::className) == std::end(kinds))
            unlisted.insert(entry.className);
    }
    EXPECT_THAT(unlisted, testing::IsEmpty()) << "a new class enters CLASSES above";
}

TEST(RecordTypes, NullIsRefused) {
    std::mt19937 random(7);
    for (const Kind& kind : kinds) {
        const CatalogueEntry* const entry = entryOf(kind.className);
        ASSERT_NE(entry, nullptr) << kind.className;
        const std::unique_ptr<HwDatablock> block = entry->create(*entry, entry->first);
        const std::string bytes = randomBytes(random, block->getByteArrayData().size());
        setBytes(*block, bytes);
        const Signals signals;
        // One class answers 0 whatever it is given.
        EXPECT_EQ(kind.setNull(*block) == 0, kind.className == "HwDatablockAduGainOffsetCalData") << kind.className;
        EXPECT_LE(signals.count(), 1U) << kind.className;
        if (kind.swapNull)
            kind.swapNull(*block);
        EXPECT_EQ(bytesOf(*block), bytes) << kind.className;
    }
}

TEST(RecordTypes, TemplatesRefuseNull) {
    HwDatablockTemplateWithoutChecksum<MiscData<short, 2, 2>, short, short, 2, 2> any(nullptr, 7, 0, 1.0, 2, 2, false);
    const Signals signals;
    EXPECT_EQ(any.setBlock(nullptr), 1);
    EXPECT_THAT(signals.all(), testing::ElementsAre(std::pair(int{DownloadDenied}, std::string("0"))));
    EXPECT_EQ(textOf(any), "ID:  \nCOUNT:  0*0\n\n") << "a null key is an empty one";
}

} // namespace RecordTypesTest
