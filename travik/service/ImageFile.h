#pragma once

#include <travik/service/Export.h>

#include <string>
#include <vector>

namespace Travik {

/// The one way in. Appends the file's bytes, read to its end. "-" is standard input; devices and sysfs nodes do. The
/// result is empty, or says why the file could not be read. The way out is `ImageWriter.h`.
TRAVIK_SERVICE_EXPORT std::string readImageFile(const std::string& path, std::vector<char>& bytes);

} // namespace Travik
