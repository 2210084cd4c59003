#pragma once

// Ctrl-C and SIGTERM for the orvane command: while an InterruptGuard lives, the two
// signals only set a flag, so that long work can stop at a safe point and clean up (a
// half-written output file is removed, the status is 130).

namespace orvane::cli {

class InterruptGuard {
 public:
  // The outermost guard installs the handlers and clears the flag; inner ones share it.
  InterruptGuard();
  // The outermost guard restores the handlers that were there before.
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;
};

// True once SIGINT or SIGTERM arrived under a guard.
bool Interrupted() noexcept;

}  // namespace orvane::cli
