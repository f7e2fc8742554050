// Exports of chroma suppression.
#include <algorithm>

#include "api/output.h"
#include "stages/chroma_suppress.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

using Setter = std::uint32_t (IChromaSuppress::*)(std::uint16_t);
using Getter = std::uint32_t (IChromaSuppress::*)(std::uint16_t*);

// One side of the stage: strength and threshold.
struct Side {
    Setter setStrength, setThreshold;
    Getter getStrength, getThreshold;
};

constexpr Side kHigh = {&IChromaSuppress::SetHighStrength, &IChromaSuppress::SetHighThreshold,
                        &IChromaSuppress::GetHighStrength, &IChromaSuppress::GetHighThreshold};
constexpr Side kLow = {&IChromaSuppress::SetLowStrength, &IChromaSuppress::SetLowThreshold,
                       &IChromaSuppress::GetLowStrength, &IChromaSuppress::GetLowThreshold};

constexpr std::uint16_t limited(std::uint16_t value) {
    return std::min<std::uint16_t>(value, 255);
}

TavraBool setSide(TavraHandle handle, const Side& side, std::uint16_t threshold, std::uint16_t strength) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(Status((camera.chromaSuppress->*side.setStrength)(limited(strength))));
        return Status((camera.chromaSuppress->*side.setThreshold)(limited(threshold)));
    });
}

TavraBool getSide(TavraHandle handle, const Side& side, std::uint16_t* threshold, std::uint16_t* strength) {
    return api::call(handle, [&](TAVRA_COMMON_PARAM& camera) {
        TAVRA_RETURN_IF_ERROR(api::requireOutputs(threshold, strength));
        TAVRA_RETURN_IF_ERROR(Status((camera.chromaSuppress->*side.getStrength)(strength)));
        TAVRA_RETURN_IF_ERROR(Status((camera.chromaSuppress->*side.getThreshold)(threshold)));
        *strength = limited(*strength);
        *threshold = limited(*threshold);
        return Status();
    });
}

}  // namespace

TavraBool Tavra_SetChromaSuppression(TavraHandle handle, uint16_t threshold, uint16_t strength) {
    return setSide(handle, kHigh, threshold, strength);
}

TavraBool Tavra_GetChromaSuppression(TavraHandle handle, uint16_t* threshold, uint16_t* strength) {
    return getSide(handle, kHigh, threshold, strength);
}

TavraBool Tavra_SetHighChromaSuppression(TavraHandle handle, uint16_t threshold, uint16_t strength) {
    return setSide(handle, kHigh, threshold, strength);
}

TavraBool Tavra_GetHighChromaSuppression(TavraHandle handle, uint16_t* threshold, uint16_t* strength) {
    return getSide(handle, kHigh, threshold, strength);
}

TavraBool Tavra_SetLowChromaSuppression(TavraHandle handle, uint16_t threshold, uint16_t strength) {
    return setSide(handle, kLow, threshold, strength);
}

TavraBool Tavra_GetLowChromaSuppression(TavraHandle handle, uint16_t* threshold, uint16_t* strength) {
    return getSide(handle, kLow, threshold, strength);
}
