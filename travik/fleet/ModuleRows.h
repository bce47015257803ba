#pragma once

#include "DatabaseConnection.h"

#include <travik/fleet/Questions.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

/// What the questions and the pages have in common: rows of modules. Not installed.
namespace Travik {

/// The columns of a module, from the first place on, and the conditions that it is one of those meant: ?1 to ?3, which
/// `bindFilter` binds.
inline constexpr std::string_view moduleColumns = "i.module, i.path, i.name, i.serial_number, i.product_index, "
                                                  "i.production_date";
inline constexpr int moduleWidth = 6;
inline constexpr std::string_view isMeant =
    "i.vanished IS NULL AND (?1 IS NULL OR i.name = ?1) AND (?2 IS NULL OR i.product_index = ?2) AND "
    "(?3 IS NULL OR i.part_number = ?3)";
inline constexpr std::string_view isLatest =
    "NOT EXISTS (SELECT 1 FROM images AS j WHERE j.module = i.module AND j.vanished IS NULL AND "
    "(j.modified_ns, j.image) > (i.modified_ns, i.image))";

void bindFilter(sqlite::Statement& statement, const FleetFilter& filter);
FleetModule moduleAt(const sqlite::Statement& statement, int first);
std::string sqlOf(std::initializer_list<std::string_view> parts);
/// The key names of the blocks that are meant, each once.
std::vector<std::string> keysOf(sqlite::Database& database, const BlockSelector& blocks);

} // namespace Travik
