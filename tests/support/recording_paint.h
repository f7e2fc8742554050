// A paint that draws nothing and writes down what it was asked for, as one line of text each.
#pragma once

#include <string>
#include <vector>

#include "platform/paint.h"

namespace tavra::test {

inline std::string textOf(const platform::Rectangle& r) {
    return std::to_string(r.left) + "," + std::to_string(r.top) + "," + std::to_string(r.right) + "," +
           std::to_string(r.bottom);
}

class RecordingPaint final : public platform::IPaint {
  public:
    void copy(const platform::Rectangle& destination, const platform::Bitmap&, std::int32_t sourceX,
              std::int32_t sourceY) override {
        log.push_back("copy " + textOf(destination) + " from " + std::to_string(sourceX) + "," +
                      std::to_string(sourceY));
    }
    void stretch(const platform::Rectangle& destination, const platform::Bitmap&,
                 const platform::Rectangle& source, platform::StretchQuality quality) override {
        const bool smooth = quality == platform::StretchQuality::Smooth;
        log.push_back("stretch " + textOf(destination) + " from " + textOf(source) +
                      (smooth ? " smooth" : " nearest"));
    }
    void fillBlack(const platform::Rectangle& rectangle) override {
        log.push_back("black " + textOf(rectangle));
    }
    Status text(std::int32_t x, std::int32_t y, std::string_view line) override {
        log.push_back("text " + std::to_string(x) + "," + std::to_string(y) + " " + std::string(line));
        return textResult;
    }
    std::int32_t textHeight() override { return height; }
    void line(std::int32_t fromX, std::int32_t fromY, std::int32_t toX, std::int32_t toY) override {
        log.push_back("line " + textOf({fromX, fromY, toX, toY}));
    }

    std::vector<std::string> log;
    std::int32_t height = 13;
    Status textResult;
};

}  // namespace tavra::test
