#pragma once

#include <travik/registry/Capacity.h>
#include <travik/service/StoreValue.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <span>
#include <string>

namespace Support {

/// A stored number, or a text, that the field of the block may hold, as an assignment takes it.
inline std::string randomValue(std::mt19937& random, std::span<const char> block, std::span<const Travik::Field> fields,
                               const Travik::Field& field) {
    using namespace Travik;
    if (field.stored == Stored::Text)
        return std::string(random() % (field.width + 1), static_cast<char>('A' + random() % 26));
    if (const auto capacity = field.role == Role::Count ? capacityOf(block, fields, field) : std::nullopt)
        return std::to_string(random() % (*capacity + 1));
    Field stored = field;
    stored.scale = 1.0;
    stored.zero = 0.0;
    const ValueRange range = rangeOf(stored);
    if (field.bits == 0 && field.stored == Stored::U64)
        return std::to_string((std::uint64_t{random()} << 32U) | random());
    const double share = std::uniform_real_distribution(0.0, 1.0)(random);
    const double most = std::min(range.highest, 1e15);
    const double least = std::max(range.lowest, -1e15);
    return std::to_string(std::llround(least + share * (most - least)));
}

/// "[1][20]" of an element.
inline std::string indexText(const Travik::Field& field, unsigned int element) {
    std::string text;
    for (unsigned int d = field.rank; d-- > 0; element /= field.dimensions[d].extent)
        text.insert(0, '[' + std::to_string(element % field.dimensions[d].extent) + ']');
    return text;
}

} // namespace Support
