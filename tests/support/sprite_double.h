// Sprites that exist in memory only: a sprite system that draws nothing, writes down each operation as a line
// of text, and lets the one fail that a test names. Textures and surfaces have real pixels.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/bitmap.h"
#include "platform/sprite_device.h"

namespace tavra::test {

class SpriteDouble final : public platform::ISpriteSystem {
  public:
    static constexpr std::uint32_t kFailure = 0x8876017C;

    std::uint32_t createObject(std::unique_ptr<platform::ISpriteObject>& object) override;

    // Writes the operation down, and gives its result: that of the test for its name (what stands before the
    // first space), or a failure if it is the one that is to fail.
    std::uint32_t operation(const std::string& line);
    std::vector<std::string> takeLog();

    std::vector<std::string> log;
    std::map<std::string, std::uint32_t> results;
    int failAt = -1;      // number of the operation from now on; counts down
    int failDevices = 0;  // so many devices from now on cannot be made
    int alive = 0;        // objects of all kinds
    int locks = 0;        // and contexts that are out
    bool sceneOpen = false, spriteOpen = false;
    // The textures by their order of creation, as they are now. A deleted one is null.
    struct Texture {
        platform::Size size;
        std::vector<std::uint32_t> pixels;
    };
    std::vector<Texture*> textures;
    platform::PresentParameters parameters;  // of the last creation
    TavraWindow window = nullptr;
};

}  // namespace tavra::test
