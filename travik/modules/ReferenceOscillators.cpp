#include <travik/datablock/TextWriter.h>
#include <travik/modules/ReferenceOscillators.h>
#include <travik/platform/ErrorManager.h>
#include <travik/text/TextLayout.h>

namespace Travik {

namespace {

constexpr std::string_view capacityLines[] = {"# Maximal mögliche Koefizienten sind mit dieser ID 1"_latin1};
constexpr HeadLayout head{.comments = capacityLines, .id = "ID:            ", .count = "COUNT:      "};

} // namespace

template <class R>
int ReferenceOscillatorBlock<R>::readBack(int value) {
    if (getOcxoRefCalValue(0) == value)
        return 0;
    ErrorManager()->signal(WriteToEepromFailed, QStringLiteral("store new ocxo- value failed"));
    return -1;
}

template <class R>
int ReferenceOscillatorBlock<R>::setOcxoRefCalValue(int value, unsigned char index) {
    if (index != 0)
        return 0;
    this->template put<&R::refCalValue>(value);
    const int result = readBack(value);
    this->refreshChecksum();
    return result;
}

template <class R>
int ReferenceOscillatorBlock<R>::setBlock(const R* record) {
    const HwSDatablockHeader header = this->headerOf(record);
    const bool tolerated =
        kind.tolerant && header.id == kind.id && header.blockSize == sizeof(R) && header.alignment == 0;
    if (!this->verifyRecord(record) && !tolerated) {
        this->signalError(DownloadDenied, kind.errorName);
        return 1;
    }
    const int value = record->refCalValue;
    return this->accept(record, kind.tolerant ? header.alignment : 0, [&] {
        this->template put<&R::count>(getCount() & 0xFFU);
        readBack(value);
    });
}

template <class R>
std::ostream& ReferenceOscillatorBlock<R>::printToStream(std::ostream& os) {
    TextWriter out(os);
    out.line(kind.comment);
    if (!kind.range.empty())
        out.line(kind.range);
    printHead(out, head, keyName, getCount());
    (out << "1:          " << getOcxoRefCalValue(0)).endLine().line();
    return os;
}

template class ReferenceOscillatorBlock<HwSDatablockSsynOcxoRefCalValue>;
template class ReferenceOscillatorBlock<HwSDatablockSynexOcxoRefCalValue>;
template class ReferenceOscillatorBlock<HwSDatablockFsynTcxoRefCalValue>;
template class ReferenceOscillatorBlock<HwSDatablockPokOcxoRefCalValue>;

} // namespace Travik
