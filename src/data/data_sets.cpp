#include "orvane/data/data_sets.h"

#include <string>

#include "data_set_state.h"
#include "orvane/core/error.h"
#include "render/view_access.h"

namespace orvane {

namespace {
constexpr const char* kSource = "Orvada.DataSets";
// DataChanged, ViewChanged and PropertyChanged of each item.
constexpr std::size_t kConnectionsPerItem = 3;
}  // namespace

DataSets::DataSets() { Append(); }

DataSets::~DataSets() = default;

void DataSets::Append() {
  auto item = std::make_unique<DataSet>();
  detail::DataSetState& state = detail::DataSetAccess::State(*item);
  const std::int32_t position = Count() + 1;
  const std::int32_t zeroBased = position - 1;
  connections_.push_back(state.changed.Connect([this, zeroBased] {
    if (!suspended_) DataChanged.Raise(zeroBased);
  }));
  connections_.push_back(
      state.viewChanged.Connect([this](std::int32_t plotPosition, const std::string& name) {
        if (!suspended_) ViewChanged.Raise(detail::PlotPositionName(plotPosition), name);
      }));
  connections_.push_back(state.settingsChanged.Connect(
      [this, key = "DataSet" + std::to_string(position) + "."](const std::string& name) {
        if (!suspended_) PropertyChanged.Raise(key + name);
      }));
  items_.push_back(std::move(item));
  // Joining the collection clears the new item, which announces it.
  state.Join(position);
}

void DataSets::SetCount(std::int32_t count) {
  if (count <= 0) throw Error(5, kSource);
  while (Count() < count) Append();
  while (Count() > count) {
    connections_.resize(connections_.size() - kConnectionsPerItem);
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
