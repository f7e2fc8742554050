# Writes OUTPUT, a C++ source with the text of every file of MODELS (a list), by its name without the extension.
set(entries "")
foreach(path ${MODELS})
  get_filename_component(name ${path} NAME_WE)
  file(READ ${path} text)
  string(APPEND entries "    {\"${name}\", R\"model(${text})model\"},\n")
endforeach()
file(CONFIGURE OUTPUT ${OUTPUT} @ONLY CONTENT [[
// Made from the model files when the library is built.
#include "embedded_models.h"

namespace tavra::usbd {
namespace {

constexpr EmbeddedModel kModels[] = {
@entries@};

}  // namespace

std::span<const EmbeddedModel> embeddedModels() { return kModels; }

}  // namespace tavra::usbd
]])
