// Shading correction of a camera: the exports and the stage behind them.
#include "stages/shading_correction.h"

#include <memory>

#include "camera_api/camera_fixture.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

class ShadingExports : public CameraTest {
  protected:
    std::uint16_t colorArrayOfTheStage() {
        std::uint16_t array = 0;
        record().shadingCorrection->GetColorArray(&array);
        return array;
    }
};

TEST_F(ShadingExports, ModeIsWhatWasSet) {
    open();
    std::uint32_t mode = 9;
    expectSuccess(Tavra_GetShadingCorrectionMode(handle, &mode));
    EXPECT_EQ(mode, 0u);
    for (const std::uint32_t each : {1u, 2u, 3u, 4u, 255u, 77u, 0u}) {
        expectSuccess(Tavra_SetShadingCorrectionMode(handle, each));
        expectSuccess(Tavra_GetShadingCorrectionMode(handle, &mode));
        EXPECT_EQ(mode, each);
    }
    expectSuccess(Tavra_GetShadingCorrectionMode(handle, nullptr));
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(ShadingExports, TheModeTakesOverTheColorArrayAfterTheCamerasMirror) {
    DoubleCamera camera;
    camera.setCapability(1, 6);
    open(camera);
    EXPECT_EQ(colorArrayOfTheStage(), 1);
    expectSuccess(Tavra_SetShadingCorrectionMode(handle, 1));
    EXPECT_EQ(colorArrayOfTheStage(), 5);
    expectSuccess(Tavra_SetMirrorMode(handle, 0x13));
    EXPECT_EQ(colorArrayOfTheStage(), 5) << "until a mode is set";
    expectSuccess(Tavra_SetShadingCorrectionMode(handle, 2));
    EXPECT_EQ(colorArrayOfTheStage(), 4);
}

TEST_F(ShadingExports, TargetIsWhatWasSetOrTheMeanOfThePositions) {
    open();
    std::uint16_t target = 9;
    expectSuccess(Tavra_GetShadingCorrectionTarget(handle, &target));
    EXPECT_EQ(target, 0);
    expectSuccess(Tavra_SetShadingCorrectionTarget(handle, 65535));
    expectSuccess(Tavra_GetShadingCorrectionTarget(handle, &target));
    EXPECT_EQ(target, 65535);
    record().shadingCorrection->SetTargets(10u | 11u << 16 | 12ull << 32 | 14ull << 48);
    expectSuccess(Tavra_GetShadingCorrectionTarget(handle, &target));
    EXPECT_EQ(target, 11);
    expectFailure(Tavra_GetShadingCorrectionTarget(handle, nullptr), 87);
}

TEST_F(ShadingExports, AMapCanBeReadStoredAndSetBack) {
    open();
    std::uint32_t width = 9, height = 9, stride = 9;
    expectSuccess(Tavra_GetShadingCorrectionMap(handle, &width, &height, &stride, nullptr));
    EXPECT_EQ(width, 0u);
    expectSuccess(Tavra_SetShadingCorrectionTarget(handle, 200));
    expectSuccess(Tavra_SetShadingCorrectionMode(handle, 1));
    std::uint8_t field[6] = {100, 50, 200, 100, 5, 0};
    record().shadingCorrection->Apply8(3, 2, 0, field, 8);
    expectSuccess(Tavra_SetShadingCorrectionMode(handle, 2));
    record().shadingCorrection->Apply8(3, 2, 0, field, 8);
    EXPECT_THAT(field, ElementsAre(200, 200, 200, 200, 80, 0));
    expectSuccess(Tavra_GetShadingCorrectionMap(handle, &width, &height, &stride, nullptr));
    EXPECT_EQ(width, 3u);
    EXPECT_EQ(height, 2u);
    EXPECT_EQ(stride, 12u);
    std::int32_t map[6] = {};
    expectSuccess(Tavra_GetShadingCorrectionMap(handle, nullptr, nullptr, nullptr, map));
    EXPECT_THAT(map, ElementsAre(256, 512, 128, 256, 2048, 2048));

    close();
    open();
    expectSuccess(Tavra_SetShadingCorrectionMap(handle, 3, 2, 12, map));
    expectSuccess(Tavra_SetShadingCorrectionMode(handle, 2));
    std::uint8_t frame[6] = {1, 2, 3, 4, 5, 6};
    record().shadingCorrection->Apply8(3, 2, 0, frame, 8);
    EXPECT_THAT(frame, ElementsAre(2, 8, 3, 8, 80, 96));
}

TEST_F(ShadingExports, ABadMapIsRefused) {
    open();
    const std::int32_t map[4] = {1, 2, 3, 4};
    expectFailure(Tavra_SetShadingCorrectionMap(handle, 2, 2, 7, map), 87);
    expectFailure(Tavra_SetShadingCorrectionMap(handle, 2, 2, 8, nullptr), 87);
    {
        const FailAllocationsFrom all(0);
        EXPECT_EQ(Tavra_SetShadingCorrectionMap(handle, 2, 2, 8, map), 0);
    }
    EXPECT_EQ(lastError(), 8u);
    std::uint32_t height = 9;
    EXPECT_EQ(Tavra_GetShadingCorrectionMap(handle, nullptr, &height, nullptr, nullptr), 1);
    EXPECT_EQ(height, 0u);
}

TEST_F(ShadingExports, AMissingOrClosedHandleIsRefused) {
    std::uint32_t word = 9;
    std::uint16_t target = 9;
    const auto closed = std::make_unique<TAVRA_COMMON_PARAM>();
    for (const TavraHandle each : {TavraHandle{nullptr}, TavraHandle{closed.get()}}) {
        EXPECT_EQ(Tavra_SetShadingCorrectionMode(each, 1), 0);
        EXPECT_EQ(Tavra_GetShadingCorrectionMode(each, &word), 0);
        EXPECT_EQ(Tavra_SetShadingCorrectionTarget(each, 1), 0);
        EXPECT_EQ(Tavra_GetShadingCorrectionTarget(each, &target), 0);
        EXPECT_EQ(Tavra_SetShadingCorrectionMap(each, 1, 1, 4, &word), 0);
        EXPECT_EQ(Tavra_GetShadingCorrectionMap(each, &word, nullptr, nullptr, nullptr), 0);
        EXPECT_EQ(Tavra_GetLastError(each), 0xE0000003u);
    }
    EXPECT_EQ(word, 9u);
    EXPECT_EQ(target, 9);
}

}  // namespace
}  // namespace tavra::test
