// AVI files whose frames a codec of the platform compresses (platform/codec_movie.h).
//
// Belongs to the recorder, as every writer. The platform's framework stays ready for as long as it lives.
#pragma once

#include <memory>

#include "media/movie/avi_file.h"
#include "platform/codec_movie.h"

namespace tavra::movie {

class CAVIFileVFW : public CAVIFile {
  public:
    // The compressor's code that lets the user choose.
    static constexpr std::uint32_t kUserChooses = 0xFFFFFFFF;

    explicit CAVIFileVFW(MovieFiles& files) : CAVIFile(files) {}
    // The files go ahead of the framework.
    ~CAVIFileVFW() override {
        Stop();
        dropFiles();
    }

    bool StoresBottomUp() const override { return true; }
    // The user is asked at the first file of a recording, and the answer holds for those behind it.
    Status OpenFile(const std::u16string& name, std::unique_ptr<FileRecord>& record) override;
    Status WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                      std::uint32_t tag) override;
    Status CloseFile(FileRecord& record) override;

  private:
    platform::CodecFramework framework_;
    platform::CodecChoice choice_;
    std::uint32_t frames_ = 0;  // of the present file: the last index + 1
};

// Null: out of memory. The codecs write their files themselves; `files` is kept and not used.
std::unique_ptr<CAVIFile> makeCodecWriter(MovieFiles& files);

}  // namespace tavra::movie
