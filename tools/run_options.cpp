#include "run_options.h"

namespace tavra::tool {

void RunOptions::addTo(CLI::App& command) {
    choice.addTo(command);
    command.add_option("--seconds", seconds, "Stop after this time (default: until interrupted)")
        ->check(CLI::PositiveNumber);
    command.add_option("--frames", frames, "Stop after this many frames")->check(CLI::PositiveNumber);
    command.add_option("--set", assignments, "NAME=VALUE before the start, as in `tavra set`; repeatable");
    command.add_flag("--json", json, "A JSON object a line on standard output, for programs");
}

bool RunOptions::reached(double elapsedSeconds, std::uint64_t framesSoFar) const {
    return (seconds > 0 && elapsedSeconds >= seconds) || (frames > 0 && framesSoFar >= frames);
}

}  // namespace tavra::tool
