#include "platform/windows/gdi_paint.h"

#include "platform/last_error.h"

namespace tavra::platform {
namespace {

int sideOf(std::int64_t size) {
    return static_cast<int>(size);
}

// What an operation says of itself: it has drawn, or not. GDI does not always tell why, and leaves the error
// of somebody else then; what has failed must not pass for drawn.
template <typename Operation>
Status tried(Operation operation) {
    setLastSystemError(error::kNone);
    if (operation()) return Status();
    const std::uint32_t reason = lastSystemError();
    return Status(reason != error::kNone ? reason : error::kDeviceNotFunctioning);
}

// A memory context with a bitmap selected.
class Selected {
  public:
    Selected(HDC compatible, const Bitmap& bitmap) {
        status_ = tried([&] { return (dc_ = CreateCompatibleDC(compatible)) != nullptr; });
        if (dc_ == nullptr) return;
        const auto section = static_cast<HBITMAP>(bitmap.native());
        status_ = tried([&] { return (before_ = SelectObject(dc_, section)) != nullptr; });
    }
    ~Selected() {
        if (before_ != nullptr) SelectObject(dc_, before_);
        if (dc_ != nullptr) DeleteDC(dc_);
    }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;

    Status status() const { return status_; }
    HDC dc() const { return dc_; }

  private:
    Status status_;
    HDC dc_ = nullptr;
    HGDIOBJ before_ = nullptr;
};

}  // namespace

Status GdiPaint::copy(const Rectangle& to, const Bitmap& bitmap, std::int32_t sourceX, std::int32_t sourceY) {
    const Selected source(dc_, bitmap);
    TAVRA_RETURN_IF_ERROR(source.status());
    return tried([&] {
        return BitBlt(dc_, to.left, to.top, sideOf(to.width()), sideOf(to.height()), source.dc(), sourceX,
                      sourceY, SRCCOPY);
    });
}

// By design: the stretch mode stays on the context.
Status GdiPaint::stretch(const Rectangle& to, const Bitmap& bitmap, const Rectangle& from,
                         StretchQuality quality) {
    const Selected source(dc_, bitmap);
    TAVRA_RETURN_IF_ERROR(source.status());
    SetStretchBltMode(dc_, quality == StretchQuality::Smooth ? HALFTONE : COLORONCOLOR);
    return tried([&] {
        return StretchBlt(dc_, to.left, to.top, sideOf(to.width()), sideOf(to.height()), source.dc(),
                          from.left, from.top, sideOf(from.width()), sideOf(from.height()), SRCCOPY);
    });
}

Status GdiPaint::fillBlack(const Rectangle& r) {
    return tried(
        [&] { return PatBlt(dc_, r.left, r.top, sideOf(r.width()), sideOf(r.height()), BLACKNESS); });
}

Status GdiPaint::text(std::int32_t x, std::int32_t y, std::string_view line) {
    return tried([&] { return TextOutA(dc_, x, y, line.data(), static_cast<int>(line.size())); });
}

std::int32_t GdiPaint::textHeight() {
    TEXTMETRICA metrics{};
    return GetTextMetricsA(dc_, &metrics) ? metrics.tmHeight : 0;
}

// The system leaves the end of a line out.
Status GdiPaint::line(std::int32_t fromX, std::int32_t fromY, std::int32_t toX, std::int32_t toY) {
    TAVRA_RETURN_IF_ERROR(tried([&] { return MoveToEx(dc_, fromX, fromY, nullptr); }));
    return tried([&] { return LineTo(dc_, toX + (toX > fromX ? 1 : 0), toY + (toX > fromX ? 0 : 1)); });
}

// FillRect does not tell everywhere what became of it.
Status fillSolid(TavraDC dc, const Rectangle& r, std::uint32_t color) {
    const auto context = static_cast<HDC>(dc);
    HBRUSH brush = nullptr;
    TAVRA_RETURN_IF_ERROR(tried([&] { return (brush = CreateSolidBrush(color)) != nullptr; }));
    const HGDIOBJ before = SelectObject(context, brush);
    const Status filled =
        tried([&] { return PatBlt(context, r.left, r.top, sideOf(r.width()), sideOf(r.height()), PATCOPY); });
    if (before != nullptr) SelectObject(context, before);
    DeleteObject(brush);
    return filled;
}

}  // namespace tavra::platform
