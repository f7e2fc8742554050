// Everything that a setting file holds, in the order in which it is saved and loaded: one table, by which the
// file is written and read, and by which it is documented.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "settings/access.h"
#include "settings/setting_text.h"

namespace tavra {

// How keys that come several times are numbered.
enum class Naming : std::uint8_t {
    Plain,       // once
    Underscore,  // ALCWeight_0, ALCWeight_1, ...
    Behind,      // AWBWeight0, AWBWeight1, ...
    Region,      // Width, Width_1, Width_2, ...
};

struct Key {
    const char* name;
    Form form;
    Naming naming = Naming::Plain;
    const char* meaning = "";
    const char* values = "";   // unit and range
    const char* command = "";  // the setting of the tavra command that shows it; empty: none
};

// How often a camera has the keys of a block.
enum class Times : std::uint8_t {
    Once,
    Three,
    Twelve,
    Sixteen,
    TableSize,    // 256
    Regions,      // as many as the camera offers
    IfSkipping,   // once, if the camera sets skipping and binning
    IfSum,        // once, if the camera has the binning sum
    HdrSettings,  // as many as the camera has
};

// Keys that come together, numbered together.
struct Block {
    std::span<const Key> keys;
    Times times = Times::Once;
};

// When a camera has a group.
enum class Condition : std::uint8_t {
    Always,
    Geometry,       // the setting file mode does not leave sizes out
    PreviewWindow,  // the same, and a preview window is open
    Rotation,       // the mode does not leave rotation out
    NotLegacy,
    GainByItself,     // without function 0x90004
    Color,            // all of these: not mono-like
    OwnWhiteBalance,  // colour, and the camera does not do white balance itself
    CameraGamma,
    VBlank,
    DefectPixels,
    Clamp,
    AnalogBlackLevel,
    AdjustmentMode,
    Hdr,
};
const char* describe(Condition condition);  // empty: always

// Values that are read together and set together.
struct Group {
    const char* section;  // without the camera's suffix
    std::span<const Block> blocks;
    Condition condition;
    const Access& access;
    // What a load begins with where that is not what the camera has: it is not asked then. A value that stays
    // kNoValue is left to the group's access.
    void (*defaults)(std::span<std::uint32_t> values) = nullptr;
    // Looked at when the section has nothing new; null: nowhere.
    const char* secondSection = nullptr;
};

std::span<const Group> settingWalk();

// What decides which parts of the walk a camera has.
class WalkCamera {
  public:
    explicit WalkCamera(ISettingCamera& camera);

    ISettingCamera& camera() const { return camera_; }
    // "-0123", or "-0123-0002" where several models share a product type.
    const std::u16string& suffix() const { return suffix_; }
    bool has(const Group& group) const;
    std::uint32_t times(Times times) const;
    // How many values the group has.
    std::size_t size(const Group& group) const;
    bool isColor() const { return color_; }

  private:
    bool meets(Condition condition) const;

    ISettingCamera& camera_;
    std::u16string suffix_;
    bool color_ = false;
    // Asked for once: what a camera tells the next time must not outgrow the room for its values.
    std::uint32_t regions_;
    mutable std::optional<std::uint32_t> hdrSettings_;
    bool skipping_, sum_;
};

// Four upper-case hexadecimal digits, as product types stand in names.
std::u16string hexadecimalWord(std::uint32_t word);

// The name of a key in the file.
std::u16string keyName(const Key& key, std::uint32_t index);

// Calls visit(key, index) for each of the group's values, in order.
template <typename Visit>
void forEachKey(const WalkCamera& camera, const Group& group, Visit visit) {
    for (const Block& block : group.blocks) {
        const std::uint32_t times = camera.times(block.times);
        for (std::uint32_t index = 0; index < times; ++index) {
            for (const Key& key : block.keys) visit(key, index);
        }
    }
}

// Whether an image is mono for settings: a colour array of 1, or of the patterns without interpolation.
constexpr bool isMonoForSettings(std::uint16_t colorArray) {
    return colorArray == 1 || (colorArray >= 12 && colorArray <= 15);
}

// The setting file mode that leaves out all sizes, and the bit that leaves out the rotation.
constexpr bool keepsGeometry(std::uint32_t mode) {
    return mode != TAVRA_SETTING_FILE_NO_GEOMETRY;
}
constexpr bool keepsRotation(std::uint32_t mode) {
    return (mode & TAVRA_SETTING_FILE_NO_ROTATION) == 0;
}

}  // namespace tavra
