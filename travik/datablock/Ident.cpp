#include <travik/datablock/Ident.h>

#include <ostream>

namespace Travik {

namespace {

constexpr unsigned short identId = 2;
// A second ident block is kept under this identifier; its name is printed two blanks longer.
constexpr unsigned short secondIdentId = 10;

void printTwoGroups(TextWriter& out, unsigned int value) {
    out.zeroFilled(value / 100, 2) << '.';
    out.zeroFilled(value % 100, 2).endLine();
}

} // namespace

QString IdentBlock::getName() const { return fromLatin1(loadText<&Record::name>()); }

void IdentBlock::setName(const QString& name) { storeText<&Record::name>(toLatin1(name)); }

void IdentBlock::printIdentity(TextWriter& out, std::string_view behindName) const {
    out << "PARTNUMBER:      " << getPartNumber() / 10000 << '.';
    out.zeroFilled(getPartNumber() % 10000, 4) << '.';
    out.zeroFilled(getVariant(), 2).endLine();
    (out << "HWCODE:          " << getHardwareCode()).endLine();
    out << "PRODUCTINDEX:    ";
    printTwoGroups(out, getProductIndex());
    (out << "SN:              " << getSerialNumber()).endLine();
    (out << "PRODUCTDATE:     ").date(getProductDate()).endLine();
    (out << "READCODE:        " << getReadCode()).endLine();
    out << "TESTINSTRUCTION: ";
    printTwoGroups(out, getTestInstruction());
    (out << "NAME:            " << loadText<&Record::name>() << behindName).endLine();
    out.stream().fill('0');
    out.stream().setf(std::ios_base::right, std::ios_base::adjustfield);
}

HwDatablockIdent::HwDatablockIdent() : IdentBlock(identId, true) {}

int HwDatablockIdent::setBlock(const HwSDatablockIdent* record) {
    return takeOver(record, "HwDatablockIdent", headerOf(record).alignment, [&] { trimName(); });
}

void HwDatablockIdent::swapBlock(const HwSDatablockIdent* record) {
    restore(record, headerOf(record).alignment, [&] { trimName(); });
}

std::ostream& HwDatablockIdent::printToStream(std::ostream& os) {
    TextWriter out(os);
    out.line("# Das sind die Kopfdaten");
    (out << "ID:              " << keyName).endLine();
    (out << "ALIGNMENT:       " << getAlignment()).endLine();
    (out << "EEPROMSIZE:      " << getEepromSize()).endLine();
    printIdentity(out, getId() == secondIdentId ? "  " : "");
    out.line();
    return os;
}

} // namespace Travik
