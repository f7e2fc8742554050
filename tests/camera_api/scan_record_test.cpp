// How the scan record is asked for, and what a camera that lies about it can do.
#include "camera_api/camera_fixture.h"

namespace tavra::test {
namespace {

using namespace request;

class ScanRecordReading : public CameraTest {
  protected:
    // Requests for the scan record during an open.
    Traffic scanRequests() {
        handle = Tavra_Open(0);
        EXPECT_NE(handle, nullptr);
        Traffic reads;
        for (const ControlTransfer& transfer : traffic()) {
            if (transfer.request == 18) reads.push_back(transfer);
        }
        return reads;
    }
    void expectRefused() {
        EXPECT_EQ(Tavra_Open(0), nullptr);
        EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000005u);
        EXPECT_EQ(usb.openHandles(), 0u);
    }
};

TEST_F(ScanRecordReading, AShortRecordIsAskedForOnce) {
    usb.addCamera();
    EXPECT_THAT(scanRequests(), ElementsAre(readScan(64), readScan(64)))
        << "at each of the two reads of an open";
}

TEST_F(ScanRecordReading, TheFirstReplyTellsTheLengthOfTheSecondRequest) {
    usb.addCamera().offerRegions(4);  // 112 bytes
    EXPECT_THAT(scanRequests(), ElementsAre(readScan(64), readScan(112), readScan(64), readScan(112)));
    EXPECT_EQ(record().geometry->scanRecord().declaredLength(), 112u);
}

TEST_F(ScanRecordReading, A255MeansTheLengthAtByte24) {
    DoubleCamera& camera = usb.addCamera();
    camera.offerRegions(32);  // 560 bytes
    EXPECT_EQ(camera.scanRecord[0], 255);
    const Traffic requests = scanRequests();
    EXPECT_EQ(requests[1], readScan(560));
    EXPECT_EQ(record().geometry->GetMaxROICount(), 32u);
}

TEST_F(ScanRecordReading, ADeclared600IsCutTo560) {
    DoubleCamera& camera = usb.addCamera();
    camera.offerRegions(32);
    camera.scanRecord.resize(600);
    camera.setScan16(24, 600);
    const Traffic requests = scanRequests();
    ASSERT_EQ(requests.size(), 4u);
    EXPECT_EQ(requests[1], readScan(560));
}

TEST_F(ScanRecordReading, ARecordThatHoldsLessThan64BytesMayBeShort) {
    DoubleCamera& camera = usb.addCamera();
    camera.scanRecord.resize(40);
    camera.scanRecord[0] = 40;
    EXPECT_THAT(scanRequests(), ElementsAre(readScan(64), readScan(64)));
    EXPECT_EQ(record().geometry->scanRecord().width(), 640u);
}

TEST_F(ScanRecordReading, RecordsShorterThanTheyDeclareAreFailures) {
    for (const std::size_t length : {0u, 1u, 39u, 63u}) {
        usb.reset();
        usb.addCamera().scanRecord.resize(length);
        expectRefused();
    }
    usb.reset();
    DoubleCamera& camera = usb.addCamera();
    camera.offerRegions(4);
    camera.scanRecord.resize(111);
    expectRefused();
}

TEST_F(ScanRecordReading, AFailingSecondRequestIsAFailure) {
    usb.addCamera().offerRegions(4);
    UsbDouble::Fault fault;
    fault.request = 18;
    fault.skip = 1;
    usb.addFault(fault);
    expectRefused();
}

TEST_F(ScanRecordReading, EveryLengthThatACameraMayDeclareEndsWell) {
    for (unsigned declared = 0; declared < 256; ++declared) {
        for (const std::size_t sent : {std::size_t{0}, std::size_t{26}, std::size_t{64}, std::size_t{300}}) {
            usb.reset();
            DoubleCamera& camera = usb.addCamera();
            camera.scanRecord.resize(sent);
            if (sent > 0) camera.scanRecord[0] = static_cast<std::uint8_t>(declared);
            handle = Tavra_Open(0);
            if (handle == nullptr) {
                EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000005u);
            }
            close();
            EXPECT_EQ(usb.openHandles(), 0u);
        }
    }
}

TEST_F(ScanRecordReading, ExposureFieldsAreDerivedUnlessTheCameraFillsThem) {
    DoubleCamera camera;
    camera.setScan32(36, 11);
    camera.setScan32(40, 12);
    camera.setScan32(44, 13);
    camera.setScan32(48, 14);
    camera.setScan32(52, 15);
    open(camera);
    ScanRecord scan = record().geometry->scanRecord();
    EXPECT_EQ(scan.lastExposureClock(), 779u);
    EXPECT_EQ(scan.shortExposureClocks(), 0u);
    EXPECT_EQ(scan.shortExposureLines(), 525u);
    EXPECT_EQ(scan.longExposureClocks(), 0u);
    EXPECT_EQ(scan.longExposureLines(), 525u);
    close();
    usb.reset();
    camera.setCapability(3, 0);
    open(camera);
    scan = record().geometry->scanRecord();
    EXPECT_EQ(scan.lastExposureClock(), 11u);
    EXPECT_EQ(scan.shortExposureClocks(), 12u);
    EXPECT_EQ(scan.shortExposureLines(), 13u);
    EXPECT_EQ(scan.longExposureClocks(), 14u);
    EXPECT_EQ(scan.longExposureLines(), 15u);
    close();
    usb.reset();
    camera.setIdentity16(4, 773);
    open(camera);
    EXPECT_EQ(record().geometry->scanRecord().shortExposureLines(), 525u) << "legacy types never fill them";
}

}  // namespace
}  // namespace tavra::test
