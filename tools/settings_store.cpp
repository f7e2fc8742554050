// `tavra settings`: setting files, named settings, and their text form.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>

#include "camera.h"
#include "commands.h"
#include "error_text.h"
#include "exit_code.h"
#include "setting_changes.h"
#include "settings_table.h"

namespace tavra::tool {
namespace {

struct Options {
    CameraChoice choice;
    std::string file, name;
    bool withoutSizes = false, withoutRotation = false, json = false, none = false;
    std::vector<std::string> assignments;
};

// One set for all: only one job runs.
Options& options() {
    static Options all;
    return all;
}

constexpr const char* kNamedHelp =
    "A setting by name, kept for the camera type among the user's own, instead of a file";

// What of a camera is left alone.
void chooseParts(const Camera& camera) {
    std::uint32_t mode = TAVRA_SETTING_FILE_ALL;
    if (options().withoutRotation) mode = TAVRA_SETTING_FILE_NO_ROTATION;
    if (options().withoutSizes) mode = TAVRA_SETTING_FILE_NO_GEOMETRY;
    camera.check(Tavra_SetSettingFileMode(camera.handle(), mode), "cannot choose the settings");
}

void addParts(CLI::App& command) {
    command.add_flag("--without-sizes", options().withoutSizes,
                     "Leave out image size, regions, skipping, binning and rotation");
    command.add_flag("--without-rotation", options().withoutRotation, "Leave out the rotation");
}

void addFileOrName(CLI::App& command) {
    auto* const file = command.add_option("file", options().file, "Setting file");
    auto* const name = command.add_option("--named", options().name, kNamedHelp);
    file->excludes(name);
}

void requireFileOrName() {
    if (options().file.empty() && options().name.empty()) {
        throw Failure("name a FILE, or a setting with --named", ExitCode::Usage);
    }
}

std::vector<std::string> namesOf(const Camera& camera) {
    std::vector<char> buffer(65536);
    std::uint32_t count = 0;
    camera.check(Tavra_GetSettingListRegA(camera.handle(), buffer.data(),
                                          static_cast<std::uint32_t>(buffer.size()), &count),
                 "cannot list the named settings");
    std::vector<std::string> names;
    std::string text = buffer.data();
    for (std::size_t end; (end = text.find('\\')) != std::string::npos; text.erase(0, end + 1)) {
        names.push_back(text.substr(0, end));
    }
    return names;
}

std::string defaultOf(const Camera& camera) {
    std::vector<char> buffer(1024);
    camera.check(Tavra_GetDefaultSettingRegA(camera.handle(), buffer.data(),
                                             static_cast<std::uint32_t>(buffer.size())),
                 "cannot read the default");
    return buffer.data();
}

// The store takes capitals and small letters for the same.
bool isSameName(const std::string& one, const std::string& other) {
    const auto small = [](char unit) {
        return unit >= 'A' && unit <= 'Z' ? static_cast<char>(unit + ('a' - 'A')) : unit;
    };
    return std::ranges::equal(one, other, {}, small, small);
}

bool isAmong(const std::vector<std::string>& names, const std::string& name) {
    return std::ranges::any_of(names, [&](const std::string& known) { return isSameName(known, name); });
}

void requireName(const Camera& camera, const std::string& name) {
    const std::vector<std::string> names = namesOf(camera);
    if (isAmong(names, name)) return;
    std::string all;
    for (const std::string& known : names) all += (all.empty() ? "" : ", ") + known;
    throw Failure("there is no setting '" + name + "' for this camera type" +
                  (all.empty() ? ": none is kept" : ": " + all));
}

void requireFile(const std::string& file) {
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored)) throw failure("cannot read " + file, 2);
}

// Code 5 is that of a camera that went away, too; of a file it says something else.
void checkFile(const Camera& camera, TavraBool result, const std::string& what) {
    if (result == 0 && Tavra_GetLastError(camera.handle()) == TAVRA_ERROR_DEVICE_GONE) {
        throw Failure(what + ": no permission, or it is no plain file; is it marked read-only? (5)");
    }
    camera.check(result, what);
}

// --- jobs ---

// The library reports success also where the store did not take it, and leaves the reason as last error.
void saveNamed(const Camera& camera) {
    const std::uint32_t before = Tavra_GetLastError(camera.handle());
    const std::string what = "cannot save '" + options().name + "'";
    camera.check(Tavra_SaveSettingRegA(camera.handle(), options().name.c_str()), what);
    const std::uint32_t after = Tavra_GetLastError(camera.handle());
    if (after != before) throw failure(what, after);
    requireName(camera, options().name);
}

void save() {
    requireFileOrName();
    const Camera camera(options().choice);
    applyAssignments(camera, options().assignments);
    chooseParts(camera);
    if (options().file.empty()) {
        saveNamed(camera);
    } else {
        checkFile(camera, Tavra_SaveSettingFileA(camera.handle(), options().file.c_str()),
                  "cannot save to " + options().file);
    }
}

void load() {
    requireFileOrName();
    const Camera camera(options().choice);
    chooseParts(camera);
    if (options().file.empty()) {
        requireName(camera, options().name);
        camera.check(Tavra_LoadSettingRegA(camera.handle(), options().name.c_str()),
                     "cannot load '" + options().name + "'");
    } else {
        requireFile(options().file);
        checkFile(camera, Tavra_LoadSettingFileA(camera.handle(), options().file.c_str()),
                  "cannot load " + options().file);
    }
    std::cerr << "The camera keeps its own settings while it has power; those of the library end with this "
                 "command.\n";
}

void reset() {
    const Camera camera(options().choice);
    chooseParts(camera);
    camera.check(Tavra_ResetSetting(camera.handle()), "cannot set the defaults");
}

void list() {
    const Camera camera(options().choice);
    const std::string marked = defaultOf(camera);
    nlohmann::json object{{"names", nlohmann::json::array()}, {"default", marked}};
    for (const std::string& name : namesOf(camera)) {
        object["names"].push_back(name);
        if (!options().json) std::cout << name << (isSameName(name, marked) ? "  (default)" : "") << '\n';
    }
    if (options().json) {
        std::cout << object.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    }
}

void markDefault() {
    const Camera camera(options().choice);
    if (options().none) {
        camera.check(Tavra_SetDefaultSettingRegA(camera.handle(), nullptr), "cannot clear the default");
    } else if (!options().name.empty()) {
        requireName(camera, options().name);
        camera.check(Tavra_SetDefaultSettingRegA(camera.handle(), options().name.c_str()),
                     "cannot mark '" + options().name + "'");
    } else {
        const std::string name = defaultOf(camera);
        if (!name.empty()) std::cout << name << '\n';
    }
}

void removeNamed() {
    const Camera camera(options().choice);
    requireName(camera, options().name);
    camera.check(Tavra_RemoveSettingRegA(camera.handle(), options().name.c_str()),
                 "cannot remove '" + options().name + "'");
}

void exportText() {
    const Camera camera(options().choice);
    requireName(camera, options().name);
    checkFile(camera,
              Tavra_ExportSettingRegA(camera.handle(), options().name.c_str(), options().file.c_str()),
              "cannot export '" + options().name + "' to " + options().file);
}

void importText() {
    const Camera camera(options().choice);
    checkFile(camera, Tavra_ImportSettingRegA(camera.handle(), options().file.c_str()),
              "cannot import " + options().file);
}

void show(const SettingChange& change) {
    std::cout << change.meaning << ": " << change.present << " -> " << change.wanted;
    if (change.more != 0) std::cout << ", and " << change.more << " more";
    std::cout << "  [" << change.section << "/" << change.key
              << (change.command.empty() ? "" : "; " + change.command) << "]\n";
}

void diff() {
    requireFile(options().file);
    const Camera camera(options().choice);
    applyAssignments(camera, options().assignments);
    chooseParts(camera);
    const std::vector<SettingChange> changes = settingChanges(camera, options().file);
    nlohmann::json array = nlohmann::json::array();
    for (const SettingChange& change : changes) {
        if (!options().json) show(change);
        array.push_back({{"meaning", change.meaning},
                         {"section", change.section},
                         {"key", change.key},
                         {"setting", change.command},
                         {"present", change.present},
                         {"wanted", change.wanted},
                         {"more", change.more}});
    }
    if (options().json) {
        std::cout << array.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    } else if (changes.empty()) {
        std::cout << "nothing would change\n";
    }
}

CLI::App& addJob(CLI::App& settings, const char* name, const char* help, void (*run)()) {
    auto* const job = settings.add_subcommand(name, help);
    options().choice.addTo(*job);
    job->callback(run);
    return *job;
}

}  // namespace

void addSettings(CLI::App& app) {
    auto* const settings = app.add_subcommand("settings", "Save, load and compare everything that is set");
    settings->require_subcommand(1);
    Options& all = options();

    CLI::App& saveJob = addJob(*settings, "save", "Save to a file, or under a name", save);
    addFileOrName(saveJob);
    addParts(saveJob);
    saveJob.add_option("--set", all.assignments, "NAME=VALUE, set before")->allow_extra_args(false);

    CLI::App& loadJob = addJob(*settings, "load", "Load from a file, or by name", load);
    addFileOrName(loadJob);
    addParts(loadJob);

    addParts(addJob(*settings, "reset", "Set the defaults", reset));

    CLI::App& listJob = addJob(*settings, "list", "Named settings of the camera type", list);
    listJob.add_flag("--json", all.json, "One JSON object, for programs");

    CLI::App& defaultJob = addJob(*settings, "default", "Show or choose the default among them", markDefault);
    auto* const marked = defaultJob.add_option("name", all.name, "The new default");
    defaultJob.add_flag("--none", all.none, "No default")->excludes(marked);

    CLI::App& removeJob = addJob(*settings, "remove", "Forget a named setting", removeNamed);
    removeJob.add_option("name", all.name, "Its name")->required();

    CLI::App& exportJob = addJob(*settings, "export", "Write a named setting as .reg text", exportText);
    exportJob.add_option("name", all.name, "Its name")->required();
    exportJob.add_option("file", all.file, "Text file; an old one is replaced")->required();

    CLI::App& importJob = addJob(*settings, "import", "Read .reg text into the named settings", importText);
    importJob.add_option("file", all.file, "Text file")->required();

    CLI::App& diffJob = addJob(*settings, "diff", "Show what loading a file would change", diff);
    diffJob.add_option("file", all.file, "Setting file")->required();
    addParts(diffJob);
    diffJob.add_option("--set", all.assignments, "NAME=VALUE, set before")->allow_extra_args(false);
    diffJob.add_flag("--json", all.json, "One JSON array, for programs");
}

}  // namespace tavra::tool
