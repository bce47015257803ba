#pragma once

#include <travik/service/ImageWriter.h>

#include <CLI/CLI.hpp>

#include <optional>
#include <span>
#include <string>

/// What the subcommands that write images share.
namespace Tool {

/// Declares "--backup[=FILE]"; without FILE the text is empty.
void addBackupOption(CLI::App& command, std::optional<std::string>& backup);

/// Writes an image to a file or to standard output ("-"), which must not be a terminal.
Travik::WriteReport writeImage(const std::string& path, std::span<const char> bytes,
                               const Travik::WriteOptions& options = {});

/// Writes to standard error what came of writing the file; false where it was not written.
bool reportWriting(const std::string& path, const Travik::WriteReport& report);

} // namespace Tool
