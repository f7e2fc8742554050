#include "view_keys.h"

#include <cstdio>

namespace tavra::tool {
namespace {

struct KeyOf {
    char32_t key;
    ViewAction action;
};

constexpr KeyOf kKeys[] = {
    {U'f', ViewAction::Fit},
    {U'1', ViewAction::ActualSize},
    {U'+', ViewAction::ZoomIn},
    {U'=', ViewAction::ZoomIn},
    {U'-', ViewAction::ZoomOut},
    {U'_', ViewAction::ZoomOut},
    {kKeyLeft, ViewAction::MoveLeft},
    {kKeyUp, ViewAction::MoveUp},
    {kKeyRight, ViewAction::MoveRight},
    {kKeyDown, ViewAction::MoveDown},
    {U'r', ViewAction::Rotate},
    {U't', ViewAction::Statistics},
    {U'g', ViewAction::Grid},
    {U's', ViewAction::Snapshot},
    {U'm', ViewAction::Movie},
    {U'e', ViewAction::AutoExposure},
    {U'w', ViewAction::AutoWhiteBalance},
    {U'h', ViewAction::Help},
    {U'?', ViewAction::Help},
    {U'q', ViewAction::Quit},
    {kKeyEscape, ViewAction::Quit},
};

struct Line {
    const char* keys;
    const char* text;
};

constexpr Line kLines[] = {
    {"f", "fit the whole image into the window"},
    {"1", "show the whole image pixel by pixel; what does not fit is scrolled"},
    {"+ -", "zoom in and out; so does the wheel, and a click or Alt and a click at its place"},
    {"arrows", "move the part that is shown"},
    {"r", "rotate: clockwise, anticlockwise, not at all"},
    {"t g", "statistics as text; control grid with its weights"},
    {"s", "snapshot into NAME-1.png, NAME-2.png, ..."},
    {"m", "movie into NAME-1.avi, NAME-2.avi, ...; again: its end"},
    {"e w", "automatic exposure on and off; automatic white balance on and off"},
    {"h ?", "these lines, on the terminal"},
    {"q Esc", "quit"},
};

}  // namespace

ViewAction viewActionOf(char32_t key) {
    if (key >= U'A' && key <= U'Z') key += U'a' - U'A';
    for (const KeyOf& known : kKeys) {
        if (known.key == key) return known.action;
    }
    return ViewAction::None;
}

std::string viewKeysText() {
    std::string text;
    for (const Line& line : kLines) {
        char keys[16];
        std::snprintf(keys, sizeof keys, "  %-8s", line.keys);
        text += std::string(keys) + line.text + "\n";
    }
    return text;
}

}  // namespace tavra::tool
