#include "interrupt.h"

#include <csignal>

namespace orvane::cli {

namespace {

volatile std::sig_atomic_t interrupted = 0;
int depth = 0;
struct sigaction oldInt {};
struct sigaction oldTerm {};

extern "C" void OnInterrupt(int) { interrupted = 1; }

}  // namespace

InterruptGuard::InterruptGuard() {
  if (depth++ > 0) return;
  interrupted = 0;
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, &oldInt);
  sigaction(SIGTERM, &action, &oldTerm);
}

InterruptGuard::~InterruptGuard() {
  if (--depth > 0) return;
  sigaction(SIGINT, &oldInt, nullptr);
  sigaction(SIGTERM, &oldTerm, nullptr);
}

bool Interrupted() noexcept { return interrupted != 0; }

}  // namespace orvane::cli
