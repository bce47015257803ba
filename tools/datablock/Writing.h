#pragma once

#include "Tool.h"

#include <travik/service/ImageWriter.h>

#include <CLI/CLI.hpp>

#include <optional>
#include <span>
#include <string>
#include <vector>

/// What the subcommands that write images share.
namespace Tool {

/// Declares "--backup[=FILE]", without FILE the text is empty, and "--in-place", which needs one.
void addWriteOptions(CLI::App& command, Travik::WriteOptions& options);

/// "--backup FILE" as "--backup=FILE" where "--in-place" is among the arguments: there FILE has to follow, elsewhere
/// what follows may be something else.
void joinBackupFile(std::vector<std::string>& arguments);

/// Writes an image to a file or to standard output ("-"), which must not be a terminal.
Travik::WriteReport writeImage(const std::string& path, std::span<const char> bytes,
                               const Travik::WriteOptions& options = {});

/// Writes to standard error what came of writing the file; false where it was not written.
bool reportWriting(const std::string& path, const Travik::WriteReport& report);
/// Tells in a line of its own where the old image is kept, if it is.
void tellBackup(const std::string& path, const Travik::WriteReport& report);

/// What every command that changes an image takes; the image it declares itself.
struct UpdateOptions {
    std::string image;  ///< "-" is standard input
    std::string output; ///< "-" is standard output; empty: the image itself
    Travik::WriteOptions write;
    bool dryRun = false;
};
/// Declares "--output", "--dry-run", "--backup" and "--in-place".
void addUpdateOptions(CLI::App& command, UpdateOptions& options, const std::string& dryRunHelp);

/// An image from its reading to its writing, the one way of every command that changes one. One that is replaced is
/// locked in between, so that nothing that another command does is lost. What fails is told.
class ImageUpdate {
public:
    explicit ImageUpdate(const UpdateOptions& options);

    /// The bytes are there to be changed; null where there are none.
    Image* image() { return image_ ? &*image_ : nullptr; }
    /// Writes them, unless it is a dry run; false where that failed.
    bool commit();

    /// The name of what is written.
    const std::string& target() const;
    /// Ends the line of a summary with where the old image is kept.
    void endSummary() const;
    /// Tells that in a line of its own.
    void tellBackup() const { Tool::tellBackup(target(), report_); }

private:
    const UpdateOptions& options_;
    std::string path_; // of what is written
    std::optional<Travik::ImageEdit> edit_;
    std::optional<Image> image_;
    Travik::WriteReport report_;
};

} // namespace Tool
