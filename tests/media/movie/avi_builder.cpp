#include "media/movie/avi_builder.h"

#include <algorithm>
#include <string>

namespace tavra::test {
namespace {

struct Out {
    FileBytes bytes;

    Out& u16(std::uint64_t value) { return number(value, 2); }
    Out& u32(std::uint64_t value) { return number(value, 4); }
    Out& u64(std::uint64_t value) { return number(value, 8); }
    Out& tag(const std::string& letters) {
        bytes.insert(bytes.end(), letters.begin(), letters.end());
        return *this;
    }
    Out& zeros(std::size_t count) {
        bytes.resize(bytes.size() + count);
        return *this;
    }
    Out& zerosUpTo(std::size_t position) {
        bytes.resize(position);
        return *this;
    }
    Out& raw(const FileBytes& more) {
        bytes.insert(bytes.end(), more.begin(), more.end());
        return *this;
    }
    Out& number(std::uint64_t value, int count) {
        for (int i = 0; i < count; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        return *this;
    }
    std::size_t size() const { return bytes.size(); }
};

std::uint32_t strideOf(const MovieForm& form) {
    return (form.width * form.bits / 8 + 3) / 4 * 4;
}

std::uint32_t frameCount(const std::vector<MovieFrame>& frames) {
    return frames.empty() ? 0 : frames.back().index + 1;
}

std::size_t largestFrame(const std::vector<MovieFrame>& frames) {
    std::size_t largest = 0;
    for (const MovieFrame& frame : frames) largest = std::max(largest, frame.data.size());
    return largest;
}

// What differs between the headers of the layouts.
struct HeaderNumbers {
    std::uint64_t riffSize;
    std::uint64_t hdrlSize;
    std::uint32_t granularity;
    std::uint32_t totalFrames;
    std::uint64_t suggestedBuffer;
    std::uint64_t strlSize;
    std::uint32_t quality;
    std::uint64_t imageSize;
};

void startHeader(Out& out, const MovieForm& form, const HeaderNumbers& numbers, std::uint32_t frames,
                 bool jpeg) {
    const std::uint64_t frameBytes =
        jpeg ? std::uint64_t{form.width} * form.height * 3 : std::uint64_t{form.height} * strideOf(form);
    out.tag("RIFF").u32(numbers.riffSize).tag("AVI ");
    out.tag("LIST").u32(numbers.hdrlSize).tag("hdrl");
    out.tag("avih").u32(56);
    out.u32(std::uint64_t{form.scale} * 1000000 / form.rate);
    out.u32((form.rate / form.scale + 1) * frameBytes);
    out.u32(numbers.granularity).u32(jpeg ? 16 : 2064);
    out.u32(numbers.totalFrames).u32(0).u32(1).u32(numbers.suggestedBuffer);
    out.u32(form.width).u32(form.height).zeros(16);
    out.tag("LIST").u32(numbers.strlSize).tag("strl");
    out.tag("strh").u32(56).tag("vids").tag(jpeg ? "MJPG" : "DIB ").zeros(12);
    out.u32(form.scale).u32(form.rate).u32(0).u32(frames);
    out.u32(numbers.suggestedBuffer).u32(numbers.quality).u32(0);
    out.u16(0).u16(0).u16(form.width).u16(form.height);
}

void plainFormat(Out& out, const MovieForm& form, std::uint64_t imageSize) {
    const std::uint32_t colors = form.bits == 8 ? 256 : 0;
    out.tag("strf").u32(40 + 4 * colors);
    out.u32(40).u32(form.width).u32(form.height).u16(1).u16(form.bits).u32(0).u32(imageSize);
    out.u32(0).u32(0).u32(colors).u32(colors);
    for (std::uint32_t level = 0; level < colors; ++level) {
        out.number(level, 1).number(level, 1).number(level, 1).number(0, 1);
    }
}

void jpegFormat(Out& out, const MovieForm& form, std::uint64_t imageSize) {
    out.tag("strf").u32(40);
    out.u32(40).u32(form.width).u32(form.height).u16(1).u16(24).tag("MJPG").u32(imageSize).zeros(16);
    out.tag("strn").u32(64).tag("MJPG Out").zeros(56);
}

// The chunks of an AVI 1.0 file and its index, as they go along.
struct OldMovie {
    Out chunks;
    Out index;
    std::uint32_t entries = 0;

    void add(const std::string& chunkTag, const std::string& indexTag, const FileBytes& data, bool pad) {
        index.tag(indexTag).u32(16).u32(4 + chunks.size()).u32(data.size());
        ++entries;
        chunks.tag(chunkTag).u32(data.size()).raw(data);
        if (pad && data.size() % 2 == 1) chunks.tag("0");
    }
};

FileBytes joinOldMovie(Out header, std::size_t dataOffset, const OldMovie& movie) {
    header.tag("JUNK").u32(dataOffset - 12 - header.size() - 4).zerosUpTo(dataOffset - 12);
    header.tag("LIST").u32(4 + movie.chunks.size()).tag("movi");
    header.raw(movie.chunks.bytes).tag("idx1").u32(16 * movie.entries).raw(movie.index.bytes);
    return header.bytes;
}

// ---- AVI 2.0

struct Segment {
    std::vector<const MovieFrame*> frames;  // null for one that was skipped
};

std::uint64_t wholeSectors(std::uint64_t bytes) {
    while (bytes % 2048 != 0) ++bytes;
    return bytes;
}

// Bytes that a chunk takes up with its pad byte and its JUNK.
std::uint64_t paddedChunk(std::size_t dataSize) {
    const std::uint64_t chunk = 8 + dataSize + dataSize % 2;
    std::uint64_t end = wholeSectors(chunk);
    if (end != chunk && end - chunk < 8) end += 2048;
    return end;
}

std::vector<Segment> intoSegments(const std::vector<MovieFrame>& frames, SegmentLimits limits) {
    std::vector<Segment> segments(1);
    std::uint64_t used = 0;
    std::uint32_t next = 0;
    const auto startSegment = [&] {
        segments.emplace_back();
        used = 2016;
    };
    for (const MovieFrame& frame : frames) {
        const std::uint32_t skipped = frame.index - next;
        Segment* segment = &segments.back();
        if (!segment->frames.empty() && segment->frames.size() + skipped + 1 > limits.entries) startSegment();
        for (std::uint32_t i = 0; i < skipped; ++i) {
            segments.back().frames.push_back(nullptr);
            if (segments.back().frames.size() == limits.entries) startSegment();
        }
        segments.back().frames.push_back(&frame);
        const std::uint64_t bytes = paddedChunk(frame.data.size());
        used += bytes;
        if (used + bytes > limits.bytes || segments.back().frames.size() == limits.entries) startSegment();
        next = frame.index + 1;
    }
    if (segments.size() > 1 && segments.back().frames.empty()) segments.pop_back();
    return segments;
}

void fillSector(Out& out) {
    const std::size_t rest = wholeSectors(out.size()) - out.size();
    if (rest == 0) return;
    const std::size_t junk = rest < 8 ? rest + 2048 : rest;
    out.tag("JUNK").u32(junk - 8).zeros(junk - 8);
}

struct IndexedFrame {
    std::uint64_t data = 0;  // position in the file
    std::uint64_t size = 0;
    bool skipped = true;
};

struct SuperEntry {
    std::uint64_t offset;
    std::uint64_t size;
    std::size_t frames;
};

void oldIndex(Out& out, const std::vector<IndexedFrame>& frames, const std::string& tag) {
    const std::size_t block = ((frames.size() - 1) * 16 + 40) / 2048 * 2048 + 2048;
    const std::size_t end = out.size() + block;
    out.tag("idx1").u32(block - 8).tag("7Fxx").u32(0).u32(0x8000).u32(0);
    std::uint64_t lastData = 0x101008;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const IndexedFrame& frame = frames[i];
        const bool empty = frame.skipped || frame.size == 0;
        if (!empty) lastData = frame.data;
        if (i == 0) {
            out.tag("00dc").u32(0).u32(0x100FF8).u32(0);
        } else if (empty) {
            out.tag("00dc").u32(0).u32(lastData).u32(0);
        } else {
            out.tag(tag).u32(16).u32(frame.data - 8).u32(frame.size);
        }
    }
    while (out.size() < end - 8) out.tag("7Fxx").u32(0).u32(0).u32(0);
    out.zeros(8);
}

// From the first list of frames on. Sizes of lists are filled in when they are known.
struct NewMovie {
    Out out;
    std::vector<SuperEntry> superIndex;
    std::uint64_t riffSize = 0;

    void fill(std::size_t at, std::uint64_t value) {
        for (int i = 0; i < 4; ++i) out.bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }

    void addSegment(const Segment& segment, const std::string& tag, bool first) {
        const std::size_t head = out.size();
        if (!first) out.tag("RIFF").u32(0).tag("AVIX");
        const std::size_t list = out.size();
        out.tag("LIST").u32(0).tag("movi").tag("00dc").u32(0);
        const std::uint64_t base = out.size();
        if (!first) fillSector(out);
        std::vector<IndexedFrame> index;
        for (const MovieFrame* frame : segment.frames) {
            index.emplace_back();
            if (frame == nullptr) continue;
            index.back() = {out.size() + 8, frame->data.size(), false};
            out.tag(tag).u32(frame->data.size()).raw(frame->data);
            if (frame->data.size() % 2 == 1) out.tag("0");
            fillSector(out);
        }
        if (!index.empty()) {
            superIndex.push_back({out.size(), 32 + 8 * index.size(), index.size()});
            out.tag("ix00").u32(24 + 8 * index.size()).u16(2).number(0, 1).number(1, 1).u32(index.size());
            out.tag(tag).u64(base).u32(0);
            for (const IndexedFrame& frame : index) {
                out.u32(frame.skipped ? 0 : frame.data - base).u32(frame.skipped ? 0x80000000 : frame.size);
            }
            fillSector(out);
        }
        fill(list + 4, out.size() - list - 8);
        if (!first) fill(head + 4, out.size() - head - 8);
        if (first && !index.empty()) oldIndex(out, index, tag);
        if (first) riffSize = out.size() - 8;
    }
};

FileBytes buildAvi20(const MovieForm& form, const std::vector<MovieFrame>& frames, SegmentLimits limits,
                     bool jpeg) {
    const std::string tag = jpeg ? "00dc" : "00db";
    const std::vector<Segment> segments = intoSegments(frames, limits);
    NewMovie movie;
    movie.out.zeros(0x101000 - 20);
    for (std::size_t i = 0; i < segments.size(); ++i) movie.addSegment(segments[i], tag, i == 0);

    const std::uint32_t count = frameCount(frames);
    const std::size_t largest = largestFrame(frames);
    const bool gray = form.bits == 8 && !jpeg;
    Out head;
    HeaderNumbers numbers{};
    numbers.riffSize = movie.riffSize;
    numbers.hdrlSize = 0x100020 + (jpeg ? 532 : gray ? 1484 : 460);
    numbers.granularity = 2048;
    numbers.totalFrames = static_cast<std::uint32_t>(segments[0].frames.size());
    numbers.suggestedBuffer = largest + 8;
    numbers.strlSize = 0x100020 + (jpeg ? 188 : gray ? 1140 : 116);
    numbers.quality = jpeg ? form.quality * 100 : 0;
    startHeader(head, form, numbers, count, jpeg);
    jpeg ? jpegFormat(head, form, largest) : plainFormat(head, form, largest);

    head.tag("indx").u32(0x100018).u16(4).u16(0).u32(movie.superIndex.size()).tag(tag).zeros(12);
    for (const SuperEntry& entry : movie.superIndex) {
        head.u64(entry.offset).u32(entry.size).u32(entry.frames);
    }
    head.zeros(16 * (65536 - movie.superIndex.size()));
    head.tag("LIST").u32(260).tag("odml").tag("dmlh").u32(248).u32(count).zeros(244);
    head.tag("JUNK").u32(0x101000 - 20 - head.size() - 4);
    std::copy(head.bytes.begin(), head.bytes.end(), movie.out.bytes.begin());
    return movie.out.bytes;
}

}  // namespace

FileBytes buildAvi10NotCompressed(const MovieForm& form, const std::vector<MovieFrame>& frames) {
    OldMovie movie;
    movie.add("00dc", "00db", {}, false);
    std::uint32_t next = 0;
    for (const MovieFrame& frame : frames) {
        for (; next < frame.index; ++next) movie.add("00db", "00db", {}, false);
        movie.add("00db", "00db", frame.data, false);
        ++next;
    }
    const bool gray = form.bits == 8;
    Out header;
    HeaderNumbers numbers{};
    numbers.riffSize = 4096 + movie.chunks.size() + 8 + 16 * movie.entries - 8;
    numbers.hdrlSize = gray ? 1216 : 192;
    numbers.totalFrames = 0xFFFFFFFF;
    numbers.suggestedBuffer = largestFrame(frames);
    numbers.strlSize = gray ? 1140 : 116;
    numbers.quality = 0xFFFFFFFF;
    startHeader(header, form, numbers, frameCount(frames), false);
    plainFormat(header, form, form.height * strideOf(form));
    return joinOldMovie(header, 4096, movie);
}

FileBytes buildAvi10Mjpeg(const MovieForm& form, const std::vector<MovieFrame>& frames) {
    OldMovie movie;
    std::uint32_t next = 0;
    for (const MovieFrame& frame : frames) {
        for (; next < frame.index; ++next) movie.add("00dc", "00dc", {}, true);
        movie.add("00dc", "00dc", frame.data, true);
        ++next;
    }
    Out header;
    HeaderNumbers numbers{};
    numbers.riffSize = 2048 + movie.chunks.size() + 8 + 16 * movie.entries - 8;
    numbers.hdrlSize = 264;
    numbers.totalFrames = frameCount(frames);
    numbers.suggestedBuffer = largestFrame(frames);
    numbers.strlSize = 188;
    numbers.quality = form.quality * 100;
    startHeader(header, form, numbers, frameCount(frames), true);
    jpegFormat(header, form, form.width * form.height * 3);
    return joinOldMovie(header, 2048, movie);
}

FileBytes buildAvi20NotCompressed(const MovieForm& form, const std::vector<MovieFrame>& frames,
                                  SegmentLimits limits) {
    return buildAvi20(form, frames, limits, false);
}

FileBytes buildAvi20Mjpeg(const MovieForm& form, const std::vector<MovieFrame>& frames,
                          SegmentLimits limits) {
    return buildAvi20(form, frames, limits, true);
}

}  // namespace tavra::test
