#include <travik/service/DiffText.h>
#include <travik/service/DocumentForm.h>
#include <travik/service/JsonText.h>
#include <travik/service/StoreValue.h>

#include <algorithm>
#include <cmath>

namespace Travik {

namespace {

/// Writes the document.
class DiffDocument {
public:
    DiffDocument(const ImageDiff& diff, const DiffNames& names) : diff_(diff), names_(names) {}

    std::string write() {
        out_.raw('{');
        image("old", names_.before, diff_.before());
        out_.raw(",\n ");
        image("new", names_.after, diff_.after());
        out_.raw(",\n ");
        key("same");
        flag(diff_.isSame());
        out_.raw(", ");
        key("tolerance");
        out_.number(diff_.options().tolerance);
        out_.raw(", ");
        key("relative");
        out_.number(diff_.options().relative);
        out_.raw(", ");
        key("partial");
        flag(!diff_.options().blocks.selectsAll());
        counts();
        out_.raw(",\n ");
        list("blocks", "\n  ", diff_.blocks(), [this](const BlockDiff& block) { this->block(block); });
        out_.raw(",\n ");
        list("rest", "\n  ", diff_.rest(), [this](const BytesDiff& run) { bytes(run); });
        out_.raw("}\n");
        return out_.take();
    }

private:
    const ImageDiff& diff_;
    const DiffNames& names_;
    JsonText out_;

    void key(std::string_view name) {
        out_.raw('"');
        out_.raw(name);
        out_.raw("\": ");
    }
    void flag(bool isSet) { out_.raw(isSet ? "true" : "false"); }
    void state(bool isKnown, bool holds) { out_.raw(!isKnown ? "null" : holds ? "true" : "false"); }
    void member(std::string_view name) {
        out_.raw(", ");
        key(name);
    }

    template <class List, class Write>
    void list(std::string_view name, std::string_view indent, const List& items, Write write) {
        key(name);
        out_.raw('[');
        bool isFirst = true;
        for (const auto& item : items) {
            out_.raw(isFirst ? "" : ",");
            out_.raw(indent);
            isFirst = false;
            write(item);
        }
        out_.raw(']');
    }

    void image(std::string_view name, std::string_view file, const ModuleImage& image) {
        key(name);
        out_.raw('{');
        key("image");
        out_.string(file);
        member("blocks");
        out_.whole(image.blocks().size());
        member("end");
        out_.whole(image.end());
        out_.raw('}');
    }

    void counts() {
        const DiffCounts& counts = diff_.counts();
        out_.raw(",\n ");
        key("counts");
        out_.raw('{');
        key("same");
        out_.whole(counts.same);
        member("forgiven");
        out_.whole(counts.forgiven);
        member("changed");
        out_.whole(counts.changed);
        member("moved");
        out_.whole(counts.moved);
        member("only_old");
        out_.whole(counts.onlyBefore);
        member("only_new");
        out_.whole(counts.onlyAfter);
        out_.raw('}');
    }

    void side(std::string_view name, const ImageBlock* block) {
        out_.raw(",\n   ");
        key(name);
        if (!block)
            return out_.raw("null");
        out_.raw('{');
        key("offset");
        out_.whole(block->offset);
        member("length");
        out_.whole(block->bytes.size());
        member("checksum_ok");
        state(block->checksumChecked && !block->isEnd(), block->checksumHolds);
        member("crc_ok");
        state(block->crcHolds || block->isSecondEdition, block->crcHolds);
        out_.raw('}');
    }

    void block(const BlockDiff& diff) {
        const ImageBlock& block = diff.block();
        out_.raw('{');
        key("id");
        out_.whole(block.id);
        member("key");
        const std::string name = toUtf8(keyOf(block));
        if (name.empty())
            out_.raw("null");
        else
            out_.string(name);
        member("occurrence");
        out_.whole(diff.occurrence);
        member("changed");
        flag(diff.isChanged());
        member("moved");
        flag(diff.isMoved());
        member("forgiven");
        out_.whole(diff.forgiven);
        side("old", diff.before);
        side("new", diff.after);
        words(diff.words);
        out_.raw(",\n   ");
        list("fields", "\n    ", diff.fields, [&](const FieldDiff& field) { this->field(diff, field); });
        out_.raw(",\n   ");
        list("bytes", "\n    ", diff.bytes, [this](const BytesDiff& run) { bytes(run); });
        out_.raw('}');
    }

    void words(const std::vector<WordDiff>& words) {
        static constexpr std::array<std::string_view, 5> keys{"size", "checksum", "alignment", "crc32", "filler"};
        out_.raw(",\n   ");
        key("words");
        out_.raw('{');
        bool isFirst = true;
        for (const WordDiff& word : words) {
            out_.raw(isFirst ? "" : ", ");
            isFirst = false;
            key(keys.at(static_cast<std::size_t>(word.word)));
            out_.raw("{\"old\": ");
            out_.whole(word.before);
            member("new");
            out_.whole(word.after);
            out_.raw('}');
        }
        out_.raw('}');
    }

    void number(double value, std::size_t count) {
        if (count == 0)
            out_.raw("null");
        else
            out_.number(value);
    }

    void field(const BlockDiff& block, const FieldDiff& field) {
        out_.raw('{');
        key("field");
        out_.string(field.name());
        member("unit");
        if (*field.field().unit)
            out_.string(field.field().unit);
        else
            out_.raw("null");
        member("count");
        out_.whole(field.elements.size());
        member("largest");
        number(field.largest, field.numbers);
        member("mean");
        number(field.mean, field.numbers);
        member("axes");
        out_.raw('[');
        for (std::size_t d = 0; d < field.dimensions.size(); ++d) {
            out_.raw(d == 0 ? "" : ", ");
            if (field.dimensions[d].axisBlock != 0)
                out_.whole(field.dimensions[d].axisBlock);
            else
                out_.raw("null");
        }
        out_.raw("],\n     ");
        list("elements", "\n      ", field.elements,
             [&](const ElementDiff& element) { this->element(block, field, element); });
        out_.raw('}');
    }

    void element(const BlockDiff& block, const FieldDiff& field, const ElementDiff& element) {
        out_.raw('{');
        key("index");
        out_.raw('[');
        for (unsigned int d = 0; d < field.field().rank; ++d) {
            out_.raw(d == 0 ? "" : ", ");
            out_.whole(element.index.at(d));
        }
        out_.raw(']');
        member("axis");
        out_.raw('[');
        for (std::size_t d = 0; d < field.dimensions.size(); ++d) {
            out_.raw(d == 0 ? "" : ", ");
            label(field, element, d);
        }
        out_.raw(']');
        // Where the numbers do not tell one from the other.
        const bool isTold = element.isInBefore && element.isInAfter && element.before != element.after;
        value("old", block.before, field.before, element, element.isInBefore, element.before, isTold);
        value("new", block.after, field.after, element, element.isInAfter, element.after, isTold);
        if (std::isfinite(element.difference)) {
            member("difference");
            out_.number(element.difference);
        }
        member("used");
        flag(element.isUsed);
        out_.raw('}');
    }

    void label(const FieldDiff& field, const ElementDiff& element, std::size_t dimension) {
        if (const std::optional<double> value = field.axisValue(element, dimension))
            return out_.number(*value);
        const std::string text = field.axisText(element, dimension);
        if (text.empty())
            out_.raw("null");
        else
            out_.string(text);
    }

    void value(const std::string& name, const ImageBlock* block, const Field* field, const ElementDiff& element,
               bool isThere, double number, bool isTold) {
        if (!isThere)
            return;
        member(name);
        const std::string text = elementText(*block, field, element.index);
        if (field->stored == Stored::Text)
            return out_.string(text);
        const std::span<const char> stored = elementBytes(*block, field, element.index);
        const Field one = elementOf(*field);
        const std::string plain = storedText(stored, one, 0);
        const bool isDate = field->role == Role::Date && text.find('-', 1) != std::string::npos;
        const bool isPlain = isPlainInteger(*field) && std::isfinite(number);
        if (isDate)
            out_.string(text);
        else if (isPlain)
            out_.raw(plain);
        else
            out_.number(number);
        member(name + "_stored");
        out_.raw(std::isfinite(number) ? std::string_view(plain) : "null");
        if (!isTold || !std::isfinite(number) || field->stored == Stored::F80) {
            member(name + "_hex");
            hex(stored);
        }
    }

    void hex(std::span<const char> bytes) {
        static constexpr std::string_view digits = "0123456789abcdef";
        out_.raw('"');
        for (const char byte : bytes) {
            out_.raw(digits[static_cast<unsigned char>(byte) >> 4U]);
            out_.raw(digits[static_cast<unsigned char>(byte) & 15U]);
        }
        out_.raw('"');
    }

    void bytes(const BytesDiff& run) {
        out_.raw('{');
        key("offset");
        out_.whole(run.offset);
        member("old");
        hex(run.before);
        member("new");
        hex(run.after);
        out_.raw('}');
    }
};

} // namespace

std::string diffDocument(const ImageDiff& diff, const DiffNames& names) { return DiffDocument(diff, names).write(); }

} // namespace Travik
