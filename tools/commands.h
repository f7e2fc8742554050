// The subcommands. Each function adds its own to the application, with its options and what it does.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <string>

#include "exit_code.h"

namespace tavra::tool {

void addList(CLI::App& app);
void addInfo(CLI::App& app);
void addSnap(CLI::App& app);
void addStream(CLI::App& app);
void addView(CLI::App& app);
void addWatch(CLI::App& app);
void addRecord(CLI::App& app);
void addConvert(CLI::App& app);
void addProbe(CLI::App& app);
void addCalibrate(CLI::App& app);
void addGetAndSet(CLI::App& app);
void addSettings(CLI::App& app);
void addFirmware(CLI::App& app);
void addResetHubs(CLI::App& app);
void addDoctor(CLI::App& app);

// Why the USB root hubs could not be restarted.
Failure hubFailure(std::uint32_t code);

// "tavra 0.1.0", and the version of the USB access library.
std::string versionText();

}  // namespace tavra::tool
