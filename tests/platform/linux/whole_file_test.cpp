#include "platform/whole_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "platform/profile_file.h"
#include "support/killed_at_system_call.h"
#include "support/temp_folder.h"
#include "support/wait_clock_double.h"

namespace tavra::platform {
namespace {

using test::readFile;
using test::TempFolder;
using test::wideName;

using Bytes = std::vector<std::uint8_t>;

const Bytes kOld(3000, 'o');
const Bytes kNew(70000, 'n');

constexpr int kReplaced = 42;  // exit code of a process that got to its end

// A file that a crash tore apart would lose what a user had set.
TEST(LinuxWholeFile, KilledAtAnySystemCallLeavesTheOldFileOrTheNewOne) {
    int sawOld = 0, sawNew = 0;
    for (int stops = 1;; ++stops) {
        const TempFolder folder;
        const std::u16string name = wideName(folder / "settings.ini");
        ASSERT_TRUE(replaceWholeFile(name, kOld).ok());
        const bool ended = test::endsWithin(stops, [&] { return replaceWholeFile(name, kNew).ok(); });
        const Bytes found = readFile(folder / "settings.ini");
        ASSERT_TRUE(found == kOld || found == kNew) << "torn after " << stops << " stops";
        ++(found == kOld ? sawOld : sawNew);
        // What a killed process left behind hinders nobody.
        ASSERT_TRUE(replaceWholeFile(name, kOld).ok());
        EXPECT_EQ(readFile(folder / "settings.ini"), kOld);
        if (ended || HasFailure()) break;
    }
    EXPECT_GT(sawOld,
              10);  // ahead of the rename there are at least the open, the write, the flush, the close
    EXPECT_GT(sawNew, 1);
}

TEST(LinuxWholeFile, AWriteThatFailsLeavesTheOldFileAndNoOther) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "settings.ini");
    ASSERT_TRUE(replaceWholeFile(name, kOld).ok());
    const pid_t child = ::fork();
    if (child == 0) {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{10000, 10000};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::_exit(replaceWholeFile(name, kNew).ok() ? 1 : kReplaced);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), kReplaced);
    EXPECT_EQ(readFile(folder / "settings.ini"), kOld);
    const auto begin = std::filesystem::directory_iterator(folder.path());
    EXPECT_EQ(std::distance(begin, std::filesystem::directory_iterator()), 1);
}

TEST(LinuxWholeFile, KeepsPermissionsAndLinks) {
    const TempFolder folder;
    ASSERT_TRUE(replaceWholeFile(wideName(folder / "real.ini"), kOld).ok());
    ASSERT_EQ(::chmod((folder / "real.ini").c_str(), 0640), 0);
    std::filesystem::create_symlink(folder / "real.ini", folder / "link.ini");
    ASSERT_TRUE(replaceWholeFile(wideName(folder / "link.ini"), kNew).ok());
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.ini"));
    EXPECT_EQ(readFile(folder / "real.ini"), kNew);
    struct stat now {};
    ASSERT_EQ(::stat((folder / "real.ini").c_str(), &now), 0);
    EXPECT_EQ(now.st_mode & 07777u, 0640u);
}

// A user who keeps settings elsewhere may have made the link first.
TEST(LinuxWholeFile, ALinkToAFileThatIsNotThereYetMakesThatFile) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "elsewhere");
    std::filesystem::create_symlink("elsewhere/second.ini", folder / "link.ini");
    std::filesystem::create_symlink(folder / "elsewhere" / "real.ini", folder / "elsewhere" / "second.ini");
    ASSERT_TRUE(replaceWholeFile(wideName(folder / "link.ini"), kNew).ok());
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.ini"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "elsewhere" / "second.ini"));
    EXPECT_TRUE(
        std::filesystem::is_regular_file(std::filesystem::symlink_status(folder / "elsewhere/real.ini")));
    EXPECT_EQ(readFile(folder / "elsewhere" / "real.ini"), kNew);
    Bytes read;
    ASSERT_TRUE(readWholeFile(wideName(folder / "link.ini"), read).ok());
    EXPECT_EQ(read, kNew);
}

TEST(LinuxWholeFile, LinksThatLeadNowhereAreErrorsAndStay) {
    const TempFolder folder;
    std::filesystem::create_symlink("circle.ini", folder / "circle.ini");
    std::filesystem::create_symlink("missing/real.ini", folder / "lost.ini");
    for (const char* const name : {"circle.ini", "lost.ini"}) {
        EXPECT_FALSE(replaceWholeFile(wideName(folder / name), kNew).ok()) << name;
        EXPECT_TRUE(std::filesystem::is_symlink(folder / name)) << name;
    }
}

// --- two at the same time ---

using test::WaitClockDouble;

TEST(LinuxFileUpdate, ALockThatStaysTakenIsAnErrorAfterFiveSeconds) {
    const TempFolder folder;
    WaitClockDouble clock;
    const FileUpdateLock first(wideName(folder / "settings.ini"));
    EXPECT_TRUE(first.status().ok());
    EXPECT_EQ(FileUpdateLock(wideName(folder / "settings.ini")).status().code(), 170u);
    EXPECT_EQ(clock.waited(), 5000);
    ProfileText text;
    EXPECT_EQ(updateProfile(wideName(folder / "settings.ini"), [](ProfileText&) {}).code(), 170u);
    EXPECT_TRUE(folder.isEmpty());
    const TempFolder other;
    EXPECT_TRUE(FileUpdateLock(wideName(other / "settings.ini")).status().ok());
}

TEST(LinuxFileUpdate, ALinkHasTheLockOfTheFileThatItLeadsTo) {
    const TempFolder folder, links;
    WaitClockDouble clock;
    std::filesystem::create_symlink(folder / "settings.ini", links / "link.ini");
    const FileUpdateLock first(wideName(folder / "settings.ini"));
    EXPECT_EQ(FileUpdateLock(wideName(links / "link.ini")).status().code(), 170u);
}

TEST(LinuxFileUpdate, ALockThatIsReleasedInTimeIsWaitedFor) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "settings.ini");
    WaitClockDouble clock;
    auto first = std::make_unique<FileUpdateLock>(name);
    clock.onNextSleep([&] { first.reset(); });
    EXPECT_TRUE(updateProfile(name, [](ProfileText& text) { text.set(u"s", u"k", u"1"); }).ok());
    EXPECT_LT(clock.waited(), 100);
}

TEST(LinuxFileUpdate, AFolderWithoutLocksHoldsNobodyUp) {
    const TempFolder folder;
    EXPECT_TRUE(FileUpdateLock(wideName(folder / "missing/settings.ini")).status().ok());
    EXPECT_TRUE(FileUpdateLock(std::u16string(1, 0xD800)).status().ok());
}

// Whoever reads and replaces without the lock loses what another one has set in between.
TEST(LinuxFileUpdate, ProcessesThatSaveToOneFileKeepEachOthersSections) {
    constexpr int kProcesses = 4, kKeys = 10;
    const TempFolder folder;
    const std::u16string name = wideName(folder / "settings.ini");
    const auto numbered = [](char16_t letter, int number) {
        return std::u16string{letter, static_cast<char16_t>(u'0' + number)};
    };
    std::vector<pid_t> children;
    for (int i = 0; i < kProcesses; ++i) {
        children.push_back(::fork());
        if (children.back() != 0) continue;
        for (int k = 0; k < kKeys; ++k) {
            const Status updated = updateProfile(
                name, [&](ProfileText& text) { text.set(numbered(u's', i), numbered(u'k', k), u"1"); });
            if (!updated.ok()) ::_exit(1);
        }
        ::_exit(kReplaced);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(WEXITSTATUS(status), kReplaced);
    }
    ProfileText text;
    ASSERT_TRUE(readProfile(name, text).ok());
    for (int i = 0; i < kProcesses; ++i) {
        for (int k = 0; k < kKeys; ++k) {
            EXPECT_EQ(text.find(numbered(u's', i), numbered(u'k', k)), u"1") << i << ", " << k;
        }
    }
}

TEST(LinuxWholeFile, WhatIsNoPlainFileIsNotTouched) {
    const TempFolder folder;
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    Bytes read;
    EXPECT_EQ(readWholeFile(wideName(folder / "pipe"), read).code(), 5u);
    EXPECT_EQ(replaceWholeFile(wideName(folder / "pipe"), kNew).code(), 5u);
    EXPECT_EQ(readWholeFile(u"/dev/zero", read).code(), 5u);
    EXPECT_TRUE(std::filesystem::is_fifo(folder / "pipe"));
}

TEST(LinuxWholeFile, AFileWithoutEndIsNotTakenIntoMemory) {
    const TempFolder folder;
    ASSERT_TRUE(replaceWholeFile(wideName(folder / "huge"), Bytes{1}).ok());
    std::filesystem::resize_file(folder / "huge", kMostFileBytes + 1);  // a hole, no blocks of the disk
    Bytes read;
    EXPECT_EQ(readWholeFile(wideName(folder / "huge"), read).code(), 223u);
    EXPECT_TRUE(read.empty());
}

TEST(LinuxWholeFile, ANameThatCannotBeExpressedIsAnError) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "a") + char16_t(0xD800);
    Bytes read;
    EXPECT_EQ(readWholeFile(name, read).code(), 123u);
    EXPECT_EQ(replaceWholeFile(name, kNew).code(), 123u);
    EXPECT_TRUE(folder.isEmpty());
}

}  // namespace
}  // namespace tavra::platform
