#include "platform/windows/gdi_paint.h"

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

int sideOf(std::int64_t size) {
    return static_cast<int>(size);
}

// A memory context with a bitmap selected.
class Selected {
  public:
    Selected(HDC compatible, const Bitmap& bitmap) : dc_(CreateCompatibleDC(compatible)) {
        if (dc_ != nullptr) before_ = SelectObject(dc_, static_cast<HBITMAP>(bitmap.native()));
    }
    ~Selected() {
        if (before_ != nullptr) SelectObject(dc_, before_);
        if (dc_ != nullptr) DeleteDC(dc_);
    }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;

    HDC dc() const { return before_ != nullptr ? dc_ : nullptr; }

  private:
    HDC dc_;
    HGDIOBJ before_ = nullptr;
};

}  // namespace

void GdiPaint::copy(const Rectangle& to, const Bitmap& bitmap, std::int32_t sourceX, std::int32_t sourceY) {
    const Selected source(dc_, bitmap);
    if (source.dc() == nullptr) return;
    BitBlt(dc_, to.left, to.top, sideOf(to.width()), sideOf(to.height()), source.dc(), sourceX, sourceY,
           SRCCOPY);
}

// By design: the stretch mode stays on the context.
void GdiPaint::stretch(const Rectangle& to, const Bitmap& bitmap, const Rectangle& from,
                       StretchQuality quality) {
    const Selected source(dc_, bitmap);
    if (source.dc() == nullptr) return;
    SetStretchBltMode(dc_, quality == StretchQuality::Smooth ? HALFTONE : COLORONCOLOR);
    StretchBlt(dc_, to.left, to.top, sideOf(to.width()), sideOf(to.height()), source.dc(), from.left,
               from.top, sideOf(from.width()), sideOf(from.height()), SRCCOPY);
}

void GdiPaint::fillBlack(const Rectangle& r) {
    PatBlt(dc_, r.left, r.top, sideOf(r.width()), sideOf(r.height()), BLACKNESS);
}

Status GdiPaint::text(std::int32_t x, std::int32_t y, std::string_view line) {
    const BOOL printed = TextOutA(dc_, x, y, line.data(), static_cast<int>(line.size()));
    return printed ? Status() : Status(lastSystemError());
}

std::int32_t GdiPaint::textHeight() {
    TEXTMETRICA metrics{};
    return GetTextMetricsA(dc_, &metrics) ? metrics.tmHeight : 0;
}

// The system leaves the end of a line out.
void GdiPaint::line(std::int32_t fromX, std::int32_t fromY, std::int32_t toX, std::int32_t toY) {
    MoveToEx(dc_, fromX, fromY, nullptr);
    LineTo(dc_, toX + (toX > fromX ? 1 : 0), toY + (toX > fromX ? 0 : 1));
}

void fillSolid(TavraDC dc, const Rectangle& rectangle, std::uint32_t color) {
    const RECT area{rectangle.left, rectangle.top, rectangle.right, rectangle.bottom};
    const HBRUSH brush = CreateSolidBrush(color);
    if (brush == nullptr) return;
    FillRect(static_cast<HDC>(dc), &area, brush);
    DeleteObject(brush);
}

}  // namespace tavra::platform
