#pragma once

// CMousePointer: shows a pointer shape over the host's window for as long as it lives,
// then puts the one it found back, on every way out of the scope (exceptions included).
// Internal header.

#include <cstdint>

#include "orvane/host/host.h"

namespace orvane::detail {

class CMousePointer {
 public:
  CMousePointer(Host& host, std::int32_t shape) : host_(host), previous_(host.MousePointer()) {
    host_.SetMousePointer(shape);
  }
  ~CMousePointer() {
    try {
      host_.SetMousePointer(previous_);
    } catch (...) {  // a destructor must not throw; the pointer stays as it is
    }
  }
  CMousePointer(const CMousePointer&) = delete;
  CMousePointer& operator=(const CMousePointer&) = delete;

 private:
  Host& host_;
  std::int32_t previous_;
};

}  // namespace orvane::detail
