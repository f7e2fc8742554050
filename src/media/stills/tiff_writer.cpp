#include "media/stills/tiff_writer.h"

#include <cstring>

#include "base/little_endian.h"
#include "media/stills/file_block.h"

namespace tavra::stills {
namespace {

constexpr std::uint16_t kShort = 3;
constexpr std::uint16_t kLong = 4;
constexpr std::uint16_t kRational = 5;

constexpr std::uint32_t kDirectoryOffset = 8;
constexpr std::uint32_t kEntryBytes = 12;
constexpr std::uint32_t kRationalBytes = 8;
constexpr std::uint32_t kResolution[2] = {720000, 10000};  // 72 dots an inch
constexpr std::uint32_t kInch = 2;

struct Layout {
    std::uint32_t samples;       // of a pixel
    std::uint32_t bytesASample;  // 1 or 2
    std::uint32_t shift;         // left, from the significant bits to the full range of the word
    bool isColor() const { return samples > 1; }

    // Where things stand: directory, its count word, entries, next-directory word, two rationals,
    // bits array, pixels.
    std::uint32_t entries() const { return isColor() ? 9 + samples : 11; }
    std::uint32_t resolutionOffset() const { return kDirectoryOffset + 2 + kEntryBytes * entries() + 4; }
    std::uint32_t bitsOffset() const { return resolutionOffset() + 2 * kRationalBytes; }
    std::uint32_t pixelOffset() const { return bitsOffset() + (isColor() ? 2 * samples : 0); }
};

// Layout of a format; no samples for a format that is not written.
Layout layoutOf(std::uint32_t format) {
    switch (format) {
        case 1: return {1, 1, 0};
        case 2: return {1, 2, 0};
        case 16: return {1, 2, 6};
        case 32: return {1, 2, 4};
        case 64: return {1, 2, 2};
        case 4: return {3, 1, 0};
        case 8: return {4, 1, 0};
        case 256: return {3, 2, 0};
        case 512: return {4, 2, 0};
        default: return {};
    }
}

bool admits(std::uint32_t format) {
    return layoutOf(format).samples != 0;
}

// Sizes in the file have 32 bits.
Status check(const ImageView& image) {
    const std::uint64_t pixelBytes = saturatingProduct(image.rowBytes(), image.height);
    if (!rowsAreSound(image) || pixelBytes > UINT32_MAX - layoutOf(image.format).pixelOffset()) {
        return platform::failWith(error::kInvalidArgument);
    }
    return {};
}

class DirectoryWriter {
  public:
    explicit DirectoryWriter(std::uint8_t* at) : at_(at) {}

    // By design: the value takes all four bytes, SHORT or not, so that sizes past 65535 survive.
    void put(std::uint16_t tag, std::uint16_t type, std::uint32_t count, std::uint32_t valueOrOffset) {
        storeLe16(at_, tag);
        storeLe16(at_ + 2, type);
        storeLe32(at_ + 4, count);
        storeLe32(at_ + 8, valueOrOffset);
        at_ += kEntryBytes;
    }

  private:
    std::uint8_t* at_;
};

void putDirectory(const ImageView& image, const Layout& layout, std::uint32_t pixelBytes,
                  std::uint8_t* directory) {
    storeLe16(directory, static_cast<std::uint16_t>(layout.entries()));
    DirectoryWriter entries(directory + 2);
    const std::uint32_t bits = 8 * layout.bytesASample;
    entries.put(0x0100, kShort, 1, image.width);   // ImageWidth
    entries.put(0x0101, kShort, 1, image.height);  // ImageLength
    entries.put(0x0102, kShort, layout.samples,
                layout.isColor() ? layout.bitsOffset() : bits);  // BitsPerSample
    entries.put(0x0103, kShort, 1, 1);                           // Compression: none
    entries.put(0x0106, kShort, 1,
                layout.isColor() ? 2 : 1);                // PhotometricInterpretation: RGB, or 0 is black
    entries.put(0x0111, kLong, 1, layout.pixelOffset());  // StripOffsets
    if (layout.isColor()) entries.put(0x0115, kShort, 1, layout.samples);  // SamplesPerPixel
    // By design: ExtraSamples (no meaning given) stands here, ahead of its place in ascending order.
    if (layout.samples == 4) entries.put(0x0152, kShort, 1, 0);
    entries.put(0x0116, kShort, 1, image.height);                                   // RowsPerStrip
    entries.put(0x0117, kLong, 1, pixelBytes);                                      // StripByteCounts
    entries.put(0x011A, kRational, 1, layout.resolutionOffset());                   // XResolution
    entries.put(0x011B, kRational, 1, layout.resolutionOffset() + kRationalBytes);  // YResolution
    entries.put(0x0128, kShort, 1, kInch);                                          // ResolutionUnit
}

void putHeader(const ImageView& image, const Layout& layout, std::uint32_t pixelBytes, std::uint8_t* header) {
    std::memset(header, 0, layout.pixelOffset());
    header[0] = header[1] = 'I';  // little-endian
    storeLe16(header + 2, 42);
    storeLe32(header + 4, kDirectoryOffset);
    putDirectory(image, layout, pixelBytes, header + kDirectoryOffset);
    for (std::uint32_t i = 0; i < 2; ++i) {
        std::uint8_t* const rational = header + layout.resolutionOffset() + std::size_t{i} * kRationalBytes;
        storeLe32(rational, kResolution[0]);
        storeLe32(rational + 4, kResolution[1]);
    }
    for (std::uint32_t offset = layout.bitsOffset(); offset < layout.pixelOffset(); offset += 2) {
        storeLe16(header + offset, static_cast<std::uint16_t>(8 * layout.bytesASample));
    }
}

void shiftRow(const std::uint8_t* source, std::uint8_t* target, std::uint32_t width, std::uint32_t shift) {
    for (std::size_t i = 0; i < std::size_t{width} * 2; i += 2) {
        storeLe16(target + i, static_cast<std::uint16_t>(loadLe16(source + i) << shift));
    }
}

// B, G, R to R, G, B; a fourth sample stays where it is.
template <std::size_t kSamples, std::size_t kBytes>
void swapRow(const std::uint8_t* source, std::uint8_t* target, std::uint32_t width) {
    for (std::uint32_t x = 0; x < width; ++x, source += kSamples * kBytes, target += kSamples * kBytes) {
        std::memcpy(target, source + 2 * kBytes, kBytes);
        std::memcpy(target + kBytes, source + kBytes, kBytes);
        std::memcpy(target + 2 * kBytes, source, kBytes);
        if constexpr (kSamples == 4) std::memcpy(target + 3 * kBytes, source + 3 * kBytes, kBytes);
    }
}

void putRow(const std::uint8_t* source, std::uint8_t* target, std::uint32_t width, std::uint32_t format) {
    switch (format) {
        case 1: std::memcpy(target, source, width); break;
        case 2: std::memcpy(target, source, std::size_t{width} * 2); break;
        case 4: swapRow<3, 1>(source, target, width); break;
        case 8: swapRow<4, 1>(source, target, width); break;
        case 256: swapRow<3, 2>(source, target, width); break;
        case 512: swapRow<4, 2>(source, target, width); break;
        default: shiftRow(source, target, width, layoutOf(format).shift); break;
    }
}

Status write(const ImageView& image, std::uint32_t, platform::OutputFile& file) {
    const Layout layout = layoutOf(image.format);
    const std::uint64_t rowBytes = image.rowBytes();
    const std::uint64_t pixelBytes = rowBytes * image.height;
    const FileBlock block = allocateFileBlock(layout.pixelOffset() + pixelBytes);
    if (!block) return Status(platform::lastSystemError());

    putHeader(image, layout, static_cast<std::uint32_t>(pixelBytes), block.get());
    std::uint8_t* target = block.get() + layout.pixelOffset();
    for (std::uint32_t y = 0; y < image.height; ++y, target += rowBytes) {
        putRow(image.row(y), target, image.width, image.format);
    }
    // By design: a file cut short by a full disk is not noticed here.
    static_cast<void>(file.write(block.get(), layout.pixelOffset() + pixelBytes));
    return {};
}

}  // namespace

const StillWriter kTiffWriter = {admits, check, platform::OutputFile::Buffering::None, write};

}  // namespace tavra::stills
