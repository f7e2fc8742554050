// AVI 2.0 with uncompressed frames, stored bottom-up: as fast as the disk, as long as it has room.
#pragma once

#include "media/movie/avi_file_20.h"

namespace tavra::movie {

class CAVIFile20NotCompressed final : public CAVIFile20 {
  public:
    explicit CAVIFile20NotCompressed(MovieFiles& files, AviLimits limits = {});
    ~CAVIFile20NotCompressed() override { CWorker::Stop(); }

    bool StoresBottomUp() const override { return true; }
    Status WriteFrame(FileRecord& record, std::uint8_t* image, std::uint32_t index,
                      std::uint32_t tag) override;
};

}  // namespace tavra::movie
