#include <travik/rfboard/DunTables.h>
#include <travik/rfboard/KelTables.h>

namespace Travik {

namespace {

constexpr std::string_view toLarge = "Number of lines between ID and Count to large";
constexpr std::string_view columnsInadequate = ": Number of columns read inadequate!";
constexpr std::string_view rowsInadequate = "ERROR: Number of rows read inadequate!";
constexpr std::string_view rowsNotEqual = "ERROR: Row value (COUNT) don't not equal with number of rows";

} // namespace

constinit const ExchangeFormat HwDatablockKelRfboAttRegData::exchange{
    .table = table,
    .shape = shape,
    .number = ExchangeNumber::Hexadecimal,
    .distanceLimit = 6,
    .distanceMessage = toLarge,
    .columnMessage = " correspondent the number of columns not with the given value",
    .rowMessage = rowsNotEqual,
};

constinit const ExchangeFormat HwDatablockDunRfboAttCalFreq::exchange{
    .table = table,
    .shape = shape,
    .title = "ATT-CAL-FREQ",
    .number = ExchangeNumber::Real,
    .width = 21,
    .decimals = 10,
    .distanceLimit = 3,
    .distanceMessage = "Number of lines between ID: and COUNT: to large!",
    .columnMessage = columnsInadequate,
    .rowMessage = rowsInadequate,
};

constinit const ExchangeFormat HwDatablockDunRfboAttRegAttenuation::exchange{
    .table = table,
    .shape = shape,
    .title = "ATT-REG-ATTENUATION",
    .number = ExchangeNumber::Hundredths,
    .width = 12,
    .decimals = 2,
    .distanceLimit = 6,
    .distanceMessage = toLarge,
    .columnMessage = columnsInadequate,
    .rowMessage = rowsNotEqual,
};

constinit const ExchangeFormat HwDatablockDunRfboAttRegData::exchange{
    .table = table,
    .shape = shape,
    .title = "ATT-REG-DATA",
    .number = ExchangeNumber::Hexadecimal,
    .distanceLimit = 6,
    .distanceMessage = toLarge,
    .columnMessage = columnsInadequate,
    .rowMessage = rowsNotEqual,
};

constinit const ExchangeFormat HwDatablockDunRfboTempCompData::exchange{
    .table = table,
    .shape = shape,
    .title = "TEMP-COMP-DATA",
    .number = ExchangeNumber::Integer,
    .width = 21,
    .decimals = 10,
    .distanceLimit = 52,
    .distanceMessage = "Number of lines between ID: and COUNT: too large!",
    .columnMessage = columnsInadequate,
    .rowMessage = rowsInadequate,
};

constinit const ExchangeFormat HwDatablockDunRfboTempCompFreq::exchange{
    .table = table,
    .shape = shape,
    .title = "TEMP-COMP-FREQ",
    .number = ExchangeNumber::Real,
    .width = 21,
    .decimals = 10,
    .distanceLimit = 3,
    .distanceMessage = "Number of lines between ID: and COUNT: too large!",
    .columnMessage = columnsInadequate,
    .rowMessage = rowsInadequate,
};

} // namespace Travik
