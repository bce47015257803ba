#include "MainBoard.h"

#include <travik/service/DiffText.h>

#include <random>

using namespace Travik;

namespace {

/// The main board after it was calibrated anew: every value that may have another last bit has.
std::vector<char> calibratedAnew() {
    std::vector<char> bytes = mainBoard();
    std::mt19937 random(1);
    const ModuleImage image(mainBoard());
    for (const ImageBlock& block : image.blocks()) {
        const BlockLayout layout(block);
        for (const Field& field : layout.fields()) {
            for (unsigned int i = 0; field.role == Role::Value && field.rank > 0 && i < field.elements(); ++i)
                bytes[block.offset + field.elementOffset(i)] ^= static_cast<char>(random() & 1U);
        }
    }
    return bytes;
}

void compare(benchmark::State& state, const std::vector<char>& other, const DiffOptions& options = {}) {
    for (auto _ : state) {
        const ImageDiff diff(mainBoard(), other, options);
        benchmark::DoNotOptimize(diffText(diff, {"old.bin", "new.bin"}).data());
    }
    countMainBoard(state);
}

void mainBoardDiff(benchmark::State& state) { compare(state, calibratedAnew()); }
BENCHMARK(mainBoardDiff);

void mainBoardDiffTolerant(benchmark::State& state) {
    DiffOptions options;
    options.tolerance = 1e9;
    compare(state, calibratedAnew(), options);
}
BENCHMARK(mainBoardDiffTolerant);

void mainBoardDiffOneValue(benchmark::State& state) {
    std::vector<char> other = mainBoard();
    other[other.size() / 2] ^= 1;
    compare(state, other);
}
BENCHMARK(mainBoardDiffOneValue);

} // namespace
