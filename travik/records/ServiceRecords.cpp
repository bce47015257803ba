#include <travik/datablock/TextWriter.h>
#include <travik/records/ServiceRecords.h>

namespace Travik {

namespace {

constexpr int firstServiceId = 200;
constexpr std::string_view serviceKeys[] = {"SERVICE_200", "SERVICE_201", "SERVICE_202", "SERVICE_203", "SERVICE_204",
                                            "SERVICE_205", "SERVICE_206", "SERVICE_207", "SERVICE_208", "SERVICE_209"};

/// The bits of `mask` from `value`, the others from `word`.
constexpr unsigned int replaced(unsigned int word, unsigned int mask, unsigned int value) {
    return (word & ~mask) | (value & mask);
}
constexpr unsigned short replaced16(unsigned int word, unsigned int mask, unsigned int value) {
    return static_cast<unsigned short>(replaced(word, mask, value));
}

} // namespace

std::string_view HwDatablockServiceData::keyOf(int id) {
    const bool isKnown = id >= firstServiceId && id < firstServiceId + std::ssize(serviceKeys);
    return isKnown ? serviceKeys[id - firstServiceId] : std::string_view();
}

HwDatablockServiceData::HwDatablockServiceData(HwEVariantEepromDatablock variant, bool stopConversionOnError)
    : RecordBlock(static_cast<unsigned short>(variant), stopConversionOnError) {
    putText<&Record::department>("000000");
}

void HwDatablockServiceData::setDepartment(const char* department) {
    if (department && putBytes<&Record::department>(department, sizeof Record::department))
        refreshChecksum();
}

void HwDatablockServiceData::setServiceDateDay(unsigned short day) {
    setServiceDate(replaced16(getServiceDate(), 0x1FU, day));
}

void HwDatablockServiceData::setServiceDateMonth(unsigned short month) {
    setServiceDate(replaced16(getServiceDate(), 0x1E0U, unsigned{month} << 5U));
}

void HwDatablockServiceData::setServiceDateYear(unsigned short year) {
    setServiceDate(replaced16(getServiceDate(), 0xFE00U, (unsigned{year} - 1980U) << 9U));
}

void HwDatablockServiceData::setOpTimeHours(unsigned int hours) { setOpTime(replaced(getOpTime(), 0x3FFFFU, hours)); }

void HwDatablockServiceData::setOpTimeTurnOn(unsigned int count) {
    setOpTime(replaced(getOpTime(), ~0x3FFFFU, count << 18U));
}

std::ostream& HwDatablockServiceData::printToStream(std::ostream& os) {
    constexpr unsigned int million = 1000000;
    TextWriter out(os);
    out.line("# Das sind die Servicedaten Service 200"); // whichever of the service blocks it is
    (out << "ID:              " << keyOf(getId())).endLine();
    (out << "DEPARTMENT:      " << loadText<&Record::department>()).endLine();
    (out << "SERVICEDATE:     ").date(getServiceDate()).endLine();
    out << "OPHOURS:         ";
    out.zeroFilled(getOpTimeHours() / million, 5) << '/';
    out.zeroFilled(getOpTimeHours() % million, 6).endLine();
    (out << "REPAIRNUMBER:    " << getRepairNumber()).endLine();
    (out << "SERVICECODE:     " << getServiceCode()).endLine();
    out.line();
    return os;
}

void HwDatablockModification::setCircularNr(unsigned short number, unsigned char index) {
    setServiceCode(replaced16(getServiceCode(index), 0x3FFFU, number), index);
}

void HwDatablockModification::setAction(unsigned short action, unsigned char index) {
    setServiceCode(replaced16(getServiceCode(index), 0xC000U, unsigned{action} << 14U), index);
}

std::ostream& HwDatablockModification::printToStream(std::ostream& os) {
    TextWriter out(os);
    out.line("# Das sind die Servicedaten Modification");
    (out << "ID:              " << keyName).endLine();
    for (unsigned char i = 0; i < std::size(Record{}.serviceCode); ++i)
        (out << "SERVICECODE:     " << getServiceCode(i)).endLine();
    out.line();
    return os;
}

} // namespace Travik
