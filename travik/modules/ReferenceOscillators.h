#pragma once

#include <travik/datablock/Latin1.h>
#include <travik/datablock/RecordBlock.h>

#include <concepts>

/// The fine-tuning values of the synthesizer boards' reference oscillators: one value a board, the same block on four
/// boards.
namespace Travik {

#pragma pack(push, 1)
struct ReferenceOscillatorValue : HwSDatablockHeader {
    unsigned int count; ///< at most 1
    int refCalValue;    ///< tuning value
};

struct HwSDatablockSsynOcxoRefCalValue : ReferenceOscillatorValue {};
struct HwSDatablockSynexOcxoRefCalValue : ReferenceOscillatorValue {};
struct HwSDatablockFsynTcxoRefCalValue : ReferenceOscillatorValue {};
struct HwSDatablockPokOcxoRefCalValue : ReferenceOscillatorValue {};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockSsynOcxoRefCalValue) == 16 && sizeof(HwSDatablockSynexOcxoRefCalValue) == 16);
static_assert(sizeof(HwSDatablockFsynTcxoRefCalValue) == 16 && sizeof(HwSDatablockPokOcxoRefCalValue) == 16);

template <std::derived_from<ReferenceOscillatorValue> R>
inline constexpr auto recordFields<R> = describe<R>(field<&R::count>("count").as(Role::Count),
                                                    field<&R::refCalValue>("ref_cal_value"));

/// What tells the blocks apart.
struct ReferenceOscillatorKind {
    unsigned short id;
    std::string_view keyName;
    const char* errorName; ///< named when a record is refused
    std::string_view comment;
    std::string_view range; ///< a second line of comment; empty: none
    /// Whether a take-over keeps the record's alignment word, and takes a record with a wrong checksum all the same if
    /// its other header words are identifier, size and 0.
    bool tolerant;
};

template <class Record>
inline constexpr ReferenceOscillatorKind referenceOscillatorKind{};
// clang-format off
template <> inline constexpr ReferenceOscillatorKind referenceOscillatorKind<HwSDatablockSsynOcxoRefCalValue>{
    10000, "SSYN_OCXO_REF_CAL_VALUE", "HwDatablockSsynOcxoRefCalValue",
    "# Das sind die Ssyn_Ocxo Kalibrierwerte", "", true};
template <> inline constexpr ReferenceOscillatorKind referenceOscillatorKind<HwSDatablockSynexOcxoRefCalValue>{
    15000, "SYNEX_OCXO_REF_CAL_VALUE", "HwDatablockSynexOcxoRefCalValue",
    "# Das sind die Synex_Ocxo Kalibrierwerte", "", false};
template <> inline constexpr ReferenceOscillatorKind referenceOscillatorKind<HwSDatablockFsynTcxoRefCalValue>{
    15001, "FSYN_TCXO_REF_CAL_VALUE", "HwDatablockFsynTcxoRefCalValue",
    "# Das sind die Fsyn_Ocxo Kalibrierwerte", "", false};
template <> inline constexpr ReferenceOscillatorKind referenceOscillatorKind<HwSDatablockPokOcxoRefCalValue>{
    15002, "POK_OCXO_REF_CAL_VALUE", "HwDatablockPokOcxoRefCalValue",
    "#Kalibrierwert für den Feinabgleich der OCXO-Frequenz"_latin1, "# Wertebereich: 0...65535", false};
// clang-format on

/// The fine-tuning value of a reference oscillator.
template <class R>
class ReferenceOscillatorBlock : public RecordBlock<R> {
public:
    static constexpr ReferenceOscillatorKind kind = referenceOscillatorKind<R>;
    static constexpr std::string_view keyName = kind.keyName;

    explicit ReferenceOscillatorBlock(bool stopConversionOnError = false)
        : RecordBlock<R>(kind.id, stopConversionOnError) {}

    unsigned int getCount() const { return this->template get<&R::count>(); }
    /// Refreshes the checksum.
    void setCount(unsigned char count) { this->template set<&R::count>(count); }
    /// The tuning value for index 0, otherwise 0.
    int getOcxoRefCalValue(unsigned char index) const { return index == 0 ? this->template get<&R::refCalValue>() : 0; }
    /// Stores the value, reads it back and refreshes the checksum: 0, or -1 and error 1040002 when another value is
    /// read. Does nothing and returns 0 for an index other than 0.
    int setOcxoRefCalValue(int value, unsigned char index);

    /// Takes a record over, of its count the low 8 bits: 0, or 1 and error 1040001 when its checksum is wrong. What is
    /// different on the SSYN board, see `ReferenceOscillatorKind::tolerant`.
    int setBlock(const R* record);
    std::ostream& printToStream(std::ostream& os) override;

private:
    int readBack(int value);
};

extern template class TRAVIK_DATABLOCK_EXPORT ReferenceOscillatorBlock<HwSDatablockSsynOcxoRefCalValue>;
extern template class TRAVIK_DATABLOCK_EXPORT ReferenceOscillatorBlock<HwSDatablockSynexOcxoRefCalValue>;
extern template class TRAVIK_DATABLOCK_EXPORT ReferenceOscillatorBlock<HwSDatablockFsynTcxoRefCalValue>;
extern template class TRAVIK_DATABLOCK_EXPORT ReferenceOscillatorBlock<HwSDatablockPokOcxoRefCalValue>;

/// OCXO of the SSYN board.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSsynOcxoRefCalValue
    : public ReferenceOscillatorBlock<HwSDatablockSsynOcxoRefCalValue> {
    using ReferenceOscillatorBlock::ReferenceOscillatorBlock;
};

/// OCXO of the SYNEX board.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSynexOcxoRefCalValue
    : public ReferenceOscillatorBlock<HwSDatablockSynexOcxoRefCalValue> {
    using ReferenceOscillatorBlock::ReferenceOscillatorBlock;
};

/// TCXO of the FSYN board.
class TRAVIK_DATABLOCK_EXPORT HwDatablockFsynTcxoRefCalValue
    : public ReferenceOscillatorBlock<HwSDatablockFsynTcxoRefCalValue> {
    using ReferenceOscillatorBlock::ReferenceOscillatorBlock;
};

/// OCXO of the POK board: 0..65535.
class TRAVIK_DATABLOCK_EXPORT HwDatablockPokOcxoRefCalValue
    : public ReferenceOscillatorBlock<HwSDatablockPokOcxoRefCalValue> {
    using ReferenceOscillatorBlock::ReferenceOscillatorBlock;
};

} // namespace Travik
