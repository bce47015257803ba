#pragma once

#include "BlockClasses.h"
#include "Check.h"
#include "ImageBefore.h"

#include <travik/text/TableBlock.h>

#include <cmath>
#include <concepts>
#include <limits>
#include <tuple>
#include <utility>

/// From the names of operations, which the build reads off the headers, to calls of them.
namespace Fuzz {

using Travik::HwDatablock;

/// An operation by its name alone, of whatever class. `isMember` is true for one that cannot be reached as well.
#define TRAVIK_OPERATION(NAME)                                                                                         \
    struct Operation_##NAME {                                                                                          \
        [[maybe_unused]] static constexpr const char* name = #NAME;                                                    \
        template <class Block>                                                                                         \
        [[maybe_unused]] static constexpr bool isReached = requires {                                                  \
            &Block::NAME;                                                                                              \
        };                                                                                                             \
        template <class Block>                                                                                         \
        static constexpr auto of() {                                                                                   \
            return &Block::NAME;                                                                                       \
        }                                                                                                              \
        struct Namesake {                                                                                              \
            int NAME;                                                                                                  \
        };                                                                                                             \
        template <class Block>                                                                                         \
        struct Both : Block, Namesake {};                                                                              \
        template <class Block>                                                                                         \
        [[maybe_unused]] static constexpr bool isMember = !requires {                                                  \
            &Both<Block>::NAME;                                                                                        \
        };                                                                                                             \
    };

template <class... Operation>
struct OperationList {};
template <class SetOperation, class GetOperation>
struct CoupleOf {};
template <class... Each>
struct CoupleList {};

/// The parts of an operation's type.
template <class Pointer>
struct Signature;
template <class Pointer>
struct Signature<const Pointer> : Signature<Pointer> {};
template <class C, class R, class... A>
struct SignatureOf {
    using Class = C;
    using Result = R;
    using Arguments = std::tuple<Argument<A>...>;
    using Parameters = std::tuple<A...>;
};
template <class C, class R, class... A>
struct Signature<R (C::*)(A...)> : SignatureOf<C, R, A...> {
    static constexpr bool isConst = false;
};
template <class C, class R, class... A>
struct Signature<R (C::*)(A...) const> : SignatureOf<C, R, A...> {
    static constexpr bool isConst = true;
};
template <class C, class R, class... A>
struct Signature<R (C::*)(A...) noexcept> : Signature<R (C::*)(A...)> {};
template <class C, class R, class... A>
struct Signature<R (C::*)(A...) const noexcept> : Signature<R (C::*)(A...) const> {};
template <class R, class... A>
struct Signature<R (*)(A...)> : SignatureOf<HwDatablock, R, A...> {
    static constexpr bool isConst = true;
};

namespace detail {

inline volatile char touched;

/// The first byte of what is handed out for reading, so that a sanitizer sees whether it is there.
template <class Result>
void touch(const Result& result) {
    if constexpr (std::is_same_v<Result, const char*> || std::is_same_v<Result, const unsigned char*>) {
        if (result)
            touched = static_cast<char>(*result);
    }
}

template <auto Operation, class Arguments, std::size_t... I>
void callWith(HwDatablock& block, Arguments& arguments, std::index_sequence<I...> /*indices*/) {
    using Of = Signature<decltype(Operation)>;
    const auto invoke = [&]() -> decltype(auto) {
        if constexpr (std::is_member_function_pointer_v<decltype(Operation)>)
            return (static_cast<typename Of::Class&>(block).*Operation)(std::get<I>(arguments).get()...);
        else
            return Operation(std::get<I>(arguments).get()...);
    };
    if constexpr (std::is_void_v<typename Of::Result>)
        invoke();
    else
        touch(invoke());
}

/// A length behind bytes is of no more than there are.
template <class... A>
void fitLength(std::tuple<A...>& arguments, const Surroundings& with) {
    if constexpr (std::is_same_v<std::tuple<A...>,
                                 std::tuple<Argument<const unsigned char*>, Argument<unsigned int>>>) {
        auto& length = std::get<1>(arguments).value;
        if (with.length < Argument<const unsigned char*>::longest)
            length = std::min(length, static_cast<unsigned int>(with.length));
    }
}

template <class... A>
std::tuple<A...> argumentsOf(Surroundings& with, std::tuple<A...>* /*type*/) {
    std::tuple<A...> arguments{A(with)...};
    fitLength(arguments, with);
    return arguments;
}

template <auto Operation>
void call(Surroundings& with) {
    using Arguments = typename Signature<decltype(Operation)>::Arguments;
    auto arguments = argumentsOf(with, static_cast<Arguments*>(nullptr));
    callWith<Operation>(with.block, arguments, std::make_index_sequence<std::tuple_size_v<Arguments>>());
}

/// Whether a value came back. A getter's type may be wider or of the other sign.
template <class Given, class Got>
bool isSame(const Given& given, const Got& got) {
    if constexpr (std::is_same_v<Got, QString>) {
        // Cut to its field, and at a NUL; other than Latin-1 comes back as something else.
        return QString::fromLatin1(given.toLatin1()).startsWith(got);
    } else if constexpr (std::is_enum_v<Given>) {
        return static_cast<long long>(given) == static_cast<long long>(got);
    } else if constexpr (std::is_floating_point_v<Given> || std::is_floating_point_v<Got>) {
        const auto wide = static_cast<long double>(given);
        const auto back = static_cast<long double>(got);
        return wide == back || (std::isnan(wide) && std::isnan(back));
    } else if constexpr (std::is_arithmetic_v<Given>) {
        return static_cast<Got>(given) == got;
    } else {
        return std::memcmp(&given, &got, sizeof got) == 0;
    }
}

/// Whether an index means the same to the getter.
template <class To, class From>
bool isRepresentable(From index) {
    return std::cmp_equal(static_cast<To>(index), index);
}

/// Holds what was given back to what was stored.
template <class Stored, class Got>
class Outcome {
public:
    Outcome(HwDatablock& block, const Rule& rule, const Stored& value, const Got& before, const Got& after,
            std::size_t extent)
        : block_(block), rule_(rule), value_(value), before_(before), after_(after), extent_(extent) {}

    void hold() const {
        // A word of a bit field, a count of 32 bits that is set with 16; a text; part of a record.
        constexpr std::size_t widest = std::is_same_v<Stored, QString> ? 64 : std::max<std::size_t>(8, sizeof(Stored));
        require(extent_ <= widest, "more is changed than what was set");
        if (extent_ == 0) {
            require(rule_.gives != Return::Same || isSame(value_, after_) || isSame(before_, after_),
                    "another value is given back, though nothing is stored");
            return;
        }
        // Of a size word below 6, the checksum is not among the words that are summed.
        if (rule_.seals && block_.getBlockSize() >= 6)
            require(block_.verifyChecksum(), "the checksum is wrong after a setter");
        if (rule_.gives == Return::Same)
            require(isSame(value_, after_), "another value is given back than was stored");
        if (rule_.gives == Return::Scaled)
            holdScaled();
    }

private:
    HwDatablock& block_;
    const Rule& rule_;
    const Stored& value_;
    const Got& before_;
    const Got& after_;
    std::size_t extent_;

    /// Within a step of the scale and one of whole numbers. What cannot be held lies at an end of the range: an
    /// infinity, where the type has one.
    void holdScaled() const {
        const auto* const table = dynamic_cast<Travik::TableBlock*>(&block_);
        require(table, "a scale without a table");
        if constexpr (std::is_arithmetic_v<Stored> && std::is_arithmetic_v<Got>) {
            const auto given = static_cast<double>(value_);
            const auto got = static_cast<double>(after_);
            const double step = std::abs(table->getScaleFactor()) + 1.0 + std::abs(given) * 1e-6;
            const bool isBeyond = std::isinf(got) && std::abs(given) > std::numeric_limits<float>::max();
            require(!std::isfinite(given) || std::abs(given - got) <= step || std::abs(got) < std::abs(given) ||
                        isBeyond,
                    "a value far from the one that was stored is given back");
        }
    }
};

/// A setter of one value and indices with the getter of the same indices.
template <auto Set, auto Get, class Value, class... Index>
struct CoupleCheck {
    using Setter = typename Signature<decltype(Set)>::Class;
    using Getter = typename Signature<decltype(Get)>::Class;
    using Stored = std::remove_cvref_t<Value>;
    using Got = std::remove_cvref_t<typename Signature<decltype(Get)>::Result>;
    using GetParameters = typename Signature<decltype(Get)>::Parameters;
    using Indices = std::tuple<Argument<Index>...>;

    static void check(Surroundings& with, const Rule& rule) {
        checkAt(with, rule, std::index_sequence_for<Index...>());
    }

private:
    template <std::size_t... I>
    static void checkAt(Surroundings& with, const Rule& rule, std::index_sequence<I...> /*indices*/) {
        const Argument<Value> value(with);
        const Indices index{Argument<Index>(with)...};
        HwDatablock& block = with.block;
        if (!(isRepresentable<std::tuple_element_t<I, GetParameters>>(std::get<I>(index).value) && ...))
            return;
        const auto set = [&](const Stored& stored) {
            static_cast<void>((static_cast<Setter&>(block).*Set)(stored, std::get<I>(index).value...));
        };
        const auto get = [&]() -> Got {
            if constexpr (sizeof...(I) == 2) {
                if (rule.swapped)
                    return (static_cast<Getter&>(block).*Get)(indexOf<1 - I, I>(index)...);
            }
            return (static_cast<Getter&>(block).*Get)(indexOf<I, I>(index)...);
        };
        const Got before = get();
        const ImageBefore image(block);
        set(value.get());
        const std::size_t extent = image.changedExtent(block);
        const Got after = get();
        Outcome<Stored, Got>(block, rule, value.value, before, after, extent).hold();
        if constexpr (std::is_convertible_v<Got, Stored>) {
            if (rule.gives == Return::Lossy && extent > 0) {
                set(static_cast<Stored>(after));
                require(isSame(after, get()), "what is given back is not given back again");
            }
        }
    }

    /// The setter's index, as the getter wants it.
    template <std::size_t From, std::size_t To>
    static auto indexOf(const Indices& index) {
        return static_cast<std::remove_cvref_t<std::tuple_element_t<To, GetParameters>>>(std::get<From>(index).value);
    }
};

template <class Parameter>
inline constexpr bool isValue = std::is_arithmetic_v<Parameter> || std::is_enum_v<Parameter> ||
                                std::is_same_v<Parameter, const QString&> ||
                                (std::is_reference_v<Parameter> &&
                                 std::is_trivially_copyable_v<std::remove_cvref_t<Parameter>>);

template <class Parameters>
inline constexpr bool takesIndices = false;
template <class... Index>
inline constexpr bool takesIndices<std::tuple<Index...>> = (std::is_integral_v<Index> && ...);

template <class Block, class SetOperation, class GetOperation>
void addCouple(BlockClass& table) {
    if constexpr (SetOperation::template isReached<Block> && GetOperation::template isReached<Block> &&
                  !isReachedOtherwise(SetOperation::name)) {
        constexpr auto set = SetOperation::template of<Block>();
        constexpr auto get = GetOperation::template of<Block>();
        using GetParameters = typename Signature<decltype(get)>::Parameters;
        [&]<class Value, class... Index>(std::tuple<Value, Index...>* /*type*/) {
            if constexpr (isValue<Value> && takesIndices<std::tuple<Index...>> && takesIndices<GetParameters> &&
                          sizeof...(Index) == std::tuple_size_v<GetParameters>) {
                enterCouple(table, SetOperation::name, GetOperation::name,
                            CoupleCheck<set, get, Value, Index...>::check);
            }
        }(static_cast<typename Signature<decltype(set)>::Parameters*>(nullptr));
    }
}

template <class Block, class Operation>
void addAccessor(BlockClass& table) {
    if constexpr (isReachedOtherwise(Operation::name)) {
        return;
    } else if constexpr (Operation::template isReached<Block>) {
        constexpr auto operation = Operation::template of<Block>();
        if constexpr (std::is_function_v<std::remove_pointer_t<decltype(operation)>> ||
                      std::is_member_function_pointer_v<decltype(operation)>) {
            constexpr std::string_view name = Operation::name;
            constexpr bool changes =
                !Signature<decltype(operation)>::isConst && !name.starts_with("get") && !name.starts_with("print");
            enterAccessor(table, Operation::name, changes, call<operation>);
        }
    } else {
        static_assert(isConditional(Operation::name) || !Operation::template isMember<Block>,
                      "an operation that cannot be reached by its name, say one of several: see Rules.h");
    }
}

/// A record as the input has it, sealed or not; the two words that say what it is are right more often than not.
template <class Record>
void makeUp(Record& record, Surroundings& with) {
    HwDatablock& block = with.block;
    const unsigned int kind = with.input.byte();
    auto* const bytes = reinterpret_cast<char*>(&record);
    const std::size_t start = (kind & 4U) != 0 ? with.input.word() % sizeof(Record) : 0;
    const auto given = with.input.take(std::min<std::size_t>(with.input.byte(), sizeof(Record) - start));
    std::ranges::copy(given, bytes + start);
    if constexpr (sizeof(Record) >= sizeof(Travik::HwSDatablockHeader)) {
        if ((kind & 1U) != 0) {
            record.id = block.getId();
            record.blockSize = static_cast<unsigned short>(sizeof(Record));
        }
        if ((kind & 2U) != 0) {
            record.checksum = block.computeChecksum(reinterpret_cast<unsigned short*>(bytes),
                                                    static_cast<unsigned short>(sizeof(Record)));
        }
    }
}

/// A record that is refused changes neither the image nor what the block is labelled with.
template <class Block, class Record>
void takeOver(Surroundings& with) {
    auto& block = static_cast<Block&>(with.block);
    const auto format = block.getDataFormatTyp();
    std::unique_ptr<char[]> memory;
    if (with.input.byte() != 0) {
        memory = std::make_unique<char[]>(sizeof(Record));
        makeUp(*reinterpret_cast<Record*>(memory.get()), with);
    }
    const ImageBefore before(block);
    const int status = block.setBlock(reinterpret_cast<const Record*>(memory.get()));
    require(block.getDataFormatTyp() == format, "a record changed the label of the byte order");
    require(status == 0 || before.isUnchanged(block), "a record that was refused changed the image");
    require(status == 0 || status == 1 || status == 1040000 || status == -1, "an unknown status");
    require(memory || before.isUnchanged(block), "null changed the image");
}

template <class Block>
void addTakeOver(BlockClass& table) {
    if constexpr (requires { &Block::setBlock; }) {
        []<class C, class R, class Record>(R (C::* /*operation*/)(const Record*), BlockClass& to) {
            to.recordSize = sizeof(Record);
            to.takeOver = takeOver<Block, Record>;
        }(&Block::setBlock, table);
    } else {
        static_assert(
            !requires(Block & block) { block.setBlock(nullptr); }, "several of the name setBlock");
    }
}

} // namespace detail

/// Enters a class of a header into the table; false for one that is no block.
template <class Block, class Operations, class Couples>
bool addClass(const char* name) {
    if constexpr (std::derived_from<Block, HwDatablock> && !std::is_abstract_v<Block>) {
        BlockClass& table = enterClass(name, typeid(Block), [](const HwDatablock& block) {
            return dynamic_cast<const Block*>(&block) != nullptr;
        });
        if constexpr (std::is_default_constructible_v<Block>)
            table.make = []() -> HwDatablock* { return new Block(); };
        else if constexpr (std::is_constructible_v<Block, bool>)
            table.make = []() -> HwDatablock* { return new Block(false); };
        [&]<class... Each>(OperationList<Each...>) { (detail::addAccessor<Block, Each>(table), ...); }(Operations());
        [&]<class... Set, class... Get>(CoupleList<CoupleOf<Set, Get>...>) {
            (detail::addCouple<Block, Set, Get>(table), ...);
        }(Couples());
        detail::addTakeOver<Block>(table);
        return true;
    } else {
        return false;
    }
}

} // namespace Fuzz
