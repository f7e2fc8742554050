#include "media/jpeg/huffman_state.h"

#include <array>
#include <bit>
#include <cstring>
#include <new>

#include "media/jpeg/zig_zag.h"

namespace tavra {
namespace {

using jpeg::Block;
using jpeg::kZigZag;

static_assert(std::endian::native == std::endian::little, "bytes are reversed on their way to the stream");

constexpr std::uint8_t placeInBlock(jpeg::Frequency frequency) {
    return static_cast<std::uint8_t>(frequency.horizontal * 8 + frequency.vertical);
}

// At [k]: where the k-th coefficient in zig-zag order stands in a block.
constexpr std::array<std::uint8_t, 64> kPlaces = [] {
    std::array<std::uint8_t, 64> places = {};
    for (std::size_t k = 0; k < 64; ++k) places[k] = placeInBlock(kZigZag[k]);
    return places;
}();

// At [v][flags], bit u of `flags` standing for horizontal frequency u: the bits of these coefficients in
// zig-zag order.
constexpr auto kZigZagBits = [] {
    std::array<std::array<std::uint64_t, 256>, 8> bits = {};
    for (std::size_t k = 0; k < 64; ++k) {
        const auto [v, u] = kZigZag[k];
        for (std::size_t flags = 0; flags < 256; ++flags) {
            if ((flags >> u & 1) != 0) bits[v][flags] |= std::uint64_t{1} << k;
        }
    }
    return bits;
}();

// Bit k is set where the k-th coefficient in zig-zag order is not zero.
std::uint64_t nonZeros(const Block& block) {
    using Eight = std::int16_t __attribute__((vector_size(16)));
    using EightBytes = std::uint8_t __attribute__((vector_size(8)));
    Eight flags = {};
    Eight bit = {1, 1, 1, 1, 1, 1, 1, 1};
    for (std::size_t u = 0; u < 8; ++u, bit += bit) {
        Eight column;
        std::memcpy(&column, &block[8 * u], sizeof column);
        flags |= (column != 0) & bit;
    }
    const EightBytes bytes = __builtin_convertvector(flags, EightBytes);
    std::uint64_t result = 0;
    for (std::size_t v = 0; v < 8; ++v) result |= kZigZagBits[v][bytes[v]];
    return result;
}

// Puts bits into memory, a byte 0 behind each byte 0xFF.
class BitWriter {
  public:
    BitWriter(std::uint64_t bits, unsigned count, std::uint8_t* out)
        : bits_(bits), count_(count), out_(out) {}

    // The lower `count` bits of `bits`, above which it is zero.
    void put(std::uint64_t bits, unsigned count) {
        count_ += count;
        if (count_ < 64) {
            bits_ = bits_ << count | bits;
            return;
        }
        count_ -= 64;  // so many bits are left over
        write(bits_ << (count - count_) | bits >> count_);
        bits_ = bits;
    }

    // Whole bytes of what is left; the last is filled up with ones.
    void finish() {
        const unsigned fill = (8 - count_ % 8) % 8;
        put((1U << fill) - 1, fill);
        while (count_ != 0) {
            count_ -= 8;
            writeByte(static_cast<std::uint8_t>(bits_ >> count_));
        }
    }

    std::uint64_t bits() const { return bits_; }
    unsigned count() const { return count_; }
    std::uint8_t* out() const { return out_; }

  private:
    void write(std::uint64_t word) {
        constexpr std::uint64_t kTops = 0x8080808080808080;
        constexpr std::uint64_t kOnes = 0x0101010101010101;
        // A byte 0xFF loses its top bit by one being added; some others do by what is carried to them.
        if ((word & kTops & ~(word + kOnes)) == 0) {
            const std::uint64_t reversed = __builtin_bswap64(word);
            std::memcpy(out_, &reversed, sizeof reversed);
            out_ += sizeof reversed;
            return;
        }
        for (int shift = 56; shift >= 0; shift -= 8) writeByte(static_cast<std::uint8_t>(word >> shift));
    }

    void writeByte(std::uint8_t byte) {
        *out_++ = byte;
        if (byte == 0xFF) *out_++ = 0;
    }

    std::uint64_t bits_;  // the lower `count_` are waiting, what is above them has been written
    unsigned count_;      // at most 63
    std::uint8_t* out_;
};

// The codes of a block. False if there is no code for a coefficient of it.
bool encodeBlock(const Block& block, int lastDc, const std::uint32_t* dc, const std::uint32_t* ac,
                 BitWriter& writer) {
    // An entry without a code is 0; its predecessor is the only number with the top bit set.
    std::uint32_t missing = 0;
    // Bits of the magnitude, and the value in so many bits: negative ones less one (ITU T.81 F.1.2.1).
    const auto put = [&](const std::uint32_t* table, unsigned run, int value) {
        const int sign = value >> 31;
        const auto bits = static_cast<unsigned>(std::bit_width(static_cast<unsigned>((value ^ sign) - sign)));
        const std::uint32_t entry = table[run * 16 + bits];
        missing |= entry - 1;
        writer.put(entry >> 5 | (static_cast<unsigned>(value + sign) & ((1U << bits) - 1)), entry & 31);
    };
    put(dc, 0, block[0] - lastDc);

    std::uint64_t left = nonZeros(block) & ~std::uint64_t{1};
    int last = 0;
    while (left != 0) {
        const int k = std::countr_zero(left);
        int run = k - last - 1;
        for (; run > 15; run -= 16) writer.put(ac[0xF0] >> 5, ac[0xF0] & 31);
        put(ac, static_cast<unsigned>(run), block[kPlaces[static_cast<std::size_t>(k)]]);
        last = k;
        left ^= std::uint64_t{1} << k;  // twice as fast a loop as with left &= left - 1, where that is BLSR
    }
    if (last != 63) writer.put(ac[0] >> 5, ac[0] & 31);
    return missing >> 31 == 0;
}

}  // namespace

JpegError CJPEGEncoderHuffmanState::Allocate() {
    accumulator_.reset();
    accumulator_.reset(new (std::nothrow) Accumulator);
    return accumulator_ ? JpegError::None : JpegError::OutOfMemory;
}

void CJPEGEncoderHuffmanState::Reset() {
    if (accumulator_) *accumulator_ = {};
}

template <class Work>
JpegError CJPEGEncoderHuffmanState::append(CBitStreamOutput& output, Work&& work) {
    if (!accumulator_) return JpegError::Internal;
    std::uint8_t aside[kLargestBlock];
    const bool fits = output.room().size() >= sizeof aside;
    std::uint8_t* const begin = fits ? output.room().data() : aside;

    BitWriter writer(accumulator_->bits, accumulator_->count, begin);
    if (!work(writer)) return JpegError::Internal;
    *accumulator_ = {writer.bits(), writer.count()};
    const auto size = static_cast<std::size_t>(writer.out() - begin);
    return fits ? output.Advance(size) : output.WriteBytes({begin, size});
}

JpegError CJPEGEncoderHuffmanState::Encode(const Block& block, std::int16_t& lastDc,
                                           const CJPEGEncoderHuffmanTable& dc,
                                           const CJPEGEncoderHuffmanTable& ac, CBitStreamOutput& output) {
    if (!dc.initialized() || !ac.initialized()) return JpegError::Internal;
    const int before = lastDc;
    lastDc = block[0];
    return append(output, [&](BitWriter& writer) {
        return encodeBlock(block, before, dc.lookUp(), ac.lookUp(), writer);
    });
}

JpegError CJPEGEncoderHuffmanState::Flush(CBitStreamOutput& output) {
    const JpegError error = append(output, [](BitWriter& writer) {
        writer.finish();
        return true;
    });
    Reset();
    return error;
}

}  // namespace tavra
