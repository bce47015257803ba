#include "Tool.h"

namespace Tool {

namespace {

class Verify : public Command {
public:
    explicit Verify(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("verify", "Check sizes and checksums; silent when all hold");
        addImagesOption(command, paths_);
    }

    int run() override {
        return forEachImage(paths_,
                            [](const Image& image) { return reportProblems(image, Travik::checkImage(image.bytes)); });
    }

private:
    std::vector<std::string> paths_;
};

} // namespace

std::unique_ptr<Command> verifyCommand(CLI::App& app) { return std::make_unique<Verify>(app); }

} // namespace Tool
