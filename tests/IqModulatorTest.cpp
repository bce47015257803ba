#include "Support.h"

#include <cmath>
#include <limits>

namespace IqModulatorTest {

using namespace Travik;
using namespace Support;

TEST(IqModulator, PackedRowFieldsLieInTheirBits) {
    using Row = HwSIqOp3RfmCalibDataBlock;
    const struct {
        const char* name;
        void (Row::*set)(int);
        int (Row::*get)() const;
        unsigned int Row::*word;
        unsigned int mask;
        int lowest;
        int highest;
    } fields[] = {
        {"LEVPRE", &Row::setLevPre, &Row::getLevPre, &Row::word0, 0x0000000F, 0, 15},
        {"DETATT", &Row::setDetAtt, &Row::getDetAtt, &Row::word0, 0x000001F0, 0, 31},
        {"DETCONV_DEFLECTION", &Row::setDetConvDeflection, &Row::getDetConvDeflection, &Row::word0, 0x01FFFE00, 0,
         65535},
        {"reserve", &Row::setReserve, &Row::getReserve, &Row::word0, 0xFE000000, 0, 127},
        {"LEVATT15", &Row::setLevAtt15, &Row::getLevAtt15, &Row::word1, 0x000003FF, -512, 511},
        {"LEVATT30", &Row::setLevAtt30, &Row::getLevAtt30, &Row::word1, 0x001FFC00, -1024, 1023},
        {"LEVATT45", &Row::setLevAtt45, &Row::getLevAtt45, &Row::word1, 0xFFE00000, -1024, 1023},
    };
    for (const auto& field : fields) {
        SCOPED_TRACE(field.name);
        Row row{};
        (row.*field.set)(-1);
        EXPECT_EQ(row.*field.word, field.mask);
        EXPECT_FALSE(row == Row{});
        row = {0xFFFFFFFF, 0xFFFFFFFF};
        (row.*field.set)(0);
        EXPECT_EQ(row.*field.word, ~field.mask);
        EXPECT_EQ((row.*field.get)(), 0);
        for (const int value : {field.lowest, field.highest}) {
            (row.*field.set)(value);
            EXPECT_EQ((row.*field.get)(), value);
        }
    }
}

TEST(IqModulator, PrintsRows) {
    HwDatablockIqOp3RfmCalibData block;
    HwSIqOp3RfmCalibDataBlock row{};
    row.setLevAtt15(0x3FF);
    row.setLevAtt45(0x400);
    block.setCalibDatablock(row, 299);
    for (const int outside : {-1, 300})
        block.setCalibDatablock({1, 1}, outside);
    EXPECT_TRUE(block.getCalibDataBlock(299) == row);
    EXPECT_TRUE(block.getCalibDataBlock(-1) == HwSIqOp3RfmCalibDataBlock{});
    EXPECT_TRUE(block.getCalibDataBlock(300) == HwSIqOp3RfmCalibDataBlock{});
    EXPECT_TRUE(block.verifyChecksum());
    const std::string text = textOf(block);
    EXPECT_EQ(std::ranges::count(text, '\n'), 304);
    EXPECT_THAT(text, testing::HasSubstr("\nZeile0: \t\t[0\t15.000\t30.000\t45.000\t0\t\t0\t]\nZeile1: "));
    EXPECT_THAT(text, testing::EndsWith("\nZeile299: \t\t[0\t14.992\t30.000\t37.000\t0\t\t0\t]\n\n"));
}

TEST(IqModulator, CountsEveryConstruction) {
    const HwDatablockIqOp3RfmCalibData first;
    const unsigned int before = first.getInstanceCounter();
    HwDatablockIqOp3RfmCalibData second(first);
    second = first;
    { const HwDatablockOldStyleInterpreter interpreter; }
    EXPECT_EQ(first.getInstanceCounter(), before + 1 + 12);
    EXPECT_EQ(HwDatablockIqOp3RfmCalibData::instanceCounter, before + 13);
    EXPECT_THAT(textOf(second), testing::HasSubstr("\n#\t BZ " + std::to_string(before + 13) + "\t        dB"));
}

template <class Block>
void toleratesOnlyTheReference(unsigned short id) {
    using Record = typename Block::Record;
    Record reference{};
    reference.id = id;
    const Signals signals;
    Block block;
    typename Block::Row row{};
    reinterpret_cast<char&>(row) = 1;
    block.setCalibDatablock(row, 7);
    EXPECT_EQ(block.setBlock(&reference), 0);
    EXPECT_EQ(block.getChecksum(), 0);
    EXPECT_EQ(bytesOf(block).substr(0, 4), image({id, sizeof(Record)}));
    EXPECT_EQ(bytesOf(block).find_first_not_of('\0', 4), std::string::npos);
    EXPECT_EQ(block.setBlock(block.getBlock()), 1) << "a fresh block's own image has a size";
    EXPECT_EQ(signals.count(), 1U);
    for (std::size_t offset = 0; offset < sizeof(Record); offset += 2) {
        Record other = reference;
        reinterpret_cast<char*>(&other)[offset] ^= 0x10;
        EXPECT_FALSE(other == reference);
        ASSERT_EQ(block.setBlock(&other), 1) << offset;
    }
}

TEST(IqModulator, TakesTheReferenceRecordWithAWrongSum) {
    toleratesOnlyTheReference<HwDatablockIqOp3RfmCalibData>(10303);
    toleratesOnlyTheReference<HwDatablockIqOp3RfmCalibDataV20>(10316);
    // By bytes, not by value.
    HwSIqOp3RfmCalibDataBlockV20 zero{};
    HwSIqOp3RfmCalibDataBlockV20 negative{};
    negative.levAtt45Ovr = -0.0F;
    EXPECT_FALSE(zero == negative);
    zero.sensLow = negative.sensLow = std::numeric_limits<float>::quiet_NaN();
    negative.levAtt45Ovr = 0;
    EXPECT_TRUE(zero == negative);
}

TEST(IqModulator, PmaxIsACode) {
    const float largest = std::numeric_limits<float>::max();
    const std::pair<float, unsigned short> stored[] = {
        {1281, 1281},    {1281.97F, 1281}, {0.99F, 0},   {-1, 65535},   {-0.5F, 0},         {65536 + 7, 7},
        {-65537, 65535}, {1.0e9F, 51712},  {largest, 0}, {-largest, 0}, {std::nanf(""), 0}, {-INFINITY, 0}};
    HwDatablockIqOp3RfmCalibDataMisc block;
    HwSDatablockIqOp3RfmCalibDataMisc record{};
    for (std::size_t i = 0; i < std::size(stored); ++i)
        block.getBlock()->pmaxBz[i] = record.pmaxBz[i] = stored[i].first;
    record.checksum = block.computeChecksum(reinterpret_cast<unsigned short*>(&record), sizeof record);
    HwDatablockIqOp3RfmCalibDataMisc taken;
    EXPECT_EQ(taken.setBlock(&record), 0);
    EXPECT_EQ(taken.getChecksum(), record.checksum) << "the record's, though the codes are others now";
    for (std::size_t i = 0; i < std::size(stored); ++i) {
        const auto bz = static_cast<unsigned char>(i);
        EXPECT_EQ(block.getPmaxBz(bz), stored[i].second) << stored[i].first;
        EXPECT_EQ(taken.getBlock()->pmaxBz[i], static_cast<float>(stored[i].second));
    }
}

TEST(IqModulator, PrintsOperatingStates) {
    HwDatablockIqOp3RfmCalibDataMisc block;
    block.setToleranceLevPre(255);
    block.setToleranceLevAtt_15(192);
    block.setToleranceLevAtt_30_45(65535);
    block.setToleranceDetAtt(128);
    block.setDetFullScale(65535);
    block.setNumberOfOperatingStates(2);
    block.setUiqBz(0.1234567F, 0);
    block.setPmaxBz(1281, 0);
    block.setLconReserveBz(511, 1);
    block.setDetReserveBz(65535, 1);
    EXPECT_EQ(block.getToleranceLevPre(), 255);
    EXPECT_EQ(block.getToleranceLevAtt_15(), 192);
    EXPECT_EQ(block.getToleranceLevAtt_30_45(), 65535);
    EXPECT_EQ(block.getToleranceDetAtt(), 128);
    const std::string text = textOf(block);
    const char* const parts[] = {
        "\nCOUNT_BZ:        2\n",
        "Leerlaufspannung)\n\nUIQ_BZ1:             0.123457\t V\nUIQ_BZ2:             0\t V\n\n#",
        "\nPMAX_BZ1:             10.0\t dBm\nPMAX_BZ2:             -0.0\t dBm\n\n#",
        "\nLCON_RESERVE_BZ1:             0\t dB\nLCON_RESERVE_BZ2:             3\t dB\n\n#",
        "\nDET_FULL_SCALE:             65535\t V\n\n#",
        "\nDET_RESERVE_BZ1:             0\t dB\nDET_RESERVE_BZ2:             65535\t dB\n\n#",
        "\nTOLERANZ_LEVPRE:             1\t dB\n\n#",
        "\nTOLERANZ_LEVATT_15:             1.5\t dB\nTOLERANZ_LEVATT_30_45:          512.0\t dB\n\n#",
        "\nTOLERANZ_DETATT:             1\t dB\n\n#",
    };
    for (const char* const part : parts)
        EXPECT_THAT(text, testing::HasSubstr(part));

    block.setNumberOfOperatingStates(13); // one more than there are
    EXPECT_THAT(textOf(block), testing::HasSubstr("\nUIQ_BZ13:             0\t V\n\n"));
    EXPECT_THAT(textOf(block), testing::HasSubstr("\nPMAX_BZ13:             -0.0\t dBm\n\n"));
    block.setNumberOfOperatingStates(0xFFFFFFFF);
    const std::string endless = textOf(block);
    EXPECT_EQ(std::ranges::count(endless, '\n'), std::ranges::count(text, '\n') + 4L * (65535 - 2));
}

TEST(IqModulator, PrintsFrequencies) {
    HwDatablockIqOp3RfmCalibDataFreq block;
    block.setCount(301);
    block.setFrequencyValue(4294967295U, 299);
    const std::string before = bytesOf(block);
    block.setFrequencyValue(5, 300);
    EXPECT_EQ(bytesOf(block), before);
    EXPECT_THAT(textOf(block), testing::StartsWith("LEV_PRE_TAB:\n# Kalibrierfrequenzen"));
    EXPECT_THAT(textOf(block), testing::EndsWith("\nZeile300:             4294967295\nZeile301:             0\n\n"));

    HwDatablockIqOp3RfmHarmonic filters;
    filters.setCutOffFrequency(-1, 5);
    EXPECT_EQ(filters.getCutOffFrequency(5), -1);
    EXPECT_THAT(textOf(filters), testing::EndsWith("\nHARM_FILT6:             4294967295\n\n"));
    EXPECT_THAT(textOf(filters), testing::HasSubstr("\n# \\t      als Trennzeichen"));
}

// Every key of the second generation's named values, with its own accessors.
TEST(IqModulator, NamedValues) {
    using Block = HwDatablockIqOp3RfmCalibDataMiscV20;
    const struct {
        const char* key;
        void (Block::*set)(float);
        float (Block::*get)() const;
    } floats[] = {
#define NAMED(key, name) {key, &Block::set##name, &Block::get##name}
        NAMED("LMAX_LOW:              ", LmaxLow),
        NAMED("LMAX_MED:              ", LmaxMed),
        NAMED("LMAX_HIGH:             ", LmaxHigh),
        NAMED("LMAX_OVR:              ", LmaxOvr),
        NAMED("LCAL_SENS_LOW:         ", LcalSensLow),
        NAMED("LCAL_SENS_MED:         ", LcalSensMed),
        NAMED("LCAL_SENS_HIGH:        ", LcalSensHigh),
        NAMED("LCAL_SENS_OVR:         ", LcalSensOvr),
        NAMED("VCAL_SENS_LOW:         ", VcalSensLow),
        NAMED("VCAL_SENS_MED:         ", VcalSensMed),
        NAMED("VCAL_SENS_HIGH:        ", VcalSensHigh),
        NAMED("VCAL_SENS_OVR:         ", VcalSensOvr),
        NAMED("LRANGE_CW_NORM:        ", LrangeCwNorm),
        NAMED("LRANGE_CW_OVR:         ", LrangeCwOvr),
        NAMED("LRANGE_IQ_NORM:        ", LrangeIqNorm),
        NAMED("LRANGE_IQ_OVR:         ", LrangeIqOvr),
        NAMED("UIQ:                   ", Uiq),
        NAMED("LCON_RESERVE_CW_NORM:  ", LconReserveCwNorm),
        NAMED("LCON_RESERVE_CW_OVR:   ", LconReserveCwOvr),
        NAMED("LCON_RESERVE_IQ_NORM:  ", LconReserveIqNorm),
        NAMED("LCON_RESERVE_IQ_OVR:   ", LconReserveIqOvr),
        NAMED("LPRE_CAL_LEV_CW_NORM:  ", LpreCalLevCwNorm),
        NAMED("LPRE_CAL_LEV_CW_OVR:   ", LpreCalLevCwOvr),
        NAMED("LPRE_CAL_LEV_IQ_NORM:  ", LpreCalLevIqNorm),
        NAMED("LPRE_CAL_LEV_IQ_OVR:   ", LpreCalLevIqOvr),
    };
    const struct {
        const char* key;
        void (Block::*set)(short);
        short (Block::*get)() const;
    } shorts[] = {
        NAMED("DETATT_LOW:            ", DetattLow),
        NAMED("DETATT_MED:            ", DetattMed),
        NAMED("DETATT_HIGH:           ", DetattHigh),
        NAMED("DETATT_OVR:            ", DetattOvr),
#undef NAMED
    };
    Block block;
    std::string expected = "# Das sind die Kalibrierdaten IQOP3 RFM MISC Version 2.0\n"
                           "ID:              IQOP3_RFM_CALIB_DATA_MISC_V20\n";
    int value = 0;
    const auto check = [&](const auto& named, auto sample, const std::string& printed) {
        (block.*named.set)(sample);
        EXPECT_EQ((block.*named.get)(), sample) << named.key;
        EXPECT_TRUE(block.verifyChecksum());
        expected += named.key + printed + '\n';
    };
    for (const auto& named : floats) {
        ++value;
        check(named, static_cast<float>(value) + 0.25F, std::to_string(value) + ".25");
    }
    for (const auto& named : shorts) {
        --value;
        check(named, static_cast<short>(-value), std::to_string(-value));
    }
    EXPECT_EQ(textOf(block), expected + '\n');
}

TEST(IqModulator, PrintsTheSecondGenerationsRows) {
    HwDatablockIqOp3RfmCalibDataV20 block;
    block.setCalibDatablock({1.5F, 2e6F, 3e-7F, 4, 5, 6, 7, -8, 9.25F, 10, 11, 12, 13, -14.125F}, 299);
    const std::string last = "\nZeile299: \t\t1.5\t2e+06\t3e-07\t4\t5\t6\t7\t9.25\t10\t11\t-8\t12\t13\t-14.125\t\n\n";
    EXPECT_THAT(textOf(block), testing::EndsWith(last));
    EXPECT_EQ(block.getCalibDataBlock(299).lpreIqOvr, -8);
    EXPECT_EQ(block.getCalibDataBlock(300).lpreIqOvr, 0);

    // No notation that an earlier block left behind, but its precision; all is left as it was.
    for (const auto notation : {std::ios_base::fixed, std::ios_base::scientific, std::ios_base::floatfield}) {
        std::ostringstream os;
        os.setf(notation, std::ios_base::floatfield);
        os.precision(3);
        block.printToStream(os);
        EXPECT_THAT(os.str(), testing::EndsWith("\t12\t13\t-14.1\t\n\n"));
        EXPECT_EQ(os.flags() & std::ios_base::floatfield, notation);
        EXPECT_EQ(os.precision(), 3);
    }
}

TEST(IqModulator, FieldsOfPackedRows) {
    HwDatablockIqOp3RfmCalibData block;
    HwSIqOp3RfmCalibDataBlock row{};
    row.setDetConvDeflection(65535);
    row.setLevAtt15(-64);
    row.setLevAtt45(-1024);
    block.setCalibDatablock(row, 2);
    const CatalogueEntry& entry = *findEntry(10305);
    std::vector<std::string> seen;
    visitFields(bytesOf(block), entry.fields(entry, 10305), Extent::Used, [&](const FieldValue& value) {
        if (value.index.empty() || value.index[0] != 2)
            return;
        std::ostringstream os;
        os << value.field.name << '=' << value.value << value.field.unit << ' ' << value.field.dimensions[0].axisBlock;
        seen.push_back(os.str());
    });
    EXPECT_THAT(seen, testing::ElementsAre("lev_pre=0 10302", "det_att=0 10302", "det_conv_deflection=65535 10302",
                                           "reserve=0 10302", "lev_att_15=14.5dB 10302", "lev_att_30=30dB 10302",
                                           "lev_att_45=37dB 10302"));
}

} // namespace IqModulatorTest
