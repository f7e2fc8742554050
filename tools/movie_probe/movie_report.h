// What a movie file holds, and what it lacks.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavra::tool {

// Frames of one stream, of its chunks or of an index. An empty frame is one that the camera lost, and in
// some layouts a mark at the head of a list.
struct FrameCount {
    std::uint64_t pictures = 0;
    std::uint64_t empty = 0;

    std::uint64_t all() const { return pictures + empty; }
    friend bool operator==(const FrameCount&, const FrameCount&) = default;
};

struct AviSegment {
    std::uint64_t offset = 0;  // of its RIFF chunk
    std::uint64_t size = 0;    // as far as the file holds it
    FrameCount frames;         // by chunks
};

struct AviIndex {
    std::uint64_t blocks = 0;   // 1 for the old index
    std::uint64_t entries = 0;  // of all streams
    FrameCount frames;          // of the video stream
    std::uint64_t pictureBytes = 0;
    std::uint32_t largestPicture = 0;
    std::uint64_t outside = 0;  // entries that point outside the file
    std::uint64_t wrong = 0;    // entries that point at something else than their frame
};

struct AviReport {
    bool openDml = false;    // AVI 2.0: more than one segment, or room for more
    bool hasHeader = false;  // false: the recording was never closed
    std::uint32_t streams = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bits = 0;
    std::string codec;    // FOURCC of the pictures; empty: uncompressed
    std::string handler;  // FOURCC of the stream header
    std::uint32_t rate = 0;
    std::uint32_t scale = 0;
    std::uint32_t length = 0;                 // frames by the stream header
    std::optional<std::uint32_t> odmlFrames;  // frames by the OpenDML header
    std::uint32_t flags = 0;
    FrameCount frames;  // by chunks
    std::uint64_t pictureBytes = 0;
    std::uint32_t largestPicture = 0;
    std::vector<AviSegment> segments;
    std::optional<AviIndex> oldIndex;       // idx1
    std::optional<AviIndex> standardIndex;  // indx and its ix blocks
};

// The numbers of the file's header, as they stand there.
struct SmfDevelopment {
    std::uint32_t interpolation = 0;
    std::uint32_t gammaMode = 0;
    std::uint32_t gamma = 0;  // hundredths
    std::int32_t brightness = 0;
    std::uint32_t contrast = 0;
    std::uint32_t sharpnessMode = 0;
    std::uint32_t sharpnessGain = 0;
    std::uint32_t sharpnessCoring = 0;
    std::uint32_t matrixMode = 0;
    std::array<std::int16_t, 12> matrix{};
    std::uint32_t hueMode = 0;
    std::int32_t hue = 0;  // tenths of a degree
    std::uint32_t saturation = 0;
};

struct SmfReport {
    std::uint32_t headerSize = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t rowPixels = 0;
    std::uint32_t rawBits = 0;
    std::uint32_t developedBits = 0;
    std::uint32_t rate = 0;
    std::uint32_t scale = 0;
    std::uint32_t frameHeaderSize = 0;
    std::uint32_t frameSize = 0;
    std::string codec;  // FOURCC for the conversion; empty: uncompressed
    std::uint32_t quality = 0;
    std::uint32_t framesPerFile = 0;
    std::uint32_t sizeSelect = 0;
    SmfDevelopment development;
    std::uint64_t pictures = 0;              // whole frames
    std::uint64_t length = 0;                // the number of the last one, plus 1
    std::uint64_t restBytes = 0;             // behind the last whole frame
    std::vector<std::uint32_t> colorArrays;  // of its frames, each once
};

struct MovieReport {
    std::uint64_t fileBytes = 0;
    std::optional<AviReport> avi;  // one of the two, or neither: it is no movie
    std::optional<SmfReport> smf;
    std::vector<std::string> problems;  // what is wrong or missing; sentences without a full stop
    std::vector<std::string> notes;     // what is unusual and does no harm

    bool isMovie() const { return avi || smf; }
    bool whole() const { return isMovie() && problems.empty(); }
    std::uint64_t pictures() const { return avi ? avi->frames.pictures : smf ? smf->pictures : 0; }
};

}  // namespace tavra::tool
