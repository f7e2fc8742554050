// What a raw movie tells of itself: the rate, and the settings of its development.
#include "media_api/recording_fixture.h"

namespace tavra::test {
namespace {

class RecordingHeader : public RecordingTest {};

TEST_F(RecordingHeader, TellsClockAndClocksAFrame) {
    DoubleCamera& camera = describe();
    camera.clock = 36000000;
    camera.setScan16(26, 1000);
    camera.setScan16(28, 1200);
    open();
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(movie().field(24), 36000000u);
    EXPECT_EQ(movie().field(28), 1200000u);
}

TEST_F(RecordingHeader, TellsTheRateThatTheCameraTells) {
    DoubleCamera& camera = describe();
    camera.setCapability(1, 4);
    camera.status(86) = 0x89AB;
    camera.status(87) = 0x0123;
    open();
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(movie().field(24), 0x012389ABu);
    EXPECT_EQ(movie().field(28), 0x10000u);
}

TEST_F(RecordingHeader, TellsTheRateOfTheRegisterPages) {
    DoubleCamera& camera = describe();
    camera.setCapability(1, 4);
    camera.addRegisterPages();
    camera.pageRegister(21, 20) = 48000000;
    camera.pageRegister(21, 84) = 1600000;
    open();
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(movie().field(24), 48000000u);
    EXPECT_EQ(movie().field(28), 1600000u);
}

TEST_F(RecordingHeader, FailsWithTheCodeOfARateThatCannotBeRead) {
    DoubleCamera& camera = describe();
    camera.setCapability(1, 4);
    open();
    usb.unplug(0);
    expectFailure(save(), 0xE0000005);
    EXPECT_FALSE(std::filesystem::exists(folder / "a.smf"));
}

TEST_F(RecordingHeader, KeepsTheSettingsOfDevelopment) {
    openCamera(1, 5);
    Bytes table(256);
    for (std::size_t i = 0; i < 256; ++i) table[i] = static_cast<std::uint8_t>(255 - i);
    std::int16_t matrix[12];
    for (std::int16_t i = 0; i < 12; ++i) matrix[i] = static_cast<std::int16_t>(100 * i - 500);
    ASSERT_EQ(Tavra_SetColorInterpolationMethod(handle, 4), 1);
    ASSERT_EQ(Tavra_SetGammaModeEx(handle, 0, 255, 100, 0, 0, table.data()), 1);
    ASSERT_EQ(Tavra_SetSharpnessMode(handle, 1, 0x0123, 7), 1);
    ASSERT_EQ(Tavra_SetColorMatrix(handle, 255, matrix), 1);
    ASSERT_EQ(Tavra_SetHueSaturationMode(handle, 1, static_cast<std::uint16_t>(-300), 150), 1);
    ASSERT_EQ(Tavra_SetAVIQuality(handle, 60), 1);
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    const Bytes header = movie().header;
    EXPECT_EQ(loadLe32(&header[48]), 60u);
    EXPECT_EQ(Bytes(&header[56], &header[64]), Bytes(8));
    EXPECT_EQ(loadLe32(&header[64]), 4u);
    EXPECT_EQ(header[68], 255);
    EXPECT_EQ(header[69], 0);
    EXPECT_EQ(loadLe16(&header[70]), 100u);
    EXPECT_EQ(loadLe16(&header[72]), 0u);
    EXPECT_EQ(Bytes(&header[80], &header[336]), table);
    EXPECT_EQ(header[336], 1);
    EXPECT_EQ(header[337], 7);
    EXPECT_EQ(loadLe16(&header[338]), 0x0123u);
    EXPECT_EQ(header[340], 255);
    for (std::size_t i = 0; i < 12; ++i) {
        EXPECT_EQ(static_cast<std::int16_t>(loadLe16(&header[344 + 2 * i])), matrix[i]);
    }
    EXPECT_EQ(header[368], 1);
    EXPECT_EQ(static_cast<std::int16_t>(loadLe16(&header[372])), -300);
    EXPECT_EQ(loadLe16(&header[374]), 150u);
}

TEST_F(RecordingHeader, KeepsAPowerCurveWithItsNumbers) {
    openCamera(1, 5);
    ASSERT_EQ(Tavra_SetGammaModeEx(handle, 0, 1, 45, static_cast<std::uint16_t>(-20), 30, nullptr), 1);
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    const Bytes header = movie().header;
    EXPECT_EQ(header[68], 1);
    EXPECT_EQ(header[69], 30);
    EXPECT_EQ(loadLe16(&header[70]), 45u);
    EXPECT_EQ(static_cast<std::int16_t>(loadLe16(&header[72])), -20);
}

}  // namespace
}  // namespace tavra::test
