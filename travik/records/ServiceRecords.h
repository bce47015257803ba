#pragma once

#include <travik/datablock/RecordBlock.h>

namespace Travik {

/// Selects the block of a class that serves several: the block identifier itself. A plain number does as well.
enum HwEVariantEepromDatablock : int {};

#pragma pack(push, 1)
/// One service of a module: 24 bytes.
struct HwSDatablockServiceData : HwSDatablockHeader {
    char department[6];         ///< Latin-1; a name of six characters has no NUL
    unsigned short serviceDate; ///< bits 0-4 day, 5-8 month, 9-15 year minus 1980
    unsigned int opTime;        ///< bits 0-17 operating hours, 18-31 how often the module was turned on
    unsigned short repairNumber;
    unsigned short serviceCode;
};

/// The modifications that a module has had: 28 bytes.
struct HwSDatablockModification : HwSDatablockHeader {
    unsigned short serviceCode[10]; ///< each: bits 0-13 number of the circular, 14-15 action
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockServiceData) == 24);
static_assert(sizeof(HwSDatablockModification) == 28);

template <>
inline constexpr auto recordFields<HwSDatablockServiceData> =
    describe<HwSDatablockServiceData>(text<&HwSDatablockServiceData::department>("department"),
                                      field<&HwSDatablockServiceData::serviceDate>("service_date").as(Role::Date),
                                      field<&HwSDatablockServiceData::opTime>("operating_time").in("h").bits(0, 18),
                                      field<&HwSDatablockServiceData::opTime>("turn_on_count").bits(18, 14).sameWord(),
                                      field<&HwSDatablockServiceData::repairNumber>("repair_number"),
                                      field<&HwSDatablockServiceData::serviceCode>("service_code"));

template <>
inline constexpr auto recordFields<HwSDatablockModification> = describe<HwSDatablockModification>(
    field<&HwSDatablockModification::serviceCode>("circular_number").bits(0, 14).along(0, "modification"),
    field<&HwSDatablockModification::serviceCode>("action").bits(14, 2).along(0, "modification").sameWord());

/// A service record: which department last serviced the module, when, at how many operating hours, and why.
///
/// Every setter refreshes the stored checksum and leaves the other bits of a shared word alone.
class TRAVIK_DATABLOCK_EXPORT HwDatablockServiceData : public RecordBlock<HwSDatablockServiceData> {
public:
    /// The key name of an identifier from 200 to 209; empty for any other.
    static std::string_view keyOf(int id);

    /// A record of identifier `variant` (200 to 209, or 299): department six characters "0", all else 0.
    explicit HwDatablockServiceData(HwEVariantEepromDatablock variant, bool stopConversionOnError = false);
    explicit HwDatablockServiceData(int variant, bool stopConversionOnError = false)
        : HwDatablockServiceData(static_cast<HwEVariantEepromDatablock>(variant), stopConversionOnError) {}
    /// The same with identifier 0.
    HwDatablockServiceData() : HwDatablockServiceData(0) {}

    /// The block identifier.
    unsigned short getServiceDataId() { return getId(); }
    /// Six characters, not terminated; zeros where the buffer is too short.
    const char* getDepartment() const { return loadBytes<&Record::department>(); }
    unsigned short getServiceDate() const { return get<&Record::serviceDate>(); }
    unsigned short getServiceDateDay() const { return getServiceDate() & 31U; }
    unsigned short getServiceDateMonth() const { return (getServiceDate() >> 5U) & 15U; }
    /// 1980 to 2107.
    unsigned short getServiceDateYear() const { return static_cast<unsigned short>((getServiceDate() >> 9U) + 1980); }
    /// Hours and turn-on count in one word.
    unsigned int getOpTime() const { return get<&Record::opTime>(); }
    /// 0 to 262143.
    unsigned int getOpTimeHours() const { return getOpTime() & 0x3FFFFU; }
    /// How often the module was turned on: 0 to 16383.
    unsigned int getOpTimeTurnOn() const { return getOpTime() >> 18U; }
    unsigned short getRepairNumber() const { return get<&Record::repairNumber>(); }
    unsigned short getServiceCode() const { return get<&Record::serviceCode>(); }

    /// Copies exactly six bytes, whatever they are: a shorter text must be padded. Null does nothing.
    void setDepartment(const char* department);
    void setServiceDate(unsigned short date) { set<&Record::serviceDate>(date); }
    /// Of each part only the bits that it has are stored; a year before 1980 wraps.
    void setServiceDateDay(unsigned short day);
    void setServiceDateMonth(unsigned short month);
    void setServiceDateYear(unsigned short year);
    void setOpTime(unsigned int word) { set<&Record::opTime>(word); }
    void setOpTimeHours(unsigned int hours);
    void setOpTimeTurnOn(unsigned int count);
    void setRepairNumber(unsigned short number) { set<&Record::repairNumber>(number); }
    void setServiceCode(unsigned short code) { set<&Record::serviceCode>(code); }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockServiceData* record) { return takeOver(record, "HwDatablockServiceData"); }
    /// Re-stores the block from a record of the other byte order, unchecked.
    void swapBlock(const HwSDatablockServiceData* record) { restore(record); }
    std::ostream& printToStream(std::ostream& os) override;
};

/// The modification record: ten codes, each a circular and what was done about it. A code of 0 is not in use.
///
/// Getters answer 0 and setters do nothing for an index above 9; otherwise a setter refreshes the stored checksum.
class TRAVIK_DATABLOCK_EXPORT HwDatablockModification : public RecordBlock<HwSDatablockModification> {
public:
    static constexpr std::string_view keyName = "MODIFICATION_100";

    /// Identifier 100, all codes 0.
    explicit HwDatablockModification(bool stopConversionOnError = false) : RecordBlock(100, stopConversionOnError) {}

    /// The whole word.
    unsigned short getServiceCode(unsigned char index) const { return get<&Record::serviceCode>(index); }
    /// 0 to 16383.
    unsigned short getCircularNr(unsigned char index) const { return getServiceCode(index) & 0x3FFFU; }
    /// 0 to 3.
    unsigned short getAction(unsigned char index) const {
        return static_cast<unsigned short>(getServiceCode(index) >> 14U);
    }

    void setServiceCode(unsigned short code, unsigned char index) { set<&Record::serviceCode>(code, index); }
    /// Bits above the range are dropped.
    void setCircularNr(unsigned short number, unsigned char index);
    void setAction(unsigned short action, unsigned char index);

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockModification* record) { return takeOver(record, "HwDatablockModification"); }
    /// Re-stores the block from a record of the other byte order, unchecked.
    void swapBlock(const HwSDatablockModification* record) { restore(record); }
    std::ostream& printToStream(std::ostream& os) override;
};

} // namespace Travik
