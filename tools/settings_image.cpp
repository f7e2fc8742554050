// Settings of the image: size, formats, interpolation, mirror and rotation.
#include "exit_code.h"
#include "quantities.h"
#include "settings_table.h"
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

// --- orientation ---

string getMirror(const Camera& camera) {
    std::uint8_t mode = 0;
    camera.check(Tavra_GetMirrorMode(camera.handle(), &mode), "cannot read the mirror");
    string text;
    for (const NamedCode& bit : kMirrors) {
        if ((mode & bit.code) != 0) text += (text.empty() ? "" : "+") + string(bit.name);
    }
    return text.empty() ? "off" : text;
}

// "off", or names joined by plus signs.
void setMirror(const Camera& camera, const string& value) {
    std::uint8_t possible = 0;
    camera.check(Tavra_GetEnableMirrorMode(camera.handle(), &possible), "cannot read the mirrors");
    std::uint8_t mode = 0;
    if (value != "off") {
        for (const std::string_view part : splitText(value, '+')) {
            std::uint8_t bit = 0;
            for (const NamedCode& known : kMirrors) {
                if (part == known.name) bit = static_cast<std::uint8_t>(known.code);
            }
            if (bit == 0 || (bit & possible) == 0) {
                throw Failure("mirror cannot be '" + value + "': this camera has off, " +
                                  namesIn(kMirrors, possible) + ", joined by + for several",
                              bit == 0 ? ExitCode::Usage : ExitCode::Failed);
            }
            mode |= bit;
        }
    }
    camera.check(Tavra_SetMirrorMode(camera.handle(), mode), "cannot set the mirror to " + value);
}

string getRotate(const Camera& camera) {
    std::uint8_t mode = 0;
    camera.check(Tavra_GetRotationMode(camera.handle(), &mode), "cannot read the rotation");
    return nameOf(kRotations, mode);
}

void setRotate(const Camera& camera, const string& value) {
    const std::uint8_t mode = static_cast<std::uint8_t>(onlyNamed(kRotations, value, "rotate"));
    camera.check(Tavra_SetRotationMode(camera.handle(), mode), "cannot set the rotation to " + value);
}

constexpr Setting kSettings[] = {
    {"size", "image size and place: WIDTHxHEIGHT or WIDTHxHEIGHT+X+Y, in pixels", getSize, setSize},
    {"max-size", "size of the sensor, in pixels", getMaximumSize, nullptr},
    {"scan-mode", "scan mode, a number of the camera", getScanMode, setScanMode},
    {"pixel-format", "preview image: mono8, bgr24 or bgr32", getPixelFormat, setPixelFormat, KeptBy::Library},
    {"transfer-bits", "what the camera sends: mosaic8, mosaic12p, mono8, ...", getTransferBits,
     setTransferBits},
    {"interpolation", "none, raw-color, nearest, bilinear, four-tap or cell-bilinear", getInterpolation,
     setInterpolation, KeptBy::Library},
    {"mirror", "off, h, v, h+v; camera-h and camera-v where the camera does it", getMirror, setMirror,
     KeptBy::Library},
    {"rotate", "off, cw or ccw: a quarter turn clockwise or anticlockwise", getRotate, setRotate,
     KeptBy::Library},
};

}  // namespace

std::span<const Setting> imageSettings() {
    return kSettings;
}

}  // namespace tavra::tool
