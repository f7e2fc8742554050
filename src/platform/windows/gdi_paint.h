// Painting with GDI on a device context. The context is the caller's, and stays as long as the paint.
#pragma once

#include <windows.h>

#include "platform/paint.h"

namespace tavra::platform {

class GdiPaint final : public IPaint {
  public:
    explicit GdiPaint(HDC dc) : dc_(dc) {}

    Status copy(const Rectangle& destination, const Bitmap& bitmap, std::int32_t sourceX,
                std::int32_t sourceY) override;
    Status stretch(const Rectangle& destination, const Bitmap& bitmap, const Rectangle& source,
                   StretchQuality quality) override;
    Status fillBlack(const Rectangle& rectangle) override;
    Status text(std::int32_t x, std::int32_t y, std::string_view line) override;
    std::int32_t textHeight() override;
    Status line(std::int32_t fromX, std::int32_t fromY, std::int32_t toX, std::int32_t toY) override;

  private:
    HDC dc_;
};

}  // namespace tavra::platform
