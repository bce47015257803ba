#include <travik/datablock/TextWriter.h>
#include <travik/modules/OutputUnit.h>
#include <travik/text/TextLayout.h>

namespace Travik {

namespace {

constexpr std::string_view coefficientLines[] = {
    "# Das sind die Frequenzstützstellen für Ssyn_Opu_Dbl_Coefficient"_latin1,
    "# Maximal mögliche Koeffizienten sind mit dieser ID 3"_latin1};
constexpr ListLayout coefficientLayout{.head = {.comments = coefficientLines}};
constexpr unsigned int coefficientDecimals[] = {0, 3, 6};

constexpr std::string_view outputFrequencyLines[] = {
    "# Das sind die Frequenzstützstellen für Ssyn_Opu_Dbl_Coefficient"_latin1,
    "# Maximal mögliche Frequenzstützstellen sind mit dieser ID 50"_latin1};
constexpr ListLayout outputFrequencies{.head = {.comments = outputFrequencyLines}, .endsWithEmptyLine = false};

constexpr std::string_view levelLines[] = {"# Das sind die Ssyn_Opu_Dbl_Coefficient in [mV]",
                                           "# Maximal mögliche Koefizienten sind mit dieser ID 50"_latin1};
constexpr ListLayout levelLayout{.head = {.comments = levelLines}, .endsWithEmptyLine = false};

} // namespace

std::ostream& HwDatablockSsynOpuDblCoefficient::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, coefficientLayout.head, keyName, getCount());
    printEntries(out, coefficientLayout, std::size(coefficientDecimals), [this](TextWriter& line, unsigned int index) {
        line.fixed(value(index), coefficientDecimals[index]);
    });
    return os;
}

std::ostream& HwDatablockSsynOpuLevelFreq::printToStream(std::ostream& os) {
    TextWriter out(os);
    printList(out, outputFrequencies, keyName, getCount(),
              [this](TextWriter& line, unsigned int index) { line.general(value(index)); });
    return os;
}

std::ostream& HwDatablockSsynOpuLevel::printToStream(std::ostream& os) {
    TextWriter out(os);
    printList(out, levelLayout, keyName, getCount(),
              [this](TextWriter& line, unsigned int index) { line << value(index); });
    return os;
}

} // namespace Travik
