#include "BlockNames.h"

namespace Tool {

namespace {

class Remove : public Command {
public:
    explicit Remove(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("remove", "Take blocks out of an image, what follows moves up");
        command.add_option("image", update_.image, "Module image; - is standard input")->required();
        names_.addOption(command,
                         "Which blocks: key name or identifier, which may be a glob (\"RFBO_*\"); KEY@OFFSET of "
                         "several; may be repeated");
        addUpdateOptions(command, update_, "Write nothing, show what would be removed");
    }

    int run() override {
        const auto names = names_.parse();
        if (!names)
            return CallFailed;
        ImageUpdate update(update_);
        Image* const image = update.image();
        if (!image)
            return CallFailed;
        const Travik::ModuleImage module(image->bytes);
        if (module.blocks().empty())
            return reportFindings(*image, module, false);
        const Travik::BlockReport report = Travik::removeBlocks(image->bytes, *names);
        return report.succeeded() ? finishEdits(update, update_, report, "removed") : explainRefusals(*image, report);
    }

private:
    BlockNames names_;
    UpdateOptions update_;
};

} // namespace

std::unique_ptr<Command> removeCommand(CLI::App& app) { return std::make_unique<Remove>(app); }

} // namespace Tool
