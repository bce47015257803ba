#include <travik/registry/ModuleInfo.h>
#include <travik/service/BlockForms.h>
#include <travik/service/BlockTables.h>
#include <travik/service/Describe.h>
#include <travik/service/Report.h>
#include <travik/service/ShowText.h>
#include <travik/service/TerminalText.h>
#include <travik/service/ValueText.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <tuple>

namespace Travik {

namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

std::string shown(std::string_view utf8) { return terminalText(utf8, TextCharset::Utf8, TextLines::One); }

/// A block of one image, read as `show` shows it.
struct ReadBlock {
    const ImageBlock* block;
    BlockValues values;
    std::vector<const FieldValues*> fields;
    std::vector<BlockTable> tables; // refer to `values`

    ReadBlock(const ImageBlock& read, const ImageValues& image)
        : block(&read), values(image.read(read)), fields(shownFields(read, values, {})),
          tables(tablesOf(fields, false)) {}
};

std::string nameOf(const BlockTable& table) {
    std::string name;
    for (const std::string_view field : table.fields)
        name.append(name.empty() ? "" : ", ").append(field);
    return shown(name + table.place());
}

/// Whether its numbers are worth looking at as curves: not what labels other tables, and no mere bytes or identities.
bool isPlotted(const BlockTable& table) {
    constexpr unsigned int few = 2;
    if (table.rows < few || table.columns.empty())
        return false;
    const FieldValues& first = *table.columns.front().values;
    if (first.field->role != Role::Value || isPlainBytes(first))
        return false;
    const auto isNumbers = [](const TableColumn& column) {
        return !column.values->isText() && column.values->texts.empty();
    };
    if (!std::ranges::any_of(table.columns, isNumbers))
        return false;
    const bool isCounted = std::ranges::any_of(std::span(first.field->dimensions).first(first.field->rank),
                                               [](const Dimension& dimension) { return dimension.count != nullptr; });
    return table.hasRowAxis() || isCounted || first.field->rank > 1 || first.field->isFloating() ||
           *first.field->unit != '\0';
}

/// What is shown of an element is not always its number in the column's format.
bool isShownAsText(const FieldValues& values, double value) {
    constexpr double largestWhole = 1e15;
    constexpr double largestPlain = 1e10;
    constexpr double smallestPlain = 1e-5;
    const double size = std::abs(value);
    if (!values.texts.empty() || !std::isfinite(value) || size >= largestWhole)
        return true;
    return values.field->isFloating() && size > 0 && (size < smallestPlain || size >= largestPlain);
}

/// Of one place, the elements of a column.
ReportValues valuesOf(const ImageBlock& block, const BlockTable& table, const TableColumn& column) {
    ReportValues made;
    const FieldValues& values = *column.values;
    const ElementText textOf(block, values);
    made.values.assign(table.rows, none);
    for (unsigned int row = 0; row < table.rows; ++row) {
        const std::size_t element = column.element(row);
        if (element >= values.size() || !values.isUsed(element))
            continue;
        if (!values.isText() && values.isWhole && !isShownAsText(values, values.values[element])) {
            made.values[row] = values.values[element];
            continue;
        }
        const std::string text = textOf(element);
        if (text.empty())
            continue; // the block ends before it
        if (!values.isText())
            made.values[row] = values.values[element];
        if (values.isText() || isShownAsText(values, made.values[row]))
            made.asText.emplace_back(row, shown(text));
    }
    return made;
}

std::string curveName(const BlockTable& table, const TableColumn& column) {
    if (!table.columnDimension || (table.columns.size() == 1 && !table.hasColumnAxis()))
        return shown(column.values->field->name);
    if (table.hasColumnAxis())
        return shown(table.columnLabel(column));
    std::string name(table.columnDimension->name);
    return shown(name.append(name.empty() ? "" : " ").append(table.columnLabel(column)));
}

ReportAxis axisOf(const BlockTable& table, int block) {
    ReportAxis axis;
    axis.name = shown(dimensionTitle(*table.rowDimension, block));
    if (!table.hasRowAxis())
        return axis;
    const Axis& labels = *table.rowDimension->axis;
    axis.unit = shown(labels.unit);
    axis.format = labels.format;
    const std::span<const double> numbers = table.rowNumbers();
    axis.values.assign(numbers.begin(), numbers.begin() + std::min<std::ptrdiff_t>(std::ssize(numbers), table.rows));
    for (unsigned int row = 0; row < table.rows && row < labels.texts.size(); ++row)
        axis.texts.push_back(shown(labels.texts[row]));
    axis.isLogarithmic = isLogarithmic(axis.values);
    return axis;
}

/// A block at all its places, of which some may not have a table that others have.
class BlockReport {
public:
    BlockReport(ReportBlock& report, std::vector<std::unique_ptr<ReadBlock>> reads, ReportForm form,
                std::size_t mostDrawn)
        : report_(report), reads_(std::move(reads)), form_(form), mostDrawn_(mostDrawn) {}

    void fill(const BlockForms& forms) {
        report_.key = shown(reads_.front()->values.key);
        report_.className = reads_.front()->values.className;
        addFields();
        addTables();
        addLayout(forms);
        if (form_ == ReportForm::Comparison)
            compare();
    }

private:
    ReportBlock& report_;
    std::vector<std::unique_ptr<ReadBlock>> reads_;
    ReportForm form_;
    std::size_t mostDrawn_;

    void addFields() {
        std::map<std::string_view, std::size_t> places;
        for (std::size_t i = 0; i < reads_.size(); ++i) {
            for (const FieldValues* const field : reads_[i]->fields) {
                if (!field->dimensions.empty())
                    continue;
                const auto [found, isNew] = places.try_emplace(field->field->name, report_.fields.size());
                if (isNew)
                    report_.fields.push_back({shown(field->field->name), std::vector<std::string>(reads_.size())});
                const std::string text = ElementText(*reads_[i]->block, *field)(0);
                report_.fields[found->second].texts[i] =
                    field->isText() || text.empty() ? shown(text) : shown(withReadableUnit(text, field->field->unit));
            }
        }
    }

    void addTables() {
        // By name and not by place in the list: where a count is different, there are more or fewer of them.
        std::vector<std::string> names;
        std::map<std::string, std::vector<const BlockTable*>> tables;
        for (std::size_t i = 0; i < reads_.size(); ++i) {
            for (const BlockTable& table : reads_[i]->tables) {
                const auto [found, isNew] = tables.try_emplace(nameOf(table), reads_.size());
                if (isNew)
                    names.push_back(found->first);
                found->second[i] = &table;
            }
        }
        for (const std::string& name : names)
            addTable(name, tables[name]);
    }

    void addTable(const std::string& name, std::span<const BlockTable* const> tables) {
        ReportTable& table = report_.tables.emplace_back();
        table.name = name;
        const BlockTable& first = usual(tables);
        table.axis = axisOf(first, report_.id);
        table.curvesName =
            first.columnDimension ? shown(dimensionTitle(*first.columnDimension, report_.id)) : std::string();
        table.isPlotted = std::ranges::any_of(tables, [](const BlockTable* one) { return one && isPlotted(*one); });
        const bool hasAxis = first.hasRowAxis();
        bool isOwnAxis = false;
        for (std::size_t i = 0; i < tables.size(); ++i) {
            table.drawn.push_back(i);
            std::vector<double>& own = table.ownAxes.emplace_back();
            if (!tables[i])
                continue;
            table.rows = std::max<std::size_t>(table.rows, tables[i]->rows);
            // Of rows that do not go along the same dimension nothing can be said side by side.
            if (tables[i]->rowDimension->name != first.rowDimension->name || tables[i]->hasRowAxis() != hasAxis)
                continue;
            addCurves(table, i, *tables[i], tables.size());
            std::vector<double> values = axisOf(*tables[i], report_.id).values;
            if (values != table.axis.values)
                own = std::move(values);
            isOwnAxis = isOwnAxis || !own.empty();
        }
        if (!isOwnAxis)
            table.ownAxes.clear();
        constexpr std::size_t many = 8;
        table.isMatrix = table.isPlotted && first.columnDimension && table.curves.size() >= many;
        if (form_ == ReportForm::Family && tables.size() > 1)
            judgeFamily(table, std::max<std::size_t>(mostDrawn_, fewestJudged));
        else if (form_ == ReportForm::Comparison)
            table.changedValues = changedValues(table);
    }

    /// One whose axis most have; some may be null, but not all.
    static const BlockTable& usual(std::span<const BlockTable* const> tables) {
        std::map<std::vector<double>, std::pair<int, const BlockTable*>> axes;
        const BlockTable* most =
            *std::ranges::find_if(tables, [](const BlockTable* table) { return table != nullptr; });
        int count = 0;
        for (const BlockTable* const table : tables) {
            if (!table)
                continue;
            const std::span<const double> numbers = table->rowNumbers();
            auto& [times, one] = axes[std::vector<double>(numbers.begin(), numbers.end())];
            one = one ? one : table;
            if (++times > count) {
                count = times;
                most = one;
            }
        }
        return *most;
    }

    void addCurves(ReportTable& table, std::size_t place, const BlockTable& from, std::size_t places) {
        for (std::size_t c = 0; c < from.columns.size(); ++c) {
            const TableColumn& column = from.columns[c];
            if (c == table.curves.size()) {
                ReportCurve& curve = table.curves.emplace_back();
                curve.name = curveName(from, column);
                curve.unit = shown(column.values->field->unit);
                curve.format = NumberFormat(*column.values->field);
                curve.isText = column.values->isText();
                curve.values.resize(places);
            }
            table.curves[c].values[place] = valuesOf(*reads_[place]->block, from, column);
        }
    }

    static std::size_t changedValues(const ReportTable& table) {
        if (table.drawn.size() != 2)
            return 0;
        std::size_t changed = 0;
        for (const ReportCurve& curve : table.curves) {
            const ReportValues& left = curve.values[0];
            const ReportValues& right = curve.values[1];
            for (std::size_t row = 0; row < table.rows; ++row) {
                const double before = row < left.values.size() ? left.values[row] : none;
                const double after = row < right.values.size() ? right.values[row] : none;
                changed += before == after || (std::isnan(before) && std::isnan(after)) ? 0 : 1;
            }
        }
        return changed;
    }

    void compare() {
        using Change = ReportBlock::Change;
        if (reads_.size() == 1) {
            report_.change = report_.places.front().source == 0 ? Change::Removed : Change::Added;
            return;
        }
        const std::span<const char> before = reads_[0]->block->bytes;
        const std::span<const char> after = reads_[1]->block->bytes;
        const std::size_t both = std::min(before.size(), after.size());
        for (std::size_t i = 0; i < both; ++i)
            report_.changedBytes += before[i] != after[i] ? 1 : 0;
        report_.changedBytes += std::max(before.size(), after.size()) - both;
        report_.change = report_.changedBytes == 0 ? Change::Equal : Change::Changed;
    }

    void addLayout(const BlockForms& forms) {
        const ImageBlock& block = *reads_.front()->block;
        constexpr std::size_t endSize = 4;
        static constexpr std::array<std::string_view, 4> words{"identifier", "size", "alignment", "checksum"};
        const std::size_t header = block.isEnd() && block.bytes.size() <= endSize ? 2 : words.size();
        for (std::size_t i = 0; i < header && 2 * i + 2 <= block.bytes.size(); ++i)
            report_.layout.push_back({.name = std::string(header == 2 && i == 1 ? "data" : words[i]),
                                      .type = "u16",
                                      .purpose = "header word",
                                      .unit = {},
                                      .offset = 2 * i,
                                      .width = 2,
                                      .dimensions = {}});
        std::optional<BlockForm> form;
        if (block.entry)
            form = BlockForms::of(block.id);
        for (const Field& field : reads_.front()->values.layout.fields()) {
            ReportLayoutField& made = report_.layout.emplace_back();
            made.name = shown(field.name);
            made.type = storedName(field.stored);
            const Field* const described = form ? form->layout.find(field.name) : nullptr;
            made.purpose = described ? shown(forms.purpose(*form, *described)) : std::string(roleName(field.role));
            made.unit = shown(field.unit);
            made.offset = field.offset;
            made.width = field.width;
            for (unsigned int d = 0; d < field.rank; ++d)
                made.dimensions.emplace_back(field.dimensions[d].extent, field.dimensions[d].stride);
        }
    }
};

std::string checksumState(const ImageBlock& block) {
    if (block.isEnd())
        return {};
    if (!block.checksumHolds)
        return block.endsKnown ? "wrong" : "cut off";
    return block.checksumChecked ? "ok" : "not checked";
}

std::string crcState(const ImageBlock& block) {
    if (block.crcHolds)
        return "ok";
    return block.findings.has(Finding::WrongCrc) ? "wrong" : "";
}

class ImagesReport {
public:
    ImagesReport(std::span<const ReportImage> images, ReportForm form, const ReportLimits& limits)
        : images_(images), form_(form), limits_(limits) {
        for (const ReportImage& image : images)
            modules_.push_back(std::make_unique<Module>(image));
    }

    ReportDocuments documents(const std::string& generator) {
        head_.form = form_;
        head_.generator = generator;
        addSources();
        gather();
        if (form_ == ReportForm::Family)
            shareValues();
        std::vector<std::pair<ReportBlock, std::string>> made;
        for (const Places& places : blocks_) {
            auto& [report, json] = made.emplace_back();
            fill(report, places);
            json = reportBlockJson(report);
            forget(report);
        }
        if (form_ == ReportForm::Comparison)
            std::ranges::stable_sort(made, {}, [](const auto& one) { return rank(one.first); });
        ReportDocuments documents;
        std::vector<ReportBlock> reports;
        for (auto& [report, json] : made) {
            reports.push_back(std::move(report));
            documents.blocks.push_back(std::move(json));
        }
        documents.title = head_.title;
        documents.head = reportHeadJson(head_, reports);
        return documents;
    }

private:
    struct Module {
        ModuleImage image;
        ImageValues values;
        explicit Module(const ReportImage& from) : image(from.bytes), values(image) {}
    };
    struct Places {
        std::size_t kind = 0;
        int id = 0;
        std::size_t occurrence = 0;
        std::vector<std::pair<std::size_t, const ImageBlock*>> blocks; // by source
    };

    std::span<const ReportImage> images_;
    ReportForm form_;
    ReportLimits limits_;
    ReportHead head_;
    std::vector<std::unique_ptr<Module>> modules_;
    std::vector<Places> blocks_;
    std::vector<std::size_t> mostDrawn_; // by kind
    bool hasBytes_ = true;
    BlockForms forms_;

    void addSources() {
        constexpr std::size_t mostFindings = 500;
        for (std::size_t i = 0; i < images_.size(); ++i) {
            ReportSource& source = head_.sources.emplace_back();
            const ModuleInfo info = moduleInfo(modules_[i]->image);
            source.name = shown(images_[i].name);
            source.title = titleOf(info, source.name);
            source.kind = kindOf(info);
            source.size = images_[i].bytes.size();
            source.blocks = modules_[i]->image.blocks().size();
            source.facts = reportFacts(info);
            if (form_ == ReportForm::Family)
                std::erase_if(source.facts,
                              [](const ReportFact& fact) { return fact.value.empty() && fact.mark.empty(); });
            source.findings = modules_[i]->image.findings();
            if (source.findings.size() > mostFindings) {
                head_.remarks.push_back(source.name + ": only " + std::to_string(mostFindings) + " of " +
                                        std::to_string(source.findings.size()) + " findings are shown");
                source.findings.resize(mostFindings);
            }
        }
        const std::vector<ReportSource>& all = head_.sources;
        head_.title = form_ == ReportForm::Module       ? all.front().title
                      : form_ == ReportForm::Comparison ? all[0].title + " against " + all[1].title
                      : head_.kinds.size() == 1
                          ? std::to_string(all.size()) + " modules " + head_.kinds.front()
                          : std::to_string(all.size()) + " modules of " + std::to_string(head_.kinds.size()) + " kinds";
    }

    static std::string titleOf(const ModuleInfo& info, const std::string& fallback) {
        if (!info.identity || !info.identity->name)
            return fallback;
        std::string title = shown(*info.identity->name);
        if (info.identity->serialNumber)
            title += ", serial number " + std::to_string(*info.identity->serialNumber);
        return title;
    }

    std::size_t kindOf(const ModuleInfo& info) {
        const bool isNamed = info.identity && info.identity->name && form_ != ReportForm::Comparison;
        const std::string kind = isNamed ? shown(*info.identity->name) : std::string("not named");
        const auto found = std::ranges::find(head_.kinds, kind);
        const auto place = static_cast<std::size_t>(found - head_.kinds.begin());
        if (found == head_.kinds.end())
            head_.kinds.push_back(kind);
        return place;
    }

    void gather() {
        std::map<std::tuple<std::size_t, int, std::size_t>, std::size_t> places;
        std::size_t left = 0;
        std::size_t bytes = 0;
        for (std::size_t i = 0; i < modules_.size(); ++i) {
            std::map<int, std::size_t> occurrences;
            const std::size_t kind = head_.sources[i].kind;
            bytes += images_[i].bytes.size();
            for (const ImageBlock& block : modules_[i]->image.blocks()) {
                const std::size_t occurrence = occurrences[block.id]++;
                const auto [found, isNew] = places.try_emplace({kind, block.id, occurrence}, blocks_.size());
                if (isNew && blocks_.size() == limits_.blocks) {
                    places.erase(found);
                    ++left;
                    continue;
                }
                if (isNew)
                    blocks_.push_back({kind, block.id, occurrence, {}});
                blocks_[found->second].blocks.emplace_back(i, &block);
            }
        }
        std::ranges::stable_sort(blocks_, {}, &Places::kind);
        if (left > 0)
            head_.remarks.push_back(std::to_string(left) + " blocks are not shown: the page holds " +
                                    std::to_string(limits_.blocks));
        hasBytes_ = bytes <= limits_.bytes;
        if (!hasBytes_)
            head_.remarks.emplace_back("The bytes of the blocks are not on this page: a page of one image has them");
    }

    /// How many curves a plot may have: so many that all plots together stay within the limit.
    void shareValues() {
        std::vector<std::size_t> sources(head_.kinds.size());
        std::vector<std::size_t> values(head_.kinds.size());
        for (const ReportSource& source : head_.sources)
            ++sources[source.kind];
        for (const Places& places : blocks_) {
            const auto& [source, block] = places.blocks.front();
            const ReadBlock read(*block, modules_[source]->values);
            for (const BlockTable& table : read.tables)
                values[places.kind] += std::size_t{table.rows} * table.columns.size();
        }
        double all = 0;
        for (std::size_t kind = 0; kind < sources.size(); ++kind)
            all += static_cast<double>(sources[kind]) * static_cast<double>(values[kind]);
        const double share = all == 0 ? 1 : std::min(1.0, static_cast<double>(limits_.values) / all);
        for (const std::size_t curves : sources) {
            constexpr double fewest = 12;
            const double most = std::max(std::floor(static_cast<double>(curves) * share), fewest);
            mostDrawn_.push_back(static_cast<std::size_t>(most));
            if (mostDrawn_.back() < curves)
                head_.remarks.push_back("Of the " + std::to_string(curves) + " curves of each plot " +
                                        std::to_string(mostDrawn_.back()) +
                                        " are drawn, those that are farthest off first; the shaded range is of all");
        }
    }

    void fill(ReportBlock& report, const Places& places) const {
        report.id = places.id;
        report.occurrence = places.occurrence;
        report.kind = places.kind;
        std::vector<std::unique_ptr<ReadBlock>> reads;
        for (const auto& [source, block] : places.blocks) {
            ReportPlace& place = report.places.emplace_back();
            place.source = source;
            place.offset = block->offset;
            place.size = block->bytes.size();
            place.checksum = checksumState(*block);
            place.crc = crcState(*block);
            if (hasBytes_)
                place.bytes.assign(block->bytes.begin(), block->bytes.end());
            reads.push_back(std::make_unique<ReadBlock>(*block, modules_[source]->values));
        }
        const std::size_t mostDrawn = mostDrawn_.empty() ? reads.size() : mostDrawn_[places.kind];
        BlockReport(report, std::move(reads), form_, mostDrawn).fill(forms_);
    }

    /// What the head does not need.
    static void forget(ReportBlock& report) {
        report.layout.clear();
        for (ReportPlace& place : report.places)
            place.bytes = {};
        for (ReportTable& table : report.tables) {
            table.curves.clear();
            table.ownAxes.clear();
        }
    }

    static int rank(const ReportBlock& report) {
        constexpr int last = 2;
        return report.change == ReportBlock::Change::Changed ? 0
               : report.change == ReportBlock::Change::Equal ? last
                                                             : 1;
    }
};

} // namespace

ReportDocuments reportOf(std::span<const ReportImage> images, ReportForm form, const std::string& generator,
                         const ReportLimits& limits) {
    return ImagesReport(images, form, limits).documents(generator);
}

} // namespace Travik
