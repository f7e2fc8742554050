#include "platform/linux/codec_encoder.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "base/little_endian.h"
#include "platform/last_error.h"

namespace tavra::platform {
namespace {

// The encoder's clock ticks once a frame. Some formats hold no more than 16 bits of it; the file's header has
// the rate as it is.
constexpr int kLargestClock = 65535;

// Layouts that hold the pixels as they are, for codecs that lose nothing.
constexpr AVPixelFormat kExact[] = {AV_PIX_FMT_BGR24, AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR0, AV_PIX_FMT_RGB0,
                                    AV_PIX_FMT_0RGB,  AV_PIX_FMT_0BGR,  AV_PIX_FMT_GBRP, AV_PIX_FMT_BGRA,
                                    AV_PIX_FMT_RGBA,  AV_PIX_FMT_ARGB,  AV_PIX_FMT_ABGR};
// Layouts for all others, those that every player takes first.
constexpr AVPixelFormat kCommon[] = {AV_PIX_FMT_YUV420P,  AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUV422P,
                                     AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUV444P,  AV_PIX_FMT_YUVJ444P,
                                     AV_PIX_FMT_RGB24,    AV_PIX_FMT_BGR24};

bool losesNothing(const Ffmpeg& lib, AVCodecID id) {
    const AVCodecDescriptor* const about = lib.avcodec_descriptor_get(id);
    return about != nullptr && (about->props & AV_CODEC_PROP_LOSSLESS) != 0 &&
           (about->props & AV_CODEC_PROP_LOSSY) == 0;
}

// The layouts to offer an encoder, best first. None: it cannot be asked for what this FOURCC means.
std::vector<AVPixelFormat> layouts(const Ffmpeg& lib, const AVCodec& codec, AVPixelFormat source,
                                   std::uint32_t fourcc) {
    std::vector<AVPixelFormat> wanted;
    if (losesNothing(lib, codec.id)) {
        wanted.push_back(source);
        wanted.insert(wanted.end(), std::begin(kExact), std::end(kExact));
    } else {
        wanted.assign(std::begin(kCommon), std::end(kCommon));
    }
    if (codec.id == AV_CODEC_ID_RAWVIDEO) {  // any layout is written; the FOURCC tells the reader which
        wanted.insert(wanted.end(), {source, AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUYV422, AV_PIX_FMT_UYVY422});
        std::erase_if(
            wanted, [&](AVPixelFormat format) { return lib.avcodec_pix_fmt_to_codec_tag(format) != fourcc; });
    }
    if (codec.pix_fmts == nullptr) return wanted;
    const AVPixelFormat* end = codec.pix_fmts;
    while (*end != AV_PIX_FMT_NONE) ++end;
    std::erase_if(wanted,
                  [&](AVPixelFormat format) { return std::find(codec.pix_fmts, end, format) == end; });
    for (const AVPixelFormat* format = codec.pix_fmts; format != end; ++format) {
        if (std::ranges::find(wanted, *format) == wanted.end()) wanted.push_back(*format);
    }
    return wanted;
}

}  // namespace

Status ffmpegFailure(int result) {
    return failWith(errorFromErrno(AVUNERROR(result)));
}

CodecEncoder::~CodecEncoder() {
    close();
}

void CodecEncoder::close() {
    lib_.av_frame_free(&frame_);
    lib_.avcodec_free_context(&encoder_);
    lib_.sws_freeContext(std::exchange(converter_, nullptr));
}

Status CodecEncoder::open(const TavraCodecChoice& codec, const CodecMovieSettings& settings) {
    width_ = static_cast<int>(loadLe32(&settings.image[4]));
    height_ = static_cast<int>(loadLe32(&settings.image[8]));
    const int bits = loadLe16(&settings.image[14]);
    stride_ = (width_ * (bits / 8) + 3) / 4 * 4;
    source_ = bits == 8 ? AV_PIX_FMT_GRAY8 : AV_PIX_FMT_BGR24;
    const AVCodecTag* const tags[] = {lib_.avformat_get_riff_video_tags(), nullptr};
    const AVCodecID id = lib_.av_codec_get_id(tags, codec.compressor);
    return id == AV_CODEC_ID_NONE ? failWith(error::kCodecMissing) : openAny(id, codec, settings);
}

// The first encoder of this codec that takes the frames, in FFmpeg's own order. One may be there and not
// work, for want of its hardware.
Status CodecEncoder::openAny(AVCodecID id, const TavraCodecChoice& choice,
                             const CodecMovieSettings& settings) {
    std::uint32_t failure = error::kCodecMissing;
    void* place = nullptr;
    while (const AVCodec* const codec = lib_.av_codec_iterate(&place)) {
        if (codec->id != id || !lib_.av_codec_is_encoder(codec)) continue;
        for (const AVPixelFormat format : layouts(lib_, *codec, source_, choice.compressor)) {
            failure = error::kCodecRefuses;
            const Status opened = openWith(*codec, format, choice, settings);
            if (opened.ok() || opened.code() == error::kOutOfMemory) return opened;
            close();
        }
    }
    return failWith(failure);
}

Status CodecEncoder::openWith(const AVCodec& codec, AVPixelFormat format, const TavraCodecChoice& choice,
                              const CodecMovieSettings& settings) {
    const AVPixFmtDescriptor* const about = lib_.av_pix_fmt_desc_get(format);
    if (about == nullptr || (about->flags & AV_PIX_FMT_FLAG_HWACCEL) != 0) {
        return Status(error::kCodecRefuses);  // lies in a device's own memory
    }
    encoder_ = lib_.avcodec_alloc_context3(&codec);
    frame_ = lib_.av_frame_alloc();
    if (encoder_ == nullptr || frame_ == nullptr) return failWith(error::kOutOfMemory);
    encoder_->width = width_;
    encoder_->height = height_;
    encoder_->pix_fmt = format;
    encoder_->codec_tag = choice.compressor;
    lib_.av_reduce(&encoder_->time_base.num, &encoder_->time_base.den, settings.scale, settings.rate,
                   kLargestClock);
    encoder_->framerate = {encoder_->time_base.den, encoder_->time_base.num};
    encoder_->max_b_frames = 0;  // frames stand in an AVI file in the order in which they are shown
    encoder_->thread_count = 0;  // as many as there are processors
    if ((about->flags & AV_PIX_FMT_FLAG_RGB) == 0) encoder_->colorspace = AVCOL_SPC_SMPTE170M;
    if (choice.keyFrameEvery > 0) {
        encoder_->gop_size = static_cast<int>(std::min<std::uint32_t>(choice.keyFrameEvery, 0x7FFFFFFF));
    }
    if (choice.dataRate > 0) {
        encoder_->bit_rate = std::int64_t{choice.dataRate} * 8;
    } else {
        setQuality(choice.quality <= 100 ? choice.quality : settings.quality);
    }
    const int opened = lib_.avcodec_open2(encoder_, &codec, nullptr);
    if (opened < 0) return ffmpegFailure(opened);
    converter_ =
        lib_.sws_getContext(width_, height_, source_, width_, height_, format,
                            SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP, nullptr, nullptr, nullptr);
    return converter_ != nullptr ? Status() : failWith(error::kCodecRefuses);
}

// From 0 to 100 evenly over the codec's own scale: its constant rate factor if it has one, else quantisers
// from 31, the coarsest, to 1.
void CodecEncoder::setQuality(std::uint32_t quality) {
    constexpr int kCoarsest = 31;
    constexpr double kLargestRateFactor = 51;
    const double coarseness = (100 - quality) / 100.0;
    const bool hasOptions = encoder_->codec->priv_class != nullptr;
    if (!hasOptions || lib_.av_opt_find(encoder_->priv_data, "crf", nullptr, 0, 0) == nullptr) {
        encoder_->flags |= AV_CODEC_FLAG_QSCALE;
        encoder_->global_quality = static_cast<int>((1 + (kCoarsest - 1) * coarseness) * FF_QP2LAMBDA);
        return;
    }
    lib_.av_opt_set_double(encoder_->priv_data, "crf", 1 + (kLargestRateFactor - 1) * coarseness, 0);
    // Such encoders can spend any time on a frame, and a camera does not wait. Others take no such word.
    static_cast<void>(lib_.av_opt_set(encoder_->priv_data, "preset", "veryfast", 0));
}

// A frame that the encoder holds no more. One that it has still in work is left to it.
Status CodecEncoder::freshFrame() {
    if (frame_->buf[0] != nullptr && lib_.av_frame_is_writable(frame_) > 0) return {};
    lib_.av_frame_unref(frame_);
    frame_->format = encoder_->pix_fmt;
    frame_->width = width_;
    frame_->height = height_;
    const int got = lib_.av_frame_get_buffer(frame_, 0);
    return got < 0 ? ffmpegFailure(got) : Status();
}

Status CodecEncoder::send(std::uint32_t index, const std::uint8_t* image) {
    TAVRA_RETURN_IF_ERROR(freshFrame());
    const std::uint8_t* const top = image + std::ptrdiff_t{stride_} * (height_ - 1);
    const int upwards = -stride_;
    lib_.sws_scale(converter_, &top, &upwards, 0, height_, frame_->data, frame_->linesize);
    frame_->pts = index;
    frame_->quality = encoder_->global_quality;
    const int sent = lib_.avcodec_send_frame(encoder_, frame_);
    return sent < 0 ? ffmpegFailure(sent) : Status();
}

Status CodecEncoder::finish() {
    const int sent = lib_.avcodec_send_frame(encoder_, nullptr);
    return sent < 0 && sent != AVERROR_EOF ? ffmpegFailure(sent) : Status();
}

Status CodecEncoder::receive(AVPacket& packet, bool& received) {
    const int result = lib_.avcodec_receive_packet(encoder_, &packet);
    received = result == 0;
    const bool noneReady = result == AVERROR(EAGAIN) || result == AVERROR_EOF;
    return received || noneReady ? Status() : ffmpegFailure(result);
}

}  // namespace tavra::platform
