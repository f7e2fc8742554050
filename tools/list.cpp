// `tavra list`: the cameras that are plugged in, and the virtual ones that were asked for.
#include <array>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>
#include <vector>

#include "camera.h"
#include "commands.h"
#include "discovery.h"
#include "error_text.h"
#include "values.h"

namespace tavra::tool {
namespace {

struct Row {
    Found found;
    std::string model, userId, userText, serial, speed, problem;
};

// What can be told of a camera only while it is open.
void fillIn(Row& row) {
    if (row.found.inUse) {
        row.problem = "in use by another program";
        return;
    }
    const TavraHandle handle = Tavra_OpenByDevicePathW(row.found.path.c_str());
    if (handle == nullptr) {
        row.problem = errorText(Tavra_GetLastError(nullptr));
        return;
    }
    const Camera camera(handle, {});
    row.model = modelName(handle);
    std::uint32_t id = 0;
    std::array<char, 256> text{};
    if (Tavra_ReadCameraUserIDA(handle, &id, text.data(), text.size())) {
        row.userId = std::to_string(id);
        row.userText = text.data();
    }
    if (Tavra_ReadCameraSerialIDA(handle, &id, text.data(), text.size())) row.serial = std::to_string(id);
    std::uint8_t speed = 0;
    if (Tavra_GetUSBSpeed(handle, &speed)) row.speed = nameOf(kLinkSpeeds, speed);
}

void print(const std::vector<Row>& rows) {
    if (rows.empty()) {
        std::cout
            << "No camera found. Plug one in, run `tavra doctor`, or try `tavra list --virtual bayer`.\n";
        return;
    }
    for (const Row& row : rows) {
        std::cout << std::setw(3) << row.found.index << "  ";
        if (!row.problem.empty()) {
            std::cout << "?  " << row.problem;
        } else {
            std::cout << row.model << "  user ID " << row.userId
                      << (row.userText.empty() ? "" : " \"" + row.userText + "\"") << "  serial "
                      << row.serial << "  " << row.speed;
        }
        std::cout << "\n     " << shown(row.found.path) << '\n';
    }
}

void printJson(const std::vector<Row>& rows) {
    nlohmann::json list = nlohmann::json::array();
    for (const Row& row : rows) {
        list.push_back({{"index", row.found.index},
                        {"path", shown(row.found.path)},
                        {"virtual", row.found.isVirtual},
                        {"inUse", row.found.inUse},
                        {"model", row.model},
                        {"userId", row.userId},
                        {"userText", row.userText},
                        {"serial", row.serial},
                        {"speed", row.speed},
                        {"problem", row.problem}});
    }
    std::cout << list.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << '\n';
}

}  // namespace

void addList(CLI::App& app) {
    auto* const command = app.add_subcommand("list", "Show the cameras: model, user ID, link speed, path");
    static std::string models;
    static bool json = false;
    command->add_option("--virtual", models, "Show these cameras in memory too")
        ->type_name("MODEL[,MODEL...]")
        ->envname("TAVRA_VIRTUAL_CAMERAS");
    command->add_flag("--json", json, "One JSON array, for programs");
    command->callback([] {
        if (!models.empty()) useVirtualCameras(models);
        std::vector<Row> rows;
        for (const Found& found : discover()) {
            rows.push_back({found, {}, {}, {}, {}, {}, {}});
            fillIn(rows.back());
        }
        json ? printJson(rows) : print(rows);
    });
}

}  // namespace tavra::tool
