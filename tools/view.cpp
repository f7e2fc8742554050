// `tavra view`: what the camera sees, in a window with keys.
#include <cstdio>
#include <iostream>

#include "camera.h"
#include "commands.h"
#include "control_state.h"
#include "error_text.h"
#include "movie_text.h"
#include "run_options.h"
#include "settings_table.h"
#include "stream_monitor.h"
#include "stream_session.h"
#include "view_control.h"
#include "view_files.h"
#include "view_keys.h"
#include "view_mask.h"
#include "view_report.h"
#include "view_shape.h"
#include "view_title.h"
#include "view_window.h"

namespace tavra::tool {
namespace {

using Clock = StreamMonitor::Clock;

constexpr std::uint32_t kPollMs = 10;
constexpr auto kTitleEvery = std::chrono::seconds(1);

// Of the preview window: both scroll bars where needed, visible, a child.
constexpr std::uint32_t kStyle = 1u << 20 | 1u << 21 | 1u << 28 | 1u << 30;

struct Options : RunOptions {
    std::string display = "plain";
    std::string geometry;  // of the window; empty: the image's size
    bool fit = false;
    double zoom = 1;
    std::vector<std::string> overlay;
    std::string name = "view";  // of the files, up to their number
    std::string codec = "mjpg";
    std::uint32_t quality = 75;
};

std::uint8_t displayModeOf(const std::string& text) {
    const std::uint32_t code = codeOf(kDisplayModes, text, "--display");
    if (code < kDisplayModes.size()) return static_cast<std::uint8_t>(code);
    throw Failure("--display cannot be " + text + ": 0 to 11, or a name of them", ExitCode::Usage);
}

Extent imageExtent(const Camera& camera) {
    Extent image;
    camera.check(Tavra_GetPreviewDataSize(camera.handle(), nullptr, &image.width, &image.height, nullptr),
                 "cannot read the image size");
    return image;
}

// One window on one camera, from its opening to its end.
class View {
  public:
    View(const Camera& camera, const Options& options, std::uint8_t display)
        : camera_(camera),
          options_(options),
          image_(imageExtent(camera)),
          color_(!isMonoLike(camera)),
          fit_(options.fit),
          report_(options.json),
          files_(camera, report_, options.name, codecOf(options.codec)),
          shape_(camera) {
        camera_.check(Tavra_SetDisplayMode(camera_.handle(), display), "cannot set the display mode");
    }
    ~View() {
        Tavra_StopTransfer(camera_.handle());
        Tavra_DestroyPreviewWindow(camera_.handle());
        Tavra_SetReceiveMsgWindow(camera_.handle(), nullptr);
        Tavra_RemoveRawCallback(camera_.handle(), rawCallback_);
    }
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    ExitCode go() {
        openWindows();
        prepareCamera();
        started_ = lastTitle_ = Clock::now();
        camera_.check(Tavra_StartTransfer(camera_.handle()), "cannot start the stream");
        showTitle();
        while (!done()) {
            for (auto event = window_.next(kPollMs); event; event = window_.next(0)) take(*event);
            while (const auto message = receiver_.next(0)) take(*message);
            if (files_.saveSnapshot()) showTitle();
            report_.gaps(monitor_.takeGaps());
            if (Clock::now() - lastTitle_ >= kTitleEvery) everySecond();
        }
        files_.endMovie();
        Tavra_StopTransfer(camera_.handle());
        return summary();
    }

  private:
    static double secondsSince(Clock::time_point start) {
        return std::chrono::duration<double>(Clock::now() - start).count();
    }

    static void onFrame(void*, std::uint32_t size, std::uint32_t, std::uint32_t, std::uint32_t number,
                        std::uint16_t, std::uint32_t, void* context, std::uint32_t*) {
        static_cast<View*>(context)->monitor_.frame(number, size, Clock::now());
    }

    // Beginning.

    void openWindows() {
        const TavraHandle handle = camera_.handle();
        const Extent room = window_.room();
        Geometry geometry;
        if (options_.geometry.empty()) {
            const Extent first = firstWindowSize(image_, room, fit_);
            geometry.width = first.width;
            geometry.height = first.height;
        } else {
            geometry = parseGeometry(options_.geometry);
        }
        const bool placed = options_.geometry.find('+') != std::string::npos;
        client_ = {geometry.width, geometry.height};
        window_.open(camera_.name(), geometry, placed);
        camera_.check(Tavra_SetMagnificationMode(handle, 1), "cannot let the mouse zoom");
        camera_.check(Tavra_CreatePreviewWindowW(handle, nullptr, kStyle, 0, 0, geometry.width,
                                                 geometry.height, window_.window(), nullptr, 0),
                      "cannot open the preview window with display mode " + options_.display);
        TavraWindow preview = nullptr;
        camera_.check(Tavra_GetPreviewWnd(handle, &preview), "cannot find the preview window");
        window_.listenTo(preview);
        applyAspect();
    }

    void prepareCamera() {
        const TavraHandle handle = camera_.handle();
        camera_.check(Tavra_SetReceiveMsgWindow(handle, receiver_.window()), "cannot receive messages");
        camera_.check(Tavra_AddRawCallback(handle, onFrame, this, &rawCallback_), "cannot receive frames");
        camera_.check(Tavra_SetAVIQuality(handle, options_.quality), "cannot set the quality of movies");
        std::uint32_t overlay = 0;
        for (const std::string& name : options_.overlay)
            overlay |= name == "text" ? TAVRA_DISPLAY_INFO_STATISTICS : TAVRA_DISPLAY_INFO_GRID;
        camera_.check(Tavra_SetDisplayInfoMode(handle, overlay), "cannot set the overlay");
        Geometry part = wholeOf(image_);
        while (magnificationOf(part, image_) < options_.zoom) {
            const Geometry smaller = zoomedIn(part, image_);
            if (smaller.width == part.width) break;
            part = smaller;
        }
        showPart(part);
    }

    // What happens.

    bool done() const {
        return over_ || streamEnded_ || interrupted() || !std::cout ||
               options_.reached(secondsSince(started_), monitor_.totals().frames);
    }

    void take(const ViewEvent& event) {
        switch (event.kind) {
            case ViewEvent::Kind::Key: act(viewActionOf(event.key)); break;
            case ViewEvent::Kind::Resized:
                client_ = event.size;
                fillWindow();
                break;
            case ViewEvent::Kind::CloseAsked: over_ = true; break;
        }
    }

    void take(const TavraMessage& message) {
        const auto result = static_cast<std::uint32_t>(message.parameter2);
        switch (message.message) {
            case TAVRA_MESSAGE_TRANSFER_ENDED:
                streamEnded_ = true;
                endCode_ = result;
                break;
            case TAVRA_MESSAGE_WINDOW_CLOSED:
                throw Failure("the preview window is gone: the X server or another program has ended it");
            case TAVRA_MESSAGE_RECORDING_ENDED: files_.writerEnded(result); break;
            case TAVRA_MESSAGE_FRAME_FINISHED:
                if (const auto shape = shape_.changeBy(result)) turnTo(*shape);
                break;
            default: break;
        }
    }

    // What cannot be done is told, and the window stays.
    void act(ViewAction action) {
        try {
            perform(action);
        } catch (const Failure& failure) {
            report_.note(failure.what());
        }
        showTitle();
    }

    void perform(ViewAction action) {
        switch (action) {
            case ViewAction::None: break;
            case ViewAction::Fit: setAspect(true); break;
            case ViewAction::ActualSize: setAspect(false); break;
            case ViewAction::ZoomIn: showPart(zoomedIn(part(), image_)); break;
            case ViewAction::ZoomOut: showPart(zoomedOut(part(), image_)); break;
            case ViewAction::MoveLeft: showPart(movedBy(part(), image_, -1, 0)); break;
            case ViewAction::MoveUp: showPart(movedBy(part(), image_, 0, -1)); break;
            case ViewAction::MoveRight: showPart(movedBy(part(), image_, 1, 0)); break;
            case ViewAction::MoveDown: showPart(movedBy(part(), image_, 0, 1)); break;
            case ViewAction::Rotate: rotate(); break;
            case ViewAction::Statistics: toggleOverlay(TAVRA_DISPLAY_INFO_STATISTICS); break;
            case ViewAction::Grid: toggleOverlay(TAVRA_DISPLAY_INFO_GRID); break;
            case ViewAction::Snapshot: files_.askForSnapshot(); break;
            case ViewAction::Movie: files_.toggleMovie(); break;
            case ViewAction::AutoExposure: toggleAutoExposure(camera_); break;
            case ViewAction::AutoWhiteBalance: toggleAutoWhiteBalance(camera_); break;
            case ViewAction::Help: std::cerr << viewKeysText() << std::flush; break;
            case ViewAction::Quit: over_ = true; break;
        }
    }

    // What is shown.

    Geometry part() const {
        Geometry part;
        camera_.check(Tavra_GetPreviewMaskSize(camera_.handle(), &part.x, &part.y, &part.width, &part.height),
                      "cannot read what is shown");
        return part;
    }

    void showPart(const Geometry& part) {
        camera_.check(Tavra_SetPreviewMaskSize(camera_.handle(), part.x, part.y, part.width, part.height),
                      "cannot zoom");
    }

    void setAspect(bool fit) {
        fit_ = fit;
        showPart(wholeOf(image_));
        applyAspect();
    }

    void applyAspect() {
        camera_.check(Tavra_SetAspectMode(camera_.handle(), fit_ ? TAVRA_ASPECT_FIT : TAVRA_ASPECT_IMAGE),
                      "cannot set how the image is shown");
    }

    void rotate() {
        std::uint8_t mode = 0;
        camera_.check(Tavra_GetRotationMode(camera_.handle(), &mode), "cannot read the rotation");
        const auto next = static_cast<std::uint8_t>((mode + 1) % kRotations.size());
        camera_.check(Tavra_SetRotationMode(camera_.handle(), next), "cannot rotate");
    }

    // The preview covers all of it.
    void fillWindow() const {
        Tavra_SetPreviewWindowSize(camera_.handle(), 0, 0, client_.width, client_.height);
    }

    // An image of this shape is there, the first of the stream or the first that is rotated otherwise. How
    // the window lays it out follows from it, and so is asked for again; a rotation has also given the
    // preview the image's size.
    void turnTo(Extent shape) {
        if (shape != image_) {
            image_ = shape;
            fillWindow();
            showPart(wholeOf(image_));
        }
        applyAspect();
        showTitle();
    }

    void toggleOverlay(std::uint32_t bit) {
        std::uint32_t mode = 0;
        camera_.check(Tavra_GetDisplayInfoMode(camera_.handle(), &mode), "cannot read the overlay");
        camera_.check(Tavra_SetDisplayInfoMode(camera_.handle(), mode ^ bit), "cannot set the overlay");
    }

    // Telling.

    void everySecond() {
        const auto totals = monitor_.totals();
        const double elapsed = secondsSince(lastTitle_);
        fps_ = static_cast<double>(totals.frames - lastFrames_) / elapsed;
        lastFrames_ = totals.frames;
        lastTitle_ = Clock::now();
        showTitle();
        report_.progress({{"event", "progress"},
                          {"seconds", secondsSince(started_)},
                          {"frames", totals.frames},
                          {"lost", totals.lost},
                          {"fps", fps_}});
    }

    void showTitle() {
        ViewState state;
        state.camera = camera_.name();
        state.fps = fps_;
        state.lost = monitor_.totals().lost;
        state.control = controlState();
        state.color = color_;
        state.autoExposure = exposureIsAutomatic(camera_);
        state.autoWhiteBalance = whiteBalanceIsAutomatic(camera_);
        state.fit = fit_;
        state.magnification = magnificationOf(part(), image_);
        Tavra_GetRotationMode(camera_.handle(), &state.rotation);
        state.movie = files_.movie();
        state.movieSeconds = files_.movieSeconds();
        state.notice = report_.notice();
        window_.setTitle(viewTitle(state));
    }

    // A camera that is about to be lost is told of by the end of its stream.
    std::optional<ControlState> controlState() const {
        try {
            return readControlState(camera_, color_);
        } catch (const Failure&) {
            return std::nullopt;
        }
    }

    ExitCode summary() {
        report_.gaps(monitor_.takeGaps());
        const auto totals = monitor_.totals();
        const double elapsed = secondsSince(started_);
        const double fps = static_cast<double>(totals.frames) / elapsed;
        char text[128];
        std::snprintf(text, sizeof text, "%llu frames in %.1f s (%.2f fps), %llu lost in %llu places.",
                      static_cast<unsigned long long>(totals.frames), elapsed, fps,
                      static_cast<unsigned long long>(totals.lost),
                      static_cast<unsigned long long>(totals.gaps));
        report_.tell(text, {{"event", "end"},
                            {"seconds", elapsed},
                            {"frames", totals.frames},
                            {"lost", totals.lost},
                            {"fps", fps},
                            {"endCode", endCode_}});
        if (streamEnded_ && endCode_ != 0)
            throw failure("the stream ended by itself (" + camera_.name() + ")", endCode_);
        return interrupted() ? ExitCode::Interrupted : ExitCode::Success;
    }

    const Camera& camera_;
    const Options& options_;
    Extent image_;
    Extent client_;  // of the window
    const bool color_;
    bool fit_;
    ViewWindow window_;
    Receiver receiver_;
    ViewReport report_;
    ViewFiles files_;
    StreamMonitor monitor_;
    ShapeWatch shape_;
    std::uint32_t rawCallback_ = 0;
    Clock::time_point started_, lastTitle_;
    std::uint64_t lastFrames_ = 0;
    double fps_ = 0;
    std::uint32_t endCode_ = 0;
    bool over_ = false, streamEnded_ = false;
};

void run(const Options& options) {
    const std::uint8_t display = displayModeOf(options.display);
    codecOf(options.codec);
    if (!options.geometry.empty()) parseGeometry(options.geometry);
    const Camera camera(options.choice);
    applyAssignments(camera, options.assignments);
    noteInterrupts();
    const ExitCode code = View(camera, options, display).go();
    if (code != ExitCode::Success) throw Failure("interrupted", code);
}

std::string displayHelp() {
    std::string text = "How the image gets to the screen (see the guide):";
    for (const NamedCode& mode : kDisplayModes)
        text += (mode.code == 0 ? " " : ", ") + std::to_string(mode.code) + " " + mode.name;
    return text;
}

}  // namespace

void addView(CLI::App& app) {
    auto* const command = app.add_subcommand("view", "Show what the camera sees, in a window with keys");
    static Options options;
    options.addTo(*command);
    command->add_option("--display", options.display, displayHelp())->capture_default_str();
    command
        ->add_option("--window", options.geometry,
                     "Size and place of the window: 800x600 or 800x600+X+Y (default: the image's size)")
        ->type_name("WIDTHxHEIGHT");
    command->add_flag("--fit", options.fit, "Begin with the image fitted into the window (f)");
    command->add_option("--zoom", options.zoom, "Begin with a part of the image: 2, 4, 8, ...")
        ->check(CLI::Range(1.0, 4096.0))
        ->capture_default_str();
    command->add_option("--overlay", options.overlay, "Begin with text, grid or text,grid in the image")
        ->delimiter(',')
        ->check(CLI::IsMember({"text", "grid"}));
    command->add_option("--name", options.name, "Snapshots and movies are NAME-1.png, NAME-1.avi, ...")
        ->capture_default_str();
    command->add_option("--codec", options.codec, "Of movies: none, mjpg, or the four letters of a codec")
        ->capture_default_str();
    command->add_option("--quality", options.quality, "Of compressed movies, 0 to 100")
        ->check(CLI::Range(0, 100))
        ->capture_default_str();
    command->footer("Keys in the window:\n" + viewKeysText());
    command->callback([] { run(options); });
}

}  // namespace tavra::tool
