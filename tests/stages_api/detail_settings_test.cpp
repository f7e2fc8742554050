// The settings of sharpening and noise reduction through the exported functions.
#include "camera_api/camera_fixture.h"
#include "stages/sharpness.h"

namespace tavra::test {
namespace {

using DetailSettings = CameraTest;

TEST_F(DetailSettings, SharpnessStartsOffAndIsGivenBack) {
    open();
    std::uint8_t mode = 9, coring = 9;
    std::uint16_t gain = 9;
    expectSuccess(Tavra_GetSharpnessMode(handle, &mode, &gain, &coring));
    EXPECT_EQ(mode, 0);
    EXPECT_EQ(gain, 0);
    EXPECT_EQ(coring, 0);
    expectSuccess(Tavra_SetSharpnessMode(handle, 1, 65535, 255));
    expectSuccess(Tavra_GetSharpnessMode(handle, &mode, &gain, &coring));
    EXPECT_EQ(mode, 1);
    EXPECT_EQ(gain, 65535);
    EXPECT_EQ(coring, 255);
    EXPECT_THAT(traffic(), IsEmpty()) << "the camera is not asked";
}

TEST_F(DetailSettings, ACoringOfMoreThanAByteIsNarrowed) {
    open();
    record().sharpness->SetMode(1, 100, 0x1234);
    std::uint8_t mode = 0, coring = 0;
    std::uint16_t gain = 0;
    expectSuccess(Tavra_GetSharpnessMode(handle, &mode, &gain, &coring));
    EXPECT_EQ(coring, 0x34);
}

TEST_F(DetailSettings, SharpnessActsOnTheStageOfTheHandle) {
    open();
    expectSuccess(Tavra_SetSharpnessMode(handle, 1, 100, 10));
    std::uint8_t image[12] = {};
    image[4 + 1] = 50;
    ASSERT_EQ(record().sharpness->Apply8(3, 3, 0, 1, image, 8), 0u);
    EXPECT_EQ(image[4 + 1], 90) << "50 + (50 - 10)";
}

TEST_F(DetailSettings, SharpnessWithoutAPlaceForAResultIsABadArgument) {
    open();
    std::uint8_t byte = 7;
    std::uint16_t word = 7;
    expectFailure(Tavra_GetSharpnessMode(handle, nullptr, &word, &byte), 87);
    expectFailure(Tavra_GetSharpnessMode(handle, &byte, nullptr, &byte), 87);
    expectFailure(Tavra_GetSharpnessMode(handle, &byte, &word, nullptr), 87);
    EXPECT_EQ(byte, 7);
    EXPECT_EQ(word, 7);
}

TEST_F(DetailSettings, NoiseReductionTakesEveryMode) {
    open();
    std::uint32_t mode = 9;
    expectSuccess(Tavra_GetNoiseReductionMode(handle, &mode));
    EXPECT_EQ(mode, 0u);
    for (const std::uint32_t set : {1u, 2u, 0x80000000u, 0xFFFFFFFFu, 0u}) {
        expectSuccess(Tavra_SetNoiseReductionMode(handle, set));
        expectSuccess(Tavra_GetNoiseReductionMode(handle, &mode));
        EXPECT_EQ(mode, set);
    }
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(DetailSettings, NoiseReductionWithoutAPlaceForTheModeIsABadArgument) {
    open();
    expectFailure(Tavra_GetNoiseReductionMode(handle, nullptr), 87);
}

TEST_F(DetailSettings, ABadHandleFailsEveryCall) {
    std::uint8_t byte = 7;
    std::uint16_t word = 7;
    std::uint32_t mode = 7;
    EXPECT_EQ(Tavra_SetSharpnessMode(nullptr, 1, 1, 1), 0);
    EXPECT_EQ(Tavra_GetSharpnessMode(nullptr, &byte, &word, &byte), 0);
    EXPECT_EQ(Tavra_SetNoiseReductionMode(nullptr, 1), 0);
    EXPECT_EQ(Tavra_GetNoiseReductionMode(nullptr, &mode), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000003u);
    EXPECT_EQ(byte, 7);
    EXPECT_EQ(word, 7);
    EXPECT_EQ(mode, 0u) << "the mode reads as off";
}

}  // namespace
}  // namespace tavra::test
