// Cameras that fail while they are opened.
#include "e2e/camera_fixture.h"

namespace tavra::e2e {
namespace {

const std::string kSmall = "mono:pace=off" + kSmallSensor;
constexpr int kLastTransfer = 60;

std::string leavingAt(const char* model, int transfer) {
    return std::string(model) + kSmallSensor +
           ":pace=off:fault.return_after=1:fault.vanish_at_control=" + std::to_string(transfer);
}

// A failed opening looks at all cameras, so that this one is back at one of the next. It leaves once, which
// may be as late as now.
bool worksOnceItIsBack() {
    for (int i = 0; i < 5; ++i) {
        const TavraHandle handle = Tavra_Open(0);
        if (handle == nullptr) continue;
        const bool works = takeRaw(handle).size() == 32 * 8;
        Tavra_Close(handle);
        if (works) return true;
    }
    return false;
}

// One that is open after the transfer has been made still works; one that is gone says so.
void expectLostOrOpen(TavraHandle handle) {
    std::uint32_t id = 0;
    char text[64] = {};
    const bool answers = Tavra_ReadCameraSerialIDA(handle, &id, text, sizeof text) != 0;
    if (!answers) {
        EXPECT_EQ(Tavra_GetLastError(handle), TAVRA_ERROR_CONTROL_TRANSFER);
    }
}

int failedOpenings(const char* model) {
    useCameras(kSmall);
    Tavra_Close(Tavra_Open(0));
    const std::size_t before = test::openHandles();
    int failed = 0;
    for (int transfer = 1; transfer <= kLastTransfer; ++transfer) {
        SCOPED_TRACE(transfer);
        useCameras(leavingAt(model, transfer));
        const TavraHandle handle = Tavra_Open(0);
        if (handle != nullptr) {
            expectLostOrOpen(handle);
            Tavra_Close(handle);
        } else {
            EXPECT_EQ(Tavra_GetLastError(nullptr), TAVRA_ERROR_CONTROL_TRANSFER);
            ++failed;
        }
        EXPECT_LE(test::openHandles(), before + test::kLateHandles);
        EXPECT_TRUE(worksOnceItIsBack());
        EXPECT_LE(test::openHandles(), before + test::kLateHandles);
    }
    return failed;
}

TEST(ControlFaults, ARegisterCameraThatLeavesDuringAnyTransferOfTheOpeningOpensNextTime) {
    EXPECT_GT(failedOpenings("mono"), 10);
}

TEST(ControlFaults, AStatusWordCameraThatLeavesDuringAnyTransferOfTheOpeningOpensNextTime) {
    EXPECT_GT(failedOpenings("statusword"), 5);
}

TEST(ControlFaults, AnOldCameraThatLeavesDuringAnyTransferOfTheOpeningOpensNextTime) {
    EXPECT_GT(failedOpenings("legacy773"), 2);
}

TEST(ControlFaults, ANeededRequestThatFailsOrAnswersShortFailsTheOpening) {
    // Identity, scan record, clock, camera words.
    for (const char* const request : {"17", "18", "34", "35"}) {
        for (const char* const fault : {"fail", "short"}) {
            SCOPED_TRACE(std::string(fault) + " " + request);
            useCameras(kSmall + ":fault." + fault + "=" + request);
            EXPECT_EQ(Tavra_Open(0), nullptr);
            EXPECT_EQ(Tavra_GetLastError(nullptr), TAVRA_ERROR_CONTROL_TRANSFER);
        }
    }
}

TEST(ControlFaults, ARequestThatFailsOnceFailsOneCall) {
    useCameras(kSmall + ":fault.fail=32@1x1");
    const Camera camera;
    ASSERT_TRUE(camera.isOpen());
    EXPECT_FALSE(Tavra_ClearBuffer(camera));
    EXPECT_EQ(Tavra_GetLastError(camera), TAVRA_ERROR_CONTROL_TRANSFER);
    EXPECT_TRUE(Tavra_ClearBuffer(camera));
    EXPECT_EQ(Tavra_GetLastError(camera), TAVRA_ERROR_CONTROL_TRANSFER) << "success does not clear it";
}

TEST(ControlFaults, ACameraThatNeedsToBeBroughtBackOpens) {
    for (const char* const times : {"1", "2", "5"}) {
        useCameras(kSmall + ":fault.unconfigured=" + times);
        const Camera camera;
        ASSERT_TRUE(camera.isOpen()) << times;
        EXPECT_EQ(takeRaw(camera).size(), 32u * 8u);
    }
}

TEST(ControlFaults, ADriverThatCannotBringItBackFailsTheOpening) {
    useCameras(kSmall + ":fault.unconfigured=1:usb.driver_version=[0x30000,4,0,0]");
    EXPECT_EQ(Tavra_Open(0), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), TAVRA_ERROR_NO_CAMERA);
}

}  // namespace
}  // namespace tavra::e2e
