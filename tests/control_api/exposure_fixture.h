// Cameras with exposure limits that a person can reckon with, and the requests of exposure control.
#pragma once

#include "camera_api/camera_fixture.h"
#include "control/luminance_ctrl_usb.h"

namespace tavra::test {

namespace request {
// The shutter and gain block as it goes out.
inline ControlTransfer writeExposure(std::uint32_t lines, std::uint16_t clocks, std::uint16_t gain) {
    Bytes block(64);
    block[0] = 0x40;
    block[1] = 0x21;
    block[2] = static_cast<std::uint8_t>(lines);
    block[3] = static_cast<std::uint8_t>(lines >> 8);
    block[4] = static_cast<std::uint8_t>(clocks);
    block[5] = static_cast<std::uint8_t>(clocks >> 8);
    block[6] = static_cast<std::uint8_t>(gain);
    block[7] = static_cast<std::uint8_t>(gain >> 8);
    block[10] = static_cast<std::uint8_t>(lines >> 16);
    block[11] = static_cast<std::uint8_t>(lines >> 24);
    return toDevice(33, 0, 0, block);
}
inline ControlTransfer writeScan(const DoubleCamera& camera) {
    return toDevice(18, 0, 0, Bytes(camera.scanRecord.begin(), camera.scanRecord.begin() + 64));
}
}  // namespace request

class ExposureTest : public CameraTest {
  protected:
    // Lines of 100 clocks; a frame takes 50 lines and 20 clocks, the longest exposure 70000 lines and 30. The
    // gain goes from 20 to 680.
    static DoubleCamera limitedCamera() {
        DoubleCamera camera;
        camera.setCapability(3, 0);
        camera.setScan32(36, 99);
        camera.setScan32(40, 20);
        camera.setScan32(44, 50);
        camera.setScan32(48, 30);
        camera.setScan32(52, 70000);
        setBlock(camera, 10, 7, 33);
        return camera;
    }
    // The same with both controls of its own.
    static DoubleCamera controllingCamera() {
        DoubleCamera camera = limitedCamera();
        camera.setCapability(1, 9);
        camera.setCapability(1, 10);
        return camera;
    }
    static void setBlock(DoubleCamera& camera, std::uint32_t lines, std::uint16_t clocks,
                         std::uint16_t gain) {
        camera.exposureBlock = request::writeExposure(lines, clocks, gain).data;
    }

    CLuminanceCtrlUSB& control() { return *record().exposure; }

    void expectShutter(std::uint32_t line, std::uint32_t clock) {
        std::uint32_t l = 9999, c = 9999;
        expectSuccess(Tavra_GetShutterSpeed2(handle, &l, &c));
        EXPECT_EQ(l, line);
        EXPECT_EQ(c, clock);
    }
    void expectGain(std::uint16_t gain) {
        std::uint16_t value = 9999;
        expectSuccess(Tavra_GetGain(handle, &value));
        EXPECT_EQ(value, gain);
    }
    void expectDigitalGain(std::uint16_t gain) {
        std::uint16_t value = 9999;
        expectSuccess(Tavra_GetDigitalGain(handle, &value));
        EXPECT_EQ(value, gain);
    }
    void expectMode(std::uint8_t mode) {
        std::uint8_t value = 99;
        expectSuccess(Tavra_GetALCMode(handle, &value));
        EXPECT_EQ(value, mode);
    }
    void expectShutterRange(const std::array<std::uint32_t, 4>& range) {
        std::array<std::uint32_t, 4> value{};
        expectSuccess(Tavra_GetShutterControlRange2(handle, &value[0], &value[1], &value[2], &value[3]));
        EXPECT_EQ(value, range);
    }
    void expectGainRange(std::uint16_t min, std::uint16_t max) {
        std::uint16_t low = 9999, high = 9999;
        expectSuccess(Tavra_GetGainControlRange(handle, &low, &high));
        EXPECT_EQ(low, min);
        EXPECT_EQ(high, max);
    }
    void expectTarget(std::uint8_t target, std::uint8_t tolerance, std::uint8_t threshold) {
        std::uint8_t a = 0, b = 0, c = 0;
        expectSuccess(Tavra_GetTargetBrightness(handle, &a, &b, &c));
        EXPECT_THAT((std::vector<int>{a, b, c}), ElementsAre(target, tolerance, threshold));
    }
    // What a getter of one number gives.
    template <typename Number>
    Number got(TavraBool (*getter)(TavraHandle, Number*)) {
        Number value = 99;
        expectSuccess(getter(handle, &value));
        return value;
    }
};

}  // namespace tavra::test
