// What a virtual camera is made of: the contents of a model file, with the overrides of its name applied.
// Plain data, built once (model_toml.h) and constant afterwards.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace tavra::usbd {

enum class UsbSpeed { Full, High, Super };
enum class IdentityLayout { Old, New };
enum class Firmware { BuiltIn, Absent };

struct UsbModel {
    UsbSpeed speed = UsbSpeed::Super;
    std::uint32_t functionAddress = 1;
    std::array<std::uint32_t, 4> driverVersion{0x00030001, 0, 0,
                                               0};  // major and minor, build, two further words
    bool resumesReads = true;                       // UsbCanResumeRead

    std::uint32_t packetSize() const {
        return speed == UsbSpeed::Super ? 1024 : speed == UsbSpeed::High ? 512 : 64;
    }
};

// The identity block, field by field as the camera tells it.
struct IdentityModel {
    IdentityLayout layout = IdentityLayout::New;
    std::uint16_t vendor = 0x2E6B;
    std::uint16_t productType = 0;
    std::uint16_t hardwareRevision = 1;
    std::uint16_t firmwareRevision = 256;
    std::uint16_t colorArray = 1;
    std::uint16_t headerSize = 64;
    std::uint32_t enableImageSize = 1;
    std::uint32_t enableTransferBits = 1;
    std::uint32_t furtherMask = 0;
    std::uint16_t enableScanModes = 1;
    std::uint32_t clockMaximum = 24545455;
    std::uint32_t clockMinimum = 24545455;
    std::uint32_t clockValue = 24545455;
    std::uint32_t enableClock = 1;
    std::uint16_t enableShutterSpeed = 1;
    std::uint16_t furtherWord = 0;
    std::uint32_t furtherWord32 = 0;
    std::uint32_t enableTriggerVersion = 1;
    std::uint32_t maximumWidth = 0;  // 0: the camera does not tell
    std::uint32_t maximumHeight = 0;
};

struct Region {
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    bool enabled = false;

    friend bool operator==(const Region&, const Region&) = default;
};

inline constexpr std::size_t kMaxRegions = 32;

struct GeometryModel {
    std::uint32_t sensorWidth = 640, sensorHeight = 480;
    std::array<Region, kMaxRegions> regions{};  // at start; region 0 is the main image
    std::uint32_t regionCount = 1;
    std::uint32_t regionMode = 0;  // 2: the camera packs the grid of the regions itself
    std::uint32_t minimumWidth = 16, minimumHeight = 2;
    std::uint32_t widthStep = 4, heightStep = 2, xStep = 4, yStep = 2;
    std::uint32_t transferBits = 1;  // code at start
    std::uint16_t scanMode = 1;
    std::uint32_t recordLength = 64;
    std::uint16_t maximumGain = 255, defaultGain = 0, defaultDigitalGain = 64;
};

enum class ExposureUnit { Clock, Line, Microsecond, BaseClock };

struct TimingModel {
    std::uint32_t clocksPerLine = 2000;
    std::uint32_t blankLines = 40;  // lines of a frame that carry no image
    ExposureUnit exposureUnit = ExposureUnit::Clock;
    std::uint32_t baseClockMHz = 100;
    std::uint32_t minimumExposureClocks = 1426;  // of the base clock
    double longestExposureSeconds = 4.0;
    double triggerWidthMs = 10;         // how long a trigger lasts, where it times the exposure
    std::vector<std::uint32_t> clocks;  // Hz by clock mode bit; a mode behind the end runs at the clock value
};

enum class DigitalGainScale { Times64, Plus64, Decibel };

struct SensorModel {
    std::uint32_t bits = 12;
    double fullScaleMs =
        0;  // exposure that saturates white at light 1; 0: the longest short exposure at start, and a tenth
    double gainStepDb = 0.1;
    DigitalGainScale digitalGain = DigitalGainScale::Times64;
    std::array<double, 3> response{0.62, 1.0,
                                   0.71};  // of the red, green and blue sites to white light of 5500 K
    double fullWell = 10000;               // electrons
    double readNoise = 3;                  // electrons, standard deviation
    bool noise = true;
    std::uint32_t noiseVariants = 4;
    double vignetting = 0.12;  // loss in the corners
    std::uint32_t hotPixels = 12;
    std::uint16_t blackLevel = 0;
    std::uint32_t seed = 1;
    bool mirrorKeepsPhaseX = false,
         mirrorKeepsPhaseY = false;  // a mirrored read-out begins with the same colour; default: by the type
};

struct LightStep {
    double seconds = 1;  // of the camera's frame time
    double light = 1;
    double kelvin = 5500;
};

struct SceneModel {
    std::string source = "chart";  // or the path of a PNG file
    double light = 1.0;
    double kelvin = 5500;
    double tint = 1;                // of the light: its green against its red and blue
    std::vector<LightStep> script;  // played over and over; empty: light and kelvin stay
};

struct StreamModel {
    bool paced = true;
    bool headerApart = false;
};

struct MemoryModel {
    std::uint32_t userId = 0;
    std::string userText;
    std::uint32_t serialId = 1;
    std::string serialText = "virtual";
    std::array<std::uint16_t, 4> cameraWords{128, 128, 128,
                                             128};  // white balance gains at reset: R, Gr, Gb, B
};

struct I2cModel {
    std::uint8_t bus = 0;
    std::uint8_t address = 0;
    std::uint32_t registerBits = 8;
    std::uint32_t size = 256;
    std::vector<std::uint8_t> bytes;  // at start; the rest is 0
};

// A fault at the nth occurrence of something, so many times over.
struct ControlFault {
    std::uint8_t request = 0;
    std::uint32_t first = 1;  // counted from 1
    std::uint32_t times = 0xFFFFFFFF;
};

struct FrameFault {
    std::uint32_t frame = 0;   // counted from 1, since the first start of the stream
    std::uint32_t amount = 0;  // bytes, or an error number

    bool ordered() const { return frame != 0; }
};

struct FaultModel {
    std::vector<ControlFault> fail, cut;  // transfers that fail; that go over with half of their bytes
    FrameFault error;                     // the frame's reads end with this error number
    FrameFault shorten, lengthen;
    std::uint32_t settle = 0;  // beginRead gives 31 so many times
    std::uint32_t slowMs = 0;  // every control transfer takes so long
    std::uint32_t vanishAtFrame = 0, vanishAtControl = 0;
    std::uint32_t vanishError = 1167;
    std::uint32_t returnAfter = 0;   // enumerations without the camera before it is back; 0: never
    std::uint32_t unconfigured = 0;  // device controls that it takes before the configuration check passes
};

inline constexpr std::size_t kPageCount = 28;

struct PagesModel {
    bool present = false;
    std::array<std::uint32_t, kPageCount> sizes{};  // bytes, the size word included; 0: empty
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> values;  // by page and offset
};

struct Model {
    std::string name;
    std::string description;
    UsbModel usb;
    IdentityModel identity;
    std::array<std::uint16_t, 20> capability{};
    std::map<std::uint16_t, std::uint16_t> status;  // status words at start, index 0
    PagesModel pages;
    GeometryModel geometry;
    TimingModel timing;
    SensorModel sensor;
    SceneModel scene;
    StreamModel stream;
    MemoryModel memory;
    std::vector<I2cModel> i2c;
    Firmware firmware = Firmware::BuiltIn;
    FaultModel fault;

    bool isLegacy() const {
        const std::uint16_t type = identity.productType;
        return type == 773 || type == 1541 || type == 1797 || type == 2053;
    }
    bool capabilityBit(std::size_t word, int bit) const { return (capability[word] >> bit & 1) != 0; }
    // What the host finds as well: the oldest types have no capability words.
    bool has(std::size_t word, int bit) const { return !isLegacy() && capabilityBit(word, bit); }
    bool hasRegisters() const { return has(4, 0); }
};

}  // namespace tavra::usbd
