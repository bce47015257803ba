#include "Jobs.h"
#include "Terminal.h"

#include <travik/service/CsvText.h>
#include <travik/service/Document.h>
#include <travik/service/ShowText.h>

#include <algorithm>
#include <iostream>
#include <set>

namespace Tool {

namespace {

class Show : public Command {
public:
    explicit Show(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("show", "Show the values of every block with their units");
        addImagesOption(command, paths_);
        addBlockOption(command, blocks_);
        command
            .add_option("--field", fields_,
                        "Only the fields of this name, which may be a glob (\"cor_*\"); may be repeated")
            ->type_name("NAME")
            ->allow_extra_args(false);
        command.add_flag("--all", options_.isWhole, "The whole capacity of every table, not only the entries in use");
        CLI::Option* const csv = command.add_flag("--csv", asCsv_, "Write one table as comma-separated values");
        command.add_flag("--json", asJson_, "Write one JSON array, an object for each image; build reads it back")
            ->excludes(csv);
        addJobsOption(command, jobs_);
    }

    int run() override {
        selector_ = Travik::BlockSelector(blocks_);
        options_.fields = Travik::NameSelector(fields_);
        if (asCsv_ && paths_.size() > 1) {
            err() << "datablock: --csv writes one table: of one image\n";
            return CallFailed;
        }
        if (asJson_)
            return showJson();
        if (!asCsv_) {
            options_.width = terminalWidth();
            options_.isColoured = isColoured();
            startPager();
            passSafeText();
        }
        return forEachImage(
            paths_, jobs_, [this](const Image& image, std::size_t) { return show(image); }, "\n");
    }

private:
    std::vector<std::string> paths_;
    std::vector<std::string> blocks_;
    std::vector<std::string> fields_;
    Travik::BlockSelector selector_;
    Travik::ShowOptions options_;
    unsigned int jobs_ = 1;
    bool asCsv_ = false;
    bool asJson_ = false;

    int showJson() const {
        std::vector<std::string> objects(paths_.size());
        const int status = forEachImage(
            paths_, jobs_, [&](const Image& image, std::size_t place) { return showAsJson(image, objects[place]); });
        // Every object is made before the first is written: a lack of memory leaves no half a document.
        Travik::writeJsonDocument(std::cout, objects);
        return status;
    }

    int showAsJson(const Image& image, std::string& object) const {
        const Travik::ModuleImage module(image.bytes);
        Travik::DocumentFilter filter;
        if (!selector_.selectsAll())
            filter.block = [this](const Travik::ImageBlock& block) { return selector_.selects(block); };
        if (!options_.fields.selectsAll())
            filter.field = [this](std::string_view name) { return options_.fields.selects(name); };
        object = Travik::jsonObject(image.name, image.bytes, module, filter);
        const int status =
            std::max(reportNames(image, module, selectedOf(module)), reportProblems(image, module.problems()));
        return status;
    }

    std::vector<const Travik::ImageBlock*> selectedOf(const Travik::ModuleImage& module) const {
        std::vector<const Travik::ImageBlock*> selected;
        for (const Travik::ImageBlock& block : module.blocks()) {
            if (selector_.selects(block))
                selected.push_back(&block);
        }
        return selected;
    }

    /// What was asked for by name and is not there. That there is no block at all is one of the image's problems.
    int reportNames(const Image& image, const Travik::ModuleImage& module,
                    std::span<const Travik::ImageBlock* const> selected) const {
        const int misses = module.blocks().empty() ? AllWell : reportMisses(image, module, selector_);
        return std::max(misses, reportFieldMisses(image, selected));
    }

    int show(const Image& image) const {
        const Travik::ModuleImage module(image.bytes);
        const std::vector<const Travik::ImageBlock*> selected = selectedOf(module);
        int status = reportNames(image, module, selected);
        status = std::max(status, asCsv_ ? writeTable(image, module, selected) : writeText(image, module, selected));
        if (!out())
            return CallFailed;
        if (selector_.selectsAll() || module.blocks().empty())
            return std::max(status, reportProblems(image, module.problems()));
        for (const Travik::ImageBlock* const block : selected)
            status = std::max(status, reportProblems(image, module.problems(*block)));
        return status;
    }

    int writeText(const Image& image, const Travik::ModuleImage& module,
                  std::span<const Travik::ImageBlock* const> blocks) const {
        const Travik::ImageValues values(module);
        if (paths_.size() > 1)
            out() << InLine{image.name} << ":\n";
        bool isFirst = true;
        for (const Travik::ImageBlock* const block : blocks) {
            const Travik::BlockValues read = values.read(*block);
            if (!options_.fields.selectsAll() && shownFields(*block, read, options_).empty())
                continue;
            std::string text(isFirst ? "" : "\n");
            appendBlockText(text, *block, read, options_);
            if (!(out() << text))
                break;
            isFirst = false;
        }
        return AllWell;
    }

    int writeTable(const Image& image, const Travik::ModuleImage& module,
                   std::span<const Travik::ImageBlock* const> blocks) const {
        if (blocks.empty())
            return AllWell; // which was said, unless the image is empty
        if (blocks.size() > 1) {
            err() << InLine{image.name} << ": more than one block, --csv writes one table: choose with --block\n";
            return CallFailed;
        }
        const Travik::ImageBlock& block = *blocks.front();
        const Travik::BlockValues read = Travik::ImageValues(module).read(block);
        std::string text;
        const std::string why = Travik::appendCsv(text, block, shownFields(block, read, options_), options_.isWhole);
        if (!why.empty()) {
            err() << InLine{image.name} << ": block " << block.id << ": " << why
                  << (why.starts_with("more") ? "; choose with --field\n" : "\n");
            return CallFailed;
        }
        out() << text;
        return AllWell;
    }

    /// One line for each field that none of the blocks has, with what may have been meant.
    int reportFieldMisses(const Image& image, std::span<const Travik::ImageBlock* const> blocks) const {
        if (options_.fields.selectsAll() || blocks.empty())
            return AllWell;
        std::set<std::string> names;
        for (const Travik::ImageBlock* const block : blocks) {
            const Travik::BlockLayout layout(*block);
            for (const Travik::Field& field : layout.fields())
                names.insert(field.name);
        }
        const std::vector<std::string> known(names.begin(), names.end());
        int status = AllWell;
        for (const std::string& pattern : fields_) {
            const auto isMatched = [&](const std::string& name) {
                return Travik::NameSelector::matches(pattern, name);
            };
            if (std::ranges::any_of(known, isMatched))
                continue;
            err() << InLine{image.name} << ": " << InLine{Travik::noSuchName("field", pattern, known)} << '\n';
            status = DataWrong;
        }
        return status;
    }
};

} // namespace

std::unique_ptr<Command> showCommand(CLI::App& app) { return std::make_unique<Show>(app); }

} // namespace Tool
