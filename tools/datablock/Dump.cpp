#include "Tool.h"

#include <travik/registry/Interpreter.h>
#include <travik/tables/SecondEdition.h>

#include <iostream>
#include <optional>
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
        interpreter_.emplace();
        return forEachImage(paths_, [this](const Image& image) { return dump(image); });
    }

private:
    std::vector<std::string> paths_;
    std::string selector_;
    Encoding encoding_ = Encoding::Automatic;
    // Made when blocks are printed: it holds a prototype of every class.
    std::optional<Travik::HwDatablockOldStyleInterpreter> interpreter_;

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
            print(block, text);
            if (!writeText(text.view(), encoding_))
                return CallFailed;
            status = std::max(status, reportForTexts(image, module.findings(block)));
        }
        if (module.blocks().empty() || (!selector_.empty() && !found))
            status = reportMissing(image, module, selector_);
        return status;
    }

    void print(const Travik::ImageBlock& block, std::ostream& os) {
        const std::unique_ptr<Travik::HwDatablock> made = Travik::makeBlock(block);
        if (interpreter_->printHwDatablockOldStyleInfo(made.get(), os))
            return;
        if (auto* const table = dynamic_cast<Travik::HwDatablock2Edition*>(made.get()))
            table->printToStream2Edition(os, {});
        else
            made->printToStream(os);
    }
};

} // namespace

std::unique_ptr<Command> dumpCommand(CLI::App& app) { return std::make_unique<Dump>(app); }

} // namespace Tool
