#include "Jobs.h"

namespace Tool {

namespace {

class Verify : public Command {
public:
    explicit Verify(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("verify", "Check sizes and checksums; silent when all hold");
        command.add_option("image", paths_, "Module images; - is standard input")->required();
        addJobsOption(command, jobs_);
    }

    int run() override {
        return forEachImage(paths_, jobs_, [](const Image& image, std::size_t) {
            return reportProblems(image, Travik::checkImage(image.bytes));
        });
    }

private:
    std::vector<std::string> paths_;
    unsigned int jobs_ = 1;
};

} // namespace

std::unique_ptr<Command> verifyCommand(CLI::App& app) { return std::make_unique<Verify>(app); }

} // namespace Tool
