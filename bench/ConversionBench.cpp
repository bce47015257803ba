// A conversion of a block's byte order beside a take-over of the same block.
#include <travik/datablocks.h>

#include <benchmark/benchmark.h>

#include <memory>

using namespace Travik;

namespace {

template <class Block>
std::unique_ptr<Block> soundBlock() {
    auto block = std::make_unique<Block>();
    block->setChecksum(block->computeChecksum());
    return block;
}

template <class Block>
void convertedTakeOver(benchmark::State& state) {
    const auto source = soundBlock<Block>();
    const auto record = std::make_unique<typename Block::Record>(*source->getBlock());
    Block block;
    for (auto _ : state) {
        if (block.setBlock(record.get()) != 0)
            state.SkipWithError("refused");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * sizeof *record));
}

/// What an interpreter's conversion takes.
template <class Block>
void convert(benchmark::State& state) {
    HwDatablockOldStyleInterpreter interpreter;
    const auto block = soundBlock<Block>();
    const int id = block->getId();
    for (auto _ : state) {
        const bool isForeign = block->getDataFormatTyp() != HwDataFormatFirmware;
        if (!interpreter.swapHwDatablock(isForeign ? HwDataFormatFirmware : HwDataFormatForeign, id, block.get()))
            state.SkipWithError("not converted");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * sizeof(typename Block::Record)));
}

/// What a block asks first: whether it carries a CRC-32 that matches.
template <class Block>
void askForCrc(benchmark::State& state) {
    const auto block = soundBlock<Block>();
    for (auto _ : state)
        benchmark::DoNotOptimize(block->verifyChecksum32());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * sizeof(typename Block::Record)));
}

/// A foreign block made one of the firmware order and shared: the question, the conversion, and its verification.
template <class Block>
void makeConform(benchmark::State& state) {
    const auto source = soundBlock<Block>();
    HwDatablock target(false);
    for (auto _ : state) {
        source->setDataFormatTyp(HwDataFormatForeign);
        if (!target.setHwDatablockFirmwareConform(source.get()))
            state.SkipWithError("not conform");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * sizeof(typename Block::Record)));
}

#define OF_BLOCK(Block)                                                                                                \
    BENCHMARK(convertedTakeOver<Block>);                                                                               \
    BENCHMARK(convert<Block>);                                                                                         \
    BENCHMARK(askForCrc<Block>);                                                                                       \
    BENCHMARK(makeConform<Block>)

OF_BLOCK(HwDatablockStereocoderCo);
OF_BLOCK(HwDatablockIdent);
OF_BLOCK(HwDatablockKelRfboTcxoCal);
OF_BLOCK(HwDatablockModification);
OF_BLOCK(HwDatablockStatistic);
OF_BLOCK(HwDatablockKelRfboExtCalData);
OF_BLOCK(HwDatablockKelRfboAttCalData);
OF_BLOCK(HwDatablockKelRfboSHData);

} // namespace
