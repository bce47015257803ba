#include "Jobs.h"

namespace Tool {

namespace {

class Verify : public Command {
public:
    explicit Verify(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("verify", "Check sizes and checksums; silent when all hold");
        addImagesOption(command, paths_);
        addJobsOption(command, jobs_);
        command.add_flag("--notes", notes_, "Tell what is no damage but worth a look as well");
    }

    int run() override {
        return forEachImage(paths_, jobs_, [this](const Image& image, std::size_t) {
            return reportFindings(image, Travik::ModuleImage(image.bytes), notes_);
        });
    }

private:
    std::vector<std::string> paths_;
    unsigned int jobs_ = 1;
    bool notes_ = false;
};

} // namespace

std::unique_ptr<Command> verifyCommand(CLI::App& app) { return std::make_unique<Verify>(app); }

} // namespace Tool
