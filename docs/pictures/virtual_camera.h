// A virtual camera behind the public interface, for one picture: freshly powered up, without automatic
// control.
//
// One at a time in the process, used by one thread. What fails throws, with the place in the source.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "picture.h"
#include "tavra/tavra_api.h"
#include "tavra/tavra_host.h"

namespace tavra::pictures {

class VirtualCamera {
  public:
    // `item` as TAVRA_VIRTUAL_CAMERAS takes it. White balance is manual, with the gains that the camera
    // stores.
    explicit VirtualCamera(const std::string& item);
    ~VirtualCamera();
    VirtualCamera(const VirtualCamera&) = delete;
    VirtualCamera& operator=(const VirtualCamera&) = delete;

    operator TavraHandle() const { return handle_; }

    // Throws unless a call has succeeded.
    void check(TavraBool result, const char* where = __builtin_FUNCTION(), int line = __builtin_LINE()) const;

    // The next image of the chain.
    Picture preview() const;
    // The next frame as it comes from the camera: 8 bits a sample, rows dense.
    std::vector<std::uint8_t> rawFrame() const;

    void saveAsPng(const Picture& picture, const std::string& path) const;

  private:
    TavraHandle handle_ = nullptr;
};

// The stream of a camera whose triggers are on: one image for each trigger.
class TriggeredStream {
  public:
    explicit TriggeredStream(const VirtualCamera& camera);
    ~TriggeredStream();
    TriggeredStream(const TriggeredStream&) = delete;
    TriggeredStream& operator=(const TriggeredStream&) = delete;

    Picture trigger();

  private:
    static void keep(void* image, std::uint32_t size, std::uint32_t width, std::uint32_t height,
                     std::uint32_t frameNumber, std::uint32_t format, void* stream, std::uint32_t* word);

    const VirtualCamera& camera_;
    TavraWindow receiver_;
    std::mutex mutex_;
    std::condition_variable came_;
    bool fresh_ = false;  // guarded by mutex_, as is the picture
    Picture picture_;
};

}  // namespace tavra::pictures
