// The tavra command: one subcommand a job, each in a file of its own.
#include <CLI/CLI.hpp>
#include <iostream>

#include "commands.h"
#include "exit_code.h"

namespace {

using namespace tavra::tool;

int run(int argc, char** argv) {
    CLI::App app("Drive industrial USB cameras from the command line.", "tavra");
    app.footer(kExitCodeHelp);
    app.set_version_flag("--version", versionText);
    app.require_subcommand(1);
    app.failure_message(CLI::FailureMessage::help);
    addList(app);
    addInfo(app);
    addSnap(app);
    addStream(app);
    addView(app);
    addWatch(app);
    addRecord(app);
    addConvert(app);
    addProbe(app);
    addCalibrate(app);
    addGetAndSet(app);
    addSettings(app);
    addFirmware(app);
    addResetHubs(app);
    addDoctor(app);
    try {
        app.parse(argc, argv);
        return static_cast<int>(ExitCode::Success);
    } catch (const CLI::ParseError& error) {
        const int code = app.exit(error);
        return code == 0 ? 0 : static_cast<int>(ExitCode::Usage);
    } catch (const Failure& failure) {
        std::cout.flush();
        std::cerr << "tavra: " << failure.what() << '\n';
        return static_cast<int>(failure.exitCode());
    } catch (const std::exception& error) {
        std::cout.flush();
        std::cerr << "tavra: " << error.what() << '\n';
        return static_cast<int>(ExitCode::Failed);
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (...) {  // not even the message could be written
        return static_cast<int>(ExitCode::Failed);
    }
}
