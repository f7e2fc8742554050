// What a Direct3D 9 device makes: textures, surfaces and the D3DX sprite. Each holds its own reference.
#pragma once

#include <d3d9.h>
#include <d3dx9core.h>

#include <memory>

#include "platform/sprite_device.h"

namespace tavra::platform {

struct ReleaseObject {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <typename T>
using Owned = std::unique_ptr<T, ReleaseObject>;

inline std::uint32_t codeOf(HRESULT result) {
    return FAILED(result) ? static_cast<std::uint32_t>(result) : 0;
}

class D3dTexture final : public ISpriteTexture {
  public:
    explicit D3dTexture(IDirect3DTexture9* texture) : texture_(texture) {}

    std::uint32_t lock(LockedPixels& pixels) override;
    std::uint32_t unlock() override { return codeOf(texture_->UnlockRect(0)); }
    IDirect3DTexture9* native() const { return texture_.get(); }

  private:
    Owned<IDirect3DTexture9> texture_;
};

class D3dSurface final : public ISpriteSurface {
  public:
    explicit D3dSurface(IDirect3DSurface9* surface) : surface_(surface) {}

    std::uint32_t lock(LockedPixels& pixels) override;
    std::uint32_t unlock() override { return codeOf(surface_->UnlockRect()); }
    std::uint32_t getDC(TavraDC& dc) override;
    std::uint32_t releaseDC(TavraDC dc) override;

  private:
    Owned<IDirect3DSurface9> surface_;
};

// Scaled images are sampled as the sprite chooses: linear, or better where the hardware has better.
class D3dSprite final : public ISprite {
  public:
    explicit D3dSprite(ID3DXSprite* sprite) : sprite_(sprite) {}

    std::uint32_t begin(std::uint32_t flags) override { return codeOf(sprite_->Begin(flags)); }
    std::uint32_t setTransform(const SpriteScale& scale) override;
    std::uint32_t draw(ISpriteTexture& texture, const Rectangle& source, const SpritePosition& position,
                       std::uint32_t color) override;
    std::uint32_t end() override { return codeOf(sprite_->End()); }

  private:
    Owned<ID3DXSprite> sprite_;
};

}  // namespace tavra::platform
