// Replacing files where the system keeps one that is in use, and one after the other across threads. That the
// lock is given up after five seconds is not tested here: it is one for all programs of the session, other
// tests among them.
#include "platform/whole_file.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <thread>

#include "platform/profile_file.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

using test::readFile;
using test::TempFolder;
using test::wideName;

using Bytes = std::vector<std::uint8_t>;

const Bytes kOld(3000, 'o');
const Bytes kNew(70000, 'n');

std::ptrdiff_t filesIn(const TempFolder& folder) {
    return std::distance(std::filesystem::directory_iterator(folder.path()),
                         std::filesystem::directory_iterator());
}

class Handle {
  public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle() { close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    bool valid() const { return handle_ != nullptr && handle_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return handle_; }
    void close() {
        if (valid()) CloseHandle(handle_);
        handle_ = nullptr;
    }

  private:
    HANDLE handle_;
};

// The new bytes are written by then, and have nowhere to go.
TEST(WindowsWholeFile, AFileThatSomebodyHoldsOpenStaysAndNoOtherIsLeft) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "settings.ini");
    ASSERT_TRUE(replaceWholeFile(name, kOld).ok());
    Handle holder(CreateFileW((folder / "settings.ini").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                              OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(holder.valid());
    const Status replaced = replaceWholeFile(name, kNew);
    EXPECT_TRUE(replaced.code() == ERROR_SHARING_VIOLATION || replaced.code() == ERROR_ACCESS_DENIED)
        << replaced.code();
    EXPECT_EQ(filesIn(folder), 1);
    Bytes read;
    EXPECT_TRUE(readWholeFile(name, read).ok());
    EXPECT_EQ(read, kOld);
    holder.close();
    EXPECT_TRUE(replaceWholeFile(name, kNew).ok());
    EXPECT_EQ(readFile(folder / "settings.ini"), kNew);
}

// As who loads settings that another program is saving: neither is in the other's way.
TEST(WindowsWholeFile, AReaderForAMomentIsWaitedFor) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "settings.ini");
    ASSERT_TRUE(replaceWholeFile(name, kOld).ok());
    Handle reader(CreateFileW((folder / "settings.ini").c_str(), GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                              0, nullptr));
    ASSERT_TRUE(reader.valid());
    // Until the new bytes are there, in the temporary file.
    std::thread reading([&] {
        while (filesIn(folder) < 2) std::this_thread::yield();
        Bytes read(kOld.size() + 1);
        DWORD got = 0;
        EXPECT_TRUE(ReadFile(reader.get(), read.data(), static_cast<DWORD>(read.size()), &got, nullptr));
        read.resize(got);
        EXPECT_EQ(read, kOld);
        reader.close();
    });
    EXPECT_TRUE(replaceWholeFile(name, kNew).ok());
    reading.join();
    EXPECT_EQ(readFile(folder / "settings.ini"), kNew);
    EXPECT_EQ(filesIn(folder), 1);
}

TEST(WindowsWholeFile, ALinkStaysOneAlsoToAFileThatIsNotThereYet) {
    const TempFolder folder;
    std::filesystem::create_directory(folder / "elsewhere");
    constexpr DWORD kWithoutPrivilege = 2;  // for a developer's machine
    if (!CreateSymbolicLinkW((folder / "link.ini").c_str(), (folder / "elsewhere" / "real.ini").c_str(),
                             kWithoutPrivilege)) {
        GTEST_SKIP() << "no right to make links: " << GetLastError();
    }
    const auto isLink = [&] {
        const DWORD attributes = GetFileAttributesW((folder / "link.ini").c_str());
        return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    };
    if (!isLink()) GTEST_SKIP() << "the system does not tell links";
    for (const Bytes& bytes : {kOld, kNew}) {
        ASSERT_TRUE(replaceWholeFile(wideName(folder / "link.ini"), bytes).ok());
        EXPECT_TRUE(isLink());
        EXPECT_EQ(readFile(folder / "elsewhere" / "real.ini"), bytes);
    }
}

TEST(WindowsWholeFile, ADeviceIsNoFile) {
    Bytes read;
    EXPECT_EQ(readWholeFile(u"NUL", read).code(), ERROR_ACCESS_DENIED);
}

// --- two at the same time ---

// Without the lock the other thread would come to its end while it is held.
TEST(WindowsFileUpdate, ALockThatIsReleasedInTimeIsWaitedFor) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "settings.ini");
    auto first = std::make_unique<FileUpdateLock>(name);
    ASSERT_TRUE(first->status().ok());
    const Handle waiting(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    Status updated;
    bool sawFirst = false;
    std::thread other([&] {
        SetEvent(waiting.get());
        updated = updateProfile(name, [&](ProfileText& text) {
            sawFirst = text.find(u"s", u"first") == u"1";
            text.set(u"s", u"second", u"2");
        });
    });
    ASSERT_EQ(WaitForSingleObject(waiting.get(), INFINITE), WAIT_OBJECT_0);
    ProfileText text;
    text.set(u"s", u"first", u"1");
    EXPECT_TRUE(writeProfile(name, text).ok());
    first.reset();
    other.join();
    EXPECT_TRUE(updated.ok()) << updated.code();
    EXPECT_TRUE(sawFirst);
}

// A process that was killed while it saved.
TEST(WindowsFileUpdate, ALockWhoseOwnerHasDiedIsFree) {
    const TempFolder folder;
    const std::u16string name = wideName(folder / "settings.ini");
    const Handle mutex(CreateMutexW(nullptr, FALSE, L"Local\\tavra-file-update"));
    ASSERT_TRUE(mutex.valid());
    std::thread([&] { WaitForSingleObject(mutex.get(), INFINITE); }).join();
    EXPECT_TRUE(updateProfile(name, [](ProfileText& text) { text.set(u"s", u"k", u"1"); }).ok());
    EXPECT_TRUE(FileUpdateLock(name).status().ok());
}

}  // namespace
}  // namespace tavra::platform
