#include <travik/service/BlockComparison.h>
#include <travik/service/DiffElements.h>
#include <travik/service/StoreValue.h>
#include <travik/service/UntoldBytes.h>

#include <cstring>
#include <unordered_map>

namespace Travik {

namespace {

bool isSameBytes(std::span<const char> before, std::span<const char> after) {
    return before.size() == after.size() &&
           (before.empty() || std::memcmp(before.data(), after.data(), before.size()) == 0);
}

/// Which block of the one image belongs to which of the other: the first of an identifier to the first, and so on.
class Pairs {
public:
    Pairs(const ModuleImage& before, const ModuleImage& after)
        : before_(before.blocks()), after_(after.blocks()), partners_(before_.size()), isPaired_(after_.size()),
          occurrences_(after_.size()) {
        std::unordered_map<unsigned short, std::vector<std::size_t>> later;
        for (std::size_t i = 0; i < after_.size(); ++i) {
            std::vector<std::size_t>& alike = later[after_[i].id];
            occurrences_[i] = alike.size();
            alike.push_back(i);
        }
        std::unordered_map<unsigned short, std::size_t> seen;
        for (std::size_t i = 0; i < before_.size(); ++i) {
            const std::vector<std::size_t>& alike = later[before_[i].id];
            partners_[i].occurrence = seen[before_[i].id]++;
            partners_[i].place =
                partners_[i].occurrence < alike.size() ? alike[partners_[i].occurrence] : after_.size();
            if (partners_[i].place < after_.size())
                isPaired_[partners_[i].place] = true;
        }
    }

    /// Calls the function with each pair or single block: null for what is not there, and the occurrence. What only the
    /// second image has follows the pair that it follows there.
    template <class Function>
    void forEach(Function function) const {
        const auto onlyAfter = [&](std::size_t i) {
            for (; i < after_.size() && !isPaired_[i]; ++i)
                function(nullptr, &after_[i], occurrences_[i]);
        };
        onlyAfter(0);
        for (std::size_t i = 0; i < before_.size(); ++i) {
            const std::size_t place = partners_[i].place;
            function(&before_[i], place < after_.size() ? &after_[place] : nullptr, partners_[i].occurrence);
            onlyAfter(place + 1);
        }
    }

private:
    struct Partner {
        std::size_t place; // in the second image, or its end
        std::size_t occurrence;
    };
    const std::vector<ImageBlock>& before_;
    const std::vector<ImageBlock>& after_;
    std::vector<Partner> partners_;
    std::vector<bool> isPaired_;
    std::vector<std::size_t> occurrences_; // of the second image's blocks
};

} // namespace

std::optional<double> FieldDiff::axisValue(const ElementDiff& element, std::size_t dimension) const {
    const Axis* const axis = dimension < dimensions.size() ? dimensions[dimension].axis.get() : nullptr;
    if (!axis)
        return std::nullopt;
    const std::span<const double> labels = axis->at(element.index.front());
    const unsigned int entry = element.index.at(dimension);
    return entry < labels.size() ? std::optional(labels[entry]) : std::nullopt;
}

std::string FieldDiff::axisText(const ElementDiff& element, std::size_t dimension) const {
    const Axis* const axis = dimension < dimensions.size() ? dimensions[dimension].axis.get() : nullptr;
    if (axis && element.index.at(dimension) < axis->texts.size())
        return axis->texts[element.index.at(dimension)];
    const std::optional<double> value = axisValue(element, dimension);
    return value ? withReadableUnit(axis->format.text(*value), axis->unit) : std::string();
}

std::string_view nameOf(HeaderWord word) {
    static constexpr std::array<std::string_view, 5> names{"size", "checksum", "alignment", "CRC-32", "filler"};
    return names.at(static_cast<std::size_t>(word));
}

// NOLINTNEXTLINE(modernize-pass-by-value): the interface has a reference
ImageDiff::ImageDiff(std::span<const char> before, std::span<const char> after, const DiffOptions& options)
    : options_(options), before_(before), after_(after) {
    diff::BlockComparison comparison(before_, after_, options_);
    const BlockSelector& selector = options_.blocks;
    Pairs(before_, after_).forEach([&](const ImageBlock* first, const ImageBlock* second, std::size_t occurrence) {
        if (!(first && selector.selects(*first)) && !(second && selector.selects(*second)))
            return;
        BlockDiff pair;
        pair.before = first;
        pair.after = second;
        pair.occurrence = occurrence;
        if (first && second && !isSameBytes(first->bytes, second->bytes))
            comparison.compare(pair);
        counts_.onlyBefore += pair.isOnlyBefore() ? 1 : 0;
        counts_.onlyAfter += pair.isOnlyAfter() ? 1 : 0;
        counts_.moved += pair.isMoved() ? 1 : 0;
        counts_.changed += pair.isChanged() ? 1 : 0;
        if (!first || !second || pair.isMoved() || pair.isChanged()) {
            blocks_.push_back(std::move(pair));
        } else {
            ++counts_.same;
            counts_.forgiven += pair.forgiven > 0 ? 1 : 0;
        }
    });
    if (options_.blocks.selectsAll())
        diff::UntoldBytes(before.subspan(before_.end()), after.subspan(after_.end())).appendTo(rest_);
}

std::span<const char> elementBytes(const ImageBlock& block, const Field* field, std::span<const unsigned int> index) {
    if (!field || !diff::hasElement(*field, index, block.bytes.size()))
        return {};
    return block.bytes.subspan(diff::offsetOf(*field, index), field->width);
}

std::string elementText(const ImageBlock& block, const Field* field, std::span<const unsigned int> index) {
    const std::span<const char> stored = elementBytes(block, field, index);
    if (stored.empty())
        return {};
    const Field element = elementOf(*field);
    if (element.stored == Stored::Text)
        return toUtf8(bytes::text(stored, 0, stored.size()));
    const double number = fieldValue(stored, element);
    if (element.role == Role::Date) {
        if (std::string date = dateText(static_cast<unsigned int>(number)); !date.empty())
            return date;
    }
    return isWideInteger(element) ? storedText(stored, element, 0) : NumberFormat(element).text(number);
}

} // namespace Travik
