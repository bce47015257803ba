#include <travik/datablock/Latin1.h>
#include <travik/datablock/ModuleTypes.h>

#include <algorithm>
#include <cstring>

namespace Travik {

namespace {

constexpr std::size_t boardNameLength = 13;

constexpr SModuleType moduleTypeTable[] = {
    {0, "DACIF", "DACIF        ", "dacif"},
    {1, "DACB", "DACB         ", "dacboard"},
    {2, "UNICOD", "UNICOD       ", "unicod"},
    {3, "FADER", "FADER        ", "fader"},
    {4, "BBINS", "BBINS        ", "bbins"},
    {5, "BBINR", "BBINR        ", "bbinr"},
    {6, "SSYN", "SSYN         ", "ssyn"},
    {7, "SYNEX", "SYNEX        ", "synex"},
    {8, "IQOP3", "IQOP3_LCM    ", "iqop3"},
    {9, "IQOP6", "IQOP6        ", "iqop6"},
    {10, "SATT3", "SATT3        ", "satt3"},
    {11, "SATT6", "SATT6        ", "satt6"},
    {12, "SATT6M", "SATT6M       ", "satt6m"},
    {13, "MBRD", "MBRD         ", "mbrd"},
    {14, "BBOUT", "BBOUT        ", "bbout"},
    {15, "LOWPHASENOISE", "LOWPHASENOISE", "lowphasenoise"},
    {16, "OVERVOLTAGE", "OVERVOLTAGE  ", "overvoltageprot"},
    {17, "HIGHPOWER", "HIGHPOWER    ", "highpower"},
    {18, "IQOP3_RFM", "IQOP3_RFM    ", "rfm"},
    {19, "FMR6", "FRONTMODUL   ", "fmr6"},
    {20, "FM_PHI_M", "FM_PHI_M     ", "fmphim"},
    {21, "LOSYNC", "LOSYNC       ", "losync"},
    {22, "WEN_BASEBOARD", "WEN_BASEBOARD", "wenbaseboard"},
    {23, "WEN_ANALOG", "WEN_ANALOG   ", "wenanalog"},
    {24, "WEN_DIGITAL", "WEN_DIGITAL  ", "wendigital"},
    {25, "LIR_IF", "LIR_IF       ", "lirif"},
    {26, "CLKSYN", "CLKSYN       ", "clksyn"},
    {27, "CWOP3", "CWOP3        ", "cwop3"},
    {28, "CWOP6", "CWOP6        ", "cwop6"},
    {29, "SATT3C", "SATT3C       ", "satt3c"},
    {30, "SATT6C", "SATT6C       ", "satt6c"},
    {31, "LIRB89", "LIRB89       ", "lirb89"},
    {32, "FREQCNTR", "FREQCNTR     ", "freqcntr"},
    {33, "IFBO", "IFBO         ", "ifbo"},
    {34, "FSYN", "FSYN         ", "fsyn"},
    {35, "ADU", "ADU          ", "adu"},
    {36, "DCON", "DCON         ", "dcon"},
    {37, "OCXO", "OCXO         ", "ocxo"},
    {38, "MOD", "MOD          ", "mod"},
    {39, "PGEN", "PGEN         ", "pgen"},
    {40, "TMO", "TMO          ", "tmo"},
    {41, "DMA", "DMA          ", "dma"},
    {42, "DET", "DET          ", "det"},
    {43, "DOUB", "DOUB         ", "doub"},
    {44, "FILT", "FILT         ", "filt"},
    {45, "HPA", "HPA          ", "hpa"},
    {46, "PMOD", "PMOD         ", "pmod"},
    {47, "SWI", "SWI          ", "swi"},
    {48, "ATT22", "ATT22        ", "att22"},
    {49, "ATT44", "ATT44        ", "att44"},
    {50, "UPC22", "UPC22        ", "upc22"},
    {51, "UPC44", "UPC44        ", "upc44"},
    {52, "MWIF", "MWIF         ", "mwif"},
    {53, "ESM", "ESM          ", "esm"},
    {54, "FD_SWITCH", "FD_SWITCH    ", "fdswitch"},
    {55, "FILT_2", "FILT_2       ", "filt_2"},
    {56, "HPA_2", "HPA_2        ", "hpa_2"},
    {57, "DOUB_2", "DOUB_2       ", "doub_2"},
    {58, "EX_IQ_BOX_IN", "EX_IQ_BOX    ", "exbox_in"},
    {59, "EX_IQ_BOX_OUT", "EX_IQ_BOX    ", "exbox_out"},
    {60, "DACB", "DACB         ", "sudaconverter"},
    {61, "CODER", "CODER        ", "nyxcoder"},
    {62, "IFB", "IFB          ", "nyxifboard"},
    {63, "BABO", "BABO         ", "babo"},
    {64, "RFBO", "RFBO         ", "rfbo"},
    {65, "STEREOCODER", "STEREOCODER  ", "stereocoder"},
    {66, "BBGEN", "BBGEN        ", "bbgen"},
    {67, "VECTORBOARD", "VECTORBOARD  ", "vectorboard"},
    {68, "OCX", "OCX          ", "ocx"},
    {69, "STREAM", "STREAM       ", "stream"},
    {70, "BABO", "BABO         ", "babo"},
    {71, "DUN_RFBO", "DUN_RFBO     ", "dun_rfbo"},
    {72, "WENW_ANALOG", "WENW_ANALOG  ", "wewnanalog"},
    {73, "WENW_IQ", "WENW_IQ      ", "wenwiq"},
    {74, "STREAM_AUX", "STREAM_AUX   ", "streamaux"},
    {75, "RFB13", "RFB13        ", "rfb13"},
    {76, "RFB20", "RFB20        ", "rfb20"},
    {77, "FD40", "FD40         ", "fd40"},
    {78, "ASATT13", "ASATT13      ", "asatt13"},
    {79, "ATT40", "ATT40        ", "att40"},
    {80, "LFPA", "LFPA         ", "lfpa"},
    {81, "FILTER6", "FILTER6      ", "filter6"},
    {81, "FILTER13", "FILTER13     ", "filter13"},
    {81, "FILTER20", "FILTER20     ", "filter20"},
    {81, "FILTER40G", "FILTER40G    ", "filter40g"},
    {85, "RPP13", "RPP13        ", "rpp13"},
    {86, "HP20", "HP20         ", "hp20"},
    {87, "HP40", "HP40         ", "hp40"},
    {88, "RF", "RF           ", "rf"},
    {89, "Controller", "CPU          ", "cpu"},
    {90, "Attenuator", "ATT          ", "att"},
    {91, "Doubler", "DOUB         ", "doub"},
    {92, "RFMB", "RFMB         ", "rfmb"},
    {93, "RFOPU6", "RFOPU6       ", "rfopu6"},
    {94, "RFOPU13", "RFOPU13      ", "rfopu13"},
    {95, "MWOPU", "MWOPU        ", "mwopu"},
    {96, "MW4OPU", "MW4OPU       ", "mw4opu"},
    {97, "ASATT6", "ASATT6       ", "asatt6"},
    {98, "ASATT13", "ASATT13      ", "asatt13"},
    {99, "SATT40", "SATT40       ", "satt40"},
    {100, "BBB", "BBB          ", "bbcoder"},
    {101, "BBB", "BBB          ", "bbfader"},
    {102, "BBB", "BBB          ", "bbb"},
    {103, "DAC", "DAC          ", "dac"},
    {104, "BBIN", "BBIN         ", "bbin"},
    {105, "GPIB", "GPIB         ", "gpib"},
    {106, "LAST", "LAST         ", "last"},
};

} // namespace

std::span<const SModuleType> moduleTypes() { return moduleTypeTable; }

bool isKnownModuleName(const QString& boardName) {
    const std::string latin1 = toLatin1(boardName);
    const std::span known(std::begin(moduleTypeTable), std::end(moduleTypeTable) - 1);
    return std::ranges::any_of(known, [&](const SModuleType& type) {
        return std::strncmp(latin1.c_str(), type.boardName, boardNameLength) == 0;
    });
}

} // namespace Travik
