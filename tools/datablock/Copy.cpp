#include "BlockNames.h"

#include <iostream>

namespace Tool {

namespace {

class Copy : public Command {
public:
    explicit Copy(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("copy", "Put blocks of another image, as a backup, into an image");
        command.add_option("source", sourcePath_, "Image to copy from; - is standard input")->required();
        names_.addOption(command,
                         "Which blocks: key name or identifier, which may be a glob (\"RFBO_*\"); KEY@OFFSET of "
                         "several; may be repeated");
        command.add_option("--into", update_.image, "Module image to copy into; - is standard input")
            ->type_name("IMAGE")
            ->required();
        command.add_flag("--resize", options_.resizes, "Take blocks of another size, too, and move what follows them");
        command.add_flag("--append", options_.appends, "Add blocks that the image lacks ahead of its end block");
        command.add_flag("--force", options_.forces,
                         "Copy blocks whose sums do not hold, too, and over one that has lost its size");
        addUpdateOptions(command, update_, "Write nothing, show what would become of each block");
    }

    int run() override {
        const auto names = names_.parse();
        if (!names || !isSensible())
            return CallFailed;
        const std::optional<Image> source = readImage(sourcePath_);
        if (!source)
            return CallFailed;
        ImageUpdate update(update_);
        Image* const image = update.image();
        if (!image)
            return CallFailed;
        for (const Image* const one : {&*source, static_cast<const Image*>(image)}) {
            const Travik::ModuleImage module(one->bytes);
            if (module.blocks().empty())
                return reportFindings(*one, module, false);
        }
        const Travik::BlockReport report = Travik::copyBlocks(image->bytes, source->bytes, *names, options_);
        return report.succeeded() ? finishEdits(update, update_, report, "copied")
                                  : explainRefusals(*image, report, source->name);
    }

private:
    std::string sourcePath_;
    BlockNames names_;
    Travik::CopyOptions options_;
    UpdateOptions update_;

    static bool refuse(const std::string& name, const char* why) {
        std::cerr << "datablock: " << InLine{name} << ": " << why << '\n';
        return false;
    }

    /// Whether source and image, and what is written, are different files.
    bool isSensible() const {
        if (sourcePath_ == "-" && update_.image == "-")
            return refuse("standard input", "cannot be source and image at once");
        if (Travik::isSameFile(sourcePath_, update_.image))
            return refuse(update_.image, "is the same file as the source, there is nothing to copy");
        if (Travik::isSameFile(sourcePath_, update_.output))
            return refuse(update_.output, "is the source, which would be lost");
        return true;
    }
};

} // namespace

std::unique_ptr<Command> copyCommand(CLI::App& app) { return std::make_unique<Copy>(app); }

} // namespace Tool
