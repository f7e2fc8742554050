// `tavra watch`: exposure control and white balance at work.
#include <chrono>
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>

#include "camera.h"
#include "commands.h"
#include "control_monitor.h"
#include "control_state.h"
#include "exit_code.h"
#include "progress.h"
#include "run_options.h"
#include "settings_table.h"
#include "stream_session.h"

namespace tavra::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kPollMs = 10;
constexpr auto kLineEvery = std::chrono::milliseconds(500);

struct Options : RunOptions {
    std::uint64_t every = 0;
};

// Prints what the monitor has read, until the time is over.
class Watch {
  public:
    Watch(const Camera& camera, const Options& options)
        : camera_(camera),
          options_(options),
          monitor_(camera, !isMonoLike(camera), options.every),
          live_(LiveLine::Purpose::Result) {}

    void go() {
        start_ = Clock::now();
        const StreamSession stream(camera_);
        Clock::time_point asked = start_ - kLineEvery;
        while (!done()) {
            if (options_.every == 0 && Clock::now() - asked >= kLineEvery) {
                monitor_.ask();
                asked = Clock::now();
            }
            if (stream.runUntilInterrupted(kPollMs)) throw Failure("interrupted", ExitCode::Interrupted);
            showReadings();
        }
        showReadings();  // of the frame that made it done
    }

  private:
    bool done() const { return options_.reached(elapsed(), monitor_.frames()); }

    double elapsed() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }

    void showReadings() {
        for (ControlReading& reading : monitor_.takeReadings()) show(reading);
    }

    void show(ControlReading& reading) {
        addUnits(camera_, reading.state);
        if (options_.json) {
            std::cout << json(reading).dump() << std::endl;
        } else {
            live_.show(text(reading));
        }
    }

    static std::string moving(const ControlReading& reading) {
        if (reading.exposureMoves && reading.whiteBalanceMoves) return "exposure and white balance move";
        if (reading.exposureMoves) return "exposure moves";
        return reading.whiteBalanceMoves ? "white balance moves" : "at rest";
    }

    std::string text(const ControlReading& reading) const {
        const FrameMeans& means = reading.means;
        char part[160];
        std::snprintf(part, sizeof part, "%7.1f s  frame %6u  ", elapsed(), reading.frame);
        std::string line = part + reading.state.text(means.color) + "  mean ";
        if (means.color) {
            std::snprintf(part, sizeof part, "R %5.1f Gr %5.1f Gb %5.1f B %5.1f ", means.r, means.gr,
                          means.gb, means.b);
            line += part;
        }
        std::snprintf(part, sizeof part, "Y %5.1f  ", means.y);
        return line + part + moving(reading);
    }

    nlohmann::json json(const ControlReading& reading) const {
        const FrameMeans& means = reading.means;
        nlohmann::json object = {{"event", "state"},
                                 {"seconds", elapsed()},
                                 {"frame", reading.frame},
                                 {"exposureSeconds", reading.state.exposureSeconds},
                                 {"gainDecibels", reading.state.decibels},
                                 {"exposureMoves", reading.exposureMoves},
                                 {"whiteBalanceMoves", reading.whiteBalanceMoves},
                                 {"y", means.y}};
        if (!means.color) return object;
        constexpr double kUnity = 128;
        const auto& gains = reading.state.whiteBalance;
        object["mean"] = {{"r", means.r}, {"gr", means.gr}, {"gb", means.gb}, {"b", means.b}};
        object["whiteBalance"] = {{"r", gains[0] / kUnity},
                                  {"gr", gains[1] / kUnity},
                                  {"gb", gains[2] / kUnity},
                                  {"b", gains[3] / kUnity}};
        return object;
    }

    const Camera& camera_;
    const Options& options_;
    ControlMonitor monitor_;
    LiveLine live_;
    Clock::time_point start_;
};

// Both on, unless --set says otherwise.
void switchControlsOn(const Camera& camera) {
    camera.check(Tavra_SetALCMode(camera.handle(), TAVRA_ALC_SHUTTER_AND_GAIN),
                 "cannot switch the exposure control on");
    std::uint32_t modes = 0;
    camera.check(Tavra_GetEnableWhiteBalanceMode(camera.handle(), &modes), "cannot read the white balance");
    if (isMonoLike(camera) || (modes >> TAVRA_WHITE_BALANCE_CONTINUOUS & 1) == 0) return;
    const std::uint8_t mode =
        whiteBalanceActs(camera) ? TAVRA_WHITE_BALANCE_CONTINUOUS : TAVRA_WHITE_BALANCE_OFF;
    camera.check(Tavra_SetWhiteBalanceMode(camera.handle(), mode), "cannot switch the white balance");
}

void run(const Options& options) {
    const Camera camera(options.choice);
    switchControlsOn(camera);
    applyAssignments(camera, options.assignments);
    requireMosaicFormat(camera, "automatic control");
    noteInterrupts();
    Watch(camera, options).go();
}

}  // namespace

void addWatch(CLI::App& app) {
    auto* const command = app.add_subcommand(
        "watch", "Run exposure control and white balance, and tell what they measure and set");
    static Options options;
    options.addTo(*command);
    command->add_option("--every", options.every, "A line every N frames (default: every half second)")
        ->check(CLI::PositiveNumber);
    command->callback([] { run(options); });
}

}  // namespace tavra::tool
