#pragma once

#include <travik/datablock/RecordBlock.h>

namespace Travik {

/// The bare header: that the block is there is all it records.
struct HwSDatablockAnalogOutputCalibration : HwSDatablockHeader {};
static_assert(sizeof(HwSDatablockAnalogOutputCalibration) == 8);

template <>
inline constexpr auto recordFields<HwSDatablockAnalogOutputCalibration> =
    describe<HwSDatablockAnalogOutputCalibration>();

/// The calibration of an analog output, the smallest complete block. Prints nothing.
class TRAVIK_DATABLOCK_EXPORT HwWenDatablockAnalogOutputCalibration
    : public RecordBlock<HwSDatablockAnalogOutputCalibration> {
public:
    /// Identifier 15500 for selector 0, otherwise 15501.
    explicit HwWenDatablockAnalogOutputCalibration(unsigned int selector, bool stopConversionOnError = false)
        : RecordBlock(selector == 0 ? 15500 : 15501, stopConversionOnError) {}

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockAnalogOutputCalibration* record) {
        return takeOver(record, "HwSDatablockAnalogOutputCalibration");
    }
};

} // namespace Travik
