// `tavra snap`: one still from a camera into a file.
#include <cmath>
#include <iostream>
#include <optional>
#include <vector>

#include "base/pixel_format.h"
#include "camera.h"
#include "commands.h"
#include "image_format.h"
#include "progress.h"
#include "settings_table.h"
#include "settle.h"
#include "stream_session.h"
#include "values.h"

namespace tavra::tool {
namespace {

struct Options {
    CameraChoice choice;
    std::string fileName;
    std::vector<std::string> assignments;
    bool raw = false;
    bool automatic = false;
    std::optional<unsigned> quality;  // of a JPEG
    double settleSeconds = 30;
    double timeoutSeconds = 10;
};

struct Image {
    std::vector<std::uint8_t> pixels;
    std::uint32_t width = 0, height = 0, format = 0, frameNumber = 0;
    std::string layout;  // for the closing line
};

std::uint32_t milliseconds(double seconds) {
    return static_cast<std::uint32_t>(std::llround(seconds * 1000));
}

Image takePreview(const Camera& camera, double timeoutSeconds) {
    Image image;
    std::uint32_t total = 0, lineBytes = 0, written = 0;
    camera.check(Tavra_GetPreviewDataSize(camera.handle(), &total, &image.width, &image.height, &lineBytes),
                 "cannot read the image size");
    camera.check(Tavra_GetPreviewPixelFormat(camera.handle(), &image.format), "cannot read the pixel format");
    image.pixels.resize(total);
    camera.check(Tavra_TakePreviewSnapShot(camera.handle(), image.pixels.data(), total, &written,
                                           &image.frameNumber, milliseconds(timeoutSeconds)),
                 "no picture");
    image.layout = nameOf(kPixelFormats, image.format);
    return image;
}

// A frame as the camera sent it. Rows of a still file are padded to four bytes, those of a frame are not.
void padRows(Image& image, std::uint32_t rowBytes) {
    const std::size_t stride = roundUpTo4(rowBytes);
    if (stride == rowBytes) return;
    std::vector<std::uint8_t> padded(stride * image.height);
    for (std::size_t y = 0; y < image.height; ++y) {
        std::copy_n(image.pixels.begin() + static_cast<std::ptrdiff_t>(y * rowBytes), rowBytes,
                    padded.begin() + static_cast<std::ptrdiff_t>(y * stride));
    }
    image.pixels = std::move(padded);
}

Image takeRaw(const Camera& camera, double timeoutSeconds, bool rawFile) {
    Image image;
    std::uint32_t total = 0, written = 0, transferBits = 0, x = 0, y = 0;
    std::uint16_t mode = 0;
    camera.check(Tavra_GetImageSize(camera.handle(), 0, &mode, &x, &y, &image.width, &image.height),
                 "cannot read the image size");
    camera.check(Tavra_GetTransferBitsPerPixel(camera.handle(), &transferBits),
                 "cannot read the transfer bits");
    camera.check(Tavra_GetRawDataSize(camera.handle(), &total), "cannot read the frame size");
    image.pixels.resize(total);
    camera.check(Tavra_TakeRawSnapShot(camera.handle(), image.pixels.data(), total, &written,
                                       &image.frameNumber, milliseconds(timeoutSeconds)),
                 "no frame");
    image.layout = "raw " + nameOf(kTransferBits, transferBits);
    const auto format = stillFormatOf(transferBits);
    if (rawFile) {
        image.format = TAVRA_PIXEL_MONO_8;  // a dump of the bytes, whatever they hold
        image.width = total;
        image.height = 1;
    } else if (format) {
        image.format = *format;
        padRows(image, total / image.height);
    } else {
        throw Failure("frames of " + nameOf(kTransferBits, transferBits) +
                      " can only be dumped as they are: name the file .raw");
    }
    return image;
}

Image take(const Camera& camera, const Options& options, bool rawFile) {
    return options.raw || rawFile ? takeRaw(camera, options.timeoutSeconds, rawFile)
                                  : takePreview(camera, options.timeoutSeconds);
}

// Of the stream on which the controls have settled. One that they could not settle in time is taken all the
// same.
Image takeSettled(const Camera& camera, const Options& options, bool rawFile) {
    noteInterrupts();
    const StreamSession stream(camera);
    LiveLine live;
    live.note(
        settleControls(camera, stream, !leavesWhiteBalance(options.assignments), options.settleSeconds, live)
            .text());
    endOnInterrupts();
    return take(camera, options, rawFile);
}

// The last argument of the save: a JPEG's compression, which is what its quality leaves of 100, and for the
// other types a PNG that is not interlaced.
std::uint32_t saveOption(const Options& options) {
    constexpr std::uint32_t kNotInterlaced = 1, kBestQuality = 100, kUsualQuality = 90;
    if (isJpegName(options.fileName)) return kBestQuality - options.quality.value_or(kUsualQuality);
    if (options.quality) throw Failure("--quality is for JPEG files: " + options.fileName + " is none");
    return kNotInterlaced;
}

void run(const Options& options) {
    const std::uint32_t option = saveOption(options);
    const Camera camera(options.choice);
    applyAssignments(camera, options.assignments);
    const bool rawFile = isRawName(options.fileName);
    const Image image =
        options.automatic ? takeSettled(camera, options, rawFile) : take(camera, options, rawFile);
    camera.check(Tavra_SaveImageA(camera.handle(), image.width, image.height, image.format,
                                  image.pixels.data(), options.fileName.c_str(), option),
                 "cannot write " + options.fileName);
    std::cout << options.fileName << ": ";
    if (!rawFile) std::cout << image.width << "x" << image.height << " ";
    std::cout << image.layout << ", frame " << image.frameNumber << " of " << camera.name() << '\n';
}

}  // namespace

void addSnap(CLI::App& app) {
    auto* const command = app.add_subcommand("snap", "Take one still and write it to a file");
    static Options options;
    options.choice.addTo(*command);
    command
        ->add_option(
            "file", options.fileName,
            "File to write: .png, .jpg, .tif or .bmp for the finished picture, .raw for the frame as it came")
        ->required();
    command->add_flag("--raw", options.raw, "The frame before any processing (16-bit samples: .tif)");
    command
        ->add_option("--quality", options.quality,
                     "Of a .jpg, 0 to 100 (90 unless told; 0 is the same as 50)")
        ->check(CLI::Range(0, 100));
    command->add_flag("--auto", options.automatic, "Let exposure control and white balance settle first");
    command->add_option("--settle", options.settleSeconds, "With --auto: seconds for that at most")
        ->check(CLI::Range(0.1, 4000000.0))
        ->capture_default_str();
    command->add_option("--set", options.assignments,
                        "NAME=VALUE before the shot, as in `tavra set`; repeatable");
    command->add_option("--timeout", options.timeoutSeconds, "Seconds to wait for the frame (0: for ever)")
        ->check(CLI::Range(0.0, 4000000.0))
        ->capture_default_str();
    command->callback([] { run(options); });
}

}  // namespace tavra::tool
