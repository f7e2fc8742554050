// Our AVI files through programs that others wrote: ffprobe and ffmpeg, and OpenCV's VideoCapture.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <opencv2/videoio.hpp>

#include "media/movie/avi_layouts.h"
#include "support/temp_folder.h"

namespace tavra::test {
namespace {

FileBytes outputOf(const std::string& command) {
    FileBytes output;
    std::FILE* const pipe = popen(command.c_str(), "re");
    if (pipe == nullptr) return output;
    std::uint8_t buffer[65536];
    for (std::size_t count; (count = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
        output.insert(output.end(), buffer, buffer + count);
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return output;
}

std::string textOf(const std::string& command) {
    const FileBytes output = outputOf(command);
    std::string text(output.begin(), output.end());
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}

// Smooth, so that motion JPEG keeps it well; no two frames are alike.
std::uint8_t sampleAt(const MovieForm& form, std::uint32_t frame, std::uint32_t x, std::uint32_t y,
                      std::uint32_t channel) {
    const std::uint32_t across = x * 120 / form.width, down = y * 60 / form.height;
    return static_cast<std::uint8_t>(20 + (channel == 0 ? across : down) + 7 * (frame % 16));
}

// Rows in the order of the layout; blue first.
FileBytes smoothImage(const MovieForm& form, std::uint32_t frame, bool bottomUp) {
    const std::uint32_t channels = form.bits / 8, stride = strideOf(form);
    FileBytes image(std::size_t{stride} * form.height);
    for (std::uint32_t y = 0; y < form.height; ++y) {
        std::uint8_t* const row = &image[std::size_t{stride} * (bottomUp ? form.height - 1 - y : y)];
        for (std::uint32_t x = 0; x < form.width; ++x) {
            for (std::uint32_t c = 0; c < channels; ++c)
                row[x * channels + c] = sampleAt(form, frame, x, y, c);
        }
    }
    return image;
}

// Blue, green, red of a frame from its upper row on, however gray it is.
void expectPixels(const AviLayout& layout, const MovieForm& form, std::uint32_t frame,
                  const std::uint8_t* blueFirst) {
    // Colours of motion JPEG are rounded twice on their way and have half of the columns.
    const int tolerance = layout.jpeg() ? 4 : 0;
    int worst = 0;
    for (std::uint32_t y = 0; y < form.height; ++y) {
        for (std::uint32_t x = 0; x < form.width; ++x) {
            for (std::uint32_t c = 0; c < 3; ++c) {
                const int wanted = sampleAt(form, frame, x, y, form.bits == 8 ? 0 : c);
                worst = std::max(worst, std::abs(*blueFirst++ - wanted));
            }
        }
    }
    EXPECT_LE(worst, tolerance) << "frame " << frame;
}

class AviReaders : public ::testing::TestWithParam<AviLayout> {
  protected:
    static constexpr std::uint32_t kFrames = 9;

    void SetUp() override {
        ASSERT_EQ(std::system("ffprobe -version > /dev/null 2>&1"), 0)
            << "ffprobe is missing: scripts/install-deps test";
    }

    // Through the real file system; segments of four frames in AVI 2.0.
    std::string record(const MovieForm& form) const {
        const std::filesystem::path path = folder / "movie.avi";
        Recording recording(GetParam().make(movie::systemMovieFiles(), {.entries = 4}), form);
        const bool bottomUp = recording.writer().StoresBottomUp();
        for (std::uint32_t i = 0; i < kFrames; ++i) recording.add(i, smoothImage(form, i, bottomUp));
        EXPECT_EQ(recording.run({wideName(path)}), Status());
        return path.string();
    }

    static constexpr MovieForm kForms[] = {
        {.width = 64, .height = 48, .bits = 24, .rate = 25, .quality = 95},
        {.width = 61, .height = 35, .bits = 24, .rate = 30000, .scale = 1001, .quality = 95},
        {.width = 62, .height = 33, .bits = 8, .rate = 15, .scale = 2, .quality = 95},
    };

    const TempFolder folder;
};

TEST_P(AviReaders, FfprobeCountsTheFramesAndKnowsTheirSizeAndRate) {
    for (const MovieForm& form : kForms) {
        const std::string name = record(form);
        const std::string told = textOf(
            "ffprobe -v error -count_frames -select_streams v -show_entries "
            "stream=codec_name,width,height,r_frame_rate,nb_frames,nb_read_frames -of csv=p=0 " +
            name);
        std::string wanted = GetParam().jpeg() ? "mjpeg," : "rawvideo,";
        wanted += std::to_string(form.width) + "," + std::to_string(form.height) + ",";
        wanted += std::to_string(form.rate) + "/" + std::to_string(form.scale) + ",";
        wanted += std::to_string(kFrames) + "," + std::to_string(kFrames);
        EXPECT_EQ(told, wanted);
        EXPECT_EQ(textOf("ffprobe -v error -count_frames " + name + " 2>&1"), "") << "nothing to complain of";
    }
}

// The empty chunk that opens a list takes ffmpeg a frame's time where it reads on from list to list; frames
// are to come as they are, without repeats that fill the time.
TEST_P(AviReaders, FfmpegReadsThePixels) {
    for (const MovieForm& form : kForms) {
        const FileBytes pixels = outputOf(
            "ffmpeg -v error -i " + record(form) +
            " -fps_mode passthrough -f rawvideo -pix_fmt bgr24 -sws_flags accurate_rnd+full_chroma_int -");
        const std::size_t frameBytes = std::size_t{form.width} * form.height * 3;
        ASSERT_EQ(pixels.size(), frameBytes * kFrames);
        for (std::uint32_t i = 0; i < kFrames; ++i) {
            expectPixels(GetParam(), form, i, pixels.data() + i * frameBytes);
        }
    }
}

TEST_P(AviReaders, OpenCvReadsThePixels) {
    for (const MovieForm& form : kForms) {
        cv::VideoCapture capture(record(form));
        ASSERT_TRUE(capture.isOpened());
        EXPECT_EQ(capture.get(cv::CAP_PROP_FRAME_COUNT), kFrames);
        EXPECT_EQ(capture.get(cv::CAP_PROP_FRAME_WIDTH), form.width);
        EXPECT_EQ(capture.get(cv::CAP_PROP_FRAME_HEIGHT), form.height);
        EXPECT_NEAR(capture.get(cv::CAP_PROP_FPS), double{1} * form.rate / form.scale, 0.01);
        cv::Mat image;
        for (std::uint32_t i = 0; i < kFrames; ++i) {
            ASSERT_TRUE(capture.read(image)) << i;
            ASSERT_TRUE(image.isContinuous() && image.type() == CV_8UC3);
            expectPixels(GetParam(), form, i, image.data);
        }
        EXPECT_FALSE(capture.read(image));
    }
}

TEST_P(AviReaders, FfprobeTakesAMovieWithSkippedFramesForItsLength) {
    const std::filesystem::path path = folder / "movie.avi";
    Recording recording(GetParam().make(movie::systemMovieFiles(), {.entries = 4}), kForms[0]);
    for (const std::uint32_t i : {0, 1, 4, 5}) recording.add(i, smoothImage(kForms[0], i, false));
    EXPECT_EQ(recording.run({wideName(path)}), Status());
    EXPECT_EQ(textOf("ffprobe -v error -select_streams v -show_entries stream=duration -of csv=p=0 " +
                     path.string()),
              "0.240000");
    EXPECT_EQ(textOf("ffprobe -v error -count_frames -select_streams v -show_entries stream=nb_read_frames "
                     "-of csv=p=0 " +
                     path.string()),
              "4");
}

TEST_P(AviReaders, FfprobeOpensAMovieWithoutFrames) {
    const std::filesystem::path path = folder / "movie.avi";
    Recording recording(GetParam().make(movie::systemMovieFiles()), kForms[0]);
    EXPECT_EQ(recording.run({wideName(path)}), Status());
    EXPECT_EQ(textOf("ffprobe -v error -select_streams v -show_entries stream=width,height -of csv=p=0 " +
                     path.string()),
              "64,48");
}

INSTANTIATE_TEST_SUITE_P(Layouts, AviReaders, kAllLayouts, layoutName);

// The file system, with writes of nothing but zeros left out: the file has holes there.
class SparseFiles final : public movie::MovieFiles {
    struct Holder {
        int descriptor = -1;
        ~Holder() { ::close(descriptor); }

        Status put(std::uint64_t position, const void* data, std::size_t size) const {
            constexpr std::size_t kPiece = 65536;
            struct stat about {};
            fstat(descriptor, &about);
            const auto end = static_cast<off_t>(position + size);
            if (about.st_size < end && ftruncate(descriptor, end) != 0) return Status(29);
            const auto* bytes = static_cast<const std::uint8_t*>(data);
            for (std::size_t done = 0; done < size; done += kPiece) {
                const std::size_t piece = std::min(kPiece, size - done);
                const std::uint8_t* const from = bytes + done;
                if (from[0] == 0 && std::memcmp(from, from + 1, piece - 1) == 0) continue;
                if (::pwrite(descriptor, from, piece, static_cast<off_t>(position + done)) < 0)
                    return Status(29);
            }
            return {};
        }
    };
    struct Plain final : movie::MovieFile {
        Holder holder;
        Status write(std::uint64_t position, const void* data, std::size_t size) override {
            return holder.put(position, data, size);
        }
        Status close() override { return {}; }
    };
    struct Unbuffered final : movie::UnbufferedMovieFile {
        Holder holder;
        Status startWrite(std::uint64_t position, const void* data, std::size_t size) override {
            return holder.put(position, data, size);
        }
        Status wait() override { return {}; }
        Status close() override { return {}; }
    };

    template <typename Class, typename File>
    static Status open(const std::u16string& name, int flags, std::unique_ptr<File>& file) {
        auto opened = std::make_unique<Class>();
        opened->holder.descriptor =
            ::open(std::filesystem::path(name).c_str(), O_RDWR | O_CLOEXEC | flags, 0600);
        if (opened->holder.descriptor < 0) return Status(5);
        file = std::move(opened);
        return {};
    }

  public:
    Status create(const std::u16string& name, std::unique_ptr<movie::MovieFile>& file) override {
        return open<Plain>(name, O_CREAT | O_TRUNC, file);
    }
    Status createUnbuffered(const std::u16string& name,
                            std::unique_ptr<movie::UnbufferedMovieFile>& file) override {
        return open<Unbuffered>(name, O_CREAT | O_TRUNC, file);
    }
    Status openAgain(const std::u16string& name, std::unique_ptr<movie::MovieFile>& file) override {
        return open<Plain>(name, 0, file);
    }
    Status volumeKind(const std::u16string&, platform::VolumeKind& kind) override {
        kind = platform::VolumeKind::Large;
        return {};
    }
    Status freeBytes(const std::u16string&, std::uint64_t&) override { return Status(5); }
    Status fileSize(const std::u16string&, std::uint64_t&) override { return Status(5); }
};

// Frames of nearly 64 MiB, black but for their upper left pixel.
TEST(LargeAvi, IsReadPastFourGiB) {
    const MovieForm form{.width = 4096, .height = 5461, .bits = 24, .rate = 25};
    const std::size_t frameBytes = std::size_t{strideOf(form)} * form.height;
    constexpr std::uint32_t kFrames = 66;
    const TempFolder folder;
    const std::filesystem::path path = folder / "movie.avi";
    SparseFiles files;
    Recording recording(kAvi20NotCompressed.make(files), form);
    movie::CAVIFile& writer = recording.writer();
    platform::PageBlock frame;
    ASSERT_TRUE(frame.allocate(frameBytes + 2064).ok());
    std::uint8_t* const upperLeft = frame.data() + 8 + frameBytes - strideOf(form);
    ASSERT_TRUE(writer.PrepareHeader().ok());
    std::unique_ptr<movie::FileRecord> record;
    ASSERT_TRUE(writer.OpenFile(wideName(path), record).ok());
    for (std::uint32_t i = 0; i < kFrames; ++i) {
        std::fill(upperLeft, upperLeft + 3, static_cast<std::uint8_t>(3 * i));
        ASSERT_TRUE(writer.WriteFrame(*record, frame.data() + 8, i, 0).ok());
    }
    EXPECT_TRUE(writer.CloseFile(*record).ok());
    record.reset();
    EXPECT_GT(std::filesystem::file_size(path), std::uintmax_t{4} << 30);

    EXPECT_EQ(textOf("ffprobe -v error -count_frames -select_streams v -show_entries "
                     "stream=nb_frames,nb_read_frames -of csv=p=0 " +
                     path.string() + " 2>&1"),
              "66,66");
    // By the indices: the first frame from half a frame's time before it on.
    for (const std::uint32_t i : {0u, 14u, 15u, 31u, 64u, 65u}) {
        const std::string time = std::to_string(i == 0 ? 0.0 : (i - 0.5) / form.rate);
        const FileBytes corner = outputOf("ffmpeg -v error -ss " + time + " -i " + path.string() +
                                          " -frames:v 1 -vf crop=1:1:0:0 -f rawvideo -pix_fmt bgr24 -");
        EXPECT_EQ(corner, FileBytes(3, static_cast<std::uint8_t>(3 * i)));
    }
    EXPECT_EQ(cv::VideoCapture(path.string()).get(cv::CAP_PROP_FRAME_COUNT), kFrames);
}

}  // namespace
}  // namespace tavra::test
