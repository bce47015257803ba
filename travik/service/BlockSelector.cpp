#include <travik/service/BlockSelector.h>
#include <travik/service/Values.h>

#include <fnmatch.h>

#include <algorithm>
#include <numeric>
#include <set>

namespace Travik {

namespace {

constexpr std::string_view globCharacters = "*?[";

bool isNumber(std::string_view name) { return name.find_first_not_of("0123456789") == std::string_view::npos; }

std::string lowered(std::string_view text) {
    std::string result(text);
    for (char& character : result) {
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    return result;
}

// Characters to insert, delete, replace or swap with their neighbour on the way from one text to the other.
std::size_t distance(std::string_view left, std::string_view right) {
    std::vector<std::size_t> beforeLast;
    std::vector<std::size_t> last(right.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= left.size(); ++i) {
        std::vector<std::size_t> row(right.size() + 1, i);
        for (std::size_t k = 1; k <= right.size(); ++k) {
            const std::size_t replaced = last[k - 1] + (left[i - 1] == right[k - 1] ? 0 : 1);
            row[k] = std::min({last[k] + 1, row[k - 1] + 1, replaced});
            if (i > 1 && k > 1 && left[i - 1] == right[k - 2] && left[i - 2] == right[k - 1])
                row[k] = std::min(row[k], beforeLast[k - 2] + 1);
        }
        beforeLast = std::exchange(last, std::move(row));
    }
    return last.back();
}

} // namespace

bool NameSelector::matches(const std::string& pattern, std::string_view name) {
    if (pattern.find_first_of(globCharacters) == std::string::npos)
        return pattern == name;
    return ::fnmatch(pattern.c_str(), std::string(name).c_str(), 0) == 0;
}

bool NameSelector::selects(std::string_view name) const {
    return patterns_.empty() ||
           std::ranges::any_of(patterns_, [&](const std::string& pattern) { return matches(pattern, name); });
}

bool BlockSelector::selects(const ImageBlock& block) const {
    return selectsAll() || selects(block.id, toUtf8(keyOf(block)));
}

bool BlockSelector::selects(int id, std::string_view key) const {
    return names_.selects(std::to_string(id)) || (!key.empty() && names_.selects(key));
}

std::vector<std::string> BlockSelector::misses(const ModuleImage& image) const {
    std::vector<std::string> missed;
    std::vector<std::string> keys;
    for (const std::string& pattern : patterns()) {
        const BlockSelector one({pattern});
        if (std::ranges::any_of(image.blocks(), [&](const ImageBlock& block) { return one.selects(block); }))
            continue;
        if (keys.empty()) {
            std::set<std::string> all;
            for (const CatalogueEntry& entry : catalogue()) {
                for (int id = entry.first; id <= entry.last; ++id)
                    all.insert(toUtf8(entry.key(entry, id)));
            }
            for (const ImageBlock& block : image.blocks())
                all.insert(toUtf8(keyOf(block)));
            all.erase(std::string());
            keys.assign(all.begin(), all.end());
        }
        missed.push_back(noSuchName("block", pattern, keys));
    }
    return missed;
}

std::vector<std::string> nearNames(std::string_view name, std::span<const std::string> candidates, std::size_t limit) {
    // Keys are shorter by far; what is longer is no slip of the finger.
    constexpr std::size_t longest = 100;
    if (name.empty() || name.size() > longest || isNumber(name) ||
        name.find_first_of(globCharacters) != std::string_view::npos)
        return {};
    const std::string wanted = lowered(name);
    const std::size_t mostEdits = std::max<std::size_t>(1, wanted.size() / 4);
    std::vector<std::pair<std::size_t, std::string_view>> found;
    for (const std::string& candidate : candidates) {
        // A name that is exactly there is what was meant; it is missing for another reason.
        if (candidate == name || candidate.size() > longest)
            continue;
        const std::string other = lowered(candidate);
        const std::size_t edits = distance(wanted, other);
        if (edits <= mostEdits)
            found.emplace_back(edits, candidate);
        else if (wanted.size() > 2 && other.find(wanted) != std::string::npos)
            found.emplace_back(mostEdits + edits, candidate);
    }
    std::ranges::sort(found);
    std::vector<std::string> near;
    for (const auto& [edits, candidate] : std::span(found).first(std::min(limit, found.size())))
        near.emplace_back(candidate);
    return near;
}

std::string noSuchName(std::string_view kind, std::string_view name, std::span<const std::string> candidates) {
    std::string text = "no ";
    text.append(kind).append(" ").append(name);
    std::string_view separator = "; near: ";
    for (const std::string& near : nearNames(name, candidates)) {
        text.append(separator).append(near);
        separator = ", ";
    }
    return text;
}

} // namespace Travik
