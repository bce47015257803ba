#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

/// SQLite with its handles owned and its failures thrown. A database and its statements are used from one thread. Not
/// installed.
namespace Travik::sqlite {

class Database;

/// A prepared statement; values are always bound. Texts that are bound must live until `step` or `run`.
class Statement {
public:
    Statement(Database& database, const std::string& sql);

    Statement& bind(int place, std::int64_t value);
    Statement& bind(int place, double value);
    Statement& bind(int place, std::string_view text);
    Statement& bindNull(int place);

    /// To the next row; false when there is none.
    bool step();
    /// To the end, ready to be run again.
    void run();
    void reset() { sqlite3_reset(statement_.get()); }

    bool isNull(int column) const { return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL; }
    std::int64_t whole(int column) const { return sqlite3_column_int64(statement_.get(), column); }
    double number(int column) const { return sqlite3_column_double(statement_.get(), column); }
    /// Until the next step.
    std::string_view text(int column) const;

private:
    Database* database_;
    std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement_{nullptr, &sqlite3_finalize};
};

class Database {
public:
    enum class Access : unsigned char { Read, Write };

    Database(const std::string& path, Access access);

    void execute(const std::string& sql);
    std::int64_t wholeOf(const std::string& sql);
    sqlite3* handle() const { return handle_.get(); }
    /// Throws a FleetError with the last failure.
    [[noreturn]] void fail() const;

private:
    std::string path_;
    std::unique_ptr<sqlite3, decltype(&sqlite3_close_v2)> handle_{nullptr, &sqlite3_close_v2};
};

} // namespace Travik::sqlite
