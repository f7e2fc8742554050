// What the library costs between the USB access library and the application: a stream with one raw callback,
// beside a bare loop of the same reads on the same kind of device.
//
// Both run on a virtual camera without pace, one after the other and several times in turn; the fastest run
// of each counts. Rates are compared within a process only.
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "capture/read_sizes.h"
#include "platform/event.h"
#include "platform/usb_access.h"
#include "tavra/tavra_api.h"

namespace {

using Clock = std::chrono::steady_clock;
using tavra::platform::Event;

constexpr unsigned kFrames = 600;
constexpr unsigned kRounds = 5;
constexpr std::uint32_t kWidth = 1920, kHeight = 1080, kHeader = 64, kPacket = 1024;
constexpr double kWantedRatio = 0.95;
constexpr double kMostMicrosecondsAFrame = 300;  // 3 % of a core at 100 frames a second

struct Cost {
    double seconds = std::numeric_limits<double>::max();
    double cpuSeconds = std::numeric_limits<double>::max();
};

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

class Meter {
  public:
    void begin() {
        cpu_ = cpuSeconds();
        start_ = Clock::now();
    }
    Cost end() const {
        return {std::chrono::duration<double>(Clock::now() - start_).count(), cpuSeconds() - cpu_};
    }

  private:
    double cpu_ = 0;
    Clock::time_point start_;
};

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "stream_bench: %s\n", what);
    std::exit(1);
}

// Counts frames; the first starts the meter, the last stops it.
struct Counter {
    Meter meter;
    Cost cost;
    unsigned frames = 0;
    Event done{Event::Reset::Manual};

    void frame() {
        if (frames == 0) meter.begin();
        if (frames == kFrames) {
            cost = meter.end();
            done.set();
        }
        ++frames;
    }

    static void callback(void*, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t, std::uint16_t,
                         std::uint32_t, void* context, std::uint32_t*) {
        static_cast<Counter*>(context)->frame();
    }
};

Cost throughLibrary() {
    const TavraHandle camera = Tavra_Open(0);
    if (camera == nullptr) fail("no camera");
    Counter counter;
    std::uint32_t identifier = 0;
    std::uint32_t rawSize = 0;
    Tavra_GetRawDataSize(camera, &rawSize);
    if (rawSize != kWidth * kHeight) fail("the camera has another size than the one compared with");
    Tavra_AddRawCallback(camera, Counter::callback, &counter, &identifier);
    if (!Tavra_StartTransfer(camera)) fail("no stream");
    if (!counter.done.wait(60000)) fail("the stream stands");
    Tavra_StopTransfer(camera);
    Tavra_Close(camera);
    return counter.cost;
}

// The reads of the library, in the same memory layout and depth, and nothing else.
Cost bareLoop(const tavra::platform::UsbAccess& usb) {
    const tavra::FrameLayout layout{kHeader, kWidth * kHeight, kPacket};
    const auto sizes = tavra::readSizes(layout, tavra::maximumTransfer(layout)).value();
    const TavraUsbDevice device = usb.openByIndex(0);
    if (device == 0) fail("no device");
    std::unique_ptr<std::uint8_t[]> memory(new std::uint8_t[sizes.bufferSize]);
    struct Slot {
        TavraUsbRead read{};
        Event event{Event::Reset::Manual};
    };
    std::vector<std::unique_ptr<Slot>> slots(sizes.slotCount);
    for (auto& slot : slots) {
        slot = std::make_unique<Slot>();
        slot->read.event = slot->event.native();
    }
    const auto queue = [&](std::uint32_t i) {
        usb.startRead(device, memory.get() + std::uint64_t{i} * sizes.readSize, sizes.readSize,
                      &slots[i]->read);
    };
    usb.beginRead(device);
    for (std::uint32_t i = 0; i < sizes.firstDepth; ++i) queue(i);
    Counter counter;
    for (std::uint32_t i = 0, n = sizes.firstDepth; counter.frames <= kFrames;
         i = (i + 1) % sizes.slotCount) {
        slots[i]->event.wait(tavra::platform::kWaitForever);
        queue(n);
        n = (n + 1) % sizes.slotCount;
        std::uint32_t length = 0;
        if (usb.getReadResult(device, &slots[i]->read, &length, 1) == 0) fail("a read failed");
        if (length < sizes.readSize) counter.frame();
    }
    usb.endRead(device);
    usb.close(device);
    return counter.cost;
}

void keepBest(Cost& best, const Cost& cost) {
    best.seconds = std::min(best.seconds, cost.seconds);
    best.cpuSeconds = std::min(best.cpuSeconds, cost.cpuSeconds);
}

}  // namespace

int main() {
    setenv("TAVRA_VIRTUAL_CAMERAS",
           "mono:identity.maximum_width=1920:identity.maximum_height=1080:width=1920:height=1080:pace=off",
           0);
    const tavra::platform::UsbAccess* usb = nullptr;
    if (!tavra::platform::loadUsbAccess(usb).ok())
        fail("the USB access library is missing (TAVRA_USBD names it)");
    Cost library, bare;
    for (unsigned round = 0; round < kRounds; ++round) {
        keepBest(bare, bareLoop(*usb));
        keepBest(library, throughLibrary());
    }
    const double ratio = bare.seconds / library.seconds;
    const double added = 1e6 * (library.cpuSeconds - bare.cpuSeconds) / kFrames;
    std::printf("%-28s %10s %16s\n", "1920 x 1080, 8 bits", "frames/s", "CPU us a frame");
    std::printf("%-28s %10.0f %16.1f\n", "bare loop", kFrames / bare.seconds,
                1e6 * bare.cpuSeconds / kFrames);
    std::printf("%-28s %10.0f %16.1f\n", "libtavra, one raw callback", kFrames / library.seconds,
                1e6 * library.cpuSeconds / kFrames);
    std::printf("rate against the bare loop: %.3f (wanted %.2f)\n", ratio, kWantedRatio);
    std::printf("CPU time added a frame: %.1f us (at most %.0f)\n", added, kMostMicrosecondsAFrame);
    // Told, not judged: whatever else the two cores do decides about wall-clock time.
    return 0;
}
