#include "settings_table.h"

#include <array>
#include <cstdio>

#include "exit_code.h"
#include "values.h"

namespace tavra::tool {
namespace {

using std::string;

// --- image ---

string getSize(const Camera& camera) {
    std::uint16_t mode = 0;
    Geometry size;
    camera.check(Tavra_GetImageSize(camera.handle(), 0, &mode, &size.x, &size.y, &size.width, &size.height),
                 "cannot read the image size");
    return geometryText(size);
}

void setSize(const Camera& camera, const string& value) {
    const Geometry wanted = parseGeometry(value);
    std::uint16_t mode = 0;
    Geometry old;
    camera.check(Tavra_GetImageSize(camera.handle(), 0, &mode, &old.x, &old.y, &old.width, &old.height),
                 "cannot read the image size");
    camera.check(
        Tavra_SetImageSize(camera.handle(), 0, mode, wanted.x, wanted.y, wanted.width, wanted.height),
        "cannot set the image size to " + value);
}

string getMaximumSize(const Camera& camera) {
    Geometry size;
    camera.check(Tavra_GetMaximumImageSize(camera.handle(), &size.width, &size.height),
                 "cannot read the largest image size");
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

string getScanMode(const Camera& camera) {
    std::uint16_t mode = 0;
    Geometry size;
    camera.check(Tavra_GetImageSize(camera.handle(), 0, &mode, &size.x, &size.y, &size.width, &size.height),
                 "cannot read the scan mode");
    return std::to_string(mode);
}

void setScanMode(const Camera& camera, const string& value) {
    std::uint16_t old = 0;
    Geometry size;
    camera.check(Tavra_GetImageSize(camera.handle(), 0, &old, &size.x, &size.y, &size.width, &size.height),
                 "cannot read the scan mode");
    const auto mode = static_cast<std::uint16_t>(parseNumber(value, "scan-mode"));
    camera.check(Tavra_SetImageSize(camera.handle(), 0, mode, size.x, size.y, size.width, size.height),
                 "cannot set the scan mode to " + value);
}

// --- formats ---

string getPixelFormat(const Camera& camera) {
    std::uint32_t format = 0;
    camera.check(Tavra_GetPreviewPixelFormat(camera.handle(), &format), "cannot read the pixel format");
    return nameOf(kPixelFormats, format);
}

void setPixelFormat(const Camera& camera, const string& value) {
    camera.check(Tavra_SetPreviewPixelFormat(camera.handle(), codeOf(kPixelFormats, value, "pixel-format")),
                 "cannot set the pixel format to " + value);
}

string getTransferBits(const Camera& camera) {
    std::uint32_t code = 0;
    camera.check(Tavra_GetTransferBitsPerPixel(camera.handle(), &code), "cannot read the transfer bits");
    return nameOf(kTransferBits, code);
}

void setTransferBits(const Camera& camera, const string& value) {
    const std::uint32_t code = codeOf(kTransferBits, value, "transfer-bits");
    std::uint32_t mask = 0;
    Tavra_GetEnableTransferBitsPerPixel(camera.handle(), &mask);
    camera.check(Tavra_SetTransferBitsPerPixel(camera.handle(), code),
                 "cannot set the transfer bits to " + value + " (this camera has " +
                     namesIn(kTransferBits, mask) + ")");
}

string getInterpolation(const Camera& camera) {
    std::uint8_t method = 0;
    camera.check(Tavra_GetColorInterpolationMethod(camera.handle(), &method),
                 "cannot read the interpolation");
    return nameOf(kInterpolations, method);
}

void setInterpolation(const Camera& camera, const string& value) {
    const auto method = codeOf(kInterpolations, value, "interpolation");
    if (method > 255) throw Failure("interpolation cannot be " + value, ExitCode::Usage);
    camera.check(Tavra_SetColorInterpolationMethod(camera.handle(), static_cast<std::uint8_t>(method)),
                 "cannot set the interpolation to " + value);
}

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
    if (value != "on" && value != "off")
        throw Failure("trigger cannot be '" + value + "': on or off", ExitCode::Usage);
    camera.check(Tavra_SetTriggerMode2(camera.handle(), 0, value == "on" ? 1 : 0),
                 "cannot switch the trigger " + value);
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

constexpr Setting kSettings[] = {
    {"size", "image size and place: WIDTHxHEIGHT or WIDTHxHEIGHT+X+Y, in pixels", getSize, setSize},
    {"max-size", "size of the sensor, in pixels", getMaximumSize, nullptr},
    {"scan-mode", "scan mode, a number of the camera", getScanMode, setScanMode},
    {"pixel-format", "preview image: mono8, bgr24 or bgr32 (for this run)", getPixelFormat, setPixelFormat},
    {"transfer-bits", "what the camera sends: mosaic8, mosaic12p, mono8, ...", getTransferBits,
     setTransferBits},
    {"clock", "clock: MODE, or MODE,HZ for the free clock mode", getClock, setClock},
    {"fps", "frames a second that follow from clock and geometry", getFps, nullptr},
    {"vblank", "further lines between two frames, to slow the camera down", getVBlank, setVBlank},
    {"interpolation", "none, raw-color, nearest, bilinear, four-tap or cell-bilinear (for this run)",
     getInterpolation, setInterpolation},
    {"user-id", "number that tells this camera from others, kept by the camera", getUserId, setUserId},
    {"user-text", "text beside the user ID, kept by the camera", getUserText, setUserText},
    {"trigger", "on: a frame for each trigger; off: free running", getTrigger, setTrigger},
    {"trigger-source", "where triggers come from, a number of the camera", getTriggerSource,
     setTriggerSource},
    {"trigger-delay", "from trigger to exposure, in units of the camera", getTriggerDelay, setTriggerDelay},
};

}  // namespace

std::span<const Setting> settings() {
    return kSettings;
}

const Setting& settingNamed(const string& name) {
    string names;
    for (const Setting& setting : kSettings) {
        if (name == setting.name) return setting;
        names += (names.empty() ? "" : ", ") + string(setting.name);
    }
    throw Failure("there is no setting '" + name + "': " + names, ExitCode::Usage);
}

void applyAssignments(const Camera& camera, const std::vector<string>& assignments) {
    for (const string& assignment : assignments) {
        const auto equals = assignment.find('=');
        if (equals == string::npos) {
            throw Failure("'" + assignment + "' is not NAME=VALUE", ExitCode::Usage);
        }
        const Setting& setting = settingNamed(assignment.substr(0, equals));
        if (setting.set == nullptr)
            throw Failure(string(setting.name) + " can only be read", ExitCode::Usage);
        setting.set(camera, assignment.substr(equals + 1));
    }
}

}  // namespace tavra::tool
