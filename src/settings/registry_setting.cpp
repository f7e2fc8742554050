#include "settings/registry_setting.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "base/error_codes.h"
#include "base/little_endian.h"
#include "settings/access.h"
#include "settings/reg_key.h"
#include "settings/setting_values.h"
#include "settings/walk.h"
#include "settings/walk_access.h"
#include "tavra/tavra_api.h"

namespace tavra {
namespace {

constexpr std::u16string_view kRoot = uR"(SOFTWARE\Halvern\BrinscopePreference\)";
constexpr const char16_t* kDefaultValue = u"Default";
constexpr std::uint32_t kNotFound = 2;
constexpr std::uint32_t kBusy = 170;
constexpr std::uint32_t kNoMoreItems = 259;
constexpr std::uint32_t kBadDatabase = 1009;

// --- what is saved and loaded, in this order ---

struct Place {
    ISettingCamera& camera;
    SettingValues& values;

    TavraHandle handle() const { return camera.handle(); }
};

struct Step {
    bool (*save)(const Place& place);
    bool (*load)(const Place& place);
};

// A number of a group that a pair of functions takes and gives.
struct Field {
    const char16_t* name;
    std::size_t argument;  // of the functions, behind the handle
    std::optional<std::uint32_t> missing =
        std::nullopt;  // value where there is none; else the camera's present one
};

// One step by a pair of functions and the names of their numbers, in the order in which they are saved.
template <auto Get, auto Set, const auto& fields>
struct Numbers {
    static constexpr Access access = direct<Get, Set>();
    using Values = std::array<std::uint32_t, std::size(fields)>;

    static bool save(const Place& place) {
        Values values{};
        if (!access.get(place.camera, values)) return false;
        for (const Field& field : fields) place.values.addNumber(field.name, values[field.argument]);
        return true;
    }
    // The camera is asked only for what a setting that is not complete leaves open.
    static bool load(const Place& place) {
        Values values{};
        if (!fill(place, values)) {
            if (!access.get(place.camera, values)) return false;
            fill(place, values);
        }
        return access.set(place.camera, values);
    }
    static constexpr Step step{save, load};

  private:
    // False: a value has neither been stored nor a default.
    static bool fill(const Place& place, Values& values) {
        bool complete = true;
        for (const Field& field : fields) {
            std::uint32_t& value = values[field.argument];
            value = field.missing.value_or(value);
            const bool stored = place.values.getNumber(field.name, value);
            complete = complete && (stored || field.missing.has_value());
        }
        return complete;
    }
};

constexpr Field kAlcMode[] = {{u"ALC Mode", 0}};
constexpr Field kShutter[] = {{u"Shutter Line", 0}, {u"Shutter Clock", 1}};
constexpr Field kGain[] = {{u"Gain", 0}};
constexpr Field kBrightness[] = {
    {u"Brightness Target", 0}, {u"Brightness Tolerance", 1}, {u"Brightness Threshold", 2}};
constexpr Field kGainRange[] = {{u"Gain Min", 0}, {u"Gain Max", 1}};
constexpr Field kShutterRange[] = {{u"Clock Min", 1}, {u"Clock Max", 3}, {u"Line Min", 0}, {u"Line Max", 2}};
constexpr Field kWhiteBalance[] = {{u"White Balance Mode", 0, 0}};
constexpr Field kWhiteGains[] = {{u"White Balance Gain R", 0, 128},
                                 {u"White Balance Gain Gr", 1, 128},
                                 {u"White Balance Gain Gb", 2, 128},
                                 {u"White Balance Gain B", 3, 128}};
constexpr Field kWhiteTargets[] = {{u"White Balance Target R", 0, 100}, {u"White Balance Target B", 1, 100}};
constexpr Field kHue[] = {{u"Hue/Saturation Mode", 0, 0}, {u"Hue", 1, 0}, {u"Saturation", 2, 100}};
constexpr Field kSharpness[] = {{u"Sharpness Mode", 0}, {u"Sharpness Gain", 1}, {u"Sharpness Coring", 2}};
constexpr Field kInterpolation[] = {{u"Interpolation Mode", 0}};
constexpr Field kMirror[] = {{u"Mirror Mode", 0}};

// --- steps with shapes of their own ---

bool saveVersion(const Place& place) {
    std::array<std::uint32_t, 4> version{};
    if (Tavra_GetCAMDllVersion(&version[0], &version[1], &version[2], &version[3]) == 0) return false;
    std::array<std::uint8_t, 16> bytes{};
    for (std::size_t i = 0; i < version.size(); ++i) storeLe32(&bytes[4 * i], version[i]);
    place.values.addBytes(u"SDK Version", bytes.data(), bytes.size());
    return true;
}
bool nothing(const Place&) {
    return true;
}

// The mode of a clock comes back with the present frequency.
bool saveClock(const Place& place) {
    std::uint32_t mode = 0, clock = 0;
    if (Tavra_GetClock(place.handle(), &mode, &clock) == 0) return false;
    place.values.addNumber(u"Clock Mode", mode);
    return true;
}
bool loadClock(const Place& place) {
    std::uint32_t mode = 0, clock = 0;
    if (Tavra_GetClock(place.handle(), &mode, &clock) == 0) return false;
    place.values.getNumber(u"Clock Mode", mode);
    return Tavra_SetClock(place.handle(), mode, clock) != 0;
}

// And a scan mode with the present size.
bool saveScan(const Place& place) {
    std::uint16_t mode = 0;
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    if (Tavra_GetImageSize(place.handle(), 0, &mode, &x, &y, &width, &height) == 0) return false;
    place.values.addNumber(u"Scan Mode", mode);
    return true;
}
bool loadScan(const Place& place) {
    std::uint16_t mode = 0;
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    if (Tavra_GetImageSize(place.handle(), 0, &mode, &x, &y, &width, &height) == 0) return false;
    place.values.getNumber(u"Scan Mode", mode);
    return Tavra_SetImageSize(place.handle(), 0, mode, x, y, width, height) != 0;
}

bool saveWeights(const Place& place) {
    std::array<std::uint8_t, 16> weights{};
    if (Tavra_GetALCWeight(place.handle(), weights.data()) == 0) return false;
    place.values.addBytes(u"Range Weight", weights.data(), weights.size());
    return true;
}
bool loadWeights(const Place& place) {
    std::array<std::uint8_t, 16> weights{};
    if (Tavra_GetALCWeight(place.handle(), weights.data()) == 0) return false;
    place.values.getBytes(u"Range Weight", weights.data(), weights.size());
    return Tavra_SetALCWeight(place.handle(), weights.data()) != 0;
}

using Matrix = std::array<std::int16_t, 12>;
constexpr std::uint32_t kMatrixBytes = sizeof(Matrix);

bool saveMatrix(const Place& place) {
    std::uint8_t mode = 0;
    Matrix matrix{};
    if (Tavra_GetColorMatrix(place.handle(), &mode, matrix.data()) == 0) return false;
    std::array<std::uint8_t, kMatrixBytes> bytes{};
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        storeLe16(&bytes[2 * i], static_cast<std::uint16_t>(matrix[i]));
    }
    place.values.addNumber(u"Color Matrix Mode", mode);
    place.values.addBytes(u"Color Matrix", bytes.data(), kMatrixBytes);
    return true;
}
bool loadMatrix(const Place& place) {
    std::uint8_t mode = 0;
    Matrix matrix{};
    if (Tavra_GetColorMatrix(place.handle(), &mode, matrix.data()) == 0) return false;
    mode = 0;
    place.values.getNumber(u"Color Matrix Mode", mode);
    std::array<std::uint8_t, kMatrixBytes> bytes{};
    if (place.values.getBytes(u"Color Matrix", bytes.data(), kMatrixBytes)) {
        for (std::size_t i = 0; i < matrix.size(); ++i) {
            matrix[i] = static_cast<std::int16_t>(loadLe16(&bytes[2 * i]));
        }
    }
    return Tavra_SetColorMatrix(place.handle(), mode, matrix.data()) != 0;
}

constexpr const char16_t* kCurves[] = {u"Y", u"R", u"Gr", u"Gb", u"B"};

struct Curve {
    std::uint8_t mode = 0, contrast = 0;
    std::uint16_t gamma = 0, brightness = 0;
    std::array<std::uint8_t, 256> table{};

    bool get(TavraHandle handle, std::uint8_t index) {
        return Tavra_GetGammaModeEx(handle, index, &mode, &gamma, &brightness, &contrast, table.data()) != 0;
    }
};

std::u16string curveName(std::uint8_t index) {
    return u"Gamma Target " + std::u16string(kCurves[index]);
}

template <std::uint8_t kIndex>
bool saveCurve(const Place& place) {
    Curve curve;
    if (!curve.get(place.handle(), kIndex)) return false;
    place.values.addNumber(curveName(kIndex) + u" Mode", curve.mode);
    place.values.addNumber(curveName(kIndex) + u" Value", curve.gamma);
    place.values.addBytes(curveName(kIndex) + u" Table", curve.table.data(), curve.table.size());
    return true;
}
// By design: brightness and contrast are no part of a named setting, and become 0.
template <std::uint8_t kIndex>
bool loadCurve(const Place& place) {
    Curve curve;
    if (!curve.get(place.handle(), kIndex)) return false;
    curve.mode = 0;
    curve.gamma = 100;
    place.values.getNumber(curveName(kIndex) + u" Mode", curve.mode);
    place.values.getNumber(curveName(kIndex) + u" Value", curve.gamma);
    place.values.getBytes(curveName(kIndex) + u" Table", curve.table.data(), curve.table.size());
    return Tavra_SetGammaModeEx(place.handle(), kIndex, curve.mode, curve.gamma, 0, 0, curve.table.data()) !=
           0;
}

bool saveRotation(const Place& place) {
    std::uint8_t mode = 0;
    if (Tavra_GetRotationMode(place.handle(), &mode) == 0) return false;
    place.values.addNumber(u"Rotation Mode", mode);
    return true;
}
bool loadRotation(const Place& place) {
    std::uint8_t mode = 0;
    if (Tavra_GetRotationMode(place.handle(), &mode) == 0) return false;
    place.values.getNumber(u"Rotation Mode", mode);
    const std::uint32_t value = mode;
    return access::kRotation.set(place.camera, std::span(&value, 1));
}

constexpr Step kSteps[] = {
    {saveVersion, nothing},
    {saveClock, loadClock},
    {saveScan, loadScan},
    Numbers<Tavra_GetALCMode, Tavra_SetALCMode, kAlcMode>::step,
    Numbers<Tavra_GetShutterSpeed, Tavra_SetShutterSpeed, kShutter>::step,
    Numbers<Tavra_GetGain, Tavra_SetGain, kGain>::step,
    Numbers<Tavra_GetTargetBrightness, Tavra_SetTargetBrightness, kBrightness>::step,
    {saveWeights, loadWeights},
    Numbers<Tavra_GetGainControlRange, Tavra_SetGainControlRange, kGainRange>::step,
    Numbers<Tavra_GetShutterControlRange, Tavra_SetShutterControlRange, kShutterRange>::step,
    Numbers<Tavra_GetWhiteBalanceMode, Tavra_SetWhiteBalanceMode, kWhiteBalance>::step,
    Numbers<Tavra_GetWhiteBalanceGain, Tavra_SetWhiteBalanceGain, kWhiteGains>::step,
    Numbers<Tavra_GetWhiteBalanceTarget, Tavra_SetWhiteBalanceTarget, kWhiteTargets>::step,
    Numbers<Tavra_GetHueSaturationMode, Tavra_SetHueSaturationMode, kHue>::step,
    {saveMatrix, loadMatrix},
    {saveCurve<0>, loadCurve<0>},
    {saveCurve<1>, loadCurve<1>},
    {saveCurve<2>, loadCurve<2>},
    {saveCurve<3>, loadCurve<3>},
    {saveCurve<4>, loadCurve<4>},
    Numbers<Tavra_GetSharpnessMode, Tavra_SetSharpnessMode, kSharpness>::step,
    Numbers<Tavra_GetColorInterpolationMethod, Tavra_SetColorInterpolationMethod, kInterpolation>::step,
    Numbers<Tavra_GetMirrorMode, Tavra_SetMirrorMode, kMirror>::step,
    {saveRotation, loadRotation},
};

Status statusOf(std::uint32_t error) {
    return Status(error);
}

// Whether a key could not be looked at: that says nothing of whether it is there.
bool storeFailed(std::uint32_t error) {
    return error == kBusy || error == kBadDatabase;
}

// The first error. Behind it what could be written is there, or on Linux nothing.
std::uint32_t store(const std::u16string& path, const SettingValues& values) {
    CwRegKey key(path, CwRegKey::Access::All, true);
    if (!key.isOpen()) return key.openError();
    if (const std::uint32_t error = values.write(key); error != 0) {
        key.Abandon();
        return error;
    }
    return key.Close();
}

std::uint32_t fetch(const std::u16string& path, SettingValues& values) {
    CwRegKey key(path, CwRegKey::Access::Read, true);
    return key.isOpen() ? values.read(key) : key.openError();
}

}  // namespace

std::u16string settingPath(ISettingCamera& camera, const std::u16string& name) {
    std::uint16_t vendor = 0, type = 0, hardware = 0, firmware = 0;
    Tavra_GetCameraVersion(camera.handle(), &vendor, &type, &hardware, &firmware);
    const std::u16string path = std::u16string(kRoot) + hexadecimalWord(type);
    return name.empty() ? path : path + u"\\" + name;
}

bool saveRegistrySetting(ISettingCamera& camera, const std::u16string& name) {
    SettingValues values;
    const bool complete = std::ranges::all_of(kSteps, [&](const Step& step) {
        return step.save({camera, values});
    });
    // By design: what came ahead of a getter that failed is stored, and its failure is the one that counts.
    const std::uint32_t stored = store(settingPath(camera, name), values);
    if (complete) camera.noteFailure(statusOf(stored));
    return complete;
}

bool loadRegistrySetting(ISettingCamera& camera, const std::u16string& name) {
    SettingValues values;
    if (const std::uint32_t error = fetch(settingPath(camera, name), values); error != 0) {
        camera.noteFailure(statusOf(error));
        return false;
    }
    return std::ranges::all_of(kSteps, [&](const Step& step) { return step.load({camera, values}); });
}

Status removeRegistrySetting(ISettingCamera& camera, const std::u16string& name) {
    if (name.empty()) return Status(error::kInvalidArgument);
    CwRegKey key(settingPath(camera, {}), CwRegKey::Access::All, false);
    if (!key.isOpen()) return statusOf(key.openError());
    TAVRA_RETURN_IF_ERROR(statusOf(key.DeleteSubKey(name)));
    return statusOf(key.Close());
}

Status setDefaultSetting(ISettingCamera& camera, const std::u16string* name) {
    CwRegKey key(settingPath(camera, {}), CwRegKey::Access::All, true);
    if (!key.isOpen()) return statusOf(key.openError());
    const std::uint32_t error =
        name != nullptr ? key.WriteString(kDefaultValue, *name) : key.DeleteValue(kDefaultValue);
    if (error != 0 && error != kNotFound) return statusOf(error);
    return statusOf(key.Close());
}

Status getDefaultSetting(ISettingCamera& camera, std::u16string& name) {
    name.clear();
    CwRegKey key(settingPath(camera, {}), CwRegKey::Access::Read, true);
    if (!key.isOpen()) return statusOf(key.openError());
    if (const std::uint32_t error = key.ReadString(kDefaultValue, name); storeFailed(error)) {
        return statusOf(error);
    }
    if (name.empty()) return Status();
    const std::uint32_t error = key.FindSubKey(name);
    if (error != 0) name.clear();
    return statusOf(storeFailed(error) ? error : 0);
}

Status listSettings(ISettingCamera& camera, std::vector<std::u16string>& names) {
    names.clear();
    CwRegKey key(settingPath(camera, {}), CwRegKey::Access::Read, true);
    if (!key.isOpen()) return statusOf(key.openError());
    std::u16string name;
    std::uint32_t error = 0;
    for (std::uint32_t index = 0; (error = key.EnumSubKey(index, name)) == 0; ++index) names.push_back(name);
    return statusOf(error == kNoMoreItems ? 0 : error);
}

}  // namespace tavra
