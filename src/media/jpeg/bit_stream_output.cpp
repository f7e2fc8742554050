#include "media/jpeg/bit_stream_output.h"

#include <algorithm>
#include <cstring>

namespace tavra {

JpegError CBitStreamOutput::Init(std::size_t size) {
    position_ = 0;
    total_ = 0;
    return buffer_.Allocate(size);
}

JpegError CBitStreamOutput::Write8(unsigned value) {
    const auto byte = static_cast<std::uint8_t>(value);
    return WriteBytes({&byte, 1});
}

JpegError CBitStreamOutput::Write16(unsigned value) {
    TAVRA_RETURN_IF_JPEG_ERROR(Write8(value >> 8));
    return Write8(value);
}

JpegError CBitStreamOutput::Write32(std::uint32_t value) {
    TAVRA_RETURN_IF_JPEG_ERROR(Write16(value >> 16));
    return Write16(value);
}

JpegError CBitStreamOutput::WriteBytes(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        if (position_ == buffer_.size()) TAVRA_RETURN_IF_JPEG_ERROR(FlushBuffer(0));
        const std::size_t count = std::min(bytes.size(), room().size());
        if (count == 0) return JpegError::BufferTooSmall;
        std::memcpy(room().data(), bytes.data(), count);
        position_ += count;
        bytes = bytes.subspan(count);
    }
    return JpegError::None;
}

JpegError CBitStreamOutput::Advance(std::size_t bytes) {
    if (bytes > room().size()) return JpegError::BufferTooSmall;
    position_ += bytes;
    return JpegError::None;
}

JpegError CBitStreamOutput::FlushBuffer(std::size_t minRoom) {
    if (minRoom != 0 && room().size() > minRoom) return JpegError::None;
    if (position_ == 0) return JpegError::None;
    if (stream_ == nullptr) return JpegError::FileIo;
    std::size_t written = 0;
    const JpegError error = stream_->Write(buffer_.data(), position_, written);
    total_ += written;
    if (error != JpegError::None) return error;
    if (written != position_) return JpegError::FileIo;
    position_ = 0;
    return JpegError::None;
}

}  // namespace tavra
