// `tavra firmware`, and the asking of `tavra reset-hubs`, whose work is tested on made-up hubs elsewhere.
#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>

#include "command_fixture.h"

namespace tavra::test {
namespace {

using testing::HasSubstr;
using testing::Not;

class CommandRecovery : public CommandTest {
  protected:
    CommandRecovery() { useImages(TAVRA_SHIPPED_FIRMWARE); }
    ~CommandRecovery() override { unsetenv("TAVRA_FIRMWARE_DIR"); }

    static void useImages(const std::string& images) { setenv("TAVRA_FIRMWARE_DIR", images.c_str(), 1); }
};

TEST_F(CommandRecovery, FirmwareLoadsEveryCameraThatLacksIt) {
    const Outcome outcome =
        run("firmware --virtual bayer,legacy773:firmware=absent,legacy1541,legacy1541:firmware=absent,"
            "legacy2053:firmware=absent:userid=7");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    std::istringstream lines(outcome.output);
    std::size_t count = 0;
    std::string line;
    for (; std::getline(lines, line); ++count) EXPECT_THAT(line, HasSubstr("firmware loaded, revision 16"));
    EXPECT_EQ(count, 3u) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("(user ID 7): firmware loaded"));
}

TEST_F(CommandRecovery, FirmwareCanBeForOneCameraOnly) {
    const std::string cameras =
        " --virtual legacy773:firmware=absent:userid=1,legacy1541:firmware=absent:userid=2";
    const Outcome outcome = run("firmware --camera 2" + cameras);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_THAT(outcome.output, HasSubstr("(user ID 2): firmware loaded"));
    EXPECT_THAT(outcome.output, Not(HasSubstr("user ID 1")));
    const Outcome absent = run("firmware --camera 3" + cameras);
    EXPECT_EQ(absent.exitCode, 3);
    EXPECT_THAT(absent.output, HasSubstr("no camera has the user ID 3"));
}

TEST_F(CommandRecovery, FirmwareSaysWhenThereIsNothingToLoad) {
    const Outcome outcome = run("firmware --virtual bayer,legacy773");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "No camera lacks its firmware.\n");
    EXPECT_EQ(run("firmware").exitCode, 3) << "no camera at all";
}

TEST_F(CommandRecovery, FirmwareGivesUpOnALoadThatKeepsFailing) {
    const Outcome failing =
        run("firmware --timeout 2 --virtual legacy1541:firmware=absent:userid=6:fault.fail=228");
    EXPECT_EQ(failing.exitCode, 1);
    EXPECT_THAT(failing.output, HasSubstr("user ID 6: the load keeps failing"));
    EXPECT_THAT(failing.output, HasSubstr("(31)"));

    useImages(folder.path().string());
    const Outcome missing = run("firmware --timeout 2 --virtual legacy1541:firmware=absent");
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.output, HasSubstr("there is no image for its type"));

    std::ofstream(folder / "1541.hex") << "no Intel HEX";
    const Outcome broken = run("firmware --timeout 2 --virtual legacy1541:firmware=absent");
    EXPECT_EQ(broken.exitCode, 1);
    EXPECT_THAT(broken.output, HasSubstr("is no Intel HEX text"));
}

TEST_F(CommandRecovery, FirmwareGoesOnAfterLoadsThatFail) {
    const Outcome outcome = run("firmware --virtual legacy1541:firmware=absent:fault.fail=228@1x2");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("firmware loaded, revision 16"));
}

TEST_F(CommandRecovery, FirmwareWaitsForACameraThatComesBackLate) {
    // The second and the third opening fail: the camera does not tell who it is.
    const Outcome outcome = run("firmware --virtual legacy1541:firmware=absent:fault.fail=17@3x2");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.output;
    EXPECT_THAT(outcome.output, HasSubstr("firmware loaded, revision 16"));
    const Outcome never =
        run("firmware --timeout 2 --virtual legacy1541:firmware=absent:fault.fail=17@3x1000000");
    EXPECT_EQ(never.exitCode, 1);
    EXPECT_THAT(never.output, HasSubstr("was loaded, and has not come back"));
}

TEST_F(CommandRecovery, ResetHubsDoesNothingUnlessItIsToldTo) {
    for (const char* const answer : {"echo n", "echo", "echo yesterday", "true"}) {
        const Outcome outcome =
            run("--version >/dev/null; " + std::string(answer) + " | '" + TAVRA_COMMAND + "' reset-hubs");
        EXPECT_EQ(outcome.exitCode, 1) << answer;
        EXPECT_THAT(outcome.output, HasSubstr("Go on? [y/N]")) << answer;
        EXPECT_THAT(outcome.output, HasSubstr("nothing was done")) << answer;
    }
}

}  // namespace
}  // namespace tavra::test
