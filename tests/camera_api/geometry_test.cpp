// Image size, regions, skipping and binning.
#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

class Geometry : public CameraTest {
  protected:
    ControlTransfer scanWrite(const DoubleCamera& camera, std::size_t length) {
        return toDevice(18, 0, 0, Bytes(camera.scanRecord.begin(), camera.scanRecord.begin() + length));
    }
    void expectSize(std::uint32_t width, std::uint32_t height) {
        std::uint32_t total = 0, w = 0, h = 0, line = 0;
        EXPECT_EQ(Tavra_GetPreviewDataSize(handle, &total, &w, &h, &line), 1);
        EXPECT_EQ(w, width);
        EXPECT_EQ(h, height);
        EXPECT_EQ(record().imagesA.shape().width, width);
        EXPECT_EQ(record().imagesB.shape().width, height);
    }
};

TEST_F(Geometry, ImageSizeIsSentAndReadBack) {
    DoubleCamera camera;
    camera.setCapability(3, 0);
    for (std::size_t i = 2; i < 6; ++i) camera.scanRecord[i] = static_cast<std::uint8_t>(0xA0 + i);
    open(camera);
    expectSuccess(Tavra_SetImageSize(handle, 99, 2, 16, 8, 320, 240));
    DoubleCamera expected = camera;
    expected.setScan32(6, 320);
    expected.setScan32(10, 240);
    expected.setScan32(14, 16);
    expected.setScan32(18, 8);
    expected.setScan16(22, 2);
    EXPECT_THAT(traffic(),
                ElementsAre(scanWrite(expected, 64), readScan(), readExposure(), readDigitalGain()));
    expectSize(320, 240);
    EXPECT_EQ(record().preview.mask.width, 320u);
    EXPECT_EQ(record().preview.destination.height, 240u);
    std::uint16_t mode = 0;
    std::uint32_t x = 0, y = 0, width = 0, height = 0, raw = 0;
    expectSuccess(Tavra_GetImageSize(handle, 5, &mode, &x, &y, &width, &height));
    EXPECT_EQ(mode, 2);
    EXPECT_EQ(x, 16u);
    EXPECT_EQ(y, 8u);
    EXPECT_EQ(width, 320u);
    EXPECT_EQ(height, 240u);
    expectSuccess(Tavra_GetRawDataSize(handle, &raw));
    EXPECT_EQ(raw, 320u * 240u);
    expectSuccess(Tavra_GetRawDataSize(handle, nullptr));
}

TEST_F(Geometry, OneFamilyReadsClockAndTransferBitsAgain) {
    for (const std::uint16_t type : {2326, 3448, 4118, 16385, 16386, 16387, 16388}) {
        usb.reset();
        DoubleCamera camera;
        camera.setIdentity16(4, type);
        camera.setIdentity32(18, 3);
        open(camera);
        usb.camera().clock = 777;
        usb.camera().transferBits = 2;
        expectSuccess(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240));
        const Traffic requests = traffic();
        ASSERT_EQ(requests.size(), 6u) << type;
        EXPECT_EQ(requests[4], readClock());
        EXPECT_EQ(requests[5], readBits());
        EXPECT_EQ(record().geometry->clock().hz, 777u);
        EXPECT_EQ(record().geometry->transferBits, 2u);
        EXPECT_EQ(record().geometry->rawDataSize, 2u * 320u * 240u);
        close();
    }
}

TEST_F(Geometry, AChangeIsRefusedWhileAStreamRuns) {
    DoubleCamera camera = pageCamera();
    camera.setIdentity16(26, 0x8001);
    camera.setIdentity32(18, 3);
    open(camera);
    runStream();
    expectFailure(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240), 0xE0000004);
    expectFailure(Tavra_SetROI(handle, 0, 1, 0, 0, 320, 240), 0xE0000004);
    expectFailure(Tavra_SetSkippingAndBinning(handle, 0, 0, 0, 0), 0xE0000004);
    expectFailure(Tavra_SetPreviewPixelFormat(handle, 8), 0xE0000004);
    expectFailure(Tavra_SetTransferBitsPerPixel(handle, 2), 0xE0000004);
    expectFailure(Tavra_CameraSetting(handle, 0x1000), 0xE0000004);
    EXPECT_THAT(traffic(), IsEmpty());
    endStream();
    EXPECT_TRUE(record().captureThread.exists());
    expectSuccess(Tavra_SetPreviewPixelFormat(handle, 8));
    EXPECT_FALSE(record().captureThread.exists()) << "a stream that has ended is collected";
}

TEST_F(Geometry, ASizeThatTheCameraDoesNotTakeIsNotKept) {
    open();
    usb.failRequest(18, 1);
    expectFailure(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240), 0xE0000005);
    EXPECT_EQ(traffic().size(), 1u);
    expectSize(640, 480);
    usb.shortenRequest(18, 63, 1);
    expectFailure(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240), 0xE0000005);
    expectSize(640, 480);
}

TEST_F(Geometry, AFailingReadBackIsTheResult) {
    open();
    usb.failTransfer(1);
    expectFailure(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240), 0xE0000005);
    EXPECT_TRUE(record().buffersExist);
}

TEST_F(Geometry, AMissingPreviewWindowIsForgottenByAChangeOfSize) {
    DoubleCamera camera;
    camera.setIdentity16(26, 0x8000);
    open(camera);
    record().lastError = 0xE0000007;
    expectSuccess(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240));
    record().lastError = 0xE0000007;
    expectSuccess(Tavra_SetSkippingAndBinning(handle, 0, 0, 1, 1));
    record().lastError = 0xE0000007;
    expectSuccess(Tavra_CameraSetting(handle, 0x1000));
    record().lastError = 87;
    EXPECT_EQ(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240), 1);
    EXPECT_EQ(lastError(), 87u) << "no other code is cleared by a success";
}

TEST_F(Geometry, AFailingReadBackKeepsTheSizesAndUpdatesThePreview) {
    open();
    record().preview.mask.store({0, 0, 1, 1});
    usb.failTransfer(1);
    expectFailure(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240), 0xE0000005);
    EXPECT_EQ(record().geometry->rawDataSize, 640u * 480u);
    EXPECT_EQ(record().imagesA.shape().width, 640u);
    EXPECT_EQ(record().preview.mask.width, record().geometry->imageSize().width);
}

TEST_F(Geometry, ImagesThatCannotBeMadeAreMadeByTheNextChange) {
    open();
    expectFailure(Tavra_SetImageSize(handle, 0, 1, 0, 0, 0x10000, 0x10000), 8);
    EXPECT_FALSE(record().buffersExist);
    EXPECT_EQ(record().imagesA.image(0).bitmap.pixels(), nullptr);
    EXPECT_EQ(record().geometry->rawDataSize, 0u) << "65536 x 65536 in 32 bits";
    expectSuccess(Tavra_SetImageSize(handle, 0, 1, 0, 0, 320, 240));
    EXPECT_TRUE(record().buffersExist);
    expectSize(320, 240);
}

TEST_F(Geometry, RotationExchangesWidthAndHeight) {
    open();
    record().rotationMode = 1;
    expectSuccess(Tavra_SetImageSize(handle, 0, 1, 0, 0, 322, 240));
    EXPECT_EQ(record().preview.mask.width, 240u);
    EXPECT_EQ(record().preview.mask.height, 322u);
    std::uint32_t total = 0, width = 0, height = 0, line = 0;
    expectSuccess(Tavra_GetPreviewDataSize(handle, &total, &width, &height, &line));
    EXPECT_EQ(width, 240u);
    EXPECT_EQ(height, 322u);
    EXPECT_EQ(line, 720u);
    EXPECT_EQ(total, 720u * 322u);
    record().rotationMode = 0;
    expectSuccess(Tavra_GetPreviewDataSize(handle, nullptr, nullptr, nullptr, &line));
    EXPECT_EQ(line, 968u) << "322 x 3 padded to four";
}

TEST_F(Geometry, RegionsAreSentInTheirPlaces) {
    DoubleCamera camera;
    camera.setCapability(3, 0);
    camera.offerRegions(4);
    open(camera);
    std::uint32_t count = 0;
    expectSuccess(Tavra_GetMaxROICount(handle, &count));
    EXPECT_EQ(count, 4u);
    expectSuccess(Tavra_SetROI(handle, 3, 1, 10, 20, 30, 40));
    DoubleCamera expected = camera;
    expected.setScan32(60, 0x9);
    expected.setScan32(96, 30);
    expected.setScan32(100, 40);
    expected.setScan32(104, 10);
    expected.setScan32(108, 20);
    EXPECT_THAT(traffic(), ElementsAre(scanWrite(expected, 112), readScan(), readScan(112), readExposure(),
                                       readDigitalGain()));
    std::uint32_t enabled = 0, x = 0, y = 0, width = 0, height = 0;
    expectSuccess(Tavra_GetROI(handle, 3, &enabled, &x, &y, &width, &height));
    EXPECT_EQ(enabled, 1u);
    EXPECT_EQ(x, 10u);
    EXPECT_EQ(y, 20u);
    EXPECT_EQ(width, 30u);
    EXPECT_EQ(height, 40u);
    expectSuccess(Tavra_GetROI(handle, 3, nullptr, nullptr, nullptr, nullptr, nullptr));
    expectSuccess(Tavra_SetROI(handle, 3, 0, 10, 20, 30, 40));
    expectSuccess(Tavra_GetROI(handle, 3, &enabled, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(enabled, 0u);
    expectSuccess(Tavra_SetROI(handle, 0, 1, 1, 2, 300, 200));
    std::uint16_t mode = 0;
    expectSuccess(Tavra_GetImageSize(handle, 0, &mode, &x, &y, &width, &height));
    EXPECT_EQ(width, 300u);
    EXPECT_EQ(y, 2u);
}

TEST_F(Geometry, ARegionMakesNewImagesButLeavesThePartThatThePreviewShows) {
    open();
    record().preview.mask.store({0, 0, 100, 50});
    record().preview.destination.store({0, 0, 80, 40});
    record().lastError = 0xE0000007;  // of the preview window: not this call's to forgive
    EXPECT_EQ(Tavra_SetROI(handle, 0, 1, 0, 0, 320, 240), 1);
    EXPECT_EQ(lastError(), 0xE0000007u);
    expectSize(320, 240);
    EXPECT_EQ(record().geometry->rawDataSize, 320u * 240u);
    EXPECT_EQ(record().preview.mask.width, 100u);
    EXPECT_EQ(record().preview.mask.height, 50u);
    EXPECT_EQ(record().preview.destination.width, 80u);
    EXPECT_EQ(record().preview.destination.height, 40u);
}

TEST_F(Geometry, RegionsThatAreNotThereAreABadArgument) {
    DoubleCamera camera;
    camera.offerRegions(4);
    open(camera);
    expectFailure(Tavra_SetROI(handle, 4, 1, 0, 0, 8, 8), 87);
    expectFailure(Tavra_SetROI(handle, 0, 2, 0, 0, 8, 8), 87);
    expectFailure(Tavra_SetROI(handle, 0xFFFFFFFF, 0, 0, 0, 8, 8), 87);
    std::uint32_t x = 7;
    expectFailure(Tavra_GetROI(handle, 4, nullptr, &x, nullptr, nullptr, nullptr), 87);
    EXPECT_EQ(x, 7u);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Geometry, ACameraWithoutRegionsHasItsMainImage) {
    DoubleCamera camera;
    camera.setScan32(56, 0);
    open(camera);
    std::uint32_t count = 0;
    expectSuccess(Tavra_GetMaxROICount(handle, &count));
    EXPECT_EQ(count, 1u);
    expectSuccess(Tavra_SetROI(handle, 0, 1, 0, 0, 320, 240));
    expectFailure(Tavra_SetROI(handle, 1, 1, 0, 0, 320, 240), 87);
}

TEST_F(Geometry, LongRecordsAreSentAsLongAsTheirFirstByte) {
    DoubleCamera camera;
    camera.offerRegions(32);
    open(camera);
    expectSuccess(Tavra_SetROI(handle, 1, 1, 0, 0, 8, 8));
    EXPECT_EQ(traffic()[0].length, 255);
}

TEST_F(Geometry, RegionModeIsInTheRegisterPages) {
    DoubleCamera camera = pageCamera();
    camera.offerRegions(2);
    camera.pageRegister(25, 4) = 6;
    open(camera);
    EXPECT_EQ(record().geometry->GetROIMode(), 6u);
    EXPECT_THAT(traffic(), ElementsAre(readPage(25, 4)));
    usb.failRequest(130);
    EXPECT_EQ(record().geometry->GetROIMode(), 0u);
    EXPECT_EQ(lastError(), 0xE0000005u) << "a request that failed, whoever asked";
}

TEST_F(Geometry, ACameraWithOneRegionHasNoRegionMode) {
    DoubleCamera camera = pageCamera();
    camera.pageRegister(25, 4) = 6;
    open(camera);
    EXPECT_EQ(record().geometry->GetROIMode(), 0u);
    EXPECT_THAT(traffic(), IsEmpty());
}

TEST_F(Geometry, RawSizeComesFromTheCameraWhereItHasRegisters) {
    DoubleCamera camera;
    camera.setCapability(4, 0);
    camera.registers[{17, 8}] = 123456;
    camera.registers[{17, 12}] = 99;
    open(camera);
    std::uint32_t size = 0;
    expectSuccess(Tavra_GetRawDataSize(handle, &size));
    EXPECT_EQ(size, 123456u);
    usb.camera().registers[{17, 8}] = 777;
    usb.failRequest(130);
    EXPECT_EQ(Tavra_SetPreviewPixelFormat(handle, 8), 1) << "the old size is kept";
    EXPECT_EQ(lastError(), 0xE0000005u);
    EXPECT_EQ(record().geometry->rawDataSize, 123456u);
}

// Skipping and binning.

TEST_F(Geometry, FactorsTravelInOneWord) {
    DoubleCamera camera;
    camera.setIdentity16(26, 0x8000);
    open(camera);
    expectSuccess(Tavra_SetSkippingAndBinning(handle, 1, 2, 3, 4));
    EXPECT_THAT(traffic(), ElementsAre(writeStatus(33, le16(0x1324)), apply(), readScan(), readExposure(),
                                       readDigitalGain()));
    std::uint8_t a = 0, b = 0, c = 0, d = 0;
    expectSuccess(Tavra_GetSkippingAndBinning(handle, &a, &b, &c, &d));
    EXPECT_THAT((std::vector<int>{a, b, c, d}), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(traffic(), ElementsAre(readStatus(33)));
    expectSuccess(Tavra_SetSkippingAndBinning(handle, 0x1F, 0x10, 0, 0xFF));
    EXPECT_EQ(usb.camera().status(33), 0xF00F) << "four bits of each";
}

TEST_F(Geometry, FactorsWithoutTheWordFollowTheScanMode) {
    for (const std::uint16_t mode : {0, 1, 2, 4, 8, 16, 32, 64, 128, 256, 512}) {
        usb.reset();
        DoubleCamera camera;
        camera.setScan16(22, mode);
        open(camera);
        const int binned = mode >= 16 && mode <= 256 ? 1 : 0;
        std::uint8_t a = 9, b = 9, c = 9, d = 9;
        expectSuccess(Tavra_GetSkippingAndBinning(handle, &a, &b, &c, &d));
        EXPECT_THAT((std::vector<int>{a, b, c, d}), ElementsAre(0, binned, 0, binned)) << mode;
        expectFailure(Tavra_SetSkippingAndBinning(handle, 0, 0, 0, 0), 87);
        EXPECT_THAT(traffic(), IsEmpty());
        close();
    }
}

TEST_F(Geometry, FactorsThatFailToGoOutFail) {
    DoubleCamera camera;
    camera.setIdentity16(26, 0x8000);
    open(camera);
    std::uint8_t factor = 9;
    for (std::uint32_t nth = 0; nth < 5; ++nth) {
        usb.failTransfer(nth);
        expectFailure(Tavra_SetSkippingAndBinning(handle, 1, 1, 1, 1), 0xE0000005);
        EXPECT_EQ(traffic().size(), nth + 1);
    }
    usb.failTransfer(0);
    expectFailure(Tavra_GetSkippingAndBinning(handle, &factor, &factor, &factor, &factor), 0xE0000005);
}

TEST_F(Geometry, BinningSumNeedsACapability) {
    open();
    std::uint16_t mode = 9;
    expectSuccess(Tavra_GetBinningSumMode(handle, &mode));
    EXPECT_EQ(mode, 0);
    expectFailure(Tavra_SetBinningSumMode(handle, 1), 87);
    EXPECT_THAT(traffic(), IsEmpty());
    for (const auto& [word, bit] : {std::pair{3u, 13u}, {8u, 3u}}) {  // function 131 is word 8 bit 3
        close();
        usb.reset();
        DoubleCamera camera;
        camera.setCapability(word, bit);
        open(camera);
        expectSuccess(Tavra_SetBinningSumMode(handle, 0x1234));
        expectSuccess(Tavra_GetBinningSumMode(handle, &mode));
        EXPECT_EQ(mode, 0x1234);
        EXPECT_THAT(traffic(), ElementsAre(writeStatus(0x802E, le16(0x1234)), readStatus(46)));
    }
}

}  // namespace
}  // namespace tavra::test
