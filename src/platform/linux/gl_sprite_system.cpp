// Sprites with OpenGL, as the rest of the library sees them.
#include "platform/linux/gl_device.h"
#include "platform/linux/gl_display.h"
#include "platform/sprite_device.h"

namespace tavra::platform {
namespace {

class GlObject final : public ISpriteObject {
  public:
    std::uint32_t open() { return display_.open(); }

    std::uint32_t displayMode(DisplayMode& mode) override {
        mode = {display_.screen->width_in_pixels, display_.screen->height_in_pixels};
        return 0;
    }
    // There is one kind of device: where OpenGL works out vertices, and how exactly, is its own business, and
    // it leaves the thread's floating point state alone.
    std::uint32_t createDevice(const DeviceRequest& request, const PresentParameters& parameters,
                               std::unique_ptr<ISpriteDevice>& device) override {
        auto made = std::make_unique<GlDevice>(display_);
        if (const std::uint32_t failure = made->create(request, parameters); failure != 0) return failure;
        device = std::move(made);
        return 0;
    }

  private:
    GlDisplay display_;
};

class GlSystem final : public ISpriteSystem {
  public:
    std::uint32_t createObject(std::unique_ptr<ISpriteObject>& object) override {
        auto made = std::make_unique<GlObject>();
        if (const std::uint32_t failure = made->open(); failure != 0) return failure;
        object = std::move(made);
        return 0;
    }
};

}  // namespace

ISpriteSystem& spriteSystem() {
    static GlSystem system;
    return system;
}

}  // namespace tavra::platform
