#include "platform/windows/d3d_sprites.h"

namespace tavra::platform {

std::uint32_t D3dTexture::lock(LockedPixels& pixels) {
    D3DLOCKED_RECT locked{};
    const HRESULT result = texture_->LockRect(0, &locked, nullptr, 0);
    pixels = {static_cast<std::uint8_t*>(locked.pBits), static_cast<std::size_t>(locked.Pitch)};
    return codeOf(result);
}

std::uint32_t D3dSurface::lock(LockedPixels& pixels) {
    D3DLOCKED_RECT locked{};
    const HRESULT result = surface_->LockRect(&locked, nullptr, D3DLOCK_READONLY);
    pixels = {static_cast<std::uint8_t*>(locked.pBits), static_cast<std::size_t>(locked.Pitch)};
    return codeOf(result);
}

std::uint32_t D3dSurface::getDC(TavraDC& dc) {
    HDC native = nullptr;
    const HRESULT result = surface_->GetDC(&native);
    if (SUCCEEDED(result)) dc = native;
    return codeOf(result);
}

// GDI leaves the byte without a colour 0, but for a few operations that copy what a bitmap has there.
std::uint32_t D3dSurface::releaseDC(TavraDC dc) {
    if (const HRESULT result = surface_->ReleaseDC(static_cast<HDC>(dc)); FAILED(result))
        return codeOf(result);
    D3DSURFACE_DESC description{};
    D3DLOCKED_RECT locked{};
    if (FAILED(surface_->GetDesc(&description)) || FAILED(surface_->LockRect(&locked, nullptr, 0))) return 0;
    auto* const rows = static_cast<std::uint8_t*>(locked.pBits);
    for (UINT y = 0; y < description.Height; ++y) {
        std::uint8_t* const row = rows + static_cast<std::size_t>(y) * static_cast<std::size_t>(locked.Pitch);
        for (std::size_t x = 0; x < description.Width; ++x) row[4 * x + 3] = 0;
    }
    return codeOf(surface_->UnlockRect());
}

// All of it is written out: a matrix without arguments, {} or not, has anything in it.
std::uint32_t D3dSprite::setTransform(const SpriteScale& scale) {
    const D3DXMATRIX matrix(scale.x, 0, 0, 0,  //
                            0, scale.y, 0, 0,  //
                            0, 0, 1, 0,        //
                            0, 0, 0, 1);
    return codeOf(sprite_->SetTransform(&matrix));
}

std::uint32_t D3dSprite::draw(ISpriteTexture& texture, const Rectangle& source,
                              const SpritePosition& position, std::uint32_t color) {
    const RECT part{source.left, source.top, source.right, source.bottom};
    D3DXVECTOR3 corner;
    corner.x = position.x;
    corner.y = position.y;
    corner.z = 0;
    return codeOf(sprite_->Draw(static_cast<D3dTexture&>(texture).native(), &part, nullptr, &corner, color));
}

}  // namespace tavra::platform
