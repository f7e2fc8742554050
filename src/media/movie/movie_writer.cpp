#include "media/movie/movie_writer.h"

#include "media/movie/avi_file_smf.h"
#include "media/movie/avi_file_vfw.h"
#include "media/movie/avi_writers.h"
#include "media/stills/file_type.h"
#include "tavra/tavra_types.h"

namespace tavra::movie {

std::optional<std::uint16_t> movieFormatOf(std::u16string_view extension, std::uint32_t compressor,
                                           bool preferAvi2) {
    if (stills::isBeginningOf(extension, u"AVI")) {
        const bool ours = compressor == TAVRA_AVI_COMPRESSOR_NONE || compressor == TAVRA_AVI_COMPRESSOR_MJPG;
        return ours && preferAvi2 ? movie_format::kAvi2 : movie_format::kAvi1;
    }
    if (stills::isBeginningOf(extension, u"SMF")) return movie_format::kSmf;
    return std::nullopt;
}

std::unique_ptr<CAVIFile> makeMovieWriter(std::uint16_t format, std::uint32_t compressor, MovieFiles& files) {
    if (format == movie_format::kSmf) return std::make_unique<CAVIFileSMF>(files, compressor);
    std::unique_ptr<CAVIFile> writer = makeAviWriter(format, compressor, files);
    if (writer == nullptr && format == movie_format::kAvi1) writer = makeCodecWriter(files);
    if (writer != nullptr) writer->SetCompressor(compressor);
    return writer;
}

}  // namespace tavra::movie
