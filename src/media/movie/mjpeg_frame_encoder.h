// A frame to a chunk of motion JPEG in memory: what both motion-JPEG layouts share.
//
// Belongs to one writer, which prepares it before it starts and uses it on its thread.
#pragma once

#include <cstdint>
#include <memory>

#include "base/status.h"
#include "media/jpeg/jpeg_encoder.h"
#include "media/jpeg/memory_output.h"
#include "media/movie/avi_file.h"
#include "platform/page_memory.h"

namespace tavra::movie {

class MjpegFrameEncoder {
  public:
    // Makes the encoder and the memory for the largest stream that a frame of this movie can become. 87: a
    // side of more than 65535 pixels, more pixels than the header of a movie can tell, or a quality above
    // 100. 8: out of memory.
    Status prepare(const MovieSettings& settings);
    void free();

    // `size`: bytes of the stream. It stands FrameBuffer::kHeaderRoom behind chunk(), and the spare room of a
    // frame buffer follows it. 8: out of memory; 223: it is longer than the block; 87: the encoder refuses.
    Status encode(const MovieSettings& settings, const std::uint8_t* image, std::uint32_t& size);

    std::uint8_t* chunk() const { return block_.data(); }  // a page's first byte

  private:
    platform::PageBlock block_;
    CMemoryOutput stream_;
    std::unique_ptr<CJPEGEncoder> encoder_;
};

}  // namespace tavra::movie
