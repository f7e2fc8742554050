// `tavra probe`: what a movie file holds, and whether it is whole.
#include "movie_probe/movie_probe.h"

#include <iostream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "commands.h"
#include "exit_code.h"
#include "movie_text.h"

namespace tavra::tool {
namespace {

struct Options {
    std::vector<std::string> files;
    bool json = false;
    bool quick = false;
};

// Whether the movie is whole.
bool show(const std::string& file, const Options& options) {
    const MovieReport report = probeMovie(file, options.quick ? ProbeDepth::Index : ProbeDepth::Frames);
    if (options.json) {
        std::cout << movieJson(file, report).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
                  << '\n';
    } else {
        std::cout << movieText(file, report);
    }
    return report.whole();
}

void run(const Options& options) {
    std::size_t broken = 0;
    std::string last;
    for (const std::string& file : options.files) {
        try {
            if (show(file, options)) continue;
            last = file + " is not a whole movie";
        } catch (const std::system_error& error) {
            last = "cannot read " + file + ": " + error.code().message();
            if (options.files.size() > 1) std::cerr << "tavra: " << last << '\n';
        }
        ++broken;
    }
    if (broken == 0) return;
    if (options.files.size() == 1) throw Failure(last);
    throw Failure(std::to_string(broken) + " of " + std::to_string(options.files.size()) +
                  " files are not whole movies");
}

}  // namespace

void addProbe(CLI::App& app) {
    auto* const command = app.add_subcommand(
        "probe", "Tell what AVI and SMF movies hold, and whether they are whole (else exit code 1)");
    static Options options;
    command->add_option("file", options.files, "AVI or SMF files")->required();
    command->add_flag("--json", options.json, "A JSON object for each file on a line, for programs");
    command->add_flag("--quick", options.quick, "Believe headers and indexes; do not look at each frame");
    command->callback([] { run(options); });
}

}  // namespace tavra::tool
