#pragma once

#include <travik/datablock/RecordBlock.h>

namespace Travik {

#pragma pack(push, 1)
/// One wear counter of a step attenuator: 12 bytes.
struct HwSDatablockOWLDCounter : HwSDatablockHeader {
    unsigned int counter;
};
struct HwSDatablockSAtt3OWLDCounter : HwSDatablockOWLDCounter {};
struct HwSDatablockSAtt6OWLDCounter : HwSDatablockOWLDCounter {};

/// Two wear counters: 16 bytes.
struct HwSDatablockSAttCCounter : HwSDatablockHeader {
    unsigned int counter[2];
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockSAtt3OWLDCounter) == 12 && sizeof(HwSDatablockSAtt6OWLDCounter) == 12);
static_assert(sizeof(HwSDatablockSAttCCounter) == 16);

template <std::derived_from<HwSDatablockOWLDCounter> R>
inline constexpr auto recordFields<R> = describe<R>(field<&R::counter>("counter_value"));

template <>
inline constexpr auto recordFields<HwSDatablockSAttCCounter> =
    describe<HwSDatablockSAttCCounter>(field<&HwSDatablockSAttCCounter::counter>("counter_value").along(0, "counter"));

/// What the overload counters of the SATT3 and SATT6 attenuators share. There are two of each, in a block of their own.
class TRAVIK_DATABLOCK_EXPORT OwldCounterBlock : public RecordBlock<HwSDatablockOWLDCounter> {
public:
    unsigned int getCounterValue() const { return get<&Record::counter>(); }
    /// Refreshes the stored checksum.
    void setCounterValue(unsigned int value) { set<&Record::counter>(value); }
    std::ostream& printToStream(std::ostream& os) override;

protected:
    struct Texts {
        std::string_view key;
        std::string_view comment;
    };
    struct Kind {
        int firstId;
        const char* errorName;
        Texts first;
        Texts second;

        const Texts& textsOf(int id) const { return id == firstId ? first : second; }
    };
    static const Kind satt3;
    static const Kind satt6;

    /// Identifier of the kind's first block + n, counter 0.
    OwldCounterBlock(const Kind& kind, int n);
    int takeCounterOver(const Record* record);

private:
    const Kind* kind_;
};

/// An overload counter of the SATT3 attenuator.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAtt3OWLDCounter : public OwldCounterBlock {
public:
    static std::string_view keyOf(int id) { return satt3.textsOf(id).key; }

    /// Counter n, 0 or 1: identifier 10604 + n, value 0.
    explicit HwDatablockSAtt3OWLDCounter(int n) : OwldCounterBlock(satt3, n) {}

    HwSDatablockSAtt3OWLDCounter* getBlock() { return reinterpret_cast<HwSDatablockSAtt3OWLDCounter*>(getData()); }
    /// Takes a record's counter and checksum over, not its other header words: 0, or 1 and error 1040001 when its
    /// checksum is wrong.
    int setBlock(const HwSDatablockSAtt3OWLDCounter* record) { return takeCounterOver(record); }
};

/// An overload counter of the SATT6 attenuator.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAtt6OWLDCounter : public OwldCounterBlock {
public:
    static std::string_view keyOf(int id) { return satt6.textsOf(id).key; }

    /// Counter n, 0 or 1: identifier 11203 + n, value 0.
    explicit HwDatablockSAtt6OWLDCounter(int n) : OwldCounterBlock(satt6, n) {}

    HwSDatablockSAtt6OWLDCounter* getBlock() { return reinterpret_cast<HwSDatablockSAtt6OWLDCounter*>(getData()); }
    /// Takes a record's counter and checksum over, not its other header words: 0, or 1 and error 1040001 when its
    /// checksum is wrong.
    int setBlock(const HwSDatablockSAtt6OWLDCounter* record) { return takeCounterOver(record); }
};

/// The counters of the SATTC attenuator, two values a block: overload (identifier 11300) and high power (11302), each
/// with a backup in the block behind it. Choosing between a counter and its backup is the caller's.
class TRAVIK_DATABLOCK_EXPORT HwDatablockSAttCCounter : public RecordBlock<HwSDatablockSAttCCounter> {
public:
    /// The key name of an identifier from 11300 to 11303; empty for any other.
    static std::string_view keyOf(int id);

    /// The instance is the block's identifier. Both values 0, the checksum right.
    explicit HwDatablockSAttCCounter(int instance);

    /// As constructed.
    int getInstance() const { return instance_; }
    /// Value 0 or 1; 0 for any other index.
    unsigned int getCounterValue(unsigned short index) const { return get<&Record::counter>(index); }
    /// Refreshes the stored checksum; does nothing for an index above 1.
    void setCounterValue(unsigned int value, unsigned short index) { set<&Record::counter>(value, index); }

    /// Takes the two values over, whatever the record's header says, and refreshes the checksum; always 0.
    int setBlock(const HwSDatablockSAttCCounter* record);
    std::ostream& printToStream(std::ostream& os) override;

private:
    int instance_;
};

} // namespace Travik
