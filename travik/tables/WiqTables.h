#pragma once

#include <travik/tables/CountedTables.h>
#include <travik/text/TableTemplates.h>
#include <travik/text/TextLayout.h>

#include <ostream>

/// WIQ calibration of the WEN board. The dictionary does not register these blocks; their users create them.
namespace Travik {

/// A block of vectors that are set and read whole; a vector that is null is left alone. Says its number of values from
/// its construction on; has no text. `setBlock` refuses a record with a wrong checksum with error 1040000.
template <class R>
class WiqVectorBlock : public DescribedBlock<R> {
public:
    explicit WiqVectorBlock(bool stopConversionOnError = false)
        : WiqVectorBlock::DescribedBlock(stopConversionOnError) {
        this->template put<&R::count>(R::length);
    }

    int setBlock(const R* record) {
        if (!this->verifyRecord(record)) {
            this->signalError(InvalidChecksum, R::table.name.errorName);
            return 1;
        }
        return WiqVectorBlock::DescribedBlock::setBlock(record);
    }

protected:
    template <auto Vector>
    void putVector(const double* values) {
        for (unsigned int i = 0; values && i < R::length; ++i)
            this->template put<Vector>(values[i], i);
    }
    template <auto Vector>
    void loadVector(double* values) const {
        for (unsigned int i = 0; values && i < R::length; ++i)
            values[i] = this->template get<Vector>(i);
    }
};

#pragma pack(push, 1)
struct TRAVIK_DATABLOCK_EXPORT HwSDatablockWenWIQQuadDac : HwSDatablockHeader {
    static constexpr unsigned int length = 13;
    static const PlainTable table;

    unsigned int count; ///< 13
    double values[length];
};

struct TRAVIK_DATABLOCK_EXPORT HwSDatablockWenWiqSensorData : HwSDatablockHeader {
    static constexpr unsigned int length = 28;
    static const PlainTable table;

    unsigned int count; ///< 28, of each vector
    double first[length];
    double second[length];
};
#pragma pack(pop)
static_assert(sizeof(HwSDatablockWenWIQQuadDac) == 116);
static_assert(sizeof(HwSDatablockWenWiqSensorData) == 460);

template <>
inline constexpr auto recordFields<HwSDatablockWenWIQQuadDac> =
    describe<HwSDatablockWenWIQQuadDac>(field<&HwSDatablockWenWIQQuadDac::count>("count").as(Role::Count),
                                        field<&HwSDatablockWenWIQQuadDac::values>("values").along(0, "point", "count"));

template <>
inline constexpr auto recordFields<HwSDatablockWenWiqSensorData> = describe<HwSDatablockWenWiqSensorData>(
    field<&HwSDatablockWenWiqSensorData::count>("count").as(Role::Count),
    field<&HwSDatablockWenWiqSensorData::first>("first").along(0, "point", "count"),
    field<&HwSDatablockWenWiqSensorData::second>("second").along(0, "point", "count"));

/// 15649: the quadrature DAC's vector of 13 values.
class TRAVIK_DATABLOCK_EXPORT HwDatablockWenWIQQuadDac : public WiqVectorBlock<HwSDatablockWenWIQQuadDac> {
public:
    using WiqVectorBlock::WiqVectorBlock;

    /// Takes 13 values; always 0.
    int setWenWiqQuadDacData(const double* values);
    /// Hands out 13 values, and whether the block's checksum holds; the values whether it does or not.
    void getWenWiqQuadDacData(double* values, bool& valid);
};

/// 15648: the sensor's two vectors of 28 values.
class TRAVIK_DATABLOCK_EXPORT HwDatablockWenWiqSensorData : public WiqVectorBlock<HwSDatablockWenWiqSensorData> {
public:
    using WiqVectorBlock::WiqVectorBlock;

    /// Takes 28 values for each vector.
    void setWenWiqSensorData(const double* first, const double* second);
    /// Hands out 28 values of each vector, and whether the block's checksum holds; the values whether it does or not.
    void getWenWiqSensorData(double* first, double* second, bool& valid);
};

/// As the base template, in a text of its own: ten decimals, all rows one to a line, nothing behind the last.
template <class StoreT, class UserT, unsigned int N, unsigned int M>
class TRAVIK_DATABLOCK_EXPORT HwDatablockBaseTemplateWenW : public HwDatablockBaseTemplate<StoreT, UserT, N, M> {
public:
    using HwDatablockBaseTemplateWenW::HwDatablockBaseTemplate::HwDatablockBaseTemplate;

    std::ostream& printToStream(std::ostream& os) override {
        static constexpr MatrixLayout layout{.head = {}, .labelSeparator = ": ", .valueSeparator = "\t"};
        TextWriter out(os);
        (out << "ID:  " << this->getKeyName()).endLine();
        (out << "COUNT:  " << this->getNumberOfRows() << '*' << this->getNumberOfColumns()).endLine();
        printRows(
            out, layout, this->getNumberOfRows(), this->getNumberOfColumns(),
            [](TextWriter& line, unsigned int row) { line << row + 1; },
            [this](TextWriter& line, unsigned int row, unsigned int column) {
                line.fixed(this->product(row, column), 10);
            });
        return os;
    }
};

/// 15606 and up: the RF imbalance, up to 50 rows by 7 columns. Its key name is its creator's choice.
class TRAVIK_DATABLOCK_EXPORT HwDatablockWenWiqRfImbalanceData
    : public HwDatablockBaseTemplateWenW<float, double, 50, 7> {
public:
    static constexpr TableSpec table{.id = 15606, .key = "WEN_WIQ_RF_IMBALANCE_DATA"};

    HwDatablockWenWiqRfImbalanceData(const char* keyName, int idOffset, bool stopConversionOnError)
        : HwDatablockBaseTemplateWenW(keyName, table.id, static_cast<unsigned int>(idOffset), table.scale,
                                      stopConversionOnError) {}
};
using HwSDatablockWenWiqRfImbalanceData = HwDatablockWenWiqRfImbalanceData::Record;

} // namespace Travik
