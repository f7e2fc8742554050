#include "stages/factory.h"

#include <new>

#include "stages/chroma_suppress.h"
#include "stages/color_interpolation.h"
#include "stages/color_matrix.h"
#include "stages/flip.h"
#include "stages/gamma.h"
#include "stages/multi_roi_image.h"
#include "stages/shading_correction.h"
#include "stages/sharpness.h"
#include "stages/wb.h"

namespace tavra {

// Makers of other rooms.
ISUnknown* makeCreateAvi();
ISUnknown* makeSaveImageFile();

namespace {

template <class Stage>
ISUnknown* make() {
    return new (std::nothrow) Stage;
}

struct StageClass {
    std::int32_t code;
    ISUnknown* (*make)();
};

constexpr StageClass kClasses[] = {
    {stage_code::kSharpness, make<CSharpness>},
    {stage_code::kGamma, make<CGamma>},
    {stage_code::kColorMatrix, make<CColorMatrix>},
    {stage_code::kChromaSuppress, make<CChromaSuppress>},
    {stage_code::kColorInterpolation, make<CColorInterpolation>},
    {stage_code::kFlip, make<CFlip>},
    {stage_code::kWhiteBalance, make<CWB>},
    {stage_code::kSaveImageFile, makeSaveImageFile},
    {stage_code::kCreateAvi, makeCreateAvi},
    {stage_code::kMultiRoiImage, make<CMultiROIImage>},
    {stage_code::kShadingCorrection, make<CShadingCorrection>},
};

}  // namespace

ISUnknown* CreateStageObject(std::int32_t code) {
    for (const StageClass& stageClass : kClasses) {
        if (stageClass.code != code) continue;
        ISUnknown* const object = stageClass.make();
        if (object != nullptr) object->AddRef();
        return object;
    }
    return nullptr;
}

}  // namespace tavra
