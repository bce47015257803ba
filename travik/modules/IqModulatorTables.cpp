#include <travik/datablock/TextWriter.h>
#include <travik/modules/IqModulatorTables.h>
#include <travik/text/TextLayout.h>

#include <atomic>
#include <cmath>

namespace Travik {

namespace {

constexpr std::string_view harmonicLines[] = {
    "# ausgewertete Syntaxelemente :",
    "#  #       als Kommentarzeile",
    "#       Kommentare dürfen NICHT innerhalb eines Datenblocks eingefügt werden"_latin1,
    "# Schlüsselworte:   zur Zuordnung der gelesenen Werte (Auswertung erfolgt in Großbuchstaben)"_latin1,
    "#       Werte sind in aufsteigender Reihenfolge anzugeben",
    "# ][      als Trennzeichen für BZ"_latin1,
    "#       Bei Erweiterung der Tabelle zu LEV_PRE_TAB sind die Werte",
    "#       anschließend an den Wert zur Detektorspannung zu integrieren"_latin1,
    R"(# \t      als Trennzeichen zwischen den einzelnen Werten)",
    "",
    "",
    "# Baugruppen Kalibrierparameter",
    "# Oberwellenfilter Grenzfrequenzen (Hz)",
};
constexpr std::string_view emptyLine[] = {""};
constexpr ListLayout harmonicLayout{
    .head = {.comments = harmonicLines, .count = ""}, .label = "HARM_FILT", .beforeRows = emptyLine};

constexpr std::string_view miscLines[] = {"# Anzahl der Betriebszustände, ganzzahlig, Standard 8"_latin1};
constexpr HeadLayout miscHead{.comments = miscLines, .count = "COUNT_BZ:        "};
constexpr auto uiqLine = "# IQMod. Basisbandspannung (V), diff. gemessen an IX/INX und QX/QNX am 80pol St., BZ Werte, "
                         "3 Nachkomma,  (=halbe differentielle TOPH-Leerlaufspannung)";
constexpr auto pmaxLine = "# Maximale Ausgangsleistung (dBm) des Betriebszustandes x, BZ Werte, 3 Nachkomma";
constexpr auto lconReserveLine =
    "# Reserve (dB) des LCON PIN Dämpfungsgliedes zum Vollausschlag, BZ Werte, 3 Nachkomma"_latin1;
constexpr auto detFullScaleLine = "# Vollausschlag des Detektorwandlers (Definition LCM), bei der Kalibrierung als "
                                  "Vollausschlag definiert (65535)";
constexpr auto detReserveLine = "# minimale Detektorreserve (dB) zum Vollauschlag des Detektors bei PMAX_BZx, BZ "
                                "Werte, 3 Nachkomma";
constexpr auto toleranceLevPreLine = "# +/-Toleranz (dB) des LEVEL PRESET Step Attenuators., 3 Nachkomma";
constexpr auto toleranceLevAttLine = "# +/-Toleranz (dB) des Level Attenuators., 3 Nachkomma";
constexpr auto toleranceDetAttLine = "# +/-Toleranz (dB) des Detektor Step Attenuators., 3 Nachkomma";
constexpr auto opuRfLine = "# OPURF_LP=Baugruppenausgangsleistung Ausgangsleistung mit LEVELPRESET Einstellung lt. "
                           "Tabelle und LCON-Absenkung=LCONRESERVE";
constexpr std::string_view miscClosingLines[] = {
    "# Für das Beschreiben des RFM EEPROMS werden pro Betriebszustandalle Spalten ausgenommen Fehler und OPU3RF_LP benötigt"_latin1,
    opuRfLine,
    "#",
    "# Fehler\t Beschreibung",
    "#      0\t kein Fehler",
    "#      1\t Iteration LPW fehlgeschlagen",
    "#      2\t Alle LPW außerhalb des LP-Limits"_latin1,
    "#      3\t LPW außerhalb der LEVPRE-Toleranz"_latin1,
    "#    +10\t PMAX_BZ nicht erreichbar",
    "#   +100\t LEVATT außerhalb der Toleranz"_latin1,
    "#  +1000\t Alle DETATT außerhalb des LP-Limits"_latin1,
    "#  +2000\t DETATT außerhalb der Toleranz"_latin1,
    "",
};
constexpr double decibelsPerStep = 0.0078125;
constexpr unsigned int stepsShift = 7; // 1/128 dB to whole dB

constexpr std::string_view levelFrequencyLines[] = {"LEV_PRE_TAB:",
                                                    "# Kalibrierfrequenzen Maximale Anzahl mit dieser Id ist 300"};
constexpr ListLayout levelFrequencies{.head = {.comments = levelFrequencyLines}, .label = "Zeile"};

constexpr HeadLayout rowsHead{.comments = {}, .id = "ID:                 "};

/// What is left of a number that should be a whole one of 16 bits.
unsigned short lowBits(float value) {
    if (!std::isfinite(value))
        return 0;
    return static_cast<unsigned short>(static_cast<int>(std::fmod(std::trunc(value), 65536.0F)));
}

} // namespace

// HwDatablockIqOp3RfmHarmonic

std::ostream& HwDatablockIqOp3RfmHarmonic::printToStream(std::ostream& os) {
    TextWriter out(os);
    constexpr unsigned int filters = std::extent_v<decltype(Record::cutOffFrequency)>;
    printList(out, harmonicLayout, keyName, filters, [this](TextWriter& line, unsigned int filter) {
        line << static_cast<unsigned int>(get<&Record::cutOffFrequency>(filter));
    });
    return os;
}

// HwDatablockIqOp3RfmCalibDataMisc

unsigned short HwDatablockIqOp3RfmCalibDataMisc::pmaxOf(unsigned int bz) const {
    return lowBits(get<&Record::pmaxBz>(bz));
}

int HwDatablockIqOp3RfmCalibDataMisc::setBlock(const HwSDatablockIqOp3RfmCalibDataMisc* record) {
    return takeOver(record, "HwDatablockIqOp3RfmCalibDataMisc", 0, [this] {
        for (unsigned int bz = 0; bz < std::extent_v<decltype(Record::pmaxBz)>; ++bz)
            put<&Record::pmaxBz>(static_cast<float>(pmaxOf(bz)), bz);
    });
}

std::ostream& HwDatablockIqOp3RfmCalibDataMisc::printToStream(std::ostream& os) {
    TextWriter out(os);
    const unsigned int states = getNumberOfOperatingStates();
    const auto perState = [&out, states](std::string_view key, std::string_view unit, auto printValue) {
        printEntries(out, {.head = {}, .label = key}, states, [&](TextWriter& line, unsigned int bz) {
            printValue(bz);
            line << unit;
        });
        out.line();
    };

    printHead(out, miscHead, keyName, states);
    out.line(uiqLine).line();
    perState("UIQ_BZ", "\t V", [&](unsigned int bz) { out.general(static_cast<double>(get<&Record::uiqBz>(bz))); });
    out.line(pmaxLine);
    perState("PMAX_BZ", "\t dBm", [&](unsigned int bz) { out.fixed((pmaxOf(bz) - 0.5) * decibelsPerStep, 1); });
    out.line(lconReserveLine);
    perState("LCON_RESERVE_BZ", "\t dB",
             [&](unsigned int bz) { out << (get<&Record::lconReserveBz>(bz) >> stepsShift); });
    out.line(detFullScaleLine) << "DET_FULL_SCALE:             ";
    (out.general(static_cast<double>(getDetFullScale())) << "\t V").endLine().line();
    out.line(detReserveLine);
    perState("DET_RESERVE_BZ", "\t dB", [&](unsigned int bz) { out << get<&Record::detReserveBz>(bz); });
    out.line(toleranceLevPreLine) << "TOLERANZ_LEVPRE:             " << (getToleranceLevPre() >> stepsShift);
    (out << "\t dB").endLine().line();
    out.line(toleranceLevAttLine) << "TOLERANZ_LEVATT_15:             ";
    (out.fixed(getToleranceLevAtt_15() * decibelsPerStep, 1) << "\t dB").endLine();
    out << "TOLERANZ_LEVATT_30_45:          ";
    (out.fixed(getToleranceLevAtt_30_45() * decibelsPerStep, 1) << "\t dB").endLine().line();
    out.line(toleranceDetAttLine) << "TOLERANZ_DETATT:             " << (getToleranceDetAtt() >> stepsShift);
    (out << "\t dB").endLine().line();
    printLines(out, miscClosingLines);
    return os;
}

// HwDatablockIqOp3RfmCalibDataFreq

std::ostream& HwDatablockIqOp3RfmCalibDataFreq::printToStream(std::ostream& os) {
    TextWriter out(os);
    printList(out, levelFrequencies, keyName, getCount(),
              [this](TextWriter& line, unsigned int point) { line << get<&Record::frequency>(point); });
    return os;
}

// HwDatablockIqOp3RfmCalibData

unsigned int HwDatablockIqOp3RfmCalibData::instanceCounter = 0;

HwDatablockIqOp3RfmCalibData::HwDatablockIqOp3RfmCalibData(bool stopConversionOnError)
    : IqModulatorRowTable(firstId, stopConversionOnError) {
    // Every dictionary makes twelve of these, and separate dictionaries may be made in several threads.
    std::atomic_ref(instanceCounter).fetch_add(1, std::memory_order_relaxed);
}

HwDatablockIqOp3RfmCalibData::HwDatablockIqOp3RfmCalibData(const HwDatablockIqOp3RfmCalibData& other)
    : IqModulatorRowTable(other) {
    std::atomic_ref(instanceCounter).fetch_add(1, std::memory_order_relaxed);
}

unsigned int HwDatablockIqOp3RfmCalibData::getInstanceCounter() const {
    return std::atomic_ref(instanceCounter).load(std::memory_order_relaxed);
}

std::ostream& HwDatablockIqOp3RfmCalibData::printToStream(std::ostream& os) {
    TextWriter out(os);
    printHead(out, rowsHead, keyName);
    out.line("#Betriebszustand        LEVPRE LEVATT15\tLEVATT30 LEVATT45 DETATT  DETCONV_DEFLECTION ");
    (out << "#\t BZ " << getInstanceCounter() << "\t        dB      dB\t  dB\t    dB\t   dBm").endLine();
    for (unsigned int i = 0; i < std::extent_v<decltype(Record::rows)>; ++i) {
        const Row row = get<&Record::rows>(i);
        out << "Zeile" << i << ": \t\t[" << row.getLevPre() << '\t';
        out.fixed(row.getLevAtt15() * Row::levAttStep + 15, 3) << '\t';
        out.fixed(row.getLevAtt30() * Row::levAttStep + 30, 3) << '\t';
        out.fixed(row.getLevAtt45() * Row::levAttStep + 45, 3) << '\t';
        (out << row.getDetAtt() << "\t\t" << row.getDetConvDeflection() << "\t]").endLine();
    }
    out.line();
    return os;
}

} // namespace Travik
