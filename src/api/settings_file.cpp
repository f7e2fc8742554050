// Exports of setting files.
#include "settings/setting_file.h"

#include "api/output.h"
#include "api/setting_camera.h"
#include "api/settings_names.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

using FileOperation = bool (*)(ISettingCamera&, const std::u16string&);

TavraBool withFile(TavraHandle handle, const TavraWChar* fileName, FileOperation operation) {
    return api::whileStopped(handle, [&](ISettingCamera& camera) {
        if (fileName == nullptr || *fileName == 0) {
            camera.noteFailure(Status(error::kFileName));
            return false;
        }
        return operation(camera, fileName);
    });
}

TavraBool withNarrowName(TavraHandle handle, const char* fileName, FileOperation operation) {
    std::u16string wide;
    const TavraBool valid = api::call(handle, [&](TAVRA_COMMON_PARAM&) {
        const auto converted = fileName != nullptr ? api::wideName(fileName) : std::nullopt;
        if (!converted) return Status(error::kFileName);
        wide = *converted;
        return Status();
    });
    return valid != 0 ? withFile(handle, wide.c_str(), operation) : 0;
}

}  // namespace

TavraBool Tavra_SaveSettingFileW(TavraHandle handle, const TavraWChar* fileName) {
    return withFile(handle, fileName, saveSettingFile);
}

TavraBool Tavra_LoadSettingFileW(TavraHandle handle, const TavraWChar* fileName) {
    return withFile(handle, fileName, loadSettingFile);
}

TavraBool Tavra_SaveSettingFileA(TavraHandle handle, const char* fileName) {
    return withNarrowName(handle, fileName, saveSettingFile);
}

TavraBool Tavra_LoadSettingFileA(TavraHandle handle, const char* fileName) {
    return withNarrowName(handle, fileName, loadSettingFile);
}

TavraBool Tavra_ResetSetting(TavraHandle handle) {
    return api::whileStopped(handle, resetSettings);
}

TavraBool Tavra_SetSettingFileMode(TavraHandle handle, std::uint32_t mode) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        camera.settingFileMode = mode;
        return Status();
    });
}

TavraBool Tavra_GetSettingFileMode(TavraHandle handle, std::uint32_t* mode) {
    return api::getNumber(handle, mode, [](TAVRA_COMMON_PARAM& camera, std::uint32_t& value) {
        value = camera.settingFileMode;
        return Status();
    });
}
