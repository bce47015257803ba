#pragma once

#include <cstddef>

/// The allocations of the calling thread, of which some may fail.
///
/// What fails is `malloc` and whatever is made of it: `operator new`, and the strings and arrays of Qt. A sanitizer has
/// a `malloc` of its own, which must not be replaced: there it is `operator new` alone.
namespace Faults {

/// As long as it lives the allocation of the wanted number fails, from 1, and those behind it if that is wanted.
class FailingAllocation {
public:
    FailingAllocation(std::size_t wanted, bool isForEver);
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation();

    /// Nothing fails any more, and nothing is counted.
    static void end();
    /// How many allocations there were.
    static std::size_t count();
};

/// How many pieces of memory are held.
std::ptrdiff_t held();

} // namespace Faults
