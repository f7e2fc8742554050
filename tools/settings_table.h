// The everyday settings by name: one table that `get`, `set` and --set share.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "camera.h"

namespace tavra::tool {

// Where a setting lives: in the camera for as long as it has power, or in the library until the camera is
// closed, which a command does at its end.
enum class KeptBy : std::uint8_t { Camera, Library };

struct Setting {
    const char* name;
    const char* help;                                             // what it is, and the values it takes
    std::string (*get)(const Camera& camera);                     // throws Failure
    void (*set)(const Camera& camera, const std::string& value);  // null: can only be read
    KeptBy keptBy = KeptBy::Camera;
};

// All of them, subject after subject.
std::span<const Setting> settings();

// Throws Failure, naming those there are, when there is no such setting.
const Setting& settingNamed(const std::string& name);

// Applies "name=value" texts in their order. Throws Failure at the first that cannot be set.
void applyAssignments(const Camera& camera, const std::vector<std::string>& assignments);

// The table by subject; each in the file of its name.
std::span<const Setting> imageSettings();
std::span<const Setting> exposureSettings();
std::span<const Setting> whiteBalanceSettings();
std::span<const Setting> colorSettings();
std::span<const Setting> detailSettings();
std::span<const Setting> deviceSettings();

// What settings of several subjects ask the camera first.
constexpr std::uint32_t kFunctionCameraWhiteBalance = 24;  // capability word 1 bit 8
bool hasFunction(const Camera& camera, std::uint32_t function);
bool isMonoLike(const Camera& camera);
// Throws Failure on a mono-like camera; `what` is what it lacks: "colour matrix".
void requireColor(const Camera& camera, const std::string& what);
// "on" or "off". Throws Failure.
bool parseSwitch(const std::string& value, const std::string& what);

}  // namespace tavra::tool
