#pragma once

#include <travik/fleet/FleetSink.h>

#include <memory>
#include <string>
#include <string_view>

namespace Travik {

/// The relations in ClickHouse, over its HTTP interface: on one server, or through the `Distributed` tables of any
/// server of a cluster. docs/fleet.md describes its schema.
///
/// Nothing is replaced in it: an image is what a path held once, by its content, and stays. Bringing the same again
/// adds nothing.
class TRAVIK_FLEET_EXPORT ClickHouse : public FleetSink {
public:
    /// `address`: "HOST:PORT" or "HOST:PORT/DATABASE". The environment's CLICKHOUSE_USER and CLICKHOUSE_PASSWORD say
    /// who asks. Makes the tables, of one server, where the database has none.
    explicit ClickHouse(const std::string& address);
    ~ClickHouse() override;

    std::vector<std::optional<Known>> known(std::span<const FoundFile> files) override;
    void begin() override;
    Stored store(const ImageRows& rows) override;
    void commit() override;

    /// The statements that make the tables: of one server; of a cluster, to be given to each of its servers, where a
    /// name of one is given.
    static std::string schema(std::string_view cluster = {});

private:
    struct Connection;
    std::unique_ptr<Connection> connection_;
};

} // namespace Travik
