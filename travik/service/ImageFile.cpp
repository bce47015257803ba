#include "files/Descriptor.h"

#include <travik/service/ImageFile.h>

#include <fcntl.h>
#include <unistd.h>

namespace Travik {

std::string readImageFile(const std::string& path, std::vector<char>& bytes) {
    const files::Descriptor file(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return file < 0 ? files::errorText() : files::readAll(file, bytes);
}

} // namespace Travik
