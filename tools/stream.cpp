// `tavra stream`: run the camera and tell what arrives.
#include <cstdio>

#include "camera.h"
#include "commands.h"
#include "run_options.h"
#include "run_report.h"
#include "settings_table.h"
#include "stream_monitor.h"
#include "stream_session.h"

namespace tavra::tool {
namespace {

// What came since the last line.
struct Rates {
    double fps = 0;
    double megabytes = 0;
};

void onFrame(void*, uint32_t size, uint32_t, uint32_t, uint32_t number, uint16_t, uint32_t, void* context,
             uint32_t*) {
    static_cast<StreamMonitor*>(context)->frame(number, size, StreamMonitor::Clock::now());
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
    Run(const Camera& camera, const RunOptions& options)
        : camera_(camera), options_(options), report_(options.json) {}

    ExitCode go() {
        std::uint32_t identifier = 0;
        camera_.check(Tavra_SetReceiveMsgWindow(camera_.handle(), receiver_.window()),
                      "cannot receive messages");
        camera_.check(Tavra_AddRawCallback(camera_.handle(), onFrame, &monitor_, &identifier),
                      "cannot receive frames");
        clock_.start();
        camera_.check(Tavra_StartTransfer(camera_.handle()), "cannot start the stream");
        while (!done()) {
            const auto endCode = receiver_.wait(TAVRA_MESSAGE_TRANSFER_ENDED, options_.waitMs());
            ended_ = endCode.has_value();
            endCode_ = endCode.value_or(0);
            if (ended_ || clock_.lineIsDue()) showLine();
            if (ended_) break;
        }
        Tavra_StopTransfer(camera_.handle());
        return summary();
    }

  private:
    bool done() const {
        return interrupted() || options_.reached(clock_.seconds(), monitor_.totals().frames);
    }

    void showLine() {
        const auto totals = monitor_.totals();
        const double elapsed = clock_.nextLine();
        const Rates rates{static_cast<double>(totals.frames - lastTotals_.frames) / elapsed,
                          static_cast<double>(totals.bytes - lastTotals_.bytes) / elapsed / 1e6};
        lastTotals_ = totals;
        report_.gaps(monitor_.takeGaps());
        if (report_.isJson()) {
            report_.object({{"event", "progress"},
                            {"seconds", clock_.seconds()},
                            {"frames", totals.frames},
                            {"bytes", totals.bytes},
                            {"lost", totals.lost},
                            {"fps", rates.fps},
                            {"megabytesPerSecond", rates.megabytes}});
        } else {
            report_.show(lineText(clock_.seconds(), totals, rates));
        }
    }

    ExitCode summary() {
        report_.gaps(monitor_.takeGaps());
        const auto totals = monitor_.totals();
        const double elapsed = clock_.seconds();
        const double fps = static_cast<double>(totals.frames) / elapsed;
        const double megabytes = static_cast<double>(totals.bytes) / elapsed / 1e6;
        if (report_.isJson()) {
            report_.object({{"event", "end"},
                            {"seconds", elapsed},
                            {"frames", totals.frames},
                            {"bytes", totals.bytes},
                            {"lost", totals.lost},
                            {"fps", fps},
                            {"megabytesPerSecond", megabytes},
                            {"endCode", endCode_}});
        } else {
            report_.finish();
            std::printf("%llu frames in %.1f s (%.2f fps, %.1f MB/s), %llu lost in %llu places.\n",
                        static_cast<unsigned long long>(totals.frames), elapsed, fps, megabytes,
                        static_cast<unsigned long long>(totals.lost),
                        static_cast<unsigned long long>(totals.gaps));
            std::fflush(stdout);
        }
        if (ended_ && endCode_ != 0) throw streamEndedByItself(camera_, endCode_);
        if (interrupted()) return ExitCode::Interrupted;
        return ExitCode::Success;
    }

    const Camera& camera_;
    const RunOptions& options_;
    StreamMonitor monitor_;
    Receiver receiver_;
    RunReport report_;
    RunClock clock_;
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
