// Analogue and digital gain by hand.
#include "control_api/exposure_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

class Gain : public ExposureTest {};

TEST_F(Gain, IsWrittenWithTheShutter) {
    open(limitedCamera());
    expectGain(33);
    expectSuccess(Tavra_SetGain(handle, 0x0123));
    EXPECT_THAT(traffic(), ElementsAre(writeExposure(10, 7, 0x0123))) << "the frame timing stays";
    expectGain(0x0123);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Gain, HasAMaximum) {
    open(limitedCamera());
    EXPECT_EQ(got(Tavra_GetMaxGain), 680);
    expectSuccess(Tavra_SetGain(handle, 680));
    traffic();
    expectFailure(Tavra_SetGain(handle, 681), 87);
    EXPECT_THAT(traffic(), IsEmpty());
    expectGain(680);
}

TEST_F(Gain, AGainThatDoesNotGoOutStaysInMemory) {
    open(limitedCamera());
    usb.failRequest(33, 1);
    expectFailure(Tavra_SetGain(handle, 40), 0xE0000005);
    expectGain(40);
    expectSuccess(Tavra_SetShutterSpeed2(handle, 3, 0));
    EXPECT_EQ(traffic()[1], writeExposure(3, 0, 40)) << "and goes out with the next write";
}

TEST_F(Gain, DecibelsFollowTheScaleOfTheCamera) {
    const struct {
        bool a, b, c;  // word 1 bit 0, word 3 bits 1 and 2
        float decibels;
    } rows[] = {{false, false, false, 10.84F}, {true, false, false, 18.04664F}, {false, false, true, 10.0F},
                {true, false, true, 3.51F},    {false, true, true, 10.84F},     {true, true, true, 10.84F}};
    for (const auto& row : rows) {
        usb.reset();
        DoubleCamera camera;
        camera.setCapability(1, 0, row.a);
        camera.setCapability(3, 1, row.b);
        camera.setCapability(3, 2, row.c);
        open(camera);
        float decibels = 0;
        expectSuccess(Tavra_GetGainDBFromSettingValue(handle, 100, &decibels));
        EXPECT_FLOAT_EQ(decibels, row.decibels);
        close();
    }
    usb.reset();
    open(legacyCamera());
    float decibels = 0;
    expectSuccess(Tavra_GetGainDBFromSettingValue(handle, 100, &decibels));
    EXPECT_FLOAT_EQ(decibels, 10.84F);
    expectSuccess(Tavra_GetGainDBFromSettingValue(handle, 65535, &decibels));
    EXPECT_FLOAT_EQ(decibels, 8648.26F) << "not limited to the maximum";
}

TEST_F(Gain, DigitalGainIsAStatusWord) {
    DoubleCamera camera = limitedCamera();
    camera.status(20) = 77;
    open(camera);
    expectDigitalGain(77);
    expectSuccess(Tavra_SetDigitalGain(handle, 0x1234));
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(0x8014, le16(0x1234)))) << "not held against the maximum";
    expectDigitalGain(0x1234);
    usb.failRequest(128);
    expectFailure(Tavra_SetDigitalGain(handle, 5), 0xE0000005);
    expectDigitalGain(5);
}

TEST_F(Gain, TheOldestTypesKeepADigitalGainThatTheyDoNotHave) {
    for (const std::uint16_t type : {773, 1541, 1797, 2053}) {
        usb.reset();
        open(legacyCamera(type));
        expectDigitalGain(64);
        expectFailure(Tavra_SetDigitalGain(handle, 100), 0);
        EXPECT_THAT(traffic(), IsEmpty());
        expectDigitalGain(100);
        close();
    }
}

TEST_F(Gain, NullOutputsAreRefused) {
    open();
    expectFailure(Tavra_GetGain(handle, nullptr), 87);
    expectFailure(Tavra_GetMaxGain(handle, nullptr), 87);
    expectFailure(Tavra_GetDigitalGain(handle, nullptr), 87);
    expectFailure(Tavra_GetGainDBFromSettingValue(handle, 1, nullptr), 87);
}

}  // namespace
}  // namespace tavra::test
