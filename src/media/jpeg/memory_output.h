// A block of memory as the encoder's destination: a frame of a movie is encoded there, and written to the
// movie's file in one piece.
#pragma once

#include <cstddef>
#include <cstdint>

#include "media/jpeg/base_stream.h"

namespace tavra {

// The memory is the caller's, and stays his. It begins with room for what is written in front of the stream
// (the header of a chunk), which this object does not touch:
//
//     | headroom | capacity: what the encoder writes, from its first byte on |
class CMemoryOutput final : public CBaseStreamOutput {
  public:
    CMemoryOutput() = default;

    // `block` has headroom + capacity bytes.
    CMemoryOutput(void* block, std::size_t headroom, std::size_t capacity) {
        SetMemory(block, headroom, capacity);
    }

    // Another block, empty. Null with capacity 0 takes nothing.
    void SetMemory(void* block, std::size_t headroom, std::size_t capacity);

    // Back to the first byte behind the room in front; what was written stays until it is written over.
    void Reset() { length_ = 0; }

    std::uint8_t* block() const { return block_; }  // with the room in front
    std::size_t length() const { return length_; }  // bytes behind the room in front
    std::size_t capacity() const { return capacity_; }

    JpegError Open() override { return JpegError::None; }
    JpegError Close() override { return JpegError::None; }

    // FileIo when the memory is full; what still fits is taken.
    JpegError Write(const void* buffer, std::size_t size, std::size_t& written) override;

  private:
    std::uint8_t* block_ = nullptr;
    std::size_t headroom_ = 0;
    std::size_t capacity_ = 0;
    std::size_t length_ = 0;
};

}  // namespace tavra
