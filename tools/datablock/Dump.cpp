#include "Tool.h"

#include <travik/registry/Interpreter.h>
#include <travik/tables/SecondEdition.h>

#include <sstream>

namespace Tool {

namespace {

class Dump : public Command {
public:
    explicit Dump(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("dump", "Print every block of an image as commented text");
        command.add_option("image", paths_, "Module images; - is standard input")->required();
        command.add_option("--block", selector_, "Only the blocks of this identifier or key name")->type_name("ID|KEY");
        addEncodingOption(command, encoding_);
    }

    int run() override {
        return forEachImage(paths_, [this](const Image& image) { return dump(image); });
    }

private:
    std::vector<std::string> paths_;
    std::string selector_;
    Encoding encoding_ = Encoding::Automatic;
    Travik::HwDatablockOldStyleInterpreter interpreter_;

    int dump(const Image& image) {
        const Travik::ModuleImage module(image.bytes);
        int status = AllWell;
        bool found = false;
        for (const Travik::ImageBlock& block : module.blocks()) {
            if (!selector_.empty() && !isSelected(block, selector_))
                continue;
            found = true;
            // A stream of its own, in its default state: what a block leaves on it changes no other's text.
            std::ostringstream text;
            if (!print(block, text)) {
                reportProblem(image, block.offset, block.id, "unknown identifier");
                status = DataWrong;
            }
            if (!writeText(text.view(), encoding_))
                return CallFailed;
        }
        if (!selector_.empty() && !found) {
            std::cerr << image.name << ": no block " << selector_ << '\n';
            status = DataWrong;
        }
        for (const Travik::ImageProblem& problem : module.problems()) {
            if (!selector_.empty() && !concerns(module, problem))
                continue;
            reportProblem(image, problem.offset, problem.id, problem.text);
            status = DataWrong;
        }
        return status;
    }

    bool concerns(const Travik::ModuleImage& module, const Travik::ImageProblem& problem) const {
        const auto& blocks = module.blocks();
        const auto block =
            std::find_if(blocks.begin(), blocks.end(), [&](const auto& b) { return b.offset == problem.offset; });
        return block != blocks.end() && isSelected(*block, selector_);
    }

    bool print(const Travik::ImageBlock& block, std::ostream& os) {
        const std::unique_ptr<Travik::HwDatablock> made = Travik::makeBlock(block);
        if (interpreter_.printHwDatablockOldStyleInfo(made.get(), os))
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
