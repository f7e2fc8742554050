// `tavra settings`: files, names, text form, and what a load would change.
#include <algorithm>
#include <cstdlib>

#include "command_fixture.h"

namespace tavra::test {
namespace {

class StoredSettings : public CommandTest {
  protected:
    StoredSettings() { setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1); }

    Outcome settings(const std::string& job, const std::string& arguments = "") const {
        return run("settings " + job + " --virtual bayer:width=64:height=48 " + arguments);
    }
    void expectGood(const std::string& job, const std::string& arguments = "") const {
        const Outcome outcome = settings(job, arguments);
        EXPECT_EQ(outcome.exitCode, 0) << job << ": " << outcome.output;
    }
};

TEST_F(StoredSettings, AFileIsSavedLoadedAndCompared) {
    expectGood("save", "--set gain.value=60 --set wb.weights=3 day.ini");
    EXPECT_TRUE(std::filesystem::exists(folder / "day.ini"));
    const Outcome changes = settings("diff", "day.ini");
    EXPECT_EQ(changes.exitCode, 0);
    EXPECT_NE(changes.output.find("analogue gain: 0 -> 60  [GainShutter/CurrentGain; gain]"),
              std::string::npos)
        << changes.output;
    EXPECT_NE(changes.output.find("1 -> 3, and 15 more"), std::string::npos) << changes.output;
    EXPECT_EQ(settings("diff", "--set gain.value=60 --set wb.weights=3 day.ini").output,
              "nothing would change\n");
    expectGood("load", "day.ini");
}

TEST_F(StoredSettings, ADifferenceIsAlsoThereForPrograms) {
    expectGood("save", "--set exposure.clocks=4400 day.ini");
    const Outcome outcome = settings("diff", "--set gain.value=60 --json day.ini");
    const auto changes = nlohmann::json::parse(outcome.output);
    ASSERT_EQ(changes.size(), 2u) << outcome.output;
    EXPECT_EQ(changes[0]["key"], "CurrentGain");
    EXPECT_EQ(changes[0]["present"], "60");
    EXPECT_EQ(changes[1]["key"], "ExposureClock");
    EXPECT_EQ(changes[1]["wanted"], "4400");
    EXPECT_EQ(changes[1]["setting"], "exposure");
}

// A file may have been changed by hand.
TEST_F(StoredSettings, ADifferenceHasOnlyWhatALoadWouldSet) {
    expectGood("save", "day.ini");
    const auto saved = readFile(folder / "day.ini");
    std::string header;  // [AVI-0123]
    for (std::size_t i = 2; saved[i] != '\r'; i += 2) header += static_cast<char>(saved[i]);
    const std::string suffix = header.substr(header.find('-'));
    const auto differences = [&](const std::string& section, const std::string& lines) {
        std::ofstream(folder / "hand.ini") << "[" << section << suffix << "\n" << lines;
        return settings("diff", "hand.ini").output;
    };
    const std::string nothing = "nothing would change\n";
    EXPECT_EQ(differences("GammaY", "GammaMode=0\nGamma=220\nBrightness=5\nContrast=9\nGammaTable_7=1\n"),
              nothing);
    EXPECT_EQ(differences("GammaR", "GammaTable_7=1\n"), nothing);
    const std::string power = differences("GammaB", "GammaMode=1\nGamma=220\nGammaTable_7=1\n");
    EXPECT_NE(power.find("100 -> 220"), std::string::npos) << power;
    EXPECT_EQ(power.find("GammaTable"), std::string::npos) << power;
    const std::string table = differences("GammaB", "GammaMode=255\nGamma=220\nGammaTable_7=1\n");
    EXPECT_EQ(table.find("220"), std::string::npos) << table;
    EXPECT_NE(table.find("7 -> 1  [GammaB/GammaTable_7]"), std::string::npos) << table;
    EXPECT_EQ(differences("HueSaturation", "Hue=300\nSaturation=50\n"), nothing);
    EXPECT_NE(differences("HueSaturation", "HueSaturationMode=1\nHue=300\n").find("0 -> 300"),
              std::string::npos);
    EXPECT_EQ(differences("ColorMatrix", "ColorMatrix_0=50\n"), nothing);
    EXPECT_NE(differences("ColorMatrix", "ColorMatrixMode=255\nColorMatrix_0=50\n").find("100 -> 50"),
              std::string::npos);
    EXPECT_EQ(differences("ImageSize", "RegionMode=0\n"), nothing) << "the image is always sent";
    EXPECT_EQ(differences("ImageSize", "RegionMode=1\n"), nothing);
    EXPECT_NE(differences("ImageSize", "RegionMode=1\nWidth=32\n").find("64 -> 32"), std::string::npos);
    // What is set has 16 bits, or 8.
    EXPECT_NE(differences("Sharpness", "SharpnessGain=65545\n").find("0 -> 9 "), std::string::npos);
    EXPECT_EQ(differences("Sharpness", "SharpnessGain=65536\nSharpnessCoring=256\n"), nothing);
    // Lines and clocks do not count beside the exposure clock.
    const std::string exposure = differences("GainShutter", "CurrentShutterLine=77\nExposureClock=4400\n");
    EXPECT_NE(exposure.find("4400"), std::string::npos) << exposure;
    EXPECT_EQ(exposure.find("77"), std::string::npos) << exposure;
}

TEST_F(StoredSettings, NamesAreTheSameInCapitals) {
    expectGood("save", "--named Day --set gain.value=60");
    expectGood("save", "--named DAY --set gain.value=61");
    EXPECT_EQ(settings("list").output, "Day\n");
    expectGood("load", "--named day");
    expectGood("default", "dAY");
    EXPECT_EQ(settings("list").output, "Day  (default)\n");
    expectGood("export", "DAY day.reg");
    expectGood("remove", "day");
    EXPECT_EQ(settings("list").output, "");
}

TEST_F(StoredSettings, SizesCanBeLeftOut) {
    expectGood("save", "--set rotate=cw --without-sizes day.ini");
    EXPECT_EQ(settings("diff", "day.ini").output, "nothing would change\n");
    expectGood("save", "--set rotate=cw --set size=32x16 --without-rotation day.ini");
    const std::string changes = settings("diff", "day.ini").output;
    EXPECT_EQ(changes.find("rotation"), std::string::npos) << changes;
    EXPECT_NE(changes.find("width of the region: 64 -> 32"), std::string::npos) << changes;
}

TEST_F(StoredSettings, NamesAreKeptListedMarkedAndForgotten) {
    expectGood("save", "--named day --set gain.value=60");
    expectGood("save", "--named night");
    EXPECT_EQ(settings("list").output, "day\nnight\n");
    EXPECT_EQ(settings("default").output, "");
    expectGood("default", "day");
    EXPECT_EQ(settings("default").output, "day\n");
    const auto listed = nlohmann::json::parse(settings("list", "--json").output);
    EXPECT_EQ(listed["default"], "day");
    EXPECT_EQ(listed["names"].size(), 2u);
    expectGood("load", "--named day");
    expectGood("export", "day day.reg");
    expectGood("remove", "day");
    EXPECT_EQ(settings("list").output, "night\n");
    expectGood("import", "day.reg");
    EXPECT_EQ(settings("list").output, "day  (default)\nnight\n");
    expectGood("default", "--none");
    EXPECT_EQ(settings("list").output, "day\nnight\n");
}

TEST_F(StoredSettings, WhatIsNotThereIsNamed) {
    const std::pair<const char*, const char*> jobs[] = {
        {"load", "--named dusk"}, {"remove", "dusk"}, {"default", "dusk"}};
    for (const auto& [job, arguments] : jobs) {
        const Outcome outcome = settings(job, arguments);
        EXPECT_EQ(outcome.exitCode, 1) << job;
        EXPECT_NE(outcome.output.find("there is no setting 'dusk'"), std::string::npos) << outcome.output;
    }
    EXPECT_NE(settings("load", "none.ini").output.find("there is no such file"), std::string::npos);
    EXPECT_EQ(settings("load", "none.ini").exitCode, 1);
    EXPECT_EQ(settings("export", "dusk dusk.reg").exitCode, 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "dusk.reg"));
    std::filesystem::create_directory(folder / "folder.ini");
    const Outcome outcome = settings("save", "folder.ini");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.output.find("no plain file"), std::string::npos) << outcome.output;
    EXPECT_EQ(settings("save").exitCode, 2);
    EXPECT_EQ(settings("save", "--named a b.ini").exitCode, 2);
}

TEST_F(StoredSettings, AStoreThatIsDamagedIsToldAtOnce) {
    expectGood("save", "--named day");
    std::ofstream(folder / "config" / "tavra" / "settings.db", std::ios::trunc) << std::string(5000, 'x');
    for (const char* job : {"save --named night", "list", "load --named day"}) {
        const Outcome outcome = settings(job);
        EXPECT_EQ(outcome.exitCode, 1) << job;
        EXPECT_NE(outcome.output.find("damaged"), std::string::npos) << outcome.output;
    }
}

TEST_F(StoredSettings, AResetIsTheDefaults) {
    expectGood("save", "day.ini");
    expectGood("reset");
    EXPECT_NE(settings("--help").output.find("reset"), std::string::npos);
}

}  // namespace
}  // namespace tavra::test
