#pragma once

// Plot: the display list of one kind of data-set view (0 main, 1 top, 2 bottom), built
// lazily and replayed every frame. Internal header.

#include <cstdint>
#include <functional>

#include "view_drawing.h"

namespace orvane {

class DataSets;
class View;

namespace detail {

// The view of a data set that a plot of the given kind draws.
View& ViewOfKind(DataSet& data, int kind);

class Plot {
 public:
  explicit Plot(int kind) noexcept : kind_(kind) {}
  Plot(const Plot&) = delete;
  Plot& operator=(const Plot&) = delete;

  int Kind() const noexcept { return kind_; }
  // True when some data set has a visible view of this plot's kind.
  bool AnyViewToDraw(DataSets& sets) const;
  // Builds the list when it is not valid, then calls it; then the contour labels, when
  // some view of the kind shows them, through labels (may be empty). Without compile the
  // views are drawn straight away and no list is made: a single frame, as a one-off image
  // needs, costs a draw instead of a list compile and its replay.
  void DrawViews(DataSets& sets, const ViewContext& context, const std::function<void(int)>& labels,
                 bool compile = true);
  // Discards the old list, compiles the opaque pass and then the transparent pass into a
  // new one, and marks it valid.
  void BuildList(DataSets& sets, const ViewContext& context);
  // Deletes the list (in the current context) and marks it invalid.
  void Invalidate();
  // Marks the list invalid, keeping its name.
  void MarkStale() noexcept { listValid_ = false; }
  // Forgets the list without deleting it: its context is gone.
  void Forget() noexcept {
    displayList_ = 0;
    listValid_ = false;
  }

  bool ListValid() const noexcept { return listValid_; }
  std::uint32_t DisplayList() const noexcept { return displayList_; }
  // How many times the list was compiled.
  std::int64_t BuildCount() const noexcept { return builds_; }

 private:
  // The opaque views, then the transparent ones, in collection order.
  void DrawPasses(DataSets& sets, const ViewContext& context) const;

  int kind_;
  bool listValid_ = false;
  std::uint32_t displayList_ = 0;
  std::int64_t builds_ = 0;
};

}  // namespace detail
}  // namespace orvane
