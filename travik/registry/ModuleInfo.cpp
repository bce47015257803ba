#include <travik/datablock/Bytes.h>
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

/// What a block must have for its values to be read: all of its record, or only not to be cut off. A block that says
/// itself that it is shorter is read as far as it goes.
enum class Need : unsigned char { WholeRecord, WhatIsThere };

/// The block that speaks for an identifier, or null.
const ImageBlock* find(const ModuleImage& image, int id, Need need = Need::WholeRecord) {
    const ImageBlock* found = nullptr;
    for (const ImageBlock& block : image.blocks()) {
        if (block.id != id || block.isEnd() || (found && (found->checksumHolds || !block.checksumHolds)))
            continue;
        if (block.bytes.size() >= block.entry->sizes.front() || (need == Need::WhatIsThere && block.endsKnown))
            found = &block;
    }
    return found;
}

/// Whether a field of the block's record is there.
template <auto Member>
bool holds(const ImageBlock& block) {
    return bytes::inside(block.bytes.size(), detail::memberOffset<Member>(), sizeof(detail::MemberType<Member>));
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

ModuleInfo::Identity identityOf(const ImageBlock& block) {
    const auto ident = open<IdentBlock>(block);
    ModuleInfo::Identity identity;
    identity.name = text(ident->getName());
    const unsigned int part = ident->getPartNumber();
    if (setNumber(part) && holds<&IdentBlock::Record::variant>(block)) {
        identity.variant = ident->getVariant();
        identity.partNumber =
            QString::asprintf("%u.%04u.%02u", part / 10000, part % 10000, *identity.variant).toStdString();
    }
    identity.serialNumber = setNumber(ident->getSerialNumber());
    identity.productionDate = date(ident->getProductDate());
    identity.hardwareCode = setNumber(ident->getHardwareCode());
    if (const auto index = setNumber(ident->getProductIndex()))
        identity.productIndex = QString::asprintf("%02u.%02u", *index / 100, *index % 100).toStdString();
    identity.checksumHolds = block.checksumHolds;
    return identity;
}

std::optional<ModuleInfo::Identity> identityOf(const ModuleImage& image) {
    const ImageBlock* block = find(image, 2, Need::WhatIsThere);
    if (!block)
        block = find(image, 10, Need::WhatIsThere);
    return block ? std::optional(identityOf(*block)) : std::nullopt;
}

std::vector<ModuleInfo::FurtherIdent> furtherIdentsOf(const ModuleImage& image) {
    constexpr struct {
        int id;
        std::string_view name;
        std::string_view label;
    } kinds[] = {{10503, "stream_option", "Stream option"}, {10504, "stream_auxiliary", "Stream auxiliary"}};
    std::vector<ModuleInfo::FurtherIdent> idents;
    for (const auto& kind : kinds) {
        if (const ImageBlock* const block = find(image, kind.id, Need::WhatIsThere))
            idents.push_back({kind.id, kind.name, kind.label, identityOf(*block)});
    }
    return idents;
}

std::optional<ModuleInfo::Vco> vcoOf(const ModuleImage& image) {
    const ImageBlock* const block = find(image, 10502, Need::WhatIsThere);
    if (!block)
        return std::nullopt;
    const auto vco = open<HwDatablockCwop6VcoIdent>(*block);
    return ModuleInfo::Vco{setNumber(vco->getSerialNumber()), setNumber(vco->getJobNumber()),
                           setNumber(vco->getLotNumber()), block->checksumHolds};
}

std::optional<ModuleInfo::TimeMonitoring> timeMonitoringOf(const ModuleImage& image) {
    const ImageBlock* const block = find(image, 12008, Need::WhatIsThere);
    if (!block)
        return std::nullopt;
    const auto fields = block->entry->fields(*block->entry, block->id);
    const auto day = std::ranges::find(fields, Role::Text, &Field::role);
    return ModuleInfo::TimeMonitoring{text(bytes::text(block->bytes, day->offset, day->width)), block->checksumHolds};
}

/// The address without the filler behind its six bytes, with which it is stored where a whole record is taken over.
ModuleInfo::Text macAddress(const HwDatablockMbrdMac& block) {
    constexpr unsigned int shortest = 6;
    unsigned int length = 0;
    const unsigned char* const mac = block.getMac(&length);
    length = std::min<unsigned int>(length, sizeof(HwSDatablockMbrdMac::mac));
    while (length > shortest && mac[length - 1] == 0xFF)
        --length;
    const auto all = [&](unsigned char filler) {
        return std::all_of(mac, mac + length, [&](unsigned char byte) { return byte == filler; });
    };
    if (all(0xFF) || all(0))
        return std::nullopt;
    std::string address;
    for (unsigned int i = 0; i < length; ++i)
        address += QString::asprintf(i == 0 ? "%02x" : ":%02x", mac[i]).toStdString();
    return address;
}

std::optional<ModuleInfo::Instrument> instrumentOf(const ModuleImage& image) {
    const ImageBlock* const model = find(image, 12001, Need::WhatIsThere);
    const ImageBlock* const number = find(image, 12000, Need::WhatIsThere);
    const ImageBlock* const mac = find(image, 12004, Need::WhatIsThere);
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

/// What a service block records; nothing where nothing was ever set.
std::optional<ModuleInfo::Service> serviceOf(const ImageBlock& block) {
    const auto data = open<HwDatablockServiceData>(block);
    ModuleInfo::Service service;
    service.block = block.id;
    service.date = date(data->getServiceDate());
    const std::string_view department(data->getDepartment(), sizeof(HwSDatablockServiceData::department));
    if (department != "000000") // as a new block has it
        service.department = text(department.substr(0, department.find('\0')));
    // With a date, 0 hours and 0 times are what was recorded.
    const unsigned int time = data->getOpTime();
    if (holds<&HwSDatablockServiceData::opTime>(block) && (service.date ? count(time) : setNumber(time))) {
        service.operatingHours = data->getOpTimeHours();
        service.turnOnCount = data->getOpTimeTurnOn();
    }
    service.repairNumber = setNumber(data->getRepairNumber());
    service.serviceCode = setNumber(data->getServiceCode());
    service.checksumHolds = block.checksumHolds;
    const bool isSet =
        service.date || service.department || service.operatingHours || service.repairNumber || service.serviceCode;
    return isSet ? std::optional(std::move(service)) : std::nullopt;
}

std::vector<ModuleInfo::Service> servicesOf(const ModuleImage& image) {
    std::vector<ModuleInfo::Service> services;
    for (const int id : {200, 201, 202, 203, 204, 205, 206, 207, 208, 209, 299}) {
        const ImageBlock* const block = find(image, id, Need::WhatIsThere);
        if (auto service = block ? serviceOf(*block) : std::nullopt)
            services.push_back(std::move(*service));
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
    {11304, 0, "attenuator_counter", "Attenuator counter"},
};

/// The values in use, in record order: the counts, and what they count.
struct Values {
    std::vector<double> counts;
    std::vector<double> counted;

    friend bool operator==(const Values&, const Values&) = default;
};

Values valuesInUse(const ImageBlock& block) {
    Values values;
    visitFields(block.bytes, block.entry->fields(*block.entry, block.id), Extent::Used, [&](const FieldValue& value) {
        (value.field.role == Role::Count ? values.counts : values.counted).push_back(value.value);
    });
    return values;
}

/// A counter's numbers.
std::vector<ModuleInfo::Number> countsOf(const Values& values) {
    std::vector<ModuleInfo::Number> counts;
    for (const double value : values.counted)
        counts.push_back(count(static_cast<unsigned int>(value)));
    return counts;
}

/// The bytes of a statistic; none where no byte was ever set.
std::vector<ModuleInfo::Number> lengthOf(const Values& values) {
    const auto all = [&](double byte) {
        return std::ranges::all_of(values.counted, [&](double value) { return value == byte; });
    };
    if (all(0.0) || all(255.0))
        return {std::nullopt};
    return {static_cast<unsigned int>(values.counted.size())};
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
        const Values values = block ? valuesInUse(*block) : Values();
        const Values backupValues = backup ? valuesInUse(*backup) : Values();
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
    info.furtherIdents = furtherIdentsOf(image);
    info.vco = vcoOf(image);
    info.timeMonitoring = timeMonitoringOf(image);
    info.services = servicesOf(image);
    if (const ImageBlock* const block = find(image, 100, Need::WhatIsThere)) {
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
        if (block.isEnd())
            continue;
        ++info.blocks;
        if (!block.checksumHolds)
            info.wrongChecksums.push_back(block.id);
        else if (!block.checksumChecked)
            ++info.uncheckedBlocks;
    }
    info.problems = image.problems();
    return info;
}

} // namespace Travik
