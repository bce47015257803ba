#include "Samples.h"

namespace Samples {

namespace {

/// Fills the stored counts' worth of a table with a smooth function of row and column, in user units.
template <unsigned int N, unsigned int M, class Function>
void add(Image& image, int id, Function function) {
    const auto table = bareTable<N, M>(id);
    for (unsigned int row = 0; row < N; ++row) {
        for (unsigned int column = 0; column < M; ++column)
            table->setValue(function(row, column), row, column);
    }
    image.add(*table);
}

} // namespace

std::vector<char> synthesizerLoop() {
    Image image("LOSYNC", 11413000, 2, 100234);
    add<200, 1>(image, 12300, [](unsigned int row, unsigned int) { return 1000.0 + 12.5 * row; });
    const auto gain = [](unsigned int row, unsigned int column) {
        return 1000.0 * (400 + 3 * row) + 1000.0 * (column % 17);
    };
    for (const int id : {12301, 12302, 12303})
        add<1, 200>(image, id, gain);
    add<1, 200>(image, 12304, [](unsigned int, unsigned int column) { return static_cast<int>(column) - 100; });
    add<50, 1>(image, 12305, [](unsigned int row, unsigned int) { return 8.0 * row; });
    for (const int id : {12306, 12307})
        add<50, 200>(image, id, gain);
    add<50, 200>(image, 12308,
                 [](unsigned int row, unsigned int column) { return static_cast<int>(column) - 2.0 * row; });
    return image.finish();
}

std::vector<char> detectorBoard() {
    Image image("DET", 11415503, 4, 100871);
    add<10, 1>(image, 12310, [](unsigned int row, unsigned int) { return 2048.0 + row; });
    add<100, 1>(image, 12313, [](unsigned int row, unsigned int) { return 7.5 - 0.01 * row; });
    add<100, 1>(image, 12315, [](unsigned int row, unsigned int) { return 7.25 - 0.01 * row; });
    add<10, 1>(image, 15022, [](unsigned int row, unsigned int) { return 500.0 * row; });
    add<10, 1>(image, 15023, [](unsigned int row, unsigned int) { return -0.35 + 0.07 * row; });
    for (const int id : {15024, 15025, 15026})
        add<1, 1>(image, id, [](unsigned int, unsigned int) { return 2300.0; });
    for (const int id : {15027, 15028})
        add<10, 10>(image, id, [](unsigned int row, unsigned int column) { return 100.0 * (10.0 * row + column); });
    return image.finish();
}

} // namespace Samples
