#include <travik/datablock/Bytes.h>
#include <travik/datablock/End.h>
#include <travik/datablock/TextWriter.h>

#include <cstddef>

namespace Travik {

HwDatablockEnd::HwDatablockEnd() : HwDatablock(true) {
    resizeData(sizeof(HwSDatablockEnd));
    setEndBlock();
}

void HwDatablockEnd::setEndBlock() {
    setEndBlockID(0xFFFF);
    setEndBlockData(0);
}

void HwDatablockEnd::setEndBlockID(unsigned short id) {
    SwapIntel2Ppc(id);
    bytes::store(image(), offsetof(HwSDatablockEnd, id), id);
}

void HwDatablockEnd::setEndBlockData(unsigned short data) {
    SwapIntel2Ppc(data);
    bytes::store(image(), offsetof(HwSDatablockEnd, data), data);
}

int HwDatablockEnd::setBlock(const HwSDatablockEnd* record) {
    if (!record)
        return 1;
    setEndBlockID(record->id);
    setEndBlockData(record->data);
    return 0;
}

unsigned short HwDatablockEnd::computeChecksum() { return 0; }

unsigned short HwDatablockEnd::computeChecksum(unsigned short* /*record*/, short /*size*/) { return 0; }

unsigned short HwDatablockEnd::getBlockSize() {
    return image().size() >= sizeof(HwSDatablockEnd) ? static_cast<unsigned short>(image().size()) : 0;
}

unsigned short HwDatablockEnd::getChecksum() { return 0; }

bool HwDatablockEnd::verifyChecksum() { return true; }

bool HwDatablockEnd::verifyChecksum(unsigned short* /*record*/, short /*size*/) { return true; }

void HwDatablockEnd::setChecksum(unsigned short /*checksum*/) {}

std::ostream& HwDatablockEnd::printToStream(std::ostream& os) {
    TextWriter out(os);
    out.line("# Das ist der END Block");
    (out << "ID:              " << keyName).endLine();
    out.line();
    return os;
}

} // namespace Travik
