// What the module calibration blocks do alike: take-over, bounds; and the texts and rules of all but the IQ
// modulator's.
#include "Support.h"

#include <cstring>

namespace ModulesTest {

using namespace Travik;
using namespace Support;

template <class Record>
std::string bytesOfRecord(const Record& record) {
    std::string bytes(sizeof record, '\0');
    std::memcpy(bytes.data(), &record, sizeof record);
    return bytes;
}

template <class Record>
Record recordOf(const std::string& bytes) {
    Record record;
    std::memcpy(&record, bytes.data(), sizeof record);
    return record;
}

template <class Record>
void seal(Record& record) {
    record = recordOf<Record>(sealed(bytesOfRecord(record)));
}

constexpr unsigned short otherAlignment = 0x0707;
constexpr auto asRecorded = [](auto&) {};
constexpr auto cut8 = [](auto& record) { record.count &= 0xFFU; };
constexpr auto cut16 = [](auto& record) { record.count &= 0xFFFFU; };
constexpr auto cutBoth = [](auto& record) {
    record.numberOfLevelSteps &= 0xFFFFU;
    record.numberOfPoints &= 0xFFFFU;
};

enum class Sum : unsigned char { Records, Computed };

constexpr auto pmaxCodes = [](auto& record) {
    HwDatablockIqOp3RfmCalibDataMisc codes; // which code each is, see the IQ modulator's tests
    *codes.getBlock() = record;
    for (unsigned char bz = 0; bz < 12; ++bz)
        record.pmaxBz[bz] = codes.getPmaxBz(bz);
};

/// Hands a block a record whose header words are none of the class's, first with a wrong checksum. `expect` turns the
/// record into what the class makes of it.
template <class Block, auto expect = asRecorded, Sum sum = Sum::Records, unsigned short alignment = 0>
void takesOver(const char* context) {
    SCOPED_TRACE(context);
    using Record = typename Block::Record;
    std::mt19937 random(8);
    auto record = recordOf<Record>(randomBytes(random, sizeof(Record)));
    record.id = 4711;
    record.blockSize = 99;
    record.alignment = otherAlignment;
    seal(record);
    ++record.checksum;

    Block block;
    const std::string fresh = bytesOf(block);
    Signals signals;
    EXPECT_EQ(block.setBlock(&record), 1);
    EXPECT_THAT(signals.all(), testing::ElementsAre(std::pair(1040001, std::string(context))));
    EXPECT_EQ(bytesOf(block), fresh);

    --record.checksum;
    signals.clear();
    EXPECT_EQ(block.setBlock(&record), 0);
    EXPECT_EQ(signals.count(), 0U);
    Record expected = record;
    expect(expected);
    expected.blockSize = sizeof expected;
    expected.alignment = alignment;
    if (sum == Sum::Computed && sizeof expected < 0x8000)
        seal(expected);
    else if (sum == Sum::Computed)
        expected.checksum = 0; // its size word is no positive number
    EXPECT_TRUE(bytesOf(block) == bytesOfRecord(expected));

    // From its own buffer; and into one that ends in the middle.
    seal(*block.getBlock());
    const std::string before = bytesOf(block).substr(8);
    EXPECT_EQ(block.setBlock(block.getBlock()), 0);
    EXPECT_TRUE(bytesOf(block).substr(8) == before);
    block.resizeData(sizeof record - 1);
    block.setBlock(&record);
    EXPECT_EQ(bytesOf(block).substr(8, 1), bytesOfRecord(record).substr(8, 1));
}

struct TakeOver {
    int id;
    const char* context; ///< of the error signal
    void (*test)(const char* context);
};

constexpr TakeOver takeOvers[] = {
    {10300, "   HwDatablockIqOp3RfmHarmonic", takesOver<HwDatablockIqOp3RfmHarmonic>},
    {10302, "   HwDatablockIqOp3RfmCalibDataFreq", takesOver<HwDatablockIqOp3RfmCalibDataFreq>},
    {10303, "   HwSDatablockIqOp3RfmCalibData", takesOver<HwDatablockIqOp3RfmCalibData>},
    {10315, "   HwDatablockIqOp3RfmCalibDataMiscV20", takesOver<HwDatablockIqOp3RfmCalibDataMiscV20>},
    {10316, "   HwSDatablockIqOp3RfmCalibDataV20", takesOver<HwDatablockIqOp3RfmCalibDataV20>},
    {10301, "   HwDatablockIqOp3RfmCalibDataMisc", takesOver<HwDatablockIqOp3RfmCalibDataMisc, pmaxCodes>},
    {10902, "   HwDatablockIqOp6CalibData", takesOver<HwDatablockIqOp6CalibData>},
    {10901, "   HwDatablockIqOp6CalibDataFreq", takesOver<HwDatablockIqOp6CalibDataFreq, cut16>},
    {10900, "   HwDatablockIqOp6PmaxBz", takesOver<HwDatablockIqOp6PmaxBz, cut16>},
    {10601, "   HwSDatablockSAtt3CalibDataFreq", takesOver<HwDatablockSAtt3CalibDataFreq>},
    {10602, "   HwDatablockSAtt3CalibDataAtt", takesOver<HwDatablockSAtt3CalibDataAtt>},
    {10603, "   HwDatablockSAtt3CalibDataTemp", takesOver<HwDatablockSAtt3CalibDataTemp>},
    {11200, "   HwSDatablockSAtt6CalibDataFreq", takesOver<HwDatablockSAtt6CalibDataFreq>},
    {11001, "   HwDatablockSAtt6CalibDataAtt", takesOver<HwDatablockSAtt6CalibDataAtt>},
    {11202, "   HwDatablockSAtt6CalibDataTemp", takesOver<HwDatablockSAtt6CalibDataTemp>},
    {10000, "   HwDatablockSsynOcxoRefCalValue",
     takesOver<HwDatablockSsynOcxoRefCalValue, cut8, Sum::Records, otherAlignment>},
    {15000, "   HwDatablockSynexOcxoRefCalValue", takesOver<HwDatablockSynexOcxoRefCalValue, cut8>},
    {15001, "   HwDatablockFsynTcxoRefCalValue", takesOver<HwDatablockFsynTcxoRefCalValue, cut8>},
    {15002, "   HwDatablockPokOcxoRefCalValue", takesOver<HwDatablockPokOcxoRefCalValue, cut8>},
    {10001, "   HwDatablockSsynOpuDblCoefficient", takesOver<HwDatablockSsynOpuDblCoefficient, cut8>},
    {10002, "   HwDatablockSsynOpuLevelFreq", takesOver<HwDatablockSsynOpuLevelFreq, cut8>},
    {10003, "   HwDatablockSsynOpuLevel", takesOver<HwDatablockSsynOpuLevel, cut8>},
    {12045, "   HwSDatablockPokAttCalDat   ", takesOver<HwDatablockPokAttCalDat, cutBoth, Sum::Computed>},
    {12047, "   HwSDatablockPokAttCalDatSe   ", takesOver<HwDatablockPokAttCalDatSe, cutBoth, Sum::Computed>},
    {12041, "   HwSDatablockPokMwIfExtLevCalData   ",
     takesOver<HwDatablockPokMwIfExtLevCalData, cutBoth, Sum::Computed>},
    {12043, "   HwSDatablockPokMwIfExtLevCalDataRelCorr   ",
     takesOver<HwDatablockPokMwIfExtLevCalDataRelCorr, cutBoth, Sum::Computed>},
    {12042, "   HwDatablockPokMwIfExtLevCalDataAbsCorr",
     takesOver<HwDatablockPokMwIfExtLevCalDataAbsCorr, asRecorded, Sum::Computed>},
    {12040, "   HwDatablockPokMwIfExtLevCalDataFreq",
     takesOver<HwDatablockPokMwIfExtLevCalDataFreq, asRecorded, Sum::Computed>},
    {12044, "   HwDatablockPokAttCalDatFreq", takesOver<HwDatablockPokAttCalDatFreq>},
    {12046, "   HwDatablockPokAttCalDatFreqSe", takesOver<HwDatablockPokAttCalDatFreqSe>},
};
const Held held(takeOvers, &TakeOver::id);

TEST(Modules, TakeRecordsOver) {
    for (const TakeOver& row : takeOvers)
        row.test(row.context);
}

/// Stores a value at both ends of a table and beyond. Accessors take what index types they like: -1 is out of range as
/// the largest number too.
template <class Block, class Set, class Get>
void keepsBounds(int rows, int columns, double unit, Set setter, Get getter) {
    Block block;
    int stored = 3;
    for (const auto& [row, column] : {std::pair{0, 0}, {rows - 1, columns - 1}}) {
        setter(block, ++stored, row, column);
        EXPECT_EQ(getter(block, row, column), stored * unit) << row << ' ' << column;
        EXPECT_TRUE(block.verifyChecksum());
    }
    const std::string before = bytesOf(block);
    std::vector<std::pair<int, int>> outside{{rows, 0}, {-1, 0}};
    if (columns > 1)
        outside.insert(outside.end(), {{0, columns}, {0, -1}});
    for (const auto& [row, column] : outside) {
        setter(block, 5, row, column);
        EXPECT_EQ(getter(block, row, column), 0) << row << ' ' << column;
        EXPECT_EQ(bytesOf(block), before) << row << ' ' << column;
    }
    const Signals signals;
    block.resizeData(12);
    setter(block, 5, rows - 1, columns - 1);
    EXPECT_EQ(getter(block, rows - 1, columns - 1), 0) << "behind the end of the buffer";
    EXPECT_EQ(bytesOf(block).size(), 12U);
}

/// One index, and for some a last argument that asks for a new checksum.
template <class Block, class B, class Result, class Value, class Index, class... Update, class Got, class C>
void list(const char* name, Result (B::*setter)(Value, Index, Update...), Got (C::*getter)(Index) const, int extent,
          double unit = 1) {
    SCOPED_TRACE(name);
    keepsBounds<Block>(
        extent, 1, unit,
        [=](Block& block, int value, int i, int) {
            (block.*setter)(static_cast<Value>(value), static_cast<Index>(i), Update{true}...);
        },
        [=](const Block& block, int i, int) { return static_cast<double>((block.*getter)(static_cast<Index>(i))); });
}

/// Two indices.
template <class Block, class B, class Value, class Row, class Column, class... Update, class Got, class C>
void matrix(const char* name, void (B::*setter)(Value, Row, Column, Update...), Got (C::*getter)(Row, Column) const,
            int rows, int columns) {
    SCOPED_TRACE(name);
    keepsBounds<Block>(
        rows, columns, 1,
        [=](Block& block, int value, int row, int column) {
            (block.*setter)(static_cast<Value>(value), static_cast<Row>(row), static_cast<Column>(column),
                            Update{true}...);
        },
        [=](const Block& block, int row, int column) {
            return static_cast<double>((block.*getter)(static_cast<Row>(row), static_cast<Column>(column)));
        });
}

TEST(Modules, KeepTheirBounds) {
    using Harmonic = HwDatablockIqOp3RfmHarmonic;
    list<Harmonic>("harmonic", &Harmonic::setCutOffFrequency, &Harmonic::getCutOffFrequency, 6);
    using Frequencies = HwDatablockIqOp3RfmCalibDataFreq;
    list<Frequencies>("10302", &Frequencies::setFrequencyValue, &Frequencies::getFrequencyValue, 300);
    using Misc = HwDatablockIqOp3RfmCalibDataMisc;
    list<Misc>("pmax", &Misc::setPmaxBz, &Misc::getPmaxBz, 12);
    list<Misc>("uiq", &Misc::setUiqBz, &Misc::getUiqBz, 12);
    list<Misc>("lcon", &Misc::setLconReserveBz, &Misc::getLconReserveBz, 12);
    list<Misc>("det", &Misc::setDetReserveBz, &Misc::getDetReserveBz, 12);

    using Pmax = HwDatablockIqOp6PmaxBz;
    list<Pmax>("10900", &Pmax::setPmaxBz, &Pmax::getPmaxBz, 32);
    using Freq6 = HwDatablockIqOp6CalibDataFreq;
    list<Freq6>("10901", &Freq6::setFrequencyValue, &Freq6::getFrequencyValue, 70, 1e6);
    using Data6 = HwDatablockIqOp6CalibData;
    list<Data6>("20", &Data6::setLevAtt_20, &Data6::getLevAtt_20, 70);
    list<Data6>("40", &Data6::setLevAtt_40, &Data6::getLevAtt_40, 70);
    matrix<Data6>("da", &Data6::setDaValueBz, &Data6::getDaValueBz, 32, 70);

    using Freq = HwDatablockSAtt3CalibDataFreq;
    list<Freq>("10601", &Freq::setFrequencyValue, &Freq::getFrequencyValue, 150);
    using Att = HwDatablockSAtt6CalibDataAtt;
    matrix<Att>("11001", &Att::setAttenuationValue, &Att::getAttenuationValue, 27, 150);
    using Temp = HwDatablockSAtt3CalibDataTemp;
    matrix<Temp>("10603", &Temp::setTempGradient, &Temp::getTempGradient, 27, 150);

    using Oscillator = HwDatablockPokOcxoRefCalValue;
    list<Oscillator>("15002", &Oscillator::setOcxoRefCalValue, &Oscillator::getOcxoRefCalValue, 1);
    using Coefficient = HwDatablockSsynOpuDblCoefficient;
    list<Coefficient>("10001", &Coefficient::setOpuDblCoefficient, &Coefficient::getOpuDblCoefficient, 3);
    using LevelFreq = HwDatablockSsynOpuLevelFreq;
    list<LevelFreq>("10002", &LevelFreq::setOpuLevelFreq, &LevelFreq::getOpuLevelFreq, 50);
    using Level = HwDatablockSsynOpuLevel;
    list<Level>("10003", &Level::setOpuLevel, &Level::getOpuLevel, 50);

    using Matrix = HwDatablockPokAttCalDat;
    matrix<Matrix>("12045", &Matrix::setCorLevelValue, &Matrix::getCorLevelValue, 20, 200);
    using MatrixSe = HwDatablockPokAttCalDatSe;
    matrix<MatrixSe>("12047", &MatrixSe::setCorLevelValue, &MatrixSe::getCorLevelValue, 20, 500);
    using Large = HwDatablockPokMwIfExtLevCalDataRelCorr;
    matrix<Large>("12043", &Large::setCorLevelValue, &Large::getCorLevelValue, 20, 1500);
    using Points = HwDatablockPokMwIfExtLevCalDataFreq;
    list<Points>("12040", &Points::setFrequencyValue, &Points::getFrequencyValue, 1500, 100);
    using PointsSe = HwDatablockPokAttCalDatFreqSe;
    list<PointsSe>("12046", &PointsSe::setFrequencyValue, &PointsSe::getFrequencyValue, 500, 100);
    using Absolute = HwDatablockPokMwIfExtLevCalDataAbsCorr;
    list<Absolute>("12042", &Absolute::setAbsCorrValue, &Absolute::getAbsCorrValue, 1500);
}

TEST(Modules, NarrowFieldsTakeTheLowByte) {
    HwDatablockIqOp6CalibData data;
    data.setLevAtt_20(300, 0);
    data.setLevAtt_40(0x1FF, 69);
    EXPECT_EQ(data.getLevAtt_20(0), 44);
    EXPECT_EQ(data.getLevAtt_40(69), 255);
    HwDatablockIqOp6PmaxBz levels;
    levels.setPmaxBz(-3, 0);
    levels.setPmaxBz(200, 1);
    EXPECT_EQ(levels.getPmaxBz(0), -3);
    EXPECT_EQ(levels.getPmaxBz(1), -56);
}

// The microwave tables

TEST(Microwave, ChecksumOnDemandOnly) {
    HwDatablockPokAttCalDat matrix;
    matrix.setCorLevelValue(-5, 19, 199, true);
    const unsigned short checksum = matrix.getChecksum();
    matrix.setCorLevelValue(-6, 19, 199, false);
    EXPECT_EQ(matrix.getChecksum(), checksum);
    EXPECT_FALSE(matrix.verifyChecksum());
    HwDatablockPokMwIfExtLevCalDataAbsCorr list;
    list.setAbsCorrValue(-5, 3, false);
    EXPECT_EQ(list.getChecksum(), 0);
    HwDatablockPokAttCalDatFreq frequencies;
    frequencies.setFrequencyValue(5, 3, false);
    EXPECT_EQ(frequencies.getChecksum(), 0);

    // Larger than a signed size word can say: any image passes, and its checksum is 0.
    HwDatablockPokMwIfExtLevCalData large;
    large.setCorLevelValue(7, 0, 0, true);
    EXPECT_EQ(large.getChecksum(), 0);
    EXPECT_TRUE(large.verifyChecksum());
}

TEST(Microwave, RepeatedPointsAscend) {
    HwDatablockPokMwIfExtLevCalDataFreq frequencies;
    for (const unsigned int point : {3U, 4U, 5U})
        frequencies.setFrequencyValue(100000, point, true);
    frequencies.setFrequencyValue(4294967295U, 6, true);
    EXPECT_EQ(frequencies.getFrequencyValue(0), 0.0) << "has none before it";
    EXPECT_EQ(frequencies.getFrequencyValue(1), 0.001);
    EXPECT_EQ(frequencies.getFrequencyValue(3), 10000000.0);
    EXPECT_EQ(frequencies.getFrequencyValue(4), 10000000.001);
    EXPECT_EQ(frequencies.getFrequencyValue(5), 10000000.001);
    EXPECT_EQ(frequencies.getFrequencyValue(6), 429496729500.0);
    frequencies.resizeData(20);
    EXPECT_EQ(frequencies.getFrequencyValue(3), 0.0) << "behind the end of the buffer";

    HwDatablockIqOp6CalibDataFreq board;
    board.setFrequencyValue(100, 0);
    board.setFrequencyValue(100, 1);
    EXPECT_EQ(board.getFrequencyValue(0), 100000000.0);
    EXPECT_EQ(board.getFrequencyValue(1), 100000000.01);
}

TEST(Microwave, Texts) {
    HwDatablockPokAttCalDat attenuator;
    attenuator.setNumberOfLevelSteps(2);
    attenuator.setNumberOfFreqs(3);
    attenuator.setCorLevelValue(-12, 1, 2, true);
    EXPECT_EQ(textOf(attenuator), "# Korrekturdaten [1/100dB] \nID:              ATT_CAL_DAT_CORR\n"
                                  "COUNT:           2*3\n0: \t\t 0\t\t 0\t\t 0\n10: \t\t 0\t\t 0\t\t -12\n\n");
    HwDatablockPokMwIfExtLevCalDataRelCorr external;
    external.setNumberOfLevelSteps(2);
    external.setNumberOfRelCorrValues(1);
    EXPECT_EQ(textOf(external), "# Externe Kalibrierdaten [1/100dBm] \nID:              LEV_CAL_DAT_REL_CORR\n"
                                "COUNT:           2 * 1\n1: \t\t 0\n2: \t\t 0\n\n");
    HwDatablockPokMwIfExtLevCalDataAbsCorr list;
    list.setNumberOfAbsCorr(3);
    list.setAbsCorrValue(-32768, 1, true);
    EXPECT_EQ(textOf(list), "# Externe Kalibrierdaten [1/100dBm]\nID:              LEV_CAL_DAT_ABS_CORR\n"
                            "COUNT:           3\n1:               0    -32768    0\n");
}

// Counts are the image's own and are believed up to what an image could hold.
TEST(Modules, HostileCountsEnd) {
    const auto lines = [](auto block, auto... members) {
        ((block.getBlock()->*members = 0xFFFFFFFFU), ...);
        const std::string text = textOf(block);
        return std::ranges::count(text, '\n');
    };
    EXPECT_EQ(lines(HwDatablockSAtt3CalibDataFreq(), &HwSDatablockSAtt3CalibDataFreq::numberOfFreqValues), 65535 + 4);
    EXPECT_EQ(lines(HwDatablockIqOp6PmaxBz(), &HwSDatablockIqOp6PmaxBz::count), 65535 + 3);
    EXPECT_EQ(lines(HwDatablockIqOp6CalibDataFreq(), &HwSDatablockIqOp6CalibDataFreq::count), 65535 + 3);
    EXPECT_EQ(lines(HwDatablockPokAttCalDatFreq(), &HwSDatablockPokAttCalDatFreq::count), 65535 + 4);
    EXPECT_EQ(lines(HwDatablockPokMwIfExtLevCalDataAbsCorr(), &HwSDatablockPokMwIfExtLevCalDataAbsCorr::count), 4);
    EXPECT_EQ(lines(HwDatablockSsynOpuLevel(), &HwSDatablockSsynOpuLevel::count), 65535 + 4);
    using Matrix = HwSDatablockPokAttCalDat;
    EXPECT_EQ(lines(HwDatablockPokAttCalDat(), &Matrix::numberOfLevelSteps, &Matrix::numberOfPoints), 1 + 4);
    EXPECT_EQ(lines(HwDatablockPokAttCalDat(), &Matrix::numberOfLevelSteps), 65535 + 4);
}

// Step attenuators

TEST(StepAttenuator, TheLastRowIsStoredButNotPrinted) {
    HwDatablockSAtt3CalibDataAtt corrections;
    const std::string before = textOf(corrections);
    corrections.setAttenuationValue(7, 26, 149);
    EXPECT_EQ(corrections.getAttenuationValue(26, 149), 7);
    EXPECT_EQ(textOf(corrections), before);
    corrections.setAttenuationValue(-32768, 25, 149);
    EXPECT_THAT(textOf(corrections), testing::EndsWith("\t\t0\t\t-32768\n\n"));
    EXPECT_THAT(before, testing::StartsWith("#Das sind die Userdaten \nID:              SATT3_CALIB_DATA_ATT\n"
                                            "COUNT:           26 * SATT3_CALIB_FREQ\n# f[10Hz]\n"
                                            "#  ATTENUATOR_CORRECTION [1/100dB]\n0:\t\t0\t\t0"));

    HwDatablockSAtt6CalibDataTemp gradients;
    gradients.setCalibTemp(-40);
    gradients.setTempGradient(255, 1, 0);
    EXPECT_EQ(gradients.getCalibTemp(), -40);
    EXPECT_THAT(textOf(gradients), testing::HasSubstr("VTemp:          -40\n"
                                                      "COUNT:           26 *COUNT_OF_SATT6_CALIB_FREQ\n"));
    EXPECT_THAT(textOf(gradients), testing::HasSubstr("\t\t0\n5:\t\t255\t\t0"));

    HwDatablockSAtt6CalibDataFreq frequencies;
    frequencies.setNumberOfFreqValues(1);
    frequencies.setFrequencyValue(-1, 0); // stored as it is
    EXPECT_EQ(frequencies.getNumberOfFreqValues(), 1U);
    EXPECT_THAT(textOf(frequencies), testing::EndsWith("COUNT:           1\n1:             4294967295\n\n"));
}

// Reference oscillators

TEST(ReferenceOscillator, TheSsynBoardToleratesAFreshHeader) {
    const struct {
        HwSDatablockHeader header;
        int result;
    } cases[] = {{{10000, 16, 0x1234, 0}, 0},
                 {{10000, 16, 0x1234, 1}, 1},
                 {{10000, 18, 0x1234, 0}, 1},
                 {{10001, 16, 0x1234, 0}, 1}};
    for (const auto& [header, result] : cases) {
        HwSDatablockSsynOcxoRefCalValue record{};
        static_cast<HwSDatablockHeader&>(record) = header;
        record.count = 0x101;
        record.refCalValue = -7;
        HwDatablockSsynOcxoRefCalValue block;
        const Signals signals;
        EXPECT_EQ(block.setBlock(&record), result);
        EXPECT_EQ(signals.count(), static_cast<std::size_t>(result));
        EXPECT_EQ(block.getChecksum(), result == 0 ? 0x1234 : 0);
        EXPECT_EQ(block.getCount(), result == 0 ? 1U : 0U);
        EXPECT_EQ(block.getOcxoRefCalValue(0), result == 0 ? -7 : 0);
    }
    HwSDatablockSynexOcxoRefCalValue record{};
    record.id = 15000;
    record.blockSize = 16;
    HwDatablockSynexOcxoRefCalValue block;
    const Signals signals;
    EXPECT_EQ(block.setBlock(&record), 1) << "the SSYN board only";
}

TEST(ReferenceOscillator, ReadsBackWhatItStored) {
    HwDatablockFsynTcxoRefCalValue block;
    EXPECT_EQ(block.setOcxoRefCalValue(-5, 0), 0);
    EXPECT_TRUE(block.verifyChecksum());
    block.resizeData(14);
    Signals signals;
    EXPECT_EQ(block.setOcxoRefCalValue(5, 1), 0);
    EXPECT_EQ(signals.count(), 0U);
    EXPECT_EQ(block.setOcxoRefCalValue(5, 0), -1);
    EXPECT_THAT(signals.all(), testing::ElementsAre(std::pair(1040002, std::string("store new ocxo- value failed"))));
    EXPECT_TRUE(block.verifyChecksum());
}

// Output unit

TEST(OutputUnit, Texts) {
    HwDatablockSsynOpuDblCoefficient coefficients;
    coefficients.setCount(255);
    coefficients.setOpuDblCoefficient(1e300, 0);
    coefficients.setOpuDblCoefficient(-0.0005, 1);
    coefficients.setOpuDblCoefficient(1.5e-6, 2);
    EXPECT_THAT(textOf(coefficients), testing::HasSubstr("COUNT:           255\n1:             100000"));
    EXPECT_THAT(textOf(coefficients), testing::EndsWith("2:             -0.001\n3:             0.000002\n"))
        << textOf(coefficients);
    HwDatablockSsynOpuLevelFreq frequencies;
    frequencies.setCount(2);
    frequencies.setOpuLevelFreq(1234567.0, 0);
    frequencies.setOpuLevelFreq(-0.1, 1);
    std::ostringstream dirty;
    dirty << std::scientific << std::showpos;
    dirty.precision(2);
    frequencies.printToStream(dirty);
    EXPECT_EQ(dirty.str(), textOf(frequencies)) << "the default format, whatever the stream was left with";
    EXPECT_THAT(dirty.str(),
                testing::EndsWith("COUNT:           2\n1:             1.23457e+06\n2:             -0.1\n"));
    HwDatablockSsynOpuLevel levels;
    levels.setCount(1);
    levels.setOpuLevel(4294967295U, 0);
    EXPECT_THAT(textOf(levels), testing::EndsWith("COUNT:           1\n1:             4294967295\n"));
}

} // namespace ModulesTest
