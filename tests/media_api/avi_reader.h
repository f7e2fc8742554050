// AVI files, read chunk by chunk as they lie there: what a plain player would see.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "base/little_endian.h"
#include "capture_api/stream_fixture.h"

namespace tavra::test {

class PlainAvi {
  public:
    struct Chunk {
        std::string id;
        Bytes data;
    };
    // A piece of an AVI 2.0 index: sizes of frames, 0x80000000 for one that was skipped.
    using IndexedSizes = std::vector<std::uint32_t>;

    explicit PlainAvi(const Bytes& file) { walk(file, 0, file.size()); }

    bool isAvi2() const { return hasSuperIndex_; }
    std::uint32_t totalFrames() const { return word(mainHeader_, 16); }
    std::string handler() const { return text(streamHeader_, 4); }
    std::uint32_t scale() const { return word(streamHeader_, 20); }
    std::uint32_t rate() const { return word(streamHeader_, 24); }
    std::uint32_t length() const { return word(streamHeader_, 32); }
    std::uint32_t quality() const { return word(streamHeader_, 40); }
    std::uint32_t width() const { return word(format_, 4); }
    std::uint32_t height() const { return word(format_, 8); }
    std::uint32_t bits() const { return word(format_, 12) >> 16; }
    Bytes palette() const {
        return format_.size() > 40 ? Bytes(format_.begin() + 40, format_.end()) : Bytes();
    }

    // What stands among the frames, JUNK and indexes left out.
    const std::vector<Chunk>& frames() const { return frames_; }
    std::vector<std::size_t> sizes() const {
        std::vector<std::size_t> result;
        for (const Chunk& chunk : frames_) result.push_back(chunk.data.size());
        return result;
    }
    const IndexedSizes& indexedSizes() const { return indexed_; }

    // Frames that hold a picture.
    std::vector<Bytes> pictures() const {
        std::vector<Bytes> result;
        for (const Chunk& chunk : frames_) {
            if (!chunk.data.empty()) result.push_back(chunk.data);
        }
        return result;
    }

  private:
    static std::uint32_t word(const Bytes& data, std::size_t offset) {
        return data.size() < offset + 4 ? 0 : loadLe32(&data[offset]);
    }
    static std::string text(const Bytes& data, std::size_t offset) {
        return data.size() < offset + 4 ? std::string() : std::string(&data[offset], &data[offset] + 4);
    }

    void walk(const Bytes& file, std::size_t at, std::size_t end) {
        while (at + 8 <= end) {
            const std::string id = text(file, at);
            const std::size_t size = word(file, at + 4);
            if (size > end - at - 8) {
                ADD_FAILURE() << id << " at " << at << " reaches over its list's end";
                return;
            }
            if (id == "RIFF" || id == "LIST") {
                const bool ofFrames = std::exchange(amongFrames_, text(file, at + 8) == "movi");
                walk(file, at + 12, at + 8 + size);
                amongFrames_ = ofFrames;
            } else {
                const auto data = file.begin() + static_cast<std::ptrdiff_t>(at + 8);
                take(id, Bytes(data, data + static_cast<std::ptrdiff_t>(size)));
            }
            at += 8 + size + size % 2;
        }
    }

    void take(const std::string& id, Bytes data) {
        if (id == "avih") mainHeader_ = data;
        if (id == "strh") streamHeader_ = data;
        if (id == "strf") format_ = data;
        if (id == "indx") hasSuperIndex_ = true;
        if (id == "ix00") takeIndex(data);
        if (amongFrames_ && id != "JUNK" && id != "ix00") frames_.push_back({id, std::move(data)});
    }

    // A head of 24 bytes with the count in its second word, then offset and size of each frame.
    void takeIndex(const Bytes& data) {
        for (std::uint32_t i = 0; i < word(data, 4); ++i) indexed_.push_back(word(data, 24 + 8 * i + 4));
    }

    Bytes mainHeader_, streamHeader_, format_;
    std::vector<Chunk> frames_;
    IndexedSizes indexed_;
    bool amongFrames_ = false;
    bool hasSuperIndex_ = false;
};

}  // namespace tavra::test
