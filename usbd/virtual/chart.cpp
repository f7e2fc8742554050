#include "chart.h"

#include <array>
#include <cmath>
#include <numbers>

#include "canvas.h"

namespace tavra::usbd {
namespace {

constexpr Color kPanel{0.085, 0.092, 0.11};
constexpr Color kPaper{0.90, 0.90, 0.885};
constexpr Color kInk{0.045, 0.045, 0.05};
constexpr Color kLine{0.62, 0.66, 0.72};

// Four rows of six: things of the world, mixed colours, primaries, greys.
constexpr std::array<Color, 24> kPatches{{
    {0.47, 0.33, 0.27}, {0.79, 0.60, 0.52}, {0.36, 0.50, 0.64}, {0.35, 0.44, 0.26}, {0.52, 0.51, 0.71},
    {0.40, 0.76, 0.69}, {0.86, 0.50, 0.17}, {0.28, 0.37, 0.68}, {0.77, 0.34, 0.40}, {0.37, 0.24, 0.43},
    {0.64, 0.75, 0.25}, {0.91, 0.66, 0.19}, {0.16, 0.25, 0.60}, {0.28, 0.60, 0.30}, {0.71, 0.20, 0.23},
    {0.93, 0.80, 0.15}, {0.75, 0.33, 0.60}, {0.04, 0.53, 0.65}, {0.92, 0.92, 0.91}, {0.76, 0.76, 0.76},
    {0.60, 0.60, 0.60}, {0.44, 0.44, 0.44}, {0.29, 0.29, 0.29}, {0.15, 0.15, 0.15},
}};

double mix(double a, double b, double t) {
    return a + (b - a) * t;
}

Color mix(const Color& a, const Color& b, double t) {
    return {mix(a[0], b[0], t), mix(a[1], b[1], t), mix(a[2], b[2], t)};
}

// A part of a box, in fractions of it.
Box part(const Box& box, double left, double top, double right, double bottom) {
    return {mix(box.left, box.right, left), mix(box.top, box.bottom, top), mix(box.left, box.right, right),
            mix(box.top, box.bottom, bottom)};
}

void drawBackground(Scene& scene) {
    constexpr Color kTop{0.42, 0.50, 0.60}, kBottom{0.25, 0.27, 0.36}, kGlow{0.64, 0.66, 0.68};
    std::size_t at = 0;
    for (std::uint32_t y = 0; y < scene.height; ++y) {
        for (std::uint32_t x = 0; x < scene.width; ++x, ++at) {
            const double u = (x + 0.5) / scene.width, v = (y + 0.5) / scene.height;
            const double glow = std::exp(-5 * ((u - 0.3) * (u - 0.3) + (v - 0.12) * (v - 0.12)));
            const Color color = mix(mix(kTop, kBottom, v), kGlow, 0.45 * glow);
            for (std::size_t c = 0; c < 3; ++c) {
                scene.pixels[at][c] = static_cast<std::uint16_t>(std::lround(color[c] * 65535));
            }
        }
    }
}

// Rings in the corners, to see focus and distortion there.
void drawCorners(Canvas& canvas, const Box& all, double unit) {
    for (const double x : {all.left + unit * 0.8, all.right - unit * 0.8}) {
        for (const double y : {all.top + unit * 0.8, all.bottom - unit * 0.8}) {
            for (const double radius : {0.30, 0.19, 0.08})
                canvas.ring(x, y, unit * radius, unit * 0.035, kLine);
        }
    }
}

void drawPatches(Canvas& canvas, const Box& box, double unit) {
    canvas.roundedBox(box, unit * 0.18, kPanel);
    const Box inner = box.inset(unit * 0.16);
    for (std::size_t i = 0; i < kPatches.size(); ++i) {
        const std::size_t below = i / 6;
        const double column = static_cast<double>(i % 6), row = static_cast<double>(below);
        const Box cell = part(inner, column / 6, row / 4, (column + 1) / 6, (row + 1) / 4);
        canvas.roundedBox(cell.inset(unit * 0.055), unit * 0.06, kPatches[i]);
    }
}

// A wheel of wedges that grow finer towards the middle.
void drawStar(Canvas& canvas, double x0, double y0, double radius) {
    constexpr double kWedges = 36;
    canvas.disc(x0, y0, radius * 1.08, kPanel);
    canvas.disc(x0, y0, radius, kPaper);
    const auto wedge = [&](double x, double y) {
        const double distance = std::hypot(x - x0, y - y0);
        const double turn = std::atan2(y - y0, x - x0) * kWedges / (2 * std::numbers::pi);
        const double across = std::abs(turn - std::floor(turn) - 0.5) - 0.25;  // of a pair of wedges
        const double edge = across * distance * 2 * std::numbers::pi / kWedges;
        return std::max(edge, distance - radius * 0.94);
    };
    canvas.fill({x0 - radius, y0 - radius, x0 + radius, y0 + radius}, wedge,
                [](double, double) { return kInk; });
    canvas.disc(x0, y0, radius * 0.075, kPaper);
    canvas.disc(x0, y0, radius * 0.035, kInk);
}

// Lines that stand closer from group to group, upright in the upper half and level in the lower.
void drawLines(Canvas& canvas, const Box& box, double unit) {
    canvas.roundedBox(box, unit * 0.12, kPaper);
    const Box inner = box.inset(unit * 0.16);
    constexpr int kGroups = 5;
    for (int group = 0; group < kGroups; ++group) {
        const double pitch = unit * 0.16 / std::pow(1.55, group);
        const Box cell = part(inner, group / 5.0, 0, (group + 0.84) / 5.0, 1);
        const Box upper = part(cell, 0, 0, 1, 0.46), lower = part(cell, 0, 0.54, 1, 1);
        for (double at = 0; at + pitch / 2 <= upper.width(); at += pitch) {
            canvas.roundedBox({upper.left + at, upper.top, upper.left + at + pitch / 2, upper.bottom}, 0,
                              kInk);
        }
        for (double at = 0; at + pitch / 2 <= lower.height(); at += pitch) {
            canvas.roundedBox({lower.left, lower.top + at, lower.right, lower.top + at + pitch / 2}, 0, kInk);
        }
    }
}

void drawGreys(Canvas& canvas, const Box& box, double unit) {
    canvas.roundedBox(box, unit * 0.14, kPanel);
    const Box inner = box.inset(unit * 0.12);
    constexpr int kSteps = 16;
    const Box steps = part(inner, 0, 0, 1, 0.52), ramp = part(inner, 0, 0.60, 1, 1);
    for (int i = 0; i < kSteps; ++i) {
        const double grey = mix(0.02, 0.92, i / (kSteps - 1.0));
        canvas.roundedBox(part(steps, i / 16.0, 0, (i + 1) / 16.0, 1), 0, {grey, grey, grey});
    }
    canvas.fill(
        ramp, [&](double x, double y) { return roundedBoxDistance(ramp, 0, x, y); },
        [&](double x, double) {
            const double grey = mix(0.02, 0.92, (x - ramp.left) / ramp.width());
            return Color{grey, grey, grey};
        });
}

// Three discs that mix, over a strip of all hues.
void drawColors(Canvas& canvas, const Box& box, double unit) {
    const double radius = std::min(box.width() / 3.4, box.height() * 0.36);
    const double x = box.centerX(), y = box.top + radius * 1.6;
    canvas.disc(x, y - radius * 0.52, radius, {0.86, 0.20, 0.22}, 0.88);
    canvas.disc(x - radius * 0.6, y + radius * 0.45, radius, {0.18, 0.66, 0.34}, 0.72);
    canvas.disc(x + radius * 0.6, y + radius * 0.45, radius, {0.16, 0.34, 0.82}, 0.64);
    const Box strip{box.left, box.bottom - unit * 0.42, box.right, box.bottom};
    canvas.fill(
        strip, [&](double px, double py) { return roundedBoxDistance(strip, unit * 0.1, px, py); },
        [&](double px, double) {
            const double hue = (px - strip.left) / strip.width() * 2 * std::numbers::pi;
            const double third = 2 * std::numbers::pi / 3;
            return Color{0.48 + 0.38 * std::cos(hue), 0.48 + 0.38 * std::cos(hue - third),
                         0.48 + 0.38 * std::cos(hue + third)};
        });
}

}  // namespace

std::shared_ptr<const Scene> drawChart(std::uint32_t width, std::uint32_t height) {
    auto scene = std::make_shared<Scene>();
    scene->width = width;
    scene->height = height;
    scene->pixels.resize(std::size_t{width} * height);
    drawBackground(*scene);

    Canvas canvas(*scene);
    const Box all{0, 0, static_cast<double>(width), static_cast<double>(height)};
    const double unit = std::min(width / 16.0, height / 9.0);
    drawCorners(canvas, all, unit);
    drawPatches(canvas, part(all, 0.075, 0.13, 0.475, 0.645), unit);
    drawGreys(canvas, part(all, 0.075, 0.72, 0.645, 0.885), unit);
    const Box starBox = part(all, 0.50, 0.12, 0.75, 0.655);
    drawStar(canvas, starBox.centerX(), starBox.centerY(), std::min(starBox.width(), starBox.height()) / 2.1);
    drawColors(canvas, part(all, 0.775, 0.13, 0.925, 0.645), unit);
    drawLines(canvas, part(all, 0.675, 0.72, 0.925, 0.885), unit);
    return scene;
}

}  // namespace tavra::usbd
