#pragma once

#include <travik/tables/CountedTables.h>

#include <algorithm>

/// Gain calibration: coarse attenuator and offsets of the level-control ADU, AM gain of the CW output board.
namespace Travik {

/// A block that, besides records with a right checksum, takes over an empty one: the class's identifier, all other
/// header words and all values zero.
template <class Block>
class EmptyRecordBlock : public Block {
public:
    using Record = typename Block::Record;

    int setBlock(const Record* record) {
        if (!isEmpty(record))
            return Block::setBlock(record);
        const HwSDatablockHeader header = Block::headerOf(record);
        this->restore(record, 0, [&] { this->storeHeader(header.id, Block::recordSize, 0); });
        return 0;
    }

private:
    static bool isEmpty(const Record* record) {
        if (!record)
            return false;
        const auto* const values = reinterpret_cast<const char*>(record->values);
        return Block::headerOf(record) == HwSDatablockHeader{Record::table.name.id, 0, 0, 0} &&
               std::all_of(values, values + sizeof record->values, [](char byte) { return byte == 0; });
    }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockAduLevCoarseCalibData : CountedRecord<double[12], 108> {
    static const ListTable table;
};
/// 15650: values k0 to k11 of the coarse attenuator.
class TRAVIK_DATABLOCK_EXPORT HwDatablockAduLevCoarseCalibData
    : public CountingListBlock<HwSDatablockAduLevCoarseCalibData> {
public:
    double getLevCoarseCalValue(unsigned short i) const { return value(i); }
    void setLevCoarseCalValue(double value, unsigned short i) { storeValue(value, i); }
};

#pragma pack(push, 1)
/// The offsets at one gain. Stored in another order than printed.
struct HwSAduGainOffsetCalData {
    double gain;
    double refOffset;
    double detOffset;

    friend bool operator==(const HwSAduGainOffsetCalData&, const HwSAduGainOffsetCalData&) = default;
};

/// Gains at one frequency point.
struct HwSCwOp3AmGainDataBlock {
    short cwGain;
    short amGain;
    short reserve1;
    short reserve2;

    friend bool operator==(const HwSCwOp3AmGainDataBlock&, const HwSCwOp3AmGainDataBlock&) = default;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockCwOp3AmGainData : HwSDatablockHeader {
    HwSCwOp3AmGainDataBlock values[200];

    static const PlainTable table;
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockCwOp3AmGainData) == 1608);

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockAduGainOffsetCalData : CountedRecord<HwSAduGainOffsetCalData[8], 204, int> {
    static const PlainTable table;
};

template <>
inline constexpr auto recordFields<HwSDatablockAduGainOffsetCalData> = describe<HwSDatablockAduGainOffsetCalData>(
    field<&HwSDatablockAduGainOffsetCalData::count>("count").as(Role::Count),
    entries<&HwSDatablockAduGainOffsetCalData::values>(field<&HwSAduGainOffsetCalData::gain>("gain").as(Role::Axis),
                                                       field<&HwSAduGainOffsetCalData::refOffset>("ref_offset"),
                                                       field<&HwSAduGainOffsetCalData::detOffset>("det_offset"))
        .along(0, "gain", "count"));

/// 15652: offsets of detector and reference detector, in ascending order of gain.
class TRAVIK_DATABLOCK_EXPORT HwDatablockAduGainOffsetCalData
    : public EmptyRecordBlock<CountedBlock<HwSDatablockAduGainOffsetCalData>> {
public:
    int getCount() const { return count(); }
    void setCount(int count) { CountedBlock::storeCount(count); }
    HwSAduGainOffsetCalData getAduCalibDataBlock(int i) const { return value(i); }
    void setCalibDatablock(const HwSAduGainOffsetCalData& data, int i) { storeValue(data, i); }

    /// Always 0, even where the record is refused.
    int setBlock(const Record* record);
    std::ostream& printToStream(std::ostream& os) override;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockCwOp3AmGainFreq : CountedRecord<double[200], 1612> {
    static const ListTable table;
};
/// 10500: frequency points of the AM gain. Printing leaves precision 2 on the stream.
class TRAVIK_DATABLOCK_EXPORT HwDatablockCwOp3AmGainFreq : public CountingListBlock<HwSDatablockCwOp3AmGainFreq> {
public:
    double getFrequencyValue(unsigned short k) const { return value(k); }
    void setFrequencyValue(double value, unsigned short k) { storeValue(value, k); }
};

template <>
inline constexpr auto recordFields<HwSDatablockCwOp3AmGainData> = describe<HwSDatablockCwOp3AmGainData>(
    entries<&HwSDatablockCwOp3AmGainData::values>(
        field<&HwSCwOp3AmGainDataBlock::cwGain>("cw_gain"), field<&HwSCwOp3AmGainDataBlock::amGain>("am_gain"),
        field<&HwSCwOp3AmGainDataBlock::reserve1>("reserve1").as(Role::Reserved),
        field<&HwSCwOp3AmGainDataBlock::reserve2>("reserve2").as(Role::Reserved))
        .along(0, "point", nullptr, 10500));

/// 10501: gain at the 200 frequency points of 10500; has no count.
class TRAVIK_DATABLOCK_EXPORT HwDatablockCwOp3AmGainData
    : public EmptyRecordBlock<DescribedBlock<HwSDatablockCwOp3AmGainData>> {
public:
    HwSCwOp3AmGainDataBlock getAmGainDataBlock(int k) const { return get<&Record::values>(k); }
    void setAmGainDataBlock(const HwSCwOp3AmGainDataBlock& data, int k) { set<&Record::values>(data, k); }

    std::ostream& printToStream(std::ostream& os) override;
};

} // namespace Travik
