#include "media/movie/create_avi.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <optional>

#include "base/pixel_format.h"
#include "platform/messages.h"

namespace tavra::movie {
namespace {

constexpr std::uint32_t kRefused = 12;  // while a recording is active
constexpr std::uint32_t kNoWriter = 6;  // no file format was chosen
constexpr std::uint64_t kMemoryLeftFree = 50 << 20;
constexpr std::uint32_t kFinestQuality = 100;

struct PixelFormat {
    std::uint32_t bytes;  // of a pixel
    std::uint16_t fileBits;
    bool redFirst;
};

std::optional<PixelFormat> pixelFormatOf(std::uint32_t code) {
    switch (code) {
        case 0x01080001:  // grey
        case 0x01080008:  // the four Bayer mosaics
        case 0x01080009:
        case 0x0108000A:
        case 0x0108000B: return PixelFormat{1, 8, false};
        case 0x02180014: return PixelFormat{3, 24, true};   // R, G, B
        case 0x02180015: return PixelFormat{3, 24, false};  // B, G, R
        case 0x02200016: return PixelFormat{4, 24, true};
        case 0x02200017: return PixelFormat{4, 24, false};
        default: return std::nullopt;
    }
}

constexpr std::uint32_t shifted(std::uint32_t size, std::uint32_t shift) {
    return shift < 32 ? size >> shift : 0;
}

}  // namespace

// The writer is joined before anything that it uses goes.
CCreateAVI::~CCreateAVI() {
    if (writer_) writer_->Stop();
}

std::uint32_t CCreateAVI::refusal() const {
    if (active()) return kRefused;
    return writer_ ? error::kNone : kNoWriter;
}

std::uint32_t CCreateAVI::change(std::uint32_t MovieSettings::*setting, std::uint32_t value) {
    const std::uint32_t refused = refusal();
    if (refused == 0) writer_->settings.*setting = value;
    return refused;
}

std::uint32_t CCreateAVI::SetFileFormat(std::uint16_t format, std::uint32_t compressor) {
    if (writer_) writer_->Stop();
    status_ = recorder_status::kIdle;
    writer_.reset();
    format_ = format;
    try {
        writer_ = surroundings_.makeWriter(format, compressor, *surroundings_.files);
    } catch (const std::bad_alloc&) {
        return error::kOutOfMemory;
    }
    return writer_ ? error::kNone : error::kInvalidArgument;
}

std::uint32_t CCreateAVI::SetFrameSizeShift(std::uint8_t shift) {
    if (active()) return kRefused;
    shift_ = shift;
    return error::kNone;
}

std::uint32_t CCreateAVI::SetFramesPerFile(std::uint32_t frames) {
    return change(&MovieSettings::framesPerFile, std::max(frames, 1u));
}

std::uint32_t CCreateAVI::GetFramesPerFile(std::uint32_t* frames) {
    if (!writer_) return kNoWriter;
    *frames = writer_->settings.framesPerFile;
    return error::kNone;
}

std::uint32_t CCreateAVI::SetReserved(std::uint32_t) {
    return active() ? kRefused : error::kNone;
}

std::uint32_t CCreateAVI::SetQuality(std::uint32_t quality) {
    return change(&MovieSettings::quality, std::min(quality, kFinestQuality));
}

std::uint32_t CCreateAVI::SetRate(std::uint32_t rate) {
    return change(&MovieSettings::rate, rate);
}

std::uint32_t CCreateAVI::SetScale(std::uint32_t scale) {
    return change(&MovieSettings::scale, scale);
}

std::uint32_t CCreateAVI::SetBufferCount(std::uint32_t count) {
    bufferCount_ = count;
    return error::kNone;
}

std::uint32_t CCreateAVI::GetBufferCount(std::uint32_t* count) {
    *count = bufferCount_;
    return error::kNone;
}

std::uint32_t CCreateAVI::SetImageFormat(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                         std::uint32_t previewFormat) {
    switch (previewFormat) {
        case 1: return SetImageFormatEx(width, height, stride, 0x01080001);
        case 4: return SetImageFormatEx(width, height, stride, 0x02180015);
        case 8: return SetImageFormatEx(width, height, stride, 0x02200017);
        default: return error::kInvalidArgument;
    }
}

std::uint32_t CCreateAVI::SetImageFormatEx(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                           std::uint32_t formatCode) {
    const std::uint32_t refused = refusal();
    if (refused != 0) return refused;
    const std::optional<PixelFormat> pixel = pixelFormatOf(formatCode);
    if (!pixel) return error::kInvalidArgument;
    const bool raw = format_ == movie_format::kSmf;

    FrameCopy copy;
    copy.sourcePixel = raw ? 1 : pixel->bytes;
    copy.sourceHeight = height;
    const std::size_t rowBytes = std::size_t{width} * copy.sourcePixel;
    copy.sourceStride = stride != 0 ? stride : raw ? rowBytes : roundUpTo4(rowBytes);
    copy.shift = shift_;
    copy.bottomUp = writer_->StoresBottomUp();
    copy.width = shifted(width, shift_);
    copy.height = shifted(height, shift_);
    copy.stride = raw ? copy.width : paddedStride(copy.width, copy.pixel());
    if (copy.width == 0 || copy.height == 0 || copy.sourceStride < rowBytes) return error::kInvalidArgument;
    const std::uint64_t bytes = std::uint64_t{copy.stride} * copy.height;
    if (bytes > std::numeric_limits<std::uint32_t>::max()) return error::kOutOfMemory;

    copy_ = copy;
    imageBytes_ = static_cast<std::uint32_t>(bytes);
    MovieSettings& settings = writer_->settings;
    settings.imageBytes = imageBytes_;
    settings.rowStride = static_cast<std::uint32_t>(copy.stride);
    settings.swapRedBlue = pixel->redFirst && !raw;  // a raw row is one byte a pixel
    settings.image = ImageDescription::of(copy.width, copy.height, settings.rowStride, pixel->fileBits);
    return error::kNone;
}

std::uint32_t CCreateAVI::AddFile(const char16_t* name) {
    if (!writer_) return kNoWriter;
    if (name == nullptr) return error::kInvalidArgument;
    try {
        return writer_->addFile(name).code();
    } catch (const std::bad_alloc&) {
        return error::kOutOfMemory;
    }
}

std::uint32_t CCreateAVI::Start() {
    const std::uint32_t refused = refusal();
    if (refused != 0) return refused;
    try {
        return startWriter().code();
    } catch (const std::bad_alloc&) {
        return error::kOutOfMemory;
    }
}

// The writer may end before this returns, so that the status comes first.
Status CCreateAVI::startWriter() {
    writer_->Stop();
    emptyQueues();
    makeBuffers();
    if (buffers_.empty() || !hasEvents()) return Status(error::kOutOfMemory);
    freeBuffers_.reserve(buffers_.size());
    filledFrames_.reserve(buffers_.size());
    for (FrameBuffer& buffer : buffers_) freeBuffers_.push(&buffer);
    acceptedFrames_ = pausedFrames_ = position_ = 0;
    writer_->filledFrames = &filledFrames_;
    writer_->freeFrames = &freeBuffers_;
    writer_->listener = this;
    status_ = recorder_status::kRecording;
    const Status started = writer_->Start();
    if (!started.ok()) status_ = recorder_status::kIdle;
    return started;
}

void CCreateAVI::emptyQueues() {
    while (freeBuffers_.pop() != nullptr) {
    }
    while (filledFrames_.pop() != nullptr) {
    }
    buffers_.clear();
}

// As many as wanted, as long as memory is left for others. One there is in any case: the limit is looked at
// behind it.
void CCreateAVI::makeBuffers() {
    const std::uint64_t freeBytes = surroundings_.freeMemory();
    const std::uint64_t limit = freeBytes > kMemoryLeftFree ? freeBytes - kMemoryLeftFree : 0;
    std::uint64_t sum = 0;
    while (buffers_.size() < bufferCount_ && sum <= limit) {
        if (!buffers_.emplace_back().allocate(imageBytes_).ok()) {
            buffers_.pop_back();
            return;
        }
        sum += imageBytes_;
    }
}

// Without descriptors left nobody could wait.
bool CCreateAVI::hasEvents() const {
    return freeBuffers_.notEmpty().valid() && filledFrames_.notEmpty().valid() && writer_->hasEvents();
}

std::uint32_t CCreateAVI::WriteFrame(const std::uint8_t* image, std::uint32_t frameNumber, std::uint32_t tag,
                                     std::uint32_t* ended) {
    *ended = 0;
    if (!writer_) return kNoWriter;
    if (status_ == recorder_status::kPaused) {
        ++pausedFrames_;
        return error::kNone;
    }
    if (acceptedFrames_ == 0) {
        firstNumber_ = frameNumber;
        pausedFrames_ = 0;
    }
    position_ = frameNumber - pausedFrames_ - firstNumber_;
    enum { Ended, BufferFree };
    const std::array<const platform::Event*, 2> events = {&writer_->ended(), &freeBuffers_.notEmpty()};
    switch (platform::waitAny(events, dropsFrames ? 0 : platform::kWaitForever)) {
        case Ended: *ended = 1; return error::kNone;
        case BufferFree: return takeFrame(image, tag);
        default: return error::kTimeout;
    }
}

std::uint32_t CCreateAVI::takeFrame(const std::uint8_t* image, std::uint32_t tag) {
    FrameBuffer* const buffer = freeBuffers_.pop();
    if (buffer == nullptr) return error::kTimeout;  // there is no other taker, so this does not happen
    copyFrame(copy_, image, buffer->image());
    buffer->position = position_;
    buffer->tag = tag;
    filledFrames_.push(buffer);
    ++acceptedFrames_;
    return error::kNone;
}

std::uint32_t CCreateAVI::GetStatus(std::uint8_t* status) {
    *status = status_;
    return error::kNone;
}

// By design: an active recording takes neither a pause nor a continuation, so that it can only be ended; a
// pause can be set ahead of time alone.
std::uint32_t CCreateAVI::SetStatus(std::uint8_t status) {
    switch (status) {
        case recorder_status::kIdle:
            if (writer_) writer_->Stop();
            status_ = recorder_status::kIdle;
            return writer_ ? writer_->result().code() : error::kNone;
        case recorder_status::kPaused:
            if (active()) return kRefused;
            status_ = recorder_status::kPaused;
            return error::kNone;
        case recorder_status::kRecording: return kRefused;
        default: return error::kInvalidArgument;
    }
}

std::uint32_t CCreateAVI::GetPosition(std::uint32_t* position) {
    *position = position_;
    return error::kNone;
}

std::uint32_t CCreateAVI::SetNotifyWindow(TavraWindow window) {
    const std::lock_guard lock(notifyMutex_);
    notifyWindow_ = window;
    return error::kNone;
}

std::uint32_t CCreateAVI::SetNotifyParam(std::uint64_t parameter) {
    const std::lock_guard lock(notifyMutex_);
    notifyParameter_ = parameter;
    return error::kNone;
}

std::uint32_t CCreateAVI::GetMovieHeader(std::uint8_t* block) {
    return writer_ ? writer_->GetMovieHeader(block) : kNoWriter;
}

std::uint32_t CCreateAVI::SetMovieHeader(const std::uint8_t* block) {
    return writer_ ? writer_->SetMovieHeader(block) : kNoWriter;
}

std::uint32_t CCreateAVI::GetFileSizeEstimate(std::uint32_t frameBytes, std::uint32_t frames,
                                              std::uint64_t* size) {
    if (!writer_) return kNoWriter;
    *size = writer_->GetFileSizeEstimate(frameBytes, frames);
    return error::kNone;
}

Status CCreateAVI::OnStatus(std::uint32_t event, std::uint32_t value) {
    if (event == kEnded) status_ = recorder_status::kIdle;
    std::unique_lock lock(notifyMutex_);
    const TavraWindow window = notifyWindow_;
    const std::uint64_t parameter = notifyParameter_;
    lock.unlock();
    return window != nullptr ? platform::postMessage(window, event, parameter, value) : Status();
}

}  // namespace tavra::movie

namespace tavra {

// For the factory.
ISUnknown* makeCreateAvi() {
    return new (std::nothrow) movie::CCreateAVI;
}

}  // namespace tavra
