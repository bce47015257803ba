#include "FailingAllocations.h"

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t none = 0;

thread_local std::size_t first = none; // of those that fail
thread_local std::size_t last = none;
thread_local std::size_t number = 0;
thread_local std::ptrdiff_t pieces = 0;

bool fails() {
    if (first == none)
        return false;
    ++number;
    return number >= first && number <= last;
}

void* taken(void* memory) {
    pieces += memory ? 1 : 0;
    return memory;
}

} // namespace

namespace Faults {

FailingAllocation::FailingAllocation(std::size_t wanted, bool isForEver) {
    number = 0;
    first = wanted;
    last = isForEver ? std::numeric_limits<std::size_t>::max() : wanted;
}
FailingAllocation::~FailingAllocation() { end(); }
void FailingAllocation::end() { first = none; }
std::size_t FailingAllocation::count() { return number; }

std::ptrdiff_t held() { return pieces; }

} // namespace Faults

// NOLINTBEGIN(cppcoreguidelines-no-malloc,bugprone-reserved-identifier,readability-inconsistent-declaration-parameter-name)
#ifdef TRAVIK_SANITIZED

namespace {

void* allocate(std::size_t size) noexcept { return fails() ? nullptr : taken(std::malloc(size)); }

void* allocateOrThrow(std::size_t size) {
    void* const memory = allocate(size);
    return memory ? memory : throw std::bad_alloc();
}

void release(void* memory) noexcept {
    pieces -= memory ? 1 : 0;
    std::free(memory);
}

} // namespace

void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }

#else

// The executable's own stand ahead of the C library's, whose own they go on to: what others allocate and these
// release, and the other way round, is of one heap.
extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void __libc_free(void* memory);

[[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept {
    return fails() ? (errno = ENOMEM, nullptr) : taken(__libc_malloc(size));
}

[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) noexcept {
    return fails() ? (errno = ENOMEM, nullptr) : taken(__libc_calloc(count, size));
}

[[gnu::visibility("default")]] void* realloc(void* memory, std::size_t size) noexcept {
    if (fails())
        return errno = ENOMEM, nullptr;
    void* const moved = __libc_realloc(memory, size);
    pieces += memory ? (size == 0 && !moved ? -1 : 0) : (moved ? 1 : 0);
    return moved;
}

[[gnu::visibility("default")]] void free(void* memory) noexcept {
    pieces -= memory ? 1 : 0;
    __libc_free(memory);
}
}

#endif
// NOLINTEND(cppcoreguidelines-no-malloc,bugprone-reserved-identifier,readability-inconsistent-declaration-parameter-name)
