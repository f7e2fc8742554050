#include "platform/linux/gl_sprites.h"

#include <algorithm>
#include <new>

namespace tavra::platform {

// Textures.

GlTexture::~GlTexture() {
    if (name_ != 0 && generation_ == device_.generation()) device_.discard(name_);
}

std::uint32_t GlTexture::create() {
    pixels_.reset(new (std::nothrow) std::uint8_t[std::size_t{size_.width} * size_.height * 4]());
    return pixels_ != nullptr ? 0 : error::kOutOfMemory;
}

std::uint32_t GlTexture::lock(LockedPixels& pixels) {
    pixels = {pixels_.get(), std::size_t{size_.width} * 4};
    return 0;
}

std::uint32_t GlTexture::unlock() {
    rowsCurrent_ = 0;
    return 0;
}

void GlTexture::bind(std::uint32_t rows) {
    const GlLibrary& gl = device_.gl();
    const auto width = static_cast<GLsizei>(size_.width);
    gl.glActiveTexture(GL_TEXTURE0);
    if (name_ == 0 || generation_ != device_.generation()) {
        generation_ = device_.generation();
        rowsCurrent_ = 0;
        gl.glGenTextures(1, &name_);
        gl.glBindTexture(GL_TEXTURE_2D, name_);
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        gl.glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        gl.glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, static_cast<GLsizei>(size_.height), 0, GL_RGBA,
                        GL_UNSIGNED_BYTE, nullptr);
    } else {
        gl.glBindTexture(GL_TEXTURE_2D, name_);
    }
    rows = std::min(rows, size_.height);
    if (rows <= rowsCurrent_) return;
    gl.glTexSubImage2D(GL_TEXTURE_2D, 0, 0, static_cast<GLint>(rowsCurrent_), width,
                       static_cast<GLsizei>(rows - rowsCurrent_), GL_RGBA, GL_UNSIGNED_BYTE,
                       pixels_.get() + std::size_t{rowsCurrent_} * size_.width * 4);
    rowsCurrent_ = rows;
}

// Sprites.

std::uint32_t GlSprite::begin(std::uint32_t flags) {
    if (const std::uint32_t failure = device_.enter(); failure != 0) return failure;
    scale_ = {};
    if ((flags & kSpriteAlphaBlend) != 0) {
        device_.gl().glEnable(GL_BLEND);
    } else {
        device_.gl().glDisable(GL_BLEND);
    }
    return 0;
}

std::uint32_t GlSprite::setTransform(const SpriteScale& scale) {
    scale_ = scale;
    return 0;
}

std::uint32_t GlSprite::draw(ISpriteTexture& drawn, const Rectangle& source, const SpritePosition& position,
                             std::uint32_t color) {
    if (const std::uint32_t failure = device_.enter(); failure != 0) return failure;
    if (source.empty()) return 0;
    const GlLibrary& gl = device_.gl();
    auto& texture = static_cast<GlTexture&>(drawn);
    const Size whole = texture.size();
    texture.bind(static_cast<std::uint32_t>(std::max(source.bottom, 0)));
    const bool mixed = scale_.x != 1 || scale_.y != 1;
    setSampling(mixed);

    // From the window's corner, to its middle and upwards.
    const float perX = 2 / static_cast<float>(device_.size().width);
    const float perY = 2 / static_cast<float>(device_.size().height);
    const float left = position.x * scale_.x, top = position.y * scale_.y;
    const float right = left + static_cast<float>(source.width()) * scale_.x;
    const float bottom = top + static_cast<float>(source.height()) * scale_.y;
    const GlDevice::Uniforms& uniforms = device_.uniforms();
    gl.glUniform4f(uniforms.place, left * perX - 1, 1 - top * perY, right * perX - 1, 1 - bottom * perY);

    const auto width = static_cast<float>(whole.width), height = static_cast<float>(whole.height);
    const auto u0 = static_cast<float>(source.left), v0 = static_cast<float>(source.top);
    const auto u1 = static_cast<float>(source.right), v1 = static_cast<float>(source.bottom);
    gl.glUniform4f(uniforms.part, u0 / width, v0 / height, u1 / width, v1 / height);
    // The middles of the outermost pixels.
    gl.glUniform4f(uniforms.limits, (u0 + 0.5f) / width, (v0 + 0.5f) / height, (u1 - 0.5f) / width,
                   (v1 - 0.5f) / height);
    const auto part = [color](unsigned shift) { return static_cast<float>(color >> shift & 0xFF) / 255; };
    gl.glUniform4f(uniforms.color, part(16), part(8), part(0), part(24));
    gl.glUniform1f(uniforms.opaque, texture.opaque() ? 1 : 0);
    gl.glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    return 0;
}

void GlSprite::setSampling(bool mixed) const {
    const GLint filter = mixed ? GL_LINEAR : GL_NEAREST;
    device_.gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    device_.gl().glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
}

// The back buffer.

std::uint32_t GlBackBuffer::lock(LockedPixels& pixels) {
    if (const std::uint32_t failure = device_.enter(); failure != 0) return failure;
    const GlLibrary& gl = device_.gl();
    const Size size = device_.size();
    const std::size_t pitch = std::size_t{size.width} * 4;
    try {
        pixels_.resize(pitch * size.height);
    } catch (const std::bad_alloc&) {
        return error::kOutOfMemory;
    }
    gl.glFinish();
    gl.glReadPixels(0, 0, static_cast<GLsizei>(size.width), static_cast<GLsizei>(size.height), GL_RGBA,
                    GL_UNSIGNED_BYTE, pixels_.data());
    toTopDown(pitch);
    pixels = {pixels_.data(), pitch};
    return 0;
}

// OpenGL has the lowest row first, and red the lowest byte.
void GlBackBuffer::toTopDown(std::size_t pitch) {
    const std::size_t rows = pixels_.size() / pitch;
    for (std::size_t y = 0; y < rows / 2; ++y) {
        std::swap_ranges(pixels_.data() + y * pitch, pixels_.data() + (y + 1) * pitch,
                         pixels_.data() + (rows - 1 - y) * pitch);
    }
    for (std::size_t i = 0; i < pixels_.size(); i += 4) std::swap(pixels_[i], pixels_[i + 2]);
}

}  // namespace tavra::platform
