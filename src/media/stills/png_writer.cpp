#include "media/stills/png_writer.h"

#include <png.h>

#include <csetjmp>

#include "platform/last_error.h"

namespace tavra::stills {
namespace {

// libpng's two structures, from creation to the end of the file.
class PngStructures {
  public:
    PngStructures();
    ~PngStructures() { png_destroy_write_struct(&png_, &info_); }
    PngStructures(const PngStructures&) = delete;
    PngStructures& operator=(const PngStructures&) = delete;

    bool valid() const { return png_ != nullptr && info_ != nullptr; }
    png_structp png() const { return png_; }
    png_infop info() const { return info_; }

  private:
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

// libpng's own handlers print; the library never does.
[[noreturn]] void onError(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}
void onWarning(png_structp, png_const_charp) {}

PngStructures::PngStructures()
    : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning)) {
    if (png_ != nullptr) info_ = png_create_info_struct(png_);
}

// Sizes that libpng takes.
Status check(const ImageView& image) {
    if (image.width == 0 || image.width > PNG_USER_WIDTH_MAX || image.height == 0 ||
        image.height > PNG_USER_HEIGHT_MAX || !rowsAreSound(image)) {
        return platform::failWith(error::kInvalidArgument);
    }
    return {};
}

// By design: there are paths for 2, 256 and 512, though `admits` keeps them from files.
bool hasWideSamples(std::uint32_t format) {
    return format == 2 || format == 256 || format == 512;
}
bool isMono(std::uint32_t format) {
    return format == 1 || format == 2;
}
bool hasFourthSample(std::uint32_t format) {
    return format == 8 || format == 512;
}

// False if libpng gave up. It leaves by longjmp, so nothing in here may have a destructor.
bool writeImage(png_structp png, png_infop info, const ImageView& image, bool interlaced, std::FILE* stream) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;  // NOLINT(cert-err52-cpp): libpng's way out of an error

    png_init_io(png, stream);
    png_set_IHDR(png, info, image.width, image.height, hasWideSamples(image.format) ? 16 : 8,
                 isMono(image.format) ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);

    if (hasFourthSample(image.format)) {
        png_set_filler(png, 0, PNG_FILLER_AFTER);  // the fourth sample is dropped
    } else {
        png_set_swap_alpha(png);
    }
    png_set_bgr(png);
    if (hasWideSamples(image.format)) png_set_swap(png);

    const int passes = interlaced ? png_set_interlace_handling(png) : 1;
    for (int pass = 0; pass < passes; ++pass) {
        for (std::uint32_t y = 0; y < image.height; ++y) png_write_row(png, image.row(y));
    }
    png_write_end(png, info);
    return true;
}

// Everything that libpng could refuse about the image was checked before; what is left is the file,
// and memory.
Status write(const ImageView& image, std::uint32_t option, platform::OutputFile& file) {
    const PngStructures structures;
    if (!structures.valid()) return platform::failWith(error::kOutOfMemory);

    const bool interlaced = (option & 1) == 0;
    const bool written =
        writeImage(structures.png(), structures.info(), image, interlaced, file.stream()) && file.flush();
    if (written) return {};
    return platform::failWith(std::ferror(file.stream()) != 0 ? error::kWriteFault : error::kOutOfMemory);
}

}  // namespace

const StillWriter kPngWriter = {hasByteSamples, check, platform::OutputFile::Buffering::Stream, write};

}  // namespace tavra::stills
