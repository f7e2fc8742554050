// The one way in which a preview image comes onto the screen. A preview window has one draw object, of the
// kind that the display mode names, and all drawing goes through its Draw.
//
// Draw, CheckMove and CheckSize run on the window's thread. The members are that thread's, except alphaMask;
// a back-end whose other operations come from other threads guards them all by enter and leave.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "platform/bitmap.h"
#include "platform/paint.h"
#include "platform/rectangle.h"
#include "platform/window.h"
#include "tavra/tavra_types.h"

namespace tavra {

using platform::Rectangle;
// Around an image: left, top, right and bottom strip of the client area.
using BackgroundRectangles = std::array<Rectangle, 4>;

// The image that is to be drawn.
struct DrawImageInfo {
    platform::IPaint* deviceContext = nullptr;
    const platform::Bitmap* bitmap = nullptr;
    const std::uint8_t* bits = nullptr;  // the bitmap's pixels
    std::uint32_t rotated = 0;           // 1: width and height are exchanged
    std::uint32_t frameId = 0;
};

// Results are 0, or a failure code of the system or of the back-end.
class CDrawImage {
  public:
    explicit CDrawImage(platform::IWindowSystem& system) : system_(system) {}
    virtual ~CDrawImage() = default;
    CDrawImage(const CDrawImage&) = delete;
    CDrawImage& operator=(const CDrawImage&) = delete;

    // A context on the application's drawing surface, where there is one. The others have none to offer.
    virtual std::uint32_t GetDC(TavraDC* dc);
    virtual std::uint32_t ReleaseDC(TavraDC dc);
    virtual std::uint32_t EraseBackground(platform::IPaint* deviceContext);
    virtual std::uint32_t SetColorKey(std::uint32_t color);
    virtual std::uint32_t GetColorKey(std::uint32_t* color);
    virtual std::uint32_t ResetOverlay();
    virtual std::uint32_t SetImageSize(std::uint32_t width, std::uint32_t height, std::uint32_t bits);
    virtual std::uint32_t OnSize(std::uint32_t kind, std::uint32_t width, std::uint32_t height);
    virtual std::uint32_t OnMove(std::int32_t x, std::int32_t y);
    virtual std::uint32_t Initialize();
    virtual std::uint32_t DrawImage(const Rectangle& source, const Rectangle& destination,
                                    const BackgroundRectangles& background, const DrawImageInfo& info) = 0;

    // The window has ended: who waits for the object, now or later, gets a failure.
    virtual void endWaiting() {}

    // Ties the object to its window and to images of this size and format code (1, 8 or 32).
    std::uint32_t Create(TavraWindow window, std::uint32_t width, std::uint32_t height, std::uint32_t bits);
    // Draws the source, a part of the image, onto the destination in the client area, and the strips around
    // it. What lies outside the client area is cut from both. Null stands for an empty rectangle.
    std::uint32_t Draw(const Rectangle* source, const Rectangle* destination,
                       const BackgroundRectangles& background, const DrawImageInfo& info);
    // Tells the back-end if the client area has another place or size than it had.
    std::uint32_t CheckMove();
    std::uint32_t CheckSize(std::uint32_t kind, std::uint32_t width, std::uint32_t height);

    std::atomic<std::uint32_t> alphaMask{0xFF000000};  // opacity of the drawing in bits 24 to 31

  protected:
    enum class Change { None, Position, Size };

    // Around what happens on the window's thread. False: not now; the window will be drawn once more.
    virtual bool enter() { return true; }
    virtual void leave() {}

    platform::IWindowSystem& system_;
    // Number of the image that the back-end holds; it takes over a frame once.
    std::atomic<std::uint32_t> lastFrameId{0xFFFFFFFF};
    TavraWindow windowHandle = nullptr;
    Rectangle clientRect;   // on the screen, at least one pixel wide and high
    Rectangle desktopRect;  // as of the creation
    // The arguments of the last Draw, to show it again without a new image.
    std::uint32_t hasLastDraw = 0;
    Rectangle lastSource;
    Rectangle lastDest;
    BackgroundRectangles lastBackground;
    std::uint32_t imageWidth = 0;
    std::uint32_t imageHeight = 0;
    std::uint32_t imageBits = 0;

    // To what lies in the client area.
    void clip(Rectangle& source, Rectangle& destination) const;

  private:
    class Entry;

    std::uint32_t refreshClientRect(Change& change);
    std::uint32_t tellChange(Change change);
};

}  // namespace tavra
