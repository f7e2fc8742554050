#include "renderer.h"

#include <numeric>
#include <utility>

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
    const auto place = static_cast<std::uint32_t>(index % variants_.size());
    Variant& variant = variants_[place];
    if (!variant.bytes) variant = draw(place);
    brightness_ = variant.brightness;
    return variant.bytes;
}

Renderer::Variant Renderer::draw(std::uint32_t variant) const {
    const std::uint32_t code = settings_.view.transferBits;
    std::size_t size = model_.identity.headerSize;
    for (const SignalMap::Panel& panel : map_.panels)
        size += std::size_t{packedRowBytes(code, panel.width)} * panel.height;

    auto bytes = std::make_shared<FrameBytes>(size);
    std::uint8_t* out = bytes->data() + model_.identity.headerSize;
    std::vector<std::uint16_t> samples;
    std::uint64_t sum = 0, count = 0;
    for (const SignalMap::Panel& panel : map_.panels) {
        samples.resize(panel.width * map_.channels());
        const std::uint32_t rowBytes = packedRowBytes(code, panel.width);
        for (std::uint32_t row = 0; row < panel.height; ++row, out += rowBytes) {
            exposeRow(model_, settings_, map_, panel, row, variant, samples);
            sum = std::accumulate(samples.begin(), samples.end(), sum);
            count += samples.size();
            packRow(code, model_.sensor.bits, samples, {out, rowBytes});
        }
    }
    const double largest = (1u << model_.sensor.bits) - 1;
    return {std::move(bytes), count > 0 ? double{1} * sum / count / largest : 0};
}

}  // namespace tavra::usbd
