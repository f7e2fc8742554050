// Frames of a virtual camera, ready to be sent, drawn when something has changed and kept otherwise.
//
// Belongs to one camera's stream; one thread at a time.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "frame_settings.h"
#include "model.h"
#include "scene.h"
#include "sensor.h"

namespace tavra::usbd {

// Header and raw data; the frame number is put in where the bytes are sent.
using FrameBytes = std::vector<std::uint8_t>;

class Renderer {
  public:
    explicit Renderer(const Model& model) : model_(model) {}

    // The settings of the frames that follow.
    void use(const FrameSettings& settings);
    // The frame that stands at place `index` of the stream. With noise the model's number of variants take
    // turns, each drawn when it is first asked for. Null when no settings are in use or the scene cannot be
    // read any more.
    std::shared_ptr<const FrameBytes> frame(std::uint32_t index);
    // Mean of the samples of the frame given last, of the largest sample; 0 before the first.
    double brightness() const { return brightness_; }

  private:
    struct Variant {
        std::shared_ptr<const FrameBytes> bytes;
        double brightness = 0;
    };

    Variant draw(std::uint32_t variant) const;

    const Model& model_;
    std::shared_ptr<const Scene> scene_;
    bool mapped_ = false;
    FrameSettings settings_;
    SignalMap map_;
    std::vector<Variant> variants_;
    double brightness_ = 0;
};

}  // namespace tavra::usbd
