#include "Tool.h"
#include "Writing.h"

#include <travik/service/TableImport.h>

#include <iostream>

namespace Tool {

namespace {

class Import : public Command {
public:
    explicit Import(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("import", "Read an exported, edited table back into an image");
        command.add_option("text", textPath_, "Exchange text; - is standard input")->required();
        command.add_option("--into", update_.image, "Module image that holds the block; - is standard input")
            ->type_name("IMAGE")
            ->required();
        command.add_option("--block", selector_, "Which table of the text; needed where it holds more than one")
            ->type_name("ID|KEY");
        command.add_flag("--force", force_, "Import into a block whose checksum does not hold, and make it hold");
        addUpdateOptions(command, update_, "Write nothing, show what would change, cell by cell");
    }

    int run() override {
        if (update_.image == "-" && textPath_ == "-")
            return refuse(CallFailed, "standard input", "cannot be text and image at once");
        for (const std::string& written : {update_.image, update_.output}) {
            if (Travik::isSameFile(textPath_, written))
                return refuse(CallFailed, "datablock: " + written, "is the text, which would be lost");
        }
        const std::optional<Image> text = readImage(textPath_);
        if (!text)
            return CallFailed;
        const std::string_view characters(text->bytes.data(), text->bytes.size());
        const Travik::TableChoice choice = Travik::chooseTable(characters, selector_);
        if (!choice.format)
            return choice.isTextWrong ? refuse(DataWrong, text->name, choice.error)
                                      : refuse(CallFailed, selector_, choice.error);

        ImageUpdate update(update_);
        Image* const image = update.image();
        if (!image)
            return CallFailed;
        const Travik::TableImport import = Travik::importTable(image->bytes, characters, *choice.format, force_);
        if (!import.succeeded())
            return explain(*text, *image, *choice.format, import);

        if (update_.dryRun)
            showChanges(import.reading);
        if (!update.commit())
            return CallFailed;
        if (import.wasDamaged)
            reportProblem(*image, import.offset, static_cast<unsigned short>(choice.format->table.id),
                          "its checksum did not hold and was made to");
        summarise(update, *choice.format, import.reading);
        return reportProblems(*image, Travik::checkImage(image->bytes));
    }

private:
    std::string textPath_;
    UpdateOptions update_;
    std::string selector_;
    bool force_ = false;

    static int refuse(int status, const std::string& name, std::string_view why) {
        std::cerr << InLine{name} << ": " << why << '\n';
        return status;
    }

    static int explain(const Image& text, const Image& image, const Travik::ExchangeFormat& format,
                       const Travik::TableImport& import) {
        if (import.concernsBlock)
            reportProblem(image, import.offset, static_cast<unsigned short>(format.table.id), import.refusal);
        else if (!import.refusal.empty())
            std::cerr << InLine{image.name} << ": " << import.refusal << '\n';
        for (const Travik::ExchangeFinding& finding : import.reading.findings) {
            std::cerr << InLine{text.name};
            if (finding.line > 0)
                std::cerr << ": line " << finding.line;
            if (!finding.word.empty())
                std::cerr << ", \"" << InLine{finding.word} << '"';
            std::cerr << ": " << finding.text << '\n';
        }
        if (const std::size_t more = import.reading.findingCount - import.reading.findings.size(); more > 0)
            std::cerr << InLine{text.name} << ": and " << more << " more\n";
        return refuse(DataWrong, text.name,
                      import.wasDamaged && !import.refusal.empty()
                          ? "not imported, use --force to import it all the same"
                          : "not imported");
    }

    static std::string counts(const Travik::ExchangeCounts& counts) {
        return std::to_string(counts.rows) + " * " + std::to_string(counts.columns);
    }

    static std::string countChange(const Travik::ExchangeReading& reading) {
        return "COUNT " + counts(reading.before) + " -> " + counts(reading.after);
    }

    static void showChanges(const Travik::ExchangeReading& reading) {
        if (reading.before != reading.after)
            std::cout << countChange(reading) << '\n';
        for (const Travik::ExchangeChange& change : reading.changes)
            std::cout << "row " << change.row << ", column " << change.column << ": " << change.before << " -> "
                      << change.after << '\n';
    }

    void summarise(const ImageUpdate& update, const Travik::ExchangeFormat& format,
                   const Travik::ExchangeReading& reading) const {
        const std::size_t changes = reading.changes.size();
        std::cerr << InLine{update.target()} << ": " << changes << (changes == 1 ? " value of " : " values of ")
                  << format.table.key << (update_.dryRun ? " would change" : " changed");
        if (reading.before != reading.after)
            std::cerr << ", " << countChange(reading);
        update.endSummary();
    }
};

} // namespace

std::unique_ptr<Command> importCommand(CLI::App& app) { return std::make_unique<Import>(app); }

} // namespace Tool
