#include "platform/whole_file.h"

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

using test::readFile;
using test::TempFolder;
using test::wideName;

using Bytes = std::vector<std::uint8_t>;

const Bytes kOld(3000, 'o');
const Bytes kNew(70000, 'n');

constexpr int kReplaced = 42;  // exit code of a process that got to its end

// What a process that replaces the file with kNew does, in the process itself.
[[noreturn]] void replaceTraced(const std::u16string& name) {
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    ::raise(SIGSTOP);
    ::_exit(replaceWholeFile(name, kNew).ok() ? kReplaced : 1);
}

// Lets a process replace the file, and kills it when it has stopped `stops` times: it stops ahead of each
// system call and behind it. True: it came to its end before.
bool replaceWithin(int stops, const std::u16string& name) {
    const pid_t child = ::fork();
    if (child == 0) replaceTraced(name);
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSTOPPED(status));
    for (int i = 0; i < stops; ++i) {
        EXPECT_EQ(::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr), 0);
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        if (WIFEXITED(status)) {
            EXPECT_EQ(WEXITSTATUS(status), kReplaced);
            return true;
        }
    }
    ::kill(child, SIGKILL);
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return false;
}

// A file that a crash tore apart would lose what a user had set.
TEST(LinuxWholeFile, KilledAtAnySystemCallLeavesTheOldFileOrTheNewOne) {
    int sawOld = 0, sawNew = 0;
    for (int stops = 1;; ++stops) {
        const TempFolder folder;
        const std::u16string name = wideName(folder / "settings.ini");
        ASSERT_TRUE(replaceWholeFile(name, kOld).ok());
        const bool ended = replaceWithin(stops, name);
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
