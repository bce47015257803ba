#include <travik/platform/ErrorManager.h>
#include <travik/platform/StandardError.h>

#include <QByteArray>

#include <cstddef>
#include <map>
#include <utility>

namespace Travik {

namespace {

struct ErrorService {
    std::map<int, const char*> texts; // by error code
    CErrorManager::SignalHandler signalHandler;
    CErrorManager::RegisterHandler registerHandler;
};

ErrorService& errorService() {
    // Never destroyed: objects of static storage may signal errors until the very end.
    static ErrorService* const instance = new ErrorService;
    return *instance;
}

void writeLine(int code, const QString& context) {
    QByteArray line = "error " + QByteArray::number(code);
    const auto registered = errorService().texts.find(code);
    for (const QByteArray& part : {QByteArray(registered == errorService().texts.end() ? nullptr : registered->second),
                                   context.trimmed().toUtf8()})
        if (!part.isEmpty())
            line += ": " + part;
    line += '\n';
    writeToStandardError({line.constData(), static_cast<std::size_t>(line.size())});
}

} // namespace

CErrorManager* ErrorManager() noexcept {
    static constinit CErrorManager manager; // trivially destroyed
    return &manager;
}

void CErrorManager::registerErrors(const SErrorDefinition* table, int value) const noexcept {
    try {
        for (const SErrorDefinition* entry = table; entry && entry->errorCode != -1; ++entry)
            errorService().texts[entry->errorCode] = entry->errorText;
        if (const RegisterHandler handler = errorService().registerHandler; handler && table)
            handler(table, value);
    } catch (...) { // promised to the caller
    }
}

void CErrorManager::signal(int code, const QString& text) const noexcept {
    try {
        if (const SignalHandler handler = errorService().signalHandler) // a copy: it may be replaced while it runs
            handler(code, text);
        else
            writeLine(code, text);
    } catch (...) { // promised to the caller
    }
}

CErrorManager::SignalHandler CErrorManager::setSignalHandler(SignalHandler handler) {
    return std::exchange(errorService().signalHandler, std::move(handler));
}

CErrorManager::RegisterHandler CErrorManager::setRegisterHandler(RegisterHandler handler) {
    return std::exchange(errorService().registerHandler, std::move(handler));
}

} // namespace Travik
