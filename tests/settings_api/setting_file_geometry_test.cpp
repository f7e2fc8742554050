// Image size, regions and the preview's shape in a setting file, and the mode that leaves them out.
#include "settings_api/camera_state.h"
#include "settings_api/setting_file_fixture.h"

namespace tavra::test {
namespace {

using SettingFile = SettingFileTest;

TEST_F(SettingFile, RegionsAreNumberedFromTheSecondOn) {
    DoubleCamera camera;
    camera.offerRegions(3);
    open(camera);
    save();
    EXPECT_EQ(valueOf(u"ImageSize-2016", u"RegionMode"), u"1");
    EXPECT_EQ(valueOf(u"ImageSize-2016", u"Width"), u"640");
    EXPECT_EQ(valueOf(u"ImageSize-2016", u"RegionMode_1"), u"0");
    EXPECT_NE(valueOf(u"ImageSize-2016", u"Height_2"), std::nullopt);
    EXPECT_EQ(valueOf(u"ImageSize-2016", u"Height_3"), std::nullopt);
}

// Capability word 3 bit 13, or function 131, which is word 8 bit 3.
TEST_F(SettingFile, ABinningSumIsKeptWhicheverWayTheCameraTellsOfIt) {
    for (const auto& [word, bit] : {std::pair{3u, 13u}, {8u, 3u}, {8u, 4u}}) {
        const bool has = word == 3 || bit == 3;
        DoubleCamera camera;
        camera.setCapability(word, bit);
        camera.status(46) = 3;
        open(camera);
        std::filesystem::remove(path());
        save();
        const auto saved = valueOf(u"ImageSize-2016", u"BinningSumMode");
        if (has) {
            EXPECT_EQ(saved, u"3") << word;
        } else {
            EXPECT_EQ(saved, std::nullopt);
        }
        load(u"[ImageSize-2016]\nBinningSumMode=2\n");
        EXPECT_EQ(usb.camera().status(46), has ? 2 : 3) << word << ", " << bit;
        close();
        usb.reset();
    }
}

TEST_F(SettingFile, TheImageSizeIsSetTwiceOver) {
    DoubleCamera camera;
    camera.setIdentity16(26, 0x8001);
    camera.offerRegions(2);
    open(camera);
    load(u"[ImageSize-2016]\nWidth=320\nRegionMode_1=1\nWidth_1=64\nHeight_1=32\nVBinning=1\n");
    std::size_t records = 0, factors = 0;
    for (const ControlTransfer& sent : traffic()) {
        if (sent.request == 18 && (sent.requestType & 0x80) == 0) ++records;
        if (sent.request == 128 && sent.value == 33 && (sent.requestType & 0x80) == 0) ++factors;
    }
    // Size and region the first time; the region has landed by the second.
    EXPECT_EQ(records, 3u);
    EXPECT_EQ(factors, 2u);
    std::uint32_t enabled = 0, x = 0, y = 0, width = 0, height = 0;
    ASSERT_TRUE(Tavra_GetROI(handle, 1, &enabled, &x, &y, &width, &height));
    EXPECT_EQ(enabled, 1u);
    EXPECT_EQ(width, 64u);
    EXPECT_EQ(height, 32u);
}

// Size, regions, factors, sum; and over again.
TEST_F(SettingFile, TheImageSizeIsSetStepByStep) {
    DoubleCamera camera;
    camera.setIdentity16(26, 0x8001);
    camera.setCapability(3, 13);
    camera.offerRegions(2);
    open(camera);
    ASSERT_TRUE(Tavra_SetBinningSumMode(handle, 1));
    const Traffic sum = traffic();
    load(
        u"[ImageSize-2016]\nWidth=320\nRegionMode_1=1\nWidth_1=64\nHeight_1=32\nVBinning=1\nBinningSumMode="
        u"2\n");
    std::string steps;
    for (const ControlTransfer& sent : traffic()) {
        if ((sent.requestType & 0x80) != 0) continue;
        if (sent.request == 18) steps += 'S';
        if (sent.request == 128 && sent.value == 33) steps += 'F';
        if (sent.request == sum[0].request && sent.value == sum[0].value) steps += 'B';
    }
    // The region has landed by the second time.
    EXPECT_EQ(steps, "SSFBSFB");
}

TEST_F(SettingFile, TheModeIsKeptAsItIsSet) {
    open();
    EXPECT_EQ(get(handle, Tavra_GetSettingFileMode), 0u);
    for (const std::uint32_t mode : {0xFFFF0000u, 0x10000u, 5u, 0u}) {
        expectSuccess(Tavra_SetSettingFileMode(handle, mode));
        EXPECT_EQ(get(handle, Tavra_GetSettingFileMode), mode);
    }
    expectFailure(Tavra_GetSettingFileMode(handle, nullptr), 87);
}

TEST_F(SettingFile, WithoutGeometryNeitherSizesNorRotationAreTouched) {
    open();
    writeText(u"[ImageSize-2016]\nWidth=320\n[Other-2016]\nRotationMode=1\nMirrorMode=1\n");
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, TAVRA_SETTING_FILE_NO_GEOMETRY));
    traffic();
    load();
    for (const ControlTransfer& sent : traffic()) {
        EXPECT_FALSE(sent.request == 18 && (sent.requestType & 0x80) == 0) << "an image size was sent";
    }
    EXPECT_EQ(get(handle, Tavra_GetRotationMode), 0);
    EXPECT_EQ(get(handle, Tavra_GetMirrorMode), 1);
    std::filesystem::remove(path());
    save();
    EXPECT_FALSE(hasSection("ImageSize-2016"));
    EXPECT_EQ(valueOf(u"Other-2016", u"RotationMode"), std::nullopt);
}

// The sections and keys by name; other modes with the same bits have them.
TEST_F(SettingFile, WithoutGeometryNothingOfThePreviewsShapeIsTouched) {
    open();
    const std::u16string text =
        u"[PreviewMaskSize-2016]\nWidth=30\nHeight=20\n[PreviewDestSize-2016]\nWidth=50\nOffsetX=-7\n"
        u"[Other-2016]\nMagnificationMode=11\nAspectMode=3\n";
    const auto shape = [&] {
        const CameraState now = stateOf(handle);
        std::vector<std::uint32_t> values = now.at("preview mask");
        for (const char* const what : {"preview destination", "magnification, aspect"}) {
            values.insert(values.end(), now.at(what).begin(), now.at(what).end());
        }
        return values;
    };
    const std::vector<std::uint32_t> before = shape();
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, TAVRA_SETTING_FILE_NO_GEOMETRY));
    load(text);
    EXPECT_EQ(shape(), before);
    std::filesystem::remove(path());
    save();
    for (const char* const section :
         {"ImageSize", "PreviewMaskSize", "PreviewDestSize", "PreviewWindowSize"}) {
        EXPECT_FALSE(hasSection(std::string(section) + "-2016")) << section;
    }
    for (const char16_t* const key : {u"MagnificationMode", u"AspectMode", u"RotationMode"}) {
        EXPECT_EQ(valueOf(u"Other-2016", key), std::nullopt);
    }
    EXPECT_NE(valueOf(u"Other-2016", u"DisplayMode"), std::nullopt);
    for (const std::uint32_t mode : {0xFFFF0001u, 0xFFFFFFFFu, 0xFFFE0000u}) {
        ASSERT_TRUE(Tavra_SetSettingFileMode(handle, mode));
        std::filesystem::remove(path());
        save();
        for (const char* const section : {"ImageSize", "PreviewMaskSize", "PreviewDestSize"}) {
            EXPECT_TRUE(hasSection(std::string(section) + "-2016")) << section << std::hex << mode;
        }
        EXPECT_NE(valueOf(u"Other-2016", u"AspectMode"), std::nullopt) << mode;
        EXPECT_EQ(valueOf(u"Other-2016", u"RotationMode").has_value(), mode == 0xFFFE0000u) << mode;
    }
    load(text);
    EXPECT_EQ(shape(),
              (std::vector<std::uint32_t>{before[0], before[1], 30, 20, static_cast<std::uint32_t>(-7),
                                          before[5], 50, before[7], 11, 3}));
}

TEST_F(SettingFile, OtherModesWithBit16LeaveOutTheRotationAlone) {
    open();
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, 0x30001));
    ASSERT_TRUE(Tavra_SetRotationMode(handle, 2));
    load(u"[ImageSize-2016]\nWidth=320\n[Other-2016]\nRotationMode=1\n");
    EXPECT_EQ(get(handle, Tavra_GetRotationMode), 2);
    std::uint16_t mode = 0;
    std::uint32_t x = 0, y = 0, width = 0, height = 0;
    ASSERT_TRUE(Tavra_GetImageSize(handle, 0, &mode, &x, &y, &width, &height));
    EXPECT_EQ(width, 320u);
    save();
    EXPECT_EQ(valueOf(u"Other-2016", u"RotationMode"), u"1") << "as it stood in the file";
    ASSERT_TRUE(Tavra_SetSettingFileMode(handle, 0x20000));
    load();
    EXPECT_EQ(get(handle, Tavra_GetRotationMode), 1) << "other bits act as 0";
}

}  // namespace
}  // namespace tavra::test
