// Settings that are one number each: where they are, and what a camera without them answers.
#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

// A 16-bit setting: its capability, where it is with and without register pages.
struct Setting {
    const char* name;
    unsigned word, bit;
    TavraBool (*get)(TavraHandle, std::uint16_t*);
    TavraBool (*set)(TavraHandle, std::uint16_t);
    std::uint16_t readAddress, writeAddress;
    int page;  // -1: the status word in any case
    std::uint32_t offset;
};

class Values : public CameraTest {
  protected:
    void reopen(const DoubleCamera& camera) {
        close();
        usb.reset();
        open(camera);
    }
    template <typename Number>
    std::uint32_t get(TavraBool (*getter)(TavraHandle, Number*)) {
        Number value = 99;
        expectSuccess(getter(handle, &value));
        return value;
    }
};

class EachSetting : public Values, public testing::WithParamInterface<Setting> {};

TEST_P(EachSetting, AbsentItIs0AndCannotBeSet) {
    const Setting& s = GetParam();
    for (const DoubleCamera& camera : {DoubleCamera(), pageCamera(), legacyCamera()}) {
        reopen(camera);
        EXPECT_EQ(get(s.get), 0u);
        expectFailure(s.set(handle, 1), 87);
        EXPECT_THAT(traffic(), IsEmpty());
    }
}

TEST_P(EachSetting, WithoutPagesItIsAStatusWord) {
    const Setting& s = GetParam();
    DoubleCamera camera;
    camera.setCapability(s.word, s.bit);
    open(camera);
    expectSuccess(s.set(handle, 0x1234));
    EXPECT_EQ(get(s.get), 0x1234u);
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(s.writeAddress, le16(0x1234)), readStatus(s.readAddress)));
    usb.failRequest(128);
    std::uint16_t value = 7;
    expectFailure(s.set(handle, 1), 0xE0000005);
    expectFailure(s.get(handle, &value), 0xE0000005);
    EXPECT_EQ(value, 7);
}

TEST_P(EachSetting, WithPagesItIsWhereTheTableSays) {
    const Setting& s = GetParam();
    DoubleCamera camera = pageCamera();
    camera.setCapability(s.word, s.bit);
    open(camera);
    expectSuccess(s.set(handle, 0x1234));
    EXPECT_EQ(get(s.get), 0x1234u);
    if (s.page >= 0) {
        const auto page = static_cast<std::uint32_t>(s.page);
        EXPECT_THAT(traffic(), ElementsAre(writePage(page, s.offset, 0x1234), readPage(page, s.offset)));
    } else {
        EXPECT_THAT(traffic(),
                    ElementsAre(writeStatus(s.writeAddress, le16(0x1234)), readStatus(s.readAddress)));
    }
}

INSTANTIATE_TEST_SUITE_P(Values, EachSetting,
                         testing::Values(Setting{"AnalogBlackLevel", 8, 6, Tavra_GetAnalogBlackLevel,
                                                 Tavra_SetAnalogBlackLevel, 19, 0x8013, 3, 8},
                                         Setting{"DigitalClamp", 3, 7, Tavra_GetDigitalClamp,
                                                 Tavra_SetDigitalClamp, 21, 0x8015, -1, 0},
                                         Setting{"CameraGamma", 3, 9, Tavra_GetCameraGammaValue,
                                                 Tavra_SetCameraGammaValue, 77, 0x804D, -1, 0}),
                         [](const auto& setting) { return setting.param.name; });

TEST_F(Values, LimitsAre255UnlessThePageTellsAnother) {
    const struct {
        unsigned word, bit;
        TavraBool (*get)(TavraHandle, std::uint16_t*);
        std::uint32_t offset;
    } limits[] = {{8, 6, Tavra_GetMaxAnalogBlackLevel, 112}, {3, 7, Tavra_GetMaxDigitalClamp, 116}};
    for (const auto& limit : limits) {
        reopen(DoubleCamera());
        EXPECT_EQ(get(limit.get), 0u) << "absent";
        DoubleCamera camera;
        camera.setCapability(limit.word, limit.bit);
        reopen(camera);
        EXPECT_EQ(get(limit.get), 255u);
        EXPECT_THAT(traffic(), IsEmpty());
        camera = pageCamera();
        camera.setCapability(limit.word, limit.bit);
        reopen(camera);
        EXPECT_EQ(get(limit.get), 255u) << "a register value of 0";
        EXPECT_THAT(traffic(), ElementsAre(readPage(21, limit.offset)));
        usb.camera().pageRegister(21, limit.offset) = 1023;
        EXPECT_EQ(get(limit.get), 1023u);
    }
}

TEST_F(Values, AdjustmentModeIsInAPageOnly) {
    DoubleCamera camera;
    camera.setCapability(16, 10);
    open(camera);
    EXPECT_EQ(get(Tavra_GetAdjustmentMode), 0u);
    expectFailure(Tavra_SetAdjustmentMode(handle, 1), 87);
    EXPECT_THAT(traffic(), IsEmpty());
    reopen(pageCamera());
    EXPECT_EQ(get(Tavra_GetAdjustmentMode), 0u);
    expectFailure(Tavra_SetAdjustmentMode(handle, 1), 87);
    camera.addRegisterPages();
    reopen(camera);
    expectSuccess(Tavra_SetAdjustmentMode(handle, 0x12345678));
    EXPECT_EQ(get(Tavra_GetAdjustmentMode), 0x12345678u);
    EXPECT_THAT(traffic(), ElementsAre(writePage(17, 12, 0x12345678), readPage(17, 12)));
}

TEST_F(Values, ResetSwitchThatIsNotThereIsABadArgument) {
    open();
    std::uint32_t enabled = 7;
    expectFailure(Tavra_GetResetSwitchEnabled(handle, &enabled), 87);
    expectFailure(Tavra_SetResetSwitchEnabled(handle, 1), 87);
    EXPECT_EQ(enabled, 7u);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Values, ResetSwitchIsOneBit) {
    DoubleCamera camera;
    camera.setCapability(4, 4);
    camera.status(14) = 0xABCC;
    open(camera);
    EXPECT_EQ(get(Tavra_GetResetSwitchEnabled), 0u);
    expectSuccess(Tavra_SetResetSwitchEnabled(handle, 1));
    EXPECT_THAT(traffic(), ElementsAre(readStatus(14), readStatus(14), writeStatus(14, le16(0xABCD))));
    EXPECT_EQ(get(Tavra_GetResetSwitchEnabled), 1u);
    camera.addRegisterPages();
    camera.pageRegister(19, 24) = 0xFFFFFFFF;
    reopen(camera);
    EXPECT_EQ(get(Tavra_GetResetSwitchEnabled), 1u);
    expectSuccess(Tavra_SetResetSwitchEnabled(handle, 0));
    EXPECT_THAT(traffic(), ElementsAre(readPage(19, 24), readPage(19, 24), writePage(19, 24, 0xFFFFFFFE)));
}

TEST_F(Values, PriorityModeIsReadWholeAndWrittenInTwoBits) {
    DoubleCamera camera = pageCamera();
    camera.setCapability(19, 11);
    camera.pageRegister(1, 40) = 0x12345673;
    open(camera);
    EXPECT_EQ(get(Tavra_GetPriorityMode), 0x12345673u);
    expectSuccess(Tavra_SetPriorityMode(handle, 0xFFFFFFFE));
    EXPECT_THAT(traffic(), ElementsAre(readPage(1, 40), readPage(1, 40), writePage(1, 40, 0x1234567B)));
    expectSuccess(Tavra_SetPriorityMode(handle, 0));
    EXPECT_EQ(usb.camera().pageRegister(1, 40), 0x12345673u);
}

TEST_F(Values, PriorityModeThatIsNotThereIsNotSupported) {
    std::uint32_t mode = 7;
    DoubleCamera withoutPages;
    withoutPages.setCapability(19, 11);
    for (const DoubleCamera& camera : {DoubleCamera(), pageCamera(), withoutPages}) {
        reopen(camera);
        expectFailure(Tavra_GetPriorityMode(handle, &mode), 50);
        expectFailure(Tavra_SetPriorityMode(handle, 1), 50);
        EXPECT_THAT(traffic(), IsEmpty());
    }
    EXPECT_EQ(mode, 7u);
}

TEST_F(Values, TemperatureHasOnePlaceForAllSensors) {
    DoubleCamera camera = pageCamera();
    camera.pageRegister(21, 92) = 41;
    open(camera);
    std::uint32_t value = 9;
    for (const std::uint32_t sensor : {0u, 2u, 77u}) {
        expectSuccess(Tavra_GetDeviceTemperature(handle, sensor, &value));
        EXPECT_EQ(value, 41u);
        EXPECT_THAT(traffic(), ElementsAre(readPage(21, 92)));
    }
    expectFailure(Tavra_GetDeviceTemperature(handle, 1, &value), 87);
    EXPECT_EQ(value, 0u);
    EXPECT_THAT(traffic(), IsEmpty());
    camera.setCapability(16, 9);
    reopen(camera);
    expectSuccess(Tavra_GetDeviceTemperature(handle, 1, &value));
    EXPECT_EQ(value, 41u);
    reopen(DoubleCamera());
    expectFailure(Tavra_GetDeviceTemperature(handle, 0, &value), 87);
    EXPECT_EQ(value, 0u);
}

TEST_F(Values, CameraModeAlwaysSucceeds) {
    open();
    expectSuccess(Tavra_SetCameraMode(handle, 5));
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(101, {5, 0})));
    usb.failRequest(128);
    EXPECT_EQ(Tavra_SetCameraMode(handle, 5), 1);
    EXPECT_EQ(lastError(), 0xE0000005u);
    reopen(legacyCamera());
    EXPECT_EQ(Tavra_SetCameraMode(handle, 5), 1);
    EXPECT_EQ(lastError(), 0xE0000021u);
}

}  // namespace
}  // namespace tavra::test
