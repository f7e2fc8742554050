// Virtual cameras that come up without firmware, loaded with the images that the project ships.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>

#include "e2e/camera_fixture.h"
#include "support/temp_folder.h"

namespace tavra::e2e {
namespace {

class Firmware : public testing::Test {
  protected:
    // Windows: the images that the library carries.
    Firmware() { test::setEnvironment("TAVRA_FIRMWARE_DIR", TAVRA_FIRMWARE_FOLDER); }
    ~Firmware() override {
        close();
        test::setEnvironment("TAVRA_FIRMWARE_DIR", "");
    }

    void open(std::uint32_t userId = 0) { handle = Tavra_OpenFW(userId, &loads); }
    void close() {
        if (handle != nullptr) Tavra_Close(handle);
        handle = nullptr;
    }
    std::uint16_t revision() const {
        std::uint16_t vendor = 0, type = 0, hardware = 0, firmware = 0;
        EXPECT_TRUE(Tavra_GetCameraVersion(handle, &vendor, &type, &hardware, &firmware));
        return firmware;
    }
    // Ends the wait for what never comes.
    static void waitUntil(const auto& reached) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(kPatienceMs);
        while (!reached()) {
            ASSERT_LT(std::chrono::steady_clock::now(), end);
            std::this_thread::yield();
        }
    }

    TavraHandle handle = nullptr;
    std::uint32_t loads = 99;
};

TEST_F(Firmware, EachOldTypeComesUpWithItsShippedImageAndStreams) {
    for (const char* const model : {"legacy773", "legacy1541", "legacy1797", "legacy2053"}) {
        useCameras(std::string(model) + ":firmware=absent");
        handle = Tavra_Open(0);
        ASSERT_NE(handle, nullptr) << model;
        EXPECT_EQ(revision(), 8) << model;
        close();
        open();
        ASSERT_NE(handle, nullptr) << model;
        EXPECT_EQ(loads, 1u) << model;
        EXPECT_EQ(revision(), 16) << model;
        EXPECT_EQ(takeRaw(handle).size(), rawSizeOf(handle)) << model;
        close();
        open();
        EXPECT_EQ(loads, 0u) << "the camera has kept it";
        close();
    }
}

TEST_F(Firmware, CamerasThatHaveTheirsAreOnlyOpened) {
    useCameras("legacy1541,bayer:userid=4");
    open();
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(loads, 0u);
    close();
    open(4);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(loads, 0u);
}

TEST_F(Firmware, ALoadThatFailsIsRepeatedUntilOneWorks) {
    useCameras("legacy1541:firmware=absent:fault.fail=228@1x3");  // request 0xE4 carries the image
    open();
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(loads, 1u);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 31u);
    EXPECT_EQ(revision(), 16);
}

// The processor stays held when the camera has taken fewer bytes than were sent, and is loaded anew.
TEST_F(Firmware, ALoadThatIsCutShortIsRepeated) {
    useCameras("legacy773:firmware=absent:fault.short=228@2x1");
    open();
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(loads, 1u);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 1117u);
}

TEST_F(Firmware, AnImageThatIsNoneIsTriedUntilItIsReplaced) {
    const test::TempFolder folder;
    std::ofstream(folder / "2053.hex") << ":00000001FE\n";  // a wrong checksum
    test::setEnvironment("TAVRA_FIRMWARE_DIR", folder.path().string());
    useCameras("legacy2053:firmware=absent");
    std::atomic<bool> done = false;
    std::thread opening([&] {
        open();
        done = true;
    });
    waitUntil([] { return Tavra_GetLastError(nullptr) == 13; });
    EXPECT_FALSE(done);
    std::filesystem::copy_file(std::filesystem::path(TAVRA_SHIPPED_FIRMWARE) / "2053.hex", folder / "new");
    // The other thread has the old one open now and then, and some systems do not replace it under it.
    waitUntil([&] {
        std::error_code failed;
        std::filesystem::rename(folder / "new", folder / "2053.hex", failed);
        return !failed;
    });
    opening.join();
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(loads, 1u);
    EXPECT_EQ(revision(), 16);
}

TEST_F(Firmware, ACameraThatDoesNotOpenAgainGivesNullAndTheCount) {
    useCameras("legacy1541:firmware=absent:fault.fail=17@2x1");  // the identity of the second opening
    open();
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(loads, 1u);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 0xE0000005u);
}

TEST_F(Firmware, TheCameraWithTheUserIdIsLoadedAndNoOther) {
    useCameras("legacy1541:firmware=absent:userid=1,legacy773:firmware=absent:userid=2");
    open(2);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(loads, 1u);
    std::uint16_t type = 0, ignored = 0;
    EXPECT_TRUE(Tavra_GetCameraVersion(handle, &ignored, &type, &ignored, &ignored));
    EXPECT_EQ(type, 773);
    close();
    handle = Tavra_Open(1);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(revision(), 8);
}

}  // namespace
}  // namespace tavra::e2e
