#include "Terminal.h"
#include "Tool.h"

#include <travik/tables/SecondEdition.h>

namespace Tool {

namespace {

class Summary : public Command {
public:
    explicit Summary(CLI::App& app) {
        CLI::App& command =
            *app.add_subcommand("summary", "Print a page with an entry for each second-edition table of an image");
        addImagesOption(command, paths_);
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
        BlockStream page(encoding_);
        Travik::HwDatablock2Edition().printDebugPageHeading(page, true);
        for (const Travik::ImageBlock& block : module.blocks()) {
            if (!block.isSecondEdition)
                continue;
            const std::unique_ptr<Travik::HwDatablock> table = Travik::makeBlock(block);
            Travik::HwSDataBlockCfg cfg;
            cfg.blockName = QString::fromStdString(keyOf(block));
            static_cast<Travik::HwDatablock2Edition&>(*table).printDebugPageSummary(page, cfg);
        }
        return reportForTexts(image, module.findings()); // what is left out of the page may be a table
    }
};

} // namespace

std::unique_ptr<Command> summaryCommand(CLI::App& app) { return std::make_unique<Summary>(app); }

} // namespace Tool
