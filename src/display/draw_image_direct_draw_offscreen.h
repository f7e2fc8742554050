// Drawing through surfaces: the picture is composed off screen and copied to the screen.
#pragma once

#include "display/draw_image_direct_draw.h"

namespace tavra {

class CDrawImageDirectDrawOffscreen final : public CDrawImageDirectDraw {
  public:
    using CDrawImageDirectDraw::CDrawImageDirectDraw;

    std::uint32_t ResetOverlay() override;
    std::uint32_t OnMove(std::int32_t x, std::int32_t y) override;
    std::uint32_t CreateSurfaces() override;
    // The drawing lies over the image with its left upper corner on that of the destination, and is not
    // scaled with it.
    std::uint32_t Present(const Rectangle& source, const Rectangle& destination,
                          const BackgroundRectangles& background) override;

  private:
    void releaseAll() override;
    Status build();
    Status createWorkSurface(platform::SurfaceFormat& format);

    Surface workSurface;  // as large as the client area, where the picture is composed
};

}  // namespace tavra
