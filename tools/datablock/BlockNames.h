#pragma once

#include "Tool.h"
#include "Writing.h"

#include <travik/service/BlockCopy.h>

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

/// What the subcommands share that move whole blocks.
namespace Tool {

/// The blocks that are meant, each by KEY or KEY@OFFSET.
class BlockNames {
public:
    /// Declares "--block", and the same without the option behind the positionals that are there.
    void addOption(CLI::App& command, const std::string& help);
    /// Null, and a line for each that is none, where not all of them are names.
    std::optional<std::vector<Travik::BlockAddress>> parse() const;

private:
    std::vector<std::string> texts_;
    std::vector<std::string> more_;
};

/// Tells each refusal, and that nothing was changed; `DataWrong`.
int explainRefusals(const Image& image, const Travik::BlockReport& report, const std::string& source = {});

/// Shows each block on standard output, for a dry run.
void showEdits(const Travik::BlockReport& report);

/// Writes the image and tells in a line what was done: "board.bin: 2 blocks copied". The status, which counts what is
/// wrong in the image that came of it.
int finishEdits(ImageUpdate& update, const UpdateOptions& options, const Travik::BlockReport& report, const char* done);

} // namespace Tool
