#include "stream_session.h"

#include <csignal>

#include "error_text.h"
#include "exit_code.h"

namespace tavra::tool {
namespace {

volatile std::sig_atomic_t noted = 0;

}  // namespace

void noteInterrupts() {
    std::signal(SIGINT, [](int) { noted = 1; });
    std::signal(SIGTERM, [](int) { noted = 1; });
}

void endOnInterrupts() {
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
}

bool interrupted() {
    return noted != 0;
}

Failure streamEndedByItself(const Camera& camera, std::uint32_t code) {
    return failure("the stream ended by itself (" + camera.name() + ")", code);
}

Receiver::Receiver() : window_(TavraHost_CreateReceiver()) {
    if (window_ == nullptr) throw Failure("no memory or descriptors for the messages of the camera");
}

std::optional<TavraMessage> Receiver::next(std::uint32_t timeoutMs) const {
    TavraMessage received{};
    if (!TavraHost_WaitMessage(window_, &received, timeoutMs)) return std::nullopt;
    return received;
}

std::optional<std::uint32_t> Receiver::wait(std::uint32_t message, std::uint32_t timeoutMs) const {
    const auto received = next(timeoutMs);
    if (!received || received->message != message) return std::nullopt;
    return static_cast<std::uint32_t>(received->parameter2);
}

StreamSession::StreamSession(const Camera& camera) : camera_(camera) {
    camera_.check(Tavra_SetReceiveMsgWindow(camera_.handle(), receiver_.window()), "cannot receive messages");
    camera_.check(Tavra_StartTransfer(camera_.handle()), "cannot start the stream");
}

StreamSession::~StreamSession() {
    Tavra_StopTransfer(camera_.handle());
    Tavra_SetReceiveMsgWindow(camera_.handle(), nullptr);
}

bool StreamSession::runUntilInterrupted(std::uint32_t milliseconds) const {
    const auto endCode = receiver_.wait(TAVRA_MESSAGE_TRANSFER_ENDED, milliseconds);
    if (endCode) throw streamEndedByItself(camera_, *endCode);
    return interrupted();
}

void StreamSession::run(std::uint32_t milliseconds) const {
    if (runUntilInterrupted(milliseconds)) throw Failure("interrupted", ExitCode::Interrupted);
}

}  // namespace tavra::tool
