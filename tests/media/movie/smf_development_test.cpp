// The settings of development in an SMF file's header, each for itself: what the frames look like that come
// out, and what the recorder of the AVI is asked.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "media/movie/save_avi_file.h"
#include "media/movie/smf_builder.h"
#include "media/movie/smf_converter.h"
#include "stages/factory.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Notes what it is asked, and keeps the images.
class NotingRecorder final : public movie::ISaveAVIFile {
  public:
    using u32 = std::uint32_t;

    u32 AddRef() override { return 1; }
    u32 Release() override { return note("Release"); }
    u32 SetFileFormat(std::uint16_t format, u32 compressor) override {
        return note("SetFileFormat", format, compressor);
    }
    u32 SetFrameSizeShift(std::uint8_t shift) override { return note("SetFrameSizeShift", shift); }
    u32 SetFramesPerFile(u32 frames) override { return note("SetFramesPerFile", frames); }
    u32 GetFramesPerFile(u32*) override { return note("GetFramesPerFile"); }
    u32 SetReserved(u32 value) override { return note("SetReserved", value); }
    u32 SetQuality(u32 quality) override { return note("SetQuality", quality); }
    u32 SetRate(u32 rate) override { return note("SetRate", rate); }
    u32 SetScale(u32 scale) override { return note("SetScale", scale); }
    u32 SetBufferCount(u32 count) override { return note("SetBufferCount", count); }
    u32 GetBufferCount(u32*) override { return note("GetBufferCount"); }
    u32 SetImageFormat(u32 width, u32 height, u32 stride, u32 format) override {
        imageBytes_ = std::size_t{stride} * height;
        return note("SetImageFormat", width, height, stride, format);
    }
    u32 AddFile(const char16_t* name) override {
        const std::u16string wide = name;
        return note("AddFile " + std::string(wide.begin(), wide.end()));
    }
    u32 Start() override { return note("Start"); }
    u32 WriteFrame(const std::uint8_t* image, u32 number, u32 tag, u32* ended) override {
        *ended = 0;
        images.emplace_back(image, image + imageBytes_);
        return note("WriteFrame", number, tag);
    }
    u32 GetStatus(std::uint8_t* status) override {
        *status = 0;
        return note("GetStatus");
    }
    u32 SetStatus(std::uint8_t status) override { return note("SetStatus", status); }
    u32 GetPosition(u32*) override { return note("GetPosition"); }
    u32 SetNotifyWindow(TavraWindow window) override {
        return note("SetNotifyWindow", window == nullptr ? 0 : 1);
    }
    u32 SetNotifyParam(std::uint64_t parameter) override { return note("SetNotifyParam", parameter); }
    u32 GetMovieHeader(std::uint8_t*) override { return note("GetMovieHeader"); }
    u32 SetMovieHeader(const std::uint8_t*) override { return note("SetMovieHeader"); }
    u32 SetImageFormatEx(u32, u32, u32, u32) override { return note("SetImageFormatEx"); }
    u32 GetFileSizeEstimate(u32, u32, std::uint64_t*) override { return note("GetFileSizeEstimate"); }

    std::vector<std::string> calls;
    std::vector<Bytes> images;
    std::string refused;  // the operation that answers 12

  private:
    template <typename... Values>
    u32 note(const std::string& name, Values... values) {
        calls.push_back((name + ... + (" " + std::to_string(values))));
        return name.substr(0, name.find(' ')) == refused ? 12 : 0;
    }

    std::size_t imageBytes_ = 0;
};

NotingRecorder* recorderInPlace = nullptr;

ISUnknown* makeStage(std::int32_t code) {
    return code == stage_code::kCreateAvi ? recorderInPlace : CreateStageObject(code);
}

class SmfDevelopment : public testing::Test {
  protected:
    SmfDevelopment() { recorderInPlace = &recorder; }
    ~SmfDevelopment() override { recorderInPlace = nullptr; }

    std::uint32_t convert(const SmfBuilder& builder) {
        builder.write(folder / "a.smf");
        movie::CReadSMF movie;
        EXPECT_TRUE(movie.open(wideName(folder / "a.smf")).ok());
        movie::SmfConversion order;
        order.fileName = u"out.avi";
        return movie::convertSmf(movie, order, {makeStage, [] { return std::uint64_t{1} << 40; }}).code();
    }
    Bytes developed(const SmfBuilder& builder) {
        EXPECT_EQ(convert(builder), 0u);
        return recorder.images.empty() ? Bytes() : recorder.images.back();
    }

    const TempFolder folder;
    NotingRecorder recorder;
};

// ---- the curve

// Every level once.
SmfBuilder everyLevel() {
    SmfBuilder builder(16, 16, 8);
    Bytes levels(256);
    for (std::size_t i = 0; i < 256; ++i) levels[i] = static_cast<std::uint8_t>(i);
    builder.addFrame(0, 1, levels);
    return builder;
}

// Level by level: the axis moved by the brightness, cut at both ends by the contrast, then the power.
Bytes powerCurve(int gamma, int brightness, int contrast) {
    Bytes curve(256);
    for (int i = 0; i < 256; ++i) {
        const int x = brightness + i;
        int level = 0;
        if (x > 255 || x >= 255 - contrast) {
            level = 255;
        } else if (x > contrast) {
            const double t = (x - contrast) * (255.0 / (255.0 - 2.0 * contrast));
            level = t >= 255 ? 255 : static_cast<int>(std::pow(t / 255, 100.0 / gamma) * 255 + 0.5);
        }
        curve[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(level);
    }
    return curve;
}

Bytes reversed(Bytes curve) {
    std::reverse(curve.begin(), curve.end());
    return curve;
}

struct Curve {
    int gamma, brightness, contrast;
};

// No two of the three numbers can take each other's place.
constexpr Curve kCurves[] = {{45, 20, 30}, {220, -20, 30}, {45, 30, 20},
                             {30, 20, 45}, {220, 0, 0},    {100, -90, 1}};

TEST_F(SmfDevelopment, HasACurveOfGammaBrightnessAndContrast) {
    for (const Curve& curve : kCurves) {
        SCOPED_TRACE(testing::Message() << curve.gamma << ' ' << curve.brightness << ' ' << curve.contrast);
        SmfBuilder builder = everyLevel();
        builder.put8(68, 1);
        builder.put8(69, static_cast<std::uint32_t>(curve.contrast));
        builder.put16(70, static_cast<std::uint32_t>(curve.gamma));
        builder.put16(72, static_cast<std::uint32_t>(curve.brightness));
        const Bytes wanted = powerCurve(curve.gamma, curve.brightness, curve.contrast);
        EXPECT_EQ(developed(builder), wanted);
        builder.put8(68, 2);
        EXPECT_EQ(developed(builder), reversed(wanted));
    }
}

// By hand: brightness 20 and contrast 30 leave the levels from 11 to 204 between black and white, and a gamma
// of 0.5 squares them. Level 107 is (127 - 30) x 255 / 195 = 126.846, and 126.846^2 / 255 = 63.10.
TEST_F(SmfDevelopment, HasACurveThatCanBeWorkedByHand) {
    SmfBuilder builder = everyLevel();
    builder.put8(68, 1);
    builder.put8(69, 30);
    builder.put16(70, 50);
    builder.put16(72, 20);
    const Bytes levels = developed(builder);
    ASSERT_EQ(levels.size(), 256u);
    EXPECT_EQ(levels[10], 0);
    EXPECT_EQ(levels[107], 63);
    EXPECT_LT(levels[204], 255);
    EXPECT_EQ(levels[205], 255);
    EXPECT_EQ(levels[255], 255);
}

TEST_F(SmfDevelopment, HasNoCurveWhereItIsOffWhateverItsNumbersAre) {
    SmfBuilder builder = everyLevel();
    builder.put8(69, 30);
    builder.put16(70, 45);
    builder.put16(72, 20);
    for (std::uint32_t i = 0; i < 256; ++i) builder.put8(80 + i, 255 - i);
    Bytes levels(256);
    for (std::size_t i = 0; i < 256; ++i) levels[i] = static_cast<std::uint8_t>(i);
    EXPECT_EQ(developed(builder), levels);
}

// ---- the colours

// Method 1 leaves each sample in the channel of its colour: R = 200 and G = 100 above G = 0 and B = 150.
SmfBuilder oneOfEachColor() {
    SmfBuilder builder(2, 2, 24);
    builder.put32(64, 1);
    builder.addFrame(0, 2, {200, 100, 0, 150});
    return builder;
}

using Pixel = std::array<std::uint8_t, 3>;  // red, green, blue

struct ThreePixels {
    Pixel red, green, blue;
    friend bool operator==(const ThreePixels&, const ThreePixels&) = default;
};

// Rows of 6 bytes, filled up to 8; blue first.
ThreePixels pixelsOf(const Bytes& image) {
    EXPECT_EQ(image.size(), 16u);
    if (image.size() != 16) return {};
    const auto at = [&image](std::size_t first) {
        return Pixel{image[first + 2], image[first + 1], image[first]};
    };
    return {at(0), at(3), at(11)};
}

// An entry of a channel is its coefficient times the level and one, cut to a whole number; the offset goes in
// with the red channel, and the three entries of a pixel are added up. Level 200 of red alone:
//   red   10 + 0.70 x 201 = 150.7      green 80 - 0.30 x 201 = 19.7      blue 60 + 0.05 x 201 = 70.05
// and the other two channels, at level 0, add nothing whole. Level 100 of green: 10.7 + 20.2, 79.7 + 60.6,
// 60.05 - 25.25; level 150 of blue: 10.7 + 15.1, 79.7 + 22.65, 60.05 + 135.9.
TEST_F(SmfDevelopment, HasAColorMatrixOfNineValuesAndThreeOffsets) {
    constexpr int kMatrix[12] = {70, 20, 10, 1000, -30, 60, 15, 8000, 5, -25, 90, 6000};
    SmfBuilder builder = oneOfEachColor();
    builder.put8(340, 255);
    for (std::size_t i = 0; i < 12; ++i) builder.put16(344 + 2 * i, static_cast<std::uint32_t>(kMatrix[i]));
    const ThreePixels wanted{{150, 19, 70}, {30, 139, 35}, {25, 101, 195}};
    EXPECT_EQ(pixelsOf(developed(builder)), wanted);
    builder.put8(340, 0);
    const ThreePixels unchanged{{200, 0, 0}, {0, 100, 0}, {0, 0, 150}};
    EXPECT_EQ(pixelsOf(developed(builder)), unchanged) << "the values count for nothing while it is off";
}

// A quarter turn of the hue with half of the saturation. The coefficients of red, green and blue are
//   in red   0.44835  0.87990 -0.32825
//   in green 0.15432  0.49440  0.35128
//   in blue  0.64945  0.29330  0.05725
// and the other way round
//   in red   0.14945  0.29330  0.55725
//   in green 0.44348  0.67880 -0.12228
//   in blue -0.05165  0.87990  0.17175
// to be taken 201, 101 and 151 times and cut; what is below 0 is 0.
TEST_F(SmfDevelopment, HasAHueWithItsSignAndASaturation) {
    SmfBuilder builder = oneOfEachColor();
    builder.put8(368, 1);
    builder.put16(372, 900);
    builder.put16(374, 50);
    const ThreePixels wanted{{90, 31, 130}, {88, 49, 29}, {0, 53, 8}};
    EXPECT_EQ(pixelsOf(developed(builder)), wanted);
    builder.put16(372, static_cast<std::uint32_t>(-900));
    const ThreePixels otherWay{{30, 89, 0}, {29, 68, 88}, {84, 0, 25}};
    EXPECT_EQ(pixelsOf(developed(builder)), otherWay);
    builder.put8(368, 0);
    const ThreePixels unchanged{{200, 0, 0}, {0, 100, 0}, {0, 0, 150}};
    EXPECT_EQ(pixelsOf(developed(builder)), unchanged);
}

// ---- the recorder

SmfBuilder withEveryNumber() {
    SmfBuilder builder(5, 2, 24);
    builder.put32(24, 48000000);
    builder.put32(28, 1600000);
    builder.put32(40, 77);
    builder.put32(48, 42);
    builder.put32(52, 1);
    builder.addFrame(0, 2, Bytes(10));
    builder.addFrame(6, 2, Bytes(10));
    return builder;
}

// AVI 1.0 whatever the compressor; as many frames as are numbered; two buffers beside each other.
const std::vector<std::string> kOrders = {"SetFileFormat 1 77",
                                          "SetFrameSizeShift 1",
                                          "SetFramesPerFile 7",
                                          "SetReserved 0",
                                          "SetQuality 42",
                                          "SetRate 48000000",
                                          "SetScale 1600000",
                                          "SetBufferCount 2",
                                          "SetImageFormat 5 2 16 4",
                                          "AddFile out.avi",
                                          "SetNotifyWindow 0",
                                          "SetNotifyParam 0",
                                          "Start"};

TEST_F(SmfDevelopment, AsksTheRecorderInThisOrder) {
    EXPECT_EQ(convert(withEveryNumber()), 0u);
    std::vector<std::string> wanted = kOrders;
    for (const char* call : {"WriteFrame 0 0", "WriteFrame 6 0", "SetStatus 0", "Release"}) {
        wanted.emplace_back(call);
    }
    EXPECT_EQ(recorder.calls, wanted);
}

TEST_F(SmfDevelopment, StopsAtTheFirstThatIsRefused) {
    for (std::size_t i = 0; i < kOrders.size(); ++i) {
        recorder.calls.clear();
        recorder.refused = kOrders[i].substr(0, kOrders[i].find(' '));
        EXPECT_EQ(convert(withEveryNumber()), 12u) << kOrders[i];
        std::vector<std::string> wanted(kOrders.begin(),
                                        kOrders.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        wanted.emplace_back("Release");
        EXPECT_EQ(recorder.calls, wanted);
    }
}

}  // namespace
}  // namespace tavra::test
