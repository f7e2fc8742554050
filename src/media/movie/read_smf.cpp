#include "media/movie/read_smf.h"

#include <algorithm>
#include <array>

#include "base/little_endian.h"
#include "platform/last_error.h"

namespace tavra::movie {
namespace {

using Field = SmfHeader::Field;

constexpr std::size_t kPrefixBytes = 8;  // magic and header size

// Of a frame's header as much as is looked at; the file says how long it is.
using FrameHeaderBytes = std::array<std::uint8_t, SmfHeader::kFrameHeaderBytes>;

}  // namespace

Status CReadSMF::open(const std::u16string& name) {
    Status opened = file_.openForReading(name);
    if (opened.ok()) opened = file_.size(size_);
    if (opened.ok()) opened = readHeader();
    if (opened.ok()) opened = locateFrames();
    lastError_ = opened.code();
    return opened;
}

Status CReadSMF::readHeader() {
    std::array<std::uint8_t, kPrefixBytes> prefix{};
    std::size_t got = 0;
    TAVRA_RETURN_IF_ERROR(file_.read(0, prefix.data(), prefix.size(), got));
    const std::uint32_t headerSize = loadLe32(&prefix[4]);
    if (got < prefix.size() || loadLe32(&prefix[0]) != SmfHeader::kMagic) return Status(error::kInvalidData);
    if (headerSize > SmfHeader::kBytes || headerSize > size_) return Status(error::kInvalidData);
    return readExactly(0, header_.data(), headerSize);
}

// The frames begin where the header ends, also one that is shorter than what is known of it. One that is too
// short to tell its own size tells no size of a frame either.
Status CReadSMF::locateFrames() {
    const std::uint64_t oneFrame = frameBytes();
    if (oneFrame == 0) return Status(error::kInvalidData);
    const std::uint64_t headerSize = field(Field::HeaderSize);
    frameCount_ = (size_ - headerSize) / oneFrame;
    // By design: without a frame this is the place of the one ahead of the first.
    const std::uint64_t afterLast = headerSize + frameCount_ * oneFrame;
    if (afterLast < oneFrame) return {};
    FrameHeaderBytes bytes{};
    std::size_t got = 0;
    const auto wanted = std::min<std::size_t>(field(Field::FrameHeaderSize), bytes.size());
    TAVRA_RETURN_IF_ERROR(file_.read(afterLast - oneFrame, bytes.data(), wanted, got));
    lastFrameNumber_ = loadLe32(bytes.data());
    return {};
}

std::uint64_t CReadSMF::frameBytes() const {
    return std::uint64_t{field(Field::FrameDataSize)} + field(Field::FrameHeaderSize);
}

Status CReadSMF::ReadFrame(std::uint64_t index, FrameHeader& frame, std::uint8_t* data) {
    if (index >= frameCount_) return platform::failWith(error::kInvalidArgument);
    const std::uint64_t position = field(Field::HeaderSize) + index * frameBytes();
    FrameHeaderBytes bytes{};
    const auto wanted = std::min<std::size_t>(field(Field::FrameHeaderSize), bytes.size());
    TAVRA_RETURN_IF_ERROR(readExactly(position, bytes.data(), wanted));
    frame = {loadLe32(&bytes[0]), loadLe32(&bytes[4])};
    if (data == nullptr) return {};
    return readExactly(position + field(Field::FrameHeaderSize), data, field(Field::FrameDataSize));
}

Status CReadSMF::readExactly(std::uint64_t position, void* data, std::size_t size) {
    std::size_t got = 0;
    const Status read = file_.read(position, data, size, got);
    if (!read.ok()) return platform::failWith(read.code());
    return got == size ? Status() : platform::failWith(error::kEndOfFile);
}

}  // namespace tavra::movie
