#include "Tool.h"

#include <travik/text/TextExchange.h>

#include <iostream>

namespace Tool {

namespace {

class Export : public Command {
public:
    explicit Export(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("export", "Write a table of an image as text that can be imported");
        command.add_option("image", path_, "Module image; - is standard input")->required();
        command.add_option("--block", selector_, "The block, by identifier or key name")
            ->type_name("ID|KEY")
            ->required();
    }

    int run() override {
        const std::optional<Image> image = readImage(path_);
        if (!image)
            return CallFailed;
        const Travik::ModuleImage module(image->bytes);
        const Travik::ImageBlock* const block = find(*image, module);
        if (!block)
            return DataWrong;
        const Travik::ExchangeFormat* const format = block->entry ? block->entry->exchange : nullptr;
        if (!format) {
            std::cerr << InLine{image->name} << ": block " << InLine{selector_} << " has no exchange text\n";
            return CallFailed;
        }
        BlockStream text(Encoding::Automatic);
        Travik::writeExchangeText(text, *format, block->bytes);
        int status = found_ > 1 ? DataWrong : AllWell;
        status = std::max(status, reportProblems(*image, module.problems(*block)));
        return status;
    }

private:
    std::string path_;
    std::string selector_;
    int found_ = 0;

    /// The first of the selected blocks; what is wrong with their number is reported.
    const Travik::ImageBlock* find(const Image& image, const Travik::ModuleImage& module) {
        const Travik::BlockSelector selector({selector_});
        const Travik::ImageBlock* first = nullptr;
        for (const Travik::ImageBlock& block : module.blocks()) {
            if (!selector.selects(block))
                continue;
            if (++found_ == 1)
                first = &block;
            else
                reportProblem(image, block.offset, block.id, "one more of this block, not exported");
        }
        reportMisses(image, module, selector);
        return first;
    }
};

} // namespace

std::unique_ptr<Command> exportCommand(CLI::App& app) { return std::make_unique<Export>(app); }

} // namespace Tool
