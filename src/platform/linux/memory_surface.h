// A drawing surface in memory, which cairo draws on.
#pragma once

#include <memory>

#include "platform/bitmap.h"
#include "platform/sprite_device.h"

namespace tavra::platform {

class MemorySurface final : public ISpriteSurface {
  public:
    // 8: out of memory.
    std::uint32_t create(Size size);

    std::uint32_t lock(LockedPixels& pixels) override;
    std::uint32_t unlock() override;
    // 126: cairo is not installed, or cannot draw on so large a surface.
    std::uint32_t getDC(TavraDC& dc) override;
    std::uint32_t releaseDC(TavraDC dc) override;

  private:
    Bitmap bitmap_;
    std::unique_ptr<MemoryContext> context_;
};

}  // namespace tavra::platform
