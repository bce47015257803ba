#pragma once

#include <travik/service/Export.h>

#include <span>
#include <string>
#include <vector>

/// Images as files: the one way in, and the one way out.
namespace Travik {

/// Appends the file's bytes, read to its end. "-" is standard input; devices and sysfs nodes do. The result is empty,
/// or says why the file could not be read.
TRAVIK_SERVICE_EXPORT std::string readImageFile(const std::string& path, std::vector<char>& bytes);

/// Writes a file so that a failure loses nothing: beside the old one, to the disk, then in its place. An existing file
/// keeps its permissions, and a link to it its target; what is there and no plain file is refused. "-" is standard
/// output. The result is empty, or says why the file could not be written.
TRAVIK_SERVICE_EXPORT std::string writeImageFile(const std::string& path, std::span<const char> bytes);

} // namespace Travik
