// Colour matrix, hue and saturation of an open camera.
#include <algorithm>
#include <array>

#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using Matrix = std::array<std::int16_t, 12>;

constexpr Matrix kIdentity = {100, 0, 0, 0, 0, 100, 0, 0, 0, 0, 100, 0};
constexpr Matrix kOther = {172, -51, -21, 0, -33, 158, -25, 32767, 4, -61, 157, -32768};

class ColorMatrixCalls : public CameraTest {
  protected:
    ColorMatrixCalls() { open(); }

    void expectMatrix(std::uint8_t mode, const Matrix& matrix) {
        std::uint8_t readMode = 99;
        Matrix read{};
        expectSuccess(Tavra_GetColorMatrix(handle, &readMode, read.data()));
        EXPECT_EQ(readMode, mode);
        EXPECT_EQ(read, matrix);
    }
    void expectHueSaturation(std::uint8_t mode, int hue, std::uint16_t saturation) {
        std::uint8_t readMode = 99;
        std::uint16_t readHue = 99, readSaturation = 99;
        expectSuccess(Tavra_GetHueSaturationMode(handle, &readMode, &readHue, &readSaturation));
        EXPECT_EQ(readMode, mode);
        EXPECT_EQ(static_cast<std::int16_t>(readHue), hue);
        EXPECT_EQ(readSaturation, saturation);
    }
};

TEST_F(ColorMatrixCalls, AreOffAtFirst) {
    expectMatrix(0, kIdentity);
    expectHueSaturation(0, 0, 100);
}

TEST_F(ColorMatrixCalls, TheMatrixIsKeptAndModeZeroRestoresTheIdentity) {
    expectSuccess(Tavra_SetColorMatrix(handle, 0xFF, kOther.data()));
    expectMatrix(0xFF, kOther);
    EXPECT_THAT(traffic(), IsEmpty()) << "a matter of the computer alone";
    expectSuccess(Tavra_SetColorMatrix(handle, 0, nullptr));
    expectMatrix(0, kIdentity);
}

TEST_F(ColorMatrixCalls, EitherOutputMayBeLeftOut) {
    expectSuccess(Tavra_SetColorMatrix(handle, 0xFF, kOther.data()));
    std::uint8_t mode = 0;
    Matrix read{};
    expectSuccess(Tavra_GetColorMatrix(handle, &mode, nullptr));
    EXPECT_EQ(mode, 0xFF);
    expectSuccess(Tavra_GetColorMatrix(handle, nullptr, read.data()));
    EXPECT_EQ(read, kOther);
    expectSuccess(Tavra_GetColorMatrix(handle, nullptr, nullptr));
}

TEST_F(ColorMatrixCalls, AnUnknownMatrixModeChangesNothing) {
    expectSuccess(Tavra_SetColorMatrix(handle, 0xFF, kOther.data()));
    for (const std::uint8_t mode : {1, 2, 254})
        expectFailure(Tavra_SetColorMatrix(handle, mode, kIdentity.data()), 87);
    expectFailure(Tavra_SetColorMatrix(handle, 0xFF, nullptr), 87);
    expectMatrix(0xFF, kOther);
}

TEST_F(ColorMatrixCalls, HueIsSigned) {
    expectSuccess(Tavra_SetHueSaturationMode(handle, 1, static_cast<std::uint16_t>(-300), 65535));
    expectHueSaturation(1, -300, 65535);
    expectMatrix(0, kIdentity);
    expectSuccess(Tavra_SetHueSaturationMode(handle, 0, 1, 2));
    expectHueSaturation(0, 0, 100);
}

TEST_F(ColorMatrixCalls, AnUnknownHueModeChangesNothing) {
    expectSuccess(Tavra_SetHueSaturationMode(handle, 1, 450, 130));
    for (const std::uint8_t mode : {2, 255})
        expectFailure(Tavra_SetHueSaturationMode(handle, mode, 0, 100), 87);
    expectHueSaturation(1, 450, 130);
    std::uint8_t mode = 9;
    std::uint16_t value = 9;
    expectFailure(Tavra_GetHueSaturationMode(handle, nullptr, &value, &value), 87);
    expectFailure(Tavra_GetHueSaturationMode(handle, &mode, nullptr, &value), 87);
    expectFailure(Tavra_GetHueSaturationMode(handle, &mode, &value, nullptr), 87);
    EXPECT_EQ(mode, 9);
    EXPECT_EQ(value, 9);
}

TEST_F(ColorMatrixCalls, NeedAHandle) {
    std::uint8_t mode = 0;
    std::uint16_t value = 0;
    Matrix matrix = kIdentity;
    EXPECT_EQ(Tavra_SetColorMatrix(nullptr, 0, matrix.data()), 0);
    EXPECT_EQ(Tavra_GetColorMatrix(nullptr, &mode, matrix.data()), 0);
    EXPECT_EQ(Tavra_SetHueSaturationMode(nullptr, 0, 0, 0), 0);
    EXPECT_EQ(Tavra_GetHueSaturationMode(nullptr, &mode, &value, &value), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
}

}  // namespace
}  // namespace tavra::test
