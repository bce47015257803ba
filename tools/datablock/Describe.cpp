#include "Terminal.h"
#include "Tool.h"

#include <travik/service/Describe.h>
#include <travik/service/KaitaiFormat.h>

#include <algorithm>
#include <iostream>
#include <iterator>

namespace Tool {

namespace {

/// Calls the function with every identifier that has a class, and its key.
void forEachClass(const auto& function) {
    for (const Travik::CatalogueEntry& entry : Travik::catalogue()) {
        for (int id = entry.first; id <= entry.last; ++id)
            function(id, Travik::toUtf8(entry.key(entry, id)));
    }
}

std::vector<int> identifiersOf(const std::string& pattern) {
    const Travik::BlockSelector selector({pattern});
    std::vector<int> ids;
    forEachClass([&](int id, const std::string& key) {
        if (selector.selects(id, key))
            ids.push_back(id);
    });
    return ids;
}

std::vector<std::string> allKeys() {
    std::vector<std::string> keys;
    forEachClass([&](int, const std::string& key) { keys.push_back(key); });
    return keys;
}

class Describe : public Command {
public:
    explicit Describe(CLI::App& app) {
        CLI::App& command = *app.add_subcommand("describe", "How the blocks are stored, byte by byte");
        command.add_option("block", selectors_,
                           "Identifiers or key names of blocks, which may be globs; without any, a list of all");
        CLI::Option* const json = command.add_flag("--json", asJson_, "Write one JSON array, an object for each block");
        CLI::Option* const ksy =
            command.add_flag("--ksy", asKaitai_, "Write a description of all in the language of Kaitai Struct");
        CLI::Option* const markdown = command.add_flag("--markdown", asMarkdown_, "Write the reference of all blocks");
        json->excludes(ksy, markdown);
        ksy->excludes(markdown);
    }

    int run() override {
        const Travik::BlockForms forms;
        if (asKaitai_ || asMarkdown_) {
            if (!selectors_.empty()) {
                std::cerr << "datablock: " << (asKaitai_ ? "--ksy" : "--markdown")
                          << " describes all blocks, it takes no identifier\n";
                return CallFailed;
            }
            std::cout << (asKaitai_ ? describeAsKaitai(forms) : describeAsMarkdown(forms));
        } else if (selectors_.empty() && !asJson_) {
            startPager();
            std::cout << listAsText(forms);
        } else {
            const auto asked = askedFor();
            if (!asked)
                return CallFailed;
            write(forms, *asked);
        }
        return std::cout ? AllWell : CallFailed;
    }

private:
    std::vector<std::string> selectors_;
    bool asJson_ = false;
    bool asKaitai_ = false;
    bool asMarkdown_ = false;

    // Nothing, and a line for each, where an argument selects no block.
    std::optional<std::vector<Travik::BlockForm>> askedFor() const {
        std::vector<int> ids;
        bool isComplete = true;
        for (const std::string& selector : selectors_) {
            const std::vector<int> found = identifiersOf(selector);
            if (found.empty())
                std::cerr << "datablock: " << InLine{Travik::noSuchName("block class", selector, allKeys())}
                          << "; 'datablock describe' lists all\n";
            isComplete = isComplete && !found.empty();
            ids.insert(ids.end(), found.begin(), found.end());
        }
        if (!isComplete)
            return std::nullopt;
        for (const Travik::CatalogueEntry& entry : Travik::catalogue()) {
            for (int id = entry.first; id <= entry.last && selectors_.empty(); ++id)
                ids.push_back(id);
        }
        std::vector<Travik::BlockForm> asked;
        asked.reserve(ids.size());
        std::ranges::transform(ids, std::back_inserter(asked), Travik::BlockForms::of);
        return asked;
    }

    void write(const Travik::BlockForms& forms, const std::vector<Travik::BlockForm>& asked) const {
        if (asJson_) {
            std::cout << describeAsJson(forms, asked);
            return;
        }
        startPager();
        for (std::size_t i = 0; i < asked.size(); ++i)
            std::cout << (i == 0 ? "" : "\n") << describeAsText(forms, asked[i]);
    }
};

} // namespace

std::unique_ptr<Command> describeCommand(CLI::App& app) { return std::make_unique<Describe>(app); }

} // namespace Tool
