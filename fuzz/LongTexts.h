#pragma once

#include <travik/registry/Catalogue.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <span>
#include <string_view>
#include <vector>

namespace Fuzz {

namespace detail {

/// How many values the fields of a block show: those of each are so many times the numbers in its counts.
struct Amount {
    double entries = 1;
    std::vector<Travik::Field> counts;
};

inline std::vector<Amount> amounts(const std::vector<Travik::Field>& fields) {
    std::vector<Amount> all;
    for (const Travik::Field& field : fields) {
        Amount& amount = all.emplace_back();
        for (const Travik::Dimension& dimension : std::span(field.dimensions).first(field.rank)) {
            const auto count = std::ranges::find_if(fields, [&](const Travik::Field& each) {
                return dimension.count && each.name == std::string_view(dimension.count);
            });
            if (count == fields.end())
                amount.entries *= dimension.extent;
            else
                amount.counts.push_back(*count);
        }
    }
    return all;
}

} // namespace detail

/// How many values a print or a visit of the image shows, which is taken for one of the identifier.
inline double shownValues(int id, std::span<const char> image) {
    static const auto amounts = [] {
        std::map<int, std::vector<detail::Amount>> all;
        for (const Travik::CatalogueEntry& entry : Travik::catalogue()) {
            const auto fields = entry.fields(entry, entry.first);
            all[entry.first] = detail::amounts({fields.begin(), fields.end()});
        }
        return all;
    }();
    const Travik::CatalogueEntry* const entry = Travik::findEntry(id);
    const auto found = entry ? amounts.find(entry->first) : amounts.end();
    if (found == amounts.end())
        return 0;
    double values = 0;
    for (const detail::Amount& amount : found->second) {
        double product = amount.entries;
        for (const Travik::Field& count : amount.counts)
            product *= std::abs(Travik::fieldValue(image, count));
        values += product;
    }
    return values;
}

/// Whether the image is printed and visited. A long one takes a thousand times as long as everything else that a target
/// does with it: the longer, the fewer are read, any one always or never, so that all lengths take the same time.
inline bool isToBeRead(int id, std::span<const char> image) {
    constexpr double few = 32;
    const double oneIn = std::clamp(shownValues(id, image) / few, 1.0, 65536.0);
    return std::hash<std::string_view>()({image.data(), image.size()}) % static_cast<unsigned int>(oneIn) == 0;
}

} // namespace Fuzz
