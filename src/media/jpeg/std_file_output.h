// A file of the C library as the encoder's destination.
#pragma once

#include <cstdio>

#include "media/jpeg/base_stream.h"
#include "platform/file.h"

namespace tavra {

// Writes to an open file that somebody else owns, and closes after this object is done with it.
class CStdFileOutput2 final : public CBaseStreamOutput {
  public:
    explicit CStdFileOutput2(std::FILE* file) : file_(file) {}
    explicit CStdFileOutput2(const platform::OutputFile& file) : file_(file.stream()) {}

    JpegError Open() override { return JpegError::None; }  // the file is open already

    // Forgets the file, which stays open. A write after it gives FileIo.
    JpegError Close() override;

    JpegError Write(const void* buffer, std::size_t size, std::size_t& written) override;

  private:
    std::FILE* file_;
};

}  // namespace tavra
