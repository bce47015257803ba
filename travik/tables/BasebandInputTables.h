#pragma once

#include <travik/tables/CountedTables.h>

/// Filter coefficients of the baseband input board, 32-bit signed integers.
namespace Travik {

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockBbinsCompFilterTabsI : CountedRecord<int[20], 92, int> {
    static const ListTable table;
};
/// 13000: equaliser taps of the I path, signed fixed point.
class TRAVIK_DATABLOCK_EXPORT HwDatablockBbinsCompFilterTabsI : public ListBlock<HwSDatablockBbinsCompFilterTabsI> {
public:
    using ListBlock::ListBlock;

    int getNumberOfFilterTabsI() const { return count(); }
    void setNumberOfFilterTabsI(int count) { storeCount(count); }
    int getFilterTabsIValue(int i) const { return value(i); }
    void setFilterTabsIValue(int value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockBbinsCompFilterTabsQ : CountedRecord<int[20], 92, int> {
    static const ListTable table;
};
/// 13050: equaliser taps of the Q path, signed fixed point.
class TRAVIK_DATABLOCK_EXPORT HwDatablockBbinsCompFilterTabsQ : public ListBlock<HwSDatablockBbinsCompFilterTabsQ> {
public:
    using ListBlock::ListBlock;

    int getNumberOfFilterTabsQ() const { return count(); }
    void setNumberOfFilterTabsQ(int count) { storeCount(count); }
    int getFilterTabsQValue(int i) const { return value(i); }
    void setFilterTabsQValue(int value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockBbinsUncalibratedFirAmplitudeI : CountedRecord<int[50], 212, int> {
    static const ListTable table;
};
/// 13100: uncalibrated amplitude response of the I path.
class TRAVIK_DATABLOCK_EXPORT HwDatablockBbinsUncalibratedFirAmplitudeI
    : public ListBlock<HwSDatablockBbinsUncalibratedFirAmplitudeI> {
public:
    using ListBlock::ListBlock;

    int getNumberOfUncalibratedFirAmplitudeI() const { return count(); }
    void setNumberOfUncalibratedFirAmplitudeI(int count) { storeCount(count); }
    int getUncalibratedFirAmplitudeIValue(int i) const { return value(i); }
    void setUncalibratedFirAmplitudeIValue(int value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockBbinsUncalibratedFirPhiI : CountedRecord<int[50], 212, int> {
    static const ListTable table;
};
/// 13101: uncalibrated phase response of the I path.
class TRAVIK_DATABLOCK_EXPORT HwDatablockBbinsUncalibratedFirPhiI
    : public ListBlock<HwSDatablockBbinsUncalibratedFirPhiI> {
public:
    using ListBlock::ListBlock;

    int getNumberOfUncalibratedFirPhiI() const { return count(); }
    void setNumberOfUncalibratedFirPhiI(int count) { storeCount(count); }
    int getUncalibratedFirPhiIValue(int i) const { return value(i); }
    void setUncalibratedFirPhiIValue(int value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockBbinsUncalibratedFirAmplitudeQ : CountedRecord<int[50], 212, int> {
    static const ListTable table;
};
/// 13102: uncalibrated amplitude response of the Q path.
class TRAVIK_DATABLOCK_EXPORT HwDatablockBbinsUncalibratedFirAmplitudeQ
    : public ListBlock<HwSDatablockBbinsUncalibratedFirAmplitudeQ> {
public:
    using ListBlock::ListBlock;

    int getNumberOfUncalibratedFirAmplitudeQ() const { return count(); }
    void setNumberOfUncalibratedFirAmplitudeQ(int count) { storeCount(count); }
    int getUncalibratedFirAmplitudeQValue(int i) const { return value(i); }
    void setUncalibratedFirAmplitudeQValue(int value, int i) { storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockBbinsUncalibratedFirPhiQ : CountedRecord<int[50], 212, int> {
    static const ListTable table;
};
/// 13103: uncalibrated phase response of the Q path.
class TRAVIK_DATABLOCK_EXPORT HwDatablockBbinsUncalibratedFirPhiQ
    : public ListBlock<HwSDatablockBbinsUncalibratedFirPhiQ> {
public:
    using ListBlock::ListBlock;

    int getNumberOfUncalibratedFirPhiQ() const { return count(); }
    void setNumberOfUncalibratedFirPhiQ(int count) { storeCount(count); }
    int getUncalibratedFirPhiQValue(int i) const { return value(i); }
    void setUncalibratedFirPhiQValue(int value, int i) { storeValue(value, i); }
};

} // namespace Travik
