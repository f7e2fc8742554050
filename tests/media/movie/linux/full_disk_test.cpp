// Movies whose disk filled up although the volume had told of room: what a player still finds in them.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "media/movie/avi_file_smf.h"
#include "media/movie/avi_layouts.h"
#include "media/movie/read_smf.h"
#include "support/ffmpeg_reader.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

constexpr std::uint32_t kTooLarge = 223;

// No file of this process grows past so many bytes, as if the disk were full there.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(std::uint64_t bytes) {
        EXPECT_EQ(getrlimit(RLIMIT_FSIZE, &before_), 0);
        rlimit lowered = before_;
        lowered.rlim_cur = bytes;
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &lowered), 0);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &before_); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    rlimit before_{};
};

constexpr MovieForm kForm{.width = 160, .height = 120, .rate = 25, .quality = 100};

class FullDisk : public ::testing::TestWithParam<AviLayout> {
  protected:
    // Six frames into a file of at most so many bytes.
    void record(std::uint64_t bytes) {
        Recording recording(GetParam().make(movie::systemMovieFiles()), kForm);
        for (std::uint32_t i = 0; i < 6; ++i) recording.add(i, makeImage(kForm, i));
        const FileSizeLimit limit(bytes);
        EXPECT_EQ(recording.run({wideName(path)}).code(), kTooLarge);
    }

    const TempFolder folder;
    const std::filesystem::path path = folder / "movie.avi";
};

TEST_P(FullDisk, LeavesAMovieOfTheFramesThatAreWhole) {
    silenceFfmpeg();
    std::vector<MovieFrame> frames;
    for (std::uint32_t i = 0; i < 3; ++i) {
        frames.push_back(GetParam().frame(kForm, i, makeImage(kForm, i)));
    }
    const FileBytes whole = GetParam().build(kForm, frames);
    // From the end of the third frame on, without room for an index and with it, but none for a fourth frame.
    const std::size_t indices = GetParam().format == 1 ? 8 + 16 * (GetParam().jpeg() ? 3 : 4) : 2 * 2048;
    ASSERT_GT(frames.front().data.size(), indices + 100);
    for (const std::size_t more : {std::size_t{0}, std::size_t{1}, indices - 1, indices, indices + 100}) {
        SCOPED_TRACE(more);
        record(whole.size() - indices + more);
        EXPECT_LE(std::filesystem::file_size(path), whole.size() - indices + more);
        const std::optional<ReadMovie> movie = readMovie(path);
        ASSERT_TRUE(movie.has_value());
        EXPECT_EQ(movie->frameCount, 3);
        ASSERT_EQ(movie->frames.size(), 3u);
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(movie->packets[i].size, frames[i].data.size());
            // Without an index the empty chunk ahead of them counts as well.
            EXPECT_LE(movie->frames[i].position, static_cast<std::int64_t>(i + 1));
        }
        if (more < indices) continue;
        FileBytes file = readFile(path);
        file.resize(whole.size());
        EXPECT_TRUE(equalFiles(file, whole)) << "as if it had been stopped there";
    }
}

INSTANTIATE_TEST_SUITE_P(Layouts, FullDisk, kAllLayouts, layoutName);

TEST(FullDiskOfRawMovies, LeavesAMovieOfTheFramesThatAreWhole) {
    const MovieForm form{.width = 40, .height = 30, .bits = 8};
    constexpr std::uint64_t kHeader = 376, kFrame = 24 + 40 * 30;
    const TempFolder folder;
    const std::u16string name = wideName(folder / "movie.smf");
    for (const std::uint64_t bytes : {kHeader, kHeader + 1, kHeader + 3 * kFrame - 1, kHeader + 3 * kFrame,
                                      kHeader + 3 * kFrame + 24, kHeader + 3 * kFrame + 25}) {
        SCOPED_TRACE(bytes);
        Recording recording(std::make_unique<movie::CAVIFileSMF>(movie::systemMovieFiles(), 0), form);
        for (std::uint32_t i = 0; i < 6; ++i) recording.add(i, makeImage(form, i));
        {
            const FileSizeLimit limit(bytes);
            EXPECT_EQ(recording.run({name}).code(), kTooLarge);
        }
        movie::CReadSMF reader;
        ASSERT_TRUE(reader.open(name).ok());
        ASSERT_EQ(reader.frameCount(), (bytes - kHeader) / kFrame);
        for (std::uint32_t i = 0; i < reader.frameCount(); ++i) {
            FileBytes image(form.width * form.height);
            movie::CReadSMF::FrameHeader frame;
            ASSERT_TRUE(reader.ReadFrame(i, frame, image.data()).ok());
            EXPECT_EQ(frame.number, i);
            EXPECT_EQ(image, makeImage(form, i));
        }
    }
}

}  // namespace
}  // namespace tavra::test
