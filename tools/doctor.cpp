#include "doctor.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "commands.h"
#include "error_text.h"
#include "exit_code.h"
#include "platform/usb_access.h"

namespace tavra::tool {
namespace {

namespace fs = std::filesystem;
using Kind = Finding::Kind;

constexpr const char* kVendor = "2e6b";
constexpr int kEnoughUsbMemoryMb = 256;
constexpr int kSuperSpeedMbit = 5000;
constexpr std::uint64_t kReadThreadPriority = 15;

std::string firstLine(const fs::path& file) {
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line;
}

int numberIn(const fs::path& file) {
    try {
        return std::stoi(firstLine(file));
    } catch (const std::exception&) {
        return -1;
    }
}

Finding permission(const SystemView& system, const fs::path& device) {
    char node[32];
    std::snprintf(node, sizeof node, "/%03d/%03d", numberIn(device / "busnum"), numberIn(device / "devnum"));
    const std::string path = system.usbDevices + node;
    const std::string name = device.filename().string();
    if (access(path.c_str(), R_OK | W_OK) == 0)
        return {Kind::Good, "you may use the camera at USB " + name, ""};
    return {Kind::Problem, "no permission for the camera at USB " + name + " (" + path + ")",
            "install the udev rule 60-tavra.rules (part of the installation) into /etc/udev/rules.d, run "
            "`sudo udevadm "
            "control --reload`, then plug the camera in again"};
}

Finding linkSpeed(const fs::path& device) {
    const int speed = numberIn(device / "speed");
    const std::string text = "the link to the camera at USB " + device.filename().string() + " runs at " +
                             std::to_string(speed) + " Mbit/s";
    if (speed >= kSuperSpeedMbit) return {Kind::Good, text, ""};
    return {Kind::Advice, text + ": fine for a USB 2 camera, a tenth of what a USB 3 camera can do",
            "use a USB 3 port and cable (blue, or marked SS), no hub in between"};
}

Finding accessLibrary() {
    const platform::UsbAccess* access = nullptr;
    if (const Status loaded = platform::loadUsbAccess(access); !loaded.ok()) {
        return {Kind::Problem, "the USB access library cannot be used", errorText(loaded.code())};
    }
    return {Kind::Good, "the USB access library is there", ""};
}

void print(const Finding& finding) {
    const char* const marks[] = {"ok      ", "advice  ", "PROBLEM "};
    std::cout << marks[static_cast<int>(finding.kind)] << finding.text << '\n';
    if (!finding.fix.empty()) std::cout << "        -> " << finding.fix << '\n';
}

void run() {
    const SystemView system;
    std::vector<Finding> findings{accessLibrary()};
    rlimit limit{};
    getrlimit(RLIMIT_RTPRIO, &limit);
    for (const auto& part : {findCameraProblems(system), findUsbMemoryProblems(system),
                             findPriorityProblems(limit.rlim_cur, geteuid() == 0)}) {
        findings.insert(findings.end(), part.begin(), part.end());
    }
    bool problem = false;
    for (const Finding& finding : findings) {
        print(finding);
        problem = problem || finding.kind == Kind::Problem;
    }
    if (problem) throw Failure("there are problems; the arrows above say what fixes them");
}

}  // namespace

std::vector<Finding> findCameraProblems(const SystemView& system) {
    std::vector<Finding> findings;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(system.sysfs + "/bus/usb/devices", error)) {
        if (firstLine(entry.path() / "idVendor") != kVendor) continue;
        findings.push_back(permission(system, entry.path()));
        findings.push_back(linkSpeed(entry.path()));
    }
    if (error) return {{Kind::Problem, "this system shows no USB at all", "load the kernel's USB drivers"}};
    if (findings.empty()) {
        findings.push_back({Kind::Advice, "no camera is plugged in",
                            "plug one in, or try one in memory: tavra snap --virtual bayer chart.png"});
    }
    return findings;
}

std::vector<Finding> findUsbMemoryProblems(const SystemView& system) {
    const fs::path file = system.sysfs + "/module/usbcore/parameters/usbfs_memory_mb";
    const int megabytes = numberIn(file);
    if (megabytes < 0) return {};
    const std::string text = "the kernel lends USB programs " + std::to_string(megabytes) + " MB for reads";
    if (megabytes == 0 || megabytes >= kEnoughUsbMemoryMb) return {{Kind::Good, text, ""}};
    return {{Kind::Advice, text + ", which is little for large frames or several cameras",
             "echo 1000 | sudo tee " + file.string() +
                 "   (for good: usbcore.usbfs_memory_mb=1000 on the kernel's "
                 "command line)"}};
}

std::vector<Finding> findPriorityProblems(std::uint64_t limit, bool root) {
    if (root || limit >= kReadThreadPriority) {
        return {{Kind::Good, "the read thread may run in real time", ""}};
    }
    return {
        {Kind::Advice, "the read thread may not run in real time; a busy computer can lose frames",
         "echo '@plugdev - rtprio 20' | sudo tee /etc/security/limits.d/60-tavra.conf, join that group (sudo "
         "usermod -aG plugdev $USER) and log in again"}};
}

void addDoctor(CLI::App& app) {
    auto* const command = app.add_subcommand(
        "doctor", "Check permissions, link speed, USB memory and priority, and say what fixes them");
    command->callback(run);
}

}  // namespace tavra::tool
