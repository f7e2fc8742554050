// Mirror and rotation modes: what is taken, what is sent, what follows.
#include <memory>

#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

class Orientation : public CameraTest {
  protected:
    static DoubleCamera mirrorCamera(bool horizontal, bool vertical) {
        DoubleCamera camera;
        camera.setCapability(1, 6, horizontal);
        camera.setCapability(1, 7, vertical);
        return camera;
    }
    void reopen(const DoubleCamera& camera) {
        close();
        usb.reset();
        open(camera);
    }
    std::uint32_t mirrorMode() {
        std::uint8_t mode = 99;
        expectSuccess(Tavra_GetMirrorMode(handle, &mode));
        return mode;
    }
    std::uint32_t rotationMode() {
        std::uint8_t mode = 99;
        expectSuccess(Tavra_GetRotationMode(handle, &mode));
        return mode;
    }
    void expectPreview(std::uint32_t width, std::uint32_t height) {
        std::uint32_t w = 0, h = 0;
        expectSuccess(Tavra_GetPreviewDataSize(handle, nullptr, &w, &h, nullptr));
        EXPECT_EQ(w, width);
        EXPECT_EQ(h, height);
        EXPECT_EQ(record().preview.mask.width, width);
        EXPECT_EQ(record().preview.mask.height, height);
        EXPECT_EQ(record().preview.destination.width, width);
        EXPECT_EQ(record().preview.destination.height, height);
    }
};

TEST_F(Orientation, BeginsAsTheCameraSends) {
    open();
    EXPECT_EQ(mirrorMode(), 0u);
    EXPECT_EQ(rotationMode(), 0u);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Orientation, MirrorsOfTheLibraryAreNotSent) {
    for (const DoubleCamera& camera : {DoubleCamera(), legacyCamera(), legacyCamera(773)}) {
        reopen(camera);
        for (const std::uint8_t mode : {1, 2, 3, 0}) {
            expectSuccess(Tavra_SetMirrorMode(handle, mode));
            EXPECT_EQ(mirrorMode(), mode);
        }
        EXPECT_THAT(traffic(), IsEmpty());
    }
}

TEST_F(Orientation, AModeOutsideTheMaskChangesNothing) {
    const struct {
        bool horizontal, vertical;
        std::uint32_t mask;
    } cameras[] = {{false, false, 3}, {true, false, 19}, {false, true, 35}, {true, true, 51}};
    for (const auto& c : cameras) {
        reopen(mirrorCamera(c.horizontal, c.vertical));
        std::uint8_t mask = 0;
        expectSuccess(Tavra_GetEnableMirrorMode(handle, &mask));
        EXPECT_EQ(mask, c.mask);
        expectSuccess(Tavra_SetMirrorMode(handle, 2));
        traffic();
        for (unsigned mode = 0; mode < 256; ++mode) {
            if ((mode & ~c.mask) == 0) continue;
            expectFailure(Tavra_SetMirrorMode(handle, static_cast<std::uint8_t>(mode)), 87);
        }
        EXPECT_EQ(mirrorMode(), 2u);
        EXPECT_THAT(traffic(), IsEmpty());
    }
}

TEST_F(Orientation, ACameraWithMirrorsIsSentItsBitsWithEveryMode) {
    reopen(mirrorCamera(true, true));
    for (const std::uint8_t mode : {0x31, 0x12, 0x20, 0x03, 0x00}) {
        expectSuccess(Tavra_SetMirrorMode(handle, mode));
        EXPECT_THAT(traffic(), ElementsAre(writeStatus(0x803F, le16(mode >> 4))));
        EXPECT_EQ(mirrorMode(), mode);
    }
    reopen(mirrorCamera(false, true));
    expectSuccess(Tavra_SetMirrorMode(handle, 0x23));
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(0x803F, le16(2))));
}

TEST_F(Orientation, AModeThatTheCameraDoesNotTakeIsStoredAllTheSame) {
    open(mirrorCamera(true, false));
    usb.failRequest(128);
    expectFailure(Tavra_SetMirrorMode(handle, 0x11), 0xE0000005);
    EXPECT_EQ(mirrorMode(), 0x11u);
}

TEST_F(Orientation, TheColorArrayFollowsTheCamerasMirrorAlone) {
    open(mirrorCamera(true, true));
    std::uint16_t array = 0;
    const struct {
        std::uint8_t mode;
        std::uint16_t array;
    } cases[] = {{0, 5}, {3, 5}, {16, 4}, {32, 3}, {48, 2}, {51, 2}};
    for (const auto& c : cases) {
        expectSuccess(Tavra_SetMirrorMode(handle, c.mode));
        expectSuccess(Tavra_SetRotationMode(handle, c.mode % 3));
        expectSuccess(Tavra_GetColorArray(handle, &array));
        EXPECT_EQ(array, c.array) << int{c.mode};
    }
}

TEST_F(Orientation, ARotationExchangesTheSidesOfThePreview) {
    open();
    expectSuccess(Tavra_SetRotationMode(handle, 1));
    EXPECT_THAT(traffic(), ElementsAre(readScan(), readExposure(), readStatus(20)));
    EXPECT_EQ(rotationMode(), 1u);
    expectPreview(480, 640);
    expectSuccess(Tavra_SetRotationMode(handle, 0));
    expectPreview(640, 480);
    expectSuccess(Tavra_SetRotationMode(handle, 2));
    expectPreview(480, 640);
    EXPECT_TRUE(record().buffersExist);
    EXPECT_EQ(record().imagesA.shape().width, 640u);
    EXPECT_EQ(record().imagesB.shape().width, 480u);
}

TEST_F(Orientation, AnyRotationModeIsStored) {
    open();
    for (unsigned mode = 0; mode < 256; mode += 17) {
        expectSuccess(Tavra_SetRotationMode(handle, static_cast<std::uint8_t>(mode)));
        EXPECT_EQ(rotationMode(), mode);
    }
}

TEST_F(Orientation, AGeometryThatCannotBeReadIsTheResultOfARotation) {
    open();
    usb.failRequest(18, 1);
    expectFailure(Tavra_SetRotationMode(handle, 1), 0xE0000005);
    EXPECT_EQ(rotationMode(), 1u);
    EXPECT_TRUE(record().buffersExist);
    expectPreview(480, 640);
}

TEST_F(Orientation, AMissingPreviewWindowIsForgottenByARotation) {
    open();
    record().lastError = 0xE0000007;
    expectSuccess(Tavra_SetRotationMode(handle, 1));
}

TEST_F(Orientation, GettersNeedAPlaceForTheirResult) {
    open();
    expectFailure(Tavra_GetMirrorMode(handle, nullptr), 87);
    expectFailure(Tavra_GetEnableMirrorMode(handle, nullptr), 87);
    expectFailure(Tavra_GetRotationMode(handle, nullptr), 87);
}

TEST_F(Orientation, AMissingOrClosedHandleIsRefused) {
    std::uint8_t mode = 9;
    const auto closed = std::make_unique<TAVRA_COMMON_PARAM>();
    for (const TavraHandle each : {TavraHandle{nullptr}, TavraHandle{closed.get()}}) {
        EXPECT_EQ(Tavra_SetMirrorMode(each, 1), 0);
        EXPECT_EQ(Tavra_GetMirrorMode(each, &mode), 0);
        EXPECT_EQ(Tavra_SetRotationMode(each, 1), 0);
        EXPECT_EQ(Tavra_GetRotationMode(each, &mode), 0);
        EXPECT_EQ(Tavra_GetLastError(each), 0xE0000003u);
    }
    EXPECT_EQ(mode, 9);
    EXPECT_EQ(closed->mirrorMode, 0);
}

}  // namespace
}  // namespace tavra::test
