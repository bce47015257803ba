#include <travik/datablock/Checksum.h>
#include <travik/datablock/ChecksumKernels.h>

#include <benchmark/benchmark.h>
#include <isa-l/crc.h>
#include <libdeflate.h>
#include <zlib.h>

#include <cstring>
#include <numeric>
#include <vector>

namespace {

// Each size of block image has its own cost: a date, a record, a small table, a table, a large one, the largest images
// in use.
void imageSizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(8)->Arg(64)->Arg(256)->Arg(2048)->Arg(32 * 1024)->Arg(60016);
}

template <typename Sum>
void over(benchmark::State& state, Sum sum) {
    std::vector<unsigned char> image(static_cast<std::size_t>(state.range(0)));
    std::iota(image.begin(), image.end(), static_cast<unsigned char>(1));
    for (auto _ : state) {
        benchmark::DoNotOptimize(image.data());
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(sum(image.data(), image.size()));
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void sum16(benchmark::State& state) { over(state, Travik::sum16); }

void sum16Memcpy(benchmark::State& state) {
    std::vector<unsigned char> copy(static_cast<std::size_t>(state.range(0)));
    over(state,
         [&](const unsigned char* bytes, std::size_t byteCount) { return std::memcpy(copy.data(), bytes, byteCount); });
}

void crc32(benchmark::State& state) {
    over(state, [](const unsigned char* bytes, std::size_t byteCount) { return Travik::crc32(bytes, byteCount); });
}

void crc32Sliced(benchmark::State& state) {
    over(state, [run = Travik::detail::crc32Kernels().back().run](const unsigned char* bytes, std::size_t byteCount) {
        return run(bytes, byteCount, 0);
    });
}

void crc32Zlib(benchmark::State& state) {
    over(state, [](const unsigned char* bytes, std::size_t byteCount) {
        return ::crc32(0, bytes, static_cast<uInt>(byteCount));
    });
}

void crc32Libdeflate(benchmark::State& state) {
    over(state,
         [](const unsigned char* bytes, std::size_t byteCount) { return libdeflate_crc32(0, bytes, byteCount); });
}

void crc32Isal(benchmark::State& state) {
    over(state, [](const unsigned char* bytes, std::size_t byteCount) { return crc32_gzip_refl(0, bytes, byteCount); });
}

BENCHMARK(sum16)->Apply(imageSizes);
BENCHMARK(sum16Memcpy)->Apply(imageSizes);
BENCHMARK(crc32)->Apply(imageSizes);
BENCHMARK(crc32Sliced)->Apply(imageSizes);
BENCHMARK(crc32Zlib)->Apply(imageSizes);
BENCHMARK(crc32Libdeflate)->Apply(imageSizes);
BENCHMARK(crc32Isal)->Apply(imageSizes);

} // namespace
