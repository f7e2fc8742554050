// What a preview window tells its draw object, in which order, and what becomes of the answers.
#include <map>
#include <memory>
#include <string>

#include "display/preview_fixture.h"

namespace tavra::test {
namespace {

std::string text(std::uint32_t width, std::uint32_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

// What the draw objects of a test have in common, which the window makes.
struct SharedRecord {
    std::vector<std::string>* log = nullptr;
    std::map<std::string, std::uint32_t> results;  // by the first word of what is written down
    TavraWindow window = nullptr;                  // of the creation
};
SharedRecord record;

// Writes down what it is told, behind what the window is asked for, and answers as the test says.
class RecordedDrawing final : public CDrawImage {
  public:
    using CDrawImage::CDrawImage;

    static std::shared_ptr<CDrawImage> make(std::uint8_t, platform::IWindowSystem& system) {
        return std::make_shared<RecordedDrawing>(system);
    }

    std::uint32_t EraseBackground(platform::IPaint*) override { return note("erase"); }
    std::uint32_t SetColorKey(std::uint32_t color) override {
        return note("key " + std::to_string(color) + " alpha " + std::to_string(alphaMask >> 24));
    }
    std::uint32_t ResetOverlay() override { return note("reset"); }
    std::uint32_t SetImageSize(std::uint32_t width, std::uint32_t height, std::uint32_t bits) override {
        return note("image " + text(width, height) + " " + std::to_string(bits));
    }
    std::uint32_t OnSize(std::uint32_t kind, std::uint32_t width, std::uint32_t height) override {
        return note("size " + std::to_string(kind) + " " + text(width, height));
    }
    std::uint32_t OnMove(std::int32_t x, std::int32_t y) override {
        return note("move " + std::to_string(x) + "," + std::to_string(y));
    }
    std::uint32_t Initialize() override {
        record.window = windowHandle;
        return note("initialize " + text(imageWidth, imageHeight) + " " + std::to_string(imageBits) +
                    " alpha " + std::to_string(alphaMask >> 24));
    }
    std::uint32_t DrawImage(const Rectangle&, const Rectangle&, const BackgroundRectangles&,
                            const DrawImageInfo&) override {
        return note("draw");
    }

  private:
    static std::uint32_t note(const std::string& line) {
        record.log->push_back(line);
        const auto result = record.results.find(line.substr(0, line.find(' ')));
        return result != record.results.end() ? result->second : 0;
    }
};

// A window of the fixture's system and camera, with a client area of 100 x 80 at (20, 30).
class PreviewDrawObject : public Preview {
  protected:
    PreviewDrawObject() {
        record = {&system.log, {}, nullptr};
        system.whenCreated = [this] { system.setClient(20, 30, 100, 80); };
    }
    ~PreviewDrawObject() override { record = {}; }

    void openRecorded() {
        ASSERT_TRUE(recorded.create({}).ok());
        system.takeLog();
        camera.takePosts();
    }
    void setResult(const std::string& operation, std::uint32_t code) { record.results = {{operation, code}}; }
    // What the window has for its end to tell since this was asked last.
    std::uint32_t noted() { return recorded.displayError.exchange(0); }

    PreviewWindow recorded{camera, system, RecordedDrawing::make};
};

// Creation.

TEST_F(PreviewDrawObject, IsToldOpacityKeyAndImageInThisOrder) {
    struct Row {
        std::uint32_t format, code;
    };
    recorded.setAlphaChannel(7);
    recorded.setColorKey(123456);
    for (const Row& row : {Row{1, 1}, Row{4, 8}, Row{8, 32}}) {  // mono, BGR in three bytes, and in four
        camera.format = row.format;
        ASSERT_TRUE(recorded.create({}).ok());
        EXPECT_THAT(system.takeLog(),
                    ElementsAre("register", "create", "key 123456 alpha 7",
                                "initialize 64x48 " + std::to_string(row.code) + " alpha 7", "invalidate"));
        EXPECT_EQ(record.window, system.handle());
        EXPECT_THAT(camera.takePosts(), ElementsAre(message(45059, windowNumber())));
        ASSERT_TRUE(recorded.destroy().ok());
        system.takeLog();
        camera.takePosts();
    }
}

// The image as the camera has it, also where it is shown turned.
TEST_F(PreviewDrawObject, IsToldTheImageBeforeItsRotation) {
    camera.rotated = true;
    ASSERT_TRUE(recorded.create({}).ok());
    EXPECT_THAT(system.log, testing::Contains("initialize 64x48 8 alpha 255"));
    system.takeLog();
    camera.size = {32, 24};
    recorded.imagesChanged();
    EXPECT_THAT(system.log, ElementsAre("image 32x24 8"));
}

TEST_F(PreviewDrawObject, ThatCannotBeMadeEndsTheWindowAndIsTheResult) {
    setResult("initialize", 0x8876086A);
    EXPECT_EQ(recorded.create({}), Status(0x8876086A));
    EXPECT_FALSE(system.exists);
    EXPECT_EQ(recorded.window(), nullptr);
    EXPECT_THAT(camera.takePosts(), ElementsAre(message(45060)));
    setResult("initialize", 0);
    EXPECT_TRUE(recorded.create({}).ok());
    EXPECT_TRUE(recorded.alive());
}

// What happens to the window.

TEST_F(PreviewDrawObject, IsToldOfAMoveBehindTheInvalidation) {
    openRecorded();
    system.setClient(25, 28, 100, 80);
    system.events->onMove();
    EXPECT_THAT(system.takeLog(), ElementsAre("invalidate erase", "move 25,28"));
    system.events->onMove();
    EXPECT_THAT(system.takeLog(), ElementsAre("invalidate erase")) << "it is where it was";
    system.setClient(25, 28, 99, 80);
    system.events->onMove();
    EXPECT_THAT(system.takeLog(), ElementsAre("invalidate erase", "size 0 99x80")) << "larger, not moved";
}

// With what the message has, which is not always the client area.
TEST_F(PreviewDrawObject, IsToldOfEverySizeMessageBehindTheInvalidation) {
    openRecorded();
    int width = 100;
    for (const std::uint32_t kind : {0u, 1u, 2u, 3u, 4u}) {
        system.setClient(20, 30, ++width, 80);
        system.takeLog();
        system.events->onSize(kind, 7, 9);
        const std::vector<std::string> log = system.takeLog();
        ASSERT_GE(log.size(), 2u);
        EXPECT_THAT(std::vector(log.end() - 2, log.end()),
                    ElementsAre("invalidate erase", "size " + std::to_string(kind) + " 7x9"));
    }
}

TEST_F(PreviewDrawObject, IsToldOfMinimisingAsOfAnySize) {
    openRecorded();
    system.setClient(20, 30, 0, 0);
    system.events->onSize(1, 0, 0);
    EXPECT_EQ(system.log.back(), "size 1 0x0");
    system.takeLog();
    system.events->onSize(1, 0, 0);
    EXPECT_EQ(system.log.back(), "invalidate erase") << "it has no size still";
}

// Results.

TEST_F(PreviewDrawObject, FailuresAreToldWhenTheWindowEnds) {
    openRecorded();
    setResult("image", 0x887601CC);
    recorded.imagesChanged();
    EXPECT_EQ(noted(), 0x887601CCu);
    setResult("move", 6);
    system.setClient(21, 30, 100, 80);
    system.events->onMove();
    EXPECT_EQ(noted(), 6u);
    setResult("size", 0x8876017C);
    system.setClient(21, 30, 101, 80);
    system.events->onSize(0, 101, 80);
    EXPECT_EQ(noted(), 0x8876017Cu);
    setResult("erase", 5);
    RecordingPaint paint;
    system.events->onErase(paint);
    EXPECT_EQ(recorded.displayError, 5u);
    EXPECT_EQ(camera.lastError, 0u);
    camera.takePosts();
    EXPECT_TRUE(recorded.destroy().ok());
    EXPECT_THAT(camera.posts, ElementsAre(message(45060, 5)));
}

TEST_F(PreviewDrawObject, SuccessLeavesTheFailureBeforeIt) {
    openRecorded();
    recorded.displayError = 9;
    RecordingPaint paint;
    recorded.imagesChanged();
    system.setClient(22, 30, 100, 80);
    system.events->onMove();
    system.setClient(22, 30, 99, 80);
    system.events->onSize(0, 99, 80);
    system.events->onErase(paint);
    EXPECT_EQ(recorded.displayError, 9u);
}

// A client area that cannot be read is a failure of these two, and no message is lost for it.
TEST_F(PreviewDrawObject, FailedReadingIsToldToo) {
    openRecorded();
    system.clientResult = Status(1);
    system.events->onMove();
    EXPECT_EQ(noted(), WindowDouble::kInvalidWindow);
    system.events->onSize(1, 0, 0);
    EXPECT_EQ(noted(), WindowDouble::kInvalidWindow);
}

// What is to be seen.

TEST_F(PreviewDrawObject, ResetInvalidatesNothing) {
    ASSERT_TRUE(recorded.setDisplayMode(5).ok());
    openRecorded();
    setResult("reset", 0x887601CC);
    EXPECT_TRUE(recorded.resetOverlay().ok());
    EXPECT_THAT(system.takeLog(), ElementsAre("reset"));
    EXPECT_EQ(camera.lastError, 0x887601CCu);
    EXPECT_TRUE(recorded.releaseDC(nullptr).ok());
    EXPECT_THAT(system.takeLog(), ElementsAre("invalidate")) << "unlike a release";
    EXPECT_EQ(noted(), 0u) << "was no drawing";
}

}  // namespace
}  // namespace tavra::test
