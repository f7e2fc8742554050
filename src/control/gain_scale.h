// The scale of the analogue gain: setting values of a camera family and the decibels that they mean.
#pragma once

#include <cstdint>

#include "camera/capability_words.h"

namespace tavra {

// A value; pure, any thread. The two directions are not inverses of each other in every class.
class GainScale {
  public:
    GainScale() = default;  // class 0
    // The class is 0 to 7; any other acts as 0.
    explicit GainScale(unsigned scaleClass) : class_(scaleClass) {}
    // By capability words; all zero, as on the oldest types, is class 0.
    static GainScale of(const CapabilityWords& words);

    unsigned scaleClass() const { return class_; }

    float decibels(std::uint16_t value) const;
    // Limited to 0 to `maximum`, then truncated. What is no number at all gives 0.
    std::uint32_t settingValue(float decibels, std::uint16_t maximum) const;

  private:
    unsigned class_ = 0;
};

}  // namespace tavra
