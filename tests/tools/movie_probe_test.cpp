// What the probe says of movies that are whole, cut, damaged, or made to mislead it. The files are put
// together here, chunk by chunk.
#include "movie_probe/movie_probe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace tavra::tool {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes number(std::uint64_t value, int size) {
    Bytes bytes;
    for (int i = 0; i < size; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    return bytes;
}
Bytes u32(std::uint64_t value) {
    return number(value, 4);
}
Bytes letters(const std::string& text) {
    return {text.begin(), text.end()};
}
Bytes join(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}
Bytes chunk(const std::string& id, const Bytes& data) {
    return join({letters(id), u32(data.size()), data, Bytes(data.size() % 2)});
}
Bytes list(const std::string& type, const Bytes& chunks) {
    return chunk("LIST", join({letters(type), chunks}));
}
void patch32(Bytes& bytes, std::size_t at, std::uint32_t value) {
    const Bytes word = u32(value);
    std::copy(word.begin(), word.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at));
}
std::size_t positionOf(const Bytes& bytes, const std::string& id, std::size_t from = 0) {
    const Bytes wanted = letters(id);
    const auto found = std::search(bytes.begin() + static_cast<std::ptrdiff_t>(from), bytes.end(),
                                   wanted.begin(), wanted.end());
    EXPECT_NE(found, bytes.end()) << id;
    return static_cast<std::size_t>(found - bytes.begin());
}

// The header list of one stream of 6x4 pictures, 25 a second, with what else belongs to the stream.
Bytes header(std::uint32_t frames, const std::string& codec, const Bytes& streamExtra = {},
             const Bytes& extra = {}) {
    const Bytes avih = chunk("avih", join({u32(40000), u32(0), u32(0), u32(16), u32(frames), Bytes(36)}));
    const Bytes strh = chunk("strh", join({letters("vids"), letters(codec), Bytes(12), u32(1), u32(25),
                                           u32(0), u32(frames), Bytes(20)}));
    const Bytes compression = codec == "DIB " ? u32(0) : letters(codec);
    const Bytes strf =
        chunk("strf", join({u32(40), u32(6), u32(4), number(1, 2), number(24, 2), compression, Bytes(20)}));
    return list("hdrl", join({avih, list("strl", join({strh, strf, streamExtra})), extra}));
}

Bytes riff(const std::string& type, const Bytes& chunks) {
    return chunk("RIFF", join({letters(type), chunks}));
}

// With an old index whose offsets count from the letters "movi".
Bytes avi1(const std::vector<std::size_t>& sizes, std::uint32_t told) {
    Bytes frames, index;
    for (const std::size_t size : sizes) {
        index = join({index, letters("00dc"), u32(16), u32(4 + frames.size()), u32(size)});
        frames = join({frames, chunk("00dc", Bytes(size, 0xAB))});
    }
    return riff("AVI ", join({header(told, "MJPG"), list("movi", frames), chunk("idx1", index)}));
}

// Two segments of two frames each, the second frame of the second segment lost.
struct Avi2 {
    static constexpr std::size_t kFrame = 30;
    Bytes bytes;
    std::size_t superIndex = 0;
    std::size_t secondBlock = 0;

    Avi2() {
        const Bytes room =
            chunk("indx", join({number(4, 2), Bytes(2), u32(2), letters("00db"), Bytes(12), Bytes(32)}));
        const Bytes odml = list("odml", chunk("dmlh", join({u32(4), Bytes(244)})));
        const Bytes head = header(4, "DIB ", room, odml);
        std::size_t block[2] = {};
        for (int segment = 0; segment < 2; ++segment) {
            Bytes out = segment == 0 ? head : Bytes();
            const std::size_t movi = bytes.size() + 12 + out.size();  // of its LIST
            const std::size_t base = movi + 12;
            Bytes frames, entries;
            for (int i = 0; i < 2; ++i) {
                const bool lost = segment == 1 && i == 1;
                entries = join({entries, u32(lost ? 0 : frames.size() + 8), u32(lost ? 0x80000000 : kFrame)});
                if (!lost) frames = join({frames, chunk("00db", Bytes(kFrame, 0xCD))});
            }
            block[segment] = base + frames.size();
            frames = join({frames, chunk("ix00", join({number(2, 2), number(0, 1), number(1, 1), u32(2),
                                                       letters("00db"), number(base, 8), u32(0), entries}))});
            bytes = join({bytes, riff(segment == 0 ? "AVI " : "AVIX", join({out, list("movi", frames)}))});
        }
        superIndex = positionOf(bytes, "indx");
        secondBlock = block[1];
        for (std::size_t i = 0; i < 2; ++i) {
            patch32(bytes, superIndex + 32 + 16 * i, static_cast<std::uint32_t>(block[i]));
            patch32(bytes, superIndex + 40 + 16 * i, 24 + 16);
            patch32(bytes, superIndex + 44 + 16 * i, 2);
        }
    }
};

Bytes smf(std::uint32_t width, std::uint32_t height, const std::vector<std::uint32_t>& numbers) {
    Bytes bytes(376);
    const auto put = [&](std::size_t at, std::uint32_t value) { patch32(bytes, at, value); };
    put(0, 0x464D53);
    put(4, 376);
    put(8, width);
    put(12, height);
    put(16, width);
    put(20, 8 | 24 << 16);
    put(24, 60000);
    put(28, 1001);
    put(32, 24);
    put(36, width * height);
    put(40, 0x47504A4D);
    put(44, 600);
    put(48, 75);
    put(64, 3);
    put(68, 1 | 5 << 8 | 180 << 16);  // mode, contrast, gamma
    put(72, 0xFFF6);                  // brightness -10
    put(336, 1 | 2 << 8 | 150 << 16);
    put(340, 1);
    put(344, 100 | 0xFFCE0000);  // 1.00 and -0.50
    put(368, 1);
    put(372, 0xFFFF | 120 << 16);
    for (const std::uint32_t number : numbers) {
        bytes = join({bytes, u32(number), u32(2), Bytes(16), Bytes(width * height, 0x55)});
    }
    return bytes;
}

MovieReport probe(const Bytes& bytes, ProbeDepth depth = ProbeDepth::Frames) {
    MemorySource source(bytes);
    return probeMovie(source, depth);
}

bool tells(const MovieReport& report, const std::string& words) {
    return std::any_of(report.problems.begin(), report.problems.end(),
                       [&](const std::string& problem) { return problem.find(words) != std::string::npos; });
}

std::string problemsOf(const MovieReport& report) {
    std::string text;
    for (const std::string& problem : report.problems) text += problem + "\n";
    return text;
}

TEST(MovieProbe, TellsWhatAnAvi1Holds) {
    for (const ProbeDepth depth : {ProbeDepth::Frames, ProbeDepth::Index}) {
        const MovieReport report = probe(avi1({10, 7, 0, 12}, 4), depth);
        EXPECT_TRUE(report.whole()) << problemsOf(report);
        ASSERT_TRUE(report.avi);
        const AviReport& avi = *report.avi;
        EXPECT_FALSE(avi.openDml);
        EXPECT_EQ(avi.width, 6u);
        EXPECT_EQ(avi.height, 4u);
        EXPECT_EQ(avi.bits, 24u);
        EXPECT_EQ(avi.codec, "MJPG");
        EXPECT_EQ(avi.rate, 25u);
        EXPECT_EQ(avi.scale, 1u);
        EXPECT_EQ(avi.length, 4u);
        EXPECT_EQ(avi.frames, (FrameCount{3, 1}));
        EXPECT_EQ(avi.pictureBytes, 29u);
        EXPECT_EQ(avi.largestPicture, 12u);
        ASSERT_TRUE(avi.oldIndex);
        EXPECT_EQ(avi.oldIndex->frames, (FrameCount{3, 1}));
        EXPECT_FALSE(avi.standardIndex);
    }
}

TEST(MovieProbe, TakesOffsetsFromTheStartOfTheFileToo) {
    Bytes bytes = avi1({10, 12}, 2);
    const std::size_t movi = positionOf(bytes, "movi"), index = positionOf(bytes, "idx1");
    patch32(bytes, index + 16, static_cast<std::uint32_t>(movi + 4));
    patch32(bytes, index + 32, static_cast<std::uint32_t>(movi + 22));
    EXPECT_TRUE(probe(bytes).whole()) << problemsOf(probe(bytes));
}

TEST(MovieProbe, TellsWhatAnAvi2Holds) {
    for (const ProbeDepth depth : {ProbeDepth::Frames, ProbeDepth::Index}) {
        const MovieReport report = probe(Avi2().bytes, depth);
        EXPECT_TRUE(report.whole()) << problemsOf(report);
        ASSERT_TRUE(report.avi);
        EXPECT_TRUE(report.avi->openDml);
        EXPECT_TRUE(report.avi->codec.empty());
        EXPECT_EQ(report.avi->odmlFrames, 4u);
        EXPECT_EQ(report.avi->frames.pictures, 3u);
        ASSERT_EQ(report.avi->segments.size(), 2u);
        ASSERT_TRUE(report.avi->standardIndex);
        EXPECT_EQ(report.avi->standardIndex->blocks, 2u);
        EXPECT_EQ(report.avi->standardIndex->frames, (FrameCount{3, 1}));
    }
}

TEST(MovieProbe, TellsFramesThatTheHeaderOrTheIndexCountsWrongly) {
    EXPECT_TRUE(tells(probe(avi1({10, 12}, 3)), "header counts 3 frames, and 2 stand"));
    EXPECT_TRUE(tells(probe(avi1({10, 12}, 1)), "header counts 1 frame, and 2 stand"));
    Bytes bytes = avi1({10, 12}, 2);
    const std::size_t index = positionOf(bytes, "idx1");
    patch32(bytes, index + 36, 0);  // the second frame's size
    EXPECT_TRUE(tells(probe(bytes), "index tells 1 frame, and 2 stand"));
}

TEST(MovieProbe, TellsAnIndexThatPointsOutsideOrBeside) {
    Bytes bytes = avi1({10, 12, 14}, 3);
    const std::size_t index = positionOf(bytes, "idx1");
    patch32(bytes, index + 16 + 16, 0x7FFFFFFF);
    patch32(bytes, index + 16 + 32, 6);
    const MovieReport report = probe(bytes);
    EXPECT_TRUE(tells(report, "outside the file for 1 frame")) << problemsOf(report);
    EXPECT_TRUE(tells(report, "beside the frame for 1 frame")) << problemsOf(report);
}

TEST(MovieProbe, TellsAMissingIndex) {
    const Bytes frames = chunk("00dc", Bytes(10));
    EXPECT_TRUE(tells(probe(riff("AVI ", join({header(1, "MJPG"), list("movi", frames)}))), "has no index"));
}

TEST(MovieProbe, TellsBlocksOfAnIndexThatAreNotThere) {
    Avi2 movie;
    patch32(movie.bytes, movie.superIndex + 32 + 16, 0x10000000);
    EXPECT_TRUE(tells(probe(movie.bytes), "1 of 2 blocks of its index"));
    Avi2 crowded;
    patch32(crowded.bytes, crowded.superIndex + 12, 0x10000000);
    EXPECT_TRUE(tells(probe(crowded.bytes), "has room for 2"));
}

// Blocks that point at one block again and again would make a short file a long work.
TEST(MovieProbe, DoesNotReadBlocksThatOverlap) {
    constexpr std::uint32_t kBlocks = 2000, kEntries = 2000;
    const Bytes room =
        chunk("indx",
              join({number(4, 2), Bytes(2), u32(kBlocks), letters("00db"), Bytes(12), Bytes(16 * kBlocks)}));
    const Bytes block = chunk("ix00", join({number(2, 2), number(0, 1), number(1, 1), u32(kEntries),
                                            letters("00db"), Bytes(12), Bytes(8 * kEntries)}));
    Bytes bytes = riff("AVI ", join({header(0, "DIB ", room), list("movi", block)}));
    const std::size_t at = positionOf(bytes, "ix00"), index = positionOf(bytes, "indx");
    for (std::size_t i = 0; i < kBlocks; ++i)
        patch32(bytes, index + 32 + 16 * i, static_cast<std::uint32_t>(at));
    const MovieReport report = probe(bytes);
    ASSERT_TRUE(report.avi && report.avi->standardIndex);
    EXPECT_LE(report.avi->standardIndex->entries, bytes.size() / 8);
    EXPECT_TRUE(tells(report, "blocks of its index"));
}

TEST(MovieProbe, FindsTheFramesOfARecordingThatWasNeverClosed) {
    for (const std::size_t start : {std::size_t{2048}, std::size_t{4096}, std::size_t{0x101000}}) {
        Bytes bytes(start);
        bytes = join({bytes, chunk("00db", Bytes(2040, 1)), chunk("JUNK", Bytes(8)), Bytes(32),
                      chunk("JUNK", Bytes(8)), chunk("00db", Bytes(2040, 1)), letters("00db"), u32(2040),
                      Bytes(100)});
        const MovieReport report = probe(bytes);
        EXPECT_TRUE(tells(report, "never closed")) << start;
        EXPECT_EQ(report.pictures(), 2u) << start;
    }
}

TEST(MovieProbe, TellsSizesThatWereNeverFilledIn) {
    Bytes bytes = avi1({10, 12}, 2);
    patch32(bytes, 4, 0);
    patch32(bytes, positionOf(bytes, "movi") - 4, 0);
    bytes.resize(positionOf(bytes, "idx1"));
    const MovieReport report = probe(bytes);
    EXPECT_TRUE(tells(report, "never filled in")) << problemsOf(report);
    EXPECT_EQ(report.pictures(), 2u);
}

TEST(MovieProbe, CountsTheFirstVideoStreamOnly) {
    const Bytes strl = list("strl", chunk("strh", join({letters("auds"), Bytes(52)})));
    const Bytes frames = join({chunk("01wb", Bytes(6)), chunk("00dc", Bytes(10)), chunk("00pc", Bytes(4))});
    const Bytes index =
        join({letters("01wb"), u32(0), u32(4), u32(6), letters("00dc"), u32(16), u32(18), u32(10)});
    const MovieReport report = probe(
        riff("AVI ",
             join({header(1, "MJPG", {}, strl), list("movi", list("rec ", frames)), chunk("idx1", index)})));
    ASSERT_TRUE(report.avi);
    EXPECT_EQ(report.avi->streams, 2u);
    EXPECT_EQ(report.avi->frames, (FrameCount{1, 0}));
}

TEST(MovieProbe, NotesWhatStandsBehindTheEnd) {
    const MovieReport report = probe(join({avi1({10}, 1), Bytes(5)}));
    EXPECT_TRUE(report.whole()) << problemsOf(report);
    ASSERT_EQ(report.notes.size(), 1u);
    EXPECT_EQ(report.notes[0].substr(0, 7), "5 bytes");
}

TEST(MovieProbe, TellsWhatAnSmfHolds) {
    for (const ProbeDepth depth : {ProbeDepth::Frames, ProbeDepth::Index}) {
        const MovieReport report = probe(smf(6, 4, {0, 1, 3}), depth);
        EXPECT_TRUE(report.whole()) << problemsOf(report);
        ASSERT_TRUE(report.smf);
        const SmfReport& movie = *report.smf;
        EXPECT_EQ(movie.width, 6u);
        EXPECT_EQ(movie.height, 4u);
        EXPECT_EQ(movie.rawBits, 8u);
        EXPECT_EQ(movie.developedBits, 24u);
        EXPECT_EQ(movie.rate, 60000u);
        EXPECT_EQ(movie.scale, 1001u);
        EXPECT_EQ(movie.codec, "MJPG");
        EXPECT_EQ(movie.quality, 75u);
        EXPECT_EQ(movie.pictures, 3u);
        EXPECT_EQ(movie.length, 4u);
        EXPECT_EQ(movie.colorArrays, (std::vector<std::uint32_t>{2}));
        const SmfDevelopment& set = movie.development;
        EXPECT_EQ(set.interpolation, 3u);
        EXPECT_EQ(set.gammaMode, 1u);
        EXPECT_EQ(set.contrast, 5u);
        EXPECT_EQ(set.gamma, 180u);
        EXPECT_EQ(set.brightness, -10);
        EXPECT_EQ(set.sharpnessMode, 1u);
        EXPECT_EQ(set.sharpnessCoring, 2u);
        EXPECT_EQ(set.sharpnessGain, 150u);
        EXPECT_EQ(set.matrixMode, 1u);
        EXPECT_EQ(set.matrix[0], 100);
        EXPECT_EQ(set.matrix[1], -50);
        EXPECT_EQ(set.hueMode, 1u);
        EXPECT_EQ(set.hue, -1);
        EXPECT_EQ(set.saturation, 120u);
    }
}

TEST(MovieProbe, TellsFramesOfAnSmfThatDoNotLineUp) {
    EXPECT_TRUE(tells(probe(smf(6, 4, {0, 1, 1})), "place 2 holds frame 1, behind frame 1"));
    EXPECT_TRUE(tells(probe(smf(6, 4, {7})), "place 0 holds frame 7"));
}

TEST(MovieProbe, TellsHeadersOfAnSmfThatLie) {
    Bytes bytes = smf(6, 4, {0});
    patch32(bytes, 36, 0);
    EXPECT_TRUE(tells(probe(bytes), "frames of no size"));
    patch32(bytes, 36, 25);
    EXPECT_TRUE(tells(probe(bytes), "frames of 25 bytes"));
    patch32(bytes, 36, 24);
    patch32(bytes, 32, 0xFFFFFFFF);
    EXPECT_TRUE(tells(probe(bytes), "ahead of each frame"));
    patch32(bytes, 4, 377);
    EXPECT_TRUE(tells(probe(bytes), "says that it has 377 bytes"));
}

TEST(MovieProbe, AnSmfWithoutFramesIsWhole) {
    const MovieReport report = probe(smf(6, 4, {}));
    EXPECT_TRUE(report.whole()) << problemsOf(report);
    EXPECT_EQ(report.pictures(), 0u);
}

TEST(MovieProbe, TakesNothingElseForAMovie) {
    EXPECT_FALSE(probe({}).isMovie());
    EXPECT_TRUE(tells(probe({}), "empty"));
    EXPECT_FALSE(probe(letters("RIFF....WAVEfmt ")).isMovie());
    EXPECT_FALSE(probe(Bytes(10000)).isMovie());
}

// Of a movie that is cut anywhere it never says that it is whole, nor more frames than there are.
void cutEverywhere(const Bytes& movie, std::uint64_t frames, std::size_t wholeAgainAt) {
    ASSERT_TRUE(probe(movie).whole());
    for (std::size_t size = 0; size < movie.size(); ++size) {
        const Bytes cut(movie.begin(), movie.begin() + static_cast<std::ptrdiff_t>(size));
        for (const ProbeDepth depth : {ProbeDepth::Frames, ProbeDepth::Index}) {
            const MovieReport report = probe(cut, depth);
            EXPECT_LE(report.pictures(), frames) << size;
            if (depth == ProbeDepth::Frames && size < wholeAgainAt) {
                EXPECT_FALSE(report.whole()) << size;
            }
        }
    }
}

TEST(MovieProbe, TellsAMovieThatIsCutAtAnyByte) {
    const Bytes old = avi1({10, 7, 0, 12}, 4);
    cutEverywhere(old, 3, old.size());
    const Bytes segments = Avi2().bytes;
    cutEverywhere(segments, 3, segments.size());
}

// Its frames are counted by the file's length: cut between two of them it is a shorter movie.
TEST(MovieProbe, TellsAnSmfThatIsCutInsideAFrame) {
    const Bytes movie = smf(6, 4, {0, 1});
    for (std::size_t size = 0; size < movie.size(); ++size) {
        const MovieReport report =
            probe(Bytes(movie.begin(), movie.begin() + static_cast<std::ptrdiff_t>(size)));
        const bool betweenFrames = size == 376 || size == 376 + 48;
        EXPECT_EQ(report.whole(), betweenFrames) << size;
        EXPECT_EQ(report.pictures(), size < 376 ? 0 : (size - 376) / 48) << size;
    }
}

// One wrong byte anywhere: an answer comes, and none of it exceeds what the file can hold.
TEST(MovieProbe, AnswersWhateverAByteHolds) {
    for (Bytes movie : {avi1({10, 7, 0, 12}, 4), Avi2().bytes, smf(6, 4, {0, 1})}) {
        for (std::size_t at = 0; at < movie.size(); ++at) {
            const std::uint8_t was = movie[at];
            for (const std::uint8_t now : {std::uint8_t{0}, std::uint8_t{0x7F}, std::uint8_t{0xFF}}) {
                movie[at] = now;
                const MovieReport report = probe(movie);
                ASSERT_LE(report.pictures(), movie.size() / 8) << at;
            }
            movie[at] = was;
        }
    }
}

}  // namespace
}  // namespace tavra::tool
