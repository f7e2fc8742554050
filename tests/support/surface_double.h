// Surfaces without pixels: a system that writes down what is asked of it, as one line of text each, and fails
// where a test says. Surfaces are named by their kind, those off screen by their number among those of one
// device.
#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/surface_device.h"
#include "support/recording_paint.h"

namespace tavra::test {

class SurfaceSystemDouble final : public platform::ISurfaceSystem {
  public:
    static constexpr std::uint32_t kFailure = 0x88760FFF;

    Status monitorOf(TavraWindow, platform::Monitor& result) override {
        result = monitor;
        return note("monitor");
    }
    Status enumerateDevices(
        const std::function<void(platform::MonitorHandle, const platform::SurfaceDeviceId&)>& tell) override {
        for (const auto& [handle, number] : devices) {
            platform::SurfaceDeviceId id{};
            id[0] = number;
            tell(handle, id);
        }
        return note("enumerate");
    }
    Status createDevice(const platform::SurfaceDeviceId* id,
                        std::shared_ptr<platform::ISurfaceDevice>& device) override {
        const std::string name = id != nullptr ? std::to_string((*id)[0]) : std::string("default");
        TAVRA_RETURN_IF_ERROR(note("device " + name));
        offscreens = 0;
        device = std::make_shared<Device>(*this);
        return Status();
    }

    // The next operation but `before` fails.
    void failAfter(std::size_t before) { failAt = operations + before + 1; }
    std::vector<std::string> takeLog() { return std::exchange(log, {}); }

    platform::MonitorHandle handleOf(std::uintptr_t number) { return &screens[number]; }

    std::vector<std::string> log;
    std::size_t operations = 0;
    std::size_t failAt = 0;
    int alive = 0;  // devices, surfaces and clippers
    bool contextOut = false;

    char screens[4] = {};
    platform::Monitor monitor{&screens[1], {0, 0, 1280, 1024}};
    std::vector<std::pair<platform::MonitorHandle, std::uint8_t>> devices;
    platform::SurfaceFormat screenFormat{32, 0, 0xFF0000, 0xFF00, 255};
    std::vector<platform::SurfaceFormat> refused;                 // formats that cannot be had
    std::map<std::string, platform::SurfaceFormat> otherFormats;  // than asked for, by the surface
    std::uint32_t alignment = 0;
    bool lost = false;
    std::uint32_t firstPixel = 0xFF00FF;  // of every surface, as a context reads it
    std::vector<std::uint8_t> memory;     // of a locked surface
    std::size_t pitch = 0;

  private:
    Status note(std::string line) {
        log.push_back(std::move(line));
        return ++operations == failAt ? Status(kFailure) : Status();
    }
    static std::string hex(std::uint32_t value) {
        char text[12];
        std::snprintf(text, sizeof text, "%x", static_cast<unsigned>(value));
        return text;
    }

    class Counted {
      public:
        explicit Counted(SurfaceSystemDouble& system) : system_(system) { ++system_.alive; }
        ~Counted() { --system_.alive; }
        Counted(const Counted&) = delete;
        Counted& operator=(const Counted&) = delete;

      protected:
        SurfaceSystemDouble& system_;
    };

    class Clipper final : public platform::IClipper, Counted {
      public:
        explicit Clipper(SurfaceSystemDouble& system) : Counted(system) {}
    };

    class Surface final : public platform::ISurface, Counted {
      public:
        Surface(SurfaceSystemDouble& system, std::string called, const platform::SurfaceFormat& format)
            : Counted(system), name(std::move(called)), format_(format) {}

        Status format(platform::SurfaceFormat& result) override {
            const auto other = system_.otherFormats.find(name);
            result = other != system_.otherFormats.end() ? other->second : format_;
            return system_.note(name + " format");
        }
        Status testLost() override {
            const Status status = system_.note(name + " lost?");
            return system_.lost ? Status(0x887601C2) : status;
        }
        Status blit(const platform::Rectangle& to, platform::ISurface& from,
                    const platform::Rectangle& part) override {
            return system_.note(name + " " + textOf(to) + " = " + nameOf(from) + " " + textOf(part));
        }
        Status fill(const platform::Rectangle* to, std::uint32_t color) override {
            return system_.note(name + " fill " + (to != nullptr ? textOf(*to) : "all") + " " + hex(color));
        }
        Status blitKeyed(std::int32_t x, std::int32_t y, platform::ISurface& from,
                         const platform::Rectangle& part) override {
            return system_.note(name + " at " + std::to_string(x) + "," + std::to_string(y) + " keyed " +
                                nameOf(from) + " " + textOf(part));
        }
        Status lockForWriting(platform::LockedSurface& locked) override {
            locked = {system_.memory.data(), system_.pitch};
            return system_.note(name + " lock");
        }
        Status unlock() override { return system_.note(name + " unlock"); }
        Status setSourceKey(std::uint32_t color) override {
            return system_.note(name + " key " + hex(color));
        }
        Status setClipper(platform::IClipper&) override { return system_.note(name + " clipper"); }
        Status showOverlay(const platform::Rectangle& part, platform::ISurface& screen,
                           const platform::Rectangle& to, std::uint32_t key) override {
            return system_.note(name + " " + textOf(part) + " over " + nameOf(screen) + " " + textOf(to) +
                                " key " + hex(key));
        }
        Status getDC(TavraDC& dc) override {
            const Status status = system_.note(name + " dc");
            if (!status.ok()) return status;
            if (system_.contextOut) return Status(platform::kSurfaceContextOut);
            system_.contextOut = true;
            dc = this;
            return status;
        }
        Status releaseDC(TavraDC) override {
            system_.contextOut = false;
            return system_.note(name + " release dc");
        }
        Status readFirstPixel(std::uint32_t& color) override {
            color = system_.firstPixel;
            return system_.note(name + " read");
        }
        Status paintSolid(std::uint32_t color) override {
            return system_.note(name + " paint " + hex(color));
        }

        const std::string name;

      private:
        static std::string nameOf(platform::ISurface& surface) { return static_cast<Surface&>(surface).name; }
        const platform::SurfaceFormat format_;
    };

    class Device final : public platform::ISurfaceDevice, Counted {
      public:
        explicit Device(SurfaceSystemDouble& system) : Counted(system) {}

        Status cooperate(TavraWindow) override { return system_.note("cooperate"); }
        Status createSurface(const platform::SurfaceDescription& description,
                             std::shared_ptr<platform::ISurface>& surface) override {
            const bool primary = description.kind == platform::SurfaceKind::Primary;
            std::string name = "primary";
            if (description.kind == platform::SurfaceKind::Overlay) name = "overlay";
            const bool offscreen = description.kind == platform::SurfaceKind::Offscreen;
            if (offscreen) name = "off" + std::to_string(system_.offscreens + 1);
            const platform::SurfaceFormat format = primary ? system_.screenFormat : description.format;
            TAVRA_RETURN_IF_ERROR(system_.note("create " + name + (primary ? "" : textOf(description))));
            for (const platform::SurfaceFormat& no : system_.refused) {
                if (format == no) return Status(platform::kSurfaceInvalidFormat);
            }
            if (offscreen) ++system_.offscreens;
            surface = std::make_shared<Surface>(system_, name, format);
            return Status();
        }
        Status createClipper(TavraWindow, std::shared_ptr<platform::IClipper>& clipper) override {
            TAVRA_RETURN_IF_ERROR(system_.note("create clipper"));
            clipper = std::make_shared<Clipper>(system_);
            return Status();
        }
        Status overlayAlignment(std::uint32_t& result) override {
            result = system_.alignment;
            return system_.note("alignment");
        }
        void show(platform::IPaint&, const platform::Rectangle& client) override {
            system_.log.push_back("show " + tavra::test::textOf(client));
        }
        void showSoon() override { system_.log.push_back("show soon"); }

      private:
        static std::string textOf(const platform::SurfaceDescription& description) {
            const platform::SurfaceFormat& format = description.format;
            return " " + std::to_string(description.size.width) + "x" +
                   std::to_string(description.size.height) + " " + std::to_string(format.bits) + ":" +
                   (format.fourCc != 0 ? "uyvy" : hex(format.red));
        }
    };

    int offscreens = 0;
};

}  // namespace tavra::test
