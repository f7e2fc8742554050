#include "media/still_image.h"

#include <memory>

#include "media/save_image_file.h"
#include "media/stills/file_type.h"
#include "stages/factory.h"

namespace tavra {
namespace {

struct Release {
    void operator()(ISUnknown* object) const { object->Release(); }
};

}  // namespace

Status saveImage(std::uint32_t width, std::uint32_t height, std::uint32_t format, const void* data,
                 const char16_t* fileName, std::uint32_t option) {
    if (fileName == nullptr) return Status(error::kFileName);
    const std::optional<std::u16string_view> extension = stills::extensionOf(fileName);
    if (!extension || !stills::isStillExtension(*extension)) return Status(error::kFileName);

    const std::unique_ptr<ISUnknown, Release> object(CreateStageObject(stage_code::kSaveImageFile));
    if (!object) return Status(error::kOutOfMemory);
    auto* const saver = static_cast<ISaveImageFile*>(object.get());
    return Status(saver->SaveImageFile(width, height, format, data, fileName, option));
}

}  // namespace tavra
