// Recording AVI 2.0, uncompressed, beside a plain loop that writes as many bytes past the cache: what of the
// disk's speed a recording sustains: opening and closing are not counted, which do not grow with its length.
// Files of some 600 MB are made in the current folder, which is to be on the
// disk in question, and removed again.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "media/movie/avi_writers.h"
#include "support/full_hd.h"
#include "support/ratio_reporter.h"

namespace tavra::bench {
namespace {

constexpr std::uint32_t kFrames = 100;
constexpr std::uint32_t kStride = kWidth * 3;
constexpr std::uint32_t kFrameBytes = kStride * kHeight;
constexpr std::size_t kChunkBytes = (kFrameBytes + 8 + 2047) / 2048 * 2048;
constexpr std::size_t kBuffers = 10;

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

std::string fileName(const char* side) {
    return "tavra-bench-" + std::to_string(getpid()) + "-" + side + ".avi";
}

// As many frames in memory on either side: what comes from a camera is not in the processor's cache.
using Buffers = std::array<movie::FrameBuffer, kBuffers>;

bool allocate(Buffers& buffers) {
    for (movie::FrameBuffer& buffer : buffers) {
        if (!buffer.allocate(kFrameBytes).ok()) return false;
        for (std::size_t i = 0; i < kFrameBytes; ++i) {
            buffer.image()[i] = static_cast<std::uint8_t>(i * 7 + i / 4093);
        }
    }
    return true;
}

// Frames are handed over as the recorder does, without its copy.
void record(benchmark::State& state) {
    const std::string name = fileName("recorded");
    Buffers buffers;
    if (!allocate(buffers)) return state.SkipWithError("no memory");
    for (auto _ : state) {
        movie::PointerQueue<movie::FrameBuffer> filled, free;
        for (movie::FrameBuffer& buffer : buffers) free.push(&buffer);
        const std::unique_ptr<movie::CAVIFile> writer = movie::makeAviWriter(2, 0, movie::systemMovieFiles());
        writer->filledFrames = &filled;
        writer->freeFrames = &free;
        writer->settings.image = movie::ImageDescription::of(kWidth, kHeight, kStride, 24);
        writer->settings.rowStride = kStride;
        writer->settings.imageBytes = kFrameBytes;
        if (!writer->addFile({name.begin(), name.end()}).ok() || !writer->Start().ok()) {
            state.SkipWithError("the recording does not start");
            break;
        }
        const auto begin = Clock::now();
        const std::array<const platform::Event*, 2> events = {&free.notEmpty(), &writer->ended()};
        // Each buffer is taken once more than it is filled: when its last frame is written.
        std::uint32_t taken = 0;
        for (; taken < kFrames + kBuffers && platform::waitAny(events, platform::kWaitForever) == 0;
             ++taken) {
            movie::FrameBuffer* const buffer = free.pop();
            buffer->position = taken;
            if (taken < kFrames) filled.push(buffer);
        }
        state.SetIterationTime(secondsSince(begin));
        writer->Stop();
        std::remove(name.c_str());
        if (!writer->result().ok() || taken != kFrames + kBuffers) {
            state.SkipWithError("the recording failed");
            break;
        }
    }
    state.SetBytesProcessed(state.iterations() * kFrames * static_cast<std::int64_t>(kChunkBytes));
}

void writePlainly(benchmark::State& state) {
    const std::string name = fileName("plain");
    Buffers buffers;
    if (!allocate(buffers)) return state.SkipWithError("no memory");
    for (auto _ : state) {
        const int file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_DIRECT, 0600);
        bool good = file >= 0;
        const auto begin = Clock::now();
        for (std::uint32_t i = 0; good && i < kFrames; ++i) {
            const std::uint8_t* const chunk = buffers[i % kBuffers].block.data();
            good = ::write(file, chunk, kChunkBytes) == static_cast<ssize_t>(kChunkBytes);
        }
        state.SetIterationTime(secondsSince(begin));
        if (file >= 0) good = ::close(file) == 0 && good;
        std::remove(name.c_str());
        if (!good) {
            state.SkipWithError("this disk takes no writes past the cache");
            break;
        }
    }
    state.SetBytesProcessed(state.iterations() * kFrames * static_cast<std::int64_t>(kChunkBytes));
}

std::vector<Pair> addAll() {
    const auto addOne = [](const char* name, void (*work)(benchmark::State&)) {
        benchmark::RegisterBenchmark(name, work)
            ->Unit(benchmark::kMillisecond)
            ->Iterations(1)
            ->Repetitions(12)
            ->UseManualTime();
    };
    addOne("AVI 2.0, 100 full HD frames", record);
    addOne("O_DIRECT writes", writePlainly);
    return {{"AVI 2.0, 100 full HD frames", "O_DIRECT writes", 0.85}};
}

}  // namespace
}  // namespace tavra::bench

int main(int argc, char** argv) {
    return tavra::bench::runPairs(argc, argv, tavra::bench::addAll);
}
