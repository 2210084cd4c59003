#include "orvane/host/headless_host.h"

namespace orvane {

void HeadlessHost::SetMousePointer(std::int32_t shape) {
  pointer_ = shape;
  pointers_.push_back(shape);
}

void HeadlessHost::PropertyChanged(const std::string& key) { keys_.push_back(key); }

bool HeadlessHost::SetClipboardBitmap(const std::vector<std::uint8_t>& /*bitmap*/) { return false; }

void HeadlessHost::ShowPropertyPages(Surface& /*surface*/, const std::vector<std::string>& /*settings*/) {
  ++pageRequests_;
}

bool HeadlessHost::ReportProgress(double fractionDone) {
  progress_.push_back(fractionDone);
  return !progressHandler_ || progressHandler_(fractionDone);
}

void HeadlessHost::ClearRecords() noexcept {
  keys_.clear();
  pointers_.clear();
  progress_.clear();
  repaintRequests_ = 0;
  pageRequests_ = 0;
}

}  // namespace orvane
