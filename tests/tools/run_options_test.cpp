#include "run_options.h"

#include <gtest/gtest.h>

namespace tavra::tool {
namespace {

RunOptions parsed(const std::string& line) {
    CLI::App app;
    RunOptions options;
    options.addTo(app);
    app.parse(line);
    return options;
}

TEST(RunOptions, SayNothingOfAnEnd) {
    const RunOptions options = parsed("");
    EXPECT_TRUE(options.endless());
    EXPECT_FALSE(options.reached(1e9, 1'000'000'000));
}

TEST(RunOptions, EndAtATime) {
    const RunOptions options = parsed("--seconds 2.5");
    EXPECT_FALSE(options.endless());
    EXPECT_FALSE(options.reached(2.4, 1'000'000'000));
    EXPECT_TRUE(options.reached(2.5, 0));
}

TEST(RunOptions, EndAtANumberOfFrames) {
    const RunOptions options = parsed("--frames 3");
    EXPECT_FALSE(options.endless());
    EXPECT_FALSE(options.reached(1e9, 2));
    EXPECT_TRUE(options.reached(0, 3));
}

TEST(RunOptions, EndAtWhatComesFirst) {
    const RunOptions options = parsed("--frames 3 --seconds 2 --set gain=5 --set wb=auto --json");
    EXPECT_TRUE(options.reached(2, 1));
    EXPECT_TRUE(options.reached(1, 3));
    EXPECT_FALSE(options.reached(1, 2));
    EXPECT_EQ(options.assignments, (std::vector<std::string>{"gain=5", "wb=auto"}));
    EXPECT_TRUE(options.json);
}

TEST(RunOptions, EndsLieAhead) {
    EXPECT_THROW(parsed("--seconds 0"), CLI::ValidationError);
    EXPECT_THROW(parsed("--frames 0"), CLI::ValidationError);
}

}  // namespace
}  // namespace tavra::tool
