// White balance through the exported functions: of the library, and of cameras that do it themselves.
#include "camera_api/camera_fixture.h"
#include "control/white_balance_ctrl_usb.h"

namespace tavra::test {
namespace {

using namespace request;
using testing::Each;

constexpr std::uint16_t kMonoArray = 1;

struct Four {
    std::uint16_t r = 9991, gr = 9992, gb = 9993, b = 9994;

    bool operator==(const Four&) const = default;
};

void setWords35(DoubleCamera& camera, const Four& gains) {
    const std::uint16_t words[] = {gains.r, gains.gr, gains.gb, gains.b};
    for (std::size_t i = 0; i < 4; ++i) {
        camera.words35[2 + 2 * i] = static_cast<std::uint8_t>(words[i]);
        camera.words35[3 + 2 * i] = static_cast<std::uint8_t>(words[i] >> 8);
    }
}

DoubleCamera hostCamera(std::uint16_t colorArray = 2) {
    DoubleCamera camera;
    camera.setIdentity16(10, colorArray);
    setWords35(camera, {0x0181, 128, 130, 0x01C2});
    return camera;
}

DoubleCamera hardwareCamera() {
    DoubleCamera camera = hostCamera();
    camera.setCapability(1, 8);
    return camera;
}

class WhiteBalanceApi : public CameraTest {
  protected:
    void reopen(const DoubleCamera& camera) {
        close();
        usb.reset();
        open(camera);
    }
    int mode() {
        std::uint8_t value = 99;
        expectSuccess(Tavra_GetWhiteBalanceMode(handle, &value));
        return value;
    }
    Four gains() {
        Four g;
        expectSuccess(Tavra_GetWhiteBalanceGain(handle, &g.r, &g.gr, &g.gb, &g.b));
        return g;
    }
    Four maximumGains() {
        Four g;
        expectSuccess(Tavra_GetWhiteBalanceMaxGain(handle, &g.r, &g.gr, &g.gb, &g.b));
        return g;
    }
    std::uint32_t modeMask() {
        std::uint32_t mask = 99;
        expectSuccess(Tavra_GetEnableWhiteBalanceMode(handle, &mask));
        return mask;
    }
    std::array<std::uint16_t, 2> target() {
        std::array<std::uint16_t, 2> values{};
        expectSuccess(Tavra_GetWhiteBalanceTarget(handle, &values[0], &values[1]));
        return values;
    }
    std::array<std::uint16_t, 2> band() {
        std::array<std::uint16_t, 2> values{9, 9};
        expectSuccess(Tavra_GetWhiteBalanceToleranceThreshold(handle, &values[0], &values[1]));
        return values;
    }
    Bytes weights() {
        Bytes values(16, 99);
        expectSuccess(Tavra_GetAWBWeight(handle, values.data()));
        return values;
    }
};

TEST_F(WhiteBalanceApi, ColorCamerasStartContinuousWithTheCamerasGains) {
    for (const std::uint16_t colorArray : {2, 5, 16, 19}) {
        reopen(hostCamera(colorArray));
        EXPECT_EQ(mode(), 2);
        EXPECT_EQ(gains(), (Four{0x0181, 128, 130, 0x01C2}));
        EXPECT_THAT(target(), ElementsAre(100, 100));
        EXPECT_THAT(band(), ElementsAre(5, 5));
        EXPECT_EQ(weights(), Bytes(16, 1));
        EXPECT_THAT(traffic(), IsEmpty()) << "the camera has no part in it";
    }
}

TEST_F(WhiteBalanceApi, MonoLikeCamerasStartOff) {
    for (const std::uint16_t colorArray : {1, 12, 13, 14, 15}) {
        reopen(hostCamera(colorArray));
        EXPECT_EQ(mode(), 0) << colorArray;
    }
}

TEST_F(WhiteBalanceApi, TheLibrarysSettingsAreStored) {
    for (DoubleCamera camera : {hostCamera(), pageCamera(), legacyCamera()}) {
        camera.setIdentity16(10, 3);
        reopen(camera);
        for (const int set : {0, 1, 3, 4, 255, 2}) {
            expectSuccess(Tavra_SetWhiteBalanceMode(handle, static_cast<std::uint8_t>(set)));
            EXPECT_EQ(mode(), set);
        }
        expectSuccess(Tavra_SetWhiteBalanceGain(handle, 0, 65535, 1024, 7));
        EXPECT_EQ(gains(), (Four{0, 65535, 1024, 7}));
        expectSuccess(Tavra_SetWhiteBalanceTarget(handle, 0, 65535));
        EXPECT_THAT(target(), ElementsAre(0, 65535));
        expectSuccess(Tavra_SetWhiteBalanceToleranceThreshold(handle, 1, 65535));
        EXPECT_THAT(band(), ElementsAre(1, 65535)) << "tolerance, threshold";
        Bytes cells(16);
        for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = static_cast<std::uint8_t>(17 * i);
        expectSuccess(Tavra_SetAWBWeight(handle, cells.data()));
        EXPECT_EQ(weights(), cells);
        EXPECT_THAT(traffic(), IsEmpty());
    }
}

TEST_F(WhiteBalanceApi, MaximumGainsAreTheCamerasWords) {
    open(hostCamera());
    EXPECT_EQ(maximumGains(), (Four{640, 640, 640, 640}));
    reopen(hardwareCamera());
    EXPECT_EQ(maximumGains(), (Four{511, 511, 511, 511}));
    record().maximumGains = {1, 2, 3, 4};
    EXPECT_EQ(maximumGains(), (Four{1, 2, 3, 4}));
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(WhiteBalanceApi, ModeInTheCameraIsAStatusWord) {
    open(hardwareCamera());
    expectSuccess(Tavra_SetWhiteBalanceMode(handle, 3));
    EXPECT_EQ(mode(), 3);
    usb.camera().status(68) = 0xAB02;
    EXPECT_EQ(mode(), 2) << "the low byte";
    expectSuccess(Tavra_SetWhiteBalanceMode(handle, 200));
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(0x8044, {3, 0}), readStatus(68), readStatus(68),
                                       writeStatus(0x8044, {200, 0})));
}

TEST_F(WhiteBalanceApi, GainsInTheCameraAreFourStatusWords) {
    open(hardwareCamera());
    expectSuccess(Tavra_SetWhiteBalanceGain(handle, 0x0102, 0x0304, 0x0506, 0xFFFE));
    EXPECT_EQ(gains(), (Four{0x0102, 0x0304, 0x0506, 0xFFFE}));
    usb.camera().status(67) = 300;
    EXPECT_EQ(gains(), (Four{0x0102, 0x0304, 0x0506, 300})) << "the camera may have changed them";
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(0x8040, {2, 1, 4, 3, 6, 5, 0xFE, 0xFF}), readStatus(64, 4),
                                       readStatus(64, 4)));
}

TEST_F(WhiteBalanceApi, SettingsOfTheLoopAreRefusedWithWhiteBalanceInTheCamera) {
    open(hardwareCamera());
    expectSuccess(Tavra_SetWhiteBalanceTarget(handle, 100, 100));
    expectFailure(Tavra_SetWhiteBalanceTarget(handle, 101, 100), 87);
    expectFailure(Tavra_SetWhiteBalanceTarget(handle, 100, 99), 87);
    EXPECT_THAT(target(), ElementsAre(100, 100));
    expectFailure(Tavra_SetWhiteBalanceToleranceThreshold(handle, 5, 5), 87);
    EXPECT_THAT(band(), ElementsAre(0, 0));
    Bytes frame(4, 100);
    expectFailure(Tavra_RawWhiteBalance(handle, 2, 2, 2, frame.data()), 87);
    EXPECT_EQ(frame, Bytes(4, 100));
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(WhiteBalanceApi, WeightsAreRefusedInTheLastErrorAlone) {
    open(hardwareCamera());
    const Bytes cells(16, 5);
    EXPECT_EQ(Tavra_SetAWBWeight(handle, cells.data()), 1);
    EXPECT_EQ(lastError(), 87u);
    record().lastError = 0;
    EXPECT_EQ(weights(), Bytes(16, 1));
}

TEST_F(WhiteBalanceApi, FailedRequestsFailTheCallAndGiveNothingOut) {
    for (const bool shortened : {false, true}) {
        reopen(hardwareCamera());
        shortened ? usb.shortenRequest(128, 1) : usb.failRequest(128);
        std::uint8_t value = 55;
        expectFailure(Tavra_GetWhiteBalanceMode(handle, &value), 0xE0000005);
        EXPECT_EQ(value, 55);
        Four g;
        expectFailure(Tavra_GetWhiteBalanceGain(handle, &g.r, &g.gr, &g.gb, &g.b), 0xE0000005);
        EXPECT_EQ(g, Four());
        expectFailure(Tavra_SetWhiteBalanceMode(handle, 1), 0xE0000005);
        expectFailure(Tavra_SetWhiteBalanceGain(handle, 1, 2, 3, 4), 0xE0000005);
        EXPECT_THAT(traffic(), ElementsAre(readStatus(68), readStatus(64, 4), writeStatus(0x8044, {1, 0}),
                                           writeStatus(0x8040, {1, 0, 2, 0, 3, 0, 4, 0})))
            << "each asked once";
    }
}

// Bit 8 stands in a word that the oldest types do not have.
TEST_F(WhiteBalanceApi, TheOldestTypesLeaveItToTheLibrary) {
    for (const std::uint16_t type : {773, 1541, 1797, 2053}) {
        DoubleCamera camera = legacyCamera(type);
        camera.setIdentity16(10, 2);
        camera.setCapability(1, 8);
        reopen(camera);
        expectSuccess(Tavra_SetWhiteBalanceMode(handle, 1));
        expectSuccess(Tavra_SetWhiteBalanceToleranceThreshold(handle, 6, 7));
        EXPECT_EQ(mode(), 1);
        EXPECT_EQ(modeMask(), 15u);
        EXPECT_EQ(maximumGains(), (Four{640, 640, 640, 640}));
        EXPECT_THAT(traffic(), IsEmpty());
    }
}

TEST_F(WhiteBalanceApi, AFrameOfTheCallerGetsTheGainsInForce) {
    open(hostCamera());
    expectSuccess(Tavra_SetWhiteBalanceGain(handle, 64, 96, 192, 256));
    Bytes frame(15, 100);
    expectSuccess(Tavra_RawWhiteBalance(handle, 5, 3, 4, frame.data()));
    EXPECT_THAT(frame, ElementsAre(150, 200, 150, 200, 100, 50, 75, 50, 75, 100, 100, 100, 100, 100, 100));
    expectSuccess(Tavra_SetWhiteBalanceMode(handle, 0));
    const Bytes before = frame;
    expectSuccess(Tavra_RawWhiteBalance(handle, 5, 3, 4, frame.data()));
    EXPECT_EQ(frame, before) << "off";
    expectSuccess(Tavra_SetWhiteBalanceMode(handle, 1));
    expectSuccess(Tavra_RawWhiteBalance(handle, 5, 3, 1, frame.data()));
    EXPECT_EQ(frame, before) << "a mono frame";
    expectSuccess(Tavra_RawWhiteBalance(handle, 0, 0, 2, frame.data()));
    expectSuccess(Tavra_RawWhiteBalance(handle, 15, 1, 2, frame.data()));
    expectSuccess(Tavra_RawWhiteBalance(handle, 1, 15, 2, frame.data()));
    EXPECT_EQ(frame, before) << "no pair of rows and columns";
}

TEST_F(WhiteBalanceApi, TheCodeAtOpenDecidesAboutPatterns) {
    open(hostCamera(14));
    expectSuccess(Tavra_SetWhiteBalanceMode(handle, 1));
    expectSuccess(Tavra_SetColorArray(handle, 2));
    Bytes frame(4, 100);
    expectSuccess(Tavra_RawWhiteBalance(handle, 2, 2, 2, frame.data()));
    EXPECT_EQ(frame, Bytes(4, 100));
}

TEST_F(WhiteBalanceApi, ModesAreAllUnlessTheCameraTellsItsOwn) {
    open(hostCamera());
    EXPECT_EQ(modeMask(), 15u);
    DoubleCamera camera = hostCamera();
    camera.setCapability(19, 6);  // function 0xA0016
    reopen(camera);
    EXPECT_EQ(modeMask(), 15u) << "the host's white balance";
    reopen(hardwareCamera());
    EXPECT_EQ(modeMask(), 15u) << "no mask told";
    reopen(hostCamera(kMonoArray));
    EXPECT_EQ(modeMask(), 0u);
    for (const std::uint16_t pattern : {12, 15}) {
        reopen(hostCamera(pattern));
        EXPECT_EQ(modeMask(), 15u);
    }
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(WhiteBalanceApi, ModesThatTheCameraTells) {
    const struct {
        unsigned bit;  // of word 19
        std::uint32_t mask;
    } rows[] = {{2, 1}, {5, 2}, {3, 4}, {4, 8}};
    for (const auto& row : rows) {
        DoubleCamera camera = hardwareCamera();
        camera.setCapability(19, 6);
        reopen(camera);
        EXPECT_EQ(modeMask(), 0u);
        camera.setCapability(19, row.bit);
        reopen(camera);
        EXPECT_EQ(modeMask(), row.mask) << "word 19 bit " << row.bit;
        camera.setIdentity16(10, kMonoArray);
        reopen(camera);
        EXPECT_EQ(modeMask(), 0u);
    }
}

TEST_F(WhiteBalanceApi, MissingPointersAreBadArguments) {
    for (const DoubleCamera& camera : {hostCamera(), hardwareCamera()}) {
        reopen(camera);
        std::uint16_t w = 5;
        expectFailure(Tavra_GetWhiteBalanceMode(handle, nullptr), 87);
        expectFailure(Tavra_GetWhiteBalanceGain(handle, nullptr, &w, &w, &w), 87);
        expectFailure(Tavra_GetWhiteBalanceGain(handle, &w, nullptr, &w, &w), 87);
        expectFailure(Tavra_GetWhiteBalanceGain(handle, &w, &w, nullptr, &w), 87);
        expectFailure(Tavra_GetWhiteBalanceGain(handle, &w, &w, &w, nullptr), 87);
        expectFailure(Tavra_GetWhiteBalanceMaxGain(handle, &w, &w, &w, nullptr), 87);
        expectFailure(Tavra_GetWhiteBalanceTarget(handle, nullptr, &w), 87);
        expectFailure(Tavra_GetWhiteBalanceTarget(handle, &w, nullptr), 87);
        expectFailure(Tavra_GetWhiteBalanceToleranceThreshold(handle, nullptr, &w), 87);
        expectFailure(Tavra_GetWhiteBalanceToleranceThreshold(handle, &w, nullptr), 87);
        expectFailure(Tavra_SetAWBWeight(handle, nullptr), 87);
        expectFailure(Tavra_GetAWBWeight(handle, nullptr), 87);
        expectFailure(Tavra_RawWhiteBalance(handle, 2, 2, 2, nullptr), 87);
        expectFailure(Tavra_GetEnableWhiteBalanceMode(handle, nullptr), 87);
        EXPECT_EQ(w, 5);
        EXPECT_THAT(traffic(), IsEmpty());
    }
}

TEST_F(WhiteBalanceApi, NeedsAHandle) {
    std::uint8_t bytes[16] = {};
    std::uint16_t w = 5;
    std::uint32_t mask = 5;
    EXPECT_EQ(Tavra_SetWhiteBalanceMode(nullptr, 1), 0);
    EXPECT_EQ(Tavra_GetWhiteBalanceMode(nullptr, bytes), 0);
    EXPECT_EQ(Tavra_SetWhiteBalanceGain(nullptr, 1, 2, 3, 4), 0);
    EXPECT_EQ(Tavra_GetWhiteBalanceGain(nullptr, &w, &w, &w, &w), 0);
    EXPECT_EQ(Tavra_GetWhiteBalanceMaxGain(nullptr, &w, &w, &w, &w), 0);
    EXPECT_EQ(Tavra_SetWhiteBalanceTarget(nullptr, 1, 2), 0);
    EXPECT_EQ(Tavra_GetWhiteBalanceTarget(nullptr, &w, &w), 0);
    EXPECT_EQ(Tavra_SetWhiteBalanceToleranceThreshold(nullptr, 1, 2), 0);
    EXPECT_EQ(Tavra_GetWhiteBalanceToleranceThreshold(nullptr, &w, &w), 0);
    EXPECT_EQ(Tavra_SetAWBWeight(nullptr, bytes), 0);
    EXPECT_EQ(Tavra_GetAWBWeight(nullptr, bytes), 0);
    EXPECT_EQ(Tavra_RawWhiteBalance(nullptr, 2, 2, 2, bytes), 0);
    EXPECT_EQ(Tavra_GetEnableWhiteBalanceMode(nullptr, &mask), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
    EXPECT_EQ(w, 5);
    EXPECT_EQ(mask, 5u);
}

// What the capture thread does with a frame, on the record that it works for.
TEST_F(WhiteBalanceApi, TheRecordsLoopMovesTheGainsThatTheApplicationReads) {
    open(hostCamera());
    expectSuccess(Tavra_SetWhiteBalanceGain(handle, 128, 128, 128, 128));
    expectSuccess(Tavra_SetWhiteBalanceMode(handle, 3));
    CWhiteBalanceCtrlUSB& control = *record().whiteBalance;
    for (int frame = 0; frame < 30; ++frame) {
        const bool due = control.frameIsDue();
        Bytes mosaic;
        for (unsigned i = 0; i < 64; ++i)
            mosaic.push_back(i / 8 % 2 == 0 ? (i % 2 ? 100 : 50) : (i % 2 ? 200 : 100));
        ASSERT_TRUE(control.ApplyGain(8, 8, 2, mosaic.data()).ok());
        if (!due) continue;
        record().statistics.Accumulate(8, 8, 2, mosaic.data());
        ASSERT_TRUE(control.controlStep(record().statistics));
    }
    EXPECT_EQ(gains(), (Four{256, 128, 128, 64}));
    EXPECT_EQ(mode(), 1) << "come to rest at the second decision";
    EXPECT_THAT(traffic(), IsEmpty());
}

}  // namespace
}  // namespace tavra::test
