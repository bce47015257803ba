#include "Http.h"

#include <travik/fleet/ClickHouse.h>
#include <travik/fleet/JsonLines.h>

#include <array>
#include <charconv>
#include <cstdlib>
#include <map>
#include <set>

namespace Travik {

namespace {

std::string typeOf(const FleetColumn& column) {
    switch (column.kind) {
    case ColumnKind::Numbers:
        return "Array(Float64)";
    case ColumnKind::Texts:
        return "Array(String)";
    default:
        break;
    }
    const std::string type = column.kind == ColumnKind::Whole    ? "Int64"
                             : column.kind == ColumnKind::Number ? "Float64"
                                                                 : "String";
    return column.mayBeNull ? "Nullable(" + type + ')' : type;
}

/// What tells the rows of a relation apart, in the order in which they are asked for.
std::string_view orderOf(Relation relation) {
    switch (relation) {
    case Relation::Images:
        return "path, image";
    case Relation::Blocks:
        return "key, image, block";
    case Relation::Scalars:
        return "key, field, image, block";
    default:
        return "key, field, row, image, block";
    }
}

std::string columnsOf(const FleetRelation& relation) {
    std::string sql = "(\n  image String,\n  module String";
    for (const FleetColumn& column : relation.columns)
        sql.append(",\n  ").append(column.name).append(" ").append(typeOf(column));
    return sql + "\n)";
}

/// A text as a literal of a query, or a field of tab-separated ones.
std::string literalOf(std::string_view text) {
    std::string literal = "'";
    for (const char character : text) {
        if (character == '\'' || character == '\\')
            literal += '\\';
        literal += character;
    }
    return literal + '\'';
}

std::string unescaped(std::string_view field) {
    static constexpr std::string_view escapes = "bfnrt0";
    static constexpr std::string_view meant("\b\f\n\r\t\0", 6);
    std::string text;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] != '\\' || i + 1 == field.size()) {
            text += field[i];
            continue;
        }
        const std::size_t known = escapes.find(field[++i]);
        text += known == std::string_view::npos ? field[i] : meant[known];
    }
    return text;
}

/// Hands out the lines of an answer, each as its fields.
template <class Use>
void eachLine(std::string_view answer, Use use) {
    while (!answer.empty()) {
        std::string_view line = answer.substr(0, answer.find('\n'));
        answer.remove_prefix(std::min(answer.size(), line.size() + 1));
        std::vector<std::string> fields;
        for (;;) {
            const std::size_t tab = line.find('\t');
            fields.push_back(unescaped(line.substr(0, tab)));
            if (tab == std::string_view::npos)
                break;
            line.remove_prefix(tab + 1);
        }
        use(fields);
    }
}

std::int64_t wholeOf(const std::string& text) {
    std::int64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

} // namespace

struct ClickHouse::Connection {
    http::Client client;
    std::string database;

    /// An image of a batch: a text of JSON lines a relation.
    struct Pending {
        std::string key;
        std::array<std::string, relationCount> lines;
    };
    std::vector<Pending> batch;

    std::string ask(const std::string& query) {
        return client.post("/?database=" + http::Client::escaped(database), query);
    }

    /// Asks of any number of texts, in queries short enough for any server.
    template <class Texts, class Use>
    void askOf(const Texts& texts, const std::string& before, const std::string& behind, Use use) {
        constexpr std::size_t most = 100'000;
        std::string list;
        const auto send = [&] {
            if (!list.empty())
                eachLine(ask(before + list + behind), use);
            list.clear();
        };
        for (const auto& text : texts) {
            list.append(list.empty() ? "" : ",").append(literalOf(text));
            if (list.size() > most)
                send();
        }
        send();
    }

    void insert(Relation relation, const std::string& lines) {
        if (lines.empty())
            return;
        const std::string query = "INSERT INTO " +
                                  std::string(fleetRelations()[static_cast<std::size_t>(relation)].name) +
                                  " FORMAT JSONEachRow";
        // Through a table of a cluster it returns when the shards have it.
        client.post("/?insert_distributed_sync=1&database=" + http::Client::escaped(database) +
                        "&query=" + http::Client::escaped(query),
                    lines);
    }
};

std::string ClickHouse::schema(std::string_view cluster) {
    std::string sql;
    for (const FleetRelation& relation : fleetRelations()) {
        const std::string name(relation.name);
        const std::string own = cluster.empty() ? name : name + "_shard";
        sql.append("CREATE TABLE IF NOT EXISTS ").append(own).append(columnsOf(relation));
        sql.append("\nENGINE = ReplacingMergeTree\nORDER BY (").append(orderOf(relation.relation)).append(");\n");
        if (!cluster.empty()) {
            sql.append("CREATE TABLE IF NOT EXISTS ").append(name).append(" AS ").append(own);
            sql.append("\nENGINE = Distributed(").append(cluster).append(", currentDatabase(), ").append(own);
            sql.append(", cityHash64(module));\n");
        }
    }
    return sql;
}

ClickHouse::ClickHouse(const std::string& address) {
    const std::size_t slash = address.find('/', address.find("://") == std::string::npos ? 0 : address.find("://") + 3);
    const std::string database = slash == std::string::npos ? "" : address.substr(slash + 1);
    // NOLINTNEXTLINE(modernize-make-unique): an aggregate, which is not moved
    connection_.reset(
        new Connection{{address.substr(0, slash), environment("CLICKHOUSE_USER"), environment("CLICKHOUSE_PASSWORD")},
                       database.empty() ? "default" : database,
                       {}});
    if (connection_->ask("EXISTS TABLE images") != "0\n")
        return;
    const std::string sql = schema();
    for (std::size_t at = 0; at < sql.size();) {
        const std::size_t end = sql.find(";\n", at);
        connection_->ask(sql.substr(at, end - at));
        at = end + 2;
    }
}

ClickHouse::~ClickHouse() = default;

std::vector<std::optional<FleetSink::Known>> ClickHouse::known(std::span<const FoundFile> files) {
    std::vector<std::string> paths;
    paths.reserve(files.size());
    for (const FoundFile& file : files)
        paths.push_back(file.path);
    std::map<std::string, Known, std::less<>> held;
    connection_->askOf(paths,
                       "SELECT path, argMax(size, read_at), argMax(modified_ns, read_at), argMax(inode, read_at), "
                       "argMax(content_hash, read_at), argMax(problems, read_at) FROM images WHERE path IN (",
                       ") GROUP BY path FORMAT TabSeparated", [&](const std::vector<std::string>& fields) {
                           constexpr std::size_t width = 6;
                           if (fields.size() == width)
                               held[fields[0]] = {{wholeOf(fields[1]), wholeOf(fields[2]), wholeOf(fields[3])},
                                                  fields[4],
                                                  wholeOf(fields[5])};
                       });
    std::vector<std::optional<Known>> all;
    for (const FoundFile& file : files) {
        const auto found = held.find(file.path);
        all.push_back(found == held.end() ? std::nullopt : std::optional(found->second));
    }
    return all;
}

void ClickHouse::begin() { connection_->batch.clear(); }

FleetSink::Stored ClickHouse::store(const ImageRows& rows) {
    Connection::Pending& pending = connection_->batch.emplace_back();
    pending.key = rows.key();
    for (std::size_t r = 0; r < relationCount; ++r)
        appendJsonLines(pending.lines.at(r), static_cast<Relation>(r), rows, NotFinite::Nan);
    return Stored::Added;
}

void ClickHouse::commit() {
    std::vector<Connection::Pending>& batch = connection_->batch;
    std::vector<std::string> keys;
    keys.reserve(batch.size());
    for (const Connection::Pending& pending : batch)
        keys.push_back(pending.key);
    std::set<std::string, std::less<>> held; // and those of the batch that were sent
    connection_->askOf(keys, "SELECT DISTINCT image FROM images WHERE image IN (", ") FORMAT TabSeparated",
                       [&](const std::vector<std::string>& fields) { held.insert(fields.front()); });
    std::array<std::string, relationCount> lines;
    for (const Connection::Pending& pending : batch) {
        // What a path held before, and again, is the latest once more.
        const bool isHeld = !held.insert(pending.key).second;
        for (std::size_t r = 0; r < (isHeld ? 1 : relationCount); ++r)
            lines.at(r) += pending.lines.at(r);
    }
    batch.clear();
    // The images last: one that is there is complete.
    for (std::size_t r = relationCount; r-- > 0;)
        connection_->insert(static_cast<Relation>(r), lines.at(r));
}

} // namespace Travik
