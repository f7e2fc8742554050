#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

class Hdr : public CameraTest {
  protected:
    static DoubleCamera hdrCamera(std::uint32_t blockSize) {
        DoubleCamera camera = pageCamera();
        camera.setCapabilityWord(18, 0xFF03);
        camera.pageRegister(27, 0) = blockSize;
        for (std::uint32_t i = 1; i < 8; ++i) camera.pageRegister(27, 4 * i) = 100 + i;
        return camera;
    }
};

TEST_F(Hdr, TheTypeIsALowByte) {
    open(hdrCamera(20));
    std::uint32_t type = 9;
    expectSuccess(Tavra_GetHDRType(handle, &type));
    EXPECT_EQ(type, 3u);
    close();
    usb.reset();
    DoubleCamera camera;
    camera.setCapabilityWord(18, 3);
    open(camera);
    expectSuccess(Tavra_GetHDRType(handle, &type));
    EXPECT_EQ(type, 0u) << "without register pages";
}

TEST_F(Hdr, CamerasWithoutItRefuse) {
    DoubleCamera withoutPages, withoutType = pageCamera();
    withoutPages.setCapabilityWord(18, 3);
    withoutType.setCapabilityWord(18, 0xFF00);
    for (const DoubleCamera& camera : {withoutPages, withoutType, legacyCamera()}) {
        usb.reset();
        open(camera);
        std::uint32_t words[2] = {}, size = 8;
        expectFailure(Tavra_GetHDRParameter(handle, words, &size), 87);
        expectFailure(Tavra_GetHDRParameter(handle, nullptr, &size), 87);
        expectFailure(Tavra_SetHDRParameter(handle, words, 8), 87);
        EXPECT_THAT(traffic(), IsEmpty());
        close();
    }
}

TEST_F(Hdr, ReadsWordByWordUpToWhatThereIs) {
    open(hdrCamera(16));
    std::uint32_t words[8] = {}, size = 0;
    expectSuccess(Tavra_GetHDRParameter(handle, nullptr, &size));
    EXPECT_EQ(size, 12u);
    EXPECT_THAT(traffic(), ElementsAre(readPage(27, 0)));
    size = sizeof words;
    expectSuccess(Tavra_GetHDRParameter(handle, words, &size));
    EXPECT_EQ(size, 12u);
    EXPECT_THAT(words, ElementsAre(101, 102, 103, 0, 0, 0, 0, 0));
    EXPECT_THAT(traffic(), ElementsAre(readPage(27, 0), readPage(27, 4), readPage(27, 8), readPage(27, 12)));
    size = 4;
    expectSuccess(Tavra_GetHDRParameter(handle, words, &size));
    EXPECT_EQ(size, 4u);
}

TEST_F(Hdr, BadArgumentsOfTheGetter) {
    open(hdrCamera(16));
    std::uint32_t words[2] = {}, size = 6;
    expectFailure(Tavra_GetHDRParameter(handle, words, nullptr), 87);
    expectFailure(Tavra_GetHDRParameter(handle, words, &size), 87);
    EXPECT_EQ(size, 6u);
    EXPECT_THAT(traffic(), IsEmpty());
    expectSuccess(Tavra_GetHDRParameter(handle, nullptr, &size));
}

TEST_F(Hdr, WritesWordByWord) {
    open(hdrCamera(16));
    const std::uint32_t words[] = {7, 8, 9, 10};
    expectSuccess(Tavra_SetHDRParameter(handle, words, 12));
    EXPECT_THAT(traffic(),
                ElementsAre(readPage(27, 0), writePage(27, 4, 7), writePage(27, 8, 8), writePage(27, 12, 9)));
    expectFailure(Tavra_SetHDRParameter(handle, words, 16), 87);
    EXPECT_THAT(traffic(), ElementsAre(readPage(27, 0))) << "none of it is written";
    expectFailure(Tavra_SetHDRParameter(handle, words, 0xFFFFFFFC), 87);
    expectFailure(Tavra_SetHDRParameter(handle, words, 6), 87);
    expectFailure(Tavra_SetHDRParameter(handle, nullptr, 4), 87);
    expectSuccess(Tavra_SetHDRParameter(handle, words, 0));
}

TEST_F(Hdr, TheFirstFailureEndsTheWriting) {
    open(hdrCamera(16));
    const std::uint32_t words[] = {7, 8, 9};
    usb.failTransfer(2);
    expectFailure(Tavra_SetHDRParameter(handle, words, 12), 0xE0000005);
    EXPECT_EQ(traffic().size(), 3u);
    std::uint32_t read[3] = {}, size = 12;
    usb.failTransfer(1);
    expectFailure(Tavra_GetHDRParameter(handle, read, &size), 0xE0000005);
}

TEST_F(Hdr, BlocksThatLieStayInTheirPage) {
    for (const std::uint32_t block : {0u, 3u, 4u}) {
        usb.reset();
        open(hdrCamera(0x400));
        usb.camera().pageRegister(27, 0) = block;
        std::uint32_t words[4] = {}, size = 16;
        expectSuccess(Tavra_GetHDRParameter(handle, words, &size));
        EXPECT_EQ(size, 0u);
        close();
    }
    usb.reset();
    open(hdrCamera(0x400));
    usb.camera().pageRegister(27, 0) = 0xFFFFFFFF;
    std::vector<std::uint32_t> words(1000);
    auto size = static_cast<std::uint32_t>(4 * words.size());
    // The page ends before the block does.
    expectFailure(Tavra_GetHDRParameter(handle, words.data(), &size), 87);
}

}  // namespace
}  // namespace tavra::test
