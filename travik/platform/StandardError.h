#pragma once

#include <string_view>

namespace Travik {

/// Writes a line, which ends with its line feed, to standard error in one call, so that lines of several threads do not
/// mix. What cannot be written is lost: where standard error is closed, full or read by nobody, neither a signal nor
/// errno tells. Not installed.
void writeToStandardError(std::string_view line) noexcept;

} // namespace Travik
