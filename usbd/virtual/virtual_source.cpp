#include "virtual_source.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "camera_list.h"
#include "environment.h"
#include "error_numbers.h"
#include "virtual_device.h"

namespace tavra::usbd {
namespace {

constexpr const char* kVariable = "TAVRA_VIRTUAL_CAMERAS";

// Cut so that the whole path stays below 1024 characters.
std::string pathOf(std::size_t place, const Model& model) {
    return "virtual:" + std::to_string(place) + ":" + model.name;
}

class VirtualSource : public DeviceSource {
  public:
    std::uint32_t enumerate() override {
        const char* const text = environmentVariable(kVariable);
        if (const std::string now = text != nullptr ? text : ""; now != text_) read(now);
        present_.clear();
        for (const Entry& entry : entries_) {
            if (entry.camera->look()) present_.push_back(entry.camera);
        }
        return static_cast<std::uint32_t>(present_.size());
    }

    std::string path(std::uint32_t index) override {
        return index < present_.size() ? present_[index]->path() : std::string();
    }

    std::unique_ptr<Device> open(std::uint32_t index, ErrorCode& error) override {
        if (index >= present_.size()) {
            error = error::kNoMoreItems;
            return nullptr;
        }
        error = error::kNone;
        return std::make_unique<VirtualDevice>(present_[index]);
    }

    std::unique_ptr<Device> open(const std::string& path, ErrorCode& error) override {
        for (std::uint32_t i = 0; i < present_.size(); ++i) {
            if (present_[i]->path() == path) return open(i, error);
        }
        error = error::kFileNotFound;
        return nullptr;
    }

  private:
    struct Entry {
        std::string item;
        std::shared_ptr<VirtualCamera> camera;
    };

    // A camera whose item has not changed stays what it is.
    void read(const std::string& text) {
        text_ = text;
        std::vector<Entry> before;
        before.swap(entries_);
        for (const std::string& item : splitCameraList(text)) {
            const std::size_t place = entries_.size();
            if (place < before.size() && before[place].item == item) {
                entries_.push_back(before[place]);
                continue;
            }
            Model model;
            std::string complaint;
            if (loadCamera(item, model, complaint)) {
                std::string path = pathOf(place, model);
                entries_.push_back(
                    {item, std::make_shared<VirtualCamera>(std::move(model), std::move(path))});
            } else {
                std::fprintf(stderr, "%s: \"%s\" is left out: %s\n", kVariable, item.c_str(),
                             complaint.c_str());
            }
        }
    }

    std::string text_;
    std::vector<Entry> entries_;
    std::vector<std::shared_ptr<VirtualCamera>> present_;
};

}  // namespace

std::unique_ptr<DeviceSource> makeVirtualSource() {
    return std::make_unique<VirtualSource>();
}

}  // namespace tavra::usbd
