// AVI 1.0 with uncompressed frames, stored bottom-up: what every player opens, up to 2 GiB a file.
#pragma once

#include "media/movie/avi_file_10.h"

namespace tavra::movie {

class CAVIFileNotCompressed final : public AviFile10 {
  public:
    explicit CAVIFileNotCompressed(MovieFiles& files);
    ~CAVIFileNotCompressed() override { CWorker::Stop(); }

    bool StoresBottomUp() const override { return true; }
    Status PrepareHeader() override;  // 223: no file could hold even one frame
    Status WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                      std::uint32_t tag) override;

  private:
    Status writeFirstChunk(FileRecord& record) override;
    std::uint32_t totalFrames() const override;
};

}  // namespace tavra::movie
