#pragma once

#include <travik/service/ImageDiff.h>

#include <memory>

namespace Travik::diff {

/// Compares blocks of two images, pair after pair: what the blocks of a class share is made once.
class BlockComparison {
public:
    /// The images must outlive it.
    BlockComparison(const ModuleImage& before, const ModuleImage& after, const DiffOptions& options);
    BlockComparison(const BlockComparison&) = delete;
    BlockComparison& operator=(const BlockComparison&) = delete;
    ~BlockComparison();

    /// Fills in what differs between the two blocks of a pair, whose bytes are not the same.
    void compare(BlockDiff& pair);

private:
    struct Context;
    std::unique_ptr<Context> context_;
};

} // namespace Travik::diff
