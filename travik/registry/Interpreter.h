#pragma once

#include <travik/registry/Dictionary.h>

#include <iosfwd>

namespace Travik {

/// Prints blocks whose class the caller does not know, and converts blocks to another byte order through an instance of
/// their class. Owns a prototype of every registered class; separate interpreters are independent, one is used from one
/// thread at a time.
class TRAVIK_DATABLOCK_EXPORT HwDatablockOldStyleInterpreter {
public:
    /// Fills the dictionary.
    HwDatablockOldStyleInterpreter();
    HwDatablockOldStyleInterpreter(const HwDatablockOldStyleInterpreter&) = delete;
    HwDatablockOldStyleInterpreter& operator=(const HwDatablockOldStyleInterpreter&) = delete;
    virtual ~HwDatablockOldStyleInterpreter();

    /// As `convertBlock`; false for null.
    bool swapHwDatablock(HwEDataFormatTyp format, int id, HwDatablock* block);

    /// Prints the block through the prototype of its identifier, which shares the block's buffer until the next print
    /// of that identifier. False, and nothing written, for an identifier without one and for null.
    bool printHwDatablockOldStyleInfo(HwDatablock* block, std::ostream& os);

    /// The prototypes by identifier, owned by the interpreter.
    const IdHwDatablockOldStyleClassDict& dictionary() const { return dictionary_; }

private:
    IdHwDatablockOldStyleClassDict dictionary_;
};

} // namespace Travik
