#include "doctor.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace tavra::tool {
namespace {

namespace fs = std::filesystem;
using Kind = Finding::Kind;

// A system of files, gone with the test.
class DoctorTest : public testing::Test {
  protected:
    DoctorTest() {
        char name[] = "/tmp/tavra-doctor-XXXXXX";
        root_ = mkdtemp(name);
        system_ = {root_ / "sys", root_ / "dev"};
        fs::create_directories(root_ / "sys/bus/usb/devices");
        fs::create_directories(root_ / "sys/module/usbcore/parameters");
        fs::create_directories(root_ / "dev/001");
    }
    ~DoctorTest() override { fs::remove_all(root_); }

    void write(const std::string& path, const std::string& text) {
        fs::create_directories((root_ / path).parent_path());
        std::ofstream(root_ / path) << text << '\n';
    }

    void plug(const std::string& name, const std::string& vendor, const std::string& speed) {
        const std::string folder = "sys/bus/usb/devices/" + name;
        write(folder + "/idVendor", vendor);
        write(folder + "/busnum", "1");
        write(folder + "/devnum", "7");
        write(folder + "/speed", speed);
    }

    fs::path root_;
    SystemView system_;
};

TEST_F(DoctorTest, WithoutACameraItSuggestsAVirtualOne) {
    plug("1-1", "1234", "5000");
    const auto findings = findCameraProblems(system_);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].kind, Kind::Advice);
    EXPECT_NE(findings[0].fix.find("--virtual"), std::string::npos);
}

TEST_F(DoctorTest, ACameraThatMayNotBeUsedIsAProblemWithItsFix) {
    plug("2-1.4", "2e6b", "5000");  // no node at all: nobody can open it
    const auto findings = findCameraProblems(system_);
    ASSERT_EQ(findings.size(), 2u);
    EXPECT_EQ(findings[0].kind, Kind::Problem);
    EXPECT_NE(findings[0].text.find("2-1.4"), std::string::npos);
    EXPECT_NE(findings[0].fix.find("udev"), std::string::npos);
    EXPECT_EQ(findings[1].kind, Kind::Good);
}

TEST_F(DoctorTest, ASlowLinkIsToldWithItsSpeed) {
    plug("1-2", "2e6b", "480");
    write("dev/001/007", "");
    const auto findings = findCameraProblems(system_);
    ASSERT_EQ(findings.size(), 2u);
    EXPECT_EQ(findings[0].kind, Kind::Good);
    EXPECT_EQ(findings[1].kind, Kind::Advice);
    EXPECT_NE(findings[1].text.find("480 Mbit/s"), std::string::npos);
}

TEST_F(DoctorTest, NoUsbAtAllIsAProblem) {
    fs::remove_all(root_ / "sys/bus");
    EXPECT_EQ(findCameraProblems(system_).at(0).kind, Kind::Problem);
}

TEST_F(DoctorTest, UsbMemoryIsEnoughFrom256Megabytes) {
    EXPECT_TRUE(findUsbMemoryProblems(system_).empty()) << "a system that does not say";
    const struct {
        const char* megabytes;
        Kind kind;
    } rows[] = {{"16", Kind::Advice}, {"255", Kind::Advice}, {"256", Kind::Good}, {"0", Kind::Good}};
    for (const auto& row : rows) {
        write("sys/module/usbcore/parameters/usbfs_memory_mb", row.megabytes);
        EXPECT_EQ(findUsbMemoryProblems(system_).at(0).kind, row.kind) << row.megabytes;
    }
}

TEST(Doctor, RealTimeNeedsALimitOrRoot) {
    EXPECT_EQ(findPriorityProblems(0, false).at(0).kind, Kind::Advice);
    EXPECT_EQ(findPriorityProblems(15, false).at(0).kind, Kind::Good);
    EXPECT_EQ(findPriorityProblems(0, true).at(0).kind, Kind::Good);
}

}  // namespace
}  // namespace tavra::tool
