#pragma once

#include <nlohmann/json.hpp>

#include <string_view>

/// Parsing of JSON, compiled once and optimised: tests are not, and some wait for little else.
namespace Support {

nlohmann::json parsed(std::string_view text);
nlohmann::ordered_json parsedInOrder(std::string_view text);

} // namespace Support
