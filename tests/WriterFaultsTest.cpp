#include "Writers.h"

namespace WriterFaultsTest {

using namespace Travik;
using namespace Writers;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Matcher;

using WriterFaults = ImageFolder;

TEST_F(WriterFaults, SystemCallsThatFailHarmNothing) {
    struct Case {
        std::vector<Fault> faults;
        std::string error; ///< "" where the writing succeeds all the same
        std::string warning{};
        bool withBackup = false;
    };
    constexpr unsigned int ofTheImage =
        7; // of its 23 bytes: a sanitizer looks at memory by writing 8 or 16 bytes of it
    const Case cases[] = {
        {{noFilesWithoutName}, ""},
        {{{SYS_openat, EACCES, 2, withoutName}}, "nothing can be written beside it"},
        {{{SYS_openat, ENOSPC, 2, withoutName}}, "No space left"},
        {{{SYS_openat, EROFS, 2, withoutName}}, "nothing can be written beside it: Read-only file system"},
        {{{SYS_openat, EISDIR, 2, withoutName}}, ""},
        {{{SYS_openat, ENOENT, 2, withoutName}}, ""},
        {{{SYS_openat, EINVAL, 2, withoutName}}, ""},
        {{noFilesWithoutName, {SYS_openat, ENOSPC, 2, O_EXCL}}, "No space left"},
        {{noFilesWithoutName, {SYS_openat, EEXIST, 2, O_EXCL}}, "File exists"},
        {{{SYS_access, ENOENT}, {SYS_faccessat, ENOENT}}, ""}, // no /proc, by which a file gets its name
        {{{SYS_linkat, EEXIST}}, "File exists"},
        {{{SYS_flock, ENOLCK}}, ""},
        {{{SYS_write, ENOSPC, 2, ofTheImage}}, "No space left"},
        {{noFilesWithoutName, {SYS_write, ENOSPC, 2, ofTheImage}}, "No space left"},
        {{{SYS_fsync, EIO}}, "Input/output error"},
        {{{SYS_linkat, EPERM}}, "nothing can be written beside it"},
        {{{SYS_renameat, EACCES}, {SYS_renameat2, EACCES}}, "nothing can be written beside it"},
        {{noFilesWithoutName, {SYS_renameat, EIO}, {SYS_renameat2, EIO}}, "Input/output error"},
        {{{SYS_fsetxattr, ENOSPC}}, "", "extended attribute user.note cannot be kept: No space left on device"},
        {{{SYS_fremovexattr, EIO}}, "access control list"},
        {{{SYS_fremovexattr, EOPNOTSUPP}}, ""},
        {{{SYS_flistxattr, EIO}}, ""},
        {{{SYS_fgetxattr, EIO}}, "", "extended attribute user.note cannot be kept: Input/output error"},
        {{{SYS_fchown, EPERM}}, ""}, // they are the caller's
        {{{SYS_flock, EINTR}}, "is being changed by another program"},
        {{{SYS_fstat, EIO}, {SYS_newfstatat, EIO, 3, AT_EMPTY_PATH}}, "is replaced by another program all the time"},
        {{{SYS_readlinkat, EIO}}, "Input/output error"},
        {{{SYS_lseek, EIO}}, "was changed by another program"},
        {{{SYS_renameat, EXDEV}, {SYS_renameat2, EXDEV}}, "asks for a backup"},
        {mountPoint, "asks for a backup"},
        {mountPoint, "", "cannot be replaced, was written in place", true},
        {{noFilesWithoutName, {SYS_renameat2, ENOSYS}}, "", "", true},
        {{{SYS_fsync, EIO}}, "backup image~: Input/output error", "", true},
        {{{SYS_fremovexattr, EIO}}, "backup image~: access control list", "", true},
        {{{SYS_renameat, EACCES}, {SYS_renameat2, EACCES}}, "nothing can be written beside it", "", true},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE("call " + std::to_string(test.faults.back().call) + ": " + test.error + test.warning);
        fs::remove("image~");
        put("image", "old bytes");
        ::chmod("image", 0604); // narrower than what a new file gets before it has its rights
        ::setxattr("image", "user.note", "x", 1, 0);
        inChild([&] {
            inject(test.faults);
            const WriteReport report =
                change("image", "new bytes, more of them",
                       {.backup = test.withBackup ? std::optional<std::string>("") : std::nullopt});
            EXPECT_THAT(report.error,
                        test.error.empty() ? Matcher<const std::string&>(IsEmpty()) : HasSubstr(test.error));
            EXPECT_EQ(report.warnings, test.warning.empty() ? std::vector<std::string>() : std::vector{test.warning});
        });
        EXPECT_EQ(get("image"), test.error.empty() ? "new bytes, more of them" : "old bytes");
        EXPECT_EQ(statusOf("image").st_mode & 0777U, 0604U);
        EXPECT_EQ(names().size(), test.withBackup && test.error.empty() ? 2U : 1U);
    }
}

// How every call may fail is tested on `writeInPlace`; here, that it is what writes, and what stays beside the file.
TEST_F(WriterFaults, WritingInPlaceThatFailsIsUndone) {
    struct Case {
        Fault fault; ///< of two changed bytes the second cannot be written; nothing can be read back
        std::string error;
    };
    const Case cases[] = {
        {{SYS_pwrite64, EIO, 3, 8},
         "cannot be written at offset 8: Input/output error; the old bytes were written back; the old bytes are in "
         "kept"},
        {{SYS_pread64, EIO},
         "cannot be read back at offset 0: Input/output error; the old bytes could not be written back, offsets 0 to 8 "
         "are unknown; the old bytes are in kept"},
    };
    for (const Case& test : cases) {
        for (const bool isAskedFor : {true, false}) {
            inChild([&] {
                inject(mountPoint);
                inject({test.fault});
                const WriteReport report = change("image", "Old byteS", {.backup = "kept", .inPlace = isAskedFor});
                EXPECT_EQ(report.error, test.error);
            });
            if (IsSkipped())
                return;
            EXPECT_EQ(get("image"), "old bytes");
            EXPECT_EQ(get("kept"), "old bytes");
            fs::remove("kept");
        }
    }
}

// Where nothing can be made beside the file, that is what would do.
TEST_F(WriterFaults, SaysWhereWritingInPlaceWouldDo) {
    for (const Fault& fault : {Fault{SYS_openat, EACCES, 2, withoutName}, Fault{SYS_renameat, EBUSY}}) {
        inChild([&] {
            inject({fault});
            EXPECT_TRUE(change("image", "new bytes").wouldDoInPlace);
            EXPECT_FALSE(change("image", "longer bytes").wouldDoInPlace);
            if (fault.error == EACCES) {
                EXPECT_TRUE(change("image", "new bytes", {.backup = ""}).wouldDoInPlace);
                EXPECT_FALSE(change("image", "longer bytes", {.backup = ""}).wouldDoInPlace);
                EXPECT_FALSE(change("image", "new bytes", {.backup = "kept"}).wouldDoInPlace);
            }
        });
    }
    inChild([] {
        inject({{SYS_openat, ENOSPC, 2, withoutName}});
        EXPECT_FALSE(change("image", "new bytes", {.backup = ""}).wouldDoInPlace) << "that is no right that lacks";
    });
    EXPECT_EQ(get("image"), "old bytes");
}

TEST_F(WriterFaults, RightsOfOthersDoNotWiden) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only the superuser gives files and rights away";
    struct Case {
        unsigned int owner, group;
        mode_t mode;
        std::string error;   ///< part of it; "" where the writing succeeds
        std::string warning; ///< part of it
    };
    const Case cases[] = {
        {nobody, nobody, 0640, "", ""},
        {nobody, nobody, 0440, "cannot be written: Permission denied", ""},
        {0, 0, 0644, "cannot be written: Permission denied", ""},
        {0, nobody, 0664, "", "owner 0 cannot be kept, it is now 65534"},
        {nobody, 0, 0644, "", "group 0 cannot be kept, it is now 65534"},
        {nobody, 0, 0660, "group 0 cannot be kept, it is now 65534, whose members would get rights", ""},
        {nobody, 0, 0604, "whose members would get rights", ""},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(std::to_string(test.mode) + test.error + test.warning);
        put("image", "old bytes");
        ASSERT_EQ(::chown("image", test.owner, test.group), 0);
        ::chmod("image", test.mode);
        inChild([&] {
            becomeNobody();
            const WriteReport report = change("image", "new");
            EXPECT_THAT(report.error,
                        test.error.empty() ? Matcher<const std::string&>(IsEmpty()) : HasSubstr(test.error));
            ASSERT_EQ(report.warnings.size(), test.warning.empty() ? 0U : 1U);
            if (!report.warnings.empty()) {
                EXPECT_THAT(report.warnings[0], HasSubstr(test.warning));
            }
        });
        EXPECT_EQ(get("image"), test.error.empty() ? "new" : "old bytes");
        EXPECT_THAT(names(), ElementsAre("image"));
        ASSERT_EQ(::chown("image", 0, 0), 0);
    }
    // A folder that cannot be written to.
    ASSERT_EQ(::chown("image", nobody, nobody), 0);
    ::chmod(".", 0755);
    inChild([] {
        becomeNobody();
        EXPECT_THAT(change("image", "newest").error, HasSubstr("nothing can be written beside it: Permission denied"));
        EXPECT_THAT(writeImageFile("fresh", Bytes(3)).error, HasSubstr("Permission denied"));
    });
    EXPECT_THAT(names(), ElementsAre("image"));
}

TEST_F(WriterFaults, PermissionsMayNarrowButAreTold) {
    const struct {
        mode_t mode;
        std::string error;
        bool isTold;
    } cases[] = {
        {0644, "", true}, {0600, "", false}, {0444, "permissions cannot be kept: Operation not permitted", false}};
    for (const auto& test : cases) {
        put("image", "old bytes");
        ::chmod("image", test.mode);
        inChild([&] {
            inject({{SYS_fchmod, EPERM}});
            const WriteReport report = change("image", "new");
            EXPECT_EQ(report.error, test.error);
            EXPECT_EQ(report.warnings.size(), test.isTold ? 1U : 0U);
        });
        EXPECT_EQ(statusOf("image").st_mode & 07777U, test.error.empty() ? 0600U : test.mode);
    }
}

// An access control list says who may do what; a signature is of bytes that are others now.
TEST_F(WriterFaults, AttributesOfTheSystemAreKeptOrNotNeeded) {
    const std::string list = accessList(4);
    const std::string rights("\1\0\0\2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 20); // none
    if (::setxattr("image", "system.posix_acl_access", list.data(), list.size(), 0) != 0 ||
        ::setxattr("image", "security.ima", "x", 1, 0) != 0)
        GTEST_SKIP() << "no access control lists here, or no rights to sign";
    ::setxattr("image", "security.evm", "\3", 1, 0); // where the kernel lets it
    ::setxattr("image", "security.capability", rights.data(), rights.size(), 0);
    inChild([] {
        inject({{SYS_fsetxattr, EPERM}});
        EXPECT_THAT(change("image", "new").error, HasSubstr("system.posix_acl_access cannot be kept: Operation not"));
    });
    EXPECT_EQ(get("image"), "old bytes");
    const WriteReport report = change("image", "new");
    EXPECT_EQ(report.error, "");
    EXPECT_THAT(report.warnings, IsEmpty());
    for (const char* const name : {"security.ima", "security.evm", "security.capability"})
        EXPECT_EQ(attribute("image", name), "none") << name;
}

// A file of another size is written in place where it cannot be replaced.
TEST_F(WriterFaults, ASizeThatCannotBeChangedIsTold) {
    const struct {
        std::vector<Fault> faults; ///< of sizes that have all bits of the mask
        std::string before;
        std::string after;
        std::string error;
        std::string left;
    } cases[] = {
        {{{SYS_ftruncate, EIO}}, "old bytes", "longer bytes", "Input/output error", "old bytes"},
        {{{SYS_ftruncate, EIO, 1, 6}},
         "old bytes",
         "shorter",
         "cannot be cut off: Input/output error; the old bytes are in image~",
         "shorteres"},
        {{{SYS_ftruncate, EIO, 1, 10}, {SYS_pwrite64, EIO}},
         "old bytes!",
         "new bytes, twenty-one",
         "cannot be written at offset 0: Input/output error; the old bytes were written back; its size is not what it "
         "was; the old bytes are in image~",
         "old bytes!" + std::string(11, '\0')},
    };
    for (const auto& test : cases) {
        put("image", test.before);
        inChild([&] {
            inject(mountPoint);
            inject(test.faults);
            const WriteReport report = change("image", test.after, {.backup = ""});
            EXPECT_EQ(report.error, test.error);
            EXPECT_EQ(report.backup, "image~");
        });
        if (IsSkipped())
            return;
        EXPECT_EQ(get("image"), test.left);
        EXPECT_EQ(get("image~"), test.before);
        fs::remove("image~");
    }
}

TEST_F(WriterFaults, AFileThatIsNewIsThereWholeOrNotAtAll) {
    const struct {
        std::string path;
        std::vector<Fault> faults;
        std::string error;
    } cases[] = {
        {"new", {{SYS_openat, EACCES, 2, withoutName}}, "Permission denied"},
        {"new", {{SYS_fsync, EIO}}, "Input/output error"},
        {"new", {{SYS_linkat, EIO}}, "Input/output error"},
        {"new", {noFilesWithoutName, {SYS_renameat2, EIO}}, "Input/output error"},
        {"new", {noFilesWithoutName, {SYS_renameat2, EINVAL}, {SYS_linkat, EIO}}, "Input/output error"},
        {"new", {noFilesWithoutName, {SYS_renameat2, EINVAL}}, ""},
        {"new", {noFilesWithoutName}, ""},
        {"image", {{SYS_stat, ENOENT}, {SYS_newfstatat, ENOENT}}, "comes and goes"},
    };
    for (const auto& test : cases) {
        inChild([&] {
            inject(test.faults);
            EXPECT_EQ(writeImageFile(test.path, bytesOf("new bytes")).error, test.error);
        });
        EXPECT_EQ(fs::remove("new"), test.error.empty()) << test.error;
        EXPECT_THAT(names(), ElementsAre("image"));
    }
    EXPECT_EQ(get("image"), "old bytes");
}

// Another process may take the new file for a left-over, and remove it before it is locked.
TEST_F(WriterFaults, NobodyWritesIntoAFileThatWasTakenAway) {
    const std::vector<Fault> cases[] = {{{SYS_flock, EWOULDBLOCK}},
                                        {{SYS_fstat, EIO}, {SYS_newfstatat, EIO, 3, AT_EMPTY_PATH}},
                                        {{SYS_newfstatat, ENOENT, 3, AT_SYMLINK_NOFOLLOW}}};
    for (const std::vector<Fault>& faults : cases) {
        inChild([&] {
            inject({noFilesWithoutName});
            inject(faults);
            EXPECT_EQ(writeImageFile("new", bytesOf("new bytes")).error, "Resource temporarily unavailable");
        });
        EXPECT_FALSE(fs::exists("new"));
    }
}

TEST_F(WriterFaults, AnImageThatCannotBeReadAgainIsNotReplaced) {
    inChild([] {
        ImageEdit edit("image");
        edit.bytes() = bytesOf("new bytes");
        inject({{SYS_read, EIO}});
        EXPECT_THAT(edit.commit().error, HasSubstr("was changed by another program"));
    });
    EXPECT_EQ(get("image"), "old bytes");
}

// The file itself is 31 of the descriptors, the only one whose number has all of these bits.
TEST_F(WriterFaults, WhatIsWrittenInPlaceIsOnTheDisk) {
    for (const int error : {EIO, EINVAL}) { // a device that has nothing to be synced says EINVAL
        put("image", "old bytes");
        inChild([&] {
            while (::dup(STDERR_FILENO) < 29) {
            }
            inject({{SYS_fsync, error, 0, 31}});
            const WriteReport report = change("image", "new bytes", {.backup = "kept", .inPlace = true});
            EXPECT_EQ(report.error, error == EINVAL ? ""
                                                    : "cannot be brought to the medium: Input/output error; the old "
                                                      "bytes could not be written back, offsets 0 to 2 are unknown; "
                                                      "the old bytes are in kept");
        });
        EXPECT_EQ(get("image"), error == EINVAL ? "new bytes" : "old bytes");
        EXPECT_EQ(get("kept"), "old bytes");
        fs::remove("kept");
    }
}

TEST_F(WriterFaults, WhatWasSaidOfALinkIsTakenBackWhereNothingIsReplaced) {
    fs::create_hard_link("image", "other");
    inChild([] {
        inject(mountPoint);
        EXPECT_THAT(change("image", "new").warnings, IsEmpty());
    });
    // Nor is a backup made where every name for one is taken.
    for (int i = 1; i <= 100; ++i)
        put(i == 1 ? "image~" : "image~" + std::to_string(i), "");
    EXPECT_EQ(change("image", "new", {.backup = ""}).error, "backup image~100: File exists");
    EXPECT_EQ(get("image"), "old bytes");
}

} // namespace WriterFaultsTest
