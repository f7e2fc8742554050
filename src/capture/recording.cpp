#include "capture/recording.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "camera/common_param.h"
#include "camera/frame_timing.h"
#include "camera/mirror.h"
#include "capture/transfer.h"
#include "media/movie/movie_writer.h"
#include "media/movie/save_avi_file.h"
#include "media/movie/smf_header.h"
#include "media/stills/file_type.h"
#include "stages/color_matrix.h"
#include "stages/factory.h"
#include "stages/gamma.h"
#include "stages/sharpness.h"

namespace tavra {
namespace {

struct Release {
    void operator()(movie::ISaveAVIFile* recorder) const { recorder->Release(); }
};
using RecorderPointer = std::unique_ptr<movie::ISaveAVIFile, Release>;

bool takesRaw(std::uint16_t format) {
    return format != movie::movie_format::kAvi1 && format != movie::movie_format::kAvi2;
}

bool operator==(const platform::BitmapShape& a, const platform::BitmapShape& b) {
    return a.width == b.width && a.height == b.height && a.bitCount == b.bitCount;
}

// Nothing where the name stands for no movie.
std::optional<std::uint16_t> formatOf(const TAVRA_COMMON_PARAM& camera, const RecordingOrder& order) {
    if (order.fileName == nullptr) return std::nullopt;
    const auto extension = stills::extensionOf(order.fileName);
    if (!extension) return std::nullopt;
    return movie::movieFormatOf(*extension, order.compressor, camera.recording.priorityFormat == 1);
}

// The newest preview image has the shape of those to come.
Status imageShape(TAVRA_COMMON_PARAM& camera, platform::BitmapShape& shape) {
    if (!camera.buffersExist) return Status(error::kOutOfMemory);
    ImageBufferSet& set = isQuarterTurn(camera.rotationMode) ? camera.imagesB : camera.imagesA;
    const std::lock_guard lock(set.mutex());
    shape = set.shape();
    return Status();
}

Status setUp(TAVRA_COMMON_PARAM& camera, const RecordingOrder& order, std::uint16_t format,
             movie::ISaveAVIFile& recorder) {
    RecordingSlot& slot = camera.recording;
    std::uint32_t rate = 0;
    std::uint32_t scale = 0;
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetFileFormat(format, order.compressor)));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetFrameSizeShift(slot.frameSize)));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetFramesPerFile(order.framesPerFile)));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetReserved(0)));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetQuality(slot.quality)));
    TAVRA_RETURN_IF_ERROR(getReadClock(camera, rate));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetRate(rate)));
    TAVRA_RETURN_IF_ERROR(getClocksPerFrame(camera, scale));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetScale(scale)));
    return Status(recorder.SetBufferCount(slot.bufferCount));
}

// Raw frames are dense, preview images padded.
Status setImageFormat(const platform::BitmapShape& shape, bool raw, movie::ISaveAVIFile& recorder) {
    const std::uint32_t previewFormat = shape.bitCount == 8 ? 1 : shape.bitCount == 24 ? 4 : 8;
    const std::uint32_t stride = raw ? shape.width : shape.stride();
    return Status(recorder.SetImageFormat(shape.width, shape.height, stride, previewFormat));
}

// How the movie is to be developed: as the camera's preview is now.
Status storeDevelopment(TAVRA_COMMON_PARAM& camera, movie::ISaveAVIFile& recorder) {
    using Header = movie::SmfHeader;
    Header header;
    TAVRA_RETURN_IF_ERROR(Status(recorder.GetMovieHeader(header.data())));
    header.set(Header::Field::Interpolation, camera.interpolationMethod);

    Header::Gamma gamma;
    std::uint16_t bits = 0;  // bytes
    TAVRA_RETURN_IF_ERROR(Status(camera.gamma->GetGamma(0, &gamma.mode, &gamma.gamma, &gamma.brightness,
                                                        &gamma.contrast, gamma.table.data(), &bits)));
    header.setGamma(gamma);

    Header::Sharpness sharpness;
    std::uint16_t coring = 0;
    TAVRA_RETURN_IF_ERROR(Status(camera.sharpness->GetMode(&sharpness.mode, &sharpness.gain, &coring)));
    sharpness.coring = static_cast<std::uint8_t>(coring);
    header.setSharpness(sharpness);

    Header::Colors colors;
    TAVRA_RETURN_IF_ERROR(
        Status(camera.colorMatrix->GetColorMatrix(&colors.matrixMode, colors.matrix.data())));
    TAVRA_RETURN_IF_ERROR(
        Status(camera.colorMatrix->GetHueSaturation(&colors.hueMode, &colors.hue, &colors.saturation)));
    header.setColors(colors);
    return Status(recorder.SetMovieHeader(header.data()));
}

// Puts the recorder where the capture thread finds it. A stream that is on its way out takes none any more
// and is waited for, without the operation mutex: its last callbacks may ask for the recording's state.
Status attach(TAVRA_COMMON_PARAM& camera, RecorderPointer& recorder, std::uint16_t format,
              const platform::BitmapShape& shape) {
    RecordingSlot& slot = camera.recording;
    const std::lock_guard transfer(camera.transferMutex);
    std::unique_lock operation(slot.operationMutex);
    while (slot.streamClosed && camera.transferRunning()) {
        operation.unlock();
        endStream(camera);
        operation.lock();
    }
    if (slot.recorder != nullptr) return Status(error::kRecording);
    const bool joins = camera.transferRunning();
    slot.format = format;
    slot.shape = shape;
    slot.startedStream = !joins;
    slot.put(recorder.get());
    if (!joins) {
        const Status started = restartStream(camera);
        if (!started.ok()) {
            slot.put(nullptr);
            return started;
        }
    }
    static_cast<void>(recorder.release());  // the slot has it now
    return Status();
}

}  // namespace

Status startRecording(TAVRA_COMMON_PARAM& camera, const RecordingOrder& order) {
    if (camera.recording.exists()) return Status(error::kRecording);
    const std::optional<std::uint16_t> format = formatOf(camera, order);
    if (!format) return Status(error::kFileName);
    RecorderPointer recorder(static_cast<movie::ISaveAVIFile*>(CreateStageObject(stage_code::kCreateAvi)));
    if (recorder == nullptr) return Status(error::kOutOfMemory);

    platform::BitmapShape shape;
    TAVRA_RETURN_IF_ERROR(setUp(camera, order, *format, *recorder));
    TAVRA_RETURN_IF_ERROR(imageShape(camera, shape));
    TAVRA_RETURN_IF_ERROR(setImageFormat(shape, takesRaw(*format), *recorder));
    TAVRA_RETURN_IF_ERROR(Status(recorder->AddFile(order.fileName)));
    TAVRA_RETURN_IF_ERROR(Status(recorder->SetNotifyWindow(camera.receiver)));
    TAVRA_RETURN_IF_ERROR(Status(recorder->SetNotifyParam(reinterpret_cast<std::uintptr_t>(&camera))));
    if (*format == movie::movie_format::kSmf) TAVRA_RETURN_IF_ERROR(storeDevelopment(camera, *recorder));
    if (recorder->Start() != 0) return Status(error::kOutOfMemory);
    return attach(camera, recorder, *format, shape);
}

Status setRecordingStatus(TAVRA_COMMON_PARAM& camera, std::uint8_t status) {
    RecordingSlot& slot = camera.recording;
    const std::lock_guard operation(slot.operationMutex);
    if (slot.recorder == nullptr || status > movie::recorder_status::kPaused)
        return Status(error::kInvalidArgument);
    if (status == movie::recorder_status::kIdle) {
        closeRecording(slot);
    } else {
        // By design: a recording that runs refuses both, and nobody is told.
        static_cast<void>(slot.recorder->SetStatus(status));
    }
    return Status();
}

RecordingState recordingState(TAVRA_COMMON_PARAM& camera) {
    RecordingSlot& slot = camera.recording;
    const std::lock_guard operation(slot.operationMutex);
    RecordingState state;
    if (slot.recorder == nullptr) return state;
    state.exists = true;
    slot.recorder->GetStatus(&state.status);
    slot.recorder->GetFramesPerFile(&state.framesPerFile);
    slot.recorder->GetPosition(&state.position);
    return state;
}

// A frame of another shape was begun ahead of a change of the rotation, which the recording came behind.
bool recordFrame(RecordingSlot& slot, const RecordedFrame& frame) {
    const std::lock_guard operation(slot.operationMutex);
    if (slot.recorder == nullptr || takesRaw(slot.format) != frame.raw || !(slot.shape == frame.shape))
        return true;
    std::uint32_t ended = 0;
    slot.recorder->WriteFrame(frame.data, frame.number, frame.tag, &ended);
    if (ended == 0) return true;
    closeRecording(slot);
    // The next recording does not join a stream that ends with this one.
    slot.streamClosed = slot.startedStream;
    return !slot.startedStream;
}

// The pointer goes last: who only asks whether there is a recording hears of it until its file is closed.
void closeRecording(RecordingSlot& slot) {
    if (slot.recorder == nullptr) return;
    slot.recorder->Release();
    slot.put(nullptr);
}

}  // namespace tavra
