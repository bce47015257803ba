#include "Samples.h"

#include <cmath>

namespace Samples {

namespace {

using namespace Travik;

/// A smooth deviation of a few hundredths around 0, different for each row, as calibrations show it.
double ripple(unsigned int row, double x) { return 1.2 * std::sin(0.9 * row + x) - 0.4 * std::cos(5 * x); }

short hundredths(double value) { return static_cast<short>(std::lround(100 * value)); }

constexpr int iqModulatorRows = 300;

HwDatablockIqOp3RfmHarmonic harmonicFilters() {
    HwDatablockIqOp3RfmHarmonic block;
    unsigned char filter = 0;
    for (const int hertz : {250000000, 450000000, 800000000, 1400000000, 1700000000, 2100000000})
        block.setCutOffFrequency(hertz, filter++);
    return block;
}

HwDatablockIqOp3RfmCalibDataFreq iqModulatorFrequencies() {
    HwDatablockIqOp3RfmCalibDataFreq block;
    block.setCount(iqModulatorRows);
    for (unsigned short i = 0; i < iqModulatorRows; ++i)
        block.setFrequencyValue(200000U + 20000U * i, i);
    return block;
}

HwDatablockIqOp3RfmCalibDataMisc operatingStates(unsigned char states) {
    HwDatablockIqOp3RfmCalibDataMisc block;
    block.setToleranceLevPre(128);
    block.setToleranceLevAtt_15(64);
    block.setToleranceLevAtt_30_45(96);
    block.setToleranceDetAtt(128);
    block.setDetFullScale(65535);
    block.setNumberOfOperatingStates(states);
    for (unsigned char bz = 0; bz < states; ++bz) {
        block.setPmaxBz(static_cast<unsigned short>(1281 + 256 * bz), bz);
        block.setUiqBz(0.25F + 0.125F * static_cast<float>(bz), bz);
        block.setLconReserveBz(static_cast<unsigned short>(768 - 128 * bz), bz);
        block.setDetReserveBz(3, bz);
    }
    return block;
}

HwDatablockIqOp3RfmCalibData iqModulatorRowsOf(unsigned int state) {
    HwDatablockIqOp3RfmCalibData block;
    block.setBlockId(static_cast<unsigned short>(block.getId() + state));
    block.setOperatingState(state);
    for (int row = 0; row < iqModulatorRows; ++row) {
        const double x = 0.02 * row;
        HwSIqOp3RfmCalibDataBlock values{};
        values.setLevPre(4 + row / 50);
        values.setDetAtt(12 + static_cast<int>(2 * state));
        values.setDetConvDeflection(52000 - 20 * row);
        values.setLevAtt15(static_cast<int>(40 * ripple(state, x)));
        values.setLevAtt30(static_cast<int>(60 * ripple(state + 1, x)));
        values.setLevAtt45(static_cast<int>(80 * ripple(state + 2, x)));
        block.setCalibDatablock(values, row);
    }
    return block;
}

HwDatablockIqOp3RfmCalibDataMiscV20 namedValues() {
    HwDatablockIqOp3RfmCalibDataMiscV20 block;
    block.setLmaxLow(-8.5F);
    block.setLmaxMed(1.25F);
    block.setLmaxHigh(10.5F);
    block.setLmaxOvr(15);
    block.setLcalSensLow(-12);
    block.setLcalSensMed(-3);
    block.setLcalSensHigh(6);
    block.setLcalSensOvr(11);
    block.setVcalSensLow(0.25F);
    block.setVcalSensMed(0.5F);
    block.setVcalSensHigh(0.75F);
    block.setVcalSensOvr(1);
    block.setLrangeCwNorm(13);
    block.setLrangeCwOvr(18);
    block.setLrangeIqNorm(10);
    block.setLrangeIqOvr(15);
    block.setUiq(0.5F);
    block.setLconReserveCwNorm(3.5F);
    block.setLconReserveCwOvr(1.5F);
    block.setLconReserveIqNorm(4.5F);
    block.setLconReserveIqOvr(2.5F);
    block.setLpreCalLevCwNorm(5.5F);
    block.setLpreCalLevCwOvr(9.5F);
    block.setLpreCalLevIqNorm(2.5F);
    block.setLpreCalLevIqOvr(6.5F);
    block.setDetattLow(0);
    block.setDetattMed(9);
    block.setDetattHigh(18);
    block.setDetattOvr(24);
    return block;
}

HwDatablockIqOp3RfmCalibDataV20 iqModulatorRowsV20() {
    HwDatablockIqOp3RfmCalibDataV20 block;
    for (int row = 0; row < iqModulatorRows; ++row) {
        const double x = 0.02 * row;
        const auto near = [x](double value, unsigned int column) {
            return static_cast<float>(value * (1 + 0.01 * ripple(column, x)));
        };
        const auto preset = static_cast<short>(3 + row / 60);
        block.setCalibDatablock({near(25000, 0), near(5200, 1), near(910, 2), near(430, 3), preset,
                                 static_cast<short>(preset + 4), preset, static_cast<short>(preset + 5), near(15, 4),
                                 near(30, 5), near(45, 6), near(15, 7), near(30, 8), near(45, 9)},
                                row);
    }
    return block;
}

/// Fills a matrix and stores both counts.
template <class Matrix>
Matrix corrections(unsigned char steps, unsigned short points, double base) {
    Matrix matrix;
    for (unsigned char step = 0; step < steps; ++step) {
        for (unsigned int point = 0; point < points; ++point)
            matrix.setCorLevelValue(hundredths(base + ripple(step, 0.01 * point)), step, point, false);
    }
    matrix.setNumberOfLevelSteps(steps);
    if constexpr (requires { matrix.setNumberOfRelCorrValues(points); })
        matrix.setNumberOfRelCorrValues(points);
    else
        matrix.setNumberOfFreqs(points);
    return matrix;
}

template <class Frequencies>
Frequencies frequencies(unsigned int points, unsigned int first, unsigned int distance) {
    Frequencies block;
    for (unsigned int point = 0; point < points; ++point)
        block.setFrequencyValue(first + distance * point, point, false);
    block.setNumberOfFrequency(points);
    return block;
}

} // namespace

std::vector<char> iqModulator() {
    constexpr unsigned char states = 3;
    Image image("IQOP3RFM", 11415884, 2, 101310);
    image.add(harmonicFilters()).add(operatingStates(states)).add(iqModulatorFrequencies());
    for (unsigned int state = 0; state < states; ++state)
        image.add(iqModulatorRowsOf(state));
    return image.finish();
}

std::vector<char> iqModulatorV20() {
    Image image("IQOP3RFM", 11415884, 20, 102477);
    image.add(harmonicFilters()).add(iqModulatorFrequencies()).add(namedValues()).add(iqModulatorRowsV20());
    return image.finish();
}

std::vector<char> iqOp6Board() {
    constexpr unsigned char states = 32;
    constexpr unsigned char points = 70;
    Image image("IQOP6", 11417212, 2, 100655);
    HwDatablockIqOp6PmaxBz levels;
    levels.setCount(states);
    for (unsigned char bz = 0; bz < states; ++bz)
        levels.setPmaxBz(static_cast<short>(18 - bz), bz);
    HwDatablockIqOp6CalibDataFreq frequencyPoints;
    frequencyPoints.setCount(points);
    HwDatablockIqOp6CalibData data;
    for (unsigned char row = 0; row < points; ++row) {
        // The range is switched at point 20, which is calibrated on both sides.
        frequencyPoints.setFrequencyValue(static_cast<unsigned short>(250 + 85 * (row > 20 ? row - 1 : row)), row);
        data.setLevAtt_20(static_cast<unsigned short>(128 + std::lround(20 * ripple(0, 0.1 * row))), row);
        data.setLevAtt_40(static_cast<unsigned short>(128 + std::lround(20 * ripple(1, 0.1 * row))), row);
        for (unsigned char bz = 0; bz < states; ++bz)
            data.setDaValueBz(static_cast<unsigned short>(30000 + 900 * bz + std::lround(400 * ripple(bz, 0.1 * row))),
                              bz, row);
    }
    return image.add(levels).add(frequencyPoints).add(data).finish();
}

std::vector<char> microwaveModule() {
    Image image("MWIF", 11418804, 3, 100093);
    HwDatablockPokMwIfExtLevCalDataAbsCorr absolute;
    for (unsigned int i = 0; i < 1500; ++i)
        absolute.setAbsCorrValue(hundredths(ripple(3, 0.01 * i)), i, false);
    absolute.setNumberOfAbsCorr(1500);
    image.add(frequencies<HwDatablockPokMwIfExtLevCalDataFreq>(1500, 200000000, 134000))
        .add(corrections<HwDatablockPokMwIfExtLevCalData>(20, 1500, -10))
        .add(absolute)
        .add(corrections<HwDatablockPokMwIfExtLevCalDataRelCorr>(20, 1500, 0))
        .add(frequencies<HwDatablockPokAttCalDatFreq>(200, 200000000, 1000000))
        .add(corrections<HwDatablockPokAttCalDat>(12, 200, 0))
        .add(frequencies<HwDatablockPokAttCalDatFreqSe>(500, 200000000, 400000))
        .add(corrections<HwDatablockPokAttCalDatSe>(12, 500, 0));
    return image.finish();
}

std::vector<char> synthesizer() {
    Image image("SSYN", 11419208, 2, 100712);
    HwDatablockSsynOcxoRefCalValue oscillator;
    oscillator.setCount(1);
    oscillator.setOcxoRefCalValue(33210, 0);
    HwDatablockSsynOpuDblCoefficient coefficients;
    coefficients.setCount(3);
    coefficients.setOpuDblCoefficient(1250, 0);
    coefficients.setOpuDblCoefficient(-12.375, 1);
    coefficients.setOpuDblCoefficient(0.015625, 2);
    HwDatablockSsynOpuLevelFreq levelFrequencies;
    HwDatablockSsynOpuLevel levels;
    levelFrequencies.setCount(50);
    levels.setCount(50);
    for (unsigned char i = 0; i < 50; ++i) {
        levelFrequencies.setOpuLevelFreq(750e6 + 15e6 * i, i);
        levels.setOpuLevel(420U + 3U * i, i);
    }
    return image.add(oscillator).add(coefficients).add(levelFrequencies).add(levels).finish();
}

} // namespace Samples
