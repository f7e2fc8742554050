#include "scene.h"

#include <png.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <mutex>
#include <tuple>

#include "chart.h"

namespace tavra::usbd {
namespace {

constexpr const char* kChart = "chart";
constexpr png_uint_32 kMostPngPixels = 64u << 20;

// A PNG file as 8-bit RGB.
class PngFile {
  public:
    explicit PngFile(const std::string& path) {
        image_.version = PNG_IMAGE_VERSION;
        good_ = png_image_begin_read_from_file(&image_, path.c_str()) != 0 && image_.width > 0 &&
                image_.height > 0 && image_.width <= kMostPngPixels / image_.height;
    }
    ~PngFile() { png_image_free(&image_); }
    PngFile(const PngFile&) = delete;
    PngFile& operator=(const PngFile&) = delete;

    bool good() const { return good_; }

    bool read() {
        image_.format = PNG_FORMAT_RGB;
        bytes_.resize(PNG_IMAGE_SIZE(image_));
        good_ = good_ && png_image_finish_read(&image_, nullptr, bytes_.data(), 0, nullptr) != 0;
        return good_;
    }

    std::uint32_t width() const { return image_.width; }
    std::uint32_t height() const { return image_.height; }

    double sample(double x, double y, int channel) const {
        const double left = std::clamp(x, 0.0, width() - 1.0), top = std::clamp(y, 0.0, height() - 1.0);
        const auto x0 = static_cast<std::uint32_t>(left), y0 = static_cast<std::uint32_t>(top);
        const std::uint32_t x1 = std::min(x0 + 1, width() - 1), y1 = std::min(y0 + 1, height() - 1);
        const double u = left - x0, v = top - y0;
        return (1 - v) * ((1 - u) * byte(x0, y0, channel) + u * byte(x1, y0, channel)) +
               v * ((1 - u) * byte(x0, y1, channel) + u * byte(x1, y1, channel));
    }

  private:
    double byte(std::uint32_t x, std::uint32_t y, int channel) const {
        return bytes_[(std::size_t{y} * width() + x) * 3 + static_cast<std::size_t>(channel)];
    }

    png_image image_{};
    bool good_ = false;
    std::vector<std::uint8_t> bytes_;
};

std::shared_ptr<const Scene> readPng(const std::string& path, std::uint32_t width, std::uint32_t height) {
    PngFile file(path);
    if (!file.good() || !file.read()) return nullptr;
    auto scene = std::make_shared<Scene>();
    scene->width = width;
    scene->height = height;
    scene->pixels.resize(std::size_t{width} * height);
    const double scale = std::min(double{1} * file.width() / width, double{1} * file.height() / height);
    const double left = (file.width() - width * scale) / 2, top = (file.height() - height * scale) / 2;
    std::size_t at = 0;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x, ++at) {
            const double fx = left + (x + 0.5) * scale - 0.5, fy = top + (y + 0.5) * scale - 0.5;
            for (int c = 0; c < 3; ++c) {
                const double value = file.sample(fx, fy, c) * 257 + 0.5;
                scene->pixels[at][static_cast<std::size_t>(c)] = static_cast<std::uint16_t>(value);
            }
        }
    }
    return scene;
}

}  // namespace

std::shared_ptr<const Scene> sceneOf(const std::string& source, std::uint32_t width, std::uint32_t height) {
    static std::mutex mutex;
    static auto& scenes =
        *new std::map<std::tuple<std::string, std::uint32_t, std::uint32_t>, std::weak_ptr<const Scene>>;
    const std::lock_guard lock(mutex);
    std::weak_ptr<const Scene>& known = scenes[{source, width, height}];
    if (auto scene = known.lock()) return scene;
    auto scene = source == kChart ? drawChart(width, height) : readPng(source, width, height);
    known = scene;
    return scene;
}

bool isScene(const std::string& source) {
    return source == kChart || PngFile(source).good();
}

}  // namespace tavra::usbd
