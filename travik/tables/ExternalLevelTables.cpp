#include <travik/tables/ExternalLevelTables.h>

#include <ostream>

namespace Travik {

namespace {

constexpr ListTable frequencies(const BlockName& name) {
    return {.name = name,
            .values = {.name = "frequency", .unit = "Hz", .scale = 10.0, .role = Role::Axis},
            .text = {.head = {.comments = lines<"# Das sind die Frequenzstützstellen">}},
            .shown = Shown::TenHertz};
}

constexpr StepTable corrections(const BlockName& name, int axisBlock, Lines comment) {
    return {.name = name,
            .values = {.name = "correction", .axisBlock = axisBlock},
            .text = {.head = {.comments = comment}}};
}

constexpr Lines firstEdition = lines<"# Das sind die Externen Kalibrierdaten ">;
constexpr Lines secondEdition = lines<"# Userdaten ">;

constexpr unsigned short sizeOfSevenRows = sizeof(HwSDatablockMbrdExtLevCalData_Enh);

} // namespace

constinit const ListTable HwSDatablockMbrdExtLevCalDataFreq::table =
    frequencies({12050, "HwDatablockMbrdExtLevCalDataFreq", {"EXT_CAL_DAT_*_FREQ", 4}});

constinit const ListTable HwSDatablockMbrdExtLevCalDataFreq2Edition::table =
    frequencies({12150, "HwDatablockMbrdExtLevCalDataFreq2Edition", {"EXT_CAL_DAT_*_FREQ_2_EDITION", 4}});

constinit const ListTable HwSDatablockMbrdExtLevCalDataFreq_Enh::table =
    frequencies({12070,
                 "HwDatablockMbrdExtLevCalDataFreq_Enh",
                 {"EXT_CAL_DAT_*_FREQ_ENH", 2},
                 {"EXT_CAL_DAT_*_FREQ", 2, "", 12050}});

constinit const ListTable HwSDatablockMbrdExtLevCalDataFreq2Edition_Enh::table =
    frequencies({12090,
                 "HwDatablockMbrdExtLevCalDataFreq2Edition_Enh",
                 {"EXT_CAL_DAT_*_FREQ_2_EDITION_ENH", 2},
                 {"EXT_CAL_DAT_*_FREQ_2_EDITION", 2, "", 12150}});

constinit const StepTable HwSDatablockMbrdExtLevCalData::table =
    corrections({12060, "HwSDatablockMbrdExtLevCalData", {"EXT_CAL_DAT_*_LEVEL", 4, "COUNT_OF_EXT_CAL_DAT_*_FREQ"}},
                12050, firstEdition);

constinit const StepTable HwSDatablockMbrdExtLevCalData2Edition::table =
    corrections({12160,
                 "HwSDatablockMbrdExtLevCalData2Edition   ",
                 {"EXT_CAL_DAT_*_LEVEL_2_EDITION", 4, "COUNT_OF_EXT_CAL_DAT_*_FREQ_2_EDITION"}},
                12150, secondEdition);

constinit const StepTable HwSDatablockMbrdExtLevCalData_Enh::table =
    corrections({12080,
                 "HwSDatablockMbrdExtLevCalData_Enh",
                 {"EXT_CAL_DAT_*_LEVEL_ENH", 2, "COUNT_OF_EXT_CAL_DAT_*_FREQ_ENH"},
                 {"EXT_CAL_DAT_*_LEVEL", 2, "COUNT_OF_EXT_CAL_DAT_*_FREQ", 12060}},
                12070, firstEdition);

constinit const StepTable HwSDatablockMbrdExtLevCalData2Edition_Enh::table =
    corrections({12095,
                 "HwSDatablockMbrdExtLevCalData2Edition_Enh   ",
                 {"EXT_CAL_DAT_*_LEVEL_2_EDITION_ENH", 2, "COUNT_OF_EXT_CAL_DAT_*_FREQ_2_EDITION_ENH"},
                 {"EXT_CAL_DAT_*_LEVEL_2_EDITION", 2, "COUNT_OF_EXT_CAL_DAT_*_FREQ_2_EDITION", 12160}},
                12090, secondEdition);

using Enhanced = HwDatablockMbrdExtLevCalData2Edition_Enh;

Enhanced::HwDatablockMbrdExtLevCalData2Edition_Enh(int instance, bool stopConversionOnError, int size)
    : ExtLevCalCorrections(instance, stopConversionOnError), size_(size == recordSize ? recordSize : sizeOfSevenRows) {
    initialise(getId(), size_);
}

short Enhanced::getCorLevelValue(unsigned char row, unsigned int column) const {
    return row < usableRows() ? value(row, column) : short{0};
}

void Enhanced::setCorLevelValue(short value, unsigned char row, unsigned int column) {
    if (row < usableRows())
        storeValue(value, row, column);
}

int Enhanced::setBlock(const Record* record) {
    const auto* bytes = reinterpret_cast<const char*>(record);
    if (!verifyChecksum(reinterpret_cast<unsigned short*>(const_cast<Record*>(record)), size_, true)) {
        signalError(DownloadDenied, Record::table.name.errorName);
        return 1;
    }
    const HwSDatablockHeader header = headerOf(record);
    const auto steps = static_cast<unsigned short>(record->count);
    constexpr std::size_t valuesOffset = sizeof(Record) - sizeof(Record::values);
    storeHeader(header.id, size_, 0);
    put<&Record::count>(steps);
    bytes::storeElements(image(), valuesOffset, bytes + valuesOffset, size_ - valuesOffset, sizeof(short));
    setChecksum(header.checksum);
    return 0;
}

std::ostream& Enhanced::printToStream(std::ostream& os) { return print(os, usableRows()); }

} // namespace Travik
