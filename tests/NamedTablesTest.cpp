#include "Support.h"

#include <map>

namespace NamedTablesTest {

using namespace Travik;
using namespace Support;

enum Conversion : bool { Fixed, Convertible };

struct TableClass {
    int id;
    unsigned int rows;
    unsigned int columns;
    unsigned int size;
    std::string_view className;
    std::string_view key;
    double scale;
    Stored stored;
    Conversion conversion;
    bool flag = false; // of the prototype
};

// clang-format off
constexpr TableClass classes[] = {
    {11304, 1, 2048, 2064, "HwDatablockTemplateWithoutChecksum", "POK_MWIF_SATT_COUNTER", 1.0, Stored::U8, Fixed, true},
    {11305, 50, 1, 216, "HwDatablockSAttCTempFreq", "SATT_TEMP_FREQ", 100.0, Stored::U32, Fixed, true},
    {11306, 4, 50, 816, "HwDatablockSAttCTempGradient", "SATT_TEMP_GRADIENT", 1.0, Stored::I32, Fixed, true},
    {11307, 4, 50, 816, "HwDatablockSAttCTempOffset", "SATT_TEMP_OFFSET", 1.0, Stored::I32, Fixed, true},
    {12300, 200, 1, 816, "HwDatablockTemplate", "LOOPGAIN_FREQ", 0.01, Stored::I32, Fixed, true},
    {12301, 1, 200, 816, "HwDatablockTemplate", "LOOPGAIN_PK", 1000.0, Stored::I32, Fixed, true},
    {12302, 1, 200, 816, "HwDatablockTemplate", "LOOPGAIN_P_VALUE_BASE_PK", 1000.0, Stored::I32, Fixed, true},
    {12303, 1, 200, 816, "HwDatablockTemplate", "LOOPGAIN_I_VALUE_BASE_PK", 1000.0, Stored::I32, Fixed, true},
    {12304, 1, 200, 816, "HwDatablockTemplate", "LOOPGAIN_I_VALUE_OFFSET_PK", 1.0, Stored::I32, Fixed, true},
    {12305, 50, 1, 216, "HwDatablockTemplate", "LOOPGAIN_PK_LIST", 1.0, Stored::I32, Fixed, true},
    {12306, 50, 200, 40016, "HwDatablockTemplate", "LOOPGAIN_P_VALUE_BASE_PK_LIST", 1000.0, Stored::I32, Fixed, true},
    {12307, 50, 200, 40016, "HwDatablockTemplate", "LOOPGAIN_I_VALUE_BASE_PK_LIST", 1000.0, Stored::I32, Fixed, true},
    {12308, 50, 200, 40016, "HwDatablockTemplate", "LOOPGAIN_I_VALUE_OFFSET_PK_LIST", 1.0, Stored::I32, Fixed, true},
    {12310, 10, 1, 56, "HwDatablockTemplate", "POK_DCON_VTRIM_VALUE", 1.0, Stored::I32, Fixed, true},
    {12311, 1, 1, 20, "HwDatablockTemplate", "POK_DCON_LEVELPRE2", 1.0, Stored::I32, Fixed, true},
    {12312, 10, 1, 56, "HwDatablockTemplate", "LIR_FREQCNTR_TCXO_REF_CAL_VALUE", 1.0, Stored::I32, Fixed, true},
    {12313, 100, 1, 416, "HwDatablockTemplate", "LIMITER_MAX_VOLTAGE", 0.00001, Stored::I32, Fixed, true},
    {12314, 100, 1, 416, "HwDatablockTemplate", "LIMITER_MAX_VOLTAGE", 100000.0, Stored::I32, Fixed, true},
    {12315, 100, 1, 416, "HwDatablockTemplate", "LIMITER_MAX_VOLTAGE_PUM_ON", 0.00001, Stored::I32, Fixed, true},
    {14801, 10, 1, 56, "HwDatablockMbrdIqInputA", "IQ_INPUT_A", 1.0, Stored::I32, Fixed},
    {14802, 10, 1, 56, "HwDatablockMbrdIqInputB", "IQ_INPUT_B", 1.0, Stored::I32, Fixed},
    {14803, 600, 1, 2416, "HwDatablockMbrdExtCalUserFreqA", "EXT_CAL_USER_FREQ_A", 100.0, Stored::U32, Fixed},
    {14804, 600, 1, 2416, "HwDatablockMbrdExtCalUserFreqB", "EXT_CAL_USER_FREQ_B", 100.0, Stored::U32, Fixed},
    {14805, 13, 600, 15776, "HwDatablockMbrdExtCalUserDataA", "EXT_CAL_USER_DATA_A", 1.0, Stored::I16, Fixed},
    {14806, 13, 600, 15776, "HwDatablockMbrdExtCalUserDataB", "EXT_CAL_USER_DATA_B", 1.0, Stored::I16, Fixed},
    {15022, 10, 1, 56, "HwDatablockTemplate", "POK_TEMPERATURE", 100.0, Stored::I32, Fixed, true},
    {15023, 10, 1, 56, "HwDatablockTemplate", "POK_TEMPCORR_LEVEL", 0.01, Stored::I32, Fixed, true},
    {15024, 1, 1, 20, "HwDatablockTemplate", "DET_DIFF_TEMPERATURE", 100.0, Stored::I32, Fixed, true},
    {15025, 1, 1, 20, "HwDatablockTemplate", "DET_TEMPCORR_LOW_FREQ", 100.0, Stored::I32, Fixed, true},
    {15026, 1, 1, 20, "HwDatablockTemplate", "DET_TEMPCORR_HIGH_FREQ", 100.0, Stored::I32, Fixed, true},
    {15027, 10, 10, 416, "HwDatablockTemplate", "DET_TEMPCORR_MIN_FREQ_VALUES", 100.0, Stored::I32, Fixed, true},
    {15028, 10, 10, 416, "HwDatablockTemplate", "DET_TEMPCORR_MAX_FREQ_VALUES", 100.0, Stored::I32, Fixed, true},
    {15690, 6, 1, 28, "HwDatablockStereocoderCo", "STEREOCODER_CO", 1.0, Stored::I16, Convertible},
    {15700, 10, 1, 56, "HwDatablockKelRfboExtInGain", "RFBO_EXTIN_GAIN", 1.0, Stored::I32, Convertible},
    {15701, 10, 1, 56, "HwDatablockKelRfboExtInOffset", "RFBO_EXTIN_OFFSET", 1.0, Stored::I32, Convertible},
    {15705, 128, 1, 528, "HwDatablockKelRfboDetTuneFreq", "RFBO_DET_TUNE_FREQ", 100.0, Stored::U32, Convertible},
    {15706, 2, 128, 1040, "HwDatablockKelRfboDetTuneData", "RFBO_DET_TUNE_DATA", 1.0, Stored::I32, Convertible},
    {15710, 8, 1, 48, "HwDatablockKelRfboTcxoCal", "RFBO_TCXO_CAL", 1.0, Stored::I32, Convertible},
    {15715, 128, 1, 528, "HwDatablockKelRfboRfLevelMaxFreq", "RFBO_RFLEVEL_MAX_FREQ", 100.0, Stored::U32, Convertible},
    {15716, 2, 128, 1040, "HwDatablockKelRfboRfLevelMaxData", "RFBO_RFLEVEL_MAX_DATA", 0.01, Stored::I32, Convertible},
    {15720, 200, 1, 816, "HwDatablockKelRfboAttCalFreq", "RFBO_ATT_CAL_FREQ", 100.0, Stored::U32, Convertible},
    {15721, 27, 200, 21724, "HwDatablockKelRfboAttCalData", "RFBO_ATT_CAL_DATA", 1.0, Stored::I32, Convertible},
    {15725, 350, 1, 1416, "HwDatablockKelRfboExtCalFreq", "RFBO_EXT_CAL_FREQ", 100.0, Stored::U32, Convertible},
    {15726, 5, 350, 7016, "HwDatablockKelRfboExtCalData", "RFBO_EXT_CAL_DATA", 1.0, Stored::I32, Convertible},
    {15730, 10, 1, 56, "HwDatablockKelRfboAlcFreq", "RFBO_ALC_FREQ", 100.0, Stored::U32, Convertible},
    {15731, 4, 10, 176, "HwDatablockKelRfboAlcData", "RFBO_ALC_DATA", 1.0, Stored::I32, Convertible},
    {15735, 50, 1, 216, "HwDatablockKelRfboTempFreq", "RFBO_TEMP_FREQ", 100.0, Stored::U32, Convertible},
    {15740, 6, 50, 1216, "HwDatablockKelRfboTempGradient", "RFBO_TEMP_GRADIENT", 1.0, Stored::I32, Convertible},
    {15745, 6, 50, 1216, "HwDatablockKelRfboTempOffset", "RFBO_TEMP_OFFSET", 1.0, Stored::I32, Convertible},
    {15750, 50, 1, 216, "HwDatablockKelRfboAttRegData", "RFBO_ATTREG_DATA", 1.0, Stored::U32, Convertible},
    {15755, 150, 1, 616, "HwDatablockKelRfboSHFreq", "RFBO_S_H_FREQ", 10.0, Stored::U32, Convertible},
    {15756, 35, 150, 21156, "HwDatablockKelRfboSHData", "RFBO_S_H_DATA", 1.0, Stored::I32, Convertible},
    {15760, 200, 1, 1616, "HwDatablockDunRfboAttCalFreq", "BLOCK_DUN_RFBO_ATT_CAL_FREQ", 100.0, Stored::F64, Fixed},
    {15761, 40, 200, 32176, "HwDatablockDunRfboAttCalData", "BLOCK_DUN_RFBO_ATT_CAL_DATA", 1.0, Stored::I32, Fixed},
    {15770, 50, 1, 416, "HwDatablockDunRfboTempCompFreq", "BLOCK_DUN_RFBO_TEMP_COMP_FREQ", 1.0, Stored::F64, Fixed},
    {15771, 80, 50, 16336, "HwDatablockDunRfboTempCompData", "BLOCK_DUN_RFBO_TEMP_COMP_DATA", 1.0, Stored::I32, Fixed},
    {15798, 50, 4, 816, "HwDatablockDunRfboAttRegAttenuation", "DUN_RFBO_ATTREG_ATTENUATION", 1.0, Stored::F32, Fixed},
    {15799, 50, 4, 816, "HwDatablockDunRfboAttRegData", "DUN_RFBO_ATTREG_DATA", 1.0, Stored::U32, Fixed},
    {15800, 128, 1, 528, "HwDatablockToviVectorRfLevelMaxFreq", "VECTOR_RFLEVEL_MAX_FREQ", 100.0, Stored::U32, Convertible},
    {15801, 1, 128, 528, "HwDatablockToviVectorRfLevelMaxData", "VECTOR_RFLEVEL_MAX_DATA", 0.01, Stored::I32, Convertible},
    {15810, 32, 1, 144, "HwDatablockToviVectorAlcFreq", "VECTOR_ALC_FREQ", 100.0, Stored::U32, Convertible},
    {15811, 4, 32, 528, "HwDatablockToviVectorAlcData", "VECTOR_ALC_DATA", 100.0, Stored::U32, Convertible},
    {15820, 32, 1, 144, "HwDatablockToviVectorAlcIqNormFreq", "VECTOR_ALC_IQNORM_FREQ", 100.0, Stored::U32, Convertible},
    {15821, 4, 32, 528, "HwDatablockToviVectorAlcIqNormData", "VECTOR_ALC_IQNORM_DATA", 1.0, Stored::U32, Convertible},
    {15830, 32, 1, 144, "HwDatablockToviVectorAlcIqWideFreq", "VECTOR_ALC_IQWIDE_FREQ", 100.0, Stored::U32, Convertible},
    {15831, 4, 32, 528, "HwDatablockToviVectorAlcIqWideData", "VECTOR_ALC_IQWIDE_DATA", 1.0, Stored::U32, Convertible},
    {15840, 292, 1, 1184, "HwDatablockToviRfBoExtCalVecFreq", "RFBO_EXT_CAL_VEC_FREQ", 100.0, Stored::U32, Convertible},
    {15841, 4, 292, 4688, "HwDatablockToviRfBoExtCalVecData", "RFBO_EXT_CAL_VEC_DATA", 1.0, Stored::I32, Convertible},
    {15842, 20, 1, 96, "HwDatablockToviRfboAttCalVecFreq", "RFBO_ATT_CAL_VEC_FREQ", 1.0, Stored::U32, Convertible},
    {15843, 27, 20, 2284, "HwDatablockToviRfboAttCalVecData", "RFBO_ATT_CAL_VEC_DATA", 1.0, Stored::I32, Convertible},
    {15844, 128, 1, 528, "HwDatablockToviRfboRfLevelMaxVecFreq", "RFBO_RFLEVEL_MAX_VEC_FREQ", 100.0, Stored::U32, Convertible},
    {15845, 1, 128, 528, "HwDatablockToviRfboRfLevelMaxVecData", "RFBO_RFLEVEL_MAX_VEC_DATA", 0.01, Stored::I32, Convertible},
    {15850, 12, 1, 28, "HwDatablockToviVectorLevconTemp", "VECTOR_LEVCON_TEMP", 1.0, Stored::I8, Convertible},
    {15851, 64, 1, 144, "HwDatablockToviVectorLevconTempFreq", "VECTOR_LEVCON_TEMP_FREQ", 1.0, Stored::U16, Convertible},
    {15852, 50, 1, 116, "HwDatablockToviVectorLevconTempLevcon", "VECTOR_LEVCON_TEMP_LEVCON", 1.0, Stored::U16, Convertible},
    {15853, 64, 50, 6416, "HwDatablockToviVectorLevconTempData", "_DatablockId_Tovi_Vector_Levcon_Temp_Data00_", 1.0, Stored::U16, Convertible},
    {15854, 64, 50, 6416, "HwDatablockToviVectorLevconTempData", "_DatablockId_Tovi_Vector_Levcon_Temp_Data01_", 1.0, Stored::U16, Convertible},
    {15855, 64, 50, 6416, "HwDatablockToviVectorLevconTempData", "_DatablockId_Tovi_Vector_Levcon_Temp_Data02_", 1.0, Stored::U16, Convertible},
    {15856, 64, 50, 6416, "HwDatablockToviVectorLevconTempData", "_DatablockId_Tovi_Vector_Levcon_Temp_Data03_", 1.0, Stored::U16, Convertible},
    {15857, 64, 50, 6416, "HwDatablockToviVectorLevconTempData", "_DatablockId_Tovi_Vector_Levcon_Temp_Data04_", 1.0, Stored::U16, Convertible},
    {15858, 64, 50, 6416, "HwDatablockToviVectorLevconTempData", "_DatablockId_Tovi_Vector_Levcon_Temp_Data05_", 1.0, Stored::U16, Convertible},
    {15859, 64, 50, 6416, "HwDatablockToviVectorLevconTempData", "_DatablockId_Tovi_Vector_Levcon_Temp_Data06_", 1.0, Stored::U16, Convertible},
    {15860, 64, 50, 6416, "HwDatablockToviVectorLevconTempData", "_DatablockId_Tovi_Vector_Levcon_Temp_Data07_", 1.0, Stored::U16, Convertible},
    {15861, 64, 50, 6416, "HwDatablockToviVectorLevconTempData", "_DatablockId_Tovi_Vector_Levcon_Temp_Data08_", 1.0, Stored::U16, Convertible},
    {15862, 64, 50, 6416, "HwDatablockToviVectorLevconTempData", "_DatablockId_Tovi_Vector_Levcon_Temp_Data09_", 1.0, Stored::U16, Convertible},
    {16000, 750, 1, 3016, "HwDatablockKelRfboExtCalUserFreq", "RFBO_EXT_CAL_USER_FREQ", 100.0, Stored::U32, Convertible},
    {16001, 5, 750, 15176, "HwDatablockKelRfboExtCalUserData", "RFBO_EXT_CAL_USER_DATA", 1.0, Stored::I32, Convertible},
    {16002, 350, 1, 1416, "HwDatablockToviRfboExtCalVecUserFreq", "RFBO_EXT_CAL_VEC_USER_FREQ", 100.0, Stored::U32, Convertible},
    {16003, 4, 350, 5776, "HwDatablockToviRfboExtCalVecUserData", "RFBO_EXT_CAL_VEC_USER_DATA", 1.0, Stored::I32, Convertible},
};
// clang-format on

const Held held(classes, &TableClass::id);

const Field& fieldNamed(const FieldList& fields, std::string_view name) {
    static const Field none{};
    const auto found = std::ranges::find(fields, name, [](const Field& field) { return std::string_view(field.name); });
    return found == fields.end() ? none : *found;
}

FieldList fieldsOf(int id) {
    const CatalogueEntry* const entry = findEntry(id);
    return entry ? entry->fields(*entry, id) : FieldList();
}

TEST(NamedTables, EveryClassIsWhatItsRowSays) {
    for (const TableClass& expected : classes) {
        SCOPED_TRACE(expected.id);
        const CatalogueEntry* const entry = findEntry(expected.id);
        ASSERT_NE(entry, nullptr);
        EXPECT_EQ(entry->className, expected.className);
        EXPECT_TRUE(entry->registered);
        EXPECT_EQ(entry->key(*entry, expected.id), expected.key);
        EXPECT_EQ(entry->restore != nullptr, expected.conversion == Convertible);

        const std::unique_ptr<HwDatablock> block = makeBlock(expected.id);
        auto* const table = dynamic_cast<TableBlock*>(block.get());
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(table->getId(), expected.id);
        EXPECT_EQ(table->getBlockSize(), expected.size);
        EXPECT_EQ(table->getByteArrayData().size(), expected.size);
        EXPECT_EQ(table->getKeyName(), expected.key);
        EXPECT_EQ(table->getScaleFactor(), expected.scale);
        EXPECT_EQ(table->getMaxRows(), expected.rows);
        EXPECT_EQ(table->getMaxColumns(), expected.columns);
        EXPECT_EQ(table->getStopConversionOnError(), expected.flag);

        const FieldList fields = fieldsOf(expected.id);
        const Field& values = fieldNamed(fields, "values");
        EXPECT_EQ(values.stored, expected.stored);
        EXPECT_EQ(values.scale, expected.scale);
        EXPECT_EQ(values.dimensions[0].extent, expected.rows);
        EXPECT_EQ(values.dimensions[1].extent, expected.columns);
    }
}

TEST(NamedTables, DataTablesLeadToTheListsThatLabelThem) {
    const std::map<int, int> columnLists{
        {11306, 11305}, {11307, 11305}, {14805, 14803}, {14806, 14804}, {15706, 15705}, {15716, 15715},
        {15721, 15720}, {15726, 15725}, {15731, 15730}, {15740, 15735}, {15745, 15735}, {15756, 15755},
        {15761, 15760}, {15771, 15770}, {15801, 15800}, {15811, 15810}, {15821, 15820}, {15831, 15830},
        {15841, 15840}, {15843, 15842}, {15845, 15844}, {16001, 16000}, {16003, 16002}, {12301, 12300},
        {12302, 12300}, {12303, 12300}, {12304, 12300}, {12306, 12300}, {12307, 12300}, {12308, 12300},
    };
    const std::map<int, int> rowLists{{12306, 12305}, {12307, 12305}, {12308, 12305}, {15023, 15022}};
    const auto listed = [](const std::map<int, int>& lists, int id) {
        const auto found = lists.find(id);
        return found == lists.end() ? 0 : found->second;
    };
    for (const TableClass& table : classes) {
        const bool isTemperatureData = table.id >= 15853 && table.id <= 15862;
        const FieldList fields = fieldsOf(table.id);
        const Field& values = fieldNamed(fields, "values");
        EXPECT_EQ(values.dimensions[0].axisBlock, isTemperatureData ? 15851 : listed(rowLists, table.id)) << table.id;
        EXPECT_EQ(values.dimensions[1].axisBlock, isTemperatureData ? 15852 : listed(columnLists, table.id))
            << table.id;
    }
}

TEST(NamedTables, StoredValuesArePrintedInUserUnits) {
    const struct {
        int id;
        double stored;
        std::string_view text;
    } rows[] = {
        {15716, -1234, "-12.340"}, {15755, 12345, "123450.000"}, {15850, -1, "-1.000"}, {14803, 12345, "1234500.000"},
        {15690, -7, "-7.000"},     {15760, 0.25, "25.000"},      {15798, 0.5, "0.500"}, {15799, 4e9, "4000000000.000"},
    };
    for (const auto& [id, stored, text] : rows) {
        const std::unique_ptr<HwDatablock> block = makeBlock(id);
        auto* const table = dynamic_cast<TableBlock*>(block.get());
        ASSERT_NE(table, nullptr) << id;
        table->setNumberOfRows(1);
        table->setNumberOfColumns(1);
        const FieldList fields = fieldsOf(id);
        const Field& values = fieldNamed(fields, "values");
        detail::withStoredType(values.stored, [&, number = stored]<class StoreT>(StoreT) {
            bytes::store(std::span(table->getData(), table->getBlockSize()), values.offset,
                         static_cast<StoreT>(number));
        });
        EXPECT_EQ(textOf(*table), "ID:  " + table->getKeyName() + "\nCOUNT:  1*1\n1: \t" + std::string(text) + "\n\n");
    }
}

TEST(NamedTables, TemperatureDataTakesKeyAndOffset) {
    char key[] = "ANY_KEY";
    HwDatablockToviVectorLevconTempData block(key, 4, true);
    EXPECT_EQ(block.getId(), 15857);
    EXPECT_TRUE(block.getStopConversionOnError());
    EXPECT_EQ(textOf(block), "ID:  ANY_KEY\nCOUNT:  0*0\n\n");
}

TEST(NamedTables, ConversionSkipsTheDunBlocks) {
    HwDatablockOldStyleInterpreter interpreter;
    for (const TableClass& table : classes) {
        const std::unique_ptr<HwDatablock> block = makeBlock(table.id);
        block->setChecksum(block->computeChecksum());
        const std::string before = bytesOf(*block);
        EXPECT_EQ(interpreter.swapHwDatablock(HwDataFormatForeign, table.id, block.get()),
                  table.conversion == Convertible)
            << table.id;
        EXPECT_EQ(block->getDataFormatTyp(),
                  table.conversion == Convertible ? HwDataFormatForeign : HwDataFormatFirmware);
        EXPECT_EQ(bytesOf(*block), before);
    }
}

} // namespace NamedTablesTest
