#include "shading_map.h"

#include <array>
#include <cstring>
#include <fstream>
#include <iterator>

#include "base/little_endian.h"
#include "exit_code.h"

namespace tavra::tool {
namespace {

constexpr char kMagic[8] = {'T', 'V', 'S', 'H', 'A', 'D', 'E', '1'};
constexpr std::size_t kHeaderBytes = 20;  // magic, mode, width, height
constexpr std::uint32_t kLargestSide = 65535;

bool isCorrection(std::uint32_t mode) {
    return mode == TAVRA_SHADING_GAIN || mode == TAVRA_SHADING_OFFSET;
}

[[noreturn]] void refuse(const std::string& fileName, const std::string& why) {
    throw Failure(fileName + " is no shading map: " + why + "; `tavra calibrate shading` makes them");
}

}  // namespace

ShadingMap readShadingMap(const Camera& camera) {
    ShadingMap map;
    std::uint32_t stride = 0;
    camera.check(Tavra_GetShadingCorrectionMap(camera.handle(), &map.width, &map.height, &stride, nullptr),
                 "cannot read the shading map");
    if (map.width == 0 || map.height == 0) return {};
    std::vector<std::uint8_t> rows(std::size_t{stride} * map.height);
    camera.check(Tavra_GetShadingCorrectionMap(camera.handle(), nullptr, nullptr, nullptr, rows.data()),
                 "cannot read the shading map");
    map.entries.resize(std::size_t{map.width} * map.height);
    for (std::size_t y = 0; y < map.height; ++y) {
        std::memcpy(&map.entries[y * map.width], &rows[y * stride], map.width * sizeof(std::int32_t));
    }
    return map;
}

void applyShadingMap(const Camera& camera, const ShadingMap& map) {
    std::uint16_t scanMode = 0;
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    camera.check(Tavra_GetImageSize(camera.handle(), 0, &scanMode, &x, &y, &width, &height),
                 "cannot read the image size");
    if (width != map.width || height != map.height) {
        throw Failure("the shading map is made for " + std::to_string(map.width) + "x" +
                      std::to_string(map.height) + ", the camera sends " + std::to_string(width) + "x" +
                      std::to_string(height));
    }
    camera.check(Tavra_SetShadingCorrectionMap(camera.handle(), map.width, map.height,
                                               map.width * static_cast<std::uint32_t>(sizeof(std::int32_t)),
                                               map.entries.data()),
                 "cannot set the shading map");
    camera.check(Tavra_SetShadingCorrectionMode(camera.handle(), map.mode),
                 "cannot switch the shading correction on");
}

ShadingMap loadShadingMap(const std::string& fileName) {
    std::ifstream file(fileName, std::ios::binary);
    if (!file) throw Failure("cannot open the shading map " + fileName);
    std::array<std::uint8_t, kHeaderBytes> header{};
    file.read(reinterpret_cast<char*>(header.data()), header.size());
    if (!file || std::memcmp(header.data(), kMagic, sizeof kMagic) != 0)
        refuse(fileName, "it begins otherwise");
    ShadingMap map;
    map.mode = loadLe32(&header[8]);
    map.width = loadLe32(&header[12]);
    map.height = loadLe32(&header[16]);
    if (!isCorrection(map.mode) || map.width == 0 || map.height == 0 || map.width > kLargestSide ||
        map.height > kLargestSide) {
        refuse(fileName, "its mode or size is impossible");
    }
    const std::vector<char> data{std::istreambuf_iterator<char>(file), {}};
    const std::size_t count = std::size_t{map.width} * map.height;
    if (data.size() != count * sizeof(std::int32_t)) refuse(fileName, "it is not as long as its size says");
    map.entries.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        map.entries[i] = static_cast<std::int32_t>(
            loadLe32(reinterpret_cast<const std::uint8_t*>(data.data()) + i * sizeof(std::int32_t)));
    }
    return map;
}

void saveShadingMap(const ShadingMap& map, const std::string& fileName) {
    std::vector<std::uint8_t> bytes(kHeaderBytes + map.entries.size() * sizeof(std::int32_t));
    std::memcpy(bytes.data(), kMagic, sizeof kMagic);
    storeLe32(&bytes[8], map.mode);
    storeLe32(&bytes[12], map.width);
    storeLe32(&bytes[16], map.height);
    for (std::size_t i = 0; i < map.entries.size(); ++i) {
        storeLe32(&bytes[kHeaderBytes + i * sizeof(std::int32_t)],
                  static_cast<std::uint32_t>(map.entries[i]));
    }
    std::ofstream file(fileName, std::ios::binary | std::ios::trunc);
    if (!file)
        throw Failure("cannot open " + fileName + " for writing; check the folder and its permissions");
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) throw Failure(fileName + " could not be written whole; is the disk full?");
}

}  // namespace tavra::tool
