#include "display/draw_image_factory.h"

#include "display/draw_image_direct_draw_offscreen.h"
#include "display/draw_image_direct_draw_overlay.h"
#include "display/draw_image_direct_x.h"
#include "display/draw_image_gdi.h"
#include "platform/sprite_device.h"
#include "platform/surface_device.h"

namespace tavra {
namespace {

constexpr std::uint32_t k16BitFirst = 0, k32BitFirst = 1;  // orders of pixel formats

template <typename BackEnd>
std::shared_ptr<CDrawImage> onSurfaces(platform::IWindowSystem& system, std::uint32_t order) {
    return std::make_shared<BackEnd>(system, platform::surfaceSystem(), order);
}

std::shared_ptr<CDrawImage> textured(platform::IWindowSystem& system, std::uint32_t presentMode,
                                     bool preserveFloatingPoint) {
    return std::make_shared<CDrawImageDirectX>(system, platform::spriteSystem(), presentMode,
                                               preserveFloatingPoint);
}

}  // namespace

std::shared_ptr<CDrawImage> makeDrawImage(std::uint8_t displayMode, platform::IWindowSystem& system) {
    switch (displayMode) {
        case 1: return onSurfaces<CDrawImageDirectDrawOffscreen>(system, k16BitFirst);
        case 2: return onSurfaces<CDrawImageDirectDrawOverlay>(system, k16BitFirst);
        case 3: return onSurfaces<CDrawImageDirectDrawOffscreen>(system, k32BitFirst);
        case 4: return onSurfaces<CDrawImageDirectDrawOverlay>(system, k32BitFirst);
        case 5:
        case 6:
        case 7: return textured(system, displayMode - 5u, false);
        case 9:
        case 10:
        case 11: return textured(system, displayMode - 9u, true);
        case 8: return std::make_shared<CDrawImageGDI>(system, CDrawImageGDI::kHalftone);
        default: return std::make_shared<CDrawImageGDI>(system, CDrawImageGDI::kColorOnColor);
    }
}

}  // namespace tavra
