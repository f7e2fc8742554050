// Exports of SMF movies. They know no camera: a failure is the thread's system error.
#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <string>

#include "api/movie_name.h"
#include "api/output.h"
#include "media/movie/read_smf.h"
#include "media/movie/smf_converter.h"
#include "platform/last_error.h"
#include "tavra/tavra_api.h"

using namespace tavra;

namespace {

using movie::CReadSMF;
using Field = movie::SmfHeader::Field;

TavraBool report(Status status) {
    if (!status.ok()) platform::setLastSystemError(status.code());
    return status.ok() ? 1 : 0;
}

// Runs `operation(reader)`, which gives a Status. No exception passes.
template <typename Operation>
TavraBool call(TavraSmfHandle handle, Operation operation) {
    if (handle == nullptr) return report(Status(error::kInvalidArgument));
    try {
        return report(operation(*static_cast<CReadSMF*>(handle)));
    } catch (const std::bad_alloc&) {
        return report(Status(error::kOutOfMemory));
    }
}

Status open(const std::u16string& name, TavraSmfHandle& handle) {
    auto reader = std::make_unique<CReadSMF>();
    TAVRA_RETURN_IF_ERROR(reader->open(name));
    handle = reader.release();
    return Status();
}

// Of a name that `toName(name)` gives; false: it has none.
// By design: of a file that is no movie only that can be learned, by the null handle. No code tells it.
template <typename ToName>
TavraSmfHandle openNamed(ToName toName) {
    TavraSmfHandle handle = nullptr;
    try {
        std::u16string name;
        const Status opened = toName(name) ? open(name, handle) : Status(error::kInvalidName);
        if (opened != Status(error::kInvalidData)) report(opened);
    } catch (const std::bad_alloc&) {
        report(Status(error::kOutOfMemory));
    }
    return handle;
}

std::uint32_t shownCount(const CReadSMF& reader) {
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(std::min(reader.frameCount(), kMost));
}

}  // namespace

TavraSmfHandle Tavra_SMFOpenFileW(const TavraWChar* fileName) {
    return openNamed([&](std::u16string& name) {
        if (fileName != nullptr) name = fileName;
        return fileName != nullptr;
    });
}

TavraSmfHandle Tavra_SMFOpenFileA(const char* fileName) {
    return openNamed([&](std::u16string& name) { return api::wideMovieName(fileName, name); });
}

void Tavra_SMFCloseFile(TavraSmfHandle reader) {
    delete static_cast<CReadSMF*>(reader);
}

TavraBool Tavra_GetSMFFileInfo(TavraSmfHandle reader, uint32_t* frameCount, uint32_t* lastFrameNumber) {
    return call(reader, [&](const CReadSMF& movie) {
        api::giveIfWanted(frameCount, shownCount(movie));
        api::giveIfWanted(lastFrameNumber, movie.lastFrameNumber());
        return Status(movie.lastError());
    });
}

TavraBool Tavra_GetSMFCompressor(TavraSmfHandle reader, uint32_t* compressor, uint32_t* quality) {
    return call(reader, [&](const CReadSMF& movie) {
        api::giveIfWanted(compressor, movie.header().get(Field::Compressor));
        api::giveIfWanted(quality, movie.header().get(Field::Quality));
        return Status(movie.lastError());
    });
}

TavraBool Tavra_SetSMFCompressor(TavraSmfHandle reader, uint32_t compressor, uint32_t quality) {
    return call(reader, [&](CReadSMF& movie) {
        movie.header().set(Field::Compressor, compressor);
        movie.header().set(Field::Quality, quality);
        return Status(movie.lastError());
    });
}

TavraBool Tavra_SMF2AVIW(TavraSmfHandle reader, const TavraWChar* fileName, uint32_t firstFrame,
                         uint32_t* currentFrame, TavraSmfProgressCallback progress, void* context) {
    return call(reader, [&](CReadSMF& movie) {
        if (fileName == nullptr) return Status(error::kInvalidName);
        return movie::convertSmf(movie, {fileName, firstFrame, currentFrame, progress, context});
    });
}

TavraBool Tavra_SMF2AVIA(TavraSmfHandle reader, const char* fileName, uint32_t firstFrame,
                         uint32_t* currentFrame, TavraSmfProgressCallback progress, void* context) {
    return call(reader, [&](CReadSMF& movie) {
        std::u16string wide;
        if (!api::wideMovieName(fileName, wide)) return Status(error::kInvalidName);
        return movie::convertSmf(movie, {wide, firstFrame, currentFrame, progress, context});
    });
}
