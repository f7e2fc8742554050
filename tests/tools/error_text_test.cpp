#include "error_text.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tavra::tool
