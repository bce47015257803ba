#include <travik/platform/Debug.h>
#include <travik/platform/StandardError.h>

#include <QByteArray>

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace Travik {

namespace {

using Descriptions = std::vector<QString>;

struct Module {
    int classMask = 0;
    int clippingLevel = -1;
    Descriptions levels;
    Descriptions classes;

    bool shows(int level, int cls) const {
        if (level > clippingLevel)
            return false;
        if (cls == -1)
            return classMask != 0;
        if (classMask == -1)
            return true;
        return cls >= 0 && cls < 32 && (static_cast<unsigned>(classMask) >> cls & 1) != 0;
    }
};

struct Service {
    std::map<moduleId, Module> modules;
    Debug::LineHandler lineHandler;
    Debug::MessageBoxHandler messageBoxHandler;

    const Module* find(moduleId module) const {
        const auto found = modules.find(module);
        return found == modules.end() ? nullptr : &found->second;
    }
};

Service& service() {
    // Never destroyed: objects of static storage may write lines until the very end.
    static Service* const instance = new Service;
    return *instance;
}

// What the callers are promised: whatever fails in here stays in here.
template <typename Action>
void quietly(Action action) noexcept {
    try {
        action();
    } catch (...) {
    }
}

Descriptions copied(const char** texts) {
    Descriptions result;
    for (; texts && *texts; ++texts)
        result.push_back(QString::fromUtf8(*texts));
    return result;
}

QString description(const Descriptions& descriptions, int index) {
    const bool known = index >= 0 && static_cast<std::size_t>(index) < descriptions.size();
    return known ? descriptions[static_cast<std::size_t>(index)] : QString();
}

void writeLine(const QString& line) {
    const QByteArray bytes = line.toUtf8() + '\n';
    writeToStandardError({bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

} // namespace

void Debug::initDebug() noexcept {}

void Debug::exitDebug() noexcept {
    quietly([] { service().modules.clear(); });
}

void Debug::setMessageLevelDescriptions(moduleId module, int, const char** descriptions) noexcept {
    quietly([&] { service().modules[module].levels = copied(descriptions); });
}

void Debug::setMessageClassDescriptions(moduleId module, int, const char** descriptions) noexcept {
    quietly([&] { service().modules[module].classes = copied(descriptions); });
}

void Debug::enableMessageClassType(moduleId module, int mask) noexcept {
    quietly([&] { service().modules[module].classMask = mask; });
}

void Debug::setClippingLevel(moduleId module, int level) noexcept {
    quietly([&] { service().modules[module].clippingLevel = level; });
}

bool Debug::isActive(moduleId module, int level, int cls) noexcept {
    bool active = false;
    quietly([&] {
        const Module* settings = service().find(module);
        active = settings && settings->shows(level, cls);
    });
    return active;
}

void Debug::println(moduleId module, int cls, const QString& text, int level, int, const char*, int) noexcept {
    quietly([&] {
        const Module* settings = service().find(module);
        if (!settings || !settings->shows(level, cls))
            return;
        if (const LineHandler handler = service().lineHandler) // a copy: it may be replaced while it runs
            handler(cls, level, text);
        else
            writeLine(description(settings->classes, cls) + description(settings->levels, level) + text);
    });
}

void Debug::debugMessageBox(const QString& title, const QString& text, bool, int, int, int, int) noexcept {
    quietly([&] {
        if (const MessageBoxHandler handler = service().messageBoxHandler)
            handler(title, text);
        else
            writeLine(title + QStringLiteral(": ") + text);
    });
}

Debug::LineHandler Debug::setLineHandler(LineHandler handler) {
    return std::exchange(service().lineHandler, std::move(handler));
}

Debug::MessageBoxHandler Debug::setMessageBoxHandler(MessageBoxHandler handler) {
    return std::exchange(service().messageBoxHandler, std::move(handler));
}

} // namespace Travik
