#include "orvane/data/data_sets.h"

#include "data_set_state.h"
#include "orvane/core/error.h"

namespace orvane {

namespace {
constexpr const char* kSource = "Orvada.DataSets";
}  // namespace

DataSets::DataSets() { Append(); }

DataSets::~DataSets() = default;

void DataSets::Append() {
  auto item = std::make_unique<DataSet>();
  detail::DataSetState& state = detail::DataSetAccess::State(*item);
  state.index = Count() + 1;
  const std::int32_t zeroBased = state.index - 1;
  connections_.push_back(state.changed.Connect([this, zeroBased] {
    if (!suspended_) DataChanged.Raise(zeroBased);
  }));
  items_.push_back(std::move(item));
  // Joining the collection clears the new item, which announces it.
  items_.back()->Clear();
}

void DataSets::SetCount(std::int32_t count) {
  if (count <= 0) throw Error(5, kSource);
  while (Count() < count) Append();
  while (Count() > count) {
    connections_.pop_back();
    items_.pop_back();
  }
}

DataSet& DataSets::Item(std::int32_t index) {
  if (index < 0 || index >= Count()) throw Error(9, kSource);
  return *items_[static_cast<std::size_t>(index)];
}

const DataSet& DataSets::Item(std::int32_t index) const {
  if (index < 0 || index >= Count()) throw Error(9, kSource);
  return *items_[static_cast<std::size_t>(index)];
}

void DataSets::ClearAll() {
  for (auto& item : items_) item->Clear();
}

}  // namespace orvane
