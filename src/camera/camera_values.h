// Settings of a camera that are one number each, in a register page or in a status word. Application threads.
#pragma once

#include <cstdint>

#include "base/status.h"

namespace tavra {

class TAVRA_COMMON_PARAM;

// Which number: a row of the table in camera_values.cpp.
enum class CameraValue { AnalogBlackLevel, DigitalClamp, Gamma, AdjustmentMode };
enum class CameraLimit { AnalogBlackLevel, DigitalClamp };

// A camera without it has 0, and refuses to be set (87).
Status getCameraValue(TAVRA_COMMON_PARAM& camera, CameraValue which, std::uint32_t& value);
Status setCameraValue(TAVRA_COMMON_PARAM& camera, CameraValue which, std::uint32_t value);
// The largest that can be set: 255 where the camera tells none, 0 without the setting.
Status getCameraLimit(TAVRA_COMMON_PARAM& camera, CameraLimit which, std::uint32_t& limit);

// The switch that resets the camera: 0 or 1 in bit 0, the other bits of its word stay. 87 on cameras without
// one.
Status getResetSwitch(TAVRA_COMMON_PARAM& camera, std::uint32_t& enabled);
Status setResetSwitch(TAVRA_COMMON_PARAM& camera, std::uint32_t enabled);

// Code 50 on cameras without it. The getter gives the whole register, the setter changes two bits of it.
Status getPriorityMode(TAVRA_COMMON_PARAM& camera, std::uint32_t& mode);
Status setPriorityMode(TAVRA_COMMON_PARAM& camera, std::uint32_t mode);

// The sensors share one place; sensor 1 must exist. 87, with 0, where there is none.
Status getTemperature(TAVRA_COMMON_PARAM& camera, std::uint32_t sensor, std::uint32_t& temperature);

}  // namespace tavra
