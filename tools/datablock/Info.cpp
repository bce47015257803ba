#include "InfoJson.h"
#include "Jobs.h"
#include "Terminal.h"

#include <iostream>

namespace Tool {

namespace {

class Info : public Command {
public:
    explicit Info(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("info", "Who a module is, its last service and how worn it is");
        addImagesOption(command, paths_);
        addJobsOption(command, jobs_);
        command.footer("A counter that differs from its backup is marked; that alone makes no exit status of 1.");
        command.add_flag("--json", asJson_, "Write one JSON array, an object for each image");
    }

    int run() override {
        if (!asJson_)
            startPager();
        std::vector<Json> objects(paths_.size());
        const auto inform = [&](const Image& image, std::size_t place) { return info(image, objects[place]); };
        const int status = forEachImage(paths_, jobs_, inform, "\n");
        if (!asJson_)
            return status;
        Json document = Json::array();
        for (Json& object : objects) {
            if (!object.is_null())
                document.push_back(std::move(object));
        }
        std::cout << toText(document);
        return std::cout ? status : CallFailed;
    }

private:
    std::vector<std::string> paths_;
    bool asJson_ = false;
    unsigned int jobs_ = 1;

    int info(const Image& image, Json& object) const {
        const Travik::ModuleInfo info = Travik::moduleInfo(Travik::ModuleImage(image.bytes));
        if (asJson_) {
            object = toJson(image.name, info);
        } else {
            if (paths_.size() > 1)
                out() << InLine{image.name} << ":\n";
            Travik::printModuleInfo(info, out());
        }
        return reportProblems(image, info.problems);
    }
};

} // namespace

std::unique_ptr<Command> infoCommand(CLI::App& app) { return std::make_unique<Info>(app); }

} // namespace Tool
