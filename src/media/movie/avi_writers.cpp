#include "media/movie/avi_writers.h"

#include "media/movie/avi_file_20_mjpeg.h"
#include "media/movie/avi_file_20_not_compressed.h"
#include "media/movie/avi_file_mjpeg.h"
#include "media/movie/avi_file_not_compressed.h"
#include "media/movie/riff.h"

namespace tavra::movie {

std::unique_ptr<CAVIFile> makeAviWriter(std::uint16_t format, std::uint32_t compressor, MovieFiles& files) {
    constexpr std::uint32_t kUncompressed = 0;
    constexpr std::uint32_t kMotionJpeg = fourcc("MJPG");
    if (format == 1 && compressor == kUncompressed) return std::make_unique<CAVIFileNotCompressed>(files);
    if (format == 1 && compressor == kMotionJpeg) return std::make_unique<CAVIFileMJPEG>(files);
    if (format == 2 && compressor == kUncompressed) return std::make_unique<CAVIFile20NotCompressed>(files);
    if (format == 2 && compressor == kMotionJpeg) return std::make_unique<CAVIFile20MJPEG>(files);
    return nullptr;
}

}  // namespace tavra::movie
