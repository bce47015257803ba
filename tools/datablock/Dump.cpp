#include "Terminal.h"
#include "Tool.h"

#include <travik/modules/IqModulatorTables.h>
#include <travik/registry/Interpreter.h>
#include <travik/tables/SecondEdition.h>

#include <optional>

namespace Tool {

namespace {

class Dump : public Command {
public:
    explicit Dump(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("dump", "Print every block of an image as commented text");
        addImagesOption(command, paths_);
        addBlockOption(command, patterns_);
        addEncodingOption(command, encoding_);
    }

    int run() override {
        interpreter_.emplace();
        selector_ = Travik::BlockSelector(patterns_);
        startPager();
        return forEachImage(paths_, [this](const Image& image) { return dump(image); });
    }

private:
    std::vector<std::string> paths_;
    std::vector<std::string> patterns_;
    Travik::BlockSelector selector_;
    Encoding encoding_ = Encoding::Automatic;
    unsigned int counted_ = 0;
    // Made when blocks are printed: it holds a prototype of every class.
    std::optional<Travik::HwDatablockOldStyleInterpreter> interpreter_;

    int dump(const Image& image) {
        const Travik::ModuleImage module(image.bytes);
        int status = AllWell;
        counted_ = 0;
        for (const Travik::ImageBlock& block : module.blocks()) {
            const std::unique_ptr<Travik::HwDatablock> made = make(block);
            if (!selector_.selects(block))
                continue;
            const std::vector<Travik::ImageFinding> findings = module.findings(block);
            // A count beyond what the record holds makes a long text of zeros, of which one should know before it
            // comes.
            for (const Travik::ImageFinding& finding : findings) {
                if (finding.finding == Travik::Finding::CountBeyondCapacity)
                    reportFinding(image, finding);
            }
            // A stream of its own, in its default state: what a block leaves on it changes no other's text.
            BlockStream text(encoding_);
            print(*made, text);
            status = std::max(status, reportForTexts(image, findings));
        }
        return std::max(status, reportMisses(image, module, selector_));
    }

    /// The tables of the IQ modulator's operating states print how many of them were made in the process. Here that
    /// counts the image's own, printed or not, so that an image has one text whatever was done before.
    std::unique_ptr<Travik::HwDatablock> make(const Travik::ImageBlock& block) {
        auto& counter = Travik::HwDatablockIqOp3RfmCalibData::instanceCounter;
        counter = counted_;
        std::unique_ptr<Travik::HwDatablock> made = Travik::makeBlock(block);
        counted_ = counter;
        return made;
    }

    void print(Travik::HwDatablock& made, std::ostream& os) {
        if (interpreter_->printHwDatablockOldStyleInfo(&made, os))
            return;
        if (auto* const table = dynamic_cast<Travik::HwDatablock2Edition*>(&made))
            table->printToStream2Edition(os, {});
        else
            made.printToStream(os);
    }
};

} // namespace

std::unique_ptr<Command> dumpCommand(CLI::App& app) { return std::make_unique<Dump>(app); }

} // namespace Tool
