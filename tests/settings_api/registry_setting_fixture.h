// A camera of the double with named settings in a tree of the test's own.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "camera_api/camera_fixture.h"
#include "settings/reg_key.h"
#include "support/user_tree.h"

namespace tavra::test {

class RegistrySetting : public CameraTest {
  protected:
    using Access = CwRegKey::Access;

    // The double is of type 8214, hexadecimal 2016.
    static constexpr const char16_t* kTypePath = uR"(SOFTWARE\Halvern\BrinscopePreference\2016)";

    static std::u16string pathOf(const std::u16string& name) {
        return name.empty() ? std::u16string(kTypePath) : kTypePath + (u"\\" + name);
    }
    static std::uint32_t dword(const std::u16string& setting, const std::u16string& name) {
        std::uint32_t value = 0xEEEEEEEE;
        EXPECT_EQ(CwRegKey(pathOf(setting), Access::Read, false).ReadDword(name, value), 0u);
        return value;
    }
    static void put(const std::u16string& setting, const std::u16string& name, std::uint32_t value) {
        CwRegKey key(pathOf(setting), Access::All, true);
        EXPECT_EQ(key.WriteDword(name, value), 0u);
        EXPECT_EQ(key.Close(), 0u);
    }
    static bool exists(const std::u16string& setting) {
        return CwRegKey(pathOf(setting), Access::Read, false).isOpen();
    }
    void save(const char16_t* name) { expectSuccess(Tavra_SaveSettingRegW(handle, name)); }
    void load(const char16_t* name) { expectSuccess(Tavra_LoadSettingRegW(handle, name)); }
    std::u16string defaultName() {
        char16_t buffer[64] = {u'x'};
        expectSuccess(Tavra_GetDefaultSettingRegW(handle, buffer, sizeof buffer));
        return buffer;
    }

    // What a named setting keeps gets other values.
    static void change(TavraHandle camera, std::uint16_t round) {
        const auto byte = [round](int value) { return static_cast<std::uint8_t>(value + round); };
        const auto word = [round](int value) { return static_cast<std::uint16_t>(value + round); };
        Tavra_SetALCMode(camera, byte(1));
        Tavra_SetShutterSpeed(camera, word(9), 0);
        Tavra_SetGain(camera, word(33));
        Tavra_SetTargetBrightness(camera, byte(90), byte(7), byte(9));
        std::array<std::uint8_t, 16> weights{};
        weights.fill(byte(3));
        Tavra_SetALCWeight(camera, weights.data());
        Tavra_SetGainControlRange(camera, word(21), word(60));
        Tavra_SetShutterControlRange(camera, word(2), 0, word(50), word(1));
        Tavra_SetWhiteBalanceMode(camera, 1);
        Tavra_SetWhiteBalanceGain(camera, word(130), word(131), word(132), word(133));
        Tavra_SetWhiteBalanceTarget(camera, word(90), word(91));
        Tavra_SetHueSaturationMode(camera, 1, word(-300), word(120));
        const std::int16_t matrix[12] = {
            static_cast<std::int16_t>(-7 - round), 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
        Tavra_SetColorMatrix(camera, 255, matrix);
        std::array<std::uint8_t, 256> table{};
        table.fill(byte(66));
        for (std::uint8_t i = 0; i < 5; ++i) {
            table[i] = i;
            Tavra_SetGammaModeEx(camera, i, i == 2 ? TAVRA_GAMMA_ON : TAVRA_GAMMA_TABLE, word(150), 0, 0,
                                 table.data());
        }
        Tavra_SetSharpnessMode(camera, 1, word(60), byte(5));
        Tavra_SetColorInterpolationMethod(camera, byte(1));
        Tavra_SetMirrorMode(camera, byte(1));
        Tavra_SetRotationMode(camera, byte(1));
    }

    const UserTree tree_;
};

}  // namespace tavra::test
