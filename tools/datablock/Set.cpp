#include "Tool.h"
#include "Writing.h"

#include <travik/service/ImageChange.h>

#include <algorithm>
#include <iostream>

namespace Tool {

namespace {

class Set : public Command {
public:
    explicit Set(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("set", "Put values of an image right, all of them or none");
        command.add_option("image", update_.image, "Module image; - is standard input")->required();
        // A value may look like "[a,b]" and is one all the same, see addImagesOption.
        constexpr int all = CLI::detail::expected_max_vector_size;
        const auto take = [this](const CLI::results_t& texts) {
            texts_ = texts;
            return true;
        };
        command
            .add_option("assignment", CLI::callback_t(take),
                        "KEY.FIELD[INDEX]...=VALUE, as in 15716.values[0][10]=1.25: key name or identifier (KEY@OFFSET "
                        "of several), an index from 0 for each dimension; a number in the field's unit, a text, or a "
                        "date as 2024-12-31")
            ->expected(all, all)
            ->allow_extra_args(false)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
            ->required();
        command.add_flag("--stored", options_.areStored, "Values are numbers as they are stored");
        command.add_flag("--reseal", options_.reseals,
                         "Change blocks whose checksum or CRC-32 does not hold, too, and make it hold");
        command.add_flag("--verbose", verbose_, "Tell of each value that is rounded what is stored");
        addUpdateOptions(command, update_, "Write nothing, show each value, old and new");
    }

    int run() override {
        std::vector<Travik::Assignment> assignments;
        int status = AllWell;
        for (const std::string& text : texts_) {
            const Travik::Assignment& assignment = assignments.emplace_back(Travik::parseAssignment(text));
            if (assignment.error.empty())
                continue;
            std::cerr << "datablock: " << InLine{text} << ": " << assignment.error << '\n';
            status = CallFailed;
        }
        if (status != AllWell)
            return status;
        ImageUpdate update(update_);
        Image* const image = update.image();
        if (!image)
            return CallFailed;
        const Travik::AssignReport report = Travik::assignValues(image->bytes, assignments, options_);
        if (!report.succeeded())
            return explain(*image, report);
        for (const Travik::ValueChange& change : report.changes)
            show(*image, change);
        if (!update.commit())
            return CallFailed;
        const Travik::ModuleImage module(image->bytes);
        for (const Travik::ImageBlock& block : module.blocks()) {
            if (std::ranges::count(report.resealed, block.offset) > 0)
                reportProblem(*image, block.offset, block.id, "its sums did not hold and were made to");
        }
        const std::size_t count = report.changeCount();
        std::cerr << InLine{update.target()} << ": " << count << (count == 1 ? " value" : " values")
                  << (update_.dryRun ? " would change" : " changed");
        update.endSummary();
        return reportFindings(*image, module, false);
    }

private:
    UpdateOptions update_;
    std::vector<std::string> texts_;
    Travik::AssignOptions options_;
    bool verbose_ = false;

    static int explain(const Image& image, const Travik::AssignReport& report) {
        for (const Travik::AssignRefusal& refusal : report.refusals)
            std::cerr << InLine{image.name} << ": " << InLine{refusal.text} << ": " << InLine{refusal.why} << '\n';
        std::cerr << InLine{image.name} << ": nothing was changed"
                  << (report.isDamaged ? ", use --reseal to make sums hold\n" : "\n");
        return DataWrong;
    }

    void show(const Image& image, const Travik::ValueChange& change) const {
        if (update_.dryRun)
            std::cout << InLine{change.name} << ": " << InLine{change.before} << " -> " << InLine{change.after} << '\n';
        if (verbose_ && change.isRounded)
            std::cerr << InLine{image.name} << ": " << InLine{change.name} << ": between two steps, stored as the "
                      << "nearest, " << InLine{change.after} << '\n';
    }
};

} // namespace

std::unique_ptr<Command> setCommand(CLI::App& app) { return std::make_unique<Set>(app); }

} // namespace Tool
