#pragma once

#include <travik/platform/Export.h>

#include <QString>

#include <functional>

namespace Travik {

/// Names the library that a debug line comes from; each has its own filter and descriptions. The block library is 2.
using moduleId = int;

/// The debug service: decides by class (what a line is about, 0 to 31) and level (how severe it is, 0 the most severe)
/// which lines of a module are shown, and writes those to standard error or hands them to a handler.
///
/// Nothing is shown until both classes and a level are enabled. Nothing is thrown: a line that cannot be written, for
/// want of memory or because standard error is closed, full or read by nobody, is lost without a signal and without a
/// trace in errno, and so is what a handler throws.
///
/// Settings and handlers are changed while no other thread uses the service; isActive(), println() and
/// debugMessageBox() may then be called from several threads.
class TRAVIK_PLATFORM_EXPORT Debug {
public:
    /// Gets class and level of a line that is shown, and its text without their descriptions.
    using LineHandler = std::function<void(int cls, int level, const QString& text)>;
    using MessageBoxHandler = std::function<void(const QString& title, const QString& text)>;

    Debug() = delete;

    /// Called before a module uses the service. Keeps what was set before, since modules share the service.
    static void initDebug() noexcept;
    /// Forgets the filters and the descriptions of all modules: nothing is shown any more. Handlers stay.
    static void exitDebug() noexcept;

    /// Texts to begin a line with, indexed by level or class; a null entry ends the array, so a gap is an empty text.
    /// The texts (UTF-8) are copied; a null array removes them. A level or class without a text is printed without one.
    /// The second argument has no meaning here; callers pass -1.
    static void setMessageLevelDescriptions(moduleId module, int, const char** descriptions) noexcept;
    static void setMessageClassDescriptions(moduleId module, int, const char** descriptions) noexcept;

    /// Enables the classes whose bit is set in the mask (bit 0 for class 0) and disables all others; -1 enables every
    /// class, 0 none.
    static void enableMessageClassType(moduleId module, int mask) noexcept;
    /// Enables the levels, which begin at 0, up to this one; -1 enables none.
    static void setClippingLevel(moduleId module, int level) noexcept;
    /// True when a line of this level and class would be shown: the level is enabled, and so is the class. Class -1
    /// stands for all classes and is enabled as soon as one of them is.
    static bool isActive(moduleId module, int level, int cls) noexcept;

    /// Shows a line when it isActive(), else drops it: hands it to the line handler or, without one, writes the
    /// description of the class, that of the level and the text as one line to standard error. The last three arguments
    /// have no meaning here; callers pass 0, null and -1.
    static void println(moduleId module, int cls, const QString& text, int level, int, const char*, int) noexcept;
    /// Tells the user something whatever the filters say: hands title and text to the message box handler or, without
    /// one, writes "title: text" as one line to standard error; it never waits. The other arguments have no meaning
    /// here.
    static void debugMessageBox(const QString& title, const QString& text, bool, int, int, int, int) noexcept;

    /// Installs a handler in place of standard error, or with an empty one standard error itself. Returns the previous
    /// handler, for the caller to put back. A handler may install another one while it runs.
    static LineHandler setLineHandler(LineHandler handler);
    static MessageBoxHandler setMessageBoxHandler(MessageBoxHandler handler);
};

} // namespace Travik
