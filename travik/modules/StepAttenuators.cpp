#include <travik/datablock/TextWriter.h>
#include <travik/modules/StepAttenuators.h>
#include <travik/text/TextLayout.h>

namespace Travik {

namespace {

constexpr std::string_view attenuatorFrequencyLines[] = {"#Das sind die Frequenzstützstellen"_latin1};
constexpr ListLayout attenuatorFrequencies{.head = {.comments = attenuatorFrequencyLines}};

constexpr std::string_view correctionLines[] = {"#Das sind die Userdaten "};
constexpr HeadLayout correctionHead{.comments = correctionLines};
constexpr std::string_view correctionUnits[] = {"# f[10Hz]", "#  ATTENUATOR_CORRECTION [1/100dB]"};

constexpr std::string_view gradientLines[] = {"#Das sind die Temperaturgradienten "};
constexpr HeadLayout gradientHead{.comments = gradientLines};
constexpr std::string_view gradientUnits[] = {"# f[10Hz]", "# TEMPERATURE_GRADIENT [((TK+1)*50)] "};

constexpr MatrixLayout rowsLayout{.head = correctionHead, .labelSeparator = ":", .valueSeparator = "\t\t"};
constexpr unsigned int printedRows = 26; // the last of the 27 rows is stored only
constexpr unsigned int columns = 150;
constexpr unsigned int decibelsPerRow = 5;

template <class PrintValue>
void printTable(TextWriter& out, std::string_view count, Lines units, PrintValue printValue) {
    (out << HeadLayout{.comments = {}}.count << count).endLine();
    printLines(out, units);
    printRows(
        out, rowsLayout, printedRows, columns, [](TextWriter& line, unsigned int row) { line << row * decibelsPerRow; },
        printValue);
    out.line();
}

} // namespace

template <class R>
std::ostream& StepAttenuatorFreqBlock<R>::printToStream(std::ostream& os) {
    TextWriter out(os);
    printList(out, attenuatorFrequencies, keyName, getNumberOfFreqValues(),
              [this](TextWriter& line, unsigned int point) { line << this->template get<&R::frequency>(point); });
    return os;
}

template <class R>
std::ostream& StepAttenuatorAttBlock<R>::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, correctionHead, keyName);
    printTable(out, kind.count, correctionUnits, [this](TextWriter& line, unsigned int row, unsigned int column) {
        line << this->template get<&R::attenuation>(row, column);
    });
    return os;
}

template <class R>
std::ostream& StepAttenuatorTempBlock<R>::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, gradientHead, keyName);
    (out << "VTemp:          " << getCalibTemp()).endLine();
    printTable(out, kind.count, gradientUnits, [this](TextWriter& line, unsigned int row, unsigned int column) {
        line << this->template get<&R::gradient>(row, column);
    });
    return os;
}

template class StepAttenuatorFreqBlock<HwSDatablockSAtt3CalibDataFreq>;
template class StepAttenuatorFreqBlock<HwSDatablockSAtt6CalibDataFreq>;
template class StepAttenuatorAttBlock<HwSDatablockSAtt3CalibDataAtt>;
template class StepAttenuatorAttBlock<HwSDatablockSAtt6CalibDataAtt>;
template class StepAttenuatorTempBlock<HwSDatablockSAtt3CalibDataTemp>;
template class StepAttenuatorTempBlock<HwSDatablockSAtt6CalibDataTemp>;

} // namespace Travik
