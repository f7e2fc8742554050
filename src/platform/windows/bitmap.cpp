#include "platform/bitmap.h"

#include <windows.h>

#include <cstring>
#include <optional>

#include "platform/windows/gdi_paint.h"

namespace tavra::platform {
namespace {

// A bitmap header with room for the gray palette of an 8-bit image.
struct BitmapHeader {
    BITMAPINFOHEADER info;
    RGBQUAD palette[256];
};

BitmapHeader headerFor(const BitmapShape& shape) {
    BitmapHeader header{};
    header.info.biSize = sizeof header.info;
    header.info.biWidth = static_cast<LONG>(shape.width);
    header.info.biHeight = -static_cast<LONG>(shape.height);  // negative: top row first
    header.info.biPlanes = 1;
    header.info.biBitCount = static_cast<WORD>(shape.bitCount);
    header.info.biCompression = BI_RGB;
    header.info.biSizeImage = static_cast<DWORD>(shape.bytes());
    if (shape.bitCount == 8) {
        header.info.biClrUsed = 256;
        for (unsigned i = 0; i < 256; ++i) {
            const auto grey = static_cast<BYTE>(i);
            header.palette[i] = {grey, grey, grey, 0};
        }
    }
    return header;
}

}  // namespace

Status Bitmap::create(const BitmapShape& shape) {
    free();
    // A section has pixels; an image without them has a section all the same.
    BitmapShape made = shape;
    if (made.width == 0 || made.height == 0) made.width = made.height = 1;
    if (made.width > 0x7FFFFFFF || made.height > 0x7FFFFFFF) return Status(error::kOutOfMemory);
    const BitmapHeader header = headerFor(made);
    void* bits = nullptr;
    const auto* const info = reinterpret_cast<const BITMAPINFO*>(&header);
    const HBITMAP section = CreateDIBSection(nullptr, info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (section == nullptr || bits == nullptr) return Status(error::kOutOfMemory);
    std::memset(bits, 0, made.bytes());
    native_ = section;
    pixels_ = static_cast<std::uint8_t*>(bits);
    shape_ = shape;
    return Status();
}

void Bitmap::free() {
    if (native_ != nullptr) DeleteObject(static_cast<HBITMAP>(native_));
    native_ = nullptr;
    pixels_ = nullptr;
    shape_ = {};
}

struct MemoryContext::Native {
    HDC dc = nullptr;
    HGDIOBJ before = nullptr;  // what was selected
    std::optional<GdiPaint> paint;
};

// Its pixels are the bitmap's.
MemoryContext::MemoryContext(Bitmap& bitmap, DrawingMemory*)
    : bitmap_(bitmap), native_(std::make_unique<Native>()) {
    if (bitmap_.native() == nullptr) return;
    const HDC dc = CreateCompatibleDC(nullptr);
    if (dc == nullptr) return;
    native_->before = SelectObject(dc, static_cast<HBITMAP>(bitmap_.native()));
    if (native_->before == nullptr) {
        DeleteDC(dc);
        return;
    }
    native_->dc = dc;
}

TavraDC MemoryContext::dc() {
    return native_->dc;
}

// On a context that could not be made every operation fails.
IPaint& MemoryContext::paint() {
    return native_->paint.emplace(native_->dc);
}

MemoryContext::~MemoryContext() {
    if (native_->dc == nullptr) return;
    GdiFlush();  // what was drawn stands in the pixels before they are read
    SelectObject(native_->dc, native_->before);
    DeleteDC(native_->dc);
}

}  // namespace tavra::platform
