#pragma once

#include <travik/fleet/Export.h>

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// What of an image goes into a database: the relations and their columns, each said once. The schema of every database
/// and every form of output follows from here; docs/fleet.md is their contract.
namespace Travik {

/// A database, a server or a stream could not be used; one line that says which and why.
class TRAVIK_FLEET_EXPORT FleetError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class ColumnKind : unsigned char {
    Whole,   ///< 64 bits, signed
    Number,  ///< a double
    Text,    ///< UTF-8
    Numbers, ///< an array of doubles
    Texts    ///< an array of UTF-8 texts
};

struct FleetColumn {
    std::string_view name;
    ColumnKind kind;
    bool mayBeNull;
    std::string_view about; ///< for a person, one line
};

enum class Relation : unsigned char { Images, Blocks, Scalars, Curves };
inline constexpr std::size_t relationCount = 4;

struct FleetRelation {
    Relation relation;
    std::string_view name;
    std::span<const FleetColumn> columns; ///< behind those that say which image it is
    std::string_view key;                 ///< the columns that tell its rows of one image apart, with commas
};

/// All of them, in the order of their numbers.
TRAVIK_FLEET_EXPORT std::span<const FleetRelation> fleetRelations();
/// Null where there is none of that name.
TRAVIK_FLEET_EXPORT const FleetRelation* findRelation(std::string_view name);
/// Where a column stands among the relation's; it exists.
TRAVIK_FLEET_EXPORT std::size_t columnOf(Relation relation, std::string_view name);

/// An array as JSON: what is no finite number is null in it.
struct ArrayText {
    std::string json = "[]";
};

/// What stands in a row under a column; null is the first.
using FleetCell = std::variant<std::monostate, std::int64_t, double, std::string, ArrayText>;
/// A cell for each column of its relation.
using FleetRow = std::vector<FleetCell>;

/// The numbers of an array, null as NaN. Throws FleetError where the text is none.
TRAVIK_FLEET_EXPORT std::vector<double> numbersOf(std::string_view json);

} // namespace Travik
