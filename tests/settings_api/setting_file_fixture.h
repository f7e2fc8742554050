// A camera of the double with a setting file in a folder of its own.
#pragma once

#include "camera_api/camera_fixture.h"
#include "platform/profile_file.h"
#include "platform/whole_file.h"
#include "support/temp_folder.h"

namespace tavra::test {

// The double is of type 8214, hexadecimal 2016.
class SettingFileTest : public CameraTest {
  protected:
    std::filesystem::path path() const { return folder / "settings.ini"; }
    std::u16string name() const { return wideName(path()); }

    // With three HDR parameters, 101 to 103.
    static DoubleCamera hdrCamera() {
        DoubleCamera camera = pageCamera();
        camera.setCapabilityWord(18, 3);
        camera.pageRegister(27, 0) = 16;
        for (std::uint32_t i = 1; i < 4; ++i) camera.pageRegister(27, 4 * i) = 100 + i;
        return camera;
    }

    template <typename Number>
    static Number get(TavraHandle handle, TavraBool (*getter)(TavraHandle, Number*)) {
        Number value = 0;
        EXPECT_TRUE(getter(handle, &value));
        return value;
    }
    static std::uint8_t sharpnessModeOf(TavraHandle handle) {
        std::uint8_t mode = 0, coring = 0;
        std::uint16_t gain = 0;
        EXPECT_TRUE(Tavra_GetSharpnessMode(handle, &mode, &gain, &coring));
        return mode;
    }

    void writeText(std::u16string_view text) {
        std::vector<std::uint8_t> bytes{0xFF, 0xFE};
        for (const char16_t unit : text) {
            bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
            bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
        }
        ASSERT_TRUE(platform::replaceWholeFile(name(), bytes).ok());
    }
    std::optional<std::u16string> valueOf(std::u16string_view section, std::u16string_view key) {
        platform::ProfileText text;
        EXPECT_TRUE(platform::readProfile(name(), text).ok());
        return text.find(section, key);
    }
    bool hasSection(const std::string& header) {
        const std::vector<std::uint8_t> bytes = readFile(path());
        std::string narrow;
        for (std::size_t i = 2; i < bytes.size(); i += 2) narrow += static_cast<char>(bytes[i]);
        return narrow.find("[" + header + "]\r\n") != std::string::npos;
    }

    void save() { expectSuccess(Tavra_SaveSettingFileW(handle, name().c_str())); }
    void load() { expectSuccess(Tavra_LoadSettingFileW(handle, name().c_str())); }
    void load(std::u16string_view text) {
        writeText(text);
        load();
    }

    const TempFolder folder;
};

}  // namespace tavra::test
