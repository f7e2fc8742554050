// What a bulk read costs through the USB access library, beside bare libusb with as many transfers in flight:
// the same device, which fills every read at once. Most of both is umockdev; the difference is ours.
#include <benchmark/benchmark.h>
#include <libusb.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "device.h"
#include "libusb/libusb_source.h"
#include "platform/event.h"
#include "support/ratio_reporter.h"
#include "support/umockdev_device.h"

namespace tavra::usbd {
namespace {

constexpr int kDepth = 20;

std::unique_ptr<Device> openCamera(DeviceSource& source) {
    ErrorCode error = 0;
    while (source.enumerate() == 0) std::this_thread::yield();
    return source.open(0u, error);
}

void throughLibrary(benchmark::State& state, std::uint32_t size) {
    test::UmockdevBus bus;
    test::UmockdevDevice camera(bus, {});
    const std::unique_ptr<DeviceSource> source = makeLibusbSource();
    const std::unique_ptr<Device> device = openCamera(*source);
    camera.sendEndlessly();

    std::vector<std::uint8_t> memory(std::size_t{size} * kDepth);
    std::vector<std::unique_ptr<platform::Event>> events;
    std::vector<TavraUsbRead> reads(kDepth);
    for (int i = 0; i < kDepth; ++i) {
        events.push_back(std::make_unique<platform::Event>(platform::Event::Reset::Manual));
        reads[i].event = events[i]->native();
        device->startRead(&memory[std::size_t{size} * i], size, reads[i]);
    }
    int next = 0;
    for (auto _ : state) {
        std::uint32_t transferred = 0;
        events[next]->wait(platform::kWaitForever);
        if (device->readResult(reads[next], transferred, false) != 0 || transferred != size) {
            state.SkipWithError("a read failed");
            break;
        }
        device->startRead(&memory[std::size_t{size} * next], size, reads[next]);
        next = (next + 1) % kDepth;
    }
    device->endRead();
    state.SetBytesProcessed(state.iterations() * size);
}

struct BareLoop {
    std::int64_t completed = 0;
    bool stopping = false;
    int inFlight = 0;

    static void LIBUSB_CALL done(libusb_transfer* transfer) {
        auto& self = *static_cast<BareLoop*>(transfer->user_data);
        ++self.completed;
        if (self.stopping || libusb_submit_transfer(transfer) != LIBUSB_SUCCESS) --self.inFlight;
    }
};

void bareLibusb(benchmark::State& state, std::uint32_t size) {
    test::UmockdevBus bus;
    test::UmockdevDevice camera(bus, {});
    libusb_context* context = nullptr;
    libusb_init(&context);
    libusb_device_handle* handle = nullptr;
    while ((handle = libusb_open_device_with_vid_pid(context, 0x2E6B, 0x0211)) == nullptr) {
        std::this_thread::yield();
    }
    libusb_claim_interface(handle, 0);
    camera.sendEndlessly();

    std::vector<std::uint8_t> memory(std::size_t{size} * kDepth);
    std::vector<libusb_transfer*> transfers;
    BareLoop loop;
    for (int i = 0; i < kDepth; ++i) {
        transfers.push_back(libusb_alloc_transfer(0));
        libusb_fill_bulk_transfer(transfers[i], handle, 0x81, &memory[std::size_t{size} * i],
                                  static_cast<int>(size), &BareLoop::done, &loop, 0);
        if (libusb_submit_transfer(transfers[i]) == LIBUSB_SUCCESS) ++loop.inFlight;
    }
    std::int64_t wanted = 0;
    for (auto _ : state) {
        ++wanted;
        while (loop.completed < wanted) libusb_handle_events(context);
    }
    loop.stopping = true;
    while (loop.inFlight > 0) libusb_handle_events(context);
    for (libusb_transfer* const transfer : transfers) libusb_free_transfer(transfer);
    libusb_close(handle);
    libusb_exit(context);
    state.SetBytesProcessed(state.iterations() * size);
}

void library512KiB(benchmark::State& state) {
    throughLibrary(state, 512 * 1024);
}
void bare512KiB(benchmark::State& state) {
    bareLibusb(state, 512 * 1024);
}
void library64KiB(benchmark::State& state) {
    throughLibrary(state, 64 * 1024);
}
void bare64KiB(benchmark::State& state) {
    bareLibusb(state, 64 * 1024);
}

BENCHMARK(library512KiB)->MeasureProcessCPUTime()->UseRealTime()->Repetitions(3);
BENCHMARK(bare512KiB)->MeasureProcessCPUTime()->UseRealTime()->Repetitions(3);
BENCHMARK(library64KiB)->MeasureProcessCPUTime()->UseRealTime()->Repetitions(3);
BENCHMARK(bare64KiB)->MeasureProcessCPUTime()->UseRealTime()->Repetitions(3);

}  // namespace
}  // namespace tavra::usbd

int main(int argc, char** argv) {
    if (!tavra::bench::initializeShuffled(argc, argv)) return 2;
    tavra::bench::FastestReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    // No targets: the figures are umockdev's, and show only that the library adds little.
    reporter.printRatios({{"library512KiB", "bare512KiB", 0}, {"library64KiB", "bare64KiB", 0}});
    return 0;
}
