// Settings of timing, identity and trigger.
#include <array>
#include <cstdio>

#include "settings_table.h"
#include "values.h"

namespace tavra::tool {
namespace {

using std::string;

// --- timing ---

string getClock(const Camera& camera) {
    std::uint32_t mode = 0, clock = 0;
    camera.check(Tavra_GetClock(camera.handle(), &mode, &clock), "cannot read the clock");
    return std::to_string(clock) + "Hz mode " + std::to_string(mode);
}

// "MODE" or "MODE,HZ".
void setClock(const Camera& camera, const string& value) {
    const auto comma = value.find(',');
    const std::uint32_t mode = parseNumber(value.substr(0, comma), "clock");
    const std::uint32_t clock = comma == string::npos ? 0 : parseNumber(value.substr(comma + 1), "clock");
    camera.check(Tavra_SetClock(camera.handle(), mode, clock), "cannot set the clock to " + value);
}

string getFps(const Camera& camera) {
    float fps = 0;
    camera.check(Tavra_GetOutputFPS(camera.handle(), &fps), "cannot read the frame rate");
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", static_cast<double>(fps));
    return text;
}

string getVBlank(const Camera& camera) {
    std::uint32_t lines = 0;
    camera.check(Tavra_GetVBlankForFPS(camera.handle(), &lines), "cannot read the vertical blanking");
    return std::to_string(lines);
}

void setVBlank(const Camera& camera, const string& value) {
    camera.check(Tavra_SetVBlankForFPS(camera.handle(), parseNumber(value, "vblank")),
                 "cannot set the vertical blanking to " + value);
}

// --- identity ---

string getUserId(const Camera& camera) {
    std::uint32_t id = 0;
    std::array<char, 256> text{};
    camera.check(Tavra_ReadCameraUserIDA(camera.handle(), &id, text.data(), text.size()),
                 "cannot read the user ID");
    return std::to_string(id);
}

string getUserText(const Camera& camera) {
    std::uint32_t id = 0;
    std::array<char, 256> text{};
    camera.check(Tavra_ReadCameraUserIDA(camera.handle(), &id, text.data(), text.size()),
                 "cannot read the user text");
    return text.data();
}

void writeUser(const Camera& camera, std::uint32_t id, const string& text) {
    camera.check(Tavra_WriteCameraUserIDA(camera.handle(), id, text.c_str(),
                                          static_cast<std::uint32_t>(text.size() + 1)),
                 "cannot write the user ID");
}

void setUserId(const Camera& camera, const string& value) {
    writeUser(camera, parseNumber(value, "user-id"), getUserText(camera));
}

void setUserText(const Camera& camera, const string& value) {
    writeUser(camera, parseNumber(getUserId(camera), "user-id"), value);
}

// --- trigger ---

string getTrigger(const Camera& camera) {
    std::uint32_t on = 0;
    camera.check(Tavra_GetTriggerMode2(camera.handle(), 0, &on), "cannot read the trigger mode");
    return on != 0 ? "on" : "off";
}

void setTrigger(const Camera& camera, const string& value) {
    const bool on = parseSwitch(value, "trigger");
    camera.check(Tavra_SetTriggerMode2(camera.handle(), 0, on ? 1 : 0), "cannot switch the trigger " + value);
}

string getTriggerSource(const Camera& camera) {
    std::uint32_t source = 0;
    camera.check(Tavra_GetTriggerSource(camera.handle(), 0, &source), "cannot read the trigger source");
    return std::to_string(source);
}

void setTriggerSource(const Camera& camera, const string& value) {
    camera.check(Tavra_SetTriggerSource(camera.handle(), 0, parseNumber(value, "trigger-source")),
                 "cannot set the trigger source to " + value);
}

string getTriggerDelay(const Camera& camera) {
    std::uint32_t delay = 0;
    camera.check(Tavra_GetTriggerDelay(camera.handle(), 0, &delay), "cannot read the trigger delay");
    return std::to_string(delay);
}

void setTriggerDelay(const Camera& camera, const string& value) {
    camera.check(Tavra_SetTriggerDelay(camera.handle(), 0, parseNumber(value, "trigger-delay")),
                 "cannot set the trigger delay to " + value);
}

string getExposureMode(const Camera& camera) {
    std::uint32_t mode = 0;
    camera.check(Tavra_GetExposureMode(camera.handle(), &mode), "cannot read the exposure mode");
    return nameOf(kExposureModes, mode);
}

void setExposureMode(const Camera& camera, const string& value) {
    camera.check(Tavra_SetExposureMode(camera.handle(), codeOf(kExposureModes, value, "exposure-mode")),
                 "cannot set the exposure mode to " + value);
}

constexpr Setting kSettings[] = {
    {"clock", "clock: MODE, or MODE,HZ for the free clock mode", getClock, setClock},
    {"fps", "frames a second that follow from clock and geometry", getFps, nullptr},
    {"vblank", "further lines between two frames, to slow the camera down", getVBlank, setVBlank},
    {"user-id", "number that tells this camera from others, kept for good", getUserId, setUserId},
    {"user-text", "text beside the user ID, kept for good", getUserText, setUserText},
    {"trigger", "on: a frame for each trigger; off: free running", getTrigger, setTrigger},
    {"trigger-source", "where triggers come from, a number of the camera", getTriggerSource,
     setTriggerSource},
    {"trigger-delay", "from trigger to exposure, in units of the camera", getTriggerDelay, setTriggerDelay},
    {"exposure-mode", "free, timed, trigger-width (as long as the trigger lasts) or sub-trigger",
     getExposureMode, setExposureMode},
};

}  // namespace

std::span<const Setting> deviceSettings() {
    return kSettings;
}

}  // namespace tavra::tool
