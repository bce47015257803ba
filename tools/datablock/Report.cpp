#include "ReportPage.h"
#include "Tool.h"
#include "Writing.h"

#include <travik/service/Report.h>

#include <unistd.h>

#include <algorithm>
#include <iostream>

namespace Tool {

namespace {

class Report : public Command {
public:
    explicit Report(CLI::App& app) {
        CLI::App& command =
            *app.add_subcommand("report", "A page with plots of one module, of two compared, or of many of a kind");
        addImagesOption(command, paths_);
        command.add_option("--against", against_, "Compare the one image with this one: changed blocks first")
            ->type_name("IMAGE");
        command
            .add_option("-o,--output", output_, "The page, one HTML file that needs nothing else; - is standard output")
            ->type_name("FILE")
            ->required();
        command.footer("Of several images the curves of all are drawn as a family, what lies far off is marked.");
    }

    int run() override {
        if (!against_.empty()) {
            if (paths_.size() != 1) {
                std::cerr << "datablock: --against compares one image with one\n";
                return CallFailed;
            }
            paths_.push_back(against_);
        }
        if (!isOutputUsable())
            return CallFailed;
        std::vector<Image> images;
        int status = AllWell;
        for (const std::string& path : paths_) {
            if (std::optional<Image> image = readImage(path))
                images.push_back(std::move(*image));
            else
                status = CallFailed;
        }
        if (images.empty() || (!against_.empty() && images.size() < paths_.size()))
            return CallFailed;
        for (const Image& image : images)
            status = std::max(status, reportFindings(image, Travik::ModuleImage(image.bytes), false));
        return write(images) ? status : CallFailed;
    }

private:
    std::vector<std::string> paths_;
    std::string against_;
    std::string output_;

    bool isOutputUsable() const {
        if (output_ == "-" && ::isatty(STDOUT_FILENO) == 1) {
            std::cerr << "datablock: standard output is a terminal, which no page is written to\n";
            return false;
        }
        for (const std::string& path : paths_) {
            if (Travik::isSameFile(path, output_)) {
                std::cerr << "datablock: " << InLine{output_}
                          << ": is one of the images, which no page is written over\n";
                return false;
            }
        }
        return true;
    }

    bool write(const std::vector<Image>& images) const {
        using Form = Travik::ReportForm;
        const Form form = !against_.empty() ? Form::Comparison : images.size() > 1 ? Form::Family : Form::Module;
        std::vector<Travik::ReportImage> reported;
        reported.reserve(images.size());
        for (const Image& image : images)
            reported.push_back({image.name, image.bytes});
        const std::string generator = "datablock " TRAVIK_VERSION;
        Travik::ReportDocuments documents = Travik::reportOf(reported, form, generator);
        return reportWriting(output_, writeImage(output_, reportPage(documents, generator)));
    }
};

} // namespace

std::unique_ptr<Command> reportCommand(CLI::App& app) { return std::make_unique<Report>(app); }

} // namespace Tool
