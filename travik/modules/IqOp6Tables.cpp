#include <travik/datablock/TextWriter.h>
#include <travik/modules/IqOp6Tables.h>
#include <travik/text/TextLayout.h>

namespace Travik {

namespace {

constexpr std::string_view pmaxLines[] = {
    "# DETATT-Kalibriertabelle: DETATT, Bezugspegel für DAWERT (bzw. Maxpegel) für diesen BZ(detatt):"_latin1};
constexpr ListLayout pmaxLayout{
    .head = {.comments = pmaxLines, .id = "ID:                 ", .count = "COUNT_BZ:           "},
    .firstNumber = 0,
    .endsWithEmptyLine = false};

constexpr std::string_view frequencyLines[] = {"#Das sind die Frequenzstützstellen"_latin1};
constexpr ListLayout frequencyLayout{
    .head = {.comments = frequencyLines}, .firstNumber = 0, .endsWithEmptyLine = false};
constexpr double hertzPerMegahertz = 1e6;
constexpr double repeatedPointDistance = 0.01; // Hz

constexpr std::string_view dataLines[] = {"# DAWERT-Kalibriertabelle: in einer Zeile: lfd. Nr., Frequenz , LEVATT_20, "
                                          "LEVATT_40, DAWERT[BZ1], DAWERT[BZ2],  ..."};
constexpr HeadLayout dataHead{.comments = dataLines, .id = "ID:                 "};

} // namespace

int HwDatablockIqOp6PmaxBz::setBlock(const HwSDatablockIqOp6PmaxBz* record) {
    return takeOver(record, "HwDatablockIqOp6PmaxBz", 0, [this] { put<&Record::count>(getNumberOfPmax() & 0xFFFFU); });
}

std::ostream& HwDatablockIqOp6PmaxBz::printToStream(std::ostream& os) {
    TextWriter out(os);
    printList(out, pmaxLayout, keyName, getNumberOfPmax(),
              [this](TextWriter& line, unsigned int bz) { line << get<&Record::pmaxBz>(bz); });
    return os;
}

int HwDatablockIqOp6CalibDataFreq::setBlock(const HwSDatablockIqOp6CalibDataFreq* record) {
    return takeOver(record, "HwDatablockIqOp6CalibDataFreq", 0,
                    [this] { put<&Record::count>(getNumberOfFrequency() & 0xFFFFU); });
}

double HwDatablockIqOp6CalibDataFreq::frequencyOf(unsigned int point) const {
    if (!holds<&Record::frequency>(point))
        return 0.0;
    const unsigned short stored = get<&Record::frequency>(point);
    const double frequency = stored * hertzPerMegahertz;
    return point > 0 && stored == get<&Record::frequency>(point - 1) ? frequency + repeatedPointDistance : frequency;
}

std::ostream& HwDatablockIqOp6CalibDataFreq::printToStream(std::ostream& os) {
    TextWriter out(os);
    printList(out, frequencyLayout, keyName, getNumberOfFrequency(),
              [this](TextWriter& line, unsigned int point) { line.fixed(frequencyOf(point), 1); });
    return os;
}

std::ostream& HwDatablockIqOp6CalibData::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, dataHead, keyName);
    for (unsigned int row = 0; row < std::extent_v<decltype(Record::levAtt_20)>; ++row) {
        out << row << ":\t\t" << get<&Record::levAtt_20>(row) << "\t\t" << get<&Record::levAtt_40>(row);
        for (unsigned int bz = 0; bz < std::extent_v<decltype(Record::daValueBz)>; ++bz)
            out << "][\t" << get<&Record::daValueBz>(bz, row);
        out.line("][");
    }
    return os;
}

} // namespace Travik
