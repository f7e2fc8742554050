#include "display_seams/seams.h"

#include <cstdio>
#include <cstdlib>

#include "base/error_codes.h"
#include "platform/bitmap.h"
#include "platform/paint.h"
#include "platform/timer_resolution.h"
#include "support/recording_paint.h"

namespace tavra::test {

Seams& seams() {
    static Seams one;
    return one;
}

void Seams::reset() {
    drawing.clear();
    textResult = Status();
    fillResult = Status();
    lineResult = Status();
    window.reset();
    surfaces.log.clear();
    sprites.log.clear();
    sprites.results.clear();
    timerRaises = 0;
    timerRestores = 0;
}

}  // namespace tavra::test

namespace tavra::platform {

using test::seams;

IWindowSystem& windowSystem() {
    return seams().window;
}
ISurfaceSystem& surfaceSystem() {
    return seams().surfaces;
}
ISpriteSystem& spriteSystem() {
    return seams().sprites;
}

void raiseTimerResolution() {
    ++seams().timerRaises;
}
void restoreTimerResolution() {
    ++seams().timerRestores;
}

Status Bitmap::create(const BitmapShape& shape) {
    free();
    pixels_ = static_cast<std::uint8_t*>(std::calloc(shape.bytes() + 1, 1));  // never of no bytes
    if (pixels_ == nullptr) return Status(error::kOutOfMemory);
    shape_ = shape;
    return Status();
}

void Bitmap::free() {
    std::free(pixels_);
    pixels_ = nullptr;
    shape_ = {};
}

struct MemoryContext::Native {
    test::RecordingPaint paint;
};

MemoryContext::MemoryContext(Bitmap& bitmap, DrawingMemory*)
    : bitmap_(bitmap), native_(std::make_unique<Native>()) {
    seams().drawing.push_back("context");
}

TavraDC MemoryContext::dc() {
    seams().drawing.push_back("dc");
    return bitmap_.pixels();
}

IPaint& MemoryContext::paint() {
    seams().drawing.push_back("paint");
    native_->paint.textResult = seams().textResult;
    if (!seams().lineResult.ok()) native_->paint.failures["line"] = seams().lineResult.code();
    return native_->paint;
}

MemoryContext::~MemoryContext() {
    std::vector<std::string>& drawing = seams().drawing;
    drawing.insert(drawing.end(), native_->paint.log.begin(), native_->paint.log.end());
    drawing.push_back("end");
}

Status fillSolid(TavraDC, const Rectangle& rectangle, std::uint32_t color) {
    char text[16];
    std::snprintf(text, sizeof text, " %06x", static_cast<unsigned>(color));
    seams().drawing.push_back("fill " + test::textOf(rectangle) + text);
    return seams().fillResult;
}

}  // namespace tavra::platform
