#pragma once

// FlagScope: sets a flag for the length of a scope and puts the old value back, however
// the scope is left. Internal header: no compatibility promise.

namespace orvane::detail {

class FlagScope {
 public:
  explicit FlagScope(bool& flag, bool value = true) : flag_(flag), old_(flag) { flag_ = value; }
  ~FlagScope() { flag_ = old_; }
  FlagScope(const FlagScope&) = delete;
  FlagScope& operator=(const FlagScope&) = delete;

 private:
  bool& flag_;
  bool old_;
};

}  // namespace orvane::detail
