#include <travik/platform/ErrorManager.h>
#include <travik/tables/CalibrationValues.h>

#include <ostream>

namespace Travik {

constinit const SingleValueTable HwSDatablockWenBaseboardCalibValue::table = {
    .name = {15605, "HwDatablockWenBaseboardCalibValue", {"WEN_BASEBOARD_CALIB_VALUE"}},
    .text = {.comments = lines<"# Das ist  der Baseboard Kalibrierwert">,
             .id = "ID:            ",
             .count = "COUNT:      "},
    .failure = "WEN baseboard calibration value failed",
    .wrongIndex = 0};

constinit const SingleValueTable HwSDatablockOrbMbrdPllDacCalibValue::table = {
    .name = {12280, "HwDatablockOrbMbrdPllDacCalibValue", {"ORB_MBRD_PLL_DAC_VALUE"}},
    .text = {.comments = lines<"# Einstellwert fuer den PLL-DAC bewirkt genaue Einstellung der Referenzfrequenz",
                               "# Wertebereich: 0..3FFh (0..1023) entspricht Frequenz 10MHz +/-150Hz">,
             .id = "ID:            ",
             .count = "COUNT:      "},
    .failure = "Orb Mbrd Pll Dac Reference value failed",
    .wrongIndex = -1};

constinit const PlainTable HwSDatablockDacIfFullScale::table = {
    {12500, "HwDatablockDacIfFullScale", {"DACIF_FULLSCALEVALUE"}},
    {.comments = lines<"# Das ist der FullScaleValue">}};

constinit const PlainTable HwSDatablockWENDelay::table = {{15504, "HwDatablockWENDelay", {"WEN_DELAY"}},
                                                          {.comments = lines<"# Das sind die I und Q Delays:">}};

namespace detail {

std::ostream& printSingleValue(std::ostream& os, const SingleValueTable& table, unsigned int count, int value) {
    TextWriter out(os);
    printHead(out, table.text, table.name.key.text, count);
    (out << "1:          " << value).endLine();
    out.line();
    return os;
}

void signalFailedStore(const SingleValueTable& table) {
    ErrorManager()->signal(WriteToEepromFailed, QString::fromLatin1(table.failure));
}

} // namespace detail

std::ostream& HwDatablockDacIfFullScale::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, Record::table.text, keyOf(getId()));
    (out << "FullscaleValue:              " << getFullScaleValue()).endLine();
    out.line();
    return os;
}

std::ostream& HwDatablockWENDelay::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, Record::table.text, keyOf(getId()));
    (out << "DELAY_I:     ").current(getDelay(false)).endLine();
    (out << "DELAY_Q:     ").current(getDelay(true)).endLine();
    out.line();
    return os;
}

} // namespace Travik
