// Drawing surfaces: blocks of pixels in a format of their own, copied to one another and to the screen.
//
// Windows: DirectDraw 7, loaded when the first device is asked for. Linux: pixels in memory, of which the
// window gets its part when it is painted. A surface belongs to whoever keeps it, and keeps its device. One
// thread at a time for all surfaces of a device. Failures are codes of DirectDraw (below) or of the system.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>

#include "base/status.h"
#include "platform/paint.h"
#include "platform/rectangle.h"
#include "tavra/tavra_types.h"

namespace tavra::platform {

// Failures that have the same code on every system.
inline constexpr std::uint32_t kSurfaceInvalidRectangle = 0x88760096;
inline constexpr std::uint32_t kSurfaceInvalidFormat = 0x88760091;
inline constexpr std::uint32_t kSurfaceOutOfMemory = 0x8876017C;
inline constexpr std::uint32_t kSurfaceBusy = 0x887601AE;
inline constexpr std::uint32_t kSurfaceNotReady = 0x887601CC;  // also: there is no surface yet, or any more
inline constexpr std::uint32_t kSurfaceNoContext = 0x88760249;
inline constexpr std::uint32_t kSurfaceContextOut = 0x8876026C;

inline constexpr std::uint32_t kFourCcUyvy = 0x59565955;

struct SurfaceFormat {
    std::uint32_t bits = 0;    // of a pixel
    std::uint32_t fourCc = 0;  // 0: red, green and blue by the masks
    std::uint32_t red = 0;
    std::uint32_t green = 0;
    std::uint32_t blue = 0;

    friend bool operator==(const SurfaceFormat&, const SurfaceFormat&) = default;
};

enum class SurfaceKind {
    Primary,    // the screen; has its own size and format
    Offscreen,  // in video memory
    Overlay,    // in video memory, shown over the screen
};

struct SurfaceDescription {
    SurfaceKind kind = SurfaceKind::Primary;
    Size size;
    SurfaceFormat format;
};

// Pixels of a surface while it is locked.
struct LockedSurface {
    std::uint8_t* pixels = nullptr;
    std::size_t pitch = 0;  // bytes from row to row
};

class IClipper {
  public:
    virtual ~IClipper() = default;
};

class ISurface {
  public:
    virtual ~ISurface() = default;

    virtual Status format(SurfaceFormat& format) = 0;
    virtual Status testLost() = 0;

    // All of these wait until the surface is free. A colour is a pixel in the surface's own format.
    virtual Status blit(const Rectangle& destination, ISurface& from, const Rectangle& source) = 0;
    virtual Status fill(const Rectangle* destination, std::uint32_t color) = 0;  // null: all of it
    // Not scaled; pixels of the source's key colour are left out.
    virtual Status blitKeyed(std::int32_t x, std::int32_t y, ISurface& from, const Rectangle& source) = 0;
    virtual Status lockForWriting(LockedSurface& locked) = 0;
    virtual Status unlock() = 0;

    virtual Status setSourceKey(std::uint32_t color) = 0;
    virtual Status setClipper(IClipper& clipper) = 0;
    // Shows this surface, an overlay, on the screen wherever that has the key colour.
    virtual Status showOverlay(const Rectangle& source, ISurface& screen, const Rectangle& destination,
                               std::uint32_t key) = 0;

    // A context to draw with; nothing else is possible meanwhile.
    virtual Status getDC(TavraDC& dc) = 0;
    virtual Status releaseDC(TavraDC dc) = 0;
    // Through a context, with colours 0x00BBGGRR: the left upper pixel, and a solid brush over everything.
    virtual Status readFirstPixel(std::uint32_t& color) = 0;
    virtual Status paintSolid(std::uint32_t color) = 0;
};

class ISurfaceDevice {
  public:
    virtual ~ISurfaceDevice() = default;

    // As a window among others.
    virtual Status cooperate(TavraWindow window) = 0;
    virtual Status createSurface(const SurfaceDescription& description,
                                 std::shared_ptr<ISurface>& surface) = 0;
    // What is drawn with it stays inside the window.
    virtual Status createClipper(TavraWindow window, std::shared_ptr<IClipper>& clipper) = 0;
    // Pixels that the width of a shown overlay must be a multiple of; 0: any will do.
    virtual Status overlayAlignment(std::uint32_t& alignment) = 0;
    // What stands on the primary surface appears in the window, whose client area has this place on the
    // monitor. Linux: on the paint. Windows: nothing, it has appeared.
    virtual void show(IPaint& paint, const Rectangle& client) = 0;
    // The same outside of a painting. Linux: has the window painted, and does not wait for it.
    virtual void showSoon() = 0;
};

using MonitorHandle = void*;
using SurfaceDeviceId = std::array<std::uint8_t, 16>;  // a GUID

struct Monitor {
    MonitorHandle handle = nullptr;
    Rectangle rectangle;  // on the desktop

    friend bool operator==(const Monitor&, const Monitor&) = default;
};

class ISurfaceSystem {
  public:
    // The monitor under the window's rectangle, the primary one if there is none. Never waits for the
    // window's thread.
    virtual Status monitorOf(TavraWindow window, Monitor& monitor) = 0;
    // Tells each device that stands for one monitor.
    virtual Status enumerateDevices(
        const std::function<void(MonitorHandle, const SurfaceDeviceId&)>& device) = 0;
    // Null: the default device.
    virtual Status createDevice(const SurfaceDeviceId* id, std::shared_ptr<ISurfaceDevice>& device) = 0;

  protected:
    ~ISurfaceSystem() = default;
};

// The system's own.
ISurfaceSystem& surfaceSystem();

}  // namespace tavra::platform
