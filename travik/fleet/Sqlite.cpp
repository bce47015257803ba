#include "Sqlite.h"

#include <travik/fleet/Relations.h>

#include <unistd.h>

#include <system_error>

namespace Travik::sqlite {

namespace {

// Another run holds the lock for a batch, and leaves a gap of a few milliseconds behind each.
int waitForOthers(void* /*context*/, int times) {
    constexpr useconds_t stepUs = 2000;
    constexpr int most = 60 * 500; // a minute
    ::usleep(stepUs);
    return times < most ? 1 : 0;
}

} // namespace

Statement::Statement(Database& database, const std::string& sql) : database_(&database) {
    sqlite3_stmt* made = nullptr;
    if (sqlite3_prepare_v3(database.handle(), sql.c_str(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                           &made, nullptr) != SQLITE_OK)
        database.fail();
    statement_.reset(made);
}

Statement& Statement::bind(int place, std::int64_t value) {
    sqlite3_bind_int64(statement_.get(), place, value);
    return *this;
}

Statement& Statement::bind(int place, double value) {
    sqlite3_bind_double(statement_.get(), place, value);
    return *this;
}

Statement& Statement::bind(int place, std::string_view text) {
    sqlite3_bind_text64(statement_.get(), place, text.data() ? text.data() : "", text.size(), SQLITE_STATIC,
                        SQLITE_UTF8);
    return *this;
}

Statement& Statement::bindNull(int place) {
    sqlite3_bind_null(statement_.get(), place);
    return *this;
}

bool Statement::step() {
    switch (sqlite3_step(statement_.get())) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        database_->fail();
    }
}

void Statement::run() {
    while (step()) {
    }
    reset();
}

std::string_view Statement::text(int column) const {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement_.get(), column));
    return text ? std::string_view(text, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column)))
                : std::string_view();
}

Database::Database(const std::string& path, Access access) : path_(path) {
    sqlite3* made = nullptr;
    const int flags = access == Access::Read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    // A name that begins with ":" or "file:" is a file's, too.
    const std::string name = path.starts_with('/') ? path : "./" + path;
    const int result =
        sqlite3_open_v2(name.c_str(), &made, flags | SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_NOMUTEX, nullptr);
    handle_.reset(made);
    const int why = made ? sqlite3_system_errno(made) : 0;
    if (result != SQLITE_OK && why != 0)
        throw FleetError(path + ": " + std::generic_category().message(why));
    if (result != SQLITE_OK)
        fail();
    sqlite3_busy_handler(made, waitForOthers, nullptr);
    // A database may come from anywhere: its schema is not to do anything by itself.
    sqlite3_db_config(made, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(made, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(made, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(made, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
}

void Database::execute(const std::string& sql) {
    if (sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

std::int64_t Database::wholeOf(const std::string& sql) {
    Statement statement(*this, sql);
    return statement.step() ? statement.whole(0) : 0;
}

void Database::fail() const {
    const int code = handle_ ? sqlite3_errcode(handle_.get()) : SQLITE_NOMEM;
    if (code == SQLITE_NOMEM)
        throw std::bad_alloc();
    throw FleetError(path_ + ": " +
                     (code == SQLITE_BUSY ? "in use by others for more than a minute" : sqlite3_errmsg(handle_.get())));
}

} // namespace Travik::sqlite
