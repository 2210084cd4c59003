#pragma once

// What every fuzz target holds the library to: a call either returns or raises
// orvane::Error, and anything else that escapes is a fault. A fault prints what broke
// and aborts, so libFuzzer keeps the input that caused it.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <cstdint>
#include <string>
#include <vector>

#include "orvane/control/surface.h"
#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"
#include "orvane/host/headless_host.h"

namespace orvane::fuzz {

[[noreturn]] inline void Fail(const std::string& what) {
  std::fprintf(stderr, "fuzz fault: %s\n", what.c_str());
  std::fflush(stderr);
  std::abort();
}

inline void Check(bool holds, const char* what) {
  if (!holds) Fail(what);
}

// The keys whose values differ between two bags' contents, for a fault's message.
inline std::string Difference(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
  PropertyBag first, second;
  try {
    first.SetContents(a);
    second.SetContents(b);
  } catch (const orvane::Error& e) {
    return std::string(" (not bags: ") + e.what() + ")";
  }
  auto find = [](const PropertyBag& bag, const std::string& key) -> const PropertyValue* {
    for (const auto& item : bag.Items()) {
      if (item.first == key) return &item.second;
    }
    return nullptr;
  };
  auto text = [](const PropertyBag& bag, const std::string& key) -> std::string {
    if (!bag.Contains(key)) return "absent";
    if (bag.TypeOf(key) == PropertyType::DoubleArray) {
      return std::to_string(bag.ReadProperty(key, std::vector<double>{}).size()) + " doubles";
    }
    return bag.ReadProperty(key, std::string("?")).substr(0, 40);
  };
  std::string keys;
  for (const auto* bag : {&first, &second}) {
    for (const auto& item : bag->Items()) {
      if (bag == &second && first.Contains(item.first)) continue;
      const PropertyValue* x = find(first, item.first);
      const PropertyValue* y = find(second, item.first);
      if (x == nullptr || y == nullptr || !(*x == *y)) {
        keys += " " + item.first + ": " + text(first, item.first) + " -> " + text(second, item.first);
      }
    }
  }
  return keys.empty() ? " (the same keys and values, in another order or encoding)" : keys;
}

// Checks that two bags' contents are the same bytes, naming what differs when not.
inline void CheckSame(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b, const char* what) {
  if (a != b) Fail(std::string(what) + ":" + Difference(a, b));
}

// What a control's State reads back as: the same bytes, except that kriging's Range and
// Sill are read from the keys "1" and "2", which a control never writes, so they come
// back as 1 and 2 whatever was saved.
inline std::vector<std::uint8_t> AsReadBack(const std::vector<std::uint8_t>& state) {
  PropertyBag bag;
  bag.SetContents(state);
  for (const auto& item : std::vector(bag.Items())) {
    if (item.first.ends_with("Kriging.Range")) bag.WriteProperty(item.first, 1.0);
    if (item.first.ends_with("Kriging.Sill")) bag.WriteProperty(item.first, 2.0);
  }
  return bag.Contents();
}

// Whether a State resamples a data set by kriging. Restoring it runs kriging again with
// Range and Sill read back as 1 and 2, so what follows from the grid (the Z limits, the
// axes, the levels) may differ from what was saved; only a refusal's bytes hold then.
inline bool Krigs(const std::vector<std::uint8_t>& state) {
  PropertyBag bag;
  bag.SetContents(state);
  for (const auto& item : bag.Items()) {
    if (item.first.ends_with("Resampling.ResamperType") && bag.ReadProperty(item.first, std::int32_t{0}) == 2) {
      return true;
    }
  }
  return false;
}

// A control drawing at 64 x 48, new for each input, so that an input found once is found
// again alone; with the sample data when asked.
struct Control {
  HeadlessHost host;
  Surface surface{host};

  explicit Control(bool sample) {
    surface.InitProperties();
    surface.OnResize(64, 48);
    if (sample) {
      surface.ShowSampleData();
      surface.Refresh();
    }
  }
};

// Runs f: true when it returned, false when it raised orvane::Error.
template <class F>
bool Accepted(F&& f) {
  try {
    f();
    return true;
  } catch (const orvane::Error&) {
    return false;
  } catch (const std::exception& e) {
    Fail(std::string("an exception other than orvane::Error escaped: ") + e.what());
  } catch (...) {
    Fail("something that is not an exception was thrown");
  }
}

// Runs f, which must not raise at all: an orvane::Error is a fault too, named with what.
template <class F>
void MustAccept(const char* what, F&& f) {
  try {
    f();
  } catch (const orvane::Error& e) {
    Fail(std::string(what) + ": error " + std::to_string(e.Number()) + " (" + e.Source() + "): " + e.what());
  }
}

}  // namespace orvane::fuzz
