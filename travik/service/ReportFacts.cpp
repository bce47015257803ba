#include <travik/service/Report.h>
#include <travik/service/TerminalText.h>

#include <algorithm>

namespace Travik {

namespace {

constexpr std::string_view checksumWrong = "checksum wrong";

std::string textOf(const ModuleInfo::Number& number, std::string_view unit = {}) {
    return number ? std::to_string(*number).append(unit) : std::string();
}
std::string textOf(const std::optional<ModuleInfo::Date>& date) { return date ? isoDate(*date) : std::string(); }
std::string textOf(const ModuleInfo::Text& utf8) {
    return utf8 ? terminalText(*utf8, TextCharset::Utf8, TextLines::One) : std::string();
}

/// Facts one after the other, in groups.
class Facts {
public:
    void begin(std::string_view group, bool checksumHolds = true) {
        group_ = group;
        mark_ = checksumHolds ? "" : checksumWrong;
    }
    void add(std::string_view label, std::string value, std::string_view mark = {}) {
        std::string both(mark);
        if (!mark_.empty())
            both.append(both.empty() ? "" : ", ").append(mark_);
        facts_.push_back({group_, std::string(label), std::move(value), std::move(both)});
    }
    /// Only where it is recorded.
    void addKnown(std::string_view label, std::string value) {
        if (!value.empty())
            add(label, std::move(value));
    }
    void addIdentity(const ModuleInfo::Identity& identity) {
        add("Name", textOf(identity.name));
        add("Part number", textOf(identity.partNumber));
        addKnown("Variant", textOf(identity.variant));
        add("Serial number", textOf(identity.serialNumber));
        add("Production date", textOf(identity.productionDate));
        addKnown("Hardware code", textOf(identity.hardwareCode));
        addKnown("Product index", textOf(identity.productIndex));
    }
    std::vector<ReportFact> take() { return std::move(facts_); }

private:
    std::vector<ReportFact> facts_;
    std::string group_;
    std::string_view mark_;
};

std::string counterText(const std::vector<ModuleInfo::Number>& values, std::size_t i, std::string_view unit) {
    const std::string text = i < values.size() ? textOf(values[i], unit) : std::string();
    return values.empty() ? "missing" : text.empty() ? "not recorded" : text;
}

void addCounters(Facts& facts, std::string_view group, const std::vector<ModuleInfo::Counter>& counters,
                 std::string_view unit) {
    for (const ModuleInfo::Counter& counter : counters) {
        facts.begin(group, counter.checksumsHold);
        const std::size_t rows = std::max(counter.values.size(), counter.backup.size());
        for (std::size_t i = 0; i < rows; ++i) {
            const std::string label =
                std::string(counter.label) + (rows > 1 ? ", value " + std::to_string(i + 1) : std::string());
            std::string value = counterText(counter.values, i, unit);
            const std::string backup = counterText(counter.backup, i, unit);
            const bool differs = counter.differs.value_or(false) && (rows == 1 || value != backup);
            if (counter.backupBlock != 0)
                value += ", backup " + backup;
            facts.add(label, std::move(value), differs ? "differs from its backup" : "");
        }
    }
}

void addServices(Facts& facts, const std::vector<ModuleInfo::Service>& services) {
    if (services.empty()) {
        facts.begin("Service");
        facts.add("Last service", {});
        return;
    }
    const ModuleInfo::Service& last = services.back();
    facts.begin("Service", last.checksumHolds);
    facts.add("Last service", textOf(last.date));
    facts.addKnown("Department", textOf(last.department));
    facts.addKnown("Operating hours then", textOf(last.operatingHours, " h"));
    facts.addKnown("Turned on till then", textOf(last.turnOnCount, " times"));
    facts.addKnown("Services recorded", services.size() > 1 ? std::to_string(services.size()) : std::string());
}

} // namespace

std::vector<ReportFact> reportFacts(const ModuleInfo& info) {
    Facts facts;
    facts.begin("Module", !info.identity || info.identity->checksumHolds);
    facts.addIdentity(info.identity ? *info.identity : ModuleInfo::Identity());
    if (info.instrument) {
        facts.begin("Instrument", info.instrument->checksumsHold);
        facts.add("Model", textOf(info.instrument->model));
        facts.add("Serial number", textOf(info.instrument->serialNumber));
        facts.add("MAC address", textOf(info.instrument->macAddress));
    }
    for (const ModuleInfo::FurtherIdent& further : info.furtherIdents) {
        facts.begin(further.label, further.identity.checksumHolds);
        facts.addIdentity(further.identity);
    }
    if (info.vco) {
        facts.begin("VCO", info.vco->checksumHolds);
        facts.add("Serial number", textOf(info.vco->serialNumber));
        facts.add("Job number", textOf(info.vco->jobNumber));
        facts.add("Lot number", textOf(info.vco->lotNumber));
    }
    facts.begin("Service", info.operatingHoursChecksumHolds);
    facts.add("Operating hours", textOf(info.operatingHours, " h"));
    addServices(facts, info.services);
    facts.begin("Service", info.modificationsChecksumHolds);
    if (info.modifications && info.modifications->empty())
        facts.add("Modifications", "none");
    for (const ModuleInfo::Modification& modification :
         info.modifications.value_or(std::vector<ModuleInfo::Modification>()))
        facts.add("Modification " + std::to_string(modification.position),
                  "circular " + std::to_string(modification.circularNumber) + ", action " +
                      std::to_string(modification.action));
    if (info.timeMonitoring) {
        facts.begin("Service", info.timeMonitoring->checksumHolds);
        facts.add("Time monitoring", textOf(info.timeMonitoring->date));
    }
    addCounters(facts, "Counters", info.wearCounters, "");
    addCounters(facts, "Statistics", info.statistics, " bytes");
    return facts.take();
}

} // namespace Travik
