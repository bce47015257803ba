#include <travik/service/DiffText.h>
#include <travik/service/NumberFormat.h>
#include <travik/service/TerminalText.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

namespace Travik {

namespace {

constexpr std::size_t longTable = 20;    // more differences than these are cut
constexpr std::size_t mostElements = 10; // to these
constexpr std::size_t mostFields = 20;   // of a block
constexpr std::size_t mostRuns = 8;      // of bytes
constexpr std::size_t mostBytes = 16;    // of a run
constexpr std::size_t mostLines = 1000;  // of all

std::string escaped(std::string_view utf8) { return terminalText(utf8, TextCharset::Utf8, TextLines::One); }

std::string counted(std::size_t count, std::string_view what) {
    return std::to_string(count).append(" ").append(what).append(count == 1 ? "" : "s");
}

std::string hexText(std::span<const char> bytes, std::size_t most) {
    std::string text;
    for (const char byte : bytes.first(std::min(most, bytes.size()))) {
        text += text.empty() ? "" : " ";
        appendHex(text, static_cast<unsigned char>(byte), 2);
    }
    if (bytes.size() > most)
        text += " ...";
    return text.empty() ? "none" : text;
}

/// Some four digits: to compare sizes by.
std::string roundText(double number) {
    constexpr double manyDigits = 1e4;
    constexpr double mostDigits = 1e15;
    std::array<char, 40> text;
    char* const end = text.data() + text.size();
    const double size = std::abs(number);
    const bool isWhole = size >= manyDigits && size < mostDigits;
    return {text.data(), (isWhole ? std::to_chars(text.data(), end, number, std::chars_format::fixed, 0)
                                  : std::to_chars(text.data(), end, number, std::chars_format::general, 4))
                             .ptr};
}

std::string withUnit(std::string text, const Field& field) {
    return *field.unit ? std::move(text) + ' ' + field.unit : std::move(text);
}

std::string indexText(const FieldDiff& field, const ElementDiff& element) {
    std::string text;
    for (unsigned int d = 0; d < field.field().rank; ++d)
        text += '[' + std::to_string(element.index.at(d)) + ']';
    return text;
}

/// Old and new of one element.
struct Values {
    std::string before;
    std::string after;

    Values(const BlockDiff& block, const FieldDiff& field, const ElementDiff& element)
        : before(text(block.before, field.before, element.isInBefore, element)),
          after(text(block.after, field.after, element.isInAfter, element)) {
        // Numbers that are shown alike and are not the same: their bytes tell. None is shown as what is not there.
        if (before == after) {
            before += " (" + bytes(*block.before, *field.before, element) + ')';
            after += " (" + bytes(*block.after, *field.after, element) + ')';
        }
    }

private:
    static std::string text(const ImageBlock* block, const Field* field, bool isThere, const ElementDiff& element) {
        if (!isThere)
            return "none";
        const std::string value = elementText(*block, field, element.index);
        return field->stored == Stored::Text ? '"' + escaped(value) + '"' : value;
    }
    static std::string bytes(const ImageBlock& block, const Field& field, const ElementDiff& element) {
        return hexText(elementBytes(block, &field, element.index), field.width);
    }
};

/// Composes the lines.
class Writer {
public:
    Writer(const ImageDiff& diff, const DiffNames& names, const DiffTextOptions& options)
        : diff_(diff), names_{escaped(names.before), escaped(names.after)}, options_(options) {}

    std::string write() {
        const std::vector<BlockDiff>& blocks = diff_.blocks();
        for (std::size_t i = 0; i < blocks.size();) {
            if (isFull()) {
                line("... and " + counted(blocks.size() - i, "more block") + " that differ" +
                     (blocks.size() - i == 1 ? "s" : ""));
                break;
            }
            const std::size_t run = options_.isBrief || options_.isWhole ? 1 : movedAlike(i);
            if (run > 1)
                moved(blocks[i], blocks[i + run - 1], run);
            else
                block(blocks[i]);
            i += run;
        }
        if (!diff_.rest().empty())
            rest();
        if (!diff_.isSame())
            summary();
        return std::move(text_);
    }

private:
    const ImageDiff& diff_;
    DiffNames names_;
    const DiffTextOptions& options_;
    std::string text_;
    std::size_t lines_ = 0;

    bool isFull() const { return !options_.isWhole && lines_ >= mostLines; }

    void line(std::string_view text, std::size_t indent = 0) {
        text_.append(indent, ' ').append(text).append("\n");
        ++lines_;
    }

    static std::string nameOfBlock(const ImageBlock& block) {
        const std::string key = escaped(toUtf8(keyOf(block)));
        return (key.empty() ? "unknown" : key) + "  " + std::to_string(block.id);
    }

    static std::ptrdiff_t shift(const BlockDiff& block) {
        return static_cast<std::ptrdiff_t>(block.after->offset) - static_cast<std::ptrdiff_t>(block.before->offset);
    }

    static std::string shiftText(std::ptrdiff_t by) { return (by > 0 ? "+" : "") + std::to_string(by); }

    // How many blocks from here on are the same but for their place, all moved by the same.
    std::size_t movedAlike(std::size_t first) const {
        const std::vector<BlockDiff>& blocks = diff_.blocks();
        const auto isMovedOnly = [](const BlockDiff& block) { return block.isMoved() && !block.isChanged(); };
        std::size_t end = first;
        while (end < blocks.size() && isMovedOnly(blocks[end]) && shift(blocks[end]) == shift(blocks[first]))
            ++end;
        return std::max<std::size_t>(end - first, 1);
    }

    void moved(const BlockDiff& first, const BlockDiff& last, std::size_t count) {
        line(nameOfBlock(first.block()) + " to " + nameOfBlock(last.block()) + "  " + std::to_string(count) +
             " blocks moved by " + shiftText(shift(first)));
    }

    void block(const BlockDiff& block) {
        const std::string name = nameOfBlock(block.block());
        std::string how = block.occurrence > 0 ? "  occurrence " + std::to_string(block.occurrence + 1) + "  " : "  ";
        const ImageBlock& shown = block.block();
        const std::string where = std::to_string(shown.bytes.size()) + " bytes at " + std::to_string(shown.offset);
        if (block.isOnlyBefore() || block.isOnlyAfter())
            how += "only in " + (block.isOnlyBefore() ? names_.before : names_.after) + ", " + where;
        if (block.isChanged())
            how += options_.isBrief ? "changed: " + brief(block) : "changed, " + where;
        if (block.isMoved())
            how += (block.isChanged() ? ", moved by " : "moved by ") + shiftText(shift(block)) + " to " +
                   std::to_string(block.after->offset);
        line(options_.isColoured ? "\x1b[1m" + name + "\x1b[m" + how : name + how);
        if (!block.isChanged() || options_.isBrief)
            return;
        if (block.before->bytes.size() != block.after->bytes.size())
            line("bytes  " + std::to_string(block.before->bytes.size()) + " -> " +
                     std::to_string(block.after->bytes.size()),
                 2);
        fields(block);
        words(block);
        bytes(block.bytes);
    }

    // "values 3, name 1, sums" and so on.
    static std::string brief(const BlockDiff& block) {
        std::string text;
        const auto add = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
        std::size_t shown = 0;
        for (const FieldDiff& field : block.fields) {
            if (++shown > 4)
                break;
            const bool isSingle = field.field().rank == 0;
            add(escaped(field.name()) + (isSingle ? "" : ' ' + std::to_string(field.elements.size())));
        }
        if (block.fields.size() > 4)
            add(counted(block.fields.size() - 4, "more field"));
        for (const WordDiff& word : block.words)
            add(std::string(nameOf(word.word)));
        if (!block.bytes.empty())
            add("bytes " + std::to_string(sizeOf(block.bytes)));
        if (!block.sumsAgree)
            add("sums " + sums(block));
        return text;
    }

    // "hold -> are wrong"
    static std::string sums(const BlockDiff& block) {
        const auto state = [](const ImageBlock& one) {
            if (!one.checksumChecked || one.isEnd())
                return "are not checked";
            const bool isWrong = !one.checksumHolds || (one.isSecondEdition && !one.crcHolds);
            return isWrong ? "are wrong" : "hold";
        };
        const std::string before = state(*block.before);
        const std::string after = state(*block.after);
        if (before != after)
            return before + " -> " + after;
        return block.before->crcHolds ? "with a CRC-32 that holds -> without" : "without a CRC-32 that holds -> with";
    }

    void words(const BlockDiff& block) {
        std::string text;
        for (const WordDiff& word : block.words) {
            text.append(text.empty() ? "" : ", ").append(nameOf(word.word));
            const auto number = [&](std::string_view before, std::uint32_t value) {
                text += before;
                if (word.word == HeaderWord::Size) {
                    text += std::to_string(value);
                } else {
                    text += "0x";
                    appendHex(text, value, word.word == HeaderWord::Crc32 ? 8 : 4);
                }
            };
            number(" ", word.before);
            number(" -> ", word.after);
        }
        if (!block.sumsAgree)
            text += (text.empty() ? "sums " : "; sums ") + sums(block);
        if (!text.empty())
            line(text, 2);
    }

    void fields(const BlockDiff& block) {
        std::size_t count = 0;
        for (const FieldDiff& field : block.fields) {
            if (!options_.isWhole && count == mostFields) {
                line("... and " + counted(block.fields.size() - count, "more field"), 2);
                return;
            }
            ++count;
            if (field.field().rank == 0)
                single(block, field);
            else
                table(block, field);
        }
    }

    static std::string change(const BlockDiff& block, const FieldDiff& field, const ElementDiff& element) {
        const Values values(block, field, element);
        const Field& shown = field.field();
        std::string text;
        if (isFrequencyUnit(shown.unit)) {
            const auto readable = [&](const std::string& value, bool isThere) {
                return isThere ? withReadableUnit(value, shown.unit) : value;
            };
            text = readable(values.before, element.isInBefore) + " -> " + readable(values.after, element.isInAfter);
        } else {
            text = element.isInAfter ? withUnit(values.before + " -> " + values.after, shown)
                                     : withUnit(values.before, shown) + " -> " + values.after;
        }
        if (std::isfinite(element.difference) && element.difference != 0)
            text += "  (" + std::string(element.difference > 0 ? "+" : "") + roundText(element.difference) + ')';
        return element.isUsed ? text : text + "  not in use";
    }

    void single(const BlockDiff& block, const FieldDiff& field) {
        for (const ElementDiff& element : field.elements)
            line(escaped(field.name()) + "  " + change(block, field, element), 2);
    }

    void table(const BlockDiff& block, const FieldDiff& field) {
        const std::vector<ElementDiff>& elements = field.elements;
        std::size_t both = 0;
        std::size_t onlyBefore = 0;
        for (const ElementDiff& element : elements) {
            both += element.isInBefore && element.isInAfter ? 1 : 0;
            onlyBefore += element.isInAfter ? 0 : 1;
        }
        std::string text = escaped(field.name()) + "  ";
        if (both > 0) {
            text += std::to_string(both) + " of " + std::to_string(field.field().elements()) + " changed";
            if (field.numbers > 1)
                text += withUnit(", largest " + roundText(field.largest) + ", mean " + roundText(field.mean),
                                 field.field());
        }
        const auto onlyIn = [&](std::size_t count, const std::string& name) {
            if (count > 0)
                text += (text.ends_with("  ") ? "" : ", ") + std::to_string(count) + " only in " + name;
        };
        onlyIn(onlyBefore, names_.before);
        onlyIn(elements.size() - both - onlyBefore, names_.after);
        line(text, 2);
        list(block, field);
    }

    // What is no number is beyond any size; what is there only once comes last.
    static double rank(const ElementDiff& element) {
        if (std::isfinite(element.difference))
            return -std::abs(element.difference);
        return element.isInBefore && element.isInAfter ? -std::numeric_limits<double>::infinity() : 1;
    }

    // In the order of the table; of many the largest first, and what only one image has is counted above.
    void list(const BlockDiff& block, const FieldDiff& field) {
        const bool isLong = field.elements.size() > longTable;
        std::vector<std::pair<double, const ElementDiff*>> order;
        const bool isCut = isLong && !options_.isWhole;
        std::size_t count = 0;
        for (const ElementDiff& element : field.elements) {
            if (isCut && !(element.isInBefore && element.isInAfter))
                continue;
            ++count;
            const std::pair<double, const ElementDiff*> next(isLong ? rank(element) : 0, &element);
            if (isCut && order.size() == mostElements) { // a heap of the largest so far
                if (!(next < order.front()))
                    continue;
                std::ranges::pop_heap(order);
                order.back() = next;
                std::ranges::push_heap(order);
            } else {
                order.push_back(next);
                if (isCut)
                    std::ranges::push_heap(order);
            }
        }
        if (isLong)
            std::ranges::sort(order);
        std::vector<std::string> labels;
        std::size_t width = 0;
        for (const auto& [size, element] : order) {
            std::string label = indexText(field, *element);
            for (unsigned int d = 0; d < field.field().rank; ++d) {
                const std::string axis = escaped(field.axisText(*element, d));
                label.append(axis.empty() ? "" : "  ").append(axis);
            }
            width = std::max(width, columnsOf(label));
            labels.push_back(std::move(label));
        }
        for (std::size_t i = 0; i < order.size(); ++i) {
            labels[i].append(width + 2 - columnsOf(labels[i]), ' ');
            line(labels[i] + change(block, field, *order[i].second), 4);
        }
        if (order.size() < count)
            line("... and " + std::to_string(count - order.size()) + " more", 4);
    }

    static std::size_t sizeOf(const std::vector<BytesDiff>& list) {
        return std::accumulate(list.begin(), list.end(), std::size_t{0}, [](std::size_t sum, const BytesDiff& run) {
            return sum + std::max(run.before.size(), run.after.size());
        });
    }

    void bytes(const std::vector<BytesDiff>& list) {
        const std::size_t shown = options_.isWhole ? list.size() : std::min(list.size(), mostRuns);
        for (const BytesDiff& run : std::span(list).first(shown)) {
            const std::size_t most = options_.isWhole ? std::string::npos : mostBytes;
            std::string text = "bytes at " + std::to_string(run.offset) + "  " + hexText(run.before, most) + " -> " +
                               hexText(run.after, most);
            const std::size_t size = std::max(run.before.size(), run.after.size());
            if (size > most)
                text += "  (" + counted(size, "byte") + ')';
            line(text, 2);
        }
        if (shown < list.size())
            line("... and " + counted(list.size() - shown, "more run") + ", " + counted(sizeOf(list), "byte") +
                     " in all",
                 2);
    }

    void rest() {
        const bool areBlocks = !diff_.before().blocks().empty() || !diff_.after().blocks().empty();
        const std::string what = areBlocks ? "behind the last block" : "no block";
        const std::string count = counted(sizeOf(diff_.rest()), "byte");
        line(options_.isBrief ? what + "  changed: " + count
                              : what + "  " + count + (sizeOf(diff_.rest()) == 1 ? " differs" : " differ"));
        if (!options_.isBrief)
            bytes(diff_.rest());
    }

    void summary() {
        const DiffCounts& counts = diff_.counts();
        std::string text = std::to_string(counts.same) + " same";
        if (counts.forgiven > 0)
            text += " (" + std::to_string(counts.forgiven) + " of them within the tolerance)";
        const auto add = [&](std::size_t count, const std::string& what) {
            if (count > 0)
                text += ", " + std::to_string(count) + ' ' + what;
        };
        add(counts.changed, "changed");
        add(counts.moved, "moved");
        add(counts.onlyBefore, "only in " + names_.before);
        add(counts.onlyAfter, "only in " + names_.after);
        line("blocks: " + text);
    }
};

} // namespace

std::string diffText(const ImageDiff& diff, const DiffNames& names, const DiffTextOptions& options) {
    return Writer(diff, names, options).write();
}

} // namespace Travik
