#include "Samples.h"

#include <cmath>

namespace Samples {

namespace {

using namespace Travik;

/// Fills the whole capacity of a table with a function of row and column, in user units; where the table is indexed,
/// row r is the setting of 5 r dB.
template <class Table, class Function>
void add(Image& image, Table table, Function function) {
    const unsigned int rows = table.getMaxRows();
    const unsigned int columns = table.getMaxColumns();
    table.setNumberOfRows(rows);
    table.setNumberOfColumns(columns);
    for (unsigned int row = 0; row < rows; ++row) {
        if constexpr (requires { table.setIndexValue(0, row); })
            table.setIndexValue(static_cast<int>(5 * row), row);
        for (unsigned int column = 0; column < columns; ++column)
            table.setValue(static_cast<decltype(table.getValue(0, 0))>(function(row, column)), row, column);
    }
    image.add(table);
}

template <class Table, class Function>
void addDescribed(Image& image, Table table, Function function) {
    const char* const descriptors[] = {"cable 1 m", "cable 2 m", "pad 10 dB"};
    for (unsigned int i = 0; i < std::size(descriptors); ++i)
        table.setDescriptor(QString::fromLatin1(descriptors[i]), i);
    add(image, std::move(table), function);
}

/// Points from 9 kHz to 3 GHz, evenly spaced on a logarithmic axis, in Hz.
template <class Table>
void addFrequencies(Image& image, Table table) {
    const unsigned int points = table.getMaxRows();
    add(image, std::move(table), [=](unsigned int row, unsigned int) {
        return 9e3 * std::pow(3e9 / 9e3, static_cast<double>(row) / (points - 1));
    });
}

/// A smooth response over the points that falls from row to row, with the ripple of a mismatch.
auto response(double level, double rowStep) {
    return [=](unsigned int row, unsigned int column) {
        return level - rowStep * row - 0.5 * column + 20.0 * std::sin(0.3 * column + row);
    };
}

} // namespace

std::vector<char> rfBoard() {
    Image image("RFBO", 11415002, 2, 101337);
    add(image, HwDatablockKelRfboExtInGain(), [](unsigned int row, unsigned int) { return 1000.0 + 7 * row; });
    add(image, HwDatablockKelRfboExtInOffset(), [](unsigned int row, unsigned int) { return 12.0 - 3.0 * row; });
    addFrequencies(image, HwDatablockKelRfboDetTuneFreq());
    add(image, HwDatablockKelRfboDetTuneData(), response(2048, 300));
    add(image, HwDatablockKelRfboTcxoCal(), [](unsigned int row, unsigned int) { return 32768.0 + 10 * row; });
    addFrequencies(image, HwDatablockKelRfboRfLevelMaxFreq());
    add(image, HwDatablockKelRfboRfLevelMaxData(),
        [](unsigned int row, unsigned int column) { return 19.5 - row - 0.02 * column; });
    addFrequencies(image, HwDatablockKelRfboAttCalFreq());
    add(image, HwDatablockKelRfboAttCalData(), response(150, 12));
    addFrequencies(image, HwDatablockKelRfboExtCalFreq());
    add(image, HwDatablockKelRfboExtCalData(), response(90, 25));
    addFrequencies(image, HwDatablockKelRfboAlcFreq());
    add(image, HwDatablockKelRfboAlcData(), response(700, 50));
    addFrequencies(image, HwDatablockKelRfboTempFreq());
    add(image, HwDatablockKelRfboTempGradient(), response(-8, 2));
    add(image, HwDatablockKelRfboTempOffset(), response(40, 10));
    add(image, HwDatablockKelRfboAttRegData(),
        [](unsigned int row, unsigned int) { return 0xA5000000U | (row << 8) | (row * 37 & 0xFFU); });
    addFrequencies(image, HwDatablockKelRfboSHFreq());
    add(image, HwDatablockKelRfboSHData(), response(500, 15));
    addFrequencies(image, HwDatablockKelRfboExtCalUserFreq());
    addDescribed(image, HwDatablockKelRfboExtCalUserData(), response(60, 30));
    return image.finish();
}

std::vector<char> vectorBoard() {
    Image image("VECTOR", 11415207, 3, 100562);
    addFrequencies(image, HwDatablockToviVectorRfLevelMaxFreq());
    add(image, HwDatablockToviVectorRfLevelMaxData(),
        [](unsigned int, unsigned int column) { return 16.0 - 0.015 * column; });
    addFrequencies(image, HwDatablockToviVectorAlcFreq());
    add(image, HwDatablockToviVectorAlcData(),
        [](unsigned int row, unsigned int column) { return 100.0 * (900 - 60 * row + 4 * column); });
    addFrequencies(image, HwDatablockToviVectorAlcIqNormFreq());
    add(image, HwDatablockToviVectorAlcIqNormData(), response(820, 40));
    addFrequencies(image, HwDatablockToviVectorAlcIqWideFreq());
    add(image, HwDatablockToviVectorAlcIqWideData(), response(790, 40));
    addFrequencies(image, HwDatablockToviRfBoExtCalVecFreq());
    add(image, HwDatablockToviRfBoExtCalVecData(), response(75, 20));
    addFrequencies(image, HwDatablockToviRfboAttCalVecFreq());
    add(image, HwDatablockToviRfboAttCalVecData(), response(140, 11));
    addFrequencies(image, HwDatablockToviRfboRfLevelMaxVecFreq());
    add(image, HwDatablockToviRfboRfLevelMaxVecData(),
        [](unsigned int, unsigned int column) { return 15.0 - 0.01 * column; });
    add(image, HwDatablockToviVectorLevconTemp(), [](unsigned int row, unsigned int) { return -10.0 + 6 * row; });
    add(image, HwDatablockToviVectorLevconTempFreq(), [](unsigned int row, unsigned int) { return 10.0 + 47 * row; });
    add(image, HwDatablockToviVectorLevconTempLevcon(), [](unsigned int row, unsigned int) { return 80.0 * row; });
    using TempData = HwDatablockToviVectorLevconTempData;
    for (unsigned int i = 0; i < TempData::keyNames.size(); ++i) {
        add(image, TempData(TempData::keyNames.at(i), static_cast<int>(i)),
            [=](unsigned int row, unsigned int column) { return 2000.0 + 30 * i + 5 * row + 12 * column; });
    }
    addFrequencies(image, HwDatablockToviRfboExtCalVecUserFreq());
    addDescribed(image, HwDatablockToviRfboExtCalVecUserData(), response(55, 30));
    return image.finish();
}

} // namespace Samples
