// A surface in memory. Formats: 32 bits with red at 0xFF0000, 16 bits with red at 0xF800, and UYVY for
// overlays. Scaling takes the source pixel under the middle of each pixel.
#pragma once

#include <cstdlib>
#include <memory>
#include <optional>
#include <vector>

#include "platform/bitmap.h"
#include "platform/surface_device.h"

namespace tavra::platform {

inline constexpr SurfaceFormat kSoftware32{32, 0, 0xFF0000, 0xFF00, 0xFF};
inline constexpr SurfaceFormat kSoftware565{16, 0, 0xF800, 0x7E0, 0x1F};
inline constexpr SurfaceFormat kSoftwareUyvy{16, kFourCcUyvy, 0, 0, 0};

// An overlay that is shown.
struct SoftwareOverlay {
    Rectangle source;
    Rectangle destination;  // on the primary surface
    std::uint32_t key = 0;
};

class SoftwareSurface final : public ISurface {
  public:
    // Zero pixels. kSurfaceInvalidRectangle: no size; kSurfaceOutOfMemory.
    static Status make(const SurfaceDescription& description, std::shared_ptr<ISurface>& surface);
    ~SoftwareSurface() override;
    SoftwareSurface(const SoftwareSurface&) = delete;
    SoftwareSurface& operator=(const SoftwareSurface&) = delete;

    Status format(SurfaceFormat& format) override;
    Status testLost() override { return Status(); }
    Status blit(const Rectangle& destination, ISurface& from, const Rectangle& source) override;
    Status fill(const Rectangle* destination, std::uint32_t color) override;
    Status blitKeyed(std::int32_t x, std::int32_t y, ISurface& from, const Rectangle& source) override;
    Status lockForWriting(LockedSurface& locked) override;
    Status unlock() override;
    Status setSourceKey(std::uint32_t color) override;
    Status setClipper(IClipper& clipper) override;
    Status showOverlay(const Rectangle& source, ISurface& screen, const Rectangle& destination,
                       std::uint32_t key) override;
    Status getDC(TavraDC& dc) override;
    Status releaseDC(TavraDC dc) override;
    Status readFirstPixel(std::uint32_t& color) override;
    Status paintSolid(std::uint32_t color) override;

    Size size() const { return description_.size; }
    bool isOverlay() const { return description_.kind == SurfaceKind::Overlay; }
    const SoftwareOverlay& overlay() const { return overlay_; }
    const std::uint8_t* row(std::int64_t y) const;
    // 0x00RRGGBB.
    std::uint32_t colorAt(std::int64_t x, std::int64_t y) const;

  private:
    class Context;
    struct FreeMemory {
        void operator()(std::uint8_t* memory) const { std::free(memory); }
    };

    explicit SoftwareSurface(const SurfaceDescription& description);
    std::uint8_t* row(std::int64_t y);
    bool holds(const Rectangle& rectangle) const;
    Rectangle whole() const;
    void copyRow(const SoftwareSurface& from, std::int64_t fromY, std::uint8_t* to,
                 std::size_t columns) const;

    const SurfaceDescription description_;
    const std::uint32_t pixelBytes_;
    const std::size_t pitch_;
    std::unique_ptr<std::uint8_t[], FreeMemory> pixels_;
    bool untouched_ = true;  // all zero, and so far no memory but a promise of it
    bool clipped_ = false;   // what lies outside is left out; otherwise it is an error
    bool locked_ = false;
    std::uint32_t key_ = 0;
    SoftwareOverlay overlay_;
    std::vector<std::size_t> columns_;  // of the source, for each pixel of a row that is drawn
    std::unique_ptr<Context> context_;
};

}  // namespace tavra::platform
