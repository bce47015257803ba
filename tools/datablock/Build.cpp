#include "Tool.h"
#include "Writing.h"

#include <travik/service/Document.h>

#include <iostream>

namespace Tool {

namespace {

class Build : public Command {
public:
    explicit Build(CLI::App& app) {
        CLI::App& command =
            *app.add_subcommand("build", "Build an image from a JSON document, as show --json writes it");
        command.add_option("document", documentPath_, "JSON document; - is standard input")->required();
        command.add_option("-o,--output", outputPath_, "Image to write; - is standard output")
            ->type_name("IMAGE")
            ->required();
        command.add_option("--image", options_.image, "Which image of a document that holds several")
            ->type_name("NAME");
        command.add_flag("--keep-checksums", options_.keepChecksums,
                         "Leave the checksums of changed blocks as the document has them");
        addWriteOptions(command, write_);
    }

    int run() override {
        if (Travik::isSameFile(documentPath_, outputPath_)) {
            std::cerr << "datablock: " << InLine{outputPath_} << ": is the document, which would be lost\n";
            return CallFailed;
        }
        const std::optional<Image> document = readImage(documentPath_);
        if (!document)
            return CallFailed;
        const Travik::BuiltImage built = Travik::buildImage({document->bytes.data(), document->bytes.size()}, options_);
        if (!built.error.empty()) {
            std::cerr << InLine{document->name} << ": " << built.error << '\n';
            return DataWrong;
        }
        const Travik::WriteReport report = writeImage(outputPath_, built.bytes, write_);
        if (!reportWriting(outputPath_, report))
            return CallFailed;
        tellBackup(outputPath_, report);
        return AllWell;
    }

private:
    std::string documentPath_;
    std::string outputPath_;
    Travik::BuildOptions options_;
    Travik::WriteOptions write_;
};

} // namespace

std::unique_ptr<Command> buildCommand(CLI::App& app) { return std::make_unique<Build>(app); }

} // namespace Tool
