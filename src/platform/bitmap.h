// Memory of an image that can be drawn on: pixels that the capture thread writes and a device context
// reaches.
//
// Windows: a device-independent section. Linux: zeroed memory aligned to 64 bytes. A Bitmap belongs to its
// image buffer; the pixels may be written by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "base/pixel_format.h"
#include "base/status.h"
#include "tavra/tavra_types.h"

namespace tavra::platform {

// Shape of an image: top row first, rows padded to four bytes.
struct BitmapShape {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bitCount = 0;  // 8 (with a gray palette), 24 or 32

    std::uint32_t stride() const { return static_cast<std::uint32_t>(paddedStride(width, bitCount / 8)); }
    std::size_t bytes() const { return static_cast<std::size_t>(stride()) * height; }
};

class Bitmap {
  public:
    Bitmap() = default;
    ~Bitmap() { free(); }
    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;

    // Makes the pixels, all zero. 8: out of memory. What was there before is freed.
    Status create(const BitmapShape& shape);
    void free();

    const BitmapShape& shape() const { return shape_; }
    std::uint8_t* pixels() const { return pixels_; }
    void* native() const { return native_; }  // Windows: HBITMAP. Linux: null

  private:
    BitmapShape shape_;
    std::uint8_t* pixels_ = nullptr;
    void* native_ = nullptr;
};

class IPaint;

// Memory that contexts draw in, one after the other, so that not each of them has to ask the system for it.
// Belongs to whoever makes them. Linux; not used on Windows. One thread.
class DrawingMemory {
  public:
    // At least so many bytes, with anything in them, until the next call; null if there is no memory.
    std::uint8_t* take(std::size_t bytes);

  private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t size_ = 0;
};

// A device context with a bitmap selected, for as long as the object lives.
//
// Windows: a memory HDC. Linux: a cairo_t*, made when it is first asked for, and cairo loaded with the first
// of all. An 8 or 24-bit bitmap is drawn on through a surface of 32 bits, of which the rows that were drawn
// on are merged back when the object ends. One thread.
class MemoryContext {
  public:
    // Draws in memory of its own unless it is given some, which has to outlive it.
    explicit MemoryContext(Bitmap& bitmap, DrawingMemory* memory = nullptr);
    ~MemoryContext();
    MemoryContext(const MemoryContext&) = delete;
    MemoryContext& operator=(const MemoryContext&) = delete;

    TavraDC dc();  // null: none could be made

    // The library's own drawing, over what was drawn through the context. Works without one, too. Belongs to
    // this object; the next call of dc() or paint() ends it.
    IPaint& paint();

  private:
    struct Native;

    Bitmap& bitmap_;
    std::unique_ptr<Native> native_;
};

}  // namespace tavra::platform
