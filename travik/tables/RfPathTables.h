#pragma once

#include <travik/tables/PathTables.h>

/// The main board's RF paths: correction of the IQ imbalance over up to 600 RF frequencies, and the RF frequency
/// response as polynomials over up to 200 frequencies of the attenuators or 150 of each low-pass filter.
namespace Travik {

// IQ imbalance

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdIqImbalanceRfFreq : CountedRecord<unsigned int[600], 2412> {
    static const ListTable table;
};
/// 12100 to 12103: frequency points, in MHz.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdIqImbalanceRfFreq
    : public PathBlock<ListBlock<HwSDatablockMbrdIqImbalanceRfFreq>> {
public:
    using PathBlock::PathBlock;

    unsigned int getNumberOfIqImbalanceRfFreq() const { return count(); }
    void setNumberOfIqImbalanceRfFreq(unsigned int count) { storeCount(count); }
    unsigned int getIqImbalanceRfFreq(unsigned int k) const { return value(k); }
    void setIqImbalanceRfFreq(unsigned int value, unsigned int k) { storeValue(value, k); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdIqImbalanceRfEvenAmp : CountedRecord<short[600], 1212> {
    static const ListTable table;
};
/// 12110 to 12113: even amplitude, in 1/10000.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdIqImbalanceRfEvenAmp
    : public PathBlock<ListBlock<HwSDatablockMbrdIqImbalanceRfEvenAmp>> {
public:
    using PathBlock::PathBlock;

    unsigned int getNumberOfIqImbalanceRfEvenAmp() const { return count(); }
    void setNumberOfIqImbalanceRfEvenAmp(unsigned int count) { storeCount(count); }
    short getIqImbalanceRfEvenAmp(unsigned int k) const { return value(k); }
    void setIqImbalanceRfEvenAmp(short value, unsigned int k) { storeValue(value, k); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdIqImbalanceRfEvenPh : CountedRecord<short[600], 1212> {
    static const ListTable table;
};
/// 12120 to 12123: even phase, in 1/100.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdIqImbalanceRfEvenPh
    : public PathBlock<ListBlock<HwSDatablockMbrdIqImbalanceRfEvenPh>> {
public:
    using PathBlock::PathBlock;

    unsigned int getNumberOfIqImbalanceRfEvenPh() const { return count(); }
    void setNumberOfIqImbalanceRfEvenPh(unsigned int count) { storeCount(count); }
    short getIqImbalanceRfEvenPh(unsigned int k) const { return value(k); }
    void setIqImbalanceRfEvenPh(short value, unsigned int k) { storeValue(value, k); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdIqImbalanceRfOddAmp : CountedRecord<short[600], 1212> {
    static const ListTable table;
};
/// 12130 to 12133: odd amplitude, in 1/10000.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdIqImbalanceRfOddAmp
    : public PathBlock<ListBlock<HwSDatablockMbrdIqImbalanceRfOddAmp>> {
public:
    using PathBlock::PathBlock;

    unsigned int getNumberOfIqImbalanceRfOddAmp() const { return count(); }
    void setNumberOfIqImbalanceRfOddAmp(unsigned int count) { storeCount(count); }
    short getIqImbalanceRfOddAmp(unsigned int k) const { return value(k); }
    void setIqImbalanceRfOddAmp(short value, unsigned int k) { storeValue(value, k); }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdIqImbalanceRfOddPh : CountedRecord<short[600], 1212> {
    static const ListTable table;
};
/// 12140 to 12143: odd phase, in 1/100. A count above 600 is not stored.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdIqImbalanceRfOddPh
    : public PathBlock<ListBlock<HwSDatablockMbrdIqImbalanceRfOddPh>> {
public:
    using PathBlock::PathBlock;

    unsigned int getNumberOfIqImbalanceRfOddPh() const { return count(); }
    void setNumberOfIqImbalanceRfOddPh(unsigned int count) { storeCount(count); }
    short getIqImbalanceRfOddPh(unsigned int k) const { return value(k); }
    void setIqImbalanceRfOddPh(short value, unsigned int k) { storeValue(value, k); }
};

// RF frequency response

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdRfResponseAttFreq : CountedRecord<unsigned int[200], 812> {
    static const ListTable table;
};
/// 12260 to 12263: RF frequency points of the attenuators, in MHz.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdRfResponseAttFreq
    : public PathFrequencies<HwSDatablockMbrdRfResponseAttFreq> {
    using PathFrequencies::PathFrequencies;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdRfResponseBbFreq : CountedRecord<int[100], 412> {
    static const ListTable table;
};
/// 12250 to 12253: frequency points of the baseband, in kHz, signed.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdRfResponseBbFreq
    : public PathFrequencies<HwSDatablockMbrdRfResponseBbFreq> {
    using PathFrequencies::PathFrequencies;
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdRfResponseIoPepInfo : CountedRecord<unsigned int[20], 92> {
    static const ListTable table;
};
/// 12220 to 12223: calibration levels, in 1/100 dB.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdRfResponseIoPepInfo
    : public PathBlock<ListBlock<HwSDatablockMbrdRfResponseIoPepInfo>> {
public:
    using PathBlock::PathBlock;

    unsigned int getCountOfIoPepInfoValues() const { return count(); }
    void setCountOfIoPepInfoValues(unsigned int count) { storeCount(count); }
    unsigned int getIoPepInfoValue(unsigned int k) const { return value(k); }
    void setIoPepInfoValue(unsigned int value, unsigned int k) { storeValue(value, k); }
};

#pragma pack(push, 1)
/// The polynomial of an attenuator's amplitude at one frequency; coefficients stored times 10000.
struct HwSAttPolynomValues {
    short c0;
    short c1;
    short c2;
    short c3;

    friend bool operator==(const HwSAttPolynomValues&, const HwSAttPolynomValues&) = default;
};

/// The polynomial of a low-pass filter at one frequency. Of the amplitude, c0 is stored times 460, c1 times 300, c2
/// times 190, and of c3 its distance from 1 times 3200; of the phase, all are stored times 3.
struct HwSPolynomValues {
    signed char c0;
    signed char c1;
    signed char c2;
    signed char c3;

    friend bool operator==(const HwSPolynomValues&, const HwSPolynomValues&) = default;
};

/// Nine low-pass filters with a count each.
template <class Values, unsigned int Size>
struct LowPassRecord : HwSDatablockHeader {
    unsigned int counts[9]; ///< frequency points in use of each filter
    Values values;

    static_assert(sizeof(HwSDatablockHeader) + sizeof counts + sizeof(Values) == Size);
};
#pragma pack(pop)

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdRfResponseAttAmpl : CountedRecord<HwSAttPolynomValues[6][200], 9612> {
    static const PlainTable table;
};

template <>
inline constexpr auto recordFields<HwSDatablockMbrdRfResponseAttAmpl> = describe<HwSDatablockMbrdRfResponseAttAmpl>(
    field<&HwSDatablockMbrdRfResponseAttAmpl::count>("count").as(Role::Count),
    entries<&HwSDatablockMbrdRfResponseAttAmpl::values>(field<&HwSAttPolynomValues::c0>("c0").in("", 1e-4),
                                                        field<&HwSAttPolynomValues::c1>("c1").in("", 1e-4),
                                                        field<&HwSAttPolynomValues::c2>("c2").in("", 1e-4),
                                                        field<&HwSAttPolynomValues::c3>("c3").in("", 1e-4))
        .along(0, "attenuator")
        .along(1, "point", "count", 12260));

/// 12270 to 12273: amplitude polynomials of the six attenuators over the frequencies of 12260.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdRfResponseAttAmpl
    : public PathBlock<CountedBlock<HwSDatablockMbrdRfResponseAttAmpl>> {
public:
    using PathBlock::PathBlock;

    unsigned int getNumberOfRfRespAttFreqs() const { return count(); }
    void setNumberOfRfRespAttFreqs(unsigned int count) { storeCount(count); }
    HwSAttPolynomValues getCorLevelValue(unsigned char attenuator, unsigned int k) const {
        return value(attenuator, k);
    }
    void setCorLevelValue(const HwSAttPolynomValues& value, unsigned char attenuator, unsigned int k) {
        storeValue(value, attenuator, k);
    }

    std::ostream& printToStream(std::ostream& os) override;
};

/// What the blocks of the low-pass filters share: a count a filter. Filters are 0 to 8, points 0 to 149.
template <class R>
class LowPassBlock : public PathBlock<DescribedBlock<R>> {
public:
    using LowPassBlock::PathBlock::PathBlock;

    unsigned int getNumberOfFreqCount(unsigned int filter) const { return this->template get<&R::counts>(filter); }
    void setNumberOfFreqCount(unsigned int count, unsigned int filter) {
        this->template set<&R::counts>(count, filter);
    }
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdRfResponseLpFreq : LowPassRecord<unsigned int[9][150], 5444> {
    static const PlainTable table;
};

template <>
inline constexpr auto recordFields<HwSDatablockMbrdRfResponseLpFreq> = describe<HwSDatablockMbrdRfResponseLpFreq>(
    field<&HwSDatablockMbrdRfResponseLpFreq::counts>("counts").as(Role::Count).along(0, "filter"),
    field<&HwSDatablockMbrdRfResponseLpFreq::values>("frequency")
        .in("MHz")
        .as(Role::Axis)
        .along(0, "filter")
        .along(1, "point", "counts"));

/// 12210 to 12213: frequency points of the filters, in MHz.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdRfResponseLpFreq : public LowPassBlock<HwSDatablockMbrdRfResponseLpFreq> {
public:
    using LowPassBlock::LowPassBlock;

    unsigned int getFrequencyValue(unsigned int filter, unsigned int k) const {
        return get<&Record::values>(filter, k);
    }
    void setFrequencyValue(unsigned int value, unsigned char filter, unsigned int k) {
        set<&Record::values>(value, filter, k);
    }

    std::ostream& printToStream(std::ostream& os) override;
};

/// The text of a table of filter polynomials.
struct PolynomialTable {
    BlockName name;
    HeadLayout text;
    std::string_view scaling; ///< in front of the filter's number
    char rowEnd;              ///< of a row's name
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdRfResponseLpAmp : LowPassRecord<HwSPolynomValues[9][4][150], 21644> {
    static const PolynomialTable table;
};
struct TRAVIK_DATABLOCK_EXPORT HwSDatablockMbrdRfResponseLpPh : LowPassRecord<HwSPolynomValues[9][4][150], 21644> {
    static const PolynomialTable table;
};

namespace detail {

/// How a stored coefficient leads to its value.
struct Scaling {
    double factor;
    double zero = 0.0;
};

template <class R>
consteval auto polynomialFields(Scaling c0, Scaling c1, Scaling c2, Scaling c3) {
    return describe<R>(field<&R::counts>("counts").as(Role::Count).along(0, "filter"),
                       entries<&R::values>(field<&HwSPolynomValues::c0>("c0").in("", c0.factor, c0.zero),
                                           field<&HwSPolynomValues::c1>("c1").in("", c1.factor, c1.zero),
                                           field<&HwSPolynomValues::c2>("c2").in("", c2.factor, c2.zero),
                                           field<&HwSPolynomValues::c3>("c3").in("", c3.factor, c3.zero))
                           .along(0, "filter")
                           .along(1, "iq_peak_level")
                           .along(2, "point", "counts", 12210));
}

} // namespace detail

template <>
inline constexpr auto recordFields<HwSDatablockMbrdRfResponseLpAmp> =
    detail::polynomialFields<HwSDatablockMbrdRfResponseLpAmp>({1.0 / 460}, {1.0 / 300}, {1.0 / 190}, {1.0 / 3200, 1.0});
template <>
inline constexpr auto recordFields<HwSDatablockMbrdRfResponseLpPh> =
    detail::polynomialFields<HwSDatablockMbrdRfResponseLpPh>({1.0 / 3}, {1.0 / 3}, {1.0 / 3}, {1.0 / 3});

/// What amplitude and phase of the filters share. IQ peak levels are 0 to 3.
template <class R>
class TRAVIK_DATABLOCK_EXPORT LowPassPolynomials : public LowPassBlock<R> {
public:
    using LowPassPolynomials::LowPassBlock::LowPassBlock;

    std::ostream& printToStream(std::ostream& os) override;
};
extern template class LowPassPolynomials<HwSDatablockMbrdRfResponseLpAmp>;
extern template class LowPassPolynomials<HwSDatablockMbrdRfResponseLpPh>;

/// 12230 to 12233: amplitude polynomials of the filters over the frequencies of 12210.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdRfResponseLpAmp
    : public LowPassPolynomials<HwSDatablockMbrdRfResponseLpAmp> {
public:
    using LowPassPolynomials::LowPassPolynomials;

    HwSPolynomValues getCorAmplValue(unsigned char filter, unsigned char level, unsigned int k) const {
        return get<&Record::values>(filter, level, k);
    }
    void setCorAmplValue(const HwSPolynomValues& value, unsigned char filter, unsigned char level, unsigned int k) {
        set<&Record::values>(value, filter, level, k);
    }
};

/// 12240 to 12243: phase polynomials of the filters over the frequencies of 12210.
class TRAVIK_DATABLOCK_EXPORT HwDatablockMbrdRfResponseLpPh
    : public LowPassPolynomials<HwSDatablockMbrdRfResponseLpPh> {
public:
    using LowPassPolynomials::LowPassPolynomials;

    HwSPolynomValues getCorPhaseValue(unsigned char filter, unsigned char level, unsigned int k) const {
        return get<&Record::values>(filter, level, k);
    }
    void setCorPhaseValue(const HwSPolynomValues& value, unsigned char filter, unsigned char level, unsigned int k) {
        set<&Record::values>(value, filter, level, k);
    }
};

} // namespace Travik
