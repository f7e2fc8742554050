// `tavra stream`: run the camera and tell what arrives.
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>

#include "camera.h"
#include "commands.h"
#include "error_text.h"
#include "progress.h"
#include "settings_table.h"
#include "stream_monitor.h"
#include "stream_session.h"

namespace tavra::tool {
namespace {

using Clock = StreamMonitor::Clock;

struct Options {
    CameraChoice choice;
    std::vector<std::string> assignments;
    double seconds = 0;
    std::uint64_t frames = 0;
    bool json = false;
};

// What came since the last line.
struct Rates {
    double fps = 0;
    double megabytes = 0;
};

void onFrame(void*, uint32_t size, uint32_t, uint32_t, uint32_t number, uint16_t, uint32_t, void* context,
             uint32_t*) {
    static_cast<StreamMonitor*>(context)->frame(number, size, Clock::now());
}

std::string lineText(double seconds, const StreamMonitor::Totals& totals, const Rates& rates) {
    char text[160];
    std::snprintf(text, sizeof text, "%7.1f s  %9llu frames  %8.2f fps  %8.1f MB/s  %llu lost", seconds,
                  static_cast<unsigned long long>(totals.frames), rates.fps, rates.megabytes,
                  static_cast<unsigned long long>(totals.lost));
    return text;
}

// One run of the stream, from start to stop, with its lines.
class Run {
  public:
    Run(const Camera& camera, const Options& options) : camera_(camera), options_(options) {}

    ExitCode go() {
        std::uint32_t identifier = 0;
        camera_.check(Tavra_SetReceiveMsgWindow(camera_.handle(), receiver_.window()),
                      "cannot receive messages");
        camera_.check(Tavra_AddRawCallback(camera_.handle(), onFrame, &monitor_, &identifier),
                      "cannot receive frames");
        started_ = lastLine_ = Clock::now();
        camera_.check(Tavra_StartTransfer(camera_.handle()), "cannot start the stream");
        while (!done()) {
            const auto endCode = receiver_.wait(TAVRA_MESSAGE_TRANSFER_ENDED, waitMs());
            ended_ = endCode.has_value();
            endCode_ = endCode.value_or(0);
            if (ended_ || Clock::now() - lastLine_ >= std::chrono::seconds(1)) showLine();
            if (ended_) break;
        }
        Tavra_StopTransfer(camera_.handle());
        return summary();
    }

  private:
    static double secondsSince(Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    }

    bool done() const {
        if (interrupted()) return true;
        if (options_.seconds > 0 && secondsSince(started_) >= options_.seconds) return true;
        return options_.frames > 0 && monitor_.totals().frames >= options_.frames;
    }

    // Short enough to meet --seconds and --frames, long enough not to matter.
    std::uint32_t waitMs() const { return options_.seconds > 0 || options_.frames > 0 ? 10 : 100; }

    void showLine() {
        const auto totals = monitor_.totals();
        const double elapsed = secondsSince(lastLine_);
        const Rates rates{static_cast<double>(totals.frames - lastTotals_.frames) / elapsed,
                          static_cast<double>(totals.bytes - lastTotals_.bytes) / elapsed / 1e6};
        lastTotals_ = totals;
        lastLine_ = Clock::now();
        showGaps();
        if (options_.json) {
            printJson({{"event", "progress"},
                       {"seconds", secondsSince(started_)},
                       {"frames", totals.frames},
                       {"bytes", totals.bytes},
                       {"lost", totals.lost},
                       {"fps", rates.fps},
                       {"megabytesPerSecond", rates.megabytes}});
        } else {
            live_.show(lineText(secondsSince(started_), totals, rates));
        }
    }

    void showGaps() {
        for (const Gap& gap : monitor_.takeGaps()) {
            if (options_.json) {
                printJson({{"event", "gap"},
                           {"first", gap.first},
                           {"last", gap.last},
                           {"frames", gap.frames()},
                           {"reason", gap.reason()}});
            } else {
                live_.note(gap.text());
            }
        }
    }

    ExitCode summary() {
        showGaps();
        const auto totals = monitor_.totals();
        const double elapsed = secondsSince(started_);
        const double fps = static_cast<double>(totals.frames) / elapsed;
        const double megabytes = static_cast<double>(totals.bytes) / elapsed / 1e6;
        if (options_.json) {
            printJson({{"event", "end"},
                       {"seconds", elapsed},
                       {"frames", totals.frames},
                       {"bytes", totals.bytes},
                       {"lost", totals.lost},
                       {"fps", fps},
                       {"megabytesPerSecond", megabytes},
                       {"endCode", endCode_}});
        } else {
            live_.finish();
            std::printf("%llu frames in %.1f s (%.2f fps, %.1f MB/s), %llu lost in %llu places.\n",
                        static_cast<unsigned long long>(totals.frames), elapsed, fps, megabytes,
                        static_cast<unsigned long long>(totals.lost),
                        static_cast<unsigned long long>(totals.gaps));
            std::fflush(stdout);
        }
        if (ended_ && endCode_ != 0)
            throw failure("the stream ended by itself (" + camera_.name() + ")", endCode_);
        if (interrupted()) return ExitCode::Interrupted;
        return ExitCode::Success;
    }

    static void printJson(const nlohmann::json& object) { std::cout << object.dump() << std::endl; }

    const Camera& camera_;
    const Options& options_;
    StreamMonitor monitor_;
    Receiver receiver_;
    LiveLine live_;
    Clock::time_point started_, lastLine_;
    StreamMonitor::Totals lastTotals_;
    std::uint32_t endCode_ = 0;
    bool ended_ = false;
};

void run(const Options& options) {
    const Camera camera(options.choice);
    applyAssignments(camera, options.assignments);
    noteInterrupts();
    const ExitCode code = Run(camera, options).go();
    if (code != ExitCode::Success) throw Failure("interrupted", code);
}

}  // namespace

void addStream(CLI::App& app) {
    auto* const command =
        app.add_subcommand("stream", "Run the camera: frames, rate, and every lost frame with its reason");
    static Options options;
    options.choice.addTo(*command);
    command->add_option("--seconds", options.seconds, "Stop after this time (default: until interrupted)")
        ->check(CLI::PositiveNumber);
    command->add_option("--frames", options.frames, "Stop after this many frames")
        ->check(CLI::PositiveNumber);
    command->add_option("--set", options.assignments,
                        "NAME=VALUE before the start, as in `tavra set`; repeatable");
    command->add_flag("--json", options.json, "A JSON object a line on standard output, for programs");
    command->callback([] { run(options); });
}

}  // namespace tavra::tool
