#pragma once

#include <travik/datablock/RecordBlock.h>

/// The values that the SSYN synthesizer board keeps for its output unit (OPU): three coefficients, and up to fifty
/// levels with their frequency points.
namespace Travik {

#pragma pack(push, 1)
/// 36 bytes.
struct HwSDatablockSsynOpuDblCoefficient : HwSDatablockHeader {
    unsigned int count;
    double values[3];
};

/// 412 bytes.
struct HwSDatablockSsynOpuLevelFreq : HwSDatablockHeader {
    unsigned int count;
    double values[50];
};

/// 212 bytes.
struct HwSDatablockSsynOpuLevel : HwSDatablockHeader {
    unsigned int count;
    unsigned int values[50]; ///< mV
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockSsynOpuDblCoefficient) == 36);
static_assert(sizeof(HwSDatablockSsynOpuLevelFreq) == 412);
static_assert(sizeof(HwSDatablockSsynOpuLevel) == 212);

template <>
inline constexpr auto recordFields<HwSDatablockSsynOpuDblCoefficient> = describe<HwSDatablockSsynOpuDblCoefficient>(
    field<&HwSDatablockSsynOpuDblCoefficient::count>("count").as(Role::Count),
    field<&HwSDatablockSsynOpuDblCoefficient::values>("coefficient").along(0, "coefficient"));

template <>
inline constexpr auto recordFields<HwSDatablockSsynOpuLevelFreq> = describe<HwSDatablockSsynOpuLevelFreq>(
    field<&HwSDatablockSsynOpuLevelFreq::count>("count").as(Role::Count),
    field<&HwSDatablockSsynOpuLevelFreq::values>("frequency").as(Role::Axis).along(0, "point", "count"));

template <>
inline constexpr auto recordFields<HwSDatablockSsynOpuLevel> = describe<HwSDatablockSsynOpuLevel>(
    field<&HwSDatablockSsynOpuLevel::count>("count").as(Role::Count),
    field<&HwSDatablockSsynOpuLevel::values>("level").in("mV").along(0, "point", "count", 10002));

/// What the three blocks do the same way: a count and as many values, 0 out of range. Setters refresh the checksum and
/// do nothing out of range.
template <class R>
class OutputUnitBlock : public RecordBlock<R> {
public:
    /// As stored; may exceed the capacity in an image that was not written by this library.
    unsigned int getCount() const { return this->template get<&R::count>(); }
    void setCount(unsigned char count) { this->template set<&R::count>(count); }

protected:
    using Value = std::remove_extent_t<decltype(R::values)>;
    using RecordBlock<R>::RecordBlock;

    Value value(unsigned int index) const { return this->template get<&R::values>(index); }
    void storeValue(Value value, unsigned int index) { this->template set<&R::values>(value, index); }
    /// As `takeOver`, of the count the low 8 bits.
    int takeValuesOver(const R* record, const char* errorName) {
        return this->takeOver(record, errorName, 0, [this] { this->template put<&R::count>(getCount() & 0xFFU); });
    }
};

/// Three coefficients, 0..2. Prints them with none, three and six decimals, whatever the count.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSsynOpuDblCoefficient
    : public OutputUnitBlock<HwSDatablockSsynOpuDblCoefficient> {
public:
    static constexpr std::string_view keyName = "SSYN_OPU_DBL_COEFFICIENT";

    explicit HwDatablockSsynOpuDblCoefficient(bool stopConversionOnError = false)
        : OutputUnitBlock(10001, stopConversionOnError) {}

    double getOpuDblCoefficient(unsigned char index) const { return value(index); }
    void setOpuDblCoefficient(double coefficient, unsigned char index) { storeValue(coefficient, index); }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockSsynOpuDblCoefficient* record) {
        return takeValuesOver(record, "HwDatablockSsynOpuDblCoefficient");
    }
    std::ostream& printToStream(std::ostream& os) override;
};

/// The frequency points of the levels, 0..49.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSsynOpuLevelFreq : public OutputUnitBlock<HwSDatablockSsynOpuLevelFreq> {
public:
    static constexpr std::string_view keyName = "SSYN_OPU_LEVEL_FREQ";

    explicit HwDatablockSsynOpuLevelFreq(bool stopConversionOnError = false)
        : OutputUnitBlock(10002, stopConversionOnError) {}

    double getOpuLevelFreq(unsigned char index) const { return value(index); }
    void setOpuLevelFreq(double frequency, unsigned char index) { storeValue(frequency, index); }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockSsynOpuLevelFreq* record) {
        return takeValuesOver(record, "HwDatablockSsynOpuLevelFreq");
    }
    std::ostream& printToStream(std::ostream& os) override;
};

/// The levels in mV, 0..49.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSsynOpuLevel : public OutputUnitBlock<HwSDatablockSsynOpuLevel> {
public:
    static constexpr std::string_view keyName = "SSYN_OPU_LEVEL";

    explicit HwDatablockSsynOpuLevel(bool stopConversionOnError = false)
        : OutputUnitBlock(10003, stopConversionOnError) {}

    unsigned int getOpuLevel(unsigned char index) const { return value(index); }
    void setOpuLevel(unsigned int millivolts, unsigned char index) { storeValue(millivolts, index); }

    /// Takes a record over: 0, or 1 and error 1040001 when its checksum is wrong.
    int setBlock(const HwSDatablockSsynOpuLevel* record) { return takeValuesOver(record, "HwDatablockSsynOpuLevel"); }
    std::ostream& printToStream(std::ostream& os) override;
};

} // namespace Travik
