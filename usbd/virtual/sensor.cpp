#include "sensor.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "noise.h"

namespace tavra::usbd {
namespace {

constexpr double kRedShare = 0.299, kGreenShare = 0.587, kBlueShare = 0.114;

struct SensorPixel {
    std::uint32_t x, y;
    float strength;
};

std::size_t channelOf(Site site) {
    return site == Site::Red ? 0 : site == Site::Blue ? 2 : 1;
}

// Positions and strengths follow from the seed alone.
std::vector<SensorPixel> hotPixels(const Model& model) {
    std::vector<SensorPixel> pixels;
    RandomBits random(model.sensor.seed, 0x486F74);
    for (std::uint32_t i = 0; i < model.sensor.hotPixels; ++i) {
        const auto x = static_cast<std::uint32_t>(random.next() % model.geometry.sensorWidth);
        const auto y = static_cast<std::uint32_t>(random.next() % model.geometry.sensorHeight);
        pixels.push_back({x, y, 0.25f + static_cast<float>(random.next() & 0xFFFF) / 65536.0f});
    }
    return pixels;
}

constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();

// One axis of a panel: for every column (or row) sent, the first sensor pixel that goes into it.
struct Axis {
    std::vector<std::uint32_t> places;
    std::vector<std::uint8_t> phases;
    std::uint32_t binned, binStep, sensorSize;

    std::uint32_t place(std::size_t i, std::uint32_t bin) const {
        return std::min(places[i] + bin * binStep, sensorSize - 1);
    }
    std::size_t find(std::uint32_t sensorPlace) const {
        const auto found = std::find(places.begin(), places.end(), sensorPlace);
        return found != places.end() ? static_cast<std::size_t>(found - places.begin()) : kNowhere;
    }
};

struct AxisReadout {
    std::uint32_t skip, bin, sensorSize;
    bool mirror, keepsPhase;
};

Axis makeAxis(std::vector<std::uint32_t> sent, const AxisReadout& readout, std::uint32_t period) {
    Axis axis{{}, {}, readout.bin, period * readout.skip, readout.sensorSize};
    std::vector<std::uint32_t> phaseOf = sent;
    if (readout.mirror) std::reverse(sent.begin(), sent.end());
    if (readout.mirror && !readout.keepsPhase) phaseOf = sent;
    for (std::size_t i = 0; i < sent.size(); ++i) {
        // Cells of the mosaic are skipped and binned as wholes, so that like sites meet.
        const std::uint32_t cell = sent[i] / period * period * readout.skip * readout.bin;
        axis.places.push_back(std::min(cell + sent[i] % period, readout.sensorSize - 1));
        axis.phases.push_back(static_cast<std::uint8_t>(phaseOf[i] % period));
    }
    return axis;
}

class Mapper {
  public:
    Mapper(const Model& model, const ViewSettings& view, const Scene& scene)
        : model_(model), view_(view), scene_(scene), hot_(hotPixels(model)) {
        map_.samples = samplesOf(view.transferBits, view.colorArray);
        map_.colorArray = view.colorArray;
        period_ = map_.samples == Samples::Mosaic ? mosaicPeriod(view.colorArray) : 1;
        centerX_ = (model.geometry.sensorWidth - 1) / 2.0;
        centerY_ = (model.geometry.sensorHeight - 1) / 2.0;
        const double corner = centerX_ * centerX_ + centerY_ * centerY_;
        vignetting_ = corner > 0 ? model.sensor.vignetting / corner : 0;
    }

    SignalMap take() { return std::move(map_); }

    void addPanel(const std::vector<std::uint32_t>& columns, const std::vector<std::uint32_t>& rows) {
        const ReadoutFactors& f = view_.factors;
        const GeometryModel& g = model_.geometry;
        const Axis x = makeAxis(
            columns, {f.skipX, f.binX, g.sensorWidth, view_.mirrorX, model_.sensor.mirrorKeepsPhaseX},
            period_);
        const Axis y = makeAxis(
            rows, {f.skipY, f.binY, g.sensorHeight, view_.mirrorY, model_.sensor.mirrorKeepsPhaseY}, period_);
        SignalMap::Panel panel;
        panel.width = static_cast<std::uint32_t>(columns.size());
        panel.height = static_cast<std::uint32_t>(rows.size());
        panel.columnPhase = x.phases;
        panel.rowPhase = y.phases;
        panel.first = map_.signal.size();
        map_.signal.reserve(panel.first + columns.size() * rows.size() * map_.channels());
        for (std::size_t row = 0; row < rows.size(); ++row) {
            for (std::size_t column = 0; column < columns.size(); ++column) addPixel(x, y, column, row);
        }
        addHotPixels(panel, x, y);
        correctPixels(panel, x, y);
        map_.panels.push_back(std::move(panel));
    }

  private:
    void addPixel(const Axis& x, const Axis& y, std::size_t column, std::size_t row) {
        std::array<double, 3> sum{};
        for (std::uint32_t j = 0; j < y.binned; ++j) {
            for (std::uint32_t i = 0; i < x.binned; ++i) collect(x.place(column, i), y.place(row, j), sum);
        }
        const double share = view_.factors.sum ? 1.0 : 1.0 / (x.binned * y.binned);
        const auto add = [&](double signal) { map_.signal.push_back(static_cast<float>(signal * share)); };
        switch (map_.samples) {
            case Samples::Color: std::for_each(sum.begin(), sum.end(), add); break;
            case Samples::Grey: add(kRedShare * sum[0] + kGreenShare * sum[1] + kBlueShare * sum[2]); break;
            case Samples::Mosaic: {
                const Site site = siteAt(map_.colorArray, x.phases[column], y.phases[row]);
                const std::size_t c = channelOf(site);
                add(sum[c] * model_.sensor.response[c]);
                break;
            }
        }
    }

    void collect(std::uint32_t x, std::uint32_t y, std::array<double, 3>& sum) const {
        const double dx = x - centerX_, dy = y - centerY_;
        const double falloff = (1 - vignetting_ * (dx * dx + dy * dy)) / 65535;
        const auto& pixel = scene_.at(x, y);
        for (std::size_t c = 0; c < 3; ++c) sum[c] += pixel[c] * falloff;
    }

    // Colour and grey pictures are made of many pixels each: a hot one is lost among them.
    void addHotPixels(const SignalMap::Panel& panel, const Axis& x, const Axis& y) {
        if (map_.samples == Samples::Color) return;
        for (const SensorPixel& pixel : hot_) {
            if (isCorrected(pixel)) continue;
            const std::size_t column = x.find(pixel.x), row = y.find(pixel.y);
            if (column == kNowhere || row == kNowhere) continue;
            map_.hot.push_back({panel.first + row * panel.width + column, pixel.strength});
        }
        std::sort(map_.hot.begin(), map_.hot.end(), [](auto& a, auto& b) { return a.sample < b.sample; });
    }

    // The camera puts the mean of the next pixels of the same colour, left and right, in a listed pixel's
    // place.
    void correctPixels(const SignalMap::Panel& panel, const Axis& x, const Axis& y) {
        if (map_.samples == Samples::Color) return;
        for (const auto& [pixelX, pixelY] : view_.correctedPixels) {
            const std::size_t column = x.find(pixelX), row = y.find(pixelY);
            if (column == kNowhere || row == kNowhere) continue;
            float* const line = map_.signal.data() + panel.first + row * panel.width;
            const bool hasLeft = column >= period_, hasRight = column + period_ < panel.width;
            if (!hasLeft && !hasRight) continue;
            const float left = line[hasLeft ? column - period_ : column + period_];
            const float right = line[hasRight ? column + period_ : column - period_];
            line[column] = (left + right) / 2;
        }
    }

    bool isCorrected(const SensorPixel& pixel) const {
        return std::any_of(
            view_.correctedPixels.begin(), view_.correctedPixels.end(),
            [&](const auto& place) { return place.first == pixel.x && place.second == pixel.y; });
    }

    const Model& model_;
    const ViewSettings& view_;
    const Scene& scene_;
    const std::vector<SensorPixel> hot_;
    SignalMap map_;
    std::uint32_t period_ = 1;
    double centerX_ = 0, centerY_ = 0, vignetting_ = 0;
};

// What differs from place to place of a row in the mosaic: how much light is collected, and the gain.
struct RowFactors {
    std::array<float, 4> collected{}, gain{};
};

RowFactors rowFactors(const FrameSettings& settings, const SignalMap& map, std::uint8_t rowPhase) {
    RowFactors factors;
    for (std::uint32_t phase = 0; phase < factors.gain.size(); ++phase) {
        double collected = settings.exposure * settings.light, gain = settings.gain;
        if (map.samples == Samples::Mosaic) {
            const Site site = siteAt(map.colorArray, phase, rowPhase);
            collected *= settings.lightColor[channelOf(site)];
            gain *= settings.whiteBalance[static_cast<std::size_t>(site)];
        }
        factors.collected[phase] = static_cast<float>(collected);
        factors.gain[phase] = static_cast<float>(gain);
    }
    return factors;
}

}  // namespace

Site siteAt(std::uint16_t colorArray, std::uint32_t x, std::uint32_t y) {
    if (colorArray >= 16) return siteAt(static_cast<std::uint16_t>(colorArray - 14), x / 2, y / 2);
    if (colorArray >= 12) return siteAt(static_cast<std::uint16_t>(colorArray - 10), x, y);
    // Code 2 is R Gr / Gb B; the others begin at another of its four pixels.
    const std::uint32_t shift = colorArray - 2u;
    const std::uint32_t column = (x + shift) & 1, row = (y + (shift >> 1)) & 1;
    return static_cast<Site>(row * 2 + column);
}

std::uint32_t mosaicPeriod(std::uint16_t colorArray) {
    return colorArray == 1 ? 1 : colorArray >= 16 ? 4 : 2;
}

Samples samplesOf(std::uint32_t transferBits, std::uint16_t colorArray) {
    constexpr std::uint32_t kMosaicCodes = 1 | 2 | 4 | 8 | 16 | 0x10000 | 0x20000;
    constexpr std::uint32_t kMonoCodes = 32 | 64 | 128 | 256 | 512 | 0x100000 | 0x200000;
    if ((transferBits & kMosaicCodes) != 0) return colorArray == 1 ? Samples::Grey : Samples::Mosaic;
    return (transferBits & kMonoCodes) != 0 ? Samples::Grey : Samples::Color;
}

SignalMap mapSignal(const Model& model, const ViewSettings& view, const Scene& scene) {
    Mapper mapper(model, view, scene);
    if (view.grid) {
        mapper.addPanel(view.columns, view.rows);
        return mapper.take();
    }
    for (const Region& region : view.regions) {
        std::vector<std::uint32_t> columns(region.width), rows(region.height);
        std::iota(columns.begin(), columns.end(), region.x);
        std::iota(rows.begin(), rows.end(), region.y);
        mapper.addPanel(columns, rows);
    }
    return mapper.take();
}

void exposeRow(const Model& model, const FrameSettings& settings, const SignalMap& map,
               const SignalMap::Panel& panel, std::uint32_t row, std::uint32_t variant,
               std::span<std::uint16_t> samples) {
    const std::size_t channels = map.channels(), count = panel.width * channels;
    const std::size_t first = panel.first + row * count;
    const float* const signal = map.signal.data() + first;
    const auto fullWell = static_cast<float>(model.sensor.fullWell);
    const auto readVariance = static_cast<float>(model.sensor.readNoise * model.sensor.readNoise);
    const auto top = static_cast<float>((1u << model.sensor.bits) - 1);
    const auto black = static_cast<float>(settings.black);
    const RowFactors factors = rowFactors(settings, map, panel.rowPhase[row]);
    auto hot =
        std::lower_bound(map.hot.begin(), map.hot.end(), first,
                         [](const SignalMap::HotPixel& pixel, std::size_t at) { return pixel.sample < at; });
    NoiseRow noise(model.sensor.seed, variant, static_cast<std::uint32_t>(panel.first), row);

    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t phase = channels == 1 ? panel.columnPhase[i] & 3u : 0u;
        float charge = signal[i] * factors.collected[phase];
        for (; hot != map.hot.end() && hot->sample == first + i; ++hot) {
            charge += hot->strength * static_cast<float>(settings.exposure);
        }
        charge = std::min(charge, 1.0f);
        if (model.sensor.noise)
            charge += noise.next() * std::sqrt(charge * fullWell + readVariance) / fullWell;
        const float value = (charge * factors.gain[phase] + black) * top + 0.5f;
        samples[i] = static_cast<std::uint16_t>(std::clamp(value, 0.0f, top));
    }
}

}  // namespace tavra::usbd
