#pragma once

#include <string>
#include <vector>

#include "orvane/core/event.h"

namespace orvane::testing {

// Collects the names an Event<const std::string&> raises, optionally tagged.
struct EventRecorder {
  explicit EventRecorder(Event<const std::string&>& event, std::string tag = {})
      : connection(event.Connect(
            [this, tag](const std::string& name) { names.push_back(tag + name); })) {}
  std::vector<std::string> names;
  Connection connection;
};

}  // namespace orvane::testing
