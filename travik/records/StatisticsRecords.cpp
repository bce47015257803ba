#include <travik/datablock/TextWriter.h>
#include <travik/records/StatisticsRecords.h>

namespace Travik {

std::ostream& HwDatablockStatistic::printToStream(std::ostream& os) {
    TextWriter out(os);
    out.line("# Das sind die Statisticdaten Statistics 300");
    (out << "ID:              " << keyName).endLine();
    (out << "OPHOURS:         " << getOpHours()).endLine();
    out.line();
    return os;
}

std::string_view HwDatablockCommonStatisticData::keyOf(int id) {
    switch (id) {
    case 11310:
        return "POWERON COUNT";
    case 11311:
        return "BACKUP OF POWERON COUNT ";
    case 11312:
        return "OPERATING TIME COUNT";
    case 11313:
        return "BACKUP OF OPERATING TIME COUNT";
    default:
        return {};
    }
}

HwDatablockCommonStatisticData::HwDatablockCommonStatisticData(int instance)
    : RecordBlock(static_cast<unsigned short>(instance), false), instance_(instance) {
    put<&Record::length>(sizeof Record::data);
}

const unsigned char* HwDatablockCommonStatisticData::getCommonStatisticData(unsigned int* length) const {
    if (length)
        *length = getCommonStatisticDataLength();
    return loadBytes<&Record::data>();
}

void HwDatablockCommonStatisticData::setCommonStatisticData(const unsigned char* data, unsigned int length) {
    const unsigned int stored = data ? std::min<unsigned int>(length, sizeof Record::data) : 0;
    if (putBytes<&Record::data>(data, stored))
        put<&Record::length>(stored);
}

int HwDatablockCommonStatisticData::setBlock(const HwSDatablockCommonStatisticData* record) {
    if (!record)
        return 1;
    const HwSDatablockHeader header = headerOf(record);
    // A word that is there already is not set again: that would refresh the checksum, which stays as it is.
    if (getId() != header.id)
        setBlockId(header.id);
    if (getAlignment() != header.alignment)
        setAlignment(header.alignment);
    setCommonStatisticData(record->data, record->length);
    return 0;
}

void HwDatablockCommonStatisticData::swapBlock(HwSDatablockCommonStatisticData* record) {
    if (!record)
        return;
    const HwSDatablockHeader header = headerOf(record);
    storeHeader(header.id, header.blockSize, 0);
    unsigned int length = record->length;
    SwapIntel2Ppc(length);
    record->length = length;
    setChecksum(header.checksum);
}

std::ostream& HwDatablockCommonStatisticData::printToStream(std::ostream& os) {
    TextWriter out(os);
    out.line("# Sonstige statistische Daten:");
    (out << "ID: \t " << keyOf(getId())).endLine();
    for (unsigned int n = 1; n <= sizeof Record::data; ++n)
        (out << n << ": \t" << get<&Record::data>(n - 1)).endLine();
    out.line();
    return os;
}

} // namespace Travik
