// What the JPEG encoder writes to. A stream belongs to whoever made it, and is used by one encoder, on that
// encoder's thread.
#pragma once

#include <cstddef>

#include "media/jpeg/codes.h"

namespace tavra {

class CBaseStream {
  public:
    CBaseStream() = default;
    CBaseStream(const CBaseStream&) = delete;
    CBaseStream& operator=(const CBaseStream&) = delete;

    virtual ~CBaseStream() = default;
    virtual JpegError Open() = 0;
    virtual JpegError Close() = 0;
};

class CBaseStreamOutput : public CBaseStream {
  public:
    // Takes `size` bytes; `written` tells how many it took. FileIo if these are fewer.
    virtual JpegError Write(const void* buffer, std::size_t size, std::size_t& written) = 0;
};

}  // namespace tavra
