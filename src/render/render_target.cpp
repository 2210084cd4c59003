// RenderTarget: an EGL context per control, drawing into a framebuffer object.
//
// Contents
//   1. The process's EGL display
//   2. Framebuffer entry points
//   3. Bitmap
//   4. RenderTarget
//
// There is no window system here. The process opens one EGL display, the first that
// works of: a hardware device on the device platform (EGL_EXT_platform_device), Mesa's
// surfaceless platform (EGL_MESA_platform_surfaceless, llvmpipe when there is no GPU),
// and a software device on the device platform. The display is opened on first use and
// never terminated: Mesa makes opening and terminating displays slow and racy, and one
// display serves any number of contexts. Every target owns a compatibility-profile
// context made current without a surface (EGL_KHR_surfaceless_context), so every frame
// goes to the target's framebuffer object and is read back into its bitmap.

// Keep X11's macros (None, Bool, Status, ...) out of this file.
#define EGL_NO_X11 1
#define MESA_EGL_NO_X11_HEADERS 1
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>
#include <GL/glext.h>

#include "render/render_target.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstdio>
#include <mutex>
#include <new>
#include <sstream>
#include <string_view>

#include "orvane/core/error.h"

namespace orvane::detail {

namespace {

// The largest padded bitmap, in bytes, fits the 32-bit fields of the header, so no
// product of two accepted sides can overflow.
static_assert(std::uint64_t{(RenderTarget::kMaxSide * 3 + 3) / 4 * 4} * RenderTarget::kMaxSide <=
              0xFFFFFFFFu);

bool HasWord(const char* list, std::string_view word) {
  if (list == nullptr) return false;
  std::string_view rest(list);
  while (!rest.empty()) {
    const std::size_t end = std::min(rest.find(' '), rest.size());
    if (rest.substr(0, end) == word) return true;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return false;
}

std::string EglErrorName(EGLint code) {
  switch (code) {
    case EGL_SUCCESS: return "EGL_SUCCESS";
    case EGL_NOT_INITIALIZED: return "EGL_NOT_INITIALIZED";
    case EGL_BAD_ACCESS: return "EGL_BAD_ACCESS";
    case EGL_BAD_ALLOC: return "EGL_BAD_ALLOC";
    case EGL_BAD_ATTRIBUTE: return "EGL_BAD_ATTRIBUTE";
    case EGL_BAD_CONFIG: return "EGL_BAD_CONFIG";
    case EGL_BAD_CONTEXT: return "EGL_BAD_CONTEXT";
    case EGL_BAD_DISPLAY: return "EGL_BAD_DISPLAY";
    case EGL_BAD_MATCH: return "EGL_BAD_MATCH";
    case EGL_BAD_PARAMETER: return "EGL_BAD_PARAMETER";
    default: {
      char text[16];
      std::snprintf(text, sizeof text, "0x%04X", static_cast<unsigned>(code));
      return text;
    }
  }
}

std::string LastEglError() { return EglErrorName(eglGetError()); }

// ---------------------------------------------------------------------------------------
// 1. The process's EGL display

struct SharedDisplay {
  EGLDisplay display = EGL_NO_DISPLAY;
  std::string description;  // how it was reached, such as "EGL surfaceless platform"
  std::string failure;      // why there is none
  bool noConfigContext = false;
  bool createContext = false;  // context attributes of EGL 1.5 / EGL_KHR_create_context
};

// Initialises a platform display and keeps it when it can make OpenGL contexts without a
// surface; otherwise terminates it and says why.
bool TryDisplay(SharedDisplay& out, EGLenum platform, void* native, const std::string& name,
                std::string& why) {
  const auto getPlatformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
      eglGetProcAddress("eglGetPlatformDisplayEXT"));
  if (getPlatformDisplay == nullptr) {
    why += name + ": no eglGetPlatformDisplayEXT; ";
    return false;
  }
  EGLDisplay display = getPlatformDisplay(platform, native, nullptr);
  if (display == EGL_NO_DISPLAY) {
    why += name + ": no display (" + LastEglError() + "); ";
    return false;
  }
  EGLint major = 0;
  EGLint minor = 0;
  if (eglInitialize(display, &major, &minor) != EGL_TRUE) {
    why += name + ": eglInitialize failed (" + LastEglError() + "); ";
    return false;
  }
  const char* apis = eglQueryString(display, EGL_CLIENT_APIS);
  const char* extensions = eglQueryString(display, EGL_EXTENSIONS);
  if (!HasWord(apis, "OpenGL")) {
    why += name + ": no desktop OpenGL; ";
  } else if (!HasWord(extensions, "EGL_KHR_surfaceless_context")) {
    why += name + ": no EGL_KHR_surfaceless_context; ";
  } else {
    out.display = display;
    out.description = name + " (EGL " + std::to_string(major) + "." + std::to_string(minor) + ")";
    out.noConfigContext = HasWord(extensions, "EGL_KHR_no_config_context");
    out.createContext = major > 1 || (major == 1 && minor >= 5) ||
                        HasWord(extensions, "EGL_KHR_create_context");
    return true;
  }
  eglTerminate(display);
  return false;
}

SharedDisplay OpenDisplay() {
  SharedDisplay shared;
  const char* client = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
  if (client == nullptr) {
    shared.failure = "the EGL library has no client extensions (EGL " + LastEglError() + ")";
    return shared;
  }
  std::string why;

  // Devices, hardware first; software ones are kept for the last resort.
  std::vector<EGLDeviceEXT> software;
  if (HasWord(client, "EGL_EXT_platform_device") && HasWord(client, "EGL_EXT_device_enumeration")) {
    const auto queryDevices =
        reinterpret_cast<PFNEGLQUERYDEVICESEXTPROC>(eglGetProcAddress("eglQueryDevicesEXT"));
    const auto queryString = reinterpret_cast<PFNEGLQUERYDEVICESTRINGEXTPROC>(
        eglGetProcAddress("eglQueryDeviceStringEXT"));
    EGLDeviceEXT devices[16];
    EGLint count = 0;
    if (queryDevices != nullptr && queryString != nullptr &&
        queryDevices(16, devices, &count) == EGL_TRUE) {
      for (EGLint i = 0; i < count; ++i) {
        const char* deviceExtensions = queryString(devices[i], EGL_EXTENSIONS);
        if (HasWord(deviceExtensions, "EGL_MESA_device_software")) {
          software.push_back(devices[i]);
          continue;
        }
        std::string name = "EGL device platform, device " + std::to_string(i);
        if (HasWord(deviceExtensions, "EGL_EXT_device_drm")) {
          if (const char* file = queryString(devices[i], EGL_DRM_DEVICE_FILE_EXT)) {
            name += std::string(" ") + file;
          }
        }
        if (TryDisplay(shared, EGL_PLATFORM_DEVICE_EXT, devices[i], name, why)) return shared;
      }
    }
  }
  if (HasWord(client, "EGL_MESA_platform_surfaceless") &&
      TryDisplay(shared, EGL_PLATFORM_SURFACELESS_MESA, nullptr, "EGL surfaceless platform", why)) {
    return shared;
  }
  for (std::size_t i = 0; i < software.size(); ++i) {
    if (TryDisplay(shared, EGL_PLATFORM_DEVICE_EXT, software[i],
                   "EGL device platform, software device " + std::to_string(i), why)) {
      return shared;
    }
  }
  shared.failure = why.empty() ? "no EGL platform without a window system is offered"
                               : "no usable EGL display: " + why.substr(0, why.size() - 2);
  return shared;
}

const SharedDisplay& Display() {
  static const SharedDisplay shared = OpenDisplay();
  return shared;
}

// Makes a context current for the guard's lifetime and then puts back what was current.
class CurrentGuard {
 public:
  CurrentGuard(EGLDisplay display, EGLContext context)
      : display_(eglGetCurrentDisplay()),
        draw_(eglGetCurrentSurface(EGL_DRAW)),
        read_(eglGetCurrentSurface(EGL_READ)),
        context_(eglGetCurrentContext()),
        ours_(display) {
    made_ = context_ == context ||
            eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context) == EGL_TRUE;
  }
  ~CurrentGuard() {
    if (eglGetCurrentContext() == context_) return;
    if (context_ != EGL_NO_CONTEXT) {
      eglMakeCurrent(display_, draw_, read_, context_);
    } else {
      eglMakeCurrent(ours_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
  }
  CurrentGuard(const CurrentGuard&) = delete;
  CurrentGuard& operator=(const CurrentGuard&) = delete;
  bool Made() const noexcept { return made_; }

 private:
  EGLDisplay display_;
  EGLSurface draw_;
  EGLSurface read_;
  EGLContext context_;
  EGLDisplay ours_;
  bool made_ = false;
};

// ---------------------------------------------------------------------------------------
// 2. Framebuffer entry points
//
// Framebuffer objects are core since OpenGL 3.0 (and GL_ARB_framebuffer_object before);
// libOpenGL need not export them, so they are looked up through EGL. The pointers do not
// depend on the context.

struct FramebufferApi {
  PFNGLGENFRAMEBUFFERSPROC genFramebuffers = nullptr;
  PFNGLDELETEFRAMEBUFFERSPROC deleteFramebuffers = nullptr;
  PFNGLBINDFRAMEBUFFERPROC bindFramebuffer = nullptr;
  PFNGLCHECKFRAMEBUFFERSTATUSPROC checkFramebufferStatus = nullptr;
  PFNGLGENRENDERBUFFERSPROC genRenderbuffers = nullptr;
  PFNGLDELETERENDERBUFFERSPROC deleteRenderbuffers = nullptr;
  PFNGLBINDRENDERBUFFERPROC bindRenderbuffer = nullptr;
  PFNGLRENDERBUFFERSTORAGEPROC renderbufferStorage = nullptr;
  PFNGLFRAMEBUFFERRENDERBUFFERPROC framebufferRenderbuffer = nullptr;
  PFNGLBINDBUFFERPROC bindBuffer = nullptr;
  // Multisampling (core since 3.0 as well); a target asks for it only when both exist.
  PFNGLRENDERBUFFERSTORAGEMULTISAMPLEPROC renderbufferStorageMultisample = nullptr;
  PFNGLBLITFRAMEBUFFERPROC blitFramebuffer = nullptr;

  bool Complete() const noexcept {
    return genFramebuffers && deleteFramebuffers && bindFramebuffer && checkFramebufferStatus &&
           genRenderbuffers && deleteRenderbuffers && bindRenderbuffer && renderbufferStorage &&
           framebufferRenderbuffer && bindBuffer;
  }
  bool Multisampling() const noexcept { return renderbufferStorageMultisample && blitFramebuffer; }
};

template <class F>
void Load(F& f, const char* name) {
  f = reinterpret_cast<F>(eglGetProcAddress(name));
}

const FramebufferApi& Framebuffers() {
  static const FramebufferApi api = [] {
    FramebufferApi a;
    Load(a.genFramebuffers, "glGenFramebuffers");
    Load(a.deleteFramebuffers, "glDeleteFramebuffers");
    Load(a.bindFramebuffer, "glBindFramebuffer");
    Load(a.checkFramebufferStatus, "glCheckFramebufferStatus");
    Load(a.genRenderbuffers, "glGenRenderbuffers");
    Load(a.deleteRenderbuffers, "glDeleteRenderbuffers");
    Load(a.bindRenderbuffer, "glBindRenderbuffer");
    Load(a.renderbufferStorage, "glRenderbufferStorage");
    Load(a.framebufferRenderbuffer, "glFramebufferRenderbuffer");
    Load(a.bindBuffer, "glBindBuffer");
    Load(a.renderbufferStorageMultisample, "glRenderbufferStorageMultisample");
    Load(a.blitFramebuffer, "glBlitFramebuffer");
    return a;
  }();
  return api;
}

std::atomic<RenderTarget::FailPoint> failPoint{RenderTarget::FailPoint::kNone};

// The target whose context this thread made current (ReadPixels reads through it).
thread_local const RenderTarget* currentTarget = nullptr;

// A framebuffer of one colour renderbuffer (RGBA8) and one depth-stencil renderbuffer,
// multisampled when samples > 1; bound for drawing and reading on return.
void MakeFramebuffer(const FramebufferApi& fb, std::int32_t width, std::int32_t height, int samples,
                     std::uint32_t& framebuffer, std::uint32_t& color, std::uint32_t& depthStencil) {
  const auto storage = [&](GLenum format) {
    if (samples > 1) {
      fb.renderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, width, height);
    } else {
      fb.renderbufferStorage(GL_RENDERBUFFER, format, width, height);
    }
  };
  fb.genFramebuffers(1, &framebuffer);
  fb.bindFramebuffer(GL_FRAMEBUFFER, framebuffer);
  fb.genRenderbuffers(1, &color);
  fb.bindRenderbuffer(GL_RENDERBUFFER, color);
  storage(GL_RGBA8);
  fb.framebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, color);
  fb.genRenderbuffers(1, &depthStencil);
  fb.bindRenderbuffer(GL_RENDERBUFFER, depthStencil);
  storage(GL_DEPTH24_STENCIL8);
  fb.framebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depthStencil);
  fb.framebufferRenderbuffer(GL_FRAMEBUFFER, GL_STENCIL_ATTACHMENT, GL_RENDERBUFFER, depthStencil);
  fb.bindRenderbuffer(GL_RENDERBUFFER, 0);
}

std::mutex descriptionMutex;
std::string glDescription;  // version and renderer of the first context made

std::string GlString(GLenum name) {
  const auto* text = reinterpret_cast<const char*>(glGetString(name));
  return text != nullptr ? text : "";
}

// "OpenGL 4.5 (Compatibility Profile) Mesa 22.3.6" -> 4 and 5.
void GlVersion(int& major, int& minor) {
  major = 0;
  minor = 0;
  std::istringstream in(GlString(GL_VERSION));
  char dot = 0;
  in >> major >> dot >> minor;
}

}  // namespace

// ---------------------------------------------------------------------------------------
// 3. Bitmap

std::size_t Bitmap::Stride() const noexcept {
  const auto width = static_cast<std::size_t>(std::max(header.biWidth, 0));
  return (width * 3 + 3) / 4 * 4;
}

Color Bitmap::Pixel(int x, int y) const {
  const int height = std::abs(header.biHeight);
  if (x < 0 || y < 0 || x >= header.biWidth || y >= height) {
    throw Error(9, RenderTarget::kErrorSource,
                "The pixel (" + std::to_string(x) + ", " + std::to_string(y) +
                    ") lies outside the " + std::to_string(header.biWidth) + " x " +
                    std::to_string(height) + " bitmap.");
  }
  const int row = header.biHeight > 0 ? height - 1 - y : y;
  const std::uint8_t* bgr =
      bits.data() + static_cast<std::size_t>(row) * Stride() + static_cast<std::size_t>(x) * 3;
  return Rgb(bgr[2], bgr[1], bgr[0]);
}

// ---------------------------------------------------------------------------------------
// 4. RenderTarget

RenderTarget::~RenderTarget() { Release(); }

void RenderTarget::Create(std::int32_t width, std::int32_t height, int samples) {
  const std::string size = std::to_string(width) + " x " + std::to_string(height);
  if (width < 0 || height < 0) {
    throw Error(5, kErrorSource, "The drawing size " + size + " is invalid: a side is negative.");
  }
  if (width > kMaxSide || height > kMaxSide) {
    throw Error(5, kErrorSource,
                "The drawing size " + size + " is too large: each side may be at most " +
                    std::to_string(kMaxSide) + " pixels.");
  }
  Bitmap fresh;
  fresh.header.biWidth = width;
  fresh.header.biHeight = height;
  fresh.header.biSizeImage = static_cast<std::uint32_t>(width) * static_cast<std::uint32_t>(height) * 3u;
  try {
    fresh.bits.assign(fresh.Stride() * static_cast<std::size_t>(height), 0);
  } catch (const std::bad_alloc&) {
    throw Error(7, kErrorSource, "There is not enough memory for a drawing of " + size + " pixels.");
  }

  Release();
  bitmap_ = std::move(fresh);
  if (!BuildContext(std::max(width, 1), std::max(height, 1), samples)) {
    DestroyContext();
  } else {
    static std::uint64_t contexts = 0;
    generation_ = ++contexts;
  }
}

bool RenderTarget::BuildContext(std::int32_t width, std::int32_t height, int samples) {
  const SharedDisplay& shared = Display();
  if (shared.display == EGL_NO_DISPLAY) {
    failureReason_ = shared.failure;
    return false;
  }
  if (eglBindAPI(EGL_OPENGL_API) != EGL_TRUE) {
    failureReason_ = "EGL cannot bind the OpenGL API (" + LastEglError() + ")";
    return false;
  }
  EGLConfig config = EGL_NO_CONFIG_KHR;
  if (!shared.noConfigContext) {
    const EGLint wanted[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_SURFACE_TYPE,
                             EGL_PBUFFER_BIT, EGL_NONE};
    EGLint count = 0;
    if (eglChooseConfig(shared.display, wanted, &config, 1, &count) != EGL_TRUE || count < 1) {
      failureReason_ = "no EGL configuration renders OpenGL (" + LastEglError() + ")";
      return false;
    }
  }

  // A compatibility profile of at least 3.2 where the context attributes exist; the
  // driver gives the newest version it has. Otherwise, or when that is refused, a legacy
  // context, which is a compatibility one by nature.
  if (failPoint.load() != FailPoint::kContext) {
    if (shared.createContext) {
      const EGLint compatibility[] = {EGL_CONTEXT_MAJOR_VERSION, 3,
                                      EGL_CONTEXT_MINOR_VERSION, 2,
                                      EGL_CONTEXT_OPENGL_PROFILE_MASK,
                                      EGL_CONTEXT_OPENGL_COMPATIBILITY_PROFILE_BIT,
                                      EGL_NONE};
      context_ = eglCreateContext(shared.display, config, EGL_NO_CONTEXT, compatibility);
    }
    if (context_ == EGL_NO_CONTEXT) {
      const EGLint legacy[] = {EGL_NONE};
      context_ = eglCreateContext(shared.display, config, EGL_NO_CONTEXT, legacy);
    }
  }
  if (context_ == EGL_NO_CONTEXT) {
    context_ = nullptr;
    failureReason_ = "EGL refused an OpenGL context (" + LastEglError() + ")";
    return false;
  }

  CurrentGuard current(shared.display, context_);
  if (!current.Made()) {
    failureReason_ = "the new context cannot be made current (" + LastEglError() + ")";
    return false;
  }
  int major = 0;
  int minor = 0;
  GlVersion(major, minor);
  if (major >= 3 && (major > 3 || minor >= 2)) {
    GLint profile = 0;
    glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
    if ((profile & GL_CONTEXT_COMPATIBILITY_PROFILE_BIT) == 0) {
      failureReason_ = "the driver gave a core-profile context (" + GlString(GL_VERSION) + ")";
      return false;
    }
  }
  const FramebufferApi& fb = Framebuffers();
  if (major < 3 && !HasWord(reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS)),
                            "GL_ARB_framebuffer_object")) {
    failureReason_ = "OpenGL " + GlString(GL_VERSION) + " has no framebuffer objects";
    return false;
  }
  if (!fb.Complete()) {
    failureReason_ = "the framebuffer functions cannot be found";
    return false;
  }
  GLint largest = 0;
  glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &largest);
  if (width > largest || height > largest) {
    failureReason_ = "the driver's renderbuffers are at most " + std::to_string(largest) + " pixels a side";
    return false;
  }

  while (glGetError() != GL_NO_ERROR) {
  }
  // As many samples as asked for, where the driver has that many.
  GLint mostSamples = 0;
  if (samples > 1 && fb.Multisampling()) glGetIntegerv(GL_MAX_SAMPLES, &mostSamples);
  samples_ = std::clamp(samples, 1, std::max(static_cast<int>(mostSamples), 1));
  if (samples_ > 1) {
    MakeFramebuffer(fb, width, height, 1, resolveFramebuffer_, resolveColorBuffer_, resolveDepthStencilBuffer_);
    if (fb.checkFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) samples_ = 1;
  }
  MakeFramebuffer(fb, width, height, samples_, framebuffer_, colorBuffer_, depthStencilBuffer_);
  const GLenum status = fb.checkFramebufferStatus(GL_FRAMEBUFFER);
  const GLenum error = glGetError();
  if (failPoint.load() == FailPoint::kFramebuffer || status != GL_FRAMEBUFFER_COMPLETE ||
      error != GL_NO_ERROR) {
    char text[96];
    std::snprintf(text, sizeof text, "the framebuffer is incomplete (status 0x%04X, error 0x%04X)",
                  status, error);
    failureReason_ = text;
    return false;
  }
  glDrawBuffer(GL_COLOR_ATTACHMENT0);
  glReadBuffer(GL_COLOR_ATTACHMENT0);
  glViewport(0, 0, width, height);
  GLint depth = 0;
  GLint stencil = 0;
  glGetIntegerv(GL_DEPTH_BITS, &depth);
  glGetIntegerv(GL_STENCIL_BITS, &stencil);
  depthBits_ = depth;
  stencilBits_ = stencil;

  std::lock_guard<std::mutex> lock(descriptionMutex);
  if (glDescription.empty()) {
    glDescription = "OpenGL " + GlString(GL_VERSION) + ", " + GlString(GL_RENDERER);
  }
  return true;
}

void RenderTarget::DestroyContext() noexcept {
  if (context_ != nullptr) {
    const EGLDisplay display = Display().display;
    // The context's framebuffer and renderbuffers go with it: it shares no objects.
    // The current context is asked of the OpenGL API, whatever the thread last bound.
    eglBindAPI(EGL_OPENGL_API);
    if (eglGetCurrentContext() == context_) {
      eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
    eglDestroyContext(display, context_);
  }
  if (currentTarget == this) currentTarget = nullptr;
  context_ = nullptr;
  framebuffer_ = 0;
  colorBuffer_ = 0;
  depthStencilBuffer_ = 0;
  resolveFramebuffer_ = 0;
  resolveColorBuffer_ = 0;
  resolveDepthStencilBuffer_ = 0;
  samples_ = 1;
  depthBits_ = 0;
  stencilBits_ = 0;
}

void RenderTarget::Release() noexcept {
  DestroyContext();
  bitmap_ = Bitmap{};
  failureReason_.clear();
}

bool RenderTarget::MakeCurrent() noexcept {
  if (context_ == nullptr || eglBindAPI(EGL_OPENGL_API) != EGL_TRUE) return false;
  if (eglMakeCurrent(Display().display, EGL_NO_SURFACE, EGL_NO_SURFACE, context_) != EGL_TRUE) {
    return false;
  }
  Framebuffers().bindFramebuffer(GL_FRAMEBUFFER, framebuffer_);
  currentTarget = this;
  return true;
}

void RenderTarget::ReleaseCurrent() noexcept {
  if (context_ == nullptr || eglBindAPI(EGL_OPENGL_API) != EGL_TRUE) return;
  if (eglGetCurrentContext() == context_) {
    eglMakeCurrent(Display().display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
  }
  if (currentTarget == this) currentTarget = nullptr;
}

std::uint32_t RenderTarget::BindForReading(int x, int y, int width, int height, unsigned mask) const noexcept {
  const FramebufferApi& fb = Framebuffers();
  GLint readFramebuffer = 0;
  glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &readFramebuffer);
  if (samples_ <= 1) {
    fb.bindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer_);
    return static_cast<std::uint32_t>(readFramebuffer);
  }
  GLint drawFramebuffer = 0;
  glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &drawFramebuffer);
  // The blit obeys neither the scissor nor the colour mask's absence of alpha: the
  // scissor is lifted for it, and resolving touches only the resolve buffers.
  const GLboolean scissor = glIsEnabled(GL_SCISSOR_TEST);
  glDisable(GL_SCISSOR_TEST);
  fb.bindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer_);
  fb.bindFramebuffer(GL_DRAW_FRAMEBUFFER, resolveFramebuffer_);
  fb.blitFramebuffer(x, y, x + width, y + height, x, y, x + width, y + height, mask, GL_NEAREST);
  fb.bindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(drawFramebuffer));
  fb.bindFramebuffer(GL_READ_FRAMEBUFFER, resolveFramebuffer_);
  if (scissor == GL_TRUE) glEnable(GL_SCISSOR_TEST);
  return static_cast<std::uint32_t>(readFramebuffer);
}

void RenderTarget::ReadPixels(int x, int y, int width, int height, unsigned format, unsigned type,
                              void* data) noexcept {
  const RenderTarget* target = currentTarget;
  if (target == nullptr || target->context_ == nullptr || eglGetCurrentContext() != target->context_) {
    glReadPixels(x, y, width, height, format, type, data);
    return;
  }
  const GLbitfield mask = format == GL_DEPTH_COMPONENT ? GL_DEPTH_BUFFER_BIT
                          : format == GL_STENCIL_INDEX ? GL_STENCIL_BUFFER_BIT
                          : format == GL_DEPTH_STENCIL ? GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT
                                                       : GL_COLOR_BUFFER_BIT;
  const std::uint32_t restore = target->BindForReading(x, y, width, height, mask);
  glReadPixels(x, y, width, height, format, type, data);
  Framebuffers().bindFramebuffer(GL_READ_FRAMEBUFFER, restore);
}

void RenderTarget::ReadBack() noexcept {
  if (context_ == nullptr || bitmap_.bits.empty() || eglBindAPI(EGL_OPENGL_API) != EGL_TRUE) {
    return;
  }
  CurrentGuard current(Display().display, context_);
  if (!current.Made()) return;
  const FramebufferApi& fb = Framebuffers();
  GLint packBuffer = 0;
  glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &packBuffer);
  const std::uint32_t readFramebuffer =
      BindForReading(0, 0, bitmap_.header.biWidth, bitmap_.header.biHeight, GL_COLOR_BUFFER_BIT);
  fb.bindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
  glPixelStorei(GL_PACK_ALIGNMENT, 4);
  glPixelStorei(GL_PACK_ROW_LENGTH, 0);
  glPixelStorei(GL_PACK_SKIP_ROWS, 0);
  glPixelStorei(GL_PACK_SKIP_PIXELS, 0);
  glPixelStorei(GL_PACK_SWAP_BYTES, GL_FALSE);
  glReadPixels(0, 0, bitmap_.header.biWidth, bitmap_.header.biHeight, GL_BGR, GL_UNSIGNED_BYTE,
               bitmap_.bits.data());
  glPopClientAttrib();
  fb.bindBuffer(GL_PIXEL_PACK_BUFFER, static_cast<GLuint>(packBuffer));
  fb.bindFramebuffer(GL_READ_FRAMEBUFFER, readFramebuffer);
}

void RenderTarget::CopyTo(DeviceContext& dc, int left, int top) const {
  const int width = Width();
  const int height = Height();
  if (width == 0 || height == 0) return;
  dc.StretchDIBits(left, top, width, height, 0, 0, width, height, bitmap_.bits.data(),
                   bitmap_.header);
}

std::string RenderTarget::PlatformDescription() {
  const SharedDisplay& shared = Display();
  if (shared.display == EGL_NO_DISPLAY) return "no OpenGL: " + shared.failure;
  std::lock_guard<std::mutex> lock(descriptionMutex);
  return glDescription.empty() ? shared.description : shared.description + ", " + glDescription;
}

void RenderTarget::FailAtForTesting(FailPoint point) noexcept { failPoint.store(point); }

}  // namespace orvane::detail
