#include "support/sprite_double.h"

#include <utility>

#include "support/recording_paint.h"

namespace tavra::test {
namespace {

using namespace platform;

std::string sizeText(Size size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::string formatText(SpriteFormat format) {
    return format == SpriteFormat::A8R8G8B8 ? "argb" : "xrgb";
}

// Whole numbers and quarters are enough.
std::string numberText(float value) {
    std::string text = std::to_string(value);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

class Counted {
  public:
    explicit Counted(SpriteDouble& owner) : owner_(owner) { ++owner_.alive; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

  protected:
    ~Counted() { --owner_.alive; }

    std::uint32_t lockCounted(const std::string& line, int change) {
        const std::uint32_t result = owner_.operation(line);
        if (result == 0) owner_.locks += change;
        return result;
    }

    SpriteDouble& owner_;
};

class Texture final : public ISpriteTexture, Counted {
  public:
    Texture(SpriteDouble& owner, Size size) : Counted(owner), index_(owner.textures.size()) {
        content_ = {size, std::vector<std::uint32_t>(std::size_t{size.width} * size.height, 0xDDDDDDDD)};
        owner_.textures.push_back(&content_);
    }
    ~Texture() override {
        owner_.textures[index_] = nullptr;
        owner_.log.push_back("release texture " + std::to_string(index_));
    }
    std::size_t index() const { return index_; }
    std::uint32_t lock(LockedPixels& pixels) override {
        const std::uint32_t result = lockCounted("lockTexture " + std::to_string(index_), 1);
        if (result == 0)
            pixels = {reinterpret_cast<std::uint8_t*>(content_.pixels.data()),
                      std::size_t{content_.size.width} * 4};
        return result;
    }
    std::uint32_t unlock() override {
        --owner_.locks;
        return owner_.operation("unlockTexture " + std::to_string(index_));
    }

  private:
    std::size_t index_;
    SpriteDouble::Texture content_;
};

class Surface final : public ISpriteSurface, Counted {
  public:
    Surface(SpriteDouble& owner, Size size, std::string name) : Counted(owner), name_(std::move(name)) {
        made_ = bitmap_.create({size.width, size.height, 32}).ok();
    }
    ~Surface() override { owner_.log.push_back("release " + name_); }
    std::uint32_t lock(LockedPixels& pixels) override {
        pixels = {bitmap_.pixels(), bitmap_.shape().stride()};
        return lockCounted("lock " + name_, 1);
    }
    std::uint32_t unlock() override {
        --owner_.locks;
        return owner_.operation("unlock " + name_);
    }
    std::uint32_t getDC(TavraDC& dc) override {
        const std::uint32_t result = lockCounted("getDC", 1);
        if (result != 0) return result;
        context_ = std::make_unique<MemoryContext>(bitmap_);
        dc = context_->dc();
        return made_ && dc != nullptr ? 0 : SpriteDouble::kFailure;
    }
    std::uint32_t releaseDC(TavraDC) override {
        context_.reset();
        for (std::size_t i = 3; i < bitmap_.shape().bytes(); i += 4) bitmap_.pixels()[i] = 0;
        --owner_.locks;
        return owner_.operation("releaseDC");
    }

  private:
    std::string name_;
    bool made_ = false;
    Bitmap bitmap_;
    std::unique_ptr<MemoryContext> context_;
};

class Sprite final : public ISprite, Counted {
  public:
    explicit Sprite(SpriteDouble& owner) : Counted(owner) {}
    ~Sprite() override { owner_.log.push_back("release sprite"); }
    std::uint32_t begin(std::uint32_t flags) override {
        const std::uint32_t result = owner_.operation("begin " + std::to_string(flags));
        if (result == 0) owner_.spriteOpen = true;
        return result;
    }
    std::uint32_t setTransform(const SpriteScale& scale) override {
        return owner_.operation("transform " + numberText(scale.x) + " " + numberText(scale.y));
    }
    std::uint32_t draw(ISpriteTexture& texture, const Rectangle& source, const SpritePosition& position,
                       std::uint32_t color) override {
        const std::string white = color == 0xFFFFFFFF ? "" : " in another colour";
        return owner_.operation("draw " + std::to_string(static_cast<Texture&>(texture).index()) + " from " +
                                textOf(source) + " at " + numberText(position.x) + "," +
                                numberText(position.y) + white);
    }
    std::uint32_t end() override {
        owner_.spriteOpen = false;
        return owner_.operation("end");
    }
};

class Device final : public ISpriteDevice, Counted {
  public:
    Device(SpriteDouble& owner, Size client) : Counted(owner), client_(client) {}
    ~Device() override { owner_.log.push_back("release device"); }
    std::uint32_t testCooperativeLevel() override { return owner_.operation("test"); }
    std::uint32_t reset(const PresentParameters& parameters) override {
        const bool same = parameters == owner_.parameters;
        return owner_.operation(same ? "reset" : "reset to other parameters");
    }
    std::uint32_t createTexture(Size size, SpriteFormat format,
                                std::unique_ptr<ISpriteTexture>& texture) override {
        return make("texture " + sizeText(size) + " " + formatText(format),
                    [&] { texture = std::make_unique<Texture>(owner_, size); });
    }
    std::uint32_t createOffscreenSurface(Size size, SpriteFormat format,
                                         std::unique_ptr<ISpriteSurface>& surface) override {
        return make("surface " + sizeText(size) + " " + formatText(format),
                    [&] { surface = std::make_unique<Surface>(owner_, size, "surface"); });
    }
    std::uint32_t createSprite(std::unique_ptr<ISprite>& sprite) override {
        return make("sprite", [&] { sprite = std::make_unique<Sprite>(owner_); });
    }
    std::uint32_t clear(std::span<const Rectangle> rectangles, std::uint32_t flags, std::uint32_t color,
                        float depth, std::uint32_t stencil) override {
        std::string line = "clear " + std::to_string(rectangles.size());
        for (const Rectangle& rectangle : rectangles) line += " " + textOf(rectangle);
        if (flags != 3 || color != 0xFF000000 || depth != 1 || stencil != 0) line += " otherwise";
        return owner_.operation(line);
    }
    std::uint32_t beginScene() override {
        const std::uint32_t result = owner_.operation("beginScene");
        if (result == 0) owner_.sceneOpen = true;
        return result;
    }
    std::uint32_t endScene() override {
        owner_.sceneOpen = false;
        return owner_.operation("endScene");
    }
    std::uint32_t backBuffer(std::unique_ptr<ISpriteSurface>& surface) override {
        return make("backBuffer",
                    [&] { surface = std::make_unique<Surface>(owner_, client_, "backBuffer"); });
    }
    std::uint32_t present() override { return owner_.operation("present"); }

  private:
    template <typename Make>
    std::uint32_t make(const std::string& line, Make made) {
        const std::uint32_t result = owner_.operation(line);
        if (result == 0) made();
        return result;
    }

    Size client_;
};

class Object final : public ISpriteObject, Counted {
  public:
    explicit Object(SpriteDouble& owner) : Counted(owner) {}
    ~Object() override { owner_.log.push_back("release object"); }
    std::uint32_t displayMode(DisplayMode& mode) override {
        mode = {1280, 1024};
        return owner_.operation("mode");
    }
    std::uint32_t createDevice(const DeviceRequest& request, const PresentParameters& parameters,
                               std::unique_ptr<ISpriteDevice>& device) override {
        const std::string kind = request.kind == DeviceKind::Hardware ? "hardware" : "reference";
        const std::uint32_t result = owner_.operation(
            "device " + kind + " " + std::to_string(request.behaviour) + " on " + sizeText(request.client));
        if (result != 0) return result;
        if (owner_.failDevices > 0) {
            --owner_.failDevices;
            return SpriteDouble::kFailure;
        }
        owner_.parameters = parameters;
        owner_.window = request.window;
        device = std::make_unique<Device>(owner_, request.client);
        return 0;
    }
};

}  // namespace

std::uint32_t SpriteDouble::createObject(std::unique_ptr<ISpriteObject>& object) {
    const std::uint32_t result = operation("object");
    if (result == 0) object = std::make_unique<Object>(*this);
    return result;
}

std::uint32_t SpriteDouble::operation(const std::string& line) {
    log.push_back(line);
    if (failAt >= 0 && failAt-- == 0) return kFailure;
    const auto found = results.find(line.substr(0, line.find(' ')));
    return found == results.end() ? 0 : found->second;
}

std::vector<std::string> SpriteDouble::takeLog() {
    return std::exchange(log, {});
}

}  // namespace tavra::test
