#include "platform/key_tree.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>

#include "support/failing_allocations.h"
#include "support/user_tree.h"
#include "support/wait_clock_double.h"

namespace tavra::platform {
namespace {

using Access = TreeKey::Access;
using Missing = TreeKey::Missing;
using Bytes = std::vector<std::uint8_t>;

class LinuxKeyTree : public testing::Test {
  protected:
    static std::uint32_t write(const std::u16string& path, std::uint8_t byte = 1) {
        TreeKey key;
        std::uint32_t error = key.open(path, Access::Write, Missing::Create);
        if (error == 0) error = key.write(u"value", ValueType::Binary, Bytes{byte});
        return error == 0 ? key.close() : error;
    }
    void sql(const char* text) const {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(tree_.database().c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, text, nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close(database);
    }
    // That the store is refused with this error, and stays byte for byte.
    void expectRefused(std::uint32_t error) const {
        const Bytes before = test::readFile(tree_.database());
        EXPECT_EQ(write(u"a"), error);
        EXPECT_EQ(TreeKey().open(u"a", Access::Read, Missing::Fail), error);
        EXPECT_EQ(TreeKey().open(u"a", Access::Read, Missing::Create), error);
        EXPECT_EQ(test::readFile(tree_.database()), before);
    }

    const test::UserTree tree_;
};

TEST_F(LinuxKeyTree, ReadingMakesNoStore) {
    EXPECT_EQ(TreeKey().open(u"a", Access::Read, Missing::Fail), 2u);
    EXPECT_FALSE(std::filesystem::exists(tree_.database()));
}

// The database takes the transaction back by itself then. What comes behind must not go in alone.
TEST_F(LinuxKeyTree, AWriteThatTheDiskDoesNotTakeUndoesTheWholeCall) {
    ASSERT_EQ(write(u"a"), 0u);
    TreeKey key;
    ASSERT_EQ(key.open(u"a", Access::Write, Missing::Create), 0u);
    ASSERT_EQ(key.write(u"first", ValueType::Binary, Bytes{1}), 0u);
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small{std::filesystem::file_size(tree_.database()), limit.rlim_max};
    const auto handler = signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::uint32_t failure = key.write(u"large", ValueType::Binary, Bytes(16 << 20, 2));
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, handler);
    EXPECT_NE(failure, 0u);
    EXPECT_EQ(key.write(u"last", ValueType::Binary, Bytes{3}), failure);
    EXPECT_EQ(key.removeValue(u"value"), failure);
    EXPECT_EQ(key.close(), failure);

    TreeValue value;
    ASSERT_EQ(key.open(u"a", Access::Read, Missing::Fail), 0u);
    EXPECT_EQ(key.read(u"value", value), 0u);
    for (const char16_t* const name : {u"first", u"large", u"last"}) EXPECT_EQ(key.read(name, value), 2u);
}

// No memory in the middle of a save: what was written ahead of it must not stay beside old values.
TEST_F(LinuxKeyTree, WhatEndsWithoutBeingClosedIsUndone) {
    ASSERT_EQ(write(u"a", 1), 0u);
    const std::u16string longName(5000, u'n');
    const auto breakOff = [&] {
        TreeKey key;
        EXPECT_EQ(key.open(u"a", Access::Write, Missing::Fail), 0u);
        EXPECT_EQ(key.write(u"value", ValueType::Binary, Bytes{2}), 0u);
        const test::FailAllocationsFrom fail(longName.size());
        key.write(longName, ValueType::Binary, Bytes{3});
    };
    EXPECT_THROW(breakOff(), std::bad_alloc);
    TreeKey key;
    TreeValue value;
    ASSERT_EQ(key.open(u"a", Access::Read, Missing::Fail), 0u);
    ASSERT_EQ(key.read(u"value", value), 0u);
    EXPECT_EQ(value.data, Bytes{1});
    EXPECT_EQ(key.value(1, value), 259u);
}

TEST_F(LinuxKeyTree, AFileThatIsNoDatabaseIsRefused) {
    std::filesystem::create_directories(tree_.database().parent_path());
    std::ofstream(tree_.database()) << std::string(5000, 'x');
    expectRefused(1009);
}

TEST_F(LinuxKeyTree, ADatabaseOfSomebodyElseIsRefused) {
    std::filesystem::create_directories(tree_.database().parent_path());
    sql("CREATE TABLE recipes(name TEXT)");
    expectRefused(1009);
}

TEST_F(LinuxKeyTree, ANewerStoreIsRefused) {
    ASSERT_EQ(write(u"a"), 0u);
    sql("PRAGMA user_version = 2");
    expectRefused(1306);
}

TEST_F(LinuxKeyTree, ACutStoreIsRefused) {
    ASSERT_EQ(write(u"a"), 0u);
    std::filesystem::resize_file(tree_.database(), std::filesystem::file_size(tree_.database()) / 2);
    EXPECT_NE(write(u"a"), 0u);
}

TEST_F(LinuxKeyTree, AnEmptyFileIsAnEmptyStore) {
    std::filesystem::create_directories(tree_.database().parent_path());
    std::ofstream(tree_.database()).flush();
    EXPECT_EQ(TreeKey().open(u"a", Access::Read, Missing::Fail), 2u);
    EXPECT_EQ(write(u"a"), 0u);
    EXPECT_EQ(TreeKey().open(u"a", Access::Read, Missing::Fail), 0u);
}

TEST_F(LinuxKeyTree, AFolderInItsPlaceIsAnError) {
    std::filesystem::create_directories(tree_.database());
    EXPECT_EQ(write(u"a"), 5u);
    std::filesystem::remove_all(tree_.database().parent_path());
    std::ofstream(tree_.database().parent_path()) << "a file where the folder belongs";
    EXPECT_EQ(write(u"a"), 5u);
}

// A process that hangs must not take those with it that only want their settings.
TEST_F(LinuxKeyTree, AStoreThatStaysLockedIsAnErrorAfterFiveSeconds) {
    test::WaitClockDouble clock;
    TreeKey holder;
    ASSERT_EQ(holder.open(u"a", Access::Write, Missing::Create), 0u);
    EXPECT_EQ(write(u"b"), 170u);
    EXPECT_EQ(clock.waited(), 5000);
    EXPECT_EQ(holder.close(), 0u);
    EXPECT_EQ(write(u"b"), 0u);
    EXPECT_EQ(clock.waited(), 0);
}

// Reading asks several questions. One wait is for all of them.
TEST_F(LinuxKeyTree, AReaderWaitsOnceForAStoreThatStaysLocked) {
    ASSERT_EQ(write(u"a"), 0u);
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(tree_.database().c_str(), &other), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
    test::WaitClockDouble clock;
    for (const Missing missing : {Missing::Fail, Missing::Create}) {
        TreeKey key;
        EXPECT_EQ(key.open(u"a", Access::Read, missing), 170u);
        EXPECT_EQ(clock.waited(), 5000);
        EXPECT_FALSE(key.isOpen());
    }
    TreeKey key;
    clock.onNextSleep([&] { sqlite3_close(other); });
    EXPECT_EQ(key.open(u"a", Access::Read, Missing::Fail), 0u);
    EXPECT_LT(clock.waited(), 100);
}

TEST_F(LinuxKeyTree, AWriterWaitsOnceForReadersToLetGo) {
    ASSERT_EQ(write(u"a"), 0u);
    test::WaitClockDouble clock;
    TreeKey reader;
    ASSERT_EQ(reader.open(u"a", Access::Read, Missing::Fail), 0u);
    EXPECT_EQ(write(u"a", 2), 170u);
    EXPECT_EQ(clock.waited(), 5000);
    TreeValue value;
    ASSERT_EQ(reader.read(u"value", value), 0u);
    EXPECT_EQ(value.data, Bytes{1});
    clock.onNextSleep([&] { reader.close(); });
    EXPECT_EQ(write(u"a", 2), 0u);
}

TEST_F(LinuxKeyTree, AStoreThatIsReleasedInTimeIsWaitedFor) {
    test::WaitClockDouble clock;
    TreeKey holder;
    ASSERT_EQ(holder.open(u"a", Access::Write, Missing::Create), 0u);
    clock.onNextSleep([&] { EXPECT_EQ(holder.close(), 0u); });
    EXPECT_EQ(write(u"b"), 0u);
    EXPECT_FALSE(holder.isOpen());
    EXPECT_GT(clock.waited(), 0);
}

// Between the look for the key and its making.
TEST_F(LinuxKeyTree, AKeyThatAnotherProcessMakesMeanwhileIsReadWithItsValues) {
    ASSERT_EQ(write(u"b"), 0u);
    TreeKey other;
    ASSERT_EQ(other.open(u"a", Access::Write, Missing::Create), 0u);
    ASSERT_EQ(other.write(u"value", ValueType::Binary, Bytes{7}), 0u);
    test::WaitClockDouble clock;
    clock.onNextSleep([&] { EXPECT_EQ(other.close(), 0u); });
    TreeKey key;
    TreeValue value;
    ASSERT_EQ(key.open(u"a", Access::Read, Missing::Create), 0u);
    EXPECT_FALSE(other.isOpen());
    ASSERT_EQ(key.read(u"value", value), 0u);
    EXPECT_EQ(value.data, Bytes{7});
}

TEST_F(LinuxKeyTree, WhatAKilledProcessHadBegunIsNotThere) {
    ASSERT_EQ(write(u"a", 1), 0u);
    const pid_t child = ::fork();
    if (child == 0) {
        TreeKey key;
        const bool written = key.open(u"a", Access::Write, Missing::Create) == 0 &&
                             key.write(u"value", ValueType::Binary, Bytes{2}) == 0;
        ::_exit(written ? 0 : 1);  // without closing
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_EQ(WEXITSTATUS(status), 0);
    TreeKey key;
    TreeValue value;
    ASSERT_EQ(key.open(u"a", Access::Read, Missing::Fail), 0u);
    ASSERT_EQ(key.read(u"value", value), 0u);
    EXPECT_EQ(value.data, Bytes{1});
}

TEST_F(LinuxKeyTree, ManyProcessesAddTheirKeys) {
    constexpr int kProcesses = 4, kKeys = 5;
    std::vector<pid_t> children;
    for (int i = 0; i < kProcesses; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            for (int k = 0; k < kKeys; ++k) {
                const std::u16string path = u"all\\" + std::u16string(1, static_cast<char16_t>(u'a' + i)) +
                                            std::u16string(1, static_cast<char16_t>(u'0' + k));
                if (write(path) != 0) ::_exit(1);
            }
            ::_exit(0);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }
    TreeKey key;
    std::u16string name;
    ASSERT_EQ(key.open(u"all", Access::Read, Missing::Fail), 0u);
    std::uint32_t count = 0;
    while (key.subKeyName(count, name) == 0) ++count;
    EXPECT_EQ(count, static_cast<std::uint32_t>(kProcesses * kKeys));
}

TEST_F(LinuxKeyTree, LonePartsOfPairsAreNamesOfTheirOwn) {
    const std::u16string high = u"x\\" + std::u16string(1, 0xD800), low = u"x\\" + std::u16string(1, 0xDC00);
    ASSERT_EQ(write(high), 0u);
    EXPECT_EQ(TreeKey().open(low, Access::Read, Missing::Fail), 2u);
    TreeKey key;
    std::u16string name;
    ASSERT_EQ(key.open(u"x", Access::Read, Missing::Fail), 0u);
    ASSERT_EQ(key.subKeyName(0, name), 0u);
    EXPECT_EQ(name, std::u16string(1, 0xD800));
}

TEST_F(LinuxKeyTree, WithoutAConfiguredFolderItIsInTheHomeFolder) {
    const test::TempFolder home;
    test::setEnvironment("XDG_CONFIG_HOME", "");
    test::setEnvironment("HOME", home.path().string());
    EXPECT_EQ(write(u"a"), 0u);
    EXPECT_TRUE(std::filesystem::exists(home / ".config" / "tavra" / "settings.db"));
}

}  // namespace
}  // namespace tavra::platform
