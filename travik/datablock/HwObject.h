#pragma once

#include <travik/datablock/Export.h>

#include <QString>

#include <atomic>

namespace Travik {

/// The root of every block: gives it debug lines with a class (which subsystem a line concerns) and a level (how severe
/// it is).
///
/// The pattern of use: ask `chkdbg(class, level)`, which records both and says whether such a line would be shown; only
/// then build the text and write it with `dbgout(text)`, which uses what was recorded.
class TRAVIK_DATABLOCK_EXPORT HwObject {
public:
    static constexpr int HwProtocolLevelCritical = 0;
    static constexpr int HwProtocolLevelError = 1;
    static constexpr int HwProtocolLevelWarning = 2;
    static constexpr int HwProtocolLevelInfo = 3;
    static constexpr int HwProtocolLevelTrace = 4;
    static constexpr int HwProtocolLevelDebug = 5;

    static constexpr int HwProtocolTypeAllTypes = -1; ///< stands for every class
    static constexpr int HwProtocolTypeDriverAccess = 0;
    static constexpr int HwProtocolTypeHardwareAccess = 1;
    static constexpr int HwProtocolTypeJtag = 2;
    static constexpr int HwProtocolTypeRepository = 3;
    static constexpr int HwProtocolTypeSpi = 4;
    static constexpr int HwProtocolTypeMicroController = 5;
    static constexpr int HwProtocolTypeSerialBus = 6;
    static constexpr int HwProtocolTypeTimer = 7;
    static constexpr int HwProtocolTypeEeprom = 8;
    static constexpr int HwProtocolTypeJamPlayer = 9;
    static constexpr int HwProtocolTypeInterrupt = 10;
    static constexpr int HwProtocolTypeDiagnose = 12;

    /// The levels' texts, 20 characters each, by value; a null entry ends the array.
    static const char* levelDisplayStr[7];
    /// The classes' texts, 18 characters each, by value; blank for 11, which no class has. A null entry ends the array.
    static const char* classDisplayStr[14];

    HwObject() = default;
    HwObject(const HwObject&) = default;
    HwObject& operator=(const HwObject&) = default;
    virtual ~HwObject();

    /// The level at which this object writes by default: `HwProtocolLevelDebug`.
    virtual int getDebugLevel();

    /// Records class and level as the last ones; true when such a line would be shown.
    bool chkdbg(int cls, int level) const;
    /// The same at the object's own level.
    bool chkdbg(int cls);

    /// Writes a line with the class recorded last and the given level.
    void dbgout(int level, const QString& text) const;
    /// Writes a line with the class and level recorded last.
    void dbgout(const QString& text) const;

    /// The prefix followed by the run-time class name where the object is also a `QObject`, otherwise followed by
    /// "<no QObject class>".
    QString getClassName(const QString& prefix);
};

/// The thin layer between the blocks and the debug service.
///
/// Its last class and level are the whole process's: a line may come out with those that another thread has recorded in
/// between. They may be recorded and read from any thread.
class TRAVIK_DATABLOCK_EXPORT HwDebug : public HwObject {
public:
    /// Starts the debug service and gives it the display texts. Called once by the user of the library.
    static void init();
    static void exit();
    /// -1 shows every class, otherwise each class whose bit is set.
    static void setDebugMask(int mask);
    /// Shows the lines at or below this level.
    static void setDebugLevel(int level);

    /// Records class and level, whether or not the check passes; true when such a line would be shown.
    static bool checkOutput(int cls, int level);
    /// Records class and level, and writes the line where the service shows it.
    static void println(int cls, int level, const QString& text);
    static void println(const QString& text);
    static int getLastClass() { return lastClass.load(std::memory_order_relaxed); }
    static int getLastLevel() { return lastLevel.load(std::memory_order_relaxed); }

    /// Appends "yyyy-MM-dd; hh:mm -- text", CR and LF to the service log file "/tmp/SrvExt.log". A file that cannot be
    /// opened is passed over.
    static void srvExtFileOutput(const char* text);

private:
    static std::atomic<int> lastClass;
    static std::atomic<int> lastLevel;
};

} // namespace Travik
