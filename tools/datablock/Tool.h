#pragma once

#include "Output.h"

#include <travik/registry/ModuleImage.h>
#include <travik/service/BlockSelector.h>
#include <travik/service/Values.h>

#include <CLI/CLI.hpp>

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What the subcommands share: reading images, reporting problems, writing text.
namespace Tool {

enum ExitStatus : int {
    AllWell = 0,
    DataWrong = 1, ///< something is wrong in the data; each problem was one line on standard error
    CallFailed = 2 ///< the call or a file could not be used
};

/// An image file, read to its end. "-" is standard input; devices and sysfs nodes do.
struct Image {
    std::string name; ///< as given, "standard input" for "-"
    std::vector<char> bytes;
};

/// A subcommand: declares itself and its options, and runs once the arguments are there.
class Command {
public:
    Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;
    virtual ~Command() = default;
    virtual int run() = 0;
};

/// Declared in the order that the help lists them in.
std::unique_ptr<Command> describeCommand(CLI::App& app);
std::unique_ptr<Command> dumpCommand(CLI::App& app);
std::unique_ptr<Command> infoCommand(CLI::App& app);
std::unique_ptr<Command> showCommand(CLI::App& app);
std::unique_ptr<Command> listCommand(CLI::App& app);
std::unique_ptr<Command> verifyCommand(CLI::App& app);
std::unique_ptr<Command> exportCommand(CLI::App& app);
std::unique_ptr<Command> importCommand(CLI::App& app);
std::unique_ptr<Command> buildCommand(CLI::App& app);
std::unique_ptr<Command> diffCommand(CLI::App& app);
std::unique_ptr<Command> setCommand(CLI::App& app);
std::unique_ptr<Command> copyCommand(CLI::App& app);
std::unique_ptr<Command> removeCommand(CLI::App& app);
std::unique_ptr<Command> resealCommand(CLI::App& app);
std::unique_ptr<Command> summaryCommand(CLI::App& app);
std::unique_ptr<Command> collectCommand(CLI::App& app);
std::unique_ptr<Command> fleetCommand(CLI::App& app);
std::unique_ptr<Command> reportCommand(CLI::App& app);

/// Reads one image; nothing, and a line on standard error, where it cannot be read.
std::optional<Image> readImage(const std::string& path);

/// Calls the function with each image in turn; the result is the worst of the statuses. An image that cannot be read
/// does not keep the others from being used.
template <class Function>
int forEachImage(const std::vector<std::string>& paths, Function function) {
    int status = AllWell;
    for (const std::string& path : paths) {
        const std::optional<Image> image = readImage(path);
        status = std::max<int>(status, image ? function(*image) : CallFailed);
    }
    return status;
}

/// One line on standard error: "<image>: offset <n> (0x<n>), block <id>: <text>".
void reportProblem(const Image& image, std::size_t offset, unsigned short id, std::string_view text);
/// A finding in the same form, a note marked as one, without the block where it is of the image as a whole.
void reportFinding(const Image& image, const Travik::ImageFinding& finding);
/// Reports findings; the status that they make: `DataWrong` where one of them is damage.
int reportProblems(const Image& image, const std::vector<Travik::ImageFinding>& findings);
/// The damage of a whole image, and with `notes` the notes, too.
int reportFindings(const Image& image, const Travik::ModuleImage& module, bool notes);
/// The same, and where a block has no text because its identifier is not known.
int reportForTexts(const Image& image, const std::vector<Travik::ImageFinding>& findings);

/// Declares "--block" of a command that takes any number of them.
void addBlockOption(CLI::App& command, std::vector<std::string>& patterns);
/// One line for each pattern that selects no block of the image, with what may have been meant, or one that there is no
/// block at all; the status that they make.
int reportMisses(const Image& image, const Travik::ModuleImage& module, const Travik::BlockSelector& selector);

/// Declares the images that a command takes, one or more. Every name is a file's, whatever it looks like; behind "--"
/// one that begins with "-" is, too.
void addImagesOption(CLI::App& command, std::vector<std::string>& paths);
/// Declares "--encoding".
void addEncodingOption(CLI::App& command, Encoding& encoding);

/// What an option that takes one of a few words says of another: "is none of auto, latin1 and utf8".
[[noreturn]] void refuseWord(const std::string& option, const std::string& word, std::string_view words);

/// Declares an option that takes one of a few words, in whatever case. `words` are those that are told, as in
/// "auto, latin1 and utf8".
template <class T>
CLI::Option* addWordOption(CLI::App& command, const std::string& name, T& value, const std::string& help,
                           std::map<std::string, T> all, std::string_view words) {
    const auto take = [=, &value](const std::string& word) {
        const auto found = all.find(CLI::detail::to_lower(word));
        if (found == all.end())
            refuseWord(name, word, words);
        value = found->second;
    };
    return command.add_option_function<std::string>(name, take, help);
}

/// Lets an option take only the numbers that are right; `what` says which those are.
template <class T>
CLI::Validator takesOnly(bool (*isRight)(T), const char* what) {
    const auto check = [=](const std::string& text) {
        T number{};
        return CLI::detail::lexical_cast(text, number) && isRight(number) ? std::string() : what;
    };
    return {check, ""};
}

} // namespace Tool
