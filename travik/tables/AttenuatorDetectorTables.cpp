#include <travik/tables/AttenuatorDetectorTables.h>

#include <ostream>

namespace Travik {

constinit const ListTable HwSDatablockAttCalDataFreq2Edition::table = {
    .name = {12170, "HwSDatablockAttCalibDataFreq2Edition", {"ATT_CAL_DAT_*_FREQ_2_EDITION", 4}},
    .values = {.name = "frequency", .unit = "Hz", .scale = 10.0, .role = Role::Axis},
    .text = {.head = {.comments = lines<"#Das sind die Frequenzstützstellen">}}};

constinit const StepTable HwSDatablockAttCalData2Edition::table = {
    .name = {12180,
             "HwSDatablockAttCalibData2Edition",
             {"ATT_CAL_DAT_*_LEVEL_2_EDITION", 4, "COUNT_OF_ATT_CAL_DAT_*_FREQ_2_EDITION"}},
    .values = {.name = "correction", .unit = "dB", .scale = 1e-2, .axisBlock = 12170},
    .text = {.head = {.comments = lines<"#Das sind die Userdaten ">},
             .beforeRows = lines<"# f[10Hz]", "#  ATTENUATOR_CORRECTION [1/100dB]">,
             .labelSeparator = ":",
             .valueSeparator = "\t\t"},
    .labelStep = 5};

constinit const ListTable HwSDatablockCwop3DetTuneFreq::table = {
    .name = {12190, "HwSDatablockCwop3DetTuneFreq", {"CWOP3_DET_TUNE_*_FREQ", 4}},
    .values = {.name = "frequency", .role = Role::Axis},
    .text = {.head = {.comments = lines<"#Das sind die Frequenzstützstellen">}},
    .decimals = 2};

constinit const StepTable HwSDatablockCwop3DetTuneDac::table = {
    .name = {12200, "HwSDatablockCwop3DetTuneDac", {"CWOP3_DET_TUNE_*_DAC", 4, "COUNT_OF_CWOP3_DET_TUNE_*_FREQ"}},
    .values = {.name = "dac", .axisBlock = 12190},
    .text = {.head = {.comments = lines<"#Userdaten: Det-Tune DAC ">}, .labelSeparator = ":", .valueSeparator = "\t\t"},
    .printsBeyondCapacity = true};

constinit const ListTable HwSDatablockCwopDetLinCorrFreq::table = {
    .name = {12290, "HwSDatablockCwopDetLinCorrFreq", {"CWOP_DETLINCORR_*_FREQ", 2}},
    .values = {.name = "frequency", .role = Role::Axis},
    .text = {.head = {.comments = lines<"#Frequenzstützstellen Maximale Anzahl mit dieser Id ist 200">}},
    .decimals = 2};

constinit const PlainTable HwSDatablockCwopDetLinCorrData::table = {
    {12292, "HwSDatablockCwopDetLinCorrData", {"CWOP_DETLINCORR_*_DATA", 2}},
    {.comments = lines<"# max number of steps 10 ">}};

int HwDatablockCwop3DetTuneDac::setBlock(const Record* record) {
    return takeOver(record, Record::table.name.errorName, 0, [this] {
        cutCount();
        for (unsigned int k = 0; k < columns; ++k)
            put<&Record::values>(static_cast<short>(value(0, k)), 0, k);
    });
}

int HwDatablockCwopDetLinCorrData::getNumberOfDetLinCorrSteps() const {
    return bytes::load<int>(image(), sizeof(HwSDatablockHeader));
}

std::ostream& HwDatablockCwopDetLinCorrData::printToStream(std::ostream& os) {
    constexpr int decimals = 3;
    TextWriter out(os);
    const unsigned int storedSteps = get<&Record::steps>();
    printHead(out, Record::table.text, keyOf(getId()), storedSteps);
    printLines(out, lines<"# number of steps", "# level values and corresponding correction values">);
    const unsigned int steps = std::min<unsigned int>(storedSteps, std::extent_v<decltype(Record::values)>);
    const unsigned int frequencies =
        std::min<unsigned int>(getNumberOfValidFreqs(), std::extent_v<decltype(Record::values), 1>);
    for (unsigned int f = 0; f < frequencies; ++f) {
        out << f + 1 << ':';
        for (unsigned int s = 0; s < steps; ++s)
            out << "\t\t" << get<&Record::values>(s, f).level;
        out.endLine();
        for (unsigned int s = 0; s < steps; ++s)
            (out << "\t\t").fixed(static_cast<double>(get<&Record::values>(s, f).correction), decimals);
        out.endLine();
    }
    out.line();
    out.stream().precision(decimals);
    return os;
}

} // namespace Travik
