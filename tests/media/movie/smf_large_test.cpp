// SMF files beyond 4 GiB: where the writer puts each piece, on a place that keeps none of the images.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "base/little_endian.h"
#include "media/movie/avi_file_smf.h"
#include "media/movie/no_files.h"

namespace tavra::test {
namespace {

constexpr std::uint64_t kHeaderBytes = 376;
constexpr std::uint32_t kFrameHeaderBytes = 24;
constexpr std::uint32_t kImageBytes = 0xFFFF0000;

struct Piece {
    std::uint64_t position;
    std::size_t size;
    friend bool operator==(const Piece&, const Piece&) = default;
};

// Of an image only where it goes is noted, so that it need not be there.
class NotedFile final : public movie::MovieFile {
  public:
    NotedFile(std::vector<Piece>& pieces, std::vector<std::uint32_t>& numbers)
        : pieces_(pieces), numbers_(numbers) {}
    Status write(std::uint64_t position, const void* data, std::size_t size) override {
        pieces_.push_back({position, size});
        if (size == kFrameHeaderBytes) numbers_.push_back(loadLe32(static_cast<const std::uint8_t*>(data)));
        return {};
    }
    Status close() override { return {}; }

  private:
    std::vector<Piece>& pieces_;
    std::vector<std::uint32_t>& numbers_;
};

class LargeSmf : public testing::Test {
  protected:
    LargeSmf() {
        writer.settings.imageBytes = kImageBytes;
        record.file = std::make_unique<NotedFile>(pieces, numbers);
    }
    Status write(std::uint32_t index) { return writer.WriteFrame(record, &noImage, index, 2); }

    NoFiles files;
    std::vector<Piece> pieces;
    std::vector<std::uint32_t> numbers;  // of the frames' headers
    movie::CAVIFileSMF writer{files, 0};
    movie::FileRecord record;
    std::uint8_t noImage = 0;
};

TEST_F(LargeSmf, HasItsFramesOneBehindTheOtherWhereverTheyLie) {
    constexpr std::uint32_t kFrames = 40;
    std::vector<Piece> wanted = {{0, kHeaderBytes}};
    std::uint64_t position = kHeaderBytes;
    for (std::uint32_t i = 0; i < kFrames; ++i) {
        ASSERT_TRUE(write(3 * i).ok());
        EXPECT_EQ(numbers.back(), 3 * i);
        wanted.push_back({position, kFrameHeaderBytes});
        wanted.push_back({position + kFrameHeaderBytes, kImageBytes});
        position += kFrameHeaderBytes + std::uint64_t{kImageBytes};
    }
    EXPECT_GT(position, std::uint64_t{39} << 32);
    EXPECT_EQ(pieces, wanted);
}

// The largest file has 2^40 bytes. 256 frames of 2^32 - 65512 bytes leave 16770696 of them, which are less
// than one more frame; 255 frames do not fill it.
TEST_F(LargeSmf, IsFullAtOneTebibyteAndNotBefore) {
    for (std::uint32_t i = 0; i < 256; ++i) {
        EXPECT_FALSE(writer.IsFileFull()) << "before frame " << i;
        ASSERT_TRUE(write(i).ok());
    }
    EXPECT_TRUE(writer.IsFileFull());
}

}  // namespace
}  // namespace tavra::test
