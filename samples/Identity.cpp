#include "Samples.h"

#include <array>
#include <chrono>

namespace Samples {

namespace {

using namespace std::chrono;

/// The fields that every ident record has.
template <class Ident>
Ident identity(Ident block, const char* name, unsigned int partNumber, unsigned int serialNumber, year_month_day date) {
    block.setEepromSize(8192);
    block.setPartNumber(partNumber);
    block.setVariant(2);
    block.setHardwareCode(1);
    block.setProductIndex(102);
    block.setSerialNumber(serialNumber);
    block.setProductDate(Travik::packDate(date));
    block.setReadCode(1);
    block.setTestInstruction(1100);
    block.setName(QString::fromLatin1(name));
    return block;
}

Travik::HwDatablockCwop6VcoIdent oscillator() {
    Travik::HwDatablockCwop6VcoIdent block;
    block.setJobNumber(20471833);
    block.setSerialNumber(1207);
    block.setLotNumber(88);
    block.setTaz(312);
    block.setOsc3Subh(1450);
    block.setOsc3Subl(1385);
    block.setOsc2Subh(1120);
    block.setOsc2Subl(1064);
    block.setOsc1Subh(870);
    return block;
}

} // namespace

std::vector<char> mainBoardIdentity() {
    Image image("MBRD", 11418505, 3, 101877);
    Travik::HwDatablockIdent second =
        identity(Travik::HwDatablockIdent(), "MBRD-FRONT", 11418561, 101640, 2018y / 10 / 26);
    second.setBlockId(10);
    image.add(second).add(oscillator());
    image.add(identity(Travik::HwDatablockMiscIdent(10503), "STREAM", 11425304, 100231, 2019y / 2 / 4));
    image.add(identity(Travik::HwDatablockMiscIdent(10504), "STREAM-AUX", 11425404, 100198, 2019y / 1 / 29));

    Travik::HwDatablockMbrdSerialNumber serialNumber;
    serialNumber.setSerialNumber(104512);
    Travik::HwDatablockMbrdModel model;
    model.setModel(QStringLiteral("SG-6000A"));
    Travik::HwDatablockMbrdMac mac;
    constexpr std::array<unsigned char, 6> address{0x00, 0x00, 0x5E, 0x00, 0x53, 0x2A}; // of those kept for examples
    mac.setMac(address.data(), address.size());
    Travik::HwDatablockMbrdTimeMonitoringData watch;
    watch.setDate("2022-10-24 08:15:32");
    constexpr std::array<unsigned char, 12> readings{0xBB, 0x1F, 0, 0, 0x0A, 0x04, 0, 0, 0x03, 0, 0, 0};
    watch.setTimeMonitoringData(readings.data(), readings.size());
    return image.add(serialNumber).add(model).add(mac).add(watch).finish();
}

} // namespace Samples
