#include "Writing.h"

#include "Output.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <new>

namespace Tool {

namespace {

/// Shows an option that takes a value or none without the default that its declaration names in braces.
class WithoutDefaults : public CLI::Formatter {
public:
    std::string make_option_name(const CLI::Option* option, bool isPositional) const override {
        const std::string name = CLI::Formatter::make_option_name(option, isPositional);
        return name.substr(0, name.find('{'));
    }
};

/// As long as it lives a lack of memory unwinds, so that what is written is put away or put back; elsewhere it ends the
/// tool at once.
class Unwinding {
public:
    Unwinding() : before_(std::set_new_handler(nullptr)) {}
    Unwinding(const Unwinding&) = delete;
    Unwinding& operator=(const Unwinding&) = delete;
    ~Unwinding() { std::set_new_handler(before_); }

private:
    std::new_handler before_;
};

} // namespace

void addWriteOptions(CLI::App& command, Travik::WriteOptions& options) {
    command
        .add_flag("--backup{}", options.backup,
                  "Keep the file that is replaced, as FILE or as its own name and ~, ~2 ...; no file is overwritten")
        ->option_text("[=FILE]");
    command.add_flag("--in-place", options.inPlace,
                     "Write into the file itself, as for a device node, the bytes that differ and no others; its size "
                     "stays; needs --backup FILE");
    command.formatter(std::make_shared<WithoutDefaults>());
    command.callback([&options] {
        if (options.inPlace && options.backup.value_or("").empty())
            throw CLI::ValidationError("--in-place", "needs --backup FILE, a file for the old image");
    });
}

void joinBackupFile(std::vector<std::string>& arguments) {
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    if (std::find(arguments.begin(), end, "--in-place") == end)
        return;
    const auto option = std::find(arguments.begin(), end, "--backup");
    if (option == end || option + 1 == end || option[1].starts_with('-'))
        return;
    *option += '=' + option[1];
    arguments.erase(option + 1);
}

Travik::WriteReport writeImage(const std::string& path, std::span<const char> bytes,
                               const Travik::WriteOptions& options) {
    if (path == "-" && ::isatty(STDOUT_FILENO) == 1)
        return {.error = "is a terminal, which no image is written to"};
    if (path == "-" && options.inPlace)
        return {.error = "cannot be written in place"};
    const Unwinding unwinding;
    return Travik::writeImageFile(path, bytes, options);
}

bool reportWriting(const std::string& path, const Travik::WriteReport& report) {
    if (!report.succeeded())
        std::cerr << "datablock: " << InLine{path == "-" ? "standard output" : path} << ": " << report.error
                  << (report.wouldDoInPlace ? ", use --in-place --backup FILE\n" : "\n");
    for (const std::string& warning : report.warnings)
        std::cerr << InLine{path} << ": " << InLine{warning} << '\n';
    return report.succeeded();
}

void tellBackup(const std::string& path, const Travik::WriteReport& report) {
    if (!report.backup.empty())
        std::cerr << InLine{path} << ": the old image is kept as " << InLine{report.backup} << '\n';
}

void addUpdateOptions(CLI::App& command, UpdateOptions& options, const std::string& dryRunHelp) {
    command.add_option("-o,--output", options.output, "Image to write instead of IMAGE; - is standard output")
        ->type_name("OUT");
    command.add_flag("--dry-run", options.dryRun, dryRunHelp);
    addWriteOptions(command, options.write);
}

ImageUpdate::ImageUpdate(const UpdateOptions& options)
    : options_(options), path_(options.output.empty() ? options.image : options.output) {
    const bool isReplaced = options.output.empty() || Travik::isSameFile(options.image, options.output);
    if (isReplaced && !options.dryRun) {
        if (options.image == "-") {
            std::cerr << "standard input: cannot be replaced, use --output\n";
            return;
        }
        edit_.emplace(path_);
        if (!edit_->error().empty())
            std::cerr << "datablock: " << InLine{path_} << ": " << edit_->error() << '\n';
        else
            image_ = Image{options.image, edit_->bytes()};
        return;
    }
    image_ = readImage(options.image);
}

bool ImageUpdate::commit() {
    if (options_.dryRun)
        return true;
    if (edit_) {
        const Unwinding unwinding;
        edit_->bytes() = image_->bytes;
        report_ = edit_->commit(options_.write);
    } else {
        report_ = writeImage(path_, image_->bytes, options_.write);
    }
    return reportWriting(path_, report_);
}

const std::string& ImageUpdate::target() const { return path_ == "-" ? image_->name : path_; }

void ImageUpdate::endSummary() const {
    if (!report_.backup.empty())
        std::cerr << ", the old image is kept as " << InLine{report_.backup};
    std::cerr << '\n';
}

} // namespace Tool
