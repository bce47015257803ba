#include "JsonText.h"

namespace Support {

nlohmann::json parsed(std::string_view text) { return nlohmann::json::parse(text); }
nlohmann::ordered_json parsedInOrder(std::string_view text) { return nlohmann::ordered_json::parse(text); }

} // namespace Support
