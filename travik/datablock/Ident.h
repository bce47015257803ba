#pragma once

#include <travik/datablock/RecordBlock.h>
#include <travik/datablock/TextWriter.h>

#include <QString>

namespace Travik {

#pragma pack(push, 1)
/// The identity of a module, or of a part of one: 44 bytes.
struct HwSDatablockIdent : HwSDatablockHeader {
    unsigned int eepromSize; ///< bytes
    unsigned int partNumber; ///< nnnnnnnn, printed as nnnn.nnnn
    unsigned char variant;   ///< third group of the part number
    unsigned char hardwareCode;
    unsigned short productIndex; ///< printed as two two-digit groups
    unsigned int serialNumber;
    unsigned short productDate; ///< bits 0-4 day, 5-8 month, 9-15 year minus 1980
    unsigned short readCode;
    unsigned short testInstruction; ///< printed as two two-digit groups
    char name[14];                  ///< Latin-1, NUL-terminated when shorter than the field
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockIdent) == 44);

/// Of the records that are laid out as the ident record, too.
template <std::derived_from<HwSDatablockIdent> R>
inline constexpr auto recordFields<R> = describe<R>(
    field<&R::eepromSize>("eeprom_size").in("byte"), field<&R::partNumber>("part_number"),
    field<&R::variant>("variant"), field<&R::hardwareCode>("hardware_code"), field<&R::productIndex>("product_index"),
    field<&R::serialNumber>("serial_number"), field<&R::productDate>("product_date").as(Role::Date),
    field<&R::readCode>("read_code"), field<&R::testInstruction>("test_instruction"), text<&R::name>("name"));

/// What the blocks of the ident record share: accessors and text form.
class TRAVIK_DATABLOCK_EXPORT IdentBlock : public RecordBlock<HwSDatablockIdent> {
public:
    unsigned int getEepromSize() const { return get<&Record::eepromSize>(); }
    unsigned int getPartNumber() const { return get<&Record::partNumber>(); }
    unsigned char getVariant() const { return get<&Record::variant>(); }
    unsigned char getHardwareCode() const { return get<&Record::hardwareCode>(); }
    unsigned short getProductIndex() const { return get<&Record::productIndex>(); }
    unsigned int getSerialNumber() const { return get<&Record::serialNumber>(); }
    unsigned short getProductDate() const { return get<&Record::productDate>(); }
    unsigned short getReadCode() const { return get<&Record::readCode>(); }
    unsigned short getTestInstruction() const { return get<&Record::testInstruction>(); }
    /// At most 14 characters.
    QString getName() const;

    // Every setter refreshes the stored checksum.
    void setEepromSize(unsigned int size) { set<&Record::eepromSize>(size); }
    void setPartNumber(unsigned int number) { set<&Record::partNumber>(number); }
    void setVariant(unsigned char variant) { set<&Record::variant>(variant); }
    void setHardwareCode(unsigned char code) { set<&Record::hardwareCode>(code); }
    void setProductIndex(unsigned short index) { set<&Record::productIndex>(index); }
    void setSerialNumber(unsigned int number) { set<&Record::serialNumber>(number); }
    void setProductDate(unsigned short date) { set<&Record::productDate>(date); }
    void setReadCode(unsigned short code) { set<&Record::readCode>(code); }
    void setTestInstruction(unsigned short instruction) { set<&Record::testInstruction>(instruction); }
    /// Stores the Latin-1 form, cut at 14 characters.
    void setName(const QString& name);

protected:
    using RecordBlock::RecordBlock;

    /// What is stored of a name ends at its first NUL.
    void trimName() { putText<&Record::name>(loadText<&Record::name>()); }
    /// The lines from PARTNUMBER to NAME; whatever follows the name is printed behind it. Leaves the stream's fill at
    /// "0" and its adjustment at right.
    void printIdentity(TextWriter& out, std::string_view behindName = {}) const;
};

/// The ident block: the head of a module's EEPROM contents.
class TRAVIK_DATABLOCK_EXPORT HwDatablockIdent : public IdentBlock {
public:
    static constexpr std::string_view keyName = "IDENT_2";

    /// Identifier 2, all else 0; stops a conversion walk on error.
    HwDatablockIdent();

    /// Takes a record over, its alignment word included: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockIdent* record);
    /// Re-stores the block from a record of the other byte order, unchecked.
    void swapBlock(const HwSDatablockIdent* record);
    /// As `printIdentity` says, leaves the stream's fill character and adjustment changed.
    std::ostream& printToStream(std::ostream& os) override;
};

} // namespace Travik
