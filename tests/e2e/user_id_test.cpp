#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

std::uint32_t storedId(TavraHandle handle) {
    std::uint32_t id = 0xDEAD;
    char text[64] = {};
    EXPECT_TRUE(Tavra_ReadCameraUserIDA(handle, &id, text, sizeof text));
    return id;
}

TEST(UserIds, OpenTheCameraThatStoresTheId) {
    useCameras("mono:userid=3,bayer:userid=7,statusword:userid=5");
    EXPECT_EQ(Tavra_CameraCount(), 3u);
    for (const std::uint32_t id : {7u, 3u, 5u}) {
        const Camera camera(id);
        ASSERT_TRUE(camera.isOpen()) << id;
        EXPECT_EQ(storedId(camera), id);
    }
}

TEST(UserIds, OfNoCameraAreAnIndexAndThenTheFirstFreeCamera) {
    useCameras("mono:userid=30,mono:userid=31,mono:userid=32");
    const Camera byIndex(2);
    ASSERT_TRUE(byIndex.isOpen());
    EXPECT_EQ(storedId(byIndex), 32u);
    const Camera firstFree(99);
    ASSERT_TRUE(firstFree.isOpen());
    EXPECT_EQ(storedId(firstFree), 30u);
}

TEST(UserIds, AreFoundAgainAfterTheyAreWritten) {
    useCameras("mono:userid=1,mono:userid=2");
    {
        const Camera camera(2);
        ASSERT_TRUE(camera.isOpen());
        ASSERT_TRUE(Tavra_WriteCameraUserIDA(camera, 70, "left", 64));
    }
    const Camera camera(70);
    ASSERT_TRUE(camera.isOpen());
    std::uint32_t id = 0;
    char text[64] = {};
    ASSERT_TRUE(Tavra_ReadCameraUserIDA(camera, &id, text, sizeof text));
    EXPECT_EQ(id, 70u);
    EXPECT_STREQ(text, "left");
}

TEST(UserIds, AnOpenCameraIsInUse) {
    useCameras("mono:width=64:height=48");
    Camera camera;
    ASSERT_TRUE(camera.isOpen());
    EXPECT_EQ(Tavra_Open(0), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), TAVRA_ERROR_IN_USE);

    char path[256] = {};
    std::uint32_t size = sizeof path;
    ASSERT_TRUE(Tavra_GetDevicePathA(camera, path, &size));
    EXPECT_STREQ(path, "virtual:0:mono");
    EXPECT_EQ(Tavra_OpenByDevicePathA(path), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), TAVRA_ERROR_IN_USE);
    EXPECT_EQ(takeRaw(camera).size(), 64u * 48u) << "the one who has it is not disturbed";

    camera.close();
    const TavraHandle again = Tavra_OpenByDevicePathA(path);
    EXPECT_NE(again, nullptr);
    Tavra_Close(again);
}

TEST(UserIds, WithoutACameraNothingOpens) {
    useCameras("");
    EXPECT_EQ(Tavra_Open(0), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), TAVRA_ERROR_NO_CAMERA);
    EXPECT_EQ(Tavra_OpenByDevicePathA("virtual:0:mono"), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), TAVRA_ERROR_NO_CAMERA);
}

}  // namespace
}  // namespace tavra::e2e
