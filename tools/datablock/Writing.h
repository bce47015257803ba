#pragma once

#include <travik/service/ImageWriter.h>

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

/// What the subcommands that write images share.
namespace Tool {

/// Declares "--backup[=FILE]"; without FILE the text is empty.
void addBackupOption(CLI::App& command, std::optional<std::string>& backup);

/// Writes to standard error what came of writing the file; false where it was not written.
bool reportWriting(const std::string& path, const Travik::WriteReport& report);

} // namespace Tool
