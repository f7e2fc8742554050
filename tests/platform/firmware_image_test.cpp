#include "platform/firmware_image.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <string>
#include <string_view>

#include "support/process.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

class FirmwareImage : public testing::Test {
  protected:
    FirmwareImage() { test::setEnvironment("TAVRA_FIRMWARE_DIR", folder.path().string()); }
    ~FirmwareImage() override { test::setEnvironment("TAVRA_FIRMWARE_DIR", ""); }

    void put(const std::string& name, const std::string& content) const {
        std::ofstream(folder / name, std::ios::binary) << content;
    }
    Status read(std::uint16_t type) {
        text.fill('.');
        size = 99;
        return readFirmwareText(type, text, size);
    }
    std::string_view got() const { return {text.data(), size}; }

    test::TempFolder folder;
    std::array<char, 12> text{};
    std::uint32_t size = 0;
};

TEST_F(FirmwareImage, IsTheFileNamedAfterTheTypeByteForByte) {
    put("773.hex", "one\r\ntwo\n\x1A");
    put("1541.hex", "another");
    ASSERT_TRUE(read(773).ok());
    EXPECT_EQ(got(), "one\r\ntwo\n\x1A");
    ASSERT_TRUE(read(1541).ok());
    EXPECT_EQ(got(), "another");
    EXPECT_EQ(text[7], '.') << "what is behind the text is left alone";
}

TEST_F(FirmwareImage, MayHaveOneByteLessThanThereIsRoomFor) {
    put("1541.hex", "eleven byte");
    ASSERT_TRUE(read(1541).ok());
    EXPECT_EQ(got(), "eleven byte");
    put("1541.hex", "twelve bytes");
    EXPECT_EQ(read(1541).code(), 8u);
    put("1541.hex", "more than twelve bytes");
    EXPECT_EQ(read(1541).code(), 8u);
    EXPECT_EQ(size, 99u);
}

TEST_F(FirmwareImage, AnEmptyOneIsNone) {
    put("1541.hex", "");
    EXPECT_EQ(read(1541).code(), 38u);
}

TEST_F(FirmwareImage, AFolderInItsPlaceIsNotRead) {
    std::filesystem::create_directory(folder / "1541.hex");
    EXPECT_EQ(read(1541).code(), 5u);
}

// This program has neither an installation around it nor resources in it.
TEST_F(FirmwareImage, AMissingOneHasTheSystemsCode) {
    EXPECT_FALSE(read(1541).ok());
    test::setEnvironment("TAVRA_FIRMWARE_DIR", (folder / "nowhere").string());
    EXPECT_FALSE(read(1541).ok());
    put("file", "");
    test::setEnvironment("TAVRA_FIRMWARE_DIR", (folder / "file").string());
    EXPECT_FALSE(read(1541).ok());
    test::setEnvironment("TAVRA_FIRMWARE_DIR", "");
    EXPECT_FALSE(read(1541).ok());
    EXPECT_FALSE(read(65535).ok());
    EXPECT_EQ(size, 99u);
}

}  // namespace
}  // namespace tavra::platform
