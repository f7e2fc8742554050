// `tavra record`: what the camera sees, into movie files.
#include <cstdio>
#include <iostream>
#include <nlohmann/json.hpp>
#include <system_error>

#include "camera.h"
#include "commands.h"
#include "error_text.h"
#include "movie_probe/movie_probe.h"
#include "movie_text.h"
#include "progress.h"
#include "record_tally.h"
#include "recording_files.h"
#include "run_options.h"
#include "settings_table.h"
#include "stream_session.h"

namespace tavra::tool {
namespace {

using Clock = StreamMonitor::Clock;

constexpr std::uint32_t kNoLimit = 0xFFFFFFFF;

struct Options {
    RunOptions run;
    std::string file;
    std::string codec = "none";
    std::uint32_t quality = 75;
    std::uint32_t framesPerFile = 0;  // 0: one file
    std::optional<std::uint32_t> avi;
    std::string size = "full";
};

// What the options come to.
struct Order {
    MovieKind kind = MovieKind::Avi;
    std::uint32_t codec = 0;
    std::uint8_t shift = 0;  // of width and height
    std::uint32_t aviFormat = TAVRA_AVI_FORMAT_2_0;

    bool ownCodec() const { return codec == TAVRA_AVI_COMPRESSOR_NONE || codec == TAVRA_AVI_COMPRESSOR_MJPG; }
    bool uncompressed() const { return kind == MovieKind::Smf || codec == TAVRA_AVI_COMPRESSOR_NONE; }
};

Order orderOf(const Options& options) {
    Order order;
    order.kind = movieKindOf(options.file);
    order.codec = codecOf(options.codec);
    order.shift = options.size == "quarter" ? 2 : options.size == "half" ? 1 : 0;
    const bool smf = order.kind == MovieKind::Smf;
    if (smf && order.shift != 0) {
        throw Failure("--size is for .avi: an SMF movie keeps whole frames to develop", ExitCode::Usage);
    }
    if (smf && options.avi) throw Failure("--avi is for .avi files", ExitCode::Usage);
    if (!smf && !order.ownCodec() && options.avi == 2u) {
        throw Failure("--avi 2 is for the codecs none and mjpg; others write AVI 1.0", ExitCode::Usage);
    }
    order.aviFormat = options.avi == 1u || !order.ownCodec() ? TAVRA_AVI_FORMAT_1_0 : TAVRA_AVI_FORMAT_2_0;
    return order;
}

// Frames of SMF are mosaics, which mono cameras send as well.
void requireMosaic(const Camera& camera) {
    constexpr std::uint32_t kMosaics = TAVRA_TRANSFER_MOSAIC_8 | TAVRA_TRANSFER_MOSAIC_10 |
                                       TAVRA_TRANSFER_MOSAIC_12 | TAVRA_TRANSFER_MOSAIC_14 |
                                       TAVRA_TRANSFER_MOSAIC_16 | TAVRA_TRANSFER_MOSAIC_10_PACKED |
                                       TAVRA_TRANSFER_MOSAIC_12_PACKED;
    std::uint32_t bits = 0;
    camera.check(Tavra_GetTransferBitsPerPixel(camera.handle(), &bits), "cannot read the transfer bits");
    if ((bits & kMosaics) != 0) return;
    throw Failure("SMF takes mosaic formats, and this camera (" + camera.name() +
                  ") is set to another; record .avi, or --set transfer-bits=mosaic8 where it has it");
}

// One recording, from its first file to its last, with its lines.
class Recording {
  public:
    Recording(const Camera& camera, const Options& options, const Order& order)
        : camera_(camera), options_(options), order_(order), first_(options.file) {}

    ~Recording() {
        Tavra_StopTransfer(camera_.handle());  // ends a recording too
        Tavra_SetReceiveMsgWindow(camera_.handle(), nullptr);
    }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    ExitCode go() {
        prepare();
        started_ = lastLine_ = Clock::now();
        for (std::uint32_t number = 1; !over_; ++number) recordFile(followingFile(first_, number));
        book_.close();
        Tavra_StopTransfer(camera_.handle());
        return summary();
    }

  private:
    static void onFrame(void*, uint32_t size, uint32_t, uint32_t, uint32_t number, uint16_t, uint32_t,
                        void* context, uint32_t*) {
        static_cast<Recording*>(context)->book_.frame(number, size, Clock::now());
    }

    static double secondsSince(Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    }

    bool severalFiles() const { return options_.framesPerFile != 0; }

    void prepare() {
        const TavraHandle handle = camera_.handle();
        camera_.check(Tavra_SetAVIFrameSize(handle, order_.shift), "cannot set the size of the movie");
        camera_.check(Tavra_SetAVIQuality(handle, options_.quality), "cannot set the quality of the movie");
        camera_.check(Tavra_SetAVIPriorityFileFormat(handle, order_.aviFormat),
                      "cannot choose the kind of AVI");
        if (order_.uncompressed()) layout_ = layoutOfFrames();
        camera_.check(Tavra_SetReceiveMsgWindow(handle, receiver_.window()), "cannot receive messages");
        std::uint32_t identifier = 0;
        camera_.check(Tavra_AddRawCallback(handle, onFrame, this, &identifier), "cannot receive frames");
        // A recording that started the stream takes it along at its end, where a following file needs it.
        if (severalFiles()) camera_.check(Tavra_StartTransfer(handle), "cannot start the stream");
    }

    FrameLayout layoutOfFrames() const {
        std::uint32_t total = 0, width = 0, height = 0, lineBytes = 0, format = 0;
        camera_.check(Tavra_GetPreviewDataSize(camera_.handle(), &total, &width, &height, &lineBytes),
                      "cannot read the image size");
        camera_.check(Tavra_GetPreviewPixelFormat(camera_.handle(), &format), "cannot read the pixel format");
        if (order_.kind == MovieKind::Smf) return FrameLayout::smf(std::uint64_t{width} * height);
        const std::uint64_t row =
            (std::uint64_t{width} >> order_.shift) * (format == TAVRA_PIXEL_MONO_8 ? 1 : 3);
        const std::uint64_t frame = (row + 3) / 4 * 4 * (height >> order_.shift);
        return order_.aviFormat == TAVRA_AVI_FORMAT_2_0 ? FrameLayout::avi2(frame) : FrameLayout::avi1(frame);
    }

    // Frames that the next file is to take.
    std::uint32_t framesAsked() const {
        const std::uint64_t perFile = severalFiles() ? options_.framesPerFile : kNoLimit;
        if (options_.run.frames == 0) return static_cast<std::uint32_t>(perFile);
        return static_cast<std::uint32_t>(std::min(perFile, options_.run.frames - tally_.length()));
    }

    void recordFile(const std::filesystem::path& file) {
        file_ = file;
        const std::uint32_t asked = framesAsked();
        if (!severalFiles() && asked != kNoLimit) book_.countOnly(asked);
        lostBefore_ = book_.totals().lost;
        writtenBefore_ = 0;
        writerEnded_ = false;
        if (!Tavra_SaveAVIW(camera_.handle(), file.u16string().c_str(), order_.codec, asked)) {
            over_ = true;
            failure_ = cannotRecord(Tavra_GetLastError(camera_.handle()));
            return;
        }
        while (!fileDone()) {
            if (const auto message = receiver_.next(waitMs())) take(*message);
            if (Clock::now() - lastLine_ >= std::chrono::seconds(1)) showLine();
        }
        // Waits until the file is closed; refused where the stream has closed it by itself.
        static_cast<void>(Tavra_SetAVIStatus(camera_.handle(), TAVRA_AVI_STATUS_IDLE));
        fileClosed(asked);
    }

    Failure cannotRecord(std::uint32_t code) const {
        const std::string what = "cannot record " + file_.string() + " (" + camera_.name() + ")";
        if (!order_.ownCodec() && code == TAVRA_ERROR_COMPRESSOR_A) {
            return Failure(what + ": nothing here encodes " + codecName(order_.codec) +
                           "; the codecs none and mjpg are built in");
        }
        return failure(what, code);
    }

    void take(const TavraMessage& message) {
        if (message.message == TAVRA_MESSAGE_RECORDING_ENDED) {
            writerEnded_ = true;
            writerResult_ = static_cast<std::uint32_t>(message.parameter2);
        }
        if (message.message == TAVRA_MESSAGE_TRANSFER_ENDED) {
            streamEnded_ = true;
            streamResult_ = static_cast<std::uint32_t>(message.parameter2);
        }
    }

    bool fileDone() const {
        return writerEnded_ || streamEnded_ || interrupted() ||
               options_.run.reached(secondsSince(started_), 0);
    }

    // Short enough to meet --seconds, long enough not to matter.
    std::uint32_t waitMs() const { return options_.run.endless() ? 100 : 10; }

    void fileClosed(std::uint32_t asked) {
        const MovieReport report = closedFile();
        const std::uint64_t lengthBefore = tally_.length();
        tally_.addFile(file_.string(), report);
        if (options_.run.json) printJson({{"event", "file"}, {"movie", movieJson(file_.string(), report)}});
        const bool full = tally_.length() - lengthBefore >= asked;
        const bool enough = options_.run.frames != 0 && tally_.length() >= options_.run.frames;
        over_ = enough || !severalFiles() || streamEnded_ || interrupted() ||
                options_.run.reached(secondsSince(started_), 0);
        if (!writerEnded_ || full) return;
        findReason(report);
    }

    MovieReport closedFile() const {
        try {
            return probeMovie(file_, ProbeDepth::Index);
        } catch (const std::system_error& error) {
            MovieReport report;
            report.problems.push_back("it cannot be read back: " + error.code().message());
            return report;
        }
    }

    // The writer has ended ahead of time.
    void findReason(const MovieReport& report) {
        if (writerResult_ != 0) {
            over_ = true;
            failure_ = failure("cannot go on writing " + file_.string(), writerResult_);
        } else if (diskFull(report)) {
            over_ = true;
            failure_ = Failure("the disk is full: " + file_.string() + " ends there and is whole");
        } else if (fileFull(report)) {
            if (!severalFiles()) {
                failure_ = Failure(file_.string() +
                                   " has reached the largest size that its layout or file system takes, "
                                   "and is whole; --frames-per-file goes on in following files");
            }
        } else {
            waitForStream();
            over_ = true;
        }
    }

    bool diskFull(const MovieReport& report) const {
        constexpr std::uint64_t kReserve = 4 << 20;  // indexes, and what a file system keeps for itself
        const auto free = freeBytesAt(file_);
        return free && *free < kReserve + 4 * averageFrame(report);
    }

    // Of AVI 1.0 and of old file systems; a file of 2 GiB and more can only have ended so.
    static bool fileFull(const MovieReport& report) {
        constexpr std::uint64_t kSmallestLimit = 0x80000000;
        return report.fileBytes + (std::uint64_t{64} << 20) >= kSmallestLimit;
    }

    static std::uint64_t averageFrame(const MovieReport& report) {
        return report.pictures() == 0 ? 0 : report.fileBytes / report.pictures();
    }

    // Why the stream ended comes behind the end of the recording.
    void waitForStream() {
        const auto end = Clock::now() + std::chrono::seconds(10);
        while (!streamEnded_ && !interrupted() && Clock::now() < end) {
            if (const auto message = receiver_.next(100)) take(*message);
        }
    }

    // Frames that wait to be written, where the frames that the file holds can be told from its size.
    std::optional<std::uint64_t> queueDepth(std::uint64_t fileBytes, std::uint64_t lost) const {
        if (!layout_) return std::nullopt;
        std::uint8_t status = 0;
        std::uint32_t framesPerFile = 0, position = 0;
        if (!Tavra_GetAVIStatus(camera_.handle(), &status, &framesPerFile, &position)) return std::nullopt;
        if (status != TAVRA_AVI_STATUS_RECORDING) return std::nullopt;
        const std::uint64_t handedIn = std::uint64_t{position} + 1;
        const std::uint64_t gone = layout_->framesIn(fileBytes) + (lost - lostBefore_);
        return handedIn > gone ? handedIn - gone : 0;
    }

    void showLine() {
        const auto totals = book_.totals();
        const double elapsed = secondsSince(lastLine_);
        const std::uint64_t written = sizeOf(file_);
        const double fps = static_cast<double>(totals.frames - lastFrames_) / elapsed;
        const double disk = static_cast<double>(written - std::min(written, writtenBefore_)) / elapsed;
        const auto queue = queueDepth(written, totals.lost);
        const auto free = freeBytesAt(file_);
        lastFrames_ = totals.frames;
        writtenBefore_ = written;
        lastLine_ = Clock::now();
        showGaps();
        const double seconds = secondsSince(started_);
        if (options_.run.json) {
            nlohmann::json line = {{"event", "progress"},    {"seconds", seconds},
                                   {"file", file_.string()}, {"seen", totals.frames},
                                   {"lost", totals.lost},    {"fps", fps},
                                   {"fileBytes", written},   {"diskMegabytesPerSecond", disk / 1e6}};
            line["queue"] = queue ? nlohmann::json(*queue) : nlohmann::json();
            line["freeBytes"] = free ? nlohmann::json(*free) : nlohmann::json();
            printJson(line);
            return;
        }
        live_.show(lineText(seconds, totals, fps, queue, disk, free));
    }

    static std::string lineText(double seconds, const StreamMonitor::Totals& totals, double fps,
                                std::optional<std::uint64_t> queue, double disk,
                                std::optional<std::uint64_t> free) {
        char text[160];
        std::snprintf(text, sizeof text, "%7.1f s  %llu frames  %.2f fps  %llu lost", seconds,
                      static_cast<unsigned long long>(totals.frames), fps,
                      static_cast<unsigned long long>(totals.lost));
        std::string line = text;
        if (queue) line += "  queue " + std::to_string(*queue);
        line += "  disk " + bytesText(disk) + "/s";
        if (!free) return line;
        line += ", " + bytesText(static_cast<double>(*free)) + " free";
        if (disk > 0) line += ", enough for " + durationText(static_cast<double>(*free) / disk);
        return line;
    }

    void showGaps() {
        for (const Gap& gap : book_.takeGaps()) {
            tally_.addGap(gap);
            if (options_.run.json) {
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
        const auto seen = book_.totals();
        live_.finish();
        if (options_.run.json) {
            printJson({{"event", "end"},
                       {"seconds", secondsSince(started_)},
                       {"seen", seen.frames},
                       {"stored", tally_.stored()},
                       {"paused", 0},
                       {"lost", seen.lost},
                       {"files", tally_.files()},
                       {"bytes", tally_.bytes()},
                       {"whole", tally_.whole()}});
        } else if (tally_.files() > 0) {
            std::cout << tally_.sentence(options_.file, seen) << std::endl;
        }
        if (failure_) throw Failure(*failure_);
        if (streamEnded_ && streamResult_ != 0)
            throw failure("the stream ended by itself (" + camera_.name() + ")", streamResult_);
        if (!tally_.whole()) return ExitCode::Failed;
        return interrupted() ? ExitCode::Interrupted : ExitCode::Success;
    }

    static void printJson(const nlohmann::json& object) {
        std::cout << object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
    }

    const Camera& camera_;
    const Options& options_;
    const Order order_;
    const std::filesystem::path first_;
    std::filesystem::path file_;         // the one in work
    std::optional<FrameLayout> layout_;  // of uncompressed frames
    FrameBook book_;
    RecordTally tally_;
    Receiver receiver_;
    LiveLine live_;
    Clock::time_point started_, lastLine_;
    std::uint64_t lastFrames_ = 0, lostBefore_ = 0, writtenBefore_ = 0;
    bool writerEnded_ = false, streamEnded_ = false, over_ = false;
    std::uint32_t writerResult_ = 0, streamResult_ = 0;
    std::optional<Failure> failure_;
};

void run(const Options& options) {
    const Order order = orderOf(options);
    const Camera camera(options.run.choice);
    applyAssignments(camera, options.run.assignments);
    if (order.kind == MovieKind::Smf) requireMosaic(camera);
    noteInterrupts();
    const ExitCode code = Recording(camera, options, order).go();
    if (code == ExitCode::Interrupted) throw Failure("interrupted; what was recorded is whole", code);
    if (code != ExitCode::Success) throw Failure("the movie is not whole", code);
}

}  // namespace

void addRecord(CLI::App& app) {
    auto* const command = app.add_subcommand("record", "Record what the camera sees, into AVI or SMF movies");
    static Options options;
    options.run.addTo(*command);
    command
        ->add_option("file", options.file,
                     "File to write: .avi for finished pictures, .smf for raw frames to develop later")
        ->required();
    command->add_option("--codec", options.codec, "none, mjpg, or the four letters of a codec, such as HFYU")
        ->capture_default_str();
    command->add_option("--quality", options.quality, "Of compressed movies, 0 to 100")
        ->check(CLI::Range(0, 100))
        ->capture_default_str();
    command
        ->add_option("--frames-per-file", options.framesPerFile,
                     "Go on in following files after so many: out.avi, out-2.avi, out-3.avi, ...")
        ->check(CLI::Range(1, 0x7FFFFFFF));
    command->add_option("--avi", options.avi, "1: AVI 1.0, up to 2 GiB; 2: AVI 2.0 (default)")
        ->check(CLI::Range(1, 2));
    command
        ->add_option("--size", options.size,
                     "Of an .avi: every pixel, or every second or fourth row and column")
        ->check(CLI::IsMember({"full", "half", "quarter"}))
        ->capture_default_str();
    command->callback([] { run(options); });
}

}  // namespace tavra::tool
