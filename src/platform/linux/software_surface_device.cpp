// Surfaces in memory. The primary one stands for the whole screen, is of one window alone, and appears in
// that window when it is painted.
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "platform/linux/pixel_paint.h"
#include "platform/linux/software_surface.h"
#include "platform/surface_device.h"
#include "platform/window.h"

namespace tavra::platform {
namespace {

class SoftwareClipper final : public IClipper {};

// Puts an overlay's pixels on the row of a window, wherever the screen has the key colour.
void composeRow(const SoftwareSurface& screen, const SoftwareSurface& image, const Rectangle& client,
                std::int64_t y, std::uint8_t* to) {
    const SoftwareOverlay& overlay = image.overlay();
    const Rectangle& place = overlay.destination;
    if (y < place.top || y >= place.bottom) return;
    const std::int64_t fromY =
        overlay.source.top + (2 * (y - place.top) + 1) * overlay.source.height() / (2 * place.height());
    const std::int64_t left = std::max(place.left, client.left), right = std::min(place.right, client.right);
    for (std::int64_t x = left; x < right; ++x) {
        if (screen.colorAt(x, y) != overlay.key) continue;
        const std::int64_t fromX =
            overlay.source.left + (2 * (x - place.left) + 1) * overlay.source.width() / (2 * place.width());
        const std::uint32_t color = image.colorAt(fromX, fromY);
        std::memcpy(to + (x - client.left) * 4, &color, sizeof color);
    }
}

class SoftwareDevice final : public ISurfaceDevice {
  public:
    Status cooperate(TavraWindow window) override {
        window_ = window;
        return Status();
    }

    Status createSurface(const SurfaceDescription& description, std::shared_ptr<ISurface>& surface) override {
        SurfaceDescription made = description;
        if (made.kind == SurfaceKind::Primary) {
            Rectangle desktop;
            TAVRA_RETURN_IF_ERROR(windowSystem().desktop(desktop));
            made.size = {static_cast<std::uint32_t>(desktop.width()),
                         static_cast<std::uint32_t>(desktop.height())};
            made.format = kSoftware32;
        }
        const bool asOverlay = made.kind == SurfaceKind::Overlay && made.format == kSoftwareUyvy;
        if (made.format != kSoftware32 && made.format != kSoftware565 && !asOverlay) {
            return Status(kSurfaceInvalidFormat);
        }
        TAVRA_RETURN_IF_ERROR(SoftwareSurface::make(made, surface));
        if (made.kind == SurfaceKind::Primary) primary_ = surface;
        if (made.kind == SurfaceKind::Overlay) overlay_ = surface;
        return Status();
    }
    Status createClipper(TavraWindow, std::shared_ptr<IClipper>& clipper) override {
        clipper = std::make_shared<SoftwareClipper>();
        return Status();
    }
    Status overlayAlignment(std::uint32_t& alignment) override {
        alignment = 0;
        return Status();
    }

    void show(IPaint& paint, const Rectangle& client) override {
        const auto* const target = dynamic_cast<const PixelPaint*>(&paint);
        const auto screen = std::static_pointer_cast<const SoftwareSurface>(primary_.lock());
        const auto image = std::static_pointer_cast<const SoftwareSurface>(overlay_.lock());
        if (target == nullptr || screen == nullptr) return;
        const PixelArea& area = target->area();
        const std::int64_t left = std::int64_t{client.left} + area.left;
        const std::int64_t top = std::int64_t{client.top} + area.top;
        const Rectangle seen = onScreen(client, *screen, left, top, area);
        if (seen.empty()) return;
        for (std::int64_t y = seen.top; y < seen.bottom; ++y) {
            std::uint8_t* const to = area.pixels + static_cast<std::size_t>(y - top) * area.stride +
                                     static_cast<std::size_t>(seen.left - left) * 4;
            std::memcpy(to, screen->row(y) + static_cast<std::size_t>(seen.left) * 4,
                        static_cast<std::size_t>(seen.width()) * 4);
            if (image != nullptr) composeRow(*screen, *image, seen, y, to);
        }
    }
    // A window that is gone has nothing to show.
    void showSoon() override { static_cast<void>(windowSystem().invalidate(window_, false)); }

  private:
    // What there is of the client area on the screen and on the paint, whose first pixel is at (left, top) of
    // the screen.
    static Rectangle onScreen(const Rectangle& client, const SoftwareSurface& screen, std::int64_t left,
                              std::int64_t top, const PixelArea& area) {
        const auto first = [](std::int64_t a, std::int64_t b) {
            return static_cast<std::int32_t>(
                std::min<std::int64_t>(std::max({a, b, std::int64_t{0}}), INT32_MAX));
        };
        const auto behind = [](std::int64_t a, std::int64_t b, std::int64_t c) {
            return static_cast<std::int32_t>(std::max<std::int64_t>(std::min({a, b, c}), 0));
        };
        return {first(client.left, left), first(client.top, top),
                behind(client.right, screen.size().width, left + area.width),
                behind(client.bottom, screen.size().height, top + area.height)};
    }

    TavraWindow window_ = nullptr;
    std::weak_ptr<ISurface> primary_;
    std::weak_ptr<ISurface> overlay_;
};

// One monitor: the screen.
class SoftwareSurfaces final : public ISurfaceSystem {
  public:
    Status monitorOf(TavraWindow, Monitor& monitor) override {
        monitor.handle = this;
        return windowSystem().desktop(monitor.rectangle);
    }
    Status enumerateDevices(const std::function<void(MonitorHandle, const SurfaceDeviceId&)>&) override {
        return Status();
    }
    Status createDevice(const SurfaceDeviceId*, std::shared_ptr<ISurfaceDevice>& device) override {
        device = std::make_shared<SoftwareDevice>();
        return Status();
    }
};

}  // namespace

ISurfaceSystem& surfaceSystem() {
    static SoftwareSurfaces system;
    return system;
}

}  // namespace tavra::platform
