// A movie writer with frames in its queues: what the recorder does, without the camera.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "media/movie/avi_builder.h"
#include "media/movie/avi_file.h"
#include "media/movie/avi_writers.h"
#include "support/movie_files_double.h"

namespace tavra::test {

constexpr std::uint32_t kMotionJpeg = 'M' | 'J' << 8 | 'P' << 16 | 'G' << 24;

inline std::uint32_t strideOf(const MovieForm& form) {
    return (form.width * form.bits / 8 + 3) / 4 * 4;
}

// Rows as the recorder hands them over, their padding 0xEE; each frame differs from the others.
inline FileBytes makeImage(const MovieForm& form, std::uint32_t number) {
    const std::uint32_t stride = strideOf(form);
    FileBytes image(std::size_t{stride} * form.height, 0xEE);
    for (std::uint32_t y = 0; y < form.height; ++y) {
        for (std::uint32_t x = 0; x < form.width * form.bits / 8; ++x) {
            image[std::size_t{y} * stride + x] = static_cast<std::uint8_t>(number * 29 + y * 5 + x * 3);
        }
    }
    return image;
}

// Frames that were filled ahead of the start are all written before a stop is obeyed, so that start and stop
// make a recording in which nothing hangs on time.
class Recording final : public movie::IAVIFileStatusListener {
  public:
    using Event = std::pair<std::uint32_t, std::uint32_t>;

    Recording(std::unique_ptr<movie::CAVIFile> writer, const MovieForm& form) : writer_(std::move(writer)) {
        movie::MovieSettings& settings = writer_->settings;
        const std::uint32_t stride = strideOf(form);
        settings.quality = form.quality;
        settings.rate = form.rate;
        settings.scale = form.scale;
        settings.rowStride = stride;
        settings.imageBytes = stride * form.height;
        settings.image = movie::ImageDescription::of(form.width, form.height, stride,
                                                     static_cast<std::uint16_t>(form.bits));
        writer_->filledFrames = &filled;
        writer_->freeFrames = &free;
        writer_->listener = this;
    }
    ~Recording() { writer_.reset(); }
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    Status OnStatus(std::uint32_t event, std::uint32_t value) override {
        events.emplace_back(event, value);
        return {};
    }

    void add(std::uint32_t position, const FileBytes& image) {
        ASSERT_EQ(image.size(), writer_->settings.imageBytes);
        buffers_.push_back(std::make_unique<movie::FrameBuffer>());
        movie::FrameBuffer& buffer = *buffers_.back();
        ASSERT_TRUE(buffer.allocate(image.size()).ok());
        std::copy(image.begin(), image.end(), buffer.image());
        // What an earlier frame may have left there.
        std::fill(buffer.image() + image.size(), buffer.block.data() + image.size() + 2064, 0xCC);
        buffer.position = position;
        filled.push(&buffer);
    }

    // One file, or several, from start to stop.
    Status run(const std::vector<std::u16string>& names = {u"movie.avi"}) {
        for (const std::u16string& name : names) EXPECT_TRUE(writer_->addFile(name).ok());
        EXPECT_TRUE(writer_->Start().ok());
        writer_->Stop();
        EXPECT_TRUE(writer_->ended().wait(0));
        return writer_->result();
    }

    movie::CAVIFile& writer() { return *writer_; }

    movie::PointerQueue<movie::FrameBuffer> filled;
    movie::PointerQueue<movie::FrameBuffer> free;
    std::vector<Event> events;

  private:
    std::unique_ptr<movie::CAVIFile> writer_;
    std::vector<std::unique_ptr<movie::FrameBuffer>> buffers_;
};

}  // namespace tavra::test
