// A recording on a disk that is full without having said so, which /dev/full is.
#include <filesystem>

#include "capture_api/stream_fixture.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

class FullDisk : public StreamTest {};

TEST_F(FullDisk, EndsTheRecordingWithItsCodeAndNothingElse) {
    const TempFolder folder;
    std::filesystem::create_symlink("/dev/full", folder / "a.smf");
    openCamera();
    collectRaw();
    start();
    ASSERT_EQ(Tavra_SaveAVIW(handle, wideName(folder / "a.smf").c_str(), 0, 1000), 1);
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_RECORDING_PROGRESS), 0u);
    sendFrame(0, pattern(0));
    EXPECT_EQ(expectMessage(TAVRA_MESSAGE_RECORDING_ENDED), 112u);
    for (std::uint32_t number = 1; number < 5; ++number) sendFrame(number, pattern(1));
    EXPECT_EQ(raws.waitFor(5).size(), 5u) << "capture goes on";
    std::uint8_t status = 9;
    ASSERT_EQ(Tavra_GetAVIStatus(handle, &status, nullptr, nullptr), 1);
    EXPECT_EQ(status, 0);
    stopAndExpectCode(0);
}

}  // namespace
}  // namespace tavra::test
