#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvane {

class Surface;

/// "Flat or 3-D border look" of the control's window.
enum EAppearance : std::int16_t {
  orvFlat = 0,  ///< a flat border
  orv3d = 1,    ///< a sunken 3-D border
};

/// The border of the control's window.
enum EBorderStyle : std::int32_t {
  orvNone = 0,         ///< no border
  orvFixedSingle = 1,  ///< a single fixed line
};

/// The pointer shape of the host's window when nothing else is asked for.
inline constexpr std::int32_t kPointerDefault = 0;
/// The wait pointer shown during long work.
inline constexpr std::int32_t kPointerHourglass = 11;

/// What the program that embeds a Surface gives it: the window it lives in, the
/// notifications it sends the host, and the host's services. The embedding program
/// implements it (the Qt widget does, HeadlessHost does for the command and for tests)
/// and keeps it alive for as long as the Surface. Every call comes on the thread the
/// Surface lives on.
class Host {
 public:
  virtual ~Host() = default;

  /// The ambient user mode: true when the program runs, false while a form designer
  /// shows the control. At design time nothing refreshes by itself.
  virtual bool UserMode() const = 0;

  /// Whether the window takes input.
  virtual bool Enabled() const = 0;
  /// Enables or disables the window.
  virtual void SetEnabled(bool value) = 0;
  /// The window's current border.
  virtual EBorderStyle BorderStyle() const = 0;
  /// Gives the window a new border.
  virtual void SetBorderStyle(EBorderStyle value) = 0;
  /// The window's current border look.
  virtual EAppearance Appearance() const = 0;
  /// Gives the window a new border look.
  virtual void SetAppearance(EAppearance value) = 0;
  /// The window's pointer shape (kPointerDefault, kPointerHourglass, ...).
  virtual std::int32_t MousePointer() const = 0;
  /// Shows another pointer shape over the window.
  virtual void SetMousePointer(std::int32_t shape) = 0;

  /// A persisted property of the control changed; key is the key it is stored under
  /// ("BackColor", "HorizontalOffset", "DataSet2", "Main_Visible", ...), so that the
  /// host can mark its saved state out of date.
  virtual void PropertyChanged(const std::string& key) = 0;

  /// The control has a new picture: the host should paint the window soon, by calling
  /// Surface::OnPaint with the window's device context.
  virtual void RequestRepaint() = 0;

  /// Puts a device-independent bitmap on the clipboard: the 40-byte bitmap header
  /// directly followed by the pixel rows. False when the clipboard cannot take it (or
  /// there is none).
  virtual bool SetClipboardBitmap(const std::vector<std::uint8_t>& bitmap) = 0;

  /// Opens the property pages of the control with the given settings.
  virtual void ShowPropertyPages(Surface& surface, const std::vector<std::string>& settings) = 0;

  /// How far a long piece of work has come, 0 to 1. Returning false asks the control to
  /// stop it: the work then ends with error 18 and changes nothing. Called on the
  /// control's thread; it must not change the control.
  virtual bool ReportProgress(double fractionDone) = 0;

 protected:
  Host() = default;
  Host(const Host&) = default;
  Host& operator=(const Host&) = default;
};

}  // namespace orvane
