#pragma once

#include <travik/datablock/Bytes.h>
#include <travik/datablock/ErrorDefinitions.h>
#include <travik/datablock/RecordFields.h>

#include <optional>
#include <utility>

namespace Travik {

namespace detail {

/// Where an element of type T (rank by rank an array) lies in its member, or nothing for an index out of range.
template <class T, class... Index>
constexpr std::optional<std::size_t> elementOffset(Index... indices) noexcept {
    if constexpr (sizeof...(indices) == 0) {
        static_assert(!std::is_array_v<T>, "one index a dimension");
        return 0;
    } else {
        return []<class First, class... Rest>(First first, Rest... rest) -> std::optional<std::size_t> {
            using Inner = std::remove_extent_t<T>;
            if (std::cmp_less(first, 0) || std::cmp_greater_equal(first, std::extent_v<T>))
                return std::nullopt;
            const auto inner = elementOffset<Inner>(rest...);
            return inner ? std::optional(static_cast<std::size_t>(first) * sizeof(Inner) + *inner) : std::nullopt;
        }(indices...);
    }
}

} // namespace detail

/// A block that is one fixed record: what every concrete block does the same way. Adds no virtual operation.
///
/// Fields are addressed by member pointer; bounds follow from the array types, negative indices count as out of range,
/// and every access is held against the buffer's real length.
///
/// No operation here, or of the blocks between this one and a class, is called "get" or "set" and a name: those are the
/// names that classes give their accessors, and an accessor that hides what it forwards to calls itself.
template <class R>
class RecordBlock : public HwDatablock {
public:
    using Record = R;
    static_assert(std::is_trivially_copyable_v<R> && std::is_base_of_v<HwSDatablockHeader, R>);
    static_assert(sizeof(R) <= 0xFFFF, "the size word holds the record's size");
    static_assert(detail::HasFieldList<R>, "next to the record stands its field list: recordFields<R>");

    /// The buffer as the typed record.
    Record* getBlock() { return reinterpret_cast<Record*>(getData()); }

protected:
    static constexpr unsigned short recordSize = sizeof(Record);

    RecordBlock(unsigned short id, bool stopConversionOnError) : HwDatablock(id, recordSize, stopConversionOnError) {}

    /// The element, or a zero value out of range.
    template <auto Member, class... Index>
    detail::ElementType<Member> get(Index... indices) const {
        const auto offset = offsetOf<Member>(indices...);
        return offset ? bytes::load<detail::ElementType<Member>>(image(), *offset) : detail::ElementType<Member>{};
    }

    /// Whether the element is in range and lies in the buffer.
    template <auto Member, class... Index>
    bool holds(Index... indices) const {
        const auto offset = offsetOf<Member>(indices...);
        return offset && bytes::inside(image().size(), *offset, sizeof(detail::ElementType<Member>));
    }

    /// Stores the element; false, and nothing done, out of range.
    template <auto Member, class... Index>
    bool put(const detail::ElementType<Member>& value, Index... indices) {
        const auto offset = offsetOf<Member>(indices...);
        return offset && bytes::store(image(), *offset, value);
    }

    /// Stores the element and refreshes the checksum; false, and nothing done, out of range.
    template <auto Member, class... Index>
    bool set(const detail::ElementType<Member>& value, Index... indices) {
        const bool stored = put<Member>(value, indices...);
        if (stored)
            refreshChecksum();
        return stored;
    }

    /// A character field, up to its first NUL or its end.
    template <auto Member>
    std::string_view loadText() const {
        return bytes::text(image(), detail::memberOffset<Member>(), sizeof(detail::MemberType<Member>));
    }

    /// The text up to its first NUL, at most `longest` characters, the rest of the field NUL; false where the field
    /// does not lie in the buffer.
    template <auto Member>
    bool putText(std::string_view text, std::size_t longest = sizeof(detail::MemberType<Member>)) {
        return bytes::storeText(image(), detail::memberOffset<Member>(), sizeof(detail::MemberType<Member>),
                                text.substr(0, longest));
    }

    /// The same, and refreshes the checksum.
    template <auto Member>
    void storeText(std::string_view text, std::size_t longest = sizeof(detail::MemberType<Member>)) {
        if (putText<Member>(text, longest))
            refreshChecksum();
    }

    /// An array of bytes, for reading: where it lies in the buffer, or zeros where it does not lie there wholly.
    template <auto Member>
    const detail::ElementType<Member>* loadBytes() const {
        using Element = detail::ElementType<Member>;
        static_assert(sizeof(Element) == 1);
        static constexpr detail::MemberType<Member> zeros{};
        constexpr std::size_t length = sizeof zeros;
        const std::size_t offset = detail::memberOffset<Member>();
        return bytes::inside(image().size(), offset, length) ? reinterpret_cast<const Element*>(image().data() + offset)
                                                             : zeros;
    }

    /// Overwrites the first `length` bytes of an array of bytes, at most all of it. The source may lie in the buffer.
    /// False, and nothing done, where the array does not lie wholly in the buffer.
    template <auto Member>
    bool putBytes(const void* source, std::size_t length) {
        constexpr std::size_t capacity = sizeof(detail::MemberType<Member>);
        static_assert(sizeof(detail::ElementType<Member>) == 1);
        const std::size_t offset = detail::memberOffset<Member>();
        if (!bytes::inside(image().size(), offset, capacity))
            return false;
        bytes::storeElements(image(), offset, source, std::min(length, capacity), 1);
        return true;
    }

    /// Whether a caller's record sums to 0; null does not.
    bool verifyRecord(const Record* record) {
        return verifyChecksum(reinterpret_cast<unsigned short*>(const_cast<Record*>(record)), recordSize, true);
    }

    /// The caller's header, zeros for null; his record may be unaligned.
    static HwSDatablockHeader headerOf(const Record* record) {
        HwSDatablockHeader header{};
        if (record)
            std::memcpy(&header, record, sizeof header);
        return header;
    }

    /// All that follows the header, field by field, so that a buffer that is too short takes what it can hold. The
    /// record may lie in the block's own buffer.
    void copyFields(const Record* record) {
        const auto* source = reinterpret_cast<const char*>(record);
        if (image().size() >= recordSize) {
            bytes::storeElements(image(), sizeof(HwSDatablockHeader), source + sizeof(HwSDatablockHeader),
                                 recordSize - sizeof(HwSDatablockHeader), 1);
            return;
        }
        for (const Field& field : recordFields<Record>) {
            const unsigned int count = field.elements();
            // A repeated entry's fields lie apart; they are copied one by one.
            for (unsigned int i = 0; i < count; ++i) {
                const std::size_t offset = field.elementOffset(i);
                bytes::storeElements(image(), offset, source + offset, field.width, field.width);
            }
        }
    }

    /// Takes a whole record over: refuses one with a wrong checksum (signals 1040001 with three blanks and the name,
    /// returns 1, changes nothing), otherwise copies it with the class's size word, and returns 0. The stored checksum
    /// is the record's own. `adapt` is called between the two, for what a class takes over differently.
    template <class Adapt>
    int takeOver(const Record* record, const char* errorName, unsigned short alignment, Adapt adapt) {
        if (!verifyRecord(record)) {
            signalError(DownloadDenied, errorName);
            return 1;
        }
        return accept(record, alignment, adapt);
    }
    int takeOver(const Record* record, const char* errorName, unsigned short alignment = 0) {
        return takeOver(record, errorName, alignment, [] {});
    }

    /// The second half of a take-over, for a class with a rule of its own about which records are good. Returns 0.
    template <class Adapt>
    int accept(const Record* record, unsigned short alignment, Adapt adapt) {
        const HwSDatablockHeader header = headerOf(record);
        storeHeader(header.id, recordSize, alignment);
        copyFields(record);
        adapt();
        setChecksum(header.checksum);
        return 0;
    }

    /// Re-stores the block from a record of the other byte order, unchecked; size and checksum words are the record's.
    /// Null does nothing.
    template <class Adapt>
    void restore(const Record* record, unsigned short alignment, Adapt adapt) {
        if (!record)
            return;
        const HwSDatablockHeader header = headerOf(record);
        storeHeader(header.id, header.blockSize, alignment);
        copyFields(record);
        adapt();
        setChecksum(header.checksum);
    }
    void restore(const Record* record, unsigned short alignment = 0) {
        restore(record, alignment, [] {});
    }

private:
    template <auto Member, class... Index>
    static std::optional<std::size_t> offsetOf(Index... indices) {
        const auto within = detail::elementOffset<detail::MemberType<Member>>(indices...);
        return within ? std::optional(detail::memberOffset<Member>() + *within) : std::nullopt;
    }
};

} // namespace Travik
