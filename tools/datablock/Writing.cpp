#include "Writing.h"

#include "Output.h"

#include <unistd.h>

#include <iostream>

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

} // namespace

void addBackupOption(CLI::App& command, std::optional<std::string>& backup) {
    command
        .add_flag("--backup{}", backup,
                  "Keep the file that is replaced, as FILE or as its own name and ~, ~2 ...; no file is overwritten")
        ->option_text("[=FILE]");
    command.formatter(std::make_shared<WithoutDefaults>());
}

Travik::WriteReport writeImage(const std::string& path, std::span<const char> bytes,
                               const Travik::WriteOptions& options) {
    if (path == "-" && ::isatty(STDOUT_FILENO) == 1)
        return {.error = "is a terminal, which no image is written to", .warnings = {}, .backup = {}};
    return Travik::writeImageFile(path, bytes, options);
}

bool reportWriting(const std::string& path, const Travik::WriteReport& report) {
    if (!report.succeeded())
        std::cerr << "datablock: " << InLine{path == "-" ? "standard output" : path} << ": " << report.error << '\n';
    for (const std::string& warning : report.warnings)
        std::cerr << InLine{path} << ": " << InLine{warning} << '\n';
    return report.succeeded();
}

} // namespace Tool
