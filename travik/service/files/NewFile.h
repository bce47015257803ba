#pragma once

#include "Place.h"

#include <optional>

namespace Travik::files {

/// A file that is written before it takes its place. Until then it has no name and is gone with the process, whatever
/// ends it. Where the file system cannot do that, and for the moment in which one name takes the place of another, it
/// has a name of its own ("<.datablock-...tmp>"); signals wait for that time, and what a process that was killed right
/// then, or a failing machine, leaves behind is removed by the next one that writes the same file.
class NewFile {
public:
    explicit NewFile(const Place& place) : place_(place) {}
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile();

    /// Makes the file, with the permissions that the caller's mask leaves of the mode. False, and errno, on failure.
    bool create(mode_t mode);
    int descriptor() const { return file_; }
    /// Puts it in its place, instead of what stands there. False, and errno, on failure.
    bool replace();
    /// Puts it in its place, which must be free: otherwise EEXIST.
    bool add();

private:
    const Place& place_;
    Descriptor file_;
    std::string name_; ///< while it has one of its own
    std::optional<HeldSignals> held_;

    bool createNamed(mode_t mode);
    bool link(const std::string& name) const;
    bool linkBeside();
    void letGo();
};

/// Removes what a process that was killed left of writing to this place.
void removeLeftOver(const Place& place);

} // namespace Travik::files
