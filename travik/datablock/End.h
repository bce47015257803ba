#pragma once

#include <travik/datablock/HwDatablock.h>

#include <concepts>
#include <string_view>

namespace Travik {

#pragma pack(push, 1)
/// The end block's whole image: 4 bytes, without size, checksum and alignment words.
struct HwSDatablockEnd {
    unsigned short id;   ///< 0xFFFF
    unsigned short data; ///< one data word

    friend bool operator==(const HwSDatablockEnd&, const HwSDatablockEnd&) = default;
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockEnd) == 4);

/// Marks the end of a module's sequence of blocks. Carries no checksum: every check of it passes.
class TRAVIK_DATABLOCK_EXPORT HwDatablockEnd : public HwDatablock {
public:
    static constexpr std::string_view keyName = "END";

    /// FF FF 00 00; stops a conversion walk on error.
    HwDatablockEnd();

    HwSDatablockEnd* getBlock() { return reinterpret_cast<HwSDatablockEnd*>(getData()); }
    /// Writes the image of a new end block.
    void setEndBlock();
    void setEndBlockID(unsigned short id);
    void setEndBlockData(unsigned short data);
    /// Takes both words over: 0, or 1 and nothing done for null.
    int setBlock(const HwSDatablockEnd* record);

    using HwDatablock::computeChecksum;
    using HwDatablock::verifyChecksum;
    unsigned short computeChecksum() override;
    /// The buffer's length, 0 when it holds fewer than 4 bytes.
    unsigned short getBlockSize() override;
    unsigned short getChecksum() override;
    bool verifyChecksum() override;
    void setChecksum(unsigned short checksum) override;
    std::ostream& printToStream(std::ostream& os) override;

    virtual unsigned short computeChecksum(unsigned short* record, short size);
    virtual bool verifyChecksum(unsigned short* record, short size);
    /// A size of any other type, a plain number say, means the end block's own operation as well.
    template <std::integral Size>
    unsigned short computeChecksum(unsigned short* record, Size size) {
        return computeChecksum(record, static_cast<short>(size));
    }
};

} // namespace Travik
