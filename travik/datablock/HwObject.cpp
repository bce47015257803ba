#include <travik/datablock/HwObject.h>
#include <travik/platform/Debug.h>

#include <QDateTime>
#include <QFile>
#include <QObject>

#include <typeinfo>

namespace Travik {

namespace {

// The debug service tells the modules of the instrument software apart by this number.
constexpr moduleId thisModule = 2;

} // namespace

const char* HwObject::levelDisplayStr[7] = {"++ CRITICAL ++: *** ",
                                            "         Error:     ",
                                            "       Warning:     ",
                                            "          Info:     ",
                                            "         Trace:     ",
                                            "         Debug:     ",
                                            nullptr};

const char* HwObject::classDisplayStr[14] = {"    DriverAccess, ", "  HardwareAccess, ",
                                             "            Jtag, ", "      Repository, ",
                                             "             Spi, ", " MicroController, ",
                                             "       SerialBus, ", "           Timer, ",
                                             "          Eeprom, ", "       JamPlayer, ",
                                             "       Interrupt, ", "                  ",
                                             "        Diagnose, ", nullptr};

HwObject::~HwObject() = default;

int HwObject::getDebugLevel() { return HwProtocolLevelDebug; }

bool HwObject::chkdbg(int cls, int level) const { return HwDebug::checkOutput(cls, level); }

bool HwObject::chkdbg(int cls) { return HwDebug::checkOutput(cls, getDebugLevel()); }

void HwObject::dbgout(int level, const QString& text) const { HwDebug::println(HwDebug::getLastClass(), level, text); }

void HwObject::dbgout(const QString& text) const { HwDebug::println(text); }

QString HwObject::getClassName(const QString& prefix) {
    const auto* object = dynamic_cast<const QObject*>(this);
    return prefix +
           (object ? QString::fromLatin1(object->metaObject()->className()) : QStringLiteral("<no QObject class>"));
}

constinit std::atomic<int> HwDebug::lastClass = HwProtocolTypeAllTypes;
constinit std::atomic<int> HwDebug::lastLevel = HwProtocolLevelDebug;

void HwDebug::init() {
    Debug::initDebug();
    Debug::setMessageLevelDescriptions(thisModule, -1, levelDisplayStr);
    Debug::setMessageClassDescriptions(thisModule, -1, classDisplayStr);
}

void HwDebug::exit() { Debug::exitDebug(); }

void HwDebug::setDebugMask(int mask) { Debug::enableMessageClassType(thisModule, mask); }

void HwDebug::setDebugLevel(int level) { Debug::setClippingLevel(thisModule, level); }

bool HwDebug::checkOutput(int cls, int level) {
    lastClass.store(cls, std::memory_order_relaxed);
    lastLevel.store(level, std::memory_order_relaxed);
    return Debug::isActive(thisModule, level, cls);
}

void HwDebug::println(int cls, int level, const QString& text) {
    if (checkOutput(cls, level))
        Debug::println(thisModule, cls, QString::fromLatin1(text.toLatin1()), level, 0, nullptr, -1);
}

void HwDebug::println(const QString& text) { println(getLastClass(), getLastLevel(), text); }

void HwDebug::srvExtFileOutput(const char* text) {
    QFile file(QStringLiteral("/tmp/SrvExt.log"));
    const QString time = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd; hh:mm"));
    if (file.open(QIODevice::WriteOnly | QIODevice::Append))
        file.write(time.toLatin1() + " -- " + text + "\r\n");
}

} // namespace Travik
