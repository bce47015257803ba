// What a block costs the walk of an image besides its bytes.
#include <travik/datablocks.h>

#include <benchmark/benchmark.h>

#include <vector>

using namespace Travik;

namespace {

/// Sound blocks of one kind, one after the other.
std::vector<char> alike(unsigned short id, unsigned short size, unsigned int count) {
    HwDatablock block(false);
    block.resizeData(size);
    block.setBlockId(id);
    block.setBlockSize(size);
    const std::vector<HwDatablock*> blocks(count, &block);
    return composeImage(blocks);
}

constexpr unsigned short withoutClass = 11;
constexpr unsigned short statistic = 300;
std::vector<char> smallBlocks() { return alike(withoutClass, 8, 8000); }
std::vector<char> smallRecords() { return alike(statistic, 12, 8000); }
std::vector<char> oneBlock() { return alike(withoutClass, 64000, 1); }

template <std::vector<char> (*Make)()>
void walk(benchmark::State& state) {
    const std::vector<char> bytes = Make();
    for (auto _ : state) {
        const ModuleImage image(bytes);
        benchmark::DoNotOptimize(image.blocks().data());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
    const ModuleImage image(bytes);
    state.counters["blocks"] = static_cast<double>(image.blocks().size());
}

template <std::vector<char> (*Make)()>
void findings(benchmark::State& state) {
    const std::vector<char> bytes = Make();
    const ModuleImage image(bytes);
    for (auto _ : state)
        benchmark::DoNotOptimize(image.findings().data());
    state.counters["findings"] = static_cast<double>(image.findings().size());
}

BENCHMARK(walk<smallBlocks>);
BENCHMARK(walk<smallRecords>);
BENCHMARK(walk<oneBlock>);
BENCHMARK(findings<smallBlocks>);
BENCHMARK(findings<smallRecords>);
BENCHMARK(findings<oneBlock>);

} // namespace
