#include "MainBoard.h"

#include <travik/service/Document.h>

#include <string>

using namespace Travik;

namespace {

std::string mainBoardDocument() {
    const std::string object = jsonObject("main-board.bin", mainBoard(), ModuleImage(mainBoard()));
    return jsonDocument({&object, 1});
}

void mainBoardShowJson(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(mainBoardDocument().data());
    countMainBoard(state);
}
BENCHMARK(mainBoardShowJson);

void mainBoardBuild(benchmark::State& state) {
    const std::string document = mainBoardDocument();
    if (buildImage(document).bytes != mainBoard())
        state.SkipWithError("not built as it was");
    for (auto _ : state)
        benchmark::DoNotOptimize(buildImage(document).bytes.data());
    countMainBoard(state);
}
BENCHMARK(mainBoardBuild);

} // namespace
