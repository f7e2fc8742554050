// The four AVI layouts as the parameter of tests that hold for all of them.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "media/movie/avi_file_20_mjpeg.h"
#include "media/movie/avi_file_20_not_compressed.h"
#include "media/movie/jpeg_frames.h"
#include "media/movie/recording.h"

namespace tavra::test {

struct AviLayout {
    const char* name;
    std::uint16_t format;
    std::uint32_t compressor;

    bool jpeg() const { return compressor != 0; }

    std::unique_ptr<movie::CAVIFile> make(movie::MovieFiles& files, SegmentLimits limits = {}) const {
        if (format == 1) return movie::makeAviWriter(format, compressor, files);
        const movie::AviLimits lowered = {.segmentBytes = limits.bytes, .segmentEntries = limits.entries};
        if (jpeg()) return std::make_unique<movie::CAVIFile20MJPEG>(files, lowered);
        return std::make_unique<movie::CAVIFile20NotCompressed>(files, lowered);
    }

    // The frame as its chunk holds it.
    MovieFrame frame(const MovieForm& form, std::uint32_t index, const FileBytes& image) const {
        return {index, jpeg() ? encodeJpegFrame(form, image) : image};
    }

    FileBytes build(const MovieForm& form, const std::vector<MovieFrame>& frames,
                    SegmentLimits limits = {}) const {
        if (format == 1) {
            return jpeg() ? buildAvi10Mjpeg(form, frames) : buildAvi10NotCompressed(form, frames);
        }
        return jpeg() ? buildAvi20Mjpeg(form, frames, limits) : buildAvi20NotCompressed(form, frames, limits);
    }
};

constexpr AviLayout kAvi10NotCompressed{"Avi10NotCompressed", 1, 0};
constexpr AviLayout kAvi10Mjpeg{"Avi10Mjpeg", 1, kMotionJpeg};
constexpr AviLayout kAvi20NotCompressed{"Avi20NotCompressed", 2, 0};
constexpr AviLayout kAvi20Mjpeg{"Avi20Mjpeg", 2, kMotionJpeg};

inline const auto kAllLayouts =
    ::testing::Values(kAvi10NotCompressed, kAvi10Mjpeg, kAvi20NotCompressed, kAvi20Mjpeg);

inline std::string layoutName(const ::testing::TestParamInfo<AviLayout>& info) {
    return info.param.name;
}

// The message of a failed comparison of large files: where they part.
inline ::testing::AssertionResult equalFiles(const FileBytes& got, const FileBytes& wanted) {
    const std::size_t common = std::min(got.size(), wanted.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (got[i] != wanted[i]) {
            return ::testing::AssertionFailure()
                   << "byte " << i << " is " << int{got[i]} << " and should be " << int{wanted[i]};
        }
    }
    if (got.size() == wanted.size()) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << got.size() << " bytes instead of " << wanted.size();
}

}  // namespace tavra::test
