#include "Samples.h"

#include <utility>

namespace Samples {

Image::Image(const char* name, unsigned int partNumber, unsigned char variant, unsigned int serialNumber) {
    Travik::HwDatablockIdent ident;
    ident.setEepromSize(131072);
    ident.setPartNumber(partNumber);
    ident.setVariant(variant);
    ident.setHardwareCode(3);
    ident.setProductIndex(204);
    ident.setSerialNumber(serialNumber);
    ident.setProductDate(((2018 - 1980) << 9) | (11 << 5) | 15);
    ident.setReadCode(1);
    ident.setTestInstruction(1203);
    ident.setName(QString::fromLatin1(name));
    add(ident);
}

Image& Image::add(Travik::HwDatablock& block) {
    block.setChecksum(block.computeChecksum());
    Travik::HwDatablock* const blocks[] = {&block};
    const std::vector<char> image = Travik::composeImage(blocks);
    bytes_.insert(bytes_.end(), image.begin(), image.end());
    return *this;
}

std::vector<char> Image::finish() {
    Travik::HwDatablockEnd end;
    add(end);
    return std::move(bytes_);
}

} // namespace Samples
