#include "Terminal.h"
#include "Tool.h"

#include <travik/service/DiffText.h>

#include <filesystem>
#include <iostream>
#include <system_error>

namespace Tool {

namespace {

class Diff : public Command {
public:
    explicit Diff(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("diff", "Compare two images, block by block and value by value");
        command.add_option("old", before_, "Module image; - is standard input")->required();
        command.add_option("new", after_, "Module image to compare it with; - is standard input")->required();
        addBlockOption(command, blocks_);
        addTolerance(command, "--tolerance", options_.tolerance,
                     "Numbers are the same when they differ by no more than X, in the unit of their field");
        addTolerance(command, "--relative", options_.relative,
                     "Numbers are the same when they differ by no more than X times the larger of the two");
        CLI::Option* const json = command.add_flag("--json", asJson_, "Write everything as one JSON object");
        CLI::Option* const brief = command.add_flag("--brief", text_.isBrief, "A line for each block that differs");
        command.add_flag("--all", text_.isWhole, "Every difference, however many there are");
        json->excludes(brief);
        command.footer(
            "Blocks belong together by their identifier, the first of it to the first, and so on. What counts:\n"
            "every bit, of values, header words, sums, padding, and what lies behind the last block; so a NaN is\n"
            "the same as a NaN of the same bits only, and 0 is not -0. A block at another offset is moved.\n\n"
            "A tolerance forgives differences of numbers only, not of counts, dates, texts or reserved words, and\n"
            "never one between a number and a NaN or an infinity. Of two tolerances one is enough. The rounding of\n"
            "binary numbers is no difference: 1.25 and 1.26 are within 0.01. Checksums and CRC-32s that follow from\n"
            "nothing but forgiven differences are forgiven, too, unless they hold in one image only.\n\n"
            "Exit status: 0 the same, 1 different, 2 the call or a file could not be used.\n"
            "Damaged images are compared like others; verify tells what is wrong with them.");
    }

    int run() override {
        if (before_ == "-" && after_ == "-") {
            std::cerr << "datablock: standard input can be one of the two images only\n";
            return CallFailed;
        }
        const std::optional<Image> before = readImage(before_);
        const std::optional<Image> after = before && isSameFile() ? Image{after_, before->bytes} : readImage(after_);
        if (!before || !after)
            return CallFailed;
        options_.blocks = Travik::BlockSelector(blocks_);
        const Travik::ImageDiff diff(before->bytes, after->bytes, options_);
        if (!areAllFound(diff))
            return CallFailed;
        write(diff, {before->name, after->name});
        return diff.isSame() ? Same : Different;
    }

private:
    enum Result : int { Same = 0, Different = 1 };

    std::string before_;
    std::string after_;
    std::vector<std::string> blocks_;
    Travik::DiffOptions options_;
    Travik::DiffTextOptions text_;
    bool asJson_ = false;

    static void addTolerance(CLI::App& command, const std::string& name, double& value, const std::string& help) {
        command.add_option(name, value, help)
            ->type_name("X")
            ->check(takesOnly<double>([](double number) { return number >= 0; }, "takes a number from 0 on"));
    }

    bool isSameFile() const {
        std::error_code none;
        return before_ != "-" && after_ != "-" && std::filesystem::equivalent(before_, after_, none);
    }

    /// A name that is in neither image compares nothing.
    bool areAllFound(const Travik::ImageDiff& diff) const {
        bool areFound = true;
        for (const std::string& pattern : blocks_) {
            const Travik::BlockSelector one({pattern});
            const std::vector<std::string> misses = one.misses(diff.before());
            if (misses.empty() || one.misses(diff.after()).empty())
                continue;
            std::cerr << "datablock: " << InLine{misses.front()} << '\n';
            areFound = false;
        }
        return areFound;
    }

    void write(const Travik::ImageDiff& diff, const Travik::DiffNames& names) {
        // Composed before it is written: there is no half a document.
        if (asJson_) {
            std::cout << diffDocument(diff, names);
        } else if (!diff.isSame()) {
            text_.isColoured = isColoured();
            startPager();
            passSafeText();
            std::cout << diffText(diff, names, text_);
        }
    }
};

} // namespace

std::unique_ptr<Command> diffCommand(CLI::App& app) { return std::make_unique<Diff>(app); }

} // namespace Tool
