// Which virtual cameras there are: the text of TAVRA_VIRTUAL_CAMERAS, taken apart. Pure functions; any
// thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "model_toml.h"

namespace tavra::usbd {

// One item, "MODEL:key=value:key=value". The model is the name of a shipped one or the path of a file that
// ends in .toml. Commas and colons inside square brackets
// are part of a value; elsewhere a backslash takes the character behind it as it is (\: \, \\).
struct CameraName {
    std::string model;
    std::vector<Override> overrides;
};

// The items between commas, blanks around them left out; empty ones do not count.
std::vector<std::string> splitCameraList(std::string_view text);

// False: an item that is not of the form above.
bool parseCameraName(std::string_view item, CameraName& name, std::string& complaint);

// The model of an item with its overrides. False: `complaint` says in one line what is wrong.
bool loadCamera(const std::string& item, Model& model, std::string& complaint);

// Text of a shipped model; empty when there is none of that name.
std::string_view shippedModel(std::string_view name);
std::vector<std::string_view> shippedModelNames();

}  // namespace tavra::usbd
