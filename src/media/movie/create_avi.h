// The recorder: takes frames from one thread, keeps them in buffers, and lets a writer thread write them to a
// movie. When the writer lags and no buffer is free, whoever hands in a frame waits.
//
// It owns the buffers, the queues between the two threads, and the writer. As save_avi_file.h says of
// threads; OnStatus comes from the writer's thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>

#include "media/movie/avi_file.h"
#include "media/movie/frame_copy.h"
#include "media/movie/movie_writer.h"
#include "media/movie/save_avi_file.h"
#include "platform/page_memory.h"

namespace tavra::movie {

// What a recorder finds around it; a test's recorder finds something else.
struct RecorderSurroundings {
    MovieFiles* files = &systemMovieFiles();
    std::uint64_t (*freeMemory)() = platform::freePhysicalMemory;  // bytes
    std::unique_ptr<CAVIFile> (*makeWriter)(std::uint16_t, std::uint32_t, MovieFiles&) = makeMovieWriter;
};

class CCreateAVI final : public IAVIFileStatusListener, public CountedStage<CCreateAVI, ISaveAVIFile> {
  public:
    explicit CCreateAVI(const RecorderSurroundings& surroundings = {}) : surroundings_(surroundings) {}
    ~CCreateAVI();

    std::uint32_t SetFileFormat(std::uint16_t format, std::uint32_t compressor) override;
    std::uint32_t SetFrameSizeShift(std::uint8_t shift) override;
    std::uint32_t SetFramesPerFile(std::uint32_t frames) override;
    std::uint32_t GetFramesPerFile(std::uint32_t* frames) override;
    std::uint32_t SetReserved(std::uint32_t value) override;
    std::uint32_t SetQuality(std::uint32_t quality) override;
    std::uint32_t SetRate(std::uint32_t rate) override;
    std::uint32_t SetScale(std::uint32_t scale) override;
    std::uint32_t SetBufferCount(std::uint32_t count) override;
    std::uint32_t GetBufferCount(std::uint32_t* count) override;
    std::uint32_t SetImageFormat(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                 std::uint32_t previewFormat) override;
    std::uint32_t AddFile(const char16_t* name) override;
    std::uint32_t Start() override;
    std::uint32_t WriteFrame(const std::uint8_t* image, std::uint32_t frameNumber, std::uint32_t tag,
                             std::uint32_t* ended) override;
    std::uint32_t GetStatus(std::uint8_t* status) override;
    std::uint32_t SetStatus(std::uint8_t status) override;
    std::uint32_t GetPosition(std::uint32_t* position) override;
    std::uint32_t SetNotifyWindow(TavraWindow window) override;
    std::uint32_t SetNotifyParam(std::uint64_t parameter) override;
    std::uint32_t GetMovieHeader(std::uint8_t* block) override;
    std::uint32_t SetMovieHeader(const std::uint8_t* block) override;
    std::uint32_t SetImageFormatEx(std::uint32_t width, std::uint32_t height, std::uint32_t stride,
                                   std::uint32_t formatCode) override;
    std::uint32_t GetFileSizeEstimate(std::uint32_t frameBytes, std::uint32_t frames,
                                      std::uint64_t* size) override;

    Status OnStatus(std::uint32_t event, std::uint32_t value) override;

    // Frames for which no buffer is free are left out (258) instead of waited for. The library waits.
    bool dropsFrames = false;

  private:
    bool active() const { return status_ != recorder_status::kIdle; }
    // 0, or why a setting of the writer cannot be changed.
    std::uint32_t refusal() const;
    std::uint32_t change(std::uint32_t MovieSettings::*setting, std::uint32_t value);

    Status startWriter();
    void emptyQueues();
    void makeBuffers();
    bool hasEvents() const;
    std::uint32_t takeFrame(const std::uint8_t* image, std::uint32_t tag);

    const RecorderSurroundings surroundings_;
    std::unique_ptr<CAVIFile> writer_;
    std::uint16_t format_ = 0;
    std::uint8_t shift_ = 0;
    FrameCopy copy_;
    std::uint32_t imageBytes_ = 0;

    std::uint32_t bufferCount_ = 10;
    std::deque<FrameBuffer> buffers_;  // all of them; the queues only point to them
    PointerQueue<FrameBuffer> freeBuffers_;
    PointerQueue<FrameBuffer> filledFrames_;

    std::uint32_t firstNumber_ = 0;
    std::uint32_t acceptedFrames_ = 0;
    std::uint32_t pausedFrames_ = 0;
    std::uint32_t position_ = 0;

    // Changed by the application, read by the writer's thread. The pair belongs together.
    std::mutex notifyMutex_;
    TavraWindow notifyWindow_ = nullptr;
    std::uint64_t notifyParameter_ = 0;
    std::atomic<std::uint8_t> status_{recorder_status::kIdle};
};

}  // namespace tavra::movie
