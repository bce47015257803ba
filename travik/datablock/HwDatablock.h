#pragma once

#include <travik/datablock/Export.h>
#include <travik/datablock/HwObject.h>
#include <travik/platform/QMemArray.h>

#include <concepts>
#include <cstdint>
#include <iosfwd>
#include <span>

namespace Travik {

/// The byte order a block's buffer is in. Values other than the firmware order are only compared for equality.
enum HwEDataFormatTyp : std::int32_t {
    HwDataFormatFirmware = 0, ///< little-endian, as images are stored and checksums computed; new blocks start in it
    HwDataFormatForeign = 1   ///< the other byte order
};

#pragma pack(push, 1)
/// The four words every stored image and every typed record begins with.
struct HwSDatablockHeader {
    unsigned short id;        ///< which kind of block; 0xFFFF marks the end block
    unsigned short blockSize; ///< bytes, header included
    unsigned short checksum;  ///< makes the 16-bit sum of all words of the image zero
    unsigned short alignment;

    friend bool operator==(const HwSDatablockHeader&, const HwSDatablockHeader&) = default;
};
#pragma pack(pop)

/// Records that nothing says how to compare do not compile: they would compare as the base that they have in common,
/// and so be equal when only their headers are. That is two records of different types, a record and a header, and a
/// record without a field list of its own.
template <std::derived_from<HwSDatablockHeader> Left, std::derived_from<HwSDatablockHeader> Right>
bool operator==(const Left&, const Right&) = delete;

/// The base of every data block: the stored image in a byte buffer, exactly as it lies in the module's memory, and
/// where it lies there.
///
/// - The buffer is shared explicitly: a change through one block, a resize included, is seen by every block that shares
///   it. Only `setData` from raw bytes makes it private.
/// - Header getters answer 0 where the buffer is too short for the word; setters do nothing there.
/// - Setters of identifier, size and alignment, and every setter of a concrete block, refresh the stored checksum.
/// - Nothing throws, but for an allocation that fails, and a stream where its exception mask asks for it, once a print.
/// - A block, and every block that shares its buffer, is used from one thread at a time.
///
/// Concrete blocks add `getBlock()` (the buffer as their typed record; only a buffer at least as long as the record may
/// be read through it), `setBlock(record)` (takes a whole record over: 0, or 1 when its checksum is wrong, which is
/// signalled as error 1040001 and leaves the block unchanged) and typed accessors. A null record is refused as one with
/// a wrong checksum is, with 1 by classes that refuse no other; `swapBlock` does nothing for it.
class TRAVIK_DATABLOCK_EXPORT HwDatablock : public HwObject {
public:
    /// An 8-byte image: identifier 0, size 8, checksum 0, alignment 0. The flag is stored for a caller that converts a
    /// series of blocks: whether a failure on this one ends the walk.
    explicit HwDatablock(bool stopConversionOnError);
    HwDatablock(const HwDatablock&) = default;
    HwDatablock& operator=(const HwDatablock&) = default;
    ~HwDatablock() override;

    /// The checksum of the block's own image. Leaves the stored checksum word 0: callers store the result.
    virtual unsigned short computeChecksum();
    /// The checksum of a record of `size` bytes in the caller's memory, its checksum word taken as 0. Null: 0.
    virtual unsigned short computeChecksum(unsigned short* record, unsigned short size);

    virtual unsigned short getId();
    /// The size word; 4 for an end block's image, 0 when the buffer holds fewer than 4 bytes.
    virtual unsigned short getBlockSize();
    virtual unsigned short getChecksum();
    virtual unsigned short getAlignment();
    /// The first byte of the buffer; valid until the buffer is replaced or resized.
    virtual char* getData();
    /// The buffer, shared.
    virtual QMemArray<char> getByteArrayData();
    virtual unsigned int getEepromAddress();
    virtual unsigned int getEepromSector();
    virtual HwEDataFormatTyp getDataFormatTyp();
    virtual bool getStopConversionOnError();

    /// Shares the other block's buffer; format, address and sector stay. Null does nothing.
    virtual void replaceDataInList(HwDatablock* other);

    /// Whether the block's own image sums to 0. A size word of 0 fails; size 1 or 0x8000 and above passes unread. A
    /// size beyond the buffer is bounded by the buffer. A failure is a debug line, not an error.
    virtual bool verifyChecksum();
    /// Whether a record of `size` bytes in the caller's memory sums to 0; one of less than a word does, and null has no
    /// more than that. The flag has no effect.
    virtual bool verifyChecksum(unsigned short* record, unsigned short size, bool flag);

    virtual void setBlockId(unsigned short id);
    virtual void setBlockSize(unsigned short size);
    virtual void setChecksum(unsigned short checksum);
    virtual void setAlignment(unsigned short alignment);

    /// Shares the array as buffer; returns whether its checksum holds. The buffer is replaced all the same.
    virtual bool setData(QMemArray<char> data);
    /// Shares the source's buffer and takes its data format; returns the source's own verification. Null: false.
    virtual bool setData(HwDatablock* source);
    /// As `setData(source)` without verification: true, or false for null.
    virtual bool setDataWithoutChecksumCheck(HwDatablock* source);
    /// Takes a private copy of the bytes; returns whether the checksum holds. Null: false, nothing changes.
    virtual bool setData(const unsigned char* bytes, unsigned int size);
    /// Converts the source in place to the firmware order, then shares its buffer. Returns the verification of the
    /// outcome; false for null.
    virtual bool setHwDatablockFirmwareConform(HwDatablock* source);

    virtual bool setEepromAddress(unsigned int address);
    virtual bool setEepromSector(unsigned int sector);
    /// Relabels the buffer; converts nothing (that is `swapDataTo`).
    virtual bool setDataFormatTyp(HwEDataFormatTyp format);
    /// Changes the buffer's length for every block that shares it; a grown tail is zero.
    virtual void resizeData(unsigned int size);

    /// Prints the block as commented text (Latin-1), each line flushed; the base prints nothing.
    virtual std::ostream& printToStream(std::ostream& os);

    /// The CRC-32 stored at offset 8; 0 when the buffer is too short.
    unsigned int getChecksum32();
    /// The CRC-32 of the block's image, whatever byte order it is in: all but offsets 4 to 11.
    unsigned int computeChecksum32();
    /// The same of the caller's bytes; 0 for none and for null.
    unsigned int computeChecksum32(unsigned char* bytes, unsigned int size);
    /// Whether the stored CRC-32 matches the image.
    bool verifyChecksum32();
    /// Compares the CRC-32 of the caller's bytes with the one stored in this block, not with one in those bytes. Null
    /// bytes: false.
    bool verifyChecksum32(unsigned char* bytes, unsigned int size);

    /// Brings the block, which is `id`, into the wanted format. Does nothing for a block that is in it already, carries
    /// a CRC-32 that matches, or is of a kind that is not converted, nor for null. Of the block it is called on it uses
    /// nothing.
    void swapDataTo(HwEDataFormatTyp format, unsigned short id, HwDatablock* block);

    /// Conversion of one value between host and firmware order; the identity on this library's little-endian hosts.
    void SwapIntel2Ppc(unsigned short&) {}
    void SwapIntel2Ppc(short&) {}
    void SwapIntel2Ppc(unsigned int&) {}
    void SwapIntel2Ppc(int&) {}
    void SwapIntel2Ppc(float&) {}
    void SwapIntel2Ppc(double&) {}
    void SwapCharString(char*, unsigned int) {}

    /// Registers the library's error definitions with the error manager; later calls in a process do nothing.
    static void registerErrors();

protected:
    /// The whole buffer, for the loads and stores of `Bytes.h`.
    std::span<char> image() { return {data_.data(), data_.size()}; }
    std::span<const char> image() const { return {data_.data(), data_.size()}; }

    /// A block with a new image, as `initialise` makes it.
    HwDatablock(unsigned short id, unsigned short size, bool stopConversionOnError);

    /// A new image in place of the block's own: `size` zero bytes, then identifier and size.
    void initialise(unsigned short id, unsigned short size);
    /// Stores a taken-over record's header words; the checksum is the caller's to store afterwards.
    void storeHeader(unsigned short id, unsigned short size, unsigned short alignment);
    /// Stores the checksum that fits the image.
    void refreshChecksum();
    /// Signals an error of the table with three blanks and the name as context.
    static void signalError(int code, const char* name);

private:
    bool stopConversionOnError_;
    unsigned int eepromAddress_ = 0;
    unsigned int eepromSector_ = 0;
    HwEDataFormatTyp dataFormatTyp_ = HwDataFormatFirmware;
    QMemArray<char> data_;

    std::size_t summedBytes();
    void reportWrongChecksum();
};

} // namespace Travik
