// One image in memory to one file on disk: RAW, bitmap, TIFF, JPEG or PNG, by the extension of the file's
// name.
//
// Made by CreateStageObject for one save and released after it. It keeps nothing, so any number of threads
// may save at once, each with pixels and a file of its own; the pixels stay unchanged during the call.
#pragma once

#include <cstdint>

#include "stages/unknown.h"

namespace tavra {

// Arguments of both operations:
// - width, height: pixels.
// - rowStride: bytes from row to row. 0: the pixels' bytes, rounded up to a multiple of four for every type
//   but RAW, which takes width x height pixels back to back whatever the stride. A bitmap takes the whole
//   stride of each row; TIFF, JPEG and PNG take the pixels alone, and need a stride that holds them.
// - format: pixel format code. RAW and TIFF take all, BMP, JPEG and PNG 1, 4 and 8.
// - data: the first row, the upper one. Words are little-endian, at any address.
// - fileName: ends with a zero unit. The text behind the last dot chooses the type
//   (media/stills/file_type.h); a name that ends in nothing known becomes a bitmap. A file of that name is
//   replaced.
// - option: for PNG, bit 0 set makes a file that is not interlaced. For JPEG, the compression: 0 is the
//   finest, 99 the coarsest; 100 and more are by design the same as 50.
//
// Result: 0, or a code that is also the thread's last error:
//   8    no memory (a bitmap gives 0 even then, with an empty file and the thread's last error 8)
//   29   the file could not be written whole (not noticed for TIFF and JPEG)
//   87   no dot in the name; no name or no pixels; a format that the type does not take; a size or stride
//        that the type cannot hold. No file is made, except by the formats that BMP (256, 512, unknown ones)
//        and JPEG (2, 256, 512) refuse late: these leave an empty file.
//   110  the file could not be opened, or the system cannot express its name
// A failure on the way leaves the file as far as it got.
class ISaveImageFile : public ISUnknown {
  public:
    virtual std::uint32_t SaveImageFileEx(std::uint32_t width, std::uint32_t height, std::uint32_t rowStride,
                                          std::uint32_t format, const void* data, const char16_t* fileName,
                                          std::uint32_t option) = 0;
    virtual std::uint32_t SaveImageFile(std::uint32_t width, std::uint32_t height, std::uint32_t format,
                                        const void* data, const char16_t* fileName, std::uint32_t option) = 0;

  protected:
    ~ISaveImageFile() = default;
};

class CSaveImageFile final : public CountedStage<CSaveImageFile, ISaveImageFile> {
  public:
    std::uint32_t SaveImageFileEx(std::uint32_t width, std::uint32_t height, std::uint32_t rowStride,
                                  std::uint32_t format, const void* data, const char16_t* fileName,
                                  std::uint32_t option) override;
    std::uint32_t SaveImageFile(std::uint32_t width, std::uint32_t height, std::uint32_t format,
                                const void* data, const char16_t* fileName, std::uint32_t option) override;
};

// The factory's maker for code 128: a new object with count 0, or null without memory.
ISUnknown* makeSaveImageFile();

}  // namespace tavra
