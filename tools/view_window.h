// The window of `tavra view`, with title, icon and keyboard. The camera's preview window lies in it as a
// child, which belongs to the library: this one only asks to be told of the keys that go there.
//
// The one part of the command that knows a window system. One thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "tavra/tavra_types.h"
#include "view_mask.h"

namespace tavra::tool {

struct ViewEvent {
    enum class Kind : std::uint8_t { Key, Resized, CloseAsked };

    Kind kind = Kind::Key;
    char32_t key = 0;  // a character, or one of kKeyLeft and the like; the wheel comes as + and -
    Extent size;       // of a window that was resized
};

class ViewWindow {
  public:
    // Connects to the display. Throws Failure, with what to do, when there is none.
    ViewWindow();
    ~ViewWindow();
    ViewWindow(const ViewWindow&) = delete;
    ViewWindow& operator=(const ViewWindow&) = delete;

    // What other windows leave of the screen.
    Extent room() const;

    // Once. At a place that the window manager chooses unless `placed`. Throws Failure.
    void open(const std::string& title, const Geometry& geometry, bool placed);
    TavraWindow window() const;
    void setTitle(const std::string& title);
    // Keys that go to this child are told too.
    void listenTo(TavraWindow child);

    // What happened, waiting at most so long for it. Throws Failure when the display has gone.
    std::optional<ViewEvent> next(std::uint32_t timeoutMs);

  private:
    class Native;
    std::unique_ptr<Native> native_;
};

}  // namespace tavra::tool
