// The layout of raw movies: a header, then each frame behind a small header of its own. The one layout that
// needs nothing at its end, so that a movie that was cut short is good up to the cut.
//
// As avi_file.h says. docs/file-formats.md tells the format.
#pragma once

#include "media/movie/avi_file.h"
#include "media/movie/smf_header.h"

namespace tavra::movie {

class CAVIFileSMF final : public CAVIFile {
  public:
    // The compressor stands in the file, for the conversion.
    CAVIFileSMF(MovieFiles& files, std::uint32_t compressor) : CAVIFile(files, kLargeSizeLimit) {
        SetCompressor(compressor);
    }
    ~CAVIFileSMF() override { Stop(); }

    std::uint64_t GetMaxFileSize() const override { return sizeLimit_; }
    std::uint32_t GetMovieHeader(std::uint8_t* block) const override;
    // What it says of image, rate and compression is replaced when the file is written.
    std::uint32_t SetMovieHeader(const std::uint8_t* block) override;
    Status OpenFile(const std::u16string& name, std::unique_ptr<FileRecord>& record) override;
    Status WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                      std::uint32_t tag) override;
    Status CloseFile(FileRecord& record) override;

  private:
    Status writeHeader(FileRecord& record);
    Status append(FileRecord& record, const void* data, std::size_t size);
    void completeHeader();

    SmfHeader header_;
};

}  // namespace tavra::movie
