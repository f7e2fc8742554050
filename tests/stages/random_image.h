// Images of random samples with every kind of row, for stages that work in place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace tavra::test {

template <class Sample>
struct RandomImage {
    std::uint32_t width, height;
    std::uint32_t stride;  // as the stage is told: 0 for rows of a multiple of four bytes
    std::size_t pitch;     // samples of a pixel
    std::size_t rowSamples;
    std::vector<Sample> samples;

    Sample& at(std::size_t x, std::size_t y, std::size_t channel) {
        return samples[y * rowSamples + x * pitch + channel];
    }
    const Sample& at(std::size_t x, std::size_t y, std::size_t channel) const {
        return samples[y * rowSamples + x * pitch + channel];
    }
};

// Small images of any size from 0 x 0, or a few rows of some hundred pixels; the default stride or a larger
// one, samples up to `maximum`.
template <class Sample>
RandomImage<Sample> randomImage(std::mt19937& random, std::size_t pitch, unsigned maximum) {
    RandomImage<Sample> image;
    const auto upTo = [&random](unsigned largest) { return static_cast<unsigned>(random() % (largest + 1)); };
    const bool wide = random() % 4 == 0;
    image.width = upTo(wide ? 300 : 20);
    image.height = upTo(wide ? 4 : 12);
    image.pitch = pitch;
    const std::size_t rowBytes = image.width * pitch * sizeof(Sample);
    const bool dense = random() % 2 == 0;
    const std::size_t strideBytes =
        dense ? (rowBytes + 3) / 4 * 4 : rowBytes + sizeof(Sample) * (1 + upTo(40));
    image.stride = dense ? 0 : static_cast<std::uint32_t>(strideBytes);
    image.rowSamples = strideBytes / sizeof(Sample);
    image.samples.resize(image.rowSamples * image.height);
    for (Sample& sample : image.samples) sample = static_cast<Sample>(upTo(maximum));
    return image;
}

// Rows that overlap: each begins a sample or more behind the one above, and inside it. Some samples more lie
// behind the last row.
template <class Sample>
RandomImage<Sample> overlappingImage(std::mt19937& random, std::size_t pitch, unsigned maximum) {
    RandomImage<Sample> image;
    image.width = 2 + random() % (random() % 4 == 0 ? 200 : 20);
    image.height = 1 + random() % 12;
    image.pitch = pitch;
    const std::size_t row = image.width * pitch;
    image.rowSamples = 1 + random() % (row - 1);
    image.stride = static_cast<std::uint32_t>(image.rowSamples * sizeof(Sample));
    image.samples.resize(image.rowSamples * (image.height - 1) + row + 64);
    for (Sample& sample : image.samples) sample = static_cast<Sample>(random() % (maximum + 1));
    return image;
}

// What a plain reference makes of each pixel, row after row: `change(pixel)` on the first of its samples.
template <class Sample, class Change>
std::vector<Sample> changedPixels(RandomImage<Sample> image, Change change) {
    for (std::size_t y = 0; y < image.height; ++y)
        for (std::size_t x = 0; x < image.width; ++x) change(&image.at(x, y, 0));
    return image.samples;
}

}  // namespace tavra::test
