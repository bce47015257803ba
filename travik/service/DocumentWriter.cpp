#include <travik/datablock/Checksum.h>
#include <travik/service/Document.h>
#include <travik/service/DocumentForm.h>
#include <travik/service/JsonText.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <ostream>

namespace Travik {

namespace {

using Range = BlockLayout::Range;

// Calls the function with the number of the field's type.
template <class Function>
void withStoredType(Stored stored, Function function) {
    switch (stored) {
    case Stored::U8:
        return function(std::type_identity<unsigned char>{});
    case Stored::I8:
        return function(std::type_identity<signed char>{});
    case Stored::U16:
        return function(std::type_identity<unsigned short>{});
    case Stored::I16:
        return function(std::type_identity<short>{});
    case Stored::U32:
        return function(std::type_identity<unsigned int>{});
    case Stored::I32:
        return function(std::type_identity<int>{});
    case Stored::U64:
        return function(std::type_identity<std::uint64_t>{});
    case Stored::I64:
        return function(std::type_identity<std::int64_t>{});
    case Stored::F32:
        return function(std::type_identity<float>{});
    case Stored::F64:
        return function(std::type_identity<double>{});
    case Stored::F80:
    case Stored::Text:
        break;
    }
}

// How many decimals the values of an integer field have; 0 where that cannot be said.
unsigned int decimalsOf(const Field& field) {
    if (field.zero != 0 || field.width > 4 || field.keepsLowest())
        return 0;
    const double step = field.scale;
    return step == 1e-1 ? 1 : step == 1e-2 ? 2 : step == 1e-3 ? 3 : 0;
}

/// One field of a block's bytes, as far as they go. Notes the elements that do not come back from what is written.
class FieldText {
public:
    FieldText(JsonText& out, std::span<const char> block, const Field& field, std::vector<Range>& lost)
        : out_(out), block_(block), field_(field), element_(elementOf(field)), lost_(lost), back_(field.width) {}

    void write() { write(0, field_.offset); }

private:
    JsonText& out_;
    std::span<const char> block_;
    const Field& field_;
    Field element_;
    std::vector<Range>& lost_;
    std::vector<char> back_;

    void write(unsigned int dimension, std::size_t offset) {
        if (dimension == field_.rank) {
            row(offset, 1, field_.width);
            return;
        }
        const Dimension& along = field_.dimensions[dimension];
        const unsigned int count = entriesInside(field_, along, offset, block_.size());
        out_.raw('[');
        if (dimension + 1U == field_.rank) {
            row(offset, count, along.stride);
        } else {
            for (unsigned int i = 0; i < count; ++i) {
                out_.raw(i == 0 ? "\n       " : ",\n       ");
                write(dimension + 1, offset + std::size_t{i} * along.stride);
            }
        }
        out_.raw(']');
    }

    template <class Function>
    void each(std::size_t offset, unsigned int count, std::size_t stride, Function function) {
        for (unsigned int i = 0; i < count; ++i, offset += stride) {
            if (i > 0)
                out_.raw(", ");
            function(offset);
        }
    }

    void row(std::size_t offset, unsigned int count, std::size_t stride) {
        if (field_.stored == Stored::Text)
            each(offset, count, stride, [this](std::size_t at) { text(at); });
        else if (field_.role == Role::Date)
            each(offset, count, stride, [this](std::size_t at) { date(at); });
        else if (field_.bits > 0 || field_.stored == Stored::F80)
            each(offset, count, stride, [this](std::size_t at) { number(at); });
        else
            withStoredType(field_.stored, [&](auto type) { typedRow(type, offset, count, stride); });
    }

    // Nearly all values there are: each kind of them in a loop of its own.
    template <class T>
    void typedRow(std::type_identity<T>, std::size_t offset, unsigned int count, std::size_t stride) {
        const auto load = [this](std::size_t at) { return bytes::load<T>(block_, at); };
        if constexpr (std::is_integral_v<T>) {
            if (isPlainInteger(field_))
                return each(offset, count, stride, [&](std::size_t at) { out_.whole(load(at)); });
            if (const unsigned int decimals = decimalsOf(field_)) {
                return each(offset, count, stride,
                            [&](std::size_t at) { out_.decimal(static_cast<long long>(load(at)), decimals); });
            }
        } else if (field_.scale == 1 && field_.zero == 0) {
            return each(offset, count, stride, [&](std::size_t at) {
                const auto value = static_cast<double>(load(at));
                if (std::isfinite(value))
                    out_.number(value);
                else
                    number(at);
            });
        }
        each(offset, count, stride, [this](std::size_t at) { number(at); });
    }

    void text(std::size_t at) {
        out_.latin1(bytes::text(block_, at, field_.width));
        bringBack(at);
    }

    void date(std::size_t at) {
        element_.offset = static_cast<unsigned int>(at);
        const double packed = fieldValue(block_, element_);
        const std::string iso = dateText(static_cast<unsigned int>(packed));
        if (iso.empty())
            out_.whole(static_cast<long long>(packed));
        else
            out_.string(iso);
    }

    void number(std::size_t at) {
        element_.offset = static_cast<unsigned int>(at);
        const double value = fieldValue(block_, element_);
        if (isPlainInteger(field_))
            out_.whole(static_cast<long long>(value)); // of some bits: never more than 32
        else if (alwaysComesBack(field_) || bringBack(at))
            out_.number(value);
        else
            out_.raw("null");
    }

    bool bringBack(std::size_t at) {
        const std::span<const char> stored = block_.subspan(at, field_.width);
        std::ranges::fill(back_, '\0');
        element_.offset = 0;
        const bool isNumber = Travik::bringBack(stored, element_, back_);
        if (!std::ranges::equal(stored, back_))
            lost_.push_back({at, field_.width});
        return isNumber;
    }
};

// From equal bytes of this number on, a run is written as one of them and how often it is there.
constexpr std::size_t longRun = 32;
// What two runs cost more than one over the few bytes between them.
constexpr std::size_t shortGap = 12;

/// Bytes as hexadecimal runs, each an object.
class Runs {
public:
    /// `withOffsets`: each says where it lies; else they follow each other.
    Runs(JsonText& out, bool withOffsets) : out_(out), withOffsets_(withOffsets) {}

    void write(std::span<const char> bytes, std::size_t offset) {
        std::size_t literal = 0; // where bytes begin that are not written yet
        for (std::size_t i = 0; i < bytes.size();) {
            const auto other = std::find_if(bytes.begin() + static_cast<std::ptrdiff_t>(i), bytes.end(),
                                            [&](char byte) { return byte != bytes[i]; });
            const auto end = static_cast<std::size_t>(other - bytes.begin());
            if (end - i >= longRun) {
                run(bytes.subspan(literal, i - literal), offset + literal, 0);
                run(bytes.subspan(i, 1), offset + i, end - i);
                literal = end;
            }
            i = end;
        }
        run(bytes.subspan(literal), offset + literal, 0);
    }

private:
    JsonText& out_;
    bool withOffsets_;
    bool isFirst_ = true;

    void run(std::span<const char> bytes, std::size_t offset, std::size_t length) {
        static constexpr std::string_view digits = "0123456789abcdef";
        if (bytes.empty())
            return;
        out_.raw(isFirst_ ? "\n      {" : ",\n      {");
        isFirst_ = false;
        if (withOffsets_) {
            out_.raw("\"offset\": ");
            out_.whole(offset);
            out_.raw(", ");
        }
        out_.raw(R"("hex": ")");
        for (const char byte : bytes) {
            out_.raw(digits[static_cast<unsigned char>(byte) >> 4U]);
            out_.raw(digits[static_cast<unsigned char>(byte) & 15U]);
        }
        out_.raw('"');
        if (length > 0) {
            out_.raw(", \"length\": ");
            out_.whole(length);
        }
        out_.raw('}');
    }
};

std::vector<Range> merged(std::vector<Range> ranges) {
    std::ranges::sort(ranges, {}, &Range::offset);
    std::vector<Range> few;
    for (const Range& range : ranges) {
        if (!few.empty() && range.offset <= few.back().offset + few.back().length + shortGap)
            few.back().length =
                std::max(few.back().offset + few.back().length, range.offset + range.length) - few.back().offset;
        else
            few.push_back(range);
    }
    return few;
}

// Whether the sum of the block's words says something: of the largest blocks none is taken.
std::optional<bool> checksumState(const ImageBlock& block) {
    return block.checksumChecked && block.id != endBlockId ? std::optional(block.checksumHolds) : std::nullopt;
}

/// Writes one image.
struct ImageText {
    JsonText out;
    ClassLayouts layouts;

    void key(std::string_view name) {
        out.raw('"');
        out.raw(name);
        out.raw("\": ");
    }

    void texts(std::string_view name, std::span<const Field* const> fields, auto has, auto write) {
        out.raw(",\n     ");
        key(name);
        out.raw('{');
        bool isFirst = true;
        for (const Field* const field : fields) {
            if (!has(*field))
                continue;
            out.raw(isFirst ? "" : ", ");
            isFirst = false;
            out.string(field->name);
            out.raw(": ");
            write(*field);
        }
        out.raw('}');
    }

    void blockText(const ImageBlock& block, std::span<const Field* const> fields,
                   const std::vector<unsigned char>* covered);
    void header(const ImageBlock& block);
    std::vector<Range> fieldTexts(const ImageBlock& block, std::span<const Field* const> fields);
    void rest(std::span<const char> bytes);
    void problems(const ModuleImage& image);
};

void ImageText::header(const ImageBlock& block) {
    const auto text = [this](std::string_view name, std::string_view value) {
        out.raw(", ");
        key(name);
        if (value.empty())
            out.raw("null");
        else
            out.string(value);
    };
    const auto number = [this](std::string_view name, std::optional<std::size_t> value) {
        out.raw(", ");
        key(name);
        if (value)
            out.whole(*value);
        else
            out.raw("null");
    };
    const auto state = [this](std::string_view name, std::optional<bool> holds) {
        out.raw(", ");
        key(name);
        out.raw(!holds ? "null" : *holds ? "true" : "false");
    };
    const bool hasWords = block.bytes.size() >= sizeof(HwSDatablockHeader);
    const auto word = [&](std::size_t offset) {
        return hasWords ? std::optional<std::size_t>(bytes::load<unsigned short>(block.bytes, offset)) : std::nullopt;
    };
    key("offset");
    out.whole(block.offset);
    number("id", block.id);
    text("key", toUtf8(keyOf(block)));
    text("class", block.isSecondEdition ? secondEditionClass
                  : block.entry         ? block.entry->className
                                        : std::string_view());
    number("size", block.sizeWord);
    number("alignment", word(offsetof(HwSDatablockHeader, alignment)));
    out.raw(",\n     ");
    key("checksum");
    if (const auto checksum = word(offsetof(HwSDatablockHeader, checksum)))
        out.whole(*checksum);
    else
        out.raw("null");
    state("checksum_ok", checksumState(block));
    state("crc_ok", block.crcHolds || block.isSecondEdition ? std::optional(block.crcHolds) : std::nullopt);
}

// Which elements do not come back.
std::vector<Range> ImageText::fieldTexts(const ImageBlock& block, std::span<const Field* const> fields) {
    std::vector<Range> lost;
    out.raw(",\n     ");
    key("fields");
    out.raw('{');
    bool isFirst = true;
    for (const Field* const field : fields) {
        out.raw(isFirst ? "\n      " : ",\n      ");
        isFirst = false;
        out.string(field->name);
        out.raw(": ");
        FieldText(out, block.bytes, *field, lost).write();
    }
    out.raw('}');
    return lost;
}

void ImageText::blockText(const ImageBlock& block, std::span<const Field* const> fields,
                          const std::vector<unsigned char>* covered) {
    out.raw("\n    {");
    header(block);
    std::vector<Range> lost = fieldTexts(block, fields);
    texts(
        "units", fields, [](const Field& field) { return *field.unit != '\0'; },
        [this](const Field& field) { out.string(field.unit); });
    texts(
        "axes", fields,
        [](const Field& field) {
            return std::ranges::any_of(field.dimensions, [](const Dimension& along) { return along.axisBlock != 0; });
        },
        [this](const Field& field) {
            for (unsigned int d = 0; d < field.rank; ++d) {
                out.raw(d == 0 ? "[" : ", ");
                if (field.dimensions[d].axisBlock != 0)
                    out.whole(field.dimensions[d].axisBlock);
                else
                    out.raw("null");
            }
            out.raw(']');
        });
    out.raw(",\n     ");
    key("digest");
    out.whole(crc32(block.bytes.data(), block.bytes.size()));
    if (block.bytes.size() != block.sizeWord) {
        out.raw(", ");
        key("length");
        out.whole(block.bytes.size());
    }
    if (covered) {
        for (std::size_t i = 0; i < block.bytes.size(); ++i) {
            const unsigned int bits = i < covered->size() ? (*covered)[i] : 0U;
            if ((static_cast<unsigned char>(block.bytes[i]) & ~bits) == 0)
                continue;
            if (!lost.empty() && lost.back().offset + lost.back().length == i)
                ++lost.back().length;
            else
                lost.push_back({i, 1});
        }
        if (!lost.empty()) {
            out.raw(",\n     ");
            key("raw");
            out.raw('[');
            Runs runs(out, true);
            for (const Range& range : merged(std::move(lost)))
                runs.write(block.bytes.subspan(range.offset, range.length), range.offset);
            out.raw(']');
        }
    }
    out.raw('}');
}

void ImageText::problems(const ModuleImage& image) {
    out.raw(",\n   ");
    key("problems");
    out.raw('[');
    bool isFirst = true;
    for (const ImageFinding& problem : image.problems()) {
        out.raw(isFirst ? "\n    {" : ",\n    {");
        isFirst = false;
        key("offset");
        out.whole(problem.offset);
        out.raw(", ");
        key("block");
        if (problem.id)
            out.whole(*problem.id);
        else
            out.raw("null");
        out.raw(", ");
        key("text");
        out.string(problem.text);
        out.raw('}');
    }
    out.raw(']');
}

void ImageText::rest(std::span<const char> bytes) {
    out.raw(",\n   ");
    key("rest");
    out.raw('[');
    Runs(out, false).write(bytes, 0);
    out.raw(']');
}

} // namespace

std::string jsonObject(std::string_view name, std::span<const char> bytes, const ModuleImage& image,
                       const DocumentFilter& filter) {
    ImageText state;
    JsonText& out = state.out;
    out.raw('{');
    state.key("image");
    out.string(name);
    out.raw(", ");
    state.key("size");
    out.whole(bytes.size());
    out.raw(",\n   ");
    state.key("blocks");
    out.raw('[');
    const bool isPartial = filter.block || filter.field;
    bool isFirst = true;
    std::vector<const Field*> fields;
    for (const ImageBlock& block : image.blocks()) {
        if (filter.block && !filter.block(block))
            continue;
        std::optional<BlockLayout> own;
        const ClassLayouts::Layout* shared = nullptr;
        if (block.isSecondEdition)
            own.emplace(block);
        else if (block.entry)
            shared = &state.layouts.of(block.id);
        const std::span<const Field> all = own      ? own->fields()
                                           : shared ? shared->fields.fields()
                                                    : std::span<const Field>();
        fields.clear();
        for (const Field& field : all) {
            const bool isThere = field.elements() == 0 || bytes::inside(block.bytes.size(), field.offset, field.width);
            if (isThere && (!filter.field || filter.field(field.name)))
                fields.push_back(&field);
        }
        if (filter.field && fields.empty())
            continue;
        std::vector<unsigned char> made;
        const std::vector<unsigned char>* covered = nullptr;
        if (shared && block.bytes.size() >= shared->size) {
            covered = &shared->covered;
        } else {
            made = coveredBits(all, block.id, block.bytes.size());
            covered = &made;
        }
        if (!isFirst)
            out.raw(',');
        isFirst = false;
        state.blockText(block, fields, filter.field ? nullptr : covered);
    }
    out.raw(']');
    state.problems(image);
    if (isPartial) {
        out.raw(",\n   ");
        state.key("partial");
        out.raw("true");
    } else if (image.end() < bytes.size()) {
        state.rest(bytes.subspan(image.end()));
    }
    out.raw('}');
    return out.take();
}

namespace {

template <class Append>
void composeDocument(std::span<const std::string> objects, Append append) {
    bool isEmpty = true;
    for (const std::string& object : objects) {
        if (object.empty())
            continue;
        append(isEmpty ? "[\n  " : ",\n  ");
        append(object);
        isEmpty = false;
    }
    append(isEmpty ? "[]\n" : "\n]\n");
}

} // namespace

std::string jsonDocument(std::span<const std::string> objects) {
    std::string text;
    composeDocument(objects, [&](std::string_view part) { text.append(part); });
    return text;
}

void writeJsonDocument(std::ostream& os, std::span<const std::string> objects) {
    composeDocument(objects, [&](std::string_view part) { os << part; });
}

} // namespace Travik
