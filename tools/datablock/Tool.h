#pragma once

#include <travik/registry/ModuleImage.h>
#include <travik/service/BlockSelector.h>

#include <CLI/CLI.hpp>

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
std::unique_ptr<Command> dumpCommand(CLI::App& app);
std::unique_ptr<Command> infoCommand(CLI::App& app);
std::unique_ptr<Command> listCommand(CLI::App& app);
std::unique_ptr<Command> verifyCommand(CLI::App& app);
std::unique_ptr<Command> exportCommand(CLI::App& app);
std::unique_ptr<Command> importCommand(CLI::App& app);
std::unique_ptr<Command> summaryCommand(CLI::App& app);
std::unique_ptr<Command> showCommand(CLI::App& app);

/// Reads one image; nothing, and a line on standard error, where it cannot be read.
std::optional<Image> readImage(const std::string& path);

/// Writes a file so that a failure loses nothing: beside the old one, to the disk, then in its place. An existing file
/// keeps its permissions, and a link to it its target; what is there and no plain file is refused. "-" is standard
/// output. False, and a line on standard error, where it cannot be written.
bool writeFileAtomically(const std::string& path, std::span<const char> bytes);

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
/// Every problem of the image; the status that they make.
int reportProblems(const Image& image, const std::vector<Travik::ImageProblem>& problems);

/// Declares "--block" of a command that takes any number of them.
void addBlockOption(CLI::App& command, std::vector<std::string>& patterns);
/// One line for each pattern that selects no block of the image, with what may have been meant; the status that they
/// make.
int reportMisses(const Image& image, const Travik::ModuleImage& module, const Travik::BlockSelector& selector);

/// The key name of a block, empty where it has none; that of a second-edition table is USER_ and its identifier, as it
/// prints itself.
std::string keyOf(const Travik::ImageBlock& block);

/// How texts in the blocks' own form, which are Latin-1, are written.
enum class Encoding : unsigned char { Automatic, Latin1, Utf8 };
/// Declares "--encoding".
void addEncodingOption(CLI::App& command, Encoding& encoding);
/// Writes a Latin-1 text to standard output: as it is, or as UTF-8 where that was asked for or a terminal shows it.
/// False when it could not be written.
bool writeText(std::string_view latin1, Encoding encoding);
/// Latin-1 to UTF-8.
std::string toUtf8(std::string_view latin1);

} // namespace Tool
