// Recordings of a stream with every layout, on a disk of the test's own: what it holds, and when it stops, is
// the test's to say.
#pragma once

#include <algorithm>
#include <mutex>
#include <ostream>
#include <thread>

#include "media/movie/create_avi.h"
#include "media_api/avi_reader.h"
#include "media_api/recording_fixture.h"
#include "support/movie_files_double.h"

namespace tavra::test {

inline constexpr const char16_t* kAttachedMovie = u"/movie";

struct RecordingLayout {
    const char* name;
    std::uint16_t format;
    std::uint32_t compressor;

    bool raw() const { return format == 10; }
    bool jpeg() const { return compressor == kMotionJpeg; }
    friend void PrintTo(const RecordingLayout& layout, std::ostream* out) { *out << layout.name; }
};

inline constexpr RecordingLayout kAvi1Layout{"Avi1", 1, 0};
inline constexpr RecordingLayout kAvi1MjpegLayout{"Avi1Mjpeg", 1, kMotionJpeg};
inline constexpr RecordingLayout kAvi2Layout{"Avi2", 2, 0};
inline constexpr RecordingLayout kAvi2MjpegLayout{"Avi2Mjpeg", 2, kMotionJpeg};
inline constexpr RecordingLayout kSmfLayout{"Smf", 10, 0};
inline constexpr RecordingLayout kEveryLayout[] = {kAvi1Layout, kAvi1MjpegLayout, kAvi2Layout,
                                                   kAvi2MjpegLayout, kSmfLayout};

// Puts a recorder where the capture thread looks for it. It has the slot's reference alone, and takes frames
// of the preview's present size, colours with three bytes.
inline void attachRecorder(TAVRA_COMMON_PARAM& camera, const RecordingLayout& layout, MovieFilesDouble& files,
                           std::uint32_t framesPerFile, std::uint32_t buffers = 10) {
    const platform::BitmapShape shape = camera.imagesA.shape();
    ASSERT_EQ(shape.bitCount, 24u);
    auto* const recorder = new movie::CCreateAVI({.files = &files});
    recorder->AddRef();
    ASSERT_EQ(recorder->SetFileFormat(layout.format, layout.compressor), 0u);
    ASSERT_EQ(recorder->SetFramesPerFile(framesPerFile), 0u);
    ASSERT_EQ(recorder->SetBufferCount(buffers), 0u);
    ASSERT_EQ(recorder->SetImageFormat(shape.width, shape.height, layout.raw() ? shape.width : shape.stride(),
                                       layout.raw() ? 1 : 4),
              0u);
    ASSERT_EQ(recorder->AddFile(kAttachedMovie), 0u);
    ASSERT_EQ(recorder->SetNotifyWindow(camera.receiver), 0u);
    ASSERT_EQ(recorder->SetNotifyParam(reinterpret_cast<std::uintptr_t>(&camera)), 0u);
    ASSERT_EQ(recorder->Start(), 0u);
    putRecorder(camera, *recorder, layout.format);
}

// Until a frame waits at the recorder, which keeps the mutex for as long as the disk stands still; or until
// `allPassed`, so that none will.
template <typename AllPassed>
void awaitWaitingFrame(RecordingSlot& slot, AllPassed allPassed) {
    constexpr int kForGood = 1000;  // a frame that passes has the mutex, too, but gives it back
    for (int held = 0; held < kForGood && !allPassed(); std::this_thread::yield()) {
        const std::unique_lock operation(slot.operationMutex, std::try_to_lock);
        held = operation.owns_lock() ? 0 : held + 1;
    }
}

// Whether the picture of an uncompressed AVI holds the image, its rows of `rowBytes` from the bottom up. What
// rows are filled up with nobody says.
inline bool isImageFromTheBottom(const Bytes& picture, const Bytes& image, std::size_t rowBytes) {
    const std::size_t stride = (rowBytes + 3) / 4 * 4;
    if (picture.size() != image.size() || image.size() % stride != 0) return false;
    const auto row = [stride](const Bytes& bytes, std::size_t y) {
        return bytes.begin() + static_cast<std::ptrdiff_t>(stride * y);
    };
    const std::size_t height = image.size() / stride;
    for (std::size_t y = 0; y < height; ++y) {
        const auto first = row(picture, y);
        if (!std::equal(first, first + static_cast<std::ptrdiff_t>(rowBytes), row(image, height - 1 - y)))
            return false;
    }
    return true;
}

class AttachedRecording : public RecordingTest {
  protected:
    void attach(const RecordingLayout& layout, MovieFilesDouble& files, std::uint32_t framesPerFile,
                std::uint32_t buffers = 10) {
        ASSERT_NO_FATAL_FAILURE(attachRecorder(record(), layout, files, framesPerFile, buffers));
        EXPECT_EQ(expectMessage(kRecordingStarted), 0u);
    }

    // A frame that has been through the whole chain when this returns.
    void passFrame() {
        const std::size_t before = images.count();
        sendFrame(number_, framePattern(number_));
        ++number_;
        EXPECT_EQ(images.waitFor(before + 1).size(), before + 1);
    }

    std::uint32_t number_ = 0;
};

}  // namespace tavra::test
