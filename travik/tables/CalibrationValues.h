#pragma once

#include <travik/tables/CountedTables.h>

/// Blocks of one or two calibration values.
namespace Travik {

#pragma pack(push, 1)
/// A single value and a count, which says nothing about it.
struct SingleValueRecord : HwSDatablockHeader {
    unsigned int count;
    int value;
};
#pragma pack(pop)
static_assert(sizeof(SingleValueRecord) == 16);

template <std::derived_from<SingleValueRecord> R>
inline constexpr auto recordFields<R> = describe<R>(field<&R::count>("count"), field<&R::value>("value"));

/// What a block of a single value says of itself.
struct SingleValueTable {
    BlockName name;
    HeadLayout text;
    const char* failure; ///< the context of error 1040002
    int wrongIndex;      ///< what the setter returns for an index other than 0
};

namespace detail {

TRAVIK_DATABLOCK_EXPORT std::ostream& printSingleValue(std::ostream& os, const SingleValueTable& table,
                                                       unsigned int count, int value);
TRAVIK_DATABLOCK_EXPORT void signalFailedStore(const SingleValueTable& table);

} // namespace detail

/// A block of a single value, which is set and read with index 0.
template <class R>
class SingleValueBlock : public DescribedBlock<R> {
public:
    using SingleValueBlock::DescribedBlock::DescribedBlock;

    unsigned int getCount() const { return this->template get<&R::count>(); }
    void setCount(unsigned int count) { this->template set<&R::count>(count); }

    /// The value is stored, and tested, as by the setter.
    int setBlock(const R* record) {
        const int value = record ? record->value : 0;
        return this->takeOver(record, R::table.name.errorName, 0, [&] { store(value); });
    }

    std::ostream& printToStream(std::ostream& os) override {
        return detail::printSingleValue(os, R::table, getCount(), value(0));
    }

protected:
    int value(unsigned char i) const { return i == 0 ? this->template get<&R::value>() : 0; }

    /// 0, or -1 and error 1040002 when the value cannot be read back, as in a block that is cut short.
    int storeValue(int value, unsigned char i) {
        if (i != 0)
            return R::table.wrongIndex;
        const bool stored = store(value);
        this->refreshChecksum();
        return stored ? 0 : -1;
    }

private:
    bool store(int value) {
        const bool stored = this->template put<&R::value>(value) && this->template get<&R::value>() == value;
        if (!stored)
            detail::signalFailedStore(R::table);
        return stored;
    }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockWenBaseboardCalibValue : SingleValueRecord {
    static const SingleValueTable table;
};
/// 15605: the WEN baseboard's value. The dictionary does not register it.
class TRAVIK_DATABLOCK_EXPORT HwDatablockWenBaseboardCalibValue
    : public SingleValueBlock<HwSDatablockWenBaseboardCalibValue> {
public:
    using SingleValueBlock::SingleValueBlock;

    int getBaseboardCalibValue(unsigned char i) const { return value(i); }
    /// An index other than 0 is ignored, with result 0.
    int setBaseboardCalibValue(int value, unsigned char i) { return storeValue(value, i); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockOrbMbrdPllDacCalibValue : SingleValueRecord {
    static const SingleValueTable table;
};
/// 12280: the main board's setting of the PLL DAC, 0 to 1023 for 10 MHz ± 150 Hz; the range is not enforced.
class TRAVIK_DATABLOCK_EXPORT HwDatablockOrbMbrdPllDacCalibValue
    : public SingleValueBlock<HwSDatablockOrbMbrdPllDacCalibValue> {
public:
    using SingleValueBlock::SingleValueBlock;

    int getOrbMbrdPllDacCalibValue(unsigned char i) const { return value(i); }
    /// An index other than 0 is ignored, with result -1.
    int setOrbMbrdPllDacCalibValue(int value, unsigned char i) { return storeValue(value, i); }
};

#pragma pack(push, 1)
struct TRAVIK_DATABLOCK_EXPORT HwSDatablockDacIfFullScale : HwSDatablockHeader {
    int value;

    static const PlainTable table;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockWENDelay : HwSDatablockHeader {
    float delayI;
    float delayQ;

    static const PlainTable table;
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockDacIfFullScale) == 12);
static_assert(sizeof(HwSDatablockWENDelay) == 16);

template <>
inline constexpr auto recordFields<HwSDatablockDacIfFullScale> =
    describe<HwSDatablockDacIfFullScale>(field<&HwSDatablockDacIfFullScale::value>("full_scale"));

template <>
inline constexpr auto recordFields<HwSDatablockWENDelay> = describe<HwSDatablockWENDelay>(
    field<&HwSDatablockWENDelay::delayI>("delay_i"), field<&HwSDatablockWENDelay::delayQ>("delay_q"));

/// 12500: full-scale value of the DAC IF.
class TRAVIK_DATABLOCK_EXPORT HwDatablockDacIfFullScale : public DescribedBlock<HwSDatablockDacIfFullScale> {
public:
    using DescribedBlock::DescribedBlock;

    int getFullScaleValue() const { return get<&Record::value>(); }
    void setFullScaleValue(int value) { set<&Record::value>(value); }

    std::ostream& printToStream(std::ostream& os) override;
};

/// 15504: delays of the WEN board's I and Q paths. The dictionary does not register it.
class TRAVIK_DATABLOCK_EXPORT HwDatablockWENDelay : public DescribedBlock<HwSDatablockWENDelay> {
public:
    using DescribedBlock::DescribedBlock;

    /// Of the Q path or of the I path.
    double getDelay(bool q) const { return static_cast<double>(q ? get<&Record::delayQ>() : get<&Record::delayI>()); }
    void setDelayI(float delay) { set<&Record::delayI>(delay); }
    void setDelayQ(float delay) { set<&Record::delayQ>(delay); }

    std::ostream& printToStream(std::ostream& os) override;
};

} // namespace Travik
