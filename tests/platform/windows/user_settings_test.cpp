#include "platform/user_settings.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

#include "camera/common_param.h"
#include "platform/system_version.h"

namespace tavra::platform {
namespace {

constexpr const char* kPath = R"(SOFTWARE\Halvern\USBCamera\Setting)";

// A tree of the user's own settings that this process alone sees, empty at first and gone at the end.
class UserSettings : public testing::Test {
  protected:
    UserSettings() {
        const std::string name = "Software\\TavraTest" + std::to_string(GetCurrentProcessId());
        EXPECT_EQ(RegCreateKeyA(HKEY_CURRENT_USER, name.c_str(), &root_), ERROR_SUCCESS);
        EXPECT_EQ(RegOverridePredefKey(HKEY_CURRENT_USER, root_), ERROR_SUCCESS);
        name_ = name;
    }
    ~UserSettings() override {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegCloseKey(root_);
        RegDeleteTreeA(HKEY_CURRENT_USER, name_.c_str());
    }

    static void store(const char* name, DWORD type, const void* data, DWORD size) {
        ASSERT_EQ(RegSetKeyValueA(HKEY_CURRENT_USER, kPath, name, type, data, size), ERROR_SUCCESS);
    }
    static void storeDword(const char* name, DWORD value) { store(name, REG_DWORD, &value, sizeof value); }

  private:
    HKEY root_ = nullptr;
    std::string name_;
};

TEST_F(UserSettings, AStoredDwordIsRead) {
    storeDword("Zero", 0);
    storeDword("Largest", 0xFFFFFFFF);
    std::uint32_t value = 7;
    EXPECT_TRUE(readUserDword(kPath, "Zero", value));
    EXPECT_EQ(value, 0u);
    EXPECT_TRUE(readUserDword(kPath, "Largest", value));
    EXPECT_EQ(value, 0xFFFFFFFFu);
}

TEST_F(UserSettings, AnAbsentValueOrKeyLeavesTheValueAlone) {
    std::uint32_t value = 7;
    EXPECT_FALSE(readUserDword(kPath, "Other", value)) << "there is no such key";
    storeDword("One", 1);
    EXPECT_FALSE(readUserDword(kPath, "Other", value));
    EXPECT_EQ(value, 7u);
}

TEST_F(UserSettings, AValueOfAnotherTypeIsNotRead) {
    const std::uint64_t wide = 5;
    store("Wide", REG_QWORD, &wide, sizeof wide);
    store("Text", REG_SZ, "5", 2);
    store("Binary", REG_BINARY, "\x05\0\0", 4);
    std::uint32_t value = 7;
    for (const char* const name : {"Wide", "Text", "Binary"}) EXPECT_FALSE(readUserDword(kPath, name, value));
    EXPECT_EQ(value, 7u);
}

TEST_F(UserSettings, TheMaximumTransferSizeIsTheUsersOr512KiB) {
    EXPECT_EQ(TAVRA_COMMON_PARAM().maximumTransferSize, 0x80000u);
    storeDword("MaxTransferSize", 0x12345);
    EXPECT_EQ(TAVRA_COMMON_PARAM().maximumTransferSize, 0x12345u);
}

TEST(SystemVersion, ThisSystemIsNoOldOne) {
    EXPECT_FALSE(isSystemBeforeVersion6());
}

}  // namespace
}  // namespace tavra::platform
