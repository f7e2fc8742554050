// The JPEG encoder: one image in memory to a baseline JFIF stream. For stills and for the frames of movies.
//
// An encoder and its stream have one user at a time: they belong to one save or to one movie writer. Only one
// row of MCUs is in memory at a time. The coefficients' buffer is kept from image to image; the planes, the
// stream's buffer and the bit accumulator are made anew by each WriteHeader.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "media/jpeg/base_stream.h"
#include "media/jpeg/bit_stream_output.h"
#include "media/jpeg/codes.h"
#include "media/jpeg/color_component.h"
#include "media/jpeg/color_conversion.h"
#include "media/jpeg/huffman_state.h"
#include "media/jpeg/huffman_table.h"
#include "media/jpeg/memory_buffer.h"
#include "media/jpeg/quant_table.h"

namespace tavra {

// In this order, and for the next image again from the first, without the second:
//
//     SetSource, SetDestination, SetParams, WriteHeader, WriteData
//
// A failure leaves the stream as far as it got; the next image may be tried on the same encoder.
class CJPEGEncoder {
  public:
    static constexpr std::uint32_t kLargestSide = 0xFFFF;  // pixels; what the frame header can tell
    static constexpr unsigned kFinestQuality = 100;

    // - pixels: the first sample of the upper row. They stay the caller's, unchanged until WriteData is done.
    // - rowStep: bytes from row to row, at least those of a row's pixels.
    // - width, height: 1 to kLargestSide.
    // - channels: bytes a pixel: 1 for gray; 3 or 4 for RGB and BGR, of which a fourth is not looked at;
    //   2 for YCbCr, whose pixels come in pairs Y Cb Y Cr, an odd width rounded up.
    // - sampling: Sampling422 for YCbCr, else Sampling444.
    // - Of other colours and samplings nothing can be made; WriteData says so.
    // - precision: 8 bits a sample.
    //
    // WrongParameters for anything that this does not allow.
    JpegError SetSource(const std::uint8_t* pixels, std::size_t rowStep, std::uint32_t width,
                        std::uint32_t height, unsigned channels, JpegColor color, JpegSampling sampling,
                        unsigned precision = 8);

    // Where the stream goes; the object stays the caller's.
    JpegError SetDestination(CBaseStreamOutput* stream);

    // - mode: Baseline; NotImplemented for the others, WrongParameters for a number that is no mode.
    // - color: of the stream. WriteData gives NotImplemented where the source's cannot be turned into it.
    // - sampling: 4:4:4, 4:2:2 or the 2x2 form of 4:1:1. Gray has nothing to subsample and is 4:4:4 always.
    // - restartInterval: MCUs from one restart marker to the next, at most 65535; 0: no markers.
    // - optimizeHuffman: NotImplemented.
    // - quality: 0 to kFinestQuality. By design 0 does not scale the tables, and so is the same as 50.
    JpegError SetParams(JpegMode mode, JpegColor color, JpegSampling sampling, unsigned restartInterval,
                        bool optimizeHuffman, unsigned quality);

    // All up to the scan.
    JpegError WriteHeader();

    // The scan and the end of the image.
    JpegError WriteData();

  private:
    static constexpr std::size_t kTables = 4;

    struct Source {
        const std::uint8_t* pixels = nullptr;
        std::size_t rowStep = 0;
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        unsigned precision = 8;
        unsigned channels = 0;
        JpegColor color = JpegColor::Unknown;
        JpegSampling sampling = JpegSampling::Other;

        jpeg::PixelLayout layout() const { return {channels, color == JpegColor::Bgr}; }
    };

    struct Parameters {
        unsigned componentCount = 0;
        unsigned precision = 8;
        JpegSampling sampling = JpegSampling::Other;
        JpegColor color = JpegColor::Unknown;
        unsigned quality = 100;
        unsigned restartInterval = 0;
        JpegMode mode = JpegMode::Baseline;
    };

    struct McuGeometry {
        std::uint32_t across = 0, down = 0;         // MCUs
        std::uint32_t width = 0, height = 0;        // of one, in pixels
        std::uint32_t padRight = 0, padBottom = 0;  // pixels and lines by which the last ones stick out
        unsigned blocks = 0;                        // of all components in one
    };

    struct Scan {
        unsigned ss = 0, se = 63, ah = 0, al = 0;
    };

    // How far the calls for an image have come.
    enum class State { Empty, HasSource, HasParameters, Initialized };

    using LineConverter = void (*)(const Source& source, const std::uint8_t* line,
                                   const jpeg::PlaneRows& planes);

    // SetParams
    void setMcuSize();
    void loadQuantTables();
    JpegError loadHuffmanTables();
    JpegError selectTables();
    bool hasChrominanceTables() const;

    // WriteHeader
    JpegError initialize();
    void setFactors(CJPEGColorComponent& component, unsigned index) const;
    JpegError writeApplicationSegment();
    JpegError writeApp0();
    JpegError writeApp14();
    JpegError writeQuantTable(const CJPEGEncoderQuantTable& table);
    JpegError writeFrameHeader();
    JpegError writeHuffmanTable(const CJPEGEncoderHuffmanTable& table);
    JpegError writeRestartInterval();

    // WriteData
    JpegError writeScanHeader();
    LineConverter lineConverter() const;
    JpegError convertColors(std::uint32_t first, std::uint32_t lines);
    bool isSubsampledAlready(const CJPEGColorComponent& component) const;
    void fillEdges(std::uint32_t lines);
    void subsample(CJPEGColorComponent& component) const;
    void transformRow();
    void transformBlockRow(const CJPEGColorComponent& component, unsigned row, jpeg::Block* first);
    JpegError encodeRow();
    JpegError countMcu();
    void resetDc();
    void resetRestartCounters();

    std::span<CJPEGColorComponent> components() { return {components_.data(), parameters_.componentCount}; }

    Source source_;
    CBitStreamOutput output_;
    Parameters parameters_;
    State state_ = State::Empty;
    McuGeometry mcu_;
    unsigned mcusToRestart_ = 0;
    unsigned restartNumber_ = 0;
    Scan scan_;
    CMemoryBuffer coefficients_;
    std::array<CJPEGColorComponent, kTables> components_;
    std::array<CJPEGEncoderQuantTable, kTables> quantTables_;
    std::array<CJPEGEncoderHuffmanTable, kTables> dcTables_;
    std::array<CJPEGEncoderHuffmanTable, kTables> acTables_;
    CJPEGEncoderHuffmanState huffman_;
};

}  // namespace tavra
