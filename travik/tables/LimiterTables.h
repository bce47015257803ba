#pragma once

#include <travik/tables/CountedTables.h>

namespace Travik {

/// The limiter: the detector's voltage at the highest permitted level, at up to 100 frequency nodes. Setters refresh
/// the checksum only when asked, so that a whole table costs one refresh; until then the stored one is stale.
template <class R>
class DetLimiterBlock : public CountingListBlock<R> {
protected:
    void storeNode(double value, unsigned int k, bool updateChecksum) {
        if (this->template put<&R::values>(value, k) && updateChecksum)
            this->refreshChecksum();
    }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDetLimiterMaxVoltFreq : CountedRecord<double[100], 812> {
    static const ListTable table;
};
/// 15020: frequency nodes, in GHz. Printing leaves precision 3 on the stream.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDetLimiterMaxVoltFreq
    : public DetLimiterBlock<HwSDatablockDetLimiterMaxVoltFreq> {
public:
    double getFrequencyValue(unsigned int k) const { return value(k); }
    void setFrequencyValue(double value, unsigned int k, bool updateChecksum) { storeNode(value, k, updateChecksum); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDetLimiterMaxVoltData : CountedRecord<double[100], 812> {
    static const ListTable table;
};
/// 15021: detector voltages at the nodes of 15020, in V. Printing leaves precision 2 on the stream.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDetLimiterMaxVoltData
    : public DetLimiterBlock<HwSDatablockDetLimiterMaxVoltData> {
public:
    double getMaxVoltageValue(unsigned int k) const { return value(k); }
    void setMaxVoltageValue(double value, unsigned int k, bool updateChecksum) { storeNode(value, k, updateChecksum); }
};

} // namespace Travik
