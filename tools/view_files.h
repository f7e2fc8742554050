// The snapshots and movies of `tavra view`, under counting names.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "camera.h"
#include "frame_tap.h"
#include "view_report.h"

namespace tavra::tool {

// One thread, but for what the tap takes. Made before the stream starts, gone after it has stopped.
class ViewFiles {
  public:
    // `name` is what stands ahead of the number.
    ViewFiles(const Camera& camera, ViewReport& report, std::string name, std::uint32_t codec);

    // The next finished image, without the overlay.
    void askForSnapshot() { tap_.ask(); }
    // Writes it once it is there, or tells why not. False: there is none yet.
    bool saveSnapshot();

    // Throws Failure when it cannot begin.
    void toggleMovie();
    // Waits until the file is closed. Nothing happens where no movie is recorded.
    void endMovie();
    // Message 45065.
    void writerEnded(std::uint32_t result);
    // The file in work; empty: none.
    const std::string& movie() const { return movie_; }
    double movieSeconds() const;

  private:
    using Clock = std::chrono::steady_clock;

    void writeSnapshot() const;
    void beginMovie();

    const Camera& camera_;
    ViewReport& report_;
    const std::string name_;
    const std::uint32_t codec_;
    FrameTap tap_;
    TappedFrame snapshot_;
    std::string movie_;
    Clock::time_point movieBegan_;
    std::uint32_t endsAskedFor_ = 0;  // of recordings, whose messages are still to come
};

}  // namespace tavra::tool
