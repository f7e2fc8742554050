// What `tavra record` is told, and what it comes to.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "recording_files.h"
#include "run_options.h"

namespace tavra::tool {

struct RecordOptions {
    RunOptions run;
    std::string file;
    std::string codec = "none";
    std::uint32_t quality = 75;
    std::uint32_t framesPerFile = 0;   // 0: one file
    std::optional<std::uint32_t> avi;  // 1 or 2; not said: 2.0 where the codec can
    std::string size = "full";

    void addTo(CLI::App& command);
    bool severalFiles() const { return framesPerFile != 0; }
};

struct RecordOrder {
    MovieKind kind = MovieKind::Avi;
    std::uint32_t codec = 0;
    std::uint8_t shift = 0;  // of width and height
    std::uint32_t aviFormat = TAVRA_AVI_FORMAT_2_0;

    // Throws Failure where the options do not go together.
    static RecordOrder of(const RecordOptions& options);

    bool ownCodec() const { return codec == TAVRA_AVI_COMPRESSOR_NONE || codec == TAVRA_AVI_COMPRESSOR_MJPG; }
    bool uncompressed() const { return kind == MovieKind::Smf || codec == TAVRA_AVI_COMPRESSOR_NONE; }
};

}  // namespace tavra::tool
