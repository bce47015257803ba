// Every class of the board tables in breadth: identifier, size, take-over, accessors at their bounds.
#include "BoardTables.h"

#include <memory>

namespace BoardTablesTest {

using namespace Travik;
using namespace BoardTables;
using namespace Support;

struct Kind {
    const char* className;
    int id;
    unsigned int size;
    std::pair<int, std::string> signal; ///< of a refused take-over
    int refusal = 1;
    std::unique_ptr<HwDatablock> (*make)();
    /// Makes a record with the bytes of an image and hands it to the block.
    int (*takeOver)(HwDatablock&, const std::string&);
    int (*takeOverOwnBuffer)(HwDatablock&);
    std::string (*sealed)(HwDatablock&); ///< bytes of a record that is accepted
};

void PrintTo(const Kind& kind, std::ostream* os) { *os << kind.className; }

template <class Block>
Block& typed(HwDatablock& block) {
    return dynamic_cast<Block&>(block);
}

template <class Block>
Kind kind(const char* className, int id, unsigned int size, const std::pair<int, std::string>& signal,
          std::unique_ptr<HwDatablock> (*make)()) {
    return {.className = className,
            .id = id,
            .size = size,
            .signal = signal,
            .make = make,
            .takeOver =
                [](HwDatablock& block, const std::string& bytes) {
                    typename Block::Record record{};
                    std::memcpy(&record, bytes.data(), std::min(bytes.size(), sizeof record));
                    return typed<Block>(block).setBlock(&record);
                },
            .takeOverOwnBuffer =
                [](HwDatablock& block) { return typed<Block>(block).setBlock(typed<Block>(block).getBlock()); },
            .sealed =
                [](HwDatablock& block) {
                    const auto record = sealedRecord(typed<Block>(block));
                    return std::string(reinterpret_cast<const char*>(&record), block.getBlockSize());
                }};
}

/// A class that is made with the flag or nothing.
template <class Block>
Kind fixed(const char* className, int id, unsigned int size, const std::pair<int, std::string>& signal) {
    return kind<Block>(className, id, size, signal, [] { return std::unique_ptr<HwDatablock>(new Block()); });
}

void expectPathB(int instance, bool stops) {
    EXPECT_EQ(instance, 1);
    EXPECT_TRUE(stops);
}

/// A class that exists once a path: its path B.
template <class Block, auto... Further>
Kind path(const char* className, int id, unsigned int size, const std::pair<int, std::string>& signal) {
    return kind<Block>(className, id + 1, size, signal, [] {
        auto* const block = new Block(1, true, Further...);
        expectPathB(block->getInstance(), block->getStopConversionOnError());
        return std::unique_ptr<HwDatablock>(block);
    });
}

#define FIXED(name, id, size, error) fixed<HwDatablock##name>(#name, id, size, {DownloadDenied, "   " error})
#define PATH(name, id, size, error) path<HwDatablock##name>(#name, id, size, {DownloadDenied, "   " error})

std::vector<Kind> kinds() {
    std::vector<Kind> all = {
        FIXED(WenAnalogImbalanceFreq, 15600, 252, "HwSDatablockWenAnalogImbalanceFreq"),
        FIXED(WenAnalogImbalanceGainI, 15601, 132, "HwSDatablockWenAnalogImbalanceGainI"),
        FIXED(WenAnalogImbalanceGainQ, 15602, 132, "HwSDatablockWenAnalogImbalanceGainQ"),
        FIXED(WenAnalogImbalancePhI, 15603, 132, "HwDatablockWenAnalogImbalancePhI"),
        FIXED(WenAnalogImbalancePhQ, 15604, 132, "HwDatablockWenAnalogImbalancePhQ"),
        FIXED(DacbFrequencyCompFreq, 13500, 116, "HwDatablockDacbFrequencyCompFreq"),
        FIXED(DacbFrequencyCompAmp, 13600, 64, "HwDatablockDacbFrequencyCompAmp"),
        FIXED(DacbFrequencyCompPh, 13700, 64, "HwDatablockDacbFrequencyCompPh"),
        FIXED(DacbFrequencyCompDt, 13800, 16, "HwSDatablockDacbFrequencyCompDt"),
        FIXED(DacbFrequencyCompAmpRear, 14400, 64, "HwSDatablockDacbFrequencyCompAmpRear"),
        FIXED(DacbFrequencyCompPhRear, 14500, 64, "HwDatablockDacbFrequencyCompPhRear"),
        FIXED(DacbFrequencyCompDtRear, 14600, 16, "HwSDatablockDacbFrequencyCompDtRear"),
        FIXED(DacbIqImbalanceFreq, 13900, 116, "HwSDatablockDacbIqImbalanceFreq"),
        FIXED(DacbIqImbalanceAmp, 14000, 64, "HwDatablockDacbIqImbalanceAmp"),
        FIXED(DacbIqImbalancePh, 14100, 64, "HwDatablockDacbIqImbalancePh"),
        FIXED(DacbIqImbalanceSwapAmp, 14200, 64, "HwDatablockDacbIqImbalanceSwapAmp"),
        FIXED(DacbIqImbalanceSwapPh, 14300, 64, "HwDatablockDacbIqImbalanceSwapPh"),
        FIXED(DacbIqImbalanceRearAmp, 14700, 64, "HwSDatablockDacbIqImbalanceRearAmp"),
        FIXED(DacbIqImbalanceRearPh, 14800, 64, "HwDatablockDacbIqImbalanceRearPh"),
        FIXED(BbinsCompFilterTabsI, 13000, 92, "HwSDatablockBbinsCompFilterTabsI"),
        FIXED(BbinsCompFilterTabsQ, 13050, 92, "HwDatablockBbinsCompFilterTabsQ"),
        FIXED(BbinsUncalibratedFirAmplitudeI, 13100, 212, "HwDatablockBbinsUncalibratedFirAmplitudeI"),
        FIXED(BbinsUncalibratedFirPhiI, 13101, 212, "HwDatablockBbinsUncalibratedFirPhiI"),
        FIXED(BbinsUncalibratedFirAmplitudeQ, 13102, 212, "HwDatablockBbinsUncalibratedFirAmplitudeQ"),
        FIXED(BbinsUncalibratedFirPhiQ, 13103, 212, "HwDatablockBbinsUncalibratedFirPhiQ"),
        PATH(MbrdExtLevCalData, 12060, 3652, "HwSDatablockMbrdExtLevCalData"),
        PATH(MbrdExtLevCalData2Edition, 12160, 3652, "HwSDatablockMbrdExtLevCalData2Edition   "),
        PATH(MbrdExtLevCalData_Enh, 12080, 7012, "HwSDatablockMbrdExtLevCalData_Enh"),
        PATH(MbrdExtLevCalDataFreq, 12050, 1052, "HwDatablockMbrdExtLevCalDataFreq"),
        PATH(MbrdExtLevCalDataFreq2Edition, 12150, 1052, "HwDatablockMbrdExtLevCalDataFreq2Edition"),
        PATH(MbrdExtLevCalDataFreq_Enh, 12070, 2012, "HwDatablockMbrdExtLevCalDataFreq_Enh"),
        PATH(MbrdExtLevCalDataFreq2Edition_Enh, 12090, 2012, "HwDatablockMbrdExtLevCalDataFreq2Edition_Enh"),
        PATH(MbrdIqImbalanceRfFreq, 12100, 2412, "HwSDatablockMbrdIqImbalanceRfFreq"),
        PATH(MbrdIqImbalanceRfEvenAmp, 12110, 1212, "HwDatablockMbrdIqImbalanceRfEvenAmp"),
        PATH(MbrdIqImbalanceRfEvenPh, 12120, 1212, "HwDatablockMbrdIqImbalanceRfEvenPh"),
        PATH(MbrdIqImbalanceRfOddAmp, 12130, 1212, "HwDatablockMbrdIqImbalanceRfOddAmp"),
        PATH(MbrdIqImbalanceRfOddPh, 12140, 1212, "HwDatablockMbrdIqImbalanceRfOddPh"),
        PATH(MbrdRfResponseAttFreq, 12260, 812, "HwDatablockMbrdRfResponseAttFreq"),
        PATH(MbrdRfResponseBbFreq, 12250, 412, "HwDatablockMbrdRfResponseBbFreq"),
        PATH(MbrdRfResponseIoPepInfo, 12220, 92, "HwDatablockMbrdRfResponseIoPepInfo"),
        PATH(MbrdRfResponseAttAmpl, 12270, 9612, "HwSDatablockMbrdRfResponseAttAmpl   "),
        PATH(MbrdRfResponseLpFreq, 12210, 5444, "HwSDatablockMbrdRfResponseLpFreq   "),
        PATH(MbrdRfResponseLpAmp, 12230, 21644, "HwSDatablockMbrdRfResponseLpAmp   "),
        PATH(MbrdRfResponseLpPh, 12240, 21644, "HwSDatablockMbrdRfResponseLpPh   "),
        PATH(AttCalDataFreq2Edition, 12170, 612, "HwSDatablockAttCalibDataFreq2Edition"),
        PATH(AttCalData2Edition, 12180, 8112, "HwSDatablockAttCalibData2Edition"),
        PATH(Cwop3DetTuneFreq, 12190, 812, "HwSDatablockCwop3DetTuneFreq"),
        PATH(Cwop3DetTuneDac, 12200, 412, "HwSDatablockCwop3DetTuneDac"),
        PATH(CwopDetLinCorrFreq, 12290, 412, "HwSDatablockCwopDetLinCorrFreq"),
        PATH(CwopDetLinCorrData, 12292, 4012, "HwSDatablockCwopDetLinCorrData"),
        FIXED(DetLimiterMaxVoltFreq, 15020, 812, "HwDatablockDetLimiterMaxVoltFreq"),
        FIXED(DetLimiterMaxVoltData, 15021, 812, "HwDatablockDetLimiterMaxVoltData"),
        FIXED(AduLevCoarseCalibData, 15650, 108, "HwDatablockAduLevCoarseCalibData"),
        FIXED(AduGainOffsetCalData, 15652, 204, "HwSDatablockAduGainOffsetCalData"),
        FIXED(CwOp3AmGainFreq, 10500, 1612, "HwDatablockCwOp3AmGainFreq"),
        FIXED(CwOp3AmGainData, 10501, 1608, "HwSDatablockCwOp3AmGainData"),
        FIXED(WenBaseboardCalibValue, 15605, 16, "HwDatablockWenBaseboardCalibValue"),
        FIXED(OrbMbrdPllDacCalibValue, 12280, 16, "HwDatablockOrbMbrdPllDacCalibValue"),
        FIXED(DacIfFullScale, 12500, 12, "HwDatablockDacIfFullScale"),
        FIXED(WENDelay, 15504, 16, "HwDatablockWENDelay"),
        fixed<HwDatablockWenWIQQuadDac>("WenWIQQuadDac", 15649, 116,
                                        {InvalidChecksum, "   HwDatablockWenWiqQuadDacData"}),
        fixed<HwDatablockWenWiqSensorData>("WenWiqSensorData", 15648, 460,
                                           {InvalidChecksum, "   HwDatablockWenWiqSensorData"}),
    };
    using Enhanced = HwDatablockMbrdExtLevCalData2Edition_Enh;
    const std::pair<int, std::string> enhanced{DownloadDenied, "   HwSDatablockMbrdExtLevCalData2Edition_Enh   "};
    all.push_back(path<Enhanced, 13012>("MbrdExtLevCalData2Edition_Enh", 12095, 13012, enhanced));
    all.push_back(path<Enhanced, 1>("MbrdExtLevCalData2Edition_Enh_7", 12095, 7012, enhanced));
    for (Kind& one : all) {
        if (one.className == std::string_view("AduGainOffsetCalData"))
            one.refusal = 0;
    }
    return all;
}

#undef FIXED
#undef PATH

const Held held(kinds(), &Kind::id);

class EveryBoardTable : public testing::TestWithParam<Kind> {
protected:
    std::unique_ptr<HwDatablock> block_ = GetParam().make();
};

INSTANTIATE_TEST_SUITE_P(Classes, EveryBoardTable, testing::ValuesIn(kinds()),
                         [](const auto& test) { return std::string(test.param.className); });

TEST_P(EveryBoardTable, StartsWithIdentifierAndSizeInZeros) {
    ASSERT_EQ(block_->getId(), GetParam().id);
    ASSERT_EQ(block_->getBlockSize(), GetParam().size);
    std::string expected(GetParam().size, '\0');
    std::memcpy(expected.data(), block_->getData(), 4);
    if (GetParam().id == 15649)
        expected[8] = 13;
    if (GetParam().id == 15648)
        expected[8] = 28;
    EXPECT_EQ(bytesOf(*block_), expected);
}

TEST_P(EveryBoardTable, RefusesARecordWithAWrongChecksum) {
    std::string record = GetParam().sealed(*block_);
    record[5] = static_cast<char>(record[5] + 1);
    const std::string before = bytesOf(*block_);
    const Signals errors;
    EXPECT_EQ(GetParam().takeOver(*block_, record), GetParam().refusal);
    EXPECT_EQ(errors.all(), std::vector{GetParam().signal});
    EXPECT_EQ(bytesOf(*block_), before);
}

TEST_P(EveryBoardTable, TakesARecordOverWithItsIdentifierButItsOwnSize) {
    std::string record = GetParam().sealed(*block_);
    const Signals errors;
    EXPECT_EQ(GetParam().takeOver(*block_, record), 0);
    EXPECT_EQ(errors.count(), 0U);
    const auto size = static_cast<unsigned short>(GetParam().size);
    std::memcpy(record.data() + 2, &size, sizeof size);
    record[6] = 0;
    EXPECT_EQ(bytesOf(*block_), record) << "but for the size and alignment words, the record";

    block_->setChecksum(block_->computeChecksum());
    const std::string before = bytesOf(*block_);
    EXPECT_EQ(GetParam().takeOverOwnBuffer(*block_), 0);
    EXPECT_EQ(bytesOf(*block_), before) << "a record may lie in the block's own buffer";
}

TEST_P(EveryBoardTable, TakesOverWhatAShortBufferHolds) {
    const std::string record = GetParam().sealed(*block_);
    for (const unsigned int length : {8U, 10U, 13U, GetParam().size - 1}) {
        const auto shortened = GetParam().make();
        shortened->resizeData(length);
        const Signals errors;
        EXPECT_EQ(GetParam().takeOver(*shortened, record), 0);
        EXPECT_EQ(shortened->getByteArrayData().size(), length);
        EXPECT_EQ(shortened->getId(), 777);
        textOf(*shortened); // reads nothing beyond the buffer
    }
}

/// Sets and reads through member functions; the last good index and the first bad one come from the capacity.
template <class Block, class Get, class Set, class Value>
void expectList(const char* name, Block&& block, Get get, Set set, int capacity, Value value, Value read) {
    SCOPED_TRACE(name);
    for (const int i : {0, capacity - 1}) {
        std::invoke(set, block, value, i);
        EXPECT_EQ(std::invoke(get, block, i), read);
        EXPECT_TRUE(block.verifyChecksum());
    }
    const std::string before = bytesOf(block);
    for (const int i : {-1, capacity, 65535}) {
        std::invoke(set, block, value, i);
        EXPECT_EQ(std::invoke(get, block, i), Value{}) << i;
    }
    EXPECT_EQ(bytesOf(block), before);
}

template <class Block, class Get, class Set>
void expectCount(const char* name, Block&& block, Get get, Set set, unsigned int largest) {
    SCOPED_TRACE(name);
    std::invoke(set, block, 5);
    const std::string before = bytesOf(block);
    EXPECT_EQ(static_cast<long>(std::invoke(get, block)), 5);
    EXPECT_TRUE(block.verifyChecksum());
    std::invoke(set, block, static_cast<int>(largest));
    EXPECT_EQ(static_cast<unsigned int>(std::invoke(get, block)), largest);
    std::invoke(set, block, 5);
    if (largest < 65535)
        std::invoke(set, block, static_cast<int>(largest + 1));
    EXPECT_EQ(bytesOf(block), before) << "a count that is too large is not stored";
}

// 100 is small enough for every stored type; some classes show it with the other sign.
// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are names and constructor arguments
#define ACCESSORS(name, args, count, setCount, value, setValue, capacity, type, read, largest)                         \
    expectCount(#name, HwDatablock##name args, &HwDatablock##name::count, &HwDatablock##name::setCount, largest);      \
    expectList(#name, HwDatablock##name args, &HwDatablock##name::value, &HwDatablock##name::setValue, capacity,       \
               type{100}, static_cast<type>(read))
// NOLINTEND(bugprone-macro-parentheses)
#define DACB(name, counted, setCounted, value, capacity, type, read, largest)                                          \
    ACCESSORS(Dacb##name, (), getNumberOf##counted, setNumberOf##setCounted, get##value, set##value, capacity, type,   \
              read, largest)
#define BBINS(name, part, capacity)                                                                                    \
    ACCESSORS(Bbins##name, (), getNumberOf##part, setNumberOf##part, get##part##Value, set##part##Value, capacity,     \
              int, 100, any)

constexpr unsigned int any = 0x7FFFFFFF; // no limit
using Word = unsigned int;

TEST(BoardTableAccessors, OfTheDacBoard) {
    DACB(FrequencyCompFreq, CompFreq, compFreq, CompFreq, 26, int, 100, any);
    DACB(FrequencyCompAmp, CompAmp, compAmp, CompAmp, 26, short, 100, any);
    DACB(FrequencyCompPh, CompPh, CompPh, CompPh, 26, short, 100, any);
    DACB(FrequencyCompDt, CompDt, CompDt, CompDt, 2, short, 100, any);
    DACB(FrequencyCompAmpRear, CompAmpRear, compAmpRear, CompAmpRear, 26, short, 100, 26);
    DACB(FrequencyCompPhRear, CompPhRear, CompPhRear, CompPhRear, 26, short, 100, 26);
    DACB(FrequencyCompDtRear, CompDtRear, CompDtRear, CompDtRear, 2, short, 100, any);
    DACB(IqImbalanceFreq, IqImbalanceFreq, IqImbalanceFreq, IqImbalanceFreq, 26, int, 100, 26);
    DACB(IqImbalanceAmp, IqImbalanceAmp, IqImbalanceAmp, IqImbalanceAmp, 26, short, 100, any);
    DACB(IqImbalancePh, IqImbalancePh, IqImbalancePh, IqImbalancePh, 26, short, -100, any);
    DACB(IqImbalanceSwapAmp, IqImbalanceSwapAmp, IqImbalanceSwapAmp, IqImbalanceSwapAmp, 26, short, 100, any);
    DACB(IqImbalanceSwapPh, IqImbalanceSwapPh, IqImbalanceSwapPh, IqImbalanceSwapPh, 26, short, -100, any);
    DACB(IqImbalanceRearAmp, IqImbalanceRearAmp, IqImbalanceRearAmp, IqImbalanceRearAmp, 26, short, 100, 26);
    DACB(IqImbalanceRearPh, IqImbalanceRearPh, IqImbalanceRearPh, IqImbalanceRearPh, 26, short, -100, any);
}

TEST(BoardTableAccessors, OfBasebandInputAndWen) {
    BBINS(CompFilterTabsI, FilterTabsI, 20);
    BBINS(CompFilterTabsQ, FilterTabsQ, 20);
    BBINS(UncalibratedFirAmplitudeI, UncalibratedFirAmplitudeI, 50);
    BBINS(UncalibratedFirPhiI, UncalibratedFirPhiI, 50);
    BBINS(UncalibratedFirAmplitudeQ, UncalibratedFirAmplitudeQ, 50);
    BBINS(UncalibratedFirPhiQ, UncalibratedFirPhiQ, 50);
    ACCESSORS(WenAnalogImbalanceFreq, (), getNumberOfWenAnalogImbalanceFreq, setNumberOfWenAnalogImbalanceFreq,
              getWenAnalogImbalanceFreq, setWenAnalogImbalanceFreq, 30, double, 100, any);
    ACCESSORS(WenAnalogImbalanceGainI, (), getNumberOfWenAnalogImbalanceGainValues,
              setNumberOfWenAnalogImbalanceGainValues, getWenAnalogImbalanceGain, setWenAnalogImbalanceGain, 30, float,
              100, any);
    ACCESSORS(WenAnalogImbalancePhQ, (), getNumberOfWenAnalogImbalancePh, setNumberOfWenAnalogImbalancePh,
              getWenAnalogImbalancePh, setWenAnalogImbalancePh, 30, float, 100, any);
}

#define IMBALANCE(part, type, largest)                                                                                 \
    ACCESSORS(MbrdIqImbalanceRf##part, (0), getNumberOfIqImbalanceRf##part, setNumberOfIqImbalanceRf##part,            \
              getIqImbalanceRf##part, setIqImbalanceRf##part, 600, type, 100, largest)
#define FREQUENCIES(name, capacity, type, read)                                                                        \
    ACCESSORS(Mbrd##name, (0), getNumberOfFrequency, setNumberOfFrequency, getFrequencyValue, setFrequencyValue,       \
              capacity, type, read, any)
#define USER_FREQUENCIES(name, capacity, type)                                                                         \
    ACCESSORS(name, (0), getNumberOfFreqValues, setNumberOfFreqValues, getFrequencyValue, setFrequencyValue, capacity, \
              type, 100, any)

TEST(BoardTableAccessors, OfPathLists) {
    IMBALANCE(Freq, Word, any);
    IMBALANCE(EvenAmp, short, any);
    IMBALANCE(EvenPh, short, any);
    IMBALANCE(OddAmp, short, any);
    IMBALANCE(OddPh, short, 600);
    FREQUENCIES(RfResponseAttFreq, 200, Word, 100);
    FREQUENCIES(RfResponseBbFreq, 100, int, 100);
    // Set in units of 10 Hz, read in Hz.
    FREQUENCIES(ExtLevCalDataFreq, 260, Word, 1000);
    FREQUENCIES(ExtLevCalDataFreq2Edition, 260, Word, 1000);
    FREQUENCIES(ExtLevCalDataFreq_Enh, 500, Word, 1000);
    FREQUENCIES(ExtLevCalDataFreq2Edition_Enh, 500, Word, 1000);
    ACCESSORS(MbrdRfResponseIoPepInfo, (0), getCountOfIoPepInfoValues, setCountOfIoPepInfoValues, getIoPepInfoValue,
              setIoPepInfoValue, 20, Word, 100, any);
    USER_FREQUENCIES(AttCalDataFreq2Edition, 150, int);
    USER_FREQUENCIES(Cwop3DetTuneFreq, 100, double);
    USER_FREQUENCIES(CwopDetLinCorrFreq, 50, double);
    ACCESSORS(AduLevCoarseCalibData, (), getCount, setCount, getLevCoarseCalValue, setLevCoarseCalValue, 12, double,
              100, any);
    ACCESSORS(CwOp3AmGainFreq, (), getCount, setCount, getFrequencyValue, setFrequencyValue, 200, double, 100, any);
}

/// Sets and reads an element of a table at its last good indices; no index may be one more, nor another count stand in.
template <class Block, class Value, class Get, class Set>
void expectElement(const char* name, Block&& block, const Value& value, std::vector<int> last, Get get, Set set) {
    SCOPED_TRACE(name);
    set(block, value, last);
    EXPECT_EQ(get(block, last), value);
    EXPECT_TRUE(block.verifyChecksum());
    const std::string before = bytesOf(block);
    // The last good element is the last of the image.
    EXPECT_TRUE(before.ends_with(std::string_view(reinterpret_cast<const char*>(&value), sizeof value)));
    for (int& index : last) {
        ++index;
        set(block, value, last);
        EXPECT_EQ(get(block, last), Value{});
        --index;
    }
    EXPECT_EQ(bytesOf(block), before);
}

#define ELEMENT(block, value, getCall, setCall, ...)                                                                   \
    expectElement(                                                                                                     \
        #block, block, value, {__VA_ARGS__}, [](auto& b, const auto& i) { return b.getCall; },                         \
        [](auto& b, const auto& v, const auto& i) { b.setCall; })
#define U8(index) static_cast<unsigned char>(i[index])
#define U32(index) static_cast<unsigned int>(i[index])

TEST(BoardTableAccessors, OfTablesOfSeveralDimensions) {
    constexpr short correction = -321;
    constexpr HwSAttPolynomValues attenuation{1, -2, 3, -4};
    constexpr HwSPolynomValues polynomial{1, -2, 3, -4};
    constexpr HwSLevCorrValues levelCorrection{-7, 1.5F};
    constexpr HwSAduGainOffsetCalData offsets{1.0, 2.0, 3.0};
    constexpr HwSCwOp3AmGainDataBlock gains{1, -2, 3, -4};
#define LEVELS(name, rows, columns)                                                                                    \
    ELEMENT(name, correction, getCorLevelValue(U8(0), U32(1)), setCorLevelValue(v, U8(0), U32(1)), rows, columns)
    LEVELS(HwDatablockMbrdExtLevCalData(0), 6, 259);
    LEVELS(HwDatablockMbrdExtLevCalData2Edition(0), 6, 259);
    LEVELS(HwDatablockMbrdExtLevCalData_Enh(0), 6, 499);
    LEVELS(HwDatablockMbrdExtLevCalData2Edition_Enh(0, true, 13012), 12, 499);
    LEVELS(HwDatablockMbrdExtLevCalData2Edition_Enh(0, true, 0), 6, 499);
    ELEMENT(HwDatablockMbrdRfResponseAttAmpl(0), attenuation, getCorLevelValue(U8(0), U32(1)),
            setCorLevelValue(v, U8(0), U32(1)), 5, 199);
    ELEMENT(HwDatablockMbrdRfResponseLpFreq(0), 77U, getFrequencyValue(U32(0), U32(1)),
            setFrequencyValue(v, U8(0), U32(1)), 8, 149);
    ELEMENT(HwDatablockMbrdRfResponseLpAmp(0), polynomial, getCorAmplValue(U8(0), U8(1), U32(2)),
            setCorAmplValue(v, U8(0), U8(1), U32(2)), 8, 3, 149);
    ELEMENT(HwDatablockMbrdRfResponseLpPh(0), polynomial, getCorPhaseValue(U8(0), U8(1), U32(2)),
            setCorPhaseValue(v, U8(0), U8(1), U32(2)), 8, 3, 149);
    ELEMENT(HwDatablockAttCalData2Edition(0), correction, getAttenuationValue(i[0], i[1]),
            setAttenuationValue(v, i[0], i[1]), 26, 149);
    ELEMENT(HwDatablockCwop3DetTuneDac(0), -5, getDetTuneDacValue(i[1], i[0]),
            setDetTuneDacValue(static_cast<short>(v), i[0], i[1]), 0, 99);
    ELEMENT(HwDatablockCwopDetLinCorrData(0), levelCorrection, getDetLinCorrData(i[0], i[1]),
            setDetLinCorrData(v, i[0], i[1]), 9, 49);
    ELEMENT(HwDatablockAduGainOffsetCalData(), offsets, getAduCalibDataBlock(i[0]), setCalibDatablock(v, i[0]), 7);
    ELEMENT(HwDatablockCwOp3AmGainData(), gains, getAmGainDataBlock(i[0]), setAmGainDataBlock(v, i[0]), 199);
}

TEST(BoardTableAccessors, OfCountsOfTables) {
    const auto expect16 = [](const char* name, auto&& block, auto get, auto set) {
        expectCount(name, block, get, set, 65535);
        EXPECT_EQ(bytesOf(block).substr(8, 4), std::string("\5\0\0\0", 4)) << name;
    };
    expect16("ext", HwDatablockMbrdExtLevCalData(0), &HwDatablockMbrdExtLevCalData::getNumberOfLevelSteps,
             &HwDatablockMbrdExtLevCalData::setNumberOfLevelSteps);
    expect16("att", HwDatablockAttCalData2Edition(0), &HwDatablockAttCalData2Edition::getNumberOfAttSteps,
             &HwDatablockAttCalData2Edition::setNumberOfAttSteps);
    expect16("dac", HwDatablockCwop3DetTuneDac(0), &HwDatablockCwop3DetTuneDac::getNumberOfDacSteps,
             &HwDatablockCwop3DetTuneDac::setNumberOfDacSteps);
    expectCount("attenuators", HwDatablockMbrdRfResponseAttAmpl(0),
                &HwDatablockMbrdRfResponseAttAmpl::getNumberOfRfRespAttFreqs,
                &HwDatablockMbrdRfResponseAttAmpl::setNumberOfRfRespAttFreqs, any);
    expectCount("adu", HwDatablockAduGainOffsetCalData(), &HwDatablockAduGainOffsetCalData::getCount,
                &HwDatablockAduGainOffsetCalData::setCount, any);
    HwDatablockMbrdRfResponseLpAmp filters(0);
    expectList("filters", filters, &HwDatablockMbrdRfResponseLpAmp::getNumberOfFreqCount,
               &HwDatablockMbrdRfResponseLpAmp::setNumberOfFreqCount, 9, 100U, 100U);
}

} // namespace BoardTablesTest
