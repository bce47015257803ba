#pragma once

#include <travik/datablock/Bytes.h>
#include <travik/service/Values.h>

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

/// What the writer and the reader of documents have to agree on.
namespace Travik {

/// The class of tables that describe themselves; no identifier has it.
inline constexpr std::string_view secondEditionClass = "HwDatablock2Edition";
inline constexpr unsigned short endBlockId = 0xFFFF;

/// Whether null stands for some of the field's values: those that are no finite numbers.
bool takesNull(const Field& field);
/// Whether the numbers of the field are the stored integers themselves.
bool isPlainInteger(const Field& field);
/// Whether these have 64 bits: more digits than a double.
bool isWideInteger(const Field& field);
/// Whether every element comes back from a document, whatever its bytes are.
bool alwaysComesBack(const Field& field);

/// What comes back of an element's bytes by way of its number or text in a document, into `back`, which is as long.
/// False where the document has null for it; null comes back as erased bytes. The field's offset is 0 and its rank,
/// too; it is none of plain integers, which need no such question.
bool bringBack(std::span<const char> element, const Field& field, std::span<char> back);

/// The bits of a block's bytes that are in its header words or its fields, as far as these lie wholly in the block.
/// What is not covered travels as bytes.
std::vector<unsigned char> coveredBits(std::span<const Field> fields, unsigned short id, std::size_t size);

/// Which bits of its word are the field's: all, but where it has only some.
inline std::uint32_t bitsOf(const Field& field) {
    return field.bits == 0 ? ~0U : static_cast<std::uint32_t>(((std::uint64_t{1} << field.bits) - 1) << field.shift);
}

/// A field as one of its elements, which are told apart by the offset.
inline Field elementOf(const Field& field, std::size_t offset = 0) {
    Field element = field;
    element.rank = 0;
    element.offset = static_cast<unsigned int>(offset);
    return element;
}

/// How many entries of a dimension, from `offset` on, have at least their first element wholly inside `size` bytes.
inline unsigned int entriesInside(const Field& field, const Dimension& along, std::size_t offset, std::size_t size) {
    if (!bytes::inside(size, offset, field.width))
        return 0;
    const std::size_t room = size - offset - field.width;
    return along.stride == 0 ? along.extent
                             : static_cast<unsigned int>(std::min<std::size_t>(along.extent, room / along.stride + 1));
}

/// Calls the function with the offset of every element that lies wholly inside `size` bytes, in the order of the list.
/// What the bytes do not reach costs nothing.
template <class Function>
void forEachElementInside(const Field& field, std::size_t size, Function function) {
    const auto visit = [&](const auto& self, unsigned int dimension, std::size_t offset) -> void {
        if (dimension == field.rank) {
            if (bytes::inside(size, offset, field.width))
                function(offset);
            return;
        }
        const Dimension& along = field.dimensions[dimension];
        const unsigned int count = entriesInside(field, along, offset, size);
        for (unsigned int i = 0; i < count; ++i)
            self(self, dimension + 1, offset + std::size_t{i} * along.stride);
    };
    visit(visit, 0, field.offset);
}

/// The layouts of classes, each made once. Only of identifiers that have a class.
class ClassLayouts {
public:
    struct Layout {
        BlockLayout fields;
        std::size_t size;                   ///< of the record, header included
        std::vector<unsigned char> covered; ///< of a whole record
    };
    const Layout& of(int id);

private:
    std::map<int, Layout> layouts_;
};

} // namespace Travik
