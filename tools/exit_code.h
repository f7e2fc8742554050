// What the command tells the shell, and how a command ends early.
#pragma once

#include <stdexcept>
#include <string>

namespace tavra::tool {

// Documented in `tavra --help`; scripts rely on the numbers.
enum class ExitCode : int {
    Success = 0,
    Failed = 1,      // the work could not be done
    Usage = 2,       // the command line is wrong
    NoCamera = 3,    // no camera, or not the one asked for, or all are in use
    CameraLost = 4,  // the camera went away during the work
    TimedOut = 5,    // no frame came in time
    Interrupted = 130,
};

extern const char* const kExitCodeHelp;

// A failure that a person is told about: what failed, on what, and what to do. Thrown by the commands,
// printed by main; it never crosses the library.
class Failure : public std::runtime_error {
  public:
    explicit Failure(const std::string& message, ExitCode exitCode = ExitCode::Failed)
        : std::runtime_error(message), exitCode_(exitCode) {}

    ExitCode exitCode() const { return exitCode_; }

  private:
    ExitCode exitCode_;
};

}  // namespace tavra::tool
