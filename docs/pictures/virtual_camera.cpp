#include "virtual_camera.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <stdexcept>

namespace tavra::pictures {
namespace {

constexpr std::uint32_t kPatienceMs = 20000;  // what never takes this long has gone wrong

std::uint32_t pixelBytesOf(std::uint32_t format) {
    return format == TAVRA_PIXEL_MONO_8 ? 1 : format == TAVRA_PIXEL_BGR_24 ? 3 : 4;
}

std::runtime_error failure(TavraHandle handle, const char* where, int line) {
    return std::runtime_error(std::string(where) + ", line " + std::to_string(line) + ": error " +
                              std::to_string(Tavra_GetLastError(handle)));
}

// The list is read at every enumeration, and a camera whose item stands there again would keep its settings.
void nameCameras(const std::string& list) {
    setenv("TAVRA_VIRTUAL_CAMERAS", list.c_str(), 1);
    Tavra_CameraCount();
}

// The name in the device path: that of the model.
std::string modelName(const std::string& item) {
    const std::string model = item.substr(0, item.find(':'));
    const std::size_t folder = model.rfind('/');
    const std::string file = folder == std::string::npos ? model : model.substr(folder + 1);
    return file.substr(0, file.find('.'));
}

}  // namespace

VirtualCamera::VirtualCamera(const std::string& item) {
    nameCameras("");
    nameCameras(item);
    handle_ = Tavra_OpenByDevicePathA(("virtual:0:" + modelName(item)).c_str());
    if (handle_ == nullptr) throw failure(nullptr, "opening a camera", __LINE__);
    check(Tavra_SetWhiteBalanceMode(handle_, TAVRA_WHITE_BALANCE_MANUAL));
}

VirtualCamera::~VirtualCamera() {
    Tavra_Close(handle_);
}

void VirtualCamera::check(TavraBool result, const char* where, int line) const {
    if (result == 0) throw failure(handle_, where, line);
}

Picture VirtualCamera::preview() const {
    std::uint32_t size = 0, width = 0, height = 0, format = 0, written = 0;
    check(Tavra_GetPreviewDataSize(handle_, &size, &width, &height, nullptr));
    check(Tavra_GetPreviewPixelFormat(handle_, &format));
    std::vector<std::uint8_t> rows(size);
    check(Tavra_TakePreviewSnapShot(handle_, rows.data(), size, &written, nullptr, kPatienceMs));
    return pictureOf(rows, width, height, pixelBytesOf(format));
}

std::vector<std::uint8_t> VirtualCamera::rawFrame() const {
    std::uint32_t size = 0, written = 0;
    check(Tavra_GetRawDataSize(handle_, &size));
    std::vector<std::uint8_t> samples(size);
    check(Tavra_TakeRawSnapShot(handle_, samples.data(), size, &written, nullptr, kPatienceMs));
    return samples;
}

void VirtualCamera::saveAsPng(const Picture& picture, const std::string& path) const {
    const std::size_t stride = (std::size_t{picture.width} * 3 + 3) / 4 * 4;
    std::vector<std::uint8_t> rows(stride * picture.height);
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        for (std::uint32_t x = 0; x < picture.width; ++x) {
            const Color& color = picture.at(x, y);
            std::copy(color.begin(), color.end(), &rows[y * stride + std::size_t{x} * 3]);
        }
    }
    constexpr std::uint32_t kNotInterlaced = 1;
    check(Tavra_SaveImageA(handle_, picture.width, picture.height, TAVRA_PIXEL_BGR_24, rows.data(),
                           path.c_str(), kNotInterlaced));
}

TriggeredStream::TriggeredStream(const VirtualCamera& camera)
    : camera_(camera), receiver_(TavraHost_CreateReceiver()) {
    camera.check(Tavra_SetReceiveMsgWindow(camera, receiver_));
    std::uint32_t identifier = 0;
    camera.check(Tavra_AddPreviewBitmapCallback(camera, keep, this, &identifier));
    camera.check(Tavra_StartTransfer(camera));
    TavraMessage message{};
    while (message.message != TAVRA_MESSAGE_TRANSFER_STARTED) {
        camera.check(TavraHost_WaitMessage(receiver_, &message, kPatienceMs));
    }
}

TriggeredStream::~TriggeredStream() {
    Tavra_StopTransfer(camera_);
    Tavra_RemoveAllPreviewBitmapCallback(camera_);
    Tavra_SetReceiveMsgWindow(camera_, nullptr);
    TavraHost_DestroyReceiver(receiver_);
}

Picture TriggeredStream::trigger() {
    camera_.check(Tavra_SoftTrigger(camera_));
    std::unique_lock lock(mutex_);
    if (!came_.wait_for(lock, std::chrono::milliseconds(kPatienceMs), [this] { return fresh_; }))
        throw std::runtime_error("no image came for a trigger");
    fresh_ = false;
    return picture_;
}

void TriggeredStream::keep(void* image, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                           std::uint32_t /*frameNumber*/, std::uint32_t format, void* stream,
                           std::uint32_t* /*word*/) {
    const auto* const bytes = static_cast<const std::uint8_t*>(image);
    auto& self = *static_cast<TriggeredStream*>(stream);
    const std::lock_guard lock(self.mutex_);
    self.picture_ = pictureOf({bytes, bytes + size}, width, height, pixelBytesOf(format));
    self.fresh_ = true;
    self.came_.notify_one();
}

}  // namespace tavra::pictures
