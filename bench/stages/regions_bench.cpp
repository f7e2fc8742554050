// Composition of several regions beside memcpy of the same bytes: a full HD frame out of a number of regions,
// one thread. The ratio is memcpy's time over ours: 1 is as fast.
#include <cstring>
#include <functional>
#include <memory>
#include <string>

#include "stages/multi_roi_image.h"
#include "support/full_hd.h"
#include "support/ratio_reporter.h"

namespace tavra::bench {
namespace {

constexpr std::uint64_t kMono8 = 0x01080001;
constexpr std::uint64_t kMono10Packed = 0x010A0046;

// A grid of regions with gaps between them, which compose to a full HD image.
class Grid final : public IRegionInfo {
  public:
    Grid(std::uint32_t columns, std::uint32_t rows) : columns_(columns), rows_(rows) {}

    std::uint32_t GetMaxROICount() override { return columns_ * rows_; }
    std::uint32_t GetROIMode() override { return 0; }
    void GetROI(std::uint32_t index, std::uint32_t* enabled, std::uint32_t* x, std::uint32_t* y,
                std::uint32_t* width, std::uint32_t* height) override {
        constexpr std::uint32_t kGap = 16;
        *enabled = 1;
        *width = kWidth / columns_;
        *height = kHeight / rows_;
        *x = index % columns_ * (*width + kGap);
        *y = index / columns_ * (*height + kGap);
    }
    std::uint32_t GetROIGroup() override { return GetMaxROICount(); }

  private:
    std::uint32_t columns_;
    std::uint32_t rows_;
};

struct Bench {
    CMultiROIImage stage;
    std::vector<std::uint8_t> frame;
};

constexpr std::size_t frameBytes(std::uint64_t format) {
    return std::size_t{kWidth} * kHeight * (format >> 16 & 0xFF) / 8;
}

void addComposition(const std::string& name, Grid grid, std::uint64_t format, bool clear) {
    const auto bench = std::make_shared<Bench>();
    bench->frame.assign(frameBytes(format), 77);
    bench->stage.Setup(&grid, 1);
    add(name, [=] {
        if (clear) bench->stage.ClearComposed();
        benchmark::DoNotOptimize(bench->stage.Compose(0, bench->frame.data(), bench->frame.size(), format));
    });
}

// Both buffers are as old and as aligned as those of the composition.
void addMemcpy(const std::string& name, std::uint64_t format) {
    const auto from = std::make_shared<std::vector<std::uint8_t>>(frameBytes(format), 77);
    const auto to = std::make_shared<std::vector<std::uint8_t>>(frameBytes(format));
    add(name, [=] { std::memcpy(to->data(), from->data(), to->size()); });
}

void addClearAndMemcpy(const std::string& name, std::uint64_t format) {
    const auto from = std::make_shared<std::vector<std::uint8_t>>(frameBytes(format), 77);
    const auto to = std::make_shared<std::vector<std::uint8_t>>(frameBytes(format));
    add(name, [=] {
        std::memset(to->data(), 0, to->size());
        benchmark::ClobberMemory();
        std::memcpy(to->data(), from->data(), to->size());
    });
}

std::vector<Pair> addAll() {
    addMemcpy("memcpy", kMono8);
    addMemcpy("memcpy 10 bits packed", kMono10Packed);
    addClearAndMemcpy("memset and memcpy", kMono8);
    addComposition("2 regions", {2, 1}, kMono8, false);
    addComposition("4 regions", {2, 2}, kMono8, false);
    addComposition("32 regions", {8, 4}, kMono8, false);
    addComposition("4 regions, 10 bits packed", {2, 2}, kMono10Packed, false);
    addComposition("4 regions, cleared first", {2, 2}, kMono8, true);
    return {
        {"2 regions", "memcpy", 0.6},
        {"4 regions", "memcpy", 0.6},
        {"32 regions", "memcpy", 0.5},
        {"4 regions, 10 bits packed", "memcpy 10 bits packed", 0.6},
        {"4 regions, cleared first", "memset and memcpy", 0.6},
    };
}

}  // namespace
}  // namespace tavra::bench

int main(int argc, char** argv) {
    return tavra::bench::runPairs(argc, argv, tavra::bench::addAll);
}
