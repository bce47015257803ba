// Two images out of arbitrary bytes, which have to compare as the same when they are, and never when they are not; and
// what differs as text and as a document. The first byte is a tolerance and which way the pair is made: of the two
// parts of what follows the next two bytes, or of all of it and the same with some bytes changed.
#include <travik/datablocks.h>
#include <travik/service/DiffText.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

void expect(bool holds) {
    if (!holds)
        std::abort();
}

void compare(std::span<const char> before, std::span<const char> after, const Travik::DiffOptions& options) {
    const bool isEqual = std::ranges::equal(before, after);
    const Travik::ImageDiff diff(before, after, options);
    expect(isEqual ? diff.isSame() : options.isTolerant() || !diff.isSame());
    const Travik::DiffNames names{"old", "new"};
    expect(diffText(diff, names).empty() == diff.isSame());
    expect(diffText(diff, names, {.isBrief = true, .isColoured = true}).empty() == diff.isSame());
    expect(diffText(diff, names, {.isWhole = true}).empty() == diff.isSame());
    expect(diffDocument(diff, names).ends_with("}\n"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t head = 3;
    if (size < head)
        return 0;
    const std::span bytes(reinterpret_cast<const char*>(data) + head, size - head);
    const std::size_t place = data[1] + std::size_t{data[2]} * 256;
    Travik::DiffOptions options;
    if ((data[0] & 2U) != 0)
        options.tolerance = data[0] / 8.0;
    if ((data[0] & 4U) != 0)
        options.relative = data[0] / 256.0;
    if ((data[0] & 1U) == 0) {
        const std::size_t split = std::min(place, bytes.size());
        compare(bytes.first(split), bytes.subspan(split), options);
        return 0;
    }
    std::vector<char> changed(bytes.begin(), bytes.end());
    // A multiplicative generator: some bytes all over the image.
    std::size_t state = place;
    for (unsigned int i = 0; i < data[0] / 16U && !changed.empty(); ++i) {
        state = state * 1103515245U + 12345U;
        changed[(state >> 8U) % changed.size()] ^= static_cast<char>(1U << (state >> 4U) % 8);
    }
    compare(bytes, changed, options);
    compare(changed, bytes, options);
    return 0;
}
