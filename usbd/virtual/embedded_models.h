// The shipped model files, as text inside the library; made from models/*.toml when the library is built.
#pragma once

#include <span>
#include <string_view>

namespace tavra::usbd {

struct EmbeddedModel {
    std::string_view name, text;
};

std::span<const EmbeddedModel> embeddedModels();

}  // namespace tavra::usbd
