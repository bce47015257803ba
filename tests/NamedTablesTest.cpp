#include "Support.h"

#include <map>

using namespace Travik;
using namespace Support;

namespace {

enum Conversion : bool { Fixed, Convertible };

struct TableClass {
    int id;
    std::string_view className;
    Stored stored;
    unsigned int rows;
    unsigned int columns;
    unsigned int size;
    std::string_view key;
    double scale;
    Conversion conversion;
    bool flag = false; // of the prototype
};

// clang-format off
constexpr TableClass classes[] = {
    {11305, "HwDatablockSAttCTempFreq", Stored::U32, 50, 1, 216, "SATT_TEMP_FREQ", 100.0, Fixed, true},
    {11306, "HwDatablockSAttCTempGradient", Stored::I32, 4, 50, 816, "SATT_TEMP_GRADIENT", 1.0, Fixed, true},
    {11307, "HwDatablockSAttCTempOffset", Stored::I32, 4, 50, 816, "SATT_TEMP_OFFSET", 1.0, Fixed, true},
    {14801, "HwDatablockMbrdIqInputA", Stored::I32, 10, 1, 56, "IQ_INPUT_A", 1.0, Fixed},
    {14802, "HwDatablockMbrdIqInputB", Stored::I32, 10, 1, 56, "IQ_INPUT_B", 1.0, Fixed},
    {14803, "HwDatablockMbrdExtCalUserFreqA", Stored::U32, 600, 1, 2416, "EXT_CAL_USER_FREQ_A", 100.0, Fixed},
    {14804, "HwDatablockMbrdExtCalUserFreqB", Stored::U32, 600, 1, 2416, "EXT_CAL_USER_FREQ_B", 100.0, Fixed},
    {14805, "HwDatablockMbrdExtCalUserDataA", Stored::I16, 13, 600, 15776, "EXT_CAL_USER_DATA_A", 1.0, Fixed},
    {14806, "HwDatablockMbrdExtCalUserDataB", Stored::I16, 13, 600, 15776, "EXT_CAL_USER_DATA_B", 1.0, Fixed},
    {15690, "HwDatablockStereocoderCo", Stored::I16, 6, 1, 28, "STEREOCODER_CO", 1.0, Convertible},
    {15700, "HwDatablockKelRfboExtInGain", Stored::I32, 10, 1, 56, "RFBO_EXTIN_GAIN", 1.0, Convertible},
    {15701, "HwDatablockKelRfboExtInOffset", Stored::I32, 10, 1, 56, "RFBO_EXTIN_OFFSET", 1.0, Convertible},
    {15705, "HwDatablockKelRfboDetTuneFreq", Stored::U32, 128, 1, 528, "RFBO_DET_TUNE_FREQ", 100.0, Convertible},
    {15706, "HwDatablockKelRfboDetTuneData", Stored::I32, 2, 128, 1040, "RFBO_DET_TUNE_DATA", 1.0, Convertible},
    {15710, "HwDatablockKelRfboTcxoCal", Stored::I32, 8, 1, 48, "RFBO_TCXO_CAL", 1.0, Convertible},
    {15715, "HwDatablockKelRfboRfLevelMaxFreq", Stored::U32, 128, 1, 528, "RFBO_RFLEVEL_MAX_FREQ", 100.0, Convertible},
    {15716, "HwDatablockKelRfboRfLevelMaxData", Stored::I32, 2, 128, 1040, "RFBO_RFLEVEL_MAX_DATA", 0.01, Convertible},
    {15720, "HwDatablockKelRfboAttCalFreq", Stored::U32, 200, 1, 816, "RFBO_ATT_CAL_FREQ", 100.0, Convertible},
    {15721, "HwDatablockKelRfboAttCalData", Stored::I32, 27, 200, 21724, "RFBO_ATT_CAL_DATA", 1.0, Convertible},
    {15725, "HwDatablockKelRfboExtCalFreq", Stored::U32, 350, 1, 1416, "RFBO_EXT_CAL_FREQ", 100.0, Convertible},
    {15726, "HwDatablockKelRfboExtCalData", Stored::I32, 5, 350, 7016, "RFBO_EXT_CAL_DATA", 1.0, Convertible},
    {15730, "HwDatablockKelRfboAlcFreq", Stored::U32, 10, 1, 56, "RFBO_ALC_FREQ", 100.0, Convertible},
    {15731, "HwDatablockKelRfboAlcData", Stored::I32, 4, 10, 176, "RFBO_ALC_DATA", 1.0, Convertible},
    {15735, "HwDatablockKelRfboTempFreq", Stored::U32, 50, 1, 216, "RFBO_TEMP_FREQ", 100.0, Convertible},
    {15740, "HwDatablockKelRfboTempGradient", Stored::I32, 6, 50, 1216, "RFBO_TEMP_GRADIENT", 1.0, Convertible},
    {15745, "HwDatablockKelRfboTempOffset", Stored::I32, 6, 50, 1216, "RFBO_TEMP_OFFSET", 1.0, Convertible},
    {15750, "HwDatablockKelRfboAttRegData", Stored::U32, 50, 1, 216, "RFBO_ATTREG_DATA", 1.0, Convertible},
    {15755, "HwDatablockKelRfboSHFreq", Stored::U32, 150, 1, 616, "RFBO_S_H_FREQ", 10.0, Convertible},
    {15756, "HwDatablockKelRfboSHData", Stored::I32, 35, 150, 21156, "RFBO_S_H_DATA", 1.0, Convertible},
    {15760, "HwDatablockDunRfboAttCalFreq", Stored::F64, 200, 1, 1616, "BLOCK_DUN_RFBO_ATT_CAL_FREQ", 100.0, Fixed},
    {15761, "HwDatablockDunRfboAttCalData", Stored::I32, 40, 200, 32176, "BLOCK_DUN_RFBO_ATT_CAL_DATA", 1.0, Fixed},
    {15770, "HwDatablockDunRfboTempCompFreq", Stored::F64, 50, 1, 416, "BLOCK_DUN_RFBO_TEMP_COMP_FREQ", 1.0, Fixed},
    {15771, "HwDatablockDunRfboTempCompData", Stored::I32, 80, 50, 16336, "BLOCK_DUN_RFBO_TEMP_COMP_DATA", 1.0, Fixed},
    {15798, "HwDatablockDunRfboAttRegAttenuation", Stored::F32, 50, 4, 816, "DUN_RFBO_ATTREG_ATTENUATION", 1.0, Fixed},
    {15799, "HwDatablockDunRfboAttRegData", Stored::U32, 50, 4, 816, "DUN_RFBO_ATTREG_DATA", 1.0, Fixed},
    {15800, "HwDatablockToviVectorRfLevelMaxFreq", Stored::U32, 128, 1, 528, "VECTOR_RFLEVEL_MAX_FREQ", 100.0, Convertible},
    {15801, "HwDatablockToviVectorRfLevelMaxData", Stored::I32, 1, 128, 528, "VECTOR_RFLEVEL_MAX_DATA", 0.01, Convertible},
    {15810, "HwDatablockToviVectorAlcFreq", Stored::U32, 32, 1, 144, "VECTOR_ALC_FREQ", 100.0, Convertible},
    {15811, "HwDatablockToviVectorAlcData", Stored::U32, 4, 32, 528, "VECTOR_ALC_DATA", 100.0, Convertible},
    {15820, "HwDatablockToviVectorAlcIqNormFreq", Stored::U32, 32, 1, 144, "VECTOR_ALC_IQNORM_FREQ", 100.0, Convertible},
    {15821, "HwDatablockToviVectorAlcIqNormData", Stored::U32, 4, 32, 528, "VECTOR_ALC_IQNORM_DATA", 1.0, Convertible},
    {15830, "HwDatablockToviVectorAlcIqWideFreq", Stored::U32, 32, 1, 144, "VECTOR_ALC_IQWIDE_FREQ", 100.0, Convertible},
    {15831, "HwDatablockToviVectorAlcIqWideData", Stored::U32, 4, 32, 528, "VECTOR_ALC_IQWIDE_DATA", 1.0, Convertible},
    {15840, "HwDatablockToviRfBoExtCalVecFreq", Stored::U32, 292, 1, 1184, "RFBO_EXT_CAL_VEC_FREQ", 100.0, Convertible},
    {15841, "HwDatablockToviRfBoExtCalVecData", Stored::I32, 4, 292, 4688, "RFBO_EXT_CAL_VEC_DATA", 1.0, Convertible},
    {15842, "HwDatablockToviRfboAttCalVecFreq", Stored::U32, 20, 1, 96, "RFBO_ATT_CAL_VEC_FREQ", 1.0, Convertible},
    {15843, "HwDatablockToviRfboAttCalVecData", Stored::I32, 27, 20, 2284, "RFBO_ATT_CAL_VEC_DATA", 1.0, Convertible},
    {15844, "HwDatablockToviRfboRfLevelMaxVecFreq", Stored::U32, 128, 1, 528, "RFBO_RFLEVEL_MAX_VEC_FREQ", 100.0, Convertible},
    {15845, "HwDatablockToviRfboRfLevelMaxVecData", Stored::I32, 1, 128, 528, "RFBO_RFLEVEL_MAX_VEC_DATA", 0.01, Convertible},
    {15850, "HwDatablockToviVectorLevconTemp", Stored::I8, 12, 1, 28, "VECTOR_LEVCON_TEMP", 1.0, Convertible},
    {15851, "HwDatablockToviVectorLevconTempFreq", Stored::U16, 64, 1, 144, "VECTOR_LEVCON_TEMP_FREQ", 1.0, Convertible},
    {15852, "HwDatablockToviVectorLevconTempLevcon", Stored::U16, 50, 1, 116, "VECTOR_LEVCON_TEMP_LEVCON", 1.0, Convertible},
    {15853, "HwDatablockToviVectorLevconTempData", Stored::U16, 64, 50, 6416, "_DatablockId_Tovi_Vector_Levcon_Temp_Data00_", 1.0, Convertible},
    {15854, "HwDatablockToviVectorLevconTempData", Stored::U16, 64, 50, 6416, "_DatablockId_Tovi_Vector_Levcon_Temp_Data01_", 1.0, Convertible},
    {15855, "HwDatablockToviVectorLevconTempData", Stored::U16, 64, 50, 6416, "_DatablockId_Tovi_Vector_Levcon_Temp_Data02_", 1.0, Convertible},
    {15856, "HwDatablockToviVectorLevconTempData", Stored::U16, 64, 50, 6416, "_DatablockId_Tovi_Vector_Levcon_Temp_Data03_", 1.0, Convertible},
    {15857, "HwDatablockToviVectorLevconTempData", Stored::U16, 64, 50, 6416, "_DatablockId_Tovi_Vector_Levcon_Temp_Data04_", 1.0, Convertible},
    {15858, "HwDatablockToviVectorLevconTempData", Stored::U16, 64, 50, 6416, "_DatablockId_Tovi_Vector_Levcon_Temp_Data05_", 1.0, Convertible},
    {15859, "HwDatablockToviVectorLevconTempData", Stored::U16, 64, 50, 6416, "_DatablockId_Tovi_Vector_Levcon_Temp_Data06_", 1.0, Convertible},
    {15860, "HwDatablockToviVectorLevconTempData", Stored::U16, 64, 50, 6416, "_DatablockId_Tovi_Vector_Levcon_Temp_Data07_", 1.0, Convertible},
    {15861, "HwDatablockToviVectorLevconTempData", Stored::U16, 64, 50, 6416, "_DatablockId_Tovi_Vector_Levcon_Temp_Data08_", 1.0, Convertible},
    {15862, "HwDatablockToviVectorLevconTempData", Stored::U16, 64, 50, 6416, "_DatablockId_Tovi_Vector_Levcon_Temp_Data09_", 1.0, Convertible},
    {16000, "HwDatablockKelRfboExtCalUserFreq", Stored::U32, 750, 1, 3016, "RFBO_EXT_CAL_USER_FREQ", 100.0, Convertible},
    {16001, "HwDatablockKelRfboExtCalUserData", Stored::I32, 5, 750, 15176, "RFBO_EXT_CAL_USER_DATA", 1.0, Convertible},
    {16002, "HwDatablockToviRfboExtCalVecUserFreq", Stored::U32, 350, 1, 1416, "RFBO_EXT_CAL_VEC_USER_FREQ", 100.0, Convertible},
    {16003, "HwDatablockToviRfboExtCalVecUserData", Stored::I32, 4, 350, 5776, "RFBO_EXT_CAL_VEC_USER_DATA", 1.0, Convertible},
};
// clang-format on

const Field& fieldNamed(const FieldList& fields, std::string_view name) {
    static const Field none{};
    const auto found = std::ranges::find(fields, name, [](const Field& field) { return std::string_view(field.name); });
    return found == fields.end() ? none : *found;
}

FieldList fieldsOf(int id) {
    const CatalogueEntry* const entry = findEntry(id);
    return entry ? entry->fields(*entry, id) : FieldList();
}

} // namespace

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
        {15841, 15840}, {15843, 15842}, {15845, 15844}, {16001, 16000}, {16003, 16002},
    };
    for (const TableClass& table : classes) {
        SCOPED_TRACE(table.id);
        const bool isTemperatureData = table.id >= 15853 && table.id <= 15862;
        const auto listed = columnLists.find(table.id);
        const int lists[] = {isTemperatureData ? 15851 : 0, isTemperatureData             ? 15852
                                                            : listed != columnLists.end() ? listed->second
                                                                                          : 0};
        const FieldList fields = fieldsOf(table.id);
        const Field& values = fieldNamed(fields, "values");
        for (std::size_t i = 0; i < 2; ++i) {
            const Dimension& dimension = values.dimensions.at(i);
            ASSERT_EQ(dimension.axisBlock != 0 ? table.id + dimension.axisBlock : 0, lists[i]);
            if (lists[i] == 0)
                continue;
            const FieldList listFields = fieldsOf(lists[i]);
            const Field& points = fieldNamed(listFields, "values");
            EXPECT_EQ(points.role, Role::Axis);
            EXPECT_EQ(points.dimensions[0].extent, dimension.extent);
        }
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
