#pragma once

#include <travik/tables/PathTables.h>

/// The main board's level correction of the external calibration paths: a block of frequency points and a block of
/// corrections, one row a level step and one column a frequency point. Two editions, each also enhanced (`_Enh`) to 500
/// points.
namespace Travik {

/// What the blocks of frequency points share. Points are stored in units of 10 Hz.
template <class R>
class ExtLevCalFrequencies : public PathFrequencies<R> {
public:
    using ExtLevCalFrequencies::PathFrequencies::PathFrequencies;

    /// In Hz; a point that is stored equal to the one before reads 0.01 Hz higher.
    double getFrequencyValue(unsigned int k) const {
        return detail::tenHertzPoint(this->image(), ExtLevCalFrequencies::capacity, k);
    }
};

/// What the blocks of corrections share.
template <class R>
class ExtLevCalCorrections : public PathBlock<StepBlock<R>> {
public:
    using ExtLevCalCorrections::PathBlock::PathBlock;

    /// The low 16 bits of the stored count.
    unsigned short getNumberOfLevelSteps() const { return static_cast<unsigned short>(this->count()); }
    void setNumberOfLevelSteps(unsigned short steps) { this->storeSteps(steps); }
    short getCorLevelValue(unsigned char row, unsigned int column) const { return this->value(row, column); }
    void setCorLevelValue(short value, unsigned char row, unsigned int column) { this->storeValue(value, row, column); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdExtLevCalDataFreq : CountedRecord<unsigned int[260], 1052> {
    static const ListTable table;
};
/// 12050 to 12053: frequency points, first edition.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtLevCalDataFreq
    : public ExtLevCalFrequencies<HwSDatablockMbrdExtLevCalDataFreq> {
    using ExtLevCalFrequencies::ExtLevCalFrequencies;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdExtLevCalDataFreq2Edition : CountedRecord<unsigned int[260], 1052> {
    static const ListTable table;
};
/// 12150 to 12153: frequency points, second edition.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtLevCalDataFreq2Edition
    : public ExtLevCalFrequencies<HwSDatablockMbrdExtLevCalDataFreq2Edition> {
    using ExtLevCalFrequencies::ExtLevCalFrequencies;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdExtLevCalDataFreq_Enh : CountedRecord<unsigned int[500], 2012> {
    static const ListTable table;
};
/// 12070 and 12071: frequency points, first edition, enhanced.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtLevCalDataFreq_Enh
    : public ExtLevCalFrequencies<HwSDatablockMbrdExtLevCalDataFreq_Enh> {
    using ExtLevCalFrequencies::ExtLevCalFrequencies;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdExtLevCalDataFreq2Edition_Enh : CountedRecord<unsigned int[500], 2012> {
    static const ListTable table;
};
/// 12090 and 12091: frequency points, second edition, enhanced.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtLevCalDataFreq2Edition_Enh
    : public ExtLevCalFrequencies<HwSDatablockMbrdExtLevCalDataFreq2Edition_Enh> {
    using ExtLevCalFrequencies::ExtLevCalFrequencies;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdExtLevCalData : CountedRecord<short[7][260], 3652, int> {
    static const StepTable table;
};
/// 12060 to 12063: corrections, first edition.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtLevCalData
    : public ExtLevCalCorrections<HwSDatablockMbrdExtLevCalData> {
    using ExtLevCalCorrections::ExtLevCalCorrections;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdExtLevCalData2Edition : CountedRecord<short[7][260], 3652, int> {
    static const StepTable table;
};
/// 12160 to 12163: corrections, second edition.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtLevCalData2Edition
    : public ExtLevCalCorrections<HwSDatablockMbrdExtLevCalData2Edition> {
    using ExtLevCalCorrections::ExtLevCalCorrections;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdExtLevCalData_Enh : CountedRecord<short[7][500], 7012, int> {
    static const StepTable table;
};
/// 12080 and 12081: corrections, first edition, enhanced.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtLevCalData_Enh
    : public ExtLevCalCorrections<HwSDatablockMbrdExtLevCalData_Enh> {
    using ExtLevCalCorrections::ExtLevCalCorrections;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdExtLevCalData2Edition_Enh : CountedRecord<short[13][500], 13012, int> {
    static const StepTable table;
};
/// 12095 and 12096: corrections, second edition, enhanced. A block has 13 or 7 rows from its construction on:
/// accessors, take-over and text keep to them, whatever buffer it is given.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdExtLevCalData2Edition_Enh
    : public ExtLevCalCorrections<HwSDatablockMbrdExtLevCalData2Edition_Enh> {
public:
    /// Size 13012 chooses 13 rows, any other 7 rows (7012 bytes).
    HwDatablockMbrdExtLevCalData2Edition_Enh(int instance, bool stopConversionOnError, int size);

    short getCorLevelValue(unsigned char row, unsigned int column) const;
    void setCorLevelValue(short value, unsigned char row, unsigned int column);

    /// Reads only as many bytes of the record as the block has.
    int setBlock(const Record* record);
    std::ostream& printToStream(std::ostream& os) override;

private:
    unsigned short size_;

    unsigned int usableRows() const { return size_ == recordSize ? rows : 7; }
};

} // namespace Travik
