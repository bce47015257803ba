// Every class, through a table of its operations that the build makes from the headers (classes/): a block of any
// class with any image, then a sequence of whatever the class can do, with any parameters. The input begins as
// classes/ClassesInput.h says; the rest are operations, each a byte that selects a kind, then what it needs.
#include "LongTexts.h"
#include "classes/Accessors.h"
#include "classes/ClassesInput.h"

#include <travik/datablocks.h>

#include <cstddef>
#include <cstdint>
#include <ios>

namespace {

using namespace Fuzz;
using Travik::HwDatablock;

/// What takes its time is done only so often for one input: a print of 65535 entries, a byte order.
struct Budget {
    int id; ///< of the class, whatever the image says
    unsigned int operations = 24;
    unsigned int prints = 2;
    unsigned int conversions = 2;
};

// One for all inputs, as in a service tool.
Travik::HwDatablockOldStyleInterpreter& interpreter() {
    static Travik::HwDatablockOldStyleInterpreter instance;
    return instance;
}

template <class Call>
void holdingTheImage(HwDatablock& block, Call call) {
    const ImageBefore image(block);
    try {
        call();
    } catch (const std::ios_base::failure&) {
        // asked for by the stream's exception mask
    }
    require(image.isUnchanged(block), "the image is changed");
}

bool mayPrint(Surroundings& with, Budget& budget) {
    if (budget.prints == 0)
        return false;
    --budget.prints;
    const QMemArray<char> data = with.block.getByteArrayData();
    const std::span<const char> image(data.data(), data.size());
    return isToBeRead(budget.id, image) && isToBeRead(with.block.getId(), image);
}

void callAccessor(const Accessor& accessor, Surroundings& with, Budget& budget) {
    doing.operation = accessor.name;
    if (std::string_view(accessor.name).starts_with("print") && !mayPrint(with, budget))
        return;
    if (accessor.changes)
        accessor.call(with);
    else
        holdingTheImage(with.block, [&] { accessor.call(with); });
}

void print(Surroundings& with, Budget& budget) {
    if (!mayPrint(with, budget))
        return;
    doing.operation = "printToStream";
    const bool asRegistered = with.input.byte() % 2 != 0;
    std::ostream& os = oddStream(with.input);
    holdingTheImage(with.block, [&] {
        if (asRegistered)
            interpreter().printHwDatablockOldStyleInfo(&with.block, os);
        else
            with.block.printToStream(os);
    });
}

/// Sums are made and checked without a change, other than that making one takes the old one out.
void sum(Surroundings& with) {
    HwDatablock& block = with.block;
    doing.operation = "computeChecksum";
    switch (with.input.byte() % 4) {
    case 0:
        holdingTheImage(block, [&] { block.verifyChecksum(); });
        break;
    case 1:
        block.setChecksum(block.computeChecksum());
        // The word lies among those that are summed, and in the buffer.
        if (block.getBlockSize() >= 6 && block.getByteArrayData().size() >= 6)
            require(block.verifyChecksum(), "a computed checksum does not hold");
        break;
    case 2:
        holdingTheImage(block, [&] { block.verifyChecksum32(); });
        break;
    default: {
        Argument<unsigned char*> bytes(with);
        const auto size = static_cast<unsigned int>(with.length);
        holdingTheImage(block, [&] {
            block.computeChecksum32(bytes.get(), bytes.get() ? size : 0);
            block.verifyChecksum32(bytes.get(), bytes.get() ? size : 0);
        });
    }
    }
}

void replaceBuffer(Surroundings& with) {
    doing.operation = "setData";
    switch (with.input.byte() % 4) {
    case 0: {
        const auto bytes = with.input.take(with.input.word());
        with.block.setData(reinterpret_cast<const unsigned char*>(bytes.data()),
                           static_cast<unsigned int>(bytes.size()));
        break;
    }
    case 1:
        with.block.setData(&with.other);
        break;
    case 2:
        with.block.setData(with.other.getByteArrayData());
        break;
    default:
        with.block.resizeData(with.input.word());
    }
}

/// Through the other order, in any of the ways there are. What was converted twice is no other than what was once.
void convert(Surroundings& with, Budget& budget) {
    if (budget.conversions == 0)
        return;
    --budget.conversions;
    HwDatablock& block = with.block;
    doing.operation = "swapHwDatablock";
    const unsigned int kind = with.input.byte() % 4;
    const unsigned short id = block.getId();
    block.setDataFormatTyp(Travik::HwDataFormatForeign);
    if (kind == 0) {
        with.other.setHwDatablockFirmwareConform(&block);
    } else if (kind == 1) {
        block.verifyChecksum();
    } else if (interpreter().swapHwDatablock(Travik::HwDataFormatFirmware, id, &block)) {
        require(block.getDataFormatTyp() == Travik::HwDataFormatFirmware,
                "a block that was converted is not labelled so");
        const ImageBefore once(block);
        interpreter().swapHwDatablock(Travik::HwDataFormatForeign, block.getId(), &block);
        interpreter().swapHwDatablock(Travik::HwDataFormatFirmware, block.getId(), &block);
        require(once.isUnchanged(block), "a second conversion there and back changes the image");
    }
    block.setDataFormatTyp(Travik::HwDataFormatFirmware);
}

void operate(const BlockClass& blockClass, Surroundings& with, Budget& budget) {
    const unsigned int kind = with.input.byte() % 16;
    if (kind < 6 && !blockClass.couples.empty()) {
        const Couple& couple = blockClass.couples[with.input.byte() % blockClass.couples.size()];
        doing.operation = couple.setter;
        couple.check(with, couple.rule);
    } else if (kind < 10) {
        callAccessor(blockClass.accessors[with.input.byte() % blockClass.accessors.size()], with, budget);
    } else if (kind < 12 && blockClass.takeOver) {
        doing.operation = "setBlock";
        blockClass.takeOver(with);
    } else if (kind == 12) {
        print(with, budget);
    } else if (kind == 13) {
        sum(with);
    } else if (kind == 14) {
        replaceBuffer(with);
    } else {
        convert(with, budget);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = [] {
        Travik::CErrorManager::setSignalHandler([](int, const QString&) {});
        Travik::Debug::setMessageBoxHandler([](const QString&, const QString&) {});
        return true;
    }();
    static_cast<void>(quiet);
    Input input({reinterpret_cast<const char*>(data), size});
    const ClassesInput start(input);
    const BlockClass& blockClass = *start.subject->blockClass;
    doing = {blockClass.name, "the constructor"};
    const auto block = start.makeBlock();
    HwDatablock other(false);
    Surroundings with{input, *block, other};
    Budget budget{.id = start.subject->id};
    while (!input.isEmpty() && budget.operations-- > 0) {
        operate(blockClass, with, budget);
        // An accessor or another block may have left any label: without it, each setter would convert there and back.
        block->setDataFormatTyp(Travik::HwDataFormatFirmware);
    }
    return 0;
}
