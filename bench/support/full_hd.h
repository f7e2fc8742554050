// What the benchmarks of the image chain share: the size of the frame, its samples, and how work is measured.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace tavra::bench {

inline constexpr std::uint32_t kWidth = 1920;
inline constexpr std::uint32_t kHeight = 1080;
inline constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

// Noise: no stage's speed should hang on its samples, and noise is what would show it.
template <class Sample>
std::vector<Sample> noise(std::size_t count, unsigned maximum) {
    std::mt19937 random(1);
    std::uniform_int_distribution<unsigned> sample(0, maximum);
    std::vector<Sample> samples(count);
    for (Sample& s : samples) s = static_cast<Sample>(sample(random));
    return samples;
}

// In many short repetitions, of which the reporter keeps the fastest.
inline void add(const std::string& name, const std::function<void()>& work) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [work](benchmark::State& state) {
                                     for (auto _ : state) {
                                         work();
                                         benchmark::ClobberMemory();
                                     }
                                 })
        ->Unit(benchmark::kMillisecond)
        ->MinTime(0.03)
        ->Repetitions(12)
        ->ReportAggregatesOnly(false);
}

}  // namespace tavra::bench
