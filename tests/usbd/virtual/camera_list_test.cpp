#include "camera_list.h"

#include <gtest/gtest.h>

#include <fstream>

#include "support/temp_folder.h"
#include "usbd/virtual_cameras.h"

namespace tavra::usbd {
namespace {

TEST(CameraList, ItemsStandBetweenCommas) {
    EXPECT_TRUE(splitCameraList("").empty());
    EXPECT_TRUE(splitCameraList(" , ,").empty());
    EXPECT_EQ(splitCameraList("bayer, mono:width=64 ,x"),
              (std::vector<std::string>{"bayer", "mono:width=64", "x"}));
    EXPECT_EQ(splitCameraList("a:b=[1,2],c"), (std::vector<std::string>{"a:b=[1,2]", "c"}));
    EXPECT_EQ(splitCameraList("a\\,b,c"), (std::vector<std::string>{"a\\,b", "c"}));
}

TEST(CameraList, ANameHasAModelAndKeys) {
    CameraName name;
    std::string complaint;
    ASSERT_TRUE(parseCameraName("mono:width=640:scene=/a\\:b=c.png", name, complaint));
    EXPECT_EQ(name.model, "mono");
    ASSERT_EQ(name.overrides.size(), 2u);
    EXPECT_EQ(name.overrides[0], (Override{"width", "640"}));
    EXPECT_EQ(name.overrides[1], (Override{"scene", "/a:b=c.png"}));
    EXPECT_TRUE(parseCameraName("mono:usertext=", name, complaint)) << "an empty value is one";
    for (const char* bad : {"", ":width=1", "mono:width", "mono:=1", "mono:"}) {
        EXPECT_FALSE(parseCameraName(bad, name, complaint)) << bad;
        EXPECT_FALSE(complaint.empty());
    }
}

TEST(CameraList, EveryShippedModelLoadsUnderItsName) {
    const auto names = shippedModelNames();
    EXPECT_GE(names.size(), 19u);
    for (const std::string_view name : names) {
        Model model;
        std::string complaint;
        EXPECT_TRUE(loadCamera(std::string(name), model, complaint)) << name << ": " << complaint;
        EXPECT_EQ(model.name, name);
        EXPECT_FALSE(model.description.empty()) << name;
    }
}

TEST(CameraList, SaysWhatIsWrong) {
    const auto complaintOf = [](const std::string& item) {
        Model model;
        std::string complaint;
        EXPECT_FALSE(loadCamera(item, model, complaint)) << item;
        return complaint;
    };
    EXPECT_NE(complaintOf("nothing").find("no such model"), std::string::npos);
    EXPECT_NE(complaintOf("nothing").find("legacy773"), std::string::npos) << "the shipped ones are listed";
    EXPECT_EQ(complaintOf("mono:widht=640"), "widht is not a known field");
    EXPECT_EQ(complaintOf("mono:geometry.widht=640"), "geometry.widht is not a known field");
    EXPECT_NE(complaintOf("mono:width=wide").find("geometry.width must be"), std::string::npos);
    EXPECT_NE(complaintOf("mono:scene=/nowhere.png").find("scene.source"), std::string::npos);
    EXPECT_NE(complaintOf("/nowhere/camera.toml").find("cannot be read"), std::string::npos);
}

// A path as it stands in a list, where marks and backslashes need one before them.
std::string inAList(const std::string& path) {
    std::string item;
    for (const char mark : path) {
        if (mark == ':' || mark == ',' || mark == '\\') item += '\\';
        item += mark;
    }
    return item;
}

TEST(CameraList, AModelMayBeAFileOfTheUsersOwn) {
    const tavra::test::TempFolder folder;
    const std::string path = (folder / "own_model.toml").string();
    std::ofstream(path) << shippedModel("mono");
    Model model;
    std::string complaint;
    EXPECT_TRUE(loadCamera(inAList(path) + ":width=64", model, complaint)) << complaint;
    EXPECT_EQ(model.geometry.regions[0].width, 64u);
}

TEST(CameraList, AnItemThatIsWrongIsToldOnceAndLeavesTheOthers) {
    testing::internal::CaptureStderr();
    test::useCameras("mono,nothing,bayer");
    EXPECT_TRUE(test::Camera(1).open());
    EXPECT_FALSE(test::Camera(2).open());
    const std::string text = testing::internal::GetCapturedStderr();
    EXPECT_EQ(text.find("\"nothing\""), text.rfind("\"nothing\"")) << text;
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
}

}  // namespace
}  // namespace tavra::usbd
