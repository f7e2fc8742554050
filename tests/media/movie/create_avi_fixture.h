// A recorder with a layout of the test's own, from its settings to its start.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "media/movie/recorder_support.h"

namespace tavra::test {

inline constexpr std::uint16_t kTestFormat = 1;
inline constexpr std::uint16_t kSmf = 10;
inline constexpr std::uint32_t kPatienceMs = 20000;

class CreateAviTest : public testing::Test {
  protected:
    ~CreateAviTest() override { freeMemoryOfTest = std::uint64_t{1} << 40; }

    // A recording of 8-bit images of 8 x 4, not yet started.
    void prepare(std::uint32_t framesPerFile = 1000) {
        ASSERT_EQ(recorder->SetFileFormat(kTestFormat, 0), 0u);
        ASSERT_EQ(recorder->SetFramesPerFile(framesPerFile), 0u);
        ASSERT_EQ(recorder->SetImageFormat(8, 4, 0, 1), 0u);
        ASSERT_EQ(recorder->AddFile(u"movie"), 0u);
    }
    void start(std::uint32_t framesPerFile = 1000) {
        prepare(framesPerFile);
        ASSERT_EQ(recorder->Start(), 0u);
    }
    // Frames that are taken while the writer stands still.
    std::uint32_t framesThatFit() {
        recorder->dropsFrames = true;
        log.gate.reset();
        std::uint32_t ended = 0, taken = 0;
        while (recorder->WriteFrame(image.data(), taken, 0, &ended) == 0) ++taken;
        EXPECT_EQ(recorder->WriteFrame(image.data(), taken, 0, &ended), 258u);
        log.gate.set();
        return taken;
    }

    MovieFilesDouble files;
    LayoutLog log;
    Recorder recorder{files};
    const Bytes image = pattern(32);
};

}  // namespace tavra::test
