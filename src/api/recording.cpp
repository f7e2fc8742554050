// Exports of recording.
#include "capture/recording.h"

#include <algorithm>
#include <string>

#include "api/movie_name.h"
#include "api/output.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

constexpr std::uint8_t kSmallestFrameSize = 2;
constexpr std::uint32_t kFinestQuality = 100;

}  // namespace

TavraBool Tavra_SaveAVIW(TavraHandle handle, const TavraWChar* fileName, uint32_t compressor,
                         uint32_t framesPerFile) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        return startRecording(camera, {fileName, compressor, framesPerFile});
    });
}

TavraBool Tavra_SaveAVIA(TavraHandle handle, const char* fileName, uint32_t compressor,
                         uint32_t framesPerFile) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        std::u16string wide;
        const bool named = api::wideMovieName(fileName, wide);
        return startRecording(camera, {named ? wide.c_str() : nullptr, compressor, framesPerFile});
    });
}

TavraBool Tavra_SetAVIStatus(TavraHandle handle, uint8_t status) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) { return setRecordingStatus(camera, status); });
}

TavraBool Tavra_GetAVIStatus(TavraHandle handle, uint8_t* status, uint32_t* framesPerFile,
                             uint32_t* position) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        const RecordingState state = recordingState(camera);
        api::giveIfWanted(status, state.status);
        if (!state.exists) return Status();
        api::giveIfWanted(framesPerFile, state.framesPerFile);
        api::giveIfWanted(position, state.position);
        return Status();
    });
}

TavraBool Tavra_SetAVIFrameSize(TavraHandle handle, uint8_t size) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        if (camera.recording.exists()) return Status(error::kRecording);
        camera.recording.frameSize = size > kSmallestFrameSize ? std::uint8_t{0} : size;
        return Status();
    });
}

TavraBool Tavra_GetAVIFrameSize(TavraHandle handle, uint8_t* size) {
    return api::getNumber(handle, size, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.recording.frameSize;
        return Status();
    });
}

TavraBool Tavra_SetAVIQuality(TavraHandle handle, uint32_t quality) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        camera.recording.quality = std::min(quality, kFinestQuality);
        return Status();
    });
}

TavraBool Tavra_GetAVIQuality(TavraHandle handle, uint32_t* quality) {
    return api::getNumber(handle, quality, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.recording.quality;
        return Status();
    });
}

TavraBool Tavra_SetAVIPriorityFileFormat(TavraHandle handle, uint32_t format) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        if (format > TAVRA_AVI_FORMAT_2_0) return Status(error::kInvalidArgument);
        camera.recording.priorityFormat = format;
        return Status();
    });
}

TavraBool Tavra_GetAVIPriorityFileFormat(TavraHandle handle, uint32_t* format) {
    return api::getNumber(handle, format, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.recording.priorityFormat;
        return Status();
    });
}
