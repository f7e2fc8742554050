// The settings of image chain and automatic control, by name.
#include <algorithm>

#include "command_fixture.h"

namespace tavra::test {
namespace {

struct Assignment {
    const char* given;
    const char* readBack;
};

// What the camera makes of a value, in the words of `get`.
TEST_F(CommandTest, SettingsAreReadBackInTheirOwnWords) {
    const Assignment cases[] = {
        {"exposure=20ms", "20.014ms"},  // 14.26 us and 675 lines of 2200 clocks of 74.25 MHz
        {"exposure.clocks=0", "0"},
        {"exposure=frame", "33.348ms"},  // 14.26 us and 1125 lines
        {"gain=6dB", "6dB"},
        {"gain=5.94", "5.9dB"},  // steps of 0.1 dB
        {"gain.value=45", "45"},
        {"digital-gain=2x", "2x"},
        {"alc=on", "on"},
        {"alc.target=110", "110"},
        {"alc.tolerance=3", "3"},
        {"alc.threshold=4", "4"},
        {"alc.speed=1,2,3,4", "1,2,3,4"},
        {"alc.gain=0..12dB", "0dB..12dB"},
        {"alc.weights=2", "2,2,2,2,2,2,2,2,2,2,2,2,2,2,2,2"},
        {"control-area=10,50,90;25,50.5,75", "10,50,90;25,50.5,75"},
        {"wb=manual", "manual"},
        {"wb.gains=1.5,1.25", "1.5,1,1,1.25"},
        {"wb.gains=1,0.5,2,4", "1,0.5,2,4"},
        {"wb.target=100,90", "100,90"},
        {"wb.threshold=0.7", "0.7"},
        {"wb.weights=0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15", "0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15"},
        {"gamma.y=0.45", "0.45"},
        {"gamma.gr=negative:2.2,-10,5", "negative:2.2,-10,5"},
        {"gamma.b=off", "off"},
        {"matrix=1,0,0,0;0,1.5,-0.5,2;0,0,1,0", "1,0,0,0;0,1.5,-0.5,2;0,0,1,0"},
        {"matrix=off", "off"},
        {"hue=-12.5", "-12.5"},
        {"saturation=1.2", "1.2"},
        {"sharpness=1.0", "1"},
        {"sharpness.coring=4", "4"},
        {"noise-reduction=median", "median"},
        {"chroma.low=20,30", "20,30"},
        {"chroma.high=off", "off"},
        {"shading=gain", "gain"},
        {"shading.target=100", "100"},
        {"mirror=h+v", "h+v"},
        {"mirror=h", "h"},
        {"rotate=cw", "cw"},
        {"defects=on", "on"},
        {"exposure-mode=timed", "timed"},
    };
    for (const Assignment& one : cases) {
        const Outcome outcome = run("set --virtual bayer '" + std::string(one.given) + "'");
        const std::string name = std::string(one.given).substr(0, std::string(one.given).find('='));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
        EXPECT_EQ(outcome.output.substr(0, outcome.output.find('\n')), name + " is now " + one.readBack);
    }
}

TEST_F(CommandTest, AValueThatIsNotAllowedIsAnsweredWithThoseThatAre) {
    const Assignment cases[] = {
        {"exposure=8", "a time such as 8ms"},
        {"exposure=99s", "10.000s at most"},
        {"exposure=0s", "a time such as 8ms"},
        {"exposure.clocks=4294967295", "a whole number from 0 to"},
        {"gain=99dB", "from 0 to 24dB"},
        {"gain.value=241", "from 0 to 240"},
        {"digital-gain=9", "from 0 to 7.984x"},  // 511 / 64
        {"alc=7", "off, on, shutter, gain, once"},
        {"alc.target=256", "from 0 to 255"},
        {"alc.speed=1,2", "SHUTTER,GAIN"},
        {"alc.exposure=20ms..1ms", "the lowest is above the highest"},
        {"alc.gain=6dB", "LOWEST..HIGHEST"},
        {"alc.weights=1,2", "16 whole numbers"},
        {"control-area=50,25,75;25,50,75", "ascend"},
        {"wb=on", "off, manual, auto, once"},
        {"wb.gains=1,2,3", "R,GR,GB,B or R,B"},
        {"wb.gains=6,1", "from 0 to 5"},  // 640 / 128
        {"gamma.y=0", "from 0.01 to 655.35"},
        {"gamma.y=1,2", "GAMMA[,BRIGHTNESS,CONTRAST]"},
        {"matrix=1,0,0;0,1,0;0,0,1", "4 numbers"},
        {"matrix=1,0,0,0", "three rows"},
        {"hue=400", "from -360 to 360"},
        {"saturation=-1", "from 0 to 655.35"},
        {"sharpness=x", "from 0 to 655.35"},
        {"chroma.low=20", "THRESHOLD,STRENGTH"},
        {"chroma.high=20,256", "from 0 to 255"},
        {"shading=bright", "off, calibrate-gain, gain"},
        {"mirror=d", "off, h, v"},
        {"rotate=90", "off, cw, ccw"},
        {"defects=maybe", "from 0 to 65535"},
    };
    for (const Assignment& one : cases) {
        const Outcome outcome = run("set --virtual bayer '" + std::string(one.given) + "'");
        EXPECT_NE(outcome.exitCode, 0) << one.given;
        EXPECT_NE(outcome.output.find(one.readBack), std::string::npos)
            << one.given << ": " << outcome.output;
    }
}

TEST_F(CommandTest, ASettingThatTheCameraLacksSaysSo) {
    const Assignment cases[] = {
        {"mono matrix=off", "mono: it has no colour matrix"},
        {"mono wb=auto", "mono: it has no white balance"},
        {"mono saturation=2", "mono: it has no hue and saturation"},
        {"mono gamma.r=2", "mono: it has no mosaic"},
        {"bayer gamma.camera=1", "no gamma of its own"},
        {"bayer alc=camera", "does not do that itself"},
        {"bayer mirror=camera-h", "this camera has off, h, v"},
        {"wb wb.target=90,90", "does its white balance itself"},
        {"legacy773 defects=on", "no defect pixel correction"},
        {"legacy773 digital-gain=2", "no digital gain"},
    };
    for (const Assignment& one : cases) {
        const Outcome outcome = run("set --virtual " + std::string(one.given));
        EXPECT_EQ(outcome.exitCode, 1) << one.given;
        EXPECT_NE(outcome.output.find(one.readBack), std::string::npos)
            << one.given << ": " << outcome.output;
    }
    EXPECT_EQ(run("set --virtual mirror mirror=camera-h+v").output.substr(0, 29),
              "mirror is now v+camera-h\nSett");
    EXPECT_EQ(run("get --virtual mono matrix").exitCode, 1);
}

TEST_F(CommandTest, SettingsOfTheLibraryAreToldToEndWithTheCommand) {
    EXPECT_NE(run("set --virtual bayer gamma.y=2").output.find("--set"), std::string::npos);
    EXPECT_EQ(run("set --virtual bayer gain=3dB").output, "gain is now 3dB\n");
}

TEST_F(CommandTest, APictureFollowsItsSettings) {
    EXPECT_EQ(run("snap --virtual bayer --set rotate=cw --set mirror=h turned.png").exitCode, 0);
    EXPECT_EQ(pngLayout("turned.png"), "1080x1920 color");
    // Saturation 0 makes grey of every colour.
    EXPECT_EQ(run("snap --virtual bayer --set saturation=0 grey.png").exitCode, 0);
    const Picture grey = picture("grey.png");
    ASSERT_FALSE(grey.rgb.empty());
    std::size_t colored = 0;
    for (std::size_t i = 0; i < grey.rgb.size(); i += 3) {
        const auto [low, high] = std::minmax({grey.rgb[i], grey.rgb[i + 1], grey.rgb[i + 2]});
        colored += high - low > 3;  // coefficients and sums are cut off
    }
    EXPECT_EQ(colored, 0u);
}

}  // namespace
}  // namespace tavra::test
