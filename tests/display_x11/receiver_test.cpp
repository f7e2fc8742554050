// Windows of another client of the X server as receivers of the messages.
#include <cstdlib>
#include <memory>
#include <string>

#include "display_x11/preview_on_screen.h"
#include "platform/messages.h"
#include "tavra/tavra_host.h"

namespace tavra::test {
namespace {

struct FreeEvent {
    void operator()(void* event) const { std::free(event); }
};

TavraWindow handleOf(xcb_window_t window) {
    return reinterpret_cast<TavraWindow>(static_cast<std::uintptr_t>(window));
}

class MessagesOnScreen : public PreviewOnScreen {
  protected:
    MessagesOnScreen() : target(server.makeWindow(50, 40)) {
        synchronise();
        platform::nameReceiver(handleOf(target));
    }

    // Until the server has done all that this client has asked for.
    void synchronise() {
        std::free(xcb_get_input_focus_reply(server.connection(), xcb_get_input_focus(server.connection()),
                                            nullptr));
    }
    TavraMessage next() {
        const std::unique_ptr<xcb_generic_event_t, FreeEvent> event(xcb_wait_for_event(server.connection()));
        if (event == nullptr || (event->response_type & 0x7F) != XCB_CLIENT_MESSAGE) {
            ADD_FAILURE() << "no client message";
            return {};
        }
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
        EXPECT_EQ(message.window, target);
        EXPECT_EQ(message.format, 32);
        EXPECT_EQ(typeName(message.type), "TAVRA_MESSAGE");
        const std::uint32_t* const words = message.data.data32;
        return {words[0], 0, words[1] | std::uint64_t{words[2]} << 32,
                words[3] | std::uint64_t{words[4]} << 32};
    }
    std::string typeName(xcb_atom_t atom) {
        const std::unique_ptr<xcb_get_atom_name_reply_t, FreeEvent> reply(xcb_get_atom_name_reply(
            server.connection(), xcb_get_atom_name(server.connection(), atom), nullptr));
        if (reply == nullptr) return {};
        return {xcb_get_atom_name_name(reply.get()),
                static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
    }
    // What posting to the window gives once the library knows of what happened to it.
    std::uint32_t postUntilRefused() {
        for (int i = 0; i < 100000; ++i) {
            const Status posted = platform::postMessage(handleOf(target), 45061, 1, 0);
            if (!posted.ok()) return posted.code();
        }
        return 0;
    }

    xcb_window_t target;
};

TEST_F(MessagesOnScreen, CarryBothParametersInWholeAndKeepTheirOrder) {
    ASSERT_TRUE(platform::postMessage(handleOf(target), 45067, 0x1122334455667788, 0x99AABBCCDDEEFF00).ok());
    for (std::uint32_t i = 0; i < 500; ++i) {
        ASSERT_TRUE(platform::postMessage(handleOf(target), 45061, i, 0).ok());
    }
    const TavraMessage first = next();
    EXPECT_EQ(first.message, 45067u);
    EXPECT_EQ(first.parameter1, 0x1122334455667788u);
    EXPECT_EQ(first.parameter2, 0x99AABBCCDDEEFF00u);
    for (std::uint32_t i = 0; i < 500; ++i) ASSERT_EQ(next().parameter1, i);
}

TEST_F(MessagesOnScreen, OfAStreamReachAWindow) {
    openMono(6, 4);
    ASSERT_TRUE(Tavra_SetReceiveMsgWindow(handle, handleOf(target)));
    collectRaw();
    ASSERT_TRUE(Tavra_StartTransfer(handle));
    sendFrame(1, pattern(1));
    EXPECT_EQ(raws.waitFor(1).size(), 1u);
    ASSERT_TRUE(Tavra_StopTransfer(handle));
    const auto self = reinterpret_cast<std::uintptr_t>(handle);
    const TavraMessage started = next();
    EXPECT_EQ(started.message, 45057u);
    EXPECT_EQ(started.parameter1, self);
    EXPECT_EQ(started.parameter2, 0u);
    const TavraMessage ended = next();
    EXPECT_EQ(ended.message, 45058u);
    EXPECT_EQ(ended.parameter1, self);
    EXPECT_EQ(ended.parameter2, 0u);
}

TEST_F(MessagesOnScreen, ToAWindowThatEndsAreLostAndTheStreamGoesOn) {
    openMono(6, 4);
    ASSERT_TRUE(Tavra_SetReceiveMsgWindow(handle, handleOf(target)));
    collectRaw();
    ASSERT_TRUE(Tavra_CreatePreviewWindowW(handle, nullptr, kVisible, 0, 0, 8, 8, nullptr, nullptr, 1));
    ASSERT_TRUE(Tavra_StartTransfer(handle));
    sendFrame(1, pattern(1));
    EXPECT_EQ(raws.waitFor(1).size(), 1u);
    server.destroy(target);
    synchronise();
    EXPECT_EQ(postUntilRefused(), 1400u);
    for (std::uint32_t i = 2; i < 20; ++i) sendFrame(i, pattern(1));
    EXPECT_EQ(raws.waitFor(19).size(), 19u);
    ASSERT_TRUE(Tavra_SetReceiveMsgWindow(handle, receiver.window()));
    ASSERT_TRUE(Tavra_StopTransfer(handle));
    ReceivedMessage got;
    do {  // the last frame's may come before
        ASSERT_TRUE(receiver.wait(got, kPatienceMs));
    } while (got.message != 45058);
    EXPECT_EQ(got.parameter2, 0u);
}

TEST_F(MessagesOnScreen, AreRefusedByWhatIsNoWindow) {
    for (const std::uintptr_t number : {1u, 0x00FFFFFFu, 0xFFFFFFFFu}) {
        const auto nothing = reinterpret_cast<TavraWindow>(number);
        platform::nameReceiver(nothing);
        EXPECT_EQ(platform::postMessage(nothing, 45057, 1, 2).code(), 1400u) << number;
    }
    const xcb_window_t unnamed = server.makeWindow(5, 5);
    synchronise();
    EXPECT_EQ(platform::postMessage(handleOf(unnamed), 45057, 1, 2).code(), 1400u);
    EXPECT_TRUE(platform::postMessage(handleOf(target), 45057, 1, 2).ok()) << "the others go on";
}

TEST_F(MessagesOnScreen, StartToAWindowThatIsGoneEndsTheRun) {
    openMono(6, 4);
    server.destroy(target);
    synchronise();
    ASSERT_TRUE(Tavra_SetReceiveMsgWindow(handle, handleOf(target)));
    collectRaw();
    ASSERT_TRUE(Tavra_StartTransfer(handle));
    ASSERT_TRUE(record().captureThread.ended().wait(kPatienceMs));
    EXPECT_TRUE(Tavra_StopTransfer(handle));
}

// An application that does not read has all its messages when it does.
TEST_F(MessagesOnScreen, WaitForAnApplicationThatIsBusy) {
    for (std::uint32_t i = 0; i < 3000; ++i) {
        const Status posted = platform::postMessage(handleOf(target), 45067, 1, i);
        ASSERT_TRUE(posted.ok() || posted.code() == 1816) << "the server may lag behind";
    }
    std::uint64_t last = 0;
    for (int i = 0; i < 100; ++i) {
        const std::uint64_t number = next().parameter2;
        EXPECT_TRUE(i == 0 || number > last);
        last = number;
    }
}

TEST_F(MessagesOnScreen, NeverWaitForAServerThatHangs) {
    server.stop();
    EXPECT_EQ(postUntilRefused(), 1816u);
    server.goOn();
    EXPECT_EQ(next().message, 45061u);
}

TEST_F(MessagesOnScreen, AreRefusedOnceTheServerIsGone) {
    server.kill();
    EXPECT_EQ(postUntilRefused(), 1400u);
    platform::nameReceiver(handleOf(target));
    EXPECT_EQ(platform::postMessage(handleOf(target), 45057, 1, 2).code(), 1400u);
}

}  // namespace
}  // namespace tavra::test
