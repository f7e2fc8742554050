// `tavra convert`: develops an SMF movie to AVI.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "exit_code.h"
#include "movie_probe/movie_probe.h"
#include "movie_text.h"
#include "platform/linux/file_claim.h"
#include "progress.h"
#include "recording_files.h"
#include "stream_session.h"
#include "tavra/tavra_api.h"

namespace tavra::tool {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct Options {
    std::string input;
    std::string output;
    std::optional<std::string> codec;
    std::optional<std::uint32_t> quality;
    std::uint32_t from = 0;
    bool json = false;
};

class Reader {
  public:
    explicit Reader(const std::string& file)
        : handle_(Tavra_SMFOpenFileW(fs::path(file).u16string().c_str())) {
        if (handle_ == nullptr) throw Failure("cannot open " + file + " as an SMF movie");
    }
    ~Reader() { Tavra_SMFCloseFile(handle_); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    TavraSmfHandle handle() const { return handle_; }

  private:
    TavraSmfHandle handle_;
};

// "[#####.....]  50 %  300 of 600 frames, 0:12 left".
std::string barText(std::uint64_t done, std::uint64_t all, double seconds) {
    constexpr std::uint64_t kWidth = 30;
    const std::uint64_t filled = all == 0 ? kWidth : done * kWidth / all;
    std::string text = "[" + std::string(filled, '#') + std::string(kWidth - filled, '.') + "]";
    text += " " + std::to_string(all == 0 ? 100 : done * 100 / all) + " %  " + std::to_string(done) + " of " +
            std::to_string(all) + " frames";
    if (done == 0 || done == all) return text;
    return text + ", " + durationText(seconds / static_cast<double>(done) * static_cast<double>(all - done)) +
           " left";
}

// Called between two frames, on the thread that converts.
class Progress {
  public:
    Progress(std::uint32_t from, bool shown)
        : from_(from), shown_(shown), started_(Clock::now()), last_(started_) {}

    static TavraBool call(std::uint32_t current, std::uint32_t count, void* context) {
        return static_cast<Progress*>(context)->step(current, count) ? 1 : 0;
    }
    void finish() { live_.finish(); }
    // Whether a frame has been developed at all.
    bool any() const { return any_; }

  private:
    bool step(std::uint32_t current, std::uint32_t count) {
        any_ = true;
        const bool last = current + 1 == count;
        if (shown_ && (last || Clock::now() - last_ >= std::chrono::milliseconds(500))) {
            last_ = Clock::now();
            live_.show(barText(current + 1 - from_, count - from_,
                               std::chrono::duration<double>(last_ - started_).count()));
        }
        return !interrupted();
    }

    std::uint32_t from_;
    bool shown_;
    bool any_ = false;
    Clock::time_point started_, last_;
    LiveLine live_;
};

// Refuses what cannot become a movie, in words; the conversion itself only says that it failed.
MovieReport requireSmf(const Options& options) {
    std::error_code error;
    if (fs::equivalent(options.input, options.output, error)) {
        throw Failure("input and output are the same file", ExitCode::Usage);
    }
    MovieReport report;
    try {
        report = probeMovie(fs::path(options.input), ProbeDepth::Index);
    } catch (const std::system_error& failed) {
        throw Failure("cannot read " + options.input + ": " + failed.code().message());
    }
    if (!report.smf) throw Failure(options.input + " is no SMF movie");
    if (report.smf->pictures == 0) {
        throw Failure(options.input + " holds no frame" +
                      (report.problems.empty() ? "" : ": " + report.problems.front()));
    }
    if (options.from >= report.smf->pictures) {
        throw Failure("--from " + std::to_string(options.from) + ": " + options.input +
                          " holds the frames 0 to " + std::to_string(report.smf->pictures - 1),
                      ExitCode::Usage);
    }
    return report;
}

// Why a conversion failed, as far as it can be seen from outside.
std::string reasonOf(const Options& options, std::uint32_t codec) {
    const auto free = freeBytesAt(options.output);
    if (!free) return "its folder does not exist";
    if (*free < std::uint64_t{4} << 20) return "the disk is full";
    const bool exists = fs::exists(options.output);
    const fs::path folder = fs::path(options.output).parent_path();
    const std::string place = exists ? options.output : folder.empty() ? "." : folder.string();
    if (access(place.c_str(), W_OK) != 0 || fs::is_directory(options.output)) {
        return "it could not be opened for writing; check the folder and its permissions";
    }
    if (platform::isClaimed(options.output.c_str())) return "a recording or another conversion has the file";
    if (codec != TAVRA_AVI_COMPRESSOR_NONE && codec != TAVRA_AVI_COMPRESSOR_MJPG) {
        return "nothing here encodes " + codecName(codec) + "; the codecs none and mjpg are built in";
    }
    return "the settings in " + options.input + " develop no picture, or the file could not be written whole";
}

std::uint32_t chooseCodec(const Reader& reader, const Options& options) {
    std::uint32_t codec = 0, quality = 0;
    Tavra_GetSMFCompressor(reader.handle(), &codec, &quality);
    if (options.codec) codec = codecOf(*options.codec);
    Tavra_SetSMFCompressor(reader.handle(), codec, options.quality.value_or(quality));
    return codec;
}

// The conversion succeeds too where the writer has ended ahead of the movie.
void requireAll(const Options& options, const MovieReport& made, std::uint64_t wanted) {
    if (!made.whole()) {
        throw Failure(options.output + " is not whole: " +
                      (made.problems.empty() ? std::string("it is no movie") : made.problems.front()));
    }
    if (made.pictures() == wanted) return;
    throw Failure(options.output + " holds " + std::to_string(made.pictures()) + " of " +
                  std::to_string(wanted) +
                  " frames: an AVI 1.0 file takes 2 GiB; another codec makes it smaller, and --from " +
                  std::to_string(options.from + made.pictures()) + " goes on in another file");
}

void tellResult(const Options& options, const MovieReport& made) {
    if (options.json) {
        std::cout
            << movieJson(options.output, made).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
            << std::endl;
    } else {
        std::cout << options.output << ": " << made.pictures() << " frames, "
                  << bytesText(static_cast<double>(made.fileBytes)) << std::endl;
    }
}

void run(const Options& options) {
    if (movieKindOf(options.output) != MovieKind::Avi)
        throw Failure("the output is an .avi file", ExitCode::Usage);
    const MovieReport source = requireSmf(options);
    const Reader reader(options.input);
    const std::uint32_t codec = chooseCodec(reader, options);
    noteInterrupts();
    Progress progress(options.from, !options.json);
    std::uint32_t current = 0;
    const TavraBool done = Tavra_SMF2AVIW(reader.handle(), fs::path(options.output).u16string().c_str(),
                                          options.from, &current, &Progress::call, &progress);
    progress.finish();
    if (done == 0) throw Failure("cannot convert to " + options.output + ": " + reasonOf(options, codec));
    // The conversion succeeds with nothing done where memory is short. What stands there then is another's.
    if (!progress.any()) {
        throw Failure("cannot convert to " + options.output + ": there is no memory for a frame of " +
                      options.input);
    }
    const MovieReport made = probeMovie(fs::path(options.output), ProbeDepth::Index);
    tellResult(options, made);
    if (interrupted()) {
        throw Failure("interrupted; " + options.output + " holds what was done so far",
                      ExitCode::Interrupted);
    }
    requireAll(options, made, source.smf->pictures - options.from);
}

}  // namespace

void addConvert(CLI::App& app) {
    auto* const command = app.add_subcommand("convert", "Develop an SMF movie to AVI");
    static Options options;
    command->add_option("input", options.input, "SMF file")->required();
    command->add_option("output", options.output, "AVI file to write")->required();
    command->add_option("--codec", options.codec,
                        "none, mjpg, or the four letters of a codec (default: what the recording was told)");
    command->add_option("--quality", options.quality, "0 to 100 (default: likewise)")
        ->check(CLI::Range(0, 100));
    command->add_option("--from", options.from, "Begin at this frame, from 0")
        ->check(CLI::Range(0, 0x7FFFFFFF));
    command->add_flag("--json", options.json,
                      "A JSON object of the movie that was made, as `tavra probe` tells it");
    command->callback([] { run(options); });
}

}  // namespace tavra::tool
