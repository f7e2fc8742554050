// A camera whose preview is in a window on an X server of the test's own, and what is to be seen there.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "capture_api/stream_fixture.h"
#include "platform/window.h"
#include "support/x_server.h"

namespace tavra::test {

using Picture = std::vector<std::uint32_t>;
using platform::Size;

inline constexpr std::uint32_t kVisible = platform::kStyleVisible;
inline constexpr std::uint32_t kScrolls = platform::kStyleHorizontalScroll | platform::kStyleVerticalScroll;
inline constexpr std::uint32_t kNoDisplay = 1459;

// Shows a mono camera, whose preview is the frame itself.
class PreviewOnScreen : public StreamTest {
  protected:
    explicit PreviewOnScreen(const std::vector<const char*>& serverArguments = {})
        : ownServer(std::in_place, serverArguments), server(*ownServer) {
        expectServer();
    }
    // On a server that outlives the test.
    explicit PreviewOnScreen(XServer& shared) : server(shared) { expectServer(); }
    ~PreviewOnScreen() override {
        if (handle != nullptr) Tavra_Close(handle);
        handle = nullptr;
    }

    void openMono(std::uint32_t width, std::uint32_t height) {
        openCamera(1, 1, width, height);
        imageWidth = width;
        ASSERT_TRUE(Tavra_SetPreviewPixelFormat(handle, TAVRA_PIXEL_MONO_8));
    }
    void createWindow(Size client, std::uint32_t style = kVisible, TavraWindow parent = nullptr,
                      bool closable = true, std::uint32_t sizes = 1) {
        ASSERT_TRUE(Tavra_CreatePreviewWindowA(handle, "Preview", style, 0, 0, client.width, client.height,
                                               parent, nullptr, closable ? 1 : 0))
            << lastError();
        for (std::uint32_t i = 0; i < sizes; ++i) {
            expectMessage(45061);
            expectMessage(45063);
        }
        const std::uint64_t told = expectMessage(45059);
        TavraWindow known = nullptr;
        ASSERT_TRUE(Tavra_GetPreviewWnd(handle, &known));
        EXPECT_EQ(told, reinterpret_cast<std::uintptr_t>(known));
        window = static_cast<xcb_window_t>(reinterpret_cast<std::uintptr_t>(known));
    }
    void forgetAll() {
        for (ReceivedMessage got; receiver.wait(got, 0);) {
        }
    }
    void show(std::uint32_t number) {
        sendFrame(number, pattern(static_cast<std::uint8_t>(number)));
        EXPECT_EQ(expectMessage(45067), number);
    }
    // The grey of the frame at (x, y), as the screen has it.
    std::uint32_t grey(std::uint32_t number, std::uint32_t x, std::uint32_t y) const {
        const auto value = static_cast<std::uint8_t>(number + 3 * (y * imageWidth + x));
        return value * 0x010101u;
    }

    std::optional<XServer> ownServer;
    XServer& server;
    xcb_window_t window = 0;
    std::uint32_t imageWidth = 0;

  private:
    void expectServer() const {
        if (!server.started()) ADD_FAILURE() << "Xvfb does not start: scripts/install-deps test";
    }
};

}  // namespace tavra::test
