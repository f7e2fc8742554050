// Drawing with textures: a device on a window, which shows parts of textures as sprites, scaled and blended.
//
// Windows: Direct3D 9 and the D3DX sprite. Linux: OpenGL ES 2 through EGL on the X11 window. Both are loaded
// when the first object is made. What is made belongs to the caller, and goes before what made it. One thread
// at a time; drawing, from clear to present, happens on the window's thread. Operations give 0 or a failure
// code, of the system or of Direct3D.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/rectangle.h"
#include "tavra/tavra_types.h"

namespace tavra::platform {

// Codes of Direct3D 9, on every system.
namespace sprite_error {
inline constexpr std::uint32_t kDeviceLost = 0x88760868;
inline constexpr std::uint32_t kDeviceNotReset = 0x88760869;  // lost, and may be reset
inline constexpr std::uint32_t kNotAvailable = 0x8876086A;
inline constexpr std::uint32_t kInvalidCall = 0x8876086C;
}  // namespace sprite_error

// Four bytes a pixel; blue in the lowest, alpha or nothing in the highest.
enum class SpriteFormat : std::uint32_t { A8R8G8B8 = 21, X8R8G8B8 = 22 };

enum class DeviceKind : std::uint32_t { Hardware = 1, Reference = 2 };

// How a device works: bits.
inline constexpr std::uint32_t kPreserveFloatingPoint = 2;
inline constexpr std::uint32_t kSoftwareVertices = 32;
inline constexpr std::uint32_t kHardwareVertices = 64;

enum class SwapEffect : std::uint32_t { Discard = 1, Copy = 3 };

inline constexpr std::uint32_t kPresentAtOnce = 0x80000000;
inline constexpr std::uint32_t kPresentEachBlank = 1;

inline constexpr std::uint32_t kDepth16 = 80;

struct PresentParameters {
    std::uint32_t backBufferWidth = 0;  // 0: the window's
    std::uint32_t backBufferHeight = 0;
    SpriteFormat backBufferFormat = SpriteFormat::A8R8G8B8;
    std::uint32_t backBufferCount = 1;
    SwapEffect swapEffect = SwapEffect::Discard;
    TavraWindow deviceWindow = nullptr;  // null: the focus window
    bool windowed = true;
    bool autoDepthStencil = true;
    std::uint32_t depthStencilFormat = kDepth16;
    std::uint32_t flags = 0;
    std::uint32_t interval = kPresentAtOnce;

    friend bool operator==(const PresentParameters&, const PresentParameters&) = default;
};

struct DisplayMode {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

struct LockedPixels {
    std::uint8_t* bits = nullptr;
    std::size_t pitch = 0;  // bytes from row to row
};

inline constexpr std::uint32_t kClearTarget = 1;
inline constexpr std::uint32_t kClearDepth = 2;

inline constexpr std::uint32_t kSpriteAlphaBlend = 16;

// A matrix that differs from the identity on its diagonal only.
struct SpriteScale {
    float x = 1;
    float y = 1;
};

struct SpritePosition {
    float x = 0;
    float y = 0;
};

// Pixels that survive the loss of their device.
class ISpriteTexture {
  public:
    virtual ~ISpriteTexture() = default;
    virtual std::uint32_t lock(LockedPixels& pixels) = 0;
    virtual std::uint32_t unlock() = 0;
};

// Pixels in system memory, which an application draws on; or a back buffer, which is only locked.
class ISpriteSurface {
  public:
    virtual ~ISpriteSurface() = default;
    virtual std::uint32_t lock(LockedPixels& pixels) = 0;  // for reading
    virtual std::uint32_t unlock() = 0;
    // An HDC or cairo_t*. After the release the highest byte of each pixel is 0.
    virtual std::uint32_t getDC(TavraDC& dc) = 0;
    virtual std::uint32_t releaseDC(TavraDC dc) = 0;
};

class ISprite {
  public:
    virtual ~ISprite() = default;
    virtual std::uint32_t begin(std::uint32_t flags) = 0;
    virtual std::uint32_t setTransform(const SpriteScale& scale) = 0;
    // The source's left upper corner lands on the position, which the transform scales with the rest. The
    // texture's channels are multiplied by those of the colour, 0xAARRGGBB.
    virtual std::uint32_t draw(ISpriteTexture& texture, const Rectangle& source,
                               const SpritePosition& position, std::uint32_t color) = 0;
    virtual std::uint32_t end() = 0;
};

class ISpriteDevice {
  public:
    virtual ~ISpriteDevice() = default;

    // 0, kDeviceLost, or kDeviceNotReset.
    virtual std::uint32_t testCooperativeLevel() = 0;
    // Textures stay; every sprite must have gone.
    virtual std::uint32_t reset(const PresentParameters& parameters) = 0;

    virtual std::uint32_t createTexture(Size size, SpriteFormat format,
                                        std::unique_ptr<ISpriteTexture>& texture) = 0;
    virtual std::uint32_t createOffscreenSurface(Size size, SpriteFormat format,
                                                 std::unique_ptr<ISpriteSurface>& surface) = 0;
    virtual std::uint32_t createSprite(std::unique_ptr<ISprite>& sprite) = 0;

    // Empty rectangles clear nothing.
    virtual std::uint32_t clear(std::span<const Rectangle> rectangles, std::uint32_t flags,
                                std::uint32_t color, float depth, std::uint32_t stencil) = 0;
    virtual std::uint32_t beginScene() = 0;
    virtual std::uint32_t endScene() = 0;
    virtual std::uint32_t backBuffer(std::unique_ptr<ISpriteSurface>& surface) = 0;
    virtual std::uint32_t present() = 0;
};

struct DeviceRequest {
    DeviceKind kind = DeviceKind::Hardware;
    TavraWindow window = nullptr;
    Size client;  // of the window's client area
    std::uint32_t behaviour = 0;
};

// Makes devices on the first display adapter.
class ISpriteObject {
  public:
    virtual ~ISpriteObject() = default;
    virtual std::uint32_t displayMode(DisplayMode& mode) = 0;
    virtual std::uint32_t createDevice(const DeviceRequest& request, const PresentParameters& parameters,
                                       std::unique_ptr<ISpriteDevice>& device) = 0;
};

class ISpriteSystem {
  public:
    // 126: the libraries are not installed; 127: they lack an operation; 1459: no display (Linux).
    virtual std::uint32_t createObject(std::unique_ptr<ISpriteObject>& object) = 0;

  protected:
    ~ISpriteSystem() = default;
};

// The system's own.
ISpriteSystem& spriteSystem();

}  // namespace tavra::platform
