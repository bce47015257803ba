#include "Tool.h"

namespace Tool {

namespace {

class Verify : public Command {
public:
    explicit Verify(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("verify", "Check sizes and checksums; silent when all hold");
        addImagesOption(command, paths_);
        command.add_flag("--notes", notes_, "Tell what is no damage but worth a look as well");
    }

    int run() override {
        return forEachImage(paths_, [this](const Image& image) {
            return reportFindings(image, Travik::ModuleImage(image.bytes), notes_);
        });
    }

private:
    std::vector<std::string> paths_;
    bool notes_ = false;
};

} // namespace

std::unique_ptr<Command> verifyCommand(CLI::App& app) { return std::make_unique<Verify>(app); }

} // namespace Tool
