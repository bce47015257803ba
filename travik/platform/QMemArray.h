#pragma once

#include <QtGlobal>

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

/// A resizable array of plain elements with explicit sharing, with the names and the behaviour that Qt 3 users know.
///
/// Copying and assigning arrays does not copy elements: both arrays then refer to the same elements, and what is done
/// through one - a change of an element, a resize() - is seen through the other. copy(), duplicate() and detach() make
/// private elements. The elements are freed when the last array that refers to them goes away.
///
/// T is trivially copyable; elements are compared bitwise (find(), contains(), sort(), bsearch(), ==). New elements are
/// filled with zero bytes. An array of size 0 is null (its data() is a null pointer) unless it refers to raw data.
///
/// An operation that needs memory throws std::bad_alloc when there is none and leaves the array as it was; nothing else
/// is thrown. References, iterators and data() stay valid until the array or one that shares with it is resized,
/// refilled with another size, given other elements or destroyed.
///
/// The count of references is a plain number: arrays that share are used from one thread at a time.
template <typename T>
class QMemArray {
    static_assert(std::is_trivially_copyable_v<T> && std::default_initializable<T>);
    static_assert(alignof(T) <= alignof(std::max_align_t), "elements come from malloc()");
    static_assert(sizeof(T) <= 0xFFFFFFFFu, "the size in bytes cannot overflow");

public:
    using Iterator = T*;
    using ConstIterator = const T*;
    using ValueType = T;

    /// A null array.
    QMemArray() : shared(new Shared) {}
    /// An array of zero elements, sized by a number of elements; a size of 0 or less makes a null array.
    explicit QMemArray(int size) : QMemArray(size > 0 ? static_cast<unsigned>(size) : 0u) {}
    explicit QMemArray(unsigned size) : QMemArray() { resize(size); }
    /// Shares the elements of other.
    QMemArray(const QMemArray& other) noexcept : shared(other.shared) { ++shared->refs; }
    ~QMemArray() { release(); }

    /// Shares the elements of other; those that shared with this array keep what they have.
    QMemArray& operator=(const QMemArray& other) noexcept {
        ++other.shared->refs; // first: other may be this array
        release();
        shared = other.shared;
        return *this;
    }
    /// Takes the elements of other, which gets this array's.
    QMemArray& operator=(QMemArray&& other) noexcept {
        std::swap(shared, other.shared);
        return *this;
    }
    QMemArray& assign(const QMemArray& other) noexcept { return *this = other; }
    /// Takes over size elements which the caller got from malloc(); the last array that refers to them calls free().
    /// To copy elements, use duplicate(); to refer to elements that stay the caller's, use setRawData(). A range within
    /// the array's own elements is copied. When it throws, the elements are still the caller's.
    QMemArray& assign(const T* elements, unsigned size) {
        if (isOwn(elements))
            return duplicate(elements, size);
        referTo(const_cast<T*>(elements), elements ? size : 0, false);
        if (isEmpty())
            resize(0); // frees them at once
        return *this;
    }

    /// The elements, also for writing; null when there are none.
    T* data() const noexcept { return shared->data; }
    operator const T*() const noexcept { return shared->data; }
    /// Number of elements.
    unsigned size() const noexcept { return shared->size; }
    unsigned count() const noexcept { return shared->size; }
    bool isEmpty() const noexcept { return shared->size == 0; }
    bool isNull() const noexcept { return shared->data == nullptr; }
    /// Number of arrays that refer to these elements, this one included.
    unsigned nrefs() const noexcept { return shared->refs; }

    /// Changes the number of elements, for all arrays that share them. Elements up to the lesser size keep their value.
    /// Raw data is copied first. Always true (in Qt 3, false stood for a lack of memory).
    bool resize(unsigned size) {
        Shared& s = *shared;
        if (size == 0) {
            s.replace(nullptr, 0, false);
        } else if (size <= s.mostNear && (!s.data || s.isNear())) {
            if (size > s.size)
                std::memset(s.near + s.size * sizeof(T), 0, std::size_t{size - s.size} * sizeof(T));
            s.data = reinterpret_cast<T*>(s.near);
            s.size = size;
            s.raw = false;
        } else if (s.raw || s.isNear()) {
            Elements own = cloned(s.data, std::min(size, s.size), size);
            s.replace(own.release(), size, false);
        } else if (size != s.size) {
            void* grown = std::realloc(static_cast<void*>(s.data), std::size_t{size} * sizeof(T));
            if (!grown)
                throw std::bad_alloc();
            s.data = static_cast<T*>(grown);
            if (size > s.size)
                std::memset(static_cast<void*>(s.data + s.size), 0, std::size_t{size - s.size} * sizeof(T));
            s.size = size;
        }
        return true;
    }
    /// The same as resize(size).
    bool truncate(unsigned size) { return resize(size); }
    /// Sets every element to value, for all arrays that share them; resizes first when size is not negative. Always
    /// true.
    bool fill(const T& value, int size = -1) {
        const T kept = value; // may be an element of this array
        if (size >= 0)
            resize(static_cast<unsigned>(size));
        std::fill_n(data(), count(), kept);
        return true;
    }

    /// An array with elements of its own, equal to these.
    QMemArray copy() const {
        QMemArray result;
        return result.duplicate(data(), size());
    }
    /// Refers to a private copy of the given elements; those that shared with this array keep what they have.
    /// The elements may be the array's own. A null pointer makes a null array.
    QMemArray& duplicate(const T* elements, unsigned size) {
        const unsigned wanted = elements ? size : 0;
        Elements own = cloned(elements, wanted, wanted);
        referTo(own.get(), wanted, false);
        static_cast<void>(own.release());
        return *this;
    }
    QMemArray& duplicate(const QMemArray& other) { return duplicate(other.data(), other.size()); }
    /// Makes the elements private: copies them if another array shares them or if they are raw data.
    void detach() {
        if (shared->refs > 1 || shared->raw)
            duplicate(*this);
    }

    /// Refers to size elements that stay the caller's: they are neither copied nor freed, and what is written through
    /// the array is written to them. Those that shared with this array keep what they have; those that share with it
    /// from now on refer to the caller's elements as well. Call resetRawData() with the same arguments, or let go of
    /// all these arrays, before the elements go away. resize() and detach() leave the raw data for a copy.
    QMemArray& setRawData(const T* elements, unsigned size) {
        referTo(const_cast<T*>(elements), elements ? size : 0, true);
        return *this;
    }
    /// Makes the array, and all that share with it, null. When it does not refer to these raw data, it stays as it is
    /// and a warning is written.
    void resetRawData(const T* elements, unsigned size) {
        if (!shared->raw || shared->data != elements || shared->size != (elements ? size : 0))
            qWarning("QMemArray::resetRawData: the array does not refer to these data");
        else
            shared->replace(nullptr, 0, false);
    }

    /// Index of the first element equal to value at or behind index start; -1 when there is none.
    int find(const T& value, unsigned start = 0) const noexcept {
        for (unsigned i = start; i < size(); ++i)
            if (compare(data() + i, &value) == 0)
                return static_cast<int>(i);
        return -1;
    }
    /// Number of elements equal to value.
    int contains(const T& value) const noexcept {
        return static_cast<int>(
            std::count_if(begin(), end(), [&value](const T& element) { return compare(&element, &value) == 0; }));
    }
    /// Sorts the elements in ascending order of their bytes, the first byte the most significant.
    void sort() noexcept {
        if (!isEmpty())
            std::qsort(data(), size(), sizeof(T), compare);
    }
    /// Index of the first element equal to value in an array sorted with sort(); -1 when there is none.
    int bsearch(const T& value) const noexcept {
        const ConstIterator found =
            std::lower_bound(begin(), end(), value, [](const T& a, const T& b) { return compare(&a, &b) < 0; });
        return found != end() && compare(found, &value) == 0 ? static_cast<int>(found - begin()) : -1;
    }

    /// The element at an index. Outside of the array: a warning is written and element 0 taken; an empty array hands
    /// out an element of value zero that belongs to no array.
    T& at(unsigned index) const { return element(index); }
    T& operator[](int index) const { return element(static_cast<std::size_t>(index)); }
    // Any other width of index: else the conversion to a pointer would compete and index without a check.
    template <std::integral Index>
    T& operator[](Index index) const {
        return element(static_cast<std::size_t>(index));
    }

    Iterator begin() noexcept { return data(); }
    Iterator end() noexcept { return data() + size(); }
    ConstIterator begin() const noexcept { return data(); }
    ConstIterator end() const noexcept { return data() + size(); }

    /// True when both have the same number of elements with the same bytes.
    bool operator==(const QMemArray& other) const noexcept {
        return size() == other.size() &&
               (isEmpty() || std::memcmp(data(), other.data(), std::size_t{size()} * sizeof(T)) == 0);
    }
    bool operator!=(const QMemArray& other) const noexcept { return !(*this == other); }

private:
    struct Free {
        void operator()(T* elements) const noexcept { std::free(static_cast<void*>(elements)); }
    };
    using Elements = std::unique_ptr<T, Free>;

    // What all arrays that share have in common.
    struct Shared {
        T* data = nullptr;
        unsigned size = 0;
        unsigned refs = 1;
        bool raw = false; // data is someone else's
        // Elements that take no memory of their own: up to a block's header.
        static constexpr std::size_t nearSize = 8;
        static constexpr unsigned mostNear = alignof(T) <= alignof(T*) ? nearSize / sizeof(T) : 0;
        alignas(T*) std::byte near[nearSize];

        bool isNear() const noexcept { return data == reinterpret_cast<const T*>(near); }
        void replace(T* newData, unsigned newSize, bool newRaw) noexcept {
            if (!raw && !isNear())
                Free()(data);
            data = newData;
            size = newSize;
            raw = newRaw;
        }
    };

    static int compare(const void* a, const void* b) noexcept { return std::memcmp(a, b, sizeof(T)); }

    // Memory for size elements, the first ones copied, the others zero.
    static Elements cloned(const T* source, unsigned copied, unsigned size) {
        if (size == 0)
            return nullptr;
        Elements result(static_cast<T*>(copied == size ? std::malloc(std::size_t{size} * sizeof(T))
                                                       : std::calloc(size, sizeof(T))));
        if (!result)
            throw std::bad_alloc();
        if (copied > 0)
            std::memcpy(static_cast<void*>(result.get()), source, std::size_t{copied} * sizeof(T));
        return result;
    }

    // Leaves those that share behind with the present elements.
    void referTo(T* elements, unsigned size, bool raw) {
        if (shared->refs > 1) {
            auto* const fresh = new Shared;
            fresh->replace(elements, size, raw);
            --shared->refs;
            shared = fresh;
        } else {
            shared->replace(elements, size, raw);
        }
    }

    void release() noexcept {
        if (--shared->refs == 0)
            destroy(shared);
    }

    // Out of line: inlined, it makes GCC warn of uses after the delete that the count rules out.
    [[gnu::noinline]] static void destroy(Shared* unused) noexcept {
        unused->replace(nullptr, 0, false);
        delete unused;
    }

    bool isOwn(const T* elements) const noexcept {
        return !std::less<const T*>()(elements, data()) && std::less<const T*>()(elements, data() + size());
    }

    T& element(std::size_t index) const {
        if (index < shared->size) [[likely]]
            return shared->data[index];
        return outside(index);
    }

    [[gnu::cold, gnu::noinline]] T& outside(std::size_t index) const {
        qWarning("QMemArray: index %lld is outside of %u elements", static_cast<long long>(index), size());
        if (!isEmpty())
            return *shared->data;
        static thread_local T none;
        none = T(); // an earlier user may have written to it
        return none;
    }

    Shared* shared;
};
