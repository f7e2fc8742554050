#include "picture.h"

#include <algorithm>

namespace tavra::pictures {
namespace {

constexpr std::uint32_t kGap = 8;
constexpr Color kWhite{255, 255, 255};

void paste(Picture& onto, const Picture& picture, std::uint32_t left, std::uint32_t top) {
    for (std::uint32_t y = 0; y < picture.height; ++y) {
        for (std::uint32_t x = 0; x < picture.width; ++x) onto.at(left + x, top + y) = picture.at(x, y);
    }
}

}  // namespace

Picture pictureOf(const std::vector<std::uint8_t>& rows, std::uint32_t width, std::uint32_t height,
                  std::uint32_t pixelBytes) {
    Picture picture(width, height, {});
    const std::size_t stride = (std::size_t{width} * pixelBytes + 3) / 4 * 4;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const std::uint8_t* const from = &rows.at(y * stride + std::size_t{x} * pixelBytes);
            picture.at(x, y) =
                pixelBytes == 1 ? Color{*from, *from, *from} : Color{from[0], from[1], from[2]};
        }
    }
    return picture;
}

Picture cropped(const Picture& picture, const Box& box) {
    Picture part(box.width, box.height, {});
    for (std::uint32_t y = 0; y < box.height; ++y) {
        for (std::uint32_t x = 0; x < box.width; ++x) part.at(x, y) = picture.at(box.x + x, box.y + y);
    }
    return part;
}

Picture magnified(const Picture& picture, std::uint32_t factor) {
    Picture large(picture.width * factor, picture.height * factor, {});
    for (std::uint32_t y = 0; y < large.height; ++y) {
        for (std::uint32_t x = 0; x < large.width; ++x) large.at(x, y) = picture.at(x / factor, y / factor);
    }
    return large;
}

void drawFrame(Picture& picture, const Box& box, Color color) {
    for (std::uint32_t x = box.x; x < box.x + box.width; ++x) {
        picture.at(x, box.y) = picture.at(x, box.y + box.height - 1) = color;
    }
    for (std::uint32_t y = box.y; y < box.y + box.height; ++y) {
        picture.at(box.x, y) = picture.at(box.x + box.width - 1, y) = color;
    }
}

Picture sheet(const std::vector<Picture>& pictures, std::size_t columns) {
    std::vector<std::uint32_t> tops;
    std::uint32_t width = 0, height = 0;
    for (std::size_t first = 0; first < pictures.size(); first += columns) {
        std::uint32_t rowWidth = 0, rowHeight = 0;
        for (std::size_t i = first; i < std::min(first + columns, pictures.size()); ++i) {
            rowWidth += (i > first ? kGap : 0) + pictures[i].width;
            rowHeight = std::max(rowHeight, pictures[i].height);
        }
        tops.push_back(first > 0 ? height + kGap : 0);
        width = std::max(width, rowWidth);
        height = tops.back() + rowHeight;
    }
    Picture all(width, height, kWhite);
    std::uint32_t left = 0;
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        if (i % columns == 0) left = 0;
        paste(all, pictures[i], left, tops[i / columns]);
        left += pictures[i].width + kGap;
    }
    return all;
}

}  // namespace tavra::pictures
