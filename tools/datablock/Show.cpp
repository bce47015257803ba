#include "Tool.h"

#include <travik/service/Document.h>

#include <algorithm>
#include <iostream>

namespace Tool {

namespace {

class Show : public Command {
public:
    explicit Show(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("show", "The values of an image's blocks by name");
        addImagesOption(command, paths_);
        command.add_option("--block", selectors_, "Only the blocks of this identifier or key name")
            ->type_name("ID|KEY")
            ->allow_extra_args(false);
        command.add_option("--field", fields_, "Only the fields of this name")
            ->type_name("NAME")
            ->allow_extra_args(false);
        command.add_flag("--json", asJson_, "Write one JSON array, an object for each image; build reads it back")
            ->required();
    }

    int run() override {
        Travik::DocumentWriter document;
        const int status = forEachImage(paths_, [&](const Image& image) { return show(image, document); });
        // Composed before it is written: there is no half a document.
        std::cout << document.finish();
        return std::cout ? status : CallFailed;
    }

private:
    std::vector<std::string> paths_;
    std::vector<std::string> selectors_;
    std::vector<std::string> fields_;
    bool asJson_ = false;

    int show(const Image& image, Travik::DocumentWriter& document) const {
        const Travik::ModuleImage module(image.bytes);
        const std::size_t blocks = document.add(image.name, image.bytes, module, filter());
        const int status = reportProblems(image, module.problems());
        if (blocks > 0 || (selectors_.empty() && fields_.empty()))
            return status;
        std::cerr << InLine{image.name} << ": no block" << InLine{list(selectors_)}
                  << (fields_.empty() ? "" : " with a field") << InLine{list(fields_)} << '\n';
        return DataWrong;
    }

    Travik::DocumentFilter filter() const {
        Travik::DocumentFilter filter;
        if (!selectors_.empty())
            filter.block = [this](const Travik::ImageBlock& block) {
                return std::ranges::any_of(selectors_,
                                           [&](const std::string& selector) { return isSelected(block, selector); });
            };
        if (!fields_.empty())
            filter.field = [this](std::string_view name) { return std::ranges::count(fields_, name) > 0; };
        return filter;
    }

    static std::string list(const std::vector<std::string>& names) {
        std::string text;
        for (const std::string& name : names)
            text += (text.empty() ? " " : ", ") + name;
        return text;
    }
};

} // namespace

std::unique_ptr<Command> showCommand(CLI::App& app) { return std::make_unique<Show>(app); }

} // namespace Tool
