#pragma once

#include <travik/datablock/RecordBlock.h>
#include <travik/text/TextLayout.h>

#include <string>

/// What the calibration tables of the boards have in common: header, count, an array of one or two dimensions, setters
/// that refresh the checksum, a take-over, a text. A record says in its `table` what is its own; a block class over it
/// adds the names of its accessors.
///
/// Of every block here: an index out of range, negative ones included, reads as 0 and its setter does nothing. Setters
/// refresh the checksum. `setBlock` takes a whole record over, with whatever identifier it has: 0, or 1 when its
/// checksum is wrong; then error 1040001 is signalled and the block is unchanged.
namespace Travik {

#pragma pack(push, 1)
/// A counted array. `Size` repeats the bytes of the whole record, for readers and for the compiler to check.
template <class Values, unsigned int Size, class Count = unsigned int>
struct CountedRecord : HwSDatablockHeader {
    Count count; ///< entries in use; whatever was stored, which may exceed the capacity
    Values values;

    static_assert(sizeof(HwSDatablockHeader) + sizeof(Count) + sizeof(Values) == Size);
};
#pragma pack(pop)

namespace detail {

template <class Values, unsigned int Size, class Count>
void derivesFromCounted(const CountedRecord<Values, Size, Count>&);

template <class R>
concept CountedNumbers = requires(const R& record) {
    derivesFromCounted(record);
    requires std::is_arithmetic_v<ElementType<&R::values>>;
};

template <class R>
consteval auto countedFields() {
    constexpr auto count = field<&R::count>("count").as(Role::Count);
    if constexpr (std::rank_v<MemberType<&R::values>> == 1)
        return describe<R>(count, field<&R::values>("values").along(0, "point", "count"));
    else
        return describe<R>(count, field<&R::values>("values").along(0, "step", "count").along(1, "point"));
}

} // namespace detail

template <detail::CountedNumbers R>
inline constexpr auto recordFields<R> = detail::countedFields<R>();

/// The key name of a kind of block. Where there is one block a path, "*" stands for the letter of the path, A for the
/// first identifier; other identifiers have an empty name.
struct KeyName {
    std::string_view text;
    int paths = 0;                ///< 0: one name, whatever the identifier
    std::string_view countedBy{}; ///< the key that the count line names
    int firstId = 0;              ///< of the paths; 0: the identifier of the block
};

/// What a kind of block is called.
struct BlockName {
    unsigned short id; ///< of path A where there is one block a path
    const char* errorName;
    KeyName key;
    KeyName formerKey{}; ///< the name under identifiers that the kind had before

    TRAVIK_DATABLOCK_EXPORT std::string keyOf(int id) const;
    TRAVIK_DATABLOCK_EXPORT std::string countKeyOf(int id) const;
};

/// What the values of a table are, for its field list.
struct Quantity {
    const char* name = "values";
    const char* unit = "";
    double scale = 1.0; ///< value in the unit = stored number × scale
    Role role = Role::Value;
    int axisBlock = 0; ///< identifier of the block with the frequencies, of several paths that of path A; 0: none
};

/// How users see a stored number.
enum class Shown : unsigned char {
    AsStored,
    Negated, ///< in 16 bits
    TenHertz ///< units of 10 Hz, shown in Hz; a point that repeats the one before is shown 0.01 Hz higher
};

/// A table of one value a line.
struct ListTable {
    BlockName name;
    Quantity values;
    ListLayout text;
    Shown shown = Shown::AsStored;
    /// Fixed, and left as precision on the stream; negative: floating values in the stream's current format.
    int decimals = -1;
    unsigned int largestCount = 0xFFFFFFFF; ///< the count setter ignores larger ones
    bool printsToCapacity = false;          ///< no zeros for a count beyond the capacity
};

/// A table of one row a line, all columns of the capacity on it; its rows are counted in the low 16 bits of the count.
struct StepTable {
    BlockName name;
    Quantity values;
    MatrixLayout text;
    unsigned int labelStep = 1;        ///< from one row label to the next
    bool printsBeyondCapacity = false; ///< zeros for a count beyond the capacity
};

/// A block with a text of its own.
struct PlainTable {
    BlockName name;
    HeadLayout text;
};

namespace detail {

TRAVIK_DATABLOCK_EXPORT FieldList quantityFields(std::span<const Field> fields, const Quantity& quantity);

/// Frequency point k in Hz of an image with points in units of 10 Hz.
TRAVIK_DATABLOCK_EXPORT double tenHertzPoint(std::span<const char> image, unsigned int capacity, unsigned int k);

/// The values that tables are printed of. Another one is added here and where the prints are instantiated.
template <class Value, class... Printed>
inline constexpr bool isOneOf = (std::is_same_v<Value, Printed> || ...);
template <class Value>
inline constexpr bool isListValue = isOneOf<Value, short, int, unsigned int, float, double>;
template <class Value>
inline constexpr bool isStepValue = isOneOf<Value, short, int>;

/// The texts of the tables whose count and values lie in an image as those of a CountedRecord.
template <class Value>
TRAVIK_DATABLOCK_EXPORT std::ostream& printListTable(std::ostream& os, const ListTable& table, int id,
                                                     std::span<const char> image, unsigned int capacity);
template <class Value>
TRAVIK_DATABLOCK_EXPORT std::ostream& printStepTable(std::ostream& os, const StepTable& table, int id,
                                                     std::span<const char> image, unsigned int rows,
                                                     unsigned int columns);

} // namespace detail

/// A block whose record has a `table` that says what it is called.
template <class R>
class DescribedBlock : public RecordBlock<R> {
public:
    /// The key name that a block with this identifier prints.
    static std::string keyOf(int id) { return R::table.name.keyOf(id); }

    explicit DescribedBlock(bool stopConversionOnError = false)
        : DescribedBlock(R::table.name.id, stopConversionOnError) {}

    int setBlock(const R* record) { return this->takeOver(record, R::table.name.errorName); }

protected:
    DescribedBlock(unsigned short id, bool stopConversionOnError) : RecordBlock<R>(id, stopConversionOnError) {}
};

/// A block of a CountedRecord.
template <class R>
class CountedBlock : public DescribedBlock<R> {
public:
    using CountedBlock::DescribedBlock::DescribedBlock;

protected:
    using Count = detail::ElementType<&R::count>;
    using Value = detail::ElementType<&R::values>;

    Count count() const { return this->template get<&R::count>(); }
    void storeCount(Count count) { this->template set<&R::count>(count); }

    template <class... Index>
    Value value(Index... indices) const {
        return this->template get<&R::values>(indices...);
    }
    template <class... Index>
    void storeValue(const Value& value, Index... indices) {
        this->template set<&R::values>(value, indices...);
    }
};

/// A block of a record with a ListTable.
template <class R>
class ListBlock : public CountedBlock<R> {
public:
    using ListBlock::CountedBlock::CountedBlock;
    using typename ListBlock::CountedBlock::Count;
    using typename ListBlock::CountedBlock::Value;

    static FieldList fieldsOf(int /*id*/) { return detail::quantityFields(recordFields<R>, R::table.values); }

    int setBlock(const R* record) {
        const Count before = this->count();
        return this->takeOver(record, R::table.name.errorName, 0, [&] {
            if (!accepts(this->count()))
                this->template put<&R::count>(before);
        });
    }

    std::ostream& printToStream(std::ostream& os) override {
        static_assert(detail::isListValue<Value>,
                      "a list is printed of short, int, unsigned int, float or double values");
        return detail::printListTable<Value>(os, R::table, this->getId(), this->image(), capacity);
    }

protected:
    static constexpr unsigned int capacity = std::extent_v<detail::MemberType<&R::values>>;

    static bool accepts(Count count) { return !std::cmp_greater(count, R::table.largestCount); }

    void storeCount(Count count) {
        if (accepts(count))
            this->template set<&R::count>(count);
    }

    template <class Index>
    Value value(Index index) const {
        const Value stored = this->template get<&R::values>(index);
        if constexpr (std::is_same_v<Value, short>) {
            if (R::table.shown == Shown::Negated)
                return static_cast<Value>(-stored);
        }
        return stored;
    }
};

/// A list whose count goes by that name.
template <class R>
class CountingListBlock : public ListBlock<R> {
public:
    using CountingListBlock::ListBlock::ListBlock;

    unsigned int getCount() const { return this->count(); }
    void setCount(unsigned int count) { ListBlock<R>::storeCount(count); }
};

/// A block of a record with a StepTable.
template <class R>
class StepBlock : public CountedBlock<R> {
public:
    using StepBlock::CountedBlock::CountedBlock;
    using typename StepBlock::CountedBlock::Value;

    static FieldList fieldsOf(int /*id*/) { return detail::quantityFields(recordFields<R>, R::table.values); }

    int setBlock(const R* record) {
        return this->takeOver(record, R::table.name.errorName, 0, [&] { cutCount(); });
    }

    std::ostream& printToStream(std::ostream& os) override { return print(os, rows); }

protected:
    static constexpr unsigned int rows = std::extent_v<detail::MemberType<&R::values>>;
    static constexpr unsigned int columns = std::extent_v<detail::MemberType<&R::values>, 1>;

    void storeSteps(unsigned short steps) { this->storeCount(steps); }

    /// What the setter would have stored of a record's count.
    void cutCount() { this->template put<&R::count>(static_cast<unsigned short>(this->count())); }

    std::ostream& print(std::ostream& os, unsigned int usableRows) {
        static_assert(detail::isStepValue<Value>, "a table of steps is printed of short or int values");
        return detail::printStepTable<Value>(os, R::table, this->getId(), this->image(), usableRows, columns);
    }
};

} // namespace Travik
