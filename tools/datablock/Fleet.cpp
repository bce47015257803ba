#include "InfoJson.h"
#include "Jobs.h"
#include "ReportPage.h"
#include "Terminal.h"
#include "Writing.h"

#include <travik/fleet/FleetReport.h>
#include <travik/service/NumberFormat.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iostream>
#include <utility>

namespace Tool {

namespace {

using Travik::FleetDatabase;

/// A few digits, for a person.
std::string brief(double number) {
    std::array<char, 32> text{};
    constexpr int digits = 6;
    return {text.data(),
            std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::general, digits).ptr};
}

std::string safe(std::string_view name) {
    CollectingStream stream(STDOUT_FILENO);
    stream << InLine{name};
    return std::move(stream).str();
}

/// Columns as wide as they have to be; numbers on the right.
class Table {
public:
    Table(std::vector<std::string> heads, std::string_view right) : right_(right) { add(std::move(heads)); }

    void add(std::vector<std::string> cells) {
        widths_.resize(cells.size());
        for (std::size_t i = 0; i < cells.size(); ++i)
            widths_[i] = std::max(widths_[i], Travik::columnsOf(cells[i]));
        rows_.push_back(std::move(cells));
    }

    void write() const {
        for (const std::vector<std::string>& row : rows_) {
            std::size_t blanks = 0; // none at the end of a line
            for (std::size_t i = 0; i < row.size(); ++i, blanks += 2) {
                const std::size_t rest = widths_[i] - Travik::columnsOf(row[i]);
                const bool isRight = right_[i] == 'r';
                blanks += isRight ? rest : 0;
                if (row[i].find_first_not_of(' ') != std::string::npos)
                    std::cout << std::string(std::exchange(blanks, 0), ' ') << row[i];
                blanks += isRight ? 0 : rest;
            }
            std::cout << '\n';
        }
    }

private:
    std::string_view right_; ///< a letter a column: r or l
    std::vector<std::vector<std::string>> rows_;
    std::vector<std::size_t> widths_;
};

std::string serialOf(const Travik::FleetModule& module) {
    return module.serialNumber ? std::to_string(*module.serialNumber) : "-";
}

std::string fieldOf(const Travik::FleetPoint& point) {
    return point.key + '.' + point.field + (point.rowLabel.empty() ? "" : " (" + point.rowLabel + ')');
}

std::string placeOf(const Travik::FleetPoint& point) {
    return point.axisValue ? Travik::withReadableUnit(Travik::NumberFormat().text(*point.axisValue), point.axisUnit)
                           : std::to_string(point.point);
}

Json optional(const auto& value) { return value ? Json(*value) : Json(); }
Json textOrNull(const std::string& text) { return text.empty() ? Json() : Json(text); }

void put(Json& object, const Travik::FleetModule& module) {
    object["module"] = module.module;
    object["image"] = module.path;
    object["name"] = textOrNull(module.name);
    object["serial_number"] = optional(module.serialNumber);
    object["product_index"] = textOrNull(module.productIndex);
}

void put(Json& object, const Travik::FleetPoint& point) {
    object["key"] = point.key;
    object["field"] = point.field;
    object["row"] = point.row;
    object["row_label"] = point.rowLabel;
    object["point"] = point.point;
    object["axis_value"] = optional(point.axisValue);
    object["axis_unit"] = point.axisUnit;
    object["unit"] = point.unit;
}

/// What the questions share: the modules that are meant, and the form of the answer.
class Question {
public:
    Question(CLI::App& fleet, const char* name, const char* what) : command_(*fleet.add_subcommand(name, what)) {
        command_.add_option("--name", filter_.name, "Only modules of this name");
        command_.add_option("--product-index", filter_.productIndex, "Only modules of this product index, \"02.04\"");
        command_.add_option("--part-number", filter_.partNumber, "Only modules of this part number, \"1141.3000.02\"");
        CLI::Option* const json = command_.add_flag("--json", asJson_, "Write one JSON object; see docs/fleet.md");
        command_.add_option("--report", page_, "Write a page with plots to this HTML file instead; see docs/report.md")
            ->type_name("FILE")
            ->excludes(json);
    }
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;
    virtual ~Question() = default;

    bool isAsked() const { return command_.parsed(); }
    int answer(const FleetDatabase& database, const std::string& name) {
        if (!page_.empty())
            return writePage(database, name);
        if (!asJson_) {
            startPager();
            passSafeText();
        }
        return ask(database);
    }

protected:
    CLI::App& command_;          // NOLINT(misc-non-private-member-variables-in-classes)
    Travik::FleetFilter filter_; // NOLINT(misc-non-private-member-variables-in-classes)
    bool asJson_ = false;        // NOLINT(misc-non-private-member-variables-in-classes)

    virtual int ask(const FleetDatabase& database) = 0;
    virtual Travik::ReportDocuments report(const FleetDatabase& database, const std::string& generator) = 0;
    /// What a page that could be written means: the same as the answer as text.
    virtual int pageStatus(const FleetDatabase& /*database*/, const Travik::ReportDocuments& /*page*/) const {
        return AllWell;
    }

private:
    std::string page_;

    int writePage(const FleetDatabase& database, const std::string& name) {
        if (Travik::isSameFile(name, page_)) {
            std::cerr << "datablock: " << InLine{page_} << ": is the database, which no page is written over\n";
            return CallFailed;
        }
        const std::string generator = "datablock " TRAVIK_VERSION;
        Travik::ReportDocuments documents = report(database, generator);
        if (!reportWriting(page_, writeImage(page_, reportPage(documents, generator))))
            return CallFailed;
        std::cerr << InLine{page_} << ": " << InLine{documents.title} << '\n';
        return pageStatus(database, documents);
    }
};

int noBlock(const std::vector<std::string>& blocks) {
    std::cerr << "datablock: no module has a block";
    for (const std::string& block : blocks)
        std::cerr << ' ' << InLine{block};
    std::cerr << '\n';
    return DataWrong;
}

int noTrend() {
    std::cerr << "datablock: no such field, row or point in five modules that differ in what it is asked over\n";
    return DataWrong;
}

class Outliers : public Question {
public:
    explicit Outliers(CLI::App& fleet)
        : Question(fleet, "outliers", "Which modules have values that lie outside those of the others, and where") {
        addBlockOption(command_, blocks_);
        command_.get_option("--block")->required();
        command_
            .add_option("--threshold", question_.threshold,
                        "From how many sigmas on a value lies outside; 6 by default")
            ->check(takesOnly<double>([](double sigmas) { return sigmas > 0; }, "takes a number above 0"))
            ->type_name("SIGMAS");
        command_.footer(
            "Each point is compared with the same point of all modules, by the median and the median\n"
            "absolute deviation (MAD): sigma is 1.4826 MAD, the standard deviation of normally distributed\n"
            "values, and at least the step in which the value is stored. Five modules are the fewest.");
    }

private:
    std::vector<std::string> blocks_;
    Travik::OutlierQuestion question_;

    int ask(const FleetDatabase& database) override {
        question_.blocks = Travik::BlockSelector(blocks_);
        question_.filter = filter_;
        const Travik::OutlierAnswer answer = Travik::outliers(database, question_);
        if (asJson_)
            writeJson(answer);
        else
            writeTable(answer);
        return answer.points == 0 ? noBlock(blocks_) : AllWell;
    }

    Travik::ReportDocuments report(const FleetDatabase& database, const std::string& generator) override {
        question_.blocks = Travik::BlockSelector(blocks_);
        question_.filter = filter_;
        return Travik::outlierReport(database, question_, generator);
    }

    int pageStatus(const FleetDatabase& /*database*/, const Travik::ReportDocuments& page) const override {
        return page.blocks.empty() ? noBlock(blocks_) : AllWell;
    }

    void writeJson(const Travik::OutlierAnswer& answer) const {
        Json list = Json::array();
        for (const Travik::Outlier& outlier : answer.outliers) {
            Json& object = list.emplace_back(Json::object());
            put(object, outlier.module);
            put(object, outlier.point);
            object["value"] = outlier.value;
            object["median"] = outlier.median;
            object["sigma"] = outlier.sigma;
            object["sigmas"] = std::isfinite(outlier.score) ? Json(outlier.score) : Json();
        }
        std::cout << toText({{"modules", answer.modules},
                             {"points", answer.points},
                             {"points_of_too_few_modules", answer.tooFew},
                             {"threshold", question_.threshold},
                             {"outliers", std::move(list)}});
    }

    // A line for each curve of a module: how many points lie outside, from where to where, and the worst.
    static void writeTable(const Travik::OutlierAnswer& answer) {
        Table table(
            {"MODULE", "SERIAL", "FIELD", "POINTS", "FROM", "TO", "WORST AT", "VALUE", "MEDIAN", "SIGMAS", "IMAGE"},
            "lrlrrrrrrrl");
        std::size_t modules = 0;
        const std::vector<Travik::Outlier>& all = answer.outliers;
        for (std::size_t i = 0; i < all.size();) {
            std::size_t end = i;
            std::size_t worst = i;
            for (; end < all.size() && isSameCurve(all[i], all[end]); ++end) {
                if (std::abs(all[end].score) > std::abs(all[worst].score))
                    worst = end;
            }
            modules += i == 0 || all[i - 1].module.path != all[i].module.path ? 1U : 0U;
            table.add({safe(all[i].module.name), serialOf(all[i].module), safe(fieldOf(all[i].point)),
                       std::to_string(end - i), placeOf(all[i].point), placeOf(all[end - 1].point),
                       placeOf(all[worst].point), brief(all[worst].value), brief(all[worst].median),
                       brief(all[worst].score), safe(all[i].module.path)});
            i = end;
        }
        if (!all.empty())
            table.write();
        std::cout << modules << " of " << answer.modules << (answer.modules == 1 ? " module" : " modules")
                  << " outside, " << answer.points << " points compared";
        if (answer.tooFew > 0)
            std::cout << ", " << answer.tooFew << " that too few modules have";
        std::cout << '\n';
    }

    static bool isSameCurve(const Travik::Outlier& left, const Travik::Outlier& right) {
        return left.module.path == right.module.path && left.point.key == right.point.key &&
               left.point.field == right.point.field && left.point.row == right.point.row;
    }
};

class Trends : public Question {
public:
    explicit Trends(CLI::App& fleet)
        : Question(fleet, "trend", "How values change over serial numbers or dates of production") {
        command_.add_option("--field", fields_, "The fields of this name, which may be a glob; may be repeated")
            ->type_name("NAME")
            ->allow_extra_args(false)
            ->required();
        addBlockOption(command_, blocks_);
        command_.add_option("--row", question_.row, "Only the curves of this row, counted from 0")->type_name("N");
        command_
            .add_option("--at", question_.at,
                        "Only the points at this place on the axis: 3e9, \"3 GHz\"; its number "
                        "where points have none")
            ->type_name("PLACE");
        using Over = Travik::TrendQuestion::Over;
        addWordOption<Over>(command_, "--over", question_.over, "serial: a slope is a serial number's; date: a year's",
                            {{"serial", Over::SerialNumber}, {"date", Over::ProductionDate}}, "serial and date")
            ->type_name("serial|date");
        command_.footer(
            "The line is Theil and Sen's: its slope is the median of the slopes of all pairs of modules, its\n"
            "interval of 95 % confidence is Sen's (1968), by Kendall's statistic. A slope whose interval\n"
            "leaves 0 out is marked *.");
    }

private:
    std::vector<std::string> fields_;
    std::vector<std::string> blocks_;
    Travik::TrendQuestion question_;

    int ask(const FleetDatabase& database) override {
        question_.fields = Travik::NameSelector(fields_);
        question_.blocks = Travik::BlockSelector(blocks_);
        question_.filter = filter_;
        const std::vector<Travik::Trend> trends = Travik::trends(database, question_);
        if (asJson_)
            writeJson(trends);
        else if (!trends.empty())
            writeTable(trends);
        return trends.empty() ? noTrend() : AllWell;
    }

    Travik::ReportDocuments report(const FleetDatabase& database, const std::string& generator) override {
        question_.fields = Travik::NameSelector(fields_);
        question_.blocks = Travik::BlockSelector(blocks_);
        question_.filter = filter_;
        return Travik::trendReport(database, question_, generator);
    }

    int pageStatus(const FleetDatabase& /*database*/, const Travik::ReportDocuments& page) const override {
        return page.blocks.empty() ? noTrend() : AllWell;
    }

    const char* over() const { return question_.over == Travik::TrendQuestion::Over::SerialNumber ? "serial" : "date"; }

    void writeJson(const std::vector<Travik::Trend>& trends) const {
        Json list = Json::array();
        for (const Travik::Trend& trend : trends) {
            Json& object = list.emplace_back(Json::object());
            put(object, trend.point);
            object["modules"] = trend.modules;
            object["slope"] = trend.slope;
            object["slope_low"] = trend.low;
            object["slope_high"] = trend.high;
            object["intercept"] = trend.intercept;
            object["from"] = trend.from;
            object["to"] = trend.to;
        }
        std::cout << toText({{"over", over()}, {"trends", std::move(list)}});
    }

    void writeTable(const std::vector<Travik::Trend>& trends) const {
        const bool isDate = question_.over == Travik::TrendQuestion::Over::ProductionDate;
        Table table({"FIELD", "AT", "MODULES", isDate ? "SLOPE A YEAR" : "SLOPE A NUMBER", "LOW", "HIGH", "FROM", "TO",
                     "UNIT", ""},
                    "lrrrrrrrll");
        for (const Travik::Trend& trend : trends)
            table.add({safe(fieldOf(trend.point)), placeOf(trend.point), std::to_string(trend.modules),
                       brief(trend.slope), brief(trend.low), brief(trend.high), brief(trend.from), brief(trend.to),
                       safe(trend.point.unit), trend.isSure() ? "*" : ""});
        table.write();
    }
};

class Wear : public Question {
public:
    explicit Wear(CLI::App& fleet) : Question(fleet, "wear", "Which modules wear fastest, by their counters") {
        command_.add_option("--limit", limit_, "Only the first so many")
            ->type_name("N")
            ->check(
                takesOnly<std::size_t>([](std::size_t limit) { return limit > 0; }, "takes a whole number above 0"));
        command_.footer("Sorted by how much a counter grew in 1000 operating hours.");
    }

private:
    std::size_t limit_ = 0;

    int ask(const FleetDatabase& database) override {
        std::vector<Travik::WearCount> counts = Travik::wear(database, filter_);
        if (limit_ > 0 && counts.size() > limit_)
            counts.resize(limit_);
        if (asJson_)
            writeJson(counts);
        else
            writeTable(counts);
        return AllWell;
    }

    Travik::ReportDocuments report(const FleetDatabase& database, const std::string& generator) override {
        return Travik::wearReport(database, filter_, generator);
    }

    static void writeJson(const std::vector<Travik::WearCount>& counts) {
        Json list = Json::array();
        for (const Travik::WearCount& count : counts) {
            Json& object = list.emplace_back(Json::object());
            put(object, count.module);
            object["counter"] = count.counter;
            object["value"] = count.value;
            object["operating_hours"] = optional(count.operatingHours);
            object["per_1000_hours"] = optional(count.perThousandHours);
        }
        std::cout << toText({{"wear", std::move(list)}});
    }

    static void writeTable(const std::vector<Travik::WearCount>& counts) {
        Table table({"MODULE", "SERIAL", "INDEX", "COUNTER", "VALUE", "HOURS", "PER 1000 H", "IMAGE"}, "lrllrrrl");
        for (const Travik::WearCount& count : counts)
            table.add({safe(count.module.name), serialOf(count.module), safe(count.module.productIndex),
                       safe(count.counter), brief(count.value),
                       count.operatingHours ? std::to_string(*count.operatingHours) : "-",
                       count.perThousandHours ? brief(*count.perThousandHours) : "-", safe(count.module.path)});
        table.write();
    }
};

class VerifyFleet : public Question {
public:
    explicit VerifyFleet(CLI::App& fleet) : Question(fleet, "verify", "Which images do not verify, and why") {
        command_.footer("As `datablock verify` says it of each image when it was read. Status 1 where there is one.");
    }

private:
    int ask(const FleetDatabase& database) override {
        const std::vector<Travik::DamagedImage> damaged = Travik::damagedImages(database, filter_);
        const std::size_t images = Travik::imageCount(database, filter_);
        if (asJson_)
            writeJson(damaged, images);
        else
            writeTable(damaged, images);
        return damaged.empty() ? AllWell : DataWrong;
    }

    Travik::ReportDocuments report(const FleetDatabase& database, const std::string& generator) override {
        return Travik::damageReport(database, filter_, generator);
    }

    int pageStatus(const FleetDatabase& database, const Travik::ReportDocuments& /*page*/) const override {
        return Travik::damagedImages(database, filter_).empty() ? AllWell : DataWrong;
    }

    static void writeJson(const std::vector<Travik::DamagedImage>& damaged, std::size_t images) {
        Json list = Json::array();
        for (const Travik::DamagedImage& image : damaged) {
            Json& object = list.emplace_back(Json::object());
            put(object, image.module);
            object["problems"] = image.problems;
        }
        std::cout << toText({{"images", images}, {"damaged", std::move(list)}});
    }

    static void writeTable(const std::vector<Travik::DamagedImage>& damaged, std::size_t images) {
        Table table({"MODULE", "SERIAL", "IMAGE", "PROBLEM"}, "lrll");
        for (const Travik::DamagedImage& image : damaged) {
            for (const std::string& problem : image.problems)
                table.add({safe(image.module.name), serialOf(image.module), safe(image.module.path), safe(problem)});
        }
        if (!damaged.empty())
            table.write();
        std::cout << damaged.size() << " of " << images << " images do not verify\n";
    }
};

class Fleet : public Command {
public:
    explicit Fleet(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("fleet", "Ask a database of many modules, made by collect");
        command.add_option("database", database_, "The database")->type_name("DATABASE")->required();
        command.require_subcommand(1);
        questions_.push_back(std::make_unique<Outliers>(command));
        questions_.push_back(std::make_unique<Trends>(command));
        questions_.push_back(std::make_unique<Wear>(command));
        questions_.push_back(std::make_unique<VerifyFleet>(command));
        command.footer(
            "Each module counts once, with its latest image. The database is a plain SQLite one: docs/fleet.md\n"
            "describes its relations and views, for whoever writes SQL.");
    }

    int run() override {
        const FleetDatabase database(database_, FleetDatabase::Access::Read);
        for (const std::unique_ptr<Question>& question : questions_) {
            if (question->isAsked())
                return question->answer(database, database_);
        }
        return CallFailed;
    }

private:
    std::string database_;
    std::vector<std::unique_ptr<Question>> questions_;
};

} // namespace

std::unique_ptr<Command> fleetCommand(CLI::App& app) { return std::make_unique<Fleet>(app); }

} // namespace Tool
