#include "display/preview_window.h"

#include <algorithm>
#include <new>
#include <utility>

#include "platform/last_error.h"

namespace tavra {
namespace {

constexpr std::uint32_t kClassExists = 1410;
constexpr std::uint32_t kClassHasWindows = 1412;
constexpr std::size_t kMostLendings = 8;  // that are made at once; only memory for them depends on it

std::uint32_t asMask(std::uint8_t alpha) {
    return std::uint32_t{alpha} << 24;
}

// The context was not released: by a thread that has it not, or it is another one.
bool isStillOut(Status released) {
    return released.code() == error::kNotOwner || released.code() == error::kInvalidArgument;
}

}  // namespace

void SharedPlace::store(const PreviewPlace& place) {
    x = place.x;
    y = place.y;
    width = place.width;
    height = place.height;
}

PreviewWindow::PreviewWindow(IPreviewCamera& camera, platform::IWindowSystem& system,
                             DrawImageMaker makeObject)
    : camera_(camera), system_(system), makeObject_(makeObject) {}

PreviewWindow::~PreviewWindow() {
    close();
}

// Creation and destruction.

Status PreviewWindow::create(PreviewRequest request) {
    const std::lock_guard lock(lifeMutex_);
    TAVRA_RETURN_IF_ERROR(destroyWindow());
    if (request.place.width == 0 && request.place.height == 0) {
        const ImageSize image = camera_.previewImageSize();
        request.place.width = image.width;
        request.place.height = image.height;
    }
    parentWindow = request.parent;
    windowStyle = request.style;
    windowMenu = request.menu;
    closableClass_ = request.closable;
    const Status registered = system_.registerClass(closableClass_);
    if (!registered.ok() && registered.code() != kClassExists) return registered;
    classRegistered_ = true;
    const Status opened = openWindow(request);
    if (!opened.ok()) {
        static_cast<void>(post(TAVRA_MESSAGE_WINDOW_CLOSED, displayError));
        return opened;
    }
    const Status made = makeDrawObject();
    if (!made.ok()) static_cast<void>(destroyWindow());
    return made;
}

Status PreviewWindow::openWindow(const PreviewRequest& request) {
    platform::WindowRequest made{.closable = request.closable,
                                 .title = request.title,
                                 .style = request.style,
                                 .x = static_cast<std::int32_t>(request.place.x),
                                 .y = static_cast<std::int32_t>(request.place.y),
                                 .size = {},
                                 .parent = request.parent,
                                 .menu = request.menu,
                                 .owner = request.owner};
    TAVRA_RETURN_IF_ERROR(windowSize(request, made.size));
    {
        const std::lock_guard lock(drawObjectMutex_);
        windowGone_ = false;
    }
    TavraWindow window = nullptr;
    return system_.create(made, *this, window);
}

Status PreviewWindow::windowSize(const PreviewRequest& request, Size& size) const {
    const Size client{request.place.width, request.place.height};
    TAVRA_RETURN_IF_ERROR(system_.outerSize(client, request.style, request.menu, size));
    if ((request.style & platform::kStyleChild) != 0) return Status();
    const Size most = system_.workArea();
    size = {std::min(size.width, most.width), std::min(size.height, most.height)};
    return Status();
}

Status PreviewWindow::makeDrawObject() {
    try {
        const DrawObject made = makeObject_(displayMode, system_);
        const std::uint32_t known = settingsChanges_;
        made->alphaMask = asMask(alphaChannel);
        camera_.notePreviewFailure(Status(made->SetColorKey(colorKey)));
        const ImageSize image = camera_.previewImageSize();
        const std::uint32_t failure = made->Create(previewWindow, image.width, image.height, imageBits());
        if (failure != 0) return Status(failure);
        TAVRA_RETURN_IF_ERROR(announce(made, known));
    } catch (const std::bad_alloc&) {
        return Status(error::kOutOfMemory);
    }
    invalidate();
    return Status();
}

void PreviewWindow::applySettings(CDrawImage& object) {
    object.alphaMask = asMask(alphaChannel);
    camera_.notePreviewFailure(Status(object.SetColorKey(colorKey)));
    tellImageSize(object);
}

// By design: a creation is told of once there are window and draw object, and not at all where one of them
// has failed: then only the end is. The window may be closed meanwhile, or the next moment: its end is told
// after its creation, or else the window has not come about. A setting that has changed since the object was
// made found none to tell.
Status PreviewWindow::announce(const DrawObject& made, std::uint32_t knownChanges) {
    std::unique_lock lock(drawObjectMutex_);
    while (!windowGone_ && knownChanges != settingsChanges_) {
        knownChanges = settingsChanges_;
        lock.unlock();
        applySettings(*made);
        lock.lock();
    }
    if (windowGone_) return Status(error::kInvalidWindowHandle);
    drawObject_ = made;
    static_cast<void>(
        post(TAVRA_MESSAGE_WINDOW_CREATED, reinterpret_cast<std::uintptr_t>(previewWindow.load())));
    return Status();
}

Status PreviewWindow::destroy() {
    const std::lock_guard lock(lifeMutex_);
    return destroyWindow();
}

// Until the window's thread has let go: it uses this.
void PreviewWindow::close() {
    while (destroy().code() == error::kWindowBusy) {
    }
}

// By design: whether the system could destroy the window does not matter, it may be dead already. Only one
// whose thread is in the middle of an event, and does not come out of it, is there as before.
Status PreviewWindow::destroyWindow() {
    const TavraWindow window = previewWindow.exchange(nullptr);
    if (window != nullptr && system_.destroy(window).code() == error::kWindowBusy) {
        previewWindow = window;
        return Status(error::kWindowBusy);
    }
    if (!std::exchange(classRegistered_, false)) return Status();
    const Status unregistered = system_.unregisterClass(closableClass_);
    if (window == nullptr) return Status();  // what there was not cannot fail to go
    return unregistered.code() == kClassHasWindows ? Status() : unregistered;
}

bool PreviewWindow::alive() const {
    const TavraWindow window = previewWindow;
    return window != nullptr && system_.isWindow(window);
}

// Title, style, size.

Status PreviewWindow::setTitle(const std::u16string& title) {
    const TavraWindow window = previewWindow;
    if (window == nullptr) return Status(error::kNoWindow);
    // By design: a success also with a handle that is dead.
    static_cast<void>(system_.setTitle(window, title));
    return Status();
}

Status PreviewWindow::title(std::u16string& title) {
    const TavraWindow window = previewWindow;
    if (window == nullptr) return Status(error::kNoWindow);
    title = system_.title(window);
    return Status();
}

// By design: what is stored changes also if the system refuses it, and only the last error tells.
Status PreviewWindow::setStyle(std::uint32_t style) {
    const TavraWindow window = previewWindow;
    if (window == nullptr) return Status(error::kNoWindow);
    windowStyle = style;
    camera_.notePreviewFailure(system_.setStyle(window, style));
    return Status();
}

Status PreviewWindow::setSize(const PreviewPlace& place) {
    const TavraWindow window = previewWindow;
    if (window == nullptr) return Status(error::kNoWindow);
    Size outer;
    TAVRA_RETURN_IF_ERROR(system_.outerSize({place.width, place.height}, windowStyle, windowMenu, outer));
    return system_.place(window, static_cast<std::int32_t>(place.x), static_cast<std::int32_t>(place.y),
                         outer);
}

Status PreviewWindow::size(PreviewPlace& place) {
    const TavraWindow window = previewWindow;
    if (window == nullptr) return Status(error::kNoWindow);
    Rectangle whole, client, parent;
    TAVRA_RETURN_IF_ERROR(system_.windowOnScreen(window, whole));
    TAVRA_RETURN_IF_ERROR(system_.clientOnScreen(window, client));
    if (isChildOfParent()) TAVRA_RETURN_IF_ERROR(system_.clientOnScreen(parentWindow, parent));
    place = {static_cast<std::uint32_t>(whole.left - parent.left),
             static_cast<std::uint32_t>(whole.top - parent.top), static_cast<std::uint32_t>(client.width()),
             static_cast<std::uint32_t>(client.height())};
    return Status();
}

void PreviewWindow::invalidate() const {
    if (alive()) static_cast<void>(system_.invalidate(previewWindow, false));
}

// What is shown, and where.

void PreviewWindow::setDestination(const PreviewPlace& place) {
    destination.store(place);
    postResize();
    static_cast<void>(post(TAVRA_MESSAGE_DESTINATION_CHANGED));
}

void PreviewWindow::setMask(const PreviewPlace& place) {
    mask.store(place);
    postResize();
    static_cast<void>(post(TAVRA_MESSAGE_MASK_CHANGED));
}

void PreviewWindow::postResize() {
    const TavraWindow window = previewWindow;
    if (window != nullptr) camera_.notePreviewFailure(system_.postResize(window));
}

Status PreviewWindow::setAspectMode(std::uint8_t mode) {
    aspectMode = mode;
    const TavraWindow window = previewWindow;
    if (window == nullptr) return Status();
    Status shown = system_.postResize(window);
    if (shown.ok()) shown = system_.invalidate(window, true);
    return alive() ? shown : Status();  // one that the user has closed needs to show nothing
}

Status PreviewWindow::setDisplayMode(std::uint8_t mode) {
    if (alive()) return Status(error::kWindowExists);
    displayMode = mode;
    return Status();
}

// Drawing by the application.

void PreviewWindow::setColorKey(std::uint32_t color) {
    colorKey = color;
    ++settingsChanges_;
    const DrawObject object = drawObject();
    if (object == nullptr) return;
    camera_.notePreviewFailure(Status(object->SetColorKey(color)));
    invalidate();
}

void PreviewWindow::setAlphaChannel(std::uint8_t alpha) {
    alphaChannel = alpha;
    ++settingsChanges_;
    if (const DrawObject object = drawObject()) object->alphaMask = asMask(alpha);
}

// By design: plain modes have no drawing surface, and say so with the code of cameras that lack something.
Status PreviewWindow::drawingSurface(DrawObject& object) const {
    object = drawObject();
    if (object == nullptr) return Status(error::kNoWindow);
    return isPlainDisplayMode(displayMode) ? Status(error::kLegacyCamera) : Status();
}

// By design: a success whatever the draw object says; a null context tells that it has none, and the last
// error why.
Status PreviewWindow::getDC(TavraDC& dc) {
    DrawObject object;
    TAVRA_RETURN_IF_ERROR(drawingSurface(object));
    dc = nullptr;
    {
        const std::lock_guard lock(drawObjectMutex_);
        lendings_.reserve(lendings_.size() + kMostLendings);
    }
    camera_.notePreviewFailure(Status(object->GetDC(&dc)));
    if (dc == nullptr) return Status();
    const std::lock_guard lock(drawObjectMutex_);
    lendings_.push_back({dc, std::move(object)});
    return Status();
}

Status PreviewWindow::getDCWithReset(TavraDC& dc) {
    TAVRA_RETURN_IF_ERROR(getDC(dc));
    if (dc == nullptr) return Status();
    const ImageSize image = camera_.previewImageSize();
    camera_.notePreviewFailure(
        platform::fillSolid(dc, rectangleOf({0, 0, image.width, image.height}), colorKey));
    return Status();
}

// By design: a success whatever the draw object says, and the last error tells what it was. A context
// outlives its window.
Status PreviewWindow::releaseDC(TavraDC dc) {
    DrawObject object = lender(dc);
    if (object == nullptr) TAVRA_RETURN_IF_ERROR(drawingSurface(object));
    const Status released(object->ReleaseDC(dc));
    if (!isStillOut(released)) forgetLending(dc);
    camera_.notePreviewFailure(released);
    invalidate();
    return Status();
}

PreviewWindow::DrawObject PreviewWindow::lender(TavraDC dc) const {
    const std::lock_guard lock(drawObjectMutex_);
    for (const Lending& lending : lendings_) {
        if (lending.context == dc) return lending.object;
    }
    return nullptr;
}

// The context may have been lent again already; one of the entries is as good as the other.
void PreviewWindow::forgetLending(TavraDC dc) {
    const std::lock_guard lock(drawObjectMutex_);
    const auto found = std::find_if(lendings_.begin(), lendings_.end(),
                                    [dc](const Lending& lending) { return lending.context == dc; });
    if (found != lendings_.end()) lendings_.erase(found);
}

// By design: nothing is invalidated. A draw object that shows at once what it holds does so by itself; for
// the others the next paint shows that the drawing is gone.
Status PreviewWindow::resetOverlay() {
    DrawObject object;
    TAVRA_RETURN_IF_ERROR(drawingSurface(object));
    camera_.notePreviewFailure(Status(object->ResetOverlay()));
    return Status();
}

void PreviewWindow::imagesChanged() {
    ++settingsChanges_;
    if (const DrawObject object = drawObject()) tellImageSize(*object);
}

void PreviewWindow::tellImageSize(CDrawImage& object) {
    const ImageSize image = camera_.previewImageSize();
    noteDisplayError(Status(object.SetImageSize(image.width, image.height, imageBits())));
}

// Small things.

PreviewWindow::DrawObject PreviewWindow::drawObject() const {
    const std::lock_guard lock(drawObjectMutex_);
    return drawObject_;
}

std::uint32_t PreviewWindow::imageBits() const {
    switch (camera_.previewPixelFormat()) {
        case TAVRA_PIXEL_MONO_8: return 1;
        case TAVRA_PIXEL_BGR_32: return 32;
        default: return 8;
    }
}

Size PreviewWindow::shownImageSize() const {
    const ImageSize image = camera_.previewImageSize();
    return camera_.previewIsRotated() ? Size{image.height, image.width} : Size{image.width, image.height};
}

bool PreviewWindow::isChildOfParent() const {
    return (windowStyle & platform::kStyleChild) != 0 && parentWindow.load() != nullptr;
}

Size PreviewWindow::clientSize() const {
    Rectangle client;
    if (!system_.clientOnScreen(previewWindow, client).ok()) return {};
    return {static_cast<std::uint32_t>(client.width()), static_cast<std::uint32_t>(client.height())};
}

Status PreviewWindow::post(std::uint32_t message, std::uint64_t parameter) const {
    return camera_.postToReceiver(message, parameter);
}

void PreviewWindow::noteDisplayError(Status status) {
    if (!status.ok()) displayError = status.code();
}

}  // namespace tavra
