#include "camera.h"

#include <array>

#include "discovery.h"
#include "error_text.h"

namespace tavra::tool {
namespace {

std::u16string wide(const std::string& text) {
    return {text.begin(), text.end()};
}

TavraHandle openFound(const Found& found) {
    if (found.inUse) {
        throw Failure("cannot open " + shown(found.path) + ": another program has it; close that first",
                      ExitCode::NoCamera);
    }
    return Tavra_OpenByDevicePathW(found.path.c_str());
}

TavraHandle openByIndex(std::uint32_t index) {
    const auto cameras = discover();
    if (index >= cameras.size()) {
        throw Failure("there is no camera with index " + std::to_string(index) + ": " +
                          std::to_string(cameras.size()) + " found; `tavra list` shows them",
                      ExitCode::NoCamera);
    }
    return openFound(cameras[index]);
}

TavraHandle openFirstVirtual(const std::string& models) {
    for (const Found& found : discover()) {
        if (found.isVirtual) return openFound(found);
    }
    throw Failure("no virtual camera came of --virtual " + models + "; the shipped models are in the guide",
                  ExitCode::NoCamera);
}

// Tavra_Open falls back to another camera when no one has the ID; somebody who asked for an ID wants that
// one.
void requireUserId(TavraHandle handle, std::uint32_t wanted) {
    std::uint32_t id = 0;
    std::array<char, 256> text{};
    if (Tavra_ReadCameraUserIDA(handle, &id, text.data(), text.size()) && id == wanted) return;
    Tavra_Close(handle);
    throw Failure("no camera has the user ID " + std::to_string(wanted) + "; `tavra list` shows them",
                  ExitCode::NoCamera);
}

TavraHandle open(const CameraChoice& choice) {
    if (choice.index) return openByIndex(*choice.index);
    if (!choice.path.empty()) return Tavra_OpenByDevicePathW(wide(choice.path).c_str());
    if (choice.userId) {
        const TavraHandle handle = Tavra_Open(*choice.userId);
        if (handle != nullptr) requireUserId(handle, *choice.userId);
        return handle;
    }
    if (!choice.virtualModels.empty()) return openFirstVirtual(choice.virtualModels);
    return Tavra_Open(0);
}

}  // namespace

void CameraChoice::addTo(CLI::App& command) {
    auto* const group = command.add_option_group("Which camera (the first free one unless told)");
    group->add_option("-c,--camera", userId, "The camera with this user ID")->type_name("ID");
    group->add_option("-i,--index", index, "The camera at this place of `tavra list`")->type_name("N");
    group->add_option("-p,--path", path, "The camera at this device path")->type_name("PATH");
    command
        .add_option("--virtual", virtualModels,
                    "Cameras in memory, for example bayer or mono:width=640:height=480,bayer")
        ->type_name("MODEL[,MODEL...]")
        ->envname("TAVRA_VIRTUAL_CAMERAS");
    group->require_option(0, 1);
}

std::string CameraChoice::describe() const {
    if (index) return "the camera with index " + std::to_string(*index);
    if (!path.empty()) return "the camera at " + path;
    if (userId) return "the camera with user ID " + std::to_string(*userId);
    if (!virtualModels.empty()) return "the virtual camera " + virtualModels;
    return "a camera";
}

std::string modelName(TavraHandle handle) {
    std::array<char, 256> name{};
    return Tavra_GetProductNameA(handle, name.data(), name.size()) ? name.data() : "UNKNOWN";
}

Camera::Camera(const CameraChoice& choice) {
    if (!choice.virtualModels.empty()) useVirtualCameras(choice.virtualModels);
    handle_ = open(choice);
    if (handle_ == nullptr) throw failure("cannot open " + choice.describe(), Tavra_GetLastError(nullptr));
    name_ = modelName(handle_);
}

Camera::~Camera() {
    if (handle_ != nullptr) Tavra_Close(handle_);
}

void Camera::check(TavraBool result, const std::string& what) const {
    if (result == 0) throw failure(what + " (" + name_ + ")", Tavra_GetLastError(handle_));
}

}  // namespace tavra::tool
