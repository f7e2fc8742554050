#include "record_options.h"

#include "exit_code.h"
#include "movie_text.h"

namespace tavra::tool {

void RecordOptions::addTo(CLI::App& command) {
    run.addTo(command);
    command
        .add_option("file", file,
                    "File to write: .avi for finished pictures, .smf for raw frames to develop later")
        ->required();
    command.add_option("--codec", codec, "none, mjpg, or the four letters of a codec, such as HFYU")
        ->capture_default_str();
    command.add_option("--quality", quality, "Of compressed movies, 0 to 100")
        ->check(CLI::Range(0, 100))
        ->capture_default_str();
    command
        .add_option("--frames-per-file", framesPerFile,
                    "Go on in following files after so many: out.avi, out-2.avi, out-3.avi, ...")
        ->check(CLI::Range(1, 0x7FFFFFFF));
    command.add_option("--avi", avi, "1: AVI 1.0, up to 2 GiB; 2: AVI 2.0 (default)")
        ->check(CLI::Range(1, 2));
    command.add_option("--size", size, "Of an .avi: every pixel, or every second or fourth row and column")
        ->check(CLI::IsMember({"full", "half", "quarter"}))
        ->capture_default_str();
}

RecordOrder RecordOrder::of(const RecordOptions& options) {
    RecordOrder order;
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

}  // namespace tavra::tool
