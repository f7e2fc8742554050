#include "capture/capture_thread.h"

#include <new>

#include "base/little_endian.h"
#include "camera/usb_speed.h"
#include "capture/consumers.h"
#include "capture/recording.h"
#include "platform/last_error.h"
#include "platform/messages.h"

namespace tavra {
namespace {

constexpr std::uint16_t kTriggerWordAddress = 48;
constexpr std::uint32_t kSuperSpeedPacket = 1024;
constexpr std::uint32_t kHighSpeedPacket = 512;
constexpr std::uint32_t kFrameNumberOffset = 12;  // in the frame header

std::uint64_t asParameter(const TAVRA_COMMON_PARAM& camera) {
    return reinterpret_cast<std::uintptr_t>(&camera);
}

}  // namespace

// A window that has gone meanwhile needs no drawing.
CaptureThread::CaptureThread(TAVRA_COMMON_PARAM& camera)
    : camera_(camera), drawWorker_([](TavraWindow window) {
          static_cast<void>(platform::windowSystem().invalidate(window, false));
      }) {}

void CaptureThread::run() {
    try {
        if (prepare()) loop();
    } catch (const std::bad_alloc&) {
        run_.error = error::kOutOfMemory;
    }
    shutdown();
}

bool CaptureThread::prepare() {
    readTriggerWord();
    readGeometry();
    const std::uint32_t packet = packetSize();
    startDrawWorker();
    run_.regions = camera_.geometry->multiRoi;
    return startReadEngine(packet) && announceStart();
}

void CaptureThread::readTriggerWord() {
    std::uint32_t word = 0;
    // Cameras without status words have no trigger word either: 0.
    if (camera_.control.readStatusLong(kTriggerWordAddress, word).ok()) run_.triggerWord = word;
}

void CaptureThread::readGeometry() {
    const CFrameFeature& geometry = *camera_.geometry;
    run_.image = geometry.imageSize();
    run_.raw = geometry.rawSize();
    run_.headerSize = camera_.info.frameHeaderSize;
    run_.rawSize = geometry.rawDataSize;
    run_.transferBits = geometry.transferBits;
    run_.previewFormat = geometry.previewPixelFormat;
}

std::uint32_t CaptureThread::packetSize() {
    std::uint8_t speed = 0;
    const bool known = getUsbSpeed(camera_, speed).ok();
    return known && speed == kSuperSpeed ? kSuperSpeedPacket : kHighSpeedPacket;
}

// A run without it has no redraws and is otherwise whole.
void CaptureThread::startDrawWorker() {
    static_cast<void>(drawWorker_.start("tavra-draw"));
}

// By design: a failure ends the run with code 0, and without the message that it has started.
bool CaptureThread::startReadEngine(std::uint32_t packet) {
    const FrameLayout layout{run_.headerSize, run_.rawSize, packet};
    engine_.emplace(*camera_.control.access(), camera_.control.device(), layout, maximumTransfer(layout));
    path_.emplace(camera_, run_, engine_->queue(), drawWorker_);
    return engine_->start().ok();
}

bool CaptureThread::announceStart() {
    const TavraWindow receiver = camera_.receiver;
    if (receiver == nullptr) return true;
    const Status posted =
        platform::postMessage(receiver, TAVRA_MESSAGE_TRANSFER_STARTED, asParameter(camera_), 0);
    run_.error = posted.code();
    return posted.ok();
}

void CaptureThread::loop() {
    while (run_.goOn && framesWanted()) {
        if (!waitForBlock()) return;
        std::uint8_t* data = nullptr;
        Verdict verdict = judgeStatus();
        if (verdict == Verdict::Use) verdict = judgeLength(data);
        if (verdict == Verdict::End) return;
        if (verdict == Verdict::Use) path_->process(data);
    }
}

// A run that a snapshot or a recording started ends by itself here.
bool CaptureThread::framesWanted() {
    return rawWanted(camera_) || previewWanted(camera_) || !closeToRecorder();
}

// From here on a recording that begins starts a stream of its own. False: one has begun meanwhile.
bool CaptureThread::closeToRecorder() {
    const std::lock_guard operation(camera_.recording.operationMutex);
    if (camera_.recording.exists()) return false;
    camera_.recording.streamClosed = closedToRecorder_ = true;
    return true;
}

// The read thread's end is the same event over its restarts, so that the table is current whenever it is
// made.
bool CaptureThread::waitForBlock() {
    enum Ended { Stop, ReadThread, Block };
    const platform::Event* const table[] = {&camera_.stopEvent, &engine_->ended(),
                                            &engine_->queue().current().filled};
    const int ended = platform::waitAny(table, platform::kWaitForever);
    // A lost device is never forgotten, so only a failure is copied.
    if (ended == ReadThread && engine_->status() != 0) camera_.streamingFailure = engine_->status();
    return ended == Block;
}

CaptureThread::Verdict CaptureThread::judgeStatus() {
    FrameQueue& queue = engine_->queue();
    const std::uint32_t status = queue.current().status;
    if (status == 0) return Verdict::Use;
    queue.release();
    switch (status) {
        case error::kDeviceNotFunctioning:
        case error::kDataError: return restartReading();
        case error::kDeviceGone: camera_.streamingFailure = error::kDeviceGone; return Verdict::End;
        default: return Verdict::Skip;
    }
}

CaptureThread::Verdict CaptureThread::restartReading() {
    engine_->stop();
    return engine_->start().ok() ? Verdict::Skip : Verdict::End;
}

// A header may come in a block of its own, ahead of its frame. Anything that is neither header, raw data nor
// both is a damaged frame, and vanishes.
CaptureThread::Verdict CaptureThread::judgeLength(std::uint8_t*& data) {
    FrameQueue& queue = engine_->queue();
    const FrameBlock& block = queue.current();
    const std::uint64_t whole = std::uint64_t{block.headerSize} + block.rawSize;
    if (block.length == block.headerSize) {
        run_.frameNumber = headerFrameNumber(block);
    } else if (block.length == block.rawSize) {
        data = block.data;
        return Verdict::Use;
    } else if (block.length == whole) {
        run_.frameNumber = headerFrameNumber(block);
        data = block.data + block.headerSize;
        return Verdict::Use;
    }
    queue.release();
    return Verdict::Skip;
}

// A header too short for a number leaves the last one.
std::uint32_t CaptureThread::headerFrameNumber(const FrameBlock& block) const {
    if (block.headerSize < kFrameNumberOffset + 4) return run_.frameNumber;
    return loadLe32(block.data + kFrameNumberOffset);
}

// The order matters.
void CaptureThread::shutdown() {
    if (engine_) engine_->stop();
    if (path_) path_->publishPending();
    releaseRecorder();
    announceEnd();
    drawWorker_.stop();
    path_.reset();
    engine_.reset();
}

// A recording does not outlive the stream. One that waits for the end of this thread has the mutex.
void CaptureThread::releaseRecorder() {
    if (closedToRecorder_ || run_.endAfterFrame) return;
    const std::lock_guard operation(camera_.recording.operationMutex);
    closeRecording(camera_.recording);
    camera_.recording.streamClosed = true;
}

std::uint32_t CaptureThread::endCode() const {
    // By design: once a run has ended on a lost device, every later run of the handle reports that.
    const std::uint32_t failure = camera_.streamingFailure;
    return failure != 0 ? failure : run_.error;
}

void CaptureThread::announceEnd() {
    const TavraWindow receiver = camera_.receiver;
    if (receiver == nullptr) return;
    // A full queue loses the message.
    static_cast<void>(
        platform::postMessage(receiver, TAVRA_MESSAGE_TRANSFER_ENDED, asParameter(camera_), endCode()));
}

}  // namespace tavra
