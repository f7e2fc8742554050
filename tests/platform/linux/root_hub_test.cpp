// Root hubs in a folder made up as sysfs has them. What a hub is told is collected by a pipe in the place of
// its attribute.
#include "platform/root_hub.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <fstream>
#include <map>
#include <string>

#include "support/killed_at_system_call.h"
#include "support/temp_folder.h"

namespace tavra::platform {
namespace {

class RootHubs : public testing::Test {
  protected:
    ~RootHubs() override {
        for (const auto& [name, pipe] : pipes) close(pipe);
    }

    void addDevice(const std::string& name, const std::string& speed) {
        std::filesystem::create_directory(folder / name);
        if (!speed.empty()) std::ofstream(folder / name / "speed") << speed;
    }
    void addPipe(const std::string& name) {
        const std::string file = (folder / name / "authorized").string();
        ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
        pipes[name] = open(file.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        ASSERT_GE(pipes[name], 0);
    }
    void addHub(const std::string& name, const std::string& speed) {
        addDevice(name, speed);
        addPipe(name);
    }
    // All that was written since the last look.
    std::string told(const std::string& name) {
        std::array<char, 16> text;
        const ssize_t got = read(pipes.at(name), text.data(), text.size());
        return got > 0 ? std::string(text.data(), static_cast<std::size_t>(got)) : std::string();
    }
    // One whose attribute is a file, as it is on a machine: it keeps what it is told.
    void addHubInState(const std::string& name, char state) {
        addDevice(name, "480\n");
        std::ofstream(folder / name / "authorized") << state;
    }
    char stateOf(const std::string& name) const {
        const std::vector<std::uint8_t> text = test::readFile(folder / name / "authorized");
        return text.empty() ? '?' : static_cast<char>(text[0]);
    }
    RootHubFolders folders() const { return {folder.path().string(), (notes / "hubs").string()}; }
    std::uint32_t reset() const { return resetHighSpeedRootHubs(folders()).code(); }

    test::TempFolder folder, notes;
    std::map<std::string, int> pipes;
};

TEST_F(RootHubs, ThoseOfHighSpeedAndAboveAreSwitchedOffAndOnAgain) {
    for (const auto& [name, speed] : {std::pair{"usb1", "480\n"},
                                      {"usb2", "5000\n"},
                                      {"usb3", "12\n"},
                                      {"usb4", "1.5\n"},
                                      {"usb10", "20000"},
                                      {"usb11", "479\n"},
                                      {"usb12", "nonsense\n"},
                                      {"usb13", ""}}) {
        addHub(name, speed);
    }
    EXPECT_EQ(reset(), 0u);
    EXPECT_EQ(told("usb1"), "01");
    EXPECT_EQ(told("usb2"), "01");
    EXPECT_EQ(told("usb10"), "01");
    for (const char* const slow : {"usb3", "usb4", "usb11", "usb12", "usb13"})
        EXPECT_EQ(told(slow), "") << slow;
}

TEST_F(RootHubs, OneThatTheAdministratorSwitchedOffStaysOff) {
    addHubInState("usb1", '0');
    addHubInState("usb2", '1');
    std::string written;
    const auto note = [&](const std::string& name, char digit) {
        written += name[name.find("/usb") + 4];
        written += digit;
        return Status();
    };
    EXPECT_TRUE(resetHighSpeedRootHubs(folders(), note).ok());
    EXPECT_EQ(written, "2021") << "a hub and what it was told";
}

TEST_F(RootHubs, WhatIsNoRootHubIsLeftAlone) {
    for (const char* const name : {"1-1", "1-0:1.0", "usb", "usb1x", "xusb1", "usb-1", "2-1.4"}) {
        addHub(name, "5000\n");
    }
    EXPECT_EQ(reset(), 0u);
    for (const auto& [name, pipe] : pipes) EXPECT_EQ(told(name), "") << name;
}

TEST_F(RootHubs, AMachineWithoutAnyIsNoFailure) {
    EXPECT_EQ(reset(), 0u);
    EXPECT_EQ(resetHighSpeedRootHubs({(folder / "nowhere").string(), folders().notes}).code(), 0u);
    EXPECT_TRUE(notes.isEmpty());
}

TEST_F(RootHubs, AFolderThatIsNoneIsAFailure) {
    std::ofstream(folder / "file") << "x";
    EXPECT_EQ(resetHighSpeedRootHubs({(folder / "file").string(), folders().notes}).code(), 3u);
}

TEST_F(RootHubs, AHubThatFailsDoesNotSpareTheOthers) {
    addHub("usb1", "480\n");
    addDevice("usb2", "480\n");  // no such attribute
    addHub("usb3", "480\n");
    EXPECT_EQ(reset(), 2u);
    EXPECT_EQ(told("usb1"), "01");
    EXPECT_EQ(told("usb3"), "01");
}

// A hub that is off takes everything on it with it until somebody pulls the plug.
TEST_F(RootHubs, OneThatDoesNotComeOnAgainIsToldSoAgain) {
    addHub("usb1", "480\n");
    addHub("usb2", "480\n");
    int failures = 0;
    const auto resetFailing = [&](int most) {
        failures = 0;
        return resetHighSpeedRootHubs(folders(),
                                      [&](const std::string& name, char digit) {
                                          const bool fails = name.ends_with("usb1/authorized") &&
                                                             digit == '1' && failures < most;
                                          failures += fails ? 1 : 0;
                                          return fails ? Status(31) : writeAttribute(name, digit);
                                      })
            .code();
    };
    EXPECT_EQ(resetFailing(2), 0u);
    EXPECT_EQ(failures, 2);
    EXPECT_EQ(told("usb1"), "01");
    EXPECT_EQ(told("usb2"), "01");
    EXPECT_EQ(resetFailing(1000), 31u) << "but not for ever";
    EXPECT_EQ(told("usb1"), "0");
    EXPECT_EQ(told("usb2"), "01");
}

TEST_F(RootHubs, OneThatCannotBeSwitchedOffIsNotToldMore) {
    addHub("usb1", "480\n");
    std::string written;
    EXPECT_EQ(resetHighSpeedRootHubs(folders(),
                                     [&](const std::string&, char digit) {
                                         written += digit;
                                         return Status(31);
                                     })
                  .code(),
              31u);
    EXPECT_EQ(written, "0");
}

// It is off because of a restart, and not because somebody wants it off.
TEST_F(RootHubs, OneThatARestartLeftOffIsSwitchedOnByTheNext) {
    addHubInState("usb1", '1');
    addHubInState("usb2", '0');
    addHubInState("usb3", '1');
    const auto failing = [](const std::string& name, char digit) {
        const bool fails = name.ends_with("usb1/authorized") && digit == '1';
        return fails ? Status(31) : writeAttribute(name, digit);
    };
    EXPECT_EQ(resetHighSpeedRootHubs(folders(), failing).code(), 31u);
    EXPECT_EQ(stateOf("usb1"), '0');
    EXPECT_EQ(stateOf("usb3"), '1');
    EXPECT_EQ(resetHighSpeedRootHubs(folders(), failing).code(), 31u) << "still so";
    EXPECT_EQ(reset(), 0u);
    EXPECT_EQ(stateOf("usb1"), '1');
    EXPECT_EQ(stateOf("usb2"), '0') << "the administrator's";
    EXPECT_TRUE(notes.isEmpty());
    std::ofstream(folder / "usb1" / "authorized") << '0';
    EXPECT_EQ(reset(), 0u);
    EXPECT_EQ(stateOf("usb1"), '0') << "the administrator's by now";
}

// Whoever breaks the command off may have broken off their keyboard.
TEST_F(RootHubs, OneThatAKilledRestartLeftOffIsSwitchedOnByTheNext) {
    addHubInState("usb1", '1');
    addHubInState("usb2", '0');
    int leftOff = 0;
    for (int stops = 1;; ++stops) {
        const bool ended = test::endsWithin(stops, [&] { return reset() == 0; });
        leftOff += stateOf("usb1") == '0' ? 1 : 0;
        ASSERT_EQ(reset(), 0u);
        ASSERT_EQ(stateOf("usb1"), '1') << "killed after " << stops << " stops";
        ASSERT_EQ(stateOf("usb2"), '0');
        ASSERT_TRUE(notes.isEmpty());
        if (ended || HasFailure()) break;
    }
    EXPECT_GT(leftOff, 2);  // among them the closing behind the write, and the opening ahead of the next
}

TEST_F(RootHubs, WithoutAPlaceForNotesTheyAreRestartedAllTheSame) {
    addHub("usb1", "480\n");
    EXPECT_EQ(
        resetHighSpeedRootHubs({folder.path().string(), (folder / "no" / "such" / "place").string()}).code(),
        0u);
    EXPECT_EQ(told("usb1"), "01");
}

// Rights of files do not bind root, so this thread looks at them as nobody.
TEST_F(RootHubs, WithoutTheRightItFailsWith5AndTouchesNothing) {
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    addHubInState("usb1", '1');
    std::filesystem::permissions(folder / "usb1" / "authorized", std::filesystem::perms(0444));
    const int owner = setfsuid(65534);
    const std::uint32_t code = reset();
    setfsuid(static_cast<uid_t>(owner));
    EXPECT_EQ(code, 5u);
    EXPECT_EQ(stateOf("usb1"), '1');
    EXPECT_TRUE(notes.isEmpty());
}

}  // namespace
}  // namespace tavra::platform
