// A camera that is recorded: its frames are the test's, the movie is a file in a folder of the test's own.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "base/little_endian.h"
#include "capture_api/stream_fixture.h"
#include "support/temp_folder.h"

namespace tavra::test {

inline constexpr std::uint32_t kRecordingStarted = 45064;
inline constexpr std::uint32_t kRecordingEnded = 45065;
inline constexpr std::uint32_t kMotionJpeg = 'M' | 'J' << 8 | 'P' << 16 | 'G' << 24;

// A raw movie as it lies in its file.
struct RawMovie {
    static constexpr std::size_t kHeaderBytes = 376;
    static constexpr std::size_t kFrameHeaderBytes = 24;

    struct Frame {
        std::uint32_t number, tag;
        Bytes image;
    };
    Bytes header;
    std::vector<Frame> frames;

    std::uint32_t field(std::size_t offset) const { return loadLe32(&header[offset]); }
};

inline RawMovie readRawMovie(const Bytes& bytes) {
    RawMovie movie;
    if (bytes.size() < RawMovie::kHeaderBytes) {
        ADD_FAILURE() << bytes.size() << " bytes";
        return movie;
    }
    movie.header.assign(bytes.begin(), bytes.begin() + RawMovie::kHeaderBytes);
    const std::size_t image = movie.field(8) * movie.field(12);
    const std::size_t record = RawMovie::kFrameHeaderBytes + image;
    EXPECT_EQ(movie.field(36), image);
    EXPECT_EQ((bytes.size() - RawMovie::kHeaderBytes) % record, 0u) << "whole frames";
    for (std::size_t at = RawMovie::kHeaderBytes; at + record <= bytes.size(); at += record) {
        const auto data = bytes.begin() + static_cast<std::ptrdiff_t>(at + RawMovie::kFrameHeaderBytes);
        movie.frames.push_back({loadLe32(&bytes[at]), loadLe32(&bytes[at + 4]),
                                Bytes(data, data + static_cast<std::ptrdiff_t>(image))});
    }
    return movie;
}

// A mosaic of so many bytes a row, turned clockwise: each row becomes a column, the last one first.
inline Bytes turnedClockwise(const Bytes& upright, std::uint32_t width) {
    const auto height = static_cast<std::uint32_t>(upright.size() / width);
    Bytes turned(upright.size());
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            turned[x * height + height - 1 - y] = upright[y * width + x];
        }
    }
    return turned;
}

// Puts a recorder that is at work where the capture thread looks for it, for images of the preview's present
// size. Its reference is the slot's from now on.
inline void putRecorder(TAVRA_COMMON_PARAM& camera, movie::ISaveAVIFile& recorder, std::uint16_t format) {
    RecordingSlot& slot = camera.recording;
    const std::lock_guard operation(slot.operationMutex);
    slot.format = format;
    slot.shape = camera.imagesA.shape();
    slot.put(&recorder);
}

// What a test reads of a movie stands in the file when the recording's end was told, or Tavra_SetAVIStatus or
// Tavra_StopTransfer has come back: until then capture thread and writer are at work, in their own time.
class RecordingTest : public StreamTest {
  protected:
    std::u16string name(const std::string& file = "a.smf") const { return wideName(folder / file); }
    TavraBool save(const std::string& file = "a.smf", std::uint32_t frames = 1000,
                   std::uint32_t compressor = 0) {
        return Tavra_SaveAVIW(handle, name(file).c_str(), compressor, frames);
    }
    RawMovie movie(const std::string& file = "a.smf") const { return readRawMovie(readFile(folder / file)); }

    void expectFailure(TavraBool result, std::uint32_t code) {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(lastError(), code);
        record().lastError = 0;
    }
    std::uint8_t status() {
        std::uint8_t value = 9;
        EXPECT_EQ(Tavra_GetAVIStatus(handle, &value, nullptr, nullptr), 1);
        return value;
    }

    // The next messages, in whatever order: the stream's and the recording's come from two threads.
    void expectMessages(std::map<std::uint32_t, std::uint64_t> wanted) {
        while (!wanted.empty()) {
            ReceivedMessage got;
            ASSERT_TRUE(receiver.wait(got, kPatienceMs)) << wanted.begin()->first << " did not come";
            const auto found = wanted.find(got.message);
            ASSERT_TRUE(found != wanted.end()) << got.message;
            EXPECT_EQ(got.parameter1, reinterpret_cast<std::uintptr_t>(handle));
            EXPECT_EQ(got.parameter2, found->second);
            wanted.erase(found);
        }
    }
    // Starts a recording, and a stream with it.
    void startBoth(std::uint32_t frames = 1000) {
        forgetPlaces();
        ASSERT_EQ(save("a.smf", frames), 1) << lastError();
        expectMessages({{kRecordingStarted, 0}, {TAVRA_MESSAGE_TRANSFER_STARTED, 0}});
    }
    // Sends frames that go into the recording, and sees to it that they are there.
    void sendAndAwait(std::uint32_t first, std::uint32_t count) {
        const std::size_t before = raws.count();
        for (std::uint32_t i = 0; i < count; ++i) sendFrame(first + i, framePattern(first + i));
        EXPECT_EQ(raws.waitFor(before + count).size(), before + count);
        // A raw callback is ahead of the recorder; the next one is behind it.
        sendFrame(first + count, framePattern(first + count));
        EXPECT_EQ(raws.waitFor(before + count + 1).size(), before + count + 1);
    }
    // A movie of the open camera with the frames from 0 to `count` - 1; the next one may be in it as well.
    RawMovie recordRaw(std::uint32_t count) {
        collectRaw();
        startBoth();
        sendAndAwait(0, count);
        EXPECT_EQ(Tavra_SetAVIStatus(handle, 0), 1);
        return movie();
    }
    Bytes framePattern(std::uint32_t number) const { return pattern(static_cast<std::uint8_t>(number * 5)); }

    const TempFolder folder;
};

}  // namespace tavra::test
