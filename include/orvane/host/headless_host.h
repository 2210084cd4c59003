#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "orvane/host/host.h"

namespace orvane {

/// A host without a window, for the command line and for tests: it keeps the window's
/// state in memory and records what the control asked of it.
class HeadlessHost : public Host {
 public:
  /// In user mode, enabled, no border, flat, the default pointer.
  HeadlessHost() = default;

  bool UserMode() const override { return userMode_; }
  /// Switches between run time (true) and design time (false).
  void SetUserMode(bool value) noexcept { userMode_ = value; }

  bool Enabled() const override { return enabled_; }
  void SetEnabled(bool value) override { enabled_ = value; }
  EBorderStyle BorderStyle() const override { return borderStyle_; }
  void SetBorderStyle(EBorderStyle value) override { borderStyle_ = value; }
  EAppearance Appearance() const override { return appearance_; }
  void SetAppearance(EAppearance value) override { appearance_ = value; }
  std::int32_t MousePointer() const override { return pointer_; }
  /// Shows the shape and records it.
  void SetMousePointer(std::int32_t shape) override;

  /// Records the key.
  void PropertyChanged(const std::string& key) override;
  /// Counts the request.
  void RequestRepaint() override { ++repaintRequests_; }
  /// There is no clipboard: always false.
  bool SetClipboardBitmap(const std::vector<std::uint8_t>& bitmap) override;
  /// Counts the request; there are no pages to show.
  void ShowPropertyPages(Surface& surface, const std::vector<std::string>& settings) override;
  /// Records the fraction and passes it to the progress handler; true without one.
  bool ReportProgress(double fractionDone) override;

  /// Decides ReportProgress's answer from now on (an empty handler always goes on).
  void SetProgressHandler(std::function<bool(double)> handler) { progressHandler_ = std::move(handler); }

  /// Every key notified, in order.
  const std::vector<std::string>& NotifiedKeys() const noexcept { return keys_; }
  /// Every pointer shape set, in order.
  const std::vector<std::int32_t>& PointerChanges() const noexcept { return pointers_; }
  /// Every progress fraction reported, in order.
  const std::vector<double>& ProgressReports() const noexcept { return progress_; }
  /// How many repaints were requested.
  std::int64_t RepaintRequests() const noexcept { return repaintRequests_; }
  /// How many times the property pages were asked for.
  std::int64_t PropertyPageRequests() const noexcept { return pageRequests_; }
  /// Forgets the records (keys, pointers, progress and the counts); the window keeps
  /// its state.
  void ClearRecords() noexcept;

 private:
  bool userMode_ = true;
  bool enabled_ = true;
  EBorderStyle borderStyle_ = orvNone;
  EAppearance appearance_ = orvFlat;
  std::int32_t pointer_ = kPointerDefault;
  std::function<bool(double)> progressHandler_;
  std::vector<std::string> keys_;
  std::vector<std::int32_t> pointers_;
  std::vector<double> progress_;
  std::int64_t repaintRequests_ = 0;
  std::int64_t pageRequests_ = 0;
};

}  // namespace orvane
