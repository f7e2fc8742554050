#include "renderer.h"

#include "packing.h"

namespace tavra::usbd {

void Renderer::use(const FrameSettings& settings) {
    if (!scene_)
        scene_ = sceneOf(model_.scene.source, model_.geometry.sensorWidth, model_.geometry.sensorHeight);
    if (!scene_) return;
    if (!mapped_ || !(settings.view == settings_.view)) {
        map_ = mapSignal(model_, settings.view, *scene_);
        mapped_ = true;
        variants_.clear();
    }
    if (!(settings == settings_)) variants_.clear();
    settings_ = settings;
    if (variants_.empty()) variants_.resize(model_.sensor.noise ? model_.sensor.noiseVariants : 1);
}

std::shared_ptr<const FrameBytes> Renderer::frame(std::uint32_t index) {
    if (variants_.empty()) return nullptr;
    const auto variant = static_cast<std::uint32_t>(index % variants_.size());
    std::shared_ptr<const FrameBytes>& bytes = variants_[variant];
    if (!bytes) bytes = draw(variant);
    return bytes;
}

std::shared_ptr<const FrameBytes> Renderer::draw(std::uint32_t variant) const {
    const std::uint32_t code = settings_.view.transferBits;
    std::size_t size = model_.identity.headerSize;
    for (const SignalMap::Panel& panel : map_.panels)
        size += std::size_t{packedRowBytes(code, panel.width)} * panel.height;

    auto bytes = std::make_shared<FrameBytes>(size);
    std::uint8_t* out = bytes->data() + model_.identity.headerSize;
    std::vector<std::uint16_t> samples;
    for (const SignalMap::Panel& panel : map_.panels) {
        samples.resize(panel.width * map_.channels());
        const std::uint32_t rowBytes = packedRowBytes(code, panel.width);
        for (std::uint32_t row = 0; row < panel.height; ++row, out += rowBytes) {
            exposeRow(model_, settings_, map_, panel, row, variant, samples);
            packRow(code, model_.sensor.bits, samples, {out, rowBytes});
        }
    }
    return bytes;
}

}  // namespace tavra::usbd
