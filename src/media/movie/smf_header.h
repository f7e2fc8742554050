// The header of an SMF movie, byte for byte as it stands at the start of the file: how its frames are to be
// read, and how they are to be developed.
//
// A value; one thread at a time. docs/file-formats.md tells the whole format.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavra::movie {

class SmfHeader {
  public:
    static constexpr std::size_t kBytes = 376;
    static constexpr std::uint32_t kMagic = 0x464D53;  // "SMF", and a zero
    static constexpr std::uint32_t kFrameHeaderBytes = 24;
    static constexpr std::size_t kMatrixValues = 12;
    static constexpr std::size_t kGammaTableBytes = 256;

    // Numbers of 32 bits, by their offset.
    enum class Field : std::size_t {
        Magic = 0,
        HeaderSize = 4,
        Width = 8,
        Height = 12,
        RowPixels = 16,  // the same as the width
        Rate = 24,
        Scale = 28,
        FrameHeaderSize = 32,
        FrameDataSize = 36,  // width x height
        Compressor = 40,     // FOURCC for the conversion
        FramesPerFile = 44,
        Quality = 48,  // 0 to 100, for the conversion
        FrameSizeShift = 52,
        Interpolation = 64  // method
    };
    std::uint32_t get(Field field) const;
    void set(Field field, std::uint32_t value);

    std::uint16_t developedBits() const;  // of a pixel
    void setBits(std::uint16_t rawSample, std::uint16_t developed);

    // The curve of luminance.
    struct Gamma {
        std::uint8_t mode = 0;
        std::uint8_t contrast = 0;
        std::uint16_t gamma = 0;
        std::int16_t brightness = 0;
        std::array<std::uint8_t, kGammaTableBytes> table{};
    };
    Gamma gamma() const;
    void setGamma(const Gamma& gamma);

    struct Sharpness {
        std::uint8_t mode = 0;
        std::uint8_t coring = 0;
        std::uint16_t gain = 0;
    };
    Sharpness sharpness() const;
    void setSharpness(const Sharpness& sharpness);

    struct Colors {
        std::uint8_t matrixMode = 0;
        std::array<std::int16_t, kMatrixValues> matrix{};
        std::uint8_t hueMode = 0;
        std::int16_t hue = 0;
        std::uint16_t saturation = 0;
    };
    Colors colors() const;
    void setColors(const Colors& colors);

    std::uint8_t* data() { return bytes_.data(); }
    const std::uint8_t* data() const { return bytes_.data(); }

  private:
    std::array<std::uint8_t, kBytes> bytes_{};
};

}  // namespace tavra::movie
