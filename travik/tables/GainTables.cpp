#include <travik/tables/GainTables.h>

#include <ostream>

namespace Travik {

constinit const ListTable HwSDatablockAduLevCoarseCalibData::table = {
    .name = {15650, "HwDatablockAduLevCoarseCalibData", {"ADU_LEV_COARSE_CAL_VALUE"}},
    .values = {.name = "attenuation"},
    .text = {
        .head = {.comments =
                     lines<"# Alle Kalibrierwerte der Grobabschwaecherstufen",
                           "# Es werden alle gemessenen oder berechneten Werte gespeichert , k0 = k_16dB_Att",
                           "# Festlegung, ob Werte kx gemessen oder berechnet werden , erfolgt über Prüfanweisung">,
                 .count = {}},
        .label = "k",
        .firstNumber = 0,
        .separator = ":          "}};

constinit const PlainTable HwSDatablockAduGainOffsetCalData::table = {
    {15652, "HwSDatablockAduGainOffsetCalData", {"ADU_OFFSET_CAL_DATA"}},
    {.comments = lines<"# Offset-Kalibrierwerte: fest , nicht variabel , da mehr Werte nicht automatisch in der "
                       "Firmware ausgewertet werden",
                       "# Bei einer Erweiterung muss die Firmware angepasst werden",
                       "# Kennung der Erweiterung über Änderung des Wertes TESTINSTRUCTION",
                       "# Reihenfolge über ansteigende Wert von GAIN notwendig", "">,
     .id = "ID: "}};

constinit const ListTable HwSDatablockCwOp3AmGainFreq::table = {
    .name = {10500, "HwDatablockCwOp3AmGainFreq", {"CWOP3_6_AM_GAIN_FREQ"}},
    .values = {.name = "frequency", .role = Role::Axis},
    .text = {.head = {.comments = lines<"#Frequenzstützstellen, maximale Anzahl mit dieser Id ist 200">}},
    .decimals = 2};

constinit const PlainTable HwSDatablockCwOp3AmGainData::table = {
    {10501, "HwSDatablockCwOp3AmGainData", {"CWOP3_6_AM_GAIN_DATA"}},
    {.comments = lines<"# Das sind die AM-Gain Daten">, .id = "ID:                 "}};

int HwDatablockAduGainOffsetCalData::setBlock(const Record* record) {
    EmptyRecordBlock::setBlock(record);
    return 0;
}

std::ostream& HwDatablockAduGainOffsetCalData::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, Record::table.text, keyOf(getId()));
    printLines(out, lines<"# Das sind die Offset-Kalibrierwerte des HF-Detektor-Pfades und die Offset-Kalibrierwerte "
                          "des Referenzdetektor-Pfades",
                          "#\t\tGAIN\t\tDET OFFSET\t\tREF OFFSET", "">);
    // Fixed with the stream's own precision, and nothing but fixed on a stream that was scientific.
    const std::ios_base::fmtflags flags = os.flags();
    os.setf(std::ios_base::fixed, std::ios_base::floatfield);
    os.setf(std::ios_base::showpoint);
    const unsigned int printed = std::min(static_cast<unsigned int>(std::max(count(), 0)), printedEntriesLimit);
    for (unsigned int i = 0; i < printed; ++i) {
        const HwSAduGainOffsetCalData data = value(i);
        out << i + 1 << ": \t\t";
        out.current(data.gain) << "\t\t\t\t";
        out.current(data.detOffset) << "\t\t\t\t";
        (out.current(data.refOffset) << '\t').endLine();
    }
    out.line();
    os.flags(flags);
    return os;
}

std::ostream& HwDatablockCwOp3AmGainData::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, Record::table.text, keyOf(getId()));
    printLines(out, lines<"FreqIndex   CW_GAIN   AM_GAIN    RESERVE1    RESERVE2", " ">);
    for (unsigned int k = 0; k < std::extent_v<decltype(Record::values)>; ++k) {
        const HwSCwOp3AmGainDataBlock data = get<&Record::values>(k);
        out << k + 1 << ": \t\t";
        for (const int gain : {data.cwGain, data.amGain, data.reserve1, data.reserve2})
            out << gain << '\t';
        out.endLine();
    }
    out.line();
    return os;
}

} // namespace Travik
