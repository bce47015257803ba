#include <travik/datablocks.h>
#include <travik/service/ImageFile.h>
#include <travik/service/ShowText.h>
#include <travik/service/Values.h>

#include <benchmark/benchmark.h>

#include <ostream>
#include <streambuf>
#include <vector>

using namespace Travik;

namespace {

/// A sink that keeps nothing.
class NullBuffer : public std::streambuf {
    int overflow(int character) override { return character; }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

/// The largest of the sample images: 400 KB, every calibration table of a main board on four paths.
const std::vector<char>& mainBoard() {
    static const std::vector<char> bytes = [] {
        std::vector<char> read;
        readImageFile(TRAVIK_SAMPLES "/main-board.bin", read);
        return read;
    }();
    return bytes;
}

void count(benchmark::State& state) {
    if (mainBoard().empty())
        state.SkipWithError("no sample image");
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * mainBoard().size()));
}

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
    count(state);
}
BENCHMARK(mainBoardDump);

void mainBoardValues(benchmark::State& state) {
    for (auto _ : state) {
        const ModuleImage image(mainBoard());
        const ImageValues values(image);
        for (const ImageBlock& block : image.blocks())
            benchmark::DoNotOptimize(values.read(block).fields.data());
    }
    count(state);
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
    count(state);
}
BENCHMARK(mainBoardShow);

} // namespace
