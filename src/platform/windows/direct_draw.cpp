// Surfaces of DirectDraw 7, whose library is loaded when the first device is asked for. Every object keeps
// those that it needs.
#include <ddraw.h>
#include <windows.h>

#include <cstring>
#include <memory>
#include <utility>

#include "base/first_failure.h"
#include "platform/last_error.h"
#include "platform/surface_device.h"

namespace tavra::platform {
namespace {

constexpr GUID kDirectDraw7 = {0x15E65EC0, 0x3B9C, 0x11D2, {0xB9, 0x2F, 0x00, 0x60, 0x97, 0x97, 0xEA, 0x5B}};

constexpr DWORD kEnumerateAll =
    DDENUM_ATTACHEDSECONDARYDEVICES | DDENUM_DETACHEDSECONDARYDEVICES | DDENUM_NONDISPLAYDEVICES;

struct ReleaseObject {
    void operator()(IUnknown* object) const { object->Release(); }
};
template <typename T>
using Owned = std::unique_ptr<T, ReleaseObject>;

Status resultOf(HRESULT result) {
    return FAILED(result) ? Status(static_cast<std::uint32_t>(result)) : Status();
}

RECT native(const Rectangle& r) {
    return {r.left, r.top, r.right, r.bottom};
}

template <typename Record>
Record recordOfSize() {
    Record record;
    std::memset(&record, 0, sizeof record);
    record.dwSize = sizeof record;
    return record;
}

DDPIXELFORMAT native(const SurfaceFormat& format) {
    auto pixels = recordOfSize<DDPIXELFORMAT>();
    if (format.fourCc != 0) {
        pixels.dwFlags = DDPF_FOURCC;
        pixels.dwFourCC = format.fourCc;
        pixels.dwYUVBitCount = format.bits;
        return pixels;
    }
    pixels.dwFlags = DDPF_RGB;
    pixels.dwRGBBitCount = format.bits;
    pixels.dwRBitMask = format.red;
    pixels.dwGBitMask = format.green;
    pixels.dwBBitMask = format.blue;
    return pixels;
}

class Clipper final : public IClipper {
  public:
    explicit Clipper(IDirectDrawClipper* clipper) : clipper_(clipper) {}
    IDirectDrawClipper* raw() const { return clipper_.get(); }

  private:
    Owned<IDirectDrawClipper> clipper_;
};

class Surface final : public ISurface {
  public:
    // Keeps the device: some systems take the surfaces of one that goes away along with it.
    Surface(IDirectDraw7& device, IDirectDrawSurface7* surface) : device_(&device), surface_(surface) {
        device_->AddRef();
    }

    Status format(SurfaceFormat& format) override {
        auto pixels = recordOfSize<DDPIXELFORMAT>();
        TAVRA_RETURN_IF_ERROR(resultOf(surface_->GetPixelFormat(&pixels)));
        format.fourCc = (pixels.dwFlags & DDPF_FOURCC) != 0 ? pixels.dwFourCC : 0;
        format.bits = pixels.dwRGBBitCount;
        format.red = pixels.dwRBitMask;
        format.green = pixels.dwGBitMask;
        format.blue = pixels.dwBBitMask;
        return Status();
    }
    Status testLost() override { return resultOf(surface_->IsLost()); }

    Status blit(const Rectangle& destination, ISurface& from, const Rectangle& source) override {
        RECT to = native(destination), part = native(source);
        return resultOf(surface_->Blt(&to, rawOf(from), &part, DDBLT_WAIT, nullptr));
    }
    Status fill(const Rectangle* destination, std::uint32_t color) override {
        auto effect = recordOfSize<DDBLTFX>();
        effect.dwFillColor = color;
        RECT to = destination != nullptr ? native(*destination) : RECT{};
        return resultOf(surface_->Blt(destination != nullptr ? &to : nullptr, nullptr, nullptr,
                                      DDBLT_COLORFILL | DDBLT_WAIT, &effect));
    }
    Status blitKeyed(std::int32_t x, std::int32_t y, ISurface& from, const Rectangle& source) override {
        RECT part = native(source);
        return resultOf(surface_->BltFast(static_cast<DWORD>(x), static_cast<DWORD>(y), rawOf(from), &part,
                                          DDBLTFAST_SRCCOLORKEY | DDBLTFAST_WAIT));
    }
    Status lockForWriting(LockedSurface& locked) override {
        auto description = recordOfSize<DDSURFACEDESC2>();
        TAVRA_RETURN_IF_ERROR(
            resultOf(surface_->Lock(nullptr, &description, DDLOCK_WRITEONLY | DDLOCK_WAIT, nullptr)));
        locked.pixels = static_cast<std::uint8_t*>(description.lpSurface);
        locked.pitch = static_cast<std::size_t>(description.lPitch);
        return Status();
    }
    Status unlock() override { return resultOf(surface_->Unlock(nullptr)); }

    Status setSourceKey(std::uint32_t color) override {
        DDCOLORKEY key{color, color};
        return resultOf(surface_->SetColorKey(DDCKEY_SRCBLT, &key));
    }
    Status setClipper(IClipper& clipper) override {
        return resultOf(surface_->SetClipper(static_cast<Clipper&>(clipper).raw()));
    }
    Status showOverlay(const Rectangle& source, ISurface& screen, const Rectangle& destination,
                       std::uint32_t key) override {
        auto effect = recordOfSize<DDOVERLAYFX>();
        effect.dckDestColorkey = {key, key};
        RECT part = native(source), to = native(destination);
        return resultOf(surface_->UpdateOverlay(&part, rawOf(screen), &to,
                                                DDOVER_SHOW | DDOVER_KEYDESTOVERRIDE, &effect));
    }

    Status getDC(TavraDC& dc) override {
        HDC context = nullptr;
        TAVRA_RETURN_IF_ERROR(resultOf(surface_->GetDC(&context)));
        dc = context;
        return Status();
    }
    Status releaseDC(TavraDC dc) override { return resultOf(surface_->ReleaseDC(static_cast<HDC>(dc))); }
    Status readFirstPixel(std::uint32_t& color) override {
        HDC context = nullptr;
        TAVRA_RETURN_IF_ERROR(resultOf(surface_->GetDC(&context)));
        color = GetPixel(context, 0, 0);
        return resultOf(surface_->ReleaseDC(context));
    }
    Status paintSolid(std::uint32_t color) override {
        auto description = recordOfSize<DDSURFACEDESC2>();
        TAVRA_RETURN_IF_ERROR(resultOf(surface_->GetSurfaceDesc(&description)));
        HDC context = nullptr;
        TAVRA_RETURN_IF_ERROR(resultOf(surface_->GetDC(&context)));
        const Status filled = fillSolid(context,
                                        {0, 0, static_cast<std::int32_t>(description.dwWidth),
                                         static_cast<std::int32_t>(description.dwHeight)},
                                        color);
        return firstFailure(filled, resultOf(surface_->ReleaseDC(context)));
    }

  private:
    static IDirectDrawSurface7* rawOf(ISurface& surface) {
        return static_cast<Surface&>(surface).surface_.get();
    }

    Owned<IDirectDraw7> device_;
    Owned<IDirectDrawSurface7> surface_;
};

DDSURFACEDESC2 native(const SurfaceDescription& asked) {
    auto description = recordOfSize<DDSURFACEDESC2>();
    description.dwFlags = DDSD_CAPS;
    if (asked.kind == SurfaceKind::Primary) {
        description.ddsCaps.dwCaps = DDSCAPS_PRIMARYSURFACE;
        return description;
    }
    description.ddsCaps.dwCaps =
        DDSCAPS_VIDEOMEMORY | (asked.kind == SurfaceKind::Overlay ? DDSCAPS_OVERLAY : DDSCAPS_OFFSCREENPLAIN);
    description.dwFlags |= DDSD_WIDTH | DDSD_HEIGHT | DDSD_PIXELFORMAT;
    description.dwWidth = asked.size.width;
    description.dwHeight = asked.size.height;
    description.ddpfPixelFormat = native(asked.format);
    return description;
}

class Device final : public ISurfaceDevice {
  public:
    explicit Device(IDirectDraw7* device) : device_(device) {}

    Status cooperate(TavraWindow window) override {
        return resultOf(device_->SetCooperativeLevel(static_cast<HWND>(window), DDSCL_NORMAL));
    }
    Status createSurface(const SurfaceDescription& asked, std::shared_ptr<ISurface>& surface) override {
        DDSURFACEDESC2 description = native(asked);
        IDirectDrawSurface7* made = nullptr;
        TAVRA_RETURN_IF_ERROR(resultOf(device_->CreateSurface(&description, &made, nullptr)));
        surface = std::make_shared<Surface>(*device_, made);
        return Status();
    }
    Status createClipper(TavraWindow window, std::shared_ptr<IClipper>& clipper) override {
        IDirectDrawClipper* raw = nullptr;
        TAVRA_RETURN_IF_ERROR(resultOf(device_->CreateClipper(0, &raw, nullptr)));
        auto made = std::make_shared<Clipper>(raw);
        TAVRA_RETURN_IF_ERROR(resultOf(raw->SetHWnd(0, static_cast<HWND>(window))));
        clipper = std::move(made);
        return Status();
    }
    Status overlayAlignment(std::uint32_t& alignment) override {
        auto capabilities = recordOfSize<DDCAPS>();
        TAVRA_RETURN_IF_ERROR(resultOf(device_->GetCaps(&capabilities, nullptr)));
        const bool given = (capabilities.dwCaps & DDCAPS_ALIGNSIZESRC) != 0;
        alignment = given ? capabilities.dwAlignSizeSrc : 0;
        return Status();
    }
    void show(IPaint&, const Rectangle&) override {}
    void showSoon() override {}

  private:
    Owned<IDirectDraw7> device_;
};

// The library, kept until the process ends.
struct Library {
    decltype(&DirectDrawCreateEx) create = nullptr;
    decltype(&DirectDrawEnumerateExA) enumerate = nullptr;
    Status status;

    Library() : status(load()) {}

  private:
    Status load() {
        const HMODULE module = LoadLibraryW(L"ddraw.dll");
        if (module == nullptr) return Status(error::kModuleNotFound);
        const bool complete =
            look(module, "DirectDrawCreateEx", create) && look(module, "DirectDrawEnumerateExA", enumerate);
        return complete ? Status() : Status(error::kOperationNotFound);
    }
    template <typename Function>
    static bool look(HMODULE module, const char* name, Function& function) {
        function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
        return function != nullptr;
    }
};

const Library& library() {
    static const Library loaded;
    return loaded;
}

using TellDevice = std::function<void(MonitorHandle, const SurfaceDeviceId&)>;

// The default device stands for no monitor, and has no number.
BOOL CALLBACK onDevice(GUID* guid, char*, char*, void* context, HMONITOR monitor) {
    if (guid == nullptr) return TRUE;
    SurfaceDeviceId id{};
    static_assert(sizeof id == sizeof *guid);
    std::memcpy(id.data(), guid, sizeof id);
    (*static_cast<const TellDevice*>(context))(monitor, id);
    return TRUE;
}

class DirectDrawSystem final : public ISurfaceSystem {
  public:
    Status monitorOf(TavraWindow window, Monitor& monitor) override {
        RECT place{};
        if (!GetWindowRect(static_cast<HWND>(window), &place)) return Status(lastSystemError());
        const HMONITOR under = MonitorFromRect(&place, MONITOR_DEFAULTTOPRIMARY);
        MONITORINFO information{};
        information.cbSize = sizeof information;
        if (!GetMonitorInfoW(under, &information)) return Status(lastSystemError());
        const RECT& area = information.rcMonitor;
        monitor = {under, {area.left, area.top, area.right, area.bottom}};
        return Status();
    }
    Status enumerateDevices(const TellDevice& tell) override {
        TAVRA_RETURN_IF_ERROR(library().status);
        return resultOf(library().enumerate(onDevice, const_cast<TellDevice*>(&tell), kEnumerateAll));
    }
    Status createDevice(const SurfaceDeviceId* id, std::shared_ptr<ISurfaceDevice>& device) override {
        TAVRA_RETURN_IF_ERROR(library().status);
        GUID guid{};
        if (id != nullptr) std::memcpy(&guid, id->data(), sizeof guid);
        void* made = nullptr;
        TAVRA_RETURN_IF_ERROR(
            resultOf(library().create(id != nullptr ? &guid : nullptr, &made, kDirectDraw7, nullptr)));
        device = std::make_shared<Device>(static_cast<IDirectDraw7*>(made));
        return Status();
    }
};

}  // namespace

ISurfaceSystem& surfaceSystem() {
    static DirectDrawSystem system;
    return system;
}

}  // namespace tavra::platform
