// The pictures of docs/image-chain.md: what each stage of the chain does to an image, taken from virtual
// cameras through the public interface.
//
// usage: chain_pictures <folder of the sources> <folder to write to> [name...]
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <string>
#include <system_error>
#include <vector>

#include "picture.h"
#include "virtual_camera.h"

namespace tavra::pictures {
namespace {

namespace fs = std::filesystem;

const std::string kFaultless = ":noise=off:vignetting=0:hotpixels=0";

// A camera with a sensor of that size, small enough to be shown whole.
std::string sized(const std::string& model, std::uint32_t width, std::uint32_t height,
                  const std::string& more) {
    const std::string across = std::to_string(width), down = std::to_string(height);
    return model + ":geometry.sensor_width=" + across + ":geometry.sensor_height=" + down +
           ":x=0:y=0:width=" + across + ":height=" + down + ":pace=off" + more;
}

std::string small(const std::string& model, const std::string& more = kFaultless) {
    return sized(model, 320, 180, more);
}

// Parts of the chart on the small sensor.
constexpr Box kStar{168, 38, 64, 48};
constexpr Box kDiscs{246, 30, 64, 48};
constexpr Box kStarAndDiscs{176, 40, 104, 72};
constexpr Box kGreys{16, 90, 160, 80};

Picture detail(const Picture& picture, const Box& box, std::uint32_t factor) {
    return magnified(cropped(picture, box), factor);
}

using Settings = std::vector<std::function<void()>>;

// The image as it is, and then once after each of the settings, which add up.
std::vector<Picture> series(const VirtualCamera& camera, const Settings& settings) {
    std::vector<Picture> pictures{camera.preview()};
    for (const auto& set : settings) {
        set();
        pictures.push_back(camera.preview());
    }
    return pictures;
}

// A PNG file that a camera looks at, for as long as this lives.
class SceneFile {
  public:
    explicit SceneFile(const Picture& picture)
        : path_(fs::temp_directory_path() / "tavra-chain-pictures.png") {
        VirtualCamera("mono").saveAsPng(picture, path_.string());
    }
    ~SceneFile() {
        std::error_code ignored;
        fs::remove(path_, ignored);
    }
    SceneFile(const SceneFile&) = delete;
    SceneFile& operator=(const SceneFile&) = delete;

    std::string item() const { return ":scene=" + path_.string(); }

  private:
    fs::path path_;
};

// A lens that is out of focus: the chart of half the size, to be enlarged by the camera that looks at it.
Picture softChart(std::uint32_t width, std::uint32_t height) {
    return VirtualCamera(sized("bgr", width / 2, height / 2, kFaultless)).preview();
}

// Until the gains rest.
void balanceWhite(const VirtualCamera& camera) {
    constexpr int kMostImages = 1000;
    camera.check(Tavra_SetWhiteBalanceMode(camera, TAVRA_WHITE_BALANCE_ONE_PUSH));
    std::uint8_t mode = TAVRA_WHITE_BALANCE_ONE_PUSH;
    for (int i = 0; i < kMostImages && mode != TAVRA_WHITE_BALANCE_MANUAL; ++i) {
        camera.preview();
        camera.check(Tavra_GetWhiteBalanceMode(camera, &mode));
    }
    std::array<std::uint16_t, 4> gain{};
    camera.check(Tavra_GetWhiteBalanceGain(camera, &gain[0], &gain[1], &gain[2], &gain[3]));
    std::printf("white balance: R %u, Gr %u, Gb %u, B %u\n", gain[0], gain[1], gain[2], gain[3]);
}

struct ShadingMap {
    std::uint32_t width = 0, height = 0, stride = 0;
    std::vector<std::uint8_t> data;
};

// From a white sheet of paper in front of a camera with the same lens.
ShadingMap calibrateShading(std::uint32_t width, std::uint32_t height, const std::string& lens) {
    const SceneFile paper(Picture(width, height, {230, 230, 230}));
    const VirtualCamera camera(sized("bayer", width, height, lens + paper.item()));
    camera.check(Tavra_SetShadingCorrectionMode(camera, TAVRA_SHADING_CALIBRATE_GAIN));
    camera.preview();
    camera.check(Tavra_SetShadingCorrectionMode(camera, TAVRA_SHADING_GAIN));
    camera.preview();
    ShadingMap map;
    camera.check(Tavra_GetShadingCorrectionMap(camera, &map.width, &map.height, &map.stride, nullptr));
    map.data.resize(std::size_t{map.stride} * map.height);
    camera.check(Tavra_GetShadingCorrectionMap(camera, nullptr, nullptr, nullptr, map.data.data()));
    return map;
}

void correctShading(const VirtualCamera& camera, const ShadingMap& map, std::uint32_t mode) {
    camera.check(Tavra_SetShadingCorrectionMap(camera, map.width, map.height, map.stride, map.data.data()));
    camera.check(Tavra_SetShadingCorrectionMode(camera, mode));
}

void setGamma(const VirtualCamera& camera, std::uint8_t index, std::uint8_t mode, std::uint16_t gamma,
              std::uint16_t brightness = 0, std::uint8_t contrast = 0) {
    camera.check(Tavra_SetGammaModeEx(camera, index, mode, gamma, brightness, contrast, nullptr));
}

using Matrix = std::array<std::int16_t, 12>;

void setMatrix(const VirtualCamera& camera, const Matrix& matrix) {
    camera.check(Tavra_SetColorMatrix(camera, TAVRA_COLOR_MATRIX_ON, matrix.data()));
}

// The whole chain in poor light behind a poor lens: one stage more from image to image.
Picture chain() {
    constexpr std::uint32_t kWidth = 240, kHeight = 136;
    const std::string lens = ":noise=off:vignetting=0.6:hotpixels=0";
    const ShadingMap map = calibrateShading(kWidth, kHeight, lens);
    const VirtualCamera camera(sized("bayer", kWidth, kHeight, lens + ":kelvin=3300:tint=1.15:light=0.75"));
    camera.check(Tavra_SetColorInterpolationMethod(camera, TAVRA_INTERPOLATION_NONE));
    const Settings settings{
        [&] { camera.check(Tavra_SetColorInterpolationMethod(camera, TAVRA_INTERPOLATION_BILINEAR)); },
        [&] { balanceWhite(camera); },
        [&] { correctShading(camera, map, TAVRA_SHADING_GAIN); },
        [&] { setGamma(camera, TAVRA_GAMMA_INDEX_Y, TAVRA_GAMMA_ON, 150, 0, 8); },
        [&] {
            camera.check(Tavra_SetSharpnessMode(camera, 1, 50, 4));
            setMatrix(camera, {140, -25, -15, 0, -20, 140, -20, 0, -10, -35, 145, 0});
        },
    };
    return sheet(series(camera, settings), 3);
}

Picture defectPixels() {
    const SceneFile soft(softChart(160, 96));
    const std::string sensor = ":noise=off:vignetting=0:hotpixels=60" + soft.item();
    const auto capped = VirtualCamera(sized("bayer", 160, 96, sensor + ":light=0")).rawFrame();
    const VirtualCamera camera(sized("bayer", 160, 96, sensor));
    const Settings settings{[&] {
        camera.check(Tavra_DetectDefectPixel(camera, 160, 96, capped.data(), 16));
        camera.check(Tavra_SetDefectPixelCorrectionMode(camera, 1));
    }};
    std::vector<Picture> pictures = series(camera, settings);
    for (Picture& picture : pictures) picture = magnified(picture, 2);
    return sheet(pictures, 2);
}

Picture regions() {
    constexpr std::array<Box, 3> kRegions{{{24, 24, 128, 100}, {208, 24, 88, 100}, {24, 136, 128, 40}}};
    constexpr Color kYellow{0, 230, 255};
    constexpr float kExposureSeconds = 0.005f;  // fits the frames of both
    const VirtualCamera camera(sized("regions", 320, 200, kFaultless + ":light=1.5"));
    const auto setRegion = [&](std::uint32_t index, std::uint32_t enabled, const Box& box) {
        camera.check(Tavra_SetROI(camera, index, enabled, box.x, box.y, box.width, box.height));
    };
    for (std::uint32_t i = 1; i < 8; ++i) setRegion(i, 0, {0, 0, 32, 4});
    std::uint32_t exposure = 0;
    camera.check(Tavra_GetExposureClockFromTime(camera, kExposureSeconds, &exposure));
    camera.check(Tavra_SetExposureClock(camera, exposure));
    Picture sensor = camera.preview();
    for (std::uint32_t i = 0; i < kRegions.size(); ++i) {
        setRegion(i, 1, kRegions[i]);
        drawFrame(sensor, kRegions[i], kYellow);
    }
    return sheet({sensor, camera.preview()}, 2);
}

// Raw frames see noise reduction only where a trigger makes the exposure.
Picture noiseReduction(const std::string& sources) {
    constexpr std::uint32_t kTriggerWidth = 0x1001;
    const VirtualCamera camera(small(sources + "/dark_then_light.toml",
                                     ":noise=off:vignetting=0:hotpixels=2500:sensor.full_scale_ms=11"));
    camera.check(Tavra_SetTriggerMode(camera, kTriggerWidth));
    TriggeredStream stream(camera);
    const auto take = [&](std::uint32_t mode) {
        camera.check(Tavra_SetNoiseReductionMode(camera, mode));
        return detail(stream.trigger(), kStarAndDiscs, 3);
    };
    const Picture dark = take(TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME);
    const Picture off = take(TAVRA_NOISE_REDUCTION_OFF);
    const Picture median = take(TAVRA_NOISE_REDUCTION_MEDIAN);
    return sheet({off, median, dark, take(TAVRA_NOISE_REDUCTION_DARK_FRAME)}, 2);
}

Picture whiteBalance() {
    const VirtualCamera camera(small("bayer", kFaultless + ":kelvin=3000:tint=1.25:light=0.9"));
    return sheet(series(camera, {[&] { balanceWhite(camera); }}), 2);
}

Picture shading() {
    const std::string lens = ":noise=off:vignetting=0.65:hotpixels=0";
    const ShadingMap map = calibrateShading(320, 180, lens);
    const VirtualCamera camera(small("bayer", lens));
    const Settings settings{
        [&] { correctShading(camera, map, TAVRA_SHADING_SHOW_MAP); },
        [&] { correctShading(camera, map, TAVRA_SHADING_GAIN); },
    };
    return sheet(series(camera, settings), 3);
}

Picture rawGamma() {
    const VirtualCamera camera(small("bayer"));
    const Settings settings{[&] {
        setGamma(camera, TAVRA_GAMMA_INDEX_R, TAVRA_GAMMA_ON, 160);
        setGamma(camera, TAVRA_GAMMA_INDEX_B, TAVRA_GAMMA_ON, 60);
    }};
    return sheet(series(camera, settings), 2);
}

Picture mirrorAndRotation() {
    const VirtualCamera camera(sized("bayer", 160, 96, kFaultless));
    const auto turn = [&](std::uint8_t mirror, std::uint8_t rotation) {
        return [&camera, mirror, rotation] {
            camera.check(Tavra_SetMirrorMode(camera, mirror));
            camera.check(Tavra_SetRotationMode(camera, rotation));
        };
    };
    const Settings settings{
        turn(TAVRA_MIRROR_HORIZONTAL, TAVRA_ROTATION_NONE),
        turn(TAVRA_MIRROR_VERTICAL, TAVRA_ROTATION_NONE),
        turn(0, TAVRA_ROTATION_CLOCKWISE),
        turn(0, TAVRA_ROTATION_ANTICLOCKWISE),
    };
    return sheet(series(camera, settings), 5);
}

Picture interpolation() {
    const VirtualCamera camera(small("bayer"));
    const std::vector<std::uint8_t> frame = camera.rawFrame();
    std::vector<Picture> pictures;
    for (std::uint8_t method = 0; method <= TAVRA_INTERPOLATION_CELL_NEAREST; ++method) {
        std::vector<std::uint8_t> image(std::size_t{320} * 180 * 3);
        camera.check(
            Tavra_ConvertRawToBGR(camera, 320, 180, frame.data(), image.data(), method, TAVRA_PIXEL_BGR_24));
        pictures.push_back(detail(pictureOf(image, 320, 180, 3), kStar, 3));
    }
    // What a sensor without a mosaic sees.
    pictures.push_back(detail(VirtualCamera(small("bgr")).preview(), kStar, 3));
    return sheet(pictures, 4);
}

Picture quadMosaic() {
    const VirtualCamera camera(small("quad"));
    const auto show = [&](std::uint8_t method) {
        camera.check(Tavra_SetColorInterpolationMethod(camera, method));
        return detail(camera.preview(), kDiscs, 4);
    };
    return sheet({show(TAVRA_INTERPOLATION_NONE), show(TAVRA_INTERPOLATION_RAW_COLOR),
                  show(TAVRA_INTERPOLATION_BILINEAR)},
                 3);
}

Picture ycbcr() {
    const VirtualCamera camera(small("ycbcr"));
    const auto show = [&](std::uint32_t transfer) {
        camera.check(Tavra_SetTransferBitsPerPixel(camera, transfer));
        return detail(camera.preview(), kDiscs, 4);
    };
    return sheet({show(TAVRA_TRANSFER_YCBCR444_FULL), show(TAVRA_TRANSFER_YCBCR422_FULL),
                  show(TAVRA_TRANSFER_YCBCR411_FULL)},
                 3);
}

Picture luminanceGamma() {
    constexpr std::uint8_t kY = TAVRA_GAMMA_INDEX_Y;
    const VirtualCamera camera(small("bayer"));
    const Settings settings{
        [&] { setGamma(camera, kY, TAVRA_GAMMA_ON, 180); },
        [&] { setGamma(camera, kY, TAVRA_GAMMA_ON, 100, 16, 60); },
        [&] { setGamma(camera, kY, TAVRA_GAMMA_REVERSED, 100); },
    };
    return sheet(series(camera, settings), 2);
}

Picture sharpness() {
    const SceneFile soft(softChart(320, 192));
    const VirtualCamera camera(
        sized("bayer", 320, 192,
              ":vignetting=0:hotpixels=0:sensor.noise_variants=1:sensor.full_well=4000" + soft.item()));
    const Settings settings{
        [&] { camera.check(Tavra_SetSharpnessMode(camera, 1, 100, 0)); },
        [&] { camera.check(Tavra_SetSharpnessMode(camera, 1, 100, 8)); },
    };
    std::vector<Picture> pictures = series(camera, settings);
    for (Picture& picture : pictures) picture = detail(picture, {152, 28, 160, 100}, 2);
    return sheet(pictures, 3);
}

Picture colorMatrix() {
    const VirtualCamera camera(small("bayer"));
    const Settings settings{
        [&] {
            setMatrix(camera, {160, -40, -20, 0, -25, 150, -25, 0, -10, -50, 160, 0});
        },
        [&] {
            setMatrix(camera, {0, 0, 100, 0, 0, 100, 0, 0, 100, 0, 0, 0});
        },
    };
    return sheet(series(camera, settings), 3);
}

Picture hueAndSaturation() {
    const VirtualCamera camera(small("bayer"));
    const Settings settings{
        [&] { camera.check(Tavra_SetHueSaturationMode(camera, 1, 0, 0)); },
        [&] { camera.check(Tavra_SetHueSaturationMode(camera, 1, 0, 180)); },
        [&] { camera.check(Tavra_SetHueSaturationMode(camera, 1, 900, 100)); },
    };
    return sheet(series(camera, settings), 2);
}

// Too much light, whose saturated highlights get the colour of the gains; and too little, where noise is as
// strong as colour.
Picture chromaSuppression() {
    const VirtualCamera bright(small("bayer", kFaultless + ":kelvin=3000:light=1.6"));
    bright.check(Tavra_SetWhiteBalanceGain(bright, 90, 128, 128, 235));
    std::vector<Picture> pictures =
        series(bright, {[&] { bright.check(Tavra_SetHighChromaSuppression(bright, 190, 255)); }});

    constexpr std::uint16_t kGainTenthsOfDecibel = 160;
    const VirtualCamera dark(small("bayer",
                                   ":vignetting=0:hotpixels=0:light=0.1:sensor.noise_variants=1:"
                                   "sensor.full_well=3000:sensor.read_noise=12"));
    dark.check(Tavra_SetGain(dark, kGainTenthsOfDecibel));
    for (const Picture& picture :
         series(dark, {[&] { dark.check(Tavra_SetLowChromaSuppression(dark, 120, 255)); }})) {
        pictures.push_back(detail(picture, kGreys, 2));
    }
    return sheet(pictures, 2);
}

struct Entry {
    const char* name;
    std::function<Picture()> make;
};

void run(const std::string& sources, const fs::path& output, const std::vector<std::string>& chosen) {
    const std::vector<Entry> entries{
        {"chain", chain},
        {"defect-pixels", defectPixels},
        {"regions", regions},
        {"noise-reduction", [&] { return noiseReduction(sources); }},
        {"white-balance", whiteBalance},
        {"shading", shading},
        {"raw-gamma", rawGamma},
        {"mirror-rotation", mirrorAndRotation},
        {"interpolation", interpolation},
        {"quad-mosaic", quadMosaic},
        {"ycbcr", ycbcr},
        {"gamma", luminanceGamma},
        {"sharpness", sharpness},
        {"color-matrix", colorMatrix},
        {"hue-saturation", hueAndSaturation},
        {"chroma-suppression", chromaSuppression},
    };
    for (const Entry& entry : entries) {
        if (!chosen.empty() && std::find(chosen.begin(), chosen.end(), entry.name) == chosen.end()) continue;
        const Picture picture = entry.make();
        const fs::path path = output / (std::string(entry.name) + ".png");
        VirtualCamera("mono").saveAsPng(picture, path.string());
        std::printf("%s: %u x %u, %ju bytes\n", path.string().c_str(), picture.width, picture.height,
                    static_cast<std::uintmax_t>(fs::file_size(path)));
    }
}

}  // namespace
}  // namespace tavra::pictures

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr,
                     "usage: chain_pictures <folder of the sources> <folder to write to> [name...]\n");
        return EXIT_FAILURE;
    }
    try {
        tavra::pictures::run(argv[1], argv[2], {argv + 3, argv + argc});
        return EXIT_SUCCESS;
    } catch (const std::exception& wrong) {
        std::fprintf(stderr, "chain_pictures: %s\n", wrong.what());
        return EXIT_FAILURE;
    }
}
