#include "record_options.h"

#include <gtest/gtest.h>

#include "exit_code.h"

namespace tavra::tool {
namespace {

RecordOptions parsed(const std::string& line) {
    CLI::App app;
    RecordOptions options;
    options.addTo(app);
    app.parse(line);
    return options;
}
RecordOrder order(const std::string& line) {
    return RecordOrder::of(parsed(line));
}

TEST(RecordOptions, AreModestIfNothingIsSaid) {
    const RecordOptions options = parsed("a.avi");
    EXPECT_FALSE(options.severalFiles());
    EXPECT_EQ(options.quality, 75u);
    const RecordOrder plain = RecordOrder::of(options);
    EXPECT_EQ(plain.kind, MovieKind::Avi);
    EXPECT_EQ(plain.codec, TAVRA_AVI_COMPRESSOR_NONE);
    EXPECT_EQ(plain.shift, 0);
    EXPECT_EQ(plain.aviFormat, TAVRA_AVI_FORMAT_2_0);
    EXPECT_TRUE(plain.uncompressed());
}

TEST(RecordOptions, ChooseTheKindOfAvi) {
    EXPECT_EQ(order("a.avi --avi 1").aviFormat, TAVRA_AVI_FORMAT_1_0);
    EXPECT_EQ(order("a.avi --avi 2 --codec mjpg").aviFormat, TAVRA_AVI_FORMAT_2_0);
    EXPECT_EQ(order("a.avi --codec HFYU").aviFormat, TAVRA_AVI_FORMAT_1_0) << "of a codec of the platform";
    EXPECT_FALSE(order("a.avi --codec HFYU").ownCodec());
    EXPECT_FALSE(order("a.avi --codec mjpg").uncompressed());
    EXPECT_TRUE(order("a.smf --codec mjpg").uncompressed()) << "the codec is for its development";
}

TEST(RecordOptions, ChooseTheSize) {
    EXPECT_EQ(order("a.avi --size half").shift, 1);
    EXPECT_EQ(order("a.avi --size quarter").shift, 2);
}

TEST(RecordOptions, GoTogetherOrAreRefused) {
    for (const char* line : {"a.smf --size half", "a.smf --avi 1", "a.avi --codec HFYU --avi 2"}) {
        try {
            order(line);
            ADD_FAILURE() << line;
        } catch (const Failure& refused) {
            EXPECT_EQ(refused.exitCode(), ExitCode::Usage) << line;
        }
    }
    EXPECT_THROW(parsed(""), CLI::RequiredError);
    for (const char* line :
         {"a.avi --quality 101", "a.avi --avi 3", "a.avi --size big", "a.avi --frames-per-file 0"}) {
        EXPECT_THROW(parsed(line), CLI::ValidationError) << line;
    }
}

}  // namespace
}  // namespace tavra::tool
