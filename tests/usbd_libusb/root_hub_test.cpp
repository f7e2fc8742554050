// Tavra_ResetRootHub and `tavra reset-hubs --yes` on the /sys that umockdev makes up. Each hub's `authorized`
// is a pipe, which keeps what it was told.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <umockdev.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "support/killed_at_system_call.h"
#include "tavra/tavra_api.h"

namespace tavra::test {
namespace {

class MockRootHubs : public testing::Test {
  protected:
    void SetUp() override {
        testbed_ = umockdev_testbed_new();
        ASSERT_TRUE(umockdev_in_mock_environment()) << "must run under umockdev-wrapper";
        add("usb1", "480");
        add("usb2", "5000");
        add("usb3", "12");
        add("usb4", "10000");
        add("1-1", "480");
        // What follows would reach the hubs of this machine if its folders were seen.
        ASSERT_FALSE(std::filesystem::exists("/sys/bus/usb/devices/usb5/speed"));
        ASSERT_TRUE(std::filesystem::exists("/sys/bus/usb/devices/usb4/speed"));
    }
    void TearDown() override {
        for (const auto& [name, pipe] : pipes_) close(pipe);
        if (testbed_ != nullptr) g_object_unref(testbed_);
    }

    void add(const char* name, const char* speed) {
        char* const device = umockdev_testbed_add_device(testbed_, "usb", name, nullptr, "speed", speed,
                                                         nullptr, "DEVTYPE", "usb_device", nullptr);
        ASSERT_NE(device, nullptr);
        g_free(device);
        const std::string file = attributeOf(name);
        ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
        pipes_[name] = open(file.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    }
    std::string attributeOf(const std::string& hub) {
        char* const root = umockdev_testbed_get_root_dir(testbed_);
        const std::string file = std::string(root) + "/sys/devices/" + hub + "/authorized";
        g_free(root);
        return file;
    }
    // In the place of the pipe, a file that keeps what it is told.
    void setState(const std::string& hub, char state) {
        std::filesystem::remove(attributeOf(hub));
        std::ofstream(attributeOf(hub)) << state;
    }
    char stateOf(const std::string& hub) { return static_cast<char>(std::ifstream(attributeOf(hub)).get()); }
    // All that was written since the last look.
    std::string told(const std::string& name) {
        std::array<char, 16> text;
        const ssize_t got = read(pipes_.at(name), text.data(), text.size());
        return got > 0 ? std::string(text.data(), static_cast<std::size_t>(got)) : std::string();
    }
    void expectTheFastOnesRestarted() {
        for (const char* const fast : {"usb1", "usb2", "usb4"}) EXPECT_EQ(told(fast), "01") << fast;
        for (const char* const other : {"usb3", "1-1"}) EXPECT_EQ(told(other), "") << other;
    }

    UMockdevTestbed* testbed_ = nullptr;
    std::map<std::string, int> pipes_;
};

TEST_F(MockRootHubs, AreRestartedFromHighSpeedOn) {
    EXPECT_EQ(Tavra_ResetRootHub(), 1u);
    expectTheFastOnesRestarted();
}

TEST_F(MockRootHubs, OneThatCannotBeRestartedIsTold) {
    std::filesystem::remove(attributeOf("usb2"));
    EXPECT_EQ(Tavra_ResetRootHub(), 0u);
    EXPECT_EQ(Tavra_GetLastError(nullptr), 2u);
    EXPECT_EQ(told("usb1"), "01");
    EXPECT_EQ(told("usb4"), "01");
}

// The notes of what a restart has off lie where root alone may put them.
TEST_F(MockRootHubs, OneThatAKilledRestartLeftOffComesOnAgain) {
    if (::access("/run", W_OK) != 0) GTEST_SKIP() << "no right to write to /run";
    setState("usb1", '1');
    setState("usb2", '1');
    setState("usb4", '0');
    int stops = 1;
    while (!endsWithin(stops, [] { return Tavra_ResetRootHub() == 1; }) && stateOf("usb2") == '1') ++stops;
    ASSERT_EQ(stateOf("usb2"), '0');
    EXPECT_EQ(Tavra_ResetRootHub(), 1u);
    EXPECT_EQ(stateOf("usb1"), '1');
    EXPECT_EQ(stateOf("usb2"), '1');
    EXPECT_EQ(stateOf("usb4"), '0') << "the administrator's";
    EXPECT_FALSE(std::filesystem::exists("/run/tavra-root-hubs"));
}

#if defined(TAVRA_COMMAND)
// The command's exit code and what it printed.
std::pair<int, std::string> runCommand(const std::string& line) {
    FILE* const pipe = popen((line + " 2>&1").c_str(), "r");
    std::string output;
    std::array<char, 1024> buffer;
    while (const std::size_t got = fread(buffer.data(), 1, buffer.size(), pipe)) {
        output.append(buffer.data(), got);
    }
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

TEST_F(MockRootHubs, TheCommandRestartsThemWhenItIsToldTo) {
    const std::string command = "'" TAVRA_COMMAND "' reset-hubs";
    const auto [code, output] = runCommand(command + " --yes");
    EXPECT_EQ(code, 0) << output;
    EXPECT_NE(output.find("were restarted"), std::string::npos) << output;
    expectTheFastOnesRestarted();
    EXPECT_EQ(runCommand("echo y | " + command).first, 0);
    expectTheFastOnesRestarted();
    EXPECT_EQ(runCommand("echo n | " + command).first, 1);
    for (const auto& [name, pipe] : pipes_) EXPECT_EQ(told(name), "") << name;
}
#endif

}  // namespace
}  // namespace tavra::test
