#include <travik/datablock/Ident.h>
#include <travik/datablock/PackedDate.h>
#include <travik/records/IdentityRecords.h>
#include <travik/records/ServiceRecords.h>
#include <travik/records/StatisticsRecords.h>
#include <travik/registry/ModuleInfo.h>

#include <algorithm>
#include <limits>
#include <tuple>

namespace Travik {

namespace {

constexpr unsigned short endBlockId = 0xFFFF;

bool holdsItsRecord(const ImageBlock& block) {
    return block.bytes.size() >= makeBlock(static_cast<int>(block.id))->getBlockSize();
}

/// The block that speaks for an identifier, or null.
const ImageBlock* find(const ModuleImage& image, int id) {
    const ImageBlock* found = nullptr;
    for (const ImageBlock& block : image.blocks()) {
        if (block.id == id && (!found || (!found->checksumHolds && block.checksumHolds)) && holdsItsRecord(block))
            found = &block;
    }
    return found;
}

template <class Block>
std::unique_ptr<Block> open(const ImageBlock& block) {
    return std::unique_ptr<Block>(static_cast<Block*>(makeBlock(block).release()));
}

/// A number for which 0 and all ones mean that it was never set.
template <class T>
ModuleInfo::Number setNumber(T value) {
    return value != 0 && value != std::numeric_limits<T>::max() ? ModuleInfo::Number(value) : std::nullopt;
}

/// A number that may well be 0.
ModuleInfo::Number count(unsigned int value) {
    return value != std::numeric_limits<unsigned int>::max() ? ModuleInfo::Number(value) : std::nullopt;
}

std::optional<ModuleInfo::Date> date(unsigned short word) {
    const ModuleInfo::Date unpacked = unpackDate(word);
    return unpacked.ok() ? std::optional(unpacked) : std::nullopt;
}

/// A text without the blanks behind it; none where nothing is left or the field was erased.
ModuleInfo::Text text(std::string_view latin1) {
    latin1 = latin1.substr(0, latin1.find_last_not_of(' ') + 1);
    if (latin1.find_first_not_of('\xFF') == std::string_view::npos)
        return std::nullopt;
    return fromLatin1(latin1).toStdString();
}

ModuleInfo::Text text(const QString& value) { return text(toLatin1(value)); }

std::optional<ModuleInfo::Identity> identityOf(const ModuleImage& image) {
    const ImageBlock* block = find(image, 2);
    if (!block)
        block = find(image, 10);
    if (!block)
        return std::nullopt;
    const auto ident = open<HwDatablockIdent>(*block);
    ModuleInfo::Identity identity;
    identity.name = text(ident->getName());
    const unsigned int part = ident->getPartNumber();
    if (setNumber(part)) {
        identity.variant = ident->getVariant();
        identity.partNumber =
            QString::asprintf("%u.%04u.%02u", part / 10000, part % 10000, *identity.variant).toStdString();
    }
    identity.serialNumber = setNumber(ident->getSerialNumber());
    identity.productionDate = date(ident->getProductDate());
    identity.hardwareCode = setNumber(ident->getHardwareCode());
    if (const auto index = setNumber(ident->getProductIndex()))
        identity.productIndex = QString::asprintf("%02u.%02u", *index / 100, *index % 100).toStdString();
    identity.checksumHolds = block->checksumHolds;
    return identity;
}

ModuleInfo::Text macAddress(const HwDatablockMbrdMac& block) {
    unsigned int length = 0;
    const unsigned char* const mac = block.getMac(&length);
    length = std::min<unsigned int>(length, sizeof(HwSDatablockMbrdMac::mac));
    if (std::all_of(mac, mac + length, [](unsigned char byte) { return byte == 0xFF; }))
        return std::nullopt;
    std::string address;
    for (unsigned int i = 0; i < length; ++i)
        address += QString::asprintf(i == 0 ? "%02x" : ":%02x", mac[i]).toStdString();
    return address;
}

std::optional<ModuleInfo::Instrument> instrumentOf(const ModuleImage& image) {
    const ImageBlock* const model = find(image, 12001);
    const ImageBlock* const number = find(image, 12000);
    const ImageBlock* const mac = find(image, 12004);
    if (!model && !number && !mac)
        return std::nullopt;
    ModuleInfo::Instrument instrument;
    if (model)
        instrument.model = text(open<HwDatablockMbrdModel>(*model)->getModel());
    if (number)
        instrument.serialNumber = setNumber(open<HwDatablockMbrdSerialNumber>(*number)->getSerialNumber());
    if (mac)
        instrument.macAddress = macAddress(*open<HwDatablockMbrdMac>(*mac));
    for (const ImageBlock* block : {model, number, mac})
        instrument.checksumsHold &= !block || block->checksumHolds;
    return instrument;
}

std::vector<ModuleInfo::Service> servicesOf(const ModuleImage& image) {
    std::vector<ModuleInfo::Service> services;
    for (const ImageBlock& block : image.blocks()) {
        const bool isService = (block.id >= 200 && block.id <= 209) || block.id == 299;
        if (!isService || !holdsItsRecord(block))
            continue;
        const auto data = open<HwDatablockServiceData>(block);
        ModuleInfo::Service service;
        service.block = block.id;
        service.date = date(data->getServiceDate());
        const std::string_view department(data->getDepartment(), sizeof(HwSDatablockServiceData::department));
        if (department != "000000") // as a new block has it
            service.department = text(department.substr(0, department.find('\0')));
        if (setNumber(data->getOpTime())) {
            service.operatingHours = data->getOpTimeHours();
            service.turnOnCount = data->getOpTimeTurnOn();
        }
        service.repairNumber = setNumber(data->getRepairNumber());
        service.serviceCode = setNumber(data->getServiceCode());
        service.checksumHolds = block.checksumHolds;
        if (service.date || service.department || service.operatingHours || service.repairNumber || service.serviceCode)
            services.push_back(std::move(service));
    }
    const auto rank = [](const ModuleInfo::Service& service) {
        return std::tuple(service.checksumHolds, service.date, service.operatingHours);
    };
    std::ranges::stable_sort(services, {}, rank);
    return services;
}

std::vector<ModuleInfo::Modification> modificationsOf(const ImageBlock& block) {
    const auto record = open<HwDatablockModification>(block);
    std::vector<ModuleInfo::Modification> modifications;
    for (unsigned char i = 0; i < std::size(HwSDatablockModification{}.serviceCode); ++i) {
        if (setNumber(record->getServiceCode(i)))
            modifications.push_back({i + 1U, record->getCircularNr(i), record->getAction(i)});
    }
    return modifications;
}

struct CounterBlocks {
    int id;
    int backup;
    std::string_view name;
    std::string_view label;
};

constexpr CounterBlocks wearCounterBlocks[] = {
    {10604, 0, "satt3_overload_1", "Overload counter 1"}, {10605, 0, "satt3_overload_2", "Overload counter 2"},
    {11203, 0, "satt6_overload_1", "Overload counter 1"}, {11204, 0, "satt6_overload_2", "Overload counter 2"},
    {11300, 11301, "sattc_overload", "Overload counter"}, {11302, 11303, "sattc_high_power", "High-power counter"},
};

constexpr CounterBlocks statisticBlocks[] = {
    {11310, 11311, "power_on_count", "Power-on count"},
    {11312, 11313, "operating_time_count", "Operating time count"},
};

/// All values in use, in record order.
std::vector<double> valuesInUse(const ImageBlock& block) {
    std::vector<double> values;
    visitFields(block.bytes, block.entry->fields(*block.entry, block.id), Extent::Used,
                [&](const FieldValue& value) { values.push_back(value.value); });
    return values;
}

/// A counter's numbers.
std::vector<ModuleInfo::Number> countsOf(const std::vector<double>& values) {
    std::vector<ModuleInfo::Number> counts;
    for (const double value : values)
        counts.push_back(count(static_cast<unsigned int>(value)));
    return counts;
}

/// A statistic's length, which is stored before its bytes; none where no byte was ever set.
std::vector<ModuleInfo::Number> lengthOf(const std::vector<double>& values) {
    const auto all = [&](double byte) {
        return std::all_of(values.begin() + 1, values.end(), [&](double value) { return value == byte; });
    };
    if (all(0.0) || all(255.0))
        return {std::nullopt};
    return {static_cast<unsigned int>(values.size() - 1)};
}

template <class Summary>
std::vector<ModuleInfo::Counter> countersOf(const ModuleImage& image, std::span<const CounterBlocks> kinds,
                                            Summary summary) {
    std::vector<ModuleInfo::Counter> counters;
    for (const CounterBlocks& kind : kinds) {
        const ImageBlock* const block = find(image, kind.id);
        const ImageBlock* const backup = kind.backup != 0 ? find(image, kind.backup) : nullptr;
        if (!block && !backup)
            continue;
        const auto values = block ? valuesInUse(*block) : std::vector<double>();
        const auto backupValues = backup ? valuesInUse(*backup) : std::vector<double>();
        ModuleInfo::Counter& counter = counters.emplace_back(
            ModuleInfo::Counter{kind.id, kind.backup, kind.name, kind.label, {}, {}, std::nullopt});
        if (block)
            counter.values = summary(values);
        if (backup)
            counter.backup = summary(backupValues);
        if (block && backup)
            counter.differs = values != backupValues;
        counter.checksumsHold = (!block || block->checksumHolds) && (!backup || backup->checksumHolds);
    }
    return counters;
}

} // namespace

std::string isoDate(ModuleInfo::Date date) {
    return QString::asprintf("%04d-%02u-%02u", int{date.year()}, unsigned{date.month()}, unsigned{date.day()})
        .toStdString();
}

ModuleInfo moduleInfo(const ModuleImage& image) {
    ModuleInfo info;
    info.identity = identityOf(image);
    info.instrument = instrumentOf(image);
    info.services = servicesOf(image);
    if (const ImageBlock* const block = find(image, 100)) {
        info.modifications = modificationsOf(*block);
        info.modificationsChecksumHolds = block->checksumHolds;
    }
    if (const ImageBlock* const block = find(image, 300)) {
        info.operatingHours = count(open<HwDatablockStatistic>(*block)->getOpHours());
        info.operatingHoursChecksumHolds = block->checksumHolds;
    }
    info.wearCounters = countersOf(image, wearCounterBlocks, countsOf);
    info.statistics = countersOf(image, statisticBlocks, lengthOf);
    for (const ImageBlock& block : image.blocks()) {
        if (block.id == endBlockId)
            continue;
        ++info.blocks;
        const bool wasRead =
            std::ranges::none_of(block.faults, [](ImageFault fault) { return fault < ImageFault::OddSize; });
        if (!wasRead || !block.checksumHolds)
            info.wrongChecksums.push_back(block.id);
    }
    info.problems = image.problems();
    return info;
}

} // namespace Travik
