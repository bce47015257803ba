#include "ModuleRows.h"

namespace Travik {

using sqlite::Database;
using sqlite::Statement;

void bindFilter(Statement& statement, const FleetFilter& filter) {
    int place = 1;
    for (const std::optional<std::string>* const text : {&filter.name, &filter.productIndex, &filter.partNumber}) {
        if (*text)
            statement.bind(place, std::string_view(**text));
        else
            statement.bindNull(place);
        ++place;
    }
}

FleetModule moduleAt(const Statement& statement, int first) {
    FleetModule module;
    module.module = statement.text(first);
    module.path = statement.text(first + 1);
    module.name = statement.text(first + 2);
    if (!statement.isNull(first + 3))
        module.serialNumber = statement.whole(first + 3);
    module.productIndex = statement.text(first + 4);
    module.productionDate = statement.text(first + 5);
    return module;
}

std::string sqlOf(std::initializer_list<std::string_view> parts) {
    std::string text;
    for (const std::string_view part : parts)
        text += part;
    return text;
}

std::vector<std::string> keysOf(Database& database, const BlockSelector& blocks) {
    std::vector<std::string> keys;
    Statement all(database, R"(SELECT DISTINCT "key", identifier FROM blocks WHERE "key" <> '' ORDER BY "key")");
    while (all.step()) {
        std::string key(all.text(0));
        if (blocks.selects(static_cast<int>(all.whole(1)), key) && (keys.empty() || keys.back() != key))
            keys.push_back(std::move(key));
    }
    return keys;
}

} // namespace Travik
