#include "../tools/datablock/InfoJson.h"
#include "JsonText.h"
#include "Support.h"

namespace ModuleInfoTest {

using namespace Travik;
using namespace Support;
using nlohmann::json;

/// An image of blocks, as they are.
class Module {
public:
    Module& add(HwDatablock& block) {
        bytes_ += bytesOf(block);
        return *this;
    }
    Module& add(HwDatablock&& block) { return add(block); }
    Module& addSealed(HwDatablock&& block) {
        block.setChecksum(block.computeChecksum());
        return add(block);
    }

    const std::string& bytes() const { return bytes_; }

private:
    std::string bytes_;
};

json jsonOf(const std::string& bytes) {
    return Support::parsed(Tool::toText(Tool::toJson("image", moduleInfo(ModuleImage({bytes.data(), bytes.size()})))));
}

std::string screenOf(const std::string& bytes) {
    std::ostringstream os;
    printModuleInfo(moduleInfo(ModuleImage({bytes.data(), bytes.size()})), os);
    return os.str();
}

HwDatablockServiceData service(int id, unsigned short date, const char* department, unsigned int hours) {
    HwDatablockServiceData block(id);
    block.setServiceDate(date);
    block.setDepartment(department);
    block.setOpTimeHours(hours);
    return block;
}

HwDatablockSAttCCounter counter(int id, unsigned int first, unsigned int second) {
    HwDatablockSAttCCounter block(id);
    block.setCounterValue(first, 0);
    block.setCounterValue(second, 1);
    return block;
}

HwDatablockCommonStatisticData statistic(int id, const std::string& data) {
    HwDatablockCommonStatisticData block(id);
    block.setCommonStatisticData(reinterpret_cast<const unsigned char*>(data.data()),
                                 static_cast<unsigned int>(data.size()));
    return block;
}

HwDatablockIdent ident() {
    HwDatablockIdent block;
    block.setPartNumber(11413000);
    block.setVariant(2);
    block.setSerialNumber(100234);
    block.setProductDate(0x4D6F);
    block.setHardwareCode(3);
    block.setProductIndex(305);
    block.setName(QString::fromUtf8("Dämpfer"));
    return block;
}

Module attenuator() {
    HwDatablockModification modification;
    modification.setServiceCode(0x8000 | 1203, 1);
    HwDatablockStatistic statistics;
    statistics.setOpHours(10456);
    Module module;
    module.add(ident()).add(modification);
    module.add(service(200, 0x3267, "OLD   ", 5)).add(service(201, 0x4D6F, "1ES3  ", 8123));
    module.add(service(202, 0x3268, "MID   ", 6)).addSealed(HwDatablockServiceData(203)).add(statistics);
    module.add(counter(11300, 412, 17)).add(counter(11301, 412, 17));
    module.add(counter(11302, 91, 6)).add(counter(11303, 91, 5));
    module.addSealed(statistic(11310, "same")).addSealed(statistic(11311, "same"));
    module.addSealed(statistic(11312, "this")).addSealed(statistic(11313, "that"));
    return module;
}

TEST(ModuleInfo, Json) {
    const json info = jsonOf(attenuator().bytes());
    EXPECT_EQ(info["identity"], Support::parsed(R"({"name": "Dämpfer", "part_number": "1141.3000.02", "variant": 2,
        "serial_number": 100234, "production_date": "2018-11-15", "hardware_code": 3, "product_index": "03.05",
        "checksum_ok": true})"));
    EXPECT_EQ(info["instrument"], json());
    EXPECT_EQ(info["last_service"], Support::parsed(R"({"block": 201, "date": "2018-11-15", "department": "1ES3",
        "operating_hours": 8123, "turn_on_count": 0, "repair_number": null, "service_code": null,
        "checksum_ok": true})"));
    EXPECT_EQ(info["services_recorded"], 3);
    EXPECT_EQ(info["modifications"], Support::parsed(R"([{"position": 2, "circular_number": 1203, "action": 2}])"));
    EXPECT_EQ(info["operating_hours"], 10456);
    EXPECT_EQ(info["wear_counters"], Support::parsed(R"([
        {"name": "sattc_overload", "block": 11300, "values": [412, 17],
         "backup_block": 11301, "backup_values": [412, 17], "differs": false, "checksums_ok": true},
        {"name": "sattc_high_power", "block": 11302, "values": [91, 6],
         "backup_block": 11303, "backup_values": [91, 5], "differs": true, "checksums_ok": true}])"));
    EXPECT_EQ(info["statistics"], Support::parsed(R"([
        {"name": "power_on_count", "block": 11310, "length": 4,
         "backup_block": 11311, "backup_length": 4, "differs": false, "checksums_ok": true},
        {"name": "operating_time_count", "block": 11312, "length": 4,
         "backup_block": 11313, "backup_length": 4, "differs": true, "checksums_ok": true}])"));
    EXPECT_EQ(info["blocks"], 15);
    EXPECT_EQ(info["checksums_ok"], true);
    EXPECT_EQ(info["problems"], json::array());
}

TEST(ModuleInfo, ScreenForAPerson) {
    EXPECT_EQ(screenOf(attenuator().bytes()), R"(Module                Dämpfer
  Part number         1141.3000.02 (variant 2)
  Serial number       100234
  Production date     2018-11-15
  Hardware code       3
  Product index       03.05

Last service          2018-11-15   (3 services recorded)
  Department          1ES3
  Operating hours     8123 h
  Turned on           0 times

Modifications         circular 1203, action 2

Operating hours       10456 h

Counters                        Value         Backup
  Overload counter, value 1     412           412
  Overload counter, value 2     17            17
  High-power counter, value 1   91            91
  High-power counter, value 2   6             5             <-- DIFFERENT
Statistics                      Length        Backup
  Power-on count                4 bytes       4 bytes
  Operating time count          4 bytes       4 bytes       <-- DIFFERENT

Checksums             all right (15 blocks)
)");
}

TEST(ModuleInfo, UnsetIsMissing) {
    Module fresh;
    for (const int id : {2, 100, 200, 300, 11300, 11310, 11313, 12000, 12001, 12004})
        fresh.addSealed(std::move(*makeBlock(id)));
    for (const auto& [bytes, modifications, hours, values] :
         {std::tuple(std::string(), json(), json(), json()),
          std::tuple(std::string(400, '\xFF'), json(), json(), json()),
          std::tuple(fresh.bytes(), json::array(), json(0), Support::parsed("[0, 0]"))}) {
        const json info = jsonOf(bytes);
        for (const json& group : {info["identity"], info["instrument"]}) {
            for (const auto& [key, value] : group.items()) {
                EXPECT_TRUE(value.is_null() || value == true) << key << ' ' << value;
            }
        }
        EXPECT_EQ(info["last_service"], json());
        EXPECT_EQ(info["modifications"], modifications);
        EXPECT_EQ(info["operating_hours"], hours);
        if (!values.is_null()) {
            EXPECT_EQ(info["wear_counters"][0]["values"], values) << "a count may be 0";
            EXPECT_EQ(info["wear_counters"][0]["differs"], json()) << "there is no backup";
            EXPECT_EQ(info["statistics"][0]["length"], json());
            EXPECT_EQ(info["statistics"][1]["backup_length"], json());
        }
        EXPECT_THAT(screenOf(bytes), testing::Not(testing::HasSubstr("1980"))) << screenOf(bytes);
    }
    EXPECT_THAT(screenOf(fresh.bytes()), testing::HasSubstr("  Overload counter, value 1     0             missing\n"));
    EXPECT_THAT(screenOf(fresh.bytes()), testing::HasSubstr("\nModifications         none\n"));
    EXPECT_THAT(screenOf(Module().addSealed(std::move(*makeBlock(2))).bytes()),
                testing::HasSubstr("\nModifications         not recorded\n"));
}

TEST(ModuleInfo, MainBoardAndSingleCounters) {
    HwDatablockMbrdSerialNumber number;
    number.setSerialNumber(77);
    HwDatablockMbrdModel model;
    model.setModel(QStringLiteral("\x1B[2JVQ"));
    HwDatablockMbrdMac mac;
    const unsigned char address[] = {0, 0x90, 0xB8, 0x12, 0x34, 0xFF};
    mac.setMac(address, sizeof address);
    HwDatablockSAtt3OWLDCounter overload(1);
    overload.setCounterValue(9);
    Module board;
    board.add(number).add(model).addSealed(std::move(mac)).add(overload);
    const json info = jsonOf(board.bytes());
    EXPECT_EQ(info["instrument"], json({{"model", "\x1B[2JVQ"},
                                        {"serial_number", 77},
                                        {"mac_address", "00:90:b8:12:34:ff"},
                                        {"checksums_ok", true}}));
    EXPECT_EQ(info["wear_counters"][0]["values"], json({9}));
    EXPECT_EQ(info["wear_counters"][0]["backup_block"], json());
    EXPECT_THAT(screenOf(board.bytes()), testing::HasSubstr("Instrument            ?[2JVQ\n"));
    EXPECT_THAT(screenOf(board.bytes()),
                testing::HasSubstr("  Overload counter 2            9             none kept\n"));

    Module damaged;
    model.setChecksum(0);
    damaged.add(number).add(model);
    EXPECT_EQ(jsonOf(damaged.bytes())["instrument"]["checksums_ok"], false);
}

TEST(ModuleInfo, Options) {
    HwDatablockMiscIdent option(10503);
    option.setName("STREAM");
    option.setSerialNumber(5);
    HwDatablockCwop6VcoIdent vco;
    vco.setSerialNumber(7);
    vco.setLotNumber(9);
    HwDatablockMbrdTimeMonitoringData monitoring;
    monitoring.setDate("2019-03-07");
    std::unique_ptr<HwDatablock> counter = makeBlock(11304);
    std::string counted = bytesOf(*counter);
    counted.replace(8, 12, image({1, 0, 3, 0, 0x0201, 3}));
    Module module;
    module.add(option).add(vco).addSealed(std::move(monitoring)).addSealed(HwDatablockMiscIdent(10504));
    const std::string bytes = module.bytes() + sealed(counted);
    const json info = jsonOf(bytes);
    EXPECT_EQ(info["further_idents"][0]["identity"]["serial_number"], 5);
    EXPECT_EQ(info["further_idents"][1]["name"], "stream_auxiliary");
    EXPECT_EQ(info["vco"], Support::parsed(R"({"serial_number": 7, "job_number": null, "lot_number": 9,
        "checksum_ok": true})"));
    EXPECT_EQ(info["time_monitoring"], json({{"date", "2019-03-07"}, {"checksum_ok", true}}));
    EXPECT_EQ(info["statistics"], Support::parsed(R"([{"name": "attenuator_counter", "block": 11304, "length": 3,
        "backup_block": null, "backup_length": null, "differs": null, "checksums_ok": true}])"));
    EXPECT_THAT(screenOf(bytes), testing::HasSubstr(R"(
Stream option         STREAM, serial number 5
Stream auxiliary      not recorded
VCO                   serial number 7, lot number 9
Time monitoring       2019-03-07
)"));
    EXPECT_THAT(screenOf(bytes), testing::HasSubstr(R"(
Statistics                      Length        Backup
  Attenuator counter            3 bytes       none kept
)"));
}

TEST(ModuleInfo, ServicesAndAddresses) {
    const HwDatablockServiceData atOnce = service(200, 0x4D6F, "1ES3  ", 0);
    Module module;
    module.add(HwDatablockServiceData(atOnce)).add(HwDatablockServiceData(atOnce)).add(HwDatablockServiceData(atOnce));
    const json info = jsonOf(module.bytes());
    EXPECT_EQ(info["services_recorded"], 1) << "one an identifier";
    EXPECT_EQ(info["last_service"]["operating_hours"], 0) << "recorded, since the date is";
    EXPECT_EQ(info["last_service"]["turn_on_count"], 0);

    const std::string six("\x00\x90\xB8\x12\x34\x56", 6);
    const std::pair<std::string, json> addresses[] = {
        {six + std::string(10, '\xFF'), "00:90:b8:12:34:56"}, // as a record that was taken over has it
        {six.substr(0, 5) + std::string(11, '\xFF'), "00:90:b8:12:34:ff"},
        {six + "ab", "00:90:b8:12:34:56:61:62"},
        {std::string(16, '\xFF'), json()},
        {std::string(6, '\0'), json()},
        {"", json()},
    };
    for (const auto& [stored, shown] : addresses) {
        HwDatablockMbrdMac mac;
        mac.setMac(reinterpret_cast<const unsigned char*>(stored.data()), static_cast<unsigned int>(stored.size()));
        Module board;
        board.addSealed(std::move(mac));
        EXPECT_EQ(jsonOf(board.bytes())["instrument"]["mac_address"], shown);
    }
}

// What `dump` can print of a block that is shorter than its record by its own size word, `info` can say.
TEST(ModuleInfo, ShorterBlocks) {
    const auto shortened = [](HwDatablock&& block, std::size_t size) {
        const std::string bytes =
            bytesOf(block).substr(0, size).replace(2, 2, image({static_cast<unsigned int>(size)}));
        return sealed(bytes);
    };
    const std::string bytes = shortened(ident(), 32) + shortened(service(200, 0x4D6F, "1ES3  ", 7), 16) +
                              shortened(HwDatablockStatistic(), 8) + shortened(counter(11300, 3, 4), 12);
    const json info = jsonOf(bytes);
    EXPECT_EQ(info["identity"]["serial_number"], 100234);
    EXPECT_EQ(info["identity"]["name"], "Dä") << "as far as it goes";
    EXPECT_EQ(info["last_service"]["date"], "2018-11-15");
    EXPECT_EQ(info["last_service"]["operating_hours"], json()) << "not 0: it is not there";
    EXPECT_EQ(info["operating_hours"], json());
    EXPECT_EQ(info["wear_counters"], json::array());
    EXPECT_THAT(screenOf(bytes), testing::EndsWith("Image                 DAMAGED: wrong size word\n"));
    // Longer ones, and such whose size word is wrong beyond doubt, are read as well.
    HwDatablockIdent wrong = ident();
    EXPECT_EQ(jsonOf(bytesOf(wrong).replace(2, 2, image({0})))["identity"]["serial_number"], 100234);
}

TEST(ModuleInfo, DamageIsShown) {
    HwDatablockServiceData latest = service(202, 0x6E6F, "BAD   ", 9);
    latest.setChecksum(0);
    HwDatablockIdent wrong = ident();
    wrong.setChecksum(1);
    Module module;
    module.add(wrong).add(service(200, 0x3267, "GOOD  ", 5)).add(latest);
    json info = jsonOf(module.bytes());
    EXPECT_EQ(info["identity"]["serial_number"], 100234);
    EXPECT_EQ(info["identity"]["checksum_ok"], false);
    EXPECT_EQ(info["last_service"]["block"], 200) << "a record that can be trusted comes before one that cannot";
    EXPECT_EQ(info["checksums_ok"], false);
    EXPECT_EQ(info["problems"], Support::parsed(R"([{"offset": 0, "block": 2, "text": "wrong checksum"},
                                                {"offset": 68, "block": 202, "text": "wrong checksum"}])"));
    EXPECT_THAT(screenOf(module.bytes()), testing::HasSubstr("Module                Dämpfer   (checksum wrong)\n"));
    EXPECT_THAT(screenOf(module.bytes()), testing::EndsWith("Checksums             2 of 3 blocks WRONG: 2, 202\n"));

    module.add(ident()); // a second one that can be trusted speaks for the module
    EXPECT_EQ(jsonOf(module.bytes())["identity"]["checksum_ok"], true);

    // Any cut: no value of a block that is not there in full, and the damage is told.
    const std::string whole = attenuator().bytes();
    for (std::size_t size = 1; size < whole.size(); size += 3) {
        const std::string cut = whole.substr(0, size);
        info = jsonOf(cut);
        EXPECT_EQ(info["checksums_ok"], info["problems"].empty()) << size;
        EXPECT_EQ(info["identity"].is_null(), size < 44) << size;
        EXPECT_EQ(info["operating_hours"].is_null(), size < 180) << size;
        if (!info["problems"].empty()) {
            EXPECT_THAT(screenOf(cut), testing::HasSubstr("Image                 DAMAGED")) << size;
        }
    }
}

// Control characters of an image do not command a terminal, whichever bytes they take; all others are shown.
TEST(ModuleInfo, NamesAreSafeForATerminal) {
    const std::pair<const char*, const char*> names[] = {
        {"a\x1b[2J\n\x7f"
         "b",
         "a?[2J??b"},
        {"\x80\x9f", "??"},
        {"\xa0\xff", "\xc2\xa0\xc3\xbf"},
        {"\xc2\xe4", "\xc3\x82\xc3\xa4"},
        {"ends in \x9b", "ends in ?"},
        {"  x  ", "  x"},
        {"\xff\xff\xff", "not recorded"},
    };
    for (const auto& [stored, shown] : names) {
        HwDatablockIdent block;
        block.setName(QString::fromLatin1(stored));
        block.setChecksum(block.computeChecksum());
        EXPECT_THAT(screenOf(bytesOf(block)),
                    testing::StartsWith("Module                " + std::string(shown) + "\n"));
    }
}

// Whatever one part of a service record says, it is a service; of a record where nothing is set, nothing is said.
TEST(ModuleInfo, EveryPartOfAServiceCounts) {
    const struct {
        std::function<void(HwDatablockServiceData&)> set;
        const char* key;
        json value;
    } parts[] = {
        {[](auto& block) { block.setServiceDate(0x4D6F); }, "date", "2018-11-15"},
        {[](auto& block) { block.setDepartment("1ES3  "); }, "department", "1ES3"},
        {[](auto& block) { block.setOpTimeHours(7); }, "operating_hours", 7},
        {[](auto& block) { block.setRepairNumber(4711); }, "repair_number", 4711},
        {[](auto& block) { block.setServiceCode(12); }, "service_code", 12},
    };
    for (const auto& [set, key, value] : parts) {
        HwDatablockServiceData block(200);
        set(block);
        block.setChecksum(block.computeChecksum());
        const json last = jsonOf(bytesOf(block))["last_service"];
        ASSERT_TRUE(last.is_object()) << key;
        EXPECT_EQ(last[key], value) << key;
    }
}

TEST(ModuleInfo, ScreenOfMuchAndOfLittle) {
    Module wrong;
    for (int id = 200; id < 210; ++id) {
        HwDatablockServiceData block(id);
        block.setChecksum(1);
        wrong.add(block);
    }
    EXPECT_THAT(screenOf(wrong.bytes()),
                testing::HasSubstr("10 of 10 blocks WRONG: 200, 201, 202, 203, 204, 205, 206, 207, ...\n"));
    HwDatablockModification modification;
    modification.setServiceCode(0x8000 | 1203, 1);
    modification.setServiceCode(1288, 3);
    EXPECT_THAT(screenOf(Module().add(modification).bytes()),
                testing::HasSubstr("Modifications         circular 1203, action 2\n"
                                   "                      circular 1288, action 0\n"));
    HwDatablockCwop6VcoIdent vco;
    vco.setJobNumber(3);
    EXPECT_THAT(screenOf(Module().add(vco).bytes()), testing::HasSubstr("\n\nVCO                   job number 3\n"));
    HwDatablockMbrdTimeMonitoringData monitoring;
    monitoring.setDate("2019-03-07");
    EXPECT_THAT(screenOf(Module().addSealed(std::move(monitoring)).bytes()),
                testing::HasSubstr("\n\nTime monitoring       2019-03-07\n"));
    // Of the parts of an instrument any is enough; a count may lack on either side.
    for (const int id : {12000, 12001, 12004})
        EXPECT_TRUE(jsonOf(Module().addSealed(std::move(*makeBlock(id))).bytes())["instrument"].is_object()) << id;
    EXPECT_THAT(screenOf(Module().add(counter(11301, 3, 0xFFFFFFFF)).bytes()),
                testing::HasSubstr("  Overload counter, value 1     missing       3\n"
                                   "  Overload counter, value 2     missing       not recorded\n"));
    EXPECT_EQ(jsonOf(Module().addSealed(statistic(11310, std::string(4, '\xFF'))).bytes())["statistics"][0]["length"],
              json());
}

} // namespace ModuleInfoTest
