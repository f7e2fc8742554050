#include "media/movie/smf_converter.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

#include "base/color_array.h"
#include "base/pixel_format.h"
#include "media/movie/movie_writer.h"
#include "media/movie/save_avi_file.h"
#include "stages/color_interpolation.h"
#include "stages/color_matrix.h"
#include "stages/gamma.h"
#include "stages/sharpness.h"

namespace tavra::movie {
namespace {

using Field = SmfHeader::Field;

constexpr std::uint16_t kSampleBits = 8;
constexpr std::uint32_t kBuffers = 2;
constexpr std::uint32_t kFinestQuality = 100;

struct Release {
    void operator()(ISUnknown* stage) const { stage->Release(); }
};
template <class Interface>
using StagePointer = std::unique_ptr<Interface, Release>;

template <class Interface>
StagePointer<Interface> makeStage(StageMaker make, std::int32_t code) {
    return StagePointer<Interface>(static_cast<Interface*>(make(code)));
}

constexpr std::uint32_t previewFormatOf(std::uint16_t bits) {
    return bits == 24 ? 4 : bits == 32 ? 8 : 1;
}

// What is to come out, in numbers that cannot overflow.
struct Picture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t format = 1;       // preview pixel format
    std::uint64_t stageStride = 0;  // bytes from row to row, for the stages
    std::uint64_t stride = 0;       // and as the recorder is told
    std::uint64_t frameBytes = 0;   // of a frame in the file
    std::uint64_t rawBytes = 0;
    std::uint64_t imageBytes = 0;

    explicit Picture(const SmfHeader& header)
        : width(header.get(Field::Width)),
          height(header.get(Field::Height)),
          format(previewFormatOf(header.developedBits())),
          stageStride(paddedStride(width, bytesPerPixel(format))),
          stride(roundUpTo4(std::uint64_t{header.developedBits()} * width / 8)),
          frameBytes(header.get(Field::FrameDataSize)) {
        const std::uint64_t pixels = std::uint64_t{width} * height;
        rawBytes = std::max(pixels, frameBytes);
        imageBytes = saturatingProduct(std::max(stride, stageStride), height);
    }

    bool possible() const {
        constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
        return width != 0 && height != 0 && rawBytes <= kMost && imageBytes <= kMost;
    }

    // Whether the image asks for more than a frame of the file can become, four bytes a sample: the header
    // lies.
    bool exceedsFrame() const { return imageBytes / kMostPixelBytes > frameBytes; }

  private:
    static constexpr std::uint64_t kMostPixelBytes = 4;
    static std::uint64_t saturatingProduct(std::uint64_t a, std::uint64_t b) {
        constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
        return b != 0 && a > kMost / b ? kMost : a * b;
    }
};

// The chain from a raw frame to its image.
class Developer {
  public:
    explicit Developer(StageMaker make)
        : interpolation_(makeStage<IColorInterpolation>(make, stage_code::kColorInterpolation)),
          gamma_(makeStage<IGamma>(make, stage_code::kGamma)),
          sharpness_(makeStage<ISharpness>(make, stage_code::kSharpness)),
          colorMatrix_(makeStage<IColorMatrix>(make, stage_code::kColorMatrix)) {}

    Status load(const SmfHeader& header) {
        if (!interpolation_ || !gamma_ || !sharpness_ || !colorMatrix_) return Status(error::kOutOfMemory);
        method_ = static_cast<std::uint8_t>(std::min(header.get(Field::Interpolation), 255u));
        const SmfHeader::Gamma gamma = header.gamma();
        const SmfHeader::Sharpness sharpness = header.sharpness();
        const SmfHeader::Colors colors = header.colors();
        TAVRA_RETURN_IF_ERROR(Status(gamma_->SetGamma(0, gamma.mode, gamma.gamma, gamma.brightness,
                                                      gamma.contrast, gamma.table.data(), kSampleBits)));
        TAVRA_RETURN_IF_ERROR(Status(sharpness_->SetMode(sharpness.mode, sharpness.gain, sharpness.coring)));
        TAVRA_RETURN_IF_ERROR(Status(colorMatrix_->SetColorMatrix(colors.matrixMode, colors.matrix.data())));
        return Status(colorMatrix_->SetHueSaturation(colors.hueMode, colors.hue, colors.saturation));
    }

    Status develop(const Picture& picture, std::uint32_t colorArray, const std::uint8_t* raw,
                   std::uint8_t* image) {
        // YCbCr takes more of a frame than there is.
        if (colorArray > 0xFFFF || isYcbcr(static_cast<std::uint16_t>(colorArray))) {
            return Status(error::kInvalidData);
        }
        const auto pixelBytes = static_cast<std::uint16_t>(bytesPerPixel(picture.format));
        TAVRA_RETURN_IF_ERROR(
            Status(interpolation_->ConvertEx(picture.width, picture.height, picture.width, raw, 0, image,
                                             method_, static_cast<std::uint16_t>(colorArray), pixelBytes)));
        const auto stride = static_cast<std::uint32_t>(picture.stageStride);
        TAVRA_RETURN_IF_ERROR(
            Status(gamma_->ApplyImage8(picture.width, picture.height, stride, picture.format, image)));
        TAVRA_RETURN_IF_ERROR(Status(
            sharpness_->Apply8(picture.width, picture.height, stride, picture.format, image, kSampleBits)));
        return Status(
            colorMatrix_->Apply8(picture.width, picture.height, stride, picture.format, image, kSampleBits));
    }

  private:
    StagePointer<IColorInterpolation> interpolation_;
    StagePointer<IGamma> gamma_;
    StagePointer<ISharpness> sharpness_;
    StagePointer<IColorMatrix> colorMatrix_;
    std::uint8_t method_ = 0;
};

Status startRecorder(ISaveAVIFile& recorder, const CReadSMF& movie, const Picture& picture,
                     const std::u16string& fileName) {
    const SmfHeader& header = movie.header();
    const auto shift = static_cast<std::uint8_t>(std::min(header.get(Field::FrameSizeShift), 255u));
    const std::uint32_t quality = std::min(header.get(Field::Quality), kFinestQuality);
    const auto stride = static_cast<std::uint32_t>(picture.stride);
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetFileFormat(movie_format::kAvi1, header.get(Field::Compressor))));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetFrameSizeShift(shift)));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetFramesPerFile(movie.lastFrameNumber() + 1)));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetReserved(0)));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetQuality(quality)));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetRate(header.get(Field::Rate))));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetScale(header.get(Field::Scale))));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetBufferCount(kBuffers)));
    TAVRA_RETURN_IF_ERROR(
        Status(recorder.SetImageFormat(picture.width, picture.height, stride, picture.format)));
    TAVRA_RETURN_IF_ERROR(Status(recorder.AddFile(fileName.c_str())));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetNotifyWindow(nullptr)));
    TAVRA_RETURN_IF_ERROR(Status(recorder.SetNotifyParam(0)));
    return Status(recorder.Start());
}

using Block = std::unique_ptr<std::uint8_t[]>;

// Whether memory that the system grants is there as well. A lying header is weighed against what is free, as
// far as that is known; for a frame that stands in the file the allocation decides alone. The recorder has an
// image, too.
bool fitsMemory(const Picture& picture, std::uint64_t freeBytes) {
    return !picture.exceedsFrame() || freeBytes == 0 ||
           picture.rawBytes + 2 * picture.imageBytes <= freeBytes;
}

// Zeroed, as the padding of rows goes into the movie, and what a frame lacks into its image.
Block makeBlock(std::uint64_t size) {
    return Block(new (std::nothrow) std::uint8_t[size]());
}

// Frame after frame, until the movie's end, the writer's, or the callback's 0.
class Conversion {
  public:
    Conversion(CReadSMF& movie, const SmfConversion& order, const Picture& picture, Developer& developer,
               ISaveAVIFile& recorder)
        : movie_(movie), order_(order), picture_(picture), developer_(developer), recorder_(recorder) {}

    Status run(std::uint8_t* raw, std::uint8_t* image) {
        const std::uint32_t count = shownCount();
        bool goOn = true;
        for (std::uint64_t index = order_.firstFrame; goOn && index < movie_.frameCount(); ++index) {
            CReadSMF::FrameHeader frame;
            TAVRA_RETURN_IF_ERROR(movie_.ReadFrame(index, frame, raw));
            TAVRA_RETURN_IF_ERROR(developer_.develop(picture_, frame.colorArray, raw, image));
            std::uint32_t ended = 0;
            TAVRA_RETURN_IF_ERROR(Status(recorder_.WriteFrame(image, frame.number, 0, &ended)));
            goOn = tell(static_cast<std::uint32_t>(index), count) && ended == 0;
        }
        return {};
    }

  private:
    std::uint32_t shownCount() const {
        constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
        return static_cast<std::uint32_t>(std::min(movie_.frameCount(), kMost));
    }

    bool tell(std::uint32_t index, std::uint32_t count) const {
        if (order_.currentFrame != nullptr) *order_.currentFrame = index;
        return order_.progress == nullptr || order_.progress(index, count, order_.context) != 0;
    }

    CReadSMF& movie_;
    const SmfConversion& order_;
    const Picture& picture_;
    Developer& developer_;
    ISaveAVIFile& recorder_;
};

}  // namespace

Status convertSmf(CReadSMF& movie, const SmfConversion& order, const SmfSurroundings& surroundings) {
    const Picture picture(movie.header());
    if (!picture.possible()) return Status(error::kInvalidData);
    if (movie.isNamed(order.fileName)) return Status(error::kFileStream);
    // No frame, no memory: a header that lies about its frames costs nothing.
    const bool hasFrames = order.firstFrame < movie.frameCount();
    if (hasFrames && !fitsMemory(picture, surroundings.freeMemory())) return {};
    const Block raw = makeBlock(hasFrames ? picture.rawBytes : 0);
    const Block image = makeBlock(hasFrames ? picture.imageBytes : 0);
    if (!raw || !image) return {};

    Developer developer(surroundings.make);
    TAVRA_RETURN_IF_ERROR(developer.load(movie.header()));
    const auto recorder = makeStage<ISaveAVIFile>(surroundings.make, stage_code::kCreateAvi);
    if (!recorder) return Status(error::kOutOfMemory);
    TAVRA_RETURN_IF_ERROR(startRecorder(*recorder, movie, picture, order.fileName));
    const Status converted =
        Conversion(movie, order, picture, developer, *recorder).run(raw.get(), image.get());
    const Status written(recorder->SetStatus(recorder_status::kIdle));  // waits until the file is closed
    return converted.ok() ? written : converted;
}

}  // namespace tavra::movie
