// FFmpeg's AVI file around one of its encoders. The bytes go through a file of ours, so that names, errors
// and sizes are those of every other file.
#include "platform/codec_movie.h"

#include <limits>
#include <utility>

#include "platform/last_error.h"
#include "platform/linux/codec_choice.h"
#include "platform/linux/codec_encoder.h"
#include "platform/random_access_file.h"

namespace tavra::platform {
namespace {

constexpr int kStreamBuffer = 1 << 18;

}  // namespace

struct CodecMovie::Native {
    const Ffmpeg& lib;
    CodecEncoder encoder;
    RandomAccessFile file;
    std::int64_t position = 0;
    std::int64_t length = 0;
    Status failure;  // the first of this movie
    AVFormatContext* container = nullptr;
    AVPacket* packet = nullptr;

    explicit Native(const Ffmpeg& library) : lib(library), encoder(library) {}
    ~Native() {
        if (container != nullptr && container->pb != nullptr) {
            lib.av_freep(&container->pb->buffer);
            lib.avio_context_free(&container->pb);
        }
        lib.avformat_free_context(container);
        lib.av_packet_free(&packet);
    }
    Native(const Native&) = delete;
    Native& operator=(const Native&) = delete;

    // Keeps the first failure.
    Status note(Status status) {
        if (failure.ok()) failure = status;
        return status;
    }

    // ---- what the container writes and seeks

    // A failure is kept for the writer and not told to the container: it goes on, and its header comes to say
    // what the file holds.
    template <typename Byte>
    static int writeBytes(void* self, Byte* bytes, int size) {
        auto& movie = *static_cast<Native*>(self);
        static_cast<void>(movie.note(movie.file.write(static_cast<std::uint64_t>(movie.position), bytes,
                                                      static_cast<std::size_t>(size))));
        movie.position += size;
        movie.length = std::max(movie.length, movie.position);
        return size;
    }

    static std::int64_t seek(void* self, std::int64_t offset, int from) {
        auto& movie = *static_cast<Native*>(self);
        switch (from & ~AVSEEK_FORCE) {
            case AVSEEK_SIZE: return movie.length;
            case SEEK_SET: return movie.position = offset;
            case SEEK_CUR: return movie.position += offset;
            case SEEK_END: return movie.position = movie.length + offset;
            default: return AVERROR(EINVAL);
        }
    }

    // ---- opening

    Status openContainer(const CodecMovieSettings& settings) {
        packet = lib.av_packet_alloc();
        lib.avformat_alloc_output_context2(&container, nullptr, "avi", nullptr);
        if (packet == nullptr || container == nullptr) return failWith(error::kOutOfMemory);
        container->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
        TAVRA_RETURN_IF_ERROR(connectFile());
        AVStream* const stream = lib.avformat_new_stream(container, nullptr);
        if (stream == nullptr) return failWith(error::kOutOfMemory);
        lib.av_reduce(&stream->time_base.num, &stream->time_base.den, settings.scale, settings.rate,
                      std::numeric_limits<int>::max());
        if (lib.avcodec_parameters_from_context(stream->codecpar, &encoder.context()) < 0)
            return failWith(error::kOutOfMemory);
        const int written = lib.avformat_write_header(container, nullptr);
        if (written < 0) return failWith(error::kFileStream);
        return failure;
    }

    Status connectFile() {
        auto* const buffer = static_cast<unsigned char*>(lib.av_malloc(kStreamBuffer));
        if (buffer == nullptr) return failWith(error::kOutOfMemory);
        container->pb = lib.avio_alloc_context(buffer, kStreamBuffer, 1, this, nullptr, &Native::writeBytes,
                                               &Native::seek);
        if (container->pb != nullptr) return {};
        lib.av_free(buffer);
        return failWith(error::kOutOfMemory);
    }

    // ---- frames

    // Writes what the encoder has ready; `bytes` grows by it, each packet counted to an even size.
    Status writePackets(std::uint32_t& bytes) {
        for (;;) {
            bool received = false;
            TAVRA_RETURN_IF_ERROR(encoder.receive(*packet, received));
            if (!received) return failure;
            packet->stream_index = 0;
            bytes += static_cast<std::uint32_t>(packet->size + packet->size % 2);
            const int written = lib.av_write_frame(container, packet);
            lib.av_packet_unref(packet);
            if (written < 0) return ffmpegFailure(written);
        }
    }

    Status write(std::uint32_t index, const std::uint8_t* image, std::uint32_t& bytes) {
        TAVRA_RETURN_IF_ERROR(encoder.send(index, image));
        return writePackets(bytes);
    }

    Status finish() {
        std::uint32_t bytes = 0;
        const Status finished = encoder.finish();
        static_cast<void>(note(finished.ok() ? writePackets(bytes) : finished));
        const int completed = lib.av_write_trailer(container);
        if (completed < 0) static_cast<void>(note(ffmpegFailure(completed)));
        lib.avio_flush(container->pb);
        static_cast<void>(note(file.close()));
        return failure;
    }
};

CodecMovie::CodecMovie() = default;

CodecMovie::~CodecMovie() {
    static_cast<void>(close());
}

Status CodecMovie::open(const std::u16string& name, const CodecMovieSettings& settings) {
    static_cast<void>(close());
    if (settings.rate == 0 || settings.scale == 0) return failWith(error::kFileStream);
    const Ffmpeg* const library = loadFfmpeg();
    if (library == nullptr) return failWith(error::kCodecMissing);
    auto movie = std::make_unique<Native>(*library);
    const TavraCodecChoice plain{settings.compressor, settings.quality, 0, 0};
    // The codec first: for one that is not there no file is touched.
    TAVRA_RETURN_IF_ERROR(
        movie->encoder.open(settings.choice != nullptr ? settings.choice->native_->codec : plain, settings));
    if (!movie->file.create(name).ok()) return failWith(error::kCodecFile);
    TAVRA_RETURN_IF_ERROR(movie->openContainer(settings));
    native_ = std::move(movie);
    return {};
}

Status CodecMovie::write(std::uint32_t index, const std::uint8_t* image, std::size_t,
                         std::uint32_t& written) {
    written = 0;
    return native_->note(native_->write(index, image, written));
}

bool CodecMovie::isCompressed() const {
    return true;
}

Status CodecMovie::close() {
    if (!native_) return {};
    const Status result = native_->finish();
    native_.reset();
    return result;
}

}  // namespace tavra::platform
