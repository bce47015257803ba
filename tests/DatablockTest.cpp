#include "Support.h"

#include <QFile>

namespace DatablockTest {

using namespace Travik;
using namespace Support;

constexpr auto foreign = HwDataFormatForeign;

const Held held{2, 10, 15500, 65535};

TEST(Datablock, FreshBlock) {
    HwDatablock block(true);
    EXPECT_EQ(bytesOf(block), image({0, 8, 0, 0}));
    EXPECT_TRUE(block.getStopConversionOnError());
    EXPECT_EQ(block.getEepromAddress(), 0U);
    EXPECT_EQ(block.getEepromSector(), 0U);
    EXPECT_EQ(block.getDataFormatTyp(), HwDataFormatFirmware);
    EXPECT_EQ(textOf(block), "");
}

TEST(Datablock, WhereItLiesAndItsOrderAreOnlyKept) {
    HwDatablock block(false);
    EXPECT_TRUE(block.setEepromAddress(0xFFFFFFFF));
    EXPECT_TRUE(block.setEepromSector(17));
    EXPECT_TRUE(block.setDataFormatTyp(foreign));
    EXPECT_EQ(block.getEepromAddress(), 0xFFFFFFFF);
    EXPECT_EQ(block.getEepromSector(), 17U);
    EXPECT_EQ(block.getDataFormatTyp(), foreign);
    EXPECT_EQ(bytesOf(block), image({0, 8, 0, 0}));
}

TEST(Datablock, HeaderSettersRefreshTheChecksum) {
    HwDatablock block(false);
    block.setBlockId(0x1234);
    EXPECT_EQ(bytesOf(block), image({0x1234, 8, 0xEDC4, 0}));
    block.setAlignment(1);
    EXPECT_EQ(bytesOf(block), image({0x1234, 8, 0xEDC3, 1}));
    EXPECT_TRUE(block.verifyChecksum());
    EXPECT_EQ(block.computeChecksum(), 0xEDC3);
    EXPECT_EQ(block.getChecksum(), 0) << "computing leaves the stored word 0";
    block.setBlockSize(0xFFFF);
    EXPECT_EQ(block.getBlockSize(), 0xFFFF);
    block.setBlockId(0xFFFF);
    EXPECT_EQ(block.getBlockSize(), 4) << "an end block's size, whatever the word says";
}

// A getter reads only what lies wholly inside the buffer, a setter writes nothing elsewhere.
TEST(Datablock, ShortBuffers) {
    const std::string full = image({0x1111, 0x2222, 0x3333, 0x4444, 0x5555, 0x6666});
    for (unsigned int size = 0; size <= full.size(); ++size) {
        HwDatablock block(false);
        setBytes(block, full.substr(0, size));
        EXPECT_EQ(block.getId(), size >= 2 ? 0x1111 : 0) << size;
        EXPECT_EQ(block.getBlockSize(), size >= 4 ? 0x2222 : 0) << size;
        EXPECT_EQ(block.getChecksum(), size >= 6 ? 0x3333 : 0) << size;
        EXPECT_EQ(block.getAlignment(), size >= 8 ? 0x4444 : 0) << size;
        EXPECT_EQ(block.getChecksum32(), size >= 12 ? 0x66665555U : 0U) << size;
        if (size < 6) {
            block.setChecksum(0xABCD);
            EXPECT_EQ(bytesOf(block), full.substr(0, size)) << size;
        }
        block.setBlockId(7);
        block.setBlockSize(8);
        block.setAlignment(0);
        EXPECT_EQ(bytesOf(block).size(), size);
    }
}

TEST(Datablock, BuffersAreShared) {
    HwDatablock first(false);
    HwDatablock second(false);
    first.setDataFormatTyp(foreign);
    EXPECT_TRUE(second.setDataWithoutChecksumCheck(&first));
    EXPECT_EQ(second.getDataFormatTyp(), foreign);
    second.setDataFormatTyp(HwDataFormatFirmware);
    first.setChecksum(0x55AA);
    EXPECT_EQ(second.getChecksum(), 0x55AA);
    EXPECT_FALSE(second.setData(first.getByteArrayData())) << "the sum does not hold";
    EXPECT_EQ(second.getData(), first.getData());
    second.resizeData(3);
    EXPECT_EQ(first.getByteArrayData().size(), 3U);
    first.resizeData(10);
    EXPECT_EQ(bytesOf(second), std::string("\0\0\x08\0\0\0\0\0\0\0", 10)) << "the grown tail is zero, not old memory";

    HwDatablock third(false);
    third.setEepromSector(5);
    third.replaceDataInList(&first);
    EXPECT_EQ(third.getData(), first.getData());
    EXPECT_EQ(third.getDataFormatTyp(), HwDataFormatFirmware) << "the format stays";

    const std::string bytes = bytesOf(first);
    setBytes(third, bytes);
    third.setBlockId(9);
    EXPECT_EQ(bytesOf(first), bytes) << "bytes are copied";

    HwDatablock untouched(false);
    EXPECT_FALSE(untouched.setData(static_cast<const unsigned char*>(nullptr), 10));
    EXPECT_FALSE(untouched.setData(static_cast<HwDatablock*>(nullptr)));
    EXPECT_FALSE(untouched.setDataWithoutChecksumCheck(nullptr));
    EXPECT_FALSE(untouched.setHwDatablockFirmwareConform(nullptr));
    untouched.replaceDataInList(nullptr);
    EXPECT_EQ(bytesOf(untouched), image({0, 8, 0, 0}));
}

// The size word is a signed number on a block, an unsigned one on a record; both bound by what there is.
TEST(Datablock, ChecksumsBySizeWord) {
    struct Case {
        unsigned int sizeWord;
        bool verifies;
        unsigned short checksum;
        const char* why;
    };
    const Case cases[] = {
        {0, false, 0, "size 0 fails"},
        {1, true, 0, "no whole word"},
        {2, false, 0xFFFF - 0x1234 + 1, "the first word"},
        {8, false, 0xEDC4, "the header"},
        {9, false, 0xEDC3, "odd, over whole words"},
        {0x7FFF, false, 0x10000 - 0x1234 - 0x7FFF - 0x4321, "bounded by the buffer"},
        {0x8000, true, 0, "negative as a signed number"},
        {0xEA70, true, 0, "60016 bytes"},
    };
    for (const Case& test : cases) {
        DebugOutput debug;
        HwDatablock block(false);
        setBytes(block, image({0x1234, test.sizeWord, 0, 0, test.sizeWord == 0x7FFF ? 0x4321U : 0U}));
        debug.boxes.clear();
        EXPECT_EQ(block.verifyChecksum(), test.verifies) << test.why;
        EXPECT_TRUE(debug.boxes.empty()) << test.why;
        EXPECT_EQ(block.computeChecksum(), test.checksum) << test.why;
        EXPECT_EQ(debug.boxes.size(), test.sizeWord % 2) << test.why;
    }
    HwDatablock block(false);
    std::string record = image({0x1234, 8, 0xBEEF, 0});
    auto* const words = reinterpret_cast<unsigned short*>(record.data());
    EXPECT_EQ(block.computeChecksum(words, 8), 0xEDC4) << "the record's checksum word counts as 0";
    EXPECT_EQ(record, image({0x1234, 8, 0xBEEF, 0}));
    EXPECT_TRUE(block.verifyChecksum(words, 1, true));
    EXPECT_FALSE(block.verifyChecksum(words, 8, false));
    std::string large(60016, '\1');
    large = sealed(large);
    EXPECT_TRUE(block.verifyChecksum(reinterpret_cast<unsigned short*>(large.data()), 60016, true));
    large[60015] = 2;
    EXPECT_FALSE(block.verifyChecksum(reinterpret_cast<unsigned short*>(large.data()), 60016, true));
}

TEST(Datablock, OddSizeAsksForAMessageBox) {
    DebugOutput debug;
    HwDatablock block(false);
    block.setBlockSize(9);
    EXPECT_THAT(debug.boxes, testing::ElementsAre("Compute datablock checksum|Block size not an even number !"));
    std::string record(9, '\0');
    block.computeChecksum(reinterpret_cast<unsigned short*>(record.data()), 9);
    EXPECT_EQ(debug.boxes.size(), 2U);
}

TEST(Datablock, Crc32) {
    HwDatablock block(false);
    std::string bytes = image({7, 16, 0, 0, 0, 0, 0x1122, 0x3344});
    setBytes(block, bytes);
    const unsigned int crc = block.computeChecksum32();
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        std::string changed = bytes;
        changed[i] = static_cast<char>(changed[i] ^ 0x40);
        auto* const data = reinterpret_cast<unsigned char*>(changed.data());
        EXPECT_EQ(block.computeChecksum32(data, 16) == crc, i >= 4 && i < 12) << i;
    }
    EXPECT_FALSE(block.verifyChecksum32());
    std::memcpy(bytes.data() + 8, &crc, sizeof crc);
    setBytes(block, bytes);
    EXPECT_TRUE(block.verifyChecksum32());
    std::string other = bytes;
    other[15] = 0;
    EXPECT_FALSE(block.verifyChecksum32(reinterpret_cast<unsigned char*>(other.data()), 16));
    setBytes(block, bytes.substr(0, 14));
    EXPECT_FALSE(block.verifyChecksum32()) << "bounded by the buffer";
}

TEST(Datablock, WrongChecksumIsADebugLine) {
    static_assert(std::is_same_v<decltype(HwObject::HwProtocolLevelError), const int>);
    EXPECT_EQ(std::max(0, HwObject::HwProtocolTypeAllTypes), 0);
    DebugOutput debug;
    HwDatablock block(false);
    setBytes(block, image({4711, 8, 1, 0}));
    EXPECT_TRUE(debug.lines.empty());
    EXPECT_EQ(HwDebug::getLastClass(), HwObject::HwProtocolTypeEeprom) << "recorded although the check did not pass";
    EXPECT_EQ(HwDebug::getLastLevel(), HwObject::HwProtocolLevelWarning);
    HwDebug::setDebugMask(1 << HwObject::HwProtocolTypeEeprom);
    HwDebug::setDebugLevel(HwObject::HwProtocolLevelWarning);
    EXPECT_FALSE(block.verifyChecksum());
    EXPECT_FALSE(block.verifyChecksum32());
    const std::string line = "8/2 verifyChecksum(): Wrong checksum! at EepromBlockId 4711";
    EXPECT_THAT(debug.lines, testing::ElementsAre(line, line));
    HwDebug::setDebugLevel(HwObject::HwProtocolLevelError);
    EXPECT_FALSE(block.verifyChecksum());
    EXPECT_EQ(debug.lines.size(), 2U) << "above the clipping level";
    EXPECT_EQ(block.getClassName(QStringLiteral("class ")), QStringLiteral("class <no QObject class>"));
}

TEST(Datablock, DebugLinesGoByTheObjectsLevelAndByWhatWasRecorded) {
    struct Chatty : HwObject {
        int getDebugLevel() override { return HwProtocolLevelInfo; }
    } chatty;
    HwObject plain;
    DebugOutput debug;
    HwDebug::setDebugMask(-1);
    for (const int clip : {HwObject::HwProtocolLevelDebug, HwObject::HwProtocolLevelTrace,
                           HwObject::HwProtocolLevelInfo, HwObject::HwProtocolLevelWarning}) {
        HwDebug::setDebugLevel(clip);
        EXPECT_EQ(plain.chkdbg(HwObject::HwProtocolTypeSpi), clip >= HwObject::HwProtocolLevelDebug);
        plain.dbgout(QStringLiteral("debug"));
        EXPECT_EQ(chatty.chkdbg(HwObject::HwProtocolTypeJtag), clip >= HwObject::HwProtocolLevelInfo);
        chatty.dbgout(QStringLiteral("info"));
        chatty.dbgout(HwObject::HwProtocolLevelWarning, QStringLiteral("warning \u00B5 \u2126"));
    }
    const std::string warning = "2/2 warning \u00B5 ?";
    EXPECT_THAT(debug.lines, testing::ElementsAre("4/5 debug", "2/3 info", warning, "2/3 info", warning, "2/3 info",
                                                  warning, warning));
}

TEST(Datablock, DebugServiceIsGivenTheTexts) {
    const auto handler = Debug::setLineHandler(nullptr); // lines go to standard error, with their texts ahead
    HwDebug::init();
    HwDebug::setDebugMask(-1);
    HwDebug::setDebugLevel(HwObject::HwProtocolLevelDebug);
    testing::internal::CaptureStderr();
    HwDebug::println(HwObject::HwProtocolTypeEeprom, HwObject::HwProtocolLevelWarning, QStringLiteral("line"));
    HwDebug::exit();
    HwDebug::println(HwObject::HwProtocolTypeEeprom, HwObject::HwProtocolLevelWarning, QStringLiteral("none"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "          Eeprom,        Warning:     line\n");
    Debug::setLineHandler(handler);
}

TEST(Datablock, ServiceLogAppends) {
    QFile log(QStringLiteral("/tmp/SrvExt.log"));
    const qint64 before = log.exists() ? log.size() : 0;
    HwDebug::srvExtFileOutput("f\xFCr den Test");
    HwDebug::srvExtFileOutput("zweite");
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    log.seek(before);
    const std::string added = log.readAll().toStdString();
    EXPECT_THAT(added,
                testing::MatchesRegex("[0-9]+-[0-9][0-9]-[0-9][0-9]; [0-9][0-9]:[0-9][0-9] -- f\xFCr den Test\r\n"
                                      "[0-9]+-[0-9][0-9]-[0-9][0-9]; [0-9][0-9]:[0-9][0-9] -- zweite\r\n"));
}

TEST(Datablock, ErrorsAreRegisteredOnce) {
    std::vector<std::vector<int>> registered;
    const auto before =
        CErrorManager::setRegisterHandler([&](const CErrorManager::SErrorDefinition* table, int number) {
            std::vector<int> codes{number};
            for (; table->errorCode != -1; ++table)
                codes.push_back(table->errorCode);
            registered.push_back(codes);
        });
    HwDatablock::registerErrors();
    HwDatablock::registerErrors();
    CErrorManager::setRegisterHandler(before);
    EXPECT_THAT(registered, testing::ElementsAre(testing::ElementsAre(16, 1040000, 1040001, 1040002)));
}

// Conversion ends, and a caller sees which order the buffer is in.
TEST(Datablock, FirmwareConform) {
    HwDatablockIdent source;
    source.setSerialNumber(77);
    const std::string bytes = bytesOf(source);
    source.setDataFormatTyp(foreign);
    HwDatablockIdent target;
    EXPECT_TRUE(target.setHwDatablockFirmwareConform(&source));
    EXPECT_EQ(source.getDataFormatTyp(), HwDataFormatFirmware);
    EXPECT_EQ(target.getDataFormatTyp(), HwDataFormatFirmware);
    EXPECT_EQ(target.getData(), source.getData());
    EXPECT_EQ(bytesOf(target), bytes);
}

TEST(Datablock, NotConverted) {
    HwDatablock unknown(false);
    unknown.setBlockId(11);
    unknown.setDataFormatTyp(foreign);
    unknown.swapDataTo(HwDataFormatFirmware, 11, &unknown);
    EXPECT_EQ(unknown.getDataFormatTyp(), foreign) << "an identifier without a class";

    HwDatablockIdent ident;
    const unsigned int crc = ident.computeChecksum32();
    ident.setEepromSize(crc); // which lies where a CRC-32 does
    ident.setDataFormatTyp(foreign);
    ident.swapDataTo(HwDataFormatFirmware, 2, &ident);
    EXPECT_EQ(ident.getDataFormatTyp(), foreign) << "a CRC-32 that matches";
}

TEST(AnalogOutput, TakeOver) {
    Signals signals;
    HwWenDatablockAnalogOutputCalibration block(0);
    EXPECT_EQ(bytesOf(block), image({15500, 8, 0, 0}));
    HwWenDatablockAnalogOutputCalibration other(7, true);
    EXPECT_EQ(other.getId(), 15501);
    EXPECT_TRUE(other.getStopConversionOnError());

    HwSDatablockAnalogOutputCalibration record{{15501, 8, 0, 0}};
    EXPECT_EQ(block.setBlock(&record), 1);
    EXPECT_THAT(signals.all(),
                testing::ElementsAre(std::pair<int, std::string>(1040001, "   HwSDatablockAnalogOutputCalibration")));
    EXPECT_EQ(bytesOf(block), image({15500, 8, 0, 0}));
    record.checksum = 0xC36B;
    EXPECT_EQ(block.setBlock(&record), 0);
    EXPECT_EQ(bytesOf(block), image({15501, 8, 0xC36B, 0}));
    record = {{15501, 12, 0xC367, 0}};
    EXPECT_EQ(block.setBlock(&record), 0);
    EXPECT_EQ(bytesOf(block), image({15501, 8, 0xC367, 0}));
    EXPECT_FALSE(block.verifyChecksum()) << "the class's size with the record's checksum";
    EXPECT_EQ(textOf(block), "");
}

TEST(EndBlock, HasNoChecksum) {
    HwDatablockEnd end;
    EXPECT_EQ(bytesOf(end), "\xFF\xFF" + std::string(2, '\0'));
    end.setChecksum(0x1234);
    end.setEndBlockData(0x0201);
    EXPECT_EQ(bytesOf(end), "\xFF\xFF\x01\x02");
    EXPECT_EQ(end.computeChecksum(), 0);
    EXPECT_EQ(end.getChecksum(), 0);
    unsigned short words[] = {1, 2, 3, 4};
    EXPECT_EQ(end.computeChecksum(words, 8), 0);
    EXPECT_EQ(end.computeChecksum(words, sizeof words), 0);
    EXPECT_TRUE(end.verifyChecksum(words, 8));
    HwDatablock& base = end;
    EXPECT_EQ(base.computeChecksum(words, 8), HwDatablock(false).computeChecksum(words, 8)) << "the base's stays";
    EXPECT_FALSE(base.verifyChecksum(words, 8, true));
    EXPECT_TRUE(end.verifyChecksum());
    EXPECT_EQ(end.getBlockSize(), 4);
    HwSDatablockEnd record{0x1234, 5};
    EXPECT_EQ(end.setBlock(&record), 0);
    EXPECT_EQ(bytesOf(end), image({0x1234, 5}));
    EXPECT_EQ(textOf(end), "# Das ist der END Block\nID:              END\n\n");
    end.resizeData(2);
    EXPECT_EQ(end.getBlockSize(), 0);
    HwDatablock cut(false);
    cut.setBlockId(0xFFFF);
    EXPECT_EQ(cut.getBlockSize(), 4);
    cut.resizeData(3);
    EXPECT_EQ(cut.getBlockSize(), 0) << "without a whole size word it is no end block";
}

TEST(Ident, TextAndNames) {
    HwDatablockIdent ident;
    ident.setPartNumber(11413000);
    ident.setVariant(2);
    ident.setProductIndex(305);
    ident.setProductDate(0x4D6F);
    ident.setTestInstruction(12345);
    ident.setName(QStringLiteral("ABCDEFGHIJKLMNOPQRST"));
    EXPECT_TRUE(ident.verifyChecksum());
    EXPECT_EQ(ident.getName(), QStringLiteral("ABCDEFGHIJKLMN")) << "14 long, without a terminator";
    std::ostringstream os;
    os << std::hex << std::showpos << std::scientific;
    os.fill('*');
    os.width(40);
    ident.setBlockId(10);
    ident.printToStream(os);
    EXPECT_EQ(os.str(),
              "# Das sind die Kopfdaten\nID:              IDENT_2\nALIGNMENT:       0\nEEPROMSIZE:      0\n"
              "PARTNUMBER:      1141.3000.02\nHWCODE:          0\nPRODUCTINDEX:    03.05\nSN:              0\n"
              "PRODUCTDATE:     2018-11-15\nREADCODE:        0\nTESTINSTRUCTION: 123.45\nNAME:            "
              "ABCDEFGHIJKLMN  \n\n");
    EXPECT_EQ(os.fill(), '0');
    EXPECT_EQ(os.flags() & std::ios_base::adjustfield, std::ios_base::right);
    ident.setName(QStringLiteral("AB"));
    EXPECT_EQ(bytesOf(ident).substr(30), "AB" + std::string(12, '\0'));
}

TEST(Ident, TakeOver) {
    Signals signals;
    HwDatablockIdent source;
    source.setSerialNumber(4711);
    source.setAlignment(3);
    HwSDatablockIdent record = *source.getBlock();
    HwDatablockIdent block;
    EXPECT_EQ(block.setBlock(&record), 0);
    EXPECT_EQ(bytesOf(block), bytesOf(source)) << "the alignment word included";
    record.readCode = 9;
    EXPECT_EQ(block.setBlock(&record), 1);
    EXPECT_THAT(signals.all(), testing::ElementsAre(std::pair<int, std::string>(1040001, "   HwDatablockIdent")));
    EXPECT_EQ(bytesOf(block), bytesOf(source));
    block.swapBlock(&record);
    EXPECT_EQ(block.getReadCode(), 9) << "a conversion asks for no checksum";
    EXPECT_EQ(block.getChecksum(), record.checksum);
    // A record that is the block's own buffer keeps the checksum word it had on entry.
    block.setReadCode(1);
    const std::string before = bytesOf(block);
    EXPECT_EQ(block.setBlock(block.getBlock()), 0);
    EXPECT_EQ(bytesOf(block), before);
    // Behind a name's first NUL nothing is taken over.
    std::string bytes = before;
    bytes.replace(30, 14, std::string("AB\0garbagegarb", 14));
    bytes = sealed(bytes);
    EXPECT_EQ(block.setBlock(reinterpret_cast<HwSDatablockIdent*>(bytes.data())), 0);
    EXPECT_EQ(bytesOf(block).substr(30), "AB" + std::string(12, '\0'));
}

TEST(ModuleTypes, KnownNames) {
    ASSERT_EQ(moduleTypes().size(), 107U);
    for (int i = 0; const SModuleType& type : moduleTypes()) {
        EXPECT_EQ(type.index, i > 81 && i < 85 ? 81 : i) << type.name;
        ++i;
        EXPECT_EQ(std::strlen(type.boardName), 13U) << type.name;
        EXPECT_EQ(isKnownModuleName(QString::fromLatin1(type.boardName)), &type != &moduleTypes().back()) << type.name;
    }
    EXPECT_FALSE(isKnownModuleName(QStringLiteral("SSYN")));
    EXPECT_FALSE(isKnownModuleName(QStringLiteral("FMR6         ")));
    EXPECT_TRUE(isKnownModuleName(QStringLiteral("FRONTMODUL   ")));
    EXPECT_TRUE(isKnownModuleName(QStringLiteral("SSYN         and more")));
    EXPECT_STREQ(moduleTypes()[60].lowerName, "sudaconverter");
}

} // namespace DatablockTest
