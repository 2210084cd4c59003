#pragma once

#include "core/parallel.h"

namespace orvane::testing {

// Allows the computations the given number of threads for the length of a scope, then
// every core again.
class ThreadCountScope {
 public:
  explicit ThreadCountScope(unsigned count) { detail::SetThreadCount(count); }
  ~ThreadCountScope() { detail::SetThreadCount(0); }
  ThreadCountScope(const ThreadCountScope&) = delete;
  ThreadCountScope& operator=(const ThreadCountScope&) = delete;
};

}  // namespace orvane::testing
