#include "settings/walk_access.h"

#include <algorithm>
#include <array>
#include <vector>

#include "base/error_codes.h"
#include "settings/setting_text.h"
#include "tavra/tavra_api.h"

namespace tavra::access {
namespace {

using Values = std::span<std::uint32_t>;
using GivenValues = std::span<const std::uint32_t>;

constexpr std::size_t kCells = 16;                     // of the grid of weights
constexpr std::size_t kMatrixSize = 12;                // values of the colour matrix
constexpr std::size_t kTableSize = 256;                // bytes of a tone curve
constexpr std::uint16_t kSkippingAndBinning = 0x8000;  // bit of the mask of scan modes
constexpr std::uint32_t kBinningSum = 61;              // capability word 3 bit 13
constexpr std::uint32_t kBinningSumOfOthers = 131;
// More than any camera has; a register that tells more than this is damaged.
constexpr std::uint32_t kMostHdrParameters = 4096;

std::uint8_t byte(std::uint32_t value) {
    return static_cast<std::uint8_t>(value);
}
std::uint16_t word(std::uint32_t value) {
    return static_cast<std::uint16_t>(value);
}

// Tables of small numbers that the functions take and give as arrays.
template <auto Get, auto Set, typename Number, std::size_t kSize>
constexpr Access arrayAccess() {
    return {[](ISettingCamera& camera, Values values) {
                std::array<Number, kSize> table{};
                const bool good = Get(camera.handle(), table.data()) != 0;
                std::ranges::copy(table, values.begin());
                return good;
            },
            [](ISettingCamera& camera, GivenValues values) {
                std::array<Number, kSize> table{};
                std::ranges::transform(values, table.begin(),
                                       [](std::uint32_t value) { return static_cast<Number>(value); });
                return Set(camera.handle(), table.data()) != 0;
            }};
}

// --- image size ---

// One region's values in the order of its keys.
struct Region {
    std::uint32_t mode = 0, x = 0, y = 0, width = 0, height = 0;

    bool operator==(const Region&) const = default;
};
constexpr std::size_t kRegionValues = 5;

Region regionIn(GivenValues values, std::size_t at) {
    return {values[at], values[at + 1], values[at + 2], values[at + 3], values[at + 4]};
}

bool readRegion(ISettingCamera& camera, std::uint32_t index, Region& region) {
    return Tavra_GetROI(camera.handle(), index, &region.mode, &region.x, &region.y, &region.width,
                        &region.height) != 0;
}

bool getFactors(ISettingCamera& camera, Values values) {
    std::array<std::uint8_t, 4> f{};
    const bool good = Tavra_GetSkippingAndBinning(camera.handle(), &f[0], &f[1], &f[2], &f[3]) != 0;
    std::ranges::copy(f, values.begin());
    return good;
}

bool getImageSize(ISettingCamera& camera, Values values) {
    std::uint16_t mode = 0;
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    if (Tavra_GetImageSize(camera.handle(), 0, &mode, &x, &y, &width, &height) == 0) return false;
    const bool factors = hasSkippingAndBinning(camera);
    const bool sum = hasBinningSum(camera);
    // By the room there is, whatever the camera has come to offer meanwhile.
    const std::size_t regions = (values.size() - 1 - (factors ? 4 : 0) - (sum ? 1 : 0)) / kRegionValues;
    std::size_t at = 0;
    values[at++] = mode;
    for (std::uint32_t i = 0; i < regions; ++i) {
        Region region;
        if (!readRegion(camera, i, region)) return false;
        for (const std::uint32_t value : {region.mode, region.x, region.y, region.width, region.height}) {
            values[at++] = value;
        }
    }
    if (factors) {
        if (!getFactors(camera, values.subspan(at))) return false;
        at += 4;
    }
    if (!sum) return true;
    std::uint16_t sumMode = 0;
    const bool good = Tavra_GetBinningSumMode(camera.handle(), &sumMode) != 0;
    values[at] = sumMode;
    return good;
}

bool setRegions(ISettingCamera& camera, GivenValues values) {
    for (std::uint32_t i = 1; i < values.size() / kRegionValues; ++i) {
        const Region wanted = regionIn(values, i * kRegionValues);
        Region present;
        if (!readRegion(camera, i, present)) return false;
        if (present != wanted && Tavra_SetROI(camera.handle(), i, wanted.mode, wanted.x, wanted.y,
                                              wanted.width, wanted.height) == 0) {
            return false;
        }
    }
    return true;
}

bool setImageSizeOnce(ISettingCamera& camera, GivenValues values) {
    const TavraHandle handle = camera.handle();
    const Region main = regionIn(values, 1);
    if (Tavra_SetImageSize(handle, 0, word(values[0]), main.x, main.y, main.width, main.height) == 0) {
        return false;
    }
    const bool factors = hasSkippingAndBinning(camera);
    const bool sum = hasBinningSum(camera);
    const std::size_t behind = values.size() - (factors ? 4 : 0) - (sum ? 1 : 0);
    if (!setRegions(camera, values.subspan(1, behind - 1))) return false;
    if (factors) {
        const GivenValues f = values.subspan(behind, 4);
        if (Tavra_SetSkippingAndBinning(handle, byte(f[0]), byte(f[1]), byte(f[2]), byte(f[3])) == 0) {
            return false;
        }
    }
    return !sum || Tavra_SetBinningSumMode(handle, word(values.back())) != 0;
}

// By design: twice over. One of these settings can change the limits of the others: the second time lands
// what the camera cut the first time.
bool setImageSize(ISettingCamera& camera, GivenValues values) {
    return setImageSizeOnce(camera, values) && setImageSizeOnce(camera, values);
}

// --- exposure ---

bool getShutter(ISettingCamera& camera, Values values) {
    std::uint16_t line = 0, clock = 0;
    if (Tavra_GetShutterSpeed(camera.handle(), &line, &clock) == 0) return false;
    values[0] = line;
    values[1] = clock;
    return Tavra_GetExposureClock(camera.handle(), &values[2]) != 0;
}

// The exposure clock if there is one; else line and clock, if they are others than the present ones, which
// stand for those that there are not. The camera is asked for them only then.
bool setShutter(ISettingCamera& camera, GivenValues values) {
    if (values[2] != kNoValue) return Tavra_SetExposureClock(camera.handle(), values[2]) != 0;
    std::uint16_t line = 0, clock = 0;
    if (Tavra_GetShutterSpeed(camera.handle(), &line, &clock) == 0) return false;
    const std::uint16_t wantedLine = values[0] != kNoValue ? word(values[0]) : line;
    const std::uint16_t wantedClock = values[1] != kNoValue ? word(values[1]) : clock;
    if (line == wantedLine && clock == wantedClock) return true;
    return Tavra_SetShutterSpeed(camera.handle(), wantedLine, wantedClock) != 0;
}

// Keys: longest line and clock, shortest line and clock. The functions have the shortest first.
bool getShutterRange(ISettingCamera& camera, Values values) {
    std::array<std::uint16_t, 4> range{};
    const bool good =
        Tavra_GetShutterControlRange(camera.handle(), &range[2], &range[3], &range[0], &range[1]) != 0;
    std::ranges::copy(range, values.begin());
    return good;
}

bool setShutterRange(ISettingCamera& camera, GivenValues values) {
    return Tavra_SetShutterControlRange(camera.handle(), word(values[2]), word(values[3]), word(values[0]),
                                        word(values[1])) != 0;
}

// Keys: x and y of each line in turn.
bool getControlArea(ISettingCamera& camera, Values values) {
    std::array<std::uint16_t, 3> x{}, y{};
    const bool good = Tavra_GetControlArea(camera.handle(), x.data(), y.data()) != 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        values[2 * i] = x[i];
        values[2 * i + 1] = y[i];
    }
    return good;
}

bool setControlArea(ISettingCamera& camera, GivenValues values) {
    std::array<std::uint16_t, 3> x{}, y{};
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = word(values[2 * i]);
        y[i] = word(values[2 * i + 1]);
    }
    return Tavra_SetControlArea(camera.handle(), x.data(), y.data()) != 0;
}

// --- colour ---

bool getRotation(ISettingCamera& camera, Values values) {
    std::uint8_t mode = 0;
    const bool good = Tavra_GetRotationMode(camera.handle(), &mode) != 0;
    values[0] = mode;
    return good;
}

bool setRotation(ISettingCamera& camera, GivenValues values) {
    const Status stored = camera.storeRotation(byte(values[0]));
    camera.noteFailure(stored);
    return stored.ok();
}

bool setDisplayMode(ISettingCamera& camera, GivenValues values) {
    return camera.hasPreviewWindow() || Tavra_SetDisplayMode(camera.handle(), byte(values[0])) != 0;
}

// Keys: threshold, tolerance. The functions have the tolerance first.
bool getBand(ISettingCamera& camera, Values values) {
    std::uint16_t tolerance = 0, threshold = 0;
    const bool good = Tavra_GetWhiteBalanceToleranceThreshold(camera.handle(), &tolerance, &threshold) != 0;
    values[0] = threshold;
    values[1] = tolerance;
    return good;
}

bool setBand(ISettingCamera& camera, GivenValues values) {
    return Tavra_SetWhiteBalanceToleranceThreshold(camera.handle(), word(values[1]), word(values[0])) != 0;
}

bool getMatrix(ISettingCamera& camera, Values values) {
    std::uint8_t mode = 0;
    std::array<std::int16_t, kMatrixSize> matrix{};
    const bool good = Tavra_GetColorMatrix(camera.handle(), &mode, matrix.data()) != 0;
    values[0] = mode;
    std::ranges::transform(matrix, values.begin() + 1, [](std::int16_t v) { return word(v); });
    return good;
}

bool setMatrix(ISettingCamera& camera, GivenValues values) {
    std::array<std::int16_t, kMatrixSize> matrix{};
    std::ranges::transform(values.subspan(1), matrix.begin(),
                           [](std::uint32_t v) { return static_cast<std::int16_t>(v); });
    return Tavra_SetColorMatrix(camera.handle(), byte(values[0]), matrix.data()) != 0;
}

// Keys: mode, gamma, brightness, contrast, table.
template <std::uint8_t kCurve>
bool getGamma(ISettingCamera& camera, Values values) {
    std::uint8_t mode = 0, contrast = 0;
    std::uint16_t gamma = 0, brightness = 0;
    std::array<std::uint8_t, kTableSize> table{};
    const bool good = Tavra_GetGammaModeEx(camera.handle(), kCurve, &mode, &gamma, &brightness, &contrast,
                                           table.data()) != 0;
    values[0] = mode;
    values[1] = gamma;
    values[2] = brightness;
    values[3] = contrast;
    std::ranges::copy(table, values.begin() + 4);
    return good;
}

template <std::uint8_t kCurve>
bool setGamma(ISettingCamera& camera, GivenValues values) {
    std::array<std::uint8_t, kTableSize> table{};
    std::ranges::transform(values.subspan(4), table.begin(), byte);
    return Tavra_SetGammaModeEx(camera.handle(), kCurve, byte(values[0]), word(values[1]), word(values[2]),
                                byte(values[3]), table.data()) != 0;
}

// --- HDR ---

// Without values the number of parameters is asked for once more: that it could not be read, now or the first
// time, is a failure, and not a camera without parameters.
bool getHdr(ISettingCamera& camera, Values values) {
    auto size = static_cast<std::uint32_t>(values.size_bytes());
    std::uint32_t* const parameters = values.empty() ? nullptr : values.data();
    if (Tavra_GetHDRParameter(camera.handle(), parameters, &size) == 0) return false;
    return parameters != nullptr || size < sizeof(std::uint32_t);
}

bool setHdr(ISettingCamera& camera, GivenValues values) {
    return values.empty() || Tavra_SetHDRParameter(camera.handle(), values.data(),
                                                   static_cast<std::uint32_t>(values.size_bytes())) != 0;
}

}  // namespace

const Access kImageSize{getImageSize, setImageSize};
const Access kShutter{getShutter, setShutter};
const Access kShutterControlRange{getShutterRange, setShutterRange};
const Access kControlArea{getControlArea, setControlArea};
const Access kAlcWeight = arrayAccess<Tavra_GetALCWeight, Tavra_SetALCWeight, std::uint8_t, kCells>();
const Access kRotation{getRotation, setRotation};
const Access kDisplayMode{direct<Tavra_GetDisplayMode, Tavra_SetDisplayMode>().get, setDisplayMode};
const Access kWhiteBalanceBand{getBand, setBand};
const Access kAwbWeight = arrayAccess<Tavra_GetAWBWeight, Tavra_SetAWBWeight, std::uint8_t, kCells>();
const Access kColorMatrix{getMatrix, setMatrix};
const Access kGamma[5] = {{getGamma<0>, setGamma<0>},
                          {getGamma<1>, setGamma<1>},
                          {getGamma<2>, setGamma<2>},
                          {getGamma<3>, setGamma<3>},
                          {getGamma<4>, setGamma<4>}};
const Access kHdr{getHdr, setHdr};

std::uint32_t regionCount(ISettingCamera& camera) {
    std::uint32_t count = 0;
    return Tavra_GetMaxROICount(camera.handle(), &count) != 0 ? count : 0;
}

bool hasHdr(ISettingCamera& camera) {
    std::uint32_t type = 0;
    return Tavra_GetHDRType(camera.handle(), &type) != 0 && type != 0;
}

std::uint32_t hdrParameterCount(ISettingCamera& camera) {
    std::uint32_t size = 0;
    if (!hasHdr(camera)) return 0;
    if (Tavra_GetHDRParameter(camera.handle(), nullptr, &size) == 0) return 0;
    return std::min(size / 4, kMostHdrParameters);
}

bool hasSkippingAndBinning(ISettingCamera& camera) {
    std::uint32_t sizes = 0;
    std::uint16_t scanModes = 0;
    return Tavra_GetEnableImageSize(camera.handle(), &sizes, &scanModes) != 0 &&
           (scanModes & kSkippingAndBinning) != 0;
}

bool hasBinningSum(ISettingCamera& camera) {
    return hasFunction(camera, kBinningSum) || hasFunction(camera, kBinningSumOfOthers);
}

bool hasFunction(ISettingCamera& camera, std::uint32_t function) {
    std::uint32_t present = 0;
    return Tavra_HasFunction(camera.handle(), function, &present) != 0 && present != 0;
}

}  // namespace tavra::access
