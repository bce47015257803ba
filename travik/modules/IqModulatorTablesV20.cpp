#include <travik/datablock/TextWriter.h>
#include <travik/modules/IqModulatorTablesV20.h>
#include <travik/text/TextLayout.h>

#include <ostream>

namespace Travik {

namespace {

constexpr std::string_view miscLinesV20[] = {"# Das sind die Kalibrierdaten IQOP3 RFM MISC Version 2.0"};
constexpr HeadLayout miscHeadV20{.comments = miscLinesV20};
constexpr std::size_t keyWidth = 23;

constexpr std::string_view rowsLinesV20[] = {"# Das sind die Kalibrierdaten IQOP3 RFM Version 2.0"};
constexpr HeadLayout rowsHeadV20{.comments = rowsLinesV20, .id = "ID:                 "};
constexpr std::string_view columnLines[] = {
    "SENS_LOW\t      SENS_MED\t     SENS_HIGH\t      SENS_OVR\t    LPRE_CW_NORM\t  LPRE_CW_OVR\t       "
    "LPRE_IQ_NORM\t    LEVATT15_NORM\t     LEVATT30_NORM\t        LEVATT45_NORM\t   LPRE_IQ_OVR\t         "
    "LEVATT15_OVR\t     LEVATT30_OVR\t  LEVATT45_OVR ",
    " SENS in DAC/mW, Rest in dB ",
};

} // namespace

std::ostream& HwDatablockIqOp3RfmCalibDataMiscV20::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, miscHeadV20, keyName);
    for (const Field& field : recordFields<Record>) {
        const std::string_view name = field.name;
        for (const char character : name)
            out << static_cast<char>(character >= 'a' && character <= 'z' ? character - 'a' + 'A' : character);
        out << ':';
        for (std::size_t column = name.size() + 1; column < keyWidth; ++column)
            out << ' ';
        if (field.stored == Stored::F32)
            out.general(static_cast<double>(bytes::load<float>(image(), field.offset)));
        else
            out << bytes::load<short>(image(), field.offset);
        out.endLine();
    }
    out.line();
    return os;
}

std::ostream& HwDatablockIqOp3RfmCalibDataV20::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, rowsHeadV20, keyName);
    printLines(out, columnLines);
    // The block asks for the fixed and the scientific notation at once and means the general one; taken at its word the
    // stream would print hexadecimal numbers.
    const std::ios_base::fmtflags flags = os.flags();
    os.unsetf(std::ios_base::floatfield);
    const auto printColumns = [&out](auto... columns) {
        const auto print = [&out](auto value) {
            if constexpr (std::is_integral_v<decltype(value)>)
                out << value << '\t';
            else
                out.current(static_cast<double>(value)) << '\t';
        };
        (print(columns), ...);
    };
    for (unsigned int i = 0; i < std::extent_v<decltype(Record::rows)>; ++i) {
        const Row row = get<&Record::rows>(i);
        out << "Zeile" << i << ": \t\t";
        printColumns(row.sensLow, row.sensMed, row.sensHigh, row.sensOvr, row.lpreCwNorm, row.lpreCwOvr, row.lpreIqNorm,
                     row.levAtt15Norm, row.levAtt30Norm, row.levAtt45Norm, row.lpreIqOvr, row.levAtt15Ovr,
                     row.levAtt30Ovr, row.levAtt45Ovr);
        out.endLine();
    }
    out.line();
    os.flags(flags);
    return os;
}

} // namespace Travik
