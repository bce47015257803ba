#include <travik/datablock/TextWriter.h>
#include <travik/registry/ModuleInfo.h>

#include <algorithm>

namespace Travik {

namespace {

constexpr std::string_view missing = "not recorded";
constexpr std::size_t labelWidth = 22;
constexpr std::size_t numberWidth = 14;

std::string textOf(const ModuleInfo::Number& number, std::string_view unit = {}) {
    return number ? std::to_string(*number).append(unit) : std::string(missing);
}

std::string textOf(const std::optional<ModuleInfo::Date>& date) { return date ? isoDate(*date) : std::string(missing); }

/// What comes out of an image must not command a terminal.
std::string textOf(const ModuleInfo::Text& utf8) {
    if (!utf8)
        return std::string(missing);
    std::string shown;
    for (std::size_t i = 0; i < utf8->size(); ++i) {
        const auto code = static_cast<unsigned char>((*utf8)[i]);
        const auto next = static_cast<unsigned char>(i + 1 < utf8->size() ? (*utf8)[i + 1] : 0);
        const bool isUpperControl = code == 0xC2 && next >= 0x80 && next < 0xA0;
        shown += code < 0x20 || code == 0x7F || isUpperControl ? '?' : (*utf8)[i];
        i += isUpperControl;
    }
    return shown;
}

std::string_view wrongMark(bool checksumHolds) { return checksumHolds ? "" : "   (checksum wrong)"; }

class Screen {
public:
    explicit Screen(std::ostream& os) : out_(os) {}

    void line(std::string_view text = {}) { out_.line(text); }
    void row(std::string_view label, std::string_view value, std::string_view mark = {}) {
        (out_ << padded(label, labelWidth) << value << mark).endLine();
    }
    void columns(std::string_view label, std::string_view first, std::string_view second, std::string_view mark = {}) {
        out_ << padded(label, labelWidth + 10);
        out_ << padded(first, numberWidth) << second;
        if (!mark.empty())
            out_ << padded("", numberWidth - std::min(numberWidth, second.size())) << mark;
        out_.endLine();
    }

private:
    TextWriter out_;

    static std::string padded(std::string_view text, std::size_t width) {
        std::string padded(text);
        padded.resize(std::max(width, text.size()), ' ');
        return padded;
    }
};

void printIdentity(Screen& screen, const std::optional<ModuleInfo::Identity>& identity) {
    if (!identity) {
        screen.row("Module", missing);
        return;
    }
    screen.row("Module", textOf(identity->name), wrongMark(identity->checksumHolds));
    screen.row("  Part number", textOf(identity->partNumber),
               identity->variant ? " (variant " + std::to_string(*identity->variant) + ")" : std::string());
    screen.row("  Serial number", textOf(identity->serialNumber));
    screen.row("  Production date", textOf(identity->productionDate));
    screen.row("  Hardware code", textOf(identity->hardwareCode));
    screen.row("  Product index", textOf(identity->productIndex));
}

void printInstrument(Screen& screen, const ModuleInfo::Instrument& instrument) {
    screen.line();
    screen.row("Instrument", textOf(instrument.model), wrongMark(instrument.checksumsHold));
    screen.row("  Serial number", textOf(instrument.serialNumber));
    screen.row("  MAC address", textOf(instrument.macAddress));
}

/// Values side by side, without those that are not set.
class Items {
public:
    Items& add(const std::string& label, const std::optional<std::string>& value) {
        if (value)
            text_ += (text_.empty() ? "" : ", ") + label + *value;
        return *this;
    }
    Items& add(const std::string& label, const ModuleInfo::Number& value) {
        return add(label, value ? std::optional(std::to_string(*value)) : std::nullopt);
    }
    std::string text() const { return text_.empty() ? std::string(missing) : text_; }

private:
    std::string text_;
};

void printOptions(Screen& screen, const ModuleInfo& info) {
    if (!info.furtherIdents.empty() || info.vco || info.timeMonitoring)
        screen.line();
    for (const auto& [block, name, label, ident] : info.furtherIdents) {
        Items items;
        items.add("", ident.name ? std::optional(textOf(ident.name)) : std::nullopt).add("", ident.partNumber);
        items.add("serial number ", ident.serialNumber);
        screen.row(label, items.text(), wrongMark(ident.checksumHolds));
    }
    if (info.vco) {
        Items items;
        items.add("serial number ", info.vco->serialNumber).add("job number ", info.vco->jobNumber);
        items.add("lot number ", info.vco->lotNumber);
        screen.row("VCO", items.text(), wrongMark(info.vco->checksumHolds));
    }
    if (info.timeMonitoring)
        screen.row("Time monitoring", textOf(info.timeMonitoring->date), wrongMark(info.timeMonitoring->checksumHolds));
}

void printLastService(Screen& screen, const std::vector<ModuleInfo::Service>& services) {
    if (services.empty()) {
        screen.row("Last service", missing);
        return;
    }
    const ModuleInfo::Service& last = services.back();
    std::string mark(wrongMark(last.checksumHolds));
    if (services.size() > 1)
        mark += "   (" + std::to_string(services.size()) + " services recorded)";
    screen.row("Last service", textOf(last.date), mark);
    screen.row("  Department", textOf(last.department));
    screen.row("  Operating hours", textOf(last.operatingHours, " h"));
    screen.row("  Turned on", textOf(last.turnOnCount, " times"));
}

void printModifications(Screen& screen, const ModuleInfo& info) {
    const std::string_view mark = wrongMark(info.modificationsChecksumHolds);
    if (!info.modifications || info.modifications->empty()) {
        screen.row("Modifications", info.modifications ? "none" : missing, mark);
        return;
    }
    for (const ModuleInfo::Modification& modification : *info.modifications) {
        const bool isFirst = &modification == &info.modifications->front();
        screen.row(isFirst ? "Modifications" : "",
                   "circular " + std::to_string(modification.circularNumber) + ", action " +
                       std::to_string(modification.action),
                   isFirst ? mark : std::string_view());
    }
}

void printCounters(Screen& screen, const std::vector<ModuleInfo::Counter>& counters, std::string_view unit) {
    const auto cell = [&](const std::vector<ModuleInfo::Number>& values, std::size_t i) {
        return values.empty() ? "missing" : i < values.size() ? textOf(values[i], unit) : std::string(missing);
    };
    for (const ModuleInfo::Counter& counter : counters) {
        const std::size_t rows = std::max(counter.values.size(), counter.backup.size());
        for (std::size_t i = 0; i < rows; ++i) {
            std::string label = "  " + std::string(counter.label);
            if (rows > 1)
                label += ", value " + std::to_string(i + 1);
            const std::string value = cell(counter.values, i);
            const std::string backup = counter.backupBlock == 0 ? "none kept" : cell(counter.backup, i);
            // Values of one counter are marked apart; of a statistic, only the bytes behind the length can differ.
            const bool differs = counter.differs.value_or(false) && (rows == 1 || value != backup);
            screen.columns(label, value, backup,
                           std::string(differs ? "<-- DIFFERENT" : "").append(wrongMark(counter.checksumsHold)));
        }
    }
}

void printState(Screen& screen, const ModuleInfo& info) {
    const std::string total = std::to_string(info.blocks);
    if (info.blocks == 0) {
        screen.row("Checksums", "no blocks in this image");
    } else if (info.wrongChecksums.empty()) {
        const std::string unchecked =
            info.uncheckedBlocks > 0 ? ", " + std::to_string(info.uncheckedBlocks) + " not checked" : std::string();
        screen.row("Checksums", "all right (" + total + (info.blocks == 1 ? " block" : " blocks") + unchecked + ")");
    } else {
        constexpr std::size_t listed = 8;
        std::string wrong = std::to_string(info.wrongChecksums.size()) + " of " + total + " blocks WRONG: ";
        for (std::size_t i = 0; i < std::min(listed, info.wrongChecksums.size()); ++i)
            wrong += (i == 0 ? "" : ", ") + std::to_string(info.wrongChecksums[i]);
        screen.row("Checksums", wrong, info.wrongChecksums.size() > listed ? ", ..." : "");
    }
    // Each kind once; wrong checksums stand above.
    FindingSet kinds;
    for (const ImageFinding& problem : info.problems)
        kinds.add(problem.finding);
    kinds.remove(Finding::WrongChecksum);
    Items damage;
    for (const FindingKind& kind : findingKinds()) {
        if (kinds.has(kind.finding))
            damage.add("", std::string(kind.name));
    }
    if (!kinds.empty())
        screen.row("Image", "DAMAGED: " + damage.text());
}

} // namespace

void printModuleInfo(const ModuleInfo& info, std::ostream& os) {
    Screen screen(os);
    printIdentity(screen, info.identity);
    if (info.instrument)
        printInstrument(screen, *info.instrument);
    printOptions(screen, info);
    screen.line();
    printLastService(screen, info.services);
    screen.line();
    printModifications(screen, info);
    screen.line();
    screen.row("Operating hours", textOf(info.operatingHours, " h"), wrongMark(info.operatingHoursChecksumHolds));
    screen.line();
    if (info.wearCounters.empty() && info.statistics.empty()) {
        screen.row("Counters", "none in this image");
    } else {
        if (!info.wearCounters.empty()) {
            screen.columns("Counters", "Value", "Backup");
            printCounters(screen, info.wearCounters, "");
        }
        if (!info.statistics.empty()) {
            screen.columns("Statistics", "Length", "Backup");
            printCounters(screen, info.statistics, " bytes");
        }
    }
    screen.line();
    printState(screen, info);
}

} // namespace Travik
