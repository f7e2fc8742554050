#include "platform/firmware_image.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>

#include "support/process.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

TEST(FirmwareImageOnLinux, APipeInItsPlaceIsNotWaitedFor) {
    const test::TempFolder folder;
    ASSERT_EQ(mkfifo((folder / "1541.hex").c_str(), 0600), 0);
    test::setEnvironment("TAVRA_FIRMWARE_DIR", folder.path().string());
    std::array<char, 16> text{};
    std::uint32_t size = 0;
    EXPECT_EQ(readFirmwareText(1541, text, size).code(), 5u);
}

TEST(FirmwareImageOnLinux, AMissingOneHasTheCodeOfAMissingFile) {
    const test::TempFolder folder;
    test::setEnvironment("TAVRA_FIRMWARE_DIR", folder.path().string());
    std::array<char, 16> text{};
    std::uint32_t size = 0;
    EXPECT_EQ(readFirmwareText(1541, text, size).code(), 2u);
}

}  // namespace
}  // namespace tavra::platform
