// Region composition learns its layout with the scan record, and consumers see the composed size.
#include "camera_api/camera_fixture.h"
#include "stages/multi_roi_image.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

using namespace request;

class RegionSetup : public CameraTest {
  protected:
    // 640 x 480 and a region of 100 x 50 beside and below it.
    static DoubleCamera withTwoRegions(DoubleCamera camera = DoubleCamera()) {
        camera.setCapability(3, 0);
        camera.offerRegions(2);
        camera.setScan32(60, 3);
        camera.setScan32(64, 100);
        camera.setScan32(68, 50);
        camera.setScan32(72, 1000);
        camera.setScan32(76, 600);
        return camera;
    }

    IMultiROIImage* composition() { return record().geometry->multiRoi; }

    void expectSize(std::uint32_t width, std::uint32_t height) {
        std::uint32_t w = 0, h = 0, line = 0, total = 0;
        expectSuccess(Tavra_GetPreviewDataSize(handle, &total, &w, &h, &line));
        EXPECT_EQ(w, width);
        EXPECT_EQ(h, height);
        EXPECT_EQ(line, (3 * width + 3) / 4 * 4);
        EXPECT_EQ(record().imagesA.shape().width, width);
        EXPECT_EQ(record().imagesA.shape().height, height);
        EXPECT_EQ(record().imagesB.shape().width, height);
    }
};

TEST_F(RegionSetup, ACameraWithOneRegionHasNoComposition) {
    open();
    EXPECT_EQ(composition(), nullptr);
    expectSuccess(Tavra_SetROI(handle, 0, 1, 0, 0, 320, 240));
    EXPECT_EQ(composition(), nullptr);
    expectSize(320, 240);
}

TEST_F(RegionSetup, TheOpenMakesTheComposition) {
    open(withTwoRegions());
    ASSERT_NE(composition(), nullptr);
    EXPECT_EQ(composition()->GetRegionCount(), 2u);
    expectSize(740, 530);
    EXPECT_EQ(record().preview.mask.width, 740u);
    EXPECT_EQ(record().geometry->rawSize().width, 640u) << "the main image, whatever is composed";
    std::uint32_t x = 7, width = 0;
    std::uint16_t mode = 0;
    std::uint32_t y = 7, height = 0;
    expectSuccess(Tavra_GetImageSize(handle, 0, &mode, &x, &y, &width, &height));
    EXPECT_EQ(width, 640u);
}

TEST_F(RegionSetup, EveryChangeOfARegionChangesTheLayout) {
    open(withTwoRegions());
    IMultiROIImage* const made = composition();
    expectSuccess(Tavra_SetROI(handle, 1, 1, 600, 0, 100, 480));
    expectSize(700, 480);
    expectSuccess(Tavra_SetROI(handle, 1, 0, 600, 0, 100, 480));
    EXPECT_EQ(composition()->GetRegionCount(), 1u);
    expectSize(640, 480);
    expectSuccess(Tavra_SetROI(handle, 1, 1, 600, 0, 100, 0));
    expectSize(640, 480);
    expectSuccess(Tavra_SetROI(handle, 1, 1, 700, 700, 10, 20));
    expectSize(650, 500);
    EXPECT_EQ(composition(), made) << "one object for the handle's life";
    EXPECT_EQ(composition()->AddRef(), 2u);
    EXPECT_EQ(composition()->Release(), 1u);
}

TEST_F(RegionSetup, TheMainImageOffLeavesOneRegion) {
    DoubleCamera camera = withTwoRegions();
    camera.setScan32(60, 2);
    open(camera);
    EXPECT_EQ(composition()->GetRegionCount(), 1u);
    expectSize(640, 480);
}

TEST_F(RegionSetup, RegionModeIsAskedWithEachSetup) {
    open(withTwoRegions(pageCamera()));
    usb.camera().pageRegister(25, 4) = 2;
    expectSuccess(Tavra_SetROI(handle, 1, 1, 600, 0, 100, 480));
    const Traffic requests = traffic();
    EXPECT_EQ(std::count(requests.begin(), requests.end(), readPage(25, 4)), 1);
    std::uint8_t frame = 0;
    EXPECT_EQ(composition()->Compose(0, &frame, 1, 0x01080001), &frame) << "the camera composes";
}

TEST_F(RegionSetup, AModeThatCannotBeReadIsModeZero) {
    open(withTwoRegions(pageCamera()));
    usb.camera().pageRegister(25, 4) = 2;
    UsbDouble::Fault fault;
    fault.request = readPage(25, 4).request;
    fault.value = readPage(25, 4).value;
    usb.addFault(fault);
    EXPECT_EQ(Tavra_SetROI(handle, 1, 1, 600, 0, 100, 480), 1);
    EXPECT_EQ(lastError(), 0xE0000005u);
    std::uint8_t frame = 0;
    EXPECT_EQ(composition()->Compose(0, &frame, 1, 0x01080001), nullptr);
    record().lastError = 0;
}

TEST_F(RegionSetup, AStreamGoesOnWithItsLayout) {
    DoubleCamera camera = withTwoRegions();
    camera.setCapability(1, 5);
    open(camera);
    runStream();
    usb.camera().setScan32(60, 1);
    expectSuccess(Tavra_SetVBlankForFPS(handle, 5));
    EXPECT_EQ(composition()->GetRegionCount(), 2u);
    EXPECT_EQ(record().geometry->imageSize().width, 740u);
    endStream();
    expectSuccess(Tavra_SetVBlankForFPS(handle, 5));
    EXPECT_EQ(composition()->GetRegionCount(), 1u);
    EXPECT_EQ(record().geometry->imageSize().width, 640u);
}

TEST_F(RegionSetup, ACameraThatOffersFewerRegionsIsBackAtItsMainImage) {
    open(withTwoRegions());
    usb.camera().setScan32(56, 1);
    expectSuccess(Tavra_CameraSetting(handle, 0x1000));  // the geometry is read anew
    expectSize(640, 480);
    EXPECT_EQ(composition()->GetRegionCount(), 1u);
}

TEST_F(RegionSetup, AComposedSizeThatNoMemoryHoldsMakesNoImages) {
    open(withTwoRegions());
    expectFailure(Tavra_SetROI(handle, 1, 1, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF), 8);
    EXPECT_EQ(record().geometry->imageSize().width, 0xFFFFFFFFu) << "not what is left of it in 32 bits";
    EXPECT_EQ(record().geometry->imageSize().height, 0xFFFFFFFFu);
    EXPECT_FALSE(record().buffersExist);
    expectSuccess(Tavra_SetROI(handle, 1, 1, 0, 0, 8, 8));
    expectSize(640, 480);
}

TEST_F(RegionSetup, ACompositionThatCannotBeMadeIsMadeByTheNextChange) {
    open();
    usb.camera().scanRecord = withTwoRegions().scanRecord;
    TavraBool result = 1;
    {
        const FailAllocationsFrom stage(sizeof(CMultiROIImage));
        result = Tavra_CameraSetting(handle, 0x1000);
    }
    expectFailure(result, 8);
    EXPECT_EQ(composition(), nullptr);
    expectSize(640, 480);
    expectSuccess(Tavra_CameraSetting(handle, 0x1000));
    EXPECT_NE(composition(), nullptr);
    expectSize(740, 530);
}

TEST_F(RegionSetup, TheCloseReleasesTheComposition) {
    open(withTwoRegions());
    IMultiROIImage* const made = composition();
    made->AddRef();
    close();
    EXPECT_EQ(made->Release(), 0u);
}

}  // namespace
}  // namespace tavra::test
