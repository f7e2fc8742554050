// Develops an SMF movie to AVI 1.0, with the settings that stand in its header.
//
// On the caller's thread, beside the writer's; a converter lasts for one call.
#pragma once

#include <cstdint>
#include <string>

#include "base/status.h"
#include "media/movie/read_smf.h"
#include "platform/page_memory.h"
#include "stages/factory.h"
#include "tavra/tavra_types.h"

namespace tavra::movie {

struct SmfConversion {
    std::u16string fileName;
    std::uint32_t firstFrame = 0;
    std::uint32_t* currentFrame = nullptr;  // receives the index of each frame that is done; may be null
    TavraSmfProgressCallback progress = nullptr;  // after each frame; 0 stops; may be null
    void* context = nullptr;
};

using StageMaker = ISUnknown* (*)(std::int32_t code);

// What a conversion finds around it; a test's finds something else.
struct SmfSurroundings {
    StageMaker make = CreateStageObject;
    std::uint64_t (*freeMemory)() = platform::freePhysicalMemory;  // bytes; 0: unknown
};

// By design: success with nothing done when there is no memory for a frame and its image, or when a header
// asks for more than its frames are and than is free. 13: the header tells what no movie has; 8, 87 and codes
// of files and compressors, from the stages and the recorder.
Status convertSmf(CReadSMF& movie, const SmfConversion& order, const SmfSurroundings& surroundings = {});

}  // namespace tavra::movie
