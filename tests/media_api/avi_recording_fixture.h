// Recordings of finished images, and the same images as the preview's callbacks saw them.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "media_api/avi_reader.h"
#include "media_api/recording_fixture.h"

namespace tavra::test {

inline std::uint32_t bytesOf(std::uint32_t previewFormat) {
    return previewFormat == 1 ? 1 : previewFormat == 4 ? 3 : 4;
}

// By the rule, pixel after pixel: the last row first, every 2^shift-th row and pixel, no fourth byte, rows
// filled up to four bytes (here with 0).
inline Bytes asStored(const SeenImage& image, unsigned shift = 0) {
    const std::uint32_t from = bytesOf(image.format), to = from == 1 ? 1 : 3;
    const std::uint32_t stride = (image.width * from + 3) / 4 * 4;
    const std::uint32_t width = image.width >> shift, height = image.height >> shift;
    const std::uint32_t outStride = (width * to + 3) / 4 * 4;
    Bytes stored(std::size_t{outStride} * height);
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::uint32_t row = image.height - 1 - (y << shift);
        for (std::uint32_t x = 0; x < width; ++x) {
            for (std::uint32_t i = 0; i < to; ++i) {
                stored[y * outStride + x * to + i] = image.data[row * stride + (x << shift) * from + i];
            }
        }
    }
    return stored;
}

// Nobody says what rows are filled up with.
inline Bytes withoutPadding(Bytes stored, std::uint32_t rowBytes) {
    const std::uint32_t stride = (rowBytes + 3) / 4 * 4;
    for (std::size_t i = 0; i < stored.size(); ++i) {
        if (i % stride >= rowBytes) stored[i] = 0;
    }
    return stored;
}

class AviRecordingTest : public RecordingTest {
  protected:
    // Records frames of these numbers from the open camera; the images that were to be recorded are `seen`
    // then.
    PlainAvi recordImages(const std::vector<std::uint32_t>& numbers, std::uint32_t compressor = 0) {
        forgetPlaces();
        collectImages();
        EXPECT_EQ(save("a.avi", 1000, compressor), 1) << lastError();
        expectMessages({{kRecordingStarted, 0}, {TAVRA_MESSAGE_TRANSFER_STARTED, 0}});
        const std::size_t before = images.count();
        for (const std::uint32_t number : numbers) sendFrame(number, framePattern(number));
        // An image's callback is behind the recorder.
        seen = images.waitFor(before + numbers.size());
        seen.erase(seen.begin(), seen.begin() + static_cast<std::ptrdiff_t>(before));
        EXPECT_EQ(Tavra_StopTransfer(handle), 1);
        EXPECT_EQ(seen.size(), numbers.size());
        return PlainAvi(readFile(folder / "a.avi"));
    }

    // The pictures in the movie are the images that were seen.
    void expectSeen(const PlainAvi& movie) const {
        const std::vector<Bytes> pictures = movie.pictures();
        ASSERT_EQ(pictures.size(), seen.size());
        for (std::size_t i = 0; i < seen.size(); ++i) {
            ASSERT_EQ(movie.width(), seen[i].width);
            ASSERT_EQ(movie.height(), seen[i].height);
            const std::uint32_t rowBytes = seen[i].width * (seen[i].format == 1 ? 1 : 3);
            EXPECT_EQ(withoutPadding(pictures[i], rowBytes), withoutPadding(asStored(seen[i]), rowBytes))
                << i;
        }
    }

    // Without cameras, for another recording.
    void startOver() {
        Tavra_Close(std::exchange(handle, nullptr));
        usb.reset();
        for (ReceivedMessage got; receiver.wait(got, 0);) {
        }
    }

    std::vector<SeenImage> seen;
};

}  // namespace tavra::test
