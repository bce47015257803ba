#include <travik/datablock/TextWriter.h>
#include <travik/records/WearCounters.h>

namespace Travik {

constinit const OwldCounterBlock::Kind OwldCounterBlock::satt3{
    10604,
    "HwDatablockSAtt3OWLDCounter",
    {"SATT3_OWLD_COUNTER_1", "#Das ist der OWLD-Zähler"_latin1},
    {"SATT3_OWLD_COUNTER_2", "#Das ist der zweite OWLD-Zähler"_latin1}};

constinit const OwldCounterBlock::Kind OwldCounterBlock::satt6{
    11203,
    "HwDatablockSAtt6OWLDCounter",
    {"SATT6_OWLD_COUNTER_1", "# Das ist der OWLD-Zähler_1"_latin1},
    {"SATT6_OWLD_COUNTER_2", "# Das ist der OWLD-Zähler_2"_latin1}};

OwldCounterBlock::OwldCounterBlock(const Kind& kind, int n)
    : RecordBlock(static_cast<unsigned short>(kind.firstId + n), false), kind_(&kind) {}

int OwldCounterBlock::takeCounterOver(const Record* record) {
    if (!verifyRecord(record)) {
        signalError(DownloadDenied, kind_->errorName);
        return 1;
    }
    const HwSDatablockHeader header = headerOf(record);
    put<&Record::counter>(record->counter);
    setChecksum(header.checksum);
    return 0;
}

std::ostream& OwldCounterBlock::printToStream(std::ostream& os) {
    TextWriter out(os);
    const Texts& texts = kind_->textsOf(getId());
    out.line(texts.comment);
    (out << "ID:              " << texts.key).endLine();
    (out << "COUNT_VALUE:     " << getCounterValue()).endLine();
    return os;
}

namespace {

constexpr int firstSAttCId = 11300;
constexpr struct {
    std::string_view key;
    std::string_view comment;
} sattcTexts[] = {
    {"SATTC_OVLDCOUNTER", "#Das ist der OVLD-Zähler"_latin1},
    {"SATTC_OVLDCOUNTER_BACKUP", "#Das ist der backup OVLD-Zähler"_latin1},
    {"SATTC_HPCOUNTER", "#Das ist der HP-Zähler"_latin1},
    {"SATTC_HPCOUNTER_BACKUP", "#Das ist der backup HP-Zähler"_latin1},
    {}, // any other identifier
};

const auto& sattcTextsOf(int id) {
    const int other = std::ssize(sattcTexts) - 1;
    const int slot = id - firstSAttCId;
    return sattcTexts[slot >= 0 && slot < other ? slot : other];
}

} // namespace

std::string_view HwDatablockSAttCCounter::keyOf(int id) { return sattcTextsOf(id).key; }

HwDatablockSAttCCounter::HwDatablockSAttCCounter(int instance)
    : RecordBlock(static_cast<unsigned short>(instance), false), instance_(instance) {
    refreshChecksum();
}

int HwDatablockSAttCCounter::setBlock(const HwSDatablockSAttCCounter* record) {
    if (!record)
        return 1;
    copyFields(record);
    refreshChecksum();
    return 0;
}

std::ostream& HwDatablockSAttCCounter::printToStream(std::ostream& os) {
    TextWriter out(os);
    const auto& texts = sattcTextsOf(getId());
    out.line(texts.comment);
    (out << "ID:               " << texts.key).endLine();
    (out << "COUNT_VALUE:    " << getCounterValue(0) << "\t\t" << getCounterValue(1)).endLine();
    return os;
}

} // namespace Travik
