#include "InfoJson.h"
#include "Tool.h"

#include <iostream>

namespace Tool {

namespace {

class Info : public Command {
public:
    explicit Info(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("info", "Who a module is, its last service and how worn it is");
        addImagesOption(command, paths_);
        command.footer("A counter that differs from its backup is marked; that alone makes no exit status of 1.");
        command.add_flag("--json", asJson_, "Write one JSON array, an object for each image");
    }

    int run() override {
        Json document = Json::array();
        const int status = forEachImage(paths_, [&](const Image& image) { return info(image, document); });
        if (asJson_)
            std::cout << toText(document);
        return std::cout ? status : CallFailed;
    }

private:
    std::vector<std::string> paths_;
    bool asJson_ = false;
    bool isFirst_ = true;

    int info(const Image& image, Json& document) {
        const Travik::ModuleInfo info = Travik::moduleInfo(Travik::ModuleImage(image.bytes));
        if (asJson_) {
            document.push_back(toJson(image.name, info));
        } else {
            if (paths_.size() > 1)
                std::cout << (isFirst_ ? "" : "\n") << InLine{image.name} << ":\n";
            Travik::printModuleInfo(info, std::cout);
            isFirst_ = false;
        }
        return reportProblems(image, info.problems);
    }
};

} // namespace

std::unique_ptr<Command> infoCommand(CLI::App& app) { return std::make_unique<Info>(app); }

} // namespace Tool
