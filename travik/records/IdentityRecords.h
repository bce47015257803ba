#pragma once

#include <travik/datablock/Ident.h>
#include <travik/records/ServiceRecords.h>

namespace Travik {

#pragma pack(push, 1)
/// The identity of a stream option: laid out as the ident record.
struct HwSDatablockMiscIdent : HwSDatablockIdent {};

/// The identity of the oscillator on the CWOP6 board: 28 bytes.
struct HwSDatablockCwop6VcoIdent : HwSDatablockHeader {
    unsigned int jobNumber;
    unsigned short serialNumber;
    unsigned short lotNumber;
    unsigned short taz;
    unsigned short osc3Subh;
    unsigned short osc3Subl;
    unsigned short osc2Subh;
    unsigned short osc2Subl;
    unsigned short osc1Subh; ///< the first oscillator has no second word
};

/// The instrument's serial number, kept on the main board: 12 bytes.
struct HwSDatablockMbrdSerialNumber : HwSDatablockHeader {
    unsigned int serialNumber;
};

/// The instrument's model name, kept on the main board: 40 bytes.
struct HwSDatablockMbrdModel : HwSDatablockHeader {
    char model[32]; ///< Latin-1; the library writes at most 31 characters and a NUL
};

/// The instrument's network address, kept on the main board: 256 bytes.
struct HwSDatablockMbrdMac : HwSDatablockHeader {
    unsigned int macLength; ///< bytes of the address in use
    unsigned char mac[16];
    unsigned char reserved[228]; ///< 0xFF
};

/// What the main board keeps of its watch over the time: 172 bytes.
struct HwSDatablockMbrdTimeMonitoringDataEx : HwSDatablockHeader {
    char date[32];
    unsigned int length; ///< bytes of data in use
    unsigned char data[128];
};
using HwSDatablockMbrdTimeMonitoringData = HwSDatablockMbrdTimeMonitoringDataEx;
#pragma pack(pop)
static_assert(sizeof(HwSDatablockMiscIdent) == 44);
static_assert(sizeof(HwSDatablockCwop6VcoIdent) == 28);
static_assert(sizeof(HwSDatablockMbrdSerialNumber) == 12);
static_assert(sizeof(HwSDatablockMbrdModel) == 40);
static_assert(sizeof(HwSDatablockMbrdMac) == 256);
static_assert(sizeof(HwSDatablockMbrdTimeMonitoringDataEx) == 172);

template <>
inline constexpr auto recordFields<HwSDatablockCwop6VcoIdent> = describe<HwSDatablockCwop6VcoIdent>(
    field<&HwSDatablockCwop6VcoIdent::jobNumber>("job_number"),
    field<&HwSDatablockCwop6VcoIdent::serialNumber>("serial_number"),
    field<&HwSDatablockCwop6VcoIdent::lotNumber>("lot_number"), field<&HwSDatablockCwop6VcoIdent::taz>("taz"),
    field<&HwSDatablockCwop6VcoIdent::osc3Subh>("osc3_sub_h"),
    field<&HwSDatablockCwop6VcoIdent::osc3Subl>("osc3_sub_l"),
    field<&HwSDatablockCwop6VcoIdent::osc2Subh>("osc2_sub_h"),
    field<&HwSDatablockCwop6VcoIdent::osc2Subl>("osc2_sub_l"),
    field<&HwSDatablockCwop6VcoIdent::osc1Subh>("osc1_sub_h"));

template <>
inline constexpr auto recordFields<HwSDatablockMbrdSerialNumber> =
    describe<HwSDatablockMbrdSerialNumber>(field<&HwSDatablockMbrdSerialNumber::serialNumber>("serial_number"));

template <>
inline constexpr auto recordFields<HwSDatablockMbrdModel> =
    describe<HwSDatablockMbrdModel>(text<&HwSDatablockMbrdModel::model>("model"));

template <>
inline constexpr auto recordFields<HwSDatablockMbrdMac> =
    describe<HwSDatablockMbrdMac>(field<&HwSDatablockMbrdMac::macLength>("mac_length").in("byte").as(Role::Count),
                                  field<&HwSDatablockMbrdMac::mac>("mac").along(0, "byte", "mac_length"),
                                  field<&HwSDatablockMbrdMac::reserved>("reserved").as(Role::Reserved));

template <>
inline constexpr auto recordFields<HwSDatablockMbrdTimeMonitoringDataEx> =
    describe<HwSDatablockMbrdTimeMonitoringDataEx>(
        text<&HwSDatablockMbrdTimeMonitoringDataEx::date>("date"),
        field<&HwSDatablockMbrdTimeMonitoringDataEx::length>("data_length").in("byte").as(Role::Count),
        field<&HwSDatablockMbrdTimeMonitoringDataEx::data>("data").along(0, "byte", "data_length"));

/// A further ident block: of the stream option (identifier 10503) or of its auxiliary board (10504).
class TRAVIK_DATABLOCK_EXPORT HwDatablockMiscIdent : public IdentBlock {
public:
    /// The key name of identifiers 10503 and 10504; empty for any other.
    static std::string_view keyOf(int id);

    /// The variant is the block's identifier; every field 0. Stops a conversion walk on error.
    explicit HwDatablockMiscIdent(HwEVariantEepromDatablock variant);
    explicit HwDatablockMiscIdent(int variant)
        : HwDatablockMiscIdent(static_cast<HwEVariantEepromDatablock>(variant)) {}

    /// As constructed.
    HwEVariantEepromDatablock getMiscBlockId() const { return variant_; }

    HwSDatablockMiscIdent* getBlock() { return reinterpret_cast<HwSDatablockMiscIdent*>(getData()); }
    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockMiscIdent* record);
    /// Leaves the stream's fill character at "0" and its adjustment at right, as the ident block does.
    std::ostream& printToStream(std::ostream& os) override;

private:
    HwEVariantEepromDatablock variant_;
};

/// The identity of the oscillator on the CWOP6 board. Every setter refreshes the stored checksum.
class TRAVIK_DATABLOCK_EXPORT HwDatablockCwop6VcoIdent : public RecordBlock<HwSDatablockCwop6VcoIdent> {
public:
    static constexpr std::string_view keyName = "VCO_IDENT";

    /// Identifier 10502, all else 0. Stops a conversion walk on error.
    HwDatablockCwop6VcoIdent() : RecordBlock(10502, true) {}

    unsigned int getJobNumber() const { return get<&Record::jobNumber>(); }
    unsigned short getSerialNumber() const { return get<&Record::serialNumber>(); }
    unsigned short getLotNumber() const { return get<&Record::lotNumber>(); }
    unsigned short getTaz() const { return get<&Record::taz>(); }
    unsigned short getOsc3Subh() const { return get<&Record::osc3Subh>(); }
    unsigned short getOsc3Subl() const { return get<&Record::osc3Subl>(); }
    unsigned short getOsc2Subh() const { return get<&Record::osc2Subh>(); }
    unsigned short getOsc2Subl() const { return get<&Record::osc2Subl>(); }
    unsigned short getOsc1Subh() const { return get<&Record::osc1Subh>(); }

    void setJobNumber(unsigned int number) { set<&Record::jobNumber>(number); }
    void setSerialNumber(unsigned short number) { set<&Record::serialNumber>(number); }
    void setLotNumber(unsigned short number) { set<&Record::lotNumber>(number); }
    void setTaz(unsigned short taz) { set<&Record::taz>(taz); }
    void setOsc3Subh(unsigned short word) { set<&Record::osc3Subh>(word); }
    void setOsc3Subl(unsigned short word) { set<&Record::osc3Subl>(word); }
    void setOsc2Subh(unsigned short word) { set<&Record::osc2Subh>(word); }
    void setOsc2Subl(unsigned short word) { set<&Record::osc2Subl>(word); }
    void setOsc1Subh(unsigned short word) { set<&Record::osc1Subh>(word); }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockCwop6VcoIdent* record) { return takeOver(record, "HwDatablockCwop6VcoIdent"); }
    std::ostream& printToStream(std::ostream& os) override;
};

/// The instrument's serial number.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdSerialNumber : public RecordBlock<HwSDatablockMbrdSerialNumber> {
public:
    static constexpr std::string_view keyName = "SERIAL_NUMBER";

    /// Identifier 12000, serial number 0. Stops a conversion walk on error.
    HwDatablockMbrdSerialNumber() : RecordBlock(12000, true) {}

    unsigned int getSerialNumber() const { return get<&Record::serialNumber>(); }
    /// Refreshes the stored checksum.
    void setSerialNumber(unsigned int number) { set<&Record::serialNumber>(number); }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockMbrdSerialNumber* record) {
        return takeOver(record, "HwSDatablockMbrdSerialNumber");
    }
    /// Re-stores the block from a record of the other byte order, unchecked.
    void swapBlock(const HwSDatablockMbrdSerialNumber* record) { restore(record); }
    std::ostream& printToStream(std::ostream& os) override;
};

/// The instrument's model name.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdModel : public RecordBlock<HwSDatablockMbrdModel> {
public:
    static constexpr std::string_view keyName = "GENERATOR_MODEL";

    /// Identifier 12001, no name.
    HwDatablockMbrdModel() : RecordBlock(12001, false) {}

    /// At most 32 characters.
    QString getModel() const;
    /// Stores the Latin-1 form, cut at 31 characters, and refreshes the stored checksum.
    void setModel(const QString& model);

    /// Takes a record over, its name cut at 31 characters: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockMbrdModel* record);
    /// Re-stores the block from a record of the other byte order, unchecked, its name cut at 31 characters.
    void swapBlock(const HwSDatablockMbrdModel* record);
    std::ostream& printToStream(std::ostream& os) override;

private:
    void trimModel();
};

/// The instrument's network address. Prints nothing.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdMac : public RecordBlock<HwSDatablockMbrdMac> {
public:
    /// Identifier 12004, length 0, all bytes behind it 0xFF. Stops a conversion walk on error.
    HwDatablockMbrdMac();

    /// The stored length, which may exceed 16 in an image that was not written by this library.
    unsigned int getMacLength() const { return get<&Record::macLength>(); }
    /// The 16 bytes kept for the address; zeros where the buffer is too short. The stored length goes to `length`
    /// unless that is null.
    const unsigned char* getMac(unsigned int* length) const;
    /// Stores the length, cut to 16, and as many bytes, the rest of the 16 being 0xFF. Does not refresh the checksum.
    /// Null counts as no bytes.
    void setMac(const unsigned char* mac, unsigned int length);

    /// Takes alignment, all 16 address bytes (the length becomes 16) and the checksum word over: 0, or 1040000, which
    /// is also signalled, when its checksum is wrong or identifier and size are not 12004 and 256.
    int setBlock(const HwSDatablockMbrdMac* record);
};

/// The main board's time monitoring record. Prints nothing.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdTimeMonitoringData
    : public RecordBlock<HwSDatablockMbrdTimeMonitoringDataEx> {
public:
    /// Identifier 12008, no date, length 0, all data 0xFF. Stops a conversion walk on error.
    HwDatablockMbrdTimeMonitoringData();

    /// The 32 characters kept for the date, which may lack a NUL in an image that was not written by this library;
    /// zeros where the buffer is too short.
    const char* getDate() const { return loadBytes<&Record::date>(); }
    /// A text of 32 or more characters, or null, does nothing. Does not refresh the checksum.
    void setDate(const char* date);

    /// The stored length, which may exceed 128 in an image that was not written by this library.
    unsigned int getTimeMonitoringDataLength() const { return get<&Record::length>(); }
    /// The 128 data bytes; zeros where the buffer is too short. The stored length goes to `length` unless that is null.
    const unsigned char* getTimeMonitoringData(unsigned int* length) const;
    /// Stores the length, cut to 128, and as many bytes, the rest of the 128 being 0xFF. Does not refresh the checksum.
    /// Null counts as no bytes.
    void setTimeMonitoringData(const unsigned char* data, unsigned int length);

    /// Takes alignment, date (unless it fills its field), data and the checksum word over: 0, or 1040000, which is also
    /// signalled, when its checksum is wrong or identifier and size are not 12008 and 172.
    int setBlock(const HwSDatablockMbrdTimeMonitoringDataEx* record);
};

} // namespace Travik
