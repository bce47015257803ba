#pragma once

#include <travik/datablock/RecordBlock.h>

namespace Travik {

#pragma pack(push, 1)
/// The operating hours of a module: 12 bytes.
struct HwSDatablockStatistic : HwSDatablockHeader {
    unsigned int opHours;
};

/// Statistics whose form only the firmware knows: 524 bytes.
struct HwSDatablockCommonStatisticData : HwSDatablockHeader {
    unsigned int length; ///< bytes of data in use
    unsigned char data[512];
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockStatistic) == 12);
static_assert(sizeof(HwSDatablockCommonStatisticData) == 524);

template <>
inline constexpr auto recordFields<HwSDatablockStatistic> =
    describe<HwSDatablockStatistic>(field<&HwSDatablockStatistic::opHours>("operating_hours").in("h"));

template <>
inline constexpr auto recordFields<HwSDatablockCommonStatisticData> = describe<HwSDatablockCommonStatisticData>(
    field<&HwSDatablockCommonStatisticData::length>("data_length").in("byte").as(Role::Count),
    field<&HwSDatablockCommonStatisticData::data>("data").along(0, "byte", "data_length"));

/// The operating hours counter.
class TRAVIK_DATABLOCK_EXPORT HwDatablockStatistic : public RecordBlock<HwSDatablockStatistic> {
public:
    static constexpr std::string_view keyName = "STATISTICS_300";

    /// Identifier 300, 0 hours.
    explicit HwDatablockStatistic(bool stopConversionOnError = false) : RecordBlock(300, stopConversionOnError) {}

    unsigned int getOpHours() const { return get<&Record::opHours>(); }
    /// Refreshes the stored checksum.
    void setOpHours(unsigned int hours) { set<&Record::opHours>(hours); }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockStatistic* record) { return takeOver(record, "HwDatablockStatistic"); }
    /// Re-stores the block from a record of the other byte order, unchecked.
    void swapBlock(const HwSDatablockStatistic* record) { restore(record); }
    std::ostream& printToStream(std::ostream& os) override;
};

/// Up to 512 bytes of statistics that are not interpreted here: the power-on count (identifier 11310) and the operating
/// time count (11312), each with a backup in a block of its own (11311, 11313). Choosing between a counter and its
/// backup is the caller's.
class TRAVIK_DATABLOCK_EXPORT HwDatablockCommonStatisticData : public RecordBlock<HwSDatablockCommonStatisticData> {
public:
    /// What the block's text calls an identifier from 11310 to 11313; empty for any other.
    static std::string_view keyOf(int id);

    /// The instance is the block's identifier. Length 512, all data 0.
    explicit HwDatablockCommonStatisticData(int instance);

    /// As constructed.
    int getInstance() const { return instance_; }
    /// The stored length, which may exceed 512 in an image that was not written by this library.
    unsigned int getCommonStatisticDataLength() const { return get<&Record::length>(); }
    /// All 512 data bytes; zeros where the buffer is too short. The stored length goes to `length` unless that is null.
    const unsigned char* getCommonStatisticData(unsigned int* length) const;
    /// Stores the length, cut to 512, and as many bytes; those behind them keep their values. Does not refresh the
    /// checksum. Null counts as no bytes.
    void setCommonStatisticData(const unsigned char* data, unsigned int length);

    /// Takes identifier, alignment and data over, never refusing a record; always 0. Size and checksum words are not
    /// the record's: they stay, but for the checksum of a block whose identifier or alignment changes, which is
    /// refreshed before the data are stored.
    int setBlock(const HwSDatablockCommonStatisticData* record);
    /// Takes the header words of a record of the other byte order over and converts the length in that record; this
    /// block's data stay.
    void swapBlock(HwSDatablockCommonStatisticData* record);
    std::ostream& printToStream(std::ostream& os) override;

private:
    int instance_;
};

} // namespace Travik
