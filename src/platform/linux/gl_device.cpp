#include "platform/linux/gl_device.h"

#include <algorithm>
#include <array>
#include <new>

#include "platform/linux/gl_sprites.h"
#include "platform/linux/memory_surface.h"
#include "platform/linux/x11_connection.h"
#include "platform/thread.h"

namespace tavra::platform {
namespace {

constexpr std::uint32_t kMostPixels = 32767;

// A rectangle of the window, between two of a texture. Pixels of textures have blue first.
constexpr const char* kVertexShader =
    "attribute vec2 corner;\n"
    "uniform vec4 place;\n"
    "uniform vec4 part;\n"
    "varying vec2 at;\n"
    "void main() {\n"
    "    gl_Position = vec4(mix(place.xy, place.zw, corner), 0.0, 1.0);\n"
    "    at = mix(part.xy, part.zw, corner);\n"
    "}\n";
constexpr const char* kFragmentShader =
    "#ifdef GL_FRAGMENT_PRECISION_HIGH\n"
    "precision highp float;\n"
    "#else\n"
    "precision mediump float;\n"
    "#endif\n"
    "uniform sampler2D pixels;\n"
    "uniform vec4 limits;\n"
    "uniform vec4 color;\n"
    "uniform float opaque;\n"
    "varying vec2 at;\n"
    "void main() {\n"
    "    vec4 pixel = texture2D(pixels, clamp(at, limits.xy, limits.zw)).bgra;\n"
    "    gl_FragColor = vec4(pixel.rgb, max(pixel.a, opaque)) * color;\n"
    "}\n";

float channel(std::uint32_t color, unsigned shift) {
    return static_cast<float>(color >> shift & 0xFF) / 255.0f;
}

}  // namespace

GlDevice::~GlDevice() {
    leave();
    destroyContext();
    if (child_ == 0) return;
    on_.x->xcb_destroy_window(on_.connection, child_);
    on_.x->xcb_flush(on_.connection);
    on_.dropEvents();
}

std::uint32_t GlDevice::create(const DeviceRequest& request, const PresentParameters& parameters) {
    size_ = {std::clamp<std::uint32_t>(request.client.width, 1, kMostPixels),
             std::clamp<std::uint32_t>(request.client.height, 1, kMostPixels)};
    if (const std::uint32_t failure = createChild(request.window); failure != 0) return failure;
    return elsewhere([&] { return createContext(parameters); });
}

std::uint32_t GlDevice::elsewhere(const std::function<std::uint32_t()>& work) const {
    std::uint32_t result = 0;
    Thread thread;
    const Status started = thread.start("tavra-gl", ThreadPriority::Normal, [&] {
        gl().eglBindAPI(EGL_OPENGL_ES_API);
        result = work();
        gl().eglReleaseThread();
    });
    thread.join();
    return started.ok() ? result : started.code();
}

// Black until something is shown. It asks for no events: the mouse goes on to the outer window, which also
// sees to its exposures.
std::uint32_t GlDevice::createChild(TavraWindow parent) {
    const auto number = reinterpret_cast<std::uintptr_t>(parent);
    if (number == 0 || number > 0xFFFFFFFF) return error::kInvalidWindowHandle;
    const X11Library& x = *on_.x;
    child_ = x.xcb_generate_id(on_.connection);
    const std::uint32_t black = on_.screen->black_pixel;
    const auto asked = x.xcb_create_window_checked(
        on_.connection, XCB_COPY_FROM_PARENT, child_, static_cast<xcb_window_t>(number), 0, 0,
        static_cast<std::uint16_t>(size_.width), static_cast<std::uint16_t>(size_.height), 0,
        XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &black);
    const Reply<xcb_generic_error_t> refused(x.xcb_request_check(on_.connection, asked));
    if (refused || on_.broken()) {
        child_ = 0;
        return error::kInvalidWindowHandle;
    }
    x.xcb_map_window(on_.connection, child_);
    x.xcb_flush(on_.connection);
    return 0;
}

std::uint32_t GlDevice::createContext(const PresentParameters& parameters) {
    constexpr EGLint kVersion2[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    lost_ = false;
    ++generation_;
    discarded_.clear();
    context_ = gl().eglCreateContext(on_.display, on_.config, EGL_NO_CONTEXT, kVersion2);
    surface_ = gl().eglCreatePlatformWindowSurface(on_.display, on_.config, &child_, nullptr);
    if (context_ == EGL_NO_CONTEXT || surface_ == EGL_NO_SURFACE || enter() != 0) {
        return sprite_error::kNotAvailable;
    }
    const bool works = prepare();
    gl().eglSwapInterval(on_.display, parameters.interval == kPresentAtOnce ? 0 : 1);
    if (on_.keepsBackBuffer) {
        const bool keep = parameters.swapEffect == SwapEffect::Copy;
        gl().eglSurfaceAttrib(on_.display, surface_, EGL_SWAP_BEHAVIOR,
                              keep ? EGL_BUFFER_PRESERVED : EGL_BUFFER_DESTROYED);
    }
    leave();
    return works ? 0 : sprite_error::kNotAvailable;
}

void GlDevice::destroyContext() {
    if (surface_ != EGL_NO_SURFACE) gl().eglDestroySurface(on_.display, surface_);
    if (context_ != EGL_NO_CONTEXT) gl().eglDestroyContext(on_.display, context_);
    surface_ = EGL_NO_SURFACE;
    context_ = EGL_NO_CONTEXT;
}

// What never changes: one program that draws one rectangle. It goes with its context.
bool GlDevice::prepare() {
    static constexpr std::array<float, 8> kCorners{0, 0, 1, 0, 0, 1, 1, 1};
    const GLuint program = gl().glCreateProgram();
    for (const GLuint shader :
         {compile(GL_VERTEX_SHADER, kVertexShader), compile(GL_FRAGMENT_SHADER, kFragmentShader)}) {
        gl().glAttachShader(program, shader);
        gl().glDeleteShader(shader);  // when the program goes
    }
    gl().glBindAttribLocation(program, 0, "corner");
    gl().glLinkProgram(program);
    GLint linked = 0, largest = 0;
    gl().glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (linked == 0) return false;
    gl().glUseProgram(program);
    uniforms_ = {gl().glGetUniformLocation(program, "place"), gl().glGetUniformLocation(program, "part"),
                 gl().glGetUniformLocation(program, "limits"), gl().glGetUniformLocation(program, "color"),
                 gl().glGetUniformLocation(program, "opaque")};
    gl().glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, 0, kCorners.data());
    gl().glEnableVertexAttribArray(0);
    gl().glViewport(0, 0, static_cast<GLsizei>(size_.width), static_cast<GLsizei>(size_.height));
    gl().glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    gl().glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    gl().glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    largestSide_ = static_cast<std::uint32_t>(std::max(largest, 0));
    return true;
}

GLuint GlDevice::compile(GLenum kind, const char* text) const {
    const GLuint shader = gl().glCreateShader(kind);
    gl().glShaderSource(shader, 1, &text, nullptr);
    gl().glCompileShader(shader);
    return shader;
}

// Current on a thread, and its loss.

std::uint32_t GlDevice::enter() {
    if (current_) return 0;
    if (lost_ || !windowExists()) return sprite_error::kDeviceLost;
    if (gl().eglMakeCurrent(on_.display, surface_, surface_, context_) != EGL_TRUE) return failed();
    current_ = true;
    if (!discarded_.empty()) {
        gl().glDeleteTextures(static_cast<GLsizei>(discarded_.size()), discarded_.data());
        discarded_.clear();
    }
    return 0;
}

void GlDevice::leave() {
    if (!current_) return;
    gl().eglMakeCurrent(on_.display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    current_ = false;
}

std::uint32_t GlDevice::failed() {
    if (gl().eglGetError() != EGL_CONTEXT_LOST) return sprite_error::kInvalidCall;
    lost_ = true;
    return sprite_error::kDeviceLost;
}

// Asked before OpenGL asks: with a window that is gone, or its server, drivers draw on one of any size.
bool GlDevice::windowExists() const {
    const X11Library& x = *on_.x;
    const auto asked = x.xcb_get_geometry(on_.connection, child_);
    return Reply<xcb_get_geometry_reply_t>(x.xcb_get_geometry_reply(on_.connection, asked, nullptr)) !=
           nullptr;
}

// A window or server that is gone does not come back for this device.
std::uint32_t GlDevice::testCooperativeLevel() {
    if (!windowExists()) return sprite_error::kDeviceLost;
    return lost_ ? sprite_error::kDeviceNotReset : 0;
}

std::uint32_t GlDevice::reset(const PresentParameters& parameters) {
    leave();
    destroyContext();
    const std::uint32_t failure = elsewhere([&] { return createContext(parameters); });
    lost_ = failure != 0;  // to be tried again
    return failure;
}

// What is made on it.

std::uint32_t GlDevice::createTexture(Size size, SpriteFormat format,
                                      std::unique_ptr<ISpriteTexture>& texture) {
    if (size.width > largestSide_ || size.height > largestSide_) return sprite_error::kInvalidCall;
    auto made = std::make_unique<GlTexture>(*this, size, format);
    if (const std::uint32_t failure = made->create(); failure != 0) return failure;
    texture = std::move(made);
    return 0;
}

std::uint32_t GlDevice::createOffscreenSurface(Size size, SpriteFormat,
                                               std::unique_ptr<ISpriteSurface>& surface) {
    auto made = std::make_unique<MemorySurface>();
    if (const std::uint32_t failure = made->create(size); failure != 0) return failure;
    surface = std::move(made);
    return 0;
}

std::uint32_t GlDevice::createSprite(std::unique_ptr<ISprite>& sprite) {
    sprite = std::make_unique<GlSprite>(*this);
    return 0;
}

std::uint32_t GlDevice::backBuffer(std::unique_ptr<ISpriteSurface>& surface) {
    surface = std::make_unique<GlBackBuffer>(*this);
    return 0;
}

// Drawing. Rows count from the bottom here.

std::uint32_t GlDevice::clear(std::span<const Rectangle> rectangles, std::uint32_t flags, std::uint32_t color,
                              float depth, std::uint32_t) {
    if (const std::uint32_t failure = enter(); failure != 0) return failure;
    gl().glClearColor(channel(color, 16), channel(color, 8), channel(color, 0), channel(color, 24));
    gl().glClearDepthf(depth);
    const GLbitfield what = ((flags & kClearTarget) != 0 ? GL_COLOR_BUFFER_BIT : 0u) |
                            ((flags & kClearDepth) != 0 ? GL_DEPTH_BUFFER_BIT : 0u);
    gl().glEnable(GL_SCISSOR_TEST);
    const auto width = static_cast<std::int32_t>(size_.width);
    const auto height = static_cast<std::int32_t>(size_.height);
    for (const Rectangle& rectangle : rectangles) {
        const std::int32_t left = std::clamp(rectangle.left, 0, width);
        const std::int32_t right = std::clamp(rectangle.right, 0, width);
        const std::int32_t top = std::clamp(rectangle.top, 0, height);
        const std::int32_t bottom = std::clamp(rectangle.bottom, 0, height);
        if (right <= left || bottom <= top) continue;
        gl().glScissor(left, height - bottom, right - left, bottom - top);
        gl().glClear(what);
    }
    gl().glDisable(GL_SCISSOR_TEST);
    return 0;
}

std::uint32_t GlDevice::present() {
    if (const std::uint32_t failure = enter(); failure != 0) return failure;
    std::uint32_t result = sprite_error::kDeviceLost;
    if (windowExists()) result = gl().eglSwapBuffers(on_.display, surface_) == EGL_TRUE ? 0 : failed();
    leave();
    on_.dropEvents();
    return result;
}

}  // namespace tavra::platform
