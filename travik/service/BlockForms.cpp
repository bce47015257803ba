#include <travik/service/BlockForms.h>

#include <algorithm>
#include <string_view>
#include <tuple>

namespace Travik {

namespace {

std::string_view countOf(const Dimension& along) { return along.count ? along.count : ""; }

bool equalButForAxes(const Field& left, const Field& right) {
    const auto form = [](const Field& field) {
        return std::tuple(std::string_view(field.name), field.role, field.stored, field.width, field.offset,
                          std::string_view(field.unit), field.scale, field.zero, field.bits, field.shift,
                          field.isSigned, field.rank);
    };
    const auto steps = [](const Dimension& along) {
        return std::tuple(std::string_view(along.name), along.extent, along.stride, countOf(along),
                          along.axisBlock == 0);
    };
    return form(left) == form(right) && std::ranges::equal(left.dimensions, right.dimensions, {}, steps, steps);
}

bool equalButForAxes(const BlockForm& left, const BlockForm& right) {
    return left.size == right.size &&
           std::ranges::equal(left.layout.fields(), right.layout.fields(),
                              [](const Field& one, const Field& other) { return equalButForAxes(one, other); });
}

/// Appends with a separator where something is there.
void append(std::string& text, std::string_view separator, std::string_view more) {
    if (!text.empty())
        text += separator;
    text += more;
}

std::string nameOf(const Dimension& dimension) { return *dimension.name ? dimension.name : "entry"; }

/// "rows of values": whose entries a field counts.
std::string counted(std::span<const Field> fields, const Field& count) {
    std::string text;
    for (const Field& field : fields) {
        for (unsigned int d = 0; d < field.rank; ++d) {
            if (countOf(field.dimensions[d]) == count.name)
                append(text, ", ", nameOf(field.dimensions[d]) + " of " + field.name);
        }
    }
    return text;
}

/// Where the elements lie when other fields or other elements come between.
std::string strides(const Field& field) {
    std::string text;
    std::size_t next = field.width;
    bool followEachOther = true;
    for (unsigned int d = field.rank; d-- > 0; next *= field.dimensions[d].extent) {
        followEachOther = followEachOther && field.dimensions[d].stride == next;
        next = field.dimensions[d].stride;
    }
    for (unsigned int d = 0; d < field.rank && !followEachOther; ++d)
        append(text, ", ",
               "a " + nameOf(field.dimensions[d]) + " every " + std::to_string(field.dimensions[d].stride) + " bytes");
    return text;
}

std::string roleText(const Field& field) {
    switch (field.role) {
    case Role::Value:
        return "value";
    case Role::Count:
        return "count";
    case Role::Axis:
        return "axis";
    case Role::Text:
        return "text: Latin-1, up to the first NUL";
    case Role::Date:
        return "date: bits 0-4 day, 5-8 month, 9-15 year minus 1980";
    case Role::Reserved:
        break;
    }
    return "reserved";
}

} // namespace

std::string BlockForm::ids() const { return std::to_string(first) + (last == first ? "" : '-' + std::to_string(last)); }

std::string BlockForm::keys() const {
    std::vector<std::string> all;
    for (int id = first; id <= last; ++id) {
        std::string one = key(id);
        if (!one.empty() && std::ranges::find(all, one) == all.end())
            all.push_back(std::move(one));
    }
    std::string text;
    for (const std::string& one : all)
        append(text, ", ", one);
    return text;
}

BlockForms::BlockForms() {
    for (const CatalogueEntry& entry : catalogue()) {
        for (int id = entry.first; id <= entry.last; ++id) {
            BlockForm form = of(id);
            for (const Field& field : form.layout.fields()) {
                for (const Dimension& dimension : field.dimensions) {
                    if (dimension.axisBlock != 0)
                        labelled_[dimension.axisBlock].insert(id);
                }
            }
            if (id > entry.first && equalButForAxes(forms_.back(), form))
                forms_.back().last = id;
            else
                forms_.push_back(std::move(form));
        }
    }
}

BlockForm BlockForms::of(int id) { return {findEntry(id), id, id, makeBlock(id)->getBlockSize(), BlockLayout(id)}; }

std::string BlockForms::axisOf(const BlockForm& form, const Field& field, unsigned int dimension) const {
    const std::ptrdiff_t index = &field - form.layout.fields().data();
    std::set<int> ids;
    for (int id = form.first; id <= form.last; ++id)
        ids.insert(BlockLayout(id).fields()[static_cast<std::size_t>(index)].dimensions[dimension].axisBlock);
    const int first = field.dimensions[dimension].axisBlock;
    if (first == form.first)
        return "this block";
    std::string text = (ids.size() == 1 ? "block " : "blocks ") + idRanges(ids);
    const CatalogueEntry* const entry = findEntry(first);
    const std::string key = entry ? toUtf8(entry->key(*entry, first)) : std::string();
    if (ids.size() == 1 && !key.empty())
        text += " (" + key + ")";
    return text;
}

std::string BlockForms::purpose(const BlockForm& form, const Field& field) const {
    std::string text = roleText(field);
    if (field.role == Role::Count) {
        const std::string entries = counted(form.layout.fields(), field);
        if (!entries.empty())
            text += " of the entries in use: " + entries;
    }
    if (field.role == Role::Axis) {
        std::set<int> ids;
        for (int id = form.first; id <= form.last; ++id) {
            if (const auto labelled = labelled_.find(id); labelled != labelled_.end())
                ids.insert(labelled->second.begin(), labelled->second.end());
        }
        for (int id = form.first; id <= form.last; ++id)
            ids.erase(id);
        if (!ids.empty())
            text += (ids.size() == 1 ? " of block " : " of blocks ") + idRanges(ids);
    }
    if (field.rank > 0) {
        text += field.role == Role::Text || field.role == Role::Date ? "; by " : ", by ";
        for (unsigned int d = 0; d < field.rank; ++d)
            text += (d == 0 ? "" : " and ") + nameOf(field.dimensions[d]);
    }
    if (field.bits > 0) {
        append(text, "; ", "bits " + std::to_string(field.shift));
        if (field.bits > 1)
            text += '-' + std::to_string(field.shift + field.bits - 1);
        text += field.isSigned ? " of the word, signed" : " of the word";
    }
    for (unsigned int d = 0; d < field.rank; ++d) {
        const Dimension& dimension = field.dimensions[d];
        if (dimension.axisBlock != 0)
            append(text, "; ", nameOf(dimension) + " labelled by " + axisOf(form, field, d));
        if (dimension.count)
            append(text, "; ", nameOf(dimension) + " counted by " + dimension.count);
    }
    const std::string apart = strides(field);
    if (!apart.empty())
        append(text, "; ", apart);
    return text;
}

std::string idRanges(const std::set<int>& ids) {
    std::string text;
    for (auto id = ids.begin(); id != ids.end();) {
        const int first = *id;
        int last = first;
        while (++id != ids.end() && *id == last + 1)
            ++last;
        append(text, ", ", std::to_string(first) + (last == first ? "" : "-" + std::to_string(last)));
    }
    return text;
}

} // namespace Travik
