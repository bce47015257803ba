#pragma once

#include <travik/platform/Export.h>

#include <QString>

#include <functional>

namespace Travik {

/// The error manager: takes the errors that the user of the instrument must learn about and writes each to standard
/// error or hands it to a handler. There is one for the process, got from ErrorManager().
///
/// registerErrors() and signal() throw nothing: an error that cannot be written, for want of memory or because standard
/// error is closed, full or read by nobody, is lost without a signal and without a trace in errno, and so is what a
/// handler throws. Errors are registered and handlers installed while no other thread uses the error manager;
/// signal() may then be called from several threads.
class TRAVIK_PLATFORM_EXPORT CErrorManager {
public:
    /// One kind of error. Kind and number classify it for the instrument; here only code and errorText are used.
    struct SErrorDefinition {
        int errorCode; ///< what signal() is called with; -1 ends a table
        int errorKind;
        int errorNumber;
        int errorFlags;
        const char* errorText; ///< the message, UTF-8; null counts as empty
        const char* errorText2;
        const char* errorText3;
    };

    using SignalHandler = std::function<void(int code, const QString& text)>;
    using RegisterHandler = std::function<void(const SErrorDefinition* table, int)>;

    CErrorManager(const CErrorManager&) = delete;
    CErrorManager& operator=(const CErrorManager&) = delete;

    /// Makes the errors of a table known, up to the entry with code -1, and tells the register handler. The table and
    /// its texts stay valid as long as the process. A code registered again has the newer text. A null table is
    /// ignored. The second argument is only passed on.
    void registerErrors(const SErrorDefinition* table, int) const noexcept;
    /// Reports an error, registered or not, with a text that says where it occurred: hands both to the signal handler
    /// or, without one, writes "error code: registered text: context" as one line to standard error, without the parts
    /// that are empty.
    void signal(int code, const QString& text) const noexcept;

    /// Installs a handler in place of standard error, or with an empty one standard error itself. Returns the previous
    /// handler, for the caller to put back. A handler may install another one while it runs.
    static SignalHandler setSignalHandler(SignalHandler handler);
    /// Installs an observer of registerErrors(), or with an empty one none. Returns the previous one.
    static RegisterHandler setRegisterHandler(RegisterHandler handler);

private:
    CErrorManager() = default;
    ~CErrorManager() = default;

    friend TRAVIK_PLATFORM_EXPORT CErrorManager* ErrorManager() noexcept;
};

/// The error manager of the process; never null, never to be deleted, usable until the very end of the process.
TRAVIK_PLATFORM_EXPORT CErrorManager* ErrorManager() noexcept;

} // namespace Travik
