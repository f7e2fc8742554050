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
    // Of a camera the first one says that it went away. The second one is of a container, which sees the
    // system's hubs as files that nobody can write.
    constexpr std::uint32_t kAccessDenied = 5, kWriteProtected = 19;
    if (code != kAccessDenied && code != kWriteProtected) {
        return failure("cannot restart the USB root hubs", code);
    }
    const std::string where = code == kWriteProtected ? ", outside of any container" : "";
    return Failure("no permission to restart the USB root hubs (" + std::to_string(code) +
                   "); run it as root" + where + ": sudo tavra reset-hubs");
}

void addResetHubs(CLI::App& app) {
    auto* const command = app.add_subcommand("reset-hubs", "Restart the USB root hubs; asks first");
    static bool yes = false;
    command->add_flag("-y,--yes", yes, "Do not ask");
    command->callback([] { run(!yes); });
}

}  // namespace tavra::tool
