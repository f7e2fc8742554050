// Drawing through surfaces of a device, with a surface of its own for the application: what is painted there
// shows over the image, except where it has the colour key. What its two kinds have in common.
//
// Surfaces are never restored one by one: a loss, another monitor, another size rebuild all of them, and
// where that failed there are none until the next operation tries once more. drawMutex guards everything.
// While an application has a context, nothing is painted or rebuilt on any thread, and other threads that
// want a context, a clear surface or another key wait for its release, or for the end of the window.
#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "display/draw_image.h"
#include "display/draw_mutex.h"
#include "platform/surface_device.h"

namespace tavra {

class CDrawImageDirectDraw : public CDrawImage {
  public:
    // Order of the pixel formats that are tried: 0 or 1.
    CDrawImageDirectDraw(platform::IWindowSystem& system, platform::ISurfaceSystem& surfaces,
                         std::uint32_t order)
        : CDrawImage(system), surfaces_(surfaces), pixelFormatOrder(order) {}

    // Of GetDC, SetColorKey and ResetOverlay, which change nothing then: this thread has the context already.
    static constexpr std::uint32_t kWouldDeadlock = 1131;
    std::uint32_t GetDC(TavraDC* dc) override;
    // 87: not the context that is out. 288: this thread has none.
    std::uint32_t ReleaseDC(TavraDC dc) override;
    std::uint32_t SetColorKey(std::uint32_t color) override;
    std::uint32_t GetColorKey(std::uint32_t* color) override;
    std::uint32_t SetImageSize(std::uint32_t width, std::uint32_t height, std::uint32_t bits) override;
    std::uint32_t OnSize(std::uint32_t kind, std::uint32_t width, std::uint32_t height) override;
    std::uint32_t Initialize() override;
    std::uint32_t DrawImage(const Rectangle& source, const Rectangle& destination,
                            const BackgroundRectangles& background, const DrawImageInfo& info) override;
    void endWaiting() override { drawMutex.end(); }

    // Makes everything anew. On a failure there is nothing.
    virtual std::uint32_t CreateSurfaces() = 0;
    // Shows what the surfaces hold. By design: a failure ends it, and nobody is told.
    virtual std::uint32_t Present(const Rectangle& source, const Rectangle& destination,
                                  const BackgroundRectangles& background) = 0;

  protected:
    using Surface = std::shared_ptr<platform::ISurface>;
    static constexpr std::uint32_t kNotReady = platform::kSurfaceNotReady;

    bool enter() override { return drawMutex.lockUnlessLent(); }
    void leave() override { drawMutex.unlock(); }

    std::uint32_t refused() const;

    // Parts of CreateSurfaces.
    virtual void releaseAll();
    std::uint32_t orNothing(Status built);
    Status FindMonitor(platform::Monitor& monitor, std::optional<platform::SurfaceDeviceId>& device) const;
    Status createDevice();
    Status createSurface(platform::SurfaceKind kind, const platform::SurfaceFormat& format,
                         const platform::Size& size, Surface& surface) const;
    Status setKeyOfDrawSurface() const;
    Status createClipper();

    // Success where the surfaces are there, or have been made anew.
    std::uint32_t restoreIfLost();
    // Makes them anew if the window is on another monitor now.
    std::uint32_t followMonitor();
    Status clear(platform::ISurface& surface, std::uint32_t color) const;
    static Status convertFor(platform::ISurface& surface, std::uint32_t color, std::uint32_t& pixel);

    platform::Size clientSize() const;
    platform::Size imageSize() const;                      // with the sides as they are shown
    Rectangle onMonitor(const Rectangle& inClient) const;  // from the client area
    Rectangle clientOnMonitor() const;
    bool fillBackground(const BackgroundRectangles& background) const;

    platform::ISurfaceSystem& surfaces_;
    const std::uint32_t pixelFormatOrder;
    std::shared_ptr<platform::ISurfaceDevice> directDraw;
    Surface primarySurface;  // the screen
    Surface imageSurface;    // what the image is converted to
    Surface drawSurface;     // the application's, as large as the client area
    std::shared_ptr<platform::IClipper> clipper;
    std::uint32_t colorKey = 0xFF00FF;  // 0x00BBGGRR
    std::uint32_t rotated = 0;          // as of the last image
    DrawMutex drawMutex;
    std::uint32_t surfacesReady = 0;
    Rectangle monitorRect;
    platform::MonitorHandle monitorHandle = nullptr;

  private:
    struct ImageFormat {
        std::uint32_t width, height, bits;
    };

    std::uint32_t takeImageSize();
    void followImage(const DrawImageInfo& info);
    Status upload(const DrawImageInfo& info, const platform::LockedSurface& locked);

    std::mutex nextImageMutex_;
    std::optional<ImageFormat> nextImage_;  // that is still to be stored
    TavraDC lentContext_ = nullptr;         // that is out on drawSurface, which stays meanwhile
};

}  // namespace tavra
