#include "BlockNames.h"

#include <algorithm>
#include <iostream>

namespace Tool {

void BlockNames::addOption(CLI::App& command, const std::string& help) {
    command.add_option("--block", texts_, help)->type_name("KEY[@OFFSET]")->allow_extra_args(false)->required();
    command.add_option("key", more_, "More of them, as with --block");
}

std::optional<std::vector<Travik::BlockAddress>> BlockNames::parse() const {
    std::vector<Travik::BlockAddress> names;
    bool isWrong = false;
    for (const std::vector<std::string>* const texts : {&texts_, &more_}) {
        for (const std::string& text : *texts) {
            const Travik::BlockAddress& name = names.emplace_back(Travik::parseBlockAddress(text));
            if (name.error.empty())
                continue;
            std::cerr << "datablock: " << InLine{text} << ": " << name.error << '\n';
            isWrong = true;
        }
    }
    return isWrong ? std::nullopt : std::optional(std::move(names));
}

int explainRefusals(const Image& image, const Travik::BlockReport& report, const std::string& source) {
    for (const Travik::BlockRefusal& refusal : report.refusals)
        std::cerr << InLine{refusal.isOfSource ? source : image.name} << ": " << InLine{refusal.text} << ": "
                  << InLine{refusal.why} << '\n';
    std::cerr << InLine{image.name} << ": nothing was changed"
              << (report.remedies.forces ? ", use --force to copy in spite of damage" : "")
              << (report.remedies.resizes ? ", use --resize to move what follows" : "")
              << (report.remedies.appends ? ", use --append to add what is not there" : "") << '\n';
    return DataWrong;
}

void showEdits(const Travik::BlockReport& report) {
    using Kind = Travik::BlockEdit::Kind;
    for (const Travik::BlockEdit& edit : report.edits) {
        std::cout << InLine{edit.block} << ", offset " << edit.offset << " (0x" << std::hex << edit.offset << std::dec
                  << "): ";
        if (edit.kind == Kind::Removed)
            std::cout << "removed, " << edit.before << " bytes\n";
        else if (edit.kind == Kind::Added)
            std::cout << "added, " << edit.after << " bytes\n";
        else if (edit.before != edit.after)
            std::cout << "replaced, " << edit.before << " -> " << edit.after << " bytes\n";
        else
            std::cout << (edit.isChange ? "replaced, " : "the same, ") << edit.after << " bytes\n";
    }
}

int finishEdits(ImageUpdate& update, const UpdateOptions& options, const Travik::BlockReport& report,
                const char* done) {
    if (options.dryRun)
        showEdits(report);
    if (!update.commit())
        return CallFailed;
    const std::size_t count = report.edits.size();
    const auto same = std::ranges::count(report.edits, false, &Travik::BlockEdit::isChange);
    std::cerr << InLine{update.target()} << ": " << count << (count == 1 ? " block" : " blocks")
              << (options.dryRun ? " would be " : " ") << done;
    if (same > 0)
        std::cerr << ", " << same << " of them the same as before";
    if (report.growth != 0)
        std::cerr << ", the image is " << std::abs(report.growth) << " bytes "
                  << (report.growth > 0 ? "longer" : "shorter");
    update.endSummary();
    const Image& image = *update.image();
    return reportFindings(image, Travik::ModuleImage(image.bytes), false);
}

} // namespace Tool
