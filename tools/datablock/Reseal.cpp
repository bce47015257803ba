#include "Tool.h"
#include "Writing.h"

#include <travik/service/ImageChange.h>

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace Tool {

namespace {

class Reseal : public Command {
public:
    explicit Reseal(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("reseal", "Make wrong checksums and CRC-32s right");
        command.add_option("image", update_.image, "Module image; - is standard input")->required();
        addBlockOption(command, blocks_);
        addUpdateOptions(command, update_, "Write nothing, show each sum, old and new");
    }

    int run() override {
        ImageUpdate update(update_);
        Image* const image = update.image();
        if (!image)
            return CallFailed;
        const Travik::BlockSelector selector(blocks_);
        if (const int misses = reportMisses(*image, Travik::ModuleImage(image->bytes), selector); misses != AllWell)
            return misses;
        const Travik::ResealReport report = Travik::resealImage(image->bytes, selector);
        if (!update.commit())
            return CallFailed;
        // Told once it is so; beside an image on standard output there is no room.
        std::ostream& lines = update_.output == "-" && !update_.dryRun ? std::cerr : std::cout;
        for (const Travik::SumChange& change : report.changes)
            lines << InLine{lineOf(change)} << '\n';
        int status = AllWell;
        for (const Travik::ResealReport::Left& left : report.left) {
            reportProblem(*image, left.offset, left.id, "it is doubtful where it ends, left as it is");
            status = DataWrong;
        }
        update.tellBackup();
        const Travik::ModuleImage module(image->bytes);
        if (selector.selectsAll())
            return std::max(status, reportFindings(*image, module, false));
        for (const Travik::ImageBlock& block : module.blocks()) {
            if (selector.selects(block))
                status = std::max(status, reportProblems(*image, module.problems(block)));
        }
        return status;
    }

private:
    UpdateOptions update_;
    std::vector<std::string> blocks_;

    static std::string lineOf(const Travik::SumChange& change) {
        const int digits = change.sum == Travik::Sum::Crc32 ? 8 : 4;
        std::ostringstream line;
        line << change.block << ", offset " << change.offset << " (0x" << std::hex << change.offset
             << "): " << nameOf(change.sum) << std::setfill('0') << " 0x" << std::setw(digits) << change.before
             << " -> 0x" << std::setw(digits) << change.after;
        return line.str();
    }
};

} // namespace

std::unique_ptr<Command> resealCommand(CLI::App& app) { return std::make_unique<Reseal>(app); }

} // namespace Tool
