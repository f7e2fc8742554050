// The preview window of one camera: what it shows, where, and what happens in it.
//
// Owned by the handle record, from its construction on; the window itself exists from create to destroy, or
// until the user closes it. Operations come from any thread: they store and post, and what follows runs on
// the window's thread (see platform/window.h), which alone draws. The capture thread only asks alive() and
// has the window drawn again.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/status.h"
#include "display/draw_image.h"
#include "display/draw_image_factory.h"
#include "display/preview_camera.h"
#include "display/preview_layout.h"
#include "platform/window.h"
#include "tavra/tavra_types.h"

namespace tavra {

// A place whose words are stored and read one by one, without a lock.
class SharedPlace {
  public:
    PreviewPlace load() const { return {x, y, width, height}; }
    void store(const PreviewPlace& place);

    std::atomic<std::uint32_t> x{0}, y{0}, width{0}, height{0};
};

struct PreviewRequest {
    std::u16string title;
    std::uint32_t style = 0;
    PreviewPlace place;  // of the window's corner, and the client size
    TavraWindow parent = nullptr;
    TavraMenu menu = nullptr;
    bool closable = false;
    void* owner = nullptr;  // the handle that the window's storage holds, on Windows
};

class PreviewWindow final : public platform::IWindowEvents {
  public:
    PreviewWindow(IPreviewCamera& camera, platform::IWindowSystem& system,
                  DrawImageMaker makeObject = makeDrawImage);
    ~PreviewWindow();
    PreviewWindow(const PreviewWindow&) = delete;
    PreviewWindow& operator=(const PreviewWindow&) = delete;

    // The window. A window that the user closed keeps its handle; the calls that ask the system then do so
    // with a handle that is dead. 0xE0000007 without any.
    Status create(PreviewRequest request);
    Status destroy();
    void close();  // destroys it, when the window's thread is out of the event that it is in
    TavraWindow window() const { return previewWindow; }
    bool alive() const;
    Status setTitle(const std::u16string& title);
    Status title(std::u16string& title);
    Status setStyle(std::uint32_t style);
    std::uint32_t style() const { return windowStyle; }
    Status setSize(const PreviewPlace& place);
    Status size(PreviewPlace& place);
    void invalidate() const;

    // What is shown, and where.
    void setDestination(const PreviewPlace& place);
    void setMask(const PreviewPlace& place);
    Status setAspectMode(std::uint8_t mode);
    Status setDisplayMode(std::uint8_t mode);
    SharedPlace destination;  // stored only; setDestination and setMask tell the window and the application
    SharedPlace mask;
    std::atomic<std::uint8_t> aspectMode{0};
    std::atomic<std::uint8_t> magnificationMode{0};
    std::atomic<std::uint8_t> displayMode{0};
    std::atomic<std::uint32_t> displayInfoMode{0};
    // By design: the last failure of drawing, not the first, and of every window of this camera: it tells how
    // drawing ended when a window does.
    std::atomic<std::uint32_t> displayError{0};

    // Drawing by the application, on the draw object.
    void setColorKey(std::uint32_t color);
    void setAlphaChannel(std::uint8_t alpha);
    Status getDC(TavraDC& dc);
    Status getDCWithReset(TavraDC& dc);
    Status releaseDC(TavraDC dc);
    Status resetOverlay();
    std::atomic<std::uint32_t> colorKey{0xFF00FF};
    std::atomic<std::uint8_t> alphaChannel{255};

    // The images have another size or format.
    void imagesChanged();

    // Of the window's thread.
    void onCreate(TavraWindow window) override;
    void onDestroy() override;
    void onMove() override;
    void onSize(std::uint32_t kind, std::uint32_t width, std::uint32_t height) override;
    void onPaint(platform::IPaint& paint, Size client) override;
    void onErase(platform::IPaint& paint) override;
    void onCommand(std::uint64_t parameter) override;
    void onScroll(platform::Axis axis, platform::ScrollCode code, std::int32_t thumb) override;
    void onMouse(const platform::MouseMessage& mouse) override;
    void onAltKey() override;

  private:
    using DrawObject = std::shared_ptr<CDrawImage>;

    Status destroyWindow();
    Status openWindow(const PreviewRequest& request);
    Status windowSize(const PreviewRequest& request, Size& size) const;
    Status makeDrawObject();
    Status announce(const DrawObject& made, std::uint32_t knownChanges);
    void applySettings(CDrawImage& object);
    void tellImageSize(CDrawImage& object);
    DrawObject drawObject() const;
    Status drawingSurface(DrawObject& object) const;
    DrawObject lender(TavraDC dc) const;
    void forgetLending(TavraDC dc);
    std::uint32_t imageBits() const;
    Size shownImageSize() const;
    bool isChildOfParent() const;
    Size clientSize() const;

    Status post(std::uint32_t message, std::uint64_t parameter = 0) const;
    void noteDisplayError(Status status);
    void postResize();
    void updateDestination();
    void updateScrollBars();
    void paintImage(CDrawImage& object, platform::IPaint& paint, Size client);
    void magnify(const platform::MouseMessage& mouse);
    void followMouse(const platform::MouseMessage& mouse);
    void showCursor() const;

    IPreviewCamera& camera_;
    platform::IWindowSystem& system_;
    const DrawImageMaker makeObject_;
    // One creation or destruction at a time. On Windows both run window procedures of the application, which
    // may end a window inside of either.
    std::recursive_mutex lifeMutex_;

    std::atomic<TavraWindow> previewWindow{nullptr};
    std::atomic<TavraWindow> parentWindow{nullptr};
    std::atomic<std::uint32_t> windowStyle{0};
    std::atomic<TavraMenu> windowMenu{nullptr};
    bool closableClass_ = false;
    bool classRegistered_ = false;

    // The draw object exists from creation to destruction of the window. An application may use it while the
    // user closes the window: who holds a reference keeps it.
    mutable std::mutex drawObjectMutex_;
    DrawObject drawObject_;
    std::atomic<std::uint32_t> settingsChanges_{0};  // of what a draw object is told
    bool windowGone_ = true;                         // under the same mutex

    // Contexts that applications have, with the objects they are of: these stay until the release, so that
    // what is drawn then is drawn nowhere, if the window is gone, and nothing worse. Under the same mutex.
    struct Lending {
        TavraDC context;
        DrawObject object;
    };
    std::vector<Lending> lendings_;

    // Of the window's thread.
    std::atomic<std::uint32_t> scrollX{0};
    std::atomic<std::uint32_t> scrollY{0};
    platform::ScrollBar horizontalBar_;
    platform::ScrollBar verticalBar_;
    std::uint32_t mouseCaptured = 0;
};

}  // namespace tavra
