#include "Terminal.h"
#include "Tool.h"

#include <travik/registry/Interpreter.h>
#include <travik/tables/SecondEdition.h>

#include <optional>
#include <sstream>

namespace Tool {

namespace {

class Dump : public Command {
public:
    explicit Dump(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("dump", "Print every block of an image as commented text");
        command.add_option("image", paths_, "Module images; - is standard input")->required();
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
    // Made when blocks are printed: it holds a prototype of every class.
    std::optional<Travik::HwDatablockOldStyleInterpreter> interpreter_;

    int dump(const Image& image) {
        const Travik::ModuleImage module(image.bytes);
        int status = AllWell;
        for (const Travik::ImageBlock& block : module.blocks()) {
            if (!selector_.selects(block))
                continue;
            // A stream of its own, in its default state: what a block leaves on it changes no other's text.
            std::ostringstream text;
            const bool known = print(block, text);
            if (!writeText(text.view(), encoding_))
                return CallFailed;
            const std::vector<Travik::ImageProblem> problems = module.problems(block);
            // Bytes that are no block are not an unknown one as well.
            if (!known && (problems.empty() || problems.front().fault >= Travik::ImageFault::OddSize)) {
                reportProblem(image, block.offset, block.id, "unknown identifier");
                status = DataWrong;
            }
            status = std::max(status, reportProblems(image, problems));
        }
        return std::max(status, reportMisses(image, module, selector_));
    }

    bool print(const Travik::ImageBlock& block, std::ostream& os) {
        const std::unique_ptr<Travik::HwDatablock> made = Travik::makeBlock(block);
        if (interpreter_->printHwDatablockOldStyleInfo(made.get(), os))
            return true;
        if (auto* const table = dynamic_cast<Travik::HwDatablock2Edition*>(made.get())) {
            table->printToStream2Edition(os, {});
            return true;
        }
        made->printToStream(os);
        return block.entry != nullptr;
    }
};

} // namespace

std::unique_ptr<Command> dumpCommand(CLI::App& app) { return std::make_unique<Dump>(app); }

} // namespace Tool
