// Textures, the sprite and the back buffer of an OpenGL device. They belong to who made them, and go before
// their device.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/linux/gl_device.h"
#include "platform/sprite_device.h"

namespace tavra::platform {

// Its pixels stay in memory; OpenGL gets them when they are drawn, as many rows as are.
class GlTexture final : public ISpriteTexture {
  public:
    GlTexture(GlDevice& device, Size size, SpriteFormat format)
        : device_(device), size_(size), opaque_(format == SpriteFormat::X8R8G8B8) {}
    ~GlTexture() override;

    std::uint32_t create();  // 8: out of memory
    std::uint32_t lock(LockedPixels& pixels) override;
    std::uint32_t unlock() override;

    Size size() const { return size_; }
    bool opaque() const { return opaque_; }
    // Binds it, with its first rows as they are now. OpenGL is current.
    void bind(std::uint32_t rows);

  private:
    GlDevice& device_;
    Size size_;
    bool opaque_;
    std::unique_ptr<std::uint8_t[]> pixels_;
    GLuint name_ = 0;
    std::uint32_t generation_ = 0;   // of the device, when the name was given
    std::uint32_t rowsCurrent_ = 0;  // of those that OpenGL has
};

class GlSprite final : public ISprite {
  public:
    explicit GlSprite(GlDevice& device) : device_(device) {}

    std::uint32_t begin(std::uint32_t flags) override;
    std::uint32_t setTransform(const SpriteScale& scale) override;
    // Unscaled, a pixel is a pixel of the texture. Scaled, the four around a place are mixed, of those inside
    // the source only. An empty source draws nothing.
    std::uint32_t draw(ISpriteTexture& texture, const Rectangle& source, const SpritePosition& position,
                       std::uint32_t color) override;
    std::uint32_t end() override { return 0; }

  private:
    void setSampling(bool mixed) const;

    GlDevice& device_;
    SpriteScale scale_;
};

// What has been drawn. Locking waits until all of it is.
class GlBackBuffer final : public ISpriteSurface {
  public:
    explicit GlBackBuffer(GlDevice& device) : device_(device) {}

    std::uint32_t lock(LockedPixels& pixels) override;
    std::uint32_t unlock() override { return 0; }
    std::uint32_t getDC(TavraDC&) override { return sprite_error::kInvalidCall; }
    std::uint32_t releaseDC(TavraDC) override { return sprite_error::kInvalidCall; }

  private:
    void toTopDown(std::size_t pitch);

    GlDevice& device_;
    std::vector<std::uint8_t> pixels_;
};

}  // namespace tavra::platform
