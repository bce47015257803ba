#include "Writers.h"

#include <linux/loop.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/sysmacros.h>

#include <csignal>
#include <cstring>
#include <random>

namespace ImageWriterTest {

using namespace Travik;
using namespace Writers;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using ImageWriter = ImageFolder;

/// A block device over a file; without a path where the machine has none to give.
class LoopDevice {
public:
    explicit LoopDevice(const char* file) {
        const int control = ::open("/dev/loop-control", O_RDWR | O_CLOEXEC);
        const int number = control < 0 ? -1 : ::ioctl(control, LOOP_CTL_GET_FREE);
        ::close(control);
        const std::string path = "/dev/loop" + std::to_string(number);
        device_ = number < 0 ? -1 : ::open(path.c_str(), O_RDWR | O_CLOEXEC);
        const int backing = ::open(file, O_RDWR | O_CLOEXEC);
        if (device_ >= 0 && ::ioctl(device_, LOOP_SET_FD, backing) == 0)
            path_ = path;
        ::close(backing);
    }
    LoopDevice(const LoopDevice&) = delete;
    LoopDevice& operator=(const LoopDevice&) = delete;
    ~LoopDevice() {
        if (!path_.empty())
            ::ioctl(device_, LOOP_CLR_FD);
        ::close(device_);
    }
    const std::string& path() const { return path_; }

private:
    int device_ = -1;
    std::string path_;
};

TEST_F(ImageWriter, ReplacesAFileWholeAndKeepsWhatBelongsToIt) {
    fs::create_symlink("image", "link");
    ::chmod("image", 0640);
    ASSERT_EQ(::setxattr("image", "user.note", "calibrated", 10, 0), 0);
    const ino_t inode = statusOf("image").st_ino;
    EXPECT_EQ(change("link", "old bytes").error, "");
    EXPECT_EQ(statusOf("image").st_ino, inode) << "written although nothing changed";

    for (const std::string_view bytes : {"new bytes", "", "longer than it was before"}) {
        const WriteReport report = change("link", bytes);
        EXPECT_EQ(report.error, "");
        EXPECT_THAT(report.warnings, IsEmpty());
        EXPECT_EQ(get("image"), bytes);
    }
    EXPECT_TRUE(fs::is_symlink("link"));
    EXPECT_EQ(statusOf("image").st_mode & 07777U, 0640U);
    EXPECT_EQ(attribute("image", "user.note"), "calibrated");
    EXPECT_THAT(names(), ElementsAre("image", "link"));

    ImageEdit edit("image");
    edit.bytes() = bytesOf("once");
    EXPECT_EQ(edit.commit().error, "");
    edit.bytes() = bytesOf("twice");
    EXPECT_NE(edit.commit().error, "");
    EXPECT_EQ(get("image"), "once");
}

TEST_F(ImageWriter, FindsItsPlace) {
    const std::string longest(255, 'n');
    fs::create_directory("folder");
    fs::create_symlink("../later", "folder/dangling");
    fs::create_symlink(fs::absolute("folder/dangling"), "chain");
    fs::create_symlink("loop", "loop");
    EXPECT_EQ(writeImageFile("chain", bytesOf("first")).error, "");
    EXPECT_EQ(get("later"), "first");
    EXPECT_EQ(change("chain", "second").error, "");
    EXPECT_EQ(get("later"), "second");
    EXPECT_EQ(writeImageFile("folder/" + longest, bytesOf("first")).error, "");
    EXPECT_EQ(change("folder/" + longest, "second").error, "");
    EXPECT_EQ(get("folder/" + longest), "second");
    EXPECT_THAT(names("folder"), ElementsAre("dangling", longest));
    EXPECT_THAT(change("folder/" + longest, "third", {.backup = ""}).error, HasSubstr("File name too long"));
    EXPECT_TRUE(isSameFile("chain", "./later"));
    EXPECT_FALSE(isSameFile("chain", "image"));
    for (const auto& [one, other] : {std::pair("none", "none"),
                                     {"none", "image"},
                                     {"image", "none"},
                                     {"-", "image"},
                                     {"image", "-"},
                                     {"image", "/dev/null"}})
        EXPECT_FALSE(isSameFile(one, other)) << one << ' ' << other;

    // As many links as the kernel follows, and one more.
    fs::create_directory("links");
    for (int i = 1; i <= 41; ++i)
        fs::create_symlink(i == 1 ? "end" : std::to_string(i - 1), "links/" + std::to_string(i));
    EXPECT_EQ(writeImageFile("links/40", bytesOf("first")).error, "");
    EXPECT_EQ(get("links/40"), "first");
    fs::remove("links/end");
    EXPECT_EQ(writeImageFile("links/41", bytesOf("first")).error, "Too many levels of symbolic links");

    ASSERT_EQ(::mkfifo("pipe", 0600), 0);
    for (const std::string path : {"loop", "folder", "folder/", ".", "..", "", "none/image", "pipe", "/dev/null"}) {
        EXPECT_NE(writeImageFile(path, bytesOf("x")).error, "") << path;
        EXPECT_NE(ImageEdit(path).error(), "") << path;
    }
    for (const std::string backup : {".", "..", "folder/"})
        EXPECT_EQ(change("image", "x", {.backup = backup}).error, "backup " + backup + ": Is a directory");
    EXPECT_NE(ImageEdit("not there").error(), "");
    const dev_t flash = makedev(90, 0);
    if (::mknod("flash", S_IFCHR | 0600, flash) == 0) {
        EXPECT_THAT(ImageEdit("flash").error(), HasSubstr("use its block device (mtdblock)"));
        fs::remove("flash");
    }
    EXPECT_THAT(names(), ElementsAre("chain", "folder", "image", "later", "links", "loop", "pipe"));
}

TEST_F(ImageWriter, KeepsTheOldFileAsBackup) {
    ::chmod("image", 0604);
    WriteReport report = change("image", "second", {.backup = ""});
    EXPECT_EQ(report.backup, "image~");
    report = change("./image", "third", {.backup = ""});
    EXPECT_EQ(report.backup, "./image~2");
    EXPECT_EQ(get("image~") + get("image~2") + get("image"), "old bytessecondthird");
    EXPECT_EQ(statusOf("image~").st_mode & 07777U, 0604U);
    EXPECT_EQ(change("image", "fourth", {.backup = "kept"}).backup, "kept");
    EXPECT_THAT(change("image", "fifth", {.backup = "kept"}).error, HasSubstr("backup kept: File exists"));
    EXPECT_THAT(change("image", "fifth", {.backup = "none/kept"}).error, HasSubstr("backup none/kept: "));
    EXPECT_EQ(get("kept") + get("image"), "thirdfourth");
    EXPECT_EQ(change("image", "fourth", {.backup = ""}).backup, "") << "of a file that stays";
    EXPECT_EQ(writeImageFile("image", bytesOf("fifth"), {.backup = ""}).backup, "image~3");
    EXPECT_EQ(writeImageFile("new", bytesOf("first"), {.backup = ""}).backup, "");
    EXPECT_THAT(names(), ElementsAre("image", "image~", "image~2", "image~3", "kept", "new"));
}

TEST_F(ImageWriter, WarnsOfHardLinks) {
    fs::create_hard_link("image", "other");
    EXPECT_THAT(change("image", "new").warnings, ElementsAre("has 1 other hard link, which keeps the old contents"));
    EXPECT_EQ(get("other"), "old bytes");
    fs::create_hard_link("image", "another");
    fs::create_hard_link("image", "third");
    EXPECT_THAT(change("image", "newer").warnings, ElementsAre("has 2 other hard links, which keep the old contents"));
}

TEST_F(ImageWriter, LeavesAFileThatIsNotWhatWasRead) {
    for (const bool renamed : {false, true}) {
        ImageEdit edit("image");
        edit.bytes() = bytesOf("mine");
        if (renamed) {
            put("theirs", "somebody else's");
            fs::rename("theirs", "image");
        } else {
            put("image", "theirs");
        }
        EXPECT_THAT(edit.commit({.backup = ""}).error, HasSubstr("was changed by another program"));
        EXPECT_EQ(get("image"), renamed ? "somebody else's" : "theirs");
    }
    ImageEdit edit("image");
    edit.bytes() = bytesOf("mine");
    fs::remove("image");
    EXPECT_NE(edit.commit().error, "");
    EXPECT_THAT(names(), ElementsAre("image~", "image~2"));
}

TEST_F(ImageWriter, AnOpenImageMayBeHandedOn) {
    ImageEdit edit("image");
    ImageEdit other(std::move(edit));
    EXPECT_THAT(ImageEdit("image", 0).error(), HasSubstr("is being changed")) << "it is held, once";
    put("another", "bytes of another");
    other = ImageEdit("another");
    EXPECT_EQ(other.original(), bytesOf("bytes of another"));
    EXPECT_EQ(ImageEdit("image", 0).error(), "");
}

TEST_F(ImageWriter, WaitsForWhoeverElseIsAtWork) {
    const int file = ::open("image", O_RDONLY);
    ASSERT_EQ(::flock(file, LOCK_EX), 0);
    EXPECT_THAT(ImageEdit("image", 20).error(), HasSubstr("is being changed"));
    EXPECT_THAT(change("image", "new").error, HasSubstr("is being changed"));
    ::close(file);
    EXPECT_EQ(change("image", "new").error, "");
}

// Each process counts in the image; none overwrites what another counted.
TEST_F(ImageWriter, NoChangeIsLostToAnother) {
    constexpr int processes = 4;
    constexpr int changes = 40;
    for (const bool named : {false, true}) {
        put("image", std::string(4, '\0'));
        std::vector<pid_t> children;
        for (int i = 0; i < processes; ++i) {
            children.push_back(::fork());
            if (children.back() != 0)
                continue;
            if (named)
                inject({noFilesWithoutName});
            bool sound = true;
            for (int j = 0; j < changes; ++j) {
                ImageEdit edit("image");
                unsigned int count = 0;
                sound = sound && edit.bytes().size() == sizeof count;
                if (sound) {
                    std::memcpy(&count, edit.bytes().data(), sizeof count);
                    ++count;
                    std::memcpy(edit.bytes().data(), &count, sizeof count);
                }
                sound = edit.commit().succeeded() && sound;
            }
            endChild(sound ? 0 : 1);
        }
        for (const pid_t child : children) {
            int status = 0;
            ::waitpid(child, &status, 0);
            EXPECT_TRUE(status == 0 || WEXITSTATUS(status) == skipped);
        }
        unsigned int count = 0;
        const std::string bytes = get("image");
        std::memcpy(&count, bytes.data(), sizeof count);
        EXPECT_EQ(count, processes * changes);
        EXPECT_THAT(names(), ElementsAre("image"));
    }
}

// A process that ends at any moment leaves the one image or the other, and nothing beside it.
TEST_F(ImageWriter, NothingIsLeftOfAProcessThatIsKilled) {
    const std::string images[] = {std::string(150000, 'a'), std::string(90000, 'b')};
    std::mt19937 random(10);
    int leftOver = 0;
    // Whoever starts tests in the background lets them ignore SIGINT, and the signal may come as soon as the child is
    // there.
    ::signal(SIGTERM, SIG_DFL);
    ::signal(SIGINT, SIG_DFL);
    for (int i = 0; i < 60; ++i) {
        const int signal = i % 3 == 0 ? SIGTERM : i % 3 == 1 ? SIGINT : SIGKILL;
        const bool named = i % 2 == 1;
        put("image", images[0]);
        const pid_t child = ::fork();
        if (child == 0) {
            if (named)
                inject({noFilesWithoutName});
            for (int j = 1;; ++j)
                change("image", images[j % 2], {});
        }
        ::usleep(static_cast<unsigned int>(random() % 8000));
        ::kill(child, signal);
        int status = 0;
        ::waitpid(child, &status, 0);
        const std::string now = get("image");
        ASSERT_TRUE(now == images[0] || now == images[1]) << now.size();
        if (names().size() > 1) {
            ++leftOver;
            ASSERT_EQ(signal, SIGKILL) << *names().begin();
        }
        // The next one tidies up before it does anything else.
        ASSERT_EQ(ImageEdit("image").error(), "");
        ASSERT_THAT(names(), ElementsAre("image"));
    }
    RecordProperty("left_over", leftOver);
}

TEST_F(ImageWriter, ALeftOverIsRemovedByTheNext) {
    fs::create_directory("other");
    const auto leaveOne = [] {
        put("image", "old bytes");
        inject({{SYS_unlinkat, EROFS}, {SYS_renameat, EIO}, {SYS_renameat2, EIO}});
        EXPECT_NE(change("image", "half").error, "");
    };
    inChild(leaveOne);
    if (IsSkipped())
        return;
    ASSERT_EQ(names().size(), 3U);
    EXPECT_EQ(change("image", "new").error, "");
    EXPECT_THAT(names(), ElementsAre("image", "other"));

    // What stands there and is none stays, and does not stop the writing.
    inChild(leaveOne);
    const std::string name = *names().begin();
    fs::remove(name);
    fs::create_directory(name);
    EXPECT_EQ(change("image", "newer").error, "");
    EXPECT_EQ(get("image"), "newer");
    EXPECT_TRUE(fs::is_directory(name));

    // Nor does one that a writer is at work on, until he is gone.
    fs::remove(name);
    put(name, "half");
    const int file = ::open(name.c_str(), O_RDONLY);
    ASSERT_EQ(::flock(file, LOCK_EX), 0);
    EXPECT_EQ(change("image", "newest").error, "");
    EXPECT_TRUE(fs::exists(name));
    ::close(file);
    EXPECT_EQ(ImageEdit("image").error(), "");
    EXPECT_FALSE(fs::exists(name)) << "whoever only looks tidies up, too";
}

TEST_F(ImageWriter, WritesInPlaceWhereAskedTo) {
    fs::create_hard_link("image", "other");
    const ino_t inode = statusOf("image").st_ino;
    const auto error = [](std::string_view bytes, const WriteOptions& options) {
        const WriteReport report = change("image", bytes, options);
        EXPECT_FALSE(report.wouldDoInPlace);
        return report.error;
    };
    EXPECT_THAT(error("new bytes", {.inPlace = true}), HasSubstr("only with a backup that is named"));
    EXPECT_THAT(error("new bytes", {.backup = "", .inPlace = true}), HasSubstr("only with a backup that is named"));
    EXPECT_THAT(error("longer bytes", {.backup = "kept", .inPlace = true}), HasSubstr("has 9 bytes"));
    EXPECT_THAT(error("new bytes", {.backup = "other", .inPlace = true}), HasSubstr("File exists"));
    EXPECT_THAT(error("new bytes", {.backup = "none/kept", .inPlace = true}), HasSubstr("No such file"));
    EXPECT_EQ(error("old bytes", {.backup = "kept", .inPlace = true}), "");
    EXPECT_THAT(names(), ElementsAre("image", "other")) << "nothing was changed, nothing is kept";
    const WriteReport report = change("image", "new bytes", {.backup = "kept", .inPlace = true});
    EXPECT_EQ(report.error, "");
    EXPECT_EQ(report.backup, "kept");
    EXPECT_THAT(report.warnings, IsEmpty());
    EXPECT_EQ(get("image") + get("other") + get("kept"), "new bytesnew bytesold bytes");
    EXPECT_EQ(statusOf("image").st_ino, inode);
    EXPECT_THAT(writeImageFile("none", bytesOf("x"), {.backup = "more", .inPlace = true}).error,
                HasSubstr("nothing is there"));

    ImageEdit edit("image");
    edit.bytes() = bytesOf("NEW bytes");
    put("image", "new BYTES");
    EXPECT_THAT(edit.commit({.backup = "more", .inPlace = true}).error, HasSubstr("was changed by another program"));
    EXPECT_EQ(get("image"), "new BYTES");
}

// A loop device stands for a flash partition.
TEST_F(ImageWriter, ABlockDeviceIsWrittenInPlace) {
    const std::string image(8192, 'o');
    put("image", image);
    const LoopDevice device("image");
    if (device.path().empty())
        GTEST_SKIP() << "no loop devices here";
    std::string changed = image;
    changed.replace(5000, 3, "new");
    EXPECT_TRUE(change(device.path(), changed).wouldDoInPlace);
    EXPECT_EQ(change(device.path(), changed, {.backup = "kept", .inPlace = true}).error, "");
    EXPECT_EQ(get(device.path()), changed);
    EXPECT_EQ(get("kept"), image);
    EXPECT_THAT(change(device.path(), "short", {.backup = "more", .inPlace = true}).error, HasSubstr("8192 bytes"));
    {
        const ImageEdit first(device.path());
        EXPECT_THAT(ImageEdit(device.path(), 20).error(), HasSubstr("busy")) << "open twice";
    }
    EXPECT_THAT(names(), ElementsAre("image", "kept"));
}

TEST_F(ImageWriter, ALimitOrAFullDiskLeavesTheOldFile) {
    inChild([] {
        const rlimit limit{.rlim_cur = 20000, .rlim_max = 20000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_THAT(change("image", std::string(30000, 'x')).error, HasSubstr("File too large"));
        EXPECT_THAT(writeImageFile("new", Bytes(30000)).error, HasSubstr("File too large"));
        EXPECT_EQ(change("image", "small").error, "");
    });
    EXPECT_THAT(names(), ElementsAre("image"));
    fs::create_directory("disk");
    inChild([] {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("none", "disk", "tmpfs", 0, "size=64k") != 0)
            ::_exit(skipped);
        put("disk/image", "old bytes");
        EXPECT_THAT(change("disk/image", std::string(90000, 'x')).error, HasSubstr("No space left"));
        EXPECT_THAT(change("disk/image", std::string(40000, 'x'), {.backup = "disk/kept"}).error, "");
        EXPECT_THAT(change("disk/image", std::string(20000, 'y'), {.backup = "disk/more"}).error,
                    HasSubstr("No space left"));
        EXPECT_EQ(get("disk/image"), std::string(40000, 'x'));
        EXPECT_THAT(names("disk"), ElementsAre("image", "kept"));
    });
}

TEST_F(ImageWriter, AMountPointIsWrittenInPlace) {
    put("mounted", "");
    inChild([] {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("image", "mounted", nullptr, MS_BIND, nullptr) != 0)
            ::_exit(skipped);
        EXPECT_THAT(change("mounted", "new").error, HasSubstr("asks for a backup"));
        const WriteReport report = change("mounted", "now shorter", {.backup = ""});
        EXPECT_EQ(report.error, "");
        EXPECT_EQ(report.backup, "mounted~");
    });
    if (IsSkipped())
        return;
    EXPECT_EQ(get("image"), "now shorter");
    EXPECT_EQ(get("mounted~"), "old bytes");
    EXPECT_THAT(names(), ElementsAre("image", "mounted", "mounted~"));
}

TEST_F(ImageWriter, KeepsOwnerGroupAndAccessList) {
    if (::chown("image", 1234, 5678) != 0)
        GTEST_SKIP() << "only the superuser gives files away";
    ::chmod("image", 0640);
    const std::string list = accessList(4);
    if (::setxattr("image", "system.posix_acl_access", list.data(), list.size(), 0) != 0)
        GTEST_SKIP() << "no access control lists here";
    const WriteReport report = change("image", "new", {.backup = ""});
    EXPECT_EQ(report.error, "");
    EXPECT_THAT(report.warnings, IsEmpty());
    for (const std::string path : {"image", "image~"}) {
        EXPECT_EQ(statusOf(path).st_uid, 1234U);
        EXPECT_EQ(statusOf(path).st_gid, 5678U);
        EXPECT_EQ(attribute(path, "system.posix_acl_access"), list);
    }
    // What the folder would give to new files, a replaced one does not get.
    put("plain", "old");
    ::chmod("plain", 0660);
    const std::string wide = accessList(7);
    ASSERT_EQ(::setxattr(".", "system.posix_acl_default", wide.data(), wide.size(), 0), 0);
    EXPECT_EQ(change("plain", "new").error, "");
    EXPECT_EQ(attribute("plain", "system.posix_acl_access"), "none");
    EXPECT_EQ(statusOf("plain").st_mode & 0777U, 0660U);
}

TEST_F(ImageWriter, ANewFileHasThePermissionsOfAnyOther) {
    const mode_t before = ::umask(027);
    EXPECT_EQ(writeImageFile("new", bytesOf("x")).error, "");
    ::umask(before);
    EXPECT_EQ(statusOf("new").st_mode & 07777U, 0640U);
}

} // namespace ImageWriterTest
