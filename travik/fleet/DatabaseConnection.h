#pragma once

#include "Sqlite.h"

#include <travik/fleet/FleetDatabase.h>

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Travik {

/// Not installed.
struct FleetDatabase::Connection {
    explicit Connection(const std::string& name, sqlite::Database::Access access)
        : path(name), database(name, access) {}

    std::string path;
    sqlite::Database database;
    bool isInBatch = false;

    /// Of a database to be written.
    struct Writing {
        explicit Writing(sqlite::Database& database);

        sqlite3* connection;
        sqlite::Statement known;
        sqlite::Statement renew;
        sqlite::Statement drop;
        std::vector<sqlite::Statement> insert; ///< one a relation
        std::vector<sqlite::Statement> remove; ///< one a relation, the images' apart
        sqlite::Statement replace;             ///< the row of an image
        sqlite::Statement findAxis;
        sqlite::Statement addAxis;
        std::unordered_map<std::string, std::int64_t> axes; ///< those that were met, by their text

        /// The number of an axis, which is added where it is new.
        std::int64_t idOf(const std::string& axis);
    };
    std::optional<Writing> writing;
};

} // namespace Travik
