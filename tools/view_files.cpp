#include "view_files.h"

#include <filesystem>
#include <system_error>
#include <utility>

#include "error_text.h"
#include "movie_text.h"
#include "new_file.h"
#include "values.h"

namespace tavra::tool {
namespace {

// The failure of the call just made, which leaves no empty file behind.
Failure discarded(const Camera& camera, const std::filesystem::path& file, const std::string& what) {
    const std::uint32_t code = Tavra_GetLastError(camera.handle());
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    return failure(what + " " + file.string(), code);
}

}  // namespace

ViewFiles::ViewFiles(const Camera& camera, ViewReport& report, std::string name, std::uint32_t codec)
    : camera_(camera),
      report_(report),
      name_(std::move(name)),
      codec_(codec),
      tap_(camera, FrameTap::What::Images) {}

bool ViewFiles::saveSnapshot() {
    if (!tap_.take(snapshot_)) return false;
    try {
        writeSnapshot();
    } catch (const Failure& failure) {
        report_.note(failure.what());
    }
    return true;
}

void ViewFiles::writeSnapshot() const {
    constexpr std::uint32_t kNotInterlaced = 1;
    const TappedFrame& frame = snapshot_;
    const std::filesystem::path file = makeNextFile(name_, ".png");
    if (!Tavra_SaveImageA(camera_.handle(), frame.width, frame.height, frame.pixelFormat, frame.data.data(),
                          file.c_str(), kNotInterlaced)) {
        throw discarded(camera_, file, "cannot write");
    }
    report_.tell(file.string() + ": " + std::to_string(frame.width) + "x" + std::to_string(frame.height) +
                     " " + nameOf(kPixelFormats, frame.pixelFormat) + ", frame " +
                     std::to_string(frame.number) + " of " + camera_.name(),
                 {{"event", "snapshot"}, {"file", file.string()}, {"frame", frame.number}});
    report_.setNotice(file.string());
}

void ViewFiles::toggleMovie() {
    if (movie_.empty()) {
        beginMovie();
    } else {
        endMovie();
    }
}

void ViewFiles::beginMovie() {
    constexpr std::uint32_t kNoLimit = 0xFFFFFFFF;
    const std::filesystem::path file = makeNextFile(name_, ".avi");
    if (!Tavra_SaveAVIW(camera_.handle(), file.u16string().c_str(), codec_, kNoLimit))
        throw discarded(camera_, file, "cannot record");
    movie_ = file.string();
    movieBegan_ = Clock::now();
    report_.tell(movie_ + ": recording", {{"event", "movie"}, {"file", movie_}, {"recording", true}});
}

// The message of an end that was asked for here comes later.
void ViewFiles::endMovie() {
    if (movie_.empty()) return;
    if (Tavra_SetAVIStatus(camera_.handle(), TAVRA_AVI_STATUS_IDLE) != 0) ++endsAskedFor_;
    report_.tell(movie_ + ": " + durationText(movieSeconds()),
                 {{"event", "movie"}, {"file", movie_}, {"recording", false}});
    report_.setNotice(movie_);
    movie_.clear();
}

void ViewFiles::writerEnded(std::uint32_t result) {
    if (endsAskedFor_ > 0) {
        --endsAskedFor_;
        return;
    }
    if (movie_.empty()) return;
    const std::string file = movie_;
    endMovie();
    endsAskedFor_ = 0;
    if (result != 0) report_.note("cannot go on writing " + file + ": " + errorText(result));
}

double ViewFiles::movieSeconds() const {
    return movie_.empty() ? 0 : std::chrono::duration<double>(Clock::now() - movieBegan_).count();
}

}  // namespace tavra::tool
