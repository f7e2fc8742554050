// `tavra record`: what the camera sees, into movie files.
#include <algorithm>
#include <iostream>
#include <system_error>

#include "camera.h"
#include "commands.h"
#include "error_text.h"
#include "movie_probe/movie_probe.h"
#include "movie_text.h"
#include "record_line.h"
#include "record_options.h"
#include "record_tally.h"
#include "recording_files.h"
#include "run_report.h"
#include "settings_table.h"
#include "stream_session.h"

namespace tavra::tool {
namespace {

constexpr std::uint32_t kNoLimit = 0xFFFFFFFF;

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
    Recording(const Camera& camera, const RecordOptions& options, const RecordOrder& order)
        : camera_(camera),
          options_(options),
          order_(order),
          first_(options.file),
          report_(options.run.json) {}

    ~Recording() {
        Tavra_StopTransfer(camera_.handle());  // ends a recording too
        Tavra_SetReceiveMsgWindow(camera_.handle(), nullptr);
    }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    ExitCode go() {
        prepare();
        clock_.start();
        for (std::uint32_t number = 1; !over_; ++number) recordFile(followingFile(first_, number));
        book_.close();
        Tavra_StopTransfer(camera_.handle());
        return summary();
    }

  private:
    static void onFrame(void*, uint32_t size, uint32_t, uint32_t, uint32_t number, uint16_t, uint32_t,
                        void* context, uint32_t*) {
        static_cast<Recording*>(context)->book_.frame(number, size, StreamMonitor::Clock::now());
    }

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
        if (options_.severalFiles()) camera_.check(Tavra_StartTransfer(handle), "cannot start the stream");
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
        const std::uint64_t perFile = options_.severalFiles() ? options_.framesPerFile : kNoLimit;
        if (options_.run.frames == 0) return static_cast<std::uint32_t>(perFile);
        return static_cast<std::uint32_t>(std::min(perFile, options_.run.frames - tally_.length()));
    }

    void recordFile(const std::filesystem::path& file) {
        file_ = file;
        const std::uint32_t asked = framesAsked();
        if (!options_.severalFiles() && asked != kNoLimit) book_.countOnly(asked);
        lostBefore_ = book_.totals().lost;
        writtenBefore_ = 0;
        writerEnded_ = false;
        if (!Tavra_SaveAVIW(camera_.handle(), file.u16string().c_str(), order_.codec, asked)) {
            over_ = true;
            failure_ = cannotRecord(Tavra_GetLastError(camera_.handle()));
            return;
        }
        while (!fileDone()) {
            if (const auto message = receiver_.next(options_.run.waitMs())) take(*message);
            if (clock_.lineIsDue()) showLine();
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
        return writerEnded_ || streamEnded_ || interrupted() || options_.run.reached(clock_.seconds(), 0);
    }

    void fileClosed(std::uint32_t asked) {
        const MovieReport report = closedFile();
        const std::uint64_t lengthBefore = tally_.length();
        tally_.addFile(file_.string(), report);
        if (report_.isJson())
            report_.object({{"event", "file"}, {"movie", movieJson(file_.string(), report)}});
        const bool full = tally_.length() - lengthBefore >= asked;
        const bool enough = options_.run.frames != 0 && tally_.length() >= options_.run.frames;
        over_ = enough || !options_.severalFiles() || streamEnded_ || interrupted() ||
                options_.run.reached(clock_.seconds(), 0);
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
            if (!options_.severalFiles()) {
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
        using Clock = StreamMonitor::Clock;
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
        const double elapsed = clock_.nextLine();
        const std::uint64_t written = sizeOf(file_);
        const std::uint64_t newlyWritten = written - std::min(written, writtenBefore_);
        const RecordLine line{.seconds = clock_.seconds(),
                              .file = file_.string(),
                              .seen = totals,
                              .fps = static_cast<double>(totals.frames - lastFrames_) / elapsed,
                              .queue = queueDepth(written, totals.lost),
                              .fileBytes = written,
                              .diskBytes = static_cast<double>(newlyWritten) / elapsed,
                              .freeBytes = freeBytesAt(file_)};
        lastFrames_ = totals.frames;
        writtenBefore_ = written;
        showGaps();
        if (report_.isJson()) {
            report_.object(line.json());
        } else {
            report_.show(line.text());
        }
    }

    void showGaps() {
        const std::vector<Gap> gaps = book_.takeGaps();
        for (const Gap& gap : gaps) tally_.addGap(gap);
        report_.gaps(gaps);
    }

    ExitCode summary() {
        showGaps();
        const auto seen = book_.totals();
        report_.finish();
        if (report_.isJson()) {
            report_.object({{"event", "end"},
                            {"seconds", clock_.seconds()},
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
        if (streamEnded_ && streamResult_ != 0) throw streamEndedByItself(camera_, streamResult_);
        if (!tally_.whole()) return ExitCode::Failed;
        return interrupted() ? ExitCode::Interrupted : ExitCode::Success;
    }

    const Camera& camera_;
    const RecordOptions& options_;
    const RecordOrder order_;
    const std::filesystem::path first_;
    std::filesystem::path file_;         // the one in work
    std::optional<FrameLayout> layout_;  // of uncompressed frames
    FrameBook book_;
    RecordTally tally_;
    Receiver receiver_;
    RunReport report_;
    RunClock clock_;
    std::uint64_t lastFrames_ = 0, lostBefore_ = 0, writtenBefore_ = 0;
    bool writerEnded_ = false, streamEnded_ = false, over_ = false;
    std::uint32_t writerResult_ = 0, streamResult_ = 0;
    std::optional<Failure> failure_;
};

void run(const RecordOptions& options) {
    const RecordOrder order = RecordOrder::of(options);
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
    static RecordOptions options;
    options.addTo(*command);
    command->callback([] { run(options); });
}

}  // namespace tavra::tool
