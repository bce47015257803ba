#include "Jobs.h"
#include "Terminal.h"

#include <travik/tables/SecondEdition.h>

#include <array>
#include <iomanip>
#include <sstream>

namespace Tool {

namespace {

using Cells = std::array<std::string, 8>;
using Widths = std::array<std::size_t, 8>;

const Cells heading{"OFFSET", "ID", "KEY", "CLASS", "SIZE", "CHECKSUM", "CRC-32", "UPDATE"};
constexpr std::array<bool, 8> isNumber{true, true, false, false, true, false, false, false};

class List : public Command {
public:
    explicit List(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("list", "List the blocks of an image with their checksums' state");
        addImagesOption(command, paths_);
        addJobsOption(command, jobs_);
    }

    int run() override {
        startPager();
        return forEachImage(paths_, jobs_, [this](const Image& image, std::size_t) { return list(image); });
    }

private:
    std::vector<std::string> paths_;
    unsigned int jobs_ = 1;

    int list(const Image& image) const {
        const Travik::ModuleImage module(image.bytes);
        if (paths_.size() > 1)
            out() << InLine{image.name} << ":\n";
        // Twice through the blocks: a million of them make a table that no memory needs to hold.
        Widths widths{};
        widen(widths, heading);
        for (const Travik::ImageBlock& block : module.blocks())
            widen(widths, cells(block));
        write(widths, heading);
        for (const Travik::ImageBlock& block : module.blocks())
            write(widths, cells(block));
        out() << module.blocks().size() << (module.blocks().size() == 1 ? " block, " : " blocks, ") << module.end()
              << " of " << image.bytes.size() << " bytes\n";
        if (!out())
            return CallFailed;
        return reportFindings(image, module, true);
    }

    static Cells cells(const Travik::ImageBlock& block) {
        return {std::to_string(block.offset),
                std::to_string(block.id),
                keyOf(block).empty() ? "-" : Travik::toUtf8(keyOf(block)),
                classOf(block),
                std::to_string(block.sizeWord),
                checksumOf(block),
                block.crcHolds          ? "ok"
                : block.isSecondEdition ? "wrong"
                                        : "-",
                updateIndexOf(block)};
    }

    static std::string checksumOf(const Travik::ImageBlock& block) {
        if (block.isEnd())
            return "-";
        if (block.checksumChecked)
            return block.checksumHolds ? "ok" : "wrong";
        return block.checksumHolds ? "not checked" : "cut off";
    }

    static std::string classOf(const Travik::ImageBlock& block) {
        if (block.isSecondEdition)
            return "HwDatablock2Edition";
        return block.entry ? std::string(block.entry->className) : "unknown";
    }

    static std::string updateIndexOf(const Travik::ImageBlock& block) {
        if (!block.isSecondEdition)
            return "-";
        std::ostringstream text;
        Travik::TextWriter(text).fixed(Travik::SecondEditionHeader(block.bytes).updateIndex / 100.0, 2);
        return text.str();
    }

    static void widen(Widths& widths, const Cells& row) {
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    }

    static void write(const Widths& widths, const Cells& row) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            const bool last = i + 1 == row.size();
            out() << (isNumber[i] ? std::right : std::left) << std::setw(last ? 0 : static_cast<int>(widths[i]))
                  << row[i] << (last ? "\n" : "  ");
        }
    }
};

} // namespace

std::unique_ptr<Command> listCommand(CLI::App& app) { return std::make_unique<List>(app); }

} // namespace Tool
