// A model out of the text of a model file and the keys of a camera's name. Pure functions; any thread.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model.h"

namespace tavra::usbd {

// "width=640": a dotted field of the model file or a short name for one (docs/virtual-cameras.md), and its
// value.
using Override = std::pair<std::string, std::string>;

// Reads `text`, with each override put in the place of the field it names. False: `complaint` says in one
// line what is wrong, and `model` means nothing.
bool parseModel(std::string_view text, const std::vector<Override>& overrides, Model& model,
                std::string& complaint);

}  // namespace tavra::usbd
