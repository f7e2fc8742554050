#include "media/save_image_file.h"

#include <new>
#include <string>

#include "base/pixel_format.h"
#include "media/stills/bmp_writer.h"
#include "media/stills/file_type.h"
#include "media/stills/jpeg_writer.h"
#include "media/stills/png_writer.h"
#include "media/stills/raw_writer.h"
#include "media/stills/tiff_writer.h"
#include "platform/last_error.h"

namespace tavra {
namespace {

using namespace stills;

const StillWriter& writerOf(FileType type) {
    switch (type) {
        case FileType::Raw: return kRawWriter;
        case FileType::Tiff: return kTiffWriter;
        case FileType::Jpeg: return kJpegWriter;
        case FileType::Png: return kPngWriter;
        case FileType::Bmp: break;
    }
    return kBmpWriter;
}

Status save(const ImageView& image, const std::u16string& fileName, std::uint32_t option) {
    const std::optional<std::u16string_view> extension = extensionOf(fileName);
    if (!extension) return platform::failWith(error::kInvalidArgument);

    const StillWriter& writer = writerOf(fileTypeOf(*extension));
    if (!writer.admits(image.format)) return platform::failWith(error::kInvalidArgument);
    TAVRA_RETURN_IF_ERROR(writer.check(image));

    platform::OutputFile file = platform::OutputFile::open(fileName, writer.buffering);
    if (!file.isOpen()) return platform::failWith(error::kOpenFailed);
    return writer.write(image, option, file);
}

}  // namespace

std::uint32_t CSaveImageFile::SaveImageFileEx(std::uint32_t width, std::uint32_t height,
                                              std::uint32_t rowStride, std::uint32_t format, const void* data,
                                              const char16_t* fileName, std::uint32_t option) {
    if (data == nullptr || fileName == nullptr) return platform::failWith(error::kInvalidArgument).code();
    const std::uint64_t stride = rowStride != 0 ? rowStride : paddedStride(width, bytesPerPixel(format));
    const ImageView image = {width, height, stride, format, static_cast<const std::uint8_t*>(data)};
    try {
        return save(image, fileName, option).code();
    } catch (const std::bad_alloc&) {
        // For the file's name: the writers ask for theirs without exceptions.
        return platform::failWith(error::kOutOfMemory).code();
    }
}

std::uint32_t CSaveImageFile::SaveImageFile(std::uint32_t width, std::uint32_t height, std::uint32_t format,
                                            const void* data, const char16_t* fileName,
                                            std::uint32_t option) {
    return SaveImageFileEx(width, height, 0, format, data, fileName, option);
}

ISUnknown* makeSaveImageFile() {
    return new (std::nothrow) CSaveImageFile;
}

}  // namespace tavra
