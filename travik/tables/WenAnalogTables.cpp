#include <travik/tables/WenAnalogTables.h>

namespace Travik {

namespace {

constexpr KeyName dataKey{"WEN_ANALOG_IMBALANCE_DATA"};

constexpr ListTable data(unsigned short id, const char* errorName, const char* quantity, Lines comment) {
    return {.name = {id, errorName, dataKey},
            .values = {.name = quantity, .axisBlock = 15600},
            .text = {.head = {.comments = comment, .count = {}}}};
}

} // namespace

constinit const ListTable HwSDatablockWenAnalogImbalanceFreq::table = {
    .name = {15600, "HwSDatablockWenAnalogImbalanceFreq", {"WEN_ANALOG_IMBALANCE_FREQ"}},
    .values = {.name = "frequency", .unit = "Hz", .role = Role::Axis},
    .text = {.head = {.comments = lines<"#Das sind die Frequenzstützstellen [f/1Hz]">}},
    .decimals = 2};

constinit const ListTable HwSDatablockWenAnalogImbalanceGainI::table = data(
    15601, "HwSDatablockWenAnalogImbalanceGainI", "gain", lines<"#Das sind die GainWerte I der WEN ANALOG Imbalance">);
constinit const ListTable HwSDatablockWenAnalogImbalanceGainQ::table = data(
    15602, "HwSDatablockWenAnalogImbalanceGainQ", "gain", lines<"#Das sind die GainWerte Q der WEN ANALOG Imbalance">);
constinit const ListTable HwSDatablockWenAnalogImbalancePhI::table = data(
    15603, "HwDatablockWenAnalogImbalancePhI", "phase", lines<"#Das sind die Phasenwerte I der WEN ANALOG Imbalance ">);
constinit const ListTable HwSDatablockWenAnalogImbalancePhQ::table = data(
    15604, "HwDatablockWenAnalogImbalancePhQ", "phase", lines<"#Das sind die Phasenwerte Q der WEN ANALOG Imbalance ">);

} // namespace Travik
