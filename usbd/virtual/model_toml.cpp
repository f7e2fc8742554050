#include "model_toml.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "light.h"
#include "model_check.h"
#include "toml_fields.h"

namespace tavra::usbd {
namespace {

constexpr double kMostLight = 1e6, kLeastKelvin = 1700, kMostKelvin = 25000;

void readUsb(TomlFields fields, UsbModel& usb) {
    fields.choice("speed", usb.speed, {"full", "high", "super"});
    fields.number("function_address", usb.functionAddress, 1, 127);
    fields.flag("resumes_reads", usb.resumesReads);
    std::vector<std::uint64_t> words;
    if (fields.numbers("driver_version", words, 0xFFFFFFFF, usb.driverVersion.size())) {
        for (std::size_t i = 0; i < words.size(); ++i)
            usb.driverVersion[i] = static_cast<std::uint32_t>(words[i]);
    }
    fields.finish();
}

void readIdentity(TomlFields fields, IdentityModel& identity) {
    fields.choice("layout", identity.layout, {"old", "new"});
    fields.number("vendor", identity.vendor);
    fields.number("product_type", identity.productType, 1);
    fields.number("hardware_revision", identity.hardwareRevision);
    fields.number("firmware_revision", identity.firmwareRevision);
    fields.number("color_array", identity.colorArray, 1, 19);
    fields.number("header_size", identity.headerSize, 0, 4096);
    fields.number("enable_image_size", identity.enableImageSize);
    fields.number("enable_transfer_bits", identity.enableTransferBits, 1);
    fields.number("further_mask", identity.furtherMask);
    fields.number("enable_scan_modes", identity.enableScanModes);
    fields.number("clock_maximum", identity.clockMaximum);
    fields.number("clock_minimum", identity.clockMinimum);
    fields.number("clock_value", identity.clockValue, 1);
    fields.number("enable_clock", identity.enableClock);
    fields.number("enable_shutter_speed", identity.enableShutterSpeed);
    fields.number("further_word", identity.furtherWord);
    fields.number("further_word32", identity.furtherWord32);
    fields.number("enable_trigger_version", identity.enableTriggerVersion);
    fields.number("maximum_width", identity.maximumWidth, 0, 16384);
    fields.number("maximum_height", identity.maximumHeight, 0, 16384);
    fields.finish();
}

void readRegion(TomlFields& fields, Region& region) {
    fields.number("x", region.x, 0, 16384);
    fields.number("y", region.y, 0, 16384);
    fields.number("width", region.width, 0, 16384);
    fields.number("height", region.height, 0, 16384);
    fields.flag("enabled", region.enabled);
}

void readGeometry(TomlFields fields, GeometryModel& geometry) {
    geometry.regions[0].enabled = true;
    readRegion(fields, geometry.regions[0]);
    std::vector<TomlFields> others = fields.tables("region", kMaxRegions - 1);
    geometry.regionCount = static_cast<std::uint32_t>(others.size()) + 1;
    for (std::size_t i = 0; i < others.size(); ++i) {
        geometry.regions[i + 1].enabled = true;
        readRegion(others[i], geometry.regions[i + 1]);
        others[i].finish();
    }
    fields.number("region_count", geometry.regionCount, geometry.regionCount, kMaxRegions);
    fields.number("region_mode", geometry.regionMode, 0, 2);
    fields.number("sensor_width", geometry.sensorWidth, 1, 16384);
    fields.number("sensor_height", geometry.sensorHeight, 1, 16384);
    fields.number("minimum_width", geometry.minimumWidth, 1, 16384);
    fields.number("minimum_height", geometry.minimumHeight, 1, 16384);
    fields.number("width_step", geometry.widthStep, 1, 1024);
    fields.number("height_step", geometry.heightStep, 1, 1024);
    fields.number("x_step", geometry.xStep, 1, 1024);
    fields.number("y_step", geometry.yStep, 1, 1024);
    fields.number("transfer", geometry.transferBits, 1);
    fields.number("scan_mode", geometry.scanMode);
    geometry.recordLength = 64 + 16 * (geometry.regionCount - 1);
    fields.number("record_length", geometry.recordLength, 64, 560);
    fields.number("maximum_gain", geometry.maximumGain);
    fields.number("default_gain", geometry.defaultGain);
    fields.number("default_digital_gain", geometry.defaultDigitalGain);
    fields.finish();
}

void readTiming(TomlFields fields, TimingModel& timing) {
    fields.number("clocks_per_line", timing.clocksPerLine, 1, 0xFFFF);
    fields.number("blank_lines", timing.blankLines, 0, 0x7FFF);
    fields.choice("exposure_unit", timing.exposureUnit, {"clock", "line", "microsecond", "base_clock"});
    fields.number("base_clock_mhz", timing.baseClockMHz, 1, 10000);
    fields.number("minimum_exposure_clocks", timing.minimumExposureClocks);
    fields.real("longest_exposure_seconds", timing.longestExposureSeconds, 0.0001, 3600);
    fields.real("trigger_width_ms", timing.triggerWidthMs, 0.001, 3600000);
    std::vector<std::uint64_t> clocks;
    if (fields.numbers("clocks", clocks, 0xFFFFFFFF, 31)) timing.clocks.assign(clocks.begin(), clocks.end());
    fields.finish();
}

void readSensor(TomlFields fields, SensorModel& sensor) {
    fields.number("bits", sensor.bits, 8, 16);
    fields.real("full_scale_ms", sensor.fullScaleMs, 0, 3600000);
    fields.real("gain_step_db", sensor.gainStepDb, 0, 20);
    fields.choice("digital_gain", sensor.digitalGain, {"times64", "plus64", "decibel"});
    std::vector<double> response;
    if (fields.reals("response", response, 0.001, 10, 3))
        std::copy_n(response.begin(), 3, sensor.response.begin());
    fields.real("full_well", sensor.fullWell, 1, 1e9);
    fields.real("read_noise", sensor.readNoise, 0, 1e6);
    fields.flag("noise", sensor.noise);
    fields.number("noise_variants", sensor.noiseVariants, 1, 16);
    fields.real("vignetting", sensor.vignetting, 0, 1);
    fields.number("hot_pixels", sensor.hotPixels, 0, 65536);
    fields.number("black_level", sensor.blackLevel);
    fields.number("seed", sensor.seed);
    fields.flag("mirror_keeps_phase_x", sensor.mirrorKeepsPhaseX);
    fields.flag("mirror_keeps_phase_y", sensor.mirrorKeepsPhaseY);
    fields.finish();
}

void readScene(TomlFields fields, SceneModel& scene) {
    fields.text("source", scene.source, 4096);
    fields.real("kelvin", scene.kelvin, kLeastKelvin, kMostKelvin);
    std::vector<LightStep> steps;
    for (TomlFields& table : fields.tables("step", 64)) {
        LightStep step;
        table.real("seconds", step.seconds, 0.01, 3600);
        table.real("light", step.light, 0, kMostLight);
        table.real("kelvin", step.kelvin, kLeastKelvin, kMostKelvin);
        table.finish();
        steps.push_back(step);
    }
    std::size_t name = 0;
    if (fields.realOrWord("light", scene.light, 0, kMostLight, {"script", "dim"}, name)) {
        if (name == 0) {
            scene.script = steps.empty() ? builtInLightScript() : steps;
        } else {
            scene.light = kDimLight;
            scene.tint = kDimTint;
        }
    }
    fields.real("tint", scene.tint, 0.25, 4);
    fields.finish();
}

void readStream(TomlFields fields, StreamModel& stream) {
    fields.flag("paced", stream.paced);
    fields.choice("header", stream.headerApart, {"together", "apart"});
    fields.finish();
}

void readMemory(TomlFields fields, MemoryModel& memory) {
    fields.number("user_id", memory.userId);
    fields.text("user_text", memory.userText, 249);
    fields.number("serial_id", memory.serialId);
    fields.text("serial_text", memory.serialText, 249);
    std::vector<std::uint64_t> words;
    if (fields.numbers("camera_words", words, 0xFFFF, 4)) {
        for (std::size_t i = 0; i < words.size(); ++i)
            memory.cameraWords[i] = static_cast<std::uint16_t>(words[i]);
    }
    fields.finish();
}

void readI2c(std::vector<TomlFields> tables, std::vector<I2cModel>& devices) {
    for (TomlFields& fields : tables) {
        I2cModel device;
        fields.number("bus", device.bus);
        fields.number("address", device.address, 0, 127);
        fields.number("register_bits", device.registerBits, 8, 16);
        fields.number("size", device.size, 1, 65536);
        std::vector<std::uint64_t> bytes;
        if (fields.numbers("bytes", bytes, 255, 65536)) device.bytes.assign(bytes.begin(), bytes.end());
        fields.finish();
        devices.push_back(device);
    }
}

template <typename Number>
bool wholeText(std::string_view text, Number& value) {
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), value);
    return failure == std::errc() && end == text.data() + text.size() && !text.empty();
}

// The part of `text` before the first `mark`; `text` becomes what stands behind it, or empty.
std::string_view cutAt(std::string_view& text, char mark) {
    const std::size_t at = std::min(text.find(mark), text.size());
    const std::string_view head = text.substr(0, at);
    text.remove_prefix(std::min(at + 1, text.size()));
    return head;
}

// "33@2x1+17": request 33 from its second time on, once; request 17 always.
bool readControlFaults(std::string_view text, std::vector<ControlFault>& faults) {
    while (!text.empty()) {
        std::string_view when = cutAt(text, '+');
        const bool counted = when.find('@') != std::string_view::npos;
        ControlFault fault;
        const std::string_view request = cutAt(when, '@');
        if (!wholeText(request, fault.request) || (counted && when.empty())) return false;
        const bool limited = when.find('x') != std::string_view::npos;
        const std::string_view first = cutAt(when, 'x');
        if (counted && (!wholeText(first, fault.first) || fault.first == 0)) return false;
        if (limited && !wholeText(when, fault.times)) return false;
        faults.push_back(fault);
    }
    return true;
}

void controlFaults(TomlFields& fields, std::string_view key, std::vector<ControlFault>& faults) {
    std::string text;
    fields.text(key, text, 1024);
    if (!readControlFaults(text, faults))
        fields.complain(key, "must look like 33@2x1+17 (request@first time x count)");
}

// "23@5": an amount at a frame.
void frameFault(TomlFields& fields, std::string_view key, FrameFault& fault) {
    std::string text;
    fields.text(key, text, 64);
    if (text.empty()) return;
    std::string_view frame = text;
    const std::string_view amount = cutAt(frame, '@');
    if (!wholeText(amount, fault.amount) || !wholeText(frame, fault.frame) || fault.frame == 0) {
        fields.complain(key, "must look like 23@5 (amount@frame, the first frame being 1)");
    }
}

void readFault(TomlFields fields, FaultModel& fault) {
    controlFaults(fields, "fail", fault.fail);
    controlFaults(fields, "short", fault.cut);
    frameFault(fields, "error", fault.error);
    frameFault(fields, "shorten", fault.shorten);
    frameFault(fields, "lengthen", fault.lengthen);
    fields.number("settle", fault.settle);
    fields.number("slow_ms", fault.slowMs, 0, 60000);
    fields.number("vanish_at_frame", fault.vanishAtFrame);
    fields.number("vanish_at_control", fault.vanishAtControl);
    fields.number("vanish_error", fault.vanishError, 1);
    fields.number("return_after", fault.returnAfter);
    fields.number("unconfigured", fault.unconfigured);
    fields.finish();
}

void readCapability(TomlFields fields, std::array<std::uint16_t, 20>& words) {
    for (std::size_t i = 0; i < words.size(); ++i) fields.number("word" + std::to_string(i), words[i]);
    fields.finish();
}

void readStatus(TomlFields fields, std::map<std::uint16_t, std::uint16_t>& status) {
    for (const std::string& key : fields.takeAllKeys()) {
        std::uint16_t address = 0, value = 0;
        if (!wholeText(key, address) || address > 255) {
            fields.complain(key, "is not a status address from 0 to 255");
            continue;
        }
        fields.number(key, value);
        status[address] = value;
    }
}

// [pages]: "21" = { size = 256, values = { "96" = 100 } }
void readPages(TomlFields fields, PagesModel& pages) {
    pages.present = fields.present();
    for (const std::string& key : fields.takeAllKeys()) {
        std::uint32_t page = 0;
        if (!wholeText(key, page) || page >= kPageCount) {
            fields.complain(key, "is not a page from 0 to 27");
            continue;
        }
        TomlFields table = fields.table(key);
        table.number("size", pages.sizes[page], 0, 4096);
        TomlFields values = table.table("values");
        for (const std::string& offsetKey : values.takeAllKeys()) {
            std::uint32_t offset = 0, value = 0;
            if (!wholeText(offsetKey, offset) || offset % 4 != 0 || offset == 0 ||
                offset + 4 > pages.sizes[page]) {
                values.complain(offsetKey, "is not an offset inside the page, a multiple of four above 0");
                continue;
            }
            values.number(offsetKey, value);
            pages.values[{page, offset}] = value;
        }
        table.finish();
    }
}

// What the host concludes from type and capability words, and the sensor does by default.
void setByType(Model& model) {
    constexpr std::uint16_t kDecibelTypes[] = {2326, 3448, 4118, 16385, 16386, 16387, 16388};
    constexpr int kDecibelVariant = 28;
    const bool isDecibelType = std::find(std::begin(kDecibelTypes), std::end(kDecibelTypes),
                                         model.identity.productType) != std::end(kDecibelTypes);
    const bool countsFromOne = model.has(16, 7);
    SensorModel& sensor = model.sensor;
    if (isDecibelType || (countsFromOne && model.capability[7] >> 8 == kDecibelVariant)) {
        sensor.digitalGain = DigitalGainScale::Decibel;
    } else if (countsFromOne) {
        sensor.digitalGain = DigitalGainScale::Plus64;
    }
    const bool keepsColors = model.has(4, 7);
    sensor.mirrorKeepsPhaseX = keepsColors;
    sensor.mirrorKeepsPhaseY = keepsColors || isDecibelType;
}

void readModel(TomlFields fields, Model& model) {
    fields.text("name", model.name, 64);
    fields.text("description", model.description, 1024);
    fields.choice("firmware", model.firmware, {"present", "absent"});
    readUsb(fields.table("usb"), model.usb);
    readIdentity(fields.table("identity"), model.identity);
    readCapability(fields.table("capability"), model.capability);
    readStatus(fields.table("status"), model.status);
    readPages(fields.table("pages"), model.pages);
    model.geometry.sensorWidth = std::max(model.identity.maximumWidth, 1u);
    model.geometry.sensorHeight = std::max(model.identity.maximumHeight, 1u);
    readGeometry(fields.table("geometry"), model.geometry);
    readTiming(fields.table("timing"), model.timing);
    setByType(model);
    readSensor(fields.table("sensor"), model.sensor);
    readScene(fields.table("scene"), model.scene);
    readStream(fields.table("stream"), model.stream);
    readMemory(fields.table("memory"), model.memory);
    readI2c(fields.tables("i2c", 64), model.i2c);
    readFault(fields.table("fault"), model.fault);
    fields.finish();
}

struct Alias {
    std::string_view shortName, field;
};

constexpr Alias kAliases[] = {
    {"width", "geometry.width"},
    {"height", "geometry.height"},
    {"x", "geometry.x"},
    {"y", "geometry.y"},
    {"transfer", "geometry.transfer"},
    {"pace", "stream.paced"},
    {"header", "stream.header"},
    {"scene", "scene.source"},
    {"light", "scene.light"},
    {"kelvin", "scene.kelvin"},
    {"tint", "scene.tint"},
    {"seed", "sensor.seed"},
    {"noise", "sensor.noise"},
    {"vignetting", "sensor.vignetting"},
    {"hotpixels", "sensor.hot_pixels"},
    {"userid", "memory.user_id"},
    {"usertext", "memory.user_text"},
    {"serial", "memory.serial_id"},
    {"speed", "usb.speed"},
};

std::string_view fieldOf(std::string_view key) {
    for (const Alias& alias : kAliases) {
        if (alias.shortName == key) return alias.field;
    }
    return key;
}

// The TOML reader's tables of Unicode blanks have holes that end in undefined behaviour (toml++ 3.3), so it
// is given ASCII alone; texts beyond that are written with \u escapes, or as the value of a key.
bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// A request to fail or a camera's name may look like a number, and is none.
bool isTextField(std::string_view path) {
    constexpr std::string_view kTextFields[] = {"name",       "description",      "scene.source",
                                                "fault.fail", "memory.user_text", "memory.serial_text",
                                                "fault.short"};
    return std::find(std::begin(kTextFields), std::end(kTextFields), path) != std::end(kTextFields);
}

// Puts the value at the end of the path of tables. The value is TOML where it can be read as such, on or off,
// or a plain text; where a text is wanted, only a text in quotes is TOML.
bool place(toml::table& root, std::string_view path, const std::string& value) {
    toml::table* table = &root;
    std::string_view rest = path;
    std::string_view key = cutAt(rest, '.');
    for (; !rest.empty(); key = cutAt(rest, '.')) {
        toml::node* node = table->get(key);
        if (node == nullptr) {
            table->insert(std::string(key), toml::table{});
            node = table->get(key);
        }
        table = node->as_table();
        if (table == nullptr) return false;
    }
    if (key.empty()) return false;
    const bool wantsText = isTextField(path);
    if (!wantsText && (value == "on" || value == "off")) {
        table->insert_or_assign(std::string(key), value == "on");
        return true;
    }
    const toml::parse_result parsed = toml::parse(isAscii(value) ? "value = " + value : std::string());
    const bool isToml =
        parsed && parsed.table().size() == 1 && (!wantsText || parsed.table().get("value")->is_string());
    if (isToml) {
        table->insert_or_assign(std::string(key), *parsed.table().get("value"));
    } else {
        table->insert_or_assign(std::string(key), value);
    }
    return true;
}

}  // namespace

bool parseModel(std::string_view text, const std::vector<Override>& overrides, Model& model,
                std::string& complaint) {
    if (!isAscii(text)) {
        complaint = "the file must be plain ASCII; write other characters of texts as \\u escapes";
        return false;
    }
    toml::parse_result parsed = toml::parse(text);
    if (!parsed) {
        complaint = "line " + std::to_string(parsed.error().source().begin.line) + ": " +
                    std::string(parsed.error().description());
        return false;
    }
    toml::table root = std::move(parsed).table();
    for (const auto& [key, value] : overrides) {
        if (!place(root, fieldOf(key), value)) {
            complaint = key + " is not a field that can be set";
            return false;
        }
    }
    Complaint first;
    model = Model{};
    readModel(TomlFields(&root, "", first), model);
    if (!first.any()) checkModel(model, first);
    complaint = first.text();
    return !first.any();
}

}  // namespace tavra::usbd
