// The order of the operations in the interfaces, as callers that hold no header of ours see it: by the slot
// in the object's table of virtual functions.
#include <gtest/gtest.h>

#include <cstring>

#include "media/save_image_file.h"
#include "stages/chroma_suppress.h"
#include "stages/color_interpolation.h"
#include "stages/color_matrix.h"
#include "stages/flip.h"
#include "stages/gamma.h"
#include "stages/multi_roi_image.h"
#include "stages/shading_correction.h"
#include "stages/sharpness.h"
#include "stages/wb.h"
#include "support/virtual_slots.h"

namespace tavra {
namespace {

using test::callSlot;

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;
using i16 = std::int16_t;

// Each operation gives its number.
class InterpolationSlots final : public IColorInterpolation {
  public:
    u32 AddRef() override { return 100; }
    u32 Release() override { return 101; }
    u32 ConvertEx(u32, u32, u32, const u8*, u32, u8*, u8, u16, u16) override { return 102; }
    u32 Convert(u32, u32, const u8*, u8*, u8, u16, u16) override { return 103; }
    u32 ConvertEx16(u32, u32, u32, const u16*, u32, u16*, u8, u16, u16) override { return 104; }
    u32 Convert16(u32, u32, const u16*, u16*, u8, u16, u16) override { return 105; }
};

class ColorMatrixSlots final : public IColorMatrix {
  public:
    u32 AddRef() override { return 100; }
    u32 Release() override { return 101; }
    u32 SetColorMatrix(u8, const i16*) override { return 102; }
    u32 GetColorMatrix(u8*, i16*) override { return 103; }
    u32 SetHueSaturation(u8, i16, u16) override { return 104; }
    u32 GetHueSaturation(u8*, i16*, u16*) override { return 105; }
    u32 Apply8(u32, u32, u32, u32, u8*, u8) override { return 106; }
    u32 Apply16(u32, u32, u32, u32, u16*, u8) override { return 107; }
};

class GammaSlots final : public IGamma {
  public:
    u32 AddRef() override { return 100; }
    u32 Release() override { return 101; }
    u32 GetGamma(u8, u8*, u16*, i16*, void*, void*, u16*) override { return 102; }
    u32 SetGamma(u8, u8, u16, i16, u16, const void*, u16) override { return 103; }
    u32 ApplyRaw8(u32, u32, u32, u16, u8*) override { return 104; }
    u32 ApplyRaw16(u32, u32, u32, u16, u16*) override { return 105; }
    u32 ApplyImage8(u32, u32, u32, u32, u8*) override { return 106; }
    u32 ApplyImage16(u32, u32, u32, u32, u16*) override { return 107; }
};

class ChromaSlots final : public IChromaSuppress {
  public:
    u32 AddRef() override { return 100; }
    u32 Release() override { return 101; }
    u32 Apply8(u32, u32, u32, u32, u8*) override { return 102; }
    u32 Apply16(u32, u32, u32, u32, u16*) override { return 103; }
    u32 SetThreshold(u16) override { return 104; }
    u32 GetThreshold(u16*) override { return 105; }
    u32 SetStrength(u16) override { return 106; }
    u32 GetStrength(u16*) override { return 107; }
    u32 SetLowThreshold(u16) override { return 108; }
    u32 GetLowThreshold(u16*) override { return 109; }
    u32 SetLowStrength(u16) override { return 110; }
    u32 GetLowStrength(u16*) override { return 111; }
    u32 SetHighThreshold(u16) override { return 112; }
    u32 GetHighThreshold(u16*) override { return 113; }
    u32 SetHighStrength(u16) override { return 114; }
    u32 GetHighStrength(u16*) override { return 115; }
};

class SharpnessSlots final : public ISharpness {
  public:
    u32 AddRef() override { return 100; }
    u32 Release() override { return 101; }
    u32 SetMode(u8, u16, u16) override { return 102; }
    u32 GetMode(u8*, u16*, u16*) override { return 103; }
    u32 Apply16(u32, u32, u32, u32, u16*, u16) override { return 104; }
    u32 Apply8(u32, u32, u32, u32, u8*, u16) override { return 105; }
};

class WhiteBalanceSlots final : public IWB {
  public:
    u32 AddRef() override { return 100; }
    u32 Release() override { return 101; }
    u32 Apply8(u32, u32, u32, u16, u8*, u16) override { return 102; }
    u32 Apply16(u32, u32, u32, u16, u16*, u16) override { return 103; }
    u32 SetMode(u8) override { return 104; }
    u32 GetMode(u8*) override { return 105; }
    u32 SetGains(const u16*) override { return 106; }
    u32 GetGains(u16*) override { return 107; }
};

class SaveSlots final : public ISaveImageFile {
  public:
    u32 AddRef() override { return 100; }
    u32 Release() override { return 101; }
    u32 SaveImageFileEx(u32, u32, u32, u32, const void*, const char16_t*, u32) override { return 102; }
    u32 SaveImageFile(u32, u32, u32, const void*, const char16_t*, u32) override { return 103; }
};

class RegionSlots final : public IMultiROIImage {
  public:
    u32 AddRef() override { return 100; }
    u32 Release() override { return 101; }
    u32 Setup(IRegionInfo*, u32) override { return 102; }
    u32 GetRegionCount() override { return 103; }
    u8* GetRegionImage(u32, u8*, u64, u64, u64*, u64*, u64*, u64*, u64*) override { return places + 104; }
    u8* PasteRegion(u64, const u8*, u64, u64, u64, u64, u32, u64, u64) override { return places + 105; }
    u8* Compose(u64, u8*, u64, u64) override { return places + 106; }
    u64 GetComposedSize(std::int32_t) override { return 107; }
    u64 GetComposedStride() override { return 108; }
    void ClearComposed() override { cleared = true; }

    u8 places[110] = {};
    bool cleared = false;
};

class FlipSlots final : public IFlip {
  public:
    u32 AddRef() override { return 100; }
    u32 Release() override { return 101; }
    u32 Flip8(u8, u8, u32*, u32*, const u8*, u8*, u16) override { return 102; }
    u32 Flip16(u8, u8, u32*, u32*, const u16*, u16*, u16) override { return 103; }
    u32 FlipRaw8(u8, u8, u32*, u32*, const u8*, u8*, u16*) override { return 104; }
    u32 FlipRaw16(u8, u8, u32*, u32*, const u16*, u16*, u16*) override { return 105; }
};

class ShadingSlots final : public IShadingCorrection {
  public:
    u32 AddRef() override { return 100; }
    u32 Release() override { return 101; }
    u32 SetMode(u32) override { return 102; }
    u32 GetMode(u32*) override { return 103; }
    u32 Apply16(u32, u32, u32, u16*, u16) override { return 104; }
    u32 Apply8(u32, u32, u32, u8*, u16) override { return 105; }
    u32 SetTarget(u16) override { return 106; }
    u32 GetTarget(u16*) override { return 107; }
    u32 SetTargets(u64) override { return 108; }
    u32 GetTargets(u64*) override { return 109; }
    u32 SetColorArray(u16) override { return 110; }
    u32 GetColorArray(u16*) override { return 111; }
    u32 SetMap(u32, u32, u32, const void*) override { return 112; }
    u32 GetMap(u32*, u32*, u32*, void*) override { return 113; }
};

TEST(InterfaceSlots, OfColorInterpolation) {
    InterpolationSlots slots;
    const u8* const bytes = nullptr;
    u8* const outBytes = nullptr;
    const u16* const words = nullptr;
    u16* const outWords = nullptr;
    EXPECT_EQ(callSlot(&slots, 0), 100u);
    EXPECT_EQ(callSlot(&slots, 1), 101u);
    EXPECT_EQ(callSlot(&slots, 2, u32{}, u32{}, u32{}, bytes, u32{}, outBytes, u8{}, u16{}, u16{}), 102u);
    EXPECT_EQ(callSlot(&slots, 3, u32{}, u32{}, bytes, outBytes, u8{}, u16{}, u16{}), 103u);
    EXPECT_EQ(callSlot(&slots, 4, u32{}, u32{}, u32{}, words, u32{}, outWords, u8{}, u16{}, u16{}), 104u);
    EXPECT_EQ(callSlot(&slots, 5, u32{}, u32{}, words, outWords, u8{}, u16{}, u16{}), 105u);
}

TEST(InterfaceSlots, OfColorMatrix) {
    ColorMatrixSlots slots;
    u8* const outBytes = nullptr;
    u16* const outWords = nullptr;
    i16* const outSigned = nullptr;
    const i16* const matrix = nullptr;
    EXPECT_EQ(callSlot(&slots, 0), 100u);
    EXPECT_EQ(callSlot(&slots, 1), 101u);
    EXPECT_EQ(callSlot(&slots, 2, u8{}, matrix), 102u);
    EXPECT_EQ(callSlot(&slots, 3, outBytes, outSigned), 103u);
    EXPECT_EQ(callSlot(&slots, 4, u8{}, i16{}, u16{}), 104u);
    EXPECT_EQ(callSlot(&slots, 5, outBytes, outSigned, outWords), 105u);
    EXPECT_EQ(callSlot(&slots, 6, u32{}, u32{}, u32{}, u32{}, outBytes, u8{}), 106u);
    EXPECT_EQ(callSlot(&slots, 7, u32{}, u32{}, u32{}, u32{}, outWords, u8{}), 107u);
}

TEST(InterfaceSlots, OfGamma) {
    GammaSlots slots;
    u8* const outBytes = nullptr;
    u16* const outWords = nullptr;
    i16* const outSigned = nullptr;
    void* const out = nullptr;
    const void* const table = nullptr;
    EXPECT_EQ(callSlot(&slots, 0), 100u);
    EXPECT_EQ(callSlot(&slots, 1), 101u);
    EXPECT_EQ(callSlot(&slots, 2, u8{}, outBytes, outWords, outSigned, out, out, outWords), 102u);
    EXPECT_EQ(callSlot(&slots, 3, u8{}, u8{}, u16{}, i16{}, u16{}, table, u16{}), 103u);
    EXPECT_EQ(callSlot(&slots, 4, u32{}, u32{}, u32{}, u16{}, outBytes), 104u);
    EXPECT_EQ(callSlot(&slots, 5, u32{}, u32{}, u32{}, u16{}, outWords), 105u);
    EXPECT_EQ(callSlot(&slots, 6, u32{}, u32{}, u32{}, u32{}, outBytes), 106u);
    EXPECT_EQ(callSlot(&slots, 7, u32{}, u32{}, u32{}, u32{}, outWords), 107u);
}

TEST(InterfaceSlots, OfChromaSuppress) {
    ChromaSlots slots;
    u8* const outBytes = nullptr;
    u16* const outWords = nullptr;
    EXPECT_EQ(callSlot(&slots, 0), 100u);
    EXPECT_EQ(callSlot(&slots, 1), 101u);
    EXPECT_EQ(callSlot(&slots, 2, u32{}, u32{}, u32{}, u32{}, outBytes), 102u);
    EXPECT_EQ(callSlot(&slots, 3, u32{}, u32{}, u32{}, u32{}, outWords), 103u);
    for (std::size_t setter = 4; setter < 16; setter += 2) {
        EXPECT_EQ(callSlot(&slots, setter, u16{}), 100 + setter);
        EXPECT_EQ(callSlot(&slots, setter + 1, outWords), 101 + setter);
    }
}

TEST(InterfaceSlots, OfSharpness) {
    SharpnessSlots slots;
    u8* const bytes = nullptr;
    u16* const words = nullptr;
    EXPECT_EQ(callSlot(&slots, 0), 100u);
    EXPECT_EQ(callSlot(&slots, 1), 101u);
    EXPECT_EQ(callSlot(&slots, 2, u8{}, u16{}, u16{}), 102u);
    EXPECT_EQ(callSlot(&slots, 3, bytes, words, words), 103u);
    EXPECT_EQ(callSlot(&slots, 4, u32{}, u32{}, u32{}, u32{}, words, u16{}), 104u);
    EXPECT_EQ(callSlot(&slots, 5, u32{}, u32{}, u32{}, u32{}, bytes, u16{}), 105u);
}

TEST(InterfaceSlots, OfWhiteBalance) {
    WhiteBalanceSlots slots;
    u8* const bytes = nullptr;
    u16* const words = nullptr;
    const u16* const gains = nullptr;
    EXPECT_EQ(callSlot(&slots, 0), 100u);
    EXPECT_EQ(callSlot(&slots, 1), 101u);
    EXPECT_EQ(callSlot(&slots, 2, u32{}, u32{}, u32{}, u16{}, bytes, u16{}), 102u);
    EXPECT_EQ(callSlot(&slots, 3, u32{}, u32{}, u32{}, u16{}, words, u16{}), 103u);
    EXPECT_EQ(callSlot(&slots, 4, u8{}), 104u);
    EXPECT_EQ(callSlot(&slots, 5, bytes), 105u);
    EXPECT_EQ(callSlot(&slots, 6, gains), 106u);
    EXPECT_EQ(callSlot(&slots, 7, words), 107u);
}

TEST(InterfaceSlots, OfSaveImageFile) {
    SaveSlots slots;
    const void* const data = nullptr;
    const char16_t* const name = nullptr;
    EXPECT_EQ(callSlot(&slots, 0), 100u);
    EXPECT_EQ(callSlot(&slots, 1), 101u);
    EXPECT_EQ(callSlot(&slots, 2, u32{}, u32{}, u32{}, u32{}, data, name, u32{}), 102u);
    EXPECT_EQ(callSlot(&slots, 3, u32{}, u32{}, u32{}, data, name, u32{}), 103u);
}

TEST(InterfaceSlots, OfMultiRoiImage) {
    RegionSlots slots;
    IRegionInfo* const info = nullptr;
    u8* const frame = nullptr;
    const u8* const pixels = nullptr;
    u64* const out = nullptr;
    EXPECT_EQ(callSlot(&slots, 0), 100u);
    EXPECT_EQ(callSlot(&slots, 1), 101u);
    EXPECT_EQ(callSlot(&slots, 2, info, u32{}), 102u);
    EXPECT_EQ(callSlot(&slots, 3), 103u);
    EXPECT_EQ(callSlot<u8*>(&slots, 4, u32{}, frame, u64{}, u64{}, out, out, out, out, out),
              slots.places + 104);
    EXPECT_EQ(callSlot<u8*>(&slots, 5, u64{}, pixels, u64{}, u64{}, u64{}, u64{}, u32{}, u64{}, u64{}),
              slots.places + 105);
    EXPECT_EQ(callSlot<u8*>(&slots, 6, u64{}, frame, u64{}, u64{}), slots.places + 106);
    EXPECT_EQ(callSlot<u64>(&slots, 7, std::int32_t{}), 107u);
    EXPECT_EQ(callSlot<u64>(&slots, 8), 108u);
    callSlot<void>(&slots, 9);
    EXPECT_TRUE(slots.cleared);
}

TEST(InterfaceSlots, OfFlip) {
    FlipSlots slots;
    u32* const size = nullptr;
    const u8* const bytes = nullptr;
    u8* const outBytes = nullptr;
    const u16* const words = nullptr;
    u16* const outWords = nullptr;
    EXPECT_EQ(callSlot(&slots, 0), 100u);
    EXPECT_EQ(callSlot(&slots, 1), 101u);
    EXPECT_EQ(callSlot(&slots, 2, u8{}, u8{}, size, size, bytes, outBytes, u16{}), 102u);
    EXPECT_EQ(callSlot(&slots, 3, u8{}, u8{}, size, size, words, outWords, u16{}), 103u);
    EXPECT_EQ(callSlot(&slots, 4, u8{}, u8{}, size, size, bytes, outBytes, outWords), 104u);
    EXPECT_EQ(callSlot(&slots, 5, u8{}, u8{}, size, size, words, outWords, outWords), 105u);
}

TEST(InterfaceSlots, OfShadingCorrection) {
    ShadingSlots slots;
    u32* const out32 = nullptr;
    u16* const out16 = nullptr;
    u64* const out64 = nullptr;
    u8* const bytes = nullptr;
    void* const data = nullptr;
    const void* const constData = nullptr;
    EXPECT_EQ(callSlot(&slots, 0), 100u);
    EXPECT_EQ(callSlot(&slots, 1), 101u);
    EXPECT_EQ(callSlot(&slots, 2, u32{}), 102u);
    EXPECT_EQ(callSlot(&slots, 3, out32), 103u);
    EXPECT_EQ(callSlot(&slots, 4, u32{}, u32{}, u32{}, out16, u16{}), 104u);
    EXPECT_EQ(callSlot(&slots, 5, u32{}, u32{}, u32{}, bytes, u16{}), 105u);
    EXPECT_EQ(callSlot(&slots, 6, u16{}), 106u);
    EXPECT_EQ(callSlot(&slots, 7, out16), 107u);
    EXPECT_EQ(callSlot(&slots, 8, u64{}), 108u);
    EXPECT_EQ(callSlot(&slots, 9, out64), 109u);
    EXPECT_EQ(callSlot(&slots, 10, u16{}), 110u);
    EXPECT_EQ(callSlot(&slots, 11, out16), 111u);
    EXPECT_EQ(callSlot(&slots, 12, u32{}, u32{}, u32{}, constData), 112u);
    EXPECT_EQ(callSlot(&slots, 13, out32, out32, out32, data), 113u);
}

#if !defined(_WIN32)
// Behind its operations the class has its destructor: of the two kinds that stand there, the second also
// frees the object.
TEST(InterfaceSlots, ShadingCorrectionEndsWithItsDestructor) {
    using Destroy = void (*)(IShadingCorrection*);
    auto* const stage = new CShadingCorrection;
    const unsigned char* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(stage), sizeof table);
    Destroy destroy = nullptr;
    std::memcpy(&destroy, table + 15 * sizeof destroy, sizeof destroy);
    destroy(stage);  // a leak or a second destruction is the sanitizer's to tell
}
#endif

}  // namespace
}  // namespace tavra
