#pragma once

#include <travik/service/ImageFile.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

/// The largest of the sample images: 400 KB, every calibration table of a main board on four paths.
inline const std::vector<char>& mainBoard() {
    static const std::vector<char> bytes = [] {
        std::vector<char> read;
        Travik::readImageFile(TRAVIK_SAMPLES "/main-board.bin", read);
        return read;
    }();
    return bytes;
}

/// Bytes of the image a second.
inline void countMainBoard(benchmark::State& state) {
    if (mainBoard().empty())
        state.SkipWithError("no sample image");
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * mainBoard().size()));
}
