#include "record_line.h"

#include <gtest/gtest.h>

namespace tavra::tool {
namespace {

RecordLine line() {
    return {.seconds = 12.34,
            .file = "out-2.avi",
            .seen = {.frames = 617, .bytes = 0, .lost = 3, .gaps = 1},
            .fps = 49.996,
            .queue = 4,
            .fileBytes = 123456789,
            .diskBytes = 50e6,
            .freeBytes = 9000000000};
}

TEST(RecordLine, TellsHowTheRecordingStands) {
    EXPECT_EQ(line().text(),
              "   12.3 s  617 frames  50.00 fps  3 lost  queue 4  disk 50 MB/s, 9 GB free, enough for 3:00");
}

TEST(RecordLine, LeavesOutWhatIsNotKnown) {
    RecordLine unknown = line();
    unknown.queue.reset();
    unknown.freeBytes.reset();
    EXPECT_EQ(unknown.text(), "   12.3 s  617 frames  50.00 fps  3 lost  disk 50 MB/s");
    unknown.freeBytes = 5000000;
    unknown.diskBytes = 0;
    EXPECT_TRUE(unknown.text().ends_with("disk 0 bytes/s, 5 MB free")) << unknown.text();
}

TEST(RecordLine, IsAnObjectForPrograms) {
    const nlohmann::json object = line().json();
    EXPECT_EQ(object["event"], "progress");
    EXPECT_EQ(object["file"], "out-2.avi");
    EXPECT_EQ(object["seen"], 617);
    EXPECT_EQ(object["lost"], 3);
    EXPECT_EQ(object["queue"], 4);
    EXPECT_EQ(object["fileBytes"], 123456789);
    EXPECT_EQ(object["diskMegabytesPerSecond"], 50.0);
    EXPECT_EQ(object["freeBytes"], 9000000000);
    RecordLine unknown = line();
    unknown.queue.reset();
    unknown.freeBytes.reset();
    EXPECT_TRUE(unknown.json()["queue"].is_null());
    EXPECT_TRUE(unknown.json()["freeBytes"].is_null());
}

}  // namespace
}  // namespace tavra::tool
