#include <travik/tables/RfPathTables.h>

#include <ostream>

namespace Travik {

namespace {

constexpr Quantity pathAmplitude{.name = "amplitude", .scale = 1e-4, .axisBlock = 12100};
constexpr Quantity pathPhase{.name = "phase", .scale = 1e-2, .axisBlock = 12100};

constexpr ListTable imbalance(const BlockName& name, const Quantity& quantity, Lines comment) {
    return {.name = name,
            .values = quantity,
            .text = {.head = {.comments = comment, .count = {}}, .separator = ": "},
            .printsToCapacity = true};
}

constexpr ListTable list(const BlockName& name, const Quantity& quantity, Lines comment) {
    return {.name = name, .values = quantity, .text = {.head = {.comments = comment}}, .printsToCapacity = true};
}

} // namespace

constinit const ListTable HwSDatablockMbrdIqImbalanceRfFreq::table = {
    .name = {12100, "HwSDatablockMbrdIqImbalanceRfFreq", {"PATH_*_IQ_IMBALANCE_RF_FREQ", 4}},
    .values = {.name = "frequency", .unit = "MHz", .role = Role::Axis},
    .text = {.head = {.comments = lines<"#Das sind die Frequenzstützstellen [f/1MHz] ">}, .separator = ": "},
    .printsToCapacity = true};

constinit const ListTable HwSDatablockMbrdIqImbalanceRfEvenAmp::table =
    imbalance({12110, "HwDatablockMbrdIqImbalanceRfEvenAmp", {"PATH_*_IQ_IMBALANCE_RF_EVEN_AMP", 4}}, pathAmplitude,
              lines<"#Das sind die geraden Amplitudewerte [1/10000] ">);

constinit const ListTable HwSDatablockMbrdIqImbalanceRfEvenPh::table =
    imbalance({12120, "HwDatablockMbrdIqImbalanceRfEvenPh", {"PATH_*_IQ_IMBALANCE_RF_EVEN_PH", 4}}, pathPhase,
              lines<"#Das sind die geraden Phasenwerte [1/100] ">);

constinit const ListTable HwSDatablockMbrdIqImbalanceRfOddAmp::table =
    imbalance({12130, "HwDatablockMbrdIqImbalanceRfOddAmp", {"PATH_*_IQ_IMBALANCE_RF_ODD_AMP", 4}}, pathAmplitude,
              lines<"#Das sind die ungeraden Amplitudewerte [1/10000] ">);

constinit const ListTable HwSDatablockMbrdIqImbalanceRfOddPh::table = {
    .name = {12140, "HwDatablockMbrdIqImbalanceRfOddPh", {"PATH_*_IQ_IMBALANCE_RF_ODD_PH", 4}},
    .values = pathPhase,
    .text = {.head = {.comments = lines<"#Das sind die ungeraden Phasenwerte [1/100]">, .count = {}},
             .separator = ": "},
    .largestCount = 600,
    .printsToCapacity = true};

constinit const ListTable HwSDatablockMbrdRfResponseAttFreq::table = list(
    {12260, "HwDatablockMbrdRfResponseAttFreq", {"PATH_*_RF_RESPONSE_ATT_FREQ", 4}},
    {.name = "frequency", .unit = "MHz", .role = Role::Axis}, lines<"#Das sind die Frequenzstützstellen der RF [MHz]">);

constinit const ListTable HwSDatablockMbrdRfResponseBbFreq::table =
    list({12250, "HwDatablockMbrdRfResponseBbFreq", {"PATH_*_RF_RESPONSE_BB_FREQ", 4}},
         {.name = "frequency", .unit = "kHz", .role = Role::Axis},
         lines<"#Das sind die Frequenzstützstellen des Basisbandes [kHz]">);

constinit const ListTable HwSDatablockMbrdRfResponseIoPepInfo::table =
    list({12220, "HwDatablockMbrdRfResponseIoPepInfo", {"PATH_*_RF_RESPONSE_IOPEP_INFO", 4}},
         {.name = "levels", .unit = "dB", .scale = 1e-2},
         lines<"#Info für Kalibrierpegel (IOPEP Anzahl und Werte, max. IQPEP der Betriebszustände Anzahl und Werte, "
               "dazugehöriges BBGAIN), dB*100">);

constinit const PlainTable HwSDatablockMbrdRfResponseAttAmpl::table = {
    {12270, "HwSDatablockMbrdRfResponseAttAmpl   ", {"PATH_*_RF_RESPONSE_ATT_AMP", 4}},
    {.comments = lines<"# Das sind die Amplitudenwerte bei Dämpfungsgliedern [1*10000] ">}};

constinit const PlainTable HwSDatablockMbrdRfResponseLpFreq::table = {
    {12210, "HwSDatablockMbrdRfResponseLpFreq   ", {"PATH_*_RF_RESPONSE_LP_FREQ", 4}},
    {.comments = lines<"#Das sind die Frequenzstützstellen für die Tiefpässe">}};

constinit const PolynomialTable HwSDatablockMbrdRfResponseLpAmp::table = {
    {12230, "HwSDatablockMbrdRfResponseLpAmp   ", {"PATH_*_RF_RESPONSE_LP_AMP", 4}},
    {.comments = lines<"#Das sind die Amplitudenwerte für die Tiefpässe ">},
    "# Das sind die Amplitudenwerte [Skalierung: x*460, x*300, x*190, (x-1)*3200] fuer den ",
    'A'};

constinit const PolynomialTable HwSDatablockMbrdRfResponseLpPh::table = {
    {12240, "HwSDatablockMbrdRfResponseLpPh   ", {"PATH_*_RF_RESPONSE_LP_PH", 4}},
    {.comments = lines<"#Das sind die Phasenwerte für die Tiefpässe ">},
    "# Das sind die Phasenwerte [Skalierung: x*3] fuer den ",
    'P'};

// Text

namespace {

constexpr unsigned int attenuators = 6;
constexpr unsigned int attenuatorPoints = 200;
constexpr unsigned int filters = 9;
constexpr unsigned int peakLevels = 4;
constexpr unsigned int filterPoints = 150;

template <class Polynomial>
void printCoefficients(TextWriter& out, const Polynomial& polynomial) {
    for (const auto coefficient : {polynomial.c0, polynomial.c1, polynomial.c2, polynomial.c3})
        out << "\t\t " << coefficient;
    out.endLine();
}

} // namespace

std::ostream& HwDatablockMbrdRfResponseAttAmpl::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, Record::table.text, keyOf(getId()));
    const unsigned int points = std::min(count(), attenuatorPoints);
    for (unsigned int a = 0; a < attenuators; ++a) {
        (out << "#att" << a + 1).endLine();
        for (unsigned int k = 0; k < points; ++k) {
            out << "ATT" << a + 1 << ' ' << k + 1 << ": ";
            printCoefficients(out, value(a, k));
        }
        out.line();
    }
    out.line();
    return os;
}

std::ostream& HwDatablockMbrdRfResponseLpFreq::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, Record::table.text, keyOf(getId()));
    for (unsigned int t = 0; t < filters; ++t) {
        const unsigned int count = getNumberOfFreqCount(t);
        (out << "#TIEFPASS NR. " << t + 1).endLine();
        (out << "COUNT:           " << count).endLine();
        (out << "# Das sind die Frequenzstützstellen [MHz] der RF fuer den "_latin1 << t + 1 << ". TP").endLine();
        for (unsigned int k = 0; k < std::min(count, filterPoints); ++k)
            (out << k + 1 << ":             " << getFrequencyValue(t, k)).endLine();
        out.line();
    }
    return os;
}

template <class R>
std::ostream& LowPassPolynomials<R>::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, R::table.text, R::table.name.keyOf(this->getId()));
    for (unsigned int t = 0; t < filters; ++t) {
        const unsigned int points = std::min(this->getNumberOfFreqCount(t), filterPoints);
        (out << "#TIEFPASS NR. " << t + 1).endLine();
        (out << R::table.scaling << t + 1 << ". TP").endLine();
        for (unsigned int q = 0; q < peakLevels; ++q) {
            (out << "#iqpep" << q + 1).endLine();
            for (unsigned int k = 0; k < points; ++k) {
                out << "LP" << t + 1 << "IQPEP" << q + 1 << R::table.rowEnd << ' ' << k + 1 << ": ";
                printCoefficients(out, this->template get<&R::values>(t, q, k));
            }
            out.line();
        }
        out.line();
    }
    return os;
}

template class LowPassPolynomials<HwSDatablockMbrdRfResponseLpAmp>;
template class LowPassPolynomials<HwSDatablockMbrdRfResponseLpPh>;

} // namespace Travik
