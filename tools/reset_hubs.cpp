// `tavra reset-hubs`: restarts the USB root hubs, to get back a camera that the system has lost.
#include <iostream>
#include <string>

#include "commands.h"
#include "error_text.h"
#include "exit_code.h"
#include "tavra/tavra_api.h"

namespace tavra::tool {
namespace {

// Whoever is not there to answer has not agreed.
bool isAgreed() {
    std::cerr
        << "This restarts every USB root hub of high speed and above. All devices on them are lost for a "
           "moment:\ncameras, but keyboards and disks as well. Go on? [y/N] "
        << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

void run(bool isAsked) {
    if (isAsked && !isAgreed()) throw Failure("nothing was done");
    if (Tavra_ResetRootHub() != 0) {
        std::cout << "The USB root hubs were restarted; `tavra list` shows the cameras that are back.\n";
        return;
    }
    throw hubFailure(Tavra_GetLastError(nullptr));
}

}  // namespace

Failure hubFailure(std::uint32_t code) {
    // Of a camera the same code says that it went away.
    constexpr std::uint32_t kAccessDenied = 5;
    if (code != kAccessDenied) return failure("cannot restart the USB root hubs", code);
    return Failure("no permission to restart the USB root hubs (5); run it as root: sudo tavra reset-hubs");
}

void addResetHubs(CLI::App& app) {
    auto* const command = app.add_subcommand("reset-hubs", "Restart the USB root hubs; asks first");
    static bool yes = false;
    command->add_flag("-y,--yes", yes, "Do not ask");
    command->callback([] { run(!yes); });
}

}  // namespace tavra::tool
