#include "Jobs.h"
#include "Terminal.h"

#include <travik/tables/SecondEdition.h>

#include <array>
#include <iomanip>
#include <sstream>

namespace Tool {

namespace {

using Cells = std::array<std::string, 8>;

const Cells heading{"OFFSET", "ID", "KEY", "CLASS", "SIZE", "CHECKSUM", "CRC-32", "UPDATE"};
constexpr std::array<bool, 8> isNumber{true, true, false, false, true, false, false, false};

class List : public Command {
public:
    explicit List(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("list", "List the blocks of an image with their checksums' state");
        command.add_option("image", paths_, "Module images; - is standard input")->required();
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
        std::vector<Cells> table{heading};
        for (const Travik::ImageBlock& block : module.blocks())
            table.push_back(cells(block));
        if (paths_.size() > 1)
            out() << image.name << ":\n";
        write(table);
        out() << module.blocks().size() << (module.blocks().size() == 1 ? " block, " : " blocks, ") << module.end()
              << " of " << image.bytes.size() << " bytes\n";
        if (!out())
            return CallFailed;
        return reportProblems(image, module.problems());
    }

    static Cells cells(const Travik::ImageBlock& block) {
        const bool isEnd = block.id == 0xFFFF;
        return {std::to_string(block.offset),
                std::to_string(block.id),
                keyOf(block).empty() ? "-" : toUtf8(keyOf(block)),
                classOf(block),
                std::to_string(block.sizeWord),
                isEnd                 ? "-"
                : block.checksumHolds ? "ok"
                                      : "wrong",
                block.crcHolds ? "ok" : "-",
                updateIndexOf(block)};
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

    static void write(const std::vector<Cells>& table) {
        std::array<std::size_t, 8> widths{};
        for (const Cells& row : table) {
            for (std::size_t i = 0; i < row.size(); ++i)
                widths[i] = std::max(widths[i], row[i].size());
        }
        for (const Cells& row : table) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                const bool last = i + 1 == row.size();
                out() << (isNumber[i] ? std::right : std::left) << std::setw(last ? 0 : static_cast<int>(widths[i]))
                      << row[i] << (last ? "\n" : "  ");
            }
        }
    }
};

} // namespace

std::unique_ptr<Command> listCommand(CLI::App& app) { return std::make_unique<List>(app); }

} // namespace Tool
