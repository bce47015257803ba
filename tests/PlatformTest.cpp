#include <travik/platform/Debug.h>
#include <travik/platform/ErrorManager.h>
#include <travik/platform/QMemArray.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace PlatformTest {

using namespace Travik;

using Bytes = QMemArray<char>;

Bytes bytes(const std::string& text) {
    Bytes result;
    return result.duplicate(text.data(), static_cast<unsigned>(text.size()));
}

std::string text(const Bytes& array) { return {array.begin(), array.end()}; }

TEST(QMemArray, SharersSeeEveryChange) {
    Bytes a = bytes("abcd");
    Bytes b(a);
    Bytes c;
    c = b;
    EXPECT_EQ(a.nrefs(), 3u);
    b[1] = 'x';
    c.resize(6);
    EXPECT_EQ(text(a), std::string("axcd\0\0", 6));
    a.truncate(2);
    EXPECT_EQ(text(c), "ax");
    b.fill(a[1], 3); // the value lies in what is moved
    EXPECT_EQ(text(c), "xxx");
    a.resize(0);
    EXPECT_TRUE(c.isNull() && c.isEmpty());
    c.resize(1);
    EXPECT_EQ(a.size(), 1u) << "a null array still shares";
}

TEST(QMemArray, GrownTailIsZeroEvenWhereOldBytesLay) {
    Bytes a(64);
    a.fill('x');
    a.resize(1);
    a.resize(64);
    EXPECT_EQ(a.contains('\0'), 63);
    EXPECT_EQ(Bytes(32u).contains('\0'), 32);
    Bytes few(8); // few enough to lie beside the count
    few.fill('x');
    for (const unsigned size : {3U, 8U, 9U, 2U, 64U})
        few.resize(size);
    EXPECT_EQ(text(few), "xx" + std::string(62, '\0'));
    EXPECT_TRUE(Bytes(-1).isNull());
}

TEST(QMemArray, PrivateElementsLeaveTheSharersAlone) {
    using Change = void (*)(Bytes&);
    const std::pair<Change, const char*> changes[] = {
        {[](Bytes& a) { a.detach(); }, "abcd"},
        {[](Bytes& a) { a.duplicate(a); }, "abcd"},
        {[](Bytes& a) { a.duplicate(a.data() + 1, 2); }, "bc"},
        {[](Bytes& a) { a.assign(a.data() + 1, 3); }, "bcd"},
        {[](Bytes& a) { a.assign(bytes("xyz")); }, "xyz"},
        {[](Bytes& a) { a.assign(strdup("xyz"), 3); }, "xyz"}, // malloc()ed, the array's to free
        {[](Bytes& a) { a.assign(strdup("xyz"), 0); }, ""},
        {[](Bytes& a) { a.duplicate(nullptr, 9); }, ""},
        {[](Bytes& a) { a.setRawData("raw", 3); }, "raw"},
        {[](Bytes& a) { a = a.copy(); }, "abcd"},
    };
    for (const bool isShared : {false, true})
        for (const auto& [change, expected] : changes) {
            Bytes a = bytes("abcd");
            Bytes other = isShared ? a : bytes("abcd");
            change(a);
            EXPECT_EQ(text(a), expected);
            EXPECT_EQ(a.nrefs(), 1u);
            a.resize(1);
            EXPECT_EQ(text(other), "abcd");
            EXPECT_EQ(other.nrefs(), 1u);
        }
}

TEST(QMemArray, SelfAssignmentKeepsTheElements) {
    Bytes a = bytes("abcd");
    const Bytes& self = a;
    a = self;
    a.assign(self);
    EXPECT_EQ(text(a), "abcd");
    EXPECT_EQ(a.nrefs(), 1u);
}

// That the memory on the stack is neither freed nor moved is for the sanitizer to see.
TEST(QMemArray, RawDataStaysTheCallers) {
    char memory[] = {'a', 'b', 'c'};
    Bytes a;
    a.setRawData(memory, 3);
    Bytes b = a;
    b[0] = 'x';
    EXPECT_EQ(memory[0], 'x');
    b.detach();
    b[0] = 'y';
    a.resize(5);
    a[1] = 'y';
    EXPECT_EQ(std::string(memory, 3), "xbc");
    EXPECT_EQ(text(a), std::string("xyc\0\0", 5));

    a.setRawData(memory, 3).detach();
    EXPECT_NE(a.data(), memory) << "also when nobody shares";
    a.setRawData(memory, 3);
    b = a;
    a.resize(3);
    EXPECT_NE(b.data(), memory) << "also a resize to the same size leaves the raw data, for all";
    a.setRawData(memory, 3).resetRawData(memory, 2);
    EXPECT_EQ(a.data(), memory) << "other arguments than those of setRawData()";
    b = a;
    a.resetRawData(memory, 3);
    EXPECT_TRUE(a.isNull() && b.isNull());
    b = bytes("own");
    b.resetRawData(b.data(), 3);
    EXPECT_EQ(text(b), "own");
}

TEST(QMemArray, NullHasNoElementsWhateverItsSize) {
    const struct {
        const char* what;
        std::function<void(Bytes&)> make;
    } rows[] = {
        {"assign", [](Bytes& a) { a.assign(nullptr, 3); }},
        {"duplicate", [](Bytes& a) { a.duplicate(nullptr, 3); }},
        {"setRawData", [](Bytes& a) { a.setRawData(nullptr, 3); }},
        {"resetRawData", [](Bytes& a) { a.setRawData(nullptr, 3).resetRawData(nullptr, 3); }},
        {"assign nothing", [](Bytes& a) { a.assign(strdup(""), 0); }},
    };
    for (const auto& row : rows) {
        Bytes a = bytes("longer than what takes no memory");
        row.make(a);
        a.sort();
        EXPECT_TRUE(a.isNull() && a.isEmpty()) << row.what;
        EXPECT_EQ(static_cast<const char*>(a), nullptr) << row.what;
        a.resize(2);
        EXPECT_EQ(text(a), std::string(2, '\0')) << row.what;
    }
}

TEST(QMemArray, IndexOutsideIsHarmless) {
    static int warnings;
    warnings = 0;
    const auto previous =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++warnings; });
    const Bytes a = bytes("ab");
    const Bytes empty;
    EXPECT_EQ(&a.at(2), a.data());
    EXPECT_EQ(&a[-1], a.data());
    EXPECT_EQ(&a[std::numeric_limits<unsigned long long>::max()], a.data());
    EXPECT_EQ(&a[1L], a.data() + 1);
    empty[0] = 'x';
    EXPECT_EQ(empty.at(7), '\0') << "what is written outside is not found there later";
    qInstallMessageHandler(previous);
    EXPECT_EQ(warnings, 5);
}

TEST(QMemArray, SearchesAndComparesBitwise) {
    Bytes a = bytes("b\xFFza");
    EXPECT_EQ(a.find('b'), 0);
    EXPECT_EQ(a.find('b', 1), -1);
    EXPECT_EQ(a.find('a', 4), -1);
    a.sort();
    EXPECT_EQ(text(a), "abz\xFF");
    EXPECT_EQ(bytes("abbbc").bsearch('b'), 1);
    EXPECT_EQ(a.bsearch('c'), -1);
    EXPECT_EQ(Bytes().bsearch('c'), -1);
    EXPECT_EQ(a, bytes("abz\xFF"));
    EXPECT_NE(a, bytes("abz"));
    EXPECT_NE(a, bytes("abzz"));
    EXPECT_EQ(Bytes(), bytes(""));
}

#if !defined(__SANITIZE_ADDRESS__) && !(defined(__clang__) && __has_feature(address_sanitizer))
TEST(QMemArray, WantOfMemoryChangesNothing) {
    struct Page {
        char content[1 << 20];
    };
    constexpr unsigned beyondAnyAddressSpace = std::numeric_limits<unsigned>::max();
    QMemArray<Page> a(1);
    const QMemArray<Page> b = a;
    EXPECT_THROW(a.resize(beyondAnyAddressSpace), std::bad_alloc);
    EXPECT_THROW(QMemArray<Page>{beyondAnyAddressSpace}, std::bad_alloc);
    EXPECT_EQ(b.size(), 1u);
    EXPECT_EQ(a.nrefs(), 2u);
}
#endif

TEST(Debug, ShowsByClassAndLevelOfTheModule) {
    struct Case {
        int mask, clip, level, cls;
        bool shown;
    };
    const Case cases[] = {
        {-1, 2, 2, 8, true},      {-1, 2, 3, 8, false},      {1 << 8, 5, 5, 8, true},   {1 << 8, 5, 5, 7, false},
        {1 << 8, 5, 5, -1, true}, {0, 5, 0, -1, false},      {0, 5, 0, 8, false},       {-1, -1, 0, 8, false},
        {-1, 5, 0, 40, true},     {1 << 8, 5, 0, 40, false}, {1 << 8, 5, 0, -2, false}, {-1 ^ 1, 5, 0, 31, true},
    };
    std::vector<std::string> lines;
    auto previous = Debug::setLineHandler([&](int cls, int level, const QString& line) {
        lines.push_back(std::to_string(cls) + "," + std::to_string(level) + "," + line.toStdString());
    });
    for (const Case& c : cases) {
        lines.clear();
        Debug::exitDebug();
        EXPECT_FALSE(Debug::isActive(2, 0, -1));
        Debug::enableMessageClassType(2, c.mask);
        Debug::setClippingLevel(2, c.clip);
        Debug::initDebug();
        EXPECT_EQ(Debug::isActive(2, c.level, c.cls), c.shown)
            << c.mask << ' ' << c.clip << ' ' << c.level << ' ' << c.cls;
        EXPECT_FALSE(Debug::isActive(3, c.level, c.cls));
        Debug::println(2, c.cls, "text", c.level, 0, nullptr, -1);
        const std::string line = std::to_string(c.cls) + "," + std::to_string(c.level) + ",text";
        EXPECT_EQ(lines, c.shown ? std::vector{line} : std::vector<std::string>{});
    }
    Debug::exitDebug();
    Debug::setLineHandler(std::move(previous));
}

TEST(Debug, WithoutHandlersWritesToStandardError) {
    const char* levels[] = {"Critical ", nullptr};
    const char* classes[] = {"Driver, ", "", "Jtag, ", nullptr};
    auto line = Debug::setLineHandler(nullptr);
    auto box = Debug::setMessageBoxHandler(nullptr);
    Debug::setMessageLevelDescriptions(2, -1, levels);
    Debug::setMessageClassDescriptions(2, -1, classes);
    Debug::enableMessageClassType(2, -1);
    Debug::setClippingLevel(2, 5);
    testing::internal::CaptureStderr();
    for (const auto& [cls, level] : {std::pair{0, 0}, {2, 1}, {1, 0}, {3, 5}, {-1, -1}})
        Debug::println(2, cls, QString::fromUtf8("ä"), level, 0, nullptr, -1);
    Debug::debugMessageBox("Title", "text", true, 2, 17, 0, 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Driver, Critical ä\nJtag, ä\nCritical ä\nä\nä\nTitle: text\n");
    Debug::exitDebug();
    Debug::setLineHandler(std::move(line));
    Debug::setMessageBoxHandler(std::move(box));
}

const CErrorManager::SErrorDefinition errors[] = {
    {770001, 1, 2, 0, "first", "", ""}, {770002, 1, 2, 0, nullptr, "", ""}, {-1, 0, 0, 0, "", "", ""}};

TEST(ErrorManager, WithoutHandlerWritesOneLine) {
    auto previous = CErrorManager::setSignalHandler(nullptr);
    ErrorManager()->registerErrors(errors, 16);
    ErrorManager()->registerErrors(nullptr, 16);
    testing::internal::CaptureStderr();
    ErrorManager()->signal(770001, "   Context");
    ErrorManager()->signal(770001, "");
    ErrorManager()->signal(770002, "no text");
    ErrorManager()->signal(-1, "not registered");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error 770001: first: Context\nerror 770001: first\n"
                                                      "error 770002: no text\nerror -1: not registered\n");
    CErrorManager::setSignalHandler(std::move(previous));
}

/// Standard error as another file, as long as it lives.
class StandardErrorAs {
public:
    explicit StandardErrorAs(int file) : kept_(::dup(STDERR_FILENO)) {
        ::dup2(file, STDERR_FILENO);
        ::close(file);
    }
    StandardErrorAs(const StandardErrorAs&) = delete;
    StandardErrorAs& operator=(const StandardErrorAs&) = delete;
    ~StandardErrorAs() {
        ::dup2(kept_, STDERR_FILENO);
        ::close(kept_);
    }

private:
    int kept_;
};

TEST(Platform, WhatNobodyTakesIsLost) {
    auto previous = CErrorManager::setSignalHandler(nullptr);
    auto box = Debug::setMessageBoxHandler(nullptr);
    int pipe[2];
    ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
    ::close(pipe[0]);
    for (const int file :
         {pipe[1], ::open("/dev/full", O_WRONLY | O_CLOEXEC), ::open("/dev/null", O_RDONLY | O_CLOEXEC)}) {
        const StandardErrorAs lost(file);
        errno = 77;
        ErrorManager()->signal(770001, "context");
        Debug::debugMessageBox("Title", "text", true, 0, 0, 0, 0);
        EXPECT_EQ(errno, 77);
    }
    sigset_t pending;
    ::sigpending(&pending);
    EXPECT_EQ(::sigismember(&pending, SIGPIPE), 0);
    testing::internal::CaptureStderr();
    ErrorManager()->signal(1, "taken again");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error 1: taken again\n");
    CErrorManager::setSignalHandler(std::move(previous));
    Debug::setMessageBoxHandler(std::move(box));
}

TEST(Platform, HandlersReplaceEachOtherAndMayThrow) {
    std::string calls;
    auto oldSignal = CErrorManager::setSignalHandler([&](int, const QString& context) {
        calls += context.toStdString();
        CErrorManager::setSignalHandler([](int, const QString&) { throw std::runtime_error("handler"); });
        calls += '.'; // what it holds is still there
    });
    auto oldRegister = CErrorManager::setRegisterHandler([&](const CErrorManager::SErrorDefinition* table, int value) {
        calls += table == errors && value == 16 ? "r" : "?";
    });
    auto oldBox = Debug::setMessageBoxHandler([&](const QString& title, const QString&) {
        calls += title.toStdString();
        throw std::runtime_error("handler");
    });
    ErrorManager()->signal(1, "   a");
    ErrorManager()->signal(1, "b");
    ErrorManager()->registerErrors(errors, 16);
    ErrorManager()->registerErrors(nullptr, 16);
    CErrorManager::setRegisterHandler(
        [](const CErrorManager::SErrorDefinition*, int) { throw std::runtime_error("handler"); });
    ErrorManager()->registerErrors(errors, 16);
    Debug::debugMessageBox("box", "", true, 0, 0, 0, 0);
    EXPECT_EQ(calls, "   a.rbox");
    CErrorManager::setSignalHandler(std::move(oldSignal));
    CErrorManager::setRegisterHandler(std::move(oldRegister));
    EXPECT_TRUE(Debug::setMessageBoxHandler(std::move(oldBox))) << "returns the handler that was installed";
}

} // namespace PlatformTest
