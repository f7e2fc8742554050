// Plain drawing: the image straight onto the window, without a surface for the application.
#pragma once

#include "display/draw_image.h"

namespace tavra {

class CDrawImageGDI final : public CDrawImage {
  public:
    // Stretch modes: whole pixels, or neighbours mixed.
    static constexpr std::uint32_t kColorOnColor = 3, kHalftone = 4;

    CDrawImageGDI(platform::IWindowSystem& system, std::uint32_t mode)
        : CDrawImage(system), stretchMode(mode) {}

    // A part that cannot be drawn costs nothing else; of several failures the first is told.
    std::uint32_t DrawImage(const Rectangle& source, const Rectangle& destination,
                            const BackgroundRectangles& background, const DrawImageInfo& info) override;

  private:
    Status drawBitmap(const Rectangle& source, const Rectangle& destination, const DrawImageInfo& info) const;

    const std::uint32_t stretchMode;
};

}  // namespace tavra
