// What single classes of the board tables do differently: texts, counts, take-over.
#include "BoardTables.h"

#include <memory>

namespace BoardTablesTextTest {

using namespace Travik;
using namespace BoardTables;
using namespace Support;

constexpr std::size_t countOffset = 8;

TEST(BoardTableText, KeysFollowTheIdentifier) {
    using Enh = HwDatablockMbrdExtLevCalData2Edition_Enh;
    struct Row {
        std::shared_ptr<HwDatablock> block;
        unsigned short id;
        const char* idLine;
        const char* countLine;
    };
    const auto levels = std::make_shared<HwDatablockMbrdExtLevCalData>(2);
    const auto enhanced = std::make_shared<Enh>(0, true, 13012);
    const auto frequencies = std::make_shared<HwDatablockMbrdExtLevCalDataFreq2Edition_Enh>(1);
    const auto attenuator = std::make_shared<HwDatablockAttCalData2Edition>(3);
    const auto linearity = std::make_shared<HwDatablockCwopDetLinCorrFreq>(1);
    const auto dac = std::make_shared<HwDatablockDacbFrequencyCompFreq>();
    const Row rows[] = {
        {levels, 12062, "EXT_CAL_DAT_C_LEVEL", "0 *COUNT_OF_EXT_CAL_DAT_C_FREQ"},
        {levels, 12064, "", "0 *"},
        {levels, 12059, "", "0 *"},
        {enhanced, 12096, "EXT_CAL_DAT_B_LEVEL_2_EDITION_ENH", "0 *COUNT_OF_EXT_CAL_DAT_B_FREQ_2_EDITION_ENH"},
        {enhanced, 12161, "EXT_CAL_DAT_B_LEVEL_2_EDITION", "0 *COUNT_OF_EXT_CAL_DAT_B_FREQ_2_EDITION"},
        {enhanced, 12162, "", "0 *"},
        {frequencies, 12090, "EXT_CAL_DAT_A_FREQ_2_EDITION_ENH", "0"},
        {frequencies, 12151, "EXT_CAL_DAT_B_FREQ_2_EDITION", "0"},
        {frequencies, 12152, "", "0"},
        {attenuator, 12183, "ATT_CAL_DAT_D_LEVEL_2_EDITION", "0 *COUNT_OF_ATT_CAL_DAT_D_FREQ_2_EDITION"},
        {linearity, 12292, "", "0"},
        {dac, 1, "DACB_FREQUENCY_COMP_FREQ", "0"}, // one name, whatever the identifier
    };
    for (const Row& row : rows) {
        row.block->setBlockId(row.id);
        EXPECT_EQ(lineOf(textOf(*row.block), 1), std::string("ID:              ") + row.idLine) << row.id;
        EXPECT_EQ(lineOf(textOf(*row.block), 2), std::string("COUNT:           ") + row.countLine) << row.id;
    }
}

TEST(BoardTableText, CountsBeyondTheCapacityPrintZerosOrStop) {
    struct Row {
        const char* what;
        std::shared_ptr<HwDatablock> block;
        unsigned int count;
        long rows; ///< lines between head and closing lines
        std::string lastRow;
    };
    const auto comp = std::make_shared<HwDatablockDacbFrequencyCompAmp>();
    const auto ext = std::make_shared<HwDatablockMbrdExtLevCalDataFreq>(0);
    const auto dac = std::make_shared<HwDatablockCwop3DetTuneDac>(0);
    const auto adu = std::make_shared<HwDatablockAduLevCoarseCalibData>();
    const auto offsets = std::make_shared<HwDatablockAduGainOffsetCalData>();
    std::string zeros;
    for (int i = 0; i < 100; ++i)
        zeros += "\t\t0";
    const std::string thirdRow = "2:" + zeros;
    const Row rows[] = {
        {"zeros", comp, 27, 27, "27:             0"},
        {"an erased count", comp, 0xFFFFFFFF, 65535, "65535:             0"},
        {"zero frequencies repeat nothing beyond the capacity", ext, 261, 261, "261:             0.00"},
        {"the only row and two of zeros", dac, 3, 3, thirdRow},
        {"low 16 bits of the count", dac, 0x10001, 1, "0:" + zeros},
        {"k counts from 0", adu, 13, 13, "k12:          0"},
        {"an ADU count above the capacity", offsets, 9, 9, "9: \t\t0.000000\t\t\t\t0.000000\t\t\t\t0.000000\t"},
        {"a negative ADU count", offsets, 0xFFFFFFFF, 0, ""},
        {"imbalance", std::make_shared<HwDatablockMbrdIqImbalanceRfEvenAmp>(0), 601, 600, "600: 0"},
        {"baseband frequencies", std::make_shared<HwDatablockMbrdRfResponseBbFreq>(0), 0xFFFFFFFF, 100,
         "100:             0"},
        {"user frequencies", std::make_shared<HwDatablockAttCalDataFreq2Edition>(0), 151, 151, "151:             0"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        poke(*row.block, countOffset, 0);
        const long empty = linesOf(textOf(*row.block));
        poke(*row.block, countOffset, row.count);
        const std::string text = textOf(*row.block);
        EXPECT_EQ(linesOf(text) - empty, row.rows);
        EXPECT_EQ(lineOf(text, -2), row.lastRow);
        EXPECT_EQ(lineOf(text, -1), "");
    }
}

TEST(BoardTableText, RowsStopAtTheCapacityAndHaveTheirLabels) {
    struct Row {
        std::shared_ptr<HwDatablock> block;
        unsigned int count;
        const char* countLine; ///< its beginning
        long lines;
        const char* lastLabel;
    };
    const auto enhanced = [](int size) {
        return std::make_shared<HwDatablockMbrdExtLevCalData2Edition_Enh>(0, false, size);
    };
    const Row rows[] = {
        {std::make_shared<HwDatablockMbrdExtLevCalData>(0), 8, "COUNT:           8 *", 4 + 7, "6: \t\t 0\t\t 0"},
        {std::make_shared<HwDatablockMbrdExtLevCalData>(0), 0x50003, "COUNT:           3 *", 4 + 3, "2: \t\t 0"},
        {enhanced(13012), 65535, "COUNT:           65535 *", 4 + 13, "12: \t\t 0"},
        {enhanced(13013), 65535, "COUNT:           65535 *", 4 + 7, "6: \t\t 0"},
        {std::make_shared<HwDatablockAttCalData2Edition>(0), 3, "COUNT:           3 *", 6 + 3, "10:\t\t0"},
        {std::make_shared<HwDatablockAttCalData2Edition>(0), 28, "COUNT:           28 *", 6 + 27, "130:\t\t0"},
    };
    for (const Row& row : rows) {
        poke(*row.block, countOffset, row.count);
        const std::string text = textOf(*row.block);
        EXPECT_TRUE(lineOf(text, 2).starts_with(row.countLine)) << lineOf(text, 2);
        EXPECT_EQ(linesOf(text), row.lines) << row.lastLabel;
        EXPECT_TRUE(lineOf(text, -2).starts_with(row.lastLabel)) << lineOf(text, -2);
    }
}

TEST(BoardTableText, LeavesItsPrecisionAndTheFlagsItFound) {
    struct Row {
        const char* what;
        std::shared_ptr<HwDatablock> block;
        std::streamsize left;
        const char* line;
        int number;
    };
    const auto frequency = std::make_shared<HwDatablockWenAnalogImbalanceFreq>();
    frequency->setNumberOfWenAnalogImbalanceFreq(2);
    frequency->setWenAnalogImbalanceFreq(2.5e6, 1);
    const auto node = std::make_shared<HwDatablockDetLimiterMaxVoltFreq>();
    node->setCount(1);
    node->setFrequencyValue(1.5, 0, true);
    const auto voltage = std::make_shared<HwDatablockDetLimiterMaxVoltData>();
    voltage->setCount(2);
    voltage->setMaxVoltageValue(7.25, 1, true);
    const auto linearity = std::make_shared<HwDatablockCwopDetLinCorrData>(0);
    linearity->setNumberOfDetLinCorrSteps(2);
    linearity->setNumberOfValidFreqs(1);
    linearity->setDetLinCorrData({-12, -0.0625F}, 1, 0);
    const auto offsets = std::make_shared<HwDatablockAduGainOffsetCalData>();
    offsets->setCount(1);
    offsets->setCalibDatablock({1.0, 2.0, -3.5}, 0);
    const auto point = std::make_shared<HwDatablockMbrdExtLevCalDataFreq>(0);
    point->setNumberOfFrequency(1);
    point->setFrequencyValue(123, 0);
    constexpr int untouched = 1;
    const Row rows[] = {
        {"WEN", frequency, 2, "2:             2500000.00", 4},
        {"GHz", node, 3, "1:             1.500", 6},
        {"V", voltage, 2, "2:             7.25", 5},
        {"linearity", linearity, 3, "\t\t0.000\t\t-0.062", 6},
        {"linearity", linearity, 3, "1:\t\t0\t\t-12", 5},
        {"AM gain", std::make_shared<HwDatablockCwOp3AmGainFreq>(), 2, "COUNT:           0", 2},
        {"detector", std::make_shared<HwDatablockCwop3DetTuneFreq>(0), 2, "", 3},
        {"linearity", std::make_shared<HwDatablockCwopDetLinCorrFreq>(0), 2, "", 3},
        {"ADU, in the stream's precision, DET before REF", offsets, untouched, "1: \t\t1.0\t\t\t\t-3.5\t\t\t\t2.0\t",
         9},
        {"10 Hz", point, untouched, "1:             1230.00", 3},
    };
    for (const Row& row : rows) {
        for (const auto flags : {std::ios_base::fmtflags{}, std::ios_base::scientific, std::ios_base::fixed,
                                 std::ios_base::hex | std::ios_base::showbase}) {
            std::ostringstream os;
            os.flags(flags);
            os.precision(untouched);
            os.width(30);
            os.fill('#');
            row.block->printToStream(os);
            os.width(0);
            EXPECT_EQ(os.flags(), flags) << row.what;
            EXPECT_EQ(os.precision(), row.left) << row.what;
            EXPECT_EQ(lineOf(os.str(), row.number), row.line) << row.what;
        }
    }
}

TEST(BoardTableText, CurrentFormatIsTheStreams) {
    HwDatablockWENDelay delay;
    delay.setDelayI(0.1F);
    delay.setDelayQ(1234.5F);
    EXPECT_EQ(delay.getDelay(false), static_cast<double>(0.1F));
    EXPECT_EQ(delay.getDelay(true), 1234.5);
    std::ostringstream os;
    os << std::scientific;
    os.precision(2);
    delay.printToStream(os);
    EXPECT_EQ(os.str(), "# Das sind die I und Q Delays:\nID:              WEN_DELAY\nDELAY_I:     1.00e-01\n"
                        "DELAY_Q:     1.23e+03\n\n");
}

TEST(BoardTableText, PolynomialsOfFiltersAndAttenuators) {
    HwDatablockMbrdRfResponseLpAmp filters(1);
    const std::string empty = textOf(filters);
    EXPECT_EQ(lineOf(empty, 1), "ID:              PATH_B_RF_RESPONSE_LP_AMP");
    EXPECT_EQ(linesOf(empty), 2 + 9 * (2 + 4 * 2 + 1));

    filters.setNumberOfFreqCount(2, 2);
    filters.setCorAmplValue({-1, 127, -128, 0}, 2, 1, 1);
    const std::string text = textOf(filters);
    EXPECT_NE(text.find("\n#iqpep2\nLP3IQPEP2A 1: \t\t 0\t\t 0\t\t 0\t\t 0\n"
                        "LP3IQPEP2A 2: \t\t -1\t\t 127\t\t -128\t\t 0\n\n#iqpep3\n"),
              std::string::npos);
    filters.setNumberOfFreqCount(0xFFFFFFFF, 8);
    EXPECT_EQ(linesOf(textOf(filters)), linesOf(text) + 600) << "a filter's count stops at its capacity";

    HwDatablockMbrdRfResponseLpFreq frequencies(0);
    frequencies.setNumberOfFreqCount(151, 8);
    frequencies.setFrequencyValue(4000000000U, 8, 149);
    const std::string points = textOf(frequencies);
    EXPECT_EQ(lineOf(points, -2), "150:             4000000000");
    EXPECT_EQ(lineOf(points, 3), "COUNT:           0");
    EXPECT_NE(points.find("\nCOUNT:           151\n"), std::string::npos);
    const std::string before = bytesOf(frequencies);
    frequencies.setFrequencyValue(5, 9, 0);
    EXPECT_EQ(bytesOf(frequencies), before);

    HwDatablockMbrdRfResponseAttAmpl attenuators(0);
    attenuators.setNumberOfRfRespAttFreqs(201);
    attenuators.setCorLevelValue({1, -2, 3, -32768}, 5, 199);
    const std::string amplitudes = textOf(attenuators);
    EXPECT_EQ(linesOf(amplitudes), 2 + 6 * (1 + 200 + 1) + 1);
    EXPECT_EQ(lineOf(amplitudes, -3), "ATT6 200: \t\t 1\t\t -2\t\t 3\t\t -32768");
}

TEST(BoardTableText, AmGainPrintsAllItsRows) {
    HwDatablockCwOp3AmGainData gains;
    gains.setAmGainDataBlock({1, -2, 3, -4}, 199);
    const std::string text = textOf(gains);
    EXPECT_EQ(linesOf(text), 4 + 200 + 1);
    EXPECT_EQ(lineOf(text, 3), " ");
    EXPECT_EQ(lineOf(text, -2), "200: \t\t1\t-2\t3\t-4\t");
}

const Held held{15606};

TEST(BoardTableText, RfImbalancePrintsItsCreatorsKeyAndNoEmptyLine) {
    HwDatablockWenWiqRfImbalanceData table("MY_KEY", 2, false);
    EXPECT_EQ(table.getId(), 15608);
    EXPECT_EQ(table.getBlockSize(), 1416);
    table.setValue(0.25, 0, 0);
    poke(table, 8, 1);
    poke(table, 12, 2);
    EXPECT_EQ(textOf(table), "ID:  MY_KEY\nCOUNT:  1*2\n1: \t0.2500000000\t0.0000000000\n");
    poke(table, 8, 51);
    poke(table, 12, 8);
    EXPECT_EQ(lineOf(textOf(table), -1).substr(0, 18), "51: \t0.0000000000\t") << "zeros beyond the capacity";
    EXPECT_EQ(linesOf(textOf(table)), 2 + 51);
}

TEST(BoardTables, InvertedPhasesChangeSignWithin16Bits) {
    HwDatablockDacbIqImbalancePh phase;
    phase.setNumberOfIqImbalancePh(2);
    phase.setIqImbalancePh(150, 0);
    phase.setIqImbalancePh(-32768, 1);
    EXPECT_EQ(phase.getIqImbalancePh(1), -32768);
    const FieldList fields = HwDatablockDacbIqImbalancePh::fieldsOf(14100);
    for (const unsigned int k : {0U, 1U})
        EXPECT_DOUBLE_EQ(fieldValue(bytesOf(phase), fields.back(), {&k, 1}),
                         phase.getIqImbalancePh(static_cast<int>(k)) * 0.01);
    EXPECT_EQ(phase.getBlock()->values[0], 150);
    EXPECT_EQ(lineOf(textOf(phase), 2), "1:             -150");
    EXPECT_EQ(lineOf(textOf(phase), 3), "2:             -32768");
    const CatalogueEntry* const entry = findEntry(14100);
    EXPECT_EQ(fieldValue({phase.getData(), 64}, entry->fields(*entry, 14100)[1], {}), -1.5);
}

TEST(BoardTables, PointsThatRepeatTheirPredecessorReadALittleHigher) {
    HwDatablockMbrdExtLevCalDataFreq frequencies(0);
    EXPECT_EQ(frequencies.getFrequencyValue(0), 0.0);
    EXPECT_EQ(frequencies.getFrequencyValue(1), 0.01) << "two empty points are equal, too";
    const unsigned int raw[] = {100000, 100000, 100000, 200000, 4294967295U};
    const double hertz[] = {1000000.0, 1000000.01, 1000000.01, 2000000.0, 42949672950.0};
    for (unsigned int k = 0; k < 5; ++k)
        frequencies.setFrequencyValue(raw[k], k);
    for (unsigned int k = 0; k < 5; ++k)
        EXPECT_EQ(frequencies.getFrequencyValue(k), hertz[k]) << k;
    frequencies.resizeData(16 + 2);
    EXPECT_EQ(frequencies.getFrequencyValue(1), 0.0) << "not wholly in the buffer";
}

TEST(BoardTables, RefusedCountsStayAsTheyWereInATakeOverToo) {
    HwDatablockDacbIqImbalanceFreq checked;
    checked.setNumberOfIqImbalanceFreq(7);
    auto record = sealedRecord(checked);
    record.count = 27;
    record.checksum = static_cast<unsigned short>(record.checksum - 22); // 27 in place of 5
    EXPECT_EQ(checked.setBlock(&record), 0);
    EXPECT_EQ(checked.getNumberOfIqImbalanceFreq(), 7);
    EXPECT_EQ(checked.getIqImbalanceFreq(25), record.values[25]);
    EXPECT_EQ(checked.getChecksum(), record.checksum) << "the record's own, which does not fit";
    EXPECT_FALSE(checked.verifyChecksum());
    checked.setNumberOfIqImbalanceFreq(-1);
    EXPECT_EQ(checked.getNumberOfIqImbalanceFreq(), -1) << "only a count above the capacity is refused";
}

TEST(BoardTables, CountsAndDacValuesAreCutTo16BitsInATakeOver) {
    HwDatablockCwop3DetTuneDac dac(0);
    HwSDatablockCwop3DetTuneDac record{};
    record.id = 12200;
    record.count = 0x70001;
    record.values[0][0] = 0x1FFFE;
    record.values[0][99] = 0x18000;
    record.checksum = dac.computeChecksum(reinterpret_cast<unsigned short*>(&record), sizeof record);
    EXPECT_EQ(dac.setBlock(&record), 0);
    EXPECT_EQ(dac.getNumberOfDacSteps(), 1);
    EXPECT_EQ(dac.getDetTuneDacValue(0, 0), -2);
    EXPECT_EQ(dac.getDetTuneDacValue(99, 0), -32768);
    EXPECT_EQ(dac.getChecksum(), record.checksum);
    dac.getBlock()->count = 0x70001;
    EXPECT_EQ(dac.getNumberOfDacSteps(), 0x70001);

    HwDatablockMbrdExtLevCalData levels(0);
    poke(levels, countOffset, 0x70002);
    EXPECT_EQ(levels.getNumberOfLevelSteps(), 2);
    const auto copy = *levels.getBlock();
    EXPECT_EQ(levels.setBlock(&copy), 0);
    EXPECT_EQ(levels.getBlock()->count, 2);
}

TEST(BoardTables, LinearityCountsShareAWord) {
    HwDatablockCwopDetLinCorrData linearity(1);
    linearity.setNumberOfDetLinCorrSteps(3);
    linearity.setNumberOfValidFreqs(2);
    EXPECT_EQ(linearity.getNumberOfDetLinCorrSteps(), 3 + 2 * 65536);
    EXPECT_EQ(linearity.getNumberOfValidFreqs(), 2);
    EXPECT_EQ(linesOf(textOf(linearity)), 5 + 2 * 2 + 1);
    linearity.setNumberOfDetLinCorrSteps(65535);
    linearity.setNumberOfValidFreqs(65535);
    const std::string text = textOf(linearity);
    EXPECT_EQ(lineOf(text, 2), "COUNT:           65535");
    EXPECT_EQ(linesOf(text), 5 + 2 * 50 + 1);
    EXPECT_EQ(lineOf(text, -3), "50:\t\t0\t\t0\t\t0\t\t0\t\t0\t\t0\t\t0\t\t0\t\t0\t\t0");
}

TEST(BoardTables, EnhancedLevelsKeepTheSizeTheyWereMadeWith) {
    HwDatablockMbrdExtLevCalData2Edition_Enh seven(0, false, 7012);
    HwDatablockMbrdExtLevCalData2Edition_Enh thirteen(0, false, 13012);
    thirteen.setNumberOfLevelSteps(13);
    thirteen.setCorLevelValue(-5, 12, 499);
    seven.setData(&thirteen);
    EXPECT_EQ(seven.getCorLevelValue(12, 499), 0);
    seven.setCorLevelValue(9, 7, 0);
    EXPECT_EQ(thirteen.getCorLevelValue(7, 0), 0);
    EXPECT_EQ(linesOf(textOf(seven)), 3 + 7 + 1);
    EXPECT_EQ(linesOf(textOf(thirteen)), 3 + 13 + 1);

    HwDatablockMbrdExtLevCalData2Edition_Enh target(0, false, 0);
    auto record = sealedRecord(target);
    record.values[7][0] = 1;
    const Signals errors;
    EXPECT_EQ(thirteen.setBlock(&record), 1) << "its checksum holds for 7 rows";
    EXPECT_EQ(target.setBlock(&record), 0);
    EXPECT_EQ(target.getBlockSize(), 7012);
    EXPECT_EQ(target.getCorLevelValue(6, 499), record.values[6][499]);
}

TEST(BoardTables, TwoClassesTakeAnEmptyRecordWhateverItsChecksum) {
    const Signals errors;
    HwDatablockCwOp3AmGainData gains;
    gains.setAmGainDataBlock({1, 2, 3, 4}, 100);
    HwSDatablockCwOp3AmGainData empty{};
    empty.id = 10501; // and no other byte, not even the size
    EXPECT_EQ(gains.setBlock(&empty), 0);
    EXPECT_EQ(gains.getAmGainDataBlock(100), HwSCwOp3AmGainDataBlock{});
    EXPECT_EQ(gains.getBlockSize(), 1608);
    EXPECT_EQ(gains.getChecksum(), 0);

    HwDatablockAduGainOffsetCalData offsets;
    HwSDatablockAduGainOffsetCalData none{};
    none.id = 15652;
    none.count = 77; // not compared
    EXPECT_EQ(offsets.setBlock(&none), 0);
    EXPECT_EQ(offsets.getCount(), 77);
    EXPECT_EQ(offsets.getBlockSize(), 204);
    EXPECT_EQ(errors.count(), 0U);

    empty.values[199].reserve2 = 1;
    EXPECT_EQ(gains.setBlock(&empty), 1);
    none.blockSize = 204;
    none.count = 78;
    EXPECT_EQ(offsets.setBlock(&none), 0) << "refused, and yet 0";
    EXPECT_EQ(offsets.getCount(), 77);
    EXPECT_EQ(errors.all(),
              (std::vector<std::pair<int, std::string>>{{DownloadDenied, "   HwSDatablockCwOp3AmGainData"},
                                                        {DownloadDenied, "   HwSDatablockAduGainOffsetCalData"}}));
}

TEST(BoardTables, LimiterSettersRefreshTheChecksumWhenAsked) {
    HwDatablockDetLimiterMaxVoltFreq nodes;
    HwDatablockDetLimiterMaxVoltData voltages;
    nodes.setCount(100);
    voltages.setCount(100);
    nodes.setFrequencyValue(22.0, 99, false);
    voltages.setMaxVoltageValue(7.5, 99, false);
    EXPECT_EQ(nodes.getFrequencyValue(99), 22.0);
    EXPECT_EQ(voltages.getMaxVoltageValue(99), 7.5);
    EXPECT_FALSE(nodes.verifyChecksum() || voltages.verifyChecksum());
    nodes.setFrequencyValue(22.0, 100, true);
    EXPECT_FALSE(nodes.verifyChecksum()) << "an index out of range does nothing";
    nodes.setFrequencyValue(21.0, 0, true);
    voltages.setMaxVoltageValue(7.25, 0, true);
    EXPECT_TRUE(nodes.verifyChecksum() && voltages.verifyChecksum());
    EXPECT_EQ(nodes.getFrequencyValue(100), 0.0);
    EXPECT_EQ(voltages.getMaxVoltageValue(100), 0.0);
}

template <class Block>
void expectSingleValue(Block block, int (Block::*get)(unsigned char) const, int (Block::*set)(int, unsigned char),
                       int wrongIndex, const char* failure) {
    const Signals errors;
    EXPECT_EQ((block.*set)(-512, 0), 0);
    block.setCount(0xFFFFFFFF);
    EXPECT_TRUE(block.verifyChecksum());
    const std::string before = bytesOf(block);
    EXPECT_EQ((block.*set)(7, 1), wrongIndex);
    EXPECT_EQ(bytesOf(block), before);
    EXPECT_EQ((block.*get)(0), -512);
    EXPECT_EQ((block.*get)(1), 0);
    EXPECT_EQ(lineOf(textOf(block), -3), "COUNT:      4294967295");
    EXPECT_EQ(lineOf(textOf(block), -2), "1:          -512") << "once, whatever the count";
    EXPECT_EQ(errors.count(), 0U);

    block.resizeData(15);
    EXPECT_EQ((block.*set)(0, 0), -1);
    EXPECT_TRUE(block.verifyChecksum());
    EXPECT_EQ(errors.all(), (std::vector<std::pair<int, std::string>>{{WriteToEepromFailed, failure}}));
}

TEST(BoardTables, SingleValuesAreReadBack) {
    using Wen = HwDatablockWenBaseboardCalibValue;
    using Orb = HwDatablockOrbMbrdPllDacCalibValue;
    expectSingleValue(Wen(), &Wen::getBaseboardCalibValue, &Wen::setBaseboardCalibValue, 0,
                      "WEN baseboard calibration value failed");
    expectSingleValue(Orb(), &Orb::getOrbMbrdPllDacCalibValue, &Orb::setOrbMbrdPllDacCalibValue, -1,
                      "Orb Mbrd Pll Dac Reference value failed");
    HwDatablockDacIfFullScale fullScale;
    fullScale.setFullScaleValue(-260);
    EXPECT_EQ(fullScale.getFullScaleValue(), -260);
    EXPECT_TRUE(fullScale.verifyChecksum());
}

TEST(BoardTables, WiqVectorsAreHandedOutEvenWhenTheChecksumIsWrong) {
    double in[28];
    for (int i = 0; i < 28; ++i)
        in[i] = i + 0.5;
    double first[28] = {};
    double second[28] = {};
    bool valid = false;

    HwDatablockWenWIQQuadDac dac;
    EXPECT_EQ(dac.setWenWiqQuadDacData(in), 0);
    dac.getWenWiqQuadDacData(first, valid);
    EXPECT_TRUE(valid && std::equal(in, in + 13, first) && first[13] == 0.0);
    EXPECT_EQ(dac.getBlock()->count, 13U);
    dac.setChecksum(static_cast<unsigned short>(dac.getChecksum() + 1));
    dac.getWenWiqQuadDacData(second, valid);
    EXPECT_TRUE(!valid && std::equal(in, in + 13, second));

    HwDatablockWenWiqSensorData sensor;
    double reversed[28];
    std::reverse_copy(in, in + 28, reversed);
    sensor.setWenWiqSensorData(in, reversed);
    sensor.getWenWiqSensorData(first, second, valid);
    EXPECT_TRUE(valid && std::equal(in, in + 28, first) && std::equal(reversed, reversed + 28, second));
    EXPECT_EQ(textOf(sensor) + textOf(dac), "") << "they print nothing";
}

} // namespace BoardTablesTextTest
