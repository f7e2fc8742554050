// The names of movies: which kind they choose, and where none can be made.
#include <array>

#include "media_api/recording_fixture.h"
#include "platform/random_access_file.h"

namespace tavra::test {
namespace {

class RecordingName : public RecordingTest {};

TEST_F(RecordingName, IsChosenByTheExtension) {
    openCamera();
    for (const char* file : {"a.smf", "a.SMF", "a.sm", "a.s", "a.b.Smf"}) {
        ASSERT_EQ(save(file), 1) << file;
        ASSERT_EQ(Tavra_StopTransfer(handle), 1);
        EXPECT_EQ(movie(file).field(0), 0x464D53u);
    }
    for (const char* file : {"a", "a.smfx", "a.mov", "a.av i", "a. smf"})
        expectFailure(save(file), 0xE000000F);
    expectFailure(Tavra_SaveAVIW(handle, nullptr, 0, 1), 0xE000000F);
    expectFailure(Tavra_SaveAVIW(handle, u"", 0, 1), 0xE000000F);
}

// Nothing behind the dot is the beginning of the first kind; a folder's dot counts as any other.
TEST_F(RecordingName, MayEndInADotAndIsTakenFromTheLastOneWhereverItStands) {
    openCamera();
    ASSERT_EQ(save("movie."), 1);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    std::array<char, 12> head{};
    std::ifstream(folder / "movie.", std::ios::binary).read(head.data(), head.size());
    EXPECT_EQ(std::string(head.data(), 4), "RIFF");
    EXPECT_EQ(std::string(head.data() + 8, 4), "AVI ");
    std::filesystem::create_directory(folder / "a.b");
    expectFailure(save("a.b/movie"), 0xE000000F);
    EXPECT_TRUE(std::filesystem::is_empty(folder / "a.b"));
}

TEST_F(RecordingName, TakesNarrowNamesOfUpTo259Characters) {
    openCamera();
    ASSERT_EQ(Tavra_SaveAVIA(handle, (folder / "narrow.smf").string().c_str(), 0x20202020, 5), 1);
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_EQ(movie("narrow.smf").field(40), 0x20202020u);
    const std::string longest = std::string(255, 'x') + ".smf";
    expectFailure(Tavra_SaveAVIA(handle, longest.c_str(), 0, 1), 0xE0000009);
    expectFailure(Tavra_SaveAVIA(handle, ("x" + longest).c_str(), 0, 1), 0xE000000F);
    expectFailure(Tavra_SaveAVIA(handle, nullptr, 0, 1), 0xE000000F);
}

// A name is as long as the system takes it, and never cut to that of another file.
TEST_F(RecordingName, IsNotCut) {
    openCamera();
    for (const std::size_t length : {256u, 260u, 300u, 40000u}) {
        const std::string file = std::string(length, 'x') + ".smf";
        expectFailure(save(file), 0xE0000009);
        expectFailure(save(std::string(length, 'y')), 0xE000000F);
    }
    EXPECT_TRUE(folder.isEmpty());
    EXPECT_EQ(status(), 0);
}

TEST_F(RecordingName, CannotBeMadeWhereNoFileCan) {
    openCamera();
    expectFailure(save("no such folder/a.smf"), 0xE0000009);
    std::filesystem::create_directory(folder / "folder.smf");
    expectFailure(save("folder.smf"), 0xE0000009);
    EXPECT_EQ(status(), 0);
    expectNoMessage();
    EXPECT_TRUE(Tavra_SetPreviewPixelFormat(handle, 1)) << "no stream was started";
}

TEST_F(RecordingName, ReplacesAnOldFile) {
    openCamera();
    std::ofstream(folder / "a.smf") << std::string(100000, 'x');
    startBoth();
    ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    EXPECT_TRUE(movie().frames.empty());
}

// Two recordings into one file would be none.
TEST_F(RecordingName, IsNoOneElsesMeanwhile) {
    openCamera();
    for (const char* file : {"a.smf", "a.avi"}) {
        platform::RandomAccessFile other;
        ASSERT_TRUE(other.create(name(file)).ok());
        ASSERT_TRUE(other.write(0, "theirs", 6).ok());
        for (const std::uint32_t priority : {0u, 1u}) {
            ASSERT_EQ(Tavra_SetAVIPriorityFileFormat(handle, priority), 1);
            expectFailure(save(file), 0xE0000009);
        }
        ASSERT_TRUE(other.close().ok());
        EXPECT_EQ(readFile(folder / file), (Bytes{'t', 'h', 'e', 'i', 'r', 's'}));
        EXPECT_EQ(status(), 0);
        ASSERT_EQ(save(file), 1);
        ASSERT_EQ(Tavra_StopTransfer(handle), 1);
    }
}

}  // namespace
}  // namespace tavra::test
