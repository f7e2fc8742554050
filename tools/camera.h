// One open camera for a command, closed with the object; and how the command line names it.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>

#include "exit_code.h"
#include "tavra/tavra_api.h"

namespace tavra::tool {

// What the options --camera, --path, --index and --virtual say. Nothing said: the first free camera.
struct CameraChoice {
    std::optional<std::uint32_t> userId;
    std::optional<std::uint32_t> index;
    std::string path;
    std::string virtualModels;

    void addTo(CLI::App& command);
    std::string describe() const;  // "the camera with user ID 7"
};

class Camera {
  public:
    // Throws Failure with what to do when the camera cannot be opened.
    explicit Camera(const CameraChoice& choice);
    Camera(TavraHandle handle, std::string name) : handle_(handle), name_(std::move(name)) {}
    ~Camera();
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    TavraHandle handle() const { return handle_; }
    // Model and identity for messages: "TV-2326C (user ID 0)".
    const std::string& name() const { return name_; }

    // Throws Failure naming `what` and the camera unless `result` is success.
    void check(TavraBool result, const std::string& what) const;

  private:
    TavraHandle handle_ = nullptr;
    std::string name_;
};

std::string modelName(TavraHandle handle);

}  // namespace tavra::tool
