#pragma once

#include <travik/datablock/HwDatablock.h>

#include <map>

namespace Travik {

/// Block identifier to the prototype of the class that serves it. Releases its nodes, not the prototypes.
class TRAVIK_DATABLOCK_EXPORT IdHwDatablockOldStyleClassDict : public std::map<int, HwDatablock*> {
public:
    /// Adds a prototype of every registered identifier, whose image is its header (the end block's is whole). The
    /// caller owns them. An identifier that is there already keeps its prototype.
    void fill();

    /// Counts the prototypes of a dictionary that is spared: `HwDatablockIqOp3RfmCalibData` prints how many of its
    /// objects were made, and a conversion of a block's byte order counts as much as a dictionary does.
    static void countAsFilled();
};

} // namespace Travik
