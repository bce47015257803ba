#pragma once

#include <travik/fleet/FleetSink.h>

#include <memory>
#include <string>

namespace Travik {

/// The relations in an SQLite database: what is kept on one machine. docs/fleet.md describes its schema.
///
/// One database may be written by several runs at once: each batch is a transaction that the others wait for, and an
/// image that another run has brought meanwhile is not brought again. A process that is killed leaves what was there
/// after its last batch.
class TRAVIK_FLEET_EXPORT FleetDatabase : public FleetSink {
public:
    enum class Access : unsigned char {
        Read, ///< there has to be one
        Write ///< it is made where there is none, or an empty file
    };
    /// The number that a database says its schema has (`PRAGMA user_version`), and by which a file is known to be a
    /// fleet's (`PRAGMA application_id`).
    static constexpr std::int64_t schemaVersion = 1;
    static constexpr std::int64_t applicationId = 0x54764B66;

    /// Throws FleetError for a file that is no database, or not one of this schema version.
    FleetDatabase(const std::string& path, Access access);
    ~FleetDatabase() override;

    bool isOwn(const std::string& path) const override;
    std::vector<std::optional<Known>> known(std::span<const FoundFile> files) override;
    void begin() override;
    Stored store(const ImageRows& rows) override;
    void renew(const FoundFile& file) override;
    void drop(const std::string& path) override;
    void commit() override;
    std::size_t markVanished(std::span<const std::string> roots) override;

    /// The statements that make an empty database one of this schema.
    static std::string schema();

    struct Connection;
    Connection& connection() const { return *connection_; } ///< for the library

private:
    std::unique_ptr<Connection> connection_;
};

} // namespace Travik
