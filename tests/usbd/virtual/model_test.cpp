#include "model_toml.h"

#include <gtest/gtest.h>

namespace tavra::usbd {
namespace {

const std::string kSmall = R"(
name = "small"
[identity]
product_type = 300
maximum_width = 64
maximum_height = 48
)";

std::string complaintOf(const std::string& text, const std::vector<Override>& overrides = {}) {
    Model model;
    std::string complaint;
    const bool good = parseModel(text, overrides, model, complaint);
    EXPECT_EQ(good, complaint.empty());
    return complaint;
}

TEST(Model, WhatAFileLeavesOutHasADefault) {
    Model model;
    std::string complaint;
    ASSERT_TRUE(parseModel(kSmall, {}, model, complaint)) << complaint;
    EXPECT_EQ(model.identity.vendor, 0x2E6B);
    EXPECT_EQ(model.usb.packetSize(), 1024u);
    EXPECT_EQ(model.geometry.sensorWidth, 64u);
    EXPECT_EQ(model.geometry.sensorHeight, 48u);
    EXPECT_FALSE(model.pages.present);
    EXPECT_TRUE(model.stream.paced);
}

TEST(Model, EveryKindOfFieldIsRead) {
    Model model;
    std::string complaint;
    ASSERT_TRUE(parseModel(kSmall + R"(
header_size = 128
color_array = 5
[usb]
speed = "high"
driver_version = [0x30000, 6]
[capability]
word4 = 0x0001
word19 = 0x8000
[status]
63 = 2
[pages]
21 = { size = 16, values = { 12 = 0xFFFFFFFF } }
[sensor]
response = [1, 0.5, 2.5]
noise = false
[scene]
light = 2
[stream]
header = "apart"
[memory]
user_id = 4294967295
camera_words = [1, 2, 3, 65535]
[[i2c]]
bus = 1
address = 16
bytes = [1, 2]
[[geometry.region]]
x = 8
width = 16
height = 8
)",
                           {}, model, complaint))
        << complaint;
    EXPECT_EQ(model.identity.headerSize, 128);
    EXPECT_EQ(model.usb.packetSize(), 512u);
    EXPECT_EQ(model.usb.driverVersion[1], 6u);
    EXPECT_TRUE(model.hasRegisters());
    EXPECT_TRUE(model.capabilityBit(19, 15));
    EXPECT_EQ(model.status.at(63), 2);
    EXPECT_EQ(model.pages.sizes[21], 16u);
    EXPECT_EQ(model.pages.values.at({21, 12}), 0xFFFFFFFFu);
    EXPECT_EQ(model.sensor.response[1], 0.5);
    EXPECT_FALSE(model.sensor.noise);
    EXPECT_EQ(model.scene.light, 2.0) << "a whole number is a real one too";
    EXPECT_TRUE(model.stream.headerApart);
    EXPECT_EQ(model.memory.userId, 0xFFFFFFFFu);
    EXPECT_EQ(model.memory.cameraWords[3], 65535);
    EXPECT_EQ(model.i2c.at(0).address, 16);
    EXPECT_EQ(model.geometry.regionCount, 2u);
    EXPECT_EQ(model.geometry.regions[1].x, 8u);
    EXPECT_TRUE(model.geometry.regions[1].enabled);
}

TEST(Model, KeysTakeThePlaceOfFields) {
    Model model;
    std::string complaint;
    const std::vector<Override> keys{
        {"width", "32"},        {"pace", "off"},          {"noise", "off"},
        {"userid", "3"},        {"usertext", "left one"}, {"capability.word3", "0x801"},
        {"scene.light", "0.5"}, {"header", "apart"},      {"fault.settle", "2"},
        {"status.63", "1"},     {"usb.speed", "full"}};
    ASSERT_TRUE(parseModel(kSmall, keys, model, complaint)) << complaint;
    EXPECT_EQ(model.geometry.regions[0].width, 32u);
    EXPECT_FALSE(model.stream.paced);
    EXPECT_FALSE(model.sensor.noise);
    EXPECT_EQ(model.memory.userId, 3u);
    EXPECT_EQ(model.memory.userText, "left one");
    EXPECT_EQ(model.capability[3], 0x801);
    EXPECT_EQ(model.scene.light, 0.5);
    EXPECT_EQ(model.fault.settle, 2u);
    EXPECT_EQ(model.status.at(63), 1);
    EXPECT_EQ(model.usb.packetSize(), 64u);
}

TEST(Model, AValueCannotBringFieldsOfItsOwn) {
    EXPECT_NE(complaintOf(kSmall, {{"width", "32\nheight = 16"}}), "");
    EXPECT_NE(complaintOf(kSmall, {{"name.width", "32"}}), "") << "name is no table";
    EXPECT_NE(complaintOf(kSmall, {{"geometry.", "32"}}), "");
    EXPECT_NE(complaintOf(kSmall, {{".", "32"}}), "");
}

TEST(Model, BrokenFilesAreRefusedWithTheReason) {
    EXPECT_EQ(complaintOf("name = "), complaintOf("name = ")) << "the same words each time";
    EXPECT_EQ(complaintOf("a = 1\nb = [").substr(0, 5), "line ");
    EXPECT_EQ(complaintOf(""), "identity.product_type is missing");
    EXPECT_EQ(complaintOf("identity = 3"), "identity must be a table");
    EXPECT_EQ(complaintOf("i2c = 3"), "i2c must be an array of at most 64 tables");
    EXPECT_EQ(complaintOf("i2c = [3]"), "i2c must be an array of tables");
    EXPECT_EQ(complaintOf("[identity]\nproduct_type = 70000"),
              "identity.product_type must be a whole number from 1 to 65535");
    EXPECT_EQ(complaintOf("[identity]\nproduct_type = -1"),
              "identity.product_type must be a whole number from 1 to 65535");
    EXPECT_EQ(complaintOf("[identity]\nproduct_type = \"300\""),
              "identity.product_type must be a whole number from 1 to 65535");
    EXPECT_EQ(complaintOf(kSmall + "[usb]\nspeed = \"fast\""), "usb.speed must be one of full, high, super");
    EXPECT_EQ(complaintOf(kSmall + "[stream]\npaced = 1"), "stream.paced must be true or false");
    EXPECT_EQ(complaintOf(kSmall + "[scene]\nkelvin = nan").substr(0, 12), "scene.kelvin");
    EXPECT_EQ(complaintOf(kSmall + "[sensor]\nresponse = [1, 2]"),
              "sensor.response must be an array of 3 numbers");
    EXPECT_EQ(complaintOf(kSmall + "[status]\n300 = 1"), "status.300 is not a status address from 0 to 255");
    EXPECT_EQ(complaintOf(kSmall + "[capability]\nword20 = 1"), "capability.word20 is not a known field");
    EXPECT_EQ(complaintOf(kSmall + "[pages]\n28 = { size = 4 }"), "pages.28 is not a page from 0 to 27");
    EXPECT_NE(complaintOf(kSmall + "[pages]\n2 = { size = 8, values = { 8 = 1 } }").find("not an offset"),
              std::string::npos);
    EXPECT_NE(complaintOf(kSmall + "[memory]\nuser_text = \"" + std::string(250, 'x') + '"'), "");
}

TEST(Model, FilesAreAsciiAndTextsOfKeysAreNot) {
    EXPECT_NE(complaintOf("\xC3\xA9 = 1\n" + kSmall), "");
    EXPECT_NE(complaintOf("# \xEF\xB7\x90\n" + kSmall), "");
    Model model;
    std::string complaint;
    ASSERT_TRUE(parseModel(kSmall + "[memory]\nuser_text = \"\\u00e9\"", {}, model, complaint)) << complaint;
    EXPECT_EQ(model.memory.userText, "\xC3\xA9");
    ASSERT_TRUE(parseModel(kSmall, {{"usertext", "\xC3\xA9"}}, model, complaint)) << complaint;
    EXPECT_EQ(model.memory.userText, "\xC3\xA9");
}

TEST(Model, PartsMustFitTogether) {
    EXPECT_NE(complaintOf(kSmall + "[pages]\n2 = { size = 128 }").find("word4"), std::string::npos);
    EXPECT_NE(complaintOf(kSmall + "color_array = 7"), "");
    EXPECT_NE(complaintOf(kSmall + "layout = \"old\"\nheader_size = 32"), "");
    EXPECT_NE(complaintOf(kSmall + "vendor = 5"), "");
    EXPECT_NE(complaintOf(kSmall + "enable_transfer_bits = 0x8001"), "") << "0x8000 is no code";
    EXPECT_NE(complaintOf(kSmall, {{"transfer", "2"}}), "") << "not enabled";
    EXPECT_NE(complaintOf(kSmall, {{"geometry.minimum_width", "65"}}), "");
    EXPECT_EQ(complaintOf(kSmall, {{"geometry.region_count", "3"}}), "")
        << "the record grows with the regions";
    EXPECT_NE(complaintOf(kSmall, {{"geometry.region_count", "3"}, {"geometry.record_length", "95"}}), "");
    EXPECT_EQ(complaintOf(kSmall, {{"geometry.region_count", "3"}, {"geometry.record_length", "96"}}), "");
    EXPECT_NE(complaintOf("firmware = \"absent\"\n" + kSmall), "");
    EXPECT_NE(complaintOf(kSmall, {{"fault.vanish_error", "6"}}), "");
}

TEST(Model, FaultsAreOrderedByShortWords) {
    Model model;
    std::string complaint;
    ASSERT_TRUE(parseModel(kSmall, {{"fault.fail", "33@2x1+17"}, {"fault.error", "23@5"}}, model, complaint))
        << complaint;
    ASSERT_EQ(model.fault.fail.size(), 2u);
    EXPECT_EQ(model.fault.fail[0].request, 33);
    EXPECT_EQ(model.fault.fail[0].first, 2u);
    EXPECT_EQ(model.fault.fail[0].times, 1u);
    EXPECT_EQ(model.fault.fail[1].request, 17);
    EXPECT_EQ(model.fault.fail[1].first, 1u);
    EXPECT_EQ(model.fault.error.amount, 23u);
    EXPECT_EQ(model.fault.error.frame, 5u);
    for (const char* bad : {"x", "300", "33@", "33@0", "33@1x", "33@1xz", "+17", "33 @1"}) {
        EXPECT_NE(complaintOf(kSmall, {{"fault.fail", bad}}), "") << bad;
    }
    for (const char* bad : {"23", "23@", "23@0", "@5", "a@b", "0@1", "997@1"}) {
        EXPECT_NE(complaintOf(kSmall, {{"fault.error", bad}}), "") << bad;
    }
}

TEST(Model, TextsThatLookLikeNumbersAreTexts) {
    Model model;
    std::string complaint;
    ASSERT_TRUE(parseModel(kSmall,
                           {{"fault.fail", "17"},
                            {"fault.short", "18"},
                            {"usertext", "042"},
                            {"memory.serial_text", "on"},
                            {"description", "\"1 2\""}},
                           model, complaint))
        << complaint;
    ASSERT_EQ(model.fault.fail.size(), 1u);
    EXPECT_EQ(model.fault.fail[0].request, 17);
    ASSERT_EQ(model.fault.cut.size(), 1u);
    EXPECT_EQ(model.fault.cut[0].request, 18);
    EXPECT_EQ(model.memory.userText, "042");
    EXPECT_EQ(model.memory.serialText, "on");
    EXPECT_EQ(model.description, "1 2");
}

}  // namespace
}  // namespace tavra::usbd
