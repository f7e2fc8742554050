// Drawing through surfaces: the image is an overlay that shows wherever the screen has the key colour.
#pragma once

#include "display/draw_image_direct_draw.h"

namespace tavra {

class CDrawImageDirectDrawOverlay final : public CDrawImageDirectDraw {
  public:
    using CDrawImageDirectDraw::CDrawImageDirectDraw;

    std::uint32_t ReleaseDC(TavraDC dc) override;
    std::uint32_t EraseBackground(platform::IPaint* deviceContext) override;
    std::uint32_t ResetOverlay() override;
    std::uint32_t OnMove(std::int32_t x, std::int32_t y) override;
    std::uint32_t CreateSurfaces() override;
    std::uint32_t Present(const Rectangle& source, const Rectangle& destination,
                          const BackgroundRectangles& background) override;

  private:
    Status build();
    Status createOverlay();
    Status paintKey();
    Status copyDrawing(const Rectangle& to, std::int32_t fromX, std::int32_t fromY);

    Rectangle overlayDest;          // where the overlay is on the monitor; all zero: nowhere yet
    std::int32_t overlayFromX = 0;  // the pixel of the drawing that is at its corner
    std::int32_t overlayFromY = 0;
    bool reloadOverlayDest = false;
    std::uint32_t overlayKeyColor = 0;  // as the screen shows it, 0x00RRGGBB
};

}  // namespace tavra
