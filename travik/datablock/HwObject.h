#pragma once

#include <travik/datablock/Export.h>

#include <QString>

namespace Travik {

/// The root of every block: gives it debug lines with a class (which subsystem a line concerns) and a level (how severe
/// it is).
///
/// The pattern of use: ask `chkdbg(class, level)`, which records both and says whether such a line would be shown; only
/// then build the text and write it with `dbgout(text)`, which uses what was recorded.
class TRAVIK_DATABLOCK_EXPORT HwObject {
public:
    enum : int {
        HwProtocolLevelCritical = 0,
        HwProtocolLevelError = 1,
        HwProtocolLevelWarning = 2,
        HwProtocolLevelInfo = 3,
        HwProtocolLevelTrace = 4,
        HwProtocolLevelDebug = 5
    };

    enum : int {
        HwProtocolTypeAllTypes = -1, ///< stands for every class
        HwProtocolTypeDriverAccess = 0,
        HwProtocolTypeHardwareAccess = 1,
        HwProtocolTypeJtag = 2,
        HwProtocolTypeRepository = 3,
        HwProtocolTypeSpi = 4,
        HwProtocolTypeMicroController = 5,
        HwProtocolTypeSerialBus = 6,
        HwProtocolTypeTimer = 7,
        HwProtocolTypeEeprom = 8,
        HwProtocolTypeJamPlayer = 9,
        HwProtocolTypeInterrupt = 10,
        HwProtocolTypeDiagnose = 12
    };

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

/// The thin layer between the blocks and the debug service. Its last class and level are shared by the whole process
/// and not locked.
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
    static int getLastClass() { return lastClass; }
    static int getLastLevel() { return lastLevel; }

    /// Appends "yyyy-MM-dd; hh:mm -- text", CR and LF to the service log file "/tmp/SrvExt.log". A file that cannot be
    /// opened is passed over.
    static void srvExtFileOutput(const char* text);

private:
    static int lastClass;
    static int lastLevel;
};

} // namespace Travik
