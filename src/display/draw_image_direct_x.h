// Drawing with textures: the image as a scaled sprite, and over it, blended, what the application draws.
//
// Any thread may use the drawing surface; drawMutex guards all there is. Between GetDC and ReleaseDC it stays
// with the thread that has the context. Nothing else waits for that thread but other uses of the drawing
// surface, until the end of the window: painting and changes of size are put off until ReleaseDC, which
// carries them out. So an application that never releases its context stops its picture and nothing more.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

#include "display/draw_image.h"
#include "display/draw_mutex.h"
#include "platform/sprite_device.h"

namespace tavra {

class CDrawImageDirectX final : public CDrawImage {
  public:
    // Present modes: at once; with the next blank of the screen; the same, and wait until all is drawn.
    static constexpr std::uint32_t kAtOnce = 0, kEachBlank = 1, kEachBlankWaiting = 2;
    // Failures of threads that have not, or already have, the context.
    static constexpr std::uint32_t kNotOwner = 288, kWouldDeadlock = 1131;

    CDrawImageDirectX(platform::IWindowSystem& windows, platform::ISpriteSystem& sprites,
                      std::uint32_t presentation, bool preserve)
        : CDrawImage(windows),
          sprites_(sprites),
          presentMode(presentation),
          preserveFloatingPoint(preserve ? 1 : 0) {}
    // A context that is still out ends with it.
    ~CDrawImageDirectX() override;

    // 1131: this thread has the context already.
    std::uint32_t GetDC(TavraDC* dc) override;
    // 288: this thread has no context. 87: it has another one. Nothing changes then. Null: nothing to
    // release.
    std::uint32_t ReleaseDC(TavraDC dc) override;
    // These two remove what was drawn. 1131: this thread has the context.
    std::uint32_t SetColorKey(std::uint32_t color) override;
    std::uint32_t ResetOverlay() override;
    std::uint32_t GetColorKey(std::uint32_t* color) override;
    std::uint32_t SetImageSize(std::uint32_t width, std::uint32_t height, std::uint32_t bits) override;
    std::uint32_t OnSize(std::uint32_t kind, std::uint32_t width, std::uint32_t height) override;
    std::uint32_t Initialize() override;
    // 13: the bitmap is not of the format that was told.
    std::uint32_t DrawImage(const Rectangle& source, const Rectangle& destination,
                            const BackgroundRectangles& background, const DrawImageInfo& info) override;
    void endWaiting() override { drawMutex.end(); }

  private:
    struct ImageFormat {
        std::uint32_t width, height, bits;
    };
    // What is to be carried out when drawMutex is free.
    struct Due {
        std::optional<ImageFormat> image;
        std::optional<platform::Size> client;
    };

    // All of these with drawMutex taken.
    std::uint32_t CreateDevice();
    std::uint32_t createObjects();
    std::uint32_t createOnBestDevice();
    void releaseAll();
    std::uint32_t createDrawing();
    std::uint32_t paintKeyColor();
    void releaseDrawing();
    std::uint32_t copyDrawing();
    std::uint32_t fitDevice(const DrawImageInfo& info);
    std::uint32_t upload(const DrawImageInfo& info);
    std::uint32_t Render(const Rectangle& source, const Rectangle& destination,
                         const BackgroundRectangles& background);
    std::uint32_t clearBackground(const BackgroundRectangles& background);
    void drawSprites(const Rectangle& source, const Rectangle& destination);
    std::uint32_t recover();
    std::uint32_t carryOutDue();

    std::uint32_t settle();  // without it
    std::uint32_t refused() const;
    template <typename Note>
    void noteDue(Note note) {
        const std::lock_guard lock(dueMutex_);
        note(due_);
    }

    platform::ISpriteSystem& sprites_;
    const std::uint32_t presentMode;
    const std::uint32_t preserveFloatingPoint;

    DrawMutex drawMutex;
    std::unique_ptr<platform::ISpriteObject> direct3D;
    std::unique_ptr<platform::ISpriteDevice> device;
    std::unique_ptr<platform::ISprite> sprite;
    std::unique_ptr<platform::ISpriteTexture> imageTexture;
    std::unique_ptr<platform::ISpriteSurface> keySurface;  // in system memory
    std::unique_ptr<platform::ISpriteTexture> keyTexture;
    std::uint32_t drawingActive = 0;  // 1 while the two above exist
    platform::PresentParameters presentParameters;
    std::uint32_t rotated = 0;
    std::uint32_t colorKey = 0xFF00FF;  // 0x00BBGGRR

    platform::Size client_;   // of the window, and of what was made for it
    platform::Size drawing_;  // of keySurface
    TavraDC lent_ = nullptr;  // the context that is out
    // The texture has not the image of lastFrameId, whatever that says.
    std::atomic<bool> imageDue_{true};

    std::mutex dueMutex_;  // never held while waiting
    Due due_;
};

}  // namespace tavra
