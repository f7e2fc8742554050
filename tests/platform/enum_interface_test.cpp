// The walk over devices and the restart of hubs, on a double that records every call of the setup interface.
#include "platform/enum_interface.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "support/failing_allocations.h"

namespace tavra::platform {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Calls = std::vector<std::string>;

struct FakeDevice {
    std::u16string hardwareId;
    std::uint32_t detailSize = 40;
    bool hasInterface = true;
    bool givesDetail = true;
    bool takesParams = true;
    bool installs = true;
};

// Hands out devices by instance, and keeps the calls as text.
class RecordingSetup final : public DeviceSetup {
  public:
    std::vector<FakeDevice> devices;
    bool hasSet = true;
    std::uint32_t error = 1234;
    Calls calls;

    DeviceSet getClassDevices(const InterfaceClass& interfaceClass, std::uint32_t flags) override {
        note("set ", name(interfaceClass), " flags ", flags);
        return hasSet ? this : nullptr;
    }
    bool enumDevice(DeviceSet set, std::uint32_t index, DeviceRecord& device) override {
        EXPECT_EQ(set, this);
        EXPECT_EQ(device.size, 32u);
        EXPECT_EQ(device.instance, 0u) << "a fresh record for each device";
        if (index >= devices.size()) {
            error = 259;
            return false;
        }
        device.instance = 100 + index;
        return true;
    }
    bool enumInterface(DeviceSet, const DeviceRecord& device, const InterfaceClass& interfaceClass,
                       std::uint32_t number, InterfaceRecord& record) override {
        note("interface ", number, " of ", device.instance, " ", name(interfaceClass));
        EXPECT_EQ(record.size, 32u);
        if (!of(device).hasInterface) return false;
        record.flags = device.instance;
        return true;
    }
    std::uint32_t interfaceDetailSize(DeviceSet, const InterfaceRecord& record) override {
        return record.flags == 0 ? 0 : devices.at(record.flags - 100).detailSize;
    }
    bool getInterfaceDetail(DeviceSet, const InterfaceRecord& record, std::span<std::byte> detail) override {
        note("detail of ", record.flags, " in ", detail.size());
        for (std::byte& byte : detail) byte = std::byte{1};
        return record.flags != 0 && devices.at(record.flags - 100).givesDetail;
    }
    std::u16string deviceProperty(const DeviceRecord& device, std::uint32_t property) override {
        note("property ", property, " of ", device.instance);
        return of(device).hardwareId;
    }
    bool setClassInstallParams(DeviceSet, const DeviceRecord& device, const PropertyChange& c) override {
        note("params of ", device.instance, ": ", c.headerSize, " ", c.installFunction, " ", c.stateChange,
             " ", c.scope, " ", c.hardwareProfile);
        return of(device).takesParams;
    }
    bool callClassInstaller(std::uint32_t function, DeviceSet, const DeviceRecord& device) override {
        note("installer ", function, " on ", device.instance);
        return of(device).installs;
    }
    bool getDeviceInstallParams(DeviceSet, const DeviceRecord& device, std::uint32_t size) override {
        note("result of ", device.instance, " in ", size);
        return false;
    }
    void destroy(DeviceSet set) override {
        EXPECT_EQ(set, this);
        error = 0;
        note("destroy");
    }
    std::uint32_t lastError() override { return error; }

  private:
    template <typename... Parts>
    void note(const Parts&... parts) {
        std::ostringstream text;
        (text << ... << parts);
        calls.push_back(text.str());
    }
    FakeDevice& of(const DeviceRecord& device) { return devices.at(device.instance - 100); }
    static std::string name(const InterfaceClass& interfaceClass) {
        const InterfaceClass hubs = {0x88, 0x0E, 0x8A, 0xF1, 0x0C, 0xC3, 0xD0, 0x11,
                                     0x88, 0x15, 0x00, 0xA0, 0xC9, 0x06, 0xBE, 0xD8};
        return interfaceClass == hubs ? "hubs" : interfaceClass == InterfaceClass{7} ? "seven" : "?";
    }
};

// A walk that visits, with answers by order of the visits.
class Visits final : public CEnumInterface {
  public:
    explicit Visits(DeviceSetup& setup) : CEnumInterface(setup, {7}) {}
    std::vector<std::uint32_t> visited;
    std::vector<bool> answers;  // true behind the last

  protected:
    bool OnDevice(DeviceSet, const DeviceRecord& device) override {
        visited.push_back(device.instance);
        return visited.size() > answers.size() || answers[visited.size() - 1];
    }
};

Calls callsOfReset(const FakeDevice& device) {
    RecordingSetup setup;
    setup.devices = {device};
    EXPECT_TRUE(CEnumInterfaceResetHighSpeedHC(setup).run().ok());
    return setup.calls;
}

bool isRestarted(const std::u16string& hardwareId) {
    const Calls calls = callsOfReset({hardwareId});
    return std::find(calls.begin(), calls.end(), "installer 18 on 100") != calls.end();
}

TEST(EnumInterface, VisitsEveryDeviceOfTheClass) {
    RecordingSetup setup;
    setup.devices.resize(2);
    setup.devices[1].detailSize = 8;
    Visits walk(setup);
    EXPECT_TRUE(walk.run().ok());
    EXPECT_THAT(walk.visited, ElementsAre(100, 101));
    EXPECT_THAT(setup.calls,
                ElementsAre("set seven flags 18", "interface 0 of 100 seven", "detail of 100 in 40",
                            "interface 0 of 101 seven", "detail of 101 in 8", "destroy"));
}

TEST(EnumInterface, NoDeviceAtAllIsASuccess) {
    RecordingSetup setup;
    EXPECT_TRUE(Visits(setup).run().ok());
    EXPECT_THAT(setup.calls, ElementsAre("set seven flags 18", "destroy"));
}

TEST(EnumInterface, WithoutASetItFailsWithTheSystemsCode) {
    RecordingSetup setup;
    setup.hasSet = false;
    EXPECT_EQ(Visits(setup).run().code(), 1234u);
    EXPECT_THAT(setup.calls, ElementsAre("set seven flags 18"));
    setup.error = 0;
    EXPECT_EQ(Visits(setup).run().code(), 31u) << "a failure without a code";
}

TEST(EnumInterface, TheLastDeviceDecides) {
    RecordingSetup setup;
    setup.devices.resize(3);
    Visits failing(setup);
    failing.answers = {true, true, false};
    EXPECT_EQ(failing.run().code(), 1234u) << "not that of the end of the walk";
    EXPECT_EQ(failing.visited.size(), 3u);
    setup.error = 1234;
    Visits working(setup);
    working.answers = {false, false, true};
    EXPECT_TRUE(working.run().ok());
    EXPECT_EQ(working.visited.size(), 3u);
}

TEST(EnumInterface, ADeviceWithoutItsDetailIsNotVisited) {
    RecordingSetup setup;
    setup.devices.resize(3);
    setup.devices[1].givesDetail = false;
    setup.devices[2].hasInterface = false;
    Visits walk(setup);
    EXPECT_EQ(walk.run().code(), 1234u);
    EXPECT_THAT(walk.visited, ElementsAre(100));
    EXPECT_EQ(setup.calls.back(), "destroy");
}

TEST(EnumInterface, WithoutMemoryForADetailTheWalkEnds) {
    RecordingSetup setup;
    setup.devices.resize(3);
    setup.devices[1].detailSize = 1 << 20;
    Visits walk(setup);
    const test::FailAllocationsFrom limit(1 << 20);
    EXPECT_EQ(walk.run().code(), 8u);
    EXPECT_THAT(walk.visited, ElementsAre(100));
    EXPECT_EQ(setup.calls.back(), "destroy");
}

TEST(RestartOfHubs, OneIsTakenThroughAPropertyChange) {
    EXPECT_THAT(callsOfReset({u"USB\\ROOT_HUB20&VID8086&PID293A"}),
                ElementsAre("set hubs flags 18", "interface 0 of 100 hubs", "detail of 100 in 40",
                            "property 2 of 100", "params of 100: 8 18 3 2 0", "installer 18 on 100",
                            "result of 100 in 584", "destroy"));
}

TEST(RestartOfHubs, OnlyRootHubsOfHighSpeedAndAbove) {
    EXPECT_TRUE(isRestarted(u"USB\\ROOT_HUB20&VID8086&PID293A&REV0002"));
    EXPECT_TRUE(isRestarted(u"USB\\ROOT_HUB30&VID8086&PID1E31"));
    EXPECT_TRUE(isRestarted(u"USB\\ROOT_HUB20"));
    EXPECT_TRUE(isRestarted(u"USB\\ROOT_HUB")) << "only the prefix with its & marks the others";
    EXPECT_TRUE(isRestarted(u"NUSB3\\ROOT_HUB&30"));
    EXPECT_FALSE(isRestarted(u"USB\\ROOT_HUB&VID8086&PID2934"));
    EXPECT_FALSE(isRestarted(u"USB\\VID_8087&PID_0024")) << "a hub that is no root";
    EXPECT_FALSE(isRestarted(u"USB\\ROOT"));
    EXPECT_FALSE(isRestarted(u"usb\\root_hub20"));
    EXPECT_FALSE(isRestarted(u"")) << "a device that does not tell";
}

TEST(RestartOfHubs, OneThatCannotBeRestartedIsNoFailure) {
    FakeDevice refusing{u"USB\\ROOT_HUB20"};
    refusing.takesParams = false;
    EXPECT_EQ(callsOfReset(refusing).at(4), "params of 100: 8 18 3 2 0");
    EXPECT_EQ(callsOfReset(refusing).at(5), "destroy");
    FakeDevice broken{u"USB\\ROOT_HUB20"};
    broken.installs = false;
    EXPECT_EQ(callsOfReset(broken).at(5), "installer 18 on 100");
    EXPECT_EQ(callsOfReset(broken).at(6), "destroy");
}

TEST(RestartOfHubs, OthersBetweenThemAreLeftAlone) {
    RecordingSetup setup;
    setup.devices = {
        {u"USB\\ROOT_HUB&VID1"}, {u"USB\\ROOT_HUB30&VID1"}, {u"USB\\VID_1"}, {u"USB\\ROOT_HUB20&1"}};
    EXPECT_TRUE(CEnumInterfaceResetHighSpeedHC(setup).run().ok());
    Calls installs;
    for (const std::string& call : setup.calls) {
        if (call.starts_with("installer")) installs.push_back(call);
    }
    EXPECT_THAT(installs, ElementsAre("installer 18 on 101", "installer 18 on 103"));
}

}  // namespace
}  // namespace tavra::platform
