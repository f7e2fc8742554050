// One of FFmpeg's encoders, found by its FOURCC and fed with the frames of a recording. Belongs to a
// CodecMovie.
#pragma once

#include <span>

#include "platform/codec_movie.h"
#include "platform/linux/ffmpeg.h"
#include "tavra/tavra_host.h"

namespace tavra::platform {

// The status of a failure of FFmpeg's functions, which are negative errno values or numbers of their own.
Status ffmpegFailure(int result);

class CodecEncoder {
  public:
    explicit CodecEncoder(const Ffmpeg& library) : lib_(library) {}
    ~CodecEncoder();
    CodecEncoder(const CodecEncoder&) = delete;
    CodecEncoder& operator=(const CodecEncoder&) = delete;

    // 0xE000000A: nothing encodes this FOURCC; 0xE000000B: no encoder takes these frames; 8.
    Status open(const TavraCodecChoice& codec, const CodecMovieSettings& settings);

    const AVCodecContext& context() const { return *encoder_; }

    // Hands in a frame, rows from the bottom up.
    Status send(std::uint32_t index, const std::uint8_t* image);
    // The end: what the encoder still holds comes out.
    Status finish();
    // The next packet that is ready; false: none is.
    Status receive(AVPacket& packet, bool& received);

  private:
    Status openAny(AVCodecID id, const TavraCodecChoice& codec, const CodecMovieSettings& settings);
    Status openWith(const AVCodec& codec, AVPixelFormat format, const TavraCodecChoice& choice,
                    const CodecMovieSettings& settings);
    void setQuality(std::uint32_t quality);
    Status freshFrame();
    void close();

    const Ffmpeg& lib_;
    int width_ = 0, height_ = 0, stride_ = 0;
    AVPixelFormat source_ = AV_PIX_FMT_NONE;
    AVCodecContext* encoder_ = nullptr;
    SwsContext* converter_ = nullptr;
    AVFrame* frame_ = nullptr;
};

}  // namespace tavra::platform
