// Exports of named settings.
#include <algorithm>

#include "api/output.h"
#include "api/setting_camera.h"
#include "api/settings_names.h"
#include "platform/last_error.h"
#include "settings/reg_text.h"
#include "settings/registry_setting.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

constexpr std::size_t kNarrowNameLimit =
    259;  // characters of a wide buffer that a narrow name is converted into

std::u16string nameOrNone(const TavraWChar* name) {
    return name != nullptr ? std::u16string(name) : std::u16string();
}

// A narrow name as the wide one that the W form takes; null stays null.
class NarrowName {
  public:
    NarrowName(const char* name, std::uint32_t tooLong, std::uint32_t notWhole)
        : name_(name), tooLong_(tooLong), notWhole_(notWhole) {}

    Status convert() {
        if (name_ == nullptr) return Status();
        const auto converted = api::wideName(name_);
        if (!converted) return Status(notWhole_);
        if (converted->size() >= kNarrowNameLimit) return Status(tooLong_);
        wide_ = *converted;
        return Status();
    }
    const TavraWChar* get() const { return name_ != nullptr ? wide_.c_str() : nullptr; }

  private:
    const char* name_;
    std::uint32_t tooLong_, notWhole_;
    std::u16string wide_;
};

// Calls operation(wide...) with the names converted, if all of them can be.
template <typename Operation, typename... Names>
TavraBool withWide(TavraHandle handle, Operation operation, Names... names) {
    const TavraBool valid = api::call(handle, [&](TAVRA_COMMON_PARAM&) {
        Status status;
        ((status = status.ok() ? names.convert() : status), ...);
        return status;
    });
    return valid != 0 ? operation(handle, names.get()...) : 0;
}

NarrowName settingName(const char* name) {
    return {name, error::kInsufficientBuffer, api::kNoTranslation};
}
NarrowName fileName(const char* name) {
    return {name, error::kFileName, error::kFileName};
}

// The name of the default with its zero. A name that does not fit is none that could be opened.
template <typename Unit, typename Convert>
TavraBool giveDefault(TavraHandle handle, Unit* buffer, std::uint32_t size, Convert convert) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& record) {
        if (buffer == nullptr || size < sizeof(Unit)) return Status(error::kInvalidArgument);
        *buffer = 0;
        api::SettingCamera camera(record);
        std::u16string name;
        TAVRA_RETURN_IF_ERROR(getDefaultSetting(camera, name));
        const std::optional<std::basic_string<Unit>> text = convert(name);
        if (!text) return Status(api::kNoTranslation);
        if ((text->size() + 1) * sizeof(Unit) > size) return Status();
        std::ranges::copy(*text, buffer);
        buffer[text->size()] = 0;
        return Status();
    });
}

// Names with a backslash behind each, as far as there is room, and the number of all settings. A name that
// the code page does not have counts, and is left out.
template <typename Unit, typename Convert>
TavraBool giveList(TavraHandle handle, Unit* buffer, std::uint32_t size, std::uint32_t* count,
                   Convert convert) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& record) {
        if (buffer == nullptr || count == nullptr || size < sizeof(Unit)) {
            return Status(error::kInvalidArgument);
        }
        *count = 0;
        *buffer = 0;
        api::SettingCamera camera(record);
        std::vector<std::u16string> names;
        TAVRA_RETURN_IF_ERROR(listSettings(camera, names));
        std::size_t room = size - size % sizeof(Unit);
        for (const std::u16string& name : names) {
            const std::optional<std::basic_string<Unit>> text = convert(name);
            if (!text) continue;
            const std::size_t needed = (text->size() + 1) * sizeof(Unit);
            if (room <= needed) {
                room = 0;
                continue;
            }
            buffer = std::ranges::copy(*text, buffer).out;
            *buffer++ = '\\';
            *buffer = 0;
            room -= needed;
        }
        *count = static_cast<std::uint32_t>(names.size());
        return Status();
    });
}

std::optional<std::u16string> asItIs(const std::u16string& name) {
    return name;
}

// The status of an operation that tells its failure by the system's last error.
template <typename Operation>
Status bySystemError(Operation operation) {
    platform::setLastSystemError(0);
    if (operation()) return Status();
    const std::uint32_t code = platform::lastSystemError();
    return Status(code != 0 ? code : error::kInvalidArgument);
}

}  // namespace

TavraBool Tavra_SaveSettingRegW(TavraHandle handle, const TavraWChar* name) {
    return api::whileStopped(
        handle, [&](ISettingCamera& camera) { return saveRegistrySetting(camera, nameOrNone(name)); });
}

TavraBool Tavra_LoadSettingRegW(TavraHandle handle, const TavraWChar* name) {
    return api::whileStopped(
        handle, [&](ISettingCamera& camera) { return loadRegistrySetting(camera, nameOrNone(name)); });
}

TavraBool Tavra_RemoveSettingRegW(TavraHandle handle, const TavraWChar* name) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& record) {
        api::SettingCamera camera(record);
        return removeRegistrySetting(camera, nameOrNone(name));
    });
}

TavraBool Tavra_SetDefaultSettingRegW(TavraHandle handle, const TavraWChar* name) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& record) {
        api::SettingCamera camera(record);
        const std::u16string wanted = nameOrNone(name);
        return setDefaultSetting(camera, name != nullptr ? &wanted : nullptr);
    });
}

TavraBool Tavra_GetDefaultSettingRegW(TavraHandle handle, TavraWChar* buffer, std::uint32_t size) {
    return giveDefault(handle, buffer, size, asItIs);
}

TavraBool Tavra_GetSettingListRegW(TavraHandle handle, TavraWChar* buffer, std::uint32_t size,
                                   std::uint32_t* count) {
    return giveList(handle, buffer, size, count, asItIs);
}

TavraBool Tavra_ExportSettingRegW(TavraHandle handle, const TavraWChar* name, const TavraWChar* file) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& record) {
        if (file == nullptr || *file == 0) return Status(error::kFileName);
        api::SettingCamera camera(record);
        const std::u16string path = settingPath(camera, nameOrNone(name));
        return bySystemError([&] { return ExportKey(file, path); });
    });
}

TavraBool Tavra_ImportSettingRegW(TavraHandle handle, const TavraWChar* file) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& record) {
        if (file == nullptr || *file == 0) return Status(error::kFileName);
        api::SettingCamera camera(record);
        const std::u16string prefix = settingPath(camera, {});
        return bySystemError([&] { return ImportKey(file, prefix); });
    });
}

TavraBool Tavra_SaveSettingRegA(TavraHandle handle, const char* name) {
    return withWide(handle, Tavra_SaveSettingRegW, settingName(name));
}

TavraBool Tavra_LoadSettingRegA(TavraHandle handle, const char* name) {
    return withWide(handle, Tavra_LoadSettingRegW, settingName(name));
}

TavraBool Tavra_RemoveSettingRegA(TavraHandle handle, const char* name) {
    return withWide(handle, Tavra_RemoveSettingRegW, settingName(name));
}

TavraBool Tavra_SetDefaultSettingRegA(TavraHandle handle, const char* name) {
    return withWide(handle, Tavra_SetDefaultSettingRegW, settingName(name));
}

TavraBool Tavra_GetDefaultSettingRegA(TavraHandle handle, char* buffer, std::uint32_t size) {
    return giveDefault(handle, buffer, size, api::narrowName);
}

TavraBool Tavra_GetSettingListRegA(TavraHandle handle, char* buffer, std::uint32_t size,
                                   std::uint32_t* count) {
    return giveList(handle, buffer, size, count, api::narrowName);
}

TavraBool Tavra_ExportSettingRegA(TavraHandle handle, const char* name, const char* file) {
    return withWide(handle, Tavra_ExportSettingRegW, settingName(name), fileName(file));
}

TavraBool Tavra_ImportSettingRegA(TavraHandle handle, const char* file) {
    return withWide(handle, Tavra_ImportSettingRegW, fileName(file));
}
