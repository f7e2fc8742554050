#include "support/ffmpeg_reader.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <memory>

namespace tavra::test {
namespace {

template <auto free>
struct FreeBy {
    template <typename T>
    void operator()(T* object) const {
        free(&object);
    }
};
struct FreeConverter {
    void operator()(SwsContext* converter) const { sws_freeContext(converter); }
};

class Reader {
  public:
    bool open(const std::filesystem::path& name) {
        AVFormatContext* opened = nullptr;
        if (avformat_open_input(&opened, ("file:" + name.string()).c_str(), nullptr, nullptr) < 0)
            return false;
        container_.reset(opened);
        if (avformat_find_stream_info(opened, nullptr) < 0 || opened->nb_streams != 1) return false;
        const AVCodecParameters& parameters = *opened->streams[0]->codecpar;
        const AVCodec* const codec = avcodec_find_decoder(parameters.codec_id);
        if (codec == nullptr) return false;
        decoder_.reset(avcodec_alloc_context3(codec));
        if (avcodec_parameters_to_context(decoder_.get(), &parameters) < 0) return false;
        decoder_->thread_count = 1;
        if (avcodec_open2(decoder_.get(), codec, nullptr) < 0) return false;
        describe(*opened->streams[0], *codec);
        return true;
    }

    bool readAll() {
        while (av_read_frame(container_.get(), packet_.get()) == 0) {
            const bool taken = takePacket();
            av_packet_unref(packet_.get());
            if (!taken) return false;
        }
        return avcodec_send_packet(decoder_.get(), nullptr) == 0 && takeFrames();
    }

    ReadMovie movie;

  private:
    void describe(const AVStream& stream, const AVCodec& codec) {
        movie.width = stream.codecpar->width;
        movie.height = stream.codecpar->height;
        movie.codec = codec.name;
        movie.fourcc = stream.codecpar->codec_tag;
        movie.rate = stream.time_base.den;
        movie.scale = stream.time_base.num;
        movie.frameCount = stream.nb_frames;
    }

    bool takePacket() {
        const std::int64_t position = packet_->pts != AV_NOPTS_VALUE ? packet_->pts : packet_->dts;
        if (packet_->size == 0) return true;
        packet_->pts = position;
        movie.packets.push_back(
            {position, static_cast<std::size_t>(packet_->size), (packet_->flags & AV_PKT_FLAG_KEY) != 0});
        return avcodec_send_packet(decoder_.get(), packet_.get()) == 0 && takeFrames();
    }

    bool takeFrames() {
        for (;;) {
            const int result = avcodec_receive_frame(decoder_.get(), frame_.get());
            if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return true;
            if (result < 0 || !keepFrame()) return false;
            av_frame_unref(frame_.get());
        }
    }

    bool keepFrame() {
        const int width = frame_->width;
        const int height = frame_->height;
        const std::unique_ptr<SwsContext, FreeConverter> converter(sws_getContext(
            width, height, static_cast<AVPixelFormat>(frame_->format), width, height, AV_PIX_FMT_BGR24,
            SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
        if (!converter) return false;
        constexpr std::size_t kRoomForVectors = 64;
        const int stride = 3 * width;
        std::vector<std::uint8_t> pixels(static_cast<std::size_t>(stride) * static_cast<std::size_t>(height) +
                                         kRoomForVectors);
        std::uint8_t* const target = pixels.data();
        sws_scale(converter.get(), frame_->data, frame_->linesize, 0, height, &target, &stride);
        pixels.resize(pixels.size() - kRoomForVectors);
        movie.frames.push_back({frame_->best_effort_timestamp, std::move(pixels)});
        return true;
    }

    std::unique_ptr<AVFormatContext, FreeBy<avformat_close_input>> container_;
    std::unique_ptr<AVCodecContext, FreeBy<avcodec_free_context>> decoder_;
    std::unique_ptr<AVPacket, FreeBy<av_packet_free>> packet_{av_packet_alloc()};
    std::unique_ptr<AVFrame, FreeBy<av_frame_free>> frame_{av_frame_alloc()};
};

}  // namespace

void silenceFfmpeg() {
    av_log_set_level(AV_LOG_QUIET);
}

std::optional<ReadMovie> readMovie(const std::filesystem::path& name) {
    Reader reader;
    if (!reader.open(name) || !reader.readAll()) return std::nullopt;
    return reader.movie;
}

}  // namespace tavra::test
