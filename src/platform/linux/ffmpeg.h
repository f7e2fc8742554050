// FFmpeg's libraries, loaded by name when they are first needed: nothing here is linked with them.
//
// The shapes of their records come from the headers at build time and hold for one major version; the names
// of the library files carry it, so that no other version is ever taken. Only in builds that found the
// headers.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace tavra::platform {

#define TAVRA_AVUTIL_FUNCTIONS(USE) \
    USE(av_frame_alloc)             \
    USE(av_frame_free)              \
    USE(av_frame_unref)             \
    USE(av_frame_get_buffer)        \
    USE(av_frame_is_writable)       \
    USE(av_free)                    \
    USE(av_freep)                   \
    USE(av_log_set_level)           \
    USE(av_malloc)                  \
    USE(av_opt_find) USE(av_opt_set) USE(av_opt_set_double) USE(av_pix_fmt_desc_get) USE(av_reduce)

#define TAVRA_AVCODEC_FUNCTIONS(USE)  \
    USE(av_codec_is_encoder)          \
    USE(av_codec_iterate)             \
    USE(av_packet_alloc)              \
    USE(av_packet_free)               \
    USE(av_packet_unref)              \
    USE(avcodec_alloc_context3)       \
    USE(avcodec_descriptor_get)       \
    USE(avcodec_free_context)         \
    USE(avcodec_open2)                \
    USE(avcodec_pix_fmt_to_codec_tag) \
    USE(avcodec_parameters_from_context) USE(avcodec_receive_packet) USE(avcodec_send_frame)

#define TAVRA_AVFORMAT_FUNCTIONS(USE)   \
    USE(av_codec_get_id)                \
    USE(av_write_frame)                 \
    USE(av_write_trailer)               \
    USE(avformat_alloc_output_context2) \
    USE(avformat_free_context)          \
    USE(avformat_get_riff_video_tags)   \
    USE(avformat_new_stream)            \
    USE(avformat_write_header) USE(avio_alloc_context) USE(avio_context_free) USE(avio_flush)

#define TAVRA_SWSCALE_FUNCTIONS(USE) USE(sws_freeContext) USE(sws_getContext) USE(sws_scale)

struct Ffmpeg {
// NOLINTNEXTLINE(bugprone-macro-parentheses): the name of a member
#define TAVRA_DECLARE(name) decltype(&::name) name = nullptr;
    TAVRA_AVUTIL_FUNCTIONS(TAVRA_DECLARE)
    TAVRA_AVCODEC_FUNCTIONS(TAVRA_DECLARE)
    TAVRA_AVFORMAT_FUNCTIONS(TAVRA_DECLARE)
    TAVRA_SWSCALE_FUNCTIONS(TAVRA_DECLARE)
#undef TAVRA_DECLARE
};

// The loaded libraries, which stay to the end of the program; null while they are not installed. Any thread.
const Ffmpeg* loadFfmpeg();

}  // namespace tavra::platform
