// What an open asks of the camera it found, in which order, and what becomes of a failure on the way.
#include "camera/global_last_error.h"
#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

class OpenSequence : public CameraTest {
  protected:
    Traffic openTraffic(const DoubleCamera& camera) {
        usb.addCamera(camera);
        handle = Tavra_Open(0);
        EXPECT_NE(handle, nullptr);
        return traffic();
    }
};

TEST_F(OpenSequence, CameraWithStatusWords) {
    EXPECT_THAT(openTraffic(DoubleCamera()),
                ElementsAre(identity(), readStatus(104, 20), fourWords(), readScan(),
                            writeStatus(101, {0, 0}), readExposure(), readDigitalGain(), readScan(),
                            readClock(), readExposure(), readDigitalGain()));
    EXPECT_EQ(lastError(), 0xE0000021u) << "the page table that is not there";
    EXPECT_EQ(record().functionAddress, 5u);
}

TEST_F(OpenSequence, LegacyCamera) {
    EXPECT_THAT(openTraffic(legacyCamera()), ElementsAre(identity(), fourWords(), readScan(), readExposure(),
                                                         readScan(), readClock(), readExposure()));
    EXPECT_EQ(lastError(), 0xE0000021u) << "the camera mode";
    EXPECT_EQ(record().capabilities.words, CapabilityWords().words);
}

TEST_F(OpenSequence, CameraWithRegisterPages) {
    DoubleCamera camera = pageCamera();
    camera.setIdentity32(18, 3);  // transfer bits 1 and 2
    camera.setCapability(1, 6);
    camera.setCapability(1, 8);
    camera.setCapability(1, 14);
    camera.setCapability(16, 6);
    camera.setCapability(18, 10);
    camera.setCapability(19, 8);
    camera.pageRegister(21, 96) = 72;
    camera.pageRegister(21, 172) = 2000;
    camera.pageRegister(21, 132) = 700;
    camera.pageRegister(21, 144) = 300;
    camera.pageRegister(21, 148) = 301;
    camera.pageRegister(21, 152) = 302;
    camera.status(63) = 0x0013;
    Traffic expected{identity(), readStatus(104, 20), readRegister(1, 4, 64), readRegister(1, 68, 48)};
    for (std::uint32_t page = 0; page < 28; ++page) expected.push_back(readPage(page, 0));
    for (const ControlTransfer& next :
         {readPage(21, 96), readPage(21, 172), fourWords(), readPage(21, 144), readPage(21, 148),
          readPage(21, 148), readPage(21, 152), readScan(), readPage(21, 132), writeStatus(101, {0, 0}),
          readExposure(), readDigitalGain(), readScan(), readBits(), readClock(), readExposure(),
          readDigitalGain(), readStatus(63), readRegister(17, 8, 8)}) {
        expected.push_back(next);
    }
    EXPECT_EQ(openTraffic(camera), expected);
    EXPECT_EQ(lastError(), 0u);
    EXPECT_EQ(record().exposureBaseClockMHz, 72u);
    EXPECT_EQ(record().minimumExposureClock, 2000u);
    EXPECT_EQ(record().maximumDigitalGain, 700);
    EXPECT_THAT(record().maximumGains, ElementsAre(300, 301, 301, 302));
    EXPECT_EQ(record().mirrorMode, 0x30);
}

TEST_F(OpenSequence, DefaultsWhereTheCameraTellsNothing) {
    openTraffic(DoubleCamera());
    EXPECT_EQ(record().exposureBaseClockMHz, 100u);
    EXPECT_EQ(record().minimumExposureClock, 1426u);
    EXPECT_EQ(record().maximumDigitalGain, 511);
    EXPECT_THAT(record().maximumGains, ElementsAre(640, 640, 640, 640));
    EXPECT_EQ(record().maximumTransferSize, 0x80000u);
    EXPECT_EQ(record().mirrorMode, 0);
    EXPECT_EQ(record().info.defaultWord, 130u);
}

TEST_F(OpenSequence, NarrowGainsWithoutPagesAre511) {
    DoubleCamera camera;
    camera.setCapability(1, 8);
    camera.setCapability(18, 10);
    openTraffic(camera);
    EXPECT_THAT(record().maximumGains, ElementsAre(511, 511, 511, 511));
}

TEST_F(OpenSequence, MaximumGainsAreReadWithBothCapabilitiesOnly) {
    const struct {
        bool narrow, told;
        std::uint16_t gain;
    } rows[] = {{false, false, 640}, {false, true, 640}, {true, false, 511}, {true, true, 300}};
    for (const auto& row : rows) {
        usb.reset();
        DoubleCamera camera = pageCamera();
        camera.setCapability(1, 8, row.narrow);
        camera.setCapability(18, 10, row.told);
        for (const std::uint32_t offset : {144u, 148u, 152u}) camera.pageRegister(21, offset) = 300;
        camera.pageRegister(21, 132) = 700;
        openTraffic(camera);
        EXPECT_THAT(record().maximumGains, ElementsAre(row.gain, row.gain, row.gain, row.gain));
        EXPECT_EQ(record().maximumDigitalGain, 511) << "word 16 bit 6 is clear";
        EXPECT_EQ(record().exposureBaseClockMHz, 100u) << "word 1 bit 14 is clear";
        EXPECT_EQ(record().minimumExposureClock, 1426u) << "word 19 bit 8 is clear";
        close();
    }
}

TEST_F(OpenSequence, LimitsThatCannotBeReadKeepTheirDefaults) {
    DoubleCamera camera;
    camera.addRegisterPages(64);  // the limits lie behind the end of the page
    camera.setCapability(1, 14);
    camera.setCapability(16, 6);
    openTraffic(camera);
    EXPECT_EQ(record().exposureBaseClockMHz, 100u);
    EXPECT_EQ(record().maximumDigitalGain, 511);
    EXPECT_EQ(lastError(), 87u);
}

TEST_F(OpenSequence, FourWordsAreKept) {
    DoubleCamera camera;
    for (std::size_t i = 0; i < 8; ++i) camera.words35[2 + i] = static_cast<std::uint8_t>(i + 1);
    openTraffic(camera);
    EXPECT_THAT(record().whiteBalanceWords, ElementsAre(0x0201, 0x0403, 0x0605, 0x0807));
}

TEST_F(OpenSequence, ColorCamerasStartInBgr24AndInterpolate) {
    openTraffic(DoubleCamera());
    EXPECT_EQ(record().geometry->enablePreviewFormats, 12u);
    EXPECT_EQ(record().geometry->previewPixelFormat, 4u);
    EXPECT_EQ(record().interpolationMethod, 3);
    EXPECT_EQ(record().secondInterpolationByte, 3);
}

TEST_F(OpenSequence, MonoLikeCamerasStartIn8BitsWithoutInterpolation) {
    for (const std::uint16_t colorArray : {1, 12, 15}) {
        usb.reset();
        DoubleCamera camera;
        camera.setIdentity16(10, colorArray);
        openTraffic(camera);
        EXPECT_EQ(record().geometry->enablePreviewFormats, 13u);
        EXPECT_EQ(record().geometry->previewPixelFormat, 1u);
        EXPECT_EQ(record().interpolationMethod, 0);
        EXPECT_EQ(record().secondInterpolationByte, 0);
        close();
    }
}

TEST_F(OpenSequence, SizesAndImagesFollowTheGeometry) {
    DoubleCamera camera;
    camera.setScan32(6, 322);
    camera.setScan32(10, 200);
    openTraffic(camera);
    EXPECT_EQ(record().preview.mask.width, 322u);
    EXPECT_EQ(record().preview.destination.height, 200u);
    EXPECT_TRUE(record().buffersExist);
    EXPECT_EQ(record().imagesA.shape().width, 322u);
    EXPECT_EQ(record().imagesA.shape().height, 200u);
    EXPECT_EQ(record().imagesA.shape().bitCount, 24u);
    EXPECT_EQ(record().imagesB.shape().width, 200u);
    EXPECT_EQ(record().imagesB.shape().height, 322u);
    EXPECT_NE(record().imagesB.image(2).bitmap.pixels(), nullptr);
}

TEST_F(OpenSequence, MirrorOfTheCameraNeedsOneOfTwoCapabilities) {
    DoubleCamera camera;
    camera.status(63) = 3;
    EXPECT_EQ(openTraffic(camera).back(), readDigitalGain());
    EXPECT_EQ(record().mirrorMode, 0);
    close();
    usb.reset();
    camera.setCapability(1, 7);
    EXPECT_EQ(openTraffic(camera).back(), readStatus(63));
    EXPECT_EQ(record().mirrorMode, 0x30);
}

TEST_F(OpenSequence, IdentityRepliesThatAreTooShortFailTheOpen) {
    for (std::size_t length = 0; length < 64; ++length) {
        usb.reset();
        usb.addCamera().identity.resize(length);
        globalLastError = 0;
        EXPECT_EQ(Tavra_Open(0), nullptr) << length;
        EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000005u) << length;
        EXPECT_EQ(usb.openHandles(), 0u) << length;
    }
}

TEST_F(OpenSequence, LibraryRunsOutOfMemoryForImages) {
    DoubleCamera camera;
    camera.setScan32(6, 0x10000);
    camera.setScan32(10, 0x10000);
    usb.addCamera(camera);
    EXPECT_EQ(Tavra_Open(0), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 8u);
    EXPECT_EQ(usb.openHandles(), 0u);
}

// The n-th transfer fails, for every n until an open passes without one.
TEST_F(OpenSequence, EveryFailingTransferEitherFailsTheOpenOrDoesNotMatter) {
    DoubleCamera camera = pageCamera();
    camera.setIdentity32(18, 3);
    camera.setCapability(1, 6);
    camera.setCapability(1, 8);
    camera.setCapability(1, 14);
    camera.setCapability(16, 6);
    camera.setCapability(18, 10);
    const std::size_t transfers = openTraffic(camera).size();
    close();
    std::size_t failed = 0;
    for (std::uint32_t nth = 0; nth < transfers; ++nth) {
        usb.reset();
        usb.addCamera(camera);
        usb.failTransfer(nth);
        globalLastError = 0;
        handle = Tavra_Open(0);
        if (handle == nullptr) {
            ++failed;
            EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000005u) << nth;
            EXPECT_EQ(usb.openHandles(), 0u) << nth;
        } else {
            EXPECT_EQ(lastError(), 0xE0000005u) << "the failure stays behind, " << nth;
            close();
        }
    }
    // Identity, capability words, four words, scan record twice, transfer bits, clock, exposure and digital
    // gain the second time, mirror.
    EXPECT_EQ(failed, 10u);
}

TEST_F(OpenSequence, EveryShortTransferFailsLikeAFailedOne) {
    for (const std::uint8_t request : {17, 18, 33, 34, 35, 128}) {
        usb.reset();
        usb.addCamera();
        usb.shortenRequest(request, 5);
        EXPECT_EQ(Tavra_Open(0), nullptr) << int{request};
        EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000005u) << int{request};
        EXPECT_EQ(usb.openHandles(), 0u);
    }
}

}  // namespace
}  // namespace tavra::test
