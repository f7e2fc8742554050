// The firmware images as the library carries them, and the system's own device setup interface as far as
// looking at it goes.
#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

#include "platform/device_setup.h"
#include "platform/enum_interface.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

std::vector<std::uint8_t> resource(HMODULE module, WORD number) {
    const HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(number), L"FW_HEX_FILES");
    if (found == nullptr) return {};
    const auto* const data = static_cast<const std::uint8_t*>(LockResource(LoadResource(module, found)));
    return {data, data + SizeofResource(module, found)};
}

TEST(FirmwareResources, EachTypeHasItsImageUnderItsNumber) {
    const HMODULE library = LoadLibraryExA("tavra.dll", nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(library, nullptr);
    const std::filesystem::path images = TAVRA_FIRMWARE_IMAGES;
    EXPECT_FALSE(resource(library, 133).empty());
    EXPECT_EQ(resource(library, 133), test::readFile(images / "773.hex"));
    EXPECT_EQ(resource(library, 128), test::readFile(images / "1541.hex"));
    EXPECT_EQ(resource(library, 131), test::readFile(images / "1797.hex"));
    EXPECT_EQ(resource(library, 130), test::readFile(images / "2053.hex"));
    EXPECT_TRUE(resource(library, 129).empty());
    FreeLibrary(library);
}

class Count final : public CEnumInterface {
  public:
    // The class that disks have.
    Count()
        : CEnumInterface(systemDeviceSetup(), {0x07, 0x63, 0xF5, 0x53, 0xBF, 0xB6, 0xD0, 0x11, 0x94, 0xF2,
                                               0x00, 0xA0, 0xC9, 0x1E, 0xFB, 0x8B}) {}
    int devices = 0;

  protected:
    bool OnDevice(DeviceSet, const DeviceRecord& device) override {
        EXPECT_EQ(device.size, 32u);
        EXPECT_NE(device.instance, 0u);
        setup().deviceProperty(device, 2);
        ++devices;
        return true;
    }
};

// Machines may have none; what is there is walked over to its end.
TEST(SystemDeviceSetup, ListsTheDevicesOfAClass) {
    Count walk;
    EXPECT_TRUE(walk.run().ok());
    const DeviceSet set = systemDeviceSetup().getClassDevices({}, 18);
    ASSERT_NE(set, nullptr);
    DeviceRecord device;
    EXPECT_FALSE(systemDeviceSetup().enumDevice(set, 0, device)) << "a class that nothing has";
    EXPECT_EQ(systemDeviceSetup().lastError(), DWORD{ERROR_NO_MORE_ITEMS});
    systemDeviceSetup().destroy(set);
}

}  // namespace
}  // namespace tavra::platform
