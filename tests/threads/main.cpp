#include <travik/datablocks.h>

#include <atomic>
#include <cstdio>
#include <random>
#include <sstream>
#include <thread>
#include <vector>

/// Threads that use blocks of their own, all at once, doing what blocks do: a race is ThreadSanitizer's to report,
/// which ends the program with a status of its own.
namespace {

using namespace Travik;

std::atomic<unsigned int> lineCount;
std::atomic<unsigned int> signalCount;

std::vector<char> randomImage(const HwDatablock& fresh, std::mt19937& random) {
    const QMemArray<char> data = HwDatablock(fresh).getByteArrayData();
    std::vector<char> bytes(data.data(), data.data() + data.size());
    for (std::size_t i = 16; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(random());
    return bytes;
}

/// From image to text, by its identifier alone.
void goThrough(HwDatablockOldStyleInterpreter& interpreter, const CatalogueEntry& entry, int id, std::mt19937& random) {
    const std::unique_ptr<HwDatablock> block = makeBlock(id);
    const std::vector<char> bytes = randomImage(*block, random);
    block->setData(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size()));
    block->verifyChecksum32();
    block->setAlignment(0);
    block->verifyChecksum();
    std::ostringstream os;
    interpreter.printHwDatablockOldStyleInfo(block.get(), os);
    visitFields(bytes, entry.fields(entry, id), Extent::Used, [](const FieldValue&) {});
    block->setBlockSize(static_cast<unsigned short>(bytes.size()));
    interpreter.swapHwDatablock(HwDataFormatForeign, id, block.get());
    static_cast<void>(checkImage(bytes));
}

void refuseAndRead() {
    HwDatablockIdent ident;
    HwSDatablockIdent record = *ident.getBlock();
    record.serialNumber = 1;
    ident.setBlock(&record);
    HwDatablockDunRfboAttRegData table;
    std::ostringstream os;
    table.conv2ascii(os, table);
    std::istringstream is(os.str());
    table.searchascii(is, table);
    HwDatablock::registerErrors();
    HwDebug::println(QStringLiteral("a line"));
}

void work(unsigned int seed) {
    std::mt19937 random(seed);
    for (int round = 0; round < 2; ++round) {
        HwDatablockOldStyleInterpreter interpreter;
        for (const CatalogueEntry& entry : catalogue()) {
            for (int id = entry.first; id <= entry.last; ++id)
                goThrough(interpreter, entry, id, random);
        }
        refuseAndRead();
    }
}

} // namespace

int main() {
    Debug::setLineHandler([](int, int, const QString&) { ++lineCount; });
    CErrorManager::setSignalHandler([](int, const QString&) { ++signalCount; });
    HwDebug::setDebugMask(-1);
    HwDebug::setDebugLevel(HwObject::HwProtocolLevelDebug);
    std::vector<std::thread> threads;
    for (unsigned int seed = 0; seed < 4; ++seed)
        threads.emplace_back(work, seed);
    for (std::thread& thread : threads)
        thread.join();
    std::printf("%u lines, %u signals\n", lineCount.load(), signalCount.load());
    return lineCount > 0 && signalCount > 0 ? 0 : 1;
}
