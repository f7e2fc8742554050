// `tavra firmware`: loads firmware into the cameras of the oldest types that came up without.
#include <array>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "camera.h"
#include "camera/camera_info.h"
#include "commands.h"
#include "discovery.h"
#include "error_text.h"

namespace tavra::tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint16_t kRevisionWithoutFirmware = 8;
constexpr std::chrono::milliseconds kBetweenAttempts{100};
constexpr std::uint32_t kFileNotFound = 2;
constexpr std::uint32_t kInvalidData = 13;
constexpr std::uint32_t kBufferTooSmall = 122;

struct Options {
    std::optional<std::uint32_t> userId;
    std::string virtualModels;
    double timeoutSeconds = 10;
};

struct Version {
    std::uint16_t type = 0, firmware = 0;

    bool lacksFirmware() const { return isLegacyType(type) && firmware == kRevisionWithoutFirmware; }
};

Version versionOf(TavraHandle handle) {
    Version version;
    std::uint16_t vendor = 0, hardware = 0;
    Tavra_GetCameraVersion(handle, &vendor, &version.type, &hardware, &version.firmware);
    return version;
}

std::uint32_t userIdOf(TavraHandle handle) {
    std::uint32_t id = 0;
    std::array<char, 256> text{};
    Tavra_ReadCameraUserIDA(handle, &id, text.data(), text.size());
    return id;
}

// What is there, and what is to be loaded. The other cameras stay open meanwhile, so that of all cameras only
// those to load are free: an opening by user ID cannot end at another one.
struct Survey {
    std::vector<std::unique_ptr<Camera>> others;
    std::vector<std::uint32_t> userIds;  // of those to load
    std::size_t found = 0, inUse = 0, ofUserId = 0;
};

Survey survey(const Options& options) {
    Survey survey;
    for (const Found& found : discover()) {
        ++survey.found;
        const TavraHandle handle = Tavra_OpenByDevicePathW(found.path.c_str());
        if (handle == nullptr) {
            survey.inUse += Tavra_GetLastError(nullptr) == TAVRA_ERROR_IN_USE ? 1 : 0;
            continue;
        }
        auto camera = std::make_unique<Camera>(handle, modelName(handle));
        const std::uint32_t id = userIdOf(handle);
        const bool isMeant = id == options.userId.value_or(id);
        survey.ofUserId += isMeant ? 1 : 0;
        if (isMeant && versionOf(handle).lacksFirmware()) {
            survey.userIds.push_back(id);
        } else {
            survey.others.push_back(std::move(camera));
        }
    }
    return survey;
}

// One opening with its load, on a thread of its own: Tavra_OpenFW goes on for as long as a load fails, and a
// loaded camera is away for a moment.
class Loading {
  public:
    Loading(std::uint32_t userId, Clock::time_point end)
        : thread_([this, userId, end] { run(userId, end); }), end_(end) {}

    // Null when the time was over first. The object must then stay for as long as the process lives.
    TavraHandle wait() {
        std::unique_lock lock(mutex_);
        if (!ended_.wait_until(lock, end_, [this] { return handle_ != nullptr; })) return nullptr;
        lock.unlock();
        thread_.join();
        return handle_;
    }
    std::uint32_t loads() {
        const std::lock_guard lock(mutex_);
        return loads_;
    }

  private:
    void run(std::uint32_t userId, Clock::time_point end) {
        while (Clock::now() < end && !attempt(userId)) std::this_thread::sleep_for(kBetweenAttempts);
    }

    bool attempt(std::uint32_t userId) {
        std::uint32_t loads = 0;
        const TavraHandle handle = Tavra_OpenFW(userId, &loads);
        const std::lock_guard lock(mutex_);
        loads_ += loads;
        handle_ = handle;
        ended_.notify_all();
        return handle != nullptr;
    }

    std::mutex mutex_;
    std::condition_variable ended_;
    TavraHandle handle_ = nullptr;
    std::uint32_t loads_ = 0;
    std::thread thread_;
    const Clock::time_point end_;
};

std::string reasonOf(std::uint32_t code) {
    switch (code) {
        case 0: return "the camera takes too long";
        case kFileNotFound:
            return "there is no image for its type; `tavra firmware --help` tells where it is looked for (2)";
        case kInvalidData: return "the image for its type is no Intel HEX text, or is damaged (13)";
        case kBufferTooSmall: return "the image for its type is larger than the camera's memory (122)";
        default: return errorText(code);
    }
}

// The thread may still be at it, inside the library, which must not be torn down under it.
[[noreturn]] void giveUp(std::uint32_t userId, std::uint32_t loads) {
    std::cout.flush();
    std::cerr << "tavra: the camera with user ID " << userId
              << (loads > 0 ? " was loaded, and has not come back"
                            : ": the load keeps failing: " + reasonOf(Tavra_GetLastError(nullptr)))
              << std::endl;
    std::_Exit(static_cast<int>(ExitCode::Failed));
}

std::unique_ptr<Camera> load(std::uint32_t userId, double timeoutSeconds) {
    const Clock::time_point end =
        Clock::now() + std::chrono::milliseconds(std::llround(timeoutSeconds * 1000));
    Loading loading(userId, end);
    const TavraHandle handle = loading.wait();
    if (handle == nullptr) giveUp(userId, loading.loads());
    auto camera = std::make_unique<Camera>(handle, modelName(handle));
    std::cout << camera->name() << " (user ID " << userIdOf(handle) << "): firmware loaded, revision "
              << versionOf(handle).firmware << '\n';
    return camera;
}

void run(const Options& options) {
    if (!options.virtualModels.empty()) useVirtualCameras(options.virtualModels);
    Survey cameras = survey(options);
    if (cameras.found == 0) throw failure("nothing to load", TAVRA_ERROR_NO_CAMERA);
    if (cameras.inUse > 0)
        std::cout << "Cameras in use by other programs, not looked at: " << cameras.inUse << '\n';
    if (options.userId && cameras.ofUserId == 0) {
        throw Failure(
            "no camera has the user ID " + std::to_string(*options.userId) + "; `tavra list` shows them",
            ExitCode::NoCamera);
    }
    if (cameras.userIds.empty()) std::cout << "No camera lacks its firmware.\n";
    for (const std::uint32_t id : cameras.userIds) {
        cameras.others.push_back(load(id, options.timeoutSeconds));
    }
}

}  // namespace

void addFirmware(CLI::App& app) {
    auto* const command =
        app.add_subcommand("firmware", "Load firmware into the old cameras that came up without");
    command->footer(
        "The image of a camera is the file TYPE.hex (773, 1541, 1797 or 2053) in the folder "
        "$TAVRA_FIRMWARE_DIR, or "
        "else in share/tavra/firmware of the installation.");
    static Options options;
    command->add_option("-c,--camera", options.userId, "Only cameras with this user ID")->type_name("ID");
    command
        ->add_option("--virtual", options.virtualModels,
                     "Cameras in memory too, for example legacy1541:firmware=absent")
        ->type_name("MODEL[,MODEL...]")
        ->envname("TAVRA_VIRTUAL_CAMERAS");
    command->add_option("--timeout", options.timeoutSeconds, "Seconds for each camera, its return included")
        ->check(CLI::Range(0.1, 3600.0))
        ->capture_default_str();
    command->callback([] { run(options); });
}

}  // namespace tavra::tool
