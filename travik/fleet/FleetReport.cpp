#include "ModuleRows.h"

#include <travik/fleet/FleetReport.h>
#include <travik/service/ValueText.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <tuple>

namespace Travik {

namespace {

using sqlite::Database;
using sqlite::Statement;

/// What keeps a page usable: points of all curves.
constexpr std::size_t mostValues = 3'000'000;
constexpr std::size_t fewestDrawn = 12;

/// A page that grows by modules and blocks.
class Page {
public:
    Page(std::string title, const std::string& generator) {
        head_.form = ReportForm::Family;
        head_.title = std::move(title);
        head_.generator = generator;
    }

    /// The place of a module among the sources.
    std::size_t sourceOf(const FleetModule& module) {
        const auto [found, isNew] = sources_.try_emplace(module.path, head_.sources.size());
        if (!isNew)
            return found->second;
        ReportSource& source = head_.sources.emplace_back();
        source.name = module.path;
        source.kind = kindOf(module);
        source.title = module.name.empty() ? module.path : module.name;
        if (module.serialNumber)
            source.title += ", serial number " + std::to_string(*module.serialNumber);
        const auto fact = [&](const char* label, const std::string& value) {
            if (!value.empty())
                source.facts.push_back({"Module", label, value, {}});
        };
        fact("Name", module.name);
        fact("Serial number", module.serialNumber ? std::to_string(*module.serialNumber) : std::string());
        fact("Product index", module.productIndex);
        fact("Production date", module.productionDate);
        return found->second;
    }

    std::size_t kindOf(const FleetModule& module) {
        const std::string name = module.name.empty() ? "not named" : module.name;
        const auto found = std::ranges::find(head_.kinds, name);
        const auto place = static_cast<std::size_t>(found - head_.kinds.begin());
        if (found == head_.kinds.end())
            head_.kinds.push_back(name);
        return place;
    }

    void addFact(const FleetModule& module, ReportFact fact) {
        head_.sources[sourceOf(module)].facts.push_back(std::move(fact));
    }

    void add(ReportBlock block) {
        json_.push_back(reportBlockJson(block));
        for (ReportTable& table : block.tables) {
            table.curves.clear();
            table.ownAxes.clear();
        }
        blocks_.push_back(std::move(block));
    }

    void remark(const std::string& text) {
        if (std::ranges::find(head_.remarks, text) == head_.remarks.end())
            head_.remarks.push_back(text);
    }

    ReportDocuments finish() {
        ReportDocuments documents;
        documents.title = head_.title;
        documents.head = reportHeadJson(head_, blocks_);
        documents.blocks = std::move(json_);
        return documents;
    }

private:
    ReportHead head_;
    std::map<std::string, std::size_t> sources_;
    std::vector<ReportBlock> blocks_;
    std::vector<std::string> json_;
};

/// The images that a value was found to lie outside in, by field.
using OutliersByField = std::map<std::string, std::set<std::string>>;

/// The blocks of one key, one for each kind of module that has it.
class KeyBlocks {
public:
    KeyBlocks(Database& database, const FleetFilter& filter, std::string key, Page& page)
        : key_(std::move(key)), page_(page) {
        readPlaces(database, filter);
    }

    void read(Database& database, const NameSelector& fields) {
        readFields(database, fields);
        readCurves(database, fields);
    }

    void addTo(std::size_t mostPoints, const OutliersByField* outliers) {
        for (auto& [kind, made] : blocks_) {
            for (ReportTable& table : made.block.tables)
                judge(made, table, mostPoints, outliers);
            page_.add(std::move(made.block));
        }
    }

private:
    struct Made {
        ReportBlock block;
        std::vector<std::string> paths; ///< one a place
        std::map<std::string, std::size_t> tables;
        std::map<std::string, std::size_t> fields;
    };
    struct Where {
        Made* made;
        std::size_t place;
    };

    std::string key_;
    Page& page_;
    std::map<std::size_t, Made> blocks_; // by kind
    std::map<std::pair<std::int64_t, std::int64_t>, Where> places_;

    void readPlaces(Database& database, const FleetFilter& filter) {
        Statement rows(database,
                       sqlOf({"SELECT ", moduleColumns,
                              ", i.image, b.block, b.offset, b.size, b.identifier, b.class, b.checksum, b.crc "
                              "FROM blocks AS b JOIN images AS i ON i.image = b.image WHERE b.\"key\" = ?4 AND ",
                              isMeant, " AND ", isLatest, " ORDER BY i.image, b.block"}));
        bindFilter(rows, filter);
        rows.bind(4, std::string_view(key_));
        while (rows.step()) {
            const FleetModule module = moduleAt(rows, 0);
            const std::size_t source = page_.sourceOf(module);
            const std::size_t kind = page_.kindOf(module);
            Made& made = blocks_[kind];
            made.block.kind = kind;
            made.block.key = key_;
            made.block.id = static_cast<int>(rows.whole(moduleWidth + 4));
            made.block.className = rows.text(moduleWidth + 5);
            places_[{rows.whole(moduleWidth), rows.whole(moduleWidth + 1)}] = {&made, made.block.places.size()};
            ReportPlace& place = made.block.places.emplace_back();
            made.paths.push_back(module.path);
            place.source = source;
            place.offset = static_cast<std::size_t>(rows.whole(moduleWidth + 2));
            place.size = static_cast<std::size_t>(rows.whole(moduleWidth + 3));
            place.checksum = stateOf(rows.text(moduleWidth + 6));
            place.crc = stateOf(rows.text(moduleWidth + 7));
        }
    }

    static std::string stateOf(std::string_view state) { return std::string(state == "-" ? "" : state); }

    Where* whereOf(const Statement& rows) {
        const auto found = places_.find({rows.whole(0), rows.whole(1)});
        return found == places_.end() ? nullptr : &found->second;
    }

    void readFields(Database& database, const NameSelector& fields) {
        Statement rows(database, "SELECT image, block, field, number, text, unit FROM scalars WHERE \"key\" = ?");
        rows.bind(1, std::string_view(key_));
        while (rows.step()) {
            const Where* const where = whereOf(rows);
            const std::string name(rows.text(2));
            if (!where || !fields.selects(name))
                continue;
            Made& made = *where->made;
            const auto [found, isNew] = made.fields.try_emplace(name, made.block.fields.size());
            if (isNew)
                made.block.fields.push_back({name, std::vector<std::string>(made.block.places.size())});
            made.block.fields[found->second].texts[where->place] =
                rows.isNull(3) ? std::string(rows.text(4))
                               : withReadableUnit(NumberFormat().text(rows.number(3)), rows.text(5));
        }
    }

    void readCurves(Database& database, const NameSelector& fields) {
        Statement rows(database,
                       "SELECT c.image, c.block, c.field, c.\"row\", c.row_label, c.unit, c.axis, c.axis_unit, "
                       "a.axis_values, c.point_values FROM curve_rows AS c JOIN axes AS a ON a.axis_id = c.axis_id "
                       "WHERE c.\"key\" = ? ORDER BY c.\"key\", c.field, c.\"row\"");
        rows.bind(1, std::string_view(key_));
        while (rows.step()) {
            const Where* const where = whereOf(rows);
            const std::string name(rows.text(2));
            if (where && fields.selects(name))
                addCurve(*where->made, where->place, name, rows);
        }
    }

    static void addCurve(Made& made, std::size_t place, const std::string& name, const Statement& rows) {
        const std::size_t places = made.block.places.size();
        const auto [found, isNew] = made.tables.try_emplace(name, made.block.tables.size());
        if (isNew) {
            ReportTable& table = made.block.tables.emplace_back();
            table.name = name;
            table.axis.name = rows.text(6).empty() ? "point" : std::string(rows.text(6));
            table.axis.unit = rows.text(7);
            table.axis.values = numbersOf(rows.text(8));
            table.axis.isLogarithmic = isLogarithmic(table.axis.values);
            table.ownAxes.resize(places);
            for (std::size_t i = 0; i < places; ++i)
                table.drawn.push_back(i);
        }
        ReportTable& table = made.block.tables[found->second];
        std::vector<double> axis = numbersOf(rows.text(8));
        std::vector<double> values = numbersOf(rows.text(9));
        table.rows = std::max(table.rows, values.size());
        constexpr std::size_t mostCurves = 65536;
        const auto row = std::min(static_cast<std::size_t>(std::max<std::int64_t>(rows.whole(3), 0)), mostCurves);
        while (table.curves.size() <= row) {
            ReportCurve& curve = table.curves.emplace_back();
            curve.name = "row " + std::to_string(table.curves.size() - 1);
            curve.values.resize(places);
        }
        ReportCurve& curve = table.curves[row];
        curve.unit = rows.text(5);
        if (!rows.text(4).empty() && rows.text(4) != std::to_string(row))
            curve.name = rows.text(4);
        if (axis != table.axis.values && axis.size() == values.size())
            table.ownAxes[place] = std::move(axis);
        curve.values[place].values = std::move(values);
    }

    void judge(Made& made, ReportTable& table, std::size_t mostPoints, const OutliersByField* outliers) {
        constexpr std::size_t many = 8;
        if (std::ranges::all_of(table.ownAxes, [](const std::vector<double>& axis) { return axis.empty(); }))
            table.ownAxes.clear();
        table.isPlotted = table.rows > 1;
        table.isMatrix = table.isPlotted && table.curves.size() >= many;
        const std::size_t places = table.drawn.size();
        if (places < 2)
            return;
        judgeFamily(table, places);
        if (outliers) { // as the question has it, which the page is the answer to
            const auto of = outliers->find(table.name);
            table.odd.clear();
            for (std::size_t i = 0; of != outliers->end() && i < places; ++i) {
                if (of->second.contains(made.paths[i]))
                    table.odd.push_back(i);
            }
        }
        const std::size_t each = std::max<std::size_t>(table.rows * table.curves.size(), 1);
        const std::size_t most = std::max(fewestDrawn, mostPoints / each);
        if (places <= most)
            return;
        draw(table, most);
        page_.remark("Of many modules not all curves are drawn, those that lie far off first; the range is of all");
    }

    /// Leaves so many of the curves: what lies far off, and an even choice of the others.
    static void draw(ReportTable& table, std::size_t most) {
        const std::size_t places = table.drawn.size();
        std::set<std::size_t> chosen;
        for (const std::size_t odd : table.odd) {
            if (chosen.size() < most)
                chosen.insert(odd);
        }
        for (std::size_t i = 0; i < most && chosen.size() < most; ++i)
            chosen.insert(i * places / most);
        drawOnly(table, std::vector(chosen.begin(), chosen.end()));
    }
};

void addBlocks(Page& page, Database& database, const BlockSelector& blocks, const NameSelector& fields,
               const FleetFilter& filter, const std::map<std::string, OutliersByField>* outliers) {
    const std::vector<std::string> keys = keysOf(database, blocks);
    const std::size_t share = mostValues / std::max<std::size_t>(keys.size(), 1);
    for (const std::string& key : keys) {
        KeyBlocks made(database, filter, key, page);
        made.read(database, fields);
        static const OutliersByField none;
        const OutliersByField* of = nullptr;
        if (outliers) {
            const auto found = outliers->find(key);
            of = found == outliers->end() ? &none : &found->second;
        }
        made.addTo(share, of);
    }
}

ReportTable lineTable(const Trend& trend, TrendQuestion::Over over) {
    ReportTable table;
    const FleetPoint& point = trend.point;
    table.name = point.field + (point.rowLabel.empty() ? "" : ", " + point.rowLabel) + " at " +
                 (point.axisValue ? withReadableUnit(NumberFormat().text(*point.axisValue), point.axisUnit)
                                  : std::to_string(point.point));
    std::vector<std::pair<double, double>> samples = trend.samples;
    std::ranges::sort(samples);
    constexpr double firstYear = 1970;
    const bool isDate = over == TrendQuestion::Over::ProductionDate;
    table.axis.name = isDate ? "year of production" : "serial number";
    for (const char* const name : {"value", "line"}) {
        ReportCurve& curve = table.curves.emplace_back();
        curve.name = name;
        curve.unit = point.unit;
        curve.values.resize(1);
    }
    for (const auto& [x, y] : samples) {
        table.axis.values.push_back(isDate ? firstYear + x : x);
        table.curves[0].values[0].values.push_back(y);
        table.curves[1].values[0].values.push_back(trend.intercept + trend.slope * x);
    }
    table.rows = samples.size();
    table.isPlotted = true;
    table.drawn = {0};
    return table;
}

std::string counted(std::size_t count, const char* one, const char* many) {
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}

} // namespace

ReportDocuments outlierReport(const FleetDatabase& database, const OutlierQuestion& question,
                              const std::string& generator) {
    const OutlierAnswer answer = outliers(database, question);
    std::map<std::string, OutliersByField> found;
    std::set<std::string> modules;
    for (const Outlier& outlier : answer.outliers) {
        found[outlier.point.key][outlier.point.field].insert(outlier.module.path);
        modules.insert(outlier.module.path);
    }
    Page page(std::to_string(modules.size()) + " of " + counted(answer.modules, "module", "modules") + " outside",
              generator);
    addBlocks(page, database.connection().database, question.blocks, NameSelector(), question.filter, &found);
    return page.finish();
}

ReportDocuments trendReport(const FleetDatabase& database, TrendQuestion question, const std::string& generator) {
    constexpr std::size_t mostLines = 100;
    question.keepsSamples = true;
    std::vector<Trend> found = trends(database, question);
    const bool isDate = question.over == TrendQuestion::Over::ProductionDate;
    Page page(isDate ? "Values over dates of production" : "Values over serial numbers", generator);
    std::set<std::string> keys;
    for (const Trend& trend : found)
        keys.insert(trend.point.key);
    if (found.size() > mostLines) {
        page.remark("Lines are drawn of the first " + std::to_string(mostLines) + " of " +
                    std::to_string(found.size()) + " points: --at and --row choose others");
        found.resize(mostLines);
    }
    if (!keys.empty()) // none would be all
        addBlocks(page, database.connection().database, BlockSelector({keys.begin(), keys.end()}), question.fields,
                  question.filter, nullptr);
    for (const std::string& key : keys) {
        ReportBlock lines;
        lines.key = key + (isDate ? " over dates" : " over serial numbers");
        lines.places.emplace_back();
        for (const Trend& trend : found) {
            if (trend.point.key == key)
                lines.tables.push_back(lineTable(trend, question.over));
        }
        if (!lines.tables.empty())
            page.add(std::move(lines));
    }
    return page.finish();
}

ReportDocuments wearReport(const FleetDatabase& database, const FleetFilter& filter, const std::string& generator) {
    Page page("Wear", generator);
    struct Made {
        ReportBlock block;
        std::map<std::string, std::size_t> places; // by path
        std::map<std::string, std::size_t> fields;
    };
    std::map<std::size_t, Made> blocks; // by kind
    const auto put = [](Made& made, const std::string& field, std::size_t place, const std::string& text) {
        const auto [found, isNew] = made.fields.try_emplace(field, made.block.fields.size());
        if (isNew)
            made.block.fields.push_back({field, {}});
        std::vector<std::string>& texts = made.block.fields[found->second].texts;
        texts.resize(std::max(texts.size(), place + 1));
        texts[place] = text;
    };
    for (const WearCount& count : wear(database, filter)) {
        const std::size_t source = page.sourceOf(count.module);
        Made& made = blocks[page.kindOf(count.module)];
        made.block.key = "Wear counters";
        made.block.kind = page.kindOf(count.module);
        const auto [place, isNew] = made.places.try_emplace(count.module.path, made.places.size());
        if (isNew)
            made.block.places.emplace_back().source = source;
        if (isNew && count.operatingHours)
            put(made, "operating_hours", place->second, std::to_string(*count.operatingHours) + " h");
        put(made, count.counter, place->second, NumberFormat().text(count.value));
    }
    for (auto& [kind, made] : blocks) {
        for (ReportField& field : made.block.fields)
            field.texts.resize(made.block.places.size());
        page.add(std::move(made.block));
    }
    return page.finish();
}

ReportDocuments damageReport(const FleetDatabase& database, const FleetFilter& filter, const std::string& generator) {
    const std::vector<DamagedImage> damaged = damagedImages(database, filter);
    Page page(std::to_string(damaged.size()) + " of " + counted(imageCount(database, filter), "image", "images") +
                  " do not verify",
              generator);
    for (const DamagedImage& image : damaged) {
        for (const std::string& problem : image.problems)
            page.addFact(image.module, {"Verification", "Problem", problem, "damaged"});
    }
    return page.finish();
}

} // namespace Travik
