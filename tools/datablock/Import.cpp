#include "Tool.h"

#include <travik/datablock/Bytes.h>
#include <travik/datablock/Checksum.h>
#include <travik/text/TextExchange.h>

#include <algorithm>
#include <iostream>
#include <sstream>

namespace Tool {

namespace {

using Travik::ExchangeFormat;

class Import : public Command {
public:
    explicit Import(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("import", "Read an exported, edited table back into an image");
        command.add_option("text", textPath_, "Exchange text; - is standard input")->required();
        command.add_option("--into", imagePath_, "Module image that holds the block; - is standard input")
            ->type_name("IMAGE")
            ->required();
        command.add_option("-o,--output", outputPath_, "Image to write instead of IMAGE; - is standard output")
            ->type_name("OUT");
        command.add_option("--block", selector_, "Read the text as this block's, whichever key name it begins with")
            ->type_name("ID|KEY");
        command.add_flag("--force", force_, "Import what could be read of a text with errors");
    }

    int run() override {
        if (imagePath_ == "-" && (textPath_ == "-" || outputPath_.empty()))
            return refuse(CallFailed, "standard input",
                          textPath_ == "-" ? "cannot be text and image at once" : "cannot be replaced, use --output");
        const std::optional<Image> text = readImage(textPath_);
        std::optional<Image> image = text ? readImage(imagePath_) : std::nullopt;
        if (!image)
            return CallFailed;
        std::istringstream stream(std::string(text->bytes.begin(), text->bytes.end()));
        const ExchangeFormat* const format = findFormat(stream);
        if (!format && !selector_.empty())
            return refuse(CallFailed, selector_, "no block that is exchanged as text");
        if (!format)
            return refuse(DataWrong, text->name, "holds no \"ID:\" line of a block that is exchanged as text");

        std::vector<char> table;
        if (!read(*text, stream, *format, table))
            return DataWrong;
        if (!replaceBlock(*image, *format, table))
            return DataWrong;
        return writeFileAtomically(outputPath_.empty() ? imagePath_ : outputPath_, image->bytes) ? AllWell : CallFailed;
    }

private:
    std::string textPath_;
    std::string imagePath_;
    std::string outputPath_;
    std::string selector_;
    bool force_ = false;

    static int refuse(int status, const std::string& name, std::string_view why) {
        std::cerr << InLine{name} << ": " << why << '\n';
        return status;
    }

    const ExchangeFormat* findFormat(std::istream& text) const {
        std::vector<const ExchangeFormat*> formats;
        for (const Travik::CatalogueEntry& entry : Travik::catalogue()) {
            if (entry.exchange && (selector_.empty() || selector_ == entry.exchange->table.key ||
                                   selector_ == std::to_string(entry.first)))
                formats.push_back(entry.exchange);
        }
        if (!selector_.empty())
            return formats.empty() ? nullptr : formats.front();
        return Travik::findExchangeFormat(text, formats);
    }

    bool read(const Image& text, std::istream& stream, const ExchangeFormat& format, std::vector<char>& table) const {
        bool sound = true;
        const auto complain = [&](std::string_view message) {
            std::cerr << InLine{text.name} << ": " << message << '\n';
            sound = false;
        };
        table = Travik::readExchangeText(stream, format, complain);
        const Travik::TableShape& shape = format.shape;
        const auto rows = Travik::bytes::load<unsigned int>(table, shape.rowCountOffset());
        const auto columns = Travik::bytes::load<unsigned int>(table, shape.columnCountOffset());
        if (rows > shape.rows || columns > shape.columns)
            complain("COUNT is " + std::to_string(rows) + " * " + std::to_string(columns) + ", the block holds " +
                     std::to_string(shape.rows) + " * " + std::to_string(shape.columns) + "; the rest would be lost");
        // A text without the key name describes no block, which nothing can force into one.
        const bool found = Travik::bytes::load<unsigned short>(table, 0) == format.table.id;
        if (sound || (force_ && found))
            return true;
        refuse(DataWrong, text.name, found ? "not imported, use --force to import it all the same" : "not imported");
        return false;
    }

    static bool replaceBlock(Image& image, const ExchangeFormat& format, std::vector<char>& table) {
        const Travik::ModuleImage module(image.bytes);
        const auto& blocks = module.blocks();
        const auto isWanted = [&](const Travik::ImageBlock& block) { return block.id == format.table.id; };
        const auto block = std::ranges::find_if(blocks, isWanted);
        if (block == blocks.end()) {
            std::cerr << InLine{image.name} << ": no block " << format.table.id << " (" << format.table.key << ")\n";
            return false;
        }
        if (const auto second = std::find_if(block + 1, blocks.end(), isWanted); second != blocks.end()) {
            reportProblem(image, second->offset, second->id, "one more of this block, neither is replaced");
            return false;
        }
        if (block->sizeWord != table.size() || block->bytes.size() != table.size()) {
            reportProblem(image, block->offset, block->id,
                          "has " + std::to_string(std::min<std::size_t>(block->sizeWord, block->bytes.size())) +
                              " bytes, not the " + std::to_string(table.size()) + " of its class, not replaced");
            return false;
        }
        keepWhatTextDoesNotSay(format, block->bytes, table);
        std::ranges::copy(table, image.bytes.begin() + static_cast<std::ptrdiff_t>(block->offset));
        return true;
    }

    /// The alignment word and the index values, then the checksum of it all.
    static void keepWhatTextDoesNotSay(const ExchangeFormat& format, std::span<const char> old,
                                       std::vector<char>& table) {
        std::copy_n(old.begin() + offsetof(Travik::HwSDatablockHeader, alignment), sizeof(short),
                    table.begin() + offsetof(Travik::HwSDatablockHeader, alignment));
        std::ranges::copy(old.subspan(format.shape.indexOffset()), table.begin() + format.shape.indexOffset());
        const unsigned short sum = Travik::sum16(table.data(), table.size());
        Travik::bytes::store(table, offsetof(Travik::HwSDatablockHeader, checksum),
                             static_cast<unsigned short>(0x10000 - sum));
    }
};

} // namespace

std::unique_ptr<Command> importCommand(CLI::App& app) { return std::make_unique<Import>(app); }

} // namespace Tool
