// AVI 2.0 with frames of motion JPEG, as long as the disk has room.
#pragma once

#include "media/movie/avi_file_20.h"
#include "media/movie/mjpeg_frame_encoder.h"

namespace tavra::movie {

class CAVIFile20MJPEG final : public CAVIFile20 {
  public:
    explicit CAVIFile20MJPEG(MovieFiles& files, AviLimits limits = {});
    ~CAVIFile20MJPEG() override { CWorker::Stop(); }

    Status PrepareHeader() override;
    Status WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                      std::uint32_t tag) override;
    Status Finish() override;

  private:
    MjpegFrameEncoder encoder_;
};

}  // namespace tavra::movie
