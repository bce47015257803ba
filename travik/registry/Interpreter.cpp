#include <travik/registry/Conversion.h>
#include <travik/registry/Interpreter.h>

namespace Travik {

namespace {

void deletePrototypes(const IdHwDatablockOldStyleClassDict& dictionary) {
    for (const auto& [id, prototype] : dictionary)
        delete prototype;
}

} // namespace

HwDatablockOldStyleInterpreter::HwDatablockOldStyleInterpreter() {
    try {
        dictionary_.fill();
    } catch (...) {
        deletePrototypes(dictionary_);
        throw;
    }
}

HwDatablockOldStyleInterpreter::~HwDatablockOldStyleInterpreter() { deletePrototypes(dictionary_); }

bool HwDatablockOldStyleInterpreter::printHwDatablockOldStyleInfo(HwDatablock* block, std::ostream& os) {
    const auto found = block ? dictionary_.find(block->getId()) : dictionary_.end();
    if (found == dictionary_.end())
        return false;
    HwDatablock* const prototype = found->second;
    // Takes the block's buffer as it is. Resizing the one it shares with the block printed before would change that
    // block.
    prototype->setData(block);
    prototype->printToStream(os);
    return true;
}

bool HwDatablockOldStyleInterpreter::swapHwDatablock(HwEDataFormatTyp format, int id, HwDatablock* block) {
    return block && convertBlock(format, id, *block);
}

} // namespace Travik
