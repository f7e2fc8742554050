// OpenGL ES and EGL, loaded when the first window that draws with them is wanted.
#pragma once

#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES2/gl2.h>

#include "base/status.h"

namespace tavra::platform {

// The functions used, by their own names.
// clang-format off
#define TAVRA_EGL_FUNCTIONS(USE) \
    USE(eglGetProcAddress) USE(eglQueryString) USE(eglInitialize) USE(eglTerminate) USE(eglBindAPI) \
    USE(eglChooseConfig) USE(eglGetConfigAttrib) USE(eglCreateContext) USE(eglDestroyContext) \
    USE(eglDestroySurface) USE(eglMakeCurrent) USE(eglSwapBuffers) USE(eglSwapInterval) USE(eglGetError) \
    USE(eglReleaseThread) USE(eglSurfaceAttrib)

#define TAVRA_GLES_FUNCTIONS(USE) \
    USE(glActiveTexture) USE(glAttachShader) USE(glBindAttribLocation) USE(glBindTexture) USE(glBlendFunc) \
    USE(glClear) USE(glClearColor) USE(glClearDepthf) USE(glCompileShader) USE(glCreateProgram) \
    USE(glCreateShader) USE(glDeleteShader) USE(glDeleteTextures) USE(glDisable) USE(glDrawArrays) \
    USE(glEnable) USE(glEnableVertexAttribArray) USE(glFinish) USE(glGenTextures) USE(glGetIntegerv) \
    USE(glGetProgramiv) USE(glGetUniformLocation) USE(glLinkProgram) USE(glPixelStorei) USE(glReadPixels) \
    USE(glScissor) USE(glShaderSource) USE(glTexImage2D) USE(glTexParameteri) USE(glTexSubImage2D) \
    USE(glUniform1f) USE(glUniform4f) USE(glUseProgram) USE(glVertexAttribPointer) USE(glViewport)
// clang-format on

struct GlLibrary {
// A declared name takes no parentheses.
#define TAVRA_MEMBER(name) decltype(&::name) name = nullptr;  // NOLINT(bugprone-macro-parentheses)
    TAVRA_EGL_FUNCTIONS(TAVRA_MEMBER)
    TAVRA_GLES_FUNCTIONS(TAVRA_MEMBER)
#undef TAVRA_MEMBER
    PFNEGLGETPLATFORMDISPLAYEXTPROC eglGetPlatformDisplay = nullptr;
    PFNEGLCREATEPLATFORMWINDOWSURFACEEXTPROC eglCreatePlatformWindowSurface = nullptr;
};

// Where the operations of a library come from, by file name: dlopen and dlsym, unless a test stands in.
struct GlLoader {
    void* (*open)(const char* name);
    void* (*look)(void* library, const char* name);
};

// 126: they are not installed; 127: they lack an operation.
Status loadGl(const GlLoader& loader, GlLibrary& library);

// The same from the system, once, kept until the process ends.
Status loadGl(const GlLibrary*& library);

}  // namespace tavra::platform
