#include "movie_probe/avi_probe.h"

#include <algorithm>

#include "base/little_endian.h"
#include "movie_probe/avi_frames.h"
#include "movie_probe/avi_header.h"
#include "movie_probe/avi_index.h"
#include "movie_probe/avi_verdict.h"
#include "movie_probe/fourcc.h"

namespace tavra::tool {
namespace {

constexpr std::size_t kMostSegments = 65536;  // as many as a recording can have

// One reading of one file.
class AviProbe {
  public:
    AviProbe(ByteSource& source, ProbeDepth depth, MovieReport& report)
        : source_(source), depth_(depth), reader_(source), report_(report) {}

    void readSegments() {
        avi_.hasHeader = true;
        std::uint64_t at = 0;
        while (avi_.segments.size() < kMostSegments) {
            const auto riff = chunkAt(reader_, at, source_.size());
            const std::uint32_t type = avi_.segments.empty() ? fourcc("AVI ") : fourcc("AVIX");
            if (!riff || riff->id != fourcc("RIFF") || listType(reader_, *riff) != type) break;
            at = readSegment(*riff);
        }
        if (at < source_.size()) {
            report_.notes.push_back(std::to_string(source_.size() - at) +
                                    " bytes behind its end belong to nothing");
        }
        finish();
    }

    // The frames of a recording that was never closed begin here.
    void readUnclosed(std::uint64_t firstFrame, bool openDml) {
        avi_.openDml = openDml;
        AviFrames frames(reader_, streamDigits(0));
        frames.walk(firstFrame, source_.size(), true);
        take(frames);
        report_.problems.emplace_back("the recording was never closed: its header and its index are missing");
        report_.avi = std::move(avi_);
    }

  private:
    // Where the next one begins.
    std::uint64_t readSegment(const Chunk& riff) {
        const bool sizeMissing = riff.size == 0;
        const std::uint64_t end = sizeMissing ? source_.size() : std::min(riff.dataEnd(), source_.size());
        if (sizeMissing) report_.problems.emplace_back("its size was never filled in: it was not closed");
        if (riff.dataEnd() > source_.size()) {
            report_.problems.push_back("it is cut: " + std::to_string(riff.dataEnd() - source_.size()) +
                                       " bytes are missing at its end");
        }
        avi_.segments.push_back({riff.at, end - riff.at, {}});
        const FrameCount before = frames_.frames();
        readChunks(riff.data() + 4, end);
        const FrameCount& now = frames_.frames();
        avi_.segments.back().frames = {now.pictures - before.pictures, now.empty - before.empty};
        return sizeMissing ? end : std::min(riff.next(), source_.size());
    }

    void readChunks(std::uint64_t at, std::uint64_t end) {
        while (at < end) {
            const auto chunk = chunkAt(reader_, at, end);
            if (!chunk) {
                if (end - at >= 8) tellNoChunk(at);
                return;
            }
            const bool list = chunk->id == fourcc("LIST");
            const std::uint32_t type = list ? listType(reader_, *chunk) : 0;
            if (type == fourcc("hdrl")) readHeaderList(reader_, *chunk, end, avi_, header_);
            if (type == fourcc("odml")) readOdmlList(reader_, *chunk, end, avi_);
            if (type == fourcc("movi") && !readFrames(*chunk, end)) return;
            if (chunk->id == fourcc("idx1") && !oldIndex_) oldIndex_ = *chunk;
            at = chunk->next();
        }
    }

    // False: they go on to the end, and nothing can follow.
    bool readFrames(const Chunk& list, std::uint64_t end) {
        const bool sizeMissing = list.size < 4;
        if (movi_ == 0) movi_ = list.data();
        if (depth_ == ProbeDepth::Index && !sizeMissing) return true;
        frames_.countStream(streamDigits(header_.videoStream.value_or(0)));
        const std::uint64_t limit = sizeMissing ? end : std::min(list.dataEnd(), end);
        if (sizeMissing)
            report_.problems.emplace_back("the size of its frames was never filled in: it was not closed");
        const AviFrames::End ended = frames_.walk(list.data() + 4, limit, false);
        if (ended == AviFrames::End::NoChunk) tellNoChunk(frames_.position());
        if (ended == AviFrames::End::Cut) {
            report_.problems.push_back("its frames end inside one, at byte " + std::to_string(limit));
        }
        return !sizeMissing;
    }

    void tellNoChunk(std::uint64_t at) {
        report_.problems.push_back("it is damaged at byte " + std::to_string(at) + ": no chunk begins there");
    }

    void finish() {
        avi_.openDml = header_.standardIndex || avi_.odmlFrames || avi_.segments.size() > 1;
        const std::uint32_t digits = streamDigits(header_.videoStream.value_or(0));
        if (!header_.videoStream) report_.problems.emplace_back("its header names no video stream");
        if (oldIndex_) avi_.oldIndex = checkOldIndex(source_, depth_, *oldIndex_, movi_, digits);
        if (header_.standardIndex) {
            avi_.standardIndex =
                checkStandardIndex(source_, depth_, *header_.standardIndex, digits, report_.problems);
        }
        take(frames_);
        if (depth_ == ProbeDepth::Index && frames_.frames() == FrameCount()) believeIndex();
        judgeAvi(avi_, report_);
        report_.avi = std::move(avi_);
    }

    void believeIndex() {
        const auto& index = avi_.standardIndex ? avi_.standardIndex : avi_.oldIndex;
        if (!index) return;
        avi_.frames = index->frames;
        avi_.pictureBytes = index->pictureBytes;
        avi_.largestPicture = index->largestPicture;
    }

    void take(const AviFrames& frames) {
        avi_.frames = frames.frames();
        avi_.pictureBytes = frames.pictureBytes();
        avi_.largestPicture = frames.largestPicture();
    }

    ByteSource& source_;
    ProbeDepth depth_;
    ByteReader reader_;
    MovieReport& report_;
    AviReport avi_;
    AviHeader header_;
    AviFrames frames_{reader_, streamDigits(0)};
    std::uint64_t movi_ = 0;  // the letters of the first one
    std::optional<Chunk> oldIndex_;
};

// Where the frames of this system's recordings begin, whose header is written last.
struct Layout {
    std::uint64_t firstFrame;
    bool openDml;
};
constexpr Layout kLayouts[] = {{4096, false}, {2048, false}, {0x101000, true}};

// Nothing but zeros ahead of a first frame.
std::optional<Layout> unclosedLayout(ByteReader& reader) {
    std::array<std::uint8_t, 2048> head{};
    if (!reader.get(0, head)) return std::nullopt;
    if (std::any_of(head.begin(), head.end(), [](std::uint8_t byte) { return byte != 0; }))
        return std::nullopt;
    for (const Layout& layout : kLayouts) {
        const auto chunk = chunkAt(reader, layout.firstFrame, reader.size());
        if (chunk && (chunk->id == fourcc("00db") || chunk->id == fourcc("00dc"))) return layout;
    }
    return std::nullopt;
}

}  // namespace

bool probeAvi(ByteSource& source, ProbeDepth depth, MovieReport& report) {
    ByteReader reader(source);
    std::array<std::uint8_t, 12> head{};
    if (reader.get(0, head) && loadLe32(head.data()) == fourcc("RIFF") &&
        loadLe32(head.data() + 8) == fourcc("AVI ")) {
        AviProbe(source, depth, report).readSegments();
        return true;
    }
    const auto layout = unclosedLayout(reader);
    if (layout) AviProbe(source, depth, report).readUnclosed(layout->firstFrame, layout->openDml);
    return layout.has_value();
}

}  // namespace tavra::tool
