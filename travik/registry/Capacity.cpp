#include <travik/registry/Capacity.h>

#include <algorithm>
#include <string_view>

namespace Travik {

std::optional<unsigned int> capacityOf(std::span<const char> block, std::span<const Field> fields, const Field& count) {
    std::optional<unsigned int> capacity;
    for (const Field& field : fields) {
        for (unsigned int i = 0; i < field.rank; ++i) {
            const Dimension& dimension = field.dimensions[i];
            if (!dimension.count || std::string_view(dimension.count) != count.name)
                continue;
            std::size_t entries = dimension.extent;
            if (i == 0) { // of a class that comes in more sizes, the rows that this block has
                const std::size_t rest = bytes::part(block, field.offset, block.size()).size();
                entries = rest < field.width ? 0 : std::min(entries, (rest - field.width) / dimension.stride + 1);
            }
            capacity = std::min(capacity.value_or(dimension.extent), static_cast<unsigned int>(entries));
        }
    }
    return capacity;
}

} // namespace Travik
