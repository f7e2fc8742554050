// `tavra stream`: run the camera and tell what arrives.
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>

#include "camera.h"
#include "commands.h"
#include "error_text.h"
#include "progress.h"
#include "run_options.h"
#include "settings_table.h"
#include "stream_monitor.h"
#include "stream_session.h"

namespace tavra::tool {
namespace {

using Clock = StreamMonitor::Clock;

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
    Run(const Camera& camera, const RunOptions& options) : camera_(camera), options_(options) {}

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
        return interrupted() || options_.reached(secondsSince(started_), monitor_.totals().frames);
    }

    // Short enough to meet --seconds and --frames, long enough not to matter.
    std::uint32_t waitMs() const { return options_.endless() ? 100 : 10; }

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
    const RunOptions& options_;
    StreamMonitor monitor_;
    Receiver receiver_;
    LiveLine live_;
    Clock::time_point started_, lastLine_;
    StreamMonitor::Totals lastTotals_;
    std::uint32_t endCode_ = 0;
    bool ended_ = false;
};

void run(const RunOptions& options) {
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
    static RunOptions options;
    options.addTo(*command);
    command->callback([] { run(options); });
}

}  // namespace tavra::tool
