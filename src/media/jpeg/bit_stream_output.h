// The byte buffer between the encoder and its stream. Belongs to one encoder; one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "media/jpeg/base_stream.h"
#include "media/jpeg/memory_buffer.h"

namespace tavra {

// Failures: FileIo where the stream takes less than it is given, BufferTooSmall without a buffer.
class CBitStreamOutput {
  public:
    static constexpr std::size_t kSize = 4096;

    // The stream stays the caller's.
    void Attach(CBaseStreamOutput* stream) { stream_ = stream; }
    void Detach() { stream_ = nullptr; }

    // A new, empty buffer, and a total of 0.
    JpegError Init(std::size_t size = kSize);

    // Numbers are big-endian. A full buffer is written out first.
    JpegError Write8(unsigned value);
    JpegError Write16(unsigned value);
    JpegError Write32(std::uint32_t value);
    JpegError WriteBytes(std::span<const std::uint8_t> bytes);

    // Writes out all that is buffered, if at most `minRoom` bytes of room are left; with 0 in any case.
    JpegError FlushBuffer(std::size_t minRoom);

    // The room behind the current position, for whoever puts bytes there himself, and tells how many.
    std::span<std::uint8_t> room() const { return {buffer_.data() + position_, buffer_.size() - position_}; }
    JpegError Advance(std::size_t bytes);

    std::size_t position() const { return position_; }  // bytes in the buffer
    std::uint64_t total() const { return total_; }      // bytes that the stream has taken

  private:
    CBaseStreamOutput* stream_ = nullptr;
    CMemoryBuffer buffer_;
    std::size_t position_ = 0;
    std::uint64_t total_ = 0;
};

}  // namespace tavra
