#pragma once

#include "Input.h"
#include "OddStream.h"

#include <travik/tables/SecondEdition.h>

#include <QString>

#include <memory>
#include <string>

/// Values for the parameters of any operation, made of an input. A parameter of a type that nothing here makes does not
/// compile: the type is added, or the operation is named in Rules.h.
namespace Fuzz {

/// What operations on a block are called with beside the input.
struct Surroundings {
    Input& input;
    Travik::HwDatablock& block;
    Travik::HwDatablock& other; ///< for operations of two blocks
    /// Bytes behind the pointer made last, where a length follows it.
    std::size_t length = 0;
};

template <class T>
struct Argument;

template <class T>
requires(std::is_arithmetic_v<T>) struct Argument<T> {
    explicit Argument(Surroundings& with) : value(with.input.number<T>()) {}
    T get() const { return value; }
    T value;
};

/// Enumerations have a fixed underlying type: every number is a value.
template <class T>
requires(std::is_enum_v<T>) struct Argument<T> {
    explicit Argument(Surroundings& with) : value(static_cast<T>(with.input.number<std::underlying_type_t<T>>())) {}
    T get() const { return value; }
    T value;
};

/// Up to 63 characters, Latin-1 or not.
template <>
struct Argument<QString> {
    explicit Argument(Surroundings& with) {
        const unsigned int kind = with.input.byte();
        const auto bytes = with.input.take(kind % 64);
        const auto length = static_cast<qsizetype>(bytes.size());
        value = kind < 128 ? QString::fromLatin1(bytes.data(), length) : QString::fromUtf8(bytes.data(), length);
    }
    const QString& get() const { return value; }
    QString value;
};
template <>
struct Argument<const QString&> : Argument<QString> {
    using Argument<QString>::Argument;
};

/// A terminated text, or null.
template <>
struct Argument<const char*> {
    explicit Argument(Surroundings& with) : isNull(with.input.byte() % 8 == 0) {
        const auto bytes = with.input.take(with.input.byte() % 64);
        value.assign(bytes.begin(), bytes.end());
        value.shrink_to_fit();
    }
    const char* get() const { return isNull ? nullptr : value.c_str(); }
    bool isNull;
    std::string value;
};

/// Some bytes with nothing behind them, or null. A length that follows is made to fit.
template <class Byte>
requires(sizeof(Byte) == 1 && std::is_unsigned_v<Byte>) struct Argument<Byte*> {
    static constexpr std::size_t longest = 600; ///< more than any operation takes
    explicit Argument(Surroundings& with) {
        const unsigned int kind = with.input.word();
        with.length = longest;
        if (kind % 8 == 0)
            return;
        const std::size_t length = kind / 8 % (longest + 1);
        // The least is what a value of a second-edition table needs.
        value = std::make_unique<unsigned char[]>(std::max<std::size_t>(length, 20));
        std::ranges::copy(with.input.take(length), reinterpret_cast<char*>(value.get()));
        with.length = length;
    }
    Byte* get() const { return value.get(); }
    std::unique_ptr<unsigned char[]> value;
};

/// What an operation stores beside its result.
template <>
struct Argument<unsigned int*> {
    explicit Argument(Surroundings& with) : isNull(with.input.byte() % 4 == 0) {}
    unsigned int* get() { return isNull ? nullptr : &value; }
    bool isNull;
    unsigned int value = 0;
};

template <>
struct Argument<bool&> {
    explicit Argument(Surroundings& /*with*/) {}
    bool& get() { return value; }
    bool value = false;
};

/// A vector to read or to write, of the longest that there is; or null.
template <class T>
requires(std::is_same_v<std::remove_const_t<T>, double>) struct Argument<T*> {
    static constexpr std::size_t longest = 28;
    explicit Argument(Surroundings& with) {
        if (const unsigned int kind = with.input.byte(); kind % 8 != 0) {
            value = std::make_unique<double[]>(longest);
            for (unsigned int i = 0; i < kind % longest; ++i)
                value[i] = with.input.number<double>();
        }
    }
    T* get() const { return value.get(); }
    std::unique_ptr<double[]> value;
};

/// Part of a record by value.
template <class T>
requires(std::is_class_v<T>&& std::is_trivially_copyable_v<T>) struct Argument<const T&> {
    explicit Argument(Surroundings& with) : value(with.input.bits<T>()) {}
    const T& get() const { return value; }
    T value;
};

/// A record with nothing behind it, or null. What the input does not give of it is zero.
template <class T>
requires(std::is_class_v<T>&& std::is_trivially_copyable_v<T>) struct Argument<T*> {
    explicit Argument(Surroundings& with) {
        if (const unsigned int kind = with.input.byte(); kind != 0) {
            value = std::make_unique<char[]>(sizeof(T));
            std::ranges::copy(with.input.take(std::min<std::size_t>(kind * 4, sizeof(T))), value.get());
        }
    }
    T* get() const { return reinterpret_cast<T*>(value.get()); }
    std::unique_ptr<char[]> value;
};

template <>
struct Argument<std::ostream&> {
    explicit Argument(Surroundings& with) : value(oddStream(with.input)) {}
    std::ostream& get() const { return value; }
    std::ostream& value;
};

template <>
struct Argument<Travik::HwSDataBlockCfg> {
    explicit Argument(Surroundings& with) { value.blockName = Argument<QString>(with).value; }
    const Travik::HwSDataBlockCfg& get() const { return value; }
    Travik::HwSDataBlockCfg value;
};

/// Null, the block itself or another one.
template <>
struct Argument<Travik::HwDatablock*> {
    explicit Argument(Surroundings& with) {
        const unsigned int kind = with.input.byte() % 8;
        value = kind == 0 ? nullptr : kind < 3 ? &with.block : &with.other;
    }
    Travik::HwDatablock* get() const { return value; }
    Travik::HwDatablock* value;
};

} // namespace Fuzz
