#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "orvane/core/event.h"
#include "orvane/data/data_set.h"

namespace orvane {

/// The collection of data sets of a control; a new one holds one data set. Indices are
/// zero-based. Each change of an item comes up as exactly one event: a data change as
/// DataChanged, a view's change as ViewChanged, any other settings change as
/// PropertyChanged.
class DataSets {
 public:
  /// A collection with one empty data set.
  DataSets();
  ~DataSets();
  DataSets(const DataSets&) = delete;
  DataSets& operator=(const DataSets&) = delete;

  /// "Returns or sets the number of datasets in the collection."
  std::int32_t Count() const noexcept { return static_cast<std::int32_t>(items_.size()); }
  /// Appends new empty data sets or removes the last ones; 0 or less raises error 5
  /// (source "Orvada.DataSets").
  void SetCount(std::int32_t count);
  /// "Returns the member of the collection identified by the Index parameter." Error 9
  /// outside 0..Count-1.
  DataSet& Item(std::int32_t index);
  /// The same, read-only.
  const DataSet& Item(std::int32_t index) const;
  /// "Resets each dataset in the collection to its initial state." Clears every item in order.
  void ClearAll();

  /// While true, none of the three events is raised (set while loading).
  void SetEventsSuspended(bool suspended) noexcept { suspended_ = suspended; }
  /// Whether events are suspended.
  bool EventsSuspended() const noexcept { return suspended_; }

  /// Iteration over the items in collection order.
  class Iterator {
   public:
    using value_type = DataSet;
    using difference_type = std::ptrdiff_t;
    Iterator() = default;
    explicit Iterator(std::vector<std::unique_ptr<DataSet>>::const_iterator it) : it_(it) {}
    DataSet& operator*() const { return **it_; }
    DataSet* operator->() const { return it_->get(); }
    Iterator& operator++() { ++it_; return *this; }
    Iterator operator++(int) { Iterator old = *this; ++it_; return old; }
    friend bool operator==(const Iterator&, const Iterator&) = default;

   private:
    std::vector<std::unique_ptr<DataSet>>::const_iterator it_;
  };
  /// First item.
  Iterator begin() const { return Iterator(items_.begin()); }
  /// Past the last item.
  Iterator end() const { return Iterator(items_.end()); }

  /// "Raised when the input data has changed." With the item's zero-based index.
  Event<std::int32_t> DataChanged;
  /// "Raised when formatting has changed for a plot." With the view's plot position as
  /// "Main", "Top" or "Bottom" and the view's property name ("Visible", "MeshLine.Color").
  Event<const std::string&, const std::string&> ViewChanged;
  /// An item's settings other than its views changed: "DataSet", the item's 1-based
  /// position, a point and the item's name, which is the key it is stored under below
  /// "Datasets." (such as "DataSet1.Resampling.IntervalCount").
  Event<const std::string&> PropertyChanged;

 private:
  void Append();

  std::vector<std::unique_ptr<DataSet>> items_;
  std::vector<Connection> connections_;
  bool suspended_ = false;
};

}  // namespace orvane
