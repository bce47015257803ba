#include <travik/tables/WiqTables.h>

namespace Travik {

constinit const PlainTable HwSDatablockWenWIQQuadDac::table = {{15649, "HwDatablockWenWiqQuadDacData", {}}, {}};
constinit const PlainTable HwSDatablockWenWiqSensorData::table = {{15648, "HwDatablockWenWiqSensorData", {}}, {}};

int HwDatablockWenWIQQuadDac::setWenWiqQuadDacData(const double* values) {
    putVector<&Record::values>(values);
    refreshChecksum();
    return 0;
}

void HwDatablockWenWIQQuadDac::getWenWiqQuadDacData(double* values, bool& valid) {
    valid = verifyChecksum();
    loadVector<&Record::values>(values);
}

void HwDatablockWenWiqSensorData::setWenWiqSensorData(const double* first, const double* second) {
    putVector<&Record::first>(first);
    putVector<&Record::second>(second);
    refreshChecksum();
}

void HwDatablockWenWiqSensorData::getWenWiqSensorData(double* first, double* second, bool& valid) {
    valid = verifyChecksum();
    loadVector<&Record::first>(first);
    loadVector<&Record::second>(second);
}

} // namespace Travik
