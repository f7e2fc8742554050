// Tone curves of an open camera.
#include <array>

#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using Table = std::array<std::uint8_t, 256>;

struct Curve {
    std::uint8_t mode = 99;
    std::uint16_t gamma = 99;
    std::uint16_t brightness = 99;
    std::uint8_t contrast = 99;
    Table table{};
};

Table ramp(int from, int step) {
    Table table{};
    for (unsigned i = 0; i < 256; ++i)
        table[i] = static_cast<std::uint8_t>(from + step * static_cast<int>(i));
    return table;
}

class GammaCalls : public CameraTest {
  protected:
    GammaCalls() { open(); }

    Curve curve(std::uint8_t index) {
        Curve c;
        expectSuccess(Tavra_GetGammaModeEx(handle, index, &c.mode, &c.gamma, &c.brightness, &c.contrast,
                                           c.table.data()));
        return c;
    }
    void expectCurve(std::uint8_t index, int mode, int gamma, int brightness, int contrast,
                     const Table& table) {
        const Curve c = curve(index);
        EXPECT_EQ(c.mode, mode);
        EXPECT_EQ(c.gamma, gamma);
        EXPECT_EQ(static_cast<std::int16_t>(c.brightness), brightness);
        EXPECT_EQ(c.contrast, contrast);
        EXPECT_EQ(c.table, table);
    }
};

TEST_F(GammaCalls, AllCurvesAreOffAtFirst) {
    for (std::uint8_t index = 0; index < 5; ++index) expectCurve(index, 0, 100, 0, 0, ramp(0, 1));
}

TEST_F(GammaCalls, CurvesAreSetOneByOne) {
    expectSuccess(Tavra_SetGammaMode(handle, 3, 2, 100, nullptr));
    expectCurve(3, 2, 100, 0, 0, ramp(255, -1));
    EXPECT_THAT(traffic(), IsEmpty()) << "a matter of the computer alone";
    for (const std::uint8_t index : {0, 1, 2, 4}) expectCurve(index, 0, 100, 0, 0, ramp(0, 1));
    expectSuccess(Tavra_SetGammaMode(handle, 3, 0, 77, nullptr));
    expectCurve(3, 0, 100, 0, 0, ramp(0, 1));
}

TEST_F(GammaCalls, BrightnessIsSignedAndContrastAByte) {
    Table wanted{};
    for (unsigned i = 10; i < 256; ++i) wanted[i] = static_cast<std::uint8_t>(i - 10);
    expectSuccess(Tavra_SetGammaModeEx(handle, 0, 1, 100, static_cast<std::uint16_t>(-10), 0, nullptr));
    expectCurve(0, 1, 100, -10, 0, wanted);
    Table step{};
    for (unsigned i = 128; i < 256; ++i) step[i] = 255;
    expectSuccess(Tavra_SetGammaModeEx(handle, 0, 1, 100, 0, 255, nullptr));
    expectCurve(0, 1, 100, 0, 255, step);
    // The short form sets both to 0.
    expectSuccess(Tavra_SetGammaMode(handle, 0, 1, 100, nullptr));
    expectCurve(0, 1, 100, 0, 0, ramp(0, 1));
}

TEST_F(GammaCalls, AnOwnTableIsReadBack) {
    const Table table = ramp(3, 7);
    expectSuccess(Tavra_SetGammaMode(handle, 1, 255, 0, table.data()));
    expectCurve(1, 255, 100, 0, 0, table);
    const Table other = ramp(200, 3);
    expectSuccess(Tavra_SetGammaModeEx(handle, 2, 255, 55, 66, 77, other.data()));
    expectCurve(2, 255, 100, 0, 0, other);
}

TEST_F(GammaCalls, OutputsMayBeLeftOut) {
    expectSuccess(Tavra_SetGammaModeEx(handle, 4, 1, 220, 3, 4, nullptr));
    std::uint8_t mode = 0;
    std::uint16_t gamma = 0;
    expectSuccess(Tavra_GetGammaMode(handle, 4, &mode, &gamma, nullptr));
    EXPECT_EQ(mode, 1);
    EXPECT_EQ(gamma, 220);
    Table table{};
    expectSuccess(Tavra_GetGammaMode(handle, 4, nullptr, nullptr, table.data()));
    EXPECT_EQ(table, curve(4).table);
    std::uint16_t brightness = 0;
    expectSuccess(Tavra_GetGammaModeEx(handle, 4, nullptr, nullptr, &brightness, nullptr, nullptr));
    EXPECT_EQ(brightness, 3);
    std::uint8_t contrast = 0;
    expectSuccess(Tavra_GetGammaModeEx(handle, 4, nullptr, nullptr, nullptr, &contrast, nullptr));
    EXPECT_EQ(contrast, 4);
}

TEST_F(GammaCalls, BadArgumentsChangeNothing) {
    const Table table = ramp(3, 7);
    expectSuccess(Tavra_SetGammaMode(handle, 2, 255, 0, table.data()));
    expectFailure(Tavra_SetGammaMode(handle, 5, 1, 100, nullptr), 87);
    expectFailure(Tavra_SetGammaMode(handle, 2, 1, 0, nullptr), 87);
    expectFailure(Tavra_SetGammaMode(handle, 2, 2, 0, nullptr), 87);
    expectFailure(Tavra_SetGammaMode(handle, 2, 3, 100, nullptr), 87);
    expectFailure(Tavra_SetGammaModeEx(handle, 2, 254, 100, 0, 0, nullptr), 87);
    expectFailure(Tavra_SetGammaModeEx(handle, 2, 255, 100, 0, 0, nullptr), 87);
    expectCurve(2, 255, 100, 0, 0, table);
    std::uint8_t mode = 9;
    expectFailure(Tavra_GetGammaMode(handle, 5, &mode, nullptr, nullptr), 87);
    EXPECT_EQ(mode, 9);
}

TEST_F(GammaCalls, NeedAHandle) {
    EXPECT_EQ(Tavra_SetGammaMode(nullptr, 0, 0, 0, nullptr), 0);
    EXPECT_EQ(Tavra_GetGammaMode(nullptr, 0, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(Tavra_SetGammaModeEx(nullptr, 0, 0, 0, 0, 0, nullptr), 0);
    EXPECT_EQ(Tavra_GetGammaModeEx(nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
}

}  // namespace
}  // namespace tavra::test
