#include "movie_probe/smf_probe.h"

#include <algorithm>

#include "base/little_endian.h"
#include "movie_probe/fourcc.h"

namespace tavra::tool {
namespace {

constexpr std::uint32_t kMagic = 0x464D53;
constexpr std::uint32_t kLargestHeader = 376;
constexpr std::uint32_t kFrameHeader = 24;
constexpr std::size_t kMostColorArrays = 16;  // told of; a mirror gives two

using Header = std::array<std::uint8_t, kLargestHeader>;

SmfDevelopment developmentOf(const Header& header) {
    SmfDevelopment settings;
    const std::uint8_t* const at = header.data();
    settings.interpolation = loadLe32(at + 64);
    settings.gammaMode = at[68];
    settings.contrast = at[69];
    settings.gamma = loadLe16(at + 70);
    settings.brightness = static_cast<std::int16_t>(loadLe16(at + 72));
    settings.sharpnessMode = at[336];
    settings.sharpnessCoring = at[337];
    settings.sharpnessGain = loadLe16(at + 338);
    settings.matrixMode = at[340];
    for (std::size_t i = 0; i < settings.matrix.size(); ++i) {
        settings.matrix[i] = static_cast<std::int16_t>(loadLe16(at + 344 + 2 * i));
    }
    settings.hueMode = at[368];
    settings.hue = static_cast<std::int16_t>(loadLe16(at + 372));
    settings.saturation = loadLe16(at + 374);
    return settings;
}

SmfReport headerOf(const Header& header) {
    SmfReport smf;
    const std::uint8_t* const at = header.data();
    smf.headerSize = loadLe32(at + 4);
    smf.width = loadLe32(at + 8);
    smf.height = loadLe32(at + 12);
    smf.rowPixels = loadLe32(at + 16);
    smf.rawBits = loadLe16(at + 20);
    smf.developedBits = loadLe16(at + 22);
    smf.rate = loadLe32(at + 24);
    smf.scale = loadLe32(at + 28);
    smf.frameHeaderSize = loadLe32(at + 32);
    smf.frameSize = loadLe32(at + 36);
    smf.codec = fourccText(loadLe32(at + 40));
    smf.framesPerFile = loadLe32(at + 44);
    smf.quality = loadLe32(at + 48);
    smf.sizeSelect = loadLe32(at + 52);
    smf.development = developmentOf(header);
    return smf;
}

// Whether frames can be looked for. Says what is wrong otherwise.
bool framesMakeSense(const SmfReport& smf, std::vector<std::string>& problems) {
    const std::uint64_t pixels = std::uint64_t{smf.width} * smf.height;
    if (pixels == 0 || smf.frameSize == 0) {
        problems.emplace_back("its header tells frames of no size");
    } else if (smf.frameSize != pixels) {
        problems.push_back("its header tells frames of " + std::to_string(smf.frameSize) + " bytes, where " +
                           std::to_string(smf.width) + "x" + std::to_string(smf.height) + " pixels have " +
                           std::to_string(pixels));
    } else if (smf.frameHeaderSize != kFrameHeader) {
        problems.push_back("its header tells " + std::to_string(smf.frameHeaderSize) +
                           " bytes ahead of each frame, where there are " + std::to_string(kFrameHeader));
    } else {
        return true;
    }
    return false;
}

// Numbers grow from frame to frame. Where they do not there is no frame, and the rest is not looked at.
void readFrames(ByteReader& reader, ProbeDepth depth, SmfReport& smf, std::vector<std::string>& problems) {
    const std::uint64_t record = std::uint64_t{smf.frameHeaderSize} + smf.frameSize;
    const std::uint64_t room = reader.size() - smf.headerSize;
    smf.pictures = room / record;
    smf.restBytes = room % record;
    const bool ends = depth == ProbeDepth::Index;  // the first and the last frame only
    for (std::uint64_t i = 0; i < smf.pictures; i += ends && i + 1 < smf.pictures ? smf.pictures - 1 : 1) {
        std::array<std::uint8_t, 8> head{};
        if (!reader.get(smf.headerSize + i * record, head)) break;
        const std::uint64_t number = loadLe32(head.data());
        if (number < smf.length || (i == 0 && number != 0)) {
            problems.push_back("place " + std::to_string(i) + " holds frame " + std::to_string(number) +
                               (i == 0 ? ", where the first has number 0"
                                       : ", behind frame " + std::to_string(smf.length - 1)) +
                               ": the frames do not stand where they should");
            return;
        }
        smf.length = number + 1;
        const std::uint32_t colors = loadLe32(head.data() + 4);
        auto& known = smf.colorArrays;
        if (known.size() < kMostColorArrays && std::find(known.begin(), known.end(), colors) == known.end()) {
            known.push_back(colors);
        }
    }
}

}  // namespace

bool probeSmf(ByteSource& source, ProbeDepth depth, MovieReport& report) {
    Header header{};
    const std::size_t got = source.read(0, header);
    if (got < 8 || loadLe32(header.data()) != kMagic) return false;
    const std::uint32_t headerSize = loadLe32(header.data() + 4);
    if (headerSize < kLargestHeader) {  // what a short header lacks counts as zero
        std::fill(header.begin() + static_cast<std::ptrdiff_t>(std::max(headerSize, 8u)), header.end(), 0);
    }
    report.smf = headerOf(header);
    if (headerSize > kLargestHeader) {
        report.problems.push_back("its header says that it has " + std::to_string(headerSize) + " bytes; " +
                                  std::to_string(kLargestHeader) + " are the most");
        return true;
    }
    if (report.fileBytes < headerSize) {
        report.problems.push_back("it is cut inside its header, " +
                                  std::to_string(headerSize - report.fileBytes) + " bytes short");
        return true;
    }
    if (!framesMakeSense(*report.smf, report.problems)) return true;
    ByteReader reader(source);
    readFrames(reader, depth, *report.smf, report.problems);
    if (report.smf->restBytes > 0) {
        report.problems.push_back(
            "it is cut inside frame " + std::to_string(report.smf->pictures) + ": " +
            std::to_string(report.smf->restBytes) + " of " +
            std::to_string(std::uint64_t{report.smf->frameHeaderSize} + report.smf->frameSize) +
            " bytes are there");
    }
    return true;
}

}  // namespace tavra::tool
