#include <travik/tables/BasebandInputTables.h>

namespace Travik {

namespace {

constexpr ListTable coefficients(const BlockName& name, const char* quantity, Lines comments) {
    return {.name = name,
            .values = {.name = quantity},
            .text = {.head = {.comments = comments, .count = "COUNT:              "}}};
}

template <detail::Latin1Literal Title>
constexpr ListTable taps(const BlockName& name) {
    return coefficients(
        name, "taps",
        lines<Title, "# signed fixed point LSB value 21-24", "# Maximal mögliche Koefizienten sind mit dieser ID 20">);
}

template <detail::Latin1Literal Title>
constexpr ListTable response(const BlockName& name, const char* quantity) {
    return coefficients(name, quantity,
                        lines<Title, "# Format: signed integer (32 Bit-Darstellung)",
                              "# Maximal mögliche Koefizienten mit dieser ID 50">);
}

} // namespace

constinit const ListTable HwSDatablockBbinsCompFilterTabsI::table =
    taps<"# Das sind die Entzerr-Koeffizienten für Resample I-Pfad">(
        {13000, "HwSDatablockBbinsCompFilterTabsI", {"BBINS_COMP_FIL_TAPS_I"}});

constinit const ListTable HwSDatablockBbinsCompFilterTabsQ::table =
    taps<"# Das sind die Entzerr-Koeffizienten für Resample Q-Pfad">(
        {13050, "HwDatablockBbinsCompFilterTabsQ", {"BBINS_COMP_FIL_TAPS_Q"}});

constinit const ListTable HwSDatablockBbinsUncalibratedFirAmplitudeI::table =
    response<"# unkalibrierter BBIN-Amplitudengang fuer I-Pfad">(
        {13100, "HwDatablockBbinsUncalibratedFirAmplitudeI", {"BBINS_UNCALIBRATED_FIR_AMPLITUDE_I"}}, "amplitude");

constinit const ListTable HwSDatablockBbinsUncalibratedFirPhiI::table =
    response<"# unkalibrierter BBIN-Phasengang fuer I-Pfad">(
        {13101, "HwDatablockBbinsUncalibratedFirPhiI", {"BBINS_UNCALIBRATED_FIR_PHI_I"}}, "phase");

constinit const ListTable HwSDatablockBbinsUncalibratedFirAmplitudeQ::table =
    response<"# unkalibrierter BBIN-Amplitudengang fuer Q-Pfad">(
        {13102, "HwDatablockBbinsUncalibratedFirAmplitudeQ", {"BBINS_UNCALIBRATED_FIR_AMPLITUDE_Q"}}, "amplitude");

constinit const ListTable HwSDatablockBbinsUncalibratedFirPhiQ::table =
    response<"# unkalibrierter BBIN-Phasengang fuer Q-Pfad">(
        {13103, "HwDatablockBbinsUncalibratedFirPhiQ", {"BBINS_UNCALIBRATED_FIR_PHI_Q"}}, "phase");

} // namespace Travik
