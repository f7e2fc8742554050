#include <cmath>
#include <limits>

#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

class DigitalGain : public CameraTest {
  protected:
    float times(std::uint16_t value) {
        float result = -1;
        expectSuccess(Tavra_GetDigitalGainTimesFromSettingValue(handle, value, &result));
        return result;
    }
    int value(float gain) {
        std::uint16_t result = 9999;
        expectSuccess(Tavra_GetDigitalGainSettingValueFromGainTimes(handle, gain, &result));
        return result;
    }
};

TEST_F(DigitalGain, CountsIn64thsFrom0) {
    open();
    EXPECT_FLOAT_EQ(times(0), 0.0F);
    EXPECT_FLOAT_EQ(times(64), 1.0F);
    EXPECT_FLOAT_EQ(times(511), 7.984375F);
    EXPECT_FLOAT_EQ(times(512), 7.984375F) << "limited to the maximum";
    EXPECT_EQ(value(1.0F), 64);
    EXPECT_EQ(value(1.007F), 64);
    EXPECT_EQ(value(1.0079F), 65);
    EXPECT_EQ(value(100.0F), 511);
}

TEST_F(DigitalGain, CountsIn64thsFrom1) {
    DoubleCamera camera;
    camera.setCapability(16, 7);  // function 0x90007
    open(camera);
    EXPECT_FLOAT_EQ(times(0), 1.0F);
    EXPECT_FLOAT_EQ(times(64), 2.0F);
    EXPECT_EQ(value(1.0F), 0);
    EXPECT_EQ(value(0.5F), 0);
    EXPECT_EQ(value(2.0F), 64);
    EXPECT_EQ(value(1.0079F), 1);
}

TEST_F(DigitalGain, OneFamilyCountsInDecibels) {
    DoubleCamera camera;
    camera.setIdentity16(4, 16386);
    open(camera);
    EXPECT_FLOAT_EQ(times(0), 1.0F);
    EXPECT_FLOAT_EQ(times(200), 10.0F);
    EXPECT_FLOAT_EQ(times(400), 100.0F);
    // The powers of ten, to more digits than a float has.
    EXPECT_EQ(times(1), static_cast<float>(1.0115794542598985244));
    EXPECT_EQ(times(37), static_cast<float>(1.5310874616820301419));
    // Narrowed at the end only: in single precision many of them would be off by a last digit.
    for (std::uint16_t v = 0; v <= 511; ++v)
        ASSERT_EQ(times(v), static_cast<float>(std::pow(10.0, v / 200.0))) << v;
    EXPECT_EQ(value(10.0F), 2) << "not the inverse";
    EXPECT_EQ(value(1.0F), 0);
    EXPECT_EQ(value(100.0F), 4);
    EXPECT_EQ(value(20.0F), 3) << "1.30103 x 2 + 0.5 = 3.1";
    EXPECT_EQ(value(0.1F), 0) << "-2 + 0.5 = -1.5, below the scale";
    EXPECT_EQ(value(1e-30F), 0);
}

TEST_F(DigitalGain, AVariantCountsInDecibelsToo) {
    DoubleCamera camera;
    camera.setCapability(16, 7);
    camera.setCapabilityWord(7, 0x1C05);
    open(camera);
    EXPECT_FLOAT_EQ(times(200), 10.0F);
    EXPECT_EQ(value(10.0F), 2);
    close();
    usb.camera().setCapability(16, 7, false);
    open();
    EXPECT_FLOAT_EQ(times(128), 2.0F) << "one direction asks for the function, the other does not";
    EXPECT_EQ(value(10.0F), 2);
}

TEST_F(DigitalGain, NumbersThatAreNoGainAre0) {
    open();
    const float odd[] = {0.0F, -1.0F, -1e30F, -std::numeric_limits<float>::infinity(),
                         std::numeric_limits<float>::quiet_NaN()};
    for (const float gain : odd) EXPECT_EQ(value(gain), 0);
    EXPECT_EQ(value(1e30F), 511);
    EXPECT_EQ(value(std::numeric_limits<float>::infinity()), 511);
    close();
    usb.camera().setIdentity16(4, 2326);
    open();
    for (const float gain : odd) EXPECT_EQ(value(gain), 0);
    EXPECT_EQ(value(std::numeric_limits<float>::infinity()), 511);
}

TEST_F(DigitalGain, CamerasWithoutItAreNeutral) {
    DoubleCamera camera;
    camera.setCapability(18, 8);  // function 0xA0008: not in use
    for (const DoubleCamera& without : {camera, legacyCamera()}) {
        usb.reset();
        open(without);
        EXPECT_FLOAT_EQ(times(300), 1.0F);
        EXPECT_EQ(value(4.0F), 0);
        close();
    }
}

TEST_F(DigitalGain, TheMaximumIsTold) {
    open();
    std::uint16_t maximum = 0;
    expectSuccess(Tavra_GetMaxDigitalGain(handle, &maximum));
    EXPECT_EQ(maximum, 511);
    close();
    usb.reset();
    DoubleCamera camera = pageCamera();
    camera.setCapability(16, 6);
    camera.pageRegister(21, 132) = 1000;
    open(camera);
    expectSuccess(Tavra_GetMaxDigitalGain(handle, &maximum));
    EXPECT_EQ(maximum, 1000);
    EXPECT_EQ(value(100.0F), 1000);
}

}  // namespace
}  // namespace tavra::test
