#include "camera/defect_pixel_search.h"

#include <algorithm>

namespace tavra {
namespace {

// The places of the list, from the first sample to the last.
class BrightPixelList {
  public:
    BrightPixelList(std::span<BrightPixel> places, std::uint16_t threshold)
        : places_(places), bar_(threshold - 1) {}

    // A sample must be above this to change the list: the one comparison that most samples meet.
    int bar() const { return bar_; }
    std::size_t count() const { return count_; }

    void take(const BrightPixel& pixel) {
        if (count_ < places_.size()) {
            places_[count_++] = pixel;
        } else {
            replaceDimmest(pixel);
        }
        if (count_ == places_.size()) bar_ = dimmest()->value;
    }

  private:
    // The first of the dimmest.
    std::span<BrightPixel>::iterator dimmest() const {
        return std::min_element(places_.begin(), places_.end(),
                                [](const BrightPixel& a, const BrightPixel& b) { return a.value < b.value; });
    }

    void replaceDimmest(const BrightPixel& pixel) {
        const auto leaving = dimmest();
        std::move(leaving + 1, places_.end(), leaving);
        places_.back() = pixel;
    }

    std::span<BrightPixel> places_;
    std::size_t count_ = 0;
    int bar_;
};

}  // namespace

std::size_t findBrightPixels(const DarkImage& image, std::uint16_t threshold, std::span<BrightPixel> list) {
    if (list.empty() || image.width == 0) return 0;
    BrightPixelList bright(list, threshold);
    const std::uint8_t* row = image.pixels;
    for (std::uint32_t y = 0; y < image.height; ++y, row += image.width) {
        for (std::uint32_t x = 0; x < image.width; ++x) {
            if (row[x] > bright.bar()) bright.take({x, y, row[x]});
        }
    }
    return bright.count();
}

}  // namespace tavra
