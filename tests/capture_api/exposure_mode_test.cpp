// Exposure modes and sensor shutter modes, by word and by register.
#include "capture_api/trigger_fixture.h"

namespace tavra::test {
namespace {

TEST_F(TriggerTest, ExposureModesByWordAreBits12And13) {
    openWordCamera(0xFFFFFFFF);
    EXPECT_EQ(Tavra_SetExposureMode(handle, 1), 1);
    EXPECT_EQ(word(), 0xFFFFCFFFu);
    EXPECT_EQ(traffic(), (Traffic{readStatus(48, 2), writeStatus(0x8030, word32(0xFFFFCFFF)), readScan()}));
    EXPECT_EQ(Tavra_SetExposureMode(handle, 2), 1);
    EXPECT_EQ(word(), 0xFFFFDFFFu);
    EXPECT_EQ(Tavra_SetExposureMode(handle, 3), 1);
    EXPECT_EQ(word(), 0xFFFFEFFFu);
}

TEST_F(TriggerTest, ExposureMode0ByWordAlsoSetsTheExposureClockTo0) {
    Bytes& block = describe().exposureBlock;
    block[2] = 10;  // lines
    block[4] = 7;   // clocks
    block[6] = 33;  // gain
    setWord(0x1000);
    open();
    EXPECT_EQ(Tavra_SetExposureMode(handle, 0), 1);
    EXPECT_EQ(word(), 0u);
    Bytes expected(64);
    expected[0] = 0x40;
    expected[1] = 0x21;
    expected[6] = 33;  // the gain stays
    EXPECT_EQ(usb.camera().exposureBlock, expected);
    const Traffic requests = traffic();
    ASSERT_FALSE(requests.empty());
    EXPECT_EQ(requests.back().request, 18) << "the frame timing is written behind the exposure";
    EXPECT_EQ(requests.back().requestType, 0x40);
}

TEST_F(TriggerTest, ExposureModesOutOfRangeGive87) {
    usb.addCamera();  // capability word 0 bit 1 clear, type without mode 3
    open();
    for (const std::uint32_t mode : {3u, 4u, 0xFFFFFFFFu}) {
        EXPECT_EQ(Tavra_SetExposureMode(handle, mode), 0);
        EXPECT_EQ(lastError(), 87u);
    }
    EXPECT_TRUE(traffic().empty());
}

TEST_F(TriggerTest, ExposureMode3ComesWithHardwareRevision15OfSomeTypes) {
    for (const std::uint16_t type : {2310, 4102, 4358, 4614, 5382, 5638}) {
        for (const std::uint16_t revision : {14, 15, 16}) {
            usb.reset();
            DoubleCamera& camera = usb.addCamera();
            camera.setIdentity16(4, type);
            camera.setIdentity16(6, revision);
            open();
            EXPECT_EQ(Tavra_SetExposureMode(handle, 3), revision == 15) << type << " revision " << revision;
            Tavra_Close(handle);
            handle = nullptr;
        }
    }
}

TEST_F(TriggerTest, ExposureMode3IsNotForLegacyCameras) {
    usb.addCamera().setIdentity16(4, 773);
    open();
    EXPECT_EQ(Tavra_SetExposureMode(handle, 3), 0);
    EXPECT_EQ(lastError(), 87u);
}

TEST_F(TriggerTest, ExposureModeByRegisterAppliesThenClears) {
    openRegisterCamera(false);
    EXPECT_EQ(Tavra_SetExposureMode(handle, 2), 1);
    EXPECT_EQ(traffic(), (Traffic{writeRegister(2, 24, 2), command(1), clearBuffer()}));
    std::uint32_t mode = 77;
    EXPECT_EQ(Tavra_GetExposureMode(handle, &mode), 1);
    EXPECT_EQ(mode, 2u);
    EXPECT_EQ(traffic(), (Traffic{readRegister(2, 24)}));
}

TEST_F(TriggerTest, ExposureModeIsReadFromTheWordAndTheExposureClock) {
    openWordCamera(0);
    std::uint32_t mode = 77;
    const struct {
        std::uint32_t word;
        std::uint8_t lines;
        std::uint32_t mode;
    } rows[] = {{0x1000, 0, 2}, {0x2000, 0, 3}, {0xCFFF, 0, 0}, {0, 3, 1}, {0x3000, 0, 1}};
    for (const auto& row : rows) {
        setWord(row.word);
        ASSERT_EQ(Tavra_SetShutterSpeed(handle, row.lines, 0), 1);
        EXPECT_EQ(Tavra_GetExposureMode(handle, &mode), 1);
        EXPECT_EQ(mode, row.mode) << std::hex << row.word;
    }
}

TEST_F(TriggerTest, ExposureModeStartsAsOneWhenTheReadFails) {
    openWordCamera(0x1000);
    usb.failRequest(128);
    std::uint32_t mode = 77;
    EXPECT_EQ(Tavra_GetExposureMode(handle, &mode), 0);
    EXPECT_EQ(mode, 1u);
    EXPECT_EQ(lastError(), 0xE0000005u);
}

// First and second kind of sensor shutter, and the modes that come of them.
struct ShutterKind {
    bool first, second, mode0, mode1, mode2;
};

TEST_F(TriggerTest, SensorShutterModesDependOnTwoCapabilities) {
    const ShutterKind kinds[] = {{false, false, false, false, true},
                                 {true, false, true, true, false},
                                 {false, true, true, false, true},
                                 {true, true, true, true, true}};
    for (const ShutterKind& kind : kinds) {
        usb.reset();
        DoubleCamera& camera = usb.addCamera();
        camera.setCapability(1, 12, kind.first);
        camera.setCapability(4, 8, kind.second);
        open();
        EXPECT_EQ(Tavra_SetSensorShutterMode(handle, 0), kind.mode0);
        EXPECT_EQ(Tavra_SetSensorShutterMode(handle, 1), kind.mode1);
        EXPECT_EQ(Tavra_SetSensorShutterMode(handle, 2), kind.mode2);
        EXPECT_EQ(Tavra_SetSensorShutterMode(handle, 3), 0);
        EXPECT_EQ(lastError(), 87u);
        Tavra_Close(handle);
        handle = nullptr;
    }
}

TEST_F(TriggerTest, WithoutAChoiceOfShutterMode2IsANoOp) {
    usb.addCamera();
    open();
    EXPECT_EQ(Tavra_SetSensorShutterMode(handle, 2), 1);
    std::uint32_t mode = 77;
    EXPECT_EQ(Tavra_GetSensorShutterMode(handle, &mode), 1);
    EXPECT_EQ(mode, 2u);
    EXPECT_TRUE(traffic().empty());
}

TEST_F(TriggerTest, SensorShutterModeByWordIsBits16And17) {
    describe().setCapability(1, 12);
    setWord(0xFFFFFFFF);
    open();
    EXPECT_EQ(Tavra_SetSensorShutterMode(handle, 1), 1);
    EXPECT_EQ(word(), 0xFFFDFFFFu);
    std::uint32_t mode = 77;
    EXPECT_EQ(Tavra_GetSensorShutterMode(handle, &mode), 1);
    EXPECT_EQ(mode, 1u);
}

TEST_F(TriggerTest, SensorShutterModeByRegisterIsDoubled) {
    DoubleCamera& camera = describe();
    camera.addRegisterPages();
    camera.setCapability(1, 12);
    camera.setCapability(4, 8);
    open();
    EXPECT_EQ(Tavra_SetSensorShutterMode(handle, 2), 1);
    EXPECT_EQ(traffic(), (Traffic{writeRegister(17, 4, 4), command(1), clearBuffer()}));
    std::uint32_t mode = 77;
    EXPECT_EQ(Tavra_GetSensorShutterMode(handle, &mode), 1);
    EXPECT_EQ(mode, 2u);
}

}  // namespace
}  // namespace tavra::test
