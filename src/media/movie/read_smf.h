// The reader of SMF movies. Any SMF file may be lies from end to end: every number is held against the file.
//
// Made by an open, given back by a close. One thread at a time.
#pragma once

#include <cstdint>
#include <string>

#include "base/status.h"
#include "media/movie/smf_header.h"
#include "platform/random_access_file.h"

namespace tavra::movie {

class CReadSMF {
  public:
    // 13: not an SMF movie; else the system's error.
    Status open(const std::u16string& name);

    std::uint64_t frameCount() const { return frameCount_; }  // whole frames
    // What the last frame calls itself, counted from 0. Of a file without frames: what stands where the frame
    // ahead of the first would be, if that is within the file.
    std::uint32_t lastFrameNumber() const { return lastFrameNumber_; }
    // Of the open.
    std::uint32_t lastError() const { return lastError_; }

    // The header as it is in the file; what is changed here stays here.
    SmfHeader& header() { return header_; }
    const SmfHeader& header() const { return header_; }

    struct FrameHeader {
        std::uint32_t number = 0;
        std::uint32_t colorArray = 0;
    };
    // Reads a frame, of 0 to count - 1. data: frame data size bytes, or null for the header alone. 87: beyond
    // the end; 38: the file has become shorter meanwhile; else the system's error. Also set as the thread's
    // last error.
    Status ReadFrame(std::uint64_t index, FrameHeader& frame, std::uint8_t* data);

    // Whether a file of that name is this movie, which a conversion onto it would destroy.
    bool isNamed(const std::u16string& fileName) const { return file_.isNamed(fileName); }

  private:
    Status readHeader();
    Status locateFrames();
    std::uint64_t frameBytes() const;  // with its header
    std::uint32_t field(SmfHeader::Field which) const { return header_.get(which); }
    Status readExactly(std::uint64_t position, void* data, std::size_t size);

    platform::RandomAccessFile file_;
    SmfHeader header_;
    std::uint64_t size_ = 0;
    std::uint64_t frameCount_ = 0;
    std::uint32_t lastFrameNumber_ = 0;
    std::uint32_t lastError_ = 0;
};

}  // namespace tavra::movie
