#include <travik/datablock/TextWriter.h>
#include <travik/modules/MicrowaveTables.h>
#include <travik/text/TextLayout.h>

#include <algorithm>

namespace Travik {

namespace {

constexpr MatrixLayout matrixLayout{.head = {.comments = {}}};

constexpr std::string_view microwaveFrequencyLines[] = {"# Frequenzstützstellen [Hz]"_latin1};
constexpr ListLayout microwaveFrequencies{.head = {.comments = microwaveFrequencyLines}};
constexpr double hertzPerStep = 100.0;
constexpr double microwavePointDistance = 0.001; // Hz

constexpr std::string_view absoluteLines[] = {"# Externe Kalibrierdaten [1/100dBm]"};
constexpr HeadLayout absoluteHead{.comments = absoluteLines};

constexpr unsigned int countMask = 0xFFFF; // the matrices' counts are set as 16-bit numbers

} // namespace

// Matrices

template <class R>
int LevelMatrixBlock<R>::setBlock(const R* record) {
    const int result = this->takeOver(record, kind.errorName, 0, [this] {
        this->template put<&R::numberOfPoints>(pointCount() & countMask);
        this->template put<&R::numberOfLevelSteps>(getNumberOfLevelSteps() & countMask);
    });
    if (result == 0)
        this->refreshChecksum();
    return result;
}

template <class R>
std::ostream& LevelMatrixBlock<R>::printToStream(std::ostream& os) {
    TextWriter out(os);
    const unsigned int steps = getNumberOfLevelSteps();
    const unsigned int points = pointCount();
    printHead(out, {.comments = {&kind.comment, 1}}, keyName);
    (out << matrixLayout.head.count << steps << kind.style.times << points).endLine();
    printRows(
        out, matrixLayout, steps, points,
        [](TextWriter& line, unsigned int step) { line << kind.style.firstLabel + kind.style.labelDistance * step; },
        [this](TextWriter& line, unsigned int step, unsigned int point) {
            line << this->template get<&R::correction>(step, point);
        });
    out.line();
    return os;
}

template class LevelMatrixBlock<HwSDatablockPokAttCalDat>;
template class LevelMatrixBlock<HwSDatablockPokAttCalDatSe>;
template class LevelMatrixBlock<HwSDatablockPokMwIfExtLevCalData>;
template class LevelMatrixBlock<HwSDatablockPokMwIfExtLevCalDataRelCorr>;

// Frequencies

template <class R>
double MicrowaveFrequencyBlock<R>::getFrequencyValue(unsigned int point) const {
    if (!this->template holds<&R::frequency>(point))
        return 0.0;
    const unsigned int stored = this->template get<&R::frequency>(point);
    const double frequency = stored * hertzPerStep;
    return point > 0 && stored == this->template get<&R::frequency>(point - 1) ? frequency + microwavePointDistance
                                                                               : frequency;
}

template <class R>
int MicrowaveFrequencyBlock<R>::setBlock(const R* record) {
    const int result = this->takeOver(record, kind.errorName);
    if (result == 0 && !kind.keepsRecordChecksum)
        this->refreshChecksum();
    return result;
}

template <class R>
std::ostream& MicrowaveFrequencyBlock<R>::printToStream(std::ostream& os) {
    TextWriter out(os);
    printList(out, microwaveFrequencies, keyName, getNumberOfFrequency(),
              [this](TextWriter& line, unsigned int point) { line.fixed(getFrequencyValue(point), 3); });
    return os;
}

template class MicrowaveFrequencyBlock<HwSDatablockPokAttCalDatFreq>;
template class MicrowaveFrequencyBlock<HwSDatablockPokAttCalDatFreqSe>;
template class MicrowaveFrequencyBlock<HwSDatablockPokMwIfExtLevCalDataFreq>;

// Absolute corrections

int HwDatablockPokMwIfExtLevCalDataAbsCorr::setBlock(const HwSDatablockPokMwIfExtLevCalDataAbsCorr* record) {
    const int result = takeOver(record, "HwDatablockPokMwIfExtLevCalDataAbsCorr");
    if (result == 0)
        refreshChecksum();
    return result;
}

std::ostream& HwDatablockPokMwIfExtLevCalDataAbsCorr::printToStream(std::ostream& os) {
    TextWriter out(os);
    const unsigned int count = getNumberOfAbsCorr();
    printHead(out, absoluteHead, keyName, count);
    out << "1:           ";
    for (unsigned int i = 0; i < std::min(count, printedEntriesLimit); ++i)
        out << "    " << getAbsCorrValue(i);
    out.endLine();
    return os;
}

} // namespace Travik
