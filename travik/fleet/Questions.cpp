#include "ModuleRows.h"

#include <travik/fleet/Questions.h>
#include <travik/fleet/TrendLine.h>
#include <travik/service/NumberFormat.h>
#include <travik/service/RobustStatistics.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <map>
#include <set>
#include <tuple>

namespace Travik {

namespace {

using sqlite::Database;
using sqlite::Statement;

/// The values of one curve, or of one single value, over the modules: point by point.
struct ValueGroup {
    std::string key;
    std::string field;
    std::int64_t row = 0;
    std::string rowLabel;
    std::string unit;
    std::string axisUnit;
    double step = 0;

    struct Sample {
        std::size_t module; ///< its place in `modules`
        double value;
    };
    /// Points by their label, and where several have the same one by which of them it is.
    struct Slot {
        FleetPoint point;
        std::vector<Sample> samples;
    };
    std::map<std::pair<double, std::size_t>, Slot> points;
    std::vector<FleetModule> modules;

    bool holds(const Statement& row_, int first) const {
        return key == row_.text(first) && field == row_.text(first + 1) && row == row_.whole(first + 2);
    }

    void start(const Statement& row_, int first) {
        *this = ValueGroup();
        key = row_.text(first);
        field = row_.text(first + 1);
        row = row_.whole(first + 2);
        rowLabel = row_.text(first + 3);
        unit = row_.text(first + 4);
        axisUnit = row_.text(first + 6);
    }

    /// Values with their labels; numbered where there are not as many labels.
    void add(FleetModule module, double ownStep, std::span<const double> labels, std::span<const double> values) {
        step = std::max(step, ownStep);
        const std::size_t place = modules.size();
        modules.push_back(std::move(module));
        const bool isLabelled = labels.size() == values.size() &&
                                std::ranges::all_of(labels, [](double label) { return std::isfinite(label); });
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (!std::isfinite(values[i]))
                continue;
            const double label = isLabelled ? labels[i] : static_cast<double>(i);
            // Labels come in order, mostly: equal ones stand side by side.
            std::size_t same = 0;
            while (isLabelled && same < i && labels[i - same - 1] == label)
                ++same;
            Slot& slot = points[{label, same}];
            if (slot.samples.empty()) {
                slot.point = {key, field, row, rowLabel, i, std::nullopt, axisUnit, unit};
                if (isLabelled)
                    slot.point.axisValue = label;
            }
            slot.samples.push_back({place, values[i]});
        }
    }
};

/// Hands out the curves, then the single values, of a block group by group.
class GroupReader {
public:
    GroupReader(Database& database, const FleetFilter& filter)
        : curves_(database,
                  sqlOf({"SELECT ", moduleColumns,
                         R"(, c."key", c.field, c."row", c.row_label, c.unit, c.step, c.axis_unit, )"
                         R"(a.axis_values, c.point_values FROM curve_rows AS c JOIN axes AS a ON a.axis_id = )"
                         R"(c.axis_id JOIN images AS i ON i.image = c.image WHERE c."key" = ?4 AND )",
                         isMeant, " AND ", isLatest, R"( ORDER BY c."key", c.field, c."row", i.image)"})),
          scalars_(database,
                   sqlOf({"SELECT ", moduleColumns,
                          R"(, s."key", s.field, 0, '', s.unit, 0.0, '', s.number FROM scalars AS s JOIN images AS i )"
                          R"(ON i.image = s.image WHERE s."key" = ?4 AND s.number IS NOT NULL AND )",
                          isMeant, " AND ", isLatest, " ORDER BY s.field, i.image"})) {
        bindFilter(curves_, filter);
        bindFilter(scalars_, filter);
    }

    template <class Use>
    void read(const std::string& key, Use use) {
        readCurves(key, use);
        readScalars(key, use);
    }

private:
    static constexpr int first = moduleWidth; // of the columns of the value itself

    Statement curves_;
    Statement scalars_;

    template <class Use>
    void readCurves(const std::string& key, Use& use) {
        ValueGroup group;
        std::string axisText;
        std::vector<double> axis;
        curves_.bind(4, std::string_view(key));
        while (curves_.step()) {
            if (!group.holds(curves_, first)) {
                if (!group.modules.empty())
                    use(group);
                group.start(curves_, first);
            }
            if (curves_.text(first + 7) != axisText) {
                axisText = curves_.text(first + 7);
                axis = numbersOf(axisText);
            }
            group.add(moduleAt(curves_, 0), curves_.number(first + 5), axis, numbersOf(curves_.text(first + 8)));
        }
        curves_.reset();
        if (!group.modules.empty())
            use(group);
    }

    template <class Use>
    void readScalars(const std::string& key, Use& use) {
        ValueGroup group;
        scalars_.bind(4, std::string_view(key));
        while (scalars_.step()) {
            if (!group.holds(scalars_, first)) {
                if (!group.modules.empty())
                    use(group);
                group.start(scalars_, first);
            }
            const double value = scalars_.number(first + 7);
            group.add(moduleAt(scalars_, 0), 0, {}, {&value, 1});
        }
        scalars_.reset();
        if (!group.modules.empty())
            use(group);
    }
};

std::vector<double> valuesOf(const ValueGroup::Slot& slot) {
    std::vector<double> values;
    values.reserve(slot.samples.size());
    for (const ValueGroup::Sample& sample : slot.samples)
        values.push_back(sample.value);
    return values;
}

double daysSince1970(const std::string& iso) {
    int year = 0;
    unsigned int month = 0;
    unsigned int day = 0;
    if (iso.size() != 10)
        return std::nan("");
    std::from_chars(iso.data(), iso.data() + 4, year);
    std::from_chars(iso.data() + 5, iso.data() + 7, month);
    std::from_chars(iso.data() + 8, iso.data() + 10, day);
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    return date.ok() ? static_cast<double>(std::chrono::sys_days(date).time_since_epoch().count()) : std::nan("");
}

double placeOf(const FleetModule& module, TrendQuestion::Over over) {
    constexpr double daysAYear = 365.25;
    if (over == TrendQuestion::Over::ProductionDate)
        return daysSince1970(module.productionDate) / daysAYear;
    return module.serialNumber ? static_cast<double>(*module.serialNumber) : std::nan("");
}

/// A point that is asked for by its label.
class WantedPoint {
public:
    explicit WantedPoint(const std::optional<std::string>& text) {
        if (!text)
            return;
        isWanted_ = true;
        const char* const end = text->data() + text->size();
        const auto [next, error] = std::from_chars(text->data(), end, number_);
        unit_ = std::string(next, end);
        unit_.erase(0, unit_.find_first_not_of(' '));
        if (error != std::errc() || !std::isfinite(number_) || (!unit_.empty() && !isFrequencyUnit(unit_)))
            throw FleetError("no label of a point: " + *text);
    }

    bool matches(const FleetPoint& point) const {
        if (!isWanted_)
            return true;
        if (!point.axisValue)
            return unit_.empty() && number_ == static_cast<double>(point.point);
        if (!unit_.empty() && !isFrequencyUnit(point.axisUnit))
            return false;
        const double wanted = unit_.empty() ? number_ : number_ * hertz(unit_) / hertz(point.axisUnit);
        constexpr double rounding = 1e-9;
        return std::abs(wanted - *point.axisValue) <= rounding * std::abs(wanted);
    }

private:
    bool isWanted_ = false;
    double number_ = 0;
    std::string unit_;

    static double hertz(std::string_view unit) {
        return unit == "GHz" ? 1e9 : unit == "MHz" ? 1e6 : unit == "kHz" ? 1e3 : 1;
    }
};

} // namespace

OutlierAnswer outliers(const FleetDatabase& database, const OutlierQuestion& question) {
    OutlierAnswer answer;
    std::set<std::string> modules;
    Database& opened = database.connection().database;
    GroupReader reader(opened, question.filter);
    for (const std::string& key : keysOf(opened, question.blocks)) {
        reader.read(key, [&](const ValueGroup& group) {
            for (const FleetModule& module : group.modules)
                modules.insert(module.module);
            for (const auto& [label, slot] : group.points) {
                ++answer.points;
                if (slot.samples.size() < question.fewest) {
                    ++answer.tooFew;
                    continue;
                }
                const RobustSpread spread(valuesOf(slot), group.step);
                for (const ValueGroup::Sample& sample : slot.samples) {
                    const double score = spread.score(sample.value);
                    if (std::abs(score) > question.threshold)
                        answer.outliers.push_back({group.modules[sample.module], slot.point, sample.value,
                                                   spread.median, spread.sigma, score});
                }
            }
        });
    }
    answer.modules = modules.size();
    std::ranges::stable_sort(answer.outliers, {}, [](const Outlier& outlier) {
        return std::tie(outlier.module.name, outlier.module.module, outlier.module.path);
    });
    return answer;
}

std::vector<Trend> trends(const FleetDatabase& database, const TrendQuestion& question) {
    std::vector<Trend> all;
    const WantedPoint wanted(question.at);
    Database& opened = database.connection().database;
    GroupReader reader(opened, question.filter);
    for (const std::string& key : keysOf(opened, question.blocks)) {
        reader.read(key, [&](const ValueGroup& group) {
            if (!question.fields.selects(group.field) || (question.row && group.row != *question.row))
                return;
            std::vector<double> places;
            for (const FleetModule& module : group.modules)
                places.push_back(placeOf(module, question.over));
            for (const auto& [label, slot] : group.points) {
                if (!wanted.matches(slot.point))
                    continue;
                std::vector<double> x;
                std::vector<double> y;
                for (const ValueGroup::Sample& sample : slot.samples) {
                    if (!std::isfinite(places[sample.module]))
                        continue;
                    x.push_back(places[sample.module]);
                    y.push_back(sample.value);
                }
                if (x.size() < question.fewest)
                    continue;
                const TrendLine line = theilSen(x, y);
                if (!std::isfinite(line.slope))
                    continue;
                const auto [least, most] = std::ranges::minmax(x);
                std::vector<std::pair<double, double>> samples;
                for (std::size_t i = 0; question.keepsSamples && i < x.size(); ++i)
                    samples.emplace_back(x[i], y[i]);
                all.push_back({slot.point, x.size(), line.slope, line.low, line.high, line.intercept,
                               line.intercept + line.slope * least, line.intercept + line.slope * most,
                               std::move(samples)});
            }
        });
    }
    return all;
}

std::vector<WearCount> wear(const FleetDatabase& database, const FleetFilter& filter) {
    Statement statement(database.connection().database,
                        sqlOf({"SELECT ", moduleColumns,
                               ", i.operating_hours, n.value, json_extract(i.wear_values, '$[' || n.key || ']') FROM "
                               "images AS i, json_each(i.wear_names) AS n WHERE ",
                               isMeant, " AND ", isLatest}));
    bindFilter(statement, filter);
    std::vector<WearCount> counts;
    while (statement.step()) {
        if (statement.isNull(moduleWidth + 2))
            continue;
        WearCount& count =
            counts.emplace_back(WearCount{moduleAt(statement, 0), std::string(statement.text(moduleWidth + 1)),
                                          statement.number(moduleWidth + 2), std::nullopt, std::nullopt});
        if (statement.isNull(moduleWidth))
            continue;
        constexpr double perHours = 1000;
        count.operatingHours = statement.whole(moduleWidth);
        if (*count.operatingHours > 0)
            count.perThousandHours = count.value * perHours / static_cast<double>(*count.operatingHours);
    }
    std::ranges::sort(counts, [](const WearCount& left, const WearCount& right) {
        const auto rank = [](const WearCount& count) {
            return std::tuple(-count.perThousandHours.value_or(-1), -count.value, std::cref(count.module.path).get(),
                              std::cref(count.counter).get());
        };
        return rank(left) < rank(right);
    });
    return counts;
}

std::vector<DamagedImage> damagedImages(const FleetDatabase& database, const FleetFilter& filter) {
    Statement statement(database.connection().database,
                        sqlOf({"SELECT ", moduleColumns,
                               ", i.image, p.value FROM images AS i, "
                               "json_each(i.problem_texts) AS p WHERE i.problems > 0 AND ",
                               isMeant, " ORDER BY i.path, p.key"}));
    bindFilter(statement, filter);
    std::vector<DamagedImage> damaged;
    std::int64_t last = -1;
    while (statement.step()) {
        if (damaged.empty() || statement.whole(moduleWidth) != last)
            damaged.push_back({moduleAt(statement, 0), {}});
        last = statement.whole(moduleWidth);
        damaged.back().problems.emplace_back(statement.text(moduleWidth + 1));
    }
    return damaged;
}

std::size_t imageCount(const FleetDatabase& database, const FleetFilter& filter) {
    Statement statement(database.connection().database, sqlOf({"SELECT count(*) FROM images AS i WHERE ", isMeant}));
    bindFilter(statement, filter);
    return statement.step() ? static_cast<std::size_t>(statement.whole(0)) : 0;
}

} // namespace Travik
