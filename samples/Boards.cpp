#include "Samples.h"

#include <cmath>

using namespace Travik;

namespace Samples {

namespace {

constexpr double pi = 3.14159265358979323846;

/// A smooth curve over a table: a slow swing whose size and phase differ from curve to curve.
int curve(unsigned int k, unsigned int points, int size, unsigned int number = 0) {
    const double at = static_cast<double>(k) / points;
    return static_cast<int>(std::lround(size * std::sin(pi * (2.0 * at + 0.37 * number)) / (1.0 + 0.25 * number)));
}

/// Stores as many entries and their number.
template <class Block, class SetCount, class SetValue, class Function>
void fill(Block& block, unsigned int count, SetCount setCount, SetValue setValue, Function function) {
    for (unsigned int k = 0; k < count; ++k)
        std::invoke(setValue, block, function(k), k);
    std::invoke(setCount, block, count);
}

/// Frequency points from one to another, in equal steps, in the unit they are stored in.
auto steps(unsigned int from, unsigned int to, unsigned int points) {
    return
        [=](unsigned int k) { return from + static_cast<unsigned int>(std::uint64_t{to - from} * k / (points - 1)); };
}

template <class Block>
void addFrequencies(Image& image, Block&& block, unsigned int count, unsigned int from, unsigned int to) {
    fill(block, count, &Block::setNumberOfFrequency, &Block::setFrequencyValue, steps(from, to, count));
    image.add(block);
}

template <class Block>
void addUserFrequencies(Image& image, Block&& block, unsigned int count, unsigned int from, unsigned int to) {
    fill(block, count, &Block::setNumberOfFreqValues, &Block::setFrequencyValue, steps(from, to, count));
    image.add(block);
}

template <class Block>
void addLevels(Image& image, Block&& block, unsigned char rows, unsigned int points) {
    for (unsigned char row = 0; row < rows; ++row) {
        for (unsigned int k = 0; k < points; ++k)
            block.setCorLevelValue(static_cast<short>(curve(k, points, 180, row)), row, k);
    }
    block.setNumberOfLevelSteps(rows);
    image.add(block);
}

void addExternalLevels(Image& image, int path) {
    constexpr unsigned int points = 130;
    constexpr unsigned int lowest = 1000000;    // 10 MHz
    constexpr unsigned int highest = 600000000; // 6 GHz
    addFrequencies(image, HwDatablockMbrdExtLevCalDataFreq(path), points, lowest, highest);
    addLevels(image, HwDatablockMbrdExtLevCalData(path), 3, points);
    addFrequencies(image, HwDatablockMbrdExtLevCalDataFreq2Edition(path), 2 * points, lowest, highest);
    addLevels(image, HwDatablockMbrdExtLevCalData2Edition(path), 7, 2 * points);
}

void addEnhancedLevels(Image& image, int path) {
    constexpr unsigned int points = 500;
    constexpr unsigned int lowest = 1000000;
    constexpr unsigned int highest = 2000000000; // 20 GHz
    addFrequencies(image, HwDatablockMbrdExtLevCalDataFreq_Enh(path), points, lowest, highest);
    addLevels(image, HwDatablockMbrdExtLevCalData_Enh(path), 7, points);
    addFrequencies(image, HwDatablockMbrdExtLevCalDataFreq2Edition_Enh(path), points, lowest, highest);
    addLevels(image, HwDatablockMbrdExtLevCalData2Edition_Enh(path, true, 13012), 13, points);
}

void addImbalance(Image& image, int path) {
    constexpr unsigned int points = 300;
    const auto add = [&]<class Block>(Block&& block, auto setCount, auto setValue, int size, unsigned int number) {
        fill(block, points, setCount, setValue,
             [&](unsigned int k) { return static_cast<short>(curve(k, points, size, number)); });
        image.add(block);
    };
    HwDatablockMbrdIqImbalanceRfFreq frequencies(path);
    fill(frequencies, points, &HwDatablockMbrdIqImbalanceRfFreq::setNumberOfIqImbalanceRfFreq,
         &HwDatablockMbrdIqImbalanceRfFreq::setIqImbalanceRfFreq, steps(100, 6000, points));
    image.add(frequencies);
    add(HwDatablockMbrdIqImbalanceRfEvenAmp(path),
        &HwDatablockMbrdIqImbalanceRfEvenAmp::setNumberOfIqImbalanceRfEvenAmp,
        &HwDatablockMbrdIqImbalanceRfEvenAmp::setIqImbalanceRfEvenAmp, 120, 0);
    add(HwDatablockMbrdIqImbalanceRfEvenPh(path), &HwDatablockMbrdIqImbalanceRfEvenPh::setNumberOfIqImbalanceRfEvenPh,
        &HwDatablockMbrdIqImbalanceRfEvenPh::setIqImbalanceRfEvenPh, 90, 1);
    add(HwDatablockMbrdIqImbalanceRfOddAmp(path), &HwDatablockMbrdIqImbalanceRfOddAmp::setNumberOfIqImbalanceRfOddAmp,
        &HwDatablockMbrdIqImbalanceRfOddAmp::setIqImbalanceRfOddAmp, 40, 2);
    add(HwDatablockMbrdIqImbalanceRfOddPh(path), &HwDatablockMbrdIqImbalanceRfOddPh::setNumberOfIqImbalanceRfOddPh,
        &HwDatablockMbrdIqImbalanceRfOddPh::setIqImbalanceRfOddPh, 30, 3);
}

void addResponse(Image& image, int path) {
    constexpr unsigned char filters = 9;
    constexpr unsigned int filterPoints = 60;
    constexpr unsigned int attenuatorPoints = 100;
    HwDatablockMbrdRfResponseLpFreq frequencies(path);
    HwDatablockMbrdRfResponseLpAmp amplitudes(path);
    HwDatablockMbrdRfResponseLpPh phases(path);
    for (unsigned char t = 0; t < filters; ++t) {
        const auto point = steps(100U << t / 2U, 150U << t / 2U, filterPoints);
        for (unsigned int k = 0; k < filterPoints; ++k)
            frequencies.setFrequencyValue(point(k), t, k);
        for (unsigned char level = 0; level < 4; ++level) {
            for (unsigned int k = 0; k < filterPoints; ++k) {
                const auto coefficient = [&](unsigned int number) {
                    return static_cast<signed char>(curve(k, filterPoints, 60, level + number));
                };
                const HwSPolynomValues polynomial{coefficient(0), coefficient(1), coefficient(2), coefficient(3)};
                amplitudes.setCorAmplValue(polynomial, t, level, k);
                phases.setCorPhaseValue(polynomial, t, level, k);
            }
        }
        frequencies.setNumberOfFreqCount(filterPoints, t);
        amplitudes.setNumberOfFreqCount(filterPoints, t);
        phases.setNumberOfFreqCount(filterPoints, t);
    }
    image.add(frequencies);
    HwDatablockMbrdRfResponseIoPepInfo levels(path);
    fill(levels, 9, &HwDatablockMbrdRfResponseIoPepInfo::setCountOfIoPepInfoValues,
         &HwDatablockMbrdRfResponseIoPepInfo::setIoPepInfoValue, [](unsigned int k) { return 300 * k; });
    image.add(levels).add(amplitudes).add(phases);
    addFrequencies(image, HwDatablockMbrdRfResponseBbFreq(path), 100, 0, 80000);
    addFrequencies(image, HwDatablockMbrdRfResponseAttFreq(path), attenuatorPoints, 100, 6000);
    HwDatablockMbrdRfResponseAttAmpl attenuators(path);
    for (unsigned char a = 0; a < 6; ++a) {
        for (unsigned int k = 0; k < attenuatorPoints; ++k) {
            const auto gain = static_cast<short>(10000 + curve(k, attenuatorPoints, 400, a));
            attenuators.setCorLevelValue({gain, static_cast<short>(-20 * a), 5, -1}, a, k);
        }
    }
    attenuators.setNumberOfRfRespAttFreqs(attenuatorPoints);
    image.add(attenuators);
}

void addUserCalibration(Image& image, int path) {
    constexpr unsigned int points = 75;
    addUserFrequencies(image, HwDatablockAttCalDataFreq2Edition(path), points, 1000000, 600000000);
    HwDatablockAttCalData2Edition attenuator(path);
    for (int step = 0; step < 27; ++step) {
        for (unsigned int k = 0; k < points; ++k)
            attenuator.setAttenuationValue(static_cast<short>(curve(k, points, 35, static_cast<unsigned int>(step))),
                                           step, static_cast<int>(k));
    }
    attenuator.setNumberOfAttSteps(27);
    image.add(attenuator);
    addUserFrequencies(image, HwDatablockCwop3DetTuneFreq(path), 100, 10000000, 600000000);
    HwDatablockCwop3DetTuneDac tuning(path);
    for (int k = 0; k < 100; ++k)
        tuning.setDetTuneDacValue(static_cast<short>(2048 + curve(static_cast<unsigned int>(k), 100, 500)), 0, k);
    tuning.setNumberOfDacSteps(1);
    image.add(tuning);
}

void addLinearity(Image& image, int path) {
    constexpr int levels = 10;
    constexpr int points = 25;
    addUserFrequencies(image, HwDatablockCwopDetLinCorrFreq(path), points, 10000000, 600000000);
    HwDatablockCwopDetLinCorrData linearity(path);
    for (int s = 0; s < levels; ++s) {
        for (int f = 0; f < points; ++f)
            linearity.setDetLinCorrData(
                {500 * s - 2500, 0.01F * static_cast<float>(s) - 0.002F * static_cast<float>(f)}, s, f);
    }
    linearity.setNumberOfDetLinCorrSteps(levels);
    linearity.setNumberOfValidFreqs(points);
    image.add(linearity);
}

} // namespace

std::vector<char> mainBoard() {
    Image image("MBRD", 11418505, 2, 101530);
    for (int path = 0; path < 4; ++path) {
        addExternalLevels(image, path);
        if (path < 2)
            addEnhancedLevels(image, path);
        addImbalance(image, path);
        addResponse(image, path);
        addUserCalibration(image, path);
        if (path < 2)
            addLinearity(image, path);
    }
    HwDatablockOrbMbrdPllDacCalibValue reference;
    reference.setCount(1);
    reference.setOrbMbrdPllDacCalibValue(517, 0);
    image.add(reference);
    return image.finish();
}

std::vector<char> dacBoard() {
    Image image("DACB", 11416009, 3, 100417);
    unsigned int number = 0;
    const auto frequencies = [&]<class Block>(Block&& block, auto setCount, auto setValue) {
        // -40 to 60 MHz in steps of 4 MHz
        fill(block, 26, setCount, setValue, [](unsigned int k) { return -40000000 + 4000000 * static_cast<int>(k); });
        image.add(block);
    };
    const auto values = [&]<class Block>(Block&& block, auto setCount, auto setValue, unsigned int count, int size) {
        ++number;
        fill(block, count, setCount, setValue,
             [&](unsigned int k) { return static_cast<short>(curve(k, count, size, number)); });
        image.add(block);
    };
    using CompFreq = HwDatablockDacbFrequencyCompFreq;
    using CompAmp = HwDatablockDacbFrequencyCompAmp;
    using CompPh = HwDatablockDacbFrequencyCompPh;
    using CompDt = HwDatablockDacbFrequencyCompDt;
    using CompAmpRear = HwDatablockDacbFrequencyCompAmpRear;
    using CompPhRear = HwDatablockDacbFrequencyCompPhRear;
    using CompDtRear = HwDatablockDacbFrequencyCompDtRear;
    using Freq = HwDatablockDacbIqImbalanceFreq;
    using Amp = HwDatablockDacbIqImbalanceAmp;
    using Ph = HwDatablockDacbIqImbalancePh;
    using SwapAmp = HwDatablockDacbIqImbalanceSwapAmp;
    using SwapPh = HwDatablockDacbIqImbalanceSwapPh;
    using RearAmp = HwDatablockDacbIqImbalanceRearAmp;
    using RearPh = HwDatablockDacbIqImbalanceRearPh;
    HwDatablockDacIfFullScale fullScale;
    fullScale.setFullScaleValue(24500);
    image.add(fullScale);
    frequencies(CompFreq(), &CompFreq::setNumberOfcompFreq, &CompFreq::setCompFreq);
    values(CompAmp(), &CompAmp::setNumberOfcompAmp, &CompAmp::setCompAmp, 26, 85);
    values(CompPh(), &CompPh::setNumberOfCompPh, &CompPh::setCompPh, 26, 140);
    values(CompDt(), &CompDt::setNumberOfCompDt, &CompDt::setCompDt, 1, 270);
    frequencies(Freq(), &Freq::setNumberOfIqImbalanceFreq, &Freq::setIqImbalanceFreq);
    values(Amp(), &Amp::setNumberOfIqImbalanceAmp, &Amp::setIqImbalanceAmp, 26, 31);
    values(Ph(), &Ph::setNumberOfIqImbalancePh, &Ph::setIqImbalancePh, 26, 45);
    values(SwapAmp(), &SwapAmp::setNumberOfIqImbalanceSwapAmp, &SwapAmp::setIqImbalanceSwapAmp, 26, 33);
    values(SwapPh(), &SwapPh::setNumberOfIqImbalanceSwapPh, &SwapPh::setIqImbalanceSwapPh, 26, 48);
    values(CompAmpRear(), &CompAmpRear::setNumberOfcompAmpRear, &CompAmpRear::setCompAmpRear, 26, 88);
    values(CompPhRear(), &CompPhRear::setNumberOfCompPhRear, &CompPhRear::setCompPhRear, 26, 133);
    values(CompDtRear(), &CompDtRear::setNumberOfCompDtRear, &CompDtRear::setCompDtRear, 1, 310);
    values(RearAmp(), &RearAmp::setNumberOfIqImbalanceRearAmp, &RearAmp::setIqImbalanceRearAmp, 26, 27);
    values(RearPh(), &RearPh::setNumberOfIqImbalanceRearPh, &RearPh::setIqImbalanceRearPh, 26, 51);
    return image.finish();
}

std::vector<char> basebandInputBoard() {
    Image image("BBINS", 11417000, 1, 100288);
    const auto taps = [&]<class Block>(Block&& block, auto setCount, auto setValue, unsigned int count, int size) {
        // An impulse response: the main tap in the middle, alternating ones falling off to both sides.
        fill(block, count, setCount, setValue, [&](unsigned int k) {
            const int distance = std::abs(static_cast<int>(k) - static_cast<int>(count / 2));
            return (distance % 2 == 0 ? size : -size) / (1 + distance * distance);
        });
        image.add(block);
    };
    using TapsI = HwDatablockBbinsCompFilterTabsI;
    using TapsQ = HwDatablockBbinsCompFilterTabsQ;
    using AmplitudeI = HwDatablockBbinsUncalibratedFirAmplitudeI;
    using AmplitudeQ = HwDatablockBbinsUncalibratedFirAmplitudeQ;
    using PhaseI = HwDatablockBbinsUncalibratedFirPhiI;
    using PhaseQ = HwDatablockBbinsUncalibratedFirPhiQ;
    taps(TapsI(), &TapsI::setNumberOfFilterTabsI, &TapsI::setFilterTabsIValue, 20, 1 << 20);
    taps(TapsQ(), &TapsQ::setNumberOfFilterTabsQ, &TapsQ::setFilterTabsQValue, 20, 1040000);
    taps(AmplitudeI(), &AmplitudeI::setNumberOfUncalibratedFirAmplitudeI,
         &AmplitudeI::setUncalibratedFirAmplitudeIValue, 50, 16000000);
    taps(PhaseI(), &PhaseI::setNumberOfUncalibratedFirPhiI, &PhaseI::setUncalibratedFirPhiIValue, 50, 250000);
    taps(AmplitudeQ(), &AmplitudeQ::setNumberOfUncalibratedFirAmplitudeQ,
         &AmplitudeQ::setUncalibratedFirAmplitudeQValue, 50, 15900000);
    taps(PhaseQ(), &PhaseQ::setNumberOfUncalibratedFirPhiQ, &PhaseQ::setUncalibratedFirPhiQValue, 50, 247000);
    return image.finish();
}

} // namespace Samples
