#include "camera_list.h"

#include <algorithm>
#include <fstream>
#include <iterator>

#include "embedded_models.h"
#include "scene.h"

namespace tavra::usbd {
namespace {

constexpr std::size_t kMostModelBytes = 1u << 20;

// Pieces between marks that no backslash stands before and that are not inside brackets; backslashes are
// kept.
std::vector<std::string> split(std::string_view text, char mark) {
    std::vector<std::string> pieces(1);
    int depth = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\' && at + 1 < text.size()) {
            pieces.back() += text[at++];
            pieces.back() += text[at];
        } else if (text[at] == mark && depth == 0) {
            pieces.emplace_back();
        } else {
            if (text[at] == '[') ++depth;
            if (text[at] == ']' && depth > 0) --depth;
            pieces.back() += text[at];
        }
    }
    return pieces;
}

std::string withoutBackslashes(std::string_view text) {
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\\' && at + 1 < text.size()) ++at;
        plain += text[at];
    }
    return plain;
}

bool isPath(const std::string& model) {
    return model.ends_with(".toml");
}

bool readFile(const std::string& path, std::string& text) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return false;
    text.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    return text.size() <= kMostModelBytes;
}

}  // namespace

std::vector<std::string> splitCameraList(std::string_view text) {
    std::vector<std::string> items;
    for (std::string& piece : split(text, ',')) {
        const std::size_t first = piece.find_first_not_of(" \t"), last = piece.find_last_not_of(" \t");
        if (first != std::string::npos) items.push_back(piece.substr(first, last - first + 1));
    }
    return items;
}

bool parseCameraName(std::string_view item, CameraName& name, std::string& complaint) {
    const std::vector<std::string> parts = split(item, ':');
    name = CameraName{withoutBackslashes(parts[0]), {}};
    if (name.model.empty()) {
        complaint = "the model is missing";
        return false;
    }
    for (std::size_t i = 1; i < parts.size(); ++i) {
        const std::size_t equals = parts[i].find('=');
        if (equals == std::string::npos || equals == 0) {
            complaint = "\"" + parts[i] + "\" is not of the form key=value";
            return false;
        }
        const std::string_view part = parts[i];
        name.overrides.emplace_back(withoutBackslashes(part.substr(0, equals)),
                                    withoutBackslashes(part.substr(equals + 1)));
    }
    return true;
}

bool loadCamera(const std::string& item, Model& model, std::string& complaint) {
    CameraName name;
    if (!parseCameraName(item, name, complaint)) return false;
    std::string text(shippedModel(name.model));
    if (isPath(name.model)) {
        if (!readFile(name.model, text)) {
            complaint = "the model file cannot be read";
            return false;
        }
    } else if (text.empty()) {
        complaint = "there is no such model; the shipped ones are";
        for (const std::string_view each : shippedModelNames()) complaint += " " + std::string(each);
        return false;
    }
    if (!parseModel(text, name.overrides, model, complaint)) return false;
    if (!isScene(model.scene.source)) {
        complaint = "scene.source must be chart or a PNG file that can be read";
        return false;
    }
    return true;
}

std::string_view shippedModel(std::string_view name) {
    const auto& all = embeddedModels();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.name == name; });
    return found != all.end() ? found->text : std::string_view();
}

std::vector<std::string_view> shippedModelNames() {
    std::vector<std::string_view> names;
    for (const EmbeddedModel& model : embeddedModels()) names.push_back(model.name);
    return names;
}

}  // namespace tavra::usbd
