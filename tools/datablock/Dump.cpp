#include "Tool.h"

#include <travik/modules/IqModulatorTables.h>
#include <travik/registry/Interpreter.h>
#include <travik/tables/SecondEdition.h>

#include <iostream>
#include <optional>

namespace Tool {

namespace {

class Dump : public Command {
public:
    explicit Dump(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("dump", "Print every block of an image as commented text");
        addImagesOption(command, paths_);
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
    unsigned int counted_ = 0;
    // Made when blocks are printed: it holds a prototype of every class.
    std::optional<Travik::HwDatablockOldStyleInterpreter> interpreter_;

    int dump(const Image& image) {
        const Travik::ModuleImage module(image.bytes);
        int status = AllWell;
        bool found = false;
        counted_ = 0;
        for (const Travik::ImageBlock& block : module.blocks()) {
            const std::unique_ptr<Travik::HwDatablock> made = make(block);
            if (!selector_.empty() && !isSelected(block, selector_))
                continue;
            found = true;
            reportCounts(image, block);
            // A stream of its own, in its default state: what a block leaves on it changes no other's text.
            BlockStream text(encoding_);
            const bool known = print(block, *made, text);
            const std::vector<Travik::ImageProblem> problems = module.problems(block);
            // Bytes that are no block are not an unknown one as well.
            if (!known && (problems.empty() || problems.front().fault >= Travik::ImageFault::OddSize)) {
                reportProblem(image, block.offset, block.id, "unknown identifier");
                status = DataWrong;
            }
            status = std::max(status, reportProblems(image, problems));
        }
        if (!selector_.empty() && !found) {
            std::cerr << InLine{image.name} << ": no block " << InLine{selector_} << '\n';
            status = DataWrong;
        }
        return status;
    }

    /// The tables of the IQ modulator's operating states print how many of them were made in the process. Here that
    /// counts the image's own, printed or not, so that an image has one text whatever was done before.
    std::unique_ptr<Travik::HwDatablock> make(const Travik::ImageBlock& block) {
        unsigned int& counter = Travik::HwDatablockIqOp3RfmCalibData::instanceCounter;
        counter = counted_;
        std::unique_ptr<Travik::HwDatablock> made = Travik::makeBlock(block);
        counted_ = counter;
        return made;
    }

    /// A count beyond what the record holds makes a long text of zeros, of which one should know before it comes.
    static void reportCounts(const Image& image, const Travik::ImageBlock& block) {
        const Travik::FieldList fields =
            block.entry ? block.entry->fields(*block.entry, block.id) : Travik::FieldList();
        for (const Travik::Field& count : fields) {
            const unsigned int capacity = capacityOf(fields, count);
            if (count.role != Travik::Role::Count || capacity == 0)
                continue;
            Travik::visitFields(block.bytes, {&count, 1}, Travik::Extent::Whole, [&](const Travik::FieldValue& field) {
                // Texts show every count as one without a sign.
                const double shown = field.value < 0 ? field.value + 0x1p32 : field.value;
                if (shown > capacity)
                    reportProblem(image, block.offset, block.id,
                                  "count beyond the capacity (" + std::string(count.name) + " is " +
                                      std::to_string(static_cast<long long>(shown)) + ", room is for " +
                                      std::to_string(capacity) + ")");
            });
        }
    }

    /// How many entries the field may count; 0 where it counts those of no other field.
    static unsigned int capacityOf(const Travik::FieldList& fields, const Travik::Field& count) {
        unsigned int capacity = 0;
        for (const Travik::Field& field : fields) {
            for (const Travik::Dimension& dimension : std::span(field.dimensions).first(field.rank)) {
                if (dimension.count && dimension.count == std::string_view(count.name))
                    capacity = std::max(capacity, dimension.extent);
            }
        }
        return capacity;
    }

    bool print(const Travik::ImageBlock& block, Travik::HwDatablock& made, std::ostream& os) {
        if (interpreter_->printHwDatablockOldStyleInfo(&made, os))
            return true;
        if (auto* const table = dynamic_cast<Travik::HwDatablock2Edition*>(&made)) {
            table->printToStream2Edition(os, {});
            return true;
        }
        made.printToStream(os);
        return block.entry != nullptr;
    }
};

} // namespace

std::unique_ptr<Command> dumpCommand(CLI::App& app) { return std::make_unique<Dump>(app); }

} // namespace Tool
