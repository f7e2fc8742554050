#include "setting_changes.h"

#include "error_text.h"
#include "platform/text.h"
#include "settings/setting_file.h"
#include "settings/walk_access.h"

namespace tavra::tool {
namespace {

// A camera that is only read.
class ReadCamera final : public ISettingCamera {
  public:
    explicit ReadCamera(TavraHandle handle) : handle_(handle) {}

    TavraHandle handle() const override { return handle_; }
    void noteFailure(Status) override {}
    bool legacy() const override {
        constexpr std::uint32_t kAnyButTheOldest = 256;
        std::uint32_t present = 0;
        return Tavra_HasFunction(handle_, kAnyButTheOldest, &present) != 0 && present == 0;
    }
    std::uint32_t fileMode() const override {
        std::uint32_t mode = 0;
        Tavra_GetSettingFileMode(handle_, &mode);
        return mode;
    }
    bool hasPreviewWindow() const override { return false; }
    Status storeRotation(std::uint8_t) override { return Status(); }
    Status resetExposure() override { return Status(); }
    void resetStatistics() override {}
    void resetWhiteBalance() override {}

  private:
    TavraHandle handle_;
};

std::string narrow(const std::u16string& text) {
    return platform::toNarrow(text);
}

// Of one group: what the camera has, and what it would be given.
struct GroupValues {
    std::vector<std::uint32_t> present, wanted;
};

bool readValues(const WalkCamera& camera, const Group& group, platform::ProfileText& text,
                GroupValues& values) {
    values.present.assign(camera.size(group), 0);
    if (!group.access.get(camera.camera(), values.present)) return false;
    values.wanted = values.present;
    if (group.defaults != nullptr && !beginGroup(camera, group, values.wanted)) return false;
    readGroup(camera, group, text, values.wanted);
    return true;
}

// Lines and clocks of the shutter do not count beside the exposure clock. What the file does not have stays.
void applyShutterRule(GroupValues& values) {
    const bool hasClock = values.wanted[2] != kNoValue;
    for (std::size_t i = 0; i < values.wanted.size(); ++i) {
        const bool counts = values.wanted[i] != kNoValue && (i == 2) == hasClock;
        if (!counts) values.wanted[i] = values.present[i];
    }
}

void leaveAsItIs(GroupValues& values, std::size_t first, std::size_t end) {
    for (std::size_t i = first; i < end; ++i) values.wanted[i] = values.present[i];
}

// Behind the mode: power, brightness, contrast; then the table. A mode has some of them from the file, and
// the others follow from it.
void applyCurveRule(GroupValues& values) {
    constexpr std::size_t kShape = 1, kTable = 4;
    const std::uint32_t mode = values.wanted[0];
    if (mode != TAVRA_GAMMA_ON && mode != TAVRA_GAMMA_REVERSED) leaveAsItIs(values, kShape, kTable);
    if (mode != TAVRA_GAMMA_TABLE) leaveAsItIs(values, kTable, values.wanted.size());
}

// What is switched off has its neutral values, whatever the file says.
void applySwitchRule(GroupValues& values) {
    if (values.wanted[0] == 0) leaveAsItIs(values, 1, values.wanted.size());
}

// Among the values of the image size: the first region is the image itself, which is always sent.
constexpr std::size_t kMainRegionMode = 1;

// A load does not set everything that is in a file.
void keepWhatCounts(const Group& group, GroupValues& values) {
    const Access* const access = &group.access;
    if (access == &access::kImageSize) leaveAsItIs(values, kMainRegionMode, kMainRegionMode + 1);
    if (access == &access::kShutter) applyShutterRule(values);
    if (access == &access::kHue || access == &access::kColorMatrix) applySwitchRule(values);
    for (const Access& curve : access::kGamma) {
        if (access == &curve) applyCurveRule(values);
    }
}

void addChanges(const WalkCamera& camera, const Group& group, const GroupValues& values,
                std::vector<SettingChange>& changes) {
    const Key* last = nullptr;
    std::size_t at = 0;
    forEachKey(camera, group, [&](const Key& key, std::uint32_t index) {
        const std::uint32_t present = values.present[at], wanted = values.wanted[at];
        ++at;
        if (present == wanted) return;
        if (last == &key) {
            ++changes.back().more;
            return;
        }
        last = &key;
        changes.push_back({key.meaning, group.section, narrow(keyName(key, index)), key.command,
                           narrow(textOf(key.form, present)), narrow(textOf(key.form, wanted))});
    });
}

}  // namespace

std::vector<SettingChange> settingChanges(const Camera& camera, const std::string& fileName) {
    platform::ProfileText text;
    const Status read = platform::readProfile(platform::toWide(fileName), text);
    if (!read.ok()) throw failure("cannot read " + fileName, read.code());
    ReadCamera reader(camera.handle());
    const WalkCamera walker(reader);
    std::vector<SettingChange> changes;
    for (const Group& group : settingWalk()) {
        if (!walker.has(group)) continue;
        GroupValues values;
        camera.check(readValues(walker, group, text, values) ? 1 : 0,
                     std::string("cannot read the settings of ") + group.section);
        keepWhatCounts(group, values);
        addChanges(walker, group, values, changes);
    }
    return changes;
}

}  // namespace tavra::tool
