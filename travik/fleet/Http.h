#pragma once

#include <memory>
#include <string>
#include <string_view>

/// Requests to an HTTP server, by libcurl, which is loaded when the first is made: most who use the library make none,
/// and it takes longer to load than everything else. Not installed.
namespace Travik::http {

class Client {
public:
    /// "HOST:PORT". User and password may be empty.
    Client(std::string address, const std::string& user, const std::string& password);
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client();

    /// Posts a body to the path with its query, and returns what is answered. Throws FleetError for what is no answer
    /// of 200.
    std::string post(const std::string& path, std::string_view body);
    /// A text as part of a query.
    static std::string escaped(std::string_view text);

private:
    struct Handle;
    std::string address_;
    std::unique_ptr<Handle> handle_;
};

} // namespace Travik::http
