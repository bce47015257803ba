#include <travik/records/IdentityRecords.h>

namespace Travik {

namespace {

constexpr unsigned short macId = 12004;
constexpr unsigned short timeMonitoringId = 12008;
constexpr std::size_t longestModel = sizeof(HwSDatablockMbrdModel::model) - 1;

} // namespace

std::string_view HwDatablockMiscIdent::keyOf(int id) {
    return id == 10503 ? "STREAM_OPT_IDENT" : id == 10504 ? "STREAM_AUX_IDENT" : "";
}

HwDatablockMiscIdent::HwDatablockMiscIdent(HwEVariantEepromDatablock variant)
    : IdentBlock(static_cast<unsigned short>(variant), true), variant_(variant) {}

int HwDatablockMiscIdent::setBlock(const HwSDatablockMiscIdent* record) {
    return takeOver(record, "HwDatablockMiscIdent", 0, [&] { trimName(); });
}

std::ostream& HwDatablockMiscIdent::printToStream(std::ostream& os) {
    TextWriter out(os);
    (out << "ID:              " << keyOf(getId())).endLine();
    printIdentity(out);
    return os;
}

std::ostream& HwDatablockCwop6VcoIdent::printToStream(std::ostream& os) {
    TextWriter out(os);
    out.line("# Das sind die VCO Ident Daten");
    (out << "ID:               " << keyName).endLine();
    (out << "JOBNR:            " << getJobNumber()).endLine();
    (out << "SERNR:            " << getSerialNumber()).endLine();
    (out << "LOTNR:            " << getLotNumber()).endLine();
    (out << "TAZ:              " << getTaz()).endLine();
    (out << "OSC3SUB_H:        " << getOsc3Subh()).endLine();
    (out << "OSC3SUB_L:        " << getOsc3Subl()).endLine();
    (out << "OSC2SUB_H:        " << getOsc2Subh()).endLine();
    (out << "OSC2SUB_L:        " << getOsc2Subl()).endLine();
    (out << "OSC1SUB_H:        " << getOsc1Subh()).endLine();
    return os;
}

std::ostream& HwDatablockMbrdSerialNumber::printToStream(std::ostream& os) {
    TextWriter out(os);
    out.line("# Das ist die Seriennummer des VQx`s");
    (out << "ID:              " << keyName).endLine();
    (out << "SN:              " << getSerialNumber()).endLine();
    out.line();
    return os;
}

QString HwDatablockMbrdModel::getModel() const { return fromLatin1(loadText<&Record::model>()); }

void HwDatablockMbrdModel::setModel(const QString& model) { storeText<&Record::model>(toLatin1(model), longestModel); }

void HwDatablockMbrdModel::trimModel() { putText<&Record::model>(loadText<&Record::model>(), longestModel); }

int HwDatablockMbrdModel::setBlock(const HwSDatablockMbrdModel* record) {
    return takeOver(record, "HwDatablockMbrdModel", 0, [&] { trimModel(); });
}

void HwDatablockMbrdModel::swapBlock(const HwSDatablockMbrdModel* record) {
    restore(record, 0, [&] { trimModel(); });
}

std::ostream& HwDatablockMbrdModel::printToStream(std::ostream& os) {
    TextWriter out(os);
    out.line("# Das ist der Modellname des VQN`s");
    (out << "ID:              " << keyName).endLine();
    (out << "MODEL:           " << loadText<&Record::model>()).endLine();
    out.line();
    return os;
}

HwDatablockMbrdMac::HwDatablockMbrdMac() : RecordBlock(macId, true) {
    for (unsigned int i = 0; i < sizeof Record::mac; ++i)
        put<&Record::mac>(0xFF, i);
    for (unsigned int i = 0; i < sizeof Record::reserved; ++i)
        put<&Record::reserved>(0xFF, i);
}

const unsigned char* HwDatablockMbrdMac::getMac(unsigned int* length) const {
    if (length)
        *length = getMacLength();
    return loadBytes<&Record::mac>();
}

void HwDatablockMbrdMac::setMac(const unsigned char* mac, unsigned int length) {
    const unsigned int stored = mac ? std::min<unsigned int>(length, sizeof Record::mac) : 0;
    if (!putBytes<&Record::mac>(mac, stored))
        return;
    put<&Record::macLength>(stored);
    for (unsigned int i = stored; i < sizeof Record::mac; ++i)
        put<&Record::mac>(0xFF, i);
}

int HwDatablockMbrdMac::setBlock(const HwSDatablockMbrdMac* record) {
    const HwSDatablockHeader header = headerOf(record);
    if (!verifyRecord(record) || header.id != macId || header.blockSize != recordSize) {
        signalError(InvalidChecksum, "HwSDatablockMbrdMac");
        return InvalidChecksum;
    }
    storeHeader(macId, header.blockSize, header.alignment);
    setMac(record->mac, sizeof record->mac); // all of it, whatever length the record states
    setChecksum(header.checksum);
    return 0;
}

HwDatablockMbrdTimeMonitoringData::HwDatablockMbrdTimeMonitoringData() : RecordBlock(timeMonitoringId, true) {
    setTimeMonitoringData(nullptr, 0);
}

void HwDatablockMbrdTimeMonitoringData::setDate(const char* date) {
    if (!date)
        return;
    const std::size_t length = strnlen(date, sizeof Record::date);
    if (length < sizeof Record::date)
        putText<&Record::date>({date, length});
}

const unsigned char* HwDatablockMbrdTimeMonitoringData::getTimeMonitoringData(unsigned int* length) const {
    if (length)
        *length = getTimeMonitoringDataLength();
    return loadBytes<&Record::data>();
}

void HwDatablockMbrdTimeMonitoringData::setTimeMonitoringData(const unsigned char* data, unsigned int length) {
    const unsigned int stored = data ? std::min<unsigned int>(length, sizeof Record::data) : 0;
    if (!putBytes<&Record::data>(data, stored))
        return;
    put<&Record::length>(stored);
    for (unsigned int i = stored; i < sizeof Record::data; ++i)
        put<&Record::data>(0xFF, i);
}

int HwDatablockMbrdTimeMonitoringData::setBlock(const HwSDatablockMbrdTimeMonitoringDataEx* record) {
    const HwSDatablockHeader header = headerOf(record);
    if (!verifyRecord(record) || header.id != timeMonitoringId || header.blockSize != recordSize) {
        signalError(InvalidChecksum, "HwSDatablockMbrdTimeMonitoringData");
        return InvalidChecksum;
    }
    storeHeader(timeMonitoringId, header.blockSize, header.alignment);
    setDate(record->date);
    setTimeMonitoringData(record->data, record->length);
    setChecksum(header.checksum);
    return 0;
}

} // namespace Travik
