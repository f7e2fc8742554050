#include "media/stills/bmp_writer.h"

#include <cstring>

#include "base/little_endian.h"
#include "media/stills/file_block.h"

namespace tavra::stills {
namespace {

constexpr std::uint32_t kFileHeaderBytes = 14;
constexpr std::uint32_t kInfoHeaderBytes = 40;
constexpr std::uint32_t kPaletteEntries = 256;

struct Layout {
    std::uint32_t bitsAPixel;
    std::uint32_t paletteEntries;

    std::uint32_t headerBytes() const { return kFileHeaderBytes + kInfoHeaderBytes + 4 * paletteEntries; }
};

// By design: this lets through more than the writer takes. What it then refuses leaves an empty file behind.
bool admits(std::uint32_t format) {
    return format != 2 && format != 16 && format != 32 && format != 64;
}

Layout layoutOf(std::uint32_t format) {
    return {8 * bytesPerPixel(format), format == 1 ? kPaletteEntries : 0};
}

std::uint64_t paddedRowBytes(const ImageView& image) {
    return roundUpTo4(image.stride);
}

// The header's width and height are signed, its sizes are not; all have 32 bits.
Status check(const ImageView& image) {
    if (!hasByteSamples(image.format)) return {};
    const std::uint64_t pixelBytes = saturatingProduct(paddedRowBytes(image), image.height);
    if (image.width > INT32_MAX || image.height > INT32_MAX ||
        pixelBytes > UINT32_MAX - layoutOf(image.format).headerBytes()) {
        return platform::failWith(error::kInvalidArgument);
    }
    return {};
}

void putHeader(const ImageView& image, const Layout& layout, std::uint32_t pixelBytes, std::uint8_t* header) {
    std::memset(header, 0, layout.headerBytes());
    header[0] = 'B';
    header[1] = 'M';
    storeLe32(header + 2, layout.headerBytes() + pixelBytes);  // bfSize
    storeLe32(header + 10, layout.headerBytes());              // bfOffBits

    std::uint8_t* const info = header + kFileHeaderBytes;
    storeLe32(info, kInfoHeaderBytes);  // biSize
    storeLe32(info + 4, image.width);   // biWidth
    storeLe32(info + 8, image.height);  // biHeight: positive, bottom-up
    storeLe16(info + 12, 1);            // biPlanes
    storeLe16(info + 14, static_cast<std::uint16_t>(layout.bitsAPixel));
    storeLe32(info + 20, pixelBytes);             // biSizeImage
    storeLe32(info + 32, layout.paletteEntries);  // biClrUsed
    storeLe32(info + 36, layout.paletteEntries);  // biClrImportant

    std::uint8_t* entry = info + kInfoHeaderBytes;
    for (std::uint32_t i = 0; i < layout.paletteEntries; ++i, entry += 4) {
        entry[0] = entry[1] = entry[2] = static_cast<std::uint8_t>(i);
    }
}

// By design: a row is the whole stride, the caller's own padding included; a stride beyond the pixels,
// rounded up to four, makes rows longer than the header's width tells.
void putRows(const ImageView& image, std::uint8_t* pixels) {
    const std::uint64_t padded = paddedRowBytes(image);
    std::uint8_t* target = pixels;
    for (std::uint32_t y = image.height; y-- > 0; target += padded) {
        std::memcpy(target, image.row(y), image.stride);
        std::memset(target + image.stride, 0, padded - image.stride);
    }
}

Status write(const ImageView& image, std::uint32_t, platform::OutputFile& file) {
    if (!hasByteSamples(image.format)) return platform::failWith(error::kInvalidArgument);

    const Layout layout = layoutOf(image.format);
    const std::uint64_t pixelBytes = paddedRowBytes(image) * image.height;
    const std::uint64_t fileBytes = layout.headerBytes() + pixelBytes;
    const FileBlock block = allocateFileBlock(fileBytes);
    // By design: without memory the save succeeds with an empty file; only the thread's last error tells.
    if (!block) return {};

    putHeader(image, layout, static_cast<std::uint32_t>(pixelBytes), block.get());
    putRows(image, block.get() + layout.headerBytes());
    if (!file.write(block.get(), fileBytes)) return platform::failWith(error::kWriteFault);
    return {};
}

}  // namespace

const StillWriter kBmpWriter = {admits, check, platform::OutputFile::Buffering::None, write};

}  // namespace tavra::stills
