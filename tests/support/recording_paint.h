// A paint that draws nothing and writes down what it was asked for, as one line of text each. What a test
// names fails.
#pragma once

#include <map>
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
    Status copy(const platform::Rectangle& destination, const platform::Bitmap&, std::int32_t sourceX,
                std::int32_t sourceY) override {
        return note("copy " + textOf(destination) + " from " + std::to_string(sourceX) + "," +
                    std::to_string(sourceY));
    }
    Status stretch(const platform::Rectangle& destination, const platform::Bitmap&,
                   const platform::Rectangle& source, platform::StretchQuality quality) override {
        const bool smooth = quality == platform::StretchQuality::Smooth;
        return note("stretch " + textOf(destination) + " from " + textOf(source) +
                    (smooth ? " smooth" : " nearest"));
    }
    Status fillBlack(const platform::Rectangle& rectangle) override {
        return note("black " + textOf(rectangle));
    }
    Status text(std::int32_t x, std::int32_t y, std::string_view line) override {
        log.push_back("text " + std::to_string(x) + "," + std::to_string(y) + " " + std::string(line));
        return textResult;
    }
    std::int32_t textHeight() override { return height; }
    Status line(std::int32_t fromX, std::int32_t fromY, std::int32_t toX, std::int32_t toY) override {
        return note("line " + textOf({fromX, fromY, toX, toY}));
    }

    std::vector<std::string> log;
    std::int32_t height = 13;
    Status textResult;
    // By the line that is written down, without the texts; or by its first word, for all of that kind.
    std::map<std::string, std::uint32_t> failures;

  private:
    Status note(const std::string& entry) {
        log.push_back(entry);
        for (const std::string& name : {entry, entry.substr(0, entry.find(' '))}) {
            if (const auto found = failures.find(name); found != failures.end()) return Status(found->second);
        }
        return Status();
    }
};

}  // namespace tavra::test
