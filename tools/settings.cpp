// `tavra get` and `tavra set`: read and change the everyday settings.
#include <algorithm>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>

#include "camera.h"
#include "commands.h"
#include "settings_table.h"

namespace tavra::tool {
namespace {

constexpr std::size_t kNarrowestColumn = 16;

std::string helpOfAll() {
    std::string text = "Settings (* in the library: for the run of a command, give them with --set):\n";
    for (const Setting& setting : settings()) {
        const std::string name = std::string(setting.name) + (setting.keptBy == KeptBy::Library ? " *" : "") +
                                 (setting.set == nullptr ? " (read only)" : "");
        text += "  " + name + std::string(name.size() < 30 ? 30 - name.size() : 1, ' ') + setting.help + "\n";
    }
    return text;
}

int columnWidth(const std::vector<const Setting*>& wanted) {
    std::size_t width = kNarrowestColumn;
    for (const Setting* setting : wanted) width = std::max(width, std::string(setting->name).size() + 2);
    return static_cast<int>(width);
}

// A setting that this camera does not have is shown as such when all are asked for.
std::string valueOrAbsent(const Camera& camera, const Setting& setting, bool named) {
    try {
        return setting.get(camera);
    } catch (const Failure&) {
        if (named) throw;
        return "-";
    }
}

void addGet(CLI::App& app) {
    auto* const command = app.add_subcommand("get", "Read settings: all, or those named");
    static CameraChoice choice;
    static std::vector<std::string> names;
    static bool json = false;
    choice.addTo(*command);
    command->add_option("name", names, "Settings to read; none: all");
    command->add_flag("--json", json, "One JSON object, for programs");
    command->footer(helpOfAll());
    command->callback([] {
        std::vector<const Setting*> wanted;
        wanted.reserve(names.size() + settings().size());
        for (const std::string& name : names) wanted.push_back(&settingNamed(name));
        if (names.empty()) {
            for (const Setting& setting : settings()) wanted.push_back(&setting);
        }
        const Camera camera(choice);
        nlohmann::json object = nlohmann::json::object();
        for (const Setting* setting : wanted) {
            const std::string value = valueOrAbsent(camera, *setting, !names.empty());
            if (json) {
                object[setting->name] = value;
            } else if (names.size() == 1) {
                std::cout << value << '\n';
            } else {
                std::cout << std::left << std::setw(columnWidth(wanted)) << setting->name << value << '\n';
            }
        }
        if (json) std::cout << object.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
    });
}

void addSet(CLI::App& app) {
    auto* const command =
        app.add_subcommand("set", "Change settings; the camera keeps its own while it has power");
    static CameraChoice choice;
    static std::vector<std::string> assignments;
    choice.addTo(*command);
    command->add_option("assignment", assignments, "NAME=VALUE, applied in this order")->required();
    command->footer(helpOfAll());
    command->callback([] {
        const Camera camera(choice);
        applyAssignments(camera, assignments);
        bool forThisRunOnly = false;
        for (const std::string& assignment : assignments) {
            const Setting& setting = settingNamed(assignment.substr(0, assignment.find('=')));
            std::cout << setting.name << " is now " << setting.get(camera) << '\n';
            forThisRunOnly |= setting.keptBy == KeptBy::Library;
        }
        if (forThisRunOnly) {
            std::cerr << "Settings of the library end with this command; give them to snap, stream or watch "
                         "with --set.\n";
        }
    });
}

}  // namespace

void addGetAndSet(CLI::App& app) {
    addGet(app);
    addSet(app);
}

}  // namespace tavra::tool
