// AVI 1.0 with frames of motion JPEG, up to 2 GiB a file.
#pragma once

#include "media/movie/avi_file_10.h"
#include "media/movie/mjpeg_frame_encoder.h"

namespace tavra::movie {

class CAVIFileMJPEG final : public AviFile10 {
  public:
    explicit CAVIFileMJPEG(MovieFiles& files);
    ~CAVIFileMJPEG() override { CWorker::Stop(); }

    Status PrepareHeader() override;
    Status WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                      std::uint32_t tag) override;
    Status Finish() override;

  private:
    MjpegFrameEncoder encoder_;
};

}  // namespace tavra::movie
