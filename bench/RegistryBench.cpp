#include <travik/datablocks.h>

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <ostream>
#include <streambuf>

using namespace Travik;

namespace {

/// A sink that keeps nothing.
class NullBuffer : public std::streambuf {
    int overflow(int character) override { return character; }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

void interpreterConstruction(benchmark::State& state) {
    for (auto _ : state) {
        HwDatablockOldStyleInterpreter interpreter;
        benchmark::DoNotOptimize(interpreter.dictionary().size());
    }
    state.SetItemsProcessed(
        static_cast<std::int64_t>(state.iterations() * HwDatablockOldStyleInterpreter().dictionary().size()));
}
BENCHMARK(interpreterConstruction);

void bareMapInserts(benchmark::State& state) {
    for (auto _ : state) {
        std::map<int, HwDatablock*> map;
        for (int id = 0; id < 285; ++id)
            map.emplace(id, nullptr);
        benchmark::DoNotOptimize(map.size());
    }
    state.SetItemsProcessed(state.iterations() * 285);
}
BENCHMARK(bareMapInserts);

template <class Table>
void takeOver(benchmark::State& state) {
    Table source("SOURCE", 1, 0, 1.0, false);
    for (unsigned int row = 0; row < source.getMaxRows(); ++row)
        source.getBlock()->values[row][0] = static_cast<int>(row);
    source.setNumberOfRows(source.getMaxRows());
    Table block("BLOCK", 1, 0, 1.0, false);
    for (auto _ : state) {
        if (block.setBlock(source.getBlock()) != 0)
            state.SkipWithError("refused");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * sizeof(typename Table::Record)));
}
BENCHMARK(takeOver<HwDatablockBaseTemplate<int, int, 1, 1>>);
BENCHMARK(takeOver<HwDatablockBaseTemplate<int, int, 10, 1>>);
BENCHMARK(takeOver<HwDatablockBaseTemplate<int, int, 4, 350>>);
BENCHMARK(takeOver<HwDatablockBaseTemplateIndex<int, int, 40, 200>>);

/// A block whose class takes it over and prints it, of any family.
template <class Block>
void takeOverBlock(benchmark::State& state) {
    Block block(true);
    const auto record = std::make_unique<typename Block::Record>(*block.getBlock());
    record->checksum = block.computeChecksum(reinterpret_cast<unsigned short*>(record.get()), sizeof *record);
    for (auto _ : state) {
        if (block.setBlock(record.get()) != 0)
            state.SkipWithError("refused");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * sizeof *record));
}
BENCHMARK(takeOverBlock<HwDatablockPokAttCalDat>);
BENCHMARK(takeOverBlock<HwDatablockPokMwIfExtLevCalData>);

/// All 20 rows of all columns.
template <class Block>
void dumpMatrix(benchmark::State& state, unsigned short columns) {
    NullBuffer buffer;
    std::ostream os(&buffer);
    Block block(true);
    for (unsigned char row = 0; row < 20; ++row) {
        for (unsigned int column = 0; column < columns; ++column)
            block.setCorLevelValue(static_cast<short>(column * 41 - 4000), row, column, false);
    }
    block.setNumberOfFreqs(columns);
    block.setNumberOfLevelSteps(20);
    for (auto _ : state)
        block.printToStream(os);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * sizeof(typename Block::Record)));
    state.SetItemsProcessed(state.iterations() * 20 * columns);
}
void dump8KbMatrix(benchmark::State& state) { dumpMatrix<HwDatablockPokAttCalDat>(state, 200); }
BENCHMARK(dump8KbMatrix);
void dump60KbMatrix(benchmark::State& state) { dumpMatrix<HwDatablockPokMwIfExtLevCalData>(state, 1500); }
BENCHMARK(dump60KbMatrix);

constexpr unsigned int rows = 40;
constexpr unsigned int columns = 200;

/// A full 32 KB table, 8000 values.
template <class Table>
Table fullTable(double scale) {
    Table table("TABLE", 1, 0, scale, false);
    for (unsigned int row = 0; row < rows; ++row) {
        for (unsigned int column = 0; column < columns; ++column)
            table.getBlock()->values[row][column] = static_cast<int>(row * 7919 + column * 104729) - 10000000;
    }
    table.setNumberOfRows(rows);
    table.setNumberOfColumns(columns);
    return table;
}

template <class Table>
void dump(benchmark::State& state, double scale) {
    NullBuffer buffer;
    std::ostream os(&buffer);
    auto table = fullTable<Table>(scale);
    for (auto _ : state)
        table.printToStream(os);
    state.SetItemsProcessed(state.iterations() * rows * columns);
}

/// What a plain stream takes for the same numbers and tabs.
template <class Table, class Print>
void plain(benchmark::State& state, double scale, Print print) {
    NullBuffer buffer;
    std::ostream os(&buffer);
    auto table = fullTable<Table>(scale);
    for (auto _ : state) {
        for (const auto& row : table.getBlock()->values) {
            for (const int value : row) {
                os << '\t';
                print(os, value);
            }
            os << std::endl;
        }
    }
    state.SetItemsProcessed(state.iterations() * rows * columns);
}

using Integers = HwDatablockBaseTemplate<int, int, rows, columns>;
using Scaled = HwDatablockBaseTemplate<int, double, rows, columns>;

void dumpIntegers(benchmark::State& state) { dump<Integers>(state, 1.0); }
BENCHMARK(dumpIntegers);
void streamIntegers(benchmark::State& state) {
    plain<Integers>(state, 1.0, [](std::ostream& os, int value) { os << value; });
}
BENCHMARK(streamIntegers);
void dumpScaled(benchmark::State& state) { dump<Scaled>(state, 0.01); }
BENCHMARK(dumpScaled);
void streamScaled(benchmark::State& state) {
    plain<Scaled>(state, 0.01, [](std::ostream& os, int value) {
        os.setf(std::ios_base::fixed, std::ios_base::floatfield);
        os.precision(3);
        os << value * 0.01;
    });
}
BENCHMARK(streamScaled);

} // namespace
