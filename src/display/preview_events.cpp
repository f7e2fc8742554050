// What happens in the preview window, on its own thread.
#include <mutex>
#include <utility>

#include "display/preview_window.h"

namespace tavra {

using platform::Axis;

void PreviewWindow::onCreate(TavraWindow window) {
    previewWindow = window;
    scrollX = 0;
    scrollY = 0;
    mouseCaptured = 0;
}

void PreviewWindow::onDestroy() {
    DrawObject last;
    {
        const std::lock_guard lock(drawObjectMutex_);
        last = std::exchange(drawObject_, nullptr);
        windowGone_ = true;
    }
    if (last != nullptr) last->endWaiting();
    last.reset();
    static_cast<void>(post(TAVRA_MESSAGE_WINDOW_CLOSED, displayError));
}

void PreviewWindow::onMove() {
    static_cast<void>(system_.invalidate(previewWindow, true));
    if (const DrawObject object = drawObject()) noteDisplayError(Status(object->CheckMove()));
}

// By design: the bars are worked out before and after the destination, and once more, because a bar that
// comes or goes changes the client area that the others depend on.
void PreviewWindow::onSize(std::uint32_t kind, std::uint32_t width, std::uint32_t height) {
    updateScrollBars();
    if (kind == kRestored || kind == kMaximised) {
        updateDestination();
        static_cast<void>(post(TAVRA_MESSAGE_WINDOW_SIZED));
        static_cast<void>(post(TAVRA_MESSAGE_DESTINATION_CHANGED));
        updateScrollBars();
    }
    updateScrollBars();
    static_cast<void>(system_.invalidate(previewWindow, true));
    if (const DrawObject object = drawObject()) {
        noteDisplayError(Status(object->CheckSize(kind, width, height)));
    }
}

void PreviewWindow::updateDestination() {
    destination.store(
        destinationFor(aspectMode, destination.load(), mask.load(), shownImageSize(), clientSize()));
}

void PreviewWindow::updateScrollBars() {
    const TavraWindow window = previewWindow;
    Rectangle whole;
    if (!system_.windowOnScreen(window, whole).ok()) return;
    const PreviewPlace place = destination.load();
    const std::uint32_t style = windowStyle;
    ScrollInput input{
        .destination = place,
        .content = {place.x + place.width, place.y + place.height},
        .window = {static_cast<std::uint32_t>(whole.width()), static_cast<std::uint32_t>(whole.height())},
        .client = clientSize(),
        .horizontalThickness = system_.scrollBarThickness(Axis::Horizontal),
        .verticalThickness = system_.scrollBarThickness(Axis::Vertical),
        .horizontalAllowed = (style & platform::kStyleHorizontalScroll) != 0,
        .verticalAllowed = (style & platform::kStyleVerticalScroll) != 0,
        .scrollX = scrollX,
        .scrollY = scrollY};
    if (!isChildOfParent()) {
        static_cast<void>(system_.outerSize(input.content, style, windowMenu, input.content));
    }
    const ScrollBars bars = scrollBarsFor(input);
    horizontalBar_ = bars.horizontal;
    verticalBar_ = bars.vertical;
    scrollX = static_cast<std::uint32_t>(bars.horizontal.position);
    scrollY = static_cast<std::uint32_t>(bars.vertical.position);
    system_.setScrollBar(window, Axis::Horizontal, bars.horizontal);
    system_.setScrollBar(window, Axis::Vertical, bars.vertical);
    static_cast<void>(system_.invalidate(window, false));
}

void PreviewWindow::onScroll(Axis axis, platform::ScrollCode code, std::int32_t thumb) {
    const bool horizontal = axis == Axis::Horizontal;
    platform::ScrollBar& bar = horizontal ? horizontalBar_ : verticalBar_;
    bar.position = scrolledPosition(bar, code, thumb);
    (horizontal ? scrollX : scrollY) = static_cast<std::uint32_t>(bar.position);
    system_.setScrollBar(previewWindow, axis, bar);
    static_cast<void>(system_.invalidate(previewWindow, false));
}

void PreviewWindow::onPaint(platform::IPaint& paint, Size client) {
    const DrawObject object = drawObject();
    if (object != nullptr) {
        paintImage(*object, paint, client);
    } else {
        noteDisplayError(paint.fillBlack(rectangleOf({0, 0, client.width, client.height})));
    }
}

// The newest image becomes the one that is shown, and stays while it is drawn.
void PreviewWindow::paintImage(CDrawImage& object, platform::IPaint& paint, Size client) {
    const bool rotated = camera_.previewIsRotated();
    const Rectangle to = rectangleOf(destination.load(), scrollX, scrollY);
    const Rectangle from = rectangleOf(mask.load());
    const auto width = static_cast<std::int32_t>(client.width);
    const auto height = static_cast<std::int32_t>(client.height);
    const BackgroundRectangles background{
        Rectangle{0, 0, to.left, height}, Rectangle{to.left, 0, width, to.top},
        Rectangle{to.right, to.top, width, height}, Rectangle{to.left, to.bottom, to.right, height}};
    camera_.previewImages(rotated).drawReady([&](const ImageBufferSet::Image& image) {
        if (image.bitmap.pixels() == nullptr) {
            noteDisplayError(paint.fillBlack({0, 0, width, height}));
            return;
        }
        const DrawImageInfo info{&paint, &image.bitmap, image.bitmap.pixels(), rotated ? 1u : 0u,
                                 image.frameNumber};
        noteDisplayError(Status(object.Draw(&from, &to, background, info)));
    });
}

void PreviewWindow::onErase(platform::IPaint& paint) {
    if (const DrawObject object = drawObject()) noteDisplayError(Status(object->EraseBackground(&paint)));
}

void PreviewWindow::onCommand(std::uint64_t parameter) {
    static_cast<void>(post(TAVRA_MESSAGE_WINDOW_COMMAND, parameter));
}

// The mouse.

void PreviewWindow::onMouse(const platform::MouseMessage& mouse) {
    if (mouse.message == platform::kMouseMove) followMouse(mouse);
    if (mouse.message == platform::kLeftButtonUp && magnificationMode != 0 &&
        system_.isActive(previewWindow)) {
        magnify(mouse);
    }
    const TavraWindow parent = parentWindow;
    if (parent != nullptr) system_.forward(previewWindow, parent, mouse);
}

void PreviewWindow::magnify(const platform::MouseMessage& mouse) {
    mask.store(magnified(mask.load(), destination.load(), shownImageSize(),
                         static_cast<std::uint32_t>(mouse.x), static_cast<std::uint32_t>(mouse.y),
                         system_.altHeld()));
    static_cast<void>(system_.invalidate(previewWindow, false));
    noteDisplayError(post(TAVRA_MESSAGE_MASK_CHANGED));
}

// While the mouse is over the window it is captured, so that its way out is seen.
void PreviewWindow::followMouse(const platform::MouseMessage& mouse) {
    const TavraWindow window = previewWindow;
    const bool on = magnificationMode != 0;
    if (mouseCaptured == 0) {
        if (!on) return;
        system_.takeMouse(window);
        mouseCaptured = 1;
        showCursor();
        return;
    }
    if (on && clientSize().contains(mouse.x, mouse.y)) {
        showCursor();
        return;
    }
    system_.releaseMouse(window);
    mouseCaptured = 0;
}

void PreviewWindow::onAltKey() {
    if (magnificationMode != 0) showCursor();
}

void PreviewWindow::showCursor() const {
    system_.setCursor(previewWindow,
                      system_.altHeld() ? platform::Cursor::ZoomOut : platform::Cursor::ZoomIn);
}

}  // namespace tavra
