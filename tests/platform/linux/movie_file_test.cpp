// The files of movies on places that refuse, fill up and end, and with a kernel that has no asynchronous
// writes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/file.h>
#include <sys/fsuid.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <numeric>
#include <thread>
#include <vector>

#include "platform/linux/file_claim.h"
#include "platform/page_memory.h"
#include "platform/random_access_file.h"
#include "platform/thread.h"
#include "platform/unbuffered_file.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

using Bytes = std::vector<std::uint8_t>;
using test::readFile;
using test::TempFolder;
using test::wideName;

constexpr std::size_t kPage = 4096;

std::vector<int> openDescriptors() {
    std::vector<int> all;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        all.push_back(std::stoi(entry.path().filename()));
    }
    std::erase_if(all, [](int descriptor) { return fcntl(descriptor, F_GETFD) < 0; });  // the loop's own
    return all;
}

struct LinuxMovieFileTest : testing::Test {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "movie");
    PageBlock block;
    RandomAccessFile ordinary;
    UnbufferedFile unbuffered;

    LinuxMovieFileTest() {
        EXPECT_TRUE(block.allocate(4 * kPage).ok());
        std::iota(block.data(), block.data() + block.size(), std::uint8_t{1});
    }
    Bytes blockBytes(std::size_t from, std::size_t size) const {
        return {block.data() + from, block.data() + from + size};
    }
    Status writeUnbuffered(std::uint64_t position, std::size_t size) {
        TAVRA_RETURN_IF_ERROR(unbuffered.startWrite(position, block.data(), size));
        return unbuffered.wait();
    }
};

TEST_F(LinuxMovieFileTest, AFullDiskIsCode112) {
    std::filesystem::create_symlink("/dev/full", folder / "movie");
    ASSERT_TRUE(ordinary.create(name).ok());
    EXPECT_EQ(ordinary.write(0, "x", 1).code(), 112u);
    EXPECT_TRUE(ordinary.close().ok());

    ASSERT_TRUE(unbuffered.create(name).ok());
    EXPECT_EQ(writeUnbuffered(0, 2048).code(), 112u);
    EXPECT_TRUE(unbuffered.wait().ok()) << "told once";
    ASSERT_TRUE(unbuffered.startWrite(0, block.data(), 2048).ok());
    EXPECT_EQ(unbuffered.startWrite(2048, block.data(), 2048).code(), 112u) << "of the write before it";
    ASSERT_TRUE(unbuffered.startWrite(0, block.data(), 2048).ok());
    EXPECT_EQ(unbuffered.close().code(), 112u);
    EXPECT_TRUE(unbuffered.close().ok());
}

// The super-user may write anywhere; for the test its file accesses become those of somebody else.
TEST_F(LinuxMovieFileTest, AReadOnlyFolderIsCode5) {
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0555));
    const bool superUser = geteuid() == 0;
    if (superUser) setfsuid(65534);
    const std::uint32_t created = ordinary.create(name).code();
    const std::uint32_t createdUnbuffered = unbuffered.create(name).code();
    if (superUser) setfsuid(0);
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    EXPECT_EQ(created, 5u);
    EXPECT_EQ(createdUnbuffered, 5u);
    EXPECT_TRUE(folder.isEmpty());
}

TEST_F(LinuxMovieFileTest, ANameThatCannotBeExpressedIsCode123) {
    const std::u16string lone = wideName(folder.path()) + u"/a" + char16_t{0xD800};
    EXPECT_EQ(ordinary.create(lone).code(), 123u);
    EXPECT_EQ(unbuffered.create(lone).code(), 123u);
    EXPECT_TRUE(folder.isEmpty());
}

TEST_F(LinuxMovieFileTest, ANameThatIsTooLongIsCode206) {
    const std::u16string longName = wideName(folder.path()) + u"/" + std::u16string(256, u'a');
    EXPECT_EQ(ordinary.create(longName).code(), 206u);
    EXPECT_EQ(unbuffered.create(longName).code(), 206u);
}

TEST_F(LinuxMovieFileTest, AFolderThatVanishesTakesNoNewFileAndTheOpenOneGoesOn) {
    std::filesystem::create_directory(folder / "inner");
    const std::u16string inner = wideName(folder / "inner" / "movie");
    ASSERT_TRUE(ordinary.create(inner).ok());
    std::filesystem::remove_all(folder / "inner");
    EXPECT_TRUE(ordinary.write(0, "x", 1).ok());
    EXPECT_TRUE(ordinary.close().ok());
    EXPECT_EQ(ordinary.openForWriting(inner).code(), 2u);
    EXPECT_EQ(unbuffered.create(inner).code(), 2u);
}

TEST_F(LinuxMovieFileTest, DescriptorsAreClosedAndNotInherited) {
    const std::vector<int> before = openDescriptors();
    {
        ASSERT_TRUE(ordinary.create(name).ok());
        ASSERT_TRUE(unbuffered.create(wideName(folder / "second")).ok());
        std::vector<int> now = openDescriptors();
        EXPECT_EQ(now.size(), before.size() + 2);
        for (const int descriptor : before) std::erase(now, descriptor);
        for (const int descriptor : now) EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    }
    EXPECT_FALSE(ordinary.openForReading(wideName(folder.path())).ok());
    EXPECT_FALSE(ordinary.create(wideName(folder / "missing" / "a")).ok());
    EXPECT_TRUE(unbuffered.close().ok());
    EXPECT_EQ(openDescriptors().size(), before.size());
}

// A thread of the library does not end the application when a file grows past the process's limit.
TEST_F(LinuxMovieFileTest, BeyondTheFileSizeLimitIsCode223AndWhatFitsIsWritten) {
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit limited{kPage + 3072, before.rlim_max};
    Thread writer;
    std::uint32_t ordinaryCode = 0;
    std::uint32_t unbufferedCode = 0;
    const auto write = [&] {
        EXPECT_TRUE(ordinary.write(0, block.data(), 2 * kPage - 1024).ok());
        ordinaryCode = ordinary.write(kPage, block.data(), 3 * kPage).code();
        EXPECT_TRUE(writeUnbuffered(0, kPage).ok());
        unbufferedCode = writeUnbuffered(kPage, 2 * kPage).code();
    };
    ASSERT_TRUE(ordinary.create(name).ok());
    ASSERT_TRUE(unbuffered.create(wideName(folder / "second")).ok());
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const Status started = writer.start("tavra-test", ThreadPriority::Normal, write);
    writer.join();
    setrlimit(RLIMIT_FSIZE, &before);
    ASSERT_TRUE(started.ok());
    EXPECT_EQ(ordinaryCode, 223u);
    EXPECT_EQ(unbufferedCode, 223u);
    Bytes expected = blockBytes(0, kPage);
    const Bytes part = blockBytes(0, 3072);
    expected.insert(expected.end(), part.begin(), part.end());
    EXPECT_EQ(readFile(folder / "movie"), expected);
    EXPECT_EQ(readFile(folder / "second"), expected);
}

constexpr std::uint32_t kSharingViolation = 32;

TEST_F(LinuxMovieFileTest, AFileThatIsWrittenUnbufferedIsItsWritersAlone) {
    ASSERT_TRUE(unbuffered.create(name).ok());
    ASSERT_TRUE(writeUnbuffered(0, 2048).ok());
    UnbufferedFile second;
    EXPECT_EQ(second.create(name).code(), kSharingViolation);
    EXPECT_EQ(ordinary.create(name).code(), kSharingViolation);
    EXPECT_EQ(readFile(folder / "movie"), blockBytes(0, 2048)) << "nobody emptied it";
    EXPECT_TRUE(ordinary.openForWriting(name).ok()) << "but its own headers can be written";
    ASSERT_TRUE(unbuffered.close().ok());
    EXPECT_TRUE(second.create(name).ok());
}

TEST_F(LinuxMovieFileTest, AFileThatIsWrittenCanBeReadMeanwhile) {
    ASSERT_TRUE(ordinary.create(name).ok());
    ASSERT_TRUE(ordinary.write(0, "abc", 3).ok());
    RandomAccessFile reader;
    ASSERT_TRUE(reader.openForReading(name).ok());
    std::uint64_t size = 0;
    EXPECT_TRUE(reader.size(size).ok());
    EXPECT_EQ(size, 3u);
}

// As another program sees it, and as it holds ours off.
TEST_F(LinuxMovieFileTest, TheClaimIsALockOfTheSystem) {
    ASSERT_TRUE(ordinary.create(name).ok());
    const int other = ::open((folder / "movie").c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_GE(other, 0);
    EXPECT_NE(flock(other, LOCK_SH | LOCK_NB), 0);
    EXPECT_EQ(errno, EWOULDBLOCK);
    ASSERT_TRUE(ordinary.write(0, "abc", 3).ok());
    ASSERT_TRUE(ordinary.close().ok());
    EXPECT_EQ(flock(other, LOCK_SH | LOCK_NB), 0);
    const std::vector<int> before = openDescriptors();
    EXPECT_EQ(ordinary.create(name).code(), kSharingViolation);
    EXPECT_EQ(unbuffered.create(name).code(), kSharingViolation);
    EXPECT_EQ(openDescriptors(), before) << "what was refused is closed";
    EXPECT_EQ(readFile(folder / "movie"), (Bytes{'a', 'b', 'c'}));
    ::close(other);
    EXPECT_TRUE(ordinary.create(name).ok());
}

// Whoever could not make the file can tell why; looking makes nothing, and holds nobody off.
TEST_F(LinuxMovieFileTest, AClaimCanBeSeen) {
    const std::string file = (folder / "movie").string();
    EXPECT_FALSE(isClaimed(file.c_str())) << "there is no file";
    EXPECT_TRUE(folder.isEmpty());
    ASSERT_TRUE(ordinary.create(name).ok());
    const std::vector<int> before = openDescriptors();
    EXPECT_TRUE(isClaimed(file.c_str())) << "it is written";
    EXPECT_EQ(openDescriptors(), before);
    ASSERT_TRUE(ordinary.close().ok());
    EXPECT_FALSE(isClaimed(file.c_str()));
    RandomAccessFile reader;
    ASSERT_TRUE(reader.openForReading(name).ok());
    EXPECT_TRUE(isClaimed(file.c_str())) << "it is read";
    ASSERT_TRUE(reader.close().ok());
    EXPECT_TRUE(ordinary.create(name).ok());
    EXPECT_FALSE(isClaimed(folder.path().c_str()));
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(isClaimed((folder / "pipe").c_str()));
}

TEST_F(LinuxMovieFileTest, ADeviceHasNoWriterOfItsOwn) {
    std::filesystem::create_symlink("/dev/null", folder / "movie");
    UnbufferedFile second;
    ASSERT_TRUE(ordinary.create(name).ok());
    EXPECT_TRUE(unbuffered.create(name).ok());
    EXPECT_TRUE(second.create(name).ok());
}

// As on a disk of larger sectors: the position is none at which the cache can be bypassed.
TEST_F(LinuxMovieFileTest, AnAlignmentThatTheDiskDoesNotTakeGoesThroughTheCache) {
    ASSERT_TRUE(unbuffered.create(name).ok());
    ASSERT_TRUE(writeUnbuffered(0, 2048).ok());
    EXPECT_TRUE(writeUnbuffered(2048, 100).ok());
    EXPECT_TRUE(writeUnbuffered(2148, 2048).ok());
    EXPECT_TRUE(writeUnbuffered(4196, 5000).ok());
    EXPECT_TRUE(unbuffered.close().ok());
    Bytes expected;
    for (const std::size_t size : {2048u, 100u, 2048u, 5000u}) {
        const Bytes piece = blockBytes(0, size);
        expected.insert(expected.end(), piece.begin(), piece.end());
    }
    EXPECT_EQ(readFile(folder / "movie"), expected);
}

TEST_F(LinuxMovieFileTest, APositionThatNoFileHasIsCode87) {
    ASSERT_TRUE(ordinary.create(name).ok());
    EXPECT_EQ(ordinary.write(0x8000'0000'0000'0000, "x", 1).code(), 87u);
    ASSERT_TRUE(unbuffered.create(wideName(folder / "second")).ok());
    EXPECT_EQ(writeUnbuffered(0x8000'0000'0000'0000, 2048).code(), 87u);
}

TEST_F(LinuxMovieFileTest, AFileSystemInMemoryTakesTheSameWrites) {
    constexpr const char* kMemory = "/dev/shm";
    if (access(kMemory, W_OK) != 0) GTEST_SKIP() << "no " << kMemory;
    const TempFolder inMemory(kMemory);
    ASSERT_TRUE(unbuffered.create(wideName(inMemory / "movie")).ok());
    EXPECT_TRUE(writeUnbuffered(0, 2048).ok());
    EXPECT_TRUE(writeUnbuffered(2048, 4 * kPage).ok());
    EXPECT_TRUE(unbuffered.close().ok());
    Bytes expected = blockBytes(0, 2048);
    const Bytes rest = blockBytes(0, 4 * kPage);
    expected.insert(expected.end(), rest.begin(), rest.end());
    EXPECT_EQ(readFile(inMemory / "movie"), expected);
}

// Lets one system call of this thread, and of no other, fail from now on.
bool refuse(int systemCall, int errnoValue) {
    std::array<sock_filter, 4> program = {{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<std::uint32_t>(systemCall), 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(errnoValue)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    }};
    const sock_fprog filter{program.size(), program.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &filter) == 0;
}

struct Refusal {
    const char* what;
    int systemCall;
    int errnoValue;
};

class KernelThatRefuses : public testing::WithParamInterface<Refusal>, public LinuxMovieFileTest {};

TEST_P(KernelThatRefuses, TheBytesGoTheOrdinaryWay) {
    bool refused = false;
    std::thread([&] {
        refused = refuse(GetParam().systemCall, GetParam().errnoValue);
        if (!refused) return;
        EXPECT_TRUE(unbuffered.create(name).ok());
        EXPECT_TRUE(writeUnbuffered(0, 2 * kPage).ok());
        EXPECT_TRUE(writeUnbuffered(2 * kPage, 2048).ok());
        EXPECT_TRUE(unbuffered.startWrite(2 * kPage + 2048, block.data(), 2048).ok());
        EXPECT_TRUE(unbuffered.close().ok());
        std::filesystem::create_symlink("/dev/full", folder / "full");
        EXPECT_TRUE(unbuffered.create(wideName(folder / "full")).ok());
        EXPECT_EQ(writeUnbuffered(0, 2048).code(), 112u);
        EXPECT_TRUE(unbuffered.close().ok());
    }).join();
    if (!refused) GTEST_SKIP() << "this system takes no filters of system calls";
    Bytes expected = blockBytes(0, 2 * kPage);
    for (int i = 0; i < 2; ++i) {
        const Bytes piece = blockBytes(0, 2048);
        expected.insert(expected.end(), piece.begin(), piece.end());
    }
    EXPECT_EQ(readFile(folder / "movie"), expected);
}

INSTANTIATE_TEST_SUITE_P(SystemCalls, KernelThatRefuses,
                         testing::Values(Refusal{"NoLocks", SYS_flock, ENOLCK},
                                         Refusal{"NoSuchCall", SYS_io_setup, ENOSYS},
                                         Refusal{"NoneLeft", SYS_io_setup, EAGAIN},
                                         Refusal{"NotSubmitted", SYS_io_submit, EAGAIN},
                                         Refusal{"SubmitInvalid", SYS_io_submit, EINVAL},
                                         Refusal{"NotAwaited", SYS_io_getevents, EINVAL}),
                         [](const auto& test) { return std::string(test.param.what); });

}  // namespace
}  // namespace tavra::platform
