#include "platform/linux/codec_choice.h"

#include <mutex>

#include "base/little_endian.h"
#include "platform/last_error.h"

namespace tavra::platform {
namespace {

constexpr std::uint32_t kQualityOfTheRecording = 0xFFFFFFFF;

struct Chooser {
    TavraCodecChooser function = nullptr;
    void* context = nullptr;
};

// What the application has set. The chooser itself is called with the mutex free: it may wait for its user.
std::mutex chooserMutex;
Chooser presentChooser;

Chooser chooser() {
    const std::lock_guard lock(chooserMutex);
    return presentChooser;
}

}  // namespace

CodecChoice::CodecChoice() = default;
CodecChoice::~CodecChoice() = default;

Status CodecChoice::ask(BitmapHeader frames) {
    native_.reset();
    auto asked = std::make_unique<Native>();
    asked->codec.quality = kQualityOfTheRecording;
    const Chooser asking = chooser();
    if (asking.function == nullptr ||
        !asking.function(asking.context, loadLe32(&frames[4]), loadLe32(&frames[8]), loadLe16(&frames[14]),
                         &asked->codec)) {
        return failWith(error::kCodecCancelled);
    }
    native_ = std::move(asked);
    return {};
}

CodecFramework::CodecFramework() = default;
CodecFramework::~CodecFramework() = default;

}  // namespace tavra::platform

void TavraHost_SetCodecChooser(TavraCodecChooser chooser, void* context) {
    const std::lock_guard lock(tavra::platform::chooserMutex);
    tavra::platform::presentChooser = {chooser, context};
}
