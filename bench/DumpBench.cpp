// The print of every class of the catalogue, filled to its capacity with random values.
#include <travik/datablocks.h>
#include <travik/registry/Capacity.h>

#include <benchmark/benchmark.h>

#include <charconv>
#include <cmath>
#include <memory>
#include <ostream>
#include <random>
#include <streambuf>
#include <string>

using namespace Travik;

namespace {

/// A sink that keeps nothing but how much it was given.
class Counter : public std::streambuf {
public:
    std::size_t bytes = 0;

private:
    int overflow(int character) override {
        ++bytes;
        return character;
    }
    std::streamsize xsputn(const char*, std::streamsize count) override {
        bytes += static_cast<std::size_t>(count);
        return count;
    }
};

/// A number such as its field may hold: of floating fields one of a calibration's size.
void storeRandom(std::span<char> image, const Field& field, std::size_t offset, std::mt19937& random) {
    std::normal_distribution<double> level(0.0, 10.0);
    if (field.stored == Stored::F32)
        bytes::store(image, offset, static_cast<float>(level(random)));
    else if (field.stored == Stored::F64)
        bytes::store(image, offset, level(random));
    else if (field.stored == Stored::Text)
        for (unsigned int i = 0; i < field.width; ++i)
            bytes::store(image, offset + i, static_cast<char>('a' + random() % 26));
    else
        for (unsigned int i = 0; i < field.width; ++i)
            bytes::store(image, offset + i, static_cast<unsigned char>(random()));
}

void storeCount(std::span<char> image, const Field& field, std::size_t offset, unsigned int count) {
    for (unsigned int i = 0; i < field.width; ++i)
        bytes::store(image, offset + i, static_cast<unsigned char>(i < sizeof count ? count >> (8 * i) : 0));
}

/// A block of the row's first identifier, every field full, every count at its capacity.
std::unique_ptr<HwDatablock> fullBlock(const CatalogueEntry& entry) {
    std::unique_ptr<HwDatablock> block = entry.create(entry, entry.first);
    const std::span<char> image(block->getData(), block->getByteArrayData().size());
    const FieldList fields = entry.fields(entry, entry.first);
    std::mt19937 random(static_cast<unsigned int>(entry.first));
    for (const Field& field : fields) {
        const auto capacity = field.role == Role::Count ? capacityOf(image, fields, field) : std::nullopt;
        for (unsigned int i = 0; i < field.elements(); ++i) {
            if (capacity)
                storeCount(image, field, field.elementOffset(i), *capacity);
            else
                storeRandom(image, field, field.elementOffset(i), random);
        }
    }
    block->setChecksum(block->computeChecksum());
    return block;
}

std::size_t valuesIn(const CatalogueEntry& entry, HwDatablock& block) {
    std::size_t values = 0;
    const std::span<const char> image(block.getData(), block.getByteArrayData().size());
    visitFields(image, entry.fields(entry, entry.first), Extent::Used, [&](const FieldValue&) { ++values; });
    return values;
}

void dumpFamily(benchmark::State& state, const CatalogueEntry& entry) {
    const std::unique_ptr<HwDatablock> block = fullBlock(entry);
    const std::size_t values = valuesIn(entry, *block);
    Counter sink;
    std::ostream os(&sink);
    for (auto _ : state)
        block->printToStream(os);
    const auto runs = static_cast<std::size_t>(state.iterations());
    state.SetItemsProcessed(static_cast<std::int64_t>(runs * values));
    state.SetBytesProcessed(static_cast<std::int64_t>(sink.bytes));
    state.counters["values"] = static_cast<double>(values);
    state.counters["text"] = static_cast<double>(sink.bytes) / static_cast<double>(runs);
}

/// What a floating number takes at least: `std::to_chars`, six digits as a new stream shows them, or the shortest.
template <class Number, class... Format>
void toChars(benchmark::State& state, Format... format) {
    std::mt19937 random(1);
    std::normal_distribution<double> level(0.0, 10.0);
    std::vector<Number> numbers(4096);
    for (Number& number : numbers)
        number = static_cast<Number>(level(random));
    std::array<char, 64> text{};
    for (auto _ : state) {
        for (const Number number : numbers)
            benchmark::DoNotOptimize(std::to_chars(text.data(), text.data() + text.size(), number, format...).ptr);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numbers.size()));
}
void toCharsSixDigits(benchmark::State& state) { toChars<double>(state, std::chars_format::general, 6); }
BENCHMARK(toCharsSixDigits);
void toCharsThreeDecimals(benchmark::State& state) { toChars<double>(state, std::chars_format::fixed, 3); }
BENCHMARK(toCharsThreeDecimals);
void toCharsShortest(benchmark::State& state) { toChars<double>(state); }
BENCHMARK(toCharsShortest);

const bool familiesAreKnown = [] {
    for (const CatalogueEntry& entry : catalogue()) {
        const std::string name = "dumpFamily/" + std::string(entry.className) + "/" + std::to_string(entry.first);
        benchmark::RegisterBenchmark(name.c_str(), dumpFamily, std::cref(entry));
    }
    return true;
}();

} // namespace
