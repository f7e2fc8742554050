// Shapes with soft edges on a picture, for the chart. Coordinates are pixels of the picture, real numbers; a
// pixel's middle is at one half.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "scene.h"

namespace tavra::usbd {

using Color = std::array<double, 3>;  // red, green, blue, 0 to 1

struct Box {
    double left, top, right, bottom;

    double width() const { return right - left; }
    double height() const { return bottom - top; }
    double centerX() const { return (left + right) / 2; }
    double centerY() const { return (top + bottom) / 2; }
    Box inset(double by) const { return {left + by, top + by, right - by, bottom - by}; }
};

// Distances from the edge of a shape, negative inside.
inline double roundedBoxDistance(const Box& box, double radius, double x, double y) {
    const double dx = std::abs(x - box.centerX()) - box.width() / 2 + radius;
    const double dy = std::abs(y - box.centerY()) - box.height() / 2 + radius;
    return std::hypot(std::max(dx, 0.0), std::max(dy, 0.0)) + std::min(std::max(dx, dy), 0.0) - radius;
}

inline double discDistance(double centerX, double centerY, double radius, double x, double y) {
    return std::hypot(x - centerX, y - centerY) - radius;
}

class Canvas {
  public:
    explicit Canvas(Scene& scene) : scene_(scene) {}

    // Blends `color(x, y)` over the pixels inside `box`, by the coverage that `distance(x, y)` gives and
    // `opacity`.
    template <typename Distance, typename Paint>
    void fill(const Box& box, Distance distance, Paint color, double opacity = 1) {
        const int left = std::max(static_cast<int>(box.left) - 1, 0),
                  top = std::max(static_cast<int>(box.top) - 1, 0);
        const int right = std::min(static_cast<int>(box.right) + 2, static_cast<int>(scene_.width));
        const int bottom = std::min(static_cast<int>(box.bottom) + 2, static_cast<int>(scene_.height));
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x) {
                const double middleX = x + 0.5, middleY = y + 0.5;
                const double coverage = std::clamp(0.5 - distance(middleX, middleY), 0.0, 1.0) * opacity;
                if (coverage > 0) blend(x, y, color(middleX, middleY), coverage);
            }
        }
    }

    void roundedBox(const Box& box, double radius, const Color& color, double opacity = 1) {
        fill(
            box, [&](double x, double y) { return roundedBoxDistance(box, radius, x, y); },
            [&](double, double) { return color; }, opacity);
    }

    void disc(double centerX, double centerY, double radius, const Color& color, double opacity = 1) {
        fill(
            {centerX - radius, centerY - radius, centerX + radius, centerY + radius},
            [&](double x, double y) { return discDistance(centerX, centerY, radius, x, y); },
            [&](double, double) { return color; }, opacity);
    }

    void ring(double centerX, double centerY, double radius, double thickness, const Color& color) {
        const double outer = radius + thickness;
        fill(
            {centerX - outer, centerY - outer, centerX + outer, centerY + outer},
            [&](double x, double y) {
                return std::abs(discDistance(centerX, centerY, radius, x, y)) - thickness / 2;
            },
            [&](double, double) { return color; });
    }

  private:
    void blend(int x, int y, const Color& color, double coverage) {
        auto& pixel = scene_.pixels[static_cast<std::size_t>(y) * scene_.width + static_cast<std::size_t>(x)];
        for (std::size_t c = 0; c < 3; ++c) {
            const double value = pixel[c] + (std::clamp(color[c], 0.0, 1.0) * 65535 - pixel[c]) * coverage;
            pixel[c] = static_cast<std::uint16_t>(std::lround(value));
        }
    }

    Scene& scene_;
};

}  // namespace tavra::usbd
