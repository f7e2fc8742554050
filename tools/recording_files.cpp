#include "recording_files.h"

#include <algorithm>
#include <cctype>

#include "exit_code.h"

namespace tavra::tool {

namespace fs = std::filesystem;

MovieKind movieKindOf(const std::string& fileName) {
    std::string ending = fs::path(fileName).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    if (ending == ".avi") return MovieKind::Avi;
    if (ending == ".smf") return MovieKind::Smf;
    throw Failure(fileName + ": the file name has no known ending; movies end in .avi or .smf");
}

fs::path followingFile(const fs::path& first, std::uint32_t number) {
    if (number <= 1) return first;
    fs::path name = first.stem();
    name += "-" + std::to_string(number);
    name += first.extension();
    return first.parent_path() / name;
}

std::optional<std::uint64_t> freeBytesAt(const fs::path& file) {
    std::error_code error;
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    const fs::space_info space = fs::space(folder, error);
    if (error) return std::nullopt;
    return space.available;
}

std::uint64_t sizeOf(const fs::path& file) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    return error ? 0 : size;
}

FrameLayout FrameLayout::smf(std::uint64_t frameBytes) {
    return {376, 24 + frameBytes};
}

// The list of frames opens with an empty chunk.
FrameLayout FrameLayout::avi1(std::uint64_t frameBytes) {
    return {4096 + 8, 8 + frameBytes};
}

// What fills a frame up to a whole sector is a chunk too, of 8 bytes at least. The indexes between segments
// count for less than a frame.
FrameLayout FrameLayout::avi2(std::uint64_t frameBytes) {
    constexpr std::uint64_t kSector = 2048, kChunkHead = 8;
    const std::uint64_t chunk = kChunkHead + frameBytes;
    const std::uint64_t rest = (kSector - chunk % kSector) % kSector;
    return {0x101000, chunk + rest + (rest > 0 && rest < kChunkHead ? kSector : 0)};
}

std::uint64_t FrameLayout::framesIn(std::uint64_t fileBytes) const {
    return fileBytes < start ? 0 : (fileBytes - start) / step;
}

}  // namespace tavra::tool
