#include <travik/tables/DacBoardTables.h>

namespace Travik {

namespace {

constexpr Quantity frequency{.name = "frequency", .unit = "Hz", .role = Role::Axis};
constexpr Quantity delay{.name = "delay", .unit = "s", .scale = 1e-12};
constexpr unsigned int mostPoints = 26;

constexpr Quantity amplitude(int axisBlock) { return {.name = "amplitude", .scale = 1e-4, .axisBlock = axisBlock}; }
constexpr Quantity phase(int axisBlock) { return {.name = "phase", .scale = 1e-2, .axisBlock = axisBlock}; }
constexpr Quantity invertedPhase(int axisBlock) { return {.name = "phase", .scale = -1e-2, .axisBlock = axisBlock}; }

constexpr ListLayout counted(Lines comments) { return {.head = {.comments = comments}}; }
constexpr ListLayout uncounted(Lines comments) { return {.head = {.comments = comments, .count = {}}}; }

} // namespace

constinit const ListTable HwSDatablockDacbFrequencyCompFreq::table = {
    .name = {13500, "HwDatablockDacbFrequencyCompFreq", {"DACB_FREQUENCY_COMP_FREQ"}},
    .values = frequency,
    .text = counted(lines<"#Das sind die Frequenzstützstellen [f/1Hz]">)};

constinit const ListTable HwSDatablockDacbFrequencyCompAmp::table = {
    .name = {13600, "HwDatablockDacbFrequencyCompAmp", {"DACB_FREQUENCY_COMP_AMP"}},
    .values = amplitude(13500),
    .text = uncounted(lines<"#Das sind die Amplitudenwerte [1/10 000]">)};

constinit const ListTable HwSDatablockDacbFrequencyCompPh::table = {
    .name = {13700, "HwDatablockDacbFrequencyCompPh", {"DACB_FREQUENCY_COMP_PH"}},
    .values = phase(13500),
    .text = uncounted(lines<"#Das sind die Phasenwerte  [1/100]">)};

constinit const ListTable HwSDatablockDacbFrequencyCompDt::table = {
    .name = {13800, "HwSDatablockDacbFrequencyCompDt", {"DACB_FREQUENCY_COMP_DT"}},
    .values = delay,
    .text = counted(lines<"#Das ist der dt-Wert [1/1e12]">)};

constinit const ListTable HwSDatablockDacbIqImbalanceFreq::table = {
    .name = {13900, "HwSDatablockDacbIqImbalanceFreq", {"DACB_IQ_IMBALANCE_FREQ"}},
    .values = frequency,
    .text = counted(lines<"#Das sind die Frequenzstützstellen [f/1Hz]">),
    .largestCount = mostPoints};

constinit const ListTable HwSDatablockDacbIqImbalanceAmp::table = {
    .name = {14000, "HwDatablockDacbIqImbalanceAmp", {"DACB_IQ_IMBALANCE_AMP"}},
    .values = amplitude(13900),
    .text = uncounted(lines<"#Das sind die Amplitudenwerte der RF Imbalance [1/10000]">)};

constinit const ListTable HwSDatablockDacbIqImbalancePh::table = {
    .name = {14100, "HwDatablockDacbIqImbalancePh", {"DACB_IQ_IMBALANCE_PH"}},
    .values = invertedPhase(13900),
    .text = uncounted(lines<"#Das sind die Phasenwerte der RF Imbalance [1/100]">),
    .shown = Shown::Negated};

constinit const ListTable HwSDatablockDacbIqImbalanceSwapAmp::table = {
    .name = {14200, "HwDatablockDacbIqImbalanceSwapAmp", {"DACB_IQ_IMBALANCE_SWAP_AMP"}},
    .values = amplitude(13900),
    .text = uncounted(lines<"#Das sind die Amplitudewerte der RF Imbalance mit IQ Swap [1/10000]">)};

constinit const ListTable HwSDatablockDacbIqImbalanceSwapPh::table = {
    .name = {14300, "HwDatablockDacbIqImbalanceSwapPh", {"DACB_IQ_IMBALANCE_SWAP_PH"}},
    .values = invertedPhase(13900),
    .text = uncounted(lines<"#Das sind die Phasenwerte der RF Imbalance mit IQ Swap [1/100]">),
    .shown = Shown::Negated};

constinit const ListTable HwSDatablockDacbFrequencyCompAmpRear::table = {
    .name = {14400, "HwSDatablockDacbFrequencyCompAmpRear", {"DACB_FREQUENCY_COMP_AMP_REAR"}},
    .values = amplitude(13500),
    .text = uncounted(lines<"#Das sind die Amplitudewerte [1/10000]">),
    .largestCount = mostPoints};

constinit const ListTable HwSDatablockDacbFrequencyCompPhRear::table = {
    .name = {14500, "HwDatablockDacbFrequencyCompPhRear", {"DACB_FREQUENCY_COMP_PH_REAR"}},
    .values = phase(13500),
    .text = uncounted(lines<"#Das sind die Phasenwerte  [1/100]">),
    .largestCount = mostPoints};

constinit const ListTable HwSDatablockDacbFrequencyCompDtRear::table = {
    .name = {14600, "HwSDatablockDacbFrequencyCompDtRear", {"DACB_FREQUENCY_COMP_DT_REAR"}},
    .values = delay,
    .text = counted(lines<"#Das ist der dt-Wert [1/1e12]">)};

constinit const ListTable HwSDatablockDacbIqImbalanceRearAmp::table = {
    .name = {14700, "HwSDatablockDacbIqImbalanceRearAmp", {"DACB_IQ_IMBALANCE_REAR_AMP"}},
    .values = amplitude(13900),
    .text = uncounted(lines<"#Das sind die Amplitudewerte der IQ Output Imbalance [1/10000]">),
    .largestCount = mostPoints};

constinit const ListTable HwSDatablockDacbIqImbalanceRearPh::table = {
    .name = {14800, "HwDatablockDacbIqImbalanceRearPh", {"DACB_IQ_IMBALANCE_REAR_PH"}},
    .values = invertedPhase(13900),
    .text = uncounted(lines<"#Das sind die Phasenwerte der RF Imbalance [1/100]">),
    .shown = Shown::Negated};

} // namespace Travik
