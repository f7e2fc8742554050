#include "settings_table.h"

#include "exit_code.h"

namespace tavra::tool {
namespace {

std::vector<Setting> gather() {
    std::vector<Setting> all;
    for (const auto subject : {imageSettings(), exposureSettings(), whiteBalanceSettings(), colorSettings(),
                               detailSettings(), deviceSettings()}) {
        all.insert(all.end(), subject.begin(), subject.end());
    }
    return all;
}

}  // namespace

std::span<const Setting> settings() {
    static const std::vector<Setting> all = gather();
    return all;
}

const Setting& settingNamed(const std::string& name) {
    std::string names;
    for (const Setting& setting : settings()) {
        if (name == setting.name) return setting;
        names += (names.empty() ? "" : ", ") + std::string(setting.name);
    }
    throw Failure("there is no setting '" + name + "': " + names, ExitCode::Usage);
}

void applyAssignments(const Camera& camera, const std::vector<std::string>& assignments) {
    for (const std::string& assignment : assignments) {
        const auto equals = assignment.find('=');
        if (equals == std::string::npos) {
            throw Failure("'" + assignment + "' is not NAME=VALUE", ExitCode::Usage);
        }
        const Setting& setting = settingNamed(assignment.substr(0, equals));
        if (setting.set == nullptr) {
            throw Failure(std::string(setting.name) + " can only be read", ExitCode::Usage);
        }
        setting.set(camera, assignment.substr(equals + 1));
    }
}

bool hasFunction(const Camera& camera, std::uint32_t function) {
    std::uint32_t present = 0;
    camera.check(Tavra_HasFunction(camera.handle(), function, &present), "cannot read the capabilities");
    return present != 0;
}

bool isMonoLike(const Camera& camera) {
    std::uint16_t array = 0;
    camera.check(Tavra_GetColorArray(camera.handle(), &array), "cannot read the colour array");
    return array == TAVRA_COLOR_ARRAY_MONO ||
           (array >= TAVRA_COLOR_ARRAY_PATTERN_RGGB && array <= TAVRA_COLOR_ARRAY_PATTERN_BGGR);
}

void requireColor(const Camera& camera, const std::string& what) {
    if (isMonoLike(camera)) throw Failure("this camera (" + camera.name() + ") is mono: it has no " + what);
}

bool parseSwitch(const std::string& value, const std::string& what) {
    if (value == "on" || value == "off") return value == "on";
    throw Failure(what + " cannot be '" + value + "': on or off", ExitCode::Usage);
}

}  // namespace tavra::tool
