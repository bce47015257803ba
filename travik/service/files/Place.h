#pragma once

#include "Descriptor.h"

#include <sys/stat.h>

#include <string>

namespace Travik::files {

/// Where a file stands, or will stand: the name that it has in its folder, every link on the way followed, the last
/// one, too, even one that leads to no file yet. The folder is held open: what happens to the path that led there
/// changes nothing.
class Place {
public:
    /// Empty, or why there is no such place.
    std::string find(const std::string& path);

    int folder() const { return folder_; }
    const std::string& name() const { return name_; }
    /// As a person would write it.
    const std::string& path() const { return path_; }
    /// Another name in the same folder.
    Place beside(const std::string& name) const;

    /// Of what stands there; false, and errno, where that cannot be told.
    bool status(struct stat& status) const;
    /// Whether it is this file that stands there.
    bool holds(const struct stat& file) const;
    /// Brings the names of the folder to the disk, as far as the file system does that.
    void sync() const;

private:
    Descriptor folder_;
    std::string name_;
    std::string path_;
};

} // namespace Travik::files
