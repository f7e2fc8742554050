#include "settings/setting_file.h"

#include <string_view>

namespace tavra {
namespace {

bool done(ISettingCamera& camera, Status status) {
    camera.noteFailure(status);
    return status.ok();
}

std::u16string sectionName(const WalkCamera& camera, std::string_view section) {
    return std::u16string(section.begin(), section.end()) + camera.suffix();
}

// One key as it is to stand in the file.
struct Entry {
    std::u16string section, key, value;
};

// Whether a function of the group has failed because the window that it is about was closed meanwhile. Then
// there is none, and nothing of it to save or to load.
bool isGone(const WalkCamera& camera, const Group& group) {
    return group.condition == Condition::PreviewWindow && !camera.has(group);
}

bool collect(const WalkCamera& camera, const Group& group, std::vector<Entry>& entries) {
    std::vector<std::uint32_t> values(camera.size(group));
    if (!group.access.get(camera.camera(), values)) return isGone(camera, group);
    const std::u16string section = sectionName(camera, group.section);
    std::size_t at = 0;
    forEachKey(camera, group, [&](const Key& key, std::uint32_t index) {
        entries.push_back({section, keyName(key, index), textOf(key.form, values[at++])});
    });
    return true;
}

// What the section has for the group; `values` are the defaults.
void read(const WalkCamera& camera, const Group& group, const std::u16string& section,
          platform::ProfileText& text, std::vector<std::uint32_t>& values) {
    std::size_t at = 0;
    forEachKey(camera, group, [&](const Key& key, std::uint32_t index) {
        const auto found = text.find(section, keyName(key, index));
        if (found) values[at] = valueOf(key.form, *found, values[at]);
        ++at;
    });
}

bool loadGroup(const WalkCamera& camera, const Group& group, platform::ProfileText& text) {
    std::vector<std::uint32_t> values;
    if (!beginGroup(camera, group, values)) return isGone(camera, group);
    readGroup(camera, group, text, values);
    return group.access.set(camera.camera(), values) || isGone(camera, group);
}

}  // namespace

bool beginGroup(const WalkCamera& camera, const Group& group, std::vector<std::uint32_t>& values) {
    values.assign(camera.size(group), 0);
    if (group.defaults == nullptr) return group.access.get(camera.camera(), values);
    group.defaults(values);
    return true;
}

void readGroup(const WalkCamera& camera, const Group& group, platform::ProfileText& text,
               std::vector<std::uint32_t>& values) {
    const std::vector<std::uint32_t> defaults = values;
    read(camera, group, sectionName(camera, group.section), text, values);
    if (group.secondSection != nullptr && values == defaults) {
        read(camera, group, sectionName(camera, group.secondSection), text, values);
    }
}

bool saveSettingFile(ISettingCamera& camera, const std::u16string& name) {
    // The camera is read first: it may be slow, and others may be waiting for the file.
    std::vector<Entry> entries;
    const WalkCamera walker(camera);
    for (const Group& group : settingWalk()) {
        if (walker.has(group) && !collect(walker, group, entries)) return false;
    }
    return done(camera, platform::updateProfile(name, [&](platform::ProfileText& text) {
                    for (const Entry& entry : entries) text.set(entry.section, entry.key, entry.value);
                }));
}

bool loadSettingFile(ISettingCamera& camera, const std::u16string& name) {
    platform::ProfileText text;
    if (!done(camera, platform::readProfile(name, text))) return false;
    const WalkCamera walker(camera);
    for (const Group& group : settingWalk()) {
        if (walker.has(group) && !loadGroup(walker, group, text)) return false;
    }
    return true;
}

}  // namespace tavra
