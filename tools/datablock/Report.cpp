#include "ReportAssets.h"
#include "Tool.h"
#include "Writing.h"

#include <travik/service/Report.h>

#include <QCryptographicHash>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <iostream>

namespace Tool {

namespace {

/// Text inside HTML.
std::string escaped(std::string_view text) {
    std::string made;
    for (const char character : text) {
        switch (character) {
        case '<':
            made += "&lt;";
            break;
        case '>':
            made += "&gt;";
            break;
        case '&':
            made += "&amp;";
            break;
        case '"':
            made += "&quot;";
            break;
        default:
            made += character;
        }
    }
    return made;
}

/// What a content security policy lets an inline element pass by.
std::string hashOf(std::string_view text) {
    const QByteArray bytes = QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
    return "'sha256-" + QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toBase64().toStdString() + '\'';
}

std::string dataElement(const std::string& id, std::string_view json) {
    return "<script type=\"application/json\" id=\"" + id + "\">" + std::string(json) + "</script>\n";
}

/// The page: the template with its parts in place. Nothing but its own script and style sheet may run or be loaded.
std::string page(const Travik::ReportDocuments& documents, const std::string& title, const std::string& generator) {
    std::string data = dataElement("head-data", documents.head);
    for (std::size_t i = 0; i < documents.blocks.size(); ++i)
        data += dataElement("block-data-" + std::to_string(i), documents.blocks[i]);
    const std::array<std::pair<std::string_view, std::string>, 6> parts{
        {{"policy", "default-src 'none'; script-src " + hashOf(reportScript) + "; style-src " + hashOf(reportStyle) +
                        "; img-src data:; base-uri 'none'; form-action 'none'"},
         {"generator", escaped(generator)},
         {"title", escaped(title)},
         {"style", std::string(reportStyle)},
         {"script", std::string(reportScript)},
         {"data", std::move(data)}}};
    std::string made;
    std::string_view rest = reportHtml;
    for (std::size_t open = rest.find("{{"); open != std::string_view::npos; open = rest.find("{{")) {
        made += rest.substr(0, open);
        const std::size_t close = rest.find("}}", open);
        const std::string_view name = rest.substr(open + 2, close - open - 2);
        made += std::ranges::find(parts, name, &std::pair<std::string_view, std::string>::first)->second;
        rest.remove_prefix(close + 2);
    }
    return made.append(rest);
}

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
        for (const Image& image : images)
            reported.push_back({image.name, image.bytes});
        const std::string generator = "datablock " TRAVIK_VERSION;
        const Travik::ReportDocuments documents = Travik::reportOf(reported, form, generator);
        return reportWriting(output_, writeImage(output_, page(documents, documents.title, generator)));
    }
};

} // namespace

std::unique_ptr<Command> reportCommand(CLI::App& app) { return std::make_unique<Report>(app); }

} // namespace Tool
