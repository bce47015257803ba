#include "MainBoard.h"

#include <travik/datablocks.h>
#include <travik/service/ShowText.h>
#include <travik/service/Values.h>

#include <ostream>
#include <streambuf>
#include <string>

using namespace Travik;

namespace {

/// A sink that keeps nothing.
class NullBuffer : public std::streambuf {
    int overflow(int character) override { return character; }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

void mainBoardDump(benchmark::State& state) {
    NullBuffer buffer;
    HwDatablockOldStyleInterpreter interpreter;
    for (auto _ : state) {
        const ModuleImage image(mainBoard());
        for (const ImageBlock& block : image.blocks()) {
            std::ostream os(&buffer);
            interpreter.printHwDatablockOldStyleInfo(makeBlock(block).get(), os);
        }
    }
    countMainBoard(state);
}
BENCHMARK(mainBoardDump);

void mainBoardValues(benchmark::State& state) {
    for (auto _ : state) {
        const ModuleImage image(mainBoard());
        const ImageValues values(image);
        for (const ImageBlock& block : image.blocks())
            benchmark::DoNotOptimize(values.read(block).fields.data());
    }
    countMainBoard(state);
}
BENCHMARK(mainBoardValues);

void mainBoardShow(benchmark::State& state) {
    for (auto _ : state) {
        const ModuleImage image(mainBoard());
        const ImageValues values(image);
        for (const ImageBlock& block : image.blocks()) {
            std::string text;
            appendBlockText(text, block, values.read(block), {});
            benchmark::DoNotOptimize(text.data());
        }
    }
    countMainBoard(state);
}
BENCHMARK(mainBoardShow);

} // namespace
