// Movies whose frames the system's codecs compress: AVI files by name, frame by frame.
//
// Windows: Video for Windows. Linux: FFmpeg's libraries, which are loaded when the first such movie is
// opened; a FOURCC stands for the codec that FFmpeg files under it in AVI files. All three classes belong to
// the writer of such movies. One thread at a time; the thread that writes may be another than the one that
// opened.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "base/status.h"

namespace tavra::platform {

// What the frames are: a bitmap header of 40 bytes and its palette, as in a file. 8 bits a pixel (gray) or 24
// (blue first), rows from the bottom up, each filled up to a multiple of 4 bytes.
using BitmapHeader = std::span<const std::uint8_t>;

// Holds the framework ready for as long as it lives.
class CodecFramework {
  public:
    CodecFramework();
    ~CodecFramework();  // NOLINT(performance-trivially-destructible): Windows has something to give back
    CodecFramework(const CodecFramework&) = delete;
    CodecFramework& operator=(const CodecFramework&) = delete;
};

// The codec that the user chose, with its settings.
class CodecChoice {
  public:
    CodecChoice();
    ~CodecChoice();

    // Asks the user and waits for the answer; an earlier choice is given up first. Windows: in the system's
    // dialog. Linux: through the function that the application has set (tavra_host.h). 0xE000000D: cancelled,
    // or nobody to ask.
    Status ask(BitmapHeader frames);

    bool isHeld() const { return native_ != nullptr; }

  private:
    friend class CodecMovie;
    struct Native;
    std::unique_ptr<Native> native_;
};

struct CodecMovieSettings {
    std::uint32_t compressor = 0;         // FOURCC, first character in the low byte; 0: none
    std::uint32_t quality = 75;           // 0 to 100
    const CodecChoice* choice = nullptr;  // if there is one, it takes the place of both
    std::uint32_t rate = 1;               // frames a second are rate / scale
    std::uint32_t scale = 1;
    std::uint32_t frames = 0;  // how many are expected
    BitmapHeader image;
};

class CodecMovie {
  public:
    CodecMovie();
    ~CodecMovie();  // closes

    // Makes the file, or replaces it. 0xE000000A: no such codec; 0xE000000B: it does not take these frames;
    // 0xE000000C: the file cannot be opened; 0xE0000009: anything else of the stream; 8: out of memory; other
    // failures of the file with the system's code.
    Status open(const std::u16string& name, const CodecMovieSettings& settings);

    // Compresses and writes a frame. `index` grows and may jump; what is jumped over shows the frame before
    // it. Behind the image 64 bytes must be readable. `written` is what went to the file by this call, which
    // may be of earlier frames. Fails with the system's code.
    Status write(std::uint32_t index, const std::uint8_t* image, std::size_t size, std::uint32_t& written);

    // Whether the frames are compressed at all. Windows: a user may choose that they are not.
    bool isCompressed() const;

    // Writes what the codec still holds, completes the file and closes it. Fails with the first failure that
    // comes up, or that a write of this movie has had.
    Status close();

  private:
    struct Native;
    std::unique_ptr<Native> native_;
};

}  // namespace tavra::platform
