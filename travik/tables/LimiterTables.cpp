#include <travik/tables/LimiterTables.h>

namespace Travik {

constinit const ListTable HwSDatablockDetLimiterMaxVoltFreq::table = {
    .name = {15020, "HwDatablockDetLimiterMaxVoltFreq", {"LIMITER_FREQUENCY_NODE_GHZ"}},
    .values = {.name = "frequency", .unit = "GHz", .role = Role::Axis},
    .text =
        {.head = {.comments =
                      lines<"# Limiter:  Hier stehen die Stützstellen für die Frequenzwerte",
                            "#           Wertebereich: 1...22GHz", "#           Maximal mögliche Stützstellen: 100">,
                  .id = "ID:         ",
                  .count = "COUNT:      "},
         .beforeRows = lines<"">},
    .decimals = 3};

constinit const ListTable HwSDatablockDetLimiterMaxVoltData::table = {
    .name = {15021, "HwDatablockDetLimiterMaxVoltData", {"LIMITER_MAX_VOLTAGE"}},
    .values = {.name = "voltage", .unit = "V", .axisBlock = 15020},
    .text = {.head = {.comments = lines<"# Limiter: Hier stehen die Detektorspannungen bei maximal zulässigem Pegel",
                                        "# Wertebereich: 0...8V">,
                      .count = {}},
             .beforeRows = lines<"">},
    .decimals = 2};

} // namespace Travik
