#pragma once

#include <travik/datablock/Export.h>

#include <QString>

#include <span>

namespace Travik {

/// One module (board) type of the instrument family. Types may share a name, and rows 81 to 84 share an index.
struct SModuleType {
    int index;          ///< module type number
    char name[32];      ///< upper-case type name, NUL-terminated
    char boardName[14]; ///< board name, padded with blanks to 13 characters, then NUL
    char lowerName[34]; ///< lower-case name, NUL-terminated
};
static_assert(sizeof(SModuleType) == 84);

/// All rows in table order; the last, "LAST", is the end row.
TRAVIK_DATABLOCK_EXPORT std::span<const SModuleType> moduleTypes();

/// Whether the first 13 characters are the board name of a module type, the end row apart. Board names are padded with
/// blanks: "MBRD         " is known, "MBRD" is not.
TRAVIK_DATABLOCK_EXPORT bool isKnownModuleName(const QString& boardName);

} // namespace Travik
