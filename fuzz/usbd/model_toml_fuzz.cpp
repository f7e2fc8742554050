// Any text as a model file, and as a list of virtual cameras. What is accepted must make a camera that can be
// described.
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "camera_list.h"
#include "descriptors.h"
#include "exposure.h"
#include "geometry.h"
#include "light.h"
#include "model_toml.h"
#include "registers.h"

using namespace tavra::usbd;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Model model;
    std::string complaint;
    if (parseModel(text, {}, model, complaint)) {
        const Geometry geometry(model.geometry);
        const StatusWords status(model);
        const RegisterPages pages(model);
        const ExposureTiming timing(model, {.clockHz = model.identity.clockValue}, geometry.imageHeight(), 1);
        if (geometry.record(timing.scan()).size() < 64 || configurationDescriptor(model).empty())
            __builtin_trap();
        const std::size_t step = lightStepAt(model.scene, std::chrono::hours(1));
        if (step > 0 && step >= model.scene.script.size()) __builtin_trap();
        if (!(illuminationOf(model.scene, step).light >= 0)) __builtin_trap();
    } else if (complaint.empty()) {
        __builtin_trap();
    }
    for (const std::string& item : splitCameraList(text.substr(0, 4096))) {
        CameraName name;
        if (!parseCameraName(item, name, complaint)) continue;
        if (!name.overrides.empty()) parseModel(shippedModel("mono"), name.overrides, model, complaint);
    }
    return 0;
}
