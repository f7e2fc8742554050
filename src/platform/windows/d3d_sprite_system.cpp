// Sprites with Direct3D 9 and D3DX, loaded when the first object is made and kept until the process ends.
#include <windows.h>

#include <algorithm>
#include <array>
#include <string>

#include "base/error_codes.h"
#include "platform/windows/d3d_sprites.h"

namespace tavra::platform {
namespace {

// The libraries' two ways in.
struct D3dLibrary {
    using CreateObject = IDirect3D9*(WINAPI*)(UINT);
    using CreateSprite = HRESULT(WINAPI*)(IDirect3DDevice9*, ID3DXSprite**);

    CreateObject createObject = nullptr;
    CreateSprite createSprite = nullptr;
    std::uint32_t failure = 0;

    D3dLibrary() {
        const HMODULE d3d = LoadLibraryW(L"d3d9.dll");
        const HMODULE d3dx = loadD3dx();
        if (d3d == nullptr || d3dx == nullptr) {
            failure = error::kModuleNotFound;
            return;
        }
        look(d3d, "Direct3DCreate9", createObject);
        look(d3dx, "D3DXCreateSprite", createSprite);
    }

  private:
    // The newest that is installed; each has a number of its own.
    static HMODULE loadD3dx() {
        constexpr int kNewest = 43, kOldest = 24;
        for (int number = kNewest; number >= kOldest; --number) {
            const std::wstring name = L"d3dx9_" + std::to_wstring(number) + L".dll";
            if (const HMODULE library = LoadLibraryW(name.c_str())) return library;
        }
        return nullptr;
    }
    template <typename Function>
    void look(HMODULE library, const char* name, Function& function) {
        function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
        if (function == nullptr) failure = error::kOperationNotFound;
    }
};

const D3dLibrary& d3dLibrary() {
    static const D3dLibrary library;
    return library;
}

D3DPRESENT_PARAMETERS nativeOf(const PresentParameters& parameters) {
    D3DPRESENT_PARAMETERS native{};
    native.BackBufferWidth = parameters.backBufferWidth;
    native.BackBufferHeight = parameters.backBufferHeight;
    native.BackBufferFormat = static_cast<D3DFORMAT>(parameters.backBufferFormat);
    native.BackBufferCount = parameters.backBufferCount;
    native.SwapEffect = static_cast<D3DSWAPEFFECT>(parameters.swapEffect);
    native.hDeviceWindow = static_cast<HWND>(parameters.deviceWindow);
    native.Windowed = parameters.windowed;
    native.EnableAutoDepthStencil = parameters.autoDepthStencil;
    native.AutoDepthStencilFormat = static_cast<D3DFORMAT>(parameters.depthStencilFormat);
    native.Flags = parameters.flags;
    native.PresentationInterval = parameters.interval;
    return native;
}

class D3dDevice final : public ISpriteDevice {
  public:
    explicit D3dDevice(IDirect3DDevice9* device) : device_(device) {}

    std::uint32_t testCooperativeLevel() override { return codeOf(device_->TestCooperativeLevel()); }
    std::uint32_t reset(const PresentParameters& parameters) override {
        D3DPRESENT_PARAMETERS native = nativeOf(parameters);
        return codeOf(device_->Reset(&native));
    }

    std::uint32_t createTexture(Size size, SpriteFormat format,
                                std::unique_ptr<ISpriteTexture>& texture) override {
        IDirect3DTexture9* made = nullptr;
        const HRESULT result = device_->CreateTexture(
            size.width, size.height, 1, 0, static_cast<D3DFORMAT>(format), D3DPOOL_MANAGED, &made, nullptr);
        if (SUCCEEDED(result)) texture = std::make_unique<D3dTexture>(made);
        return codeOf(result);
    }
    std::uint32_t createOffscreenSurface(Size size, SpriteFormat format,
                                         std::unique_ptr<ISpriteSurface>& surface) override {
        IDirect3DSurface9* made = nullptr;
        const HRESULT result = device_->CreateOffscreenPlainSurface(
            size.width, size.height, static_cast<D3DFORMAT>(format), D3DPOOL_SYSTEMMEM, &made, nullptr);
        if (SUCCEEDED(result)) surface = std::make_unique<D3dSurface>(made);
        return codeOf(result);
    }
    std::uint32_t createSprite(std::unique_ptr<ISprite>& sprite) override {
        ID3DXSprite* made = nullptr;
        const HRESULT result = d3dLibrary().createSprite(device_.get(), &made);
        if (SUCCEEDED(result)) sprite = std::make_unique<D3dSprite>(made);
        return codeOf(result);
    }

    std::uint32_t clear(std::span<const Rectangle> rectangles, std::uint32_t flags, std::uint32_t color,
                        float depth, std::uint32_t stencil) override {
        std::array<D3DRECT, 4> native{};
        const std::size_t count = std::min(rectangles.size(), native.size());
        for (std::size_t i = 0; i < count; ++i) {
            const Rectangle& rectangle = rectangles[i];
            native[i] = {rectangle.left, rectangle.top, rectangle.right, rectangle.bottom};
        }
        return codeOf(device_->Clear(static_cast<DWORD>(count), native.data(), flags, color, depth, stencil));
    }
    std::uint32_t beginScene() override { return codeOf(device_->BeginScene()); }
    std::uint32_t endScene() override { return codeOf(device_->EndScene()); }
    std::uint32_t backBuffer(std::unique_ptr<ISpriteSurface>& surface) override {
        IDirect3DSurface9* made = nullptr;
        const HRESULT result = device_->GetBackBuffer(0, 0, D3DBACKBUFFER_TYPE_MONO, &made);
        if (SUCCEEDED(result)) surface = std::make_unique<D3dSurface>(made);
        return codeOf(result);
    }
    std::uint32_t present() override { return codeOf(device_->Present(nullptr, nullptr, nullptr, nullptr)); }

  private:
    Owned<IDirect3DDevice9> device_;
};

class D3dObject final : public ISpriteObject {
  public:
    explicit D3dObject(IDirect3D9* object) : object_(object) {}

    std::uint32_t displayMode(DisplayMode& mode) override {
        D3DDISPLAYMODE native{};
        const HRESULT result = object_->GetAdapterDisplayMode(D3DADAPTER_DEFAULT, &native);
        mode = {native.Width, native.Height};
        return codeOf(result);
    }
    std::uint32_t createDevice(const DeviceRequest& request, const PresentParameters& parameters,
                               std::unique_ptr<ISpriteDevice>& device) override {
        D3DPRESENT_PARAMETERS native = nativeOf(parameters);
        IDirect3DDevice9* made = nullptr;
        const HRESULT result =
            object_->CreateDevice(D3DADAPTER_DEFAULT, static_cast<D3DDEVTYPE>(request.kind),
                                  static_cast<HWND>(request.window), request.behaviour, &native, &made);
        if (SUCCEEDED(result)) device = std::make_unique<D3dDevice>(made);
        return codeOf(result);
    }

  private:
    Owned<IDirect3D9> object_;
};

class D3dSystem final : public ISpriteSystem {
  public:
    std::uint32_t createObject(std::unique_ptr<ISpriteObject>& object) override {
        const D3dLibrary& library = d3dLibrary();
        if (library.failure != 0) return library.failure;
        IDirect3D9* const made = library.createObject(D3D_SDK_VERSION);
        if (made == nullptr) return sprite_error::kNotAvailable;
        object = std::make_unique<D3dObject>(made);
        return 0;
    }
};

static_assert(D3D_SDK_VERSION == 32);

}  // namespace

ISpriteSystem& spriteSystem() {
    static D3dSystem system;
    return system;
}

}  // namespace tavra::platform
