#include "media/movie/avi_file.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "media/movie/attempt.h"

namespace tavra::movie {
namespace {

constexpr std::uint64_t kFat32SizeLimit = 0x100000000;
constexpr std::uint64_t kUnknownSizeLimit = 0x80000000;

}  // namespace

CAVIFile::~CAVIFile() {
    dropFiles();
}

void CAVIFile::dropFiles() {
    while (std::unique_ptr<FileRecord> unused{fileQueue_.pop()}) {
    }
}

Status CAVIFile::addFile(const std::u16string& name) {
    std::unique_ptr<FileRecord> record;
    TAVRA_RETURN_IF_ERROR(OpenFile(name, record));
    record->volumeLimit = volumeLimit_;
    fileQueue_.push(record.get());
    static_cast<void>(record.release());  // the queue has it now
    return {};
}

Status CAVIFile::Start() {
    ended_.reset();
    const Status started = attempt([&] {
        TAVRA_RETURN_IF_ERROR(PrepareHeader());
        return CWorker::Start();
    });
    if (!started.ok()) ended_.set();
    return started;
}

void CAVIFile::ThreadMain() {
    Status result;
    bool fileStarted = false;
    while (std::unique_ptr<FileRecord> record = nextFile()) {
        takeLimit(*record, !fileStarted);
        if (!std::exchange(fileStarted, true) && listener != nullptr) {
            // Whether the message goes through is the receiver's concern.
            static_cast<void>(listener->OnStatus(IAVIFileStatusListener::kFileStarted, 0));
        }
        const auto [end, written] = writeFrames(*record);
        const Status closed = attempt([&] { return CloseFile(*record); });
        // By design: a close that fails behind good writes is not reported.
        result = written.ok() ? Status() : closed;
        if (end == End::Stopped) break;
    }
    const Status finished = attempt([&] { return Finish(); });
    result_ = result.ok() ? finished : result;
    ended_.set();
    if (fileStarted && listener != nullptr) {
        static_cast<void>(listener->OnStatus(IAVIFileStatusListener::kEnded, result_.code()));
    }
}

// The next file of the queue; none, or a stop, ends the recording.
std::unique_ptr<FileRecord> CAVIFile::nextFile() {
    position_ = 0;
    projectedSize_ = 0;
    const std::array<const platform::Event*, 2> events = {&fileQueue_.notEmpty(), &stopEvent()};
    if (platform::waitAny(events, 0) != 0) return nullptr;
    return std::unique_ptr<FileRecord>(fileQueue_.pop());
}

// Of the room that a file found when it was opened, the files before it have taken their part.
void CAVIFile::takeLimit(const FileRecord& record, bool isFirst) {
    if (!record.volumeLimit) return;
    sizeLimit_ = *record.volumeLimit;
    std::uint64_t free = 0;
    if (!isFirst && files_.freeBytes(record.name, free).ok()) sizeLimit_ = std::min(sizeLimit_, free);
}

CAVIFile::FileEnd CAVIFile::writeFrames(FileRecord& record) {
    // Frames first: what was filled before a stop is still written.
    const std::array<const platform::Event*, 2> events = {&filledFrames->notEmpty(), &stopEvent()};
    const std::uint32_t framesPerFile = std::max(settings.framesPerFile, 1U);
    std::optional<std::uint32_t> first;
    std::uint32_t next = 0;  // the index of a frame behind which none is missing
    for (;;) {
        if (platform::waitAny(events, platform::kWaitForever) != 0) return {End::Stopped, {}};
        FrameBuffer* const frame = filledFrames->pop();
        if (frame == nullptr) continue;
        if (!first) first = frame->position;
        const std::uint32_t index = frame->position - *first;
        if (index >= framesPerFile) {
            filledFrames->pushFront(frame);
            return {End::FileDone, {}};
        }
        const bool swaps = settings.swapRedBlue && !encoderOrdersColors_;
        if (swaps) swapRedBlue(frame->image());
        const Status written = attempt([&] { return WriteFrame(record, frame->image(), index, frame->tag); });
        if (written == Status(error::kFileTooLarge) && index > next && fileQueue_.size() > 0) {
            // It is the gap that the file has no room for. The next file begins with this frame.
            if (swaps) swapRedBlue(frame->image());
            filledFrames->pushFront(frame);
            return {End::FileDone, {}};
        }
        freeFrames->push(frame);
        if (!written.ok() || IsFileFull()) return {End::FileDone, written};
        next = std::max(next, index) + 1;
    }
}

void CAVIFile::swapRedBlue(std::uint8_t* image) const {
    const auto width = static_cast<std::size_t>(settings.image.width);
    for (std::int32_t y = 0; y < settings.image.height; ++y, image += settings.rowStride) {
        for (std::size_t x = 0; x < 3 * width; x += 3) std::swap(image[x], image[x + 2]);
    }
}

bool CAVIFile::IsFileFull() const {
    return GetMaxFileSize() < settings.imageBytes + std::uint64_t{24} + projectedSize_;
}

std::uint64_t CAVIFile::GetFileSizeEstimate(std::uint32_t frameBytes, std::uint32_t frames) const {
    constexpr std::uint64_t kBesides = 4128;
    const std::uint64_t chunk = std::uint64_t{frameBytes} + 24;
    return frames > (kBeyondAllSizes - kBesides) / chunk ? kBeyondAllSizes : chunk * frames + kBesides;
}

void CAVIFile::limitSizeByVolume(const std::u16string& fileName) {
    volumeLimit_ = limitOfVolume(fileName);
    if (!runs()) sizeLimit_ = *volumeLimit_;
}

std::uint64_t CAVIFile::limitOfVolume(const std::u16string& fileName) const {
    std::uint64_t limit = largestSize_;
    platform::VolumeKind kind = platform::VolumeKind::Large;
    if (files_.volumeKind(fileName, kind).ok()) {
        if (kind == platform::VolumeKind::Fat32) limit = kFat32SizeLimit;
        if (kind == platform::VolumeKind::Unknown) limit = kUnknownSizeLimit;
    }
    std::uint64_t free = 0;
    if (!files_.freeBytes(fileName, free).ok()) return limit;
    limit = std::min(limit, free);
    std::uint64_t existing = 0;
    if (files_.fileSize(fileName, existing).ok()) limit += existing;
    return limit;
}

}  // namespace tavra::movie
