#pragma once

#include <cstdio>
#include <cstdlib>

namespace Fuzz {

/// What is being done, for whoever reads a finding.
struct Doing {
    const char* className = "";
    const char* operation = "";
};
inline Doing doing;

inline void require(bool holds, const char* what) {
    if (holds)
        return;
    std::fprintf(stderr, "%s::%s: %s\n", doing.className, doing.operation, what);
    std::abort();
}

} // namespace Fuzz
