#pragma once

#include <travik/fleet/Relations.h>
#include <travik/registry/ModuleImage.h>

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Travik {

/// What tells cheaply that a file is still the same.
struct FileStamp {
    std::int64_t size = 0;
    std::int64_t modifiedNs = 0; ///< since 1970; 0: not to be relied on
    std::int64_t inode = 0;

    friend bool operator==(const FileStamp&, const FileStamp&) = default;
};

/// An image as rows of the relations.
struct TRAVIK_FLEET_EXPORT ImageRows {
    std::string path;
    FileStamp stamp;
    std::string contentHash;
    std::string module;        ///< "1141.3000.02/101337"; the image's key where no ident block says who it is
    std::int64_t problems = 0; ///< how much damage there is
    std::string firstProblem;  ///< the first of it, in one line
    std::array<std::vector<FleetRow>, relationCount> rows; ///< of the images one

    std::vector<FleetRow>& of(Relation relation) { return rows[static_cast<std::size_t>(relation)]; }
    const std::vector<FleetRow>& of(Relation relation) const { return rows[static_cast<std::size_t>(relation)]; }
    /// What an image is called where no database numbers it: of its path and its content, so that the same image has
    /// the same key whoever reads it, and when. 32 hexadecimal digits.
    std::string key() const;
};

/// BLAKE2b-256 in hexadecimal, as `b2sum -l 256` prints it.
TRAVIK_FLEET_EXPORT std::string contentHash(std::span<const char> bytes);

/// The rows of an image. `readAt` is the time of reading, ISO 8601. Never fails: what is damaged is in the rows as far
/// as it can be read.
TRAVIK_FLEET_EXPORT ImageRows imageRows(const std::string& path, const FileStamp& stamp, const std::string& hash,
                                        const std::string& readAt, const ModuleImage& image);

/// Why a file is taken for no image at all, though one may be damaged: it has no block that is known and sound, and
/// what it begins with is no known block either. Empty for an image, and for an erased one.
TRAVIK_FLEET_EXPORT std::string whyNoImage(std::span<const char> bytes, const ModuleImage& image);

} // namespace Travik
