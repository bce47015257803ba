#include "Support.h"

#include <memory>

namespace RecordsTest {

using namespace Travik;
using namespace Support;

template <class Record>
Record* as(std::string& bytes) {
    return reinterpret_cast<Record*>(bytes.data());
}

void setWord(std::string& bytes, std::size_t offset, unsigned int value, unsigned int width = 2) {
    for (unsigned int i = 0; i < width; ++i, value >>= 8U)
        bytes.at(offset + i) = static_cast<char>(value & 0xFFU);
}

unsigned int word(HwDatablock& block, std::size_t offset, unsigned int width) {
    const std::string bytes = bytesOf(block);
    unsigned int value = 0;
    for (unsigned int i = width; i-- > 0;)
        value = value << 8U | static_cast<unsigned char>(bytes.at(offset + i));
    return value;
}

/// A record of random bytes, none of them NUL, with these header words.
std::string randomRecord(std::size_t size, unsigned int id, unsigned int sizeWord, unsigned int alignment) {
    static std::mt19937 random(6);
    std::string bytes = randomBytes(random, size);
    for (char& byte : bytes)
        byte = static_cast<char>(byte | 1);
    setWord(bytes, 0, id);
    setWord(bytes, 2, sizeWord);
    setWord(bytes, 6, alignment);
    return bytes;
}

// Numbers

struct Number {
    const char* name;
    int id;
    unsigned int offset;
    unsigned int width;
    unsigned int (*get)(HwDatablock&);
    void (*set)(HwDatablock&, unsigned int);
};

template <class Block, class Owner, class Value, class... Index>
void call(HwDatablock& block, void (Owner::*setter)(Value, Index...), unsigned int value, Index... index) {
    (static_cast<Block&>(block).*setter)(static_cast<Value>(value), index...);
}

#define NUMBER(id, Class, Name, offset, width, ...)                                                                    \
    {                                                                                                                  \
#Class "::" #Name, id, offset, width,                                                                           \
            [](HwDatablock& block) -> unsigned int { return static_cast<Class&>(block).get##Name(__VA_ARGS__); },     \
            [](HwDatablock& block, unsigned int value) {                                                               \
                call<Class>(block, &Class::set##Name, value __VA_OPT__(, ) __VA_ARGS__);                               \
            }      \
    }

constexpr auto index16 = [](int i) { return static_cast<unsigned short>(i); };
constexpr auto index8 = [](int i) { return static_cast<unsigned char>(i); };

const Number numbers[] = {
    NUMBER(10503, HwDatablockMiscIdent, EepromSize, 8, 4),
    NUMBER(10503, HwDatablockMiscIdent, PartNumber, 12, 4),
    NUMBER(10503, HwDatablockMiscIdent, Variant, 16, 1),
    NUMBER(10503, HwDatablockMiscIdent, HardwareCode, 17, 1),
    NUMBER(10504, HwDatablockMiscIdent, ProductIndex, 18, 2),
    NUMBER(10504, HwDatablockMiscIdent, SerialNumber, 20, 4),
    NUMBER(10504, HwDatablockMiscIdent, ProductDate, 24, 2),
    NUMBER(10504, HwDatablockMiscIdent, ReadCode, 26, 2),
    NUMBER(10504, HwDatablockMiscIdent, TestInstruction, 28, 2),
    NUMBER(200, HwDatablockServiceData, ServiceDate, 14, 2),
    NUMBER(209, HwDatablockServiceData, OpTime, 16, 4),
    NUMBER(299, HwDatablockServiceData, RepairNumber, 20, 2),
    NUMBER(299, HwDatablockServiceData, ServiceCode, 22, 2),
    NUMBER(100, HwDatablockModification, ServiceCode, 8, 2, index8(0)),
    NUMBER(100, HwDatablockModification, ServiceCode, 26, 2, index8(9)),
    NUMBER(300, HwDatablockStatistic, OpHours, 8, 4),
    NUMBER(10502, HwDatablockCwop6VcoIdent, JobNumber, 8, 4),
    NUMBER(10502, HwDatablockCwop6VcoIdent, SerialNumber, 12, 2),
    NUMBER(10502, HwDatablockCwop6VcoIdent, LotNumber, 14, 2),
    NUMBER(10502, HwDatablockCwop6VcoIdent, Taz, 16, 2),
    NUMBER(10502, HwDatablockCwop6VcoIdent, Osc3Subh, 18, 2),
    NUMBER(10502, HwDatablockCwop6VcoIdent, Osc3Subl, 20, 2),
    NUMBER(10502, HwDatablockCwop6VcoIdent, Osc2Subh, 22, 2),
    NUMBER(10502, HwDatablockCwop6VcoIdent, Osc2Subl, 24, 2),
    NUMBER(10502, HwDatablockCwop6VcoIdent, Osc1Subh, 26, 2),
    NUMBER(12000, HwDatablockMbrdSerialNumber, SerialNumber, 8, 4),
    NUMBER(10605, HwDatablockSAtt3OWLDCounter, CounterValue, 8, 4),
    NUMBER(11204, HwDatablockSAtt6OWLDCounter, CounterValue, 8, 4),
    NUMBER(11303, HwDatablockSAttCCounter, CounterValue, 8, 4, index16(0)),
    NUMBER(11303, HwDatablockSAttCCounter, CounterValue, 12, 4, index16(1)),
};

const Held heldNumbers(numbers, &Number::id);
const Held heldApart{11310, 12001, 12004, 12008};

TEST(Records, NumbersLieWhereTheRecordSays) {
    for (const Number& number : numbers) {
        const auto block = makeBlock(number.id);
        std::string before = bytesOf(*block);
        const unsigned int value = 0xFEDCBA98U >> (32 - 8 * number.width);
        number.set(*block, value);
        EXPECT_EQ(number.get(*block), value) << number.name;
        EXPECT_TRUE(block->verifyChecksum()) << number.name;
        setWord(before, number.offset, value, number.width);
        setWord(before, 4, block->getChecksum());
        EXPECT_EQ(bytesOf(*block), before) << number.name << " and nothing else";

        block->resizeData(number.offset + number.width - 1);
        const std::string cut = bytesOf(*block);
        number.set(*block, 1);
        EXPECT_EQ(bytesOf(*block), cut) << number.name << " beyond the buffer";
        EXPECT_EQ(number.get(*block), 0U) << number.name << " beyond the buffer";
    }
}

// Whole records

struct Whole {
    int id;
    const char* errorName;
    int (*setBlock)(HwDatablock&, std::string&);
    void (*swapBlock)(HwDatablock&, std::string&);
};

template <class Block>
constexpr Whole whole(int id, const char* errorName) {
    using Record = std::remove_pointer_t<decltype(std::declval<Block>().getBlock())>;
    Whole row{
        id, errorName,
        [](HwDatablock& block, std::string& bytes) { return static_cast<Block&>(block).setBlock(as<Record>(bytes)); },
        nullptr};
    if constexpr (requires(Block block, Record * record) { block.swapBlock(record); })
        row.swapBlock = [](HwDatablock& block, std::string& bytes) {
            static_cast<Block&>(block).swapBlock(as<Record>(bytes));
        };
    return row;
}

constexpr Whole wholeRecords[] = {
    whole<HwDatablockModification>(100, "   HwDatablockModification"),
    whole<HwDatablockServiceData>(203, "   HwDatablockServiceData"),
    whole<HwDatablockStatistic>(300, "   HwDatablockStatistic"),
    whole<HwDatablockCwop6VcoIdent>(10502, "   HwDatablockCwop6VcoIdent"),
    whole<HwDatablockMiscIdent>(10503, "   HwDatablockMiscIdent"),
    whole<HwDatablockMbrdSerialNumber>(12000, "   HwSDatablockMbrdSerialNumber"),
    whole<HwDatablockMbrdModel>(12001, "   HwDatablockMbrdModel"),
};

TEST(Records, TakeOverOfAWholeRecord) {
    for (const Whole& row : wholeRecords) {
        const auto block = makeBlock(row.id);
        const std::size_t size = bytesOf(*block).size();
        std::string record = randomRecord(size, 4321, 10, 7);
        if (row.id == 12001)
            record.back() = '\0'; // the model name's own rule is tested apart
        record = sealed(record);
        EXPECT_EQ(row.setBlock(*block, record), 0) << row.errorName;
        std::string expected = record;
        setWord(expected, 2, static_cast<unsigned int>(size));
        setWord(expected, 6, 0);
        EXPECT_EQ(bytesOf(*block), expected) << row.errorName << ": own size, alignment 0, the record's checksum";

        Signals errors;
        record[8] = static_cast<char>(record[8] ^ 2);
        EXPECT_EQ(row.setBlock(*block, record), 1) << row.errorName;
        EXPECT_EQ(bytesOf(*block), expected) << row.errorName;
        EXPECT_THAT(errors.all(), testing::ElementsAre(testing::Pair(1040001, row.errorName)));

        if (!row.swapBlock)
            continue;
        row.swapBlock(*block, record); // its checksum is still wrong
        setWord(record, 6, 0);
        EXPECT_EQ(bytesOf(*block), record) << row.errorName << ": the record's size and checksum, alignment 0";
    }
}

TEST(Records, ConversionToTheFirmwareOrder) {
    HwDatablockOldStyleInterpreter interpreter;
    for (const int id : {299, 10502, 10503, 12004, 12008})
        EXPECT_FALSE(interpreter.swapHwDatablock(HwDataFormatFirmware, id, makeBlock(id).get())) << id;
    for (const int id : {100, 200, 209, 300, 11310, 11313, 12000, 12001}) {
        const auto block = makeBlock(id);
        block->setBlockId(static_cast<unsigned short>(id)); // with it the checksum
        block->setDataFormatTyp(HwDataFormatForeign);
        EXPECT_TRUE(block->verifyChecksum()) << id << ": converted there and back";
        EXPECT_EQ(block->getDataFormatTyp(), HwDataFormatForeign);
        block->setAlignment(5); // its checksum asks for the conversion, which stores alignment 0
        std::string expected = bytesOf(*block);
        EXPECT_EQ(block->getAlignment(), 0) << id;
        // A buffer that ends within the record, or within the header, is not read beyond its end.
        for (unsigned int size = static_cast<unsigned int>(expected.size()); size-- > 0;) {
            setBytes(*block, expected.substr(0, size));
            block->setDataFormatTyp(HwDataFormatForeign);
            EXPECT_TRUE(interpreter.swapHwDatablock(HwDataFormatFirmware, id, block.get()));
            EXPECT_EQ(bytesOf(*block), expected.substr(0, size));
        }
    }
}

TEST(Records, WhetherAConversionWalkStops) {
    for (const auto& [id, stops] : {std::pair{2, true},
                                    {10502, true},
                                    {10503, true},
                                    {12000, true},
                                    {12001, false},
                                    {12004, true},
                                    {12008, true},
                                    {100, false},
                                    {200, false},
                                    {300, false}})
        EXPECT_EQ(makeBlock(id)->getStopConversionOnError(), stops) << id;
}

// Service

TEST(ServiceRecords, PartsOfADateShareAWord) {
    HwDatablockServiceData service(200);
    service.setOpTime(0x12345678);
    service.setServiceDateYear(2005);
    service.setServiceDateMonth(3);
    service.setServiceDateDay(7);
    EXPECT_EQ(service.getServiceDate(), 0x3267);
    EXPECT_EQ(unpackDate(service.getServiceDate()), std::chrono::year(2005) / 3 / 7);
    EXPECT_EQ(packDate(std::chrono::year(2005) / 3 / 7), 0x3267);
    EXPECT_EQ(service.getOpTime(), 0x12345678U);
    // Bits above a part's own are dropped, those of the others stay as they are.
    struct {
        void (HwDatablockServiceData::*set)(unsigned short);
        unsigned short value, intoZeros, intoOnes;
    } const rows[] = {
        {&HwDatablockServiceData::setServiceDateDay, 0xFFE3, 0x0003, 0xFFE3},
        {&HwDatablockServiceData::setServiceDateMonth, 0xFFF5, 0x00A0, 0xFEBF},
        {&HwDatablockServiceData::setServiceDateYear, 1981, 0x0200, 0x03FF},
        {&HwDatablockServiceData::setServiceDateYear, 2107, 0xFE00, 0xFFFF},
        {&HwDatablockServiceData::setServiceDateYear, 2108, 0x0000, 0x01FF},
        {&HwDatablockServiceData::setServiceDateYear, 1979, 0xFE00, 0xFFFF},
    };
    for (const auto& row : rows) {
        for (const bool ones : {false, true}) {
            service.setServiceDate(ones ? 0xFFFF : 0);
            (service.*row.set)(row.value);
            EXPECT_EQ(service.getServiceDate(), ones ? row.intoOnes : row.intoZeros) << row.value;
            EXPECT_TRUE(service.verifyChecksum());
        }
    }
    service.setServiceDate(0xFFFF);
    EXPECT_EQ(service.getServiceDateDay(), 31);
    EXPECT_EQ(service.getServiceDateMonth(), 15);
    EXPECT_EQ(service.getServiceDateYear(), 2107);
}

TEST(ServiceRecords, HoursAndTurnOnsShareAWord) {
    HwDatablockServiceData service(200);
    service.setOpTimeHours(0x40001);
    service.setOpTimeTurnOn(5);
    EXPECT_EQ(service.getOpTime(), 0x140001U);
    service.setOpTimeTurnOn(0x4002);
    EXPECT_EQ(service.getOpTimeTurnOn(), 2U) << "the old count is gone, a bit above the range too";
    EXPECT_EQ(service.getOpTimeHours(), 1U);
    service.setOpTimeHours(262143);
    EXPECT_EQ(service.getOpTime(), (2U << 18U) + 262143);
    EXPECT_TRUE(service.verifyChecksum());
}

TEST(ServiceRecords, DepartmentIsSixBytes) {
    HwDatablockServiceData service;
    EXPECT_EQ(service.getServiceDataId(), 0);
    EXPECT_EQ(std::string(service.getDepartment(), 6), "000000");
    service.setDepartment("AB\0DEFGH");
    EXPECT_EQ(std::string(service.getDepartment(), 6), std::string("AB\0DEF", 6));
    EXPECT_EQ(word(service, 14, 2), 0U);
    EXPECT_TRUE(service.verifyChecksum());
    EXPECT_THAT(textOf(service), testing::HasSubstr("ID:              \nDEPARTMENT:      AB\nSERVICEDATE:"));
    service.setDepartment(nullptr);
    service.resizeData(13);
    service.setDepartment("ZZZZZZ");
    EXPECT_EQ(std::string(service.getDepartment(), 6), std::string(6, '\0'))
        << "a field that is cut off reads as zeros";
    EXPECT_EQ(bytesOf(service).substr(8), std::string("AB\0DE", 5));
}

TEST(ServiceRecords, NamesByIdentifier) {
    HwDatablockServiceData service(static_cast<HwEVariantEepromDatablock>(209));
    service.setOpTimeHours(12345);
    EXPECT_EQ(textOf(service), "# Das sind die Servicedaten Service 200\nID:              SERVICE_209\n"
                               "DEPARTMENT:      000000\nSERVICEDATE:     1980-00-00\nOPHOURS:         00000/012345\n"
                               "REPAIRNUMBER:    0\nSERVICECODE:     0\n\n");
    for (const unsigned short id : std::initializer_list<unsigned short>{0, 199, 210, 299, 65534}) {
        service.setBlockId(id);
        EXPECT_THAT(textOf(service), testing::HasSubstr("\nID:              \n")) << id;
    }
}

TEST(ServiceRecords, CircularAndActionShareAWord) {
    HwDatablockModification modification;
    modification.setAction(1, 3);
    modification.setCircularNr(0x7FFF, 3);
    EXPECT_EQ(modification.getServiceCode(3), 0x7FFF) << "bits above the circular's are dropped, the action stays";
    modification.setAction(2, 3);
    EXPECT_EQ(modification.getServiceCode(3), 0xBFFF);
    modification.setAction(7, 3);
    EXPECT_EQ(modification.getAction(3), 3);
    EXPECT_EQ(modification.getCircularNr(3), 0x3FFF);
    EXPECT_TRUE(modification.verifyChecksum());
    modification.setChecksum(1); // shows a refresh
    const std::string before = bytesOf(modification);
    for (const int index : {10, 11, 255}) {
        const auto i = static_cast<unsigned char>(index);
        modification.setServiceCode(1, i);
        modification.setCircularNr(1, i);
        modification.setAction(1, i);
        EXPECT_EQ(modification.getServiceCode(i) + modification.getCircularNr(i) + modification.getAction(i), 0);
    }
    EXPECT_EQ(bytesOf(modification), before) << "no index above 9, and no new checksum";
}

// Statistics

TEST(StatisticsRecords, CommonDataIsCutAndNotSummed) {
    const std::string source(600, 'x');
    const auto* const bytes = reinterpret_cast<const unsigned char*>(source.data());
    HwDatablockCommonStatisticData block(11310);
    EXPECT_EQ(block.getInstance(), 11310);
    unsigned int length = 0;
    EXPECT_EQ(block.getCommonStatisticData(&length)[511], 0);
    EXPECT_EQ(length, 512U);
    block.setChecksum(0x1234);
    block.setCommonStatisticData(bytes, 600);
    EXPECT_EQ(bytesOf(block).substr(8), std::string("\0\2\0\0", 4) + source.substr(0, 512));
    const std::string few = "abc";
    block.setCommonStatisticData(reinterpret_cast<const unsigned char*>(few.data()), 3);
    EXPECT_EQ(bytesOf(block).substr(8, 8), std::string("\3\0\0\0abcx", 8)) << "those behind keep their values";
    EXPECT_EQ(block.getCommonStatisticDataLength(), 3U);
    EXPECT_THAT(textOf(block), testing::StartsWith("# Sonstige statistische Daten:\nID: \t POWERON COUNT\n1: \t97\n"));
    EXPECT_THAT(textOf(block),
                testing::EndsWith("\n4: \t120\n5: \t120\n" + textOf(block).substr(textOf(block).find("6: \t"))));
    block.setCommonStatisticData(nullptr, 7);
    EXPECT_EQ(block.getCommonStatisticData(nullptr)[0], 'a');
    EXPECT_EQ(block.getCommonStatisticDataLength(), 0U);
    EXPECT_EQ(block.getChecksum(), 0x1234);
    block.setBlockId(11314);
    EXPECT_THAT(textOf(block), testing::HasSubstr("\nID: \t \n1: \t97\n"));
    block.resizeData(523);
    EXPECT_EQ(block.getCommonStatisticData(nullptr)[0], 0) << "cut off";
    EXPECT_THAT(textOf(block), testing::EndsWith("\n511: \t120\n512: \t0\n\n"));
}

TEST(StatisticsRecords, CommonDataTakesAnyRecord) {
    HwDatablockCommonStatisticData block(11310);
    block.setBlockSize(400);
    const unsigned short checksum = block.getChecksum();
    std::string record = randomRecord(524, 11310, 10, 0);
    setWord(record, 8, 0xFFFFFFFFU, 4);
    Signals errors;
    EXPECT_EQ(block.setBlock(as<HwSDatablockCommonStatisticData>(record)), 0);
    EXPECT_EQ(block.getBlockSize(), 400);
    EXPECT_EQ(block.getChecksum(), checksum);
    EXPECT_EQ(block.getCommonStatisticDataLength(), 512U);
    EXPECT_EQ(bytesOf(block).substr(12), record.substr(12));
    EXPECT_EQ(errors.count(), 0U);

    // Identifier and alignment come with the checksum of the block as it is before its data.
    HwDatablockCommonStatisticData expected(11310);
    expected.setBlockId(11313);
    expected.setAlignment(9);
    setWord(record, 0, 11313);
    setWord(record, 6, 9);
    HwDatablockCommonStatisticData other(11310);
    other.setBlock(as<HwSDatablockCommonStatisticData>(record));
    EXPECT_EQ(bytesOf(other).substr(0, 8), bytesOf(expected).substr(0, 8));
}

TEST(StatisticsRecords, CommonDataSwapsTheHeaderOnly) {
    HwDatablockCommonStatisticData block(11310);
    const std::string data = bytesOf(block).substr(8);
    std::string record = randomRecord(524, 11312, 10, 7);
    const std::string given = record;
    block.swapBlock(as<HwSDatablockCommonStatisticData>(record));
    EXPECT_EQ(record, given) << "the length is converted in place, to itself on this host";
    std::string header = given.substr(0, 8);
    setWord(header, 6, 0);
    EXPECT_EQ(bytesOf(block), header + data);
}

// Identity

TEST(IdentityRecords, MiscIdentName) {
    HwDatablockMiscIdent ident(10504);
    EXPECT_EQ(ident.getMiscBlockId(), 10504);
    ident.setPartNumber(1140005);
    ident.setVariant(2);
    ident.setName(QString::fromUtf8("Größe 12345678901"));
    EXPECT_EQ(ident.getName(), QString::fromUtf8("Größe 12345678")) << "14 characters, no NUL";
    EXPECT_THAT(textOf(ident),
                testing::StartsWith("ID:              STREAM_AUX_IDENT\nPARTNUMBER:      114.0005.02\n"));
    EXPECT_THAT(textOf(ident), testing::EndsWith("\nNAME:            Gr\xF6\xDF"
                                                 "e 12345678\n"))
        << "no empty line";
    std::ostringstream os;
    os.fill('*');
    ident.printToStream(os);
    EXPECT_EQ(os.fill(), '0');
    ident.setBlockId(10505);
    EXPECT_THAT(textOf(ident), testing::StartsWith("ID:              \nPARTNUMBER:"));
    EXPECT_EQ(ident.getMiscBlockId(), 10504) << "as constructed";

    std::string record = randomRecord(44, 10503, 44, 3);
    record.replace(30, 14, std::string("AB\0CDEFGHIJKLM", 14));
    record = sealed(record);
    EXPECT_EQ(ident.setBlock(as<HwSDatablockMiscIdent>(record)), 0);
    EXPECT_EQ(bytesOf(ident).substr(30), "AB" + std::string(12, '\0')) << "what follows the NUL is dropped";
    EXPECT_EQ(ident.getAlignment(), 0);
    EXPECT_EQ(ident.getChecksum(), word(ident, 4, 2));
}

TEST(IdentityRecords, ModelKeepsItsNul) {
    const std::string filled(32, 'M');
    HwDatablockMbrdModel model;
    model.setModel(QString::fromStdString(filled));
    EXPECT_EQ(bytesOf(model).substr(8), filled.substr(1) + std::string(1, '\0'));
    EXPECT_TRUE(model.verifyChecksum());
    model.setModel(QStringLiteral("VQ"));
    EXPECT_EQ(bytesOf(model).substr(8), "VQ" + std::string(30, '\0'));

    std::string record = sealed(randomRecord(40, 12001, 40, 0).replace(8, 32, filled));
    setBytes(model, record);
    EXPECT_EQ(model.getModel().toStdString(), filled) << "an image may lack it";
    EXPECT_EQ(textOf(model), "# Das ist der Modellname des VQN`s\nID:              GENERATOR_MODEL\nMODEL:           " +
                                 filled + "\n\n");
    for (const bool swaps : {false, true}) {
        HwDatablockMbrdModel taker;
        if (swaps)
            taker.swapBlock(as<HwSDatablockMbrdModel>(record));
        else
            EXPECT_EQ(taker.setBlock(as<HwSDatablockMbrdModel>(record)), 0);
        EXPECT_EQ(taker.getModel().toStdString(), filled.substr(1));
        EXPECT_FALSE(taker.verifyChecksum()) << "the record's own checksum";
        EXPECT_EQ(taker.getChecksum(), word(model, 4, 2));
    }
}

/// What the MAC and time monitoring blocks refuse: error and result 1040000, nothing changed.
template <class Block, class Record>
void refuses(const char* errorName, const std::string& good) {
    for (const auto& [offset, change] : {std::pair<std::size_t, int>{0, 1}, {2, 1}, {12, 0}}) {
        std::string record = good;
        record[offset] = static_cast<char>(record[offset] + 1);
        if (change != 0)
            record = sealed(record); // only the identifier or the size is wrong
        Block block;
        const std::string before = bytesOf(block);
        Signals errors;
        EXPECT_EQ(block.setBlock(as<Record>(record)), 1040000) << offset;
        EXPECT_EQ(bytesOf(block), before) << offset;
        EXPECT_THAT(errors.all(), testing::ElementsAre(testing::Pair(1040000, errorName))) << offset;
    }
}

TEST(IdentityRecords, Mac) {
    HwDatablockMbrdMac block;
    EXPECT_EQ(bytesOf(block), image({12004, 256, 0, 0, 0, 0}) + std::string(244, '\xFF'));
    const std::string address = "\1\2\3\4\5\6";
    const auto* const bytes = reinterpret_cast<const unsigned char*>(address.data());
    block.setMac(bytes, 6);
    block.setMac(bytes, 2);
    EXPECT_EQ(bytesOf(block), image({12004, 256, 0, 0, 2, 0, 0x0201}) + std::string(242, '\xFF'));
    const std::string longer(40, 'L');
    block.setMac(reinterpret_cast<const unsigned char*>(longer.data()), 40);
    EXPECT_EQ(bytesOf(block).substr(8), image({16, 0}) + std::string(16, 'L') + std::string(228, '\xFF'));
    unsigned int length = 0;
    EXPECT_EQ(block.getMac(&length)[15], 'L');
    EXPECT_EQ(length, 16U);
    HwDatablockMbrdMac shortened;
    shortened.resizeData(20);
    const std::string cut = bytesOf(shortened);
    shortened.setMac(bytes, 6);
    EXPECT_EQ(bytesOf(shortened), cut) << "not a part of an address, nor its length";

    std::string record = randomRecord(256, 12004, 256, 3);
    setWord(record, 8, 2, 4);
    record = sealed(record);
    EXPECT_EQ(block.setBlock(as<HwSDatablockMbrdMac>(record)), 0);
    EXPECT_EQ(bytesOf(block), record.substr(0, 8) + image({16, 0}) + record.substr(12, 16) + std::string(228, '\xFF'))
        << "all 16 bytes, whatever length the record states; nothing behind them";
    setBytes(block, record); // a block may be its own record
    EXPECT_EQ(block.setBlock(block.getBlock()), 0);
    EXPECT_EQ(bytesOf(block).substr(12), record.substr(12));
    EXPECT_EQ(textOf(block), "");
    refuses<HwDatablockMbrdMac, HwSDatablockMbrdMac>("   HwSDatablockMbrdMac", record);
}

TEST(IdentityRecords, TimeMonitoring) {
    HwDatablockMbrdTimeMonitoringData block;
    EXPECT_EQ(bytesOf(block), image({12008, 172, 0, 0}) + std::string(36, '\0') + std::string(128, '\xFF'));
    const std::string longest(31, 'D');
    block.setDate(longest.c_str());
    block.setDate((longest + "E").c_str());
    block.setDate(nullptr);
    EXPECT_EQ(block.getDate(), longest);
    block.setDate("2005-03-07");
    EXPECT_EQ(std::string(block.getDate(), 32), "2005-03-07" + std::string(22, '\0'));
    const std::string data(200, 'T');
    block.setTimeMonitoringData(reinterpret_cast<const unsigned char*>(data.data()), 200);
    EXPECT_EQ(block.getTimeMonitoringDataLength(), 128U);
    EXPECT_EQ(bytesOf(block).substr(44), data.substr(0, 128));
    block.setTimeMonitoringData(reinterpret_cast<const unsigned char*>(data.data()), 1);
    EXPECT_EQ(bytesOf(block).substr(44), "T" + std::string(127, '\xFF'));
    EXPECT_EQ(block.getChecksum(), 0);
    unsigned int length = 0;
    EXPECT_EQ(block.getTimeMonitoringData(&length), reinterpret_cast<const unsigned char*>(block.getData()) + 44);
    EXPECT_EQ(block.getTimeMonitoringData(nullptr)[0], 'T');
    EXPECT_EQ(length, 1U);
    HwDatablockMbrdTimeMonitoringData shortened;
    shortened.resizeData(100);
    const std::string cut = bytesOf(shortened);
    shortened.setTimeMonitoringData(reinterpret_cast<const unsigned char*>(data.data()), 200);
    EXPECT_EQ(bytesOf(shortened), cut) << "not a part of the data, nor their length";

    std::string record = randomRecord(172, 12008, 172, 3);
    record[39] = '\0';
    setWord(record, 40, 5, 4);
    record = sealed(record);
    EXPECT_EQ(block.setBlock(as<HwSDatablockMbrdTimeMonitoringDataEx>(record)), 0);
    EXPECT_EQ(bytesOf(block), record.substr(0, 49) + std::string(123, '\xFF'));
    const Signals errors;
    EXPECT_EQ(block.setBlock(block.getBlock()), 1040000) << "bytes behind the length are gone, the checksum is not";

    std::string filled = record; // a date without a NUL is ignored as setDate ignores it
    filled[39] = '9';
    setWord(filled, 40, 0x80000000U, 4);
    filled = sealed(filled);
    const std::string date(block.getDate());
    EXPECT_EQ(block.setBlock(as<HwSDatablockMbrdTimeMonitoringDataEx>(filled)), 0);
    EXPECT_EQ(block.getDate(), date);
    EXPECT_EQ(block.getTimeMonitoringDataLength(), 128U);
    EXPECT_EQ(bytesOf(block).substr(44), filled.substr(44));
    refuses<HwDatablockMbrdTimeMonitoringData, HwSDatablockMbrdTimeMonitoringDataEx>(
        "   HwSDatablockMbrdTimeMonitoringData", record);
}

// Wear

template <class Block, class Record>
void checkOverload(unsigned int firstId, const char* errorName) {
    Block block(1);
    block.setAlignment(4);
    std::string record = sealed(randomRecord(12, 4321, 10, 7));
    EXPECT_EQ(block.setBlock(as<Record>(record)), 0);
    std::string expected = image({firstId + 1, 12, 0, 4}) + record.substr(8);
    expected.replace(4, 2, record, 4, 2);
    EXPECT_EQ(bytesOf(block), expected) << "own identifier, size and alignment; the record's checksum";
    record[8] = static_cast<char>(record[8] ^ 2);
    Signals errors;
    EXPECT_EQ(block.setBlock(as<Record>(record)), 1);
    EXPECT_EQ(bytesOf(block), expected);
    EXPECT_THAT(errors.all(), testing::ElementsAre(testing::Pair(1040001, errorName)));
    EXPECT_EQ(block.getBlock()->counter, block.getCounterValue());
}

TEST(WearCounters, OverloadKeepsItsHeader) {
    checkOverload<HwDatablockSAtt3OWLDCounter, HwSDatablockSAtt3OWLDCounter>(10604, "   HwDatablockSAtt3OWLDCounter");
    checkOverload<HwDatablockSAtt6OWLDCounter, HwSDatablockSAtt6OWLDCounter>(11203, "   HwDatablockSAtt6OWLDCounter");
}

TEST(WearCounters, AttenuatorCRefusesNothing) {
    HwDatablockSAttCCounter block(11302);
    EXPECT_EQ(block.getInstance(), 11302);
    EXPECT_TRUE(block.verifyChecksum()) << "fresh";
    const std::string record = randomRecord(16, 4321, 10, 7);
    EXPECT_EQ(block.setBlock(reinterpret_cast<const HwSDatablockSAttCCounter*>(record.data())), 0);
    EXPECT_EQ(bytesOf(block), sealed(image({11302, 16, 0, 0}) + record.substr(8)));
    const std::string before = bytesOf(block);
    for (const unsigned short index : std::initializer_list<unsigned short>{2, 256, 65535}) {
        block.setCounterValue(1, index);
        EXPECT_EQ(block.getCounterValue(index), 0U);
    }
    EXPECT_EQ(bytesOf(block), before);
}

TEST(WearCounters, TextsByIdentifier) {
    const auto text = [](HwDatablock&& block, unsigned short id) {
        block.setBlockId(id);
        return textOf(block);
    };
    const std::string second = "#Das ist der zweite OWLD-Z\xE4hler\nID:              SATT3_OWLD_COUNTER_2\n"
                               "COUNT_VALUE:     0\n";
    EXPECT_EQ(text(HwDatablockSAtt3OWLDCounter(0), 7), second) << "whatever is not the first";
    EXPECT_EQ(text(HwDatablockSAtt6OWLDCounter(0), 7),
              "# Das ist der OWLD-Z\xE4hler_2\nID:              SATT6_OWLD_COUNTER_2\nCOUNT_VALUE:     0\n");
    for (const unsigned short id : std::initializer_list<unsigned short>{7, 11299, 11304})
        EXPECT_EQ(text(HwDatablockSAttCCounter(11300), id), "\nID:               \nCOUNT_VALUE:    0\t\t0\n");
}

} // namespace RecordsTest
