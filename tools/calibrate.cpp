// `tavra calibrate`: what a camera needs to know of itself: shading, dark frame, defect pixels.
#include <unistd.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <optional>

#include "camera.h"
#include "commands.h"
#include "control_state.h"
#include "exit_code.h"
#include "frame_means.h"
#include "frame_tap.h"
#include "progress.h"
#include "settings_table.h"
#include "settle.h"
#include "shading_map.h"
#include "stream_session.h"
#include "values.h"

namespace tavra::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kPollMs = 5;
constexpr double kSettleSeconds = 30;

// What all three have.
struct Common {
    CameraChoice choice;
    std::vector<std::string> assignments;
    double timeoutSeconds = 10;

    void addTo(CLI::App& command) {
        choice.addTo(command);
        command.add_option("--set", assignments, "NAME=VALUE before, as in `tavra set`; repeatable");
        command.add_option("--timeout", timeoutSeconds, "Seconds to wait for a frame")
            ->check(CLI::Range(0.001, 4000000.0))
            ->capture_default_str();
    }
};

// The frame that was asked for.
void awaitAsked(const StreamSession& stream, FrameTap& tap, TappedFrame& frame, double timeoutSeconds) {
    const Clock::time_point start = Clock::now();
    while (!tap.take(frame)) {
        stream.run(kPollMs);
        if (std::chrono::duration<double>(Clock::now() - start).count() > timeoutSeconds) {
            throw Failure(
                "no frame came in time; is the camera waiting for a trigger, or the exposure longer "
                "than --timeout?",
                ExitCode::TimedOut);
        }
    }
}

// The frame that comes after this call; one that was under way when a setting changed may be that one.
void waitForFrame(const StreamSession& stream, FrameTap& tap, TappedFrame& frame, double timeoutSeconds) {
    tap.ask();
    awaitAsked(stream, tap, frame, timeoutSeconds);
}

// --- shading ---

struct ShadingOptions : Common {
    std::string fileName;
    std::uint32_t frames = 16;
    bool offset = false;
    bool automatic = false;
};

// The library makes a map of one frame. The mean of several maps has less of their noise in it.
class MapMean {
  public:
    void add(const ShadingMap& map) {
        if (sums_.empty()) sums_.resize(map.entries.size());
        if (map.entries.empty() || map.entries.size() != sums_.size()) {
            throw Failure("the camera's frames gave no shading map");
        }
        for (std::size_t i = 0; i < sums_.size(); ++i) sums_[i] += map.entries[i];
        last_ = map;
        ++count_;
    }

    ShadingMap mean(std::uint32_t mode) const {
        ShadingMap map = last_;
        map.mode = mode;
        for (std::size_t i = 0; i < sums_.size(); ++i) {
            map.entries[i] = static_cast<std::int32_t>(
                std::lround(static_cast<double>(sums_[i]) / static_cast<double>(count_)));
        }
        return map;
    }

  private:
    std::vector<std::int64_t> sums_;
    ShadingMap last_;
    std::int64_t count_ = 0;
};

std::string rangeText(const ShadingMap& map) {
    const auto [low, high] = std::minmax_element(map.entries.begin(), map.entries.end());
    char text[64];
    if (map.mode == TAVRA_SHADING_GAIN) {
        std::snprintf(text, sizeof text, "gains from %.2f to %.2f", *low / 128.0, *high / 128.0);
    } else {
        std::snprintf(text, sizeof text, "offsets from %d to %d", *low, *high);
    }
    return text;
}

void calibrateShading(const ShadingOptions& options) {
    const Camera camera(options.choice);
    applyAssignments(camera, options.assignments);
    requireMosaicFormat(camera, "shading correction");
    noteInterrupts();
    LiveLine live;
    const std::uint32_t calibration =
        options.offset ? TAVRA_SHADING_CALIBRATE_OFFSET : TAVRA_SHADING_CALIBRATE_GAIN;
    const std::uint32_t correction = options.offset ? TAVRA_SHADING_OFFSET : TAVRA_SHADING_GAIN;
    const auto setMode = [&](std::uint32_t mode) {
        camera.check(Tavra_SetShadingCorrectionMode(camera.handle(), mode), "cannot calibrate the shading");
    };
    MapMean mean;
    {
        FrameTap tap(camera, FrameTap::What::Images);  // shading is for frames that become images
        TappedFrame frame;
        const StreamSession stream(camera);
        if (options.automatic)
            live.note(
                settleControls(camera, stream, !leavesWhiteBalance(options.assignments), kSettleSeconds, live)
                    .text());
        for (std::uint32_t i = 0; i < options.frames; ++i) {
            live.show("flat field: frame " + std::to_string(i + 1) + " of " + std::to_string(options.frames));
            // Of the frame that is in work already the stage may be behind it, so each step takes two.
            setMode(calibration);
            waitForFrame(stream, tap, frame, options.timeoutSeconds);
            waitForFrame(stream, tap, frame, options.timeoutSeconds);
            setMode(correction);
            waitForFrame(stream, tap, frame, options.timeoutSeconds);
            waitForFrame(stream, tap, frame, options.timeoutSeconds);
            mean.add(readShadingMap(camera));
        }
    }
    live.finish();
    const ShadingMap map = mean.mean(correction);
    saveShadingMap(map, options.fileName);
    std::cout << options.fileName << ": " << map.width << "x" << map.height << ", " << rangeText(map)
              << ", of " << options.frames << " frames. Use it with --set shading.map=" << options.fileName
              << '\n';
}

void addShading(CLI::App& parent) {
    auto* const command =
        parent.add_subcommand("shading", "Make a map of a flat field, to even out light and lens");
    static ShadingOptions options;
    command->add_option("file", options.fileName, "File to write the map to")->required();
    command->add_flag("--offset", options.offset, "Correct by adding instead of multiplying");
    command->add_option("--frames", options.frames, "Frames that the map is the mean of")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    command->add_flag("--auto", options.automatic, "Let exposure control and white balance settle first");
    options.addTo(*command);
    command->callback([] { calibrateShading(options); });
}

// --- dark frame ---

struct DarkOptions : Common {
    std::string fileName;
    bool external = false;
};

// On a terminal: until Enter is pressed. Elsewhere nobody is there to press it.
void askFor(const std::string& what) {
    if (isatty(STDIN_FILENO) == 0) return;
    std::cerr << what << ", then press Enter. " << std::flush;
    std::string line;
    std::getline(std::cin, line);
}

// Dark frames are for exposures that a trigger times. The camera gets its own trigger settings back.
class TriggeredExposure {
  public:
    explicit TriggeredExposure(const Camera& camera) : camera_(camera) {
        camera_.check(Tavra_GetTriggerMode2(camera_.handle(), TAVRA_TRIGGER_SELECTOR_0, &trigger_),
                      "cannot read the trigger mode");
        camera_.check(Tavra_GetExposureMode(camera_.handle(), &exposure_), "cannot read the exposure mode");
        if (exposure_ < TAVRA_EXPOSURE_MODE_TRIGGER_WIDTH) {
            camera_.check(Tavra_SetExposureMode(camera_.handle(), TAVRA_EXPOSURE_MODE_TRIGGER_WIDTH),
                          "cannot let the trigger time the exposure");
        }
        camera_.check(Tavra_SetTriggerMode2(camera_.handle(), TAVRA_TRIGGER_SELECTOR_0, 1),
                      "cannot switch the trigger on");
    }
    ~TriggeredExposure() {
        Tavra_SetTriggerMode2(camera_.handle(), TAVRA_TRIGGER_SELECTOR_0, trigger_);
        Tavra_SetExposureMode(camera_.handle(), exposure_);
    }
    TriggeredExposure(const TriggeredExposure&) = delete;
    TriggeredExposure& operator=(const TriggeredExposure&) = delete;

  private:
    const Camera& camera_;
    std::uint32_t trigger_ = 0, exposure_ = 0;
};

void calibrateDark(const DarkOptions& options) {
    const Camera camera(options.choice);
    applyAssignments(camera, options.assignments);
    requireMosaicFormat(camera, "a dark frame");
    const TriggeredExposure triggered(camera);
    LiveLine live;
    TappedFrame frame;
    {
        FrameTap tap(camera, FrameTap::What::Images);
        const StreamSession stream(camera);
        const auto take = [&](std::uint32_t mode, const std::string& what) {
            camera.check(Tavra_SetNoiseReductionMode(camera.handle(), mode),
                         "cannot set the noise reduction");
            live.show(what);
            tap.ask();  // ahead of the trigger: there is one frame, and it may come at once
            if (!options.external) {
                camera.check(Tavra_TriggerSoftware(camera.handle(), TAVRA_TRIGGER_SELECTOR_0),
                             "cannot trigger the camera");
            }
            awaitAsked(stream, tap, frame, options.timeoutSeconds);
            live.finish();
        };
        askFor("Put the cap on the lens");
        noteInterrupts();
        take(TAVRA_NOISE_REDUCTION_TAKE_DARK_FRAME, "taking the dark frame");
        endOnInterrupts();
        askFor("Take the cap off");
        noteInterrupts();
        take(TAVRA_NOISE_REDUCTION_DARK_FRAME, "taking the picture");
    }
    camera.check(Tavra_SaveImageA(camera.handle(), frame.width, frame.height, frame.pixelFormat,
                                  frame.data.data(), options.fileName.c_str(), 1),
                 "cannot write " + options.fileName);
    std::cout << options.fileName << ": " << frame.width << "x" << frame.height << ", frame " << frame.number
              << " of " << camera.name() << ", less its dark frame\n";
}

void addDark(CLI::App& parent) {
    auto* const command = parent.add_subcommand(
        "dark", "Take a dark frame, then a picture without it, in an exposure that a trigger times");
    static DarkOptions options;
    command->add_option("file", options.fileName, "Picture to write: .png, .tif or .bmp")->required();
    command->add_flag("--external", options.external,
                      "Wait for triggers from outside instead of triggering by software");
    options.addTo(*command);
    command->callback([] { calibrateDark(options); });
}

// --- defect pixels ---

struct DefectOptions : Common {
    std::uint32_t threshold = 64;
    bool apply = false;
};

constexpr std::size_t kShownDefects = 10;

struct Defect {
    std::uint32_t x, y;
    unsigned level;
};

std::vector<Defect> brightPixels(const std::vector<std::uint8_t>& samples, const TappedFrame& frame,
                                 std::uint32_t threshold) {
    std::vector<Defect> found;
    for (std::uint32_t y = 0; y < frame.height; ++y) {
        for (std::uint32_t x = 0; x < frame.width; ++x) {
            const unsigned level = samples[std::size_t{y} * frame.width + x];
            if (level >= threshold) found.push_back({x, y, level});
        }
    }
    return found;
}

// Positions are those of the sensor in a whole frame that is not mirrored.
void requireWholeSensor(const Camera& camera) {
    std::uint16_t scanMode = 0;
    std::uint32_t x = 0, y = 0, width = 0, height = 0, wholeWidth = 0, wholeHeight = 0;
    std::uint8_t mirror = 0;
    camera.check(Tavra_GetImageSize(camera.handle(), 0, &scanMode, &x, &y, &width, &height),
                 "cannot read the image size");
    camera.check(Tavra_GetMaximumImageSize(camera.handle(), &wholeWidth, &wholeHeight),
                 "cannot read the largest image size");
    camera.check(Tavra_GetMirrorMode(camera.handle(), &mirror), "cannot read the mirror");
    const bool mirrored = (mirror & (TAVRA_MIRROR_CAMERA_HORIZONTAL | TAVRA_MIRROR_CAMERA_VERTICAL)) != 0;
    if (width == wholeWidth && height == wholeHeight && !mirrored) return;
    throw Failure(
        "defect pixels are found in a frame of the whole sensor without the camera's mirror: --set size=" +
        std::to_string(wholeWidth) + "x" + std::to_string(wholeHeight) + " --set mirror=off");
}

void calibrateDefects(const DefectOptions& options) {
    const Camera camera(options.choice);
    applyAssignments(camera, options.assignments);
    requireMosaicFormat(camera, "the search for defect pixels");
    std::uint16_t capacity = 0;
    camera.check(Tavra_GetEnableDefectPixelCorrectionCount(camera.handle(), &capacity),
                 "cannot read the length of the defect pixel list");
    if (capacity == 0) throw Failure("this camera (" + camera.name() + ") has no defect pixel correction");
    requireWholeSensor(camera);
    std::uint16_t correction = 0;
    camera.check(Tavra_GetDefectPixelCorrectionMode(camera.handle(), &correction),
                 "cannot read the defect pixel correction");
    if (correction != 0) {  // it would hide what is in the list
        camera.check(Tavra_SetDefectPixelCorrectionMode(camera.handle(), 0),
                     "cannot switch the correction off");
    }
    noteInterrupts();
    TappedFrame frame;
    {
        LiveLine live;
        live.show("taking a frame");
        FrameTap tap(camera, FrameTap::What::RawFrames);
        const StreamSession stream(camera);
        waitForFrame(stream, tap, frame, options.timeoutSeconds);
        waitForFrame(stream, tap, frame, options.timeoutSeconds);
    }
    const std::vector<std::uint8_t> samples =
        reducedTo8Bits({frame.data.data(), frame.data.size(), frame.width, frame.height, frame.transferBits});
    const auto found = brightPixels(samples, frame, options.threshold);
    std::cout << found.size() << " pixels at or above " << options.threshold << "; the camera can list "
              << capacity << ".\n";
    constexpr std::size_t kTooMany = 10;  // so many times the list: that is light, not defects
    if (found.size() > kTooMany * capacity) {
        if (correction != 0) Tavra_SetDefectPixelCorrectionMode(camera.handle(), correction);
        throw Failure("that is light rather than defects: cap the lens, or raise --threshold");
    }
    for (std::size_t i = 0; i < std::min(found.size(), kShownDefects); ++i) {
        std::cout << "  column " << found[i].x << ", row " << found[i].y << ": " << found[i].level << '\n';
    }
    if (found.size() > kShownDefects) std::cout << "  ...\n";
    if (!options.apply) {
        if (correction != 0) {
            camera.check(Tavra_SetDefectPixelCorrectionMode(camera.handle(), correction),
                         "cannot switch the correction back on");
        }
        std::cout << "Nothing was written; --apply writes them to the camera.\n";
        return;
    }
    camera.check(Tavra_DetectDefectPixel(camera.handle(), frame.width, frame.height, samples.data(),
                                         static_cast<std::uint16_t>(options.threshold)),
                 "cannot write the list to the camera");
    camera.check(Tavra_SetDefectPixelCorrectionMode(camera.handle(), 1), "cannot switch the correction on");
    std::cout << std::min<std::size_t>(found.size(), capacity)
              << " are in the camera's list, and the correction is on.\n";
}

void addDefects(CLI::App& parent) {
    auto* const command = parent.add_subcommand(
        "defects", "Find defect pixels with the lens capped, and write them to the camera");
    static DefectOptions options;
    command->add_option("--threshold", options.threshold, "Level from which a pixel counts as defect")
        ->check(CLI::Range(1, 255))
        ->capture_default_str();
    command->add_flag("--apply", options.apply,
                      "Write them to the camera's list and switch the correction on");
    options.addTo(*command);
    command->callback([] { calibrateDefects(options); });
}

}  // namespace

void addCalibrate(CLI::App& app) {
    auto* const command = app.add_subcommand("calibrate", "Even out shading, dark current and defect pixels");
    command->require_subcommand(1);
    addShading(*command);
    addDark(*command);
    addDefects(*command);
}

}  // namespace tavra::tool
