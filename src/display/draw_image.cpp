#include "display/draw_image.h"

#include "display/clip_to_area.h"

namespace tavra {

class CDrawImage::Entry {
  public:
    explicit Entry(CDrawImage& object) : object_(object), entered_(object.enter()) {}
    ~Entry() {
        if (entered_) object_.leave();
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

    explicit operator bool() const { return entered_; }

  private:
    CDrawImage& object_;
    const bool entered_;
};

std::uint32_t CDrawImage::GetDC(TavraDC* dc) {
    *dc = nullptr;
    return 0;
}

std::uint32_t CDrawImage::ReleaseDC(TavraDC) {
    return 0;
}

std::uint32_t CDrawImage::EraseBackground(platform::IPaint*) {
    return 0;
}

std::uint32_t CDrawImage::SetColorKey(std::uint32_t) {
    return 0;
}

std::uint32_t CDrawImage::GetColorKey(std::uint32_t* color) {
    *color = 0;
    return 0;
}

std::uint32_t CDrawImage::ResetOverlay() {
    return 0;
}

std::uint32_t CDrawImage::SetImageSize(std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
    imageWidth = width;
    imageHeight = height;
    imageBits = bits;
    return 0;
}

std::uint32_t CDrawImage::OnSize(std::uint32_t, std::uint32_t, std::uint32_t) {
    return 0;
}

std::uint32_t CDrawImage::OnMove(std::int32_t, std::int32_t) {
    return 0;
}

std::uint32_t CDrawImage::Initialize() {
    return 0;
}

std::uint32_t CDrawImage::Create(TavraWindow window, std::uint32_t width, std::uint32_t height,
                                 std::uint32_t bits) {
    windowHandle = window;
    imageWidth = width;
    imageHeight = height;
    imageBits = bits;
    if (const Status status = system_.desktop(desktopRect); !status.ok()) return status.code();
    Change change{};
    refreshClientRect(change);
    return Initialize();
}

std::uint32_t CDrawImage::Draw(const Rectangle* source, const Rectangle* destination,
                               const BackgroundRectangles& background, const DrawImageInfo& info) {
    const Entry entry(*this);
    if (!entry) return 0;
    Change change{};
    refreshClientRect(change);
    tellChange(change);
    const Rectangle wholeSource = source != nullptr ? *source : Rectangle();
    Rectangle cutSource = wholeSource;
    Rectangle cutDestination = destination != nullptr ? *destination : Rectangle();
    const Rectangle wholeDestination = cutDestination;
    clip(cutSource, cutDestination);
    const std::uint32_t result = DrawImage(cutSource, cutDestination, background, info);
    lastFrameId = info.frameId;
    lastSource = wholeSource;
    lastDest = wholeDestination;
    lastBackground = background;
    hasLastDraw = 1;
    return result;
}

std::uint32_t CDrawImage::CheckMove() {
    const Entry entry(*this);
    if (!entry) return 0;
    Change change{};
    if (const std::uint32_t failure = refreshClientRect(change); failure != 0) return failure;
    return tellChange(change);
}

std::uint32_t CDrawImage::CheckSize(std::uint32_t kind, std::uint32_t width, std::uint32_t height) {
    const Entry entry(*this);
    if (!entry) return 0;
    Change change{};
    if (const std::uint32_t failure = refreshClientRect(change); failure != 0) return failure;
    return change == Change::Size ? OnSize(kind, width, height) : 0;
}

// A failed reading changes nothing. By design: a client area without a size counts as one pixel before it is
// compared, not after. It is stored as that pixel, and would differ from it at every look: a window without a
// client area would have its surfaces or its device made anew with each drawing.
std::uint32_t CDrawImage::refreshClientRect(Change& change) {
    change = Change::None;
    Rectangle now;
    if (const Status status = system_.clientOnScreen(windowHandle, now); !status.ok()) return status.code();
    if (now.right <= now.left) now.right = now.left + 1;
    if (now.bottom <= now.top) now.bottom = now.top + 1;
    if (now.width() != clientRect.width() || now.height() != clientRect.height()) {
        change = Change::Size;
    } else if (now != clientRect) {
        change = Change::Position;
    }
    clientRect = now;
    return 0;
}

std::uint32_t CDrawImage::tellChange(Change change) {
    switch (change) {
        case Change::Size:
            return OnSize(0, static_cast<std::uint32_t>(clientRect.width()),
                          static_cast<std::uint32_t>(clientRect.height()));
        case Change::Position: return OnMove(clientRect.left, clientRect.top);
        default: return 0;
    }
}

void CDrawImage::clip(Rectangle& source, Rectangle& destination) const {
    if (source.empty()) return;
    clipToArea(source, destination, static_cast<std::int32_t>(clientRect.width()),
               static_cast<std::int32_t>(clientRect.height()));
}

}  // namespace tavra
