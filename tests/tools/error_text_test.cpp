#include "error_text.h"

#include <gtest/gtest.h>

#include "commands.h"

namespace tavra::tool {
namespace {

TEST(ErrorText, KnownCodesSayWhatToDo) {
    EXPECT_NE(errorText(0xE0000001).find("--virtual bayer"), std::string::npos);
    EXPECT_NE(errorText(0xE0000001).find("(0xE0000001)"), std::string::npos);
    EXPECT_EQ(exitCodeFor(0xE0000001), ExitCode::NoCamera);
    EXPECT_EQ(exitCodeFor(0xE0000002), ExitCode::NoCamera);
    EXPECT_EQ(exitCodeFor(5), ExitCode::CameraLost);
    EXPECT_EQ(exitCodeFor(258), ExitCode::TimedOut);
}

TEST(ErrorText, OtherCodesKeepTheirNumber) {
    EXPECT_EQ(errorText(1234), "the system reports an error (1234)");
    EXPECT_EQ(exitCodeFor(1234), ExitCode::Failed);
}

TEST(ErrorText, FailureNamesWhatFailed) {
    const Failure f = failure("cannot set the size", 87);
    EXPECT_EQ(std::string(f.what()).find("cannot set the size: "), 0u);
    EXPECT_EQ(f.exitCode(), ExitCode::Failed);
}

// Of a camera the code says that it went away, which would send people looking for a cable.
TEST(ErrorText, HubsWithoutTheRightSaySoAndNameTheCommand) {
    const Failure denied = hubFailure(5);
    EXPECT_EQ(std::string(denied.what()),
              "no permission to restart the USB root hubs (5); run it as root: sudo tavra reset-hubs");
    EXPECT_EQ(denied.exitCode(), ExitCode::Failed);
    const Failure readOnly = hubFailure(19);
    EXPECT_EQ(std::string(readOnly.what()),
              "no permission to restart the USB root hubs (19); run it as root, outside of any container: "
              "sudo tavra reset-hubs");
    EXPECT_EQ(readOnly.exitCode(), ExitCode::Failed);
    const std::string other = hubFailure(31).what();
    EXPECT_EQ(other.find("cannot restart the USB root hubs: "), 0u) << other;
    EXPECT_NE(other.find("(31)"), std::string::npos) << other;
}

}  // namespace
}  // namespace tavra::tool
