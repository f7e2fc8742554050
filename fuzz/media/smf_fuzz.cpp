// SMF movies: the input is a file, which is opened, read and developed. The AVI goes nowhere, through the
// recorder all the same.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "media/movie/create_avi.h"
#include "media/movie/read_smf.h"
#include "media/movie/smf_converter.h"

using namespace tavra;
using movie::CReadSMF;
using Field = movie::SmfHeader::Field;

namespace {

// What is developed in one run, at most: headers may ask for much more.
constexpr std::uint64_t kMostPixels = 1 << 20;

class Nowhere final : public movie::MovieFiles {
  public:
    Status create(const std::u16string&, std::unique_ptr<movie::MovieFile>&) override { return {}; }
    Status createUnbuffered(const std::u16string&, std::unique_ptr<movie::UnbufferedMovieFile>&) override {
        return {};
    }
    Status openAgain(const std::u16string&, std::unique_ptr<movie::MovieFile>&) override { return {}; }
    Status volumeKind(const std::u16string&, platform::VolumeKind&) override { return {}; }
    Status freeBytes(const std::u16string&, std::uint64_t&) override { return {}; }
    Status fileSize(const std::u16string&, std::uint64_t&) override { return {}; }
};

std::uint64_t written = 0;

// Looks at every byte of an image, so that one that nobody wrote is found.
class Look final : public movie::CAVIFile {
  public:
    explicit Look(movie::MovieFiles& files) : CAVIFile(files) {}
    ~Look() override { Stop(); }
    Status OpenFile(const std::u16string&, std::unique_ptr<movie::FileRecord>& record) override {
        record = std::make_unique<movie::FileRecord>();
        return {};
    }
    Status WriteFrame(movie::FileRecord&, std::uint8_t* image, std::uint32_t, std::uint32_t) override {
        unsigned sum = 0;
        for (std::uint32_t i = 0; i < settings.imageBytes; ++i) sum += image[i];
        written += sum < 0xFFFFFFFF ? 1 : 0;
        return {};
    }
    Status CloseFile(movie::FileRecord&) override { return {}; }
};

ISUnknown* make(std::int32_t code) {
    static Nowhere nowhere;
    if (code != stage_code::kCreateAvi) return CreateStageObject(code);
    auto* const recorder = new movie::CCreateAVI(
        {&nowhere, platform::freePhysicalMemory,
         [](std::uint16_t, std::uint32_t, movie::MovieFiles& files) -> std::unique_ptr<movie::CAVIFile> {
             return std::make_unique<Look>(files);
         }});
    recorder->AddRef();
    return recorder;
}

// One file for the whole process, removed at its end.
class Place {
  public:
    Place() : path_(std::filesystem::temp_directory_path() / ("tavra-fuzz-" + std::to_string(random_()))) {}
    ~Place() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    // As a new file: some file systems wait for the disk when an old one is emptied and written again.
    std::u16string fill(const std::uint8_t* data, std::size_t size) const {
        std::filesystem::remove(path_);
        std::ofstream(path_, std::ios::binary)
            .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        return path_.u16string();
    }

  private:
    std::random_device random_;
    std::filesystem::path path_;
};

bool affordable(const CReadSMF& movie) {
    const movie::SmfHeader& header = movie.header();
    const std::uint64_t width = header.get(Field::Width), height = header.get(Field::Height);
    if (width > kMostPixels || height > kMostPixels) return false;
    const std::uint64_t bytes = (width + 4) * height * (header.developedBits() / 8 + 4);
    return bytes + header.get(Field::FrameDataSize) <= kMostPixels &&
           bytes * movie.frameCount() <= kMostPixels;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Place place;
    CReadSMF movie;
    if (!movie.open(place.fill(data, size)).ok()) return 0;
    if (movie.frameCount() > size) std::abort();
    CReadSMF::FrameHeader frame;
    if (movie.ReadFrame(movie.frameCount(), frame, nullptr).ok()) std::abort();
    if (movie.frameCount() > 0) {
        if (!movie.ReadFrame(movie.frameCount() - 1, frame, nullptr).ok()) std::abort();
        if (frame.number != movie.lastFrameNumber()) std::abort();
    }
    if (!affordable(movie)) return 0;
    written = 0;
    std::uint32_t current = 0;
    static_cast<void>(movie::convertSmf(movie, {u"x", 0, &current, nullptr, nullptr}, {.make = make}));
    if (written > movie.frameCount()) std::abort();
    if (movie.frameCount() > 0 && current >= movie.frameCount()) std::abort();
    return 0;
}
