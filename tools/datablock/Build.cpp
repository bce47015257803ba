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
    }

    int run() override {
        const std::optional<Image> document = readImage(documentPath_);
        if (!document)
            return CallFailed;
        const Travik::BuiltImage built = Travik::buildImage({document->bytes.data(), document->bytes.size()}, options_);
        if (!built.error.empty()) {
            std::cerr << InLine{document->name} << ": " << built.error << '\n';
            return DataWrong;
        }
        return reportWriting(outputPath_, writeImage(outputPath_, built.bytes)) ? AllWell : CallFailed;
    }

private:
    std::string documentPath_;
    std::string outputPath_;
    Travik::BuildOptions options_;
};

} // namespace

std::unique_ptr<Command> buildCommand(CLI::App& app) { return std::make_unique<Build>(app); }

} // namespace Tool
