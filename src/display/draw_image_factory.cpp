#include "display/draw_image_factory.h"

#include "display/draw_image_gdi.h"

namespace tavra {

std::shared_ptr<CDrawImage> makeDrawImage(std::uint8_t displayMode, platform::IWindowSystem& system) {
    switch (displayMode) {
        case 1:
        case 2:
        case 3:
        case 4:
        case 5:
        case 6:
        case 7:
        case 9:
        case 10:
        case 11: return nullptr;
        case 8: return std::make_shared<CDrawImageGDI>(system, CDrawImageGDI::kHalftone);
        default: return std::make_shared<CDrawImageGDI>(system, CDrawImageGDI::kColorOnColor);
    }
}

}  // namespace tavra
