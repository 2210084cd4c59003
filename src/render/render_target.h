#pragma once

// The control's off-screen drawing target: an OpenGL context of its own that draws into
// a framebuffer object, and the bitmap the finished frame is read back into. Internal:
// no compatibility promise.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "orvane/core/color.h"
#include "orvane/render/device_context.h"

namespace orvane::detail {

/// A 24-bit device-independent bitmap: rows of B, G, R bytes, the bottom row first, each
/// row padded to a multiple of 4 bytes.
struct Bitmap {
  /// biSize 40, biWidth and biHeight the size (biHeight positive: bottom-up), biPlanes 1,
  /// biBitCount 24, biCompression 0, biSizeImage width x height x 3 without the row
  /// padding (advisory), the rest 0.
  BitmapInfoHeader header;
  /// Stride() x height bytes.
  std::vector<std::uint8_t> bits;

  /// Bytes per row, padding included.
  std::size_t Stride() const noexcept;
  /// The colour of one pixel (0x00BBGGRR), origin at the top-left corner. A pixel
  /// outside the bitmap raises error 9.
  Color Pixel(int x, int y) const;
};

/// One control's drawing target. The OpenGL context is current only between
/// MakeCurrent and ReleaseCurrent (one paint); several targets may live side by side,
/// each with its own context and image.
///
/// The context is a compatibility-profile OpenGL context (display lists, attribute
/// stacks, immediate mode, fixed-function lighting, clip planes, line stipple) drawing
/// into a framebuffer object with an 8-bit RGBA colour buffer, 24-bit depth and 8-bit
/// stencil. When no context can be had the target still holds its bitmap: HasContext()
/// is false, FailureReason() says why, and frames leave the bitmap as it was.
class RenderTarget {
 public:
  /// The largest width and height accepted, in pixels; also the largest renderbuffer
  /// most drivers (llvmpipe among them) can make.
  static constexpr std::int32_t kMaxSide = 16384;

  /// The error source of refused sizes: the target belongs to the Surface control.
  static constexpr const char* kErrorSource = "Orvada.Surface";

  RenderTarget() = default;
  RenderTarget(const RenderTarget&) = delete;
  RenderTarget& operator=(const RenderTarget&) = delete;
  ~RenderTarget();

  /// Releases whatever the target holds and builds it again at width x height pixels:
  /// a zero-filled bitmap, then the context and its framebuffer. With samples above 1
  /// the framebuffer is multisampled, with as many samples as the driver allows up to
  /// that (one, the plain framebuffer, when it allows none), and resolved on reading. A side of 0 is valid
  /// (an empty bitmap; drawing goes to a 1 x 1 framebuffer and nothing is read back).
  /// A negative side or one above kMaxSide raises error 5 ("The drawing size W x H is
  /// ...") and memory exhaustion error 7, leaving the target exactly as it was. A
  /// failure to get a context is no error: see HasContext().
  void Create(std::int32_t width, std::int32_t height, int samples = 1);
  /// Frees the context and the bitmap; the size goes back to 0 x 0. Safe on a target
  /// never created or half built, and when called again.
  void Release() noexcept;

  /// True when the target has a working context and framebuffer.
  bool HasContext() const noexcept { return context_ != nullptr; }
  /// Why the last Create got no context; empty when it did.
  const std::string& FailureReason() const noexcept { return failureReason_; }

  /// Makes the context current on this thread with the target's framebuffer bound for
  /// drawing and reading. False, changing nothing, when there is no context or EGL
  /// refuses. A new context starts with the viewport covering the whole target.
  bool MakeCurrent() noexcept;
  /// Leaves no context current, if the current one is this target's.
  void ReleaseCurrent() noexcept;

  /// Reads the framebuffer into the bitmap (glReadPixels of GL_BGR with a pack alignment
  /// of 4, which is the bitmap's row layout). Uses the context whether or not it is
  /// current, and leaves current whatever was. Does nothing without a context or with an
  /// empty bitmap.
  void ReadBack() noexcept;

  /// The last image read back (zero bytes before the first read).
  const Bitmap& Image() const noexcept { return bitmap_; }
  std::int32_t Width() const noexcept { return bitmap_.header.biWidth; }
  std::int32_t Height() const noexcept { return bitmap_.header.biHeight; }

  /// A number of its own for every context made (0 without one): what was compiled in a
  /// context (display lists) is valid only while this stays the same.
  std::uint64_t Generation() const noexcept { return context_ != nullptr ? generation_ : 0; }

  /// Copies the whole image to dc with its top-left corner at (left, top), unscaled.
  void CopyTo(DeviceContext& dc, int left, int top) const;

  /// Samples per pixel of the framebuffer drawn into (1 when not multisampled, 0
  /// without a context).
  int Samples() const noexcept { return context_ != nullptr ? samples_ : 0; }

  /// glReadPixels from the framebuffer the current target draws into, which works on a
  /// multisampled one as well: the block is resolved into the target's single-sample
  /// framebuffer first (colour averaged; depth and stencil of one sample).
  static void ReadPixels(int x, int y, int width, int height, unsigned format, unsigned type, void* data) noexcept;

  /// Depth and stencil bits of the framebuffer (0 without a context).
  int DepthBits() const noexcept { return depthBits_; }
  int StencilBits() const noexcept { return stencilBits_; }

  /// How this process reaches OpenGL, such as "EGL surfaceless platform, OpenGL 4.5
  /// (Compatibility Profile) Mesa 22.3.6, llvmpipe (LLVM 15.0.6, 256 bits)" once a
  /// context has been made; the display part alone before.
  static std::string PlatformDescription();

  /// Where a Create may be made to fail on purpose, to test the paths of a half-built
  /// target.
  enum class FailPoint { kNone, kContext, kFramebuffer };
  /// Makes every later Create fail at point (kNone restores normal building).
  static void FailAtForTesting(FailPoint point) noexcept;

 private:
  bool BuildContext(std::int32_t width, std::int32_t height, int samples);
  // Binds the framebuffer reads come from, resolving the block (x, y, w, h) of the
  // buffers in mask first when multisampled; returns the read binding to restore.
  std::uint32_t BindForReading(int x, int y, int width, int height, unsigned mask) const noexcept;
  void DestroyContext() noexcept;

  Bitmap bitmap_;
  void* context_ = nullptr;  // EGLContext
  std::uint32_t framebuffer_ = 0;
  std::uint32_t colorBuffer_ = 0;
  std::uint32_t depthStencilBuffer_ = 0;
  // Multisampled: the single-sample framebuffer frames and blocks are resolved into.
  std::uint32_t resolveFramebuffer_ = 0;
  std::uint32_t resolveColorBuffer_ = 0;
  std::uint32_t resolveDepthStencilBuffer_ = 0;
  int samples_ = 1;
  int depthBits_ = 0;
  int stencilBits_ = 0;
  std::string failureReason_;
  std::uint64_t generation_ = 0;
};

}  // namespace orvane::detail
