#pragma once

#include <travik/service/ImageFile.h>
#include <travik/service/ImageWriter.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <grp.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>
#include <thread>

/// What the tests share that write image files: a folder, processes with rights of their own, system calls that fail.
namespace Writers {

using namespace Travik;

namespace fs = std::filesystem;

using Bytes = std::vector<char>;

inline Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

/// A folder of its own with an image in it; the working directory meanwhile.
class ImageFolder : public testing::Test {
public:
    ImageFolder() : before_(fs::current_path()) {
        std::string name = fs::temp_directory_path() / "travik-writer-XXXXXX";
        folder_ = ::mkdtemp(name.data());
        fs::permissions(folder_, fs::perms::all);
        fs::current_path(folder_);
        put("image", "old bytes");
    }
    ~ImageFolder() override {
        fs::current_path(before_);
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

protected:
    static void put(const std::string& path, std::string_view bytes) {
        const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ASSERT_EQ(::write(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size())) << path;
        ::close(file);
    }

    static std::string get(const std::string& path) {
        Bytes bytes;
        const std::string why = readImageFile(path, bytes);
        return why.empty() ? std::string(bytes.begin(), bytes.end()) : why;
    }

    static std::set<std::string> names(const std::string& folder = ".") {
        std::set<std::string> all;
        for (const auto& entry : fs::directory_iterator(folder))
            all.insert(entry.path().filename());
        return all;
    }

    static WriteReport change(const std::string& path, std::string_view bytes, const WriteOptions& options = {}) {
        ImageEdit edit(path, 100);
        edit.bytes() = bytesOf(bytes);
        return edit.commit(options);
    }

private:
    fs::path before_;
    fs::path folder_;
};

inline struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
}

constexpr int skipped = 77;

// Only there where lines are counted (./dev coverage).
extern "C" [[gnu::weak]] void __gcov_init(void*); // NOLINT(bugprone-reserved-identifier)

/// Ends a process made by fork(), whose counts of lines are written as it ends of itself: with the rights and limits
/// that it had before.
[[noreturn]] inline void endChild(int status) {
    const rlimit unlimited{.rlim_cur = RLIM_INFINITY, .rlim_max = RLIM_INFINITY};
    if (__gcov_init && ::seteuid(::getuid()) == 0 && ::setrlimit(RLIMIT_FSIZE, &unlimited) == 0)
        std::exit(status); // NOLINT(concurrency-mt-unsafe)
    ::_exit(status);
}

/// Runs the function in a process of its own, whose rights and limits are then its own, too; on a thread of its own, so
/// that what fails there fails nobody who writes counts. What it expects is said on standard error.
inline void inChild(const std::function<void()>& function) {
    const pid_t child = ::fork();
    if (child == 0) {
        std::thread(function).join();
        endChild(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == skipped)
        GTEST_SKIP() << "not allowed on this machine";
    EXPECT_EQ(status, 0);
}

/// A system call that fails from now on on this thread; where a mask is set, only if its argument has all of its bits.
struct Fault {
    int call;
    int error;
    unsigned int argument = 0;
    unsigned int mask = 0;
};

inline void inject(const std::vector<Fault>& faults) {
    ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
    for (const Fault& fault : faults) {
        const auto offset = static_cast<unsigned int>(offsetof(seccomp_data, args) + std::size_t{8} * fault.argument);
        std::array<sock_filter, 7> filter{
            sock_filter BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned int>(fault.call), 0, 4),
            BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offset),
            BPF_STMT(BPF_ALU | BPF_AND | BPF_K, fault.mask),
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, fault.mask, 0, 1),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned int>(fault.error)),
            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
        const sock_fprog program{.len = filter.size(), .filter = filter.data()};
        if (::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
            ::_exit(skipped);
    }
}

constexpr unsigned int withoutName = O_TMPFILE & ~O_DIRECTORY;
inline const std::vector<Fault> mountPoint{{SYS_renameat, EBUSY}, {SYS_renameat2, EBUSY}};
inline const Fault noFilesWithoutName{SYS_openat, EOPNOTSUPP, 2, withoutName};

/// An access control list: the owner rw, user 12345 as said, the group r, others nothing.
inline std::string accessList(unsigned short user) {
    std::string list("\2\0\0\0", 4);
    const auto entry = [&](unsigned short tag, unsigned short rights, unsigned int id) {
        list.append(reinterpret_cast<const char*>(&tag), 2).append(reinterpret_cast<const char*>(&rights), 2);
        list.append(reinterpret_cast<const char*>(&id), 4);
    };
    constexpr unsigned int nobody = 0xFFFFFFFF;
    entry(1, 6, nobody);
    entry(2, user, 12345);
    entry(4, 4, nobody);
    entry(16, 7, nobody);
    entry(32, 0, nobody);
    return list;
}

inline std::string attribute(const std::string& path, const char* name) {
    std::string value(256, '\0');
    const ssize_t length = ::getxattr(path.c_str(), name, value.data(), value.size());
    return length < 0 ? "none" : value.substr(0, static_cast<std::size_t>(length));
}

constexpr unsigned int nobody = 65534;

/// Gives up the superuser's rights, or skips where there are none to give up. Who it was really is left: that gives no
/// right to a file.
inline void becomeNobody() {
    if (::setgroups(0, nullptr) != 0 || ::setresgid(nobody, nobody, nobody) != 0 || ::seteuid(nobody) != 0)
        ::_exit(skipped);
}

} // namespace Writers
