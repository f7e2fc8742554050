#include "movie_text.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

#include "exit_code.h"
#include "movie_probe/fourcc.h"
#include "quantities.h"
#include "tavra/tavra_types.h"
#include "values.h"

namespace tavra::tool {
namespace {

using nlohmann::json;

constexpr double kHundredths = 100;

// Values of a development that a header can hold besides those that a person sets.
template <typename Number>
std::string numberText(Number value, double divisor, int digits) {
    return realText(static_cast<double>(value) / divisor, digits);
}

std::string line(const std::string& what, const std::string& text) {
    return "  " + what + std::string(what.size() < 10 ? 10 - what.size() : 1, ' ') + text + "\n";
}

std::string pictureText(std::uint32_t width, std::uint32_t height, std::uint32_t bits,
                        const std::string& codec) {
    return std::to_string(width) + "x" + std::to_string(height) + ", " + std::to_string(bits) + " bits, " +
           (codec.empty() ? "uncompressed" : codec);
}

double secondsOf(std::uint64_t frames, std::uint32_t rate, std::uint32_t scale) {
    return rate == 0 ? 0 : static_cast<double>(frames) * scale / rate;
}

std::string rateText(std::uint32_t rate, std::uint32_t scale) {
    const double fps = scale == 0 ? 0 : static_cast<double>(rate) / scale;
    return realText(fps, 3) + " fps (" + std::to_string(rate) + "/" + std::to_string(scale) + ")";
}

// What a whole movie counts and does not hold was lost by the camera.
std::string framesText(std::uint64_t pictures, std::uint64_t length, bool whole, double seconds) {
    std::string text = std::to_string(pictures);
    if (length > pictures) {
        text += whole ? ", and " + std::to_string(length - pictures) + " that the camera lost"
                      : " of " + std::to_string(length);
    }
    return text + "; " + durationText(seconds);
}

std::string indexText(const AviIndex& index, const char* name) {
    return std::string(name) + ": " + std::to_string(index.frames.pictures) + " frames" +
           (index.frames.empty > 0 ? ", " + std::to_string(index.frames.empty) + " empty" : "") +
           (index.blocks != 1 ? ", " + std::to_string(index.blocks) + " blocks" : "");
}

std::string aviText(const AviReport& avi, bool whole) {
    std::string text;
    if (avi.hasHeader) {
        text += line("picture", pictureText(avi.width, avi.height, avi.bits, avi.codec));
        text += line("rate", rateText(avi.rate, avi.scale));
    }
    text += line("frames", framesText(avi.frames.pictures, avi.length, whole,
                                      secondsOf(avi.length, avi.rate, avi.scale)));
    std::string data = bytesText(static_cast<double>(avi.pictureBytes)) + " of pictures, the largest " +
                       bytesText(avi.largestPicture);
    if (avi.segments.size() > 1) data += ", " + std::to_string(avi.segments.size()) + " segments";
    if (avi.streams > 1) data += ", " + std::to_string(avi.streams) + " streams";
    text += line("data", data);
    if (avi.standardIndex) text += line("index", indexText(*avi.standardIndex, "OpenDML"));
    if (avi.oldIndex) text += line("index", indexText(*avi.oldIndex, "idx1"));
    return text;
}

std::string gammaText(const SmfDevelopment& set) {
    if (set.gammaMode == TAVRA_GAMMA_OFF) return "off";
    if (set.gammaMode == TAVRA_GAMMA_TABLE) return "table";
    std::string text =
        (set.gammaMode == TAVRA_GAMMA_REVERSED ? "negative:" : "") + numberText(set.gamma, kHundredths, 2);
    if (set.brightness != 0 || set.contrast != 0) {
        text += "," + std::to_string(set.brightness) + "," + std::to_string(set.contrast);
    }
    return text;
}

std::string matrixText(const SmfDevelopment& set) {
    if (set.matrixMode == TAVRA_COLOR_MATRIX_OFF) return "off";
    std::string text;
    for (std::size_t i = 0; i < set.matrix.size(); ++i) {
        if (i > 0) text += i % 4 == 0 ? ";" : ",";
        text += numberText(set.matrix[i], kHundredths, 2);
    }
    return text;
}

std::string colorArraysText(const SmfReport& smf) {
    std::string text;
    for (const std::uint32_t code : smf.colorArrays)
        text += (text.empty() ? "" : ", ") + nameOf(kColorArrays, code);
    return text.empty() ? "unknown" : text;
}

std::string developmentText(const SmfDevelopment& set) {
    std::string text =
        "interpolation=" + nameOf(kInterpolations, set.interpolation) + " gamma.y=" + gammaText(set);
    text += " sharpness=" + (set.sharpnessMode == 0
                                 ? "off"
                                 : numberText(set.sharpnessGain, kHundredths, 2) + " (coring " +
                                       std::to_string(set.sharpnessCoring) + ")");
    text += " matrix=" + matrixText(set);
    text += " hue=" + (set.hueMode == 0 ? "0" : numberText(set.hue, 10, 1));
    return text + " saturation=" + (set.hueMode == 0 ? "1" : numberText(set.saturation, kHundredths, 2));
}

std::string smfText(const SmfReport& smf, bool whole) {
    constexpr const char* kSizes[] = {"", ", every second row and column", ", every fourth row and column"};
    std::string text =
        line("picture", std::to_string(smf.width) + "x" + std::to_string(smf.height) + ", " +
                            std::to_string(smf.rawBits) + " bits raw, mosaic " + colorArraysText(smf));
    text += line("rate", rateText(smf.rate, smf.scale));
    text += line("frames",
                 framesText(smf.pictures, smf.length, whole, secondsOf(smf.length, smf.rate, smf.scale)));
    text += line("becomes", std::to_string(smf.developedBits) + " bits, " +
                                (smf.codec.empty() ? "uncompressed" : smf.codec) + ", quality " +
                                std::to_string(smf.quality) + kSizes[std::min(smf.sizeSelect, 2u)]);
    return text + line("developed", developmentText(smf.development));
}

json countJson(const FrameCount& count) {
    return {{"pictures", count.pictures}, {"empty", count.empty}};
}

json indexJson(const std::optional<AviIndex>& index) {
    if (!index) return nullptr;
    return {{"blocks", index->blocks},
            {"entries", index->entries},
            {"frames", countJson(index->frames)},
            {"outside", index->outside},
            {"wrong", index->wrong}};
}

json aviJson(const AviReport& avi) {
    json segments = json::array();
    for (const AviSegment& segment : avi.segments) {
        segments.push_back(
            {{"offset", segment.offset}, {"size", segment.size}, {"frames", countJson(segment.frames)}});
    }
    return {{"format", avi.openDml ? "AVI 2.0" : "AVI 1.0"},
            {"header", avi.hasHeader},
            {"width", avi.width},
            {"height", avi.height},
            {"bits", avi.bits},
            {"codec", avi.codec},
            {"handler", avi.handler},
            {"rate", avi.rate},
            {"scale", avi.scale},
            {"seconds", secondsOf(avi.length, avi.rate, avi.scale)},
            {"pictures", avi.frames.pictures},
            {"length", avi.length},
            {"chunks", countJson(avi.frames)},
            {"pictureBytes", avi.pictureBytes},
            {"largestPicture", avi.largestPicture},
            {"streams", avi.streams},
            {"segments", segments},
            {"oldIndex", indexJson(avi.oldIndex)},
            {"standardIndex", indexJson(avi.standardIndex)}};
}

json smfJson(const SmfReport& smf) {
    const SmfDevelopment& set = smf.development;
    return {{"format", "SMF"},
            {"width", smf.width},
            {"height", smf.height},
            {"rawBits", smf.rawBits},
            {"bits", smf.developedBits},
            {"codec", smf.codec},
            {"quality", smf.quality},
            {"rate", smf.rate},
            {"scale", smf.scale},
            {"seconds", secondsOf(smf.length, smf.rate, smf.scale)},
            {"pictures", smf.pictures},
            {"length", smf.length},
            {"framesPerFile", smf.framesPerFile},
            {"sizeSelect", smf.sizeSelect},
            {"restBytes", smf.restBytes},
            {"colorArrays", smf.colorArrays},
            {"development",
             {{"interpolation", set.interpolation},
              {"gamma",
               {{"mode", set.gammaMode},
                {"gamma", set.gamma},
                {"brightness", set.brightness},
                {"contrast", set.contrast}}},
              {"sharpness",
               {{"mode", set.sharpnessMode}, {"gain", set.sharpnessGain}, {"coring", set.sharpnessCoring}}},
              {"matrix", {{"mode", set.matrixMode}, {"values", set.matrix}}},
              {"hueSaturation", {{"mode", set.hueMode}, {"hue", set.hue}, {"saturation", set.saturation}}}}}};
}

}  // namespace

std::string movieText(const std::string& name, const MovieReport& report) {
    const char* const format = report.smf            ? "SMF"
                               : !report.avi         ? "no movie"
                               : report.avi->openDml ? "AVI 2.0"
                                                     : "AVI 1.0";
    std::string text = name + ": " + format + ", " + std::to_string(report.fileBytes) + " bytes\n";
    if (report.avi) text += aviText(*report.avi, report.whole());
    if (report.smf) text += smfText(*report.smf, report.whole());
    text += line("whole", report.whole() ? "yes" : "no");
    for (const std::string& problem : report.problems) text += "    " + problem + "\n";
    for (const std::string& note : report.notes) text += "    (" + note + ")\n";
    return text;
}

json movieJson(const std::string& name, const MovieReport& report) {
    json object = report.avi   ? aviJson(*report.avi)
                  : report.smf ? smfJson(*report.smf)
                               : json{{"format", nullptr}};
    object["file"] = name;
    object["bytes"] = report.fileBytes;
    object["whole"] = report.whole();
    object["problems"] = report.problems;
    object["notes"] = report.notes;
    return object;
}

std::uint32_t codecOf(const std::string& text) {
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    if (lower == "none") return TAVRA_AVI_COMPRESSOR_NONE;
    if (lower == "mjpg") return TAVRA_AVI_COMPRESSOR_MJPG;
    std::uint32_t code = 0;
    for (std::size_t i = text.size(); i-- > 0;) code = code << 8 | static_cast<std::uint8_t>(text[i]);
    if (text.size() != 4 || !isFourcc(code)) {
        throw Failure(
            "codec cannot be '" + text + "': none, mjpg, or the four letters of a codec, such as HFYU",
            ExitCode::Usage);
    }
    return code;
}

std::string codecName(std::uint32_t code) {
    return code == TAVRA_AVI_COMPRESSOR_NONE ? "none" : fourccText(code);
}

std::string bytesText(double bytes) {
    constexpr const char* kUnits[] = {"bytes", "kB", "MB", "GB", "TB"};
    std::size_t unit = 0;
    for (; bytes >= 1000 && unit + 1 < std::size(kUnits); ++unit) bytes /= 1000;
    return realText(bytes, unit == 0 ? 0 : 1) + " " + kUnits[unit];
}

std::string durationText(double seconds) {
    if (seconds < 60) return realText(seconds, 1) + " s";
    const auto whole = static_cast<unsigned long long>(std::llround(seconds));
    char text[48];
    if (whole >= 3600) {
        std::snprintf(text, sizeof text, "%llu:%02llu:%02llu", whole / 3600, whole / 60 % 60, whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%llu:%02llu", whole / 60, whole % 60);
    }
    return text;
}

}  // namespace tavra::tool
