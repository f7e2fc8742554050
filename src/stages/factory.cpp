#include "stages/factory.h"

#include <new>

#include "stages/color_interpolation.h"
#include "stages/multi_roi_image.h"

namespace tavra {

// Makers of other rooms.
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
    {stage_code::kColorInterpolation, make<CColorInterpolation>},
    {stage_code::kSaveImageFile, makeSaveImageFile},
    {stage_code::kMultiRoiImage, make<CMultiROIImage>},
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
