#include "Rules.h"

namespace Fuzz {

namespace {

constexpr std::string_view fewBits = "only the bits that the part has are stored";
constexpr std::string_view lowByte = "the low byte is stored";
constexpr std::string_view inHertz = "set in the units of the image, given back in Hz";
constexpr std::string_view negated = "given back negated";

constexpr std::string_view any; // class

constexpr Rule allRules[] = {
    {.className = any, .setter = "setValue", .gives = Return::Scaled, .why = "stored in units of the table's scale"},
    {.className = any, .setter = "setChecksum", .seals = false, .why = "stores the sum itself"},
    {.className = any,
     .setter = "setBlockSize",
     .gives = Return::NotChecked,
     .seals = false,
     .why =
         "4 is given back where the identifier is an end block's; of fewer than 6 bytes, the checksum is not summed"},
    {.className = any,
     .setter = "setBlockId",
     .seals = false,
     .why = "an end block's image of 4 bytes has no checksum"},
    {.className = "HwDatablockEnd",
     .setter = "setBlockSize",
     .gives = Return::NotChecked,
     .seals = false,
     .why = "has no size word: its size is that of the buffer"},
    {.className = "HwDatablockCwop3DetTuneDac",
     .setter = "setDetTuneDacValue",
     .swapped = true,
     .why = "getter and setter order their indices differently"},
    {.className = any, .setter = "setServiceDateDay", .gives = Return::Lossy, .why = fewBits},
    {.className = any, .setter = "setServiceDateMonth", .gives = Return::Lossy, .why = fewBits},
    {.className = any, .setter = "setServiceDateYear", .gives = Return::Lossy, .why = fewBits},
    {.className = any, .setter = "setOpTimeHours", .gives = Return::Lossy, .why = fewBits},
    {.className = any, .setter = "setOpTimeTurnOn", .gives = Return::Lossy, .why = fewBits},
    {.className = any, .setter = "setCircularNr", .gives = Return::Lossy, .why = fewBits},
    {.className = any, .setter = "setAction", .gives = Return::Lossy, .why = fewBits},
    {.className = "HwDatablockIqOp6PmaxBz", .setter = "setPmaxBz", .gives = Return::Lossy, .why = lowByte},
    {.className = any, .setter = "setLevAtt_20", .gives = Return::Lossy, .why = lowByte},
    {.className = any, .setter = "setLevAtt_40", .gives = Return::Lossy, .why = lowByte},
    {.className = "HwDatablockIqOp6CalibDataFreq",
     .setter = "setFrequencyValue",
     .gives = Return::NotChecked,
     .why = inHertz},
    {.className = "HwDatablockMbrdExtLevCalDataFreq",
     .setter = "setFrequencyValue",
     .gives = Return::NotChecked,
     .why = inHertz},
    {.className = "HwDatablockMbrdExtLevCalDataFreq_Enh",
     .setter = "setFrequencyValue",
     .gives = Return::NotChecked,
     .why = inHertz},
    {.className = "HwDatablockMbrdExtLevCalDataFreq2Edition",
     .setter = "setFrequencyValue",
     .gives = Return::NotChecked,
     .why = inHertz},
    {.className = "HwDatablockMbrdExtLevCalDataFreq2Edition_Enh",
     .setter = "setFrequencyValue",
     .gives = Return::NotChecked,
     .why = inHertz},
    {.className = any,
     .setter = "setNumberOfDetLinCorrSteps",
     .gives = Return::NotChecked,
     .why = "given back with the number of frequencies above it"},
    {.className = any, .setter = "setIqImbalancePh", .gives = Return::NotChecked, .why = negated},
    {.className = any, .setter = "setIqImbalanceSwapPh", .gives = Return::NotChecked, .why = negated},
    {.className = any, .setter = "setIqImbalanceRearPh", .gives = Return::NotChecked, .why = negated},
};

constexpr const char* alone[] = {
    "HwDatablockCommonStatisticData setCommonStatisticData",
    "HwDatablockDetLimiterMaxVoltData setMaxVoltageValue",
    "HwDatablockDetLimiterMaxVoltFreq setFrequencyValue",
    "HwDatablockEnd setEndBlock",
    "HwDatablockEnd setEndBlockData",
    "HwDatablockEnd setEndBlockID",
    "HwDatablockMbrdMac setMac",
    "HwDatablockMbrdTimeMonitoringData setDate",
    "HwDatablockMbrdTimeMonitoringData setTimeMonitoringData",
    "HwDatablockPokAttCalDat setCorLevelValue",
    "HwDatablockPokAttCalDatFreq setFrequencyValue",
    "HwDatablockPokAttCalDatFreqSe setFrequencyValue",
    "HwDatablockPokAttCalDatSe setCorLevelValue",
    "HwDatablockPokMwIfExtLevCalData setCorLevelValue",
    "HwDatablockPokMwIfExtLevCalDataAbsCorr setAbsCorrValue",
    "HwDatablockPokMwIfExtLevCalDataFreq setFrequencyValue",
    "HwDatablockPokMwIfExtLevCalDataRelCorr setCorLevelValue",
    "HwDatablockServiceData setDepartment",
    "HwDatablockWENDelay setDelayI",
    "HwDatablockWENDelay setDelayQ",
    "HwDatablockWenWIQQuadDac setWenWiqQuadDacData",
    "HwDatablockWenWiqSensorData setWenWiqSensorData",
};

} // namespace

std::span<const Rule> rules() { return allRules; }

Rule ruleOf(std::string_view className, std::string_view setter) {
    const auto is = [&](const Rule& rule, std::string_view name) {
        return rule.setter == setter && rule.className == name;
    };
    for (const std::string_view name : {className, std::string_view()}) {
        for (const Rule& rule : allRules) {
            if (is(rule, name))
                return rule;
        }
    }
    return {.className = className, .setter = setter};
}

std::span<const char* const> settersWithoutGetter() { return alone; }

} // namespace Fuzz
