#include "media/stills/jpeg_writer.h"

#include <algorithm>
#include <cstring>

#include "media/jpeg/jpeg_encoder.h"
#include "media/jpeg/std_file_output.h"
#include "media/stills/file_block.h"
#include "platform/last_error.h"

namespace tavra::stills {
namespace {

// By design: this lets 2, 256 and 512 through, which the writer then refuses, leaving an empty file behind.
bool admits(std::uint32_t format) {
    return format == 1 || format == 2 || format == 4 || format == 8 || format == 256 || format == 512;
}

// Sizes that the frame header can hold.
Status check(const ImageView& image) {
    constexpr std::uint32_t kLargest = 0xFFFF;
    if (!hasByteSamples(image.format)) return {};
    if (image.width == 0 || image.width > kLargest || image.height == 0 || image.height > kLargest ||
        !rowsAreSound(image)) {
        return platform::failWith(error::kInvalidArgument);
    }
    return {};
}

// The first three bytes of each pixel.
void packRows(const ImageView& image, std::uint64_t packedStride, std::uint8_t* packed) {
    const std::size_t step = bytesPerPixel(image.format);
    for (std::uint32_t y = 0; y < image.height; ++y, packed += packedStride) {
        const std::uint8_t* const row = image.row(y);
        for (std::size_t x = 0; x < image.width; ++x) std::memcpy(packed + 3 * x, row + step * x, 3);
    }
}

// By design nobody looks at how the encoder fares: a file that the disk had no room for counts as written.
void encode(const std::uint8_t* pixels, std::uint64_t stride, const ImageView& image, std::uint32_t option,
            platform::OutputFile& file) {
    constexpr std::uint32_t kFinest = 100;
    const bool mono = image.format == 1;
    CStdFileOutput2 stream(file);
    CJPEGEncoder encoder;
    static_cast<void>(encoder.SetSource(pixels, stride, image.width, image.height, mono ? 1 : 3,
                                        mono ? JpegColor::Gray : JpegColor::Bgr, JpegSampling::Sampling444));
    static_cast<void>(encoder.SetDestination(&stream));
    static_cast<void>(encoder.SetParams(JpegMode::Baseline, mono ? JpegColor::Gray : JpegColor::YCbCr,
                                        JpegSampling::Sampling444, 0, false,
                                        kFinest - std::min(option, kFinest)));
    static_cast<void>(encoder.WriteHeader());
    static_cast<void>(encoder.WriteData());
}

// The option is a compression: 0 is the finest. By design 100 and more do not scale the encoder's tables at
// all, and so give a finer picture than 99 does.
Status write(const ImageView& image, std::uint32_t option, platform::OutputFile& file) {
    if (!hasByteSamples(image.format)) return platform::failWith(error::kInvalidArgument);

    // By design: rows as long as packed ones count as packed. So do those of four-byte pixels in images of
    // two and three columns.
    const std::uint64_t packedStride = paddedStride(image.width, 3);
    if (image.format == 1 || image.stride == packedStride) {
        encode(image.data, image.stride, image, option, file);
        return {};
    }
    const FileBlock packed = allocateFileBlock(packedStride * image.height);
    if (!packed) return Status(error::kOutOfMemory);
    packRows(image, packedStride, packed.get());
    encode(packed.get(), packedStride, image, option, file);
    return {};
}

}  // namespace

const StillWriter kJpegWriter = {admits, check, platform::OutputFile::Buffering::None, write};

}  // namespace tavra::stills
