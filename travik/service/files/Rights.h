#pragma once

#include <sys/stat.h>

#include <string>
#include <vector>

namespace Travik::files {

/// Gives a new file what belongs to the one that it will replace: owner and group as far as the caller may, permission
/// bits, access control list and the other extended attributes. What could not be kept is added to the warnings. The
/// result is empty, or says why the new file would let somebody do what the old one did not.
std::string copyRights(int old, const struct stat& status, int file, std::vector<std::string>& warnings);

} // namespace Travik::files
