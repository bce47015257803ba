#pragma once

#include <travik/tables/CountedTables.h>

/// Analog imbalance of the WEN board: frequency points, and gain and phase of the I and the Q path at them. The
/// dictionary does not register these blocks; their users create them.
namespace Travik {

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockWenAnalogImbalanceFreq : CountedRecord<double[30], 252, int> {
    static const ListTable table;
};
/// 15600: frequency points, in Hz. Printing leaves precision 2 on the stream.
class TRAVIK_DATABLOCK_EXPORT HwDatablockWenAnalogImbalanceFreq : public ListBlock<HwSDatablockWenAnalogImbalanceFreq> {
public:
    using ListBlock::ListBlock;

    int getNumberOfWenAnalogImbalanceFreq() const { return count(); }
    void setNumberOfWenAnalogImbalanceFreq(int count) { storeCount(count); }
    double getWenAnalogImbalanceFreq(int i) const { return value(i); }
    void setWenAnalogImbalanceFreq(double value, int i) { storeValue(value, i); }
};

/// The gain of one path.
template <class R>
class WenAnalogImbalanceGain : public ListBlock<R> {
public:
    using WenAnalogImbalanceGain::ListBlock::ListBlock;

    int getNumberOfWenAnalogImbalanceGainValues() const { return this->count(); }
    void setNumberOfWenAnalogImbalanceGainValues(int count) { this->storeCount(count); }
    float getWenAnalogImbalanceGain(int i) const { return this->value(i); }
    void setWenAnalogImbalanceGain(float value, int i) { this->storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockWenAnalogImbalanceGainI : CountedRecord<float[30], 132, int> {
    static const ListTable table;
};
/// 15601.
class TRAVIK_DATABLOCK_EXPORT HwDatablockWenAnalogImbalanceGainI
    : public WenAnalogImbalanceGain<HwSDatablockWenAnalogImbalanceGainI> {
    using WenAnalogImbalanceGain::WenAnalogImbalanceGain;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockWenAnalogImbalanceGainQ : CountedRecord<float[30], 132, int> {
    static const ListTable table;
};
/// 15602.
class TRAVIK_DATABLOCK_EXPORT HwDatablockWenAnalogImbalanceGainQ
    : public WenAnalogImbalanceGain<HwSDatablockWenAnalogImbalanceGainQ> {
    using WenAnalogImbalanceGain::WenAnalogImbalanceGain;
};

/// The phase of one path.
template <class R>
class WenAnalogImbalancePhase : public ListBlock<R> {
public:
    using WenAnalogImbalancePhase::ListBlock::ListBlock;

    int getNumberOfWenAnalogImbalancePh() const { return this->count(); }
    void setNumberOfWenAnalogImbalancePh(int count) { this->storeCount(count); }
    float getWenAnalogImbalancePh(int i) const { return this->value(i); }
    void setWenAnalogImbalancePh(float value, int i) { this->storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockWenAnalogImbalancePhI : CountedRecord<float[30], 132, int> {
    static const ListTable table;
};
/// 15603.
class TRAVIK_DATABLOCK_EXPORT HwDatablockWenAnalogImbalancePhI
    : public WenAnalogImbalancePhase<HwSDatablockWenAnalogImbalancePhI> {
    using WenAnalogImbalancePhase::WenAnalogImbalancePhase;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockWenAnalogImbalancePhQ : CountedRecord<float[30], 132, int> {
    static const ListTable table;
};
/// 15604.
class TRAVIK_DATABLOCK_EXPORT HwDatablockWenAnalogImbalancePhQ
    : public WenAnalogImbalancePhase<HwSDatablockWenAnalogImbalancePhQ> {
    using WenAnalogImbalancePhase::WenAnalogImbalancePhase;
};

} // namespace Travik
