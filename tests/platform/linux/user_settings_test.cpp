#include "platform/user_settings.h"

#include <gtest/gtest.h>

#include "platform/system_version.h"

namespace tavra::platform {
namespace {

TEST(UserSettings, NothingIsFoundAndTheValueStays) {
    std::uint32_t value = 7;
    EXPECT_FALSE(readUserDword("SOFTWARE\\Halvern\\USBCamera\\Setting", "MaxTransferSize", value));
    EXPECT_EQ(value, 7u);
}

TEST(SystemVersion, ThisSystemIsNoOldOne) {
    EXPECT_FALSE(isSystemBeforeVersion6());
}

}  // namespace
}  // namespace tavra::platform
