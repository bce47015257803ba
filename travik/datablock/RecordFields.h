#pragma once

#include <travik/datablock/Fields.h>

#include <concepts>
#include <type_traits>

/// How a record's field list is written down, next to the record, with nothing said twice: types, widths and extents
/// come from the members, offsets from their order.
///
///     template <> inline constexpr auto recordFields<HwSDatablockStatistic> = describe<HwSDatablockStatistic>(
///         field<&HwSDatablockStatistic::opHours>("operating_hours").in("h"));
namespace Travik {

namespace detail {

struct NoFieldList {};

template <class>
struct MemberOf;
template <class T, class R>
struct MemberOf<T R::*> {
    using Type = T;
    using Record = R;
};
template <auto Member>
using MemberType = typename MemberOf<decltype(Member)>::Type;
template <auto Member>
using RecordType = typename MemberOf<decltype(Member)>::Record;
template <auto Member>
using ElementType = std::remove_all_extents_t<MemberType<Member>>;

/// Bytes from the start of the struct to its member.
template <auto Member>
consteval std::size_t memberOffset() {
    using R = RecordType<Member>;
    struct Nothing {};
    union Overlay {
        Nothing nothing;
        char bytes[sizeof(R)];
        R record;
        constexpr Overlay() : nothing{} {}
    };
    constexpr Overlay overlay;
    // Addresses alone are compared; of the two views of the same bytes none holds a value.
    const void* const member = &(overlay.record.*Member);
    std::size_t offset = 0;
    while (&overlay.bytes[offset] != member)
        ++offset;
    return offset;
}

/// Whether there is a `Stored` for the type.
template <class T>
inline constexpr bool isStorable = std::is_same_v<T, float> || std::is_same_v<T, double> ||
                                   (std::is_integral_v<T> && sizeof(T) <= sizeof(int));

template <class T>
consteval Stored storedAs() {
    static_assert(std::is_arithmetic_v<T>, "an entry that is a struct is listed with `entries`");
    static_assert(isStorable<T>, "a field is an integer of up to 32 bits, a float or a double");
    if constexpr (std::is_same_v<T, char>)
        return Stored::I8; // whatever the host makes of a plain char
    else if constexpr (std::is_floating_point_v<T>)
        return sizeof(T) == sizeof(float) ? Stored::F32 : Stored::F64;
    else if constexpr (sizeof(T) == 1)
        return std::is_signed_v<T> ? Stored::I8 : Stored::U8;
    else if constexpr (sizeof(T) == 2)
        return std::is_signed_v<T> ? Stored::I16 : Stored::U16;
    else
        return std::is_signed_v<T> ? Stored::I32 : Stored::U32;
}

template <class T>
consteval void prependDimensions(Field& field) {
    constexpr std::size_t added = std::rank_v<T>;
    for (std::size_t i = field.rank; i-- > 0;)
        field.dimensions.at(i + added) = field.dimensions[i];
    const auto append = [&]<class U>(const auto& self, std::type_identity<U>, std::size_t depth) -> void {
        if constexpr (std::is_array_v<U>) {
            field.dimensions[depth] = {.extent = std::extent_v<U>, .stride = sizeof(std::remove_extent_t<U>)};
            self(self, std::type_identity<std::remove_extent_t<U>>{}, depth + 1);
        }
    };
    append(append, std::type_identity<T>{}, 0);
    field.rank = static_cast<unsigned char>(field.rank + added);
}

} // namespace detail

/// A piece of a list that is being written down: one field, or the fields of a repeated entry, and how many bytes of
/// the record it covers.
template <std::size_t N>
struct FieldSet {
    std::array<Field, N> fields{};
    unsigned int size = 0;
    std::size_t place = 0; ///< of its member in the record, or in the entry; held against the place in the list

    /// Unit, and the factor and zero point that lead from the stored number to the value in that unit.
    consteval FieldSet in(const char* unit, double scale = 1.0, double zero = 0.0) const {
        return with([&](Field& field) {
            field.unit = unit;
            field.scale = scale;
            field.zero = zero;
        });
    }

    consteval FieldSet as(Role role) const {
        return with([&](Field& field) { field.role = role; });
    }

    /// Names a dimension (outermost 0), the field that counts its entries in use, and the block that labels them: its
    /// identifier, of blocks that exist once a path that of the first.
    consteval FieldSet along(std::size_t dimension, const char* name, const char* count = nullptr,
                             int axisBlock = 0) const {
        return with([&](Field& field) {
            field.dimensions.at(dimension).name = name;
            field.dimensions.at(dimension).count = count;
            field.dimensions.at(dimension).axisBlock = axisBlock;
        });
    }

    /// The value is `count` bits of the word, from bit `shift` on.
    consteval FieldSet bits(unsigned char shift, unsigned char count, bool isSigned = false) const {
        return with([&](Field& field) {
            field.shift = shift;
            field.bits = count;
            field.isSigned = isSigned;
        });
    }

    /// A further value in the word of the field before.
    consteval FieldSet sameWord() const {
        FieldSet set = *this;
        set.size = 0;
        return set;
    }

private:
    consteval FieldSet with(auto change) const {
        FieldSet set = *this;
        for (Field& field : set.fields)
            change(field);
        return set;
    }
};

/// A member that is a number, or an array of numbers of any rank.
template <auto Member>
consteval FieldSet<1> field(const char* name) {
    using T = detail::MemberType<Member>;
    FieldSet<1> set{.size = sizeof(T), .place = detail::memberOffset<Member>()};
    set.fields[0].name = name;
    set.fields[0].stored = detail::storedAs<detail::ElementType<Member>>();
    set.fields[0].width = sizeof(detail::ElementType<Member>);
    detail::prependDimensions<T>(set.fields[0]);
    return set;
}

/// A member that is a character field, or an array of such fields.
template <auto Member>
consteval FieldSet<1> text(const char* name) {
    using T = detail::MemberType<Member>;
    FieldSet<1> set{.size = sizeof(T), .place = detail::memberOffset<Member>()};
    Field& field = set.fields[0];
    field.name = name;
    field.role = Role::Text;
    field.stored = Stored::Text;
    detail::prependDimensions<T>(field);
    field.width = field.dimensions[--field.rank].extent;
    field.dimensions[field.rank] = {};
    return set;
}

namespace detail {

/// The fields one after the other, from `start` bytes behind the start of their record or entry.
template <std::size_t... N>
constexpr auto sequence(unsigned int start, const FieldSet<N>&... sets) {
    FieldSet<(N + ... + 0)> all{.size = start};
    std::size_t next = 0;
    unsigned int previous = start;
    [[maybe_unused]] const auto append = [&](const auto& set) {
        const unsigned int base = set.size == 0 ? previous : all.size;
        if (set.place != base)
            throw "the list names the fields in another order than the record, or leaves one out";
        for (Field field : set.fields) {
            field.offset += base;
            all.fields[next++] = field;
        }
        previous = base;
        all.size += set.size;
    };
    (append(sets), ...);
    return all;
}

} // namespace detail

/// A member that is an array of structs: the fields of one entry, repeated.
template <auto Member, std::size_t... N>
consteval auto entries(const FieldSet<N>&... sets) {
    using T = detail::MemberType<Member>;
    auto all = detail::sequence(0, sets...);
    if (all.size != sizeof(detail::ElementType<Member>))
        throw "the fields do not cover the entry";
    for (Field& field : all.fields)
        detail::prependDimensions<T>(field);
    all.size = sizeof(T);
    all.place = detail::memberOffset<Member>();
    return all;
}

/// The list of a record: its fields in order, covering all that follows the header.
template <class Record, std::size_t... N>
consteval auto describe(const FieldSet<N>&... sets) {
    const auto all = detail::sequence(sizeof(HwSDatablockHeader), sets...);
    if (all.size != sizeof(Record))
        throw "the fields do not cover the record";
    return all.fields;
}

/// Specialised for every record, a bare header included.
template <class Record>
inline constexpr detail::NoFieldList recordFields{};

namespace detail {

/// Of packed records, which have no byte that is not a field's.
template <class Record>
bool sameBytes(const Record& left, const Record& right) {
    return std::memcmp(reinterpret_cast<const char*>(&left), reinterpret_cast<const char*>(&right), sizeof left) == 0;
}

template <class Record>
concept HasFieldList = !std::same_as<std::remove_const_t<decltype(recordFields<Record>)>, NoFieldList>;

} // namespace detail

/// Records are equal when all four header words and every field are.
template <class Record>
requires(std::derived_from<Record, HwSDatablockHeader>&& detail::HasFieldList<Record>) bool operator==(
    const Record& left, const Record& right) {
    // The list covers the record: without a floating field, its fields are its bytes.
    if constexpr (std::ranges::none_of(recordFields<Record>, &Field::isFloating)) {
        return detail::sameBytes(left, right);
    } else {
        const HwSDatablockHeader& leftHeader = left;
        const HwSDatablockHeader& rightHeader = right;
        return leftHeader == rightHeader &&
               equalFields({reinterpret_cast<const char*>(&left), sizeof left},
                           {reinterpret_cast<const char*>(&right), sizeof right}, recordFields<Record>);
    }
}

} // namespace Travik
