// Which camera an open finds among those that are there.
#include <string>

#include "camera/global_last_error.h"
#include "camera_api/camera_fixture.h"
#include "platform/last_error.h"
#include "support/failing_allocations.h"

namespace tavra::test {
namespace {

class Enumeration : public CameraTest {
  protected:
    DoubleCamera& add(std::uint32_t userId) {
        DoubleCamera& camera = usb.addCamera();
        const Bytes id = le32(userId);
        std::copy(id.begin(), id.end(), camera.memory.begin() + 256);
        return camera;
    }

    // Letter at the end of the path of the camera that was opened; 0: none.
    char opened(std::uint32_t userId) {
        close();
        usb.forgetTraffic();
        handle = Tavra_Open(userId);
        if (handle == nullptr) return 0;
        char path[64] = {};
        std::uint32_t size = sizeof path;
        EXPECT_EQ(Tavra_GetDevicePathA(handle, path, &size), 1);
        return path[std::string(path).size() - 1];
    }

    std::vector<std::uint64_t> indicesTried() {
        std::vector<std::uint64_t> indices;
        for (const OperationCall& call : usb.calls()) {
            if (call.name == "UsbOpenByIndexPath") indices.push_back(call.arguments[0]);
        }
        return indices;
    }
};

TEST_F(Enumeration, NoCameraAtAll) {
    EXPECT_EQ(Tavra_Open(0), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000001u);
    EXPECT_EQ(Tavra_CameraCount(), 0u);
}

TEST_F(Enumeration, TheStoredUserIdDecides) {
    add(1);
    add(2);
    EXPECT_EQ(opened(2), 'B');
    EXPECT_EQ(record().userId, 2u);
    EXPECT_EQ(opened(1), 'A');
    EXPECT_EQ(usb.openHandles(), 1u);
    EXPECT_EQ(usb.calls()[0], (OperationCall{"UsbOpenByIndexPath", {0, 2048}})) << "room for the path";
}

TEST_F(Enumeration, AUserIdOf0ThatIsStoredMatchesWithoutAFallback) {
    add(5);
    add(0);
    EXPECT_EQ(opened(0), 'B');
    EXPECT_THAT(indicesTried(), ElementsAre(0, 1));
}

TEST_F(Enumeration, UserId0WithoutAMatchOpensTheFirst) {
    add(5);
    add(6);
    EXPECT_EQ(opened(0), 'A');
    EXPECT_THAT(indicesTried(), ElementsAre(0, 1, 2, 0)) << "no index 0 of its own: 0 is no index";
}

TEST_F(Enumeration, AnIdThatNobodyHasIsAnIndex) {
    add(10);
    add(11);
    add(12);
    EXPECT_EQ(opened(2), 'C');
    EXPECT_THAT(indicesTried(), ElementsAre(0, 1, 2, 3, 2));
}

TEST_F(Enumeration, AnIdThatIsNoIndexEitherOpensTheFirstFree) {
    add(1);
    add(2);
    EXPECT_EQ(opened(3), 'A');
    EXPECT_THAT(indicesTried(), ElementsAre(0, 1, 2, 3, 0));
    EXPECT_EQ(opened(0xFFFFFFFF), 'A');
}

TEST_F(Enumeration, TheFallbackPassesOverCamerasInUse) {
    add(1).openedByOthers = 1;
    add(2);
    EXPECT_EQ(opened(7), 'B');
    add(3);
    usb.camera(1).openedByOthers = 0;
    EXPECT_EQ(opened(1), 'B') << "ID 1 is in use, index 1 is free";
}

TEST_F(Enumeration, AllInUse) {
    add(1).openedByOthers = 1;
    add(2).openedByOthers = 3;
    EXPECT_EQ(opened(1), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000002u);
    EXPECT_EQ(usb.openHandles(), 0u);
    EXPECT_THAT(usb.requests(), IsEmpty()) << "nothing is asked of somebody else's camera";
}

TEST_F(Enumeration, ASecondOpenOfTheOnlyCameraFindsItInUse) {
    add(0);
    EXPECT_EQ(opened(0), 'A');
    EXPECT_EQ(Tavra_Open(0), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000002u);
    EXPECT_EQ(usb.openHandles(), 1u);
}

TEST_F(Enumeration, ARecordThatCannotBeReadCountsAsId0) {
    DoubleCamera& camera = add(9);
    camera.addRegisterPages();
    camera.memoryError = 31;
    EXPECT_EQ(opened(0), 'A');
    EXPECT_EQ(lastError(), 0xE0000005u) << "the failure stays behind on the handle";
    EXPECT_THAT(indicesTried(), ElementsAre(0));
}

TEST_F(Enumeration, TheSearchEndsAtTheLimit) {
    for (int i = 0; i < 130; ++i) add(1000 + i).openedByOthers = 1;
    EXPECT_EQ(opened(5), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000002u);
    EXPECT_EQ(indicesTried().size(), 127u);
    EXPECT_EQ(Tavra_CameraCount(), 127u);
}

TEST_F(Enumeration, ACameraBehindTheLimitIsNotSeen) {
    for (int i = 0; i < 127; ++i) add(1000 + i).openedByOthers = 1;
    add(5);
    EXPECT_EQ(opened(5), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000002u);
}

TEST_F(Enumeration, TheSystemsCodeAtTheEndIsKeptUntilTheOpenFails) {
    add(1);
    add(2);
    usb.endOfEnumerationError = 259;
    EXPECT_EQ(opened(9), 'A');
    EXPECT_EQ(Tavra_GetLastError(nullptr), 259u) << "the walk for the user ID reached the end";
}

TEST_F(Enumeration, WithoutMemoryForTheRecordTheSystemsErrorIsSetToo) {
    add(0);
    globalLastError = 0;
    platform::setLastSystemError(0);
    {
        const FailAllocationsFrom record(sizeof(TAVRA_COMMON_PARAM));
        EXPECT_EQ(Tavra_Open(0), nullptr);
        EXPECT_EQ(FailAllocationsFrom::failures(), 1u);
    }
    EXPECT_EQ(platform::lastSystemError(), 8u);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 8u);
    EXPECT_THAT(usb.calls(), IsEmpty());
}

TEST_F(Enumeration, CountingOpensAndClosesEachOne) {
    add(1);
    add(2).openedByOthers = 1;
    globalLastError = 77;
    EXPECT_EQ(Tavra_CameraCount(), 2u);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 77u);
    EXPECT_THAT(usb.calls(), ElementsAre(OperationCall{"UsbOpenByIndex", {0}}, OperationCall{"UsbClose", {}},
                                         OperationCall{"UsbOpenByIndex", {1}}, OperationCall{"UsbClose", {}},
                                         OperationCall{"UsbOpenByIndex", {2}}));
}

TEST_F(Enumeration, OpensByPath) {
    add(1);
    add(2);
    const std::u16string path = usb.camera(1).path;
    handle = Tavra_OpenByDevicePathW(path.c_str());
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(record().userId, 0u);
    EXPECT_EQ(usb.calls()[0].name, "UsbOpenByPathW");
    EXPECT_EQ(std::u16string(record().devicePath.data()), path);
    EXPECT_EQ(Tavra_OpenByDevicePathA("usb:double-B"), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000002u);
    close();
    handle = Tavra_OpenByDevicePathA("usb:double-A");
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(std::u16string(record().devicePath.data()), u"usb:double-A");
}

TEST_F(Enumeration, APathThatLeadsNowhereIsNoCamera) {
    add(1);
    EXPECT_EQ(Tavra_OpenByDevicePathA("usb:nowhere"), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000001u);
    EXPECT_EQ(Tavra_OpenByDevicePathW(u""), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000001u);
    EXPECT_EQ(Tavra_OpenByDevicePathA(nullptr), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 87u);
    EXPECT_EQ(Tavra_OpenByDevicePathW(nullptr), nullptr);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 87u);
}

TEST_F(Enumeration, DevicePathsTellTheirSize) {
    add(0);
    ASSERT_EQ(opened(0), 'A');  // "usb:double-A": 12 characters
    record().lastError = 0;
    TavraWChar wide[32] = {};
    char narrow[32] = {};
    std::uint32_t size = 5;
    expectSuccess(Tavra_GetDevicePathW(handle, nullptr, &size));
    EXPECT_EQ(size, 26u);
    size = 25;
    expectFailure(Tavra_GetDevicePathW(handle, wide, &size), 87);
    EXPECT_EQ(size, 26u);
    EXPECT_EQ(wide[0], 0);
    expectSuccess(Tavra_GetDevicePathW(handle, wide, &size));
    EXPECT_EQ(std::u16string(wide), u"usb:double-A");
    size = sizeof wide;
    expectSuccess(Tavra_GetDevicePathW(handle, wide, &size));
    EXPECT_EQ(size, 26u);
    expectFailure(Tavra_GetDevicePathW(handle, wide, nullptr), 87);

    expectSuccess(Tavra_GetDevicePathA(handle, nullptr, &size));
    EXPECT_EQ(size, 13u);
    expectSuccess(Tavra_GetDevicePathA(handle, narrow, &size));
    EXPECT_STREQ(narrow, "usb:double-A");
    size = 12;
    expectFailure(Tavra_GetDevicePathA(handle, narrow, &size), 122);
    expectFailure(Tavra_GetDevicePathA(handle, narrow, nullptr), 87);
}

// Bringing a device back whose configuration is bad.
class Configuration : public Enumeration {
  protected:
    std::vector<OperationCall> callsOf(const char* first, const char* second) {
        std::vector<OperationCall> calls;
        for (const OperationCall& call : usb.calls()) {
            if (call.name == first || call.name == second) calls.push_back(call);
        }
        return calls;
    }
};

TEST_F(Configuration, TheFirstRecoveryHasAControlOfItsOwn) {
    add(0).configurationFailures = 3;
    EXPECT_EQ(opened(0), 'A');
    EXPECT_THAT(
        callsOf("UsbDeviceControl", "UsbGetDriverVersion"),
        ElementsAre(OperationCall{"UsbGetDriverVersion", {}}, OperationCall{"UsbDeviceControl", {0x222140}},
                    OperationCall{"UsbDeviceControl", {0x222180}},
                    OperationCall{"UsbDeviceControl", {0x222180}}));
    EXPECT_THAT(indicesTried(), ElementsAre(0, 0, 0, 0));
    EXPECT_EQ(usb.openHandles(), 1u);
}

TEST_F(Configuration, ThereIsNoLimitOnAttempts) {
    add(0).configurationFailures = 1000;
    EXPECT_EQ(opened(0), 'A');
    EXPECT_EQ(indicesTried().size(), 1001u);
}

TEST_F(Configuration, AnOldDriverCannotRecover) {
    const std::array<std::uint32_t, 2> versions[] = {{0x2FFFF, 99}, {0x30000, 4}, {0, 0}};
    for (const auto& [majorMinor, build] : versions) {
        usb.reset();
        DoubleCamera& camera = add(0);
        camera.configurationFailures = 1;
        camera.driverVersion = {majorMinor, build, 0, 0};
        EXPECT_EQ(opened(0), 0);
        EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000001u);
        EXPECT_THAT(callsOf("UsbDeviceControl", ""), IsEmpty());
        EXPECT_EQ(usb.openHandles(), 0u);
    }
}

TEST_F(Configuration, DriversFrom3_0_5OnCan) {
    const std::array<std::uint32_t, 2> versions[] = {{0x30000, 5}, {0x30001, 0}, {0x40000, 0}};
    for (const auto& [majorMinor, build] : versions) {
        close();
        usb.reset();
        DoubleCamera& camera = add(0);
        camera.configurationFailures = 1;
        camera.driverVersion = {majorMinor, build, 0, 0};
        EXPECT_EQ(opened(0), 'A');
    }
}

TEST_F(Configuration, ADriverThatDoesNotTellItsVersionCannotRecover) {
    DoubleCamera& camera = add(0);
    camera.configurationFailures = 1;
    camera.driverVersionError = 1;
    EXPECT_EQ(opened(0), 0);
    EXPECT_THAT(callsOf("UsbDeviceControl", ""), IsEmpty());
}

TEST_F(Configuration, AControlThatFailsEndsTheSearch) {
    DoubleCamera& camera = add(1);
    camera.configurationFailures = 1;
    camera.deviceControlError = 50;
    add(2);
    EXPECT_EQ(opened(2), 0);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000001u);
    EXPECT_THAT(indicesTried(), ElementsAre(0)) << "as if the enumeration ended there";
    EXPECT_EQ(usb.openHandles(), 0u);
}

TEST_F(Configuration, OpensByPathRecoverToo) {
    add(0).configurationFailures = 2;
    handle = Tavra_OpenByDevicePathA("usb:double-A");
    ASSERT_NE(handle, nullptr);
    EXPECT_THAT(callsOf("UsbDeviceControl", ""), ElementsAre(OperationCall{"UsbDeviceControl", {0x222140}},
                                                             OperationCall{"UsbDeviceControl", {0x222180}}));
}

}  // namespace
}  // namespace tavra::test
