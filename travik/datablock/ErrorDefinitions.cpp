#include <travik/datablock/ErrorDefinitions.h>
#include <travik/datablock/HwDatablock.h>
#include <travik/platform/ErrorManager.h>

#include <atomic>

namespace Travik {

namespace {

constexpr CErrorManager::SErrorDefinition errorTable[] = {
    {InvalidChecksum, 2, 50, 0, "Check of the EEPROM data of a block failed, invalid checksum", "", ""},
    {DownloadDenied, 1, 202, 0, "Check of new EEPROM data failed, download to Eeprom is denied", "", ""},
    {WriteToEepromFailed, 1, 203, 0, "WriteToEepromFailed", "", ""},
    {-1, 0, 0, 0, "", "", ""},
};

std::atomic_flag errorsRegistered;

} // namespace

void HwDatablock::registerErrors() {
    if (!errorsRegistered.test_and_set())
        ErrorManager()->registerErrors(errorTable, 16);
}

void HwDatablock::signalError(int code, const char* name) {
    ErrorManager()->signal(code, QStringLiteral("   ") + QLatin1StringView(name));
}

} // namespace Travik
