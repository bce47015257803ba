#include "DatabaseConnection.h"

#include <travik/fleet/FleetDatabase.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <type_traits>

namespace Travik {

namespace {

using sqlite::Database;
using sqlite::Statement;

std::string_view typeOf(ColumnKind kind) {
    switch (kind) {
    case ColumnKind::Whole:
        return "INTEGER";
    case ColumnKind::Number:
        return "REAL";
    default:
        return "TEXT";
    }
}

std::string quotedName(std::string_view name) { return '"' + std::string(name) + '"'; }

/// The columns of a relation ahead of those that the relations say themselves.
std::vector<std::string_view> columnsAhead(Relation relation) {
    if (relation == Relation::Images)
        return {"image", "module"};
    return {"image"};
}

bool isAxis(const FleetRelation& relation, const FleetColumn& column) {
    return relation.relation == Relation::Curves && column.name == "axis_values";
}

/// What is stored: a curve refers to its axis, which most of a fleet have in common.
std::string_view tableOf(const FleetRelation& relation) {
    return relation.relation == Relation::Curves ? "curve_rows" : relation.name;
}
std::string_view storedName(const FleetRelation& relation, const FleetColumn& column) {
    return isAxis(relation, column) ? "axis_id" : column.name;
}

std::string createTable(const FleetRelation& relation) {
    const bool isImages = relation.relation == Relation::Images;
    // Rows that are long, as curves are, do not belong into an index.
    const bool isKeyed = relation.relation == Relation::Blocks || relation.relation == Relation::Scalars;
    std::string sql = "CREATE TABLE " + std::string(tableOf(relation)) + "(\n  image INTEGER ";
    sql += isImages ? "PRIMARY KEY,\n  module TEXT NOT NULL" : "NOT NULL REFERENCES images";
    for (const FleetColumn& column : relation.columns) {
        sql.append(",\n  ").append(quotedName(storedName(relation, column))).append(" ");
        sql += isAxis(relation, column) ? "INTEGER" : typeOf(column.kind);
        if (!column.mayBeNull)
            sql += " NOT NULL";
        if (isAxis(relation, column))
            sql += " REFERENCES axes";
        if (isImages && column.name == "path")
            sql += " UNIQUE";
    }
    if (isImages)
        sql += ",\n  vanished TEXT";
    if (isKeyed)
        sql.append(",\n  PRIMARY KEY(image, ").append(relation.key).append(")");
    return sql + (isKeyed ? "\n) WITHOUT ROWID;\n" : "\n);\n");
}

std::string viewOfCurves() {
    std::string columns = "c.image";
    for (const FleetColumn& column : fleetRelations()[static_cast<std::size_t>(Relation::Curves)].columns)
        columns.append(column.name == "axis_values" ? ", a." : ", c.").append(quotedName(column.name));
    return "CREATE VIEW curves AS\n  SELECT " + columns +
           "\n  FROM curve_rows AS c JOIN axes AS a ON a.axis_id = c.axis_id;\n";
}

constexpr std::string_view indexesAndViews = R"(CREATE INDEX images_by_module ON images(module);
CREATE INDEX blocks_by_key ON blocks("key");
CREATE INDEX scalars_by_field ON scalars(field, "key");
CREATE INDEX curves_by_image ON curve_rows(image);
CREATE INDEX curves_by_key ON curve_rows("key", field, "row");
CREATE VIEW latest AS
  SELECT * FROM images AS i WHERE vanished IS NULL AND NOT EXISTS (
    SELECT 1 FROM images AS j WHERE j.module = i.module AND j.vanished IS NULL
      AND (j.modified_ns, j.image) > (i.modified_ns, i.image));
CREATE VIEW wear AS
  SELECT i.image, i.module, i.path, i.name, i.serial_number, i.product_index, i.operating_hours,
    n.value AS counter, json_extract(i.wear_values, '$[' || n.key || ']') AS value,
    json_extract(i.wear_values, '$[' || n.key || ']') * 1000.0 / nullif(i.operating_hours, 0) AS per_1000_hours
  FROM latest AS i, json_each(i.wear_names) AS n;
CREATE VIEW verification AS
  SELECT i.image, i.module, i.path, i.name, i.serial_number, i.product_index, i.problems, p.key AS number,
    p.value AS problem
  FROM images AS i, json_each(i.problem_texts) AS p WHERE i.vanished IS NULL;
CREATE VIEW points AS
  SELECT c.image, i.module, i.path, i.name, i.serial_number, i.product_index, c."key", c.field, c."row", c.row_label,
    p.key AS point, json_extract(c.axis_values, '$[' || p.key || ']') AS axis_value, c.axis_unit, p.value AS value,
    c.unit
  FROM curves AS c JOIN latest AS i ON i.image = c.image, json_each(c.point_values) AS p;
)";

std::string insertInto(const FleetRelation& relation) {
    std::string columns;
    std::string values;
    const auto add = [&](std::string_view name) {
        columns.append(columns.empty() ? "" : ", ").append(quotedName(name));
        values.append(values.empty() ? "?" : ", ?");
    };
    for (const std::string_view name : columnsAhead(relation.relation))
        add(name);
    for (const FleetColumn& column : relation.columns)
        add(storedName(relation, column));
    return "INSERT INTO " + std::string(tableOf(relation)) + '(' + columns + ") VALUES(" + values + ')';
}

std::string replaceImage() {
    std::string sql = "UPDATE images SET vanished = NULL, module = ?2";
    int place = 3;
    for (const FleetColumn& column : fleetRelations()[0].columns)
        sql += ", " + quotedName(column.name) + " = ?" + std::to_string(place++);
    return sql + " WHERE image = ?1";
}

void bindCells(Statement& statement, int place, const FleetRow& row) {
    for (const FleetCell& cell : row) {
        std::visit(
            [&](const auto& value) {
                using Value = std::remove_cvref_t<decltype(value)>;
                if constexpr (std::is_same_v<Value, std::monostate>)
                    statement.bindNull(place);
                else if constexpr (std::is_same_v<Value, ArrayText>)
                    statement.bind(place, std::string_view(value.json));
                else if constexpr (std::is_same_v<Value, std::string>)
                    statement.bind(place, std::string_view(value));
                else
                    statement.bind(place, value);
            },
            cell);
        ++place;
    }
}

template <class Sql>
std::vector<Statement> statementsOf(Database& database, std::span<const FleetRelation> relations, Sql sql) {
    std::vector<Statement> statements;
    for (const FleetRelation& relation : relations)
        statements.emplace_back(database, sql(relation));
    return statements;
}

// Throws unless it is a fleet's database of this version; false where it is nothing yet.
bool isMade(Database& database, const std::string& path) {
    const std::int64_t application = database.wholeOf("PRAGMA application_id");
    const std::int64_t version = database.wholeOf("PRAGMA user_version");
    if (application == FleetDatabase::applicationId && version == FleetDatabase::schemaVersion)
        return true;
    if (application == FleetDatabase::applicationId)
        throw FleetError(path + ": schema version " + std::to_string(version) + ", this tool knows " +
                         std::to_string(FleetDatabase::schemaVersion));
    if (application != 0 || version != 0 || database.wholeOf("SELECT count(*) FROM sqlite_schema") > 0)
        throw FleetError(path + ": a database of something else");
    return false;
}

bool isGone(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

} // namespace

FleetDatabase::Connection::Writing::Writing(Database& database)
    : connection(database.handle()),
      known(database, "SELECT image, size, modified_ns, inode, content_hash, problems, vanished IS NOT NULL FROM "
                      "images WHERE path = ?"),
      renew(database, "UPDATE images SET size = ?2, modified_ns = ?3, inode = ?4, vanished = NULL WHERE path = ?1"),
      drop(database, "UPDATE images SET vanished = strftime('%Y-%m-%dT%H:%M:%SZ', 'now') WHERE path = ? AND vanished "
                     "IS NULL"),
      insert(statementsOf(database, fleetRelations(), insertInto)),
      remove(statementsOf(database, fleetRelations().subspan(1),
                          [](const FleetRelation& relation) {
                              return "DELETE FROM " + std::string(tableOf(relation)) + " WHERE image = ?";
                          })),
      replace(database, replaceImage()), findAxis(database, "SELECT axis_id FROM axes WHERE axis_values = ?"),
      addAxis(database, "INSERT INTO axes(axis_values) VALUES(?)") {}

std::int64_t FleetDatabase::Connection::Writing::idOf(const std::string& axis) {
    constexpr std::size_t most = 10'000; // a few per kind of module are the rule
    if (axes.size() > most)
        axes.clear();
    const auto [entry, isNew] = axes.try_emplace(axis);
    if (!isNew)
        return entry->second;
    findAxis.bind(1, std::string_view(axis));
    const bool isHeld = findAxis.step();
    if (isHeld)
        entry->second = findAxis.whole(0);
    findAxis.reset();
    if (!isHeld) {
        addAxis.bind(1, std::string_view(axis)).run();
        entry->second = sqlite3_last_insert_rowid(connection);
    }
    return entry->second;
}

std::string FleetDatabase::schema() {
    std::string sql = "CREATE TABLE axes(\n  axis_id INTEGER PRIMARY KEY,\n  axis_values TEXT NOT NULL UNIQUE\n);\n";
    for (const FleetRelation& relation : fleetRelations())
        sql += createTable(relation);
    return sql.append(viewOfCurves()).append(indexesAndViews) +
           "PRAGMA application_id = " + std::to_string(applicationId) +
           ";\nPRAGMA user_version = " + std::to_string(schemaVersion) + ";\n";
}

FleetDatabase::FleetDatabase(const std::string& path, Access access)
    : connection_(std::make_unique<Connection>(path, access == Access::Read ? Database::Access::Read
                                                                            : Database::Access::Write)) {
    Database& database = connection_->database;
    if (access == Access::Read) {
        if (!isMade(database, path))
            throw FleetError(path + ": an empty database");
        return;
    }
    // Long rows: fewer of them lie across pages.
    database.execute("PRAGMA page_size = 16384; PRAGMA cache_size = -16384");
    if (!isMade(database, path)) {
        database.execute("BEGIN IMMEDIATE");
        if (!isMade(database, path)) // another run may have been first
            database.execute(schema());
        database.execute("COMMIT");
    }
    connection_->writing.emplace(database);
}

bool FleetDatabase::isOwn(const std::string& path) const {
    // Absolute, as SQLite names it.
    const std::string_view own = sqlite3_db_filename(connection_->database.handle(), "main");
    return path == own || path == std::string(own) + "-journal";
}

FleetDatabase::~FleetDatabase() {
    if (connection_->isInBatch)
        sqlite3_exec(connection_->database.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

std::vector<std::optional<FleetSink::Known>> FleetDatabase::known(std::span<const FoundFile> files) {
    std::vector<std::optional<Known>> all;
    all.reserve(files.size());
    Statement& statement = connection_->writing->known;
    for (const FoundFile& file : files) {
        std::optional<Known>& one = all.emplace_back();
        statement.bind(1, std::string_view(file.path));
        if (statement.step())
            one = Known{{statement.whole(1), statement.whole(2), statement.whole(3)},
                        std::string(statement.text(4)),
                        statement.whole(5),
                        statement.whole(6) != 0};
        statement.reset();
    }
    return all;
}

void FleetDatabase::begin() {
    connection_->database.execute("BEGIN IMMEDIATE");
    connection_->isInBatch = true;
}

FleetSink::Stored FleetDatabase::store(const ImageRows& rows) {
    Connection::Writing& writing = *connection_->writing;
    std::int64_t image = 0;
    writing.known.bind(1, std::string_view(rows.path));
    const bool isKnown = writing.known.step();
    bool isSame = false;
    if (isKnown) {
        image = writing.known.whole(0);
        isSame = writing.known.text(4) == rows.contentHash;
    }
    writing.known.reset();
    if (isSame) {
        renew({rows.path, rows.stamp});
        return Stored::Same;
    }
    if (isKnown) {
        for (Statement& remove : writing.remove)
            remove.bind(1, image).run();
    }
    Statement& first = isKnown ? writing.replace : writing.insert.front();
    isKnown ? first.bind(1, image) : first.bindNull(1);
    first.bind(2, std::string_view(rows.module));
    bindCells(first, 3, rows.of(Relation::Images).front());
    first.run();
    if (!isKnown)
        image = sqlite3_last_insert_rowid(connection_->database.handle());
    for (std::size_t r = 1; r < relationCount; ++r) {
        Statement& insert = writing.insert[r];
        insert.bind(1, image);
        for (const FleetRow& row : rows.rows[r]) {
            bindCells(insert, 2, row);
            if (static_cast<Relation>(r) == Relation::Curves) {
                static const std::size_t axis = columnOf(Relation::Curves, "axis_values");
                insert.bind(static_cast<int>(axis) + 2, writing.idOf(std::get<ArrayText>(row[axis]).json));
            }
            insert.run();
        }
    }
    return isKnown ? Stored::Changed : Stored::Added;
}

void FleetDatabase::renew(const FoundFile& file) {
    connection_->writing->renew.bind(1, std::string_view(file.path))
        .bind(2, file.stamp.size)
        .bind(3, file.stamp.modifiedNs)
        .bind(4, file.stamp.inode)
        .run();
}

void FleetDatabase::drop(const std::string& path) { connection_->writing->drop.bind(1, std::string_view(path)).run(); }

void FleetDatabase::commit() {
    connection_->database.execute("COMMIT");
    connection_->isInBatch = false;
    // Others that wait for their turn look every two milliseconds.
    constexpr useconds_t gapUs = 5000;
    ::usleep(gapUs);
}

std::size_t FleetDatabase::markVanished(std::span<const std::string> roots) {
    // What is looked at is the file itself, not what this run saw: another may have brought it meanwhile.
    std::vector<std::string> gone;
    Statement held(connection_->database, "SELECT path FROM images WHERE vanished IS NULL AND (path = ?1 OR "
                                          "(path >= ?2 AND path < ?3)) ORDER BY path");
    for (const std::string& root : roots) {
        const std::string below = root == "/" ? root : root + '/';
        std::string behind = below;
        ++behind.back();
        held.bind(1, std::string_view(root)).bind(2, std::string_view(below)).bind(3, std::string_view(behind));
        while (held.step()) {
            std::string path(held.text(0));
            if (isGone(path))
                gone.push_back(std::move(path));
        }
        held.reset();
    }
    if (gone.empty())
        return 0;
    begin();
    std::size_t count = 0;
    for (const std::string& path : gone) {
        drop(path);
        count += static_cast<std::size_t>(sqlite3_changes(connection_->database.handle()));
    }
    commit();
    return count;
}

} // namespace Travik
