// A sprite device with OpenGL, on a window of its own inside the one that it is made for: it covers the
// client area, so that what the outer window paints, its scroll bars, and what is drawn here do not meet.
//
// Any thread may make, use and end it, one at a time; only drawing, from clear to present, makes OpenGL
// current, and on the thread that draws. An application's own OpenGL is never touched: creation and reset
// work on a thread of their own, which has no other to be mixed up with.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/linux/gl_display.h"
#include "platform/sprite_device.h"

namespace tavra::platform {

class GlDevice final : public ISpriteDevice {
  public:
    explicit GlDevice(const GlDisplay& display) : on_(display) {}
    ~GlDevice() override;

    // 1400: there is no such window. kNotAvailable: OpenGL does not work on it.
    std::uint32_t create(const DeviceRequest& request, const PresentParameters& parameters);

    std::uint32_t testCooperativeLevel() override;
    std::uint32_t reset(const PresentParameters& parameters) override;
    // kInvalidCall: larger than OpenGL takes.
    std::uint32_t createTexture(Size size, SpriteFormat format,
                                std::unique_ptr<ISpriteTexture>& texture) override;
    std::uint32_t createOffscreenSurface(Size size, SpriteFormat format,
                                         std::unique_ptr<ISpriteSurface>& surface) override;
    std::uint32_t createSprite(std::unique_ptr<ISprite>& sprite) override;
    std::uint32_t clear(std::span<const Rectangle> rectangles, std::uint32_t flags, std::uint32_t color,
                        float depth, std::uint32_t stencil) override;
    std::uint32_t beginScene() override { return enter(); }
    std::uint32_t endScene() override { return 0; }
    std::uint32_t backBuffer(std::unique_ptr<ISpriteSurface>& surface) override;
    std::uint32_t present() override;

    // For what is made on it.

    const GlLibrary& gl() const { return *on_.gl; }
    Size size() const { return size_; }
    // Makes OpenGL current on this thread, until present.
    std::uint32_t enter();
    // Grows when everything that OpenGL had is gone.
    std::uint32_t generation() const { return generation_; }
    // Is freed when OpenGL is current the next time.
    void discard(GLuint texture) { discarded_.push_back(texture); }

    struct Uniforms {
        GLint place = -1, part = -1, limits = -1, color = -1, opaque = -1;
    };
    const Uniforms& uniforms() const { return uniforms_; }

  private:
    std::uint32_t elsewhere(const std::function<std::uint32_t()>& work) const;
    std::uint32_t createChild(TavraWindow parent);
    std::uint32_t createContext(const PresentParameters& parameters);
    bool prepare();
    GLuint compile(GLenum kind, const char* text) const;
    void destroyContext();
    bool windowExists() const;
    void leave();
    std::uint32_t failed();

    const GlDisplay& on_;
    xcb_window_t child_ = 0;
    Size size_;
    EGLSurface surface_ = EGL_NO_SURFACE;
    EGLContext context_ = EGL_NO_CONTEXT;
    bool current_ = false;
    bool lost_ = false;
    std::uint32_t generation_ = 0;
    std::uint32_t largestSide_ = 0;
    Uniforms uniforms_;
    std::vector<GLuint> discarded_;
};

}  // namespace tavra::platform
