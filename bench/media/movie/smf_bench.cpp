// Recording raw movies: how fast the file grows, beside a plain loop of writes of the same bytes; and what a
// frame costs the capture thread, beside memcpy of it.
//
// Files are made in the folder that TMPDIR names, one at a time, and removed. Rates of files are measured by
// the clock on the wall, as two threads and the system work on them; the cost of a frame in processor time of
// the thread that hands it in.
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "media/movie/create_avi.h"
#include "platform/page_memory.h"
#include "platform/random_access_file.h"
#include "support/ratio_reporter.h"

namespace tavra::bench {
namespace {

constexpr double kRateTarget = 0.85;
constexpr double kCostTarget = 1 / 1.5;

constexpr std::uint32_t kWidth = 1920, kHeight = 1080;
constexpr std::uint32_t kFramesAFile = 32;
constexpr std::size_t kFrameBytes = std::size_t{kWidth} * kHeight;
constexpr std::uint16_t kSmf = 10;

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "smf_bench: %s\n", what);
    std::exit(1);
}

std::filesystem::path filePath() {
    return std::filesystem::temp_directory_path() / "tavra-smf-bench.smf";
}

const std::uint8_t* frame() {
    static const std::vector<std::uint8_t> bytes = [] {
        std::vector<std::uint8_t> filled(kFrameBytes * 3);
        std::uint32_t state = 1;
        for (std::uint8_t& b : filled)
            b = static_cast<std::uint8_t>((state = state * 1664525u + 1013904223u) >> 24);
        return filled;
    }();
    return bytes.data();
}

struct Release {
    void operator()(movie::CCreateAVI* recorder) const { recorder->Release(); }
};
using RecorderPointer = std::unique_ptr<movie::CCreateAVI, Release>;

RecorderPointer makeRecorder(const movie::RecorderSurroundings& surroundings, std::uint16_t format,
                             std::uint32_t previewFormat) {
    RecorderPointer recorder(new movie::CCreateAVI(surroundings));
    recorder->AddRef();
    recorder->SetFileFormat(format, 0);
    recorder->SetFramesPerFile(0xFFFFFFFF);
    recorder->SetImageFormat(kWidth, kHeight, 0, previewFormat);
    if (recorder->AddFile(filePath().u16string().c_str()) != 0) fail("no file");
    if (recorder->Start() != 0) fail("no start");
    return recorder;
}

void writeFrame(movie::CCreateAVI& recorder, std::uint32_t number) {
    std::uint32_t ended = 0;
    if (recorder.WriteFrame(frame(), number, 1, &ended) != 0 || ended != 0) fail("the writer has ended");
}

// ---- the file

void recordFile(benchmark::State& state) {
    for (auto _ : state) {
        const RecorderPointer recorder = makeRecorder({}, kSmf, 1);
        for (std::uint32_t i = 0; i < kFramesAFile; ++i) writeFrame(*recorder, i);
    }
    std::filesystem::remove(filePath());
}

void writeFile(benchmark::State& state) {
    for (auto _ : state) {
        platform::RandomAccessFile file;
        if (!file.create(filePath().u16string()).ok()) fail("no file");
        std::uint64_t position = 0;
        for (std::uint32_t i = 0; i < kFramesAFile; ++i, position += kFrameBytes) {
            if (!file.write(position, frame(), kFrameBytes).ok()) fail("no room");
        }
    }
    std::filesystem::remove(filePath());
}

// ---- the frame

// Takes frames as fast as they come.
class Nowhere final : public movie::CAVIFile {
  public:
    Nowhere(movie::MovieFiles& files, bool bottomUp) : CAVIFile(files), bottomUp_(bottomUp) {}
    ~Nowhere() override { Stop(); }
    bool StoresBottomUp() const override { return bottomUp_; }
    Status OpenFile(const std::u16string&, std::unique_ptr<movie::FileRecord>& record) override {
        record = std::make_unique<movie::FileRecord>();
        return {};
    }
    Status WriteFrame(movie::FileRecord&, std::uint8_t*, std::uint32_t, std::uint32_t) override { return {}; }
    Status CloseFile(movie::FileRecord&) override { return {}; }
    bool IsFileFull() const override { return false; }

  private:
    const bool bottomUp_;
};

// Formats of the movie by whether it stores the last row first.
constexpr std::uint16_t kTopDown = 1, kBottomUp = 2;

std::unique_ptr<movie::CAVIFile> makeNowhere(std::uint16_t format, std::uint32_t, movie::MovieFiles& files) {
    return std::make_unique<Nowhere>(files, format == kBottomUp);
}

void handFramesIn(benchmark::State& state, std::uint16_t format, std::uint32_t previewFormat) {
    movie::RecorderSurroundings surroundings;
    surroundings.makeWriter = makeNowhere;
    const RecorderPointer recorder = makeRecorder(surroundings, format, previewFormat);
    std::uint32_t number = 0;
    for (auto _ : state) writeFrame(*recorder, number++);
}

// Into as many buffers in turn as a recording has.
void copyFrames(benchmark::State& state, std::size_t bytes) {
    std::array<platform::PageBlock, 10> buffers;
    for (platform::PageBlock& buffer : buffers) {
        if (!buffer.allocate(bytes).ok()) fail("no memory");
    }
    std::size_t next = 0;
    for (auto _ : state) {
        std::memcpy(buffers[next++ % buffers.size()].data(), frame(), bytes);
        benchmark::ClobberMemory();
    }
}

void addFile(std::vector<Pair>& pairs) {
    benchmark::RegisterBenchmark("smf file", recordFile)->UseRealTime()->Repetitions(5);
    benchmark::RegisterBenchmark("plain writes", writeFile)->UseRealTime()->Repetitions(5);
    pairs.push_back({"smf file", "plain writes", kRateTarget});
}

void addFrame(const std::string& name, std::uint16_t format, std::uint32_t previewFormat,
              std::vector<Pair>& pairs) {
    const std::size_t bytes = previewFormat == 1 ? kFrameBytes : 3 * kFrameBytes;
    const std::string ours = name + " frame", reference = name + " memcpy";
    benchmark::RegisterBenchmark(ours.c_str(), handFramesIn, format, previewFormat)->Repetitions(5);
    benchmark::RegisterBenchmark(reference.c_str(), copyFrames, bytes)->Repetitions(5);
    pairs.push_back({ours, reference, kCostTarget});
}

std::vector<Pair> addAll() {
    std::vector<Pair> pairs;
    addFile(pairs);
    addFrame("mono", kTopDown, 1, pairs);
    addFrame("color", kTopDown, 4, pairs);
    addFrame("color bottom-up", kBottomUp, 4, pairs);
    return pairs;
}

}  // namespace
}  // namespace tavra::bench

int main(int argc, char** argv) {
    return tavra::bench::runPairs(argc, argv, tavra::bench::addAll);
}
