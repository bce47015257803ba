#pragma once

#include <travik/tables/CountedTables.h>

/// Calibration of the DAC board: frequency response and IQ imbalance, each with frequency points and corrections at
/// them for the front output, the rear output and, for the imbalance, with I and Q swapped.
namespace Travik {

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbFrequencyCompFreq : CountedRecord<int[26], 116, int> {
    static const ListTable table;
};
/// 13500: frequency points of the frequency response compensation, in Hz.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbFrequencyCompFreq : public ListBlock<HwSDatablockDacbFrequencyCompFreq> {
public:
    using ListBlock::ListBlock;

    int getNumberOfCompFreq() const { return count(); }
    void setNumberOfcompFreq(int count) { storeCount(count); }
    int getCompFreq(int i) const { return value(i); }
    void setCompFreq(int value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbFrequencyCompAmp : CountedRecord<short[26], 64, int> {
    static const ListTable table;
};
/// 13600: amplitude compensation of the front path, in 1/10000.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbFrequencyCompAmp : public ListBlock<HwSDatablockDacbFrequencyCompAmp> {
public:
    using ListBlock::ListBlock;

    int getNumberOfCompAmp() const { return count(); }
    void setNumberOfcompAmp(int count) { storeCount(count); }
    short getCompAmp(int i) const { return value(i); }
    void setCompAmp(short value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbFrequencyCompPh : CountedRecord<short[26], 64, int> {
    static const ListTable table;
};
/// 13700: phase compensation of the front path, in 1/100.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbFrequencyCompPh : public ListBlock<HwSDatablockDacbFrequencyCompPh> {
public:
    using ListBlock::ListBlock;

    int getNumberOfCompPh() const { return count(); }
    void setNumberOfCompPh(int count) { storeCount(count); }
    short getCompPh(int i) const { return value(i); }
    void setCompPh(short value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbFrequencyCompDt : CountedRecord<short[2], 16, int> {
    static const ListTable table;
};
/// 13800: time delay of the front path, in 1e-12 s.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbFrequencyCompDt : public ListBlock<HwSDatablockDacbFrequencyCompDt> {
public:
    using ListBlock::ListBlock;

    int getNumberOfCompDt() const { return count(); }
    void setNumberOfCompDt(int count) { storeCount(count); }
    short getCompDt(int i) const { return value(i); }
    void setCompDt(short value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbIqImbalanceFreq : CountedRecord<int[26], 116, int> {
    static const ListTable table;
};
/// 13900: frequency points of the IQ imbalance correction, in Hz. A count above 26 is not stored.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbIqImbalanceFreq : public ListBlock<HwSDatablockDacbIqImbalanceFreq> {
public:
    using ListBlock::ListBlock;

    int getNumberOfIqImbalanceFreq() const { return count(); }
    void setNumberOfIqImbalanceFreq(int count) { storeCount(count); }
    int getIqImbalanceFreq(int i) const { return value(i); }
    void setIqImbalanceFreq(int value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbIqImbalanceAmp : CountedRecord<short[26], 64, int> {
    static const ListTable table;
};
/// 14000: amplitude correction of the RF imbalance, in 1/10000.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbIqImbalanceAmp : public ListBlock<HwSDatablockDacbIqImbalanceAmp> {
public:
    using ListBlock::ListBlock;

    int getNumberOfIqImbalanceAmp() const { return count(); }
    void setNumberOfIqImbalanceAmp(int count) { storeCount(count); }
    short getIqImbalanceAmp(int i) const { return value(i); }
    void setIqImbalanceAmp(short value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbIqImbalancePh : CountedRecord<short[26], 64, int> {
    static const ListTable table;
};
/// 14100: phase correction of the RF imbalance, in 1/100. Reads and prints with the opposite sign of what was set.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbIqImbalancePh : public ListBlock<HwSDatablockDacbIqImbalancePh> {
public:
    using ListBlock::ListBlock;

    int getNumberOfIqImbalancePh() const { return count(); }
    void setNumberOfIqImbalancePh(int count) { storeCount(count); }
    short getIqImbalancePh(int i) const { return value(i); }
    void setIqImbalancePh(short value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbIqImbalanceSwapAmp : CountedRecord<short[26], 64, int> {
    static const ListTable table;
};
/// 14200: amplitude correction of the RF imbalance with I and Q swapped, in 1/10000.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbIqImbalanceSwapAmp : public ListBlock<HwSDatablockDacbIqImbalanceSwapAmp> {
public:
    using ListBlock::ListBlock;

    int getNumberOfIqImbalanceSwapAmp() const { return count(); }
    void setNumberOfIqImbalanceSwapAmp(int count) { storeCount(count); }
    short getIqImbalanceSwapAmp(int i) const { return value(i); }
    void setIqImbalanceSwapAmp(short value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbIqImbalanceSwapPh : CountedRecord<short[26], 64, int> {
    static const ListTable table;
};
/// 14300: phase correction with I and Q swapped, in 1/100. Reads and prints with the opposite sign of what was set.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbIqImbalanceSwapPh : public ListBlock<HwSDatablockDacbIqImbalanceSwapPh> {
public:
    using ListBlock::ListBlock;

    int getNumberOfIqImbalanceSwapPh() const { return count(); }
    void setNumberOfIqImbalanceSwapPh(int count) { storeCount(count); }
    short getIqImbalanceSwapPh(int i) const { return value(i); }
    void setIqImbalanceSwapPh(short value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbFrequencyCompAmpRear : CountedRecord<short[26], 64, int> {
    static const ListTable table;
};
/// 14400: amplitude compensation of the rear path, in 1/10000. A count above 26 is not stored.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbFrequencyCompAmpRear
    : public ListBlock<HwSDatablockDacbFrequencyCompAmpRear> {
public:
    using ListBlock::ListBlock;

    int getNumberOfCompAmpRear() const { return count(); }
    void setNumberOfcompAmpRear(int count) { storeCount(count); }
    short getCompAmpRear(int i) const { return value(i); }
    void setCompAmpRear(short value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbFrequencyCompPhRear : CountedRecord<short[26], 64, int> {
    static const ListTable table;
};
/// 14500: phase compensation of the rear path, in 1/100. A count above 26 is not stored.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbFrequencyCompPhRear
    : public ListBlock<HwSDatablockDacbFrequencyCompPhRear> {
public:
    using ListBlock::ListBlock;

    int getNumberOfCompPhRear() const { return count(); }
    void setNumberOfCompPhRear(int count) { storeCount(count); }
    short getCompPhRear(int i) const { return value(i); }
    void setCompPhRear(short value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbFrequencyCompDtRear : CountedRecord<short[2], 16, int> {
    static const ListTable table;
};
/// 14600: time delay of the rear path, in 1e-12 s.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbFrequencyCompDtRear
    : public ListBlock<HwSDatablockDacbFrequencyCompDtRear> {
public:
    using ListBlock::ListBlock;

    int getNumberOfCompDtRear() const { return count(); }
    void setNumberOfCompDtRear(int count) { storeCount(count); }
    short getCompDtRear(int i) const { return value(i); }
    void setCompDtRear(short value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbIqImbalanceRearAmp : CountedRecord<short[26], 64, int> {
    static const ListTable table;
};
/// 14700: amplitude correction of the IQ output, in 1/10000. A count above 26 is not stored.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbIqImbalanceRearAmp : public ListBlock<HwSDatablockDacbIqImbalanceRearAmp> {
public:
    using ListBlock::ListBlock;

    int getNumberOfIqImbalanceRearAmp() const { return count(); }
    void setNumberOfIqImbalanceRearAmp(int count) { storeCount(count); }
    short getIqImbalanceRearAmp(int i) const { return value(i); }
    void setIqImbalanceRearAmp(short value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacbIqImbalanceRearPh : CountedRecord<short[26], 64, int> {
    static const ListTable table;
};
/// 14800: phase correction of the IQ output, in 1/100. Reads and prints with the opposite sign of what was set.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacbIqImbalanceRearPh : public ListBlock<HwSDatablockDacbIqImbalanceRearPh> {
public:
    using ListBlock::ListBlock;

    int getNumberOfIqImbalanceRearPh() const { return count(); }
    void setNumberOfIqImbalanceRearPh(int count) { storeCount(count); }
    short getIqImbalanceRearPh(int i) const { return value(i); }
    void setIqImbalanceRearPh(short value, int i) { storeValue(value, i); }
};

} // namespace Travik
