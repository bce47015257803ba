// The one place where the ground floor reaches up: a block of a foreign byte order is converted by the class of its
// identifier, which only the registry knows.
#include <travik/datablock/HwDatablock.h>
#include <travik/registry/Interpreter.h>

namespace Travik {

void HwDatablock::swapDataTo(HwEDataFormatTyp format, unsigned short id, HwDatablock* block) {
    if (!block || block->getDataFormatTyp() == format || block->verifyChecksum32())
        return;
    HwDatablockOldStyleInterpreter interpreter;
    interpreter.swapHwDatablock(format, id, block);
}

} // namespace Travik
