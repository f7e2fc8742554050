// A camera whose preview is in the window of the doubles.
#pragma once

#include <gmock/gmock.h>

#include "display_seams/seams.h"
#include "media_api/recording_fixture.h"

namespace tavra::test {

class PreviewOnSeams : public RecordingTest {
  protected:
    PreviewOnSeams() { seams().reset(); }

    SharedWindow& window() { return seams().window; }

    // Mono, with a preview of the frame itself.
    void openMono(std::uint32_t width = 6, std::uint32_t height = 4) {
        openCamera(1, 1, width, height);
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, TAVRA_PIXEL_MONO_8));
    }
    // As large as the image.
    void createWindow(std::uint32_t style = 0, TavraWindow parent = nullptr) {
        forgetPlaces();
        ASSERT_TRUE(Tavra_CreatePreviewWindowW(handle, u"Preview", style, 20, 30, 0, 0, parent, nullptr, 1));
        expectMessage(TAVRA_MESSAGE_WINDOW_CREATED);
        window().takeInvalidations();
    }
    void show(std::uint32_t number) {
        sendFrame(number, framePattern(number));
        EXPECT_EQ(expectMessage(TAVRA_MESSAGE_FRAME_FINISHED), number);
    }
};

}  // namespace tavra::test
