// Core helpers on hot paths: label formatting (every tick of every axis, every contour
// label) and property-bag round trips (State get and let).

#include <benchmark/benchmark.h>

#include <string>

#include "orvane/core/format.h"
#include "orvane/core/property_bag.h"

namespace {

void BM_FormatNumber(benchmark::State& state) {
  const char* patterns[] = {"0.00", "#,##0.0", "0.00E+00", "0%"};
  double value = -1234.5678;
  for (auto _ : state) {
    for (const char* pattern : patterns) {
      benchmark::DoNotOptimize(orvane::FormatNumber(value, pattern));
    }
    value += 0.37;
  }
  state.SetItemsProcessed(state.iterations() * 4);
}
BENCHMARK(BM_FormatNumber);

void BM_PropertyBagRoundTrip(benchmark::State& state) {
  orvane::PropertyBag bag;
  for (int i = 0; i < state.range(0); ++i) {
    const std::string key = "Axes.XAxis.Key" + std::to_string(i);
    bag.WriteProperty(key + "L", std::int32_t{i});
    bag.WriteProperty(key + "D", i * 0.25);
    bag.WriteProperty(key + "S", std::string("0.00"));
  }
  for (auto _ : state) {
    orvane::PropertyBag copy;
    copy.SetContents(bag.Contents());
    benchmark::DoNotOptimize(copy.Count());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(bag.Count()));
}
BENCHMARK(BM_PropertyBagRoundTrip)->Arg(100)->Arg(1000);

}  // namespace
