#include "Terminal.h"
#include "Tool.h"

#include <travik/tables/SecondEdition.h>

#include <sstream>

namespace Tool {

namespace {

class Summary : public Command {
public:
    explicit Summary(CLI::App& app) {
        CLI::App& command =
            *app.add_subcommand("summary", "Print a page with an entry for each second-edition table of an image");
        command.add_option("image", paths_, "Module images; - is standard input")->required();
        addEncodingOption(command, encoding_);
    }

    int run() override {
        startPager();
        return forEachImage(paths_, [this](const Image& image) { return summarize(image); });
    }

private:
    std::vector<std::string> paths_;
    Encoding encoding_ = Encoding::Automatic;

    int summarize(const Image& image) const {
        const Travik::ModuleImage module(image.bytes);
        std::ostringstream page;
        Travik::HwDatablock2Edition().printDebugPageHeading(page, true);
        for (const Travik::ImageBlock& block : module.blocks()) {
            const std::unique_ptr<Travik::HwDatablock> made = Travik::makeBlock(block);
            auto* const table = dynamic_cast<Travik::HwDatablock2Edition*>(made.get());
            if (!table)
                continue;
            Travik::HwSDataBlockCfg cfg;
            cfg.blockName = QString::fromStdString(keyOf(block));
            table->printDebugPageSummary(page, cfg);
        }
        if (!writeText(page.view(), encoding_))
            return CallFailed;
        return reportProblems(image, module.problems());
    }
};

} // namespace

std::unique_ptr<Command> summaryCommand(CLI::App& app) { return std::make_unique<Summary>(app); }

} // namespace Tool
